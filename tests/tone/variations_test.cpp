#include "tone/variations.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/image.h"
#include "support/seams.h"
#include "tone/variation_tables.h"

namespace {

using namespace roxe;

// ---- the constant tables

constexpr int kAnchors[8] = {1, 16, 64, 128, 192, 240, 254, 255};

constexpr uint8_t kLighter[8][8] = {
    {1, 16, 64, 128, 192, 240, 253, 254},   {1, 17, 66, 130, 193, 240, 254, 254},
    {1, 18, 69, 133, 195, 240, 254, 254},   {1, 21, 74, 137, 197, 241, 254, 254},
    {3, 27, 84, 146, 203, 242, 254, 254},   {6, 40, 101, 161, 211, 244, 254, 255},
    {15, 63, 127, 180, 221, 247, 254, 255}, {40, 101, 160, 202, 232, 249, 254, 255},
};
constexpr uint8_t kDarker[8][8] = {
    {0, 15, 62, 126, 190, 239, 253, 254}, {0, 14, 60, 124, 189, 239, 253, 254},
    {0, 13, 58, 122, 188, 239, 253, 254}, {0, 10, 52, 116, 184, 238, 253, 254},
    {0, 8, 45, 107, 178, 236, 253, 254},  {0, 3, 31, 89, 165, 232, 253, 254},
    {0, 0, 16, 64, 144, 225, 252, 254},   {0, 0, 3, 31, 107, 212, 251, 254},
};
constexpr double kLighterExponents[8] = {1.0000, 0.9706, 0.9432, 0.8932,
                                         0.8001, 0.6663, 0.5004, 0.3329};
constexpr double kDarkerExponents[8] = {1.0200, 1.0425, 1.0635, 1.1369,
                                        1.2502, 1.5162, 2.0016, 3.0329};

void ExpectPowerCurves(const uint8_t table[8][256], const uint8_t anchors[8][8],
                       const double exponents[8]) {
  for (int k = 0; k < 8; ++k) {
    EXPECT_EQ(table[k][0], 0);
    int v = 1;
    uint8_t low = 0;
    for (int a = 0; a < 8; ++a) {
      const uint8_t high = anchors[k][a];
      for (; v < kAnchors[a]; ++v) {
        const double power = std::floor(255 * std::pow(v / 255.0, exponents[k]) + 1e-9);
        EXPECT_EQ(table[k][v], std::min<double>(std::max<double>(power, low), high))
            << k << ' ' << v;
      }
      EXPECT_EQ(table[k][v++], high) << k << ' ' << kAnchors[a];
      low = high;
    }
    for (v = 1; v < 256; ++v) EXPECT_GE(table[k][v], table[k][v - 1]) << k << ' ' << v;
  }
}

TEST(VariationTables, LighterRowsArePowerCurvesThroughTheirAnchors) {
  ExpectPowerCurves(LIGHTER_TABLE, kLighter, kLighterExponents);
}

TEST(VariationTables, DarkerRowsArePowerCurvesThroughTheirAnchors) {
  ExpectPowerCurves(DARKER_TABLE, kDarker, kDarkerExponents);
}

// ---- the operation

TEST(Variations, NoStepsCopyThePicture) {
  const Image src = Bgr({{{0, 1, 2}, {253, 254, 255}}});
  Image dst = Bgr({{{9, 9, 9}, {9, 9, 9}}});
  EXPECT_EQ(roxeVariations(src, dst, 0, 0, 0, 0, 3), kRoxeOK);
  EXPECT_EQ(dst, src);
}

TEST(Variations, OneStepOfRedDarkensRedByTwoUnitsAndLightensTheOthersByOne) {
  Image image = Bgr({{{16, 64, 128}, {254, 255, 254}}});
  EXPECT_EQ(roxeVariations(image, image, 1, 0, 0, 0, 0), kRoxeOK);
  // Blue and green through lighter row 0, red through darker row 1.
  EXPECT_EQ(image, Bgr({{{16, 64, 124}, {253, 254, 253}}}));
}

TEST(Variations, OneStepOfGreenOrBlueDarkensThatChannel) {
  Image green = Bgr({{{128, 128, 128}}}), blue = green;
  roxeVariations(green, green, 0, 1, 0, 0, 6);
  EXPECT_EQ(green, Bgr({{{180, 31, 180}}}));  // lighter row 6, darker row 7, lighter row 6
  roxeVariations(blue, blue, 0, 0, 1, 0, 6);
  EXPECT_EQ(blue, Bgr({{{31, 180, 180}}}));
}

TEST(Variations, OneStepLessDarkIsLighterRowOne) {
  Image image = Bgr({{{16, 64, 128}, {192, 240, 255}}});
  EXPECT_EQ(roxeVariations(image, image, 0, 0, 0, -1, 0), kRoxeOK);
  EXPECT_EQ(image, Bgr({{{17, 66, 130}, {193, 240, 254}}}));
}

TEST(Variations, FourUnitsAreARowAppliedTwice) {
  Image weak = Bgr({{{0, 64, 255}}});
  roxeVariations(weak, weak, 0, 0, 0, 2, 0);
  // Darker row 1 twice: 64 -> 60 -> 255 (60 / 255)^1.0425 = 56.4, 255 -> 254 -> 253. The table's
  // own row 2 would give 58.
  EXPECT_EQ(weak, Bgr({{{0, 56, 253}}}));

  Image strong = Bgr({{{128, 192, 64}, {254, 255, 0}}});
  roxeVariations(strong, strong, 0, 0, 0, 2, 6);
  // Darker row 7 twice: 128 -> 31 -> 0.4, 192 -> 107 -> 18.3, 64 -> 3 -> 0, 254 -> 251 -> 243.06,
  // 255 -> 254 -> 251.
  EXPECT_EQ(strong, Bgr({{{0, 18, 0}, {243, 251, 0}}}));
}

TEST(Variations, LargerBitsAreAppliedFirst) {
  Image image = Bgr({{{0, 5, 255}, {0, 6, 192}}});
  // Red: 1 - 2 * 2 = -3 units, darker row 7, then row 6: 255 -> 254 -> 252 (the other way 251),
  // 192 -> 107 -> 255 (107 / 255)^2.0016 = 44.8. Green: 2 - 2 * 1 = 0 units.
  roxeVariations(image, image, 2, 1, 0, 0, 6);
  EXPECT_EQ(image, Bgr({{{0, 5, 252}, {0, 6, 44}}}));
}

TEST(Variations, MoreThanSixtyUnitsAreSixty) {
  uint8_t lighter[256 * kVariationRows], darker[256 * kVariationRows];
  uint8_t *lighter_rows[kVariationRows], *darker_rows[kVariationRows];
  create_tables(1, lighter, darker, lighter_rows, darker_rows);
  const auto curve = [&](int64_t amount) {
    std::vector<uint8_t> entries(256);
    create_perchannel_table(amount, 1, entries.data(), lighter_rows, darker_rows);
    return entries;
  };
  EXPECT_EQ(curve(100), curve(60));
  EXPECT_EQ(curve(-61), curve(-60));
  EXPECT_EQ(curve(INT64_C(1) << 40), curve(60));
  // 60 are thirty times row 1 of the table, 59 are 29 times row 1 and then row 0. Darker, row 1
  // takes 1 from 255 twenty-five times and then 2 from 230: 220; after 29 times it is 222, of which
  // row 0 makes 221. Lighter, it adds 1 to 16 sixteen times and 2 to 32 fourteen times: 60.
  EXPECT_EQ(curve(-60)[255], 220);
  EXPECT_EQ(curve(-59)[255], 221);
  EXPECT_EQ(curve(60)[16], 60);
}

TEST(Variations, SixtyUnitsAreTheFourStrongestRows) {
  // Bit 4 is row 1 of the table applied 2 times, bits 8, 16 and 32 are 4, 8 and 16 times: 30 in
  // all.
  const uint8_t* row = DARKER_TABLE[1];
  int level = 255;
  for (int i = 0; i < 30; ++i) level = row[level];
  Image image = Bgr({{{255, 255, 0}}});
  roxeVariations(image, image, 0, 0, 0, 30, 0);
  EXPECT_EQ(image, Bgr({{{static_cast<uint8_t>(level), static_cast<uint8_t>(level), 0}}}));
}

TEST(Variations, CountsOfAnySizeDoNotWrap) {
  const Image src(kRoxeFormatRGB24, 64, 3);
  Image most = src, sixty = src;
  // In 32 bits red would come out at +4 units.
  roxeVariations(src, most, INT32_MAX, 0, 0, INT32_MAX, 2);
  roxeVariations(src, sixty, 0, 0, 0, 30, 2);
  EXPECT_EQ(most, sixty);
  roxeVariations(src, most, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, 2);  // 4 * 2^31 units
  roxeVariations(src, sixty, 0, 0, 0, -30, 2);
  EXPECT_EQ(most, sixty);
}

TEST(Variations, LevelIsClamped) {
  const Image src(kRoxeFormatRGB24, 64, 3);
  Image dst = src, expected = src;
  for (const auto& [level, clamped] : {std::pair{-1, 0}, {INT32_MIN, 0}, {7, 6}, {INT32_MAX, 6}}) {
    roxeVariations(src, dst, 3, -1, 2, 1, level);
    roxeVariations(src, expected, 3, -1, 2, 1, clamped);
    EXPECT_EQ(dst, expected) << level;
  }
}

TEST(Variations, BlackStaysBlack) {
  for (int32_t level = 0; level <= 6; ++level)
    for (int32_t dark : {-40, -7, -1, 1, 6, 40}) {
      Image image = Bgr({{{0, 0, 0}}});
      roxeVariations(image, image, 3, -20, 1, dark, level);
      EXPECT_EQ(image, Bgr({{{0, 0, 0}}}));
    }
}

TEST(Variations, OnlyTheCommonAreaIsWritten) {
  const Image src = Bgr({{{64, 64, 64}}, {{128, 128, 128}}});
  Image dst = Bgr({{{1, 2, 3}, {4, 5, 6}}, {{7, 8, 9}, {1, 2, 3}}, {{4, 5, 6}, {7, 8, 9}}});
  roxeVariations(src, dst, 0, 0, 0, -1, 0);
  EXPECT_EQ(dst,
            Bgr({{{66, 66, 66}, {4, 5, 6}}, {{130, 130, 130}, {1, 2, 3}}, {{4, 5, 6}, {7, 8, 9}}}));
}

TEST(Variations, RecordsOfAnyFormatAreUsedAs24Bit) {
  Image image = Gray({{64, 64, 64, 64, 64}});
  roxeVariations(image, image, 0, 0, 0, -1, 0);
  EXPECT_EQ(image, Gray({{66, 66, 66, 64, 64}}));
}

TEST(Variations, MissingRecordsAndPixelsAreLeftAlone) {
  Image image = Bgr({{{64, 64, 64}}});
  const Image before = image;
  PixelArray without = image.record;
  without.pixels = nullptr;
  EXPECT_EQ(roxeVariations(nullptr, image, 1, 0, 0, 0, 0), kRoxeOK);
  EXPECT_EQ(roxeVariations(image, nullptr, 1, 0, 0, 0, 0), kRoxeOK);
  EXPECT_EQ(roxeVariations(&without, image, 1, 0, 0, 0, 0), kRoxeOK);
  EXPECT_EQ(roxeVariations(image, &without, 1, 0, 0, 0, 0), kRoxeOK);
  without = image.record, without.height = -1;
  EXPECT_EQ(roxeVariations(&without, image, 1, 0, 0, 0, 0), kRoxeOK);
  without = image.record, without.width = INT32_MIN;
  EXPECT_EQ(roxeVariations(image, &without, 1, 0, 0, 0, 0), kRoxeOK);
  EXPECT_EQ(image, before);
}

TEST(Variations, WithoutMemoryNothingIsTouched) {
  Image image = Bgr({{{64, 64, 64}}});
  {
    AllocationWatch watch(1);
    EXPECT_EQ(roxeVariations(image, image, 0, 0, 0, 1, 0), kRoxeOK);
    EXPECT_EQ(watch.live_blocks(), 0);
    EXPECT_EQ(image, Bgr({{{64, 64, 64}}}));
  }
  AllocationWatch watch;
  EXPECT_EQ(roxeVariations(image, image, 0, 0, 0, 1, 0), kRoxeOK);
  EXPECT_EQ(watch.allocations(), 1);
  EXPECT_EQ(watch.live_blocks(), 0);
  EXPECT_EQ(watch.peak_bytes(), 6144u);
  EXPECT_EQ(image, Bgr({{{60, 60, 60}}}));
}

}  // namespace
