#include "geometry/xrml.h"

#include <algorithm>
#include <cmath>

#include "frame/numbers.h"
#include "frame/runtime.h"

namespace roxe {
namespace {

constexpr double kNearlyZero = 1e-5;

float difference(int32_t a, int32_t b) { return static_cast<float>(wrap_sub(a, b)); }

Point3D minus(Point3D a, Point3D b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }

Point3D cross(Point3D a, Point3D b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

float dot(Point3D a, Point3D b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// Twice the signed area of the triangle a, b, c.
int32_t doubled_area(Point a, Point b, Point c) {
  return wrap_sub(wrap_mul(wrap_sub(b.x, a.x), wrap_sub(c.y, a.y)),
                  wrap_mul(wrap_sub(c.x, a.x), wrap_sub(b.y, a.y)));
}

bool strictly_opposite(int32_t a, int32_t b) { return (a > 0 && b < 0) || (a < 0 && b > 0); }

void swap_rows(float* m, int32_t n, int32_t a, int32_t b) {
  for (int32_t j = 0; j < n; ++j) std::swap(m[a * n + j], m[b * n + j]);
}

void swap_columns(float* m, int32_t n, int32_t a, int32_t b) {
  for (int32_t i = 0; i < n; ++i) std::swap(m[i * n + a], m[i * n + b]);
}

}  // namespace

float xrmlGetClosestAngleWithCoorAxis(int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
  int32_t dx = wrap_sub(x1, x2), dy = wrap_sub(y1, y2);
  if (dx == 0 || dy == 0) return 0;
  const auto negate_both = [&] {
    dx = wrap_sub(0, dx);
    dy = wrap_sub(0, dy);
  };
  if (dy < 0) negate_both();
  // Either quotient is rounded to single precision before the arc tangent.
  if (magnitude(dy) > magnitude(dx)) {
    const float slope = static_cast<float>(dx) / static_cast<float>(dy);
    return XRATan(slope);
  }
  if (dx < 0) negate_both();
  // -dy as a float: both may still be -2^31, of which the integer is its own negation.
  const float slope = -static_cast<float>(dy) / static_cast<float>(dx);
  return XRATan(slope);
}

int32_t xrmlGetIntersectOfLines(int32_t x0, int32_t y0, int32_t x1, int32_t y1, int32_t x2,
                                int32_t y2, int32_t x3, int32_t y3, Point* out) {
  if (!out) return 0;
  const float ax = difference(x1, x0), ay = difference(y1, y0);
  const float bx = difference(x3, x2), by = difference(y3, y2);
  const float ex = difference(x2, x0), ey = difference(y2, y0);
  const float denominator = ax * by - ay * bx;
  if (!(std::fabs(static_cast<double>(denominator)) > kNearlyZero)) return 0;

  const float t = (ex * by - ey * bx) / denominator;
  out->x = truncate_to_int32(static_cast<float>(x0) + t * ax);
  out->y = truncate_to_int32(static_cast<float>(y0) + t * ay);
  return 1;
}

float xrmlGetLength2D(int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
  const float dx = difference(x2, x1), dy = difference(y2, y1);
  const float squares = dx * dx + dy * dy;
  return XRSqrt(squares);
}

float xrmlGetLength3D(Point3D a, Point3D b) {
  const Point3D d = minus(b, a);
  return XRSqrt(dot(d, d));
}

float xrmlGetLengthPoint2Place(Point3D p0, Point3D p1, Point3D p2, Point3D p3) {
  const Point3D normal = cross(minus(p1, p0), minus(p2, p0));
  const float squares = dot(normal, normal);
  if (std::fabs(static_cast<double>(squares)) <= kNearlyZero) return 0;
  return std::fabs(dot(normal, minus(p3, p0))) / XRSqrt(squares);
}

int32_t xrmlIsConvexQuadrilateral(const Quad* quad) {
  const Point p0 = {quad->x0, quad->y0}, p1 = {quad->x1, quad->y1};
  const Point p2 = {quad->x2, quad->y2}, p3 = {quad->x3, quad->y3};
  // Each diagonal strictly separates the two other corners.
  if (!strictly_opposite(doubled_area(p0, p1, p2), doubled_area(p0, p3, p2))) return 0;
  if (!strictly_opposite(doubled_area(p1, p0, p3), doubled_area(p1, p2, p3))) return 0;
  return 1;
}

// Gauss-Jordan elimination in place with full pivoting.
int32_t xrmlMatrixInverse(float* dst, const float* src, int32_t n) {
  if (n < 0) return 0;
  const size_t order = static_cast<size_t>(n);
  if (dst != src) XRMemCpy(dst, src, order * order * sizeof(float));
  const Block<int32_t> pivots = make_block<int32_t>(2 * order);
  if (!pivots) return 0;
  int32_t* row_of_pivot = pivots.get();
  int32_t* column_of_pivot = row_of_pivot + n;

  for (int32_t k = 0; k < n; ++k) {
    float largest = 0;
    for (int32_t i = k; i < n; ++i) {
      for (int32_t j = k; j < n; ++j) {
        if (!(std::fabs(dst[i * n + j]) > largest)) continue;
        largest = std::fabs(dst[i * n + j]);
        row_of_pivot[k] = i;
        column_of_pivot[k] = j;
      }
    }
    if (static_cast<double>(largest) + 1.0 == 1.0) return 0;
    if (row_of_pivot[k] != k) swap_rows(dst, n, k, row_of_pivot[k]);
    if (column_of_pivot[k] != k) swap_columns(dst, n, k, column_of_pivot[k]);

    const float reciprocal = 1 / dst[k * n + k];
    dst[k * n + k] = reciprocal;
    for (int32_t j = 0; j < n; ++j)
      if (j != k) dst[k * n + j] *= reciprocal;
    for (int32_t i = 0; i < n; ++i) {
      if (i == k) continue;
      for (int32_t j = 0; j < n; ++j)
        if (j != k) dst[i * n + j] -= dst[i * n + k] * dst[k * n + j];
    }
    for (int32_t i = 0; i < n; ++i)
      if (i != k) dst[i * n + k] = -dst[i * n + k] * reciprocal;
  }

  // Exchanged rows come back as columns, exchanged columns as rows, in reverse order.
  for (int32_t k = n - 1; k >= 0; --k) {
    if (column_of_pivot[k] != k) swap_rows(dst, n, k, column_of_pivot[k]);
    if (row_of_pivot[k] != k) swap_columns(dst, n, k, row_of_pivot[k]);
  }
  return 1;
}

int32_t xrmlMatrixMultiply(const float* a, const float* b, float* c, int32_t rows, int32_t n) {
  if (!a || !b || !c || rows < 1 || n < 1) return 0;
  for (int32_t i = 0; i < rows; ++i) {
    for (int32_t j = 0; j < n; ++j) {
      float sum = 0;
      for (int32_t k = 0; k < n; ++k) sum = fused(a[i * n + k], b[k * rows + j], sum);
      c[i * n + j] = sum;
    }
  }
  return 1;
}

}  // namespace roxe
