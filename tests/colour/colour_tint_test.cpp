#include "colour/colour_tint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "support/image.h"
#include "support/seams.h"

namespace {

constexpr Pixel kRed = {0, 0, 255}, kBlue = {255, 0, 0};

Image Tinted(const std::vector<Pixel>& row, Pixel reference, uint32_t tolerance) {
  Image src = Bgr({row});
  Image dst = Bgr({std::vector<Pixel>(row.size(), Pixel{9, 9, 9})});
  EXPECT_EQ(roxeColorTint(src, dst, reference.blue, reference.green, reference.red, tolerance),
            kRoxeOK);
  return dst;
}

TEST(ColourTint, OutsideTheToleranceAllIsGrey) {
  // 255 * 255 >> 8 = 254; 28 * 255 >> 8 = 27; 100 * 255 >> 8 = 99.
  EXPECT_EQ(Tinted({{255, 255, 255}, kBlue, {100, 100, 100}}, kRed, 80),
            Bgr({{{254, 254, 254}, {27, 27, 27}, {99, 99, 99}}}));
}

TEST(ColourTint, TheReferenceIsKept) {
  for (const uint32_t tolerance : {0u, 1u, 80u, 200u, UINT32_MAX})
    EXPECT_EQ(Tinted({kRed, {90, 200, 10}}, kRed, tolerance).pixel(0, 0)[2], 255);
  EXPECT_EQ(Tinted({{90, 200, 10}}, {90, 200, 10}, 0), Bgr({{{90, 200, 10}}}));
}

TEST(ColourTint, ToleranceNoneKeepsOnlyTheNearest) {
  // 28 * 90 + 151 * 200 + 76 * 60 = 37280, / 256 = 145.6.
  EXPECT_EQ(Tinted({{90, 200, 10}, {90, 200, 60}}, {90, 200, 10}, 0),
            Bgr({{{90, 200, 10}, {145, 145, 145}}}));
}

TEST(ColourTint, FadesInProportionToTheDistance) {
  // 14 of 81 steps, f = 14 * 202 = 2828; grey (28 * 30 + 151 * 30 + 76 * 200 = 20570) >> 8 = 80.
  // 200 + (2828 * -120 >> 14 = -21), 30 + (2828 * 50 >> 14 = 8).
  EXPECT_EQ(Tinted({{30, 30, 200}}, kRed, 80), Bgr({{{38, 38, 179}}}));
}

TEST(ColourTint, GreysInsideTheToleranceLoseTheLevelThatTheWeightsLack) {
  // Grey 100 has level 99. Distance 400 / 4 / 81 = 1 of 81 steps: 100 + (202 * -1 >> 14 = -1).
  EXPECT_EQ(Tinted({{100, 100, 100}}, {120, 120, 120}, 80), Bgr({{{99, 99, 99}}}));
  // At the reference itself nothing is taken.
  EXPECT_EQ(Tinted({{120, 120, 120}}, {120, 120, 120}, 80), Bgr({{{120, 120, 120}}}));
}

TEST(ColourTint, WorkerTakesItsToleranceAsAFloat) {
  const auto tinted = [](float tolerance) {
    Image image = Bgr({{kRed, {30, 30, 200}, {0, 120, 255}, kBlue}});
    roxe::clr_accent(image.record, image.record, 0, 0, 255, tolerance);
    return image;
  };
  EXPECT_EQ(tinted(80.9f), tinted(80.0f));
  EXPECT_EQ(tinted(1e30f), tinted(200.0f));
  EXPECT_EQ(tinted(-5.0f), tinted(0.0f));
  EXPECT_EQ(tinted(std::nanf("")), tinted(0.0f));
}

TEST(ColourTint, LargeTolerancesAndComponentsAreClamped) {
  std::mt19937 random(21);
  Image src(kRoxeFormatRGB24, 50, 20);
  src.randomise(random);
  Image expected(kRoxeFormatRGB24, 50, 20), actual(kRoxeFormatRGB24, 50, 20);
  roxeColorTint(src, expected, 255, 0, 255, 200);
  roxeColorTint(src, actual, UINT32_MAX, 0, 256, 201);
  EXPECT_EQ(actual, expected);
}

TEST(ColourTint, MaskIsThatOfTheReplacement) {
  std::mt19937 random(22);
  Image src(kRoxeFormatRGB24, 50, 20);
  src.randomise(random);
  Image expected(kRoxeFormatRGB24, 50, 20), actual(kRoxeFormatRGB24, 50, 20);
  EXPECT_EQ(roxeReplaceColorMask(src, expected, 60, 90, 180, 120), kRoxeOK);
  EXPECT_EQ(roxeColorTintMask(src, actual, 60, 90, 180, 120), kRoxeOK);
  EXPECT_EQ(actual, expected);
}

TEST(ColourTint, WorksInPlaceAndOnTheCommonArea) {
  std::mt19937 random(23);
  Image src(kRoxeFormatRGB24, 301, 7, 3 * 301 + 5);
  src.randomise(random);
  Image apart(src), in_place(src);
  roxeColorTint(src, apart, 60, 90, 180, 150);
  roxeColorTint(in_place, in_place, 60, 90, 180, 150);
  EXPECT_EQ(in_place, apart);

  Image small = Bgr({{kBlue}});
  Image large = Bgr({{{1, 2, 3}, {4, 5, 6}}, {{7, 8, 9}, {1, 2, 3}}});
  roxeColorTint(small, large, 0, 0, 255, 80);
  EXPECT_EQ(large, Bgr({{{27, 27, 27}, {4, 5, 6}}, {{7, 8, 9}, {1, 2, 3}}}));
}

TEST(ColourTint, UnusableRecordsTouchNothing) {
  Image image = Bgr({{kBlue, kRed}});
  const Image before(image);
  PixelArray empty = image.record, no_pixels = image.record;
  empty.height = 0;
  no_pixels.pixels = nullptr;
  for (PixelArray* bad : {static_cast<PixelArray*>(nullptr), &empty, &no_pixels}) {
    EXPECT_EQ(roxeColorTint(bad, image, 0, 0, 255, 0), kRoxeOK);
    EXPECT_EQ(roxeColorTint(image, bad, 0, 0, 255, 0), kRoxeOK);
    EXPECT_EQ(roxeColorTintMask(bad, image, 0, 0, 255, 0), kRoxeOK);
    EXPECT_EQ(roxeColorTintMask(image, bad, 0, 0, 255, 0), kRoxeOK);
  }
  EXPECT_EQ(image, before);
}

TEST(ColourTint, AllocatesNothing) {
  Image image = Bgr({{kBlue, kRed}});
  const AllocationWatch watch;
  roxeColorTint(image, image, 0, 0, 255, 80);
  roxeColorTintMask(image, image, 0, 0, 255, 80);
  EXPECT_EQ(watch.allocations(), 0);
}

}  // namespace
