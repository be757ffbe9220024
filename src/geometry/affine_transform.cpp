#include "geometry/affine_transform.h"

#include <algorithm>

#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "geometry/quad_mapping.h"
#include "rows/rows.h"

namespace roxe {

int32_t ApplyParameters(const PixelArray& src, PixelArray& dst, const float* parameters,
                        int32_t offset_x, int32_t offset_y, int32_t left, int32_t top,
                        int32_t right, int32_t bottom) {
  if (left >= right || top >= bottom) return 0;
  const int32_t x_begin = std::max(left, 0), x_end = std::min(right, dst.width);
  const int32_t y_begin = std::max(top, 0), y_end = std::min(bottom, dst.height);
  if (x_begin >= x_end || y_begin >= y_end) return 0;
  const int32_t columns = std::min(x_end, columns_24(dst)) - x_begin;
  if (columns <= 0) return 1;  // the rows are too short to hold any of these columns

  const float* p = parameters;
  const ProjectiveSource source = {src.pixels, src.rowBytes, columns_24(src), rows_of(src), p[0],
                                   p[3],       p[6]};
  const float u = static_cast<float>(wrap_add(x_begin, offset_x));
  const float v = static_cast<float>(wrap_add(y_begin, offset_y));
  ProjectiveSums start = {fused(p[1], v, fused(p[0], u, p[2])),
                          fused(p[4], v, fused(p[3], u, p[5])),
                          fused(p[7], v, fused(p[6], u, 1.0f))};

  const RowKernels& rows = overlap_24(src, dst) ? kPlainRows : Rows();
  for (int32_t y = y_begin; y < y_end;) {
    ProjectiveSums starts[kProjectiveBand];
    const int32_t band = std::min(kProjectiveBand, y_end - y);
    // The sums are accumulated, down a column as along a row: multiplying out rounds differently.
    for (int32_t r = 0; r < band; ++r) {
      starts[r] = start;
      start.x += p[1];
      start.y += p[4];
      start.denominator += p[7];
    }
    rows.resample_band(source, starts, row_of(dst, y) + 3 * static_cast<ptrdiff_t>(x_begin),
                       dst.rowBytes, band, columns);
    y += band;
  }
  return 1;
}

}  // namespace roxe

int32_t roxeAffineTransform(const PixelArray* src, PixelArray* dst, Quad* quad, const Quad* dstQuad,
                            PixelRect rect) {
  using namespace roxe;
  if (const int32_t status = roxeVerifyPixelArray(src)) return status;
  if (const int32_t status = roxeVerifyPixelArray(dst)) return status;
  if (!quad) return kRoxeErrParam;
  if (!xrmlIsConvexQuadrilateral(quad)) return kRoxeErrParam;
  if (rect.bottom <= rect.top || rect.right <= rect.left) return kRoxeErrParam;
  if (rect.bottom <= 0 || rect.right <= 0) return kRoxeErrParam;
  if (rect.top >= dst->height || rect.left >= dst->width) return kRoxeErrParam;

  return in_default_environment([&]() -> int32_t {
    Quad corners = {rect.left,  rect.top,    rect.right, rect.top,
                    rect.right, rect.bottom, rect.left,  rect.bottom};
    if (dstQuad)
      corners = *dstQuad;
    else
      SortToAntiClockwise(quad);
    const AffineParameters parameters = GetAffineParameters(quad, &corners);
    if (!parameters) return kRoxeErrParam;
    if (!ApplyParameters(*src, *dst, parameters.get(), 0, 0, rect.left, rect.top, rect.right,
                         rect.bottom))
      return kRoxeErrFailed;
    return kRoxeOK;
  });
}
