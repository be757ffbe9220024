#include <gtest/gtest.h>

#include "support/rows.h"

namespace {

TEST(Rows, BlendMaskedRoundsTowardMinusInfinity) {
  const uint8_t src[9] = {0, 255, 10, 0, 255, 10, 0, 255, 10}, mask[3] = {0, 128, 255};
  uint8_t dst[10] = {100, 100, 10, 101, 100, 10, 100, 100, 10, 9};
  roxe::Rows().blend_masked(src, mask, dst, 3);
  // 101 + (-12928 >> 8) = 101 - 51, 100 + (19840 >> 8); 100 + (-25500 >> 8), 100 + (39525 >> 8)
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 10),
            (std::vector<uint8_t>{100, 100, 10, 50, 177, 10, 0, 254, 10, 9}));
}

TEST(Rows, BlendMaskedIsTheSameOnEveryTable) {
  std::mt19937 random(2);
  for (const roxe::RowKernels* rows : RunnableTables()) {
    for (int32_t count = 0; count <= kLongestTestRow; ++count) {
      const RandomBytes src(random, 3 * static_cast<size_t>(count));
      const RandomBytes mask(random, static_cast<size_t>(count));
      const RandomBytes dst(random, src.size());
      const GuardedMemory expected(src.size());
      for (size_t i = 0; i < src.size(); ++i) expected.data()[i] = dst.data()[i];

      roxe::kPlainRows.blend_masked(src.data(), mask.data(), expected.data(), count);
      rows->blend_masked(src.data(), mask.data(), dst.data(), count);
      EXPECT_EQ(Bytes(dst), Bytes(expected)) << rows->name << ' ' << count;

      const std::vector<uint8_t> before = Bytes(src);
      rows->blend_masked(src.data(), mask.data(), src.data(), count);
      EXPECT_EQ(Bytes(src), before) << rows->name << " in place " << count;
    }
  }
}

}  // namespace
