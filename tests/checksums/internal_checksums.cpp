// Prints the checksums of the routines below the exported operations, from the static library, or
// with --reference from the literal references.
#include <cstdio>
#include <cstring>

#include "checksums/internal_rows.h"

int main(int argc, char** argv) {
  const bool reference = argc > 1 && std::strcmp(argv[1], "--reference") == 0;
  std::fputs((reference ? ReferenceInternalRows() : LibraryInternalRows()).c_str(), stdout);
  return 0;
}
