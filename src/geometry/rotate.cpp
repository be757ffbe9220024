#include "geometry/rotate.h"

#include <algorithm>
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
bool is_regular(const RotationWalk& walk, int32_t row_step_x, int32_t row_step_y) {
  return is_fraction(walk.x.fraction) && is_fraction(walk.y.fraction) && is_step(walk.step_x) &&
         is_step(walk.step_y) && is_step(row_step_x) && is_step(row_step_y);
}

bool is_steeper(const RotationWalk& walk, float slope) {
  return std::abs(static_cast<float>(walk.step_y)) >
         slope * std::abs(static_cast<float>(walk.step_x));
}

// Columns of the destination that are handled before moving on: the steeper the walk, the more rows
// of the source a row of the destination crosses, and these are to stay in the first cache.
int32_t strip_width(const RotationWalk& walk) { return is_steeper(walk, 0.25f) ? 512 : 1024; }

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
  const int32_t row_step_x = step_16_16(map[1]), row_step_y = step_16_16(map[4]);

  // Where pixels are read that were written before, and where positions need more than one carry a
  // step, only the plain row is right, over whole rows in their order.
  const bool in_order = overlap_24(src, dst) || !is_regular(walk, row_step_x, row_step_y);
  const RowKernels& rows = in_order ? kPlainRows : Rows();
  const int32_t strip = in_order ? columns : strip_width(walk);
  const int64_t rows_ahead = is_steeper(walk, 0.25f) ? 24 : 16;
  walk.ahead =
      (rows_ahead * row_step_y >> 16) * walk.src_stride + (rows_ahead * row_step_x >> 16) * 3;
  walk.dst_ahead = ptrdiff_t{4} * dst.rowBytes;
  const bool is_steep = is_steeper(walk, 1.5f);

  for (int32_t x = 0; x < columns; x += strip) {
    const int32_t count = std::min(strip, columns - x);
    RotationWalk row = walk;
    // Truncated steps are accumulated: positions drift by up to 1/65536 a step.
    for (int32_t y = 0; y < height; ++y) {
      row.ahead_lane = is_steep ? y & 7 : 0;
      rows.rotate(row, row_of(dst, y) + 3 * static_cast<ptrdiff_t>(x), count);
      advance(row.x, row_step_x);
      advance(row.y, row_step_y);
    }
    walk.x = advanced(walk.x, walk.step_x, count);
    walk.y = advanced(walk.y, walk.step_y, count);
  }
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
