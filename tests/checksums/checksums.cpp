// Prints the table of checksums of the installed form of the library, with its own choice of rows;
// with --reference, of the literal references, which is how checksums.txt is made.
#include <cstdio>
#include <cstring>

#include "checksums/checksum_table.h"

int main(int argc, char** argv) {
  const bool reference = argc > 1 && std::strcmp(argv[1], "--reference") == 0;
  std::fputs(ChecksumTable(reference ? kReference : kLibrary).c_str(), stdout);
  return 0;
}
