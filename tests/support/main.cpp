// Runs the suite under one table of rows: roxe_tests [--rows=NAME] [--pages=start] [gtest options].
// Without --rows the best table of this machine is used; exit code 77: the machine cannot run it.
// With --pages=start all guarded memory starts at an unmapped page, else it ends at one. So do the
// library's own blocks.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>

#include "support/image.h"
#include "support/seams.h"

namespace {

constexpr size_t kLargest = size_t{1} << 26;  // that is guarded: emulators have little room

std::map<void*, std::unique_ptr<GuardedMemory>> guarded_blocks;

void* allocate_guarded(size_t size) {
  if (size > kLargest) return std::calloc(1, size);
  auto memory = std::make_unique<GuardedMemory>(size);
  void* block = memory->data();
  guarded_blocks[block] = std::move(memory);
  return block;
}

void release_guarded(void* block) {
  if (guarded_blocks.erase(block) == 0) std::free(block);
}

}  // namespace

int main(int argc, char** argv) {
  block_source = {allocate_guarded, release_guarded};
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
  const int failed = RUN_ALL_TESTS();
  if (!guarded_blocks.empty()) std::printf("%zu blocks were not released\n", guarded_blocks.size());
  return failed || !guarded_blocks.empty();
}
