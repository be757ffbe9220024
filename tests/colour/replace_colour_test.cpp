#include "colour/replace_colour.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/image.h"
#include "support/seams.h"

namespace {

using Weights = std::vector<int32_t>;

Weights Falloff(uint32_t size, uint32_t steps) {
  Weights table(size + 1, 7);  // one entry behind the table
  roxe::create_blur_table(table.data(), size, steps);
  return table;
}

TEST(ReplaceColour, FalloffOfElevenSteps) {
  EXPECT_EQ(Falloff(13, 11), (Weights{65536, 65458, 64914, 63454, 60668, 56242, 50005, 41983, 32429,
                                      21812, 10768, 0, 0, 7}));
}

TEST(ReplaceColour, FalloffOfFewSteps) {
  EXPECT_EQ(Falloff(3, 1), (Weights{65536, 0, 0, 7}));
  EXPECT_EQ(Falloff(2, 0), (Weights{0, 0, 7}));
  // Two steps: (exp(-1 / 8) - exp(-1)) / (1 - exp(-1)) * 65536 = 53353.6; more steps than entries.
  EXPECT_EQ(Falloff(2, 9), (Weights{65536, 53353, 7}));
}

// One row of pixels replaced; the reference colour is (blue, green, red).
Image Replaced(const std::vector<Pixel>& row, Pixel reference, uint32_t tolerance, int32_t hue,
               int32_t saturation, int32_t value) {
  Image src = Bgr({row});
  Image dst = Bgr({std::vector<Pixel>(row.size(), Pixel{9, 9, 9})});
  EXPECT_EQ(roxeReplaceColor(src, dst, reference.blue, reference.green, reference.red, tolerance,
                             hue, saturation, value),
            kRoxeOK);
  return dst;
}

Image Mask(const std::vector<Pixel>& row, Pixel reference, uint32_t tolerance) {
  Image src = Bgr({row});
  Image mask = Bgr({std::vector<Pixel>(row.size(), Pixel{9, 9, 9})});
  EXPECT_EQ(
      roxeReplaceColorMask(src, mask, reference.blue, reference.green, reference.red, tolerance),
      kRoxeOK);
  return mask;
}

constexpr Pixel kRed = {0, 0, 255}, kGreen = {0, 255, 0}, kBlue = {255, 0, 0};

TEST(ReplaceColour, TurnsTheReferenceAndLeavesTheRest) {
  EXPECT_EQ(Replaced({kRed, kBlue}, kRed, 80, 120, 0, 0), Bgr({{kGreen, kBlue}}));
}

TEST(ReplaceColour, FadesWithTheDistance) {
  // Red 200, green and blue 30: hsv (360, 216, 200), 14 steps away: weight 65002. Steps 25 and 12
  // become 24 and 11: hue 480 - 360 = 120, saturation 240, value 211: p = 12, so (12, 211, 12).
  // red 200 + (65002 * -188 >> 16 = -187), green 30 + (65002 * 181 >> 16 = 179), blue 30 - 18.
  EXPECT_EQ(Replaced({{30, 30, 200}}, kRed, 80, 120, 10, 5), Bgr({{{12, 209, 13}}}));
}

TEST(ReplaceColour, ToleranceNoneChangesOnlyTheNearest) {
  const Pixel reference = {90, 200, 10}, other = {90, 200, 60};
  EXPECT_EQ(Mask({reference, other}, reference, 0), Bgr({{{255, 255, 255}, {0, 0, 0}}}));
  // hsv (146, 242, 200) turned to 236: the sector before blue, 14 / 15 through it; the chroma is
  // 200 * 242 / 255 = 189.8, so red is 10.2 and green 200 - 189.8 * 14 / 15 = 22.9.
  EXPECT_EQ(Replaced({reference, other}, reference, 0, 90, 0, 0), Bgr({{{200, 22, 10}, other}}));
}

TEST(ReplaceColour, WithoutShiftsTheReferenceTakesTheWayThroughHsv) {
  // hsv (146, 242, 200): hue 180 - (15 * 110 * 5497 >> 18 = 34); s = 242 / 255; p = 200 - 189.8;
  // t = p + 189.8 * 26 / 60 = 92.4. The blue 90 is not reached again.
  EXPECT_EQ(Replaced({{90, 200, 10}}, {90, 200, 10}, 0, 0, 0, 0), Bgr({{{92, 200, 10}}}));
}

TEST(ReplaceColour, GreysAreBrightenedButNotColoured) {
  // Distance 16 * 202 >> 14 = 0: full weight. 10 percent: 25.5 cut to 25.
  EXPECT_EQ(Replaced({{128, 128, 128}}, {120, 120, 120}, 80, 90, 50, 10), Bgr({{{153, 153, 153}}}));
}

TEST(ReplaceColour, AWholeTurnOfTheHueIsNone) {
  std::mt19937 random(11);
  Image src(kRoxeFormatRGB24, 50, 20);
  src.randomise(random);
  src.pixel(0, 0)[0] = src.pixel(0, 0)[1] = 0;  // a pure red, hue 360
  for (const int32_t turn : {360, -360, 720, 360000}) {
    Image none(kRoxeFormatRGB24, 50, 20), whole(kRoxeFormatRGB24, 50, 20);
    roxeReplaceColor(src, none, 20, 30, 240, 200, 0, 20, 10);
    roxeReplaceColor(src, whole, 20, 30, 240, 200, turn, 20, 10);
    EXPECT_EQ(whole, none) << turn;
  }
}

TEST(ReplaceColour, HugeHueShiftsAreRoundedTogetherWithTheHue) {
  // Red 200 has hue 360. From 2^24 on floats are even numbers, and a tie goes to a multiple of
  // four. A sum of 16777577 becomes 16777576, hue 136: blue 200 * 16 / 60 = 53; exactly it would be
  // 137 and 56.
  const Pixel red = {0, 0, 200};
  EXPECT_EQ(Replaced({red}, red, 0, 16777217, 0, 0), Bgr({{{53, 200, 0}}}));
  // 16777575 becomes 16777576 too, not 135.
  EXPECT_EQ(Replaced({red}, red, 0, 16777215, 0, 0), Bgr({{{53, 200, 0}}}));
  // -16777217 becomes -16777216, hue 224: green 200 * (240 - 224) / 60 = 53; exactly 223 and 56.
  EXPECT_EQ(Replaced({red}, red, 0, -16777577, 0, 0), Bgr({{{200, 53, 0}}}));
  // The last sum that is exact, 16777216, has hue 136.
  EXPECT_EQ(Replaced({red}, red, 0, 16776856, 0, 0), Bgr({{{53, 200, 0}}}));
}

TEST(ReplaceColour, HueShiftIsFullAtTheEdgeOfTheTolerance) {
  // Distance 1136 / 34 = 33, the last of 34 steps: weight 3411. The colour of hue 120 is (30, 200,
  // 30): red 200 + (3411 * -170 >> 16 = -9), green 30 + (3411 * 170 >> 16 = 8).
  EXPECT_EQ(Falloff(35, 34)[33], 3411);
  EXPECT_EQ(Replaced({{30, 30, 200}}, kRed, 33, 120, 0, 0), Bgr({{{30, 38, 191}}}));
  EXPECT_EQ(Replaced({{30, 30, 200}}, kRed, 32, 120, 0, 0), Bgr({{{30, 30, 200}}}));
}

TEST(ReplaceColour, LargeShiftsSaturate) {
  // The largest exact steps: 12850 * 2.55 = 32767. Value 255, saturation 0.
  EXPECT_EQ(Replaced({{0, 0, 100}}, {0, 0, 100}, 0, 0, -12850, 12850), Bgr({{{255, 255, 255}}}));
  EXPECT_EQ(Replaced({{0, 0, 100}}, {0, 0, 100}, 0, 0, 12850, -12850), Bgr({{{0, 0, 0}}}));
  for (const int32_t shift : {INT32_MIN, INT32_MAX, -12851, 12851})
    Replaced({{0, 0, 100}, {5, 5, 5}, {255, 255, 255}}, {0, 0, 100}, 200, shift, shift, shift);
}

TEST(ReplaceColour, MaskFollowsTheFalloff) {
  // 14 of 81 steps: 65002 * 255 >> 16 = 252. A grey at the reference, a colour outside.
  EXPECT_EQ(Mask({kRed, {30, 30, 200}, kBlue}, kRed, 80),
            Bgr({{{255, 255, 255}, {252, 252, 252}, {0, 0, 0}}}));
}

TEST(ReplaceColour, LargeTolerancesAndComponentsAreClamped) {
  std::mt19937 random(12);
  Image src(kRoxeFormatRGB24, 50, 20);
  src.randomise(random);
  Image expected(kRoxeFormatRGB24, 50, 20), actual(kRoxeFormatRGB24, 50, 20);
  roxeReplaceColorMask(src, expected, 255, 255, 0, 200);
  roxeReplaceColorMask(src, actual, 256, UINT32_MAX, 0, 201);
  EXPECT_EQ(actual, expected);
  roxeReplaceColor(src, expected, 255, 255, 0, 200, 30, 20, 10);
  roxeReplaceColor(src, actual, 256, UINT32_MAX, 0, UINT32_MAX, 30, 20, 10);
  EXPECT_EQ(actual, expected);
}

TEST(ReplaceColour, WorksInPlace) {
  std::mt19937 random(13);
  Image src(kRoxeFormatRGB24, 301, 7, 3 * 301 + 5);
  src.randomise(random);
  Image apart(src), in_place(src), mask(src), masked_in_place(src);
  roxeReplaceColor(src, apart, 60, 90, 180, 150, 40, 10, 5);
  roxeReplaceColor(in_place, in_place, 60, 90, 180, 150, 40, 10, 5);
  EXPECT_EQ(in_place, apart);
  roxeReplaceColorMask(src, mask, 60, 90, 180, 150);
  roxeReplaceColorMask(masked_in_place, masked_in_place, 60, 90, 180, 150);
  EXPECT_EQ(masked_in_place, mask);
}

TEST(ReplaceColour, PixelsAreReadWholeBeforeTheyAreWritten) {
  // Blue is far from the red that turns green; dst begins one or two bytes after src. The second
  // pixel is read after the first was written.
  for (const int32_t bytes : {1, 2}) {
    Image strip = Bgr({{{250, 20, 10}, {240, 30, 9}, {1, 2, 3}}});
    PixelArray src = strip.record, dst = strip.record;
    src.width = dst.width = 2;
    dst.pixels += bytes;
    EXPECT_EQ(roxeReplaceColor(&src, &dst, 0, 0, 255, 0, 120, 0, 0), kRoxeOK);
    EXPECT_EQ(strip, bytes == 1 ? Bgr({{{250, 250, 20}, {10, 10, 30}, {9, 2, 3}}})
                                : Bgr({{{250, 20, 250}, {20, 10, 20}, {10, 9, 3}}}));
  }
}

TEST(ReplaceColour, OverlappingPicturesAreWalkedPixelByPixel) {
  // Each pixel of the destination is the next one of the source: the mask spreads to the right,
  // black after red, and black is 81 steps away from red.
  Image image = Bgr({{kRed, kRed, kRed}});
  PixelArray src = image.record, dst = image.record;
  src.width = dst.width = 2;
  dst.pixels += 3;
  roxeReplaceColorMask(&src, &dst, 0, 0, 255, 80);
  EXPECT_EQ(image, Bgr({{kRed, {255, 255, 255}, {0, 0, 0}}}));
}

TEST(ReplaceColour, OnlyTheCommonAreaIsWritten) {
  Image src = Bgr({{kRed, kRed}});
  Image dst = Bgr({{kBlue, kBlue, kBlue}, {kBlue, kBlue, kBlue}});
  roxeReplaceColor(src, dst, 0, 0, 255, 0, 120, 0, 0);
  EXPECT_EQ(dst, Bgr({{kGreen, kGreen, kBlue}, {kBlue, kBlue, kBlue}}));

  Image small = Bgr({{kBlue}});
  roxeReplaceColor(src, small, 0, 0, 255, 0, 120, 0, 0);
  EXPECT_EQ(small, Bgr({{kGreen}}));
}

TEST(ReplaceColour, ColumnsThatRowsDoNotHoldAreAbsent) {
  Image src = Bgr({{kRed, kRed, kRed}});
  Image dst = Bgr({{kBlue, kBlue, kBlue}});
  src.record.rowBytes = 8;               // two whole pixels
  src.record.width = 1431655766;         // three times that wraps to 2
  dst.record.format = kRoxeFormatGray8;  // formats are not looked at
  roxeReplaceColor(src, dst, 0, 0, 255, 0, 120, 0, 0);
  dst.record.format = kRoxeFormatRGB24;
  EXPECT_EQ(dst, Bgr({{kGreen, kGreen, kBlue}}));
}

TEST(ReplaceColour, UnusableRecordsTouchNothing) {
  Image image = Bgr({{kRed, kRed}});
  const Image before(image);
  PixelArray empty = image.record, low = image.record, no_pixels = image.record;
  empty.width = 0;
  low.height = -1;
  no_pixels.pixels = nullptr;
  for (PixelArray* bad : {static_cast<PixelArray*>(nullptr), &empty, &low, &no_pixels}) {
    EXPECT_EQ(roxeReplaceColor(bad, image, 0, 0, 255, 200, 120, 0, 0), kRoxeOK);
    EXPECT_EQ(roxeReplaceColor(image, bad, 0, 0, 255, 200, 120, 0, 0), kRoxeOK);
    EXPECT_EQ(roxeReplaceColorMask(bad, image, 0, 0, 255, 200), kRoxeOK);
    EXPECT_EQ(roxeReplaceColorMask(image, bad, 0, 0, 255, 200), kRoxeOK);
  }
  EXPECT_EQ(image, before);
}

TEST(ReplaceColour, AllocatesNothing) {
  Image image = Bgr({{kRed, kRed}});
  const AllocationWatch watch;
  roxeReplaceColor(image, image, 0, 0, 255, 200, 120, 0, 0);
  roxeReplaceColorMask(image, image, 0, 0, 255, 200);
  EXPECT_EQ(watch.allocations(), 0);
}

}  // namespace
