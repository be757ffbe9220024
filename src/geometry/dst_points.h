// Estimates where the corners of a rectangle lie in space from its picture in perspective. No
// exported operation reaches it.
#ifndef ROXE_GEOMETRY_DST_POINTS_H_
#define ROXE_GEOMETRY_DST_POINTS_H_

#include <cstdint>

#include "geometry/xrml.h"
#include "roxe.h"

namespace roxe {

// The principal point and the focal length, in pixels.
struct Camera {
  float centre_x, centre_y, focal_length;
};

// Foot of the perpendicular from p onto the line a b, truncated toward zero. Returns 1 if it lies
// strictly between a and b, else 0; it is written either way. 0 without writing for a null foot.
int32_t GetProjection(int32_t ax, int32_t ay, int32_t bx, int32_t by, int32_t px, int32_t py,
                      Point* foot);

// Midpoint of a and b, truncated toward zero.
void GetAdjustCenter(Point* centre, int32_t ax, int32_t ay, int32_t bx, int32_t by);

// Lifts the four corners into space on a common plane, by the vanishing points of opposite sides
// and a camera whose principal point is (cx, cy) where that is possible; camera receives what was
// used. With one vanishing point only, the corners of quad may be relabelled in place so that sides
// 0 1 and 2 3 meet; points keep the caller's order. Returns 1, or 0 for a parallelogram, whose
// points are not written.
int32_t GetDstPoints(Quad* quad, int32_t cx, int32_t cy, Point3D* points, Camera* camera);

}  // namespace roxe

#endif  // ROXE_GEOMETRY_DST_POINTS_H_
