#include "geometry/quad_mapping.h"

#include <algorithm>

#include "frame/numbers.h"

namespace roxe {
namespace {

constexpr int kUnknowns = 8;
constexpr int kColumns = kUnknowns + 1;  // the right-hand side is the last

// Counts the first end of a level diagonal as the lower one and the second as the upper one.
constexpr float kLevelDiagonal = 0.0001f;

void fill_row(float* row, Point src, Point dst, bool is_x) {
  const int32_t value = is_x ? src.x : src.y;
  float* numerator = is_x ? row : row + 3;
  numerator[0] = static_cast<float>(dst.x);
  numerator[1] = static_cast<float>(dst.y);
  numerator[2] = 1;
  // The products are formed in integers that wrap.
  row[6] = static_cast<float>(wrap_mul(wrap_sub(0, dst.x), value));
  row[7] = static_cast<float>(wrap_mul(wrap_sub(0, dst.y), value));
  row[8] = static_cast<float>(value);
}

// Brings a row whose entry in column k is not zero into place k: the first one, not the largest.
// Returns false if there is none.
bool bring_pivot(float** rows, int k) {
  for (int r = k; r < kUnknowns; ++r) {
    if (rows[r][k] == 0) continue;
    std::swap(rows[k], rows[r]);
    return true;
  }
  return false;
}

}  // namespace

void SortToAntiClockwise(Quad* quad) {
  Point p[4] = {
      {quad->x0, quad->y0}, {quad->x1, quad->y1}, {quad->x2, quad->y2}, {quad->x3, quad->y3}};
  // Sine and cosine of the direction in which each corner lies from its diagonal partner.
  float sine[4], cosine[4];
  for (int i = 0; i < 2; ++i) {
    const Point a = p[i], b = p[i + 2];
    const float length = xrmlGetLength2D(a.x, a.y, b.x, b.y);
    sine[i] = a.y == b.y ? kLevelDiagonal : static_cast<float>(wrap_sub(a.y, b.y)) / length;
    cosine[i] = static_cast<float>(wrap_sub(a.x, b.x)) / length;
    sine[i + 2] = -sine[i];
    cosine[i + 2] = -cosine[i];
  }

  // The two upper corners come first. Sines stay where they are: they are not looked at again.
  int uppers = 0;
  for (int i = 0; i < 4; ++i) {
    if (sine[i] >= 0) continue;  // NaN counts as upper
    std::swap(p[uppers], p[i]);
    std::swap(cosine[uppers], cosine[i]);
    ++uppers;
  }
  // From here on the cosines stay too.
  if (cosine[0] > cosine[1]) std::swap(p[0], p[1]);
  if (cosine[2] < cosine[3]) std::swap(p[2], p[3]);

  // A diamond: the corner that will be shown at the top left comes first.
  const float product = cosine[0] * cosine[1];
  if (product >= 0 && magnitude(wrap_sub(p[0].y, p[1].y)) > magnitude(wrap_sub(p[0].x, p[1].x))) {
    if (cosine[0] >= 0)
      std::rotate(p, p + 3, p + 4);
    else
      std::rotate(p, p + 1, p + 4);
  }
  *quad = {p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y};
}

Block<float*> CreateAffineMatrix(const Quad* src, const Quad* dst) {
  if (!src || !dst) return nullptr;
  Block<float*> rows = make_block<float*>(kUnknowns);
  if (!rows) return nullptr;
  Block<float> values = make_block<float>(kUnknowns * kColumns);
  if (!values) return nullptr;
  float** row = rows.get();
  for (int i = 0; i < kUnknowns; ++i) row[i] = values.get() + kColumns * i;

  const Point a[4] = {
      {src->x0, src->y0}, {src->x1, src->y1}, {src->x2, src->y2}, {src->x3, src->y3}};
  const Point b[4] = {
      {dst->x0, dst->y0}, {dst->x1, dst->y1}, {dst->x2, dst->y2}, {dst->x3, dst->y3}};
  for (int i = 0; i < 4; ++i) {
    fill_row(row[i], a[i], b[i], true);
    fill_row(row[4 + i], a[i], b[i], false);
  }
  values.release();  // owned through entry 0 from here on
  return rows;
}

// Gaussian elimination. Each update is a single-precision multiply-subtract with one rounding.
AffineParameters CalcParameters(float** rows) {
  if (!rows) return nullptr;
  AffineParameters parameters = make_block<float>(kUnknowns);
  if (!parameters) return nullptr;

  for (int k = 0; k < kUnknowns - 1; ++k) {
    if (!bring_pivot(rows, k)) continue;
    for (int j = k + 1; j < kUnknowns; ++j) {
      if (rows[j][k] == 0) continue;
      const float factor = rows[j][k] / rows[k][k];
      for (int c = k; c < kColumns; ++c) rows[j][c] = fused(-factor, rows[k][c], rows[j][c]);
    }
  }

  for (int r = kUnknowns - 1; r >= 0; --r) {
    float& unknown = rows[r][kUnknowns];
    if (rows[r][r] == 0) {
      unknown = 0;
      continue;
    }
    unknown /= rows[r][r];
    for (int i = 0; i < r; ++i)
      rows[i][kUnknowns] = fused(-unknown, rows[i][r], rows[i][kUnknowns]);
  }
  for (int i = 0; i < kUnknowns; ++i) parameters.get()[i] = rows[i][kUnknowns];
  return parameters;
}

AffineParameters GetAffineParameters(const Quad* src, const Quad* dst) {
  const Block<float*> rows = CreateAffineMatrix(src, dst);
  if (!rows) return nullptr;
  // Taken before solving, which may exchange entry 0.
  const Block<float> values(rows[0]);
  return CalcParameters(rows.get());
}

Point PointSrcToDst(int32_t x, int32_t y, const float* p) {
  const float source_x = static_cast<float>(x), source_y = static_cast<float>(y);
  const float a = fused(-source_x, p[6], p[0]), b = fused(-source_x, p[7], p[1]);
  const float c = fused(-source_y, p[6], p[3]), d = fused(-source_y, p[7], p[4]);
  const float e = source_x - p[2], f = source_y - p[5];
  // The second product of each numerator is rounded, the first is not.
  const float u = fused(f, b, -(e * d)) / (b * c - d * a);
  const float v = fused(f, a, -(e * c)) / (d * a - b * c);
  return {truncate_to_int32(u), truncate_to_int32(v)};
}

PixelRect RectSrcToDst(int32_t left, int32_t top, int32_t right, int32_t bottom, const float* p) {
  const Point corners[4] = {PointSrcToDst(left, top, p), PointSrcToDst(right, top, p),
                            PointSrcToDst(right, bottom, p), PointSrcToDst(left, bottom, p)};
  PixelRect box = {corners[0].x, corners[0].y, corners[0].x, corners[0].y};
  for (const Point& corner : corners) {
    box.left = std::min(box.left, corner.x);
    box.top = std::min(box.top, corner.y);
    box.right = std::max(box.right, corner.x);
    box.bottom = std::max(box.bottom, corner.y);
  }
  return box;
}

Point GetOrigin(int32_t x, int32_t y, int32_t ox, int32_t oy, float scale) {
  return {truncate_to_int32(static_cast<float>(x) / scale - static_cast<float>(ox)),
          truncate_to_int32(static_cast<float>(y) / scale - static_cast<float>(oy))};
}

}  // namespace roxe
