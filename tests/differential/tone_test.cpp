// The tone family against the plain reference: every byte and every bit, on random and hostile
// input. The reference itself is first held against literals.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "differential/pairs.h"
#include "reference/tone.h"
#include "support/image.h"
#include "tone/auto_gamma.h"
#include "tone/shadow_highlight.h"
#include "tone/tone_curves.h"
#include "tone/variation_tables.h"

namespace {

using differential::Amount;
using differential::Below;
using differential::Pair;

// ------------------------------------------------------------------- the reference by literals

double GammaOf(const std::vector<std::pair<int32_t, uint32_t>>& counts) {
  std::vector<uint32_t> histogram(256, 0);
  for (const auto& [level, count] : counts) histogram[static_cast<size_t>(level)] = count;
  return reference::GetMaximumEntropyEstimateGamma(histogram.data());
}

TEST(ReferenceTone, GammaOfExtremeHistograms) {
  EXPECT_EQ(GammaOf({}), 1.0);
  EXPECT_EQ(GammaOf({{0, 1}}), static_cast<double>(0.65f));
  EXPECT_NEAR(GammaOf({{255, 1}}), 1.1999995, 1e-7);  // 56 candidates, added up in floats
  // With (i + 1) / 256 = 1 / 4 the score g * 4^(1 - g) is largest at 1 / ln 4 = 0.7213.
  EXPECT_NEAR(GammaOf({{63, 1000}}), 0.72, 1e-6);
  // Counts of 2^31 and above are negative numbers: the scores stay below 0.
  EXPECT_EQ(GammaOf({{255, 0x80000000u}}), 1.0);
}

TEST(ReferenceTone, GammaTableIsTruncated) {
  const Image src = Bgr({{{0, 128, 255}}, {{200, 64, 1}}});
  Image dst = Bgr({{{7, 7, 7}, {7, 7, 7}}});
  reference::ApplyGamma_RGB24(src, dst, 2.0);  // 128^2 / 255 = 64.25
  EXPECT_EQ(dst, Bgr({{{0, 64, 255}, {7, 7, 7}}}));
}

TEST(ReferenceTone, RegionsOfTheHistogram) {
  Image src = Bgr({{{1, 10, 2}, {1, 20, 2}}, {{1, 30, 2}, {1, 40, 2}}});
  const auto levels = [&](PixelRect rect) {
    const std::vector<uint32_t> histogram = reference::GetHistogram_RGB24(src, &rect);
    std::vector<int32_t> present;
    for (int32_t i = 0; i < static_cast<int32_t>(histogram.size()); ++i)
      for (uint32_t n = 0; n < histogram[static_cast<size_t>(i)]; ++n) present.push_back(i);
    return present;
  };
  EXPECT_EQ(levels({-5, -5, 1, 2}), (std::vector<int32_t>{10, 30}));
  EXPECT_EQ(levels({1, 1, 2, 2}), (std::vector<int32_t>{40}));
  EXPECT_EQ(levels({1, 0, 1, 2}), (std::vector<int32_t>{}));
  EXPECT_EQ(levels({0, 0, -1, -1}), (std::vector<int32_t>{}));
  // Past the right edge lies the next row, and past the last row nothing.
  EXPECT_EQ(levels({1, 0, 3, 1}), (std::vector<int32_t>{20, 30}));
  EXPECT_EQ(levels({0, 1, 2147483647, 2147483647}), (std::vector<int32_t>{30, 40}));
}

TEST(ReferenceTone, AutoGammaChecks) {
  Image image = Bgr({{{1, 2, 3}}});
  const Image before(image);
  const PixelRect empty = {0, 0, 0, 1};
  EXPECT_EQ(reference::roxeAutoGamma(nullptr, image, nullptr), 2);
  EXPECT_EQ(reference::roxeAutoGamma(image, nullptr, nullptr), 2);
  EXPECT_EQ(reference::roxeAutoGamma(image, image, &empty), 1);
  const Image grey = Gray({{90}});
  EXPECT_EQ(reference::roxeAutoGamma(grey, image, nullptr), 0);
  EXPECT_EQ(image, before);
}

TEST(ReferenceTone, AutoGammaOfABlackPicture) {
  const Image src = Bgr({{{0, 0, 0}, {0, 0, 64}}});
  Image dst = Bgr({{{7, 7, 7}, {7, 7, 7}, {7, 7, 7}}});
  EXPECT_EQ(reference::roxeAutoGamma(src, dst, nullptr), 0);
  EXPECT_EQ(dst, Bgr({{{0, 0, 0}, {0, 0, 103}, {7, 7, 7}}}));  // 255 * (64 / 255)^0.65 = 103.9
}

TEST(ReferenceTone, Polylines) {
  using reference::CurvePoint;
  const auto points = [](CurvePoint a, CurvePoint b, CurvePoint c, CurvePoint d) {
    const CurvePoint control[4] = {a, b, c, d};
    return reference::cubic_to_polyLine(control, 0.1f);
  };
  EXPECT_EQ(points({0, 0}, {1, 1}, {2, 2}, {3, 3}).size(), 2u);  // straight
  // A second difference of 1: 3 / 0.4 = 7.5 lies between 4 and 4^2, so the curve is halved once.
  const auto halved = points({0, 0}, {0, 0}, {0, 0}, {0, 1});
  ASSERT_EQ(halved.size(), 3u);
  EXPECT_EQ(halved[1].y, 0.125f);
  EXPECT_EQ(halved[2].y, 1.0f);
  // 3: 22.5 lies between 4^2 and 4^3. Quarters; the middle ends one pair and starts the next.
  const auto quartered = points({0, 0}, {0, 0}, {0, 0}, {0, 3});
  ASSERT_EQ(quartered.size(), 6u);
  const float expected[] = {0, 3.0f / 64, 3.0f / 8, 3.0f / 8, 81.0f / 64, 3};
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(quartered[i].y, expected[i]) << i;
  EXPECT_EQ(points({0, 0}, {0, 0}, {0, 0}, {0, 1e30f}).size(), 768u);  // no deeper than 9
}

TEST(ReferenceTone, TablesAreFilledUpToTheEndOfTheCurve) {
  using reference::CurvePoint;
  float table[256];
  const CurvePoint line[4] = {{0, 0}, {85, 85}, {170, 170}, {255, 255}};
  reference::set_look_up_table(table, 256, line, 4);
  for (int32_t i = 0; i < 256; ++i) EXPECT_EQ(table[i], static_cast<float>(i));
  const CurvePoint half[4] = {{0.5f, 0.25f}, {85, 42.5f}, {170, 85}, {255, 127.5f}};
  reference::set_look_up_table(table, 256, half, 4);
  EXPECT_EQ(table[0], 0.0f);
  EXPECT_EQ(table[1], 0.5f);
  EXPECT_EQ(table[254], 127.0f);
  EXPECT_EQ(table[255], 255.0f);  // the end itself is not filled
  const CurvePoint nowhere[4] = {{0, 0}, {std::nanf(""), 9}, {170, 9}, {255, 9}};
  reference::set_look_up_table(table, 256, nowhere, 4);
  for (int32_t i = 0; i < 256; ++i) EXPECT_EQ(table[i], static_cast<float>(i));
  const CurvePoint beyond[4] = {{-50, 0}, {0, 50}, {500, 550}, {550, 600}};
  reference::set_look_up_table(table, 256, beyond, 4);
  EXPECT_NEAR(table[0], 50, 0.1);
  EXPECT_NEAR(table[255], 305, 0.1);
}

TEST(ReferenceTone, CurvesOfShadowHighlightAndMidtone) {
  float shadow[256], highlight[256], midtone[256];
  reference::lighten_shadow(shadow, 256, 0);
  reference::darken_highlight(highlight, 256, 0);
  reference::midtone_contrast(midtone, 256, 0);
  for (int32_t i = 0; i < 256; ++i) {
    EXPECT_EQ(shadow[i], static_cast<float>(i));
    EXPECT_EQ(highlight[i], static_cast<float>(i));
    EXPECT_EQ(midtone[i], static_cast<float>(i));
  }
  reference::lighten_shadow(shadow, 256, 60);
  reference::darken_highlight(highlight, 256, 60);
  EXPECT_GT(shadow[50], 60.0f);
  EXPECT_EQ(shadow[210], 210.0f);
  for (int32_t i = 0; i < 256; ++i) EXPECT_EQ(highlight[i], 255.0f - shadow[255 - i]);
  // At half the way the curve is at (P0 + 3 P1 + 3 P2 + P3) / 8: for amount 10, k = 19, q = 1.7,
  // P1 = (61.07, 103.82) and P2 = (79.11, 79.11), so (78.82, 94.85), where its slope is 0.81.
  reference::lighten_shadow(shadow, 256, 10);
  EXPECT_NEAR(shadow[78], 94.18, 0.02);
  reference::midtone_contrast(midtone, 256, 100);
  EXPECT_GT(midtone[200], 220.0f);
  EXPECT_EQ(midtone[127], 255.0f - midtone[128]);
  EXPECT_EQ(midtone[50], 255.0f - midtone[205]);
  EXPECT_EQ(midtone[5], 5.0f);
}

TEST(ReferenceTone, WithoutAmountsOnlyFractionsOfIntensityAreLost) {
  const Image src = Bgr({{{10, 0, 0}, {0, 0, 0}, {0, 0, 90}}});
  Image dst = Bgr({{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {7, 8, 9}}});
  EXPECT_EQ(reference::roxeShadowHighlight(src, dst, 0, 0, 0), 0);
  // Intensities 1.14, 0 and 26.91.
  EXPECT_EQ(dst, Bgr({{{9, 0, 0}, {0, 0, 0}, {0, 0, 89}, {7, 8, 9}}}));
}

TEST(ReferenceTone, ShadowsAreLiftedInAllChannelsAlike) {
  // One column: no blur, so r = (I^2 + 4 I^2) / (I^2 + 4 I^2) and the shadow curve decides.
  const Image src = Bgr({{{40, 50, 60}}, {{40, 50, 60}}});
  Image dst = Bgr({{{0, 0, 0}}, {{0, 0, 0}}});
  EXPECT_EQ(reference::roxeShadowHighlight(src, dst, 60, 0, 0), 0);
  float curve[256];
  reference::lighten_shadow(curve, 256, 60);
  const double intensity = 0.114 * 40 + 0.587 * 50 + 0.299 * 60;  // 51.85
  const int32_t lifted = static_cast<int32_t>(50 + std::floor(curve[51]) - intensity);
  EXPECT_EQ(dst.pixel(0, 0)[1], lifted);
  EXPECT_EQ(dst.pixel(0, 0)[0], lifted - 10);
  EXPECT_EQ(dst.pixel(0, 0)[2], lifted + 10);
}

// Inputs, and the outputs of each row for them.
constexpr int32_t kInputs[] = {1, 16, 64, 128, 192, 240, 254, 255};
constexpr int32_t kLighterRows[8][8] = {
    {1, 16, 64, 128, 192, 240, 253, 254},   {1, 17, 66, 130, 193, 240, 254, 254},
    {1, 18, 69, 133, 195, 240, 254, 254},   {1, 21, 74, 137, 197, 241, 254, 254},
    {3, 27, 84, 146, 203, 242, 254, 254},   {6, 40, 101, 161, 211, 244, 254, 255},
    {15, 63, 127, 180, 221, 247, 254, 255}, {40, 101, 160, 202, 232, 249, 254, 255}};
constexpr int32_t kDarkerRows[8][8] = {
    {0, 15, 62, 126, 190, 239, 253, 254}, {0, 14, 60, 124, 189, 239, 253, 254},
    {0, 13, 58, 122, 188, 239, 253, 254}, {0, 10, 52, 116, 184, 238, 253, 254},
    {0, 8, 45, 107, 178, 236, 253, 254},  {0, 3, 31, 89, 165, 232, 253, 254},
    {0, 0, 16, 64, 144, 225, 252, 254},   {0, 0, 3, 31, 107, 212, 251, 254}};

TEST(ReferenceTone, TablesOfTheVariations) {
  constexpr double kLighterPowers[] = {1.000, 0.978, 0.949, 0.899, 0.806, 0.671, 0.504, 0.336};
  constexpr double kDarkerPowers[] = {1.025, 1.048, 1.070, 1.144, 1.258, 1.526, 2.014, 3.054};
  for (int32_t k = 0; k < 8; ++k) {
    const reference::Curve lighter = reference::lighter_row(k), darker = reference::darker_row(k);
    EXPECT_EQ(lighter[0], 0);
    EXPECT_EQ(darker[0], 0);
    for (int32_t n = 0; n < 8; ++n) {
      EXPECT_EQ(lighter[static_cast<size_t>(kInputs[n])], kLighterRows[k][n]);
      EXPECT_EQ(darker[static_cast<size_t>(kInputs[n])], kDarkerRows[k][n]);
    }
    for (size_t v = 1; v < 256; ++v) {
      EXPECT_GE(lighter[v], lighter[v - 1]);
      EXPECT_GE(darker[v], darker[v - 1]);
      const double x = static_cast<double>(v) / 255.0;
      EXPECT_NEAR(lighter[v], 255 * std::pow(x, kLighterPowers[k]), 1.9) << k << ", " << v;
      EXPECT_NEAR(darker[v], 255 * std::pow(x, kDarkerPowers[k]), 1.9) << k << ", " << v;
    }
  }
}

TEST(ReferenceTone, StepsOfTheVariations) {
  const auto after = [](int32_t red, int32_t green, int32_t blue, int32_t dark, int32_t level) {
    const Image src = Bgr({{{64, 128, 192}, {0, 0, 0}}});
    Image dst = Bgr({{{1, 1, 1}, {1, 1, 1}, {7, 8, 9}}});
    EXPECT_EQ(reference::roxeVariations(src, dst, red, green, blue, dark, level), 0);
    EXPECT_EQ(dst.pixel(1, 0)[0] + dst.pixel(1, 0)[1] + dst.pixel(1, 0)[2], 0);
    EXPECT_EQ(dst.pixel(2, 0)[2], 9);
    return Bgr({{{dst.pixel(0, 0)[0], dst.pixel(0, 0)[1], dst.pixel(0, 0)[2]}}});
  };
  EXPECT_EQ(after(0, 0, 0, 0, 3), Bgr({{{64, 128, 192}}}));
  EXPECT_EQ(after(1, 0, 0, 0, 0), Bgr({{{64, 128, 189}}}));   // lighter row 0, darker row 1
  EXPECT_EQ(after(0, 0, 0, -1, 0), Bgr({{{66, 130, 193}}}));  // lighter row 1
  EXPECT_EQ(after(0, 0, 0, 1, 6), Bgr({{{3, 31, 107}}}));     // darker row 7
  EXPECT_EQ(after(0, 0, 0, -50, 4), after(0, 0, 0, -30, 4));  // 100 counts as 60
  EXPECT_EQ(after(1, 0, 0, 0, -9), after(1, 0, 0, 0, 0));
  EXPECT_EQ(after(1, 0, 0, 0, 99), after(1, 0, 0, 0, 6));
}

TEST(ReferenceTone, MissingRecordsOrPixelsTouchNothing) {
  Image image = Bgr({{{1, 2, 3}}});
  const Image before(image);
  Image empty(image);
  empty.record.pixels = nullptr;
  EXPECT_EQ(reference::roxeShadowHighlight(nullptr, image, 9, 9, 9), 0);
  EXPECT_EQ(reference::roxeShadowHighlight(image, nullptr, 9, 9, 9), 0);
  EXPECT_EQ(reference::roxeShadowHighlight(empty, image, 9, 9, 9), 0);
  EXPECT_EQ(reference::roxeVariations(nullptr, image, 9, 8, 7, 6, 5), 0);
  EXPECT_EQ(reference::roxeVariations(image, nullptr, 9, 8, 7, 6, 5), 0);
  EXPECT_EQ(reference::roxeVariations(empty, image, 9, 8, 7, 6, 5), 0);
  EXPECT_EQ(image, before);
}

// ---------------------------------------------------------------------- the library against it

TEST(DifferentialTone, AutoGamma) {
  std::mt19937 random(601);
  for (int32_t i = 0; i < 1200 && !HasFailure(); ++i) {
    const uint8_t level = static_cast<uint8_t>(random() >> 24);
    const Pair pair(random, {level, level, level});
    const PixelArray& src = pair.source().record;
    PixelRect rect = {Amount(random, -2, src.width), Amount(random, -2, src.height),
                      Amount(random, 1, src.width), Amount(random, 1, src.height)};
    // The last row has no padding, so a region may reach past the right edge of packed rows only.
    if (src.rowBytes > src.width * (src.format == kRoxeFormatGray8 ? 1 : 3))
      rect.right = std::min(rect.right, src.width);
    const PixelRect* region = Below(random, 3) == 0 ? nullptr : &rect;
    SCOPED_TRACE(testing::Message()
                 << "case " << i << ": " << rect.left << ' ' << rect.top << ' ' << rect.right << ' '
                 << rect.bottom << (region == nullptr ? " not given" : ""));
    const auto with = [&](auto operation) {
      return [=](const PixelArray* s, PixelArray* d) { return operation(s, d, region); };
    };
    pair.ExpectSame(with(::roxeAutoGamma), with(reference::roxeAutoGamma));
  }
}

TEST(DifferentialTone, HistogramsOfRegions) {
  std::mt19937 random(41);
  const auto side = [&](int32_t size) {
    constexpr int32_t kFar[] = {std::numeric_limits<int32_t>::max(), 1 << 30, 100000};
    return Below(random, 4) == 0 ? kFar[Below(random, 3)] : Below(random, 5 * size + 2);
  };
  for (int32_t i = 0; i < 4000; ++i) {
    // Long rows have stretches that are counted by rows, short ones those that are not.
    const bool is_long = Below(random, 40) == 0;
    const int32_t width = is_long ? 1000 + Below(random, 3000) : 1 + Below(random, 30);
    const int32_t height = 1 + Below(random, is_long ? 6 : 20);
    const int32_t padding = Below(random, 5);
    Image image(kRoxeFormatGray8, 3 * width + padding, height);  // the padding belongs to it too
    image.randomise(random);
    PixelArray src = image.record;
    src.format = kRoxeFormatRGB24;
    src.width = width;
    const PixelRect region = {side(width) / 4, side(height) / 4, side(width), side(height)};
    const roxe::Block<uint32_t> counts = roxe::GetHistogram_RGB24(src, &region);
    const std::vector<uint32_t> expected = reference::GetHistogram_RGB24(&src, &region);
    ASSERT_EQ(counts == nullptr, expected.empty());
    if (!counts) continue;
    ASSERT_EQ(std::vector<uint32_t>(counts.get(), counts.get() + 256), expected)
        << width << " x " << height << ", " << padding << ": " << region.left << ' ' << region.top
        << ' ' << region.right << ' ' << region.bottom;
  }
}

TEST(DifferentialTone, GammaOfHistograms) {
  std::mt19937 random(609);
  for (int32_t i = 0; i < 300; ++i) {
    std::vector<uint32_t> histogram(256, 0);
    const int32_t levels = 1 + Below(random, 256);
    for (int32_t k = 0; k < levels; ++k)
      histogram[static_cast<size_t>(Below(random, 256))] =
          static_cast<uint32_t>(random() >> Below(random, 32));
    ASSERT_EQ(roxe::GetMaximumEntropyEstimateGamma(histogram.data()),
              reference::GetMaximumEntropyEstimateGamma(histogram.data()))
        << i;
  }
}

// A picture whose last row has its padding: the region runs on through padding and following rows
// and ends with the memory of the picture.
TEST(DifferentialTone, AutoGammaOfRegionsPastTheRightEdge) {
  std::mt19937 random(602);
  for (int32_t i = 0; i < 300 && !HasFailure(); ++i) {
    const int32_t width = 1 + Below(random, 12), height = 1 + Below(random, 12);
    const int32_t row_bytes = 3 * width + Below(random, 40);
    const GuardedMemory memory(static_cast<size_t>(row_bytes) * static_cast<size_t>(height));
    const int32_t brightness = 1 + Below(random, 255);
    for (size_t k = 0; k < memory.size(); ++k)
      memory.data()[k] = static_cast<uint8_t>(Below(random, brightness));
    const PixelArray src = {kRoxeFormatRGB24, width, height, row_bytes, memory.data()};
    const PixelRect rect = {Amount(random, 0, 3 * width), Amount(random, 0, height),
                            Amount(random, 0, 3 * width), Amount(random, 0, 2 * height)};
    Image fast(kRoxeFormatRGB24, width, height), plain(fast);
    ASSERT_EQ(::roxeAutoGamma(&src, fast, &rect), reference::roxeAutoGamma(&src, plain, &rect))
        << i;
    ASSERT_EQ(fast, plain) << i;
  }
}

// Pictures of few levels, so that every one of the gammas is chosen at some time.
TEST(DifferentialTone, EveryGamma) {
  std::mt19937 random(603);
  for (int32_t level = 0; level < 256; ++level) {
    Image src(kRoxeFormatRGB24, 40, 7, 125);
    for (int32_t y = 0; y < 7; ++y)
      for (int32_t x = 0; x < 40; ++x) {
        src.pixel(x, y)[0] = static_cast<uint8_t>(x + 40 * y);
        src.pixel(x, y)[1] = static_cast<uint8_t>(std::min(255, level + Below(random, 3)));
        src.pixel(x, y)[2] = static_cast<uint8_t>(random() >> 24);
      }
    Image fast(src), plain(src);
    ASSERT_EQ(::roxeAutoGamma(src, fast, nullptr), 0);
    ASSERT_EQ(reference::roxeAutoGamma(src, plain, nullptr), 0);
    ASSERT_EQ(fast, plain) << "green " << level;
  }
}

uint32_t Bits(float value) { return std::bit_cast<uint32_t>(value); }

float Between(std::mt19937& random, float low, float high) {
  return low + (high - low) * (static_cast<float>(random() >> 8) / 16777216.0f);
}

// Four points; mostly of ordinary size and in order of x, sometimes any floats.
std::vector<float> RandomCurve(std::mt19937& random) {
  std::vector<float> curve(8);
  const float reach = Below(random, 3) == 0 ? 2000.0f : 255.0f;
  for (float& coordinate : curve)
    coordinate = Between(random, Below(random, 9) ? 0 : -reach, reach);
  for (size_t k = 1; k < 4; ++k) curve[2 * k] = std::max(curve[2 * k], curve[2 * k - 2]);
  if (Below(random, 4) == 0)
    for (float& coordinate : curve)
      if (Below(random, 4) == 0) coordinate = std::bit_cast<float>(static_cast<uint32_t>(random()));
  if (Below(random, 30) == 0) curve[static_cast<size_t>(Below(random, 8))] = std::nanf("");
  return curve;
}

TEST(DifferentialTone, Polylines) {
  std::mt19937 random(610);
  for (int32_t i = 0; i < 5000; ++i) {
    const std::vector<float> curve = RandomCurve(random);
    roxe::CurvePoint control[4], fast[roxe::kPolylinePoints];
    reference::CurvePoint plain_control[4];
    bool number = true;
    for (size_t k = 0; k < 4; ++k) {
      control[k] = {curve[2 * k], curve[2 * k + 1]};
      plain_control[k] = {curve[2 * k], curve[2 * k + 1]};
      number = number && !std::isnan(curve[2 * k]) && !std::isnan(curve[2 * k + 1]);
    }
    if (!number) continue;  // what a polyline through no number is, nobody says
    const float tolerance = Below(random, 2) ? 0.1f : Between(random, 0.01f, 3.0f);
    const std::vector<reference::CurvePoint> plain =
        reference::cubic_to_polyLine(plain_control, tolerance);
    const int32_t count = roxe::cubic_to_polyLine(fast, control, tolerance);
    ASSERT_EQ(count, static_cast<int32_t>(plain.size())) << i;
    for (size_t k = 0; k < plain.size(); ++k) {
      if (std::isnan(plain[k].x) || std::isnan(plain[k].y)) continue;
      ASSERT_EQ(Bits(fast[k].x), Bits(plain[k].x)) << i << ", point " << k;
      ASSERT_EQ(Bits(fast[k].y), Bits(plain[k].y)) << i << ", point " << k;
    }
  }
}

TEST(DifferentialTone, TablesOfCurves) {
  std::mt19937 random(611);
  for (int32_t i = 0; i < 5000; ++i) {
    const std::vector<float> curve = RandomCurve(random);
    roxe::CurvePoint control[4];
    reference::CurvePoint plain_control[4];
    for (size_t k = 0; k < 4; ++k) {
      control[k] = {curve[2 * k], curve[2 * k + 1]};
      plain_control[k] = {curve[2 * k], curve[2 * k + 1]};
    }
    const int32_t sizes[] = {256, 512, 1, 0};
    const int32_t n = sizes[Below(random, 4)];
    float fast[513], plain[513];
    std::fill_n(fast, 513, -7.0f);
    std::fill_n(plain, 513, -7.0f);
    roxe::set_look_up_table(fast, n, control, 4);
    reference::set_look_up_table(plain, n, plain_control, 4);
    for (int32_t k = 0; k < 513; ++k) {
      if (std::isnan(plain[k]) && std::isnan(fast[k])) continue;
      ASSERT_EQ(Bits(fast[k]), Bits(plain[k])) << i << ", entry " << k;
    }
  }
}

TEST(DifferentialTone, CurvesOfEveryAmount) {
  std::vector<int32_t> amounts = {INT32_MIN, INT32_MIN + 1, -16777217, 16777217, INT32_MAX};
  for (int32_t amount = -300; amount <= 300; ++amount) amounts.push_back(amount);
  for (const int32_t amount : amounts) {
    const uint32_t strength = static_cast<uint32_t>(amount);
    float fast[3][256], plain[3][256];
    roxe::lighten_shadow(fast[0], 256, strength);
    reference::lighten_shadow(plain[0], 256, strength);
    roxe::darken_highlight(fast[1], 256, strength);
    reference::darken_highlight(plain[1], 256, strength);
    roxe::midtone_contrast(fast[2], 256, amount);
    reference::midtone_contrast(plain[2], 256, amount);
    for (int32_t curve = 0; curve < 3; ++curve)
      for (int32_t i = 0; i < 256; ++i)
        ASSERT_EQ(Bits(fast[curve][i]), Bits(plain[curve][i]))
            << "amount " << amount << ", curve " << curve << ", entry " << i;
  }
}

TEST(DifferentialTone, ChangesOfIntensity) {
  std::mt19937 random(612);
  float combined[256], midtone[512];
  for (int32_t i = 0; i < 4000; ++i) {
    for (float& level : combined) level = Between(random, -300, 600);
    for (float& level : midtone) level = Between(random, 0, 255);
    std::fill_n(midtone + 256, 256, 255.0f);  // as the operation has it: levels beyond read 255
    const size_t count = static_cast<size_t>(Below(random, 200));
    const GuardedMemory own(count * sizeof(float)), around(count * sizeof(float));
    float* intensity = reinterpret_cast<float*>(own.data());
    float* blurred = reinterpret_cast<float*>(around.data());
    for (size_t k = 0; k < count; ++k) {
      intensity[k] =
          Below(random, 4) ? Between(random, 0, 255) : static_cast<float>(Below(random, 256));
      blurred[k] = Below(random, 6) ? Between(random, 0, 330) : 0.0f;
      if (Below(random, 9) == 0) intensity[k] = 0.0f;
    }
    std::vector<float> plain(intensity, intensity + count);
    const bool same = Below(random, 3) == 0;
    reference::update_intensity(plain.data(), same ? plain.data() : blurred,
                                static_cast<int32_t>(count), combined, midtone);
    roxe::update_intensity(intensity, same ? intensity : blurred, static_cast<int32_t>(count),
                           combined, midtone);
    for (size_t k = 0; k < count; ++k) ASSERT_EQ(Bits(intensity[k]), Bits(plain[k])) << i;
  }
}

TEST(DifferentialTone, ShadowHighlight) {
  std::mt19937 random(604);
  for (int32_t i = 0; i < 1500 && !HasFailure(); ++i) {
    const uint8_t level = static_cast<uint8_t>(random() >> 24);
    const Pair pair(random, {level, level, level});
    const auto amount = [&] {
      return Below(random, 4) == 0 ? 0u : static_cast<uint32_t>(Amount(random, 0, 100));
    };
    const uint32_t shadow = amount(), highlight = amount();
    const int32_t midtone = Below(random, 4) == 0 ? 0 : Amount(random, -100, 100);
    SCOPED_TRACE(testing::Message() << "case " << i << ": shadow " << shadow << ", highlight "
                                    << highlight << ", midtone " << midtone);
    const auto with = [&](auto operation) {
      return [=](const PixelArray* src, PixelArray* dst) {
        return operation(src, dst, shadow, highlight, midtone);
      };
    };
    pair.ExpectSame(with(::roxeShadowHighlight), with(reference::roxeShadowHighlight));
    const auto on_planes = [&](const PixelArray* src, PixelArray* dst) {
      roxe::shadow_highlight(*src, *dst, shadow, highlight, midtone);
      return 0;
    };
    pair.ExpectSame(on_planes, with(reference::roxeShadowHighlight));
  }
}

TEST(DifferentialTone, EveryAmountOfShadowHighlightAndMidtone) {
  std::mt19937 random(605);
  Image src(kRoxeFormatRGB24, 61, 23, 190);
  differential::Paint(src, random, {90, 100, 110});
  for (int32_t amount = 0; amount <= 120; ++amount) {
    const uint32_t strength = static_cast<uint32_t>(amount);
    struct Amounts {
      uint32_t shadow, highlight;
      int32_t midtone;
    };
    for (const Amounts a : {Amounts{strength, 0, 0},
                            {0, strength, 0},
                            {0, 0, amount},
                            {0, 0, -amount},
                            {strength, 120 - strength, amount - 60}}) {
      Image fast(src), plain(src);
      ::roxeShadowHighlight(src, fast, a.shadow, a.highlight, a.midtone);
      reference::roxeShadowHighlight(src, plain, a.shadow, a.highlight, a.midtone);
      ASSERT_EQ(fast, plain) << a.shadow << ' ' << a.highlight << ' ' << a.midtone;
    }
  }
}

// Sides of 1 to 20 pixels: every length of the blur, and both sides of every rest of a vector.
TEST(DifferentialTone, ShadowHighlightOfSmallPictures) {
  std::mt19937 random(606);
  for (int32_t width = 1; width <= 20; ++width)
    for (int32_t height = 1; height <= 20; ++height) {
      Image src(kRoxeFormatRGB24, width, height, 3 * width + Below(random, 5));
      differential::Paint(src, random, {30, 30, 30});
      Image fast(src), plain(src);
      ::roxeShadowHighlight(src, fast, 70, 30, 20);
      reference::roxeShadowHighlight(src, plain, 70, 30, 20);
      ASSERT_EQ(fast, plain) << width << " x " << height;
    }
}

TEST(DifferentialTone, ShadowHighlightOfAWidePicture) {
  std::mt19937 random(607);
  for (const auto& [width, height] : {std::pair{1009, 37}, {37, 1009}}) {
    Image src(kRoxeFormatRGB24, width, height);
    src.randomise(random);
    Image fast(src), plain(src);
    ::roxeShadowHighlight(src, fast, 45, 80, -35);
    reference::roxeShadowHighlight(src, plain, 45, 80, -35);
    ASSERT_EQ(fast, plain) << width;
  }
}

TEST(DifferentialTone, TablesOfTheVariations) {
  for (int32_t k = 0; k < 8; ++k)
    for (size_t v = 0; v < 256; ++v) {
      EXPECT_EQ(roxe::LIGHTER_TABLE[k][v], reference::lighter_row(k)[v]) << k << ", " << v;
      EXPECT_EQ(roxe::DARKER_TABLE[k][v], reference::darker_row(k)[v]) << k << ", " << v;
    }
}

TEST(DifferentialTone, Variations) {
  std::mt19937 random(608);
  for (int32_t i = 0; i < 1500 && !HasFailure(); ++i) {
    const Pair pair(random, {128, 128, 128});
    const auto count = [&] { return Amount(random, -12, 12); };
    const int32_t red = count(), green = count(), blue = count(), dark = count();
    const int32_t level = Amount(random, 0, 6);
    SCOPED_TRACE(testing::Message() << "case " << i << ": " << red << ' ' << green << ' ' << blue
                                    << ' ' << dark << ", level " << level);
    const auto with = [&](auto operation) {
      return [=](const PixelArray* src, PixelArray* dst) {
        return operation(src, dst, red, green, blue, dark, level);
      };
    };
    pair.ExpectSame(with(::roxeVariations), with(reference::roxeVariations));
  }
}

// Every curve that can arise: amounts -61 ... 61 on every level, all levels of input.
TEST(DifferentialTone, EveryCurveOfTheVariations) {
  Image src(kRoxeFormatRGB24, 256, 1);
  for (int32_t v = 0; v < 256; ++v)
    for (int32_t c = 0; c < 3; ++c) src.pixel(v, 0)[c] = static_cast<uint8_t>(v);
  Image fast(src), plain(src);
  for (int32_t level = 0; level <= 6; ++level)
    for (int32_t amount = -61; amount <= 61; ++amount) {
      // Blue and green move by amount, red by -2 * amount.
      ::roxeVariations(src, fast, amount, 0, 0, 0, level);
      reference::roxeVariations(src, plain, amount, 0, 0, 0, level);
      ASSERT_EQ(fast, plain) << "level " << level << ", amount " << amount;
    }
}

TEST(DifferentialTone, PicturesThatShareMemory) {
  std::mt19937 random(613);
  for (int32_t i = 0; i < 300 && !HasFailure(); ++i) {
    const auto with = [&](auto operation, auto... parameters) {
      return [=](const PixelArray* src, PixelArray* dst) {
        return operation(src, dst, parameters...);
      };
    };
    const uint8_t level = static_cast<uint8_t>(random() >> 24);
    const Pixel near = {level, level, level};
    differential::ExpectSameOverlapping(random, near, with(::roxeAutoGamma, nullptr),
                                        with(reference::roxeAutoGamma, nullptr));
    differential::ExpectSameOverlapping(random, near, with(::roxeShadowHighlight, 60, 40, 20),
                                        with(reference::roxeShadowHighlight, 60, 40, 20));
    differential::ExpectSameOverlapping(random, near, with(::roxeVariations, 3, -2, 1, 1, 2),
                                        with(reference::roxeVariations, 3, -2, 1, 1, 2));
  }
}

TEST(DifferentialTone, MissingRecords) {
  Image image(kRoxeFormatRGB24, 5, 5);
  const Image before(image);
  EXPECT_EQ(::roxeAutoGamma(nullptr, image, nullptr), 2);
  EXPECT_EQ(::roxeAutoGamma(image, nullptr, nullptr), 2);
  EXPECT_EQ(::roxeShadowHighlight(nullptr, image, 50, 50, 50), 0);
  EXPECT_EQ(::roxeShadowHighlight(image, nullptr, 50, 50, 50), 0);
  EXPECT_EQ(::roxeShadowHighlight(nullptr, nullptr, 50, 50, 50), 0);
  EXPECT_EQ(::roxeVariations(nullptr, image, 5, 4, 3, 2, 1), 0);
  EXPECT_EQ(::roxeVariations(image, nullptr, 5, 4, 3, 2, 1), 0);
  EXPECT_EQ(::roxeVariations(nullptr, nullptr, 5, 4, 3, 2, 1), 0);
  EXPECT_EQ(image, before);
}

// ------------------------------------------------------------------------------- all 2^24 colours

// Each colour once, in an order without any, so that every colour has surroundings unlike itself.
TEST(ExhaustiveTone, ShadowHighlight) {
  constexpr int32_t kSide = 4096;
  std::vector<uint8_t> colours;
  colours.reserve(size_t{3} * kSide * kSide);
  for (uint32_t i = 0; i < 1u << 24; ++i) {
    const uint32_t colour = i * 0x9E3779B1u;  // odd, so the low 24 bits take every value
    for (const uint32_t shift : {0, 8, 16})
      colours.push_back(static_cast<uint8_t>(colour >> shift));
  }
  std::vector<uint8_t> fast(colours.size()), plain(colours.size());
  const auto record = [](std::vector<uint8_t>& pixels) {
    return PixelArray{kRoxeFormatRGB24, kSide, kSide, 3 * kSide, pixels.data()};
  };
  const PixelArray src = record(colours);
  PixelArray fast_dst = record(fast), plain_dst = record(plain);
  struct Amounts {
    uint32_t shadow, highlight;
    int32_t midtone;
  };
  for (const Amounts a : {Amounts{0, 0, 0}, {80, 35, -60}, {25, 100, 90}}) {
    ::roxeShadowHighlight(&src, &fast_dst, a.shadow, a.highlight, a.midtone);
    reference::roxeShadowHighlight(&src, &plain_dst, a.shadow, a.highlight, a.midtone);
    EXPECT_TRUE(fast == plain) << a.shadow << ' ' << a.highlight << ' ' << a.midtone;
  }
}

}  // namespace
