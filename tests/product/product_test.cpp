// What the other tests replace, as the product has it: memory and the choice of a table of rows.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/runtime.h"
#include "rows/tables.h"

namespace {

TEST(Product, BlocksAreZeroFilledWhereMemoryWasUsedBefore) {
  for (const uint32_t size : {1u, 24u, 1000u, 100000u, 3000000u}) {
    void* used = std::malloc(size);
    ASSERT_NE(used, nullptr);
    std::memset(used, 0xA5, size);
    std::free(used);
    uint8_t* block = static_cast<uint8_t*>(roxe::XRMalloc(size));
    ASSERT_NE(block, nullptr);
    for (uint32_t i = 0; i < size; ++i) ASSERT_EQ(block[i], 0) << i << " of " << size;
    std::memset(block, 0xA5, size);  // all of it is there
    roxe::XRFree(block);
  }
}

TEST(Product, SizeZeroGivesBlocksOfTheirOwn) {
  void *a = roxe::XRMalloc(0), *b = roxe::XRMalloc(0);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(b, nullptr);
  EXPECT_NE(a, b);
  roxe::XRFree(a);
  roxe::XRFree(b);
  roxe::XRFree(nullptr);
}

TEST(Product, BlocksAreAlignedForAnyNumber) {
  for (uint32_t size = 1; size < 100; ++size) {
    void* block = roxe::XRMalloc(size);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignof(double), 0u);
    roxe::XRFree(block);
  }
}

TEST(Product, RowsAreTheLastThatTheMachineCanRun) {
  const char* best = nullptr;
  for (const roxe::RowTable& table : roxe::kRowTables)
    if (table.is_runnable()) best = table.rows->name;
  EXPECT_STREQ(roxe::Rows().name, best);
}

}  // namespace
