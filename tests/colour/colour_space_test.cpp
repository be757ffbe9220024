#include "colour/colour_space.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace {

using Triple = std::array<int32_t, 3>;

Triple Hsv(uint32_t red, uint32_t green, uint32_t blue) {
  Triple hsv;
  roxe::XRDRGB2HSV(red, green, blue, &hsv[0], &hsv[1], &hsv[2]);
  return hsv;
}

Triple Rgb(float hue, float saturation, float value) {
  uint8_t red, green, blue;
  roxe::XRDHSV2RGB(hue, saturation, value, &red, &green, &blue);
  return {red, green, blue};
}

struct Hsl {
  float hue, saturation, lightness;
};

Hsl ToHsl(uint32_t red, uint32_t green, uint32_t blue) {
  Hsl hsl;
  roxe::XRDRGB2HSL(red, green, blue, &hsl.hue, &hsl.saturation, &hsl.lightness);
  return hsl;
}

TEST(ColourSpace, GreysHaveHue180AndNoSaturation) {
  EXPECT_EQ(Hsv(0, 0, 0), (Triple{180, 0, 0}));
  EXPECT_EQ(Hsv(200, 200, 200), (Triple{180, 0, 200}));
}

TEST(ColourSpace, HuesOfThePrimaries) {
  EXPECT_EQ(Hsv(255, 0, 0), (Triple{360, 255, 255}));  // 300 - (15 * -255 * 4096 >> 18 = -60)
  EXPECT_EQ(Hsv(255, 255, 0), (Triple{60, 255, 255}));
  EXPECT_EQ(Hsv(0, 255, 0), (Triple{121, 255, 255}));  // 180 - (59.77 rounded down)
  EXPECT_EQ(Hsv(0, 255, 255), (Triple{180, 255, 255}));
  EXPECT_EQ(Hsv(0, 0, 255), (Triple{240, 255, 255}));
  EXPECT_EQ(Hsv(255, 0, 255), (Triple{300, 255, 255}));
}

TEST(ColourSpace, FullSaturationOftenComesOutAs254) {
  // div_table[7] is 149211, a little below 1044480 / 7: 7 * 149211 >> 12 = 254.
  EXPECT_EQ(Hsv(7, 0, 0)[1], 254);
  // div_table[11] is 94953, a little above: 11 * 94953 >> 12 = 255.
  EXPECT_EQ(Hsv(11, 0, 0)[1], 255);
}

TEST(ColourSpace, HueRoundsTowardMinusInfinity) {
  // d = 20 - 30, range 20: 15 * -10 * 52224 >> 18 = -29.88 down to -30.
  EXPECT_EQ(Hsv(10, 20, 30), (Triple{210, 170, 30}));
  // d = 200 - 100 from red - green, range 150: 15 * 100 * 6963 >> 18 = 39.84 down to 39.
  EXPECT_EQ(Hsv(200, 100, 50), (Triple{21, 191, 200}));
}

TEST(ColourSpace, SectorsOfTheHue) {
  // Saturation and value 1: p = 0. 30 degrees into a sector f = 0.5: q = t = 127.5 cut to 127.
  EXPECT_EQ(Rgb(30, 255, 255), (Triple{255, 127, 0}));
  EXPECT_EQ(Rgb(90, 255, 255), (Triple{127, 255, 0}));
  EXPECT_EQ(Rgb(150, 255, 255), (Triple{0, 255, 127}));
  EXPECT_EQ(Rgb(210, 255, 255), (Triple{0, 127, 255}));
  EXPECT_EQ(Rgb(270, 255, 255), (Triple{127, 0, 255}));
  EXPECT_EQ(Rgb(330, 255, 255), (Triple{255, 0, 127}));
  // 15 degrees: f = 0.25. s = 0.2: p = 100 - 20, t = p + 20 * 0.25.
  EXPECT_EQ(Rgb(15, 51, 100), (Triple{100, 85, 80}));
  EXPECT_EQ(Rgb(75, 51, 100), (Triple{95, 100, 80}));
}

TEST(ColourSpace, WithoutSaturationTheHueHasNoEffect) {
  EXPECT_EQ(Rgb(0, 0, 77), (Triple{77, 77, 77}));
  EXPECT_EQ(Rgb(123, 0, 77.9f), (Triple{77, 77, 77}));
  EXPECT_EQ(Rgb(123, -5, 77), (Triple{77, 77, 77}));
  EXPECT_EQ(Rgb(std::numeric_limits<float>::quiet_NaN(), 0, 77), (Triple{77, 77, 77}));
}

TEST(ColourSpace, HueIsWrappedAndTheRestClamped) {
  EXPECT_EQ(Rgb(-30, 255, 255), Rgb(330, 255, 255));
  EXPECT_EQ(Rgb(400, 255, 255), Rgb(40, 255, 255));
  EXPECT_EQ(Rgb(30, 300, 255), (Triple{255, 127, 0}));
  EXPECT_EQ(Rgb(30, 255, 300), (Triple{255, 127, 0}));
  EXPECT_EQ(Rgb(30, 255, -1), (Triple{0, 0, 0}));
}

TEST(ColourSpace, HuesBeyondOneTurnAreWrappedInFull) {
  EXPECT_EQ(Rgb(720, 255, 255), (Triple{255, 0, 0}));
  EXPECT_EQ(Rgb(750, 255, 255), (Triple{255, 127, 0}));
  EXPECT_EQ(Rgb(-390, 255, 255), Rgb(330, 255, 255));
  EXPECT_EQ(Rgb(3600030, 255, 255), (Triple{255, 127, 0}));
  EXPECT_EQ(Rgb(-1e-6f, 255, 255), (Triple{255, 0, 0}));  // rounds to 360
  const float infinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(Rgb(infinity, 255, 255), (Triple{255, 0, 0}));
  EXPECT_EQ(Rgb(-infinity, 255, 255), (Triple{255, 0, 0}));
  EXPECT_EQ(Rgb(std::numeric_limits<float>::quiet_NaN(), 255, 255), (Triple{255, 0, 0}));
}

TEST(ColourSpace, ValuesThatAreNoNumbersGiveSomeByte) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(Rgb(10, 255, nan), (Triple{0, 0, 0}));
  EXPECT_EQ(Rgb(10, nan, 255), (Triple{255, 0, 0}));
}

TEST(ColourSpace, LightnessOfAGreyIsItsLevel) {
  const Hsl grey = ToHsl(77, 77, 77);
  EXPECT_EQ(grey.hue, -1.0f);
  EXPECT_EQ(grey.saturation, 0.0f);
  EXPECT_EQ(grey.lightness, 77.0f);
}

TEST(ColourSpace, HslOfColours) {
  const Hsl dark = ToHsl(100, 50, 0);  // lightness 50, delta 100 of 100; hue 60 * 50 / 100
  EXPECT_EQ(dark.hue, 30.0f);
  EXPECT_EQ(dark.saturation, 1.0f);
  EXPECT_EQ(dark.lightness, 50.0f);
  const Hsl bright = ToHsl(155, 205, 255);  // delta 100 of 510 - 255 - 155; hue 60 * (4 - 0.5)
  EXPECT_EQ(bright.hue, 210.0f);
  EXPECT_EQ(bright.saturation, 1.0f);
  EXPECT_EQ(bright.lightness, 205.0f);
  const Hsl green = ToHsl(0, 200, 100);  // 60 * (2 + 0.5)
  EXPECT_EQ(green.hue, 150.0f);
  const Hsl purple = ToHsl(200, 0, 100);  // 60 * -0.5 + 360
  EXPECT_EQ(purple.hue, 330.0f);
}

}  // namespace
