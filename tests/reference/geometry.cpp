#include "reference/geometry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "reference/frame.h"

namespace reference {
namespace {

float to_float(int32_t value) { return static_cast<float>(value); }

// The corners of a quadrilateral by number.
std::array<Point, 4> corners_of(const Quad& quad) {
  return {{{quad.x0, quad.y0}, {quad.x1, quad.y1}, {quad.x2, quad.y2}, {quad.x3, quad.y3}}};
}

Quad quad_of(const std::array<Point, 4>& p) {
  return {p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y};
}

// (a - o) x (b - o) in wrapping integers.
int32_t cross(Point o, Point a, Point b) {
  return minus(times(minus(a.x, o.x), minus(b.y, o.y)), times(minus(b.x, o.x), minus(a.y, o.y)));
}

bool strictly_opposite(int32_t a, int32_t b) { return (a > 0 && b < 0) || (a < 0 && b > 0); }

}  // namespace

// -------------------------------------------------------------------------- vectors and matrices

float xrmlGetClosestAngleWithCoorAxis(int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
  int32_t dx = minus(x1, x2);
  int32_t dy = minus(y1, y2);
  if (dx == 0 || dy == 0) return 0.0f;
  if (dy < 0) {
    dx = negative(dx);
    dy = negative(dy);
  }
  if (magnitude(dy) > magnitude(dx)) {
    const float quotient = to_float(dx) / to_float(dy);
    return XRATan(static_cast<double>(quotient));
  }
  if (dx < 0) {
    dx = negative(dx);
    dy = negative(dy);
  }
  const float quotient = -to_float(dy) / to_float(dx);
  return XRATan(static_cast<double>(quotient));
}

int32_t xrmlGetIntersectOfLines(int32_t x0, int32_t y0, int32_t x1, int32_t y1, int32_t x2,
                                int32_t y2, int32_t x3, int32_t y3, Point* out) {
  if (out == nullptr) return 0;
  const float ax = to_float(minus(x1, x0));
  const float ay = to_float(minus(y1, y0));
  const float bx = to_float(minus(x3, x2));
  const float by = to_float(minus(y3, y2));
  const float ex = to_float(minus(x2, x0));
  const float ey = to_float(minus(y2, y0));

  const float ax_by = ax * by;
  const float ay_bx = ay * bx;
  const float denominator = ax_by - ay_bx;
  if (!(std::fabs(static_cast<double>(denominator)) > 1e-5)) return 0;

  const float ex_by = ex * by;
  const float ey_bx = ey * bx;
  const float numerator = ex_by - ey_bx;
  const float t = numerator / denominator;

  const float step_x = t * ax;
  const float step_y = t * ay;
  const float x = to_float(x0) + step_x;
  const float y = to_float(y0) + step_y;
  out->x = truncate(x);
  out->y = truncate(y);
  return 1;
}

float xrmlGetLength2D(int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
  const float dx = to_float(minus(x2, x1));
  const float dy = to_float(minus(y2, y1));
  const float dx2 = dx * dx;
  const float dy2 = dy * dy;
  const float sum = dx2 + dy2;
  return XRSqrt(static_cast<double>(sum));
}

float xrmlGetLength3D(Point3D a, Point3D b) {
  const float dx = b.x - a.x;
  const float dy = b.y - a.y;
  const float dz = b.z - a.z;
  const float dx2 = dx * dx;
  const float dy2 = dy * dy;
  const float dz2 = dz * dz;
  const float sum = (dx2 + dy2) + dz2;
  return XRSqrt(static_cast<double>(sum));
}

float xrmlGetLengthPoint2Place(Point3D p0, Point3D p1, Point3D p2, Point3D p3) {
  const Point3D u = {p1.x - p0.x, p1.y - p0.y, p1.z - p0.z};
  const Point3D v = {p2.x - p0.x, p2.y - p0.y, p2.z - p0.z};
  const Point3D w = {p3.x - p0.x, p3.y - p0.y, p3.z - p0.z};
  const float uy_vz = u.y * v.z, uz_vy = u.z * v.y;
  const float uz_vx = u.z * v.x, ux_vz = u.x * v.z;
  const float ux_vy = u.x * v.y, uy_vx = u.y * v.x;
  const Point3D normal = {uy_vz - uz_vy, uz_vx - ux_vz, ux_vy - uy_vx};

  const float nx2 = normal.x * normal.x;
  const float ny2 = normal.y * normal.y;
  const float nz2 = normal.z * normal.z;
  const float s = (nx2 + ny2) + nz2;
  if (std::fabs(static_cast<double>(s)) <= 1e-5) return 0.0f;

  const float nx_wx = normal.x * w.x;
  const float ny_wy = normal.y * w.y;
  const float nz_wz = normal.z * w.z;
  const float volume = (nx_wx + ny_wy) + nz_wz;
  return std::fabs(volume) / XRSqrt(static_cast<double>(s));
}

int32_t xrmlIsConvexQuadrilateral(const Quad* quad) {
  const std::array<Point, 4> p = corners_of(*quad);
  const int32_t c1 = cross(p[0], p[1], p[2]);
  const int32_t c2 = cross(p[0], p[3], p[2]);
  if (!strictly_opposite(c1, c2)) return 0;
  const int32_t d1 = cross(p[1], p[0], p[3]);
  const int32_t d2 = cross(p[1], p[2], p[3]);
  if (!strictly_opposite(d1, d2)) return 0;
  return 1;
}

int32_t xrmlMatrixInverse(float* dst, const float* src, int32_t n) {
  const auto at = [dst, n](int32_t row, int32_t column) -> float& {
    return dst[static_cast<ptrdiff_t>(row) * n + column];
  };
  for (int32_t i = 0; i < n; ++i)
    for (int32_t j = 0; j < n; ++j) at(i, j) = src[static_cast<ptrdiff_t>(i) * n + j];

  std::vector<int32_t> row_of(static_cast<size_t>(n));
  std::vector<int32_t> column_of(static_cast<size_t>(n));
  for (int32_t k = 0; k < n; ++k) {
    int32_t& pivot_row = row_of[static_cast<size_t>(k)];
    int32_t& pivot_column = column_of[static_cast<size_t>(k)];
    float big = 0.0f;
    for (int32_t i = k; i < n; ++i) {
      for (int32_t j = k; j < n; ++j) {
        if (std::fabs(at(i, j)) > big) {
          big = std::fabs(at(i, j));
          pivot_row = i;
          pivot_column = j;
        }
      }
    }
    if (static_cast<double>(big) + 1.0 == 1.0) return 0;

    if (pivot_row != k)
      for (int32_t j = 0; j < n; ++j) std::swap(at(k, j), at(pivot_row, j));
    if (pivot_column != k)
      for (int32_t i = 0; i < n; ++i) std::swap(at(i, k), at(i, pivot_column));

    const float p = 1.0f / at(k, k);
    at(k, k) = p;
    for (int32_t j = 0; j < n; ++j)
      if (j != k) at(k, j) = at(k, j) * p;
    for (int32_t i = 0; i < n; ++i) {
      if (i == k) continue;
      for (int32_t j = 0; j < n; ++j) {
        if (j == k) continue;
        const float product = at(i, k) * at(k, j);
        at(i, j) = at(i, j) - product;
      }
    }
    for (int32_t i = 0; i < n; ++i)
      if (i != k) at(i, k) = -at(i, k) * p;
  }

  for (int32_t k = n - 1; k >= 0; --k) {
    const int32_t pivot_row = row_of[static_cast<size_t>(k)];
    const int32_t pivot_column = column_of[static_cast<size_t>(k)];
    if (pivot_column != k)
      for (int32_t j = 0; j < n; ++j) std::swap(at(k, j), at(pivot_column, j));
    if (pivot_row != k)
      for (int32_t i = 0; i < n; ++i) std::swap(at(i, k), at(i, pivot_row));
  }
  return 1;
}

int32_t xrmlMatrixMultiply(const float* a, const float* b, float* c, int32_t rows, int32_t n) {
  if (a == nullptr || b == nullptr || c == nullptr) return 0;
  if (rows < 1 || n < 1) return 0;
  for (ptrdiff_t i = 0; i < rows; ++i) {
    for (ptrdiff_t j = 0; j < n; ++j) {
      float sum = 0.0f;
      for (ptrdiff_t k = 0; k < n; ++k)
        sum = fused_multiply_add(a[i * n + k], b[k * rows + j], sum);
      c[i * n + j] = sum;
    }
  }
  return 1;
}

// -------------------------------------------------------------------- rotation and straightening

int32_t roxeRotateImage(const PixelArray* src, int32_t srcCentreX, int32_t srcCentreY, float angle,
                        PixelArray* dst, int32_t dstCentreX, int32_t dstCentreY) {
  const int32_t src_status = reference::roxeVerifyPixelArray(src);
  if (src_status != 0) return src_status;
  const int32_t dst_status = reference::roxeVerifyPixelArray(dst);
  if (dst_status != 0) return dst_status;

  const float c = XRCos(static_cast<double>(angle));
  const float s = XRSin(static_cast<double>(angle));
  const float scx = to_float(srcCentreX);
  const float scy = to_float(srcCentreY);
  const float dcx = to_float(dstCentreX);
  const float dcy = to_float(dstCentreY);
  float map[6];
  map[0] = c;
  map[1] = s;
  map[2] = fused_multiply_add(-s, dcy, fused_multiply_add(-c, dcx, scx));
  map[3] = -s;
  map[4] = c;
  map[5] = fused_multiply_add(-c, dcy, fused_multiply_add(s, dcx, scy));

  if (src->format != 0) return 0;
  reference::RotateImage_RGB24(*src, *dst, map);
  return 0;
}

namespace {

// A position in the source: whole pixels and a fraction in 65536ths.
struct FixedPosition {
  int32_t ix, iy, fx, fy;

  void advance(int32_t step_x, int32_t step_y) {
    fx = plus(fx, step_x);
    fy = plus(fy, step_y);
    if (fx > 65535) {
      fx = minus(fx, 65536);
      ix = plus(ix, 1);
    }
    if (fy > 65535) {
      fy = minus(fy, 65536);
      iy = plus(iy, 1);
    }
    if (fx < 0) {
      fx = plus(fx, 65536);
      ix = minus(ix, 1);
    }
    if (fy < 0) {
      fy = plus(fy, 65536);
      iy = minus(iy, 1);
    }
  }
};

// Splits a coordinate into whole pixels and a fraction that is not negative.
void split(float coordinate, int32_t* whole, int32_t* fraction) {
  *whole = truncate(coordinate);
  const float rest = coordinate - to_float(*whole);
  *fraction = truncate(rest * 65536.0f);
  if (*fraction < 0) {
    *fraction = plus(*fraction, 65536);
    *whole = minus(*whole, 1);
  }
}

}  // namespace

void RotateImage_RGB24(const PixelArray& src, const PixelArray& dst, const float* map) {
  for (int k = 0; k < 6; ++k)
    if (!std::isfinite(map[k])) return;

  FixedPosition row_start;
  split(map[2], &row_start.ix, &row_start.fx);
  split(map[5], &row_start.iy, &row_start.fy);
  const int32_t dxx = truncate(map[0] * 65536.0f);
  const int32_t dyx = truncate(map[3] * 65536.0f);
  const int32_t dxy = truncate(map[1] * 65536.0f);
  const int32_t dyy = truncate(map[4] * 65536.0f);

  const int32_t src_width = columns_inside(src, 3);
  const int32_t dst_width = columns_inside(dst, 3);
  if (src_width == 0 || dst_width == 0) return;

  for (int32_t y = 0; y < dst.height; ++y) {
    FixedPosition at = row_start;
    for (int32_t x = 0; x < dst_width; ++x) {
      if (0 < at.ix && at.ix < src_width - 1 && 0 < at.iy && at.iy < src.height - 1) {
        const int32_t wx = at.fx >> 8;
        const int32_t wy = at.fy >> 8;
        for (int32_t c = 0; c < 3; ++c) {
          const int32_t p00 = channel(src, 3, at.ix, at.iy, c);
          const int32_t p10 = channel(src, 3, at.ix + 1, at.iy, c);
          const int32_t p01 = channel(src, 3, at.ix, at.iy + 1, c);
          const int32_t p11 = channel(src, 3, at.ix + 1, at.iy + 1, c);
          const int32_t sum = (256 - wx) * (256 - wy) * p00 + wx * (256 - wy) * p10 +
                              (256 - wx) * wy * p01 + wx * wy * p11;
          channel(dst, 3, x, y, c) = static_cast<uint8_t>(sum >> 16);
        }
      }
      at.advance(dxx, dyx);
    }
    row_start.advance(dxy, dyy);
  }
}

int32_t roxeuAutoStraightenImage(const PixelArray* src, int32_t x1, int32_t y1, int32_t x2,
                                 int32_t y2, PixelArray* dst) {
  const int32_t half_src_width = src->width >> 1;
  const int32_t half_src_height = src->height >> 1;
  const int32_t half_dst_width = dst->width >> 1;
  const int32_t half_dst_height = dst->height >> 1;
  const float angle = reference::xrmlGetClosestAngleWithCoorAxis(x1, y1, x2, y2);
  if (angle == 0.0f) return 0;
  return reference::roxeRotateImage(src, half_src_width, half_src_height, angle, dst,
                                    half_dst_width, half_dst_height);
}

// ------------------------------------------------------------------------- quadrilateral mapping

void SortToAntiClockwise(Quad* quad) {
  std::array<Point, 4> p = corners_of(*quad);
  const float length02 = reference::xrmlGetLength2D(p[0].x, p[0].y, p[2].x, p[2].y);
  const float length13 = reference::xrmlGetLength2D(p[1].x, p[1].y, p[3].x, p[3].y);

  float s[4], c[4];
  s[0] = to_float(minus(p[0].y, p[2].y)) / length02;
  c[0] = to_float(minus(p[0].x, p[2].x)) / length02;
  s[1] = to_float(minus(p[1].y, p[3].y)) / length13;
  c[1] = to_float(minus(p[1].x, p[3].x)) / length13;
  if (p[0].y == p[2].y) s[0] = 0.0001f;
  if (p[1].y == p[3].y) s[1] = 0.0001f;
  s[2] = -s[0];
  c[2] = -c[0];
  s[3] = -s[1];
  c[3] = -c[1];

  size_t k = 0;
  for (size_t i = 0; i < 4; ++i) {
    if (s[i] < 0.0f || std::isnan(s[i])) {
      if (k != i) {
        std::swap(p[k], p[i]);
        std::swap(c[k], c[i]);
      }
      ++k;
    }
  }

  if (c[0] > c[1]) std::swap(p[0], p[1]);
  if (c[2] < c[3]) std::swap(p[2], p[3]);

  const float product = c[0] * c[1];
  const bool same_side = product >= 0.0f;
  const bool steep = magnitude(minus(p[0].y, p[1].y)) > magnitude(minus(p[0].x, p[1].x));
  if (same_side && steep) {
    if (c[0] >= 0.0f)
      p = {{p[3], p[0], p[1], p[2]}};
    else
      p = {{p[1], p[2], p[3], p[0]}};
  }
  *quad = quad_of(p);
}

System CreateAffineMatrix(const Quad& src, const Quad& dst) {
  const std::array<Point, 4> a = corners_of(src);
  const std::array<Point, 4> b = corners_of(dst);
  System rows = {};
  for (size_t i = 0; i < 4; ++i) {
    const float bx = to_float(b[i].x);
    const float by = to_float(b[i].y);
    rows[i] = {bx,
               by,
               1.0f,
               0.0f,
               0.0f,
               0.0f,
               to_float(times(negative(b[i].x), a[i].x)),
               to_float(times(negative(b[i].y), a[i].x)),
               to_float(a[i].x)};
    rows[4 + i] = {0.0f,
                   0.0f,
                   0.0f,
                   bx,
                   by,
                   1.0f,
                   to_float(times(negative(b[i].x), a[i].y)),
                   to_float(times(negative(b[i].y), a[i].y)),
                   to_float(a[i].y)};
  }
  return rows;
}

AffineParameters CalcParameters(System a) {
  for (size_t k = 0; k <= 6; ++k) {
    if (a[k][k] == 0.0f) {
      size_t r = k + 1;
      while (r <= 7 && a[r][k] == 0.0f) ++r;
      if (r > 7) continue;
      std::swap(a[k], a[r]);
    }
    for (size_t j = k + 1; j <= 7; ++j) {
      if (a[j][k] == 0.0f) continue;
      const float f = a[j][k] / a[k][k];
      for (size_t c = k; c <= 8; ++c) a[j][c] = fused_multiply_add(-f, a[k][c], a[j][c]);
    }
  }

  for (size_t r = 8; r-- > 0;) {
    if (a[r][r] == 0.0f) {
      a[r][8] = 0.0f;
      continue;
    }
    a[r][8] = a[r][8] / a[r][r];
    for (size_t i = 0; i < r; ++i) a[i][8] = fused_multiply_add(-a[r][8], a[i][r], a[i][8]);
  }

  AffineParameters p;
  for (size_t i = 0; i < 8; ++i) p[i] = a[i][8];
  return p;
}

AffineParameters GetAffineParameters(const Quad& src, const Quad& dst) {
  return reference::CalcParameters(reference::CreateAffineMatrix(src, dst));
}

Point PointSrcToDst(int32_t x, int32_t y, const float* p) {
  const float fx = to_float(x);
  const float fy = to_float(y);
  const float a = fused_multiply_add(-fx, p[6], p[0]);
  const float b = fused_multiply_add(-fx, p[7], p[1]);
  const float c = fused_multiply_add(-fy, p[6], p[3]);
  const float d = fused_multiply_add(-fy, p[7], p[4]);
  const float e = fx - p[2];
  const float f = fy - p[5];

  const float bc = b * c;
  const float da = d * a;
  const float ed = e * d;
  const float ec = e * c;
  const float u = fused_multiply_add(f, b, -ed) / (bc - da);
  const float v = fused_multiply_add(f, a, -ec) / (da - bc);
  return {truncate(u), truncate(v)};
}

PixelRect RectSrcToDst(int32_t left, int32_t top, int32_t right, int32_t bottom, const float* p) {
  const Point q[4] = {
      reference::PointSrcToDst(left, top, p), reference::PointSrcToDst(right, top, p),
      reference::PointSrcToDst(right, bottom, p), reference::PointSrcToDst(left, bottom, p)};
  return {std::min({q[0].x, q[1].x, q[2].x, q[3].x}), std::min({q[0].y, q[1].y, q[2].y, q[3].y}),
          std::max({q[0].x, q[1].x, q[2].x, q[3].x}), std::max({q[0].y, q[1].y, q[2].y, q[3].y})};
}

Point GetOrigin(int32_t x, int32_t y, int32_t ox, int32_t oy, float scale) {
  const float scaled_x = to_float(x) / scale;
  const float scaled_y = to_float(y) / scale;
  return {truncate(scaled_x - to_float(ox)), truncate(scaled_y - to_float(oy))};
}

// ---------------------------------------------------------------------- quadrilateral resampling

int32_t roxeAffineTransform(const PixelArray* src, PixelArray* dst, Quad* quad, const Quad* dstQuad,
                            PixelRect rect) {
  const int32_t src_status = reference::roxeVerifyPixelArray(src);
  if (src_status != 0) return src_status;
  const int32_t dst_status = reference::roxeVerifyPixelArray(dst);
  if (dst_status != 0) return dst_status;
  if (quad == nullptr) return 4;
  if (reference::xrmlIsConvexQuadrilateral(quad) == 0) return 4;
  if (!(rect.bottom > rect.top)) return 4;
  if (!(rect.right > rect.left)) return 4;
  if (!(rect.bottom > 0)) return 4;
  if (!(rect.right > 0)) return 4;
  if (!(rect.top < dst->height)) return 4;
  if (!(rect.left < dst->width)) return 4;

  Quad target;
  if (dstQuad == nullptr) {
    reference::SortToAntiClockwise(quad);
    target = {rect.left,  rect.top,    rect.right, rect.top,
              rect.right, rect.bottom, rect.left,  rect.bottom};
  } else {
    target = *dstQuad;
  }

  const AffineParameters p = reference::GetAffineParameters(*quad, target);
  const int32_t drawn = reference::ApplyParameters(*src, *dst, p.data(), 0, 0, rect.left, rect.top,
                                                   rect.right, rect.bottom);
  return drawn == 0 ? 3 : 0;
}

int32_t ApplyParameters(const PixelArray& src, const PixelArray& dst, const float* p,
                        int32_t offsetX, int32_t offsetY, int32_t left, int32_t top, int32_t right,
                        int32_t bottom) {
  if (left >= right || top >= bottom) return 0;
  const int32_t xs = std::max(left, 0);
  const int32_t ys = std::max(top, 0);
  const int32_t xe = std::min(right, dst.width);
  const int32_t ye = std::min(bottom, dst.height);
  if (xs >= xe || ys >= ye) return 0;

  const int32_t src_width = columns_inside(src, 3);
  const int32_t dst_width = columns_inside(dst, 3);
  if (src_width == 0 || dst_width == 0) return 1;

  const float us = to_float(plus(xs, offsetX));
  const float vs = to_float(plus(ys, offsetY));
  float row_d = fused_multiply_add(p[7], vs, fused_multiply_add(p[6], us, 1.0f));
  float row_x = fused_multiply_add(p[1], vs, fused_multiply_add(p[0], us, p[2]));
  float row_y = fused_multiply_add(p[4], vs, fused_multiply_add(p[3], us, p[5]));

  for (int32_t y = ys; y < ye; ++y) {
    float d = row_d;
    float walk_x = row_x;
    float walk_y = row_y;
    for (int32_t x = xs; x < xe && x < dst_width; ++x) {
      const float sx = walk_x / d;
      const float sy = walk_y / d;
      const int32_t ix = truncate(sx);
      const int32_t iy = truncate(sy);
      if (0 <= ix && ix < src_width - 1 && 0 <= iy && src.height > 0 && iy < src.height - 1) {
        const float fx = sx - to_float(ix);
        const float fy = sy - to_float(iy);
        for (int32_t c = 0; c < 3; ++c) {
          const int32_t top_left = channel(src, 3, ix, iy, c);
          const int32_t top_right = channel(src, 3, ix + 1, iy, c);
          const int32_t bottom_left = channel(src, 3, ix, iy + 1, c);
          const int32_t bottom_right = channel(src, 3, ix + 1, iy + 1, c);
          const float upper =
              fused_multiply_add(fx, to_float(top_right - top_left), to_float(top_left));
          const float lower =
              fused_multiply_add(fx, to_float(bottom_right - bottom_left), to_float(bottom_left));
          const float difference = lower - upper;
          const float value = fused_multiply_add(fy, difference, upper);
          channel(dst, 3, x, y, c) = static_cast<uint8_t>(truncate(value) & 255);
        }
      }
      d = d + p[6];
      walk_x = walk_x + p[0];
      walk_y = walk_y + p[3];
    }
    row_d = row_d + p[7];
    row_x = row_x + p[1];
    row_y = row_y + p[4];
  }
  return 1;
}

// --------------------------------------------------------------- perspective distortion correction

int32_t roxeGetPerspectiveDistortionCorrectionSize(Quad* quad, int32_t, int32_t, int32_t,
                                                   int32_t* outWidth, int32_t* outHeight) {
  if (quad == nullptr) return 0;
  std::array<Point, 4> p = corners_of(*quad);
  for (size_t i = 0; i < 4; ++i)
    for (size_t j = i + 1; j < 4; ++j)
      if (p[i].x == p[j].x && p[i].y == p[j].y) return 0;
  for (size_t i = 0; i < 4; ++i) {
    for (size_t j = i + 1; j < 4; ++j) {
      for (size_t k = j + 1; k < 4; ++k) {
        const int32_t first = times(minus(p[i].x, p[j].x), minus(p[i].y, p[k].y));
        const int32_t second = times(minus(p[i].y, p[j].y), minus(p[i].x, p[k].x));
        if (first == second) return 0;
      }
    }
  }
  if (reference::xrmlIsConvexQuadrilateral(quad) == 0) return 0;

  reference::SortToAntiClockwise(quad);
  p = corners_of(*quad);
  const auto edge = [&p](size_t i, size_t j) {
    return reference::xrmlGetLength2D(p[i].x, p[i].y, p[j].x, p[j].y);
  };
  const float horizontal = edge(0, 1) + edge(2, 3);
  const float vertical = edge(1, 2) + edge(0, 3);
  if (outWidth != nullptr) *outWidth = truncate(horizontal) / 2;
  if (outHeight != nullptr) *outHeight = truncate(vertical) / 2;
  return 1;
}

int32_t roxePerspectiveDistortionCorrection(const PixelArray* src, PixelArray* dst, Quad* quad,
                                            int32_t unused1, int32_t unused2, PixelRect rect) {
  int32_t w = 0, h = 0;
  if (reference::roxeGetPerspectiveDistortionCorrectionSize(quad, unused1, unused2, 1, &w, &h) == 0)
    return 4;
  const int32_t rw = minus(rect.right, rect.left);
  const int32_t rh = minus(rect.bottom, rect.top);
  if (times(w, rh) > times(h, rw))
    rect.bottom = plus(rect.top, times(h, rw) / w);
  else
    rect.right = plus(rect.left, times(w, rh) / h);
  return reference::roxeAffineTransform(src, dst, quad, nullptr, rect) == 0 ? 2 : 0;
}

// ------------------------------------------------------------------- destination-point estimation

int32_t GetProjection(int32_t ax, int32_t ay, int32_t bx, int32_t by, int32_t px, int32_t py,
                      Point* result) {
  if (result == nullptr) return 0;
  const float dx = to_float(minus(bx, ax));
  const float dy = to_float(minus(by, ay));
  const float qx = to_float(minus(px, ax));
  const float qy = to_float(minus(py, ay));
  const float dx_qx = dx * qx;
  const float dx_dx = dx * dx;
  const float t = fused_multiply_add(dy, qy, dx_qx) / fused_multiply_add(dy, dy, dx_dx);
  const float step_x = t * dx;
  const float step_y = t * dy;
  result->x = truncate(to_float(ax) + step_x);
  result->y = truncate(to_float(ay) + step_y);
  return 0.0f < t && t < 1.0f ? 1 : 0;
}

void GetAdjustCenter(Point* result, int32_t ax, int32_t ay, int32_t bx, int32_t by) {
  result->x = truncate(to_float(plus(ax, bx)) * 0.5f);
  result->y = truncate(to_float(plus(ay, by)) * 0.5f);
}

namespace {

// A depiction with two vanishing points v1 and v2. Returns the focal value; centre may move.
float lift_two_point(const std::array<Point, 4>& p, Point v1, Point v2, Point* centre,
                     Point3D* points) {
  const auto root_of_distances = [v1, v2](Point h) {
    const float first = reference::xrmlGetLength2D(v1.x, v1.y, h.x, h.y);
    const float second = reference::xrmlGetLength2D(h.x, h.y, v2.x, v2.y);
    const float product = first * second;
    return XRSqrt(static_cast<double>(product));
  };

  Point h;
  if (reference::GetProjection(v1.x, v1.y, v2.x, v2.y, centre->x, centre->y, &h) == 0) {
    reference::GetAdjustCenter(centre, v1.x, v1.y, v2.x, v2.y);
    h = *centre;
  }
  const float r = root_of_distances(h);
  const float d = reference::xrmlGetLength2D(centre->x, centre->y, h.x, h.y);
  float focal;
  if (r > d) {
    const float difference = r - d;
    const float sum = r + d;
    const float product = difference * sum;
    focal = XRSqrt(static_cast<double>(product));
  } else {
    reference::GetAdjustCenter(centre, v1.x, v1.y, v2.x, v2.y);
    h = *centre;
    focal = root_of_distances(h);
  }

  const auto distance = [v1, v2](Point corner) {
    const int32_t first = times(minus(v1.x, corner.x), minus(v2.y, v1.y));
    const int32_t second = times(minus(v2.x, v1.x), minus(v1.y, corner.y));
    return to_float(minus(first, second));
  };
  points[0] = {to_float(p[0].x), to_float(p[0].y), 0.0f};
  for (size_t k = 1; k < 4; ++k) {
    const float t = distance(p[0]) / distance(p[k]);
    points[k].x = fused_multiply_add(t, to_float(minus(p[k].x, centre->x)), to_float(centre->x));
    points[k].y = fused_multiply_add(t, to_float(minus(p[k].y, centre->y)), to_float(centre->y));
    points[k].z = (1.0f - t) * focal;
  }
  return focal;
}

// A depiction whose only vanishing point v is where p0p1 and p2p3 meet.
void lift_one_point(const std::array<Point, 4>& p, Point v, Point* centre, Point3D* points) {
  reference::GetProjection(p[1].x, p[1].y, p[2].x, p[2].y, v.x, v.y, centre);

  const float run_x = to_float(minus(p[0].x, v.x));
  float s;
  if (std::fabs(static_cast<double>(run_x)) > 1e-05)
    s = to_float(minus(p[0].x, p[1].x)) / run_x;
  else
    s = to_float(minus(p[0].y, p[1].y)) / to_float(minus(p[0].y, v.y));

  const auto towards_centre = [s, centre](Point corner) -> Point3D {
    const float step_x = s * to_float(minus(centre->x, corner.x));
    const float step_y = s * to_float(minus(centre->y, corner.y));
    return {to_float(corner.x) + step_x, to_float(corner.y) + step_y, 100.0f * s};
  };
  points[0] = towards_centre(p[0]);
  points[1] = {to_float(p[1].x), to_float(p[1].y), 0.0f};
  points[2] = {to_float(p[2].x), to_float(p[2].y), 0.0f};
  points[3] = towards_centre(p[3]);
}

}  // namespace

int32_t GetDstPoints(Quad* quad, int32_t cx, int32_t cy, Point3D* points, float* camera) {
  std::array<Point, 4> p = corners_of(*quad);
  const auto meet = [&p](size_t a0, size_t a1, size_t b0, size_t b1, Point* out) {
    return reference::xrmlGetIntersectOfLines(p[a0].x, p[a0].y, p[a1].x, p[a1].y, p[b0].x, p[b0].y,
                                              p[b1].x, p[b1].y, out) != 0;
  };
  Point v1 = {0, 0}, v2 = {0, 0};
  const bool has_v1 = meet(0, 1, 2, 3, &v1);
  const bool has_v2 = meet(0, 3, 1, 2, &v2);
  Point centre = {cx, cy};
  float focal = 0.0f;

  if (has_v1 && has_v2) {
    focal = lift_two_point(p, v1, v2, &centre, points);
  } else if (has_v1) {
    focal = 100.0f;
    lift_one_point(p, v1, &centre, points);
  } else if (has_v2) {
    p = {{p[1], p[2], p[3], p[0]}};
    *quad = quad_of(p);
    focal = 100.0f;
    Point3D computed[4];
    lift_one_point(p, v2, &centre, computed);
    points[0] = computed[3];
    points[1] = computed[0];
    points[2] = computed[1];
    points[3] = computed[2];
  }
  camera[0] = to_float(centre.x);
  camera[1] = to_float(centre.y);
  camera[2] = focal;
  return has_v1 || has_v2 ? 1 : 0;
}

}  // namespace reference
