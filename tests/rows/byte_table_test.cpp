#include <gtest/gtest.h>

#include "support/rows.h"

namespace {

using roxe::PixelBand;

TEST(Rows, LookUpReplacesEachByte) {
  uint8_t table[256] = {};
  table[3] = 30;
  table[255] = 1;
  const uint8_t src[8] = {3, 255, 0, 77, 0, 3, 3, 3};
  uint8_t dst[9] = {9, 9, 9, 9, 9, 9, 9, 9, 9};
  roxe::Rows().look_up(table, {src, 4, dst, 5, 2, 1});  // two rows of one pixel
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 9),
            (std::vector<uint8_t>{30, 1, 0, 9, 9, 0, 30, 30, 9}));
}

TEST(Rows, LookUpBgrHasATableForEachChannel) {
  uint8_t blue[256] = {}, green[256] = {}, red[256] = {};
  blue[5] = 50;
  green[5] = 51;
  red[5] = 52;
  uint8_t pixels[7] = {5, 5, 5, 0, 5, 0, 5};
  roxe::Rows().look_up_bgr(blue, green, red, {pixels, 0, pixels, 0, 1, 2});
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

      const PixelBand plain = {src.data(), 0, expected.data(), 0, 1, count};
      const PixelBand apart = {src.data(), 0, dst.data(), 0, 1, count};
      const PixelBand in_place = {src.data(), 0, src.data(), 0, 1, count};
      roxe::kPlainRows.look_up(red, plain);
      rows->look_up(red, apart);
      EXPECT_EQ(Bytes(dst), Bytes(expected)) << rows->name << ' ' << count;

      roxe::kPlainRows.look_up_bgr(blue, green, red, plain);
      rows->look_up_bgr(blue, green, red, apart);
      EXPECT_EQ(Bytes(dst), Bytes(expected)) << rows->name << ' ' << count;

      rows->look_up_bgr(blue, green, red, in_place);
      EXPECT_EQ(Bytes(src), Bytes(expected)) << rows->name << " in place " << count;
    }
  }
}

}  // namespace
