// Prints a table of checksums of the installed form of the library, with its own choice of rows.
//
//   roxe_checksums            every operation on pictures with padded rows
//   roxe_checksums --doors    what tool and packages draw around the library's calls
//
// --reference takes the literal references instead, which is how the committed tables are made.
#include <cstdio>
#include <cstring>

#include "checksums/checksum_table.h"
#include "doors/literal_table.h"

int main(int argc, char** argv) {
  bool doors = false, reference = false;
  for (int i = 1; i < argc; ++i) {
    doors = doors || std::strcmp(argv[i], "--doors") == 0;
    reference = reference || std::strcmp(argv[i], "--reference") == 0;
  }
  const Operations& operations = reference ? kReference : kLibrary;
  std::fputs((doors ? LiteralTable(operations) : ChecksumTable(operations)).c_str(), stdout);
  return 0;
}
