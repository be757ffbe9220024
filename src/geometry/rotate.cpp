#include "geometry/rotate.h"

#include <cmath>

#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "frame/runtime.h"
#include "rows/rows.h"

namespace roxe {
namespace {

// Splits a coordinate into pixels and 16.16 fraction; a negative one is rounded down.
FixedCoordinate to_fixed(float value) {
  FixedCoordinate fixed;
  fixed.whole = truncate_to_int32(value);
  fixed.fraction = truncate_to_int32((value - static_cast<float>(fixed.whole)) * 65536.0f);
  if (fixed.fraction < 0) {
    fixed.fraction = wrap_add(fixed.fraction, 65536);
    fixed.whole = wrap_sub(fixed.whole, 1);
  }
  return fixed;
}

int32_t step_16_16(float value) { return truncate_to_int32(value * 65536.0f); }

bool all_finite(const float* map) {
  for (int k = 0; k < 6; ++k)
    if (!std::isfinite(map[k])) return false;
  return true;
}

bool is_fraction(int32_t value) { return 0 <= value && value <= 65535; }
bool is_step(int32_t value) { return -65536 <= value && value <= 65536; }

// Whether one carry a step keeps every fraction a fraction.
bool is_regular(const RotationWalk& walk) {
  return is_fraction(walk.x.fraction) && is_fraction(walk.y.fraction) && is_step(walk.step_x) &&
         is_step(walk.step_y) && is_step(walk.row_step_x) && is_step(walk.row_step_y);
}

}  // namespace

void RotateImage_RGB24(const PixelArray& src, PixelArray& dst, const float* map) {
  const int32_t columns = columns_24(dst), height = rows_of(dst);
  if (columns == 0 || !all_finite(map)) return;

  RotationWalk walk = {};
  walk.src = src.pixels;
  walk.src_stride = src.rowBytes;
  walk.src_columns = columns_24(src);
  walk.src_rows = rows_of(src);
  walk.x = to_fixed(map[2]);
  walk.y = to_fixed(map[5]);
  walk.step_x = step_16_16(map[0]);
  walk.step_y = step_16_16(map[3]);
  // Truncated steps are accumulated: positions drift by up to 1/65536 a step.
  walk.row_step_x = step_16_16(map[1]);
  walk.row_step_y = step_16_16(map[4]);

  // Where pixels are read that were written before, and where positions need more than one carry a
  // step, only the plain rows are right, in their order.
  const bool plain = overlap_24(src, dst) || !is_regular(walk);
  const RowKernels& rows = plain ? kPlainRows : Rows();
  rows.rotate(walk, row_of(dst, 0), dst.rowBytes, height, columns);
}

}  // namespace roxe

int32_t roxeRotateImage(const PixelArray* src, int32_t srcCentreX, int32_t srcCentreY, float angle,
                        PixelArray* dst, int32_t dstCentreX, int32_t dstCentreY) {
  using namespace roxe;
  if (const int32_t status = roxeVerifyPixelArray(src)) return status;
  if (const int32_t status = roxeVerifyPixelArray(dst)) return status;
  if (src->format != kRoxeFormatRGB24) return kRoxeOK;

  in_default_environment([&] {
    // The inverse rotation; the destination centre maps onto the source centre.
    const float c = XRCos(angle), s = XRSin(angle);
    const float src_x = static_cast<float>(srcCentreX), src_y = static_cast<float>(srcCentreY);
    const float dst_x = static_cast<float>(dstCentreX), dst_y = static_cast<float>(dstCentreY);
    const float map[6] = {c,  s, fused(-s, dst_y, fused(-c, dst_x, src_x)),
                          -s, c, fused(-c, dst_y, fused(s, dst_x, src_y))};
    RotateImage_RGB24(*src, *dst, map);
  });
  return kRoxeOK;
}
