#include <gtest/gtest.h>

#include <cstring>

#include "support/rows.h"

namespace {

struct Counts {
  Guarded<uint32_t[256]> sets{8};
  uint32_t (*of)[256] = sets.of();
  std::vector<uint32_t> sums() const {
    std::vector<uint32_t> all(256);
    for (size_t i = 0; i < 8 * 256; ++i) all[i % 256] += of[i / 256][i % 256];
    return all;
  }
};

TEST(Rows, CountGreenCountsTheMiddleByteOfEachPixel) {
  const uint8_t src[] = {9, 1, 9, 9, 2, 9, 9, 1, 9, 9, 1, 9, 9, 3, 9, 9, 2};  // the last one is cut
  Counts counts;
  roxe::Rows().count_green(src, 6, counts.of);
  std::vector<uint32_t> expected(256);
  expected[1] = 3, expected[2] = 2, expected[3] = 1;
  EXPECT_EQ(counts.sums(), expected);
}

TEST(Rows, CountGreenAddsToTheCounts) {
  const uint8_t src[] = {0, 7, 0, 0, 7, 0};
  Counts counts;
  counts.of[2][7] = 5;
  roxe::Rows().count_green(src, 2, counts.of);
  EXPECT_EQ(counts.sums()[7], 7u);
}

TEST(Rows, CountGreenIsTheSameOnEveryTable) {
  std::mt19937 random(2);
  for (const roxe::RowKernels* rows : RunnableTables()) {
    for (int32_t count = 0; count <= 2 * kLongestTestRow; ++count) {
      const size_t bytes = count == 0 ? 0 : 3 * static_cast<size_t>(count) - 1;
      const RandomBytes src(random, bytes);
      Counts expected, counts;
      roxe::kPlainRows.count_green(src.data(), count, expected.of);
      rows->count_green(src.data(), count, counts.of);
      EXPECT_EQ(counts.sums(), expected.sums()) << rows->name << ' ' << count;
    }
  }
}

}  // namespace
