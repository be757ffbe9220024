// Runs the suite under one table of rows: roxe_tests [--rows=NAME] [--pages=start] [gtest options].
// Without --rows the best table of this machine is used; exit code 77: the machine cannot run it.
// With --pages=start all guarded memory starts at an unmapped page, else it ends at one.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "support/image.h"
#include "support/seams.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const char* table = RunnableTables().back()->name;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--rows=", 7) == 0) table = argv[i] + 7;
    if (std::strcmp(argv[i], "--pages=start") == 0) GuardedMemory::starts_at_page = true;
  }
  if (!UseRows(table)) {
    std::printf("this machine cannot run the %s rows\n", table);
    return 77;
  }
  std::printf("rows: %s\n", table);
  return RUN_ALL_TESTS();
}
