#include "geometry/rotate.h"

#include <cmath>

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

}  // namespace

void RotateImage_RGB24(const PixelArray& src, PixelArray& dst, const float* map) {
  const int32_t columns = columns_24(dst), height = rows_of(dst);
  if (columns == 0 || !all_finite(map)) return;
  const RowKernels& rows = overlap_24(src, dst) ? kPlainRows : Rows();

  RotationWalk walk;
  walk.src = src.pixels;
  walk.src_stride = src.rowBytes;
  walk.src_columns = columns_24(src);
  walk.src_rows = rows_of(src);
  walk.x = to_fixed(map[2]);
  walk.y = to_fixed(map[5]);
  walk.step_x = step_16_16(map[0]);
  walk.step_y = step_16_16(map[3]);
  // Truncated steps are accumulated, here as along a row: positions drift by up to 1/65536 a step.
  const int32_t row_step_x = step_16_16(map[1]), row_step_y = step_16_16(map[4]);
  for (int32_t y = 0; y < height; ++y) {
    rows.rotate(walk, row_of(dst, y), columns);
    advance(walk.x, row_step_x);
    advance(walk.y, row_step_y);
  }
}

}  // namespace roxe

int32_t roxeRotateImage(const PixelArray* src, int32_t srcCentreX, int32_t srcCentreY, float angle,
                        PixelArray* dst, int32_t dstCentreX, int32_t dstCentreY) {
  using namespace roxe;
  if (const int32_t status = roxeVerifyPixelArray(src)) return status;
  if (const int32_t status = roxeVerifyPixelArray(dst)) return status;
  if (src->format != kRoxeFormatRGB24) return kRoxeOK;

  // The inverse rotation; the destination centre maps onto the source centre.
  const float c = XRCos(angle), s = XRSin(angle);
  const float src_x = static_cast<float>(srcCentreX), src_y = static_cast<float>(srcCentreY);
  const float dst_x = static_cast<float>(dstCentreX), dst_y = static_cast<float>(dstCentreY);
  const float map[6] = {c,  s, fused(-s, dst_y, fused(-c, dst_x, src_x)),
                        -s, c, fused(-c, dst_y, fused(s, dst_x, src_y))};
  RotateImage_RGB24(*src, *dst, map);
  return kRoxeOK;
}
