#include "geometry/dst_points.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace roxe;

void ExpectPoint(const Point3D& point, float x, float y, float z) {
  EXPECT_FLOAT_EQ(point.x, x);
  EXPECT_FLOAT_EQ(point.y, y);
  EXPECT_FLOAT_EQ(point.z, z);
}

void ExpectCamera(const Camera& camera, float x, float y, float focal_length) {
  EXPECT_EQ(camera.centre_x, x);
  EXPECT_EQ(camera.centre_y, y);
  EXPECT_EQ(camera.focal_length, focal_length);
}

std::vector<int32_t> Corners(const Quad& q) {
  return {q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3};
}

TEST(GetProjection, FootOfThePerpendicular) {
  Point foot = {-1, -1};
  EXPECT_EQ(GetProjection(0, 0, 10, 0, 3, 5, &foot), 1);
  EXPECT_EQ(foot.x, 3);
  EXPECT_EQ(foot.y, 0);
  EXPECT_EQ(GetProjection(0, 0, -10, -10, -3, 0, &foot), 1);  // (-1.5, -1.5)
  EXPECT_EQ(foot.x, -1);
  EXPECT_EQ(foot.y, -1);
}

TEST(GetProjection, OutsideTheSegmentIsWrittenButNotCounted) {
  Point foot = {-1, -1};
  EXPECT_EQ(GetProjection(0, 0, 10, 0, 23, 5, &foot), 0);
  EXPECT_EQ(foot.x, 23);
  EXPECT_EQ(GetProjection(0, 0, 10, 0, 0, 5, &foot), 0);
  EXPECT_EQ(foot.x, 0);
  EXPECT_EQ(GetProjection(0, 0, 10, 0, 10, 5, &foot), 0);
  EXPECT_EQ(foot.x, 10);
}

TEST(GetProjection, LineOfOnePointIsNotANumber) {
  Point foot = {0, 0};
  EXPECT_EQ(GetProjection(4, 4, 4, 4, 9, 9, &foot), 0);
  EXPECT_EQ(foot.x, INT32_MIN);
  EXPECT_EQ(foot.y, INT32_MIN);
  EXPECT_EQ(GetProjection(0, 0, 10, 0, 3, 5, nullptr), 0);
}

TEST(GetAdjustCenter, MidpointTowardZero) {
  Point centre;
  GetAdjustCenter(&centre, -3, 0, 0, 5);
  EXPECT_EQ(centre.x, -1);
  EXPECT_EQ(centre.y, 2);
  GetAdjustCenter(&centre, INT32_MAX, 0, 1, 0);  // the sum wraps to -2^31
  EXPECT_EQ(centre.x, -1073741824);
}

// Sides 0 1 and 2 3 meet at (-100, 0), sides 0 3 and 1 2 at (100, 0).
const Quad kTwoPoint = {0, 100, 50, 150, 0, 300, -50, 150};

TEST(GetDstPoints, TwoVanishingPoints) {
  // The centre's foot (0, 0) is 100 from both points and 60 away: f = sqrt(40 * 160) = 80.
  // Corner k lies 100, 150, 300, 150 below the vanishing line: t = 2/3, 1/3, 2/3.
  Quad quad = kTwoPoint;
  Point3D points[4];
  Camera camera;
  EXPECT_EQ(GetDstPoints(&quad, 0, 60, points, &camera), 1);
  ExpectCamera(camera, 0, 60, 80);
  ExpectPoint(points[0], 0, 100, 0);
  ExpectPoint(points[1], 100.0f / 3, 120, 80.0f / 3);
  ExpectPoint(points[2], 0, 140, 160.0f / 3);
  ExpectPoint(points[3], -100.0f / 3, 120, 80.0f / 3);
  EXPECT_EQ(Corners(quad), Corners(kTwoPoint));
}

TEST(GetDstPoints, CentreMovesBetweenTheVanishingPoints) {
  // Its foot is outside the segment; or it is as far away as the vanishing points, or farther.
  for (const Point centre : {Point{500, 60}, Point{0, 100}, Point{0, 150}}) {
    Quad quad = kTwoPoint;
    Point3D points[4];
    Camera camera;
    EXPECT_EQ(GetDstPoints(&quad, centre.x, centre.y, points, &camera), 1);
    ExpectCamera(camera, 0, 0, 100);
    ExpectPoint(points[0], 0, 100, 0);
    ExpectPoint(points[1], 100.0f / 3, 100, 100.0f / 3);
    ExpectPoint(points[2], 0, 100, 200.0f / 3);
    ExpectPoint(points[3], -100.0f / 3, 100, 100.0f / 3);
  }
}

TEST(GetDstPoints, OneVanishingPoint) {
  // Sides 0 1 and 2 3 meet at (50, 0), whose foot on side 1 2 is (50, 100); s = 25 / -25.
  Quad quad = {25, 50, 0, 100, 100, 100, 75, 50};
  const Quad given = quad;
  Point3D points[4];
  Camera camera;
  EXPECT_EQ(GetDstPoints(&quad, 7, 8, points, &camera), 1);
  ExpectCamera(camera, 50, 100, 100);
  ExpectPoint(points[0], 0, 0, -100);
  ExpectPoint(points[1], 0, 100, 0);
  ExpectPoint(points[2], 100, 100, 0);
  ExpectPoint(points[3], 100, 0, -100);
  EXPECT_EQ(Corners(quad), Corners(given));
}

TEST(GetDstPoints, OtherSidesMeetingRelabelTheCorners) {
  // The same trapezoid begun one corner earlier: points come back in the order given here.
  Quad quad = {75, 50, 25, 50, 0, 100, 100, 100};
  Point3D points[4];
  Camera camera;
  EXPECT_EQ(GetDstPoints(&quad, 7, 8, points, &camera), 1);
  ExpectCamera(camera, 50, 100, 100);
  ExpectPoint(points[0], 100, 0, -100);
  ExpectPoint(points[1], 0, 0, -100);
  ExpectPoint(points[2], 0, 100, 0);
  ExpectPoint(points[3], 100, 100, 0);
  EXPECT_EQ(Corners(quad), (std::vector<int32_t>{25, 50, 0, 100, 100, 100, 75, 50}));
}

TEST(GetDstPoints, ScaleComesFromYWhereTheFirstSideIsPlumb) {
  // Sides 0 1 (x = 0) and 2 3 meet at (0, 0); s = (50 - 100) / 50.
  Quad quad = {0, 50, 0, 100, 100, 100, 50, 50};
  Point3D points[4];
  Camera camera;
  EXPECT_EQ(GetDstPoints(&quad, 7, 8, points, &camera), 1);
  ExpectCamera(camera, 0, 100, 100);
  ExpectPoint(points[0], 0, 0, -100);
  ExpectPoint(points[1], 0, 100, 0);
  ExpectPoint(points[2], 100, 100, 0);
  ExpectPoint(points[3], 100, 0, -100);
}

TEST(GetDstPoints, ParallelogramHasNoVanishingPoint) {
  Quad quad = {0, 0, 10, 0, 15, 10, 5, 10};
  Point3D points[4] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
  Camera camera = {};
  EXPECT_EQ(GetDstPoints(&quad, 7, 8, points, &camera), 0);
  ExpectCamera(camera, 7, 8, 0);
  ExpectPoint(points[0], 1, 2, 3);
  ExpectPoint(points[1], 4, 5, 6);
  ExpectPoint(points[2], 7, 8, 9);
  ExpectPoint(points[3], 10, 11, 12);
}

}  // namespace
