// The geometry family against the plain reference: every byte and every bit, on random and hostile
// input. The reference itself is first held against literals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "reference/geometry.h"
#include "support/image.h"

namespace {

std::vector<int32_t> Coordinates(const Quad& q) {
  return {q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3};
}

// ------------------------------------------------------------------- the reference by literals

TEST(ReferenceGeometry, AngleIsThatOfTheNearerAxis) {
  EXPECT_EQ(reference::xrmlGetClosestAngleWithCoorAxis(0, 0, 10, 0), 0.0f);
  EXPECT_EQ(reference::xrmlGetClosestAngleWithCoorAxis(3, 5, 3, -7), 0.0f);
  // A tie takes the horizontal branch: atan(-1).
  EXPECT_EQ(reference::xrmlGetClosestAngleWithCoorAxis(0, 0, 10, 10), -0.785398163f);
  // atan(3 / 100) = 0.029991005, and the line runs down to the right.
  EXPECT_NEAR(reference::xrmlGetClosestAngleWithCoorAxis(0, 0, 100, 3), -0.029991005f, 1e-8f);
  EXPECT_NEAR(reference::xrmlGetClosestAngleWithCoorAxis(100, 3, 0, 0), -0.029991005f, 1e-8f);
  // Nearly upright, running down to the right: dx / dy is positive.
  EXPECT_NEAR(reference::xrmlGetClosestAngleWithCoorAxis(0, 0, 3, 100), 0.029991005f, 1e-8f);
}

TEST(ReferenceGeometry, LinesMeetInWholePixels) {
  reference::Point p = {-7, -7};
  EXPECT_EQ(reference::xrmlGetIntersectOfLines(0, 0, 10, 10, 0, 5, 10, 5, &p), 1);
  EXPECT_EQ(p.x, 5);
  EXPECT_EQ(p.y, 5);
  // y = 2x and y = -5 meet at -2.5, which is truncated toward zero.
  EXPECT_EQ(reference::xrmlGetIntersectOfLines(0, 0, -1, -2, 0, -5, 9, -5, &p), 1);
  EXPECT_EQ(p.x, -2);
  EXPECT_EQ(p.y, -5);
  p = {-7, -7};
  EXPECT_EQ(reference::xrmlGetIntersectOfLines(0, 0, 10, 10, 0, 5, 10, 15, &p), 0);
  EXPECT_EQ(p.x, -7);
}

TEST(ReferenceGeometry, ConvexityNeedsBoundaryOrder) {
  const Quad square = {0, 0, 10, 0, 10, 10, 0, 10};
  const Quad bow_tie = {0, 0, 10, 10, 10, 0, 0, 10};
  const Quad repeated = {0, 0, 10, 0, 10, 0, 0, 10};
  const Quad dart = {0, 0, 10, 0, 1, 1, 0, 10};
  EXPECT_EQ(reference::xrmlIsConvexQuadrilateral(&square), 1);
  EXPECT_EQ(reference::xrmlIsConvexQuadrilateral(&bow_tie), 0);
  EXPECT_EQ(reference::xrmlIsConvexQuadrilateral(&repeated), 0);
  EXPECT_EQ(reference::xrmlIsConvexQuadrilateral(&dart), 0);
}

TEST(ReferenceGeometry, InverseTimesMatrixIsIdentity) {
  const float m[9] = {0, 2, 0, 4, 0, 0, 0, 0, -8};
  float inverse[9];
  ASSERT_EQ(reference::xrmlMatrixInverse(inverse, m, 3), 1);
  EXPECT_EQ(std::vector<float>(inverse, inverse + 9),
            (std::vector<float>{0, 0.25f, 0, 0.5f, 0, 0, 0, 0, -0.125f}));
  const float a[4] = {1, 2, 3, 4};  // inverse: -2, 1, 1.5, -0.5
  float b[4];
  ASSERT_EQ(reference::xrmlMatrixInverse(b, a, 2), 1);
  EXPECT_EQ(std::vector<float>(b, b + 4), (std::vector<float>{-2, 1, 1.5f, -0.5f}));
  const float zero[9] = {};
  EXPECT_EQ(reference::xrmlMatrixInverse(inverse, zero, 3), 0);
}

TEST(ReferenceGeometry, LevelRotationCopiesTheInterior) {
  std::mt19937 random(1);
  Image src(kRoxeFormatRGB24, 5, 4);
  src.randomise(random);
  Image dst(kRoxeFormatRGB24, 5, 4);
  dst.fill(9);
  EXPECT_EQ(reference::roxeRotateImage(src, 2, 2, 0.0f, dst, 2, 2), 0);
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 5; ++x) {
      const bool inside = x >= 1 && x <= 3 && y >= 1 && y <= 2;
      for (int c = 0; c < 3; ++c)
        EXPECT_EQ(dst.pixel(x, y)[c], inside ? src.pixel(x, y)[c] : 9) << x << ',' << y;
    }
  }
}

TEST(ReferenceGeometry, NegativeStartOfTheMapBorrowsAPixel) {
  // m2 = -0.25 is column -1 and 192 of 256: column 2 of the destination lies at 1.75.
  Image src(kRoxeFormatRGB24, 4, 4);
  src.fill(0);
  for (int32_t y = 0; y < 4; ++y) {
    src.pixel(1, y)[0] = 40;
    src.pixel(2, y)[0] = 80;
    src.pixel(3, y)[0] = 200;
  }
  Image dst(kRoxeFormatRGB24, 4, 2);
  dst.fill(9);
  const float map[6] = {1, 0, -0.25f, 0, 1, 1};
  reference::RotateImage_RGB24(src.record, dst.record, map);
  EXPECT_EQ(*dst.pixel(1, 0), 9);    // at 0.75
  EXPECT_EQ(*dst.pixel(2, 0), 70);   // 40 / 4 + 80 * 3 / 4
  EXPECT_EQ(*dst.pixel(3, 0), 170);  // 80 / 4 + 200 * 3 / 4
}

TEST(ReferenceGeometry, SquareIsSortedFromAnyStart) {
  const int32_t corners[4][2] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  for (int start = 0; start < 4; ++start) {
    for (const int step : {1, 3}) {
      const auto corner = [&](int i) { return corners[(start + i * step) % 4]; };
      Quad quad = {corner(0)[0], corner(0)[1], corner(1)[0], corner(1)[1],
                   corner(2)[0], corner(2)[1], corner(3)[0], corner(3)[1]};
      reference::SortToAntiClockwise(&quad);
      EXPECT_EQ(Coordinates(quad), (std::vector<int32_t>{0, 0, 10, 0, 10, 10, 0, 10}));
    }
  }
}

TEST(ReferenceGeometry, DiamondsTurnByTheOrderOfTheLevelDiagonal) {
  Quad quad = {50, 0, 100, 50, 50, 100, 0, 50};
  reference::SortToAntiClockwise(&quad);
  EXPECT_EQ(Coordinates(quad), (std::vector<int32_t>{0, 50, 50, 0, 100, 50, 50, 100}));
  quad = {50, 0, 0, 50, 50, 100, 100, 50};
  reference::SortToAntiClockwise(&quad);
  EXPECT_EQ(Coordinates(quad), (std::vector<int32_t>{50, 0, 100, 50, 50, 100, 0, 50}));
}

TEST(ReferenceGeometry, SortingTwiceMayTurnOnceMore) {
  Quad quad = {125, 285, 129, 167, 161, 129, 251, 167};
  reference::SortToAntiClockwise(&quad);
  EXPECT_EQ(Coordinates(quad), (std::vector<int32_t>{161, 129, 251, 167, 125, 285, 129, 167}));
  reference::SortToAntiClockwise(&quad);
  EXPECT_EQ(Coordinates(quad), (std::vector<int32_t>{129, 167, 161, 129, 251, 167, 125, 285}));
}

TEST(ReferenceGeometry, UnitSquareOntoItselfIsTheIdentity) {
  const Quad unit = {0, 0, 1, 0, 1, 1, 0, 1};
  EXPECT_EQ(reference::GetAffineParameters(unit, unit),
            (reference::AffineParameters{1, 0, 0, 0, 1, 0, 0, 0}));
}

TEST(ReferenceGeometry, ProductsOfTheSystemWrap) {
  // 50000 * 50000 = 2500000000 = 2^32 - 1794967296, so its negative is 1794967296.
  const Quad far = {50000, 0, 0, 0, 0, 0, 0, 0};
  const reference::System system = reference::CreateAffineMatrix(far, far);
  EXPECT_EQ(system[0][6], 1794967296.0f);
}

TEST(ReferenceGeometry, ShiftedWindowIsCopied) {
  // The square (1, 1) ... (4, 3) of the source into a rectangle of its size: an exact copy.
  std::mt19937 random(2);
  Image src(kRoxeFormatRGB24, 6, 5);
  src.randomise(random);
  Image dst(kRoxeFormatRGB24, 3, 2);
  Quad quad = {4, 1, 4, 3, 1, 3, 1, 1};
  EXPECT_EQ(reference::roxeAffineTransform(src, dst, &quad, nullptr, {0, 0, 3, 2}), 0);
  for (int32_t y = 0; y < 2; ++y)
    for (int32_t x = 0; x < 3; ++x)
      for (int c = 0; c < 3; ++c) EXPECT_EQ(dst.pixel(x, y)[c], src.pixel(x + 1, y + 1)[c]);
}

TEST(ReferenceGeometry, PositionsBeforeTheFirstColumnExtrapolateAndWrap) {
  // Position -0.5 between 10 and 250: 10 - 120 = -110, whose low byte is 146.
  Image src = Bgr({{{10, 0, 0}, {250, 0, 0}}, {{10, 0, 0}, {250, 0, 0}}});
  Image dst = Bgr({{{9, 9, 9}}});
  const float p[8] = {1, 0, -0.5f, 0, 1, 0, 0, 0};
  EXPECT_EQ(reference::ApplyParameters(src.record, dst.record, p, 0, 0, 0, 0, 1, 1), 1);
  EXPECT_EQ(*dst.pixel(0, 0), 146);
}

TEST(ReferenceGeometry, NaturalSizeIsTheMeanOfOppositeEdges) {
  int32_t width = 0, height = 0;
  Quad quad = {0, 0, 101, 0, 100, 50, 0, 50};
  EXPECT_EQ(reference::roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, &width, &height),
            1);
  EXPECT_EQ(width, 100);
  EXPECT_EQ(height, 50);
  // The sum of two edges is rounded to single precision before it is truncated.
  quad = {93, 83, -21, 97, -50, 17, 37, 22};
  EXPECT_EQ(reference::roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, &width, &height),
            1);
  EXPECT_EQ(width, 101);
  EXPECT_EQ(height, 83);
}

TEST(ReferenceGeometry, ProductsOfTheAspectRatioWrap) {
  // 100 * 30000000 = 3000000000 is negative in 32 bits.
  Image src(kRoxeFormatRGB24, 120, 120), dst(kRoxeFormatRGB24, 8, 8);
  Quad quad = {0, 0, 100, 0, 100, 100, 0, 100};
  EXPECT_EQ(reference::roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0,
                                                           {0, 0, 30000000, 30000000}),
            0);
  EXPECT_EQ(reference::roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, {0, 0, 8, 8}), 2);
}

TEST(ReferenceGeometry, ParallelogramHasNoVanishingPoint) {
  Quad quad = {0, 0, 10, 2, 14, 22, 4, 20};
  reference::Point3D points[4] = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
  float camera[3];
  EXPECT_EQ(reference::GetDstPoints(&quad, 7, 8, points, camera), 0);
  EXPECT_EQ(points[0].x, 1.0f);
  EXPECT_EQ(std::vector<float>(camera, camera + 3), (std::vector<float>{7, 8, 0}));
}

TEST(ReferenceGeometry, OneVanishingPointComesBackInTheGivenOrder) {
  // p0p1 and p2p3 are level; p0p3 and p1p2 meet at (20, -20). The foot of the perpendicular from
  // there onto the lower edge (40, 20) - (0, 20) is (20, 20). Relabelled, p0 = (30, 0) and
  // p1 = (40, 20), so s = (30 - 40) / (30 - 20) = -1.
  Quad quad = {10, 0, 30, 0, 40, 20, 0, 20};
  reference::Point3D points[4];
  float camera[3];
  EXPECT_EQ(reference::GetDstPoints(&quad, 7, 8, points, camera), 1);
  EXPECT_EQ(Coordinates(quad), (std::vector<int32_t>{30, 0, 40, 20, 0, 20, 10, 0}));
  EXPECT_EQ(std::vector<float>(camera, camera + 3), (std::vector<float>{20, 20, 100}));
  const float expected[4][3] = {
      {0, -20, -100},  // 10 - (20 - 10), 0 - (20 - 0)
      {40, -20, -100},
      {40, 20, 0},
      {0, 20, 0},
  };
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(points[k].x, expected[k][0]) << k;
    EXPECT_EQ(points[k].y, expected[k][1]) << k;
    EXPECT_EQ(points[k].z, expected[k][2]) << k;
  }
}

}  // namespace
