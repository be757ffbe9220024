// The colour family against the plain reference: every byte and every bit, on random and hostile
// input, and on all 2^24 colours. The reference itself is first held against literals.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

#include "colour/colour_distance.h"
#include "colour/colour_space.h"
#include "colour/colour_temperature.h"
#include "colour/linear_light.h"
#include "colour/replace_colour.h"
#include "colour/white_point.h"
#include "differential/pairs.h"
#include "reference/colour.h"
#include "support/image.h"

namespace {

using differential::Amount;
using differential::Below;
using differential::Pair;

// ------------------------------------------------------------------- the reference by literals

struct Hsv {
  int32_t hue, saturation, value;
  bool operator==(const Hsv&) const = default;
};

Hsv ToHsv(uint32_t red, uint32_t green, uint32_t blue) {
  Hsv hsv;
  reference::XRDRGB2HSV(red, green, blue, &hsv.hue, &hsv.saturation, &hsv.value);
  return hsv;
}

struct Rgb {
  int32_t red, green, blue;
  bool operator==(const Rgb&) const = default;
};

Rgb ToRgb(float hue, float saturation, float value) {
  uint8_t red, green, blue;
  reference::XRDHSV2RGB(hue, saturation, value, &red, &green, &blue);
  return {red, green, blue};
}

TEST(ReferenceColour, ReciprocalsAreRoundedToTheNearest) {
  EXPECT_EQ(reference::div_table(0), 0u);
  EXPECT_EQ(reference::div_table(1), 1044480u);
  EXPECT_EQ(reference::div_table(2), 522240u);
  EXPECT_EQ(reference::div_table(7), 149211u);  // 149211.43
  EXPECT_EQ(reference::div_table(11), 94953u);  // 94952.73
  EXPECT_EQ(reference::div_table(255), 4096u);
}

TEST(ReferenceColour, HueOfThePrimariesAndOfGreys) {
  EXPECT_EQ(ToHsv(255, 0, 0), (Hsv{360, 255, 255}));
  EXPECT_EQ(ToHsv(255, 255, 0), (Hsv{60, 255, 255}));
  EXPECT_EQ(ToHsv(0, 255, 0), (Hsv{121, 255, 255}));
  EXPECT_EQ(ToHsv(0, 255, 255), (Hsv{180, 255, 255}));
  EXPECT_EQ(ToHsv(0, 0, 255), (Hsv{240, 255, 255}));
  EXPECT_EQ(ToHsv(255, 0, 255), (Hsv{300, 255, 255}));
  EXPECT_EQ(ToHsv(0, 0, 0), (Hsv{180, 0, 0}));
  EXPECT_EQ(ToHsv(200, 200, 200), (Hsv{180, 0, 200}));
  // 20 * 34816 >> 12 = 170; 15 * -10 * 52224 >> 18 = -30 (-29.88 rounded down), 180 + 30.
  EXPECT_EQ(ToHsv(10, 20, 30), (Hsv{210, 170, 30}));
  EXPECT_EQ(ToHsv(7, 0, 0), (Hsv{360, 254, 7}));  // 7 * 149211 is just below 255 * 4096
}

TEST(ReferenceColour, HuesAreWrappedAndTheRestIsClamped) {
  EXPECT_EQ(ToRgb(0, 255, 200), (Rgb{200, 0, 0}));
  EXPECT_EQ(ToRgb(30, 255, 200), (Rgb{200, 100, 0}));
  EXPECT_EQ(ToRgb(90, 255, 200), (Rgb{100, 200, 0}));
  EXPECT_EQ(ToRgb(150, 255, 200), (Rgb{0, 200, 100}));
  EXPECT_EQ(ToRgb(210, 255, 200), (Rgb{0, 100, 200}));
  EXPECT_EQ(ToRgb(270, 255, 200), (Rgb{100, 0, 200}));
  EXPECT_EQ(ToRgb(330, 255, 200), (Rgb{200, 0, 100}));
  EXPECT_EQ(ToRgb(-30, 255, 200), (Rgb{200, 0, 100}));
  EXPECT_EQ(ToRgb(400, 255, 200), (Rgb{200, 133, 0}));  // 40 degrees: 200 * 2 / 3
  EXPECT_EQ(ToRgb(360, 255, 200), (Rgb{200, 0, 0}));
  EXPECT_EQ(ToRgb(30, 300, 300), (Rgb{255, 127, 0}));
  EXPECT_EQ(ToRgb(30, -1, -1), (Rgb{0, 0, 0}));
  EXPECT_EQ(ToRgb(77, 0, 99.9f), (Rgb{99, 99, 99}));
}

TEST(ReferenceColour, HuesFarOutsideAreWrappedFully) {
  const float infinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(ToRgb(750, 255, 200), (Rgb{200, 100, 0}));
  EXPECT_EQ(ToRgb(720, 255, 200), (Rgb{200, 0, 0}));
  EXPECT_EQ(ToRgb(-690, 255, 200), (Rgb{200, 100, 0}));
  EXPECT_EQ(ToRgb(-1e-9f, 255, 200), (Rgb{200, 0, 0}));  // 360 when rounded
  EXPECT_EQ(ToRgb(infinity, 255, 200), (Rgb{200, 0, 0}));
  EXPECT_EQ(ToRgb(-infinity, 255, 200), (Rgb{200, 0, 0}));
  EXPECT_EQ(ToRgb(std::nanf(""), 255, 200), (Rgb{200, 0, 0}));
  EXPECT_EQ(ToRgb(std::nanf(""), 0, 200), (Rgb{200, 200, 200}));
}

TEST(ReferenceColour, HueSaturationLightness) {
  float hue, saturation, lightness;
  reference::XRDRGB2HSL(80, 80, 80, &hue, &saturation, &lightness);
  EXPECT_EQ(hue, -1.0f);
  EXPECT_EQ(saturation, 0.0f);
  EXPECT_EQ(lightness, 80.0f);
  reference::XRDRGB2HSL(100, 50, 0, &hue, &saturation, &lightness);
  EXPECT_EQ(hue, 30.0f);
  EXPECT_EQ(saturation, 1.0f);
  EXPECT_EQ(lightness, 50.0f);
  reference::XRDRGB2HSL(255, 155, 205, &hue, &saturation, &lightness);
  EXPECT_EQ(hue, 330.0f);       // -0.5 * 60 + 360
  EXPECT_EQ(saturation, 1.0f);  // 100 / (510 - 255 - 155)
  EXPECT_EQ(lightness, 205.0f);
}

struct MetricTables {
  uint32_t fade[256], cosine[361], reciprocal[202];
  MetricTables() { reference::init_cylindrical_metric(fade, 256, cosine, 361, reciprocal, 202); }
  uint32_t distance(Hsv colour, Hsv ref, uint32_t limit) const {
    return reference::cylindrical_metric(
        colour.hue, colour.saturation, static_cast<uint32_t>(colour.value), ref.hue, ref.saturation,
        static_cast<uint32_t>(ref.value), limit, limit * limit, reciprocal[limit], fade, cosine);
  }
};

TEST(ReferenceColour, TablesOfTheMetric) {
  const MetricTables tables;
  EXPECT_EQ(tables.fade[0], 256u);
  EXPECT_EQ(tables.fade[1], 254u);  // 254.72
  EXPECT_EQ(tables.fade[33], 1u);   // 1.1
  for (int32_t i = 34; i < 256; ++i) EXPECT_EQ(tables.fade[i], 0u) << i;
  const auto cosine = [&](int32_t i) { return static_cast<int32_t>(tables.cosine[i]); };
  EXPECT_EQ(cosine(0), 32768);
  EXPECT_EQ(cosine(60), 16383);
  EXPECT_EQ(cosine(90), 0);
  EXPECT_EQ(cosine(120), -16384);
  EXPECT_EQ(cosine(180), -32768);
  EXPECT_EQ(cosine(240), -16383);
  EXPECT_EQ(cosine(300), 16384);
  EXPECT_EQ(cosine(360), 32768);
  EXPECT_EQ(tables.reciprocal[0], 0u);
  EXPECT_EQ(tables.reciprocal[1], 16384u);
  EXPECT_EQ(tables.reciprocal[11], 1489u);
  EXPECT_EQ(tables.reciprocal[201], 81u);
}

TEST(ReferenceColour, Distances) {
  const MetricTables tables;
  const Hsv red = ToHsv(200, 0, 0);
  EXPECT_EQ(tables.distance(red, red, 201), 0u);
  EXPECT_EQ(tables.distance({10, 255, 255}, {190, 255, 255}, 201), 201u);
  EXPECT_EQ(tables.distance({180, 0, 77}, {180, 0, 77}, 1), 0u);
  // Greys that differ by 20: 400 / 4 = 100 below 11 * 11, 100 * 1489 >> 14 = 9; by 22: 121 is not.
  EXPECT_EQ(tables.distance({180, 0, 220}, {180, 0, 200}, 11), 9u);
  EXPECT_EQ(tables.distance({180, 0, 222}, {180, 0, 200}, 11), 11u);
  EXPECT_EQ(tables.distance({180, 0, 201}, {180, 0, 200}, 1), 0u);  // 1 / 4
  EXPECT_EQ(tables.distance({180, 0, 202}, {180, 0, 200}, 1), 1u);
  // Near black the opposite hue counts little: both saturations fall to 255 + (250 * -253 >> 8) =
  // 7, and (7 + 7)^2 / 4 = 49 gives 49 * 1489 >> 14.
  EXPECT_EQ(tables.distance({360, 255, 2}, {180, 255, 2}, 11), 4u);
}

TEST(ReferenceColour, FalloffOfElevenSteps) {
  int32_t table[256];
  reference::create_blur_table(table, 256, 11);
  const int32_t expected[] = {65536, 65458, 64914, 63454, 60668, 56242,
                              50005, 41983, 32429, 21812, 10768};
  for (int32_t i = 0; i < 256; ++i) EXPECT_EQ(table[i], i < 11 ? expected[i] : 0) << i;
}

TEST(ReferenceColour, OtherMetrics) {
  EXPECT_EQ(reference::achromatic_pixel_metric(0, 10, 10, 0, 0, 10, 50), 1.0);
  EXPECT_EQ(reference::achromatic_pixel_metric(0, 9, 90, 0, 99, 65, 50), 0.5);
  EXPECT_EQ(reference::achromatic_pixel_metric(0, 90, 9, 0, 99, 60, 50), 1.0);
  // 20 degrees around 0, 2^3 and 6^2: the root of 64.
  EXPECT_EQ(reference::minkowski_metric(350, 10, 20, 10, 12, 26, 16), 0.5);
  EXPECT_EQ(reference::minkowski_metric(350, 10, 20, 10, 12, 26, 7), 1.0);
  EXPECT_EQ(reference::canberra_metric(1, 2, 0, 3, 2, 0, 2), 0.25);  // 2 / 4 + 0 + nothing
  EXPECT_EQ(reference::canberra_metric(1, 0, 0, -1, 5, 0, 0.5), 1.0);
  EXPECT_EQ(reference::chromatic_metric(1, 2, 3, 4, 5, 6, 7), 0.0);
}

TEST(ReferenceColour, ReplacesRedByGreenAndLeavesTheRest) {
  const Image src = Bgr({{{0, 0, 255}, {255, 0, 0}, {90, 90, 90}}});
  Image dst = Bgr({{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {7, 8, 9}}});
  EXPECT_EQ(reference::roxeReplaceColor(src, dst, 0, 0, 255, 0, 120, 0, 0), 0);
  EXPECT_EQ(dst, Bgr({{{0, 255, 0}, {255, 0, 0}, {90, 90, 90}, {7, 8, 9}}}));
}

TEST(ReferenceColour, GreysAreBrightenedButNotTinted) {
  const Image src = Bgr({{{100, 100, 100}}});
  Image dst = Bgr({{{0, 0, 0}}});
  EXPECT_EQ(reference::roxeReplaceColor(src, dst, 100, 100, 100, 0, 90, 100, 10), 0);
  EXPECT_EQ(dst, Bgr({{{125, 125, 125}}}));  // 25.5 truncated
}

TEST(ReferenceColour, MaskFollowsTheFalloff) {
  const Image src = Bgr({{{200, 200, 200}, {208, 208, 208}, {220, 220, 220}, {222, 222, 222}}});
  Image mask = Bgr({{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}}});
  // Distances 0, 16 * 1489 >> 14 = 1, 9 and beyond; 65458 and 21812 times 255 / 65536.
  const Image expected = Bgr({{{255, 255, 255}, {254, 254, 254}, {84, 84, 84}, {0, 0, 0}}});
  EXPECT_EQ(reference::roxeReplaceColorMask(src, mask, 200, 200, 200, 10), 0);
  EXPECT_EQ(mask, expected);
  mask.fill(3);
  EXPECT_EQ(reference::roxeColorTintMask(src, mask, 200, 200, 200, 10), 0);
  EXPECT_EQ(mask, expected);
}

TEST(ReferenceColour, TintKeepsTheReferenceAndTurnsTheRestGrey) {
  const Image src = Bgr({{{0, 0, 200}, {0, 0, 180}, {255, 255, 255}, {100, 100, 100}}});
  Image dst = Bgr({{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}}});
  EXPECT_EQ(reference::roxeColorTint(src, dst, 0, 0, 200, 10), 0);
  // The second has 400 + 65025 + 64516 - 129540 = 401 for its sum, distance 9, weight 13401 / 16384
  // towards 180 * 76 >> 8 = 53.
  EXPECT_EQ(dst, Bgr({{{0, 0, 200}, {43, 43, 76}, {254, 254, 254}, {99, 99, 99}}}));
}

TEST(ReferenceColour, LargeTolerancesAndComponentsAreClamped) {
  std::mt19937 random(11);
  Image src(kRoxeFormatRGB24, 30, 30), a(src), b(src);
  differential::Paint(src, random, {255, 40, 255});
  reference::roxeReplaceColor(src, a, 255, 40, 255, 200, 40, 10, 10);
  reference::roxeReplaceColor(src, b, 256, 40, 0xFFFFFFFFu, 0xFFFFFFFFu, 40, 10, 10);
  EXPECT_EQ(a, b);
  reference::roxeColorTint(src, a, 255, 40, 255, 200);
  reference::roxeColorTint(src, b, 256, 40, 0xFFFFFFFFu, 201);
  EXPECT_EQ(a, b);
}

TEST(ReferenceColour, MissingRecordsOrPixelsTouchNothing) {
  Image image = Bgr({{{1, 2, 3}}});
  const Image before(image);
  EXPECT_EQ(reference::roxeReplaceColor(nullptr, image, 1, 2, 3, 9, 9, 9, 9), 0);
  EXPECT_EQ(reference::roxeReplaceColor(image, nullptr, 1, 2, 3, 9, 9, 9, 9), 0);
  EXPECT_EQ(reference::roxeReplaceColorMask(nullptr, image, 1, 2, 3, 9), 0);
  EXPECT_EQ(reference::roxeColorTint(nullptr, image, 1, 2, 3, 9), 0);
  EXPECT_EQ(reference::roxeColorTemperature(nullptr, image, 1, 2), 2);
  EXPECT_EQ(reference::roxeColorTemperature(image, nullptr, 1, 2), 2);
  Image empty(image);
  empty.record.pixels = nullptr;
  EXPECT_EQ(reference::roxeReplaceColor(empty, image, 1, 2, 3, 9, 9, 9, 9), 0);
  EXPECT_EQ(reference::roxeColorTemperature(empty, image, 1, 2), 1);
  EXPECT_EQ(image, before);
}

TEST(ReferenceColour, TablesOfTheTransferFunction) {
  const std::vector<float> forward = reference::CreatesRGB2LinearRGBIndex();
  const std::vector<uint8_t> inverse = reference::CreateLinearRGB2sRGBIndex();
  ASSERT_EQ(forward.size(), 256u);
  ASSERT_EQ(inverse.size(), 4097u);
  EXPECT_EQ(forward[0], 0.0f);
  EXPECT_NEAR(forward[10], 10.0 / 255 / 12.92, 1e-9);
  EXPECT_NEAR(forward[11], std::pow((11.0 / 255 + 0.055) / 1.055, 2.4), 1e-9);
  EXPECT_EQ(forward[255], 1.0f);
  EXPECT_EQ(inverse[0], 0);
  EXPECT_EQ(inverse[12], 10);
  EXPECT_EQ(inverse[4096], 255);
  std::set<size_t> one_below;
  for (size_t i = 0; i < 256; ++i) {
    const size_t back = inverse[static_cast<size_t>(forward[i] * 4096.0f)];
    if (back + 1 == i)
      one_below.insert(i);
    else
      EXPECT_EQ(back, i);
  }
  EXPECT_EQ(one_below, (std::set<size_t>{3, 4, 7, 8, 11, 14, 17}));
}

TEST(ReferenceColour, WhitePoints) {
  const auto near = [](reference::WhitePoint white, double x, double y) {
    EXPECT_EQ(white.Y, 1.0f);
    EXPECT_NEAR(white.x, x, 5e-5);
    EXPECT_NEAR(white.y, y, 5e-5);
  };
  near(reference::GetWhitePoint(6500, 0), 0.3128, 0.3292);
  near(reference::GetWhitePoint(0, 50), 0.64, 0.33);
  near(reference::GetWhitePoint(41000, 50), 0.15, 0.06);
  const reference::WhitePoint neutral = reference::GetWhitePoint(5500, 0);
  EXPECT_NEAR(reference::GetWhitePoint(5500, 1).x - neutral.x, 0.0006, 1e-7);
  EXPECT_NEAR(reference::GetWhitePoint(5500, -1).x - neutral.x, -0.00045, 1e-7);
  // Across the normal: the slope of the locus times that of the shift is -1.
  const reference::WhitePoint shifted = reference::GetWhitePoint(5500, 50);
  const double along = 2.87 - 6.0 * static_cast<double>(neutral.x);
  EXPECT_NEAR(static_cast<double>(shifted.y - neutral.y) / (shifted.x - neutral.x) * along, -1.0,
              1e-4);
  const reference::WhitePoint warm = reference::GetWhitePoint(4000, 0);
  EXPECT_NEAR(reference::GetWhitePoint(3999, 9).x - warm.x, (0.64 - warm.x) / 4000, 1e-7);
}

TEST(ReferenceColour, MatricesTakeOneWhiteToTheOther) {
  reference::Matrix3 m;
  ASSERT_TRUE(reference::GetRGB2XYZMatrix(reference::kPrimaries, 6504, 0, &m));
  for (size_t i = 0; i < 3; ++i) {  // white is the sum of the columns
    const double sums[3] = {0.9504, 1.0, 1.0888};
    EXPECT_NEAR(m[3 * i] + m[3 * i + 1] + m[3 * i + 2], sums[i], 1e-3);
  }
  ASSERT_TRUE(reference::GetColorTemperatureMatrix(5000, 3, 5000, 3, &m));
  EXPECT_EQ(m, (reference::Matrix3{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  ASSERT_TRUE(reference::GetSRGBColorTemperatureMatrix(5000, 3, 5000, 3, &m));
  EXPECT_EQ(m, (reference::Matrix3{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  ASSERT_TRUE(reference::GetBradfordXYZMatrix(5000, 0, 6500, 20, &m));
  const reference::WhitePoint from = reference::GetWhitePoint(5000, 0);
  const reference::WhitePoint to = reference::GetWhitePoint(6500, 20);
  EXPECT_NEAR(m[0] * from.x / from.y + m[1] + m[2] * (1 - from.x - from.y) / from.y, to.x / to.y,
              1e-5);
  EXPECT_NEAR(m[3] * from.x / from.y + m[4] + m[5] * (1 - from.x - from.y) / from.y, 1.0, 1e-5);
}

TEST(ReferenceColour, PlainMatrixUsesItsDiagonal) {
  const Image src = Bgr({{{100, 100, 100}}});
  Image dst = Bgr({{{0, 0, 0}}});
  reference::ApplyColorTemperatureMatrix(src, dst, {0.5f, 9, 9, 9, 1.239f, 9, 9, 9, 4.0f});
  EXPECT_EQ(dst, Bgr({{{255, 123, 50}}}));
}

TEST(ReferenceColour, MatrixInLinearLightSharesWhatOverflows) {
  const Image src = Bgr({{{0, 0, 255}, {255, 255, 255}}});
  Image dst = Bgr({{{1, 1, 1}, {1, 1, 1}}});
  // Red twice: the excess of 1 gives 0.5 to each of the others, encoded 187.5 + 0.5.
  reference::ApplySRGBColorTemperatureMatrix(src, dst, {2, 0, 0, 0, 1, 0, 0, 0, 1});
  EXPECT_EQ(dst, Bgr({{{188, 188, 255}, {255, 255, 255}}}));
}

TEST(ReferenceColour, Temperature) {
  const auto after = [](Pixel pixel, int32_t temperature, int32_t tint) {
    const Image src = Bgr({{pixel}});
    Image dst = Bgr({{{1, 1, 1}}});
    EXPECT_EQ(reference::roxeColorTemperature(src, dst, temperature, tint), 0);
    return dst;
  };
  EXPECT_EQ(after({255, 255, 3}, 0, 0), Bgr({{{207, 235, 2}}}));
  EXPECT_EQ(after({9, 0, 0}, -100, 0), Bgr({{{0, 0, 0}}}));
  EXPECT_EQ(after({0, 0, 0}, 60, -60), Bgr({{{0, 0, 0}}}));
  EXPECT_EQ(after({255, 255, 255}, 0, 0), Bgr({{{255, 255, 255}}}));
  EXPECT_EQ(after({90, 80, 70}, 150, -300), after({90, 80, 70}, 100, -100));
  const reference::Matrix3 coldest = reference::GetStdColorTemperatureMatrix(-100, 0);
  EXPECT_NEAR(coldest[0], 0.132f, 1e-6);
  EXPECT_EQ(coldest[4], 1.0f);
  EXPECT_EQ(coldest[8], 11.5f);
}

// ---------------------------------------------------------------------- the library against it

Pixel RandomColour(std::mt19937& random) {
  constexpr Pixel kColours[] = {{0, 0, 0},     {255, 255, 255}, {128, 128, 128}, {0, 0, 255},
                                {255, 255, 0}, {3, 2, 1},       {33, 0, 34}};
  if (Below(random, 3) == 0) return kColours[Below(random, 7)];
  const auto byte = [&] { return static_cast<uint8_t>(random() >> 24); };
  return {byte(), byte(), byte()};
}

// Sometimes a number that is not a byte.
uint32_t Component(std::mt19937& random, uint8_t value) {
  constexpr uint32_t kBeyond[] = {256, 1000, 0x80000000u, 0xFFFFFFFFu};
  return Below(random, 12) == 0 ? kBeyond[Below(random, 4)] : value;
}

uint32_t Tolerance(std::mt19937& random) {
  return static_cast<uint32_t>(Amount(random, 0, 200));  // negative ones are read as large
}

// Shifts of which every one that is within 12850 percent either way has its exact result.
int32_t Percent(std::mt19937& random) {
  constexpr int32_t kExtremes[] = {-12850, 12850, -1000, 999, 0};
  return Below(random, 6) == 0 ? kExtremes[Below(random, 5)] : Below(random, 201) - 100;
}

TEST(DifferentialColour, ReplaceColor) {
  std::mt19937 random(501);
  for (int32_t i = 0; i < 1500 && !HasFailure(); ++i) {
    const Pixel colour = RandomColour(random);
    const Pair pair(random, colour);
    const uint32_t blue = Component(random, colour.blue);
    const uint32_t green = Component(random, colour.green);
    const uint32_t red = Component(random, colour.red);
    const uint32_t tolerance = Tolerance(random);
    const int32_t hue = Below(random, 2) ? Below(random, 721) - 360 : Amount(random, -2000, 2000);
    const int32_t saturation = Percent(random), value = Percent(random);
    SCOPED_TRACE(testing::Message()
                 << "case " << i << ": BGR " << blue << ' ' << green << ' ' << red << ", tolerance "
                 << tolerance << ", shifts " << hue << ' ' << saturation << ' ' << value);
    const auto with = [&](auto operation) {
      return [=](const PixelArray* src, PixelArray* dst) {
        return operation(src, dst, blue, green, red, tolerance, hue, saturation, value);
      };
    };
    pair.ExpectSame(with(::roxeReplaceColor), with(reference::roxeReplaceColor));
  }
}

// Beyond what is exact, every shift still has a result and no other effect.
TEST(DifferentialColour, ReplaceColorWithHugeShiftsTouchesOnlyTheSelection) {
  std::mt19937 random(502);
  Image src(kRoxeFormatRGB24, 40, 30, 131);
  differential::Paint(src, random, {40, 90, 200});
  Image mask(src);
  reference::roxeReplaceColorMask(src, mask, 40, 90, 200, 60);
  for (int32_t i = 0; i < 50; ++i) {
    Image dst(src);
    EXPECT_EQ(
        ::roxeReplaceColor(src, dst, 40, 90, 200, 60, Amount(random, -360, 360),
                           Amount(random, -1000000, 1000000), Amount(random, -1000000, 1000000)),
        0);
    for (int32_t y = 0; y < 30; ++y)
      for (int32_t x = 0; x < 40; ++x)
        if (mask.pixel(x, y)[0] == 0) {
          for (int32_t c = 0; c < 3; ++c) ASSERT_EQ(dst.pixel(x, y)[c], src.pixel(x, y)[c]);
        }
  }
}

TEST(DifferentialColour, AHueShiftOfAFullCircleIsNone) {
  std::mt19937 random(503);
  Image src(kRoxeFormatRGB24, 60, 60);
  differential::Paint(src, random, {0, 0, 255});
  Image none(src), circle(src);
  ::roxeReplaceColor(src, none, 0, 0, 255, 150, 0, 20, -20);
  for (const int32_t turns : {-3, -1, 1, 2, 1000}) {
    ::roxeReplaceColor(src, circle, 0, 0, 255, 150, 360 * turns, 20, -20);
    EXPECT_EQ(circle, none) << turns;
  }
}

TEST(DifferentialColour, MasksAndTint) {
  std::mt19937 random(504);
  for (int32_t i = 0; i < 1500 && !HasFailure(); ++i) {
    const Pixel colour = RandomColour(random);
    const Pair pair(random, colour);
    const uint32_t blue = Component(random, colour.blue);
    const uint32_t green = Component(random, colour.green);
    const uint32_t red = Component(random, colour.red);
    const uint32_t tolerance = Tolerance(random);
    SCOPED_TRACE(testing::Message() << "case " << i << ": BGR " << blue << ' ' << green << ' '
                                    << red << ", tolerance " << tolerance);
    const auto with = [&](auto operation) {
      return [=](const PixelArray* src, PixelArray* dst) {
        return operation(src, dst, blue, green, red, tolerance);
      };
    };
    pair.ExpectSame(with(::roxeReplaceColorMask), with(reference::roxeReplaceColorMask));
    pair.ExpectSame(with(::roxeColorTintMask), with(reference::roxeColorTintMask));
    pair.ExpectSame(with(::roxeColorTint), with(reference::roxeColorTint));
  }
}

TEST(DifferentialColour, EveryTolerance) {
  std::mt19937 random(505);
  for (uint32_t tolerance = 0; tolerance <= 202; ++tolerance) {
    const Pixel colour = RandomColour(random);
    Image src(kRoxeFormatRGB24, 67, 11, 204);
    differential::Paint(src, random, colour);
    Image fast(src), plain(src);
    ::roxeReplaceColorMask(src, fast, colour.blue, colour.green, colour.red, tolerance);
    reference::roxeReplaceColorMask(src, plain, colour.blue, colour.green, colour.red, tolerance);
    ASSERT_EQ(fast, plain) << "mask, tolerance " << tolerance;
    ::roxeColorTint(src, fast, colour.blue, colour.green, colour.red, tolerance);
    reference::roxeColorTint(src, plain, colour.blue, colour.green, colour.red, tolerance);
    ASSERT_EQ(fast, plain) << "tint, tolerance " << tolerance;
    ::roxeReplaceColor(src, fast, colour.blue, colour.green, colour.red, tolerance, 77, 50, -50);
    reference::roxeReplaceColor(src, plain, colour.blue, colour.green, colour.red, tolerance, 77,
                                50, -50);
    ASSERT_EQ(fast, plain) << "replacement, tolerance " << tolerance;
  }
}

TEST(DifferentialColour, PicturesThatShareMemory) {
  std::mt19937 random(517);
  for (int32_t i = 0; i < 300 && !HasFailure(); ++i) {
    const auto with = [&](auto operation, auto... parameters) {
      return [=](const PixelArray* src, PixelArray* dst) {
        return operation(src, dst, parameters...);
      };
    };
    const Pixel near = {40, 90, 200};
    differential::ExpectSameOverlapping(
        random, near, with(::roxeReplaceColor, 40, 90, 200, 99, 40, -9, 9),
        with(reference::roxeReplaceColor, 40, 90, 200, 99, 40, -9, 9));
    differential::ExpectSameOverlapping(random, near, with(::roxeReplaceColorMask, 40, 90, 200, 99),
                                        with(reference::roxeReplaceColorMask, 40, 90, 200, 99));
    differential::ExpectSameOverlapping(random, near, with(::roxeColorTint, 40, 90, 200, 99),
                                        with(reference::roxeColorTint, 40, 90, 200, 99));
    differential::ExpectSameOverlapping(random, near, with(::roxeColorTemperature, -30, 20),
                                        with(reference::roxeColorTemperature, -30, 20));
  }
}

TEST(DifferentialColour, MissingRecords) {
  Image image(kRoxeFormatRGB24, 5, 5);
  const Image before(image);
  EXPECT_EQ(::roxeReplaceColor(nullptr, image, 1, 2, 3, 200, 9, 9, 9), 0);
  EXPECT_EQ(::roxeReplaceColor(image, nullptr, 1, 2, 3, 200, 9, 9, 9), 0);
  EXPECT_EQ(::roxeReplaceColor(nullptr, nullptr, 1, 2, 3, 200, 9, 9, 9), 0);
  EXPECT_EQ(::roxeReplaceColorMask(nullptr, image, 1, 2, 3, 200), 0);
  EXPECT_EQ(::roxeReplaceColorMask(image, nullptr, 1, 2, 3, 200), 0);
  EXPECT_EQ(::roxeColorTintMask(nullptr, image, 1, 2, 3, 200), 0);
  EXPECT_EQ(::roxeColorTintMask(image, nullptr, 1, 2, 3, 200), 0);
  EXPECT_EQ(::roxeColorTint(nullptr, image, 1, 2, 3, 200), 0);
  EXPECT_EQ(::roxeColorTint(image, nullptr, 1, 2, 3, 200), 0);
  EXPECT_EQ(::roxeColorTemperature(nullptr, image, 30, 30), 2);
  EXPECT_EQ(::roxeColorTemperature(image, nullptr, 30, 30), 2);
  EXPECT_EQ(image, before);
}

TEST(DifferentialColour, Temperature) {
  std::mt19937 random(506);
  for (int32_t i = 0; i < 1500 && !HasFailure(); ++i) {
    const Pair pair(random, RandomColour(random));
    const int32_t temperature = Amount(random, -100, 100);
    const int32_t tint = Below(random, 4) == 0 ? 0 : Amount(random, -100, 100);
    SCOPED_TRACE(testing::Message()
                 << "case " << i << ": temperature " << temperature << ", tint " << tint);
    const auto with = [&](auto operation) {
      return [=](const PixelArray* src, PixelArray* dst) {
        return operation(src, dst, temperature, tint);
      };
    };
    pair.ExpectSame(with(::roxeColorTemperature), with(reference::roxeColorTemperature));
  }
}

TEST(DifferentialColour, EveryTemperatureAndEveryTint) {
  std::mt19937 random(507);
  Image src(kRoxeFormatRGB24, 101, 9);
  differential::Paint(src, random, {128, 128, 128});
  Image fast(src), plain(src);
  for (int32_t step = -101; step <= 101; ++step)
    for (const auto& [temperature, tint] : {std::pair{step, 0}, {0, step}, {step, -step}}) {
      ::roxeColorTemperature(src, fast, temperature, tint);
      reference::roxeColorTemperature(src, plain, temperature, tint);
      ASSERT_EQ(fast, plain) << temperature << ", " << tint;
    }
}

// ------------------------------------------------------------------- the steps of the operations

uint32_t Bits(float value) { return std::bit_cast<uint32_t>(value); }
uint64_t Bits(double value) { return std::bit_cast<uint64_t>(value); }

float Between(std::mt19937& random, float low, float high) {
  return low + (high - low) * (static_cast<float>(random() >> 8) / 16777216.0f);
}

TEST(DifferentialColour, HsvToRgb) {
  std::mt19937 random(508);
  const float infinity = std::numeric_limits<float>::infinity();
  const float hues[] = {0.0f,      -0.0f,         1e-9f,  -1e-9f,        59.999996f,
                        60.0f,     359.99997f,    360.0f, -360.0f,       720.0f,
                        -720.0f,   1e9f,          -1e9f,  3e38f,         infinity,
                        -infinity, std::nanf(""), 4e9f,   2147483648.0f, -2147483648.0f};
  for (int32_t i = 0; i < 300000; ++i) {
    float hue = Between(random, -2200, 2200);
    if (i % 3 == 0) hue = std::trunc(hue);
    if (i % 7 == 0) hue = hues[Below(random, 20)];
    float saturation = Between(random, -40, 300), value = Between(random, -40, 300);
    if (i % 5 == 0) saturation = std::trunc(saturation), value = std::trunc(value);
    if (i % 11 == 0) saturation = 0.0f;
    uint8_t fast[3], plain[3];
    roxe::XRDHSV2RGB(hue, saturation, value, &fast[0], &fast[1], &fast[2]);
    reference::XRDHSV2RGB(hue, saturation, value, &plain[0], &plain[1], &plain[2]);
    for (int32_t c = 0; c < 3; ++c)
      ASSERT_EQ(fast[c], plain[c]) << hue << ", " << saturation << ", " << value;
  }
}

TEST(DifferentialColour, RgbToHsl) {
  for (uint32_t red = 0; red < 256; red += 3)
    for (uint32_t green = 0; green < 256; green += 5)
      for (uint32_t blue = 0; blue < 256; ++blue) {
        float fast[3], plain[3];
        roxe::XRDRGB2HSL(red, green, blue, &fast[0], &fast[1], &fast[2]);
        reference::XRDRGB2HSL(red, green, blue, &plain[0], &plain[1], &plain[2]);
        for (int32_t k = 0; k < 3; ++k)
          ASSERT_EQ(Bits(fast[k]), Bits(plain[k])) << red << ' ' << green << ' ' << blue;
      }
}

TEST(DifferentialColour, TablesOfTheMetric) {
  uint32_t fast[3][361], plain[3][361];
  const std::array<uint32_t, 3> all_counts[] = {{256, 361, 202}, {0, 0, 0}, {1, 0, 7}, {34, 91, 1}};
  for (const auto& counts : all_counts) {
    for (auto* tables : {fast, plain})
      for (int32_t k = 0; k < 3; ++k) std::fill_n(tables[k], 361, 0xABCDu);
    roxe::init_cylindrical_metric(fast[0], counts[0], fast[1], counts[1], fast[2], counts[2]);
    reference::init_cylindrical_metric(plain[0], counts[0], plain[1], counts[1], plain[2],
                                       counts[2]);
    for (int32_t k = 0; k < 3; ++k)
      for (int32_t i = 0; i < 361; ++i) ASSERT_EQ(fast[k][i], plain[k][i]) << k << ", " << i;
  }
}

TEST(DifferentialColour, CylindricalMetric) {
  std::mt19937 random(509);
  const MetricTables tables;
  for (int32_t i = 0; i < 1000000; ++i) {
    const Hsv ref = {Below(random, 361), Below(random, 256), Below(random, 256)};
    Hsv colour = {Below(random, 361), Below(random, 256), Below(random, 256)};
    if (i % 2 == 0) {  // near the reference
      colour.hue = std::clamp(ref.hue + Below(random, 21) - 10, 0, 360);
      colour.saturation = std::clamp(ref.saturation + Below(random, 61) - 30, 0, 255);
      colour.value = std::clamp(ref.value + Below(random, 61) - 30, 0, 255);
    }
    const uint32_t limit = 1 + static_cast<uint32_t>(Below(random, 201));
    ASSERT_EQ(roxe::cylindrical_metric(colour.hue, colour.saturation,
                                       static_cast<uint32_t>(colour.value), ref.hue, ref.saturation,
                                       static_cast<uint32_t>(ref.value), limit, limit * limit,
                                       tables.reciprocal[limit], tables.fade, tables.cosine),
              tables.distance(colour, ref, limit))
        << i;
  }
}

TEST(DifferentialColour, OtherMetrics) {
  std::mt19937 random(510);
  using Metric = double (*)(double, double, double, double, double, double, double);
  const std::pair<Metric, Metric> metrics[] = {
      {roxe::achromatic_pixel_metric, reference::achromatic_pixel_metric},
      {roxe::minkowski_metric, reference::minkowski_metric},
      {roxe::canberra_metric, reference::canberra_metric},
      {roxe::chromatic_metric, reference::chromatic_metric}};
  for (int32_t i = 0; i < 20000; ++i) {
    double a[7];
    for (double& argument : a) {
      argument = Below(random, 256);
      if (i % 2 == 0) argument += static_cast<double>(Between(random, -1, 1));
    }
    a[0] = Below(random, 361);
    a[3] = Below(random, 361);
    if (i % 5 == 0) a[1] = a[2] = Below(random, 12);
    if (i % 7 == 0) a[4] = -a[1];
    for (const auto& [fast, plain] : metrics)
      ASSERT_EQ(Bits(fast(a[0], a[1], a[2], a[3], a[4], a[5], a[6])),
                Bits(plain(a[0], a[1], a[2], a[3], a[4], a[5], a[6])))
          << i << ", metric " << &plain - &metrics[0].second;
  }
}

TEST(DifferentialColour, Falloffs) {
  for (const uint32_t size : {256u, 1u, 17u, 0u})
    for (uint32_t steps = 0; steps <= 300; ++steps) {
      int32_t fast[257], plain[257];
      std::fill_n(fast, 257, -5);
      std::fill_n(plain, 257, -5);
      roxe::create_blur_table(fast, size, steps);
      reference::create_blur_table(plain, size, steps);
      for (int32_t i = 0; i < 257; ++i) ASSERT_EQ(fast[i], plain[i]) << steps << ", " << i;
    }
}

TEST(DifferentialColour, TransferFunction) {
  const auto fast_forward = roxe::CreatesRGB2LinearRGBIndex();
  const auto fast_inverse = roxe::CreateLinearRGB2sRGBIndex();
  const std::vector<float> forward = reference::CreatesRGB2LinearRGBIndex();
  const std::vector<uint8_t> inverse = reference::CreateLinearRGB2sRGBIndex();
  for (size_t i = 0; i < forward.size(); ++i) {
    ASSERT_EQ(Bits(fast_forward.get()[i]), Bits(forward[i])) << i;
    float linear;
    roxe::sRGB2LinearRGBChannel(static_cast<uint32_t>(i), &linear);
    ASSERT_EQ(Bits(linear), Bits(forward[i])) << i;
  }
  for (size_t i = 0; i < inverse.size(); ++i) ASSERT_EQ(fast_inverse.get()[i], inverse[i]) << i;

  std::mt19937 random(511);
  const float infinity = std::numeric_limits<float>::infinity();
  std::vector<float> values = {0.00304f, 0.0030399999f, 0.0030400001f, 1.0f,
                               infinity, -infinity,     std::nanf(""), 3e38f};
  for (int32_t i = 0; i < 50000; ++i) values.push_back(Between(random, -0.1f, 1.1f));
  for (int32_t i = 0; i < 50000; ++i) values.push_back(Between(random, 0.0f, 0.01f));
  for (const float value : values) {
    uint8_t byte;
    roxe::LinearRGB2sRGBChannel(&byte, value);
    ASSERT_EQ(byte, reference::LinearRGB2sRGBChannel(value)) << value;
  }
}

TEST(DifferentialColour, GainsOfTheTemperature) {
  float fast[9];
  EXPECT_EQ(roxe::GetStdColorTemperatureMatrix(3, 4, nullptr), 0);
  for (int32_t temperature = -102; temperature <= 102; ++temperature)
    for (int32_t tint = -102; tint <= 102; ++tint) {
      ASSERT_EQ(roxe::GetStdColorTemperatureMatrix(temperature, tint, fast), 1);
      const reference::Matrix3 plain = reference::GetStdColorTemperatureMatrix(temperature, tint);
      for (size_t k = 0; k < 9; ++k)
        ASSERT_EQ(Bits(fast[k]), Bits(plain[k])) << temperature << ", " << tint << ": " << k;
    }
}

// Full matrices: gains of ordinary size, and any float at all.
reference::Matrix3 RandomMatrix(std::mt19937& random) {
  const bool hostile = Below(random, 4) == 0;
  reference::Matrix3 matrix;
  for (float& entry : matrix) {
    entry = Between(random, -2, 3);
    if (hostile && Below(random, 3) == 0)
      entry = std::bit_cast<float>(static_cast<uint32_t>(random()));
  }
  return matrix;
}

TEST(DifferentialColour, AnyMatrixInFixedPoint) {
  std::mt19937 random(513);
  for (int32_t i = 0; i < 400 && !HasFailure(); ++i) {
    const Pair pair(random, RandomColour(random));
    const reference::Matrix3 matrix = RandomMatrix(random);
    SCOPED_TRACE(testing::Message() << "case " << i << ": " << testing::PrintToString(matrix));
    pair.ExpectSame(
        [&](const PixelArray* src, PixelArray* dst) {
          roxe::ApplyStdColorTemperatureMatrix(*src, *dst, matrix.data());
          return 0;
        },
        [&](const PixelArray* src, PixelArray* dst) {
          reference::ApplyStdColorTemperatureMatrix(src, dst, matrix);
          return 0;
        });
  }
}

int32_t Temperature(std::mt19937& random) {
  return Below(random, 3) ? 3000 + Below(random, 24000) : Amount(random, -5000, 60000);
}

TEST(DifferentialColour, WhitePoints) {
  std::mt19937 random(514);
  for (int32_t i = 0; i < 50000; ++i) {
    const int32_t temperature = i < 26010 ? i : Temperature(random);
    const int32_t tint = Amount(random, -100, 100);
    roxe::WhitePoint fast;
    ASSERT_EQ(roxe::GetWhitePoint(temperature, tint, &fast), 1);
    const reference::WhitePoint plain = reference::GetWhitePoint(temperature, tint);
    ASSERT_EQ(Bits(fast.Y), Bits(plain.Y)) << temperature << ", " << tint;
    ASSERT_EQ(Bits(fast.x), Bits(plain.x)) << temperature << ", " << tint;
    ASSERT_EQ(Bits(fast.y), Bits(plain.y)) << temperature << ", " << tint;
  }
}

TEST(DifferentialColour, MatricesBetweenWhites) {
  std::mt19937 random(515);
  float fast[9];
  EXPECT_EQ(roxe::Getuvw(nullptr, 1, 0.3f, 0.3f, fast), 0);
  EXPECT_EQ(roxe::Getuvw(reference::kPrimaries.data(), 1, 0.3f, 0.3f, nullptr), 0);
  EXPECT_EQ(roxe::GetRGB2XYZMatrix(nullptr, 5000, 0, fast), 0);
  EXPECT_EQ(roxe::GetRGB2XYZMatrix(reference::kPrimaries.data(), 5000, 0, nullptr), 0);
  EXPECT_EQ(roxe::GetColorTemperatureMatrix(5000, 0, 5000, 0, nullptr), 0);
  EXPECT_EQ(roxe::GetBradfordXYZMatrix(5000, 0, 6000, 0, nullptr), 0);
  EXPECT_EQ(roxe::GetSRGBColorTemperatureMatrix(5000, 0, 6000, 0, nullptr), 0);
  for (int32_t i = 0; i < 5000; ++i) {
    const int32_t t1 = Temperature(random), tint1 = Amount(random, -100, 100);
    const bool same = Below(random, 10) == 0;
    const int32_t t2 = same ? t1 : Temperature(random);
    const int32_t tint2 = same ? tint1 : Amount(random, -100, 100);
    SCOPED_TRACE(testing::Message() << t1 << ", " << tint1 << " to " << t2 << ", " << tint2);
    const auto same_bits = [&](const float* a, const float* b, int32_t count) {
      for (int32_t k = 0; k < count; ++k)
        if (Bits(a[k]) != Bits(b[k]) && !(std::isnan(a[k]) && std::isnan(b[k]))) return false;
      return true;
    };

    const reference::WhitePoint white = reference::GetWhitePoint(t1, tint1);
    const std::array<float, 3> uvw = reference::Getuvw(reference::kPrimaries, white);
    ASSERT_EQ(roxe::Getuvw(reference::kPrimaries.data(), white.Y, white.x, white.y, fast), 1);
    ASSERT_TRUE(same_bits(fast, uvw.data(), 3));

    reference::Matrix3 plain;
    ASSERT_EQ(roxe::GetRGB2XYZMatrix(reference::kPrimaries.data(), t1, tint1, fast),
              reference::GetRGB2XYZMatrix(reference::kPrimaries, t1, tint1, &plain));
    ASSERT_TRUE(same_bits(fast, plain.data(), 9)) << "RGB to XYZ";
    ASSERT_EQ(roxe::GetBradfordXYZMatrix(t1, tint1, t2, tint2, fast),
              reference::GetBradfordXYZMatrix(t1, tint1, t2, tint2, &plain));
    ASSERT_TRUE(same_bits(fast, plain.data(), 9)) << "Bradford";
    const bool found = reference::GetColorTemperatureMatrix(t1, tint1, t2, tint2, &plain);
    ASSERT_EQ(roxe::GetColorTemperatureMatrix(t1, tint1, t2, tint2, fast), found);
    ASSERT_TRUE(!found || same_bits(fast, plain.data(), 9)) << "plain";
    const bool found_srgb = reference::GetSRGBColorTemperatureMatrix(t1, tint1, t2, tint2, &plain);
    ASSERT_EQ(roxe::GetSRGBColorTemperatureMatrix(t1, tint1, t2, tint2, fast), found_srgb);
    ASSERT_TRUE(!found_srgb || same_bits(fast, plain.data(), 9)) << "sRGB";
  }
}

TEST(DifferentialColour, MatricesOnPictures) {
  std::mt19937 random(516);
  for (int32_t i = 0; i < 400 && !HasFailure(); ++i) {
    const Pair pair(random, RandomColour(random));
    const reference::Matrix3 matrix = RandomMatrix(random);
    SCOPED_TRACE(testing::Message() << "case " << i << ": " << testing::PrintToString(matrix));
    const auto fast = [&](auto apply) {
      return [=](const PixelArray* src, PixelArray* dst) {
        apply(src, dst, matrix.data());
        return 0;
      };
    };
    const auto plain = [&](auto apply) {
      return [=](const PixelArray* src, PixelArray* dst) {
        apply(src, dst, matrix);
        return 0;
      };
    };
    pair.ExpectSame(fast(roxe::ApplyColorTemperatureMatrix),
                    plain(reference::ApplyColorTemperatureMatrix));
    pair.ExpectSame(fast(roxe::ApplySRGBColorTemperatureMatrix),
                    plain(reference::ApplySRGBColorTemperatureMatrix));
  }
}

// ------------------------------------------------------------------------------- all 2^24 colours

// 4096 x 4096 pixels, each colour once.
class ExhaustiveColour : public testing::Test {
 protected:
  static constexpr int32_t kSide = 4096;
  static constexpr int32_t kRowBytes = 3 * kSide;

  static void SetUpTestSuite() {
    colours_ = new std::vector<uint8_t>;
    colours_->reserve(size_t{kRowBytes} * kSide);
    for (uint32_t i = 0; i < 1u << 24; ++i)
      for (const uint32_t shift : {0, 8, 16}) colours_->push_back(static_cast<uint8_t>(i >> shift));
    fast_ = new std::vector<uint8_t>(colours_->size());
    plain_ = new std::vector<uint8_t>(colours_->size());
  }
  static void TearDownTestSuite() {
    delete colours_;
    delete fast_;
    delete plain_;
  }

  template <class Operation, class... Parameters>
  static void Run(std::vector<uint8_t>* out, Operation operation, Parameters... parameters) {
    const PixelArray src = {kRoxeFormatRGB24, kSide, kSide, kRowBytes, colours_->data()};
    PixelArray dst = {kRoxeFormatRGB24, kSide, kSide, kRowBytes, out->data()};
    ASSERT_EQ(operation(&src, &dst, parameters...), 0);
  }

  template <class Library, class Reference, class... Parameters>
  static void ExpectSame(Library library, Reference reference, Parameters... parameters) {
    Run(fast_, library, parameters...);
    Run(plain_, reference, parameters...);
    if (*fast_ == *plain_) return;
    size_t different = 0, first = 0;
    for (size_t i = 0; i < fast_->size(); ++i)
      if ((*fast_)[i] != (*plain_)[i] && different++ == 0) first = i / 3 * 3;
    const auto bgr = [&](const std::vector<uint8_t>& image) {
      return testing::PrintToString(
          std::vector<int32_t>(image.begin() + static_cast<ptrdiff_t>(first),
                               image.begin() + static_cast<ptrdiff_t>(first) + 3));
    };
    ADD_FAILURE() << different << " bytes differ, first BGR " << bgr(*colours_) << ": library "
                  << bgr(*fast_) << ", reference " << bgr(*plain_);
  }

  static std::vector<uint8_t>* colours_;
  static std::vector<uint8_t>* fast_;
  static std::vector<uint8_t>* plain_;
};
std::vector<uint8_t>* ExhaustiveColour::colours_;
std::vector<uint8_t>* ExhaustiveColour::fast_;
std::vector<uint8_t>* ExhaustiveColour::plain_;

TEST_F(ExhaustiveColour, RgbToHsv) {
  for (uint32_t i = 0; i < 1u << 24; ++i) {
    const uint32_t red = i >> 16, green = (i >> 8) & 255, blue = i & 255;
    Hsv fast;
    roxe::XRDRGB2HSV(red, green, blue, &fast.hue, &fast.saturation, &fast.value);
    if (fast == ToHsv(red, green, blue)) continue;
    FAIL() << "red, green, blue " << red << ", " << green << ", " << blue;
  }
}

TEST_F(ExhaustiveColour, Masks) {
  ExpectSame(::roxeReplaceColorMask, reference::roxeReplaceColorMask, 40, 90, 200, 60);
  ExpectSame(::roxeReplaceColorMask, reference::roxeReplaceColorMask, 3, 1, 2, 200);
  ExpectSame(::roxeReplaceColorMask, reference::roxeReplaceColorMask, 255, 0, 0, 0);
  ExpectSame(::roxeColorTintMask, reference::roxeColorTintMask, 128, 128, 128, 127);
}

TEST_F(ExhaustiveColour, Tint) {
  ExpectSame(::roxeColorTint, reference::roxeColorTint, 200, 60, 30, 100);
  ExpectSame(::roxeColorTint, reference::roxeColorTint, 0, 0, 255, 200);
  ExpectSame(::roxeColorTint, reference::roxeColorTint, 20, 33, 12, 17);
  ExpectSame(::roxeColorTint, reference::roxeColorTint, 250, 250, 255, 0);
}

TEST_F(ExhaustiveColour, Replacement) {
  ExpectSame(::roxeReplaceColor, reference::roxeReplaceColor, 40, 90, 200, 150, -75, 60, -30);
  ExpectSame(::roxeReplaceColor, reference::roxeReplaceColor, 128, 128, 128, 200, 200, -45, 80);
  ExpectSame(::roxeReplaceColor, reference::roxeReplaceColor, 0, 0, 0, 90, -360, 100, 100);
  ExpectSame(::roxeReplaceColor, reference::roxeReplaceColor, 255, 255, 0, 200, 1, -100, -100);
}

TEST_F(ExhaustiveColour, Temperature) {
  ExpectSame(::roxeColorTemperature, reference::roxeColorTemperature, 0, 0);
  ExpectSame(::roxeColorTemperature, reference::roxeColorTemperature, -100, 35);
  ExpectSame(::roxeColorTemperature, reference::roxeColorTemperature, 63, -80);
  ExpectSame(::roxeColorTemperature, reference::roxeColorTemperature, 100, 100);
  ExpectSame(::roxeColorTemperature, reference::roxeColorTemperature, -1, 0);
  ExpectSame(::roxeColorTemperature, reference::roxeColorTemperature, -40, -100);
}

}  // namespace
