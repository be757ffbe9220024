#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "geometry/xrml.h"
#include "geometry/quad_mapping.h"
#include "roxe.h"

namespace roxe {
namespace {

// Two points in the same place lie on one line with any third.
bool on_one_line(Point a, Point b, Point c) {
  return wrap_mul(wrap_sub(a.x, b.x), wrap_sub(a.y, c.y)) ==
         wrap_mul(wrap_sub(a.y, b.y), wrap_sub(a.x, c.x));
}

bool three_on_one_line(const Point (&p)[4]) {
  return on_one_line(p[0], p[1], p[2]) || on_one_line(p[0], p[1], p[3]) ||
         on_one_line(p[0], p[2], p[3]) || on_one_line(p[1], p[2], p[3]);
}

// Half the sum of the edges a b and c d, rounded down twice.
int32_t mean_edge(Point a, Point b, Point c, Point d) {
  const float sum = xrmlGetLength2D(a.x, a.y, b.x, b.y) + xrmlGetLength2D(c.x, c.y, d.x, d.y);
  return truncate_to_int32(sum) / 2;
}

}  // namespace
}  // namespace roxe

int32_t roxeGetPerspectiveDistortionCorrectionSize(Quad* quad, int32_t, int32_t, int32_t,
                                                   int32_t* outWidth, int32_t* outHeight) {
  using namespace roxe;
  if (!quad) return 0;
  const Point given[4] = {
      {quad->x0, quad->y0}, {quad->x1, quad->y1}, {quad->x2, quad->y2}, {quad->x3, quad->y3}};
  if (three_on_one_line(given)) return 0;
  if (!xrmlIsConvexQuadrilateral(quad)) return 0;

  in_default_environment([&] {
    SortToAntiClockwise(quad);
    const Point p[4] = {
        {quad->x0, quad->y0}, {quad->x1, quad->y1}, {quad->x2, quad->y2}, {quad->x3, quad->y3}};
    if (outWidth) *outWidth = mean_edge(p[0], p[1], p[2], p[3]);
    if (outHeight) *outHeight = mean_edge(p[1], p[2], p[0], p[3]);
  });
  return 1;
}

int32_t roxePerspectiveDistortionCorrection(const PixelArray* src, PixelArray* dst, Quad* quad,
                                            int32_t unused1, int32_t unused2, PixelRect rect) {
  using namespace roxe;
  int32_t width, height;
  if (!roxeGetPerspectiveDistortionCorrectionSize(quad, unused1, unused2, 1, &width, &height))
    return kRoxeErrParam;

  // Fits width : height into the rectangle; the top left corner stays. Neither size is zero.
  const int32_t rect_width = wrap_sub(rect.right, rect.left);
  const int32_t rect_height = wrap_sub(rect.bottom, rect.top);
  const int32_t height_needed = wrap_mul(height, rect_width);
  const int32_t width_needed = wrap_mul(width, rect_height);
  if (width_needed > height_needed)
    rect.bottom = wrap_add(rect.top, height_needed / width);
  else
    rect.right = wrap_add(rect.left, width_needed / height);

  // The corners are sorted once more in there. 2 is success and 0 is failure.
  return roxeAffineTransform(src, dst, quad, nullptr, rect) == kRoxeOK ? 2 : 0;
}
