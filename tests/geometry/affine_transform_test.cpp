#include "geometry/affine_transform.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "support/image.h"
#include "support/seams.h"

namespace {

using roxe::ApplyParameters;

// Two equal rows of blue values.
Image Rows(const std::vector<uint8_t>& blues) {
  Image image(kRoxeFormatRGB24, static_cast<int32_t>(blues.size()), 2);
  image.fill(0);
  for (int32_t y = 0; y < 2; ++y)
    for (size_t x = 0; x < blues.size(); ++x) *image.pixel(static_cast<int32_t>(x), y) = blues[x];
  return image;
}

// The blue values of a row of width pixels, 9 before, that is drawn from Rows(blues).
std::vector<int> Drawn(const std::vector<uint8_t>& blues, const float (&p)[8], int32_t width) {
  const Image src = Rows(blues);
  Image dst(kRoxeFormatRGB24, width, 1);
  dst.fill(9);
  EXPECT_EQ(ApplyParameters(src.record, dst.record, p, 0, 0, 0, 0, width, 1), 1);
  std::vector<int> drawn;
  for (int32_t x = 0; x < width; ++x) drawn.push_back(*dst.pixel(x, 0));
  return drawn;
}

TEST(ApplyParameters, LastColumnAndRowAreOnlyNeighbours) {
  const Image src(kRoxeFormatRGB24, 5, 4, 16);
  Image dst(kRoxeFormatRGB24, 7, 6);
  dst.fill(9);
  const float identity[8] = {1, 0, 0, 0, 1, 0, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, identity, 0, 0, 0, 0, 7, 6), 1);
  for (int32_t y = 0; y < 6; ++y)
    for (int32_t x = 0; x < 7; ++x)
      for (int c = 0; c < 3; ++c)
        EXPECT_EQ(dst.pixel(x, y)[c], x < 4 && y < 3 ? src.pixel(x, y)[c] : 9) << x << ' ' << y;
}

TEST(ApplyParameters, MixesFourNeighboursAndTruncates) {
  const Image src = Bgr({{{10, 0, 0}, {20, 100, 255}}, {{30, 0, 0}, {41, 200, 255}}});
  Image dst(kRoxeFormatRGB24, 1, 1);
  const float halves[8] = {1, 0, 0.5f, 0, 1, 0.5f, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, halves, 0, 0, 0, 0, 1, 1), 1);
  // 101 / 4, 300 / 4, 510 / 4
  EXPECT_EQ(dst, Bgr({{{25, 75, 127}}}));
  const float quarters[8] = {1, 0, 0.75f, 0, 1, 0.25f, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, quarters, 0, 0, 0, 0, 1, 1), 1);
  // top 17.5, 75, 191.25; bottom 38.25, 150, 191.25; a quarter of the way down
  EXPECT_EQ(dst, Bgr({{{22, 93, 191}}}));
}

TEST(ApplyParameters, MixesAreFused) {
  // 1 + 250 t is 128.99999 for this t; with a rounded product it would be 129.
  EXPECT_EQ(Drawn({1, 251}, {0, 0, 0x1.0624dcp-1f, 0, 0, 0, 0, 0}, 1), (std::vector<int>{128}));
}

TEST(ApplyParameters, BeforeTheFirstColumnAndRowExtrapolatesAndWraps) {
  const float half_before[8] = {0, 0, -0.5f, 0, 0, 0, 0, 0};
  EXPECT_EQ(Drawn({10, 101}, half_before, 1), (std::vector<int>{221}));  // -35.5, -35 + 256
  EXPECT_EQ(Drawn({200, 0}, half_before, 1), (std::vector<int>{44}));    // 300 - 256
  EXPECT_EQ(Drawn({10, 101}, {0, 0, -1, 0, 0, 0, 0, 0}, 1), (std::vector<int>{9}));

  const Image src = Bgr({{{10, 0, 0}, {0, 0, 0}}, {{101, 0, 0}, {0, 0, 0}}});
  Image dst(kRoxeFormatRGB24, 1, 1);
  const float half_above[8] = {0, 0, 0, 0, 0, -0.5f, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, half_above, 0, 0, 0, 0, 1, 1), 1);
  EXPECT_EQ(*dst.pixel(0, 0), 221);
}

TEST(ApplyParameters, SumsAreAccumulatedAlongARowAndDownAColumn) {
  // Ten additions of 0.1 in single precision give 1.0000001: 255 - 255 * 1.2e-7 is cut to 254.
  const std::vector<int> drawn = Drawn({0, 255, 0}, {0.1f, 0, 0, 0, 0, 0, 0, 0}, 11);
  EXPECT_EQ(drawn[10], 254);

  const Image src = Bgr({{{0, 0, 0}, {0, 0, 0}}, {{255, 0, 0}, {0, 0, 0}}, {{0, 0, 0}, {0, 0, 0}}});
  Image dst(kRoxeFormatRGB24, 1, 11);
  const float down[8] = {0, 0, 0, 0, 0.1f, 0, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, down, 0, 0, 0, 0, 1, 11), 1);
  EXPECT_EQ(*dst.pixel(0, 10), 254);
}

TEST(ApplyParameters, StartIsMultipliedOut) {
  // From column 10 on: 0.1 * 10 is 1 in single precision.
  const Image src = Rows({0, 255, 0});
  Image dst(kRoxeFormatRGB24, 11, 1);
  const float p[8] = {0.1f, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, p, 0, 0, 10, 0, 11, 1), 1);
  EXPECT_EQ(*dst.pixel(10, 0), 255);
}

TEST(ApplyParameters, DividesByTheThirdSum) {
  // x / (x + 1): 0, 1/2, 2/3, 3/4, 4/5, 5/6, 6/7, 7/8 of 200
  EXPECT_EQ(Drawn({0, 200}, {1, 0, 0, 0, 0, 0, 1, 0}, 8),
            (std::vector<int>{0, 100, 133, 150, 160, 166, 171, 175}));
}

TEST(ApplyParameters, PositionsThatAreNoNumbersLeaveThePixel) {
  // D is 1, 0, -1: x / D is 0, infinite, -2 for p0 = 1 and 0, NaN, 0 for p0 = 0.
  EXPECT_EQ(Drawn({50, 60}, {1, 0, 0, 0, 0, 0, -1, 0}, 3), (std::vector<int>{50, 9, 9}));
  EXPECT_EQ(Drawn({50, 60}, {0, 0, 0, 0, 0, 0, -1, 0}, 3), (std::vector<int>{50, 9, 50}));
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(Drawn({50, 60}, {0, 0, nan, 0, 0, 0, 0, 0}, 2), (std::vector<int>{9, 9}));
  EXPECT_EQ(Drawn({50, 60}, {0, 0, 1e30f, 0, 0, 0, 0, 0}, 2), (std::vector<int>{9, 9}));
  EXPECT_EQ(Drawn({50, 60}, {0, 0, -1e30f, 0, 0, 0, 0, 0}, 2), (std::vector<int>{9, 9}));
}

TEST(ApplyParameters, OffsetsAreAddedBeforeMapping) {
  const Image src(kRoxeFormatRGB24, 6, 6);
  Image dst(kRoxeFormatRGB24, 3, 3);
  const float identity[8] = {1, 0, 0, 0, 1, 0, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, identity, 2, 1, 0, 0, 3, 3), 1);
  for (int32_t y = 0; y < 3; ++y)
    for (int32_t x = 0; x < 3; ++x) EXPECT_EQ(*dst.pixel(x, y), *src.pixel(x + 2, y + 1));
}

TEST(ApplyParameters, EmptyOrOutsideRectanglesDrawNothing) {
  const Image src(kRoxeFormatRGB24, 6, 6);
  Image dst(kRoxeFormatRGB24, 3, 3);
  const Image before(dst);
  const float p[8] = {1, 0, 0, 0, 1, 0, 0, 0};
  EXPECT_EQ(ApplyParameters(src.record, dst.record, p, 0, 0, 2, 0, 2, 3), 0);
  EXPECT_EQ(ApplyParameters(src.record, dst.record, p, 0, 0, 0, 3, 3, 1), 0);
  EXPECT_EQ(ApplyParameters(src.record, dst.record, p, 0, 0, 3, 0, 9, 3), 0);
  EXPECT_EQ(ApplyParameters(src.record, dst.record, p, 0, 0, -9, 0, 0, 3), 0);
  EXPECT_EQ(dst, before);
}

TEST(ApplyParameters, SameRecordReadsWhatEarlierPixelsWrote) {
  Image image = Bgr({{{10, 1, 2}, {20, 3, 4}, {30, 5, 6}}, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}});
  const float from_the_left[8] = {1, 0, -1, 0, 1, 0, 0, 0};
  EXPECT_EQ(ApplyParameters(image.record, image.record, from_the_left, 0, 0, 0, 0, 3, 2), 1);
  EXPECT_EQ(image, Bgr({{{10, 1, 2}, {10, 1, 2}, {10, 1, 2}}, {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}}));
}

const Quad kSquare = {10, 10, 30, 10, 30, 30, 10, 30};

TEST(AffineTransform, DrawsTheQuadrilateralIntoTheRectangle) {
  // Powers of two all through, so the mapping is exact: x = 8 + 2 u, y = 4 + v.
  const Image src(kRoxeFormatRGB24, 50, 40);
  Image dst(kRoxeFormatRGB24, 20, 20);
  const Image before(dst);
  Quad quad = {24, 12, 8, 12, 8, 4, 24, 4};
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, {0, 0, 8, 8}), kRoxeOK);
  for (int32_t y = 0; y < 20; ++y)
    for (int32_t x = 0; x < 20; ++x)
      for (int c = 0; c < 3; ++c)
        EXPECT_EQ(dst.pixel(x, y)[c],
                  x < 8 && y < 8 ? src.pixel(8 + 2 * x, 4 + y)[c] : before.pixel(x, y)[c]);
  EXPECT_EQ(quad.x0, 8);
  EXPECT_EQ(quad.y0, 4);
  EXPECT_EQ(quad.x1, 24);
  EXPECT_EQ(quad.y1, 4);
  EXPECT_EQ(quad.x2, 24);
  EXPECT_EQ(quad.y2, 12);
  EXPECT_EQ(quad.x3, 8);
  EXPECT_EQ(quad.y3, 12);
}

TEST(AffineTransform, GivenDestinationPointsAreUsedCornerByCorner) {
  // Mirrored: x = 16 - 2 u.
  const Image src(kRoxeFormatRGB24, 50, 40);
  Image dst(kRoxeFormatRGB24, 8, 8);
  const Quad corners = {0, 0, 8, 0, 8, 8, 0, 8};
  Quad quad = {24, 4, 8, 4, 8, 12, 24, 12};
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, &corners, {0, 0, 8, 8}), kRoxeOK);
  for (int32_t y = 0; y < 8; ++y)
    for (int32_t x = 0; x < 8; ++x) EXPECT_EQ(*dst.pixel(x, y), *src.pixel(24 - 2 * x, 4 + y));
  EXPECT_EQ(quad.x0, 24);  // not sorted
  EXPECT_EQ(quad.x1, 8);
}

TEST(AffineTransform, RectangleMayReachBeyondTheDestination) {
  Image src(kRoxeFormatRGB24, 200, 200);
  src.fill(200);
  Image dst(kRoxeFormatRGB24, 40, 40, 130);
  Quad quad = {10, 10, 160, 10, 160, 160, 10, 160};
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, {-100, -100, 50, 50}), kRoxeOK);
  EXPECT_EQ(dst.pixels(), std::vector<uint8_t>(40 * 40 * 3, 200));
}

TEST(AffineTransform, MappingIsThatOfTheWholeRectangle) {
  // 16 pixels onto 32, of which the lower right quarter is drawn: x = 2 (u + 8), y = 2 (v + 8).
  const Image src(kRoxeFormatRGB24, 40, 40);
  Image dst(kRoxeFormatRGB24, 8, 8);
  Quad quad = {0, 0, 32, 0, 32, 32, 0, 32};
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, {-8, -8, 8, 8}), kRoxeOK);
  for (int32_t y = 0; y < 8; ++y)
    for (int32_t x = 0; x < 8; ++x)
      for (int c = 0; c < 3; ++c)
        EXPECT_EQ(dst.pixel(x, y)[c], src.pixel(2 * x + 16, 2 * y + 16)[c]) << x << ' ' << y;
}

TEST(AffineTransform, RecordsAreVerifiedFirst) {
  Image good(kRoxeFormatRGB24, 9, 9), bad(kRoxeFormatRGB24, 9, 9);
  bad.record.rowBytes = 26;
  EXPECT_EQ(roxeAffineTransform(nullptr, nullptr, nullptr, nullptr, {}), kRoxeErrNull);
  EXPECT_EQ(roxeAffineTransform(bad, nullptr, nullptr, nullptr, {}), kRoxeErrInvalid);
  EXPECT_EQ(roxeAffineTransform(good, nullptr, nullptr, nullptr, {}), kRoxeErrNull);
  EXPECT_EQ(roxeAffineTransform(good, bad, nullptr, nullptr, {}), kRoxeErrInvalid);
}

TEST(AffineTransform, UnusableParametersSortNothing) {
  const Image src(kRoxeFormatRGB24, 40, 40);
  Image dst(kRoxeFormatRGB24, 20, 20);
  const Image before(dst);
  EXPECT_EQ(roxeAffineTransform(src, dst, nullptr, nullptr, {0, 0, 8, 8}), kRoxeErrParam);
  Quad crossed = {10, 10, 30, 30, 30, 10, 10, 30};
  EXPECT_EQ(roxeAffineTransform(src, dst, &crossed, nullptr, {0, 0, 8, 8}), kRoxeErrParam);
  Quad quad = {30, 30, 10, 30, 10, 10, 30, 10};
  const PixelRect unusable[] = {{8, 0, 8, 8},  {0, 8, 8, 8},  {9, 0, 8, 8},   {0, 9, 8, 8},
                                {-9, 0, 0, 8}, {0, -9, 8, 0}, {20, 0, 30, 8}, {0, 20, 8, 30}};
  for (const PixelRect& rect : unusable)
    EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, rect), kRoxeErrParam);
  EXPECT_EQ(quad.x0, 30);
  EXPECT_EQ(quad.y0, 30);
  EXPECT_EQ(dst, before);
}

TEST(AffineTransform, GreyRecordsAreUsedAs24BitAsFarAsTheirRowsReach) {
  Image src(kRoxeFormatGray8, 48, 16);  // 16 pixels a row
  Image dst(kRoxeFormatGray8, 24, 16);  // 8 pixels a row
  dst.fill(9);
  Quad quad = {0, 0, 16, 0, 16, 16, 0, 16};
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, {0, 0, 16, 16}), kRoxeOK);
  for (int32_t y = 0; y < 16; ++y)
    for (int32_t x = 0; x < 24; ++x)
      EXPECT_EQ(*dst.pixel(x, y), y < 15 ? *src.pixel(x, y) : 9) << x << ' ' << y;
  // From column 8 on the rows hold nothing.
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, {8, 0, 16, 16}), kRoxeOK);
}

TEST(AffineTransform, UnknownFormats) {
  Image src(kRoxeFormatRGB24, 40, 40), dst(kRoxeFormatRGB24, 20, 20);
  const Image before(dst);
  Quad quad = kSquare;
  PixelArray nowhere = {7, 20, 20, 60, nullptr};
  EXPECT_EQ(roxeAffineTransform(src, &nowhere, &quad, nullptr, {0, 0, 8, 8}), kRoxeOK);
  EXPECT_EQ(roxeAffineTransform(&nowhere, dst, &quad, nullptr, {0, 0, 8, 8}), kRoxeOK);
  EXPECT_EQ(dst, before);
  PixelArray empty = {7, 0, 20, 60, dst.bytes()};
  EXPECT_EQ(roxeAffineTransform(src, &empty, &quad, nullptr, {-5, 0, 8, 8}), kRoxeErrFailed);
  empty = {7, 20, -3, 60, dst.bytes()};
  EXPECT_EQ(roxeAffineTransform(src, &empty, &quad, nullptr, {0, -9, 8, 8}), kRoxeErrFailed);
  EXPECT_EQ(dst, before);
}

TEST(AffineTransform, SingularMappingIsNotDetected) {
  // All corners at one point: every pixel shows (x2, y1).
  const Image src(kRoxeFormatRGB24, 40, 40);
  Image dst(kRoxeFormatRGB24, 3, 3);
  const Quad together = {};
  Quad quad = {10, 11, 30, 12, 31, 30, 9, 29};
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, &together, {0, 0, 3, 3}), kRoxeOK);
  for (int c = 0; c < 3; ++c) EXPECT_EQ(dst.pixel(2, 1)[c], src.pixel(31, 12)[c]);
}

TEST(AffineTransform, WithoutMemoryNothingIsDrawn) {
  const Image src(kRoxeFormatRGB24, 40, 40);
  Image dst(kRoxeFormatRGB24, 20, 20);
  const Image before(dst);
  for (int64_t n = 1; n <= 3; ++n) {
    AllocationWatch watch(n);
    Quad quad = kSquare;
    EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, {0, 0, 8, 8}), kRoxeErrParam);
    EXPECT_EQ(watch.live_blocks(), 0);
  }
  EXPECT_EQ(dst, before);
}

TEST(AffineTransform, PeakOfMemoryIsThatOfTheEquations) {
  const Image src(kRoxeFormatRGB24, 40, 40);
  Image dst(kRoxeFormatRGB24, 20, 20);
  Quad quad = kSquare;
  AllocationWatch watch;
  EXPECT_EQ(roxeAffineTransform(src, dst, &quad, nullptr, {0, 0, 8, 8}), kRoxeOK);
  EXPECT_EQ(watch.peak_bytes(), 320 + 8 * sizeof(void*));
  EXPECT_EQ(watch.live_blocks(), 0);
}

}  // namespace
