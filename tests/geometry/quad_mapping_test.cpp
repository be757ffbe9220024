#include "geometry/quad_mapping.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "support/seams.h"

namespace {

using namespace roxe;

std::vector<int32_t> Corners(const Quad& q) {
  return {q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3};
}

std::vector<int32_t> Sorted(Quad quad) {
  SortToAntiClockwise(&quad);
  return Corners(quad);
}

TEST(SortCorners, SquareFromAnyCornerInEitherSense) {
  const std::vector<int32_t> expected = {0, 0, 10, 0, 10, 10, 0, 10};
  const Point p[4] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  for (size_t first = 0; first < 4; ++first) {
    for (const size_t step : {1u, 3u}) {
      const Point a = p[first], b = p[(first + step) % 4], c = p[(first + 2) % 4],
                  d = p[(first + 3 * step) % 4];
      EXPECT_EQ(Sorted({a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y}), expected) << first << ' ' << step;
    }
  }
}

TEST(SortCorners, DiamondDependsOnTheLevelDiagonalsFirstEnd) {
  EXPECT_EQ(Sorted({50, 0, 100, 50, 50, 100, 0, 50}),
            (std::vector<int32_t>{0, 50, 50, 0, 100, 50, 50, 100}));
  EXPECT_EQ(Sorted({50, 0, 0, 50, 50, 100, 100, 50}),
            (std::vector<int32_t>{50, 0, 100, 50, 50, 100, 0, 50}));
}

TEST(SortCorners, TwiceIsNotAlwaysOnce) {
  const std::vector<int32_t> once = {161, 129, 251, 167, 125, 285, 129, 167};
  const std::vector<int32_t> twice = {129, 167, 161, 129, 251, 167, 125, 285};
  EXPECT_EQ(Sorted({125, 285, 129, 167, 161, 129, 251, 167}), once);
  EXPECT_EQ(Sorted({161, 129, 251, 167, 125, 285, 129, 167}), twice);
}

TEST(SortCorners, SlopeOf45DegreesDoesNotTurn) {
  // A long thin quadrilateral along the diagonal: both upper corners lie to the left of their
  // partners, and the edge between them, (0, 10) to (10, 0), is exactly 45 degrees steep.
  EXPECT_EQ(Sorted({0, 10, 10, 0, 110, 100, 100, 110}),
            (std::vector<int32_t>{0, 10, 10, 0, 110, 100, 100, 110}));
  // One pixel steeper: cosines are negative, so the labels turn forwards.
  EXPECT_EQ(Sorted({0, 11, 10, 0, 110, 100, 100, 111}),
            (std::vector<int32_t>{10, 0, 110, 100, 100, 111, 0, 11}));
}

TEST(SortCorners, TheMagnitudeOfTheLowestDifferenceIsTheLargest) {
  // Upright diagonals. The upper corners lie 2^31 apart along x and 1 along y: not steep.
  constexpr int32_t kFar = 1 << 30;
  EXPECT_EQ(Sorted({-kFar, 0, kFar, 1, -kFar, 100, kFar, 100}),
            (std::vector<int32_t>{-kFar, 0, kFar, 1, -kFar, 100, kFar, 100}));
  // 2^31 apart along y and 1 along x: steep, the last corner comes first.
  EXPECT_EQ(Sorted({0, -kFar, 1, kFar, 0, 0, 1, kFar + 100}),
            (std::vector<int32_t>{1, kFar + 100, 0, -kFar, 1, kFar, 0, 0}));
}

TEST(SortCorners, CoincidentDiagonalEndsAreNotANumberAndStay) {
  // Corners 0 and 2 coincide: corner 2 counts as upper; nothing compares as greater.
  EXPECT_EQ(Sorted({5, 5, 0, 0, 5, 5, 10, 10}), (std::vector<int32_t>{0, 0, 5, 5, 5, 5, 10, 10}));
}

TEST(SortToAntiClockwise, ProductThatIsNoNumberIsNoDiamond) {
  // Corners 0 and 2 coincide: their cosines are 0 / 0. The first edge is steep all the same.
  Quad quad = {5, 0, 0, 100, 5, 0, 0, -100};
  SortToAntiClockwise(&quad);
  EXPECT_EQ((std::vector<int32_t>{quad.x0, quad.y0, quad.x1, quad.y1, quad.x2, quad.y2, quad.x3,
                                  quad.y3}),
            (std::vector<int32_t>{5, 0, 0, -100, 5, 0, 0, 100}));
}

TEST(AffineMatrix, RowsOfTheEquations) {
  const Quad src = {11, 12, 13, 14, 15, 16, 17, 18}, dst = {1, 2, 3, 4, 5, 6, 7, 8};
  const Block<float*> rows = CreateAffineMatrix(&src, &dst);
  ASSERT_TRUE(rows);
  const Block<float> values(rows[0]);
  const float expected[8][9] = {
      {1, 2, 1, 0, 0, 0, -11, -22, 11}, {3, 4, 1, 0, 0, 0, -39, -52, 13},
      {5, 6, 1, 0, 0, 0, -75, -90, 15}, {7, 8, 1, 0, 0, 0, -119, -136, 17},
      {0, 0, 0, 1, 2, 1, -12, -24, 12}, {0, 0, 0, 3, 4, 1, -42, -56, 14},
      {0, 0, 0, 5, 6, 1, -80, -96, 16}, {0, 0, 0, 7, 8, 1, -126, -144, 18},
  };
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(rows[i], values.get() + 9 * i);
    for (int c = 0; c < 9; ++c) EXPECT_EQ(rows[i][c], expected[i][c]) << i << ' ' << c;
  }
}

TEST(AffineMatrix, ProductsWrap) {
  const Quad src = {50000, INT32_MIN, 0, 0, 0, 0, 0, 0}, dst = {50000, 46341, 0, 0, 0, 0, 0, 0};
  const Block<float*> rows = CreateAffineMatrix(&src, &dst);
  ASSERT_TRUE(rows);
  const Block<float> values(rows[0]);
  EXPECT_EQ(rows[0][6], 1794967296.0f);   // 2^32 - 2500000000
  EXPECT_EQ(rows[0][7], 1977917344.0f);   // 2^32 - 2317050000, rounded to a multiple of 128
  EXPECT_EQ(rows[4][6], 0.0f);            // -50000 * -2^31 is a multiple of 2^32
  EXPECT_EQ(rows[4][7], -2147483648.0f);  // the odd factor leaves 2^31
  EXPECT_EQ(rows[4][8], -2147483648.0f);
}

TEST(AffineMatrix, MissingArgumentsGiveNull) {
  const Quad quad = {};
  EXPECT_FALSE(CreateAffineMatrix(nullptr, &quad));
  EXPECT_FALSE(CreateAffineMatrix(&quad, nullptr));
  EXPECT_FALSE(CalcParameters(nullptr));
  EXPECT_FALSE(GetAffineParameters(nullptr, &quad));
  EXPECT_FALSE(GetAffineParameters(&quad, nullptr));
}

// Eight equations "unknown i is 0" behind a table of row pointers, to be changed by a test.
struct Equations {
  std::array<std::array<float, 9>, 8> values = {};
  std::array<float*, 8> rows;
  Equations() {
    for (size_t i = 0; i < 8; ++i) {
      values[i][i] = 1;
      rows[i] = values[i].data();
    }
  }
};

TEST(CalcParameters, SolvesWithBackSubstitution) {
  Equations e;
  for (size_t i = 0; i < 8; ++i) e.values[i][8] = static_cast<float>(10 * i);
  e.values[0][7] = 2;  // p0 + 2 p7 = 0
  e.values[3][0] = 1;  // p0 + p3 = 30
  const AffineParameters p = CalcParameters(e.rows.data());
  ASSERT_TRUE(p);
  const float expected[8] = {-140, 10, 20, 170, 40, 50, 60, 70};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(p[i], expected[i]) << i;
}

TEST(CalcParameters, FirstRowThatIsNotZeroBecomesThePivot) {
  // Rows 0, 1 and 2 are p1 = 5, 3 p0 + 6 p1 = 36 and 100 p0 + p2 = 7: row 1 comes first although
  // row 2 holds the larger entry.
  Equations e;
  e.values[0] = {0, 1, 0, 0, 0, 0, 0, 0, 5};
  e.values[1] = {3, 6, 0, 0, 0, 0, 0, 0, 36};
  e.values[2] = {100, 0, 1, 0, 0, 0, 0, 0, 7};
  const AffineParameters p = CalcParameters(e.rows.data());
  ASSERT_TRUE(p);
  EXPECT_EQ(e.rows[0], e.values[1].data());
  EXPECT_EQ(e.rows[1], e.values[0].data());
  EXPECT_EQ(e.rows[2], e.values[2].data());
  EXPECT_EQ(p[0], 2.0f);
  EXPECT_EQ(p[1], 5.0f);
  EXPECT_EQ(p[2], -193.0f);
}

TEST(CalcParameters, ColumnWithoutPivotIsSkippedAndItsUnknownIsZero) {
  Equations e;
  for (size_t i = 0; i < 8; ++i) e.values[i][8] = 3;
  e.values[4][4] = 0;  // nothing is left in column 4 from row 4 down
  e.values[2][4] = 5;  // p2 + 5 p4 = 3
  e.values[7][7] = 0;
  const AffineParameters p = CalcParameters(e.rows.data());
  ASSERT_TRUE(p);
  const float expected[8] = {3, 3, 3, 3, 0, 3, 3, 0};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(p[i], expected[i]) << i;
}

TEST(CalcParameters, EliminationIsFused) {
  // With e = 2^-12 the new pivot is (1 + 2 e) - (1 + e)^2 = -2^-24, which a rounded product loses.
  const float e = 0x1p-12f;
  Equations equations;
  equations.values[0][1] = 1 + e;
  equations.values[1] = {1 + e, 1 + 2 * e, 0, 0, 0, 0, 0, 0, 1};
  const AffineParameters p = CalcParameters(equations.rows.data());
  ASSERT_TRUE(p);
  EXPECT_EQ(p[1], -16777216.0f);
  EXPECT_EQ(p[0], 16781312.0f);  // 2^24 (1 + e)
}

TEST(CalcParameters, BackSubstitutionIsFused) {
  const float e = 0x1p-12f;
  Equations equations;
  equations.values[0][1] = 1 + e;
  equations.values[0][8] = 1 + 2 * e;
  equations.values[1][8] = 1 + e;
  const AffineParameters p = CalcParameters(equations.rows.data());
  ASSERT_TRUE(p);
  EXPECT_EQ(p[0], -0x1p-24f);
}

TEST(GetAffineParameters, UnitSquareOntoItself) {
  const Quad square = {0, 0, 1, 0, 1, 1, 0, 1};
  const AffineParameters p = GetAffineParameters(&square, &square);
  ASSERT_TRUE(p);
  const float expected[8] = {1, 0, 0, 0, 1, 0, 0, 0};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(p[i], expected[i]) << i;
}

TEST(GetAffineParameters, ParallelogramIsAffine) {
  // x = 10 + 2 u - v, y = 10 + u + 3 v
  const Quad src = {10, 10, 18, 14, 16, 20, 8, 16}, dst = {0, 0, 4, 0, 4, 2, 0, 2};
  const AffineParameters p = GetAffineParameters(&src, &dst);
  ASSERT_TRUE(p);
  const float expected[8] = {2, -1, 10, 1, 3, 10, 0, 0};
  for (int i = 0; i < 8; ++i) EXPECT_NEAR(p[i], expected[i], 1e-5f) << i;
}

TEST(GetAffineParameters, TrapezoidIsProjective) {
  // x = 4 u / (u + 1), y = 4 v / (u + 1): (0,0) (1,0) (1,1) (0,1) go to (0,0) (2,0) (2,2) (0,4).
  const Quad src = {0, 0, 2, 0, 2, 2, 0, 4}, dst = {0, 0, 1, 0, 1, 1, 0, 1};
  const AffineParameters p = GetAffineParameters(&src, &dst);
  ASSERT_TRUE(p);
  const float expected[8] = {4, 0, 0, 0, 4, 0, 1, 0};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(p[i], expected[i]) << i;
}

TEST(GetAffineParameters, UnknownsOfASingularSystemAreZero) {
  // All destination points at the origin: what is left is p2 = x2 and p5 = y1.
  const Quad src = {11, 12, 13, 14, 15, 16, 17, 18}, dst = {};
  const AffineParameters p = GetAffineParameters(&src, &dst);
  ASSERT_TRUE(p);
  const float expected[8] = {0, 0, 15, 0, 0, 14, 0, 0};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(p[i], expected[i]) << i;
}

TEST(GetAffineParameters, ReleasesTheSystemWhateverRowsWereExchanged) {
  // left = 0 exchanges the first row, left = 1 does not.
  for (const int32_t left : {0, 1}) {
    const Quad src = {3, 3, 9, 3, 9, 9, 3, 9}, dst = {left, 0, 8, 0, 8, 8, left, 8};
    AllocationWatch watch;
    {
      const AffineParameters p = GetAffineParameters(&src, &dst);
      EXPECT_TRUE(p);
      EXPECT_EQ(watch.live_blocks(), 1);
    }
    EXPECT_EQ(watch.live_blocks(), 0);
    EXPECT_EQ(watch.peak_bytes(), 8 * sizeof(float*) + 72 * sizeof(float) + 8 * sizeof(float));
  }
}

TEST(GetAffineParameters, AnyAllocationMayFail) {
  const Quad src = {3, 3, 9, 3, 9, 9, 3, 9}, dst = {0, 0, 8, 0, 8, 8, 0, 8};
  for (int64_t n = 1; n <= 3; ++n) {
    AllocationWatch watch(n);
    EXPECT_FALSE(GetAffineParameters(&src, &dst)) << n;
    EXPECT_EQ(watch.allocations(), n);
    EXPECT_EQ(watch.live_blocks(), 0) << n;
  }
}

TEST(PointSrcToDst, UndoesTheMapping) {
  const float twice_and_shifted[8] = {2, 0, 10, 0, 4, 20, 0, 0};
  Point at = PointSrcToDst(30, 60, twice_and_shifted);
  EXPECT_EQ(at.x, 10);
  EXPECT_EQ(at.y, 10);
  at = PointSrcToDst(7, 13, twice_and_shifted);  // (-1.5, -1.75)
  EXPECT_EQ(at.x, -1);
  EXPECT_EQ(at.y, -1);
  // D = u / 2 + 1 = 2 at (2, 6), which shows (1, 3).
  const float projective[8] = {1, 0, 0, 0, 1, 0, 0.5f, 0};
  at = PointSrcToDst(1, 3, projective);
  EXPECT_EQ(at.x, 2);
  EXPECT_EQ(at.y, 6);
}

TEST(PointSrcToDst, CoefficientsAreFused) {
  // x p6 = 2^12 (1 + 2^-12)^2 leaves a = p0 - x p6 = -2^-12, which a rounded product loses. With
  // b = d = 1, c = 0, e = 1 and f = 0: u = -1 / -a = -4096.
  const float p[8] = {4098, 1, 4096, 0, 1, 0, 1 + 0x1p-12f, 0};
  EXPECT_EQ(PointSrcToDst(4097, 0, p).x, -4096);
}

TEST(PointSrcToDst, FirstProductOfANumeratorIsFusedAndTheSecondRounded) {
  // At (0, 0) a, b, c, d are p0, p1, p3, p4 and e, f are -p2, -p5. With s = 2^-12, (1 + s)^2 is
  // 1 + 2 s + 2^-24, rounded 1 + 2 s.
  const float s = 0x1p-12f;
  // f b - e d = 1 + 2 s - (1 + s)^2 is 0 with the product rounded; -1 over 2^-24 if it were not.
  const float second[8] = {0, 1, -(1 + s), 0x1p-24f, 1 + s, -(1 + 2 * s), 0, 0};
  EXPECT_EQ(PointSrcToDst(0, 0, second).x, 0);
  // f b - e d = (1 + s)^2 - (1 + 2 s) is 2^-24; over -d a = 2^-26 (1 + 2 s) that is 3.998.
  const float first[8] = {-0x1p-26f, 1 + s, -1, 0, 1 + 2 * s, -(1 + s), 0, 0};
  EXPECT_EQ(PointSrcToDst(0, 0, first).x, 3);
}

TEST(PointSrcToDst, NoMappingBackIsNotGuarded) {
  const float nothing[8] = {};
  const Point at = PointSrcToDst(3, 4, nothing);  // 0 / 0
  EXPECT_EQ(at.x, INT32_MIN);
  EXPECT_EQ(at.y, INT32_MIN);
}

TEST(RectSrcToDst, IsTheBoundingBox) {
  const float mirrored[8] = {-1, 0, 10, 0, 1, 0, 0, 0};
  const PixelRect box = RectSrcToDst(0, 1, 4, 6, mirrored);
  EXPECT_EQ(box.left, 6);
  EXPECT_EQ(box.top, 1);
  EXPECT_EQ(box.right, 10);
  EXPECT_EQ(box.bottom, 6);
}

TEST(GetOrigin, ScalesShiftsAndTruncates) {
  Point at = GetOrigin(7, -7, 1, 1, 2.0f);  // 2.5 and -4.5
  EXPECT_EQ(at.x, 2);
  EXPECT_EQ(at.y, -4);
  at = GetOrigin(0, 5, 1, 1, 0.0f);
  EXPECT_EQ(at.x, INT32_MIN);
  EXPECT_EQ(at.y, INT32_MAX);
}

}  // namespace
