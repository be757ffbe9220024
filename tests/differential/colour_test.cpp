// The colour family against the plain reference: every byte and every bit, on random and hostile
// input, and on all 2^24 colours. The reference itself is first held against literals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

#include "differential/pairs.h"
#include "reference/colour.h"
#include "support/image.h"

namespace {

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
  // Near black the opposite hue counts little: both saturations fall to 255 + (250 * -253 >> 8) = 7,
  // and (7 + 7)^2 / 4 = 49 gives 49 * 1489 >> 14.
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

}  // namespace
