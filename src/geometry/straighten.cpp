#include "frame/default_environment.h"
#include "geometry/xrml.h"
#include "roxe.h"

// The records are read before any check.
int32_t roxeuAutoStraightenImage(const PixelArray* src, int32_t x1, int32_t y1, int32_t x2,
                                 int32_t y2, PixelArray* dst) {
  const int32_t src_x = src->width >> 1, src_y = src->height >> 1;
  const int32_t dst_x = dst->width >> 1, dst_y = dst->height >> 1;
  return roxe::in_default_environment([&]() -> int32_t {
    const float angle = roxe::xrmlGetClosestAngleWithCoorAxis(x1, y1, x2, y2);
    if (angle == 0) return kRoxeOK;  // already level: nothing is copied
    return roxeRotateImage(src, src_x, src_y, angle, dst, dst_x, dst_y);
  });
}
