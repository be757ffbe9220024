#include <gtest/gtest.h>

#include <utility>

#include "roxe.h"
#include "support/image.h"
#include "support/seams.h"

namespace {

using Size = std::pair<int32_t, int32_t>;

Size SizeOf(Quad quad) {
  Size size = {-1, -1};
  EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(&quad, 5, 6, 7, &size.first, &size.second),
            1);
  return size;
}

TEST(PerspectiveSize, IsTheMeanOfOppositeEdges) {
  EXPECT_EQ(SizeOf({0, 0, 100, 0, 100, 50, 0, 50}), Size(100, 50));
  // Edges 101 and 100, 50 and 50.01: 201 and 100 are halved and cut.
  EXPECT_EQ(SizeOf({0, 0, 101, 0, 100, 50, 0, 50}), Size(100, 50));
  EXPECT_EQ(SizeOf({100, 50, 100, 0, 0, 0, 0, 50}), Size(100, 50));
}

TEST(PerspectiveSize, SumIsRoundedToSingleBeforeItIsCut) {
  EXPECT_EQ(SizeOf({93, 83, -21, 97, -50, 17, 37, 22}), Size(101, 83));
}

TEST(PerspectiveSize, CornersComeBackSorted) {
  Quad quad = {100, 50, 0, 50, 0, 0, 100, 0};
  EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, nullptr, nullptr), 1);
  EXPECT_EQ(quad.x0, 0);
  EXPECT_EQ(quad.y0, 0);
  EXPECT_EQ(quad.x1, 100);
  EXPECT_EQ(quad.y1, 0);
  EXPECT_EQ(quad.x2, 100);
  EXPECT_EQ(quad.y2, 50);
  EXPECT_EQ(quad.x3, 0);
  EXPECT_EQ(quad.y3, 50);
}

TEST(PerspectiveSize, EitherSizeMayBeSkipped) {
  Quad quad = {0, 0, 100, 0, 100, 50, 0, 50};
  int32_t width = -1, height = -1;
  EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, &width, nullptr), 1);
  EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, nullptr, &height), 1);
  EXPECT_EQ(width, 100);
  EXPECT_EQ(height, 50);
}

const Quad kRejected[] = {
    {0, 0, 100, 0, 0, 0, 0, 50},       // corners 0 and 2 coincide
    {0, 0, 100, 0, 100, 50, 100, 50},  // corners 2 and 3 coincide
    {0, 0, 50, 0, 100, 0, 0, 50},      // three on a horizontal line
    {0, 0, 100, 0, 0, 25, 0, 50},      // three on a vertical line
    {0, 0, 10, 10, 100, 0, 30, 30},    // three on a diagonal
    {0, 0, 100, 50, 100, 0, 0, 50},    // crossed
    {0, 0, 100, 0, 20, 20, 0, 100},    // dented
};

TEST(PerspectiveSize, RejectsDegenerateCornersAndWritesNothing) {
  for (const Quad& rejected : kRejected) {
    Quad quad = rejected;
    int32_t width = -1, height = -2;
    EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 1, &width, &height), 0);
    EXPECT_EQ(width, -1);
    EXPECT_EQ(height, -2);
    EXPECT_EQ(quad.x1, rejected.x1);
    EXPECT_EQ(quad.y1, rejected.y1);
  }
  EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(nullptr, 0, 0, 1, nullptr, nullptr), 0);
}

TEST(PerspectiveSize, CollinearityWraps) {
  // The corners form a square of side 65536; the products 2^32 and 0 are equal modulo 2^32.
  Quad quad = {0, 0, 65536, 0, 65536, 65536, 0, 65536};
  EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 1, nullptr, nullptr), 0);
}

// Expects that drawing quad into rect covers exactly drawn.
void ExpectDrawn(Quad quad, PixelRect rect, PixelRect drawn, int32_t src_side = 200) {
  Image src(kRoxeFormatRGB24, src_side, src_side), dst(kRoxeFormatRGB24, 330, 340);
  src.fill(200);
  dst.fill(9);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 1, 2, rect), 2);
  for (int32_t y = 0; y < 340; ++y) {
    for (int32_t x = 0; x < 330; ++x) {
      const bool inside = x >= drawn.left && x < drawn.right && y >= drawn.top && y < drawn.bottom;
      ASSERT_EQ(*dst.pixel(x, y), inside ? 200 : 9) << x << ' ' << y;
    }
  }
}

TEST(Perspective, RectangleIsFittedFromItsTopLeftCorner) {
  // 100 x 50: the width is kept, 50 * 300 / 100 rows are drawn.
  ExpectDrawn({20, 30, 120, 30, 120, 80, 20, 80}, {10, 20, 310, 320}, {10, 20, 310, 170});
  // 50 x 100: the height is kept.
  ExpectDrawn({20, 30, 70, 30, 70, 130, 20, 130}, {10, 20, 310, 320}, {10, 20, 160, 320});
  // 100 x 100 is a tie.
  ExpectDrawn({20, 30, 120, 30, 120, 130, 20, 130}, {10, 20, 310, 320}, {10, 20, 310, 320});
}

TEST(Perspective, DegenerateCornersAreAParameterError) {
  Image src(kRoxeFormatRGB24, 200, 200), dst(kRoxeFormatRGB24, 30, 30);
  const Image before(dst);
  for (Quad quad : kRejected)
    EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 30, 30}),
              kRoxeErrParam);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, nullptr, 0, 0, {0, 0, 30, 30}),
            kRoxeErrParam);
  EXPECT_EQ(dst, before);
}

TEST(Perspective, AnyOtherFailureIsZero) {
  Image src(kRoxeFormatRGB24, 200, 200), dst(kRoxeFormatRGB24, 30, 30);
  const Image before(dst);
  const Quad given = {20, 30, 120, 30, 120, 80, 20, 80};
  Quad quad = given;
  EXPECT_EQ(roxePerspectiveDistortionCorrection(nullptr, dst, &quad, 0, 0, {0, 0, 30, 30}), 0);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, nullptr, &quad, 0, 0, {0, 0, 30, 30}), 0);
  PixelArray bad = dst.record;
  bad.rowBytes = 89;
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, &bad, &quad, 0, 0, {0, 0, 30, 30}), 0);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 0, 30}), 0);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {30, 0, 60, 30}), 0);
  AllocationWatch watch(1);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 30, 30}), 0);
  EXPECT_EQ(dst, before);
}

TEST(Perspective, ProductsOfTheFitWrap) {
  // 100 * 30000000 wraps to -1294967296 on both sides; the fitted rectangle ends left of its start.
  Image src(kRoxeFormatRGB24, 200, 200), dst(kRoxeFormatRGB24, 30, 30);
  Quad quad = {20, 30, 120, 30, 120, 130, 20, 130};
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 30000000, 30000000}),
            0);
  // 100 * 42949703 wraps to 3004 on both sides: 3004 / 100 columns and all rows are kept. The last
  // column shows the right end of the corners, 20 + 29 * 100 / 30, and not their left one.
  for (int32_t y = 0; y < 200; ++y)
    for (int32_t x = 0; x < 200; ++x) *src.pixel(x, y) = static_cast<uint8_t>(x);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 42949703, 42949703}),
            2);
  EXPECT_NEAR(*dst.pixel(29, 5), 116, 4);
}

TEST(Perspective, CornersAreSortedTwice) {
  Image src(kRoxeFormatRGB24, 300, 300), dst(kRoxeFormatRGB24, 30, 30);
  Quad quad = {125, 285, 129, 167, 161, 129, 251, 167};
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 30, 30}), 2);
  EXPECT_EQ(quad.x0, 129);
  EXPECT_EQ(quad.y0, 167);
  EXPECT_EQ(quad.x1, 161);
  EXPECT_EQ(quad.y1, 129);
  EXPECT_EQ(quad.x2, 251);
  EXPECT_EQ(quad.y2, 167);
  EXPECT_EQ(quad.x3, 125);
  EXPECT_EQ(quad.y3, 285);
}

TEST(Perspective, SizeIsThatOfTheCornersSortedOnce) {
  // Sorted once they are (161, 129), (251, 167), (125, 285), (129, 167), of edges 97.7, 172.6,
  // 118.1 and 49.7: 107 x 111, and 30 * 107 / 111 = 28.9. Sorted twice they would be 111 x 107.
  ExpectDrawn({125, 285, 129, 167, 161, 129, 251, 167}, {0, 0, 30, 30}, {0, 0, 28, 30}, 300);
}

TEST(Perspective, FittedSidesAreCut) {
  // 50 * 299 / 100 = 149.5 rows.
  ExpectDrawn({20, 30, 120, 30, 120, 80, 20, 80}, {10, 20, 309, 320}, {10, 20, 309, 169});
}

TEST(Perspective, RectangleMayBeginBeforeTheDestination) {
  // 50 * 301 / 100 = 150 rows from row -50 on.
  ExpectDrawn({20, 30, 120, 30, 120, 80, 20, 80}, {-100, -50, 201, 251}, {0, 0, 201, 100});
}

TEST(Perspective, NothingFitsANegativeRectangle) {
  Image src(kRoxeFormatRGB24, 200, 200), dst(kRoxeFormatRGB24, 30, 30);
  const Image before(dst);
  const PixelRect rects[] = {{20, 0, 10, 30}, {0, 20, 30, 10}, {20, 20, 10, 10}, {20, 20, 19, 30}};
  for (const PixelRect& rect : rects) {
    Quad quad = {20, 30, 120, 30, 120, 80, 20, 80};
    EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, rect), 0);
  }
  EXPECT_EQ(dst, before);
}

TEST(Perspective, PeakOfMemoryIsThatOfTheTransform) {
  Image src(kRoxeFormatRGB24, 200, 200), dst(kRoxeFormatRGB24, 30, 30);
  Quad quad = {20, 30, 120, 30, 120, 80, 20, 80};
  AllocationWatch watch;
  EXPECT_EQ(roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 1, nullptr, nullptr), 1);
  EXPECT_EQ(watch.allocations(), 0);
  EXPECT_EQ(roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 30, 30}), 2);
  EXPECT_EQ(watch.peak_bytes(), 320 + 8 * sizeof(void*));
  EXPECT_EQ(watch.live_blocks(), 0);
}

}  // namespace
