#include "tone/tone_curves.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using namespace roxe;

std::vector<std::pair<float, float>> Polyline(const std::vector<CurvePoint>& ctrl) {
  std::vector<CurvePoint> points(kPolylinePoints);
  points.resize(static_cast<size_t>(cubic_to_polyLine(points.data(), ctrl.data(), 0.1f)));
  std::vector<std::pair<float, float>> pairs;
  for (const CurvePoint& point : points) pairs.push_back({point.x, point.y});
  return pairs;
}

std::vector<float> Table(int32_t n, const std::vector<CurvePoint>& ctrl) {
  std::vector<float> table(static_cast<size_t>(n) + 1, -1.0f);
  set_look_up_table(table.data(), n, ctrl.data(), 4);
  EXPECT_EQ(table.back(), -1.0f);
  table.pop_back();
  return table;
}

using Points = std::vector<std::pair<float, float>>;

// ---- flattening

TEST(ToneCurvePolyline, StraightSegmentsAreTheirTwoEnds) {
  EXPECT_EQ(Polyline({{0, 0}, {70, 70}, {140, 140}, {210, 210}}), (Points{{0, 0}, {210, 210}}));
  // A bend of 0.5 asks for log4(3 * 0.5 / 0.4) = 0.95 halvings.
  EXPECT_EQ(Polyline({{0, 0}, {10, 10}, {20, 20.25f}, {30, 30}}), (Points{{0, 0}, {30, 30}}));
  // A bend of 0.01: the logarithm is negative.
  EXPECT_EQ(Polyline({{0, 0}, {10, 10}, {20, 20.005f}, {30, 30}}), (Points{{0, 0}, {30, 30}}));
}

TEST(ToneCurvePolyline, OneHalving) {
  // Bend |30 - 42 + 10| = 2, log4(15) = 1.95; the middle is (0 + 30 + 63 + 30) / 8.
  EXPECT_EQ(Polyline({{0, 0}, {10, 10}, {20, 21}, {30, 30}}),
            (Points{{0, 0}, {15, 15.375f}, {30, 30}}));
}

TEST(ToneCurvePolyline, TwoHalvingsRepeatTheMiddle) {
  // Bend 3, log4(22.5) = 2.2. y at 1/4: (27 * 10 + 9 * 21.5 + 30) / 64, at 3/4: (9 * 10 + 27 * 21.5
  // + 27 * 30) / 64.
  EXPECT_EQ(Polyline({{0, 0}, {10, 10}, {20, 21.5f}, {30, 30}}), (Points{{0, 0},
                                                                         {7.5f, 7.7109375f},
                                                                         {15, 15.5625f},
                                                                         {15, 15.5625f},
                                                                         {22.5f, 23.1328125f},
                                                                         {30, 30}}));
}

TEST(ToneCurvePolyline, BendOfTheFirstThreePointsCountsToo) {
  // Bends 20 - 2 * 11 + 0 = -2 at the start and 30 - 40 + 11 = 1 at the end.
  EXPECT_EQ(Polyline({{0, 0}, {10, 11}, {20, 20}, {30, 30}}),
            (Points{{0, 0}, {15, 15.375f}, {30, 30}}));
}

TEST(ToneCurvePolyline, BendIsMeasuredOnBothAxes) {
  // |30 - 41 + 10| on each axis makes 2; 0.5 on one alone is too little.
  EXPECT_EQ(Polyline({{0, 0}, {10, 10}, {20.5f, 20.5f}, {30, 30}}).size(), 3u);
  EXPECT_EQ(Polyline({{0, 0}, {10, 10}, {20.25f, 20}, {30, 30}}).size(), 2u);
}

TEST(ToneCurvePolyline, NeverOutgrowsItsBuffer) {
  EXPECT_EQ(Polyline({{0, 0}, {0, 1e9f}, {0, -1e9f}, {255, 255}}).size(), 768u);
  const float inf = std::numeric_limits<float>::infinity();
  EXPECT_EQ(Polyline({{0, 0}, {0, inf}, {0, 1}, {255, 255}}).size(), 768u);
}

// ---- tables

TEST(ToneCurveTable, InterpolatesAlongThePolyline) {
  // One halving; the middle is 15 * (1 + 1 / 64), so the slopes are 65 / 64 and 63 / 64.
  const std::vector<float> table = Table(33, {{0, 0}, {10, 10}, {20, 20.625f}, {30, 30}});
  EXPECT_EQ(table[0], 0.0f);
  EXPECT_EQ(table[10], 10.15625f);
  EXPECT_EQ(table[15], 15.234375f);
  EXPECT_EQ(table[20], 20.15625f);
  EXPECT_EQ(table[29], 29.015625f);
  EXPECT_EQ(table[30], 30.0f);
  EXPECT_EQ(table[32], 32.0f);
}

TEST(ToneCurveTable, LastLevelOfTheCurveStaysTheIdentity) {
  const std::vector<float> table = Table(256, {{0, 0}, {85, 42.5f}, {170, 85}, {255, 127.5f}});
  for (size_t i = 0; i < 255; ++i) EXPECT_EQ(table[i], static_cast<float>(i) / 2);
  EXPECT_EQ(table[255], 255.0f);
}

TEST(ToneCurveTable, StartsAtTheFirstWholeLevelOfTheCurve) {
  EXPECT_EQ(Table(6, {{1.5f, 11.5f}, {2.5f, 12.5f}, {3.5f, 13.5f}, {4.5f, 14.5f}}),
            (std::vector<float>{0, 1, 12, 13, 14, 5}));
  EXPECT_EQ(Table(6, {{2, 12}, {3, 13}, {4, 14}, {5, 15}}),
            (std::vector<float>{0, 1, 12, 13, 14, 5}));
}

TEST(ToneCurveTable, CurveMayBeginBelowAndEndBeyondTheTable) {
  EXPECT_EQ(Table(6, {{-2, 8}, {0, 10}, {2, 12}, {4, 14}}),
            (std::vector<float>{10, 11, 12, 13, 4, 5}));
  EXPECT_EQ(Table(3, {{0, 10}, {2, 12}, {4, 14}, {6, 16}}), (std::vector<float>{10, 11, 12}));
  EXPECT_EQ(Table(2, {{-3e38f, 0}, {-2e38f, 0}, {-1e38f, 0}, {-1, 0}}), (std::vector<float>{0, 1}));
  EXPECT_EQ(Table(2, {{3e38f, 0}, {3e38f, 0}, {3e38f, 0}, {3e38f, 0}}), (std::vector<float>{0, 1}));
}

TEST(ToneCurveTable, WalkNeverMovesBack) {
  // From 10 back to 0: no segment holds a level.
  EXPECT_EQ(Table(4, {{3, 9}, {2, 9}, {1, 9}, {0, 9}}), (std::vector<float>{0, 1, 2, 3}));
  // The polyline turns back before the last control point is reached: its end ends the walk.
  const std::vector<float> table = Table(40, {{0, 0}, {60, 60}, {-30, -30}, {30, 30}});
  EXPECT_EQ(table[30], 30.0f);
  EXPECT_EQ(table[39], 39.0f);
}

TEST(ToneCurveTable, SumsBeyondTheRangeOfFloatsLeaveTheIdentity) {
  // Halving the curve adds -3e38 twice and 3e38 twice, then one infinity to the other: no level lies
  // between points at infinities and those that are no numbers.
  EXPECT_EQ(Table(3, {{-3e38f, 0}, {-3e38f, 0}, {3e38f, 0}, {3e38f, 0}}),
            (std::vector<float>{0, 1, 2}));
}

TEST(ToneCurveTable, NotANumberLeavesTheIdentity) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (size_t i = 0; i < 4; ++i) {
    std::vector<CurvePoint> ctrl = {{0, 10}, {2, 12}, {4, 14}, {6, 16}};
    ctrl[i].x = nan;
    EXPECT_EQ(Table(4, ctrl), (std::vector<float>{0, 1, 2, 3})) << i;
    ctrl = {{0, 10}, {2, 12}, {4, 14}, {6, 16}};
    ctrl[i].y = nan;
    EXPECT_EQ(Table(4, ctrl), (std::vector<float>{0, 1, 2, 3})) << i;
  }
}

}  // namespace
