#include "geometry/dst_points.h"

#include <algorithm>
#include <cmath>

#include "frame/numbers.h"
#include "frame/runtime.h"

namespace roxe {
namespace {

constexpr float kFocalLengthOfOnePoint = 100;

float to_float(int32_t value) { return static_cast<float>(value); }
float difference(int32_t a, int32_t b) { return to_float(wrap_sub(a, b)); }

float distance(Point a, Point b) { return xrmlGetLength2D(a.x, a.y, b.x, b.y); }

// Distance of a corner from the vanishing line v1 v2, up to a common factor and sign.
float distance_from_line(Point corner, Point v1, Point v2) {
  return to_float(wrap_sub(wrap_mul(wrap_sub(v1.x, corner.x), wrap_sub(v2.y, v1.y)),
                           wrap_mul(wrap_sub(v2.x, v1.x), wrap_sub(v1.y, corner.y))));
}

// Two vanishing points: the camera sees their directions at a right angle, so that the square of
// its focal length is |v1 foot| |foot v2| - |centre foot|^2, foot being that of the perpendicular
// from the centre onto their line.
Camera lift_two_point(const Point (&p)[4], Point v1, Point v2, Point centre, Point3D* points) {
  Point foot;
  if (!GetProjection(v1.x, v1.y, v2.x, v2.y, centre.x, centre.y, &foot)) {
    GetAdjustCenter(&centre, v1.x, v1.y, v2.x, v2.y);
    foot = centre;
  }
  const float r = XRSqrt(distance(v1, foot) * distance(foot, v2));
  const float d = distance(centre, foot);
  float focal_length;
  if (r > d) {
    focal_length = XRSqrt((r - d) * (r + d));
  } else {
    GetAdjustCenter(&centre, v1.x, v1.y, v2.x, v2.y);
    focal_length = XRSqrt(distance(v1, centre) * distance(centre, v2));
  }

  const float cx = to_float(centre.x), cy = to_float(centre.y);
  const float n0 = distance_from_line(p[0], v1, v2);
  points[0] = {to_float(p[0].x), to_float(p[0].y), 0};
  for (int k = 1; k < 4; ++k) {
    const float t = n0 / distance_from_line(p[k], v1, v2);
    points[k] = {fused(t, difference(p[k].x, centre.x), cx),
                 fused(t, difference(p[k].y, centre.y), cy), (1 - t) * focal_length};
  }
  return {cx, cy, focal_length};
}

// One vanishing point, where the sides 0 1 and 2 3 meet.
Camera lift_one_point(const Point (&p)[4], Point vanishing, Point3D* points) {
  Point centre;
  GetProjection(p[1].x, p[1].y, p[2].x, p[2].y, vanishing.x, vanishing.y, &centre);

  const float across = difference(p[0].x, vanishing.x);
  const bool use_x = std::fabs(static_cast<double>(across)) > 1e-5;
  const float s = use_x ? difference(p[0].x, p[1].x) / across
                        : difference(p[0].y, p[1].y) / difference(p[0].y, vanishing.y);
  const auto pulled_to_centre = [&](Point corner) -> Point3D {
    return {to_float(corner.x) + s * difference(centre.x, corner.x),
            to_float(corner.y) + s * difference(centre.y, corner.y), kFocalLengthOfOnePoint * s};
  };
  points[0] = pulled_to_centre(p[0]);
  points[1] = {to_float(p[1].x), to_float(p[1].y), 0};
  points[2] = {to_float(p[2].x), to_float(p[2].y), 0};
  points[3] = pulled_to_centre(p[3]);
  return {to_float(centre.x), to_float(centre.y), kFocalLengthOfOnePoint};
}

}  // namespace

int32_t GetProjection(int32_t ax, int32_t ay, int32_t bx, int32_t by, int32_t px, int32_t py,
                      Point* foot) {
  if (!foot) return 0;
  const float dx = difference(bx, ax), dy = difference(by, ay);
  const float qx = difference(px, ax), qy = difference(py, ay);
  const float t = fused(dy, qy, dx * qx) / fused(dy, dy, dx * dx);
  *foot = {truncate_to_int32(to_float(ax) + t * dx), truncate_to_int32(to_float(ay) + t * dy)};
  return t > 0 && t < 1 ? 1 : 0;
}

void GetAdjustCenter(Point* centre, int32_t ax, int32_t ay, int32_t bx, int32_t by) {
  *centre = {truncate_to_int32(to_float(wrap_add(ax, bx)) * 0.5f),
             truncate_to_int32(to_float(wrap_add(ay, by)) * 0.5f)};
}

int32_t GetDstPoints(Quad* quad, int32_t cx, int32_t cy, Point3D* points, Camera* camera) {
  const Quad q = *quad;
  Point v1, v2;
  const int32_t has_v1 =
      xrmlGetIntersectOfLines(q.x0, q.y0, q.x1, q.y1, q.x2, q.y2, q.x3, q.y3, &v1);
  const int32_t has_v2 =
      xrmlGetIntersectOfLines(q.x0, q.y0, q.x3, q.y3, q.x1, q.y1, q.x2, q.y2, &v2);

  const Point p[4] = {{q.x0, q.y0}, {q.x1, q.y1}, {q.x2, q.y2}, {q.x3, q.y3}};
  if (has_v1 && has_v2) {
    *camera = lift_two_point(p, v1, v2, {cx, cy}, points);
    return 1;
  }
  if (has_v1) {
    *camera = lift_one_point(p, v1, points);
    return 1;
  }
  if (has_v2) {
    const Point turned[4] = {p[1], p[2], p[3], p[0]};
    *quad = {q.x1, q.y1, q.x2, q.y2, q.x3, q.y3, q.x0, q.y0};
    *camera = lift_one_point(turned, v2, points);
    std::rotate(points, points + 3, points + 4);
    return 1;
  }
  *camera = {to_float(cx), to_float(cy), 0};
  return 0;
}

}  // namespace roxe
