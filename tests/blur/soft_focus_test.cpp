#include "blur/soft_focus.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "blur/box_blur.h"
#include "support/image.h"
#include "support/seams.h"

namespace {

Image Gaussian(const Image& image, int32_t radius) {
  Image src = image, dst = image, in_place = image;
  dst.fill(7);
  EXPECT_EQ(roxe::GaussianBlurA(src, dst, radius), 1);
  EXPECT_EQ(roxe::GaussianBlurA(in_place, in_place, radius), 1);
  EXPECT_EQ(src, image);
  EXPECT_EQ(in_place, dst);
  return dst;
}

TEST(GaussianBlur, OddRadiusIsThreeEqualBoxes) {
  // 0 79 79 120, then 39 52 92 99: thirds are truncated
  EXPECT_EQ(Gaussian(Gray({{0, 0, 240, 0}}), 3), Gray({{45, 60, 80, 95}}));
}

TEST(GaussianBlur, EvenRadiusIsTwoMirroredBoxesAndALongerOne) {
  // extents 1, 0: 0 0 120 120; extents 0, 1: 0 60 120 120; extents 1, 1
  EXPECT_EQ(Gaussian(Gray({{0, 0, 240, 0}}), 2), Gray({{30, 59, 99, 120}}));
  EXPECT_EQ(Gaussian(Gray({{0}, {0}, {240}, {0}}), 2), Gray({{30}, {59}, {99}, {120}}));
}

TEST(GaussianBlur, SmallRadiusCopiesThePixels) {
  Image src(kRoxeFormatRGB24, 2, 3, 9), dst(kRoxeFormatRGB24, 2, 3, 7);
  src.fill(50);
  Image expected = dst;
  expected.fill(50);
  for (const int32_t radius : {1, 0, -1, INT_MIN}) {
    dst.fill(3);
    EXPECT_EQ(roxe::GaussianBlurA(src, dst, radius), 1);
    EXPECT_EQ(dst, expected);
    EXPECT_EQ(roxe::GaussianBlurA(dst, dst, radius), 1);
    EXPECT_EQ(dst, expected);
  }
}

TEST(GaussianBlur, RejectsDifferentRecords) {
  Image src = Gray({{1, 2}}), dst = Gray({{3, 4}});
  const Image untouched = dst;
  EXPECT_EQ(roxe::GaussianBlurA(nullptr, dst, 3), 0);
  EXPECT_EQ(roxe::GaussianBlurA(src, nullptr, 3), 0);
  PixelArray other = src.record;
  other.format = kRoxeFormatRGB24;
  EXPECT_EQ(roxe::GaussianBlurA(&other, dst, 3), 0);
  other = src.record;
  other.width = 1;
  EXPECT_EQ(roxe::GaussianBlurA(&other, dst, 3), 0);
  other = src.record;
  other.height = 2;
  EXPECT_EQ(roxe::GaussianBlurA(&other, dst, 1), 0);
  EXPECT_EQ(dst, untouched);
}

TEST(GaussianBlur, DoesNotReportFailedPasses) {
  Image src = Gray({{0, 0, 240, 0}}), dst = Gray({{1, 2, 3, 4}});
  const Image before = dst;
  src.record.format = dst.record.format = 7;  // no pass knows this format
  EXPECT_EQ(roxe::GaussianBlurA(src, dst, 3), 1);
  EXPECT_EQ(dst.pixels(), before.pixels());
  src.record.format = dst.record.format = kRoxeFormatGray8;

  // Without the first pass the others blur what dst held: 240 0 0 0 gives 120 79 0 0, then
  // 99 66 26 0 (199 / 2, 199 / 3, 79 / 3, 0).
  Image held = Gray({{240, 0, 0, 0}});
  const AllocationWatch watch(1);
  EXPECT_EQ(roxe::GaussianBlurA(src, held, 3), 1);
  EXPECT_EQ(held, Gray({{99, 66, 26, 0}}));
  EXPECT_EQ(watch.live_blocks(), 0);
}

Image Scene() {  // blue a line, green even, red black
  return Bgr({{{0, 8, 0}, {0, 8, 0}, {240, 8, 0}, {0, 8, 0}}});
}
Image BlurredScene() {  // by radius 3; green: 8 7 7 8, 7 7 7 7, 7 6 6 7
  return Bgr({{{45, 7, 0}, {60, 6, 0}, {80, 6, 0}, {95, 7, 0}}});
}

TEST(SoftFocus, WithoutAMaskIsTheBlur) {
  Image src = Scene(), dst = Scene();
  EXPECT_EQ(roxeSoftFocus(src, dst, nullptr, 3, 3), kRoxeOK);
  EXPECT_EQ(dst, BlurredScene());
  EXPECT_EQ(src, Scene());
}

TEST(SoftFocus, MaskPullsBackTowardsTheSource) {
  Image src = Scene(), dst = Scene(), mask = Gray({{0, 255, 128, 64}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 1), kRoxeOK);
  // blue: 60 + (-60 * 255 >> 8), 80 + (160 * 128 >> 8), 95 + (-95 * 64 >> 8), rounded down
  EXPECT_EQ(dst, Bgr({{{45, 7, 0}, {0, 7, 0}, {160, 7, 0}, {71, 7, 0}}}));
  EXPECT_EQ(mask, Gray({{0, 255, 128, 64}}));
}

TEST(SoftFocus, MaskIsBlurredFirst) {
  Image src = Scene(), dst = Scene(), mask = Gray({{0, 0, 240, 0}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 3), kRoxeOK);
  // The mask becomes 45 60 80 95: 45 + (-2025 >> 8), 60 + (-3600 >> 8), 80 + (12800 >> 8),
  // 95 + (-9025 >> 8).
  EXPECT_EQ(dst, Bgr({{{37, 7, 0}, {45, 6, 0}, {130, 6, 0}, {59, 7, 0}}}));
}

TEST(SoftFocus, BlackMaskIsNoMask) {
  Image src = Scene(), dst = Scene(), mask = Gray({{0, 0, 0, 0}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 9), kRoxeOK);
  EXPECT_EQ(dst, BlurredScene());
}

TEST(SoftFocus, WhiteMaskGivesTheSourceWithinOneLevel) {
  Image src = Scene(), dst = Scene(), mask = Gray({{255, 255, 255, 255}});
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 0), kRoxeOK);
  // One below where the source is the brighter: 80 + (160 * 255 >> 8) = 239, 7 + (255 >> 8) = 7.
  EXPECT_EQ(dst, Bgr({{{0, 7, 0}, {0, 7, 0}, {239, 7, 0}, {0, 7, 0}}}));
}

TEST(SoftFocus, SmallRadiusLeavesTheSource) {
  for (const int32_t radius : {1, 0, -5, INT_MIN}) {
    Image src = Scene(), dst = BlurredScene(), mask = Gray({{0, 255, 128, 64}});
    EXPECT_EQ(roxeSoftFocus(src, dst, mask, radius, 3), kRoxeOK);
    EXPECT_EQ(dst, Scene());
    EXPECT_EQ(roxeSoftFocus(src, src, mask, radius, 3), kRoxeOK);
    EXPECT_EQ(src, Scene());
  }
}

TEST(SoftFocus, InPlaceTheMaskHasNoEffect) {
  Image image = Scene(), mask = Gray({{255, 255, 255, 255}});
  EXPECT_EQ(roxeSoftFocus(image, image, mask, 3, 1), kRoxeOK);
  EXPECT_EQ(image, BlurredScene());
}

TEST(SoftFocus, EveryRecordHasItsOwnPadding) {
  // One column: windows of 2, 3 and 2 rows, as in the scene turned by a quarter.
  Image src(kRoxeFormatRGB24, 1, 4, 5), dst(kRoxeFormatRGB24, 1, 4, 8),
      mask(kRoxeFormatGray8, 1, 4, 3);
  const uint8_t lines[4] = {0, 0, 240, 0}, blurred[4] = {37, 45, 130, 59};
  Image expected = dst;
  for (int32_t y = 0; y < 4; ++y)
    for (int32_t c = 0; c < 3; ++c) {
      src.pixel(0, y)[c] = lines[y];
      *mask.pixel(0, y) = lines[y];
      expected.pixel(0, y)[c] = blurred[y];
    }
  EXPECT_EQ(roxeSoftFocus(src, dst, mask, 3, 3), kRoxeOK);
  EXPECT_EQ(dst, expected);
}

TEST(SoftFocus, ChecksInOrder) {
  Image src = Scene(), dst = BlurredScene(), mask = Gray({{0, 255, 128, 64}});
  const Image untouched = dst;
  EXPECT_EQ(roxeSoftFocus(nullptr, dst, mask, 3, 3), kRoxeErrNull);
  EXPECT_EQ(roxeSoftFocus(src, nullptr, mask, 3, 3), kRoxeErrNull);

  PixelArray bad = src.record;
  bad.rowBytes = 11;  // malformed counts as missing
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrNull);
  bad = dst.record;
  bad.pixels = nullptr;
  EXPECT_EQ(roxeSoftFocus(src, &bad, mask, 3, 3), kRoxeErrNull);

  EXPECT_EQ(roxeSoftFocus(mask, dst, mask, 3, 3), kRoxeErrParam);
  EXPECT_EQ(roxeSoftFocus(src, mask, mask, 3, 3), kRoxeErrParam);
  bad = src.record;
  bad.format = 7;
  bad.pixels = nullptr;
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrParam);
  bad = src.record;
  bad.width = 3;
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrParam);
  bad = src.record;
  bad.height = 2;
  EXPECT_EQ(roxeSoftFocus(&bad, dst, mask, 3, 3), kRoxeErrParam);

  bad = mask.record;
  bad.width = 0;
  EXPECT_EQ(roxeSoftFocus(src, dst, &bad, 3, 3), kRoxeErrNull);
  EXPECT_EQ(roxeSoftFocus(src, dst, src, 3, 3), kRoxeErrParam);  // a mask of 24 bits
  bad = mask.record;
  bad.width = 3;
  EXPECT_EQ(roxeSoftFocus(src, dst, &bad, 3, 3), kRoxeErrParam);
  bad = mask.record;
  bad.height = 2;
  EXPECT_EQ(roxeSoftFocus(src, dst, &bad, 3, 3), kRoxeErrParam);
  EXPECT_EQ(dst, untouched);
}

TEST(SoftFocus, MaskOfMoreThan32BitsIsNoMemory) {
  // Records whose rows claim far more memory than there is; they are refused before it is touched.
  uint8_t pixel[3] = {1, 2, 3};
  PixelArray image = {kRoxeFormatRGB24, 65536, 65536, 3 * 65536, pixel};
  PixelArray mask = {kRoxeFormatGray8, 65536, 65536, 65536, pixel};
  EXPECT_EQ(roxeSoftFocus(&image, &image, &mask, 3, 3), kRoxeErrInvalid);
  EXPECT_EQ(pixel[0], 1);
}

}  // namespace
