// The second part of the table of checksums: routines below the exported operations, also those
// that no operation reaches.
#ifndef ROXE_TESTS_CHECKSUMS_INTERNAL_ROWS_H_
#define ROXE_TESTS_CHECKSUMS_INTERNAL_ROWS_H_

#include <string>

// One line a case, as ChecksumTable has them: routine, input, status, FNV-1a over all results.
std::string LibraryInternalRows();
std::string ReferenceInternalRows();

#endif  // ROXE_TESTS_CHECKSUMS_INTERNAL_ROWS_H_
