#include "geometry/xrml.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "support/seams.h"

namespace {

using namespace roxe;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Floats are compared by their bits where the sign of zero or NaN matters.
uint32_t BitsOf(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

TEST(ClosestAngle, LevelAndPlumbLinesAndEqualPointsGiveZero) {
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 0, 10, 0), 0.0f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 0, 0, 10), 0.0f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(7, 7, 7, 7), 0.0f);
}

TEST(ClosestAngle, DiagonalCountsAsNearerToHorizontal) {
  // atan(-1) and atan(1) = 0.785398163..., the float next to it
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 0, 10, 10), -0.78539818525314331f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 10, 10, 0), 0.78539818525314331f);
}

TEST(ClosestAngle, NearlyHorizontalLine) {
  // atan(0.03) = 0.03 - 0.000009 + 0.00000000486 = 0.02999100486
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 0, 100, 3), -0.02999100486f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(100, 3, 0, 0), -0.02999100486f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 3, 100, 0), 0.02999100486f);
}

TEST(ClosestAngle, NearlyVerticalLine) {
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 0, 3, 100), 0.02999100486f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(3, 100, 0, 0), 0.02999100486f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(3, 0, 0, 100), -0.02999100486f);
}

TEST(ClosestAngle, QuotientIsRoundedBeforeTheArcTangent) {
  // atan(4/7) is nearest to 0x1.09cd84p-1, but 4/7 rounded to single lies higher.
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(0, 0, 7, 4), -0x1.09cd86p-1f);
}

TEST(ClosestAngle, DifferencesWrap) {
  // INT32_MAX - INT32_MIN wraps to -1, and 0 - 10 is -10: dx = 1, dy = 10, atan(0.1)
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(INT32_MAX, 0, INT32_MIN, 10), 0.09966865249f);
}

TEST(ClosestAngle, TheMagnitudeOfTheLowestDifferenceIsTheLargest) {
  // Nearer to horizontal; dx stays -2^31 when both are negated: atan(1 / -2^31)
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(INT32_MIN, 1, 0, 0), -0x1p-31f);
  // Nearer to vertical; dy stays: atan(-926044736 / -2^31) = atan(0.43122318)
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(926044742, INT32_MIN, 1, 0), 0x1.a0e6aap-2f);
  // Both are the lowest, or the other is as large once rounded: atan(-1)
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(INT32_MIN, INT32_MIN, 0, 0), -0.78539818525314331f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(INT32_MIN, INT32_MAX, 0, 0), -0.78539818525314331f);
  EXPECT_EQ(xrmlGetClosestAngleWithCoorAxis(INT32_MAX, INT32_MIN, 0, 0), 0.78539818525314331f);
}

TEST(IntersectOfLines, CrossingIsTruncated) {
  Point at = {-1, -1};
  EXPECT_EQ(xrmlGetIntersectOfLines(0, 0, 10, 10, 0, 10, 10, 0, &at), 1);
  EXPECT_EQ(at.x, 5);
  EXPECT_EQ(at.y, 5);
  // x + y = 3 and y = x meet at (1.5, 1.5); mirrored at (-1.5, -1.5)
  EXPECT_EQ(xrmlGetIntersectOfLines(0, 0, 2, 2, 0, 3, 3, 0, &at), 1);
  EXPECT_EQ(at.x, 1);
  EXPECT_EQ(at.y, 1);
  EXPECT_EQ(xrmlGetIntersectOfLines(0, 0, -2, -2, 0, -3, -3, 0, &at), 1);
  EXPECT_EQ(at.x, -1);
  EXPECT_EQ(at.y, -1);
}

TEST(IntersectOfLines, MeetBeyondTheirEnds) {
  Point at = {0, 0};
  EXPECT_EQ(xrmlGetIntersectOfLines(0, 0, 1, 0, 100, 50, 100, 40, &at), 1);
  EXPECT_EQ(at.x, 100);
  EXPECT_EQ(at.y, 0);
}

TEST(IntersectOfLines, ParallelLinesWriteNothing) {
  Point at = {77, 78};
  EXPECT_EQ(xrmlGetIntersectOfLines(0, 0, 10, 5, 0, 1, 10, 6, &at), 0);
  EXPECT_EQ(xrmlGetIntersectOfLines(4, 4, 4, 4, 0, 1, 10, 6, &at), 0);
  EXPECT_EQ(at.x, 77);
  EXPECT_EQ(at.y, 78);
}

TEST(IntersectOfLines, NeedsSomewhereToWrite) {
  EXPECT_EQ(xrmlGetIntersectOfLines(0, 0, 10, 10, 0, 10, 10, 0, nullptr), 0);
}

TEST(IntersectOfLines, FarMeetingPointSaturates) {
  Point at = {0, 0};
  // Rises by 1 in 30000 and meets y = 2000000 at x = 6e10.
  EXPECT_EQ(xrmlGetIntersectOfLines(0, 0, 30000, 1, 0, 2000000, 1, 2000000, &at), 1);
  EXPECT_EQ(at.x, INT32_MAX);
  EXPECT_EQ(at.y, 2000000);
}

TEST(Length, InThePlane) {
  EXPECT_EQ(xrmlGetLength2D(1, 2, 4, 6), 5.0f);
  EXPECT_EQ(xrmlGetLength2D(3, 3, 3, 3), 0.0f);
  EXPECT_EQ(xrmlGetLength2D(0, 0, 1, 1), 1.41421354f);
  EXPECT_EQ(xrmlGetLength2D(INT32_MAX, 0, INT32_MIN, 0), 1.0f);  // the difference wraps to 1
}

TEST(Length, InSpace) {
  EXPECT_EQ(xrmlGetLength3D({1, 1, 1}, {3, 4, 7}), 7.0f);  // 4 + 9 + 36
  EXPECT_EQ(xrmlGetLength3D({1, 2, 3}, {1, 2, 3}), 0.0f);
}

TEST(Length, FromAPlane) {
  EXPECT_EQ(xrmlGetLengthPoint2Place({0, 0, 1}, {5, 0, 1}, {0, 7, 1}, {9, -9, 4}), 3.0f);
  EXPECT_EQ(xrmlGetLengthPoint2Place({0, 0, 1}, {5, 0, 1}, {0, 7, 1}, {9, -9, -4}), 5.0f);
  // normal (3, 4, 0) through the origin
  EXPECT_EQ(xrmlGetLengthPoint2Place({0, 0, 0}, {4, -3, 0}, {0, 0, 1}, {3, 4, 9}), 5.0f);
}

TEST(Length, FromThreePointsOnOneLineIsZero) {
  EXPECT_EQ(xrmlGetLengthPoint2Place({0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {5, 0, 0}), 0.0f);
  // |normal|^2 = 0.003^4 = 8.1e-11 is nearly zero; 0.1^4 = 1e-4 is not
  EXPECT_EQ(xrmlGetLengthPoint2Place({0, 0, 0}, {0.003f, 0, 0}, {0, 0.003f, 0}, {0, 0, 5}), 0.0f);
  EXPECT_NEAR(xrmlGetLengthPoint2Place({0, 0, 0}, {0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 5}), 5.0f,
              1e-5f);
}

TEST(Length, FromAPlaneThatIsNotFiniteIsNan) {
  EXPECT_TRUE(std::isnan(
      xrmlGetLengthPoint2Place({0, 0, 0}, {kInfinity, 0, 0}, {0, kInfinity, 0}, {0, 0, 5})));
}

int32_t Convex(const Quad& quad) { return xrmlIsConvexQuadrilateral(&quad); }

TEST(ConvexQuadrilateral, EitherSense) {
  EXPECT_EQ(Convex({0, 0, 10, 0, 10, 10, 0, 10}), 1);
  EXPECT_EQ(Convex({0, 0, 0, 10, 10, 10, 10, 0}), 1);
  EXPECT_EQ(Convex({50, 0, 100, 50, 50, 100, 0, 50}), 1);
}

TEST(ConvexQuadrilateral, CrossedDentedAndDegenerateOnesAreNot) {
  EXPECT_EQ(Convex({0, 0, 10, 10, 10, 0, 0, 10}), 0);  // a bow tie
  EXPECT_EQ(Convex({0, 0, 10, 0, 3, 3, 0, 10}), 0);    // a dent at (3, 3)
  EXPECT_EQ(Convex({3, 3, 0, 10, 0, 0, 10, 0}), 0);    // the same, begun at the dent
  EXPECT_EQ(Convex({0, 0, 10, 0, 10, 10, 0, 0}), 0);   // a repeated corner
  EXPECT_EQ(Convex({0, 0, 5, 0, 10, 0, 5, 10}), 0);    // three on one line
}

TEST(ConvexQuadrilateral, ProductsWrap) {
  // A square of side 65536: every product is 2^32, which wraps to 0.
  EXPECT_EQ(Convex({0, 0, 65536, 0, 65536, 65536, 0, 65536}), 0);
  // Side 50000: 2500000000 wraps to -1794967296 on both sides of a diagonal, which still differ.
  EXPECT_EQ(Convex({0, 0, 50000, 0, 50000, 50000, 0, 50000}), 1);
}

TEST(MatrixInverse, IdentityAndZero) {
  const float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  float out[9] = {};
  EXPECT_EQ(xrmlMatrixInverse(out, identity, 3), 1);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(out[i], identity[i]);
  const float zero[9] = {};
  EXPECT_EQ(xrmlMatrixInverse(out, zero, 3), 0);
}

TEST(MatrixInverse, OfFewerThanNoRows) {
  const float m[1] = {1};
  float out[1] = {9};
  EXPECT_EQ(xrmlMatrixInverse(out, m, -1), 0);
  EXPECT_EQ(out[0], 9);
}

TEST(MatrixInverse, WithExchangesInPlace) {
  // rows (0 2 0), (0 0 4), (1 0 0): the inverse has 1 at (0, 2), 1/2 at (1, 0), 1/4 at (2, 1)
  float m[9] = {0, 2, 0, 0, 0, 4, 1, 0, 0};
  EXPECT_EQ(xrmlMatrixInverse(m, m, 3), 1);
  const float expected[9] = {0, 0, 1, 0.5f, 0, 0, 0, 0.25f, 0};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(m[i], expected[i]) << i;
}

TEST(MatrixInverse, OfTwoRows) {
  // determinant 4 * 1 - 2 * 1 = 2; inverse (1 -2; -1 4) / 2, exact in halves
  const float m[4] = {4, 2, 1, 1};
  float out[4] = {};
  EXPECT_EQ(xrmlMatrixInverse(out, m, 2), 1);
  const float expected[4] = {0.5f, -1, -0.5f, 2};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], expected[i]) << i;
}

TEST(MatrixInverse, SingularLeavesAPartlyReducedCopy) {
  // After the pivot 4 at (1, 1): rows become (0, -0.5) and (0.5, 0.25), then the rest is zero.
  const float m[4] = {1, 2, 2, 4};
  float out[4] = {9, 9, 9, 9};
  EXPECT_EQ(xrmlMatrixInverse(out, m, 2), 0);
  const float expected[4] = {0.25f, 0.5f, -0.5f, 0};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], expected[i]) << i;
}

TEST(MatrixInverse, TinyPivotsCountAsSingular) {
  const float tiny = 1e-17f;  // 1 + 1e-17 is 1 in double precision
  float out = 0;
  EXPECT_EQ(xrmlMatrixInverse(&out, &tiny, 1), 0);
  const float small = 0x1p-40f;
  EXPECT_EQ(xrmlMatrixInverse(&out, &small, 1), 1);
  EXPECT_EQ(out, 0x1p40f);
}

TEST(MatrixInverse, NoMemoryLeavesTheCopy) {
  const float m[4] = {4, 2, 1, 1};
  float out[4] = {};
  AllocationWatch watch(1);
  EXPECT_EQ(xrmlMatrixInverse(out, m, 2), 0);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], m[i]);
  EXPECT_EQ(watch.live_blocks(), 0);
}

TEST(MatrixInverse, ReleasesItsBlock) {
  AllocationWatch watch;
  const float zero[4] = {}, m[4] = {4, 2, 1, 1};
  float out[4];
  EXPECT_EQ(xrmlMatrixInverse(out, zero, 2), 0);
  EXPECT_EQ(xrmlMatrixInverse(out, m, 2), 1);
  EXPECT_EQ(watch.live_blocks(), 0);
  EXPECT_EQ(watch.peak_bytes(), 16u);  // two index arrays of two
}

TEST(MatrixInverse, NotANumberIsNeverAPivot) {
  const float m[1] = {std::numeric_limits<float>::quiet_NaN()};
  float out[1];
  EXPECT_EQ(xrmlMatrixInverse(out, m, 1), 0);
}

TEST(MatrixMultiply, Product) {
  const float a[4] = {1, 2, 3, 4}, b[4] = {5, 6, 7, 8};
  float c[4] = {};
  EXPECT_EQ(xrmlMatrixMultiply(a, b, c, 2, 2), 1);
  const float expected[4] = {19, 22, 43, 50};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(c[i], expected[i]);
}

TEST(MatrixMultiply, RightOperandIsSteppedByRows) {
  // rows 1, n 2: c[j] = a[0] b[j] + a[1] b[1 + j]
  const float a[2] = {1, 10}, b[3] = {1, 2, 3};
  float c[2] = {};
  EXPECT_EQ(xrmlMatrixMultiply(a, b, c, 1, 2), 1);
  EXPECT_EQ(c[0], 21.0f);
  EXPECT_EQ(c[1], 32.0f);
}

TEST(MatrixMultiply, SumsAreFused) {
  // (1 + 2^-12)^2 - (1 + 2^-11) = 2^-24, which a rounded product would lose. The first step gives
  // -(1 + 2^-11) exactly, the second adds the product to it with one rounding.
  const float e = 0x1p-12f;
  const float a[4] = {-(1 + 2 * e), 1 + e, 0, 0};
  const float b[4] = {1, 0, 1 + e, 0};
  float c[4] = {9, 9, 9, 9};
  EXPECT_EQ(xrmlMatrixMultiply(a, b, c, 2, 2), 1);
  EXPECT_EQ(c[0], 0x1p-24f);
  EXPECT_EQ(BitsOf(c[1]), 0u);
}

TEST(MatrixMultiply, BadArguments) {
  const float a[1] = {1};
  float c[1] = {7};
  EXPECT_EQ(xrmlMatrixMultiply(nullptr, a, c, 1, 1), 0);
  EXPECT_EQ(xrmlMatrixMultiply(a, nullptr, c, 1, 1), 0);
  EXPECT_EQ(xrmlMatrixMultiply(a, a, nullptr, 1, 1), 0);
  EXPECT_EQ(xrmlMatrixMultiply(a, a, c, 0, 1), 0);
  EXPECT_EQ(xrmlMatrixMultiply(a, a, c, 1, 0), 0);
  EXPECT_EQ(c[0], 7.0f);
}

}  // namespace
