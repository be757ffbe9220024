#include "colour/colour_temperature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "reference/colour.h"
#include "support/image.h"
#include "support/rows.h"
#include "support/seams.h"

namespace {

using Matrix = std::array<float, 9>;

Matrix Gains(int32_t temperature, int32_t tint) {
  const Guarded<float> written(std::vector<float>(9, 7.0f));
  EXPECT_EQ(roxe::GetStdColorTemperatureMatrix(temperature, tint, written.of()), 1);
  Matrix matrix;
  std::copy_n(written.of(), 9, matrix.begin());
  return matrix;
}

void ExpectGains(int32_t temperature, int32_t tint, float red, float green, float blue) {
  const Matrix matrix = Gains(temperature, tint);
  for (const size_t i : {1u, 2u, 3u, 5u, 6u, 7u}) EXPECT_EQ(matrix[i], 0.0f);
  EXPECT_NEAR(matrix[0], red, 1e-6f);
  EXPECT_NEAR(matrix[4], green, 1e-6f);
  EXPECT_NEAR(matrix[8], blue, 1e-6f);
}

TEST(ColourTemperature, Gains) {
  EXPECT_EQ(Gains(0, 0), (Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  ExpectGains(100, 0, 2.1f, 0.72f, 0.39f);
  ExpectGains(-100, 0, 0.132f, 1.0f, 11.5f);
  ExpectGains(0, 100, 1.29f, 0.4f, 1.29f);
  ExpectGains(0, -100, 0.35f, 1.83f, 0.35f);
  ExpectGains(50, -50, 1.55f * 0.675f, 0.86f * 1.415f, 0.695f * 0.675f);
}

TEST(ColourTemperature, SettingsAreClamped) {
  EXPECT_EQ(Gains(150, -300), Gains(100, -100));
  EXPECT_EQ(Gains(INT32_MIN, INT32_MAX), Gains(-100, 100));
}

TEST(ColourTemperature, AMatrixIsNeeded) {
  EXPECT_EQ(roxe::GetStdColorTemperatureMatrix(1, 2, nullptr), 0);
}

Image Balanced(const std::vector<Pixel>& row, int32_t temperature, int32_t tint) {
  Image src = Bgr({row});
  Image dst = Bgr({std::vector<Pixel>(row.size(), Pixel{9, 9, 9})});
  EXPECT_EQ(roxeColorTemperature(src, dst, temperature, tint), kRoxeOK);
  return dst;
}

TEST(ColourTemperature, NothingAskedStillSpills) {
  // Linear (3, 4096, 4096), in luminance 2800; red 3 is above 1, its excess 3 - 4096 = -4093:
  // blue 4096 + (-4093 * (2800 * 2252 >> 12 = 1539) >> 12) = 2558; green 4096 - 4093 * 700 / 4096.
  // Linear 3 comes back as 2.
  EXPECT_EQ(Balanced({{255, 255, 3}}, 0, 0), Bgr({{{207, 235, 2}}}));
  // Green 2365, blue 521 in linear light, luminance 1494: spill of -89 into blue.
  EXPECT_EQ(Balanced({{100, 200, 0}}, 0, 0), Bgr({{{91, 200, 0}}}));
  // Blue alone spills into red, of which there is none.
  EXPECT_EQ(Balanced({{200, 0, 0}}, 0, 0), Bgr({{{200, 0, 0}}}));
}

TEST(ColourTemperature, BlackAndWhiteStay) {
  EXPECT_EQ(Balanced({{0, 0, 0}, {255, 255, 255}}, 0, 0), Bgr({{{0, 0, 0}, {255, 255, 255}}}));
  EXPECT_EQ(Balanced({{0, 0, 0}}, 50, 20), Bgr({{{0, 0, 0}}}));
}

TEST(ColourTemperature, Warmer) {
  // Linear (2365, 1249, 521), gains 5447, 3751, 3346 / 4096: (3145, 1143, 425). Luminance 1526 in,
  // 1692 out: 2 * 3694 leaves it. Excess -951: blue 425 + (-121 * 839 >> 12), green 1143 +
  // (-290 * 381 >> 12): (3145, 1116, 400).
  EXPECT_EQ(Balanced({{100, 150, 200}}, 30, 0), Bgr({{{88, 142, 227}}}));
}

TEST(ColourTemperature, CoolerIsCappedInBrightness) {
  // Blue 9, linear 11, becomes 126: luminance 0 in, 8 out, so the ratio is 0: black.
  EXPECT_EQ(Balanced({{9, 0, 0}}, -100, 0), Bgr({{{0, 0, 0}}}));
  // (311, 1249, 5991), luminance 1526 in, 1263 out: no cap. Excess of red -3785.
  EXPECT_EQ(Balanced({{100, 150, 200}}, -100, 0), Bgr({{{255, 144, 78}}}));
  EXPECT_EQ(Balanced({{100, 150, 200}}, -100, 100), Bgr({{{255, 87, 88}}}));
}

TEST(ColourTemperature, CapScalesAllChannelsAlike) {
  // Linear (53, 86, 1869), gains 540, 4096, 47104 / 4096: (6, 86, 21493). Luminance 193 in, 1482
  // out: ratio 2 * 533 = 1066, so (1, 22, 5593). Green 22 spills: excess -4074, blue 5593 +
  // ((-1859 * 210) >> 12 = -96), red 1 + ((-53 * 166) >> 12 = -3).
  EXPECT_EQ(Balanced({{180, 40, 30}}, -100, 0), Bgr({{{255, 16, 0}}}));
  // Linear (185, 0, 2365): (24, 0, 27197), luminance 213 in, 1813 out, ratio 962: (5, 0, 6387).
  EXPECT_EQ(Balanced({{200, 0, 60}}, -100, 0), Bgr({{{255, 0, 4}}}));
  // Linear (0, 185, 1249): (0, 185, 14363), 197 in, 1067 out, ratio 1512: (0, 68, 5301).
  EXPECT_EQ(Balanced({{150, 60, 0}}, -100, 0), Bgr({{{255, 35, 0}}}));
}

// A row of equal pixels under gains of the three channels, long enough for the widest vectors.
Image Gained(Pixel pixel, float red, float green, float blue) {
  Image image = Bgr({std::vector<Pixel>(70, pixel)});
  const float matrix[9] = {red, 0, 0, 0, green, 0, 0, 0, blue};
  roxe::ApplyStdColorTemperatureMatrix(image.record, image.record, matrix);
  return image;
}

TEST(ColourTemperature, BlueSpillsFromTwoOn) {
  const auto row = [](Pixel pixel) { return Bgr({std::vector<Pixel>(70, pixel)}); };
  // Red 1, blue 4096 in linear light, luminance 272: a spill of (-1 * 22) >> 12 = -1 into red.
  EXPECT_EQ(Gained({255, 0, 1}, 1, 1, 2.0f / 4096), row({2, 0, 0}));
  EXPECT_EQ(Gained({255, 0, 1}, 1, 1, 1.0f / 4096), row({1, 0, 1}));
}

TEST(ColourTemperature, GainsOfAnySizeGiveTheBytesOfThePlainRows) {
  // White under a blue gain of 17: (4096, 4096, 69632), luminance 4049 in, 8401 out, ratio 3948:
  // (3948, 3948, 67116). Excess of red -148: green 3948 + ((-148 * 1012) >> 12 = -37).
  EXPECT_EQ(Gained({255, 255, 255}, 1, 1, 17), Bgr({std::vector<Pixel>(70, Pixel{255, 250, 251})}));
  std::mt19937 random(33);
  Image src(kRoxeFormatRGB24, 200, 9);
  src.randomise(random);
  for (const float blue : {15.9f, 15.9999f, 16.0f, 16.1f, 31.9f, 32.0f, 100.0f, -0.001f})
    for (const float other : {0.0305f, 0.0313f, 1.0f, 2.999f, 3.0f, 3.1f}) {
      const float matrix[9] = {other, 0, 0, 0, other, 0, 0, 0, blue};
      Image dst(kRoxeFormatRGB24, 200, 9), expected(kRoxeFormatRGB24, 200, 9);
      roxe::ApplyStdColorTemperatureMatrix(src.record, dst.record, matrix);
      const RowsInstead plain(roxe::kPlainRows);
      roxe::ApplyStdColorTemperatureMatrix(src.record, expected.record, matrix);
      EXPECT_EQ(dst, expected) << blue << ' ' << other;
    }
}

TEST(ColourTemperature, GreenerAndMoreMagenta) {
  EXPECT_EQ(Balanced({{128, 128, 128}}, 0, 100), Bgr({{{139, 79, 144}}}));
  EXPECT_EQ(Balanced({{100, 150, 200}}, 100, -100), Bgr({{{7, 167, 174}}}));
}

TEST(ColourTemperature, AnyMatrixCanBeApplied) {
  // Red + half of green; green; a quarter of red + half of blue: (2989, 1249, 591 + 260).
  const float matrix[9] = {1, 0.5f, 0, 0, 1, 0, 0.25f, 0, 0.5f};
  Image image = Bgr({{{100, 150, 200}}});
  roxe::ApplyStdColorTemperatureMatrix(image.record, image.record, matrix);
  EXPECT_EQ(image, Bgr({{{124, 148, 222}}}));
}

TEST(ColourTemperature, HugeAndSenselessMatricesGiveTheBytesOfTheReference) {
  std::mt19937 random(31);
  Image image(kRoxeFormatRGB24, 64, 8);
  image.randomise(random);
  for (const float entry : {1e30f, -1e30f, 524287.0f, -524287.0f, 1e10f - 1e38f * 1e38f}) {
    Matrix matrix;
    matrix.fill(entry);
    Image dst(image), expected(image);
    roxe::ApplyStdColorTemperatureMatrix(image.record, dst.record, matrix.data());
    reference::ApplyStdColorTemperatureMatrix(image, expected, matrix);
    EXPECT_EQ(dst, expected) << entry;
  }
}

TEST(ColourTemperature, RecordsAreVerifiedSourceFirst) {
  Image image = Bgr({{{1, 2, 3}}});
  PixelArray bad = image.record;
  bad.width = 0;
  EXPECT_EQ(roxeColorTemperature(nullptr, &bad, 0, 0), kRoxeErrNull);
  EXPECT_EQ(roxeColorTemperature(&bad, nullptr, 0, 0), kRoxeErrInvalid);
  EXPECT_EQ(roxeColorTemperature(image, &bad, 0, 0), kRoxeErrInvalid);
  const AllocationWatch watch;
  EXPECT_EQ(roxeColorTemperature(image, nullptr, 0, 0), kRoxeErrNull);
  EXPECT_EQ(watch.allocations(), 0);
  EXPECT_EQ(image, Bgr({{{1, 2, 3}}}));
}

TEST(ColourTemperature, OtherFormatsAreUsedAs24Bit) {
  Image image = Bgr({{{100, 150, 200}, {100, 150, 200}}});
  image.record.format = kRoxeFormatGray8;  // two columns of three bytes
  EXPECT_EQ(roxeColorTemperature(image, image, 30, 0), kRoxeOK);
  image.record.format = kRoxeFormatRGB24;
  EXPECT_EQ(image, Bgr({{{88, 142, 227}, {88, 142, 227}}}));

  PixelArray unknown = image.record;
  unknown.format = 7;
  unknown.pixels = nullptr;
  EXPECT_EQ(roxeColorTemperature(&unknown, image, 30, 0), kRoxeOK);
  EXPECT_EQ(roxeColorTemperature(image, &unknown, 30, 0), kRoxeOK);
}

TEST(ColourTemperature, OnlyTheCommonAreaIsWritten) {
  Image small = Bgr({{{100, 150, 200}}});
  Image large = Bgr({{{1, 2, 3}, {4, 5, 6}}, {{7, 8, 9}, {1, 2, 3}}});
  EXPECT_EQ(roxeColorTemperature(small, large, 30, 0), kRoxeOK);
  EXPECT_EQ(large, Bgr({{{88, 142, 227}, {4, 5, 6}}, {{7, 8, 9}, {1, 2, 3}}}));
}

TEST(ColourTemperature, WorksInPlace) {
  std::mt19937 random(32);
  Image src(kRoxeFormatRGB24, 301, 7, 3 * 301 + 5);
  src.randomise(random);
  for (const int32_t temperature : {-80, 0, 60}) {
    Image apart(src), in_place(src);
    roxeColorTemperature(src, apart, temperature, 25);
    roxeColorTemperature(in_place, in_place, temperature, 25);
    EXPECT_EQ(in_place, apart);
  }
}

TEST(ColourTemperature, NeedsNoMemory) {
  Image image = Bgr({{{100, 150, 200}}});
  const AllocationWatch watch;
  EXPECT_EQ(roxeColorTemperature(image, image, 30, 0), kRoxeOK);
  EXPECT_EQ(watch.allocations(), 0);
  EXPECT_EQ(image, Bgr({{{88, 142, 227}}}));
}

}  // namespace
