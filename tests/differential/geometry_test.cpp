// The geometry family against the plain reference: every byte and every bit, on random and hostile
// input. The reference itself is first held against literals.
#include <gtest/gtest.h>

#include <sys/mman.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "differential/twins.h"
#include "geometry/affine_transform.h"
#include "geometry/dst_points.h"
#include "geometry/quad_mapping.h"
#include "geometry/rotate.h"
#include "geometry/xrml.h"
#include "reference/frame.h"
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

// --------------------------------------------------------------------------------- random input

// Any number is as good as any other NaN; everything else by its bits.
bool SameFloat(float a, float b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::memcmp(&a, &b, sizeof a) == 0;
}

constexpr int32_t kLargestSide = 40;
constexpr size_t kBlock = 8000;  // the shapes below fit

// A record for an operation that takes it for 24-bit whatever it says.
Shape ShapeUsedAs24Bit(Dice& dice) {
  const bool long_rows = dice.one_in(4);  // of several vectors and blocks
  const int32_t width = dice.between(1, long_rows ? 220 : dice.one_in(4) ? 4 : kLargestSide);
  const int32_t height = dice.between(1, long_rows ? 9 : dice.one_in(4) ? 4 : kLargestSide);
  const int32_t padding = dice.one_in(2) ? 0 : dice.between(1, 20);
  switch (dice.bits() % 16) {
    case 0:  // 8-bit: rows that may be too short
      return {3, width, height, width + dice.between(0, 2 * width + 3), true};
    case 1:  // an unknown format passes with anything in the other fields
      return {7, dice.between(-3, kLargestSide), dice.between(-3, kLargestSide),
              dice.between(-10, 3 * kLargestSide), !dice.one_in(3)};
    case 2: {  // 3 * width wraps to a small number, 2 and up
      const int32_t beyond = dice.between(0, 20);
      return {0, 1431655766 + beyond, height, 2 + 3 * beyond + padding, true};
    }
    case 3:  // 3 * width wraps to a negative number
      return {0, 715827883 + dice.between(0, 1000), height, dice.between(-5, 100), true};
    case 4:  // malformed in one way
      switch (dice.bits() % 4) {
        case 0:
          return {0, dice.between(-2, 0), height, 99, true};
        case 1:
          return {0, width, dice.between(-2, 0), 3 * width, true};
        case 2:
          return {0, width, 1, 3 * width - 1, true};
        default:
          return {0, width, height, 3 * width, false};
      }
    default:
      return {0, width, height, 3 * width + padding, true};
  }
}

Quad RandomQuad(Dice& dice, int32_t width, int32_t height) {
  // Corners on an ellipse, in either sense from any start, rounded to pixels.
  const float centre_x = dice.real(0.2f, 0.8f) * static_cast<float>(width);
  const float centre_y = dice.real(0.2f, 0.8f) * static_cast<float>(height);
  const float radius_x = dice.real(0.1f, 1.0f) * static_cast<float>(width);
  const float radius_y = dice.real(0.1f, 1.0f) * static_cast<float>(height);
  const float start = dice.real(0.0f, 6.3f);
  const float sense = dice.one_in(2) ? 1.0f : -1.0f;
  const bool regular = dice.one_in(3);
  int32_t at[8];
  float angle = start;
  for (int k = 0; k < 4; ++k) {
    at[2 * k] = static_cast<int32_t>(centre_x + radius_x * std::cos(angle));
    at[2 * k + 1] = static_cast<int32_t>(centre_y + radius_y * std::sin(angle));
    angle += sense * (regular ? 1.5707963f : dice.real(0.4f, 2.4f));
  }
  return {at[0], at[1], at[2], at[3], at[4], at[5], at[6], at[7]};
}

// Mostly convex, of any size; boxes and diamonds; now and then anything at all.
Quad AnyQuad(Dice& dice) {
  const int32_t size = 1 << dice.between(1, 30);
  switch (dice.bits() % 8) {
    case 0: {  // any four points
      const auto side = [&] { return dice.between(-size, size); };
      return {side(), side(), side(), side(), side(), side(), side(), side()};
    }
    case 1: {
      const auto any = [&] { return dice.hostile_integer(); };
      return {any(), any(), any(), any(), any(), any(), any(), any()};
    }
    case 2: {  // a diamond with level or upright diagonals, a little off
      const auto off = [&] { return dice.one_in(4) ? dice.between(-2, 2) : 0; };
      const int32_t r = size / 4 + 3, s = dice.one_in(2) ? r : r / 2 + 1;
      const Quad right = {off(), off() - s, r + off(), off(), off(), s + off(), off() - r, off()};
      const Quad left = {off(), off() - s, off() - r, off(), off(), s + off(), r + off(), off()};
      return dice.one_in(2) ? right : left;
    }
    case 3: {  // a box from any corner
      const int32_t l = dice.between(-50, 50), t = dice.between(-50, 50);
      const int32_t r = l + dice.between(1, 90), b = t + dice.between(1, 90);
      const Quad boxes[4] = {{l, t, r, t, r, b, l, b},
                             {r, t, l, t, l, b, r, b},
                             {r, b, l, b, l, t, r, t},
                             {l, b, l, t, r, t, r, b}};
      return dice.pick(boxes);
    }
    default: {
      Quad quad = RandomQuad(dice, size, size);
      if (dice.one_in(2)) {
        const int32_t dx = dice.between(-size, size), dy = dice.between(-size, size);
        int32_t* at = &quad.x0;
        for (int k = 0; k < 8; k += 2) {
          at[k] = reference::plus(at[k], dx);
          at[k + 1] = reference::plus(at[k + 1], dy);
        }
      }
      return quad;
    }
  }
}

PixelRect RandomRect(Dice& dice, const Shape& dst) {
  if (dice.one_in(20)) {
    const auto any = [&] { return dice.hostile_integer(); };
    return {any(), any(), any(), any()};
  }
  const int32_t left = dice.between(-60, 45), top = dice.between(-60, 45);
  if (dice.one_in(20)) return {left, top, left + dice.between(-1, 0), top + dice.between(-1, 0)};
  if (dice.one_in(2) && dst.width < 1000) return {0, 0, dst.width, dst.height};
  return {left, top, left + dice.between(1, 280), top + dice.between(1, 120)};
}

TEST(DifferentialGeometry, MeasuresLikeTheReference) {
  Dice dice(10);
  for (int i = 0; i < 100000; ++i) {
    const Quad q = AnyQuad(dice);
    ASSERT_EQ(roxe::xrmlIsConvexQuadrilateral(&q), reference::xrmlIsConvexQuadrilateral(&q)) << i;
    ASSERT_TRUE(SameFloat(roxe::xrmlGetLength2D(q.x0, q.y0, q.x1, q.y1),
                          reference::xrmlGetLength2D(q.x0, q.y0, q.x1, q.y1)))
        << i;
    ASSERT_TRUE(SameFloat(roxe::xrmlGetClosestAngleWithCoorAxis(q.x0, q.y0, q.x1, q.y1),
                          reference::xrmlGetClosestAngleWithCoorAxis(q.x0, q.y0, q.x1, q.y1)))
        << testing::PrintToString(Coordinates(q));
    roxe::Point actual = {-7, -8};
    reference::Point expected = {-7, -8};
    ASSERT_EQ(
        roxe::xrmlGetIntersectOfLines(q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3, &actual),
        reference::xrmlGetIntersectOfLines(q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3,
                                           &expected))
        << i;
    ASSERT_EQ(actual.x, expected.x) << i;
    ASSERT_EQ(actual.y, expected.y) << i;
  }
  EXPECT_EQ(roxe::xrmlGetIntersectOfLines(0, 0, 1, 1, 0, 1, 1, 0, nullptr), 0);
}

TEST(DifferentialGeometry, MeasuresSpaceLikeTheReference) {
  Dice dice(11);
  for (int i = 0; i < 100000; ++i) {
    float at[12];
    const bool hostile = dice.one_in(4), small = dice.one_in(4);
    for (float& coordinate : at) {
      coordinate = small ? dice.real(-0.1f, 0.1f) : dice.real(-1000.0f, 1000.0f);
      if (hostile && dice.one_in(3)) coordinate = dice.hostile_real();
    }
    if (dice.one_in(4)) {  // three on a line, nearly
      const float t = dice.real(-2.0f, 2.0f);
      for (int k = 0; k < 3; ++k) at[6 + k] = at[k] + t * (at[3 + k] - at[k]);
    }
    ASSERT_TRUE(SameFloat(roxe::xrmlGetLength3D({at[0], at[1], at[2]}, {at[3], at[4], at[5]}),
                          reference::xrmlGetLength3D({at[0], at[1], at[2]}, {at[3], at[4], at[5]})))
        << i;
    ASSERT_TRUE(SameFloat(
        roxe::xrmlGetLengthPoint2Place({at[0], at[1], at[2]}, {at[3], at[4], at[5]},
                                       {at[6], at[7], at[8]}, {at[9], at[10], at[11]}),
        reference::xrmlGetLengthPoint2Place({at[0], at[1], at[2]}, {at[3], at[4], at[5]},
                                            {at[6], at[7], at[8]}, {at[9], at[10], at[11]})))
        << i;
  }
}

TEST(DifferentialGeometry, InvertsAndMultipliesLikeTheReference) {
  Dice dice(12);
  for (int i = 0; i < 20000; ++i) {
    const int32_t n = dice.between(1, 6), rows = dice.one_in(2) ? n : dice.between(1, 6);
    std::vector<float> a(36), b(36);
    const bool whole = dice.one_in(3), hostile = dice.one_in(4);
    for (std::vector<float>* matrix : {&a, &b}) {
      for (float& element : *matrix) {
        element = whole ? static_cast<float>(dice.between(-2, 2)) : dice.real(-3.0f, 3.0f);
        if (hostile && dice.one_in(6)) element = dice.hostile_real();
      }
    }
    std::vector<float> actual(36, -7.0f), expected(36, -7.0f);
    ASSERT_EQ(roxe::xrmlMatrixMultiply(a.data(), b.data(), actual.data(), rows, n),
              reference::xrmlMatrixMultiply(a.data(), b.data(), expected.data(), rows, n));
    for (size_t k = 0; k < 36; ++k) ASSERT_TRUE(SameFloat(actual[k], expected[k])) << i;

    const bool in_place = dice.one_in(2);
    if (in_place) actual = expected = a;
    ASSERT_EQ(
        roxe::xrmlMatrixInverse(actual.data(), in_place ? actual.data() : a.data(), n),
        reference::xrmlMatrixInverse(expected.data(), in_place ? expected.data() : a.data(), n))
        << i;
    for (size_t k = 0; k < 36; ++k) ASSERT_TRUE(SameFloat(actual[k], expected[k])) << i;
  }
  float one = 1.0f;
  for (const int32_t bad : {0, -1, INT32_MIN}) {
    EXPECT_EQ(roxe::xrmlMatrixMultiply(&one, &one, &one, bad, 1), 0);
    EXPECT_EQ(roxe::xrmlMatrixMultiply(&one, &one, &one, 1, bad), 0);
  }
  EXPECT_EQ(roxe::xrmlMatrixMultiply(nullptr, &one, &one, 1, 1), 0);
  EXPECT_EQ(roxe::xrmlMatrixMultiply(&one, nullptr, &one, 1, 1), 0);
  EXPECT_EQ(roxe::xrmlMatrixMultiply(&one, &one, nullptr, 1, 1), 0);
}

TEST(DifferentialGeometry, SortsCornersLikeTheReference) {
  Dice dice(13);
  for (int i = 0; i < 100000; ++i) {
    const Quad given = AnyQuad(dice);
    Quad actual = given, expected = given;
    for (int sorted = 1; sorted <= 2; ++sorted) {
      roxe::SortToAntiClockwise(&actual);
      reference::SortToAntiClockwise(&expected);
      ASSERT_EQ(Coordinates(actual), Coordinates(expected))
          << sorted << ": " << testing::PrintToString(Coordinates(given));
    }
  }
}

TEST(DifferentialGeometry, SolvesTheMappingLikeTheReference) {
  Dice dice(14);
  for (int i = 0; i < 100000; ++i) {
    const Quad src = AnyQuad(dice);
    Quad dst = AnyQuad(dice);
    if (dice.one_in(2)) {  // an upright rectangle, now and then empty
      const int32_t left = dice.between(-9, 99), top = dice.between(-9, 99);
      const int32_t right = left + dice.between(0, 999), bottom = top + dice.between(0, 999);
      dst = {left, top, right, top, right, bottom, left, bottom};
    }
    const reference::System expected_system = reference::CreateAffineMatrix(src, dst);
    const auto rows = roxe::CreateAffineMatrix(&src, &dst);
    ASSERT_NE(rows, nullptr);
    const roxe::Block<float> storage(rows[0]);
    for (size_t r = 0; r < 8; ++r)
      for (size_t c = 0; c < 9; ++c)
        ASSERT_TRUE(SameFloat(rows[r][c], expected_system[r][c])) << i << ": " << r << ", " << c;

    const reference::AffineParameters expected = reference::CalcParameters(expected_system);
    const auto solved = roxe::CalcParameters(rows.get());
    const auto actual = roxe::GetAffineParameters(&src, &dst);
    ASSERT_NE(solved, nullptr);
    ASSERT_NE(actual, nullptr);
    for (size_t k = 0; k < 8; ++k) {
      ASSERT_TRUE(SameFloat(solved[k], expected[k])) << i << ": " << k;
      ASSERT_TRUE(SameFloat(actual[k], expected[k])) << i << ": " << k;
    }
  }
  const Quad quad = {};
  EXPECT_EQ(roxe::CreateAffineMatrix(nullptr, &quad), nullptr);
  EXPECT_EQ(roxe::CreateAffineMatrix(&quad, nullptr), nullptr);
  EXPECT_EQ(roxe::GetAffineParameters(nullptr, &quad), nullptr);
  EXPECT_EQ(roxe::CalcParameters(nullptr), nullptr);
}

TEST(DifferentialGeometry, SolvesAnySystemLikeTheReference) {
  Dice dice(15);
  for (int i = 0; i < 50000; ++i) {
    reference::System system;
    const bool sparse = dice.one_in(2), hostile = dice.one_in(4);
    for (auto& row : system) {
      for (float& entry : row) {
        entry = dice.one_in(2) ? dice.real(-3.0f, 3.0f) : static_cast<float>(dice.between(-2, 2));
        if (sparse && !dice.one_in(3)) entry = 0.0f;
        if (hostile && dice.one_in(9)) entry = dice.hostile_real();
      }
    }
    const reference::AffineParameters expected = reference::CalcParameters(system);
    float* rows[8];
    for (size_t r = 0; r < 8; ++r) rows[r] = system[r].data();
    const auto actual = roxe::CalcParameters(rows);
    for (size_t k = 0; k < 8; ++k) ASSERT_TRUE(SameFloat(actual[k], expected[k])) << i << ": " << k;
  }
}

// Coefficients of a mapping: of the size of pictures, or anything.
std::array<float, 8> AnyCoefficients(Dice& dice) {
  std::array<float, 8> p = {1, 0, 0, 0, 1, 0, 0, 0};
  for (size_t k = 0; k < 8; ++k) p[k] += dice.real(-1.0f, 1.0f);
  p[2] = dice.real(-30.0f, 30.0f);
  p[5] = dice.real(-30.0f, 30.0f);
  p[6] = dice.real(-0.05f, 0.05f);
  p[7] = dice.real(-0.05f, 0.05f);
  const int32_t hostile = dice.one_in(4) ? dice.between(1, 4) : 0;
  for (int32_t k = 0; k < hostile; ++k) p[dice.bits() % 8] = dice.hostile_real();
  return p;
}

int32_t AnyCoordinate(Dice& dice) {
  return dice.one_in(8) ? dice.hostile_integer() : dice.between(-500, 500);
}

TEST(DifferentialGeometry, MapsPointsBackLikeTheReference) {
  Dice dice(16);
  for (int i = 0; i < 100000; ++i) {
    const std::array<float, 8> p = AnyCoefficients(dice);
    int32_t at[4];
    for (int32_t& coordinate : at) coordinate = AnyCoordinate(dice);
    const roxe::Point point = roxe::PointSrcToDst(at[0], at[1], p.data());
    const reference::Point expected_point = reference::PointSrcToDst(at[0], at[1], p.data());
    ASSERT_EQ(point.x, expected_point.x) << i;
    ASSERT_EQ(point.y, expected_point.y) << i;
    const PixelRect rect = roxe::RectSrcToDst(at[0], at[1], at[2], at[3], p.data());
    const PixelRect expected = reference::RectSrcToDst(at[0], at[1], at[2], at[3], p.data());
    ASSERT_EQ(std::memcmp(&rect, &expected, sizeof rect), 0) << i;
    const float scale = dice.one_in(4) ? dice.hostile_real() : dice.real(-4.0f, 4.0f);
    const roxe::Point origin = roxe::GetOrigin(at[0], at[1], at[2], at[3], scale);
    const reference::Point expected_origin =
        reference::GetOrigin(at[0], at[1], at[2], at[3], scale);
    ASSERT_EQ(origin.x, expected_origin.x) << i;
    ASSERT_EQ(origin.y, expected_origin.y) << i;
  }
}

TEST(DifferentialGeometry, ResamplesThroughAnyMappingLikeTheReference) {
  Dice dice(41);
  Twins first(kBlock), second(kBlock);
  for (int i = 0; i < 20000; ++i) {
    const Shape src = ShapeUsedAs24Bit(dice), dst = ShapeUsedAs24Bit(dice);
    CallRecords call(dice, first, second, src, dst, 3);
    const std::array<float, 8> p = AnyCoefficients(dice);
    const PixelRect rect = RandomRect(dice, dst);
    const int32_t offset_x = dice.one_in(2) ? 0 : AnyCoordinate(dice);
    const int32_t offset_y = dice.one_in(2) ? 0 : AnyCoordinate(dice);
    const int32_t expected = reference::ApplyParameters(
        call.reference_src, *call.reference_dst_pointer(), p.data(), offset_x, offset_y, rect.left,
        rect.top, rect.right, rect.bottom);
    const int32_t actual =
        roxe::ApplyParameters(call.library_src, *call.library_dst_pointer(), p.data(), offset_x,
                              offset_y, rect.left, rect.top, rect.right, rect.bottom);
    ASSERT_EQ(actual, expected) << i;
    ASSERT_TRUE(first.same() && second.same()) << i << ": " << testing::PrintToString(p);
  }
}

TEST(DifferentialGeometry, FindsFeetAndMiddlesLikeTheReference) {
  Dice dice(17);
  for (int i = 0; i < 100000; ++i) {
    int32_t at[6];
    const bool near = dice.one_in(4);  // feet on the very ends
    for (int32_t& coordinate : at) coordinate = near ? dice.between(-3, 3) : AnyCoordinate(dice);
    roxe::Point foot = {-7, -8};
    reference::Point expected = {-7, -8};
    ASSERT_EQ(roxe::GetProjection(at[0], at[1], at[2], at[3], at[4], at[5], &foot),
              reference::GetProjection(at[0], at[1], at[2], at[3], at[4], at[5], &expected))
        << i;
    ASSERT_EQ(foot.x, expected.x) << i;
    ASSERT_EQ(foot.y, expected.y) << i;
    roxe::GetAdjustCenter(&foot, at[0], at[1], at[2], at[3]);
    reference::GetAdjustCenter(&expected, at[0], at[1], at[2], at[3]);
    ASSERT_EQ(foot.x, expected.x) << i;
    ASSERT_EQ(foot.y, expected.y) << i;
  }
  EXPECT_EQ(roxe::GetProjection(0, 0, 1, 1, 0, 1, nullptr), 0);
}

TEST(DifferentialGeometry, LiftsCornersLikeTheReference) {
  Dice dice(18);
  for (int i = 0; i < 100000; ++i) {
    Quad quad = AnyQuad(dice);
    if (dice.one_in(3)) {  // one pair of sides parallel, or both
      const int32_t dx = dice.between(-40, 40), dy = dice.between(-40, 40);
      const int32_t far = dice.between(1, 3);
      const int32_t x = dice.between(-90, 90), y = dice.between(-90, 90);
      quad = {0, 0, dx, dy, x + far * dx, y + far * dy, x, y};
      if (dice.one_in(2))
        quad = {quad.x1, quad.y1, quad.x2, quad.y2, quad.x3, quad.y3, quad.x0, quad.y0};
    }
    const int32_t cx = AnyCoordinate(dice), cy = AnyCoordinate(dice);
    Quad expected_quad = quad;
    roxe::Point3D points[4] = {};
    reference::Point3D expected_points[4] = {};
    roxe::Camera camera = {-1, -1, -1};
    float expected_camera[3];
    const int32_t expected =
        reference::GetDstPoints(&expected_quad, cx, cy, expected_points, expected_camera);
    ASSERT_EQ(roxe::GetDstPoints(&quad, cx, cy, points, &camera), expected) << i;
    ASSERT_EQ(Coordinates(quad), Coordinates(expected_quad)) << i;
    for (int k = 0; k < 4; ++k) {
      ASSERT_TRUE(SameFloat(points[k].x, expected_points[k].x)) << i << ": " << k;
      ASSERT_TRUE(SameFloat(points[k].y, expected_points[k].y)) << i << ": " << k;
      ASSERT_TRUE(SameFloat(points[k].z, expected_points[k].z)) << i << ": " << k;
    }
    ASSERT_TRUE(SameFloat(camera.centre_x, expected_camera[0])) << i;
    ASSERT_TRUE(SameFloat(camera.centre_y, expected_camera[1])) << i;
    ASSERT_TRUE(SameFloat(camera.focal_length, expected_camera[2])) << i;
  }
}

TEST(DifferentialGeometry, WalksAnyMapLikeTheReference) {
  Dice dice(21);
  Twins first(kBlock), second(kBlock);
  for (int i = 0; i < 10000; ++i) {
    const Shape src = ShapeUsedAs24Bit(dice), dst = ShapeUsedAs24Bit(dice);
    CallRecords call(dice, first, second, src, dst, 3);
    float map[6];
    for (float& value : map) value = dice.real(-1.0f, 1.0f);
    map[2] = dice.real(-50.0f, 50.0f);
    map[5] = dice.real(-50.0f, 50.0f);
    if (dice.one_in(4)) map[dice.one_in(2) ? 2 : 5] = dice.hostile_real();
    if (dice.one_in(8)) map[dice.between(0, 5)] = dice.one_in(2) ? NAN : INFINITY;
    reference::RotateImage_RGB24(call.reference_src, *call.reference_dst_pointer(), map);
    roxe::RotateImage_RGB24(call.library_src, *call.library_dst_pointer(), map);
    ASSERT_TRUE(first.same() && second.same())
        << i << ": " << testing::PrintToString(std::vector<float>(map, map + 6));
  }
}

TEST(DifferentialGeometry, RotatesLikeTheReference) {
  Dice dice(20);
  Twins first(kBlock), second(kBlock);
  constexpr float kAngles[] = {0.0f,        -0.0f,       1.5707964f, -1.5707964f, 3.1415927f,
                               -3.1415927f, 0.78539819f, 1e-6f,      6.2831855f,  100.0f};
  for (int i = 0; i < 20000; ++i) {
    const Shape src = ShapeUsedAs24Bit(dice), dst = ShapeUsedAs24Bit(dice);
    CallRecords call(dice, first, second, src, dst, 3);
    float angle = dice.real(-4.0f, 4.0f);
    if (dice.one_in(3)) angle = dice.pick(kAngles);
    if (dice.one_in(16)) angle = dice.hostile_real();
    int32_t centres[4];
    for (int32_t& centre : centres)
      centre = dice.one_in(16) ? dice.hostile_integer() : dice.between(-10, 45);
    const int32_t expected =
        reference::roxeRotateImage(&call.reference_src, centres[0], centres[1], angle,
                                   call.reference_dst_pointer(), centres[2], centres[3]);
    const int32_t actual = ::roxeRotateImage(&call.library_src, centres[0], centres[1], angle,
                                             call.library_dst_pointer(), centres[2], centres[3]);
    ASSERT_EQ(actual, expected) << i;
    ASSERT_TRUE(first.same() && second.same()) << i << ": angle " << angle;
  }
}

TEST(DifferentialGeometry, StraightensLikeTheReference) {
  Dice dice(30);
  Twins first(kBlock), second(kBlock);
  for (int i = 0; i < 10000; ++i) {
    const Shape src = ShapeUsedAs24Bit(dice), dst = ShapeUsedAs24Bit(dice);
    CallRecords call(dice, first, second, src, dst, 3);
    int32_t line[4];
    for (int32_t& coordinate : line)
      coordinate = dice.one_in(16) ? dice.hostile_integer() : dice.between(-10, 45);
    const int32_t expected = reference::roxeuAutoStraightenImage(
        &call.reference_src, line[0], line[1], line[2], line[3], call.reference_dst_pointer());
    const int32_t actual = ::roxeuAutoStraightenImage(&call.library_src, line[0], line[1], line[2],
                                                      line[3], call.library_dst_pointer());
    ASSERT_EQ(actual, expected) << i;
    ASSERT_TRUE(first.same() && second.same()) << i;
  }
}

TEST(DifferentialGeometry, MissingRecordsAreReportedAlike) {
  Image image(kRoxeFormatRGB24, 9, 9);
  Quad quad = {1, 1, 7, 1, 7, 7, 1, 7};
  const PixelRect rect = {0, 0, 9, 9};
  PixelArray* const records[2] = {nullptr, image};
  for (PixelArray* src : records) {
    for (PixelArray* dst : records) {
      EXPECT_EQ(::roxeRotateImage(src, 4, 4, 0.5f, dst, 4, 4),
                reference::roxeRotateImage(src, 4, 4, 0.5f, dst, 4, 4));
      for (Quad* corners : {static_cast<Quad*>(nullptr), &quad}) {
        EXPECT_EQ(::roxeAffineTransform(src, dst, corners, nullptr, rect),
                  reference::roxeAffineTransform(src, dst, corners, nullptr, rect));
        EXPECT_EQ(::roxePerspectiveDistortionCorrection(src, dst, corners, 1, 2, rect),
                  reference::roxePerspectiveDistortionCorrection(src, dst, corners, 1, 2, rect));
      }
    }
  }
}

TEST(DifferentialGeometry, ResamplesLikeTheReference) {
  Dice dice(40);
  Twins first(kBlock), second(kBlock);
  int drawn = 0;
  for (int i = 0; i < 25000; ++i) {
    const Shape src = ShapeUsedAs24Bit(dice), dst = ShapeUsedAs24Bit(dice);
    CallRecords call(dice, first, second, src, dst, 3);
    const int32_t width = src.columns(3) + 2, height = src.height > 0 ? src.height + 2 : 9;
    Quad quad = dice.one_in(8) ? AnyQuad(dice) : RandomQuad(dice, width, height);
    Quad target = dice.one_in(4) ? AnyQuad(dice) : RandomQuad(dice, width, height);
    const bool with_target = dice.one_in(3);
    const PixelRect rect = RandomRect(dice, dst);
    Quad expected_quad = quad;
    const int32_t expected =
        reference::roxeAffineTransform(&call.reference_src, call.reference_dst_pointer(),
                                       &expected_quad, with_target ? &target : nullptr, rect);
    const int32_t actual = ::roxeAffineTransform(&call.library_src, call.library_dst_pointer(),
                                                 &quad, with_target ? &target : nullptr, rect);
    drawn += expected == 0;
    ASSERT_EQ(actual, expected) << i;
    ASSERT_EQ(Coordinates(quad), Coordinates(expected_quad)) << i;
    ASSERT_TRUE(first.same() && second.same()) << i;
  }
  EXPECT_GE(drawn, 10000);
}

TEST(DifferentialGeometry, CorrectsPerspectiveLikeTheReference) {
  Dice dice(50);
  Twins first(kBlock), second(kBlock);
  int drawn = 0;
  for (int i = 0; i < 10000; ++i) {
    const Shape src = ShapeUsedAs24Bit(dice), dst = ShapeUsedAs24Bit(dice);
    CallRecords call(dice, first, second, src, dst, 3);
    const int32_t width = src.columns(3) + 2, height = src.height > 0 ? src.height + 2 : 9;
    Quad quad = dice.one_in(8) ? AnyQuad(dice) : RandomQuad(dice, width, height);
    const PixelRect rect = RandomRect(dice, dst);
    const int32_t unused = dice.hostile_integer();
    Quad expected_quad = quad;
    const int32_t expected = reference::roxePerspectiveDistortionCorrection(
        &call.reference_src, call.reference_dst_pointer(), &expected_quad, unused, unused, rect);
    const int32_t actual = ::roxePerspectiveDistortionCorrection(
        &call.library_src, call.library_dst_pointer(), &quad, unused, unused, rect);
    drawn += expected == 2;
    ASSERT_EQ(actual, expected) << i;
    ASSERT_EQ(Coordinates(quad), Coordinates(expected_quad)) << i;
    ASSERT_TRUE(first.same() && second.same()) << i;
  }
  EXPECT_GE(drawn, 3000);
}

TEST(DifferentialGeometry, ProposesTheSizesOfTheReference) {
  Dice dice(60);
  int accepted = 0;
  for (int i = 0; i < 100000; ++i) {
    Quad quad = AnyQuad(dice);
    Quad expected_quad = quad;
    int32_t width = -7, height = -8, expected_width = -7, expected_height = -8;
    const int32_t unused = dice.hostile_integer();
    int32_t* const no_width = dice.one_in(16) ? nullptr : &width;
    int32_t* const no_height = dice.one_in(16) ? nullptr : &height;
    const int32_t expected = reference::roxeGetPerspectiveDistortionCorrectionSize(
        &expected_quad, unused, unused, unused, no_width ? &expected_width : nullptr,
        no_height ? &expected_height : nullptr);
    const int32_t actual = ::roxeGetPerspectiveDistortionCorrectionSize(
        &quad, unused, unused, unused, no_width, no_height);
    accepted += expected;
    ASSERT_EQ(actual, expected) << i;
    ASSERT_EQ(width, expected_width) << i;
    ASSERT_EQ(height, expected_height) << i;
    ASSERT_EQ(Coordinates(quad), Coordinates(expected_quad)) << i;
  }
  EXPECT_GE(accepted, 30000);
  EXPECT_EQ(::roxeGetPerspectiveDistortionCorrectionSize(nullptr, 0, 0, 0, nullptr, nullptr), 0);
}

// The rows of an image with most of its memory never touched.
struct FarRows {
  static constexpr int32_t kRowBytes = 0x40000000;
  static constexpr int32_t kHeight = 5;
  static constexpr size_t kSize = size_t{kRowBytes} * kHeight;

  FarRows() {
    memory = mmap(nullptr, kSize, PROT_READ | PROT_WRITE,
                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  }
  ~FarRows() {
    if (memory != MAP_FAILED) munmap(memory, kSize);
  }
  // A record with the pixels of a packed one.
  PixelArray copy_of(const PixelArray& packed) const {
    PixelArray far = packed;
    far.rowBytes = kRowBytes;
    far.pixels = static_cast<uint8_t*>(memory);
    for (int32_t y = 0; y < far.height; ++y)
      std::memcpy(far.pixels + ptrdiff_t{y} * kRowBytes, packed.pixels + y * packed.rowBytes,
                  static_cast<size_t>(packed.rowBytes));
    return far;
  }

  void* memory;
};

void ExpectSamePixels(const PixelArray& far, const PixelArray& packed) {
  for (int32_t y = 0; y < packed.height; ++y)
    EXPECT_EQ(
        std::memcmp(far.pixels + ptrdiff_t{y} * far.rowBytes, packed.pixels + y * packed.rowBytes,
                    static_cast<size_t>(packed.rowBytes)),
        0)
        << y;
}

TEST(DifferentialGeometry, RowsAGigabyteApartGiveThePackedResult) {
  const FarRows src_memory, dst_memory;
  if (src_memory.memory == MAP_FAILED || dst_memory.memory == MAP_FAILED)
    GTEST_SKIP() << "no address space for images of five gigabytes";
  std::mt19937 random(19);
  Image src(kRoxeFormatRGB24, 9, FarRows::kHeight), dst(kRoxeFormatRGB24, 9, FarRows::kHeight);
  src.randomise(random);
  const PixelArray far_src = src_memory.copy_of(src.record);
  PixelArray far_dst = dst_memory.copy_of(dst.record);
  const Image untouched = dst;

  EXPECT_EQ(reference::roxeRotateImage(src, 4, 2, 0.1f, dst, 4, 2), 0);
  EXPECT_EQ(::roxeRotateImage(&far_src, 4, 2, 0.1f, &far_dst, 4, 2), 0);
  EXPECT_FALSE(dst == untouched);
  ExpectSamePixels(far_dst, dst.record);

  const Image rotated = dst;
  Quad quad = {1, 0, 8, 1, 8, 4, 0, 3}, far_quad = quad;
  const PixelRect rect = {0, 0, 9, FarRows::kHeight};
  EXPECT_EQ(reference::roxeAffineTransform(src, dst, &quad, nullptr, rect), 0);
  EXPECT_EQ(::roxeAffineTransform(&far_src, &far_dst, &far_quad, nullptr, rect), 0);
  EXPECT_FALSE(dst == rotated);
  ExpectSamePixels(far_dst, dst.record);
}

TEST(ExhaustiveGeometry, ProposesTheSizesOfTheReferenceOnASmallGrid) {
  constexpr uint32_t kSide = 5;
  constexpr uint32_t kQuads = 390625;  // 5^8
  int accepted = 0;
  for (uint32_t number = 0; number < kQuads; ++number) {
    int32_t at[8];
    uint32_t rest = number;
    for (int32_t& coordinate : at) {
      coordinate = static_cast<int32_t>(rest % kSide);
      rest /= kSide;
    }
    Quad quad = {at[0], at[1], at[2], at[3], at[4], at[5], at[6], at[7]};
    Quad expected_quad = quad;
    int32_t width = -7, height = -8, expected_width = -7, expected_height = -8;
    const int32_t expected = reference::roxeGetPerspectiveDistortionCorrectionSize(
        &expected_quad, 0, 0, 0, &expected_width, &expected_height);
    ASSERT_EQ(::roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, &width, &height),
              expected)
        << number;
    ASSERT_EQ(width, expected_width) << number;
    ASSERT_EQ(height, expected_height) << number;
    ASSERT_EQ(std::memcmp(&quad, &expected_quad, sizeof quad), 0) << number;
    accepted += expected;
  }
  EXPECT_GT(accepted, 10000);
}

}  // namespace
