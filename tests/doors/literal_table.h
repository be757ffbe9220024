// What the doors do beyond the library's own calls: edges, quarter turns, canvases, crops and
// default values, written once more in the most literal way.
#ifndef ROXE_TESTS_DOORS_LITERAL_TABLE_H_
#define ROXE_TESTS_DOORS_LITERAL_TABLE_H_

#include <string>

#include "checksums/checksum_table.h"

// One line a case: what is typed, picture, size of the result and FNV-1a of 64 bits over its
// pixels (blue, green, red, without padding), or "refused".
std::string LiteralTable(const Operations& operations);

#endif  // ROXE_TESTS_DOORS_LITERAL_TABLE_H_
