#include <gtest/gtest.h>

#include "support/rows.h"

namespace {

TEST(Rows, LookUpReplacesEachByte) {
  uint8_t table[256] = {};
  table[3] = 30;
  table[255] = 1;
  const uint8_t src[4] = {3, 255, 0, 3};
  uint8_t dst[4] = {9, 9, 9, 9};
  roxe::Rows().look_up(table, src, dst, 3);
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 4), (std::vector<uint8_t>{30, 1, 0, 9}));
}

TEST(Rows, LookUpBgrHasATableForEachChannel) {
  uint8_t blue[256] = {}, green[256] = {}, red[256] = {};
  blue[5] = 50;
  green[5] = 51;
  red[5] = 52;
  uint8_t pixels[7] = {5, 5, 5, 0, 5, 0, 5};
  roxe::Rows().look_up_bgr(blue, green, red, pixels, pixels, 2);
  EXPECT_EQ(std::vector<uint8_t>(pixels, pixels + 7),
            (std::vector<uint8_t>{50, 51, 52, 0, 51, 0, 5}));
}

TEST(Rows, LookUpsAreTheSameOnEveryTable) {
  std::mt19937 random(1);
  const RandomBytes blue_table(random, 256), green_table(random, 256), red_table(random, 256);
  const uint8_t *blue = blue_table.data(), *green = green_table.data(), *red = red_table.data();
  for (const roxe::RowKernels* rows : RunnableTables()) {
    for (int32_t count = 0; count <= kLongestTestRow; ++count) {
      const RandomBytes src(random, 3 * static_cast<size_t>(count));
      const RandomBytes dst(random, src.size());
      const GuardedMemory expected(src.size());

      roxe::kPlainRows.look_up(red, src.data(), expected.data(), 3 * count);
      rows->look_up(red, src.data(), dst.data(), 3 * count);
      EXPECT_EQ(Bytes(dst), Bytes(expected)) << rows->name << ' ' << count;

      roxe::kPlainRows.look_up_bgr(blue, green, red, src.data(), expected.data(), count);
      rows->look_up_bgr(blue, green, red, src.data(), dst.data(), count);
      EXPECT_EQ(Bytes(dst), Bytes(expected)) << rows->name << ' ' << count;

      rows->look_up_bgr(blue, green, red, src.data(), src.data(), count);
      EXPECT_EQ(Bytes(src), Bytes(expected)) << rows->name << " in place " << count;
    }
  }
}

}  // namespace
