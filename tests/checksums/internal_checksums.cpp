// Prints the checksums of the routines below the exported operations.
//
//   roxe_internal_checksums                of the best table of rows of this machine
//   roxe_internal_checksums --rows=NAME    of that one; exit code 77: the machine cannot run it
//   roxe_internal_checksums --whole        the operations first: the whole table
//
// --reference takes the literal references instead, which is how the committed table is made.
#include <cstdio>
#include <cstring>
#include <string>

#include "checksums/checksum_table.h"
#include "checksums/internal_rows.h"
#include "support/seams.h"

int main(int argc, char** argv) {
  bool whole = false, reference = false;
  const char* rows = RunnableTables().back()->name;
  for (int i = 1; i < argc; ++i) {
    whole = whole || std::strcmp(argv[i], "--whole") == 0;
    reference = reference || std::strcmp(argv[i], "--reference") == 0;
    if (std::strncmp(argv[i], "--rows=", 7) == 0) rows = argv[i] + 7;
  }
  if (!UseRows(rows)) return 77;
  if (whole) std::fputs(ChecksumTable(reference ? kReference : kLibrary).c_str(), stdout);
  std::fputs((reference ? ReferenceInternalRows() : LibraryInternalRows()).c_str(), stdout);
  return 0;
}
