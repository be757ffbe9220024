#include "blur/plane_blur.h"

#include <cstddef>

#include "blur/gaussian_windows.h"
#include "frame/runtime.h"

namespace roxe {
namespace {

bool window_fits(int32_t n, uint32_t before, uint32_t after) {
  return static_cast<int64_t>(before) + after < n;
}

// The pass for kRows rows from row y on. The order of the additions is part of the result: what
// leaves the window is subtracted before what enters it is added.
template <int32_t kRows>
void rows_to_columns(float* out, const float* in, int32_t n, int32_t m, int32_t y, int32_t before,
                     int32_t after) {
  const float* row[kRows];
  float sum[kRows];
  for (int32_t r = 0; r < kRows; ++r) {
    row[r] = in + static_cast<ptrdiff_t>(y + r) * n;
    sum[r] = static_cast<float>(before + 1) * row[r][0];
    for (int32_t i = 0; i < after; ++i) sum[r] += row[r][i];
  }
  const auto step = [&](int32_t x, int32_t leave, int32_t enter) {
    float* column = out + static_cast<ptrdiff_t>(x) * m + y;
    for (int32_t r = 0; r < kRows; ++r) {
      sum[r] = (sum[r] - row[r][leave]) + row[r][enter];
      column[r] = sum[r];
    }
  };
  int32_t x = 0;
  for (; x <= before; ++x) step(x, 0, x + after);
  for (; x < n - after; ++x) step(x, x - before - 1, x + after);
  for (; x < n; ++x) step(x, x - before - 1, n - 1);
}

// 1 / length^2; the product is one of 32 bits.
double reciprocal_of_square(uint32_t length) { return 1.0f / static_cast<float>(length * length); }

}  // namespace

void ProcessRow2Column(float* out, const float* in, int32_t n, int32_t m, uint32_t before,
                       uint32_t after) {
  if (!window_fits(n, before, after)) return;
  const int32_t a = static_cast<int32_t>(before), b = static_cast<int32_t>(after);
  for (int32_t y = 0; y < m; ++y) rows_to_columns<1>(out, in, n, m, y, a, b);
}

void ProcessRow2ColumnUnrollingLoop(float* out, const float* in, int32_t n, int32_t m,
                                    uint32_t before, uint32_t after) {
  if (!window_fits(n, before, after)) return;
  const int32_t a = static_cast<int32_t>(before), b = static_cast<int32_t>(after);
  int32_t y = 0;
  for (; y < m - 7; y += 8) rows_to_columns<8>(out, in, n, m, y, a, b);
  for (; y < m; ++y) rows_to_columns<1>(out, in, n, m, y, a, b);
}

void BoxBlurImp(float* data, float* temp, int32_t width, int32_t height, uint32_t before,
                uint32_t after, double scale) {
  if (!window_fits(width, before, after) || !window_fits(height, before, after)) return;
  ProcessRow2ColumnUnrollingLoop(temp, data, width, height, before, after);
  ProcessRow2ColumnUnrollingLoop(data, temp, height, width, before, after);

  const float factor = static_cast<float>(scale);
  const ptrdiff_t count = static_cast<ptrdiff_t>(width) * height;
  for (ptrdiff_t i = 0; i < count; ++i) data[i] *= factor;
}

void BoxBlur(float* data, float* temp, int32_t width, int32_t height, uint32_t length) {
  if (length == 0) return;
  const uint32_t half = length >> 1;
  BoxBlurImp(data, temp, width, height, half, half, reciprocal_of_square(length));
}

void GaussianBlur(float* dst, const float* src, float* temp, int32_t width, int32_t height,
                  uint32_t length) {
  if (width <= 0 || height <= 0) return;
  const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
  if (dst != src) XRMemCpy(dst, src, count * sizeof(float));
  if (length == 0) return;

  for (const auto [before, after] : gaussian_windows(length)) {
    const uint32_t left = static_cast<uint32_t>(before), right = static_cast<uint32_t>(after);
    BoxBlurImp(dst, temp, width, height, left, right, reciprocal_of_square(left + right + 1));
  }
}

}  // namespace roxe
