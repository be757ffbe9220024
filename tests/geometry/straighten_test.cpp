#include <gtest/gtest.h>

#include "roxe.h"
#include "support/image.h"
#include "support/seams.h"

namespace {

TEST(Straighten, LevelAndPlumbLinesTouchNothing) {
  const Image src(kRoxeFormatRGB24, 30, 20);
  Image dst(kRoxeFormatRGB24, 30, 20);
  dst.fill(9);
  const Image before(dst);
  EXPECT_EQ(roxeuAutoStraightenImage(src, 10, 50, 200, 50, dst), kRoxeOK);
  EXPECT_EQ(roxeuAutoStraightenImage(src, 10, 50, 10, 20, dst), kRoxeOK);
  EXPECT_EQ(roxeuAutoStraightenImage(src, 5, 5, 5, 5, dst), kRoxeOK);
  EXPECT_EQ(dst, before);
}

TEST(Straighten, RotatesAboutTheCentresByTheAngleOfTheLine) {
  const Image src(kRoxeFormatRGB24, 101, 60, 310);
  Image dst(kRoxeFormatRGB24, 90, 75), expected(dst);
  EXPECT_EQ(roxeuAutoStraightenImage(src, 0, 0, 100, 3, dst), kRoxeOK);
  // atan(-0.03)
  EXPECT_EQ(roxeRotateImage(src, 50, 30, -0.02999100486f, expected, 45, 37), kRoxeOK);
  EXPECT_EQ(dst, expected);
}

TEST(Straighten, DrawnLineBecomesLevel) {
  // A bright line that falls by 1 in 10, five pixels thick.
  Image src(kRoxeFormatRGB24, 200, 100), dst(kRoxeFormatRGB24, 200, 100);
  src.fill(0);
  dst.fill(0);
  for (int32_t x = 0; x < 200; ++x)
    for (int32_t y = -2; y <= 2; ++y) *src.pixel(x, 50 + y + (x - 100) / 10) = 255;
  EXPECT_EQ(roxeuAutoStraightenImage(src, 20, 42, 180, 58, dst), kRoxeOK);
  for (int32_t x = 30; x < 170; ++x) {
    EXPECT_GT(*dst.pixel(x, 50), 200) << x;
    EXPECT_EQ(*dst.pixel(x, 45), 0) << x;
    EXPECT_EQ(*dst.pixel(x, 55), 0) << x;
  }
}

TEST(Straighten, GreySourceWritesNothing) {
  const Image src(kRoxeFormatGray8, 30, 20);
  Image dst(kRoxeFormatRGB24, 30, 20);
  const Image before(dst);
  EXPECT_EQ(roxeuAutoStraightenImage(src, 0, 0, 100, 3, dst), kRoxeOK);
  EXPECT_EQ(dst, before);
}

TEST(Straighten, RecordsAreVerifiedOnlyWhenTheLineIsSlanted) {
  Image src(kRoxeFormatRGB24, 30, 20), dst(kRoxeFormatRGB24, 30, 20);
  src.record.rowBytes = 89;
  EXPECT_EQ(roxeuAutoStraightenImage(src, 0, 0, 100, 0, dst), kRoxeOK);
  EXPECT_EQ(roxeuAutoStraightenImage(src, 0, 0, 100, 3, dst), kRoxeErrInvalid);
  src.record.rowBytes = 90;
  dst.record.height = -7;
  EXPECT_EQ(roxeuAutoStraightenImage(src, 0, 0, 0, 100, dst), kRoxeOK);
  EXPECT_EQ(roxeuAutoStraightenImage(src, 0, 0, 3, 100, dst), kRoxeErrInvalid);
}

TEST(Straighten, AllocatesNothing) {
  const Image src(kRoxeFormatRGB24, 30, 20);
  Image dst(kRoxeFormatRGB24, 30, 20);
  AllocationWatch watch;
  EXPECT_EQ(roxeuAutoStraightenImage(src, 0, 0, 100, 3, dst), kRoxeOK);
  EXPECT_EQ(watch.allocations(), 0);
}

}  // namespace
