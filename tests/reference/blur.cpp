#include "reference/blur.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "reference/frame.h"

namespace reference {

// ------------------------------------------------------------------------ box blur, 8-bit images

LengthRange BoxBlurGetModLengthRange(int32_t before, int32_t after, int32_t n) {
  const int64_t a = before, b = after, length = n;
  int64_t low = 2147483647, high = -2147483647;
  const int64_t p = std::min(length - b - 1, a);
  const int64_t q = std::max(a, length - b - 1);
  if (p >= 0) {
    low = std::min(low, b + 1);
    high = std::max(high, p + b + 1);
  }
  if (q < length) {
    low = std::min(low, a + 1);
    high = std::max(high, a + length - q);
  }
  const int64_t whole = std::min(a + b + 1, length);
  low = std::min(low, whole);
  high = std::max(high, whole);
  return {static_cast<int32_t>(low), static_cast<int32_t>(high + 1)};
}

namespace {

// 2^23 over the number of pixels of a window, rounded down.
uint32_t reciprocal_of_area(int64_t w, int64_t v) {
  return static_cast<uint32_t>(int64_t{8388608} / (w * v));
}

uint8_t scaled_down(uint32_t sum, uint32_t reciprocal) {
  return static_cast<uint8_t>((sum * reciprocal) >> 23);
}

void sum_line(const uint8_t* row, int32_t width, ptrdiff_t channels, uint32_t* acc, int32_t add) {
  for (ptrdiff_t c = 0; c < channels; ++c) {
    uint32_t s = 0;
    for (ptrdiff_t x = 0; x < width; ++x) {
      s += row[channels * x + c];
      uint32_t& entry = acc[channels * x + c];
      entry = add != 0 ? entry + s : entry - s;
    }
  }
}

// The mean of the columns x - left ... x + right as far as they exist, from prefix sums.
void process_row(const uint32_t* acc, uint8_t* out, int32_t width, ptrdiff_t channels, int32_t left,
                 int32_t right, const uint32_t* reciprocals) {
  for (ptrdiff_t c = 0; c < channels; ++c) {
    for (int64_t x = 0; x < width; ++x) {
      const int64_t first = std::max<int64_t>(x - left, 0);
      const int64_t last = std::min<int64_t>(x + right, width - 1);
      const uint32_t up_to_last = acc[channels * last + c];
      const uint32_t before_first = first == 0 ? 0 : acc[channels * (first - 1) + c];
      out[channels * x + c] = scaled_down(up_to_last - before_first, reciprocals[last - first + 1]);
    }
  }
}

}  // namespace

std::vector<uint32_t> BoxBlurCreateModDivBuffer(int32_t hMin, int32_t hEnd, int32_t vMin,
                                                int32_t vEnd) {
  std::vector<uint32_t> buffer;
  for (int64_t v = vMin; v < vEnd; ++v)
    for (int64_t w = hMin; w < hEnd; ++w) buffer.push_back(reciprocal_of_area(w, v));
  return buffer;
}

int32_t BoxBlurSumLine8(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add) {
  sum_line(row, width, 1, acc, add);
  return 1;
}

int32_t BoxBlurSumLine24(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add) {
  sum_line(row, width, 3, acc, add);
  return 1;
}

int32_t BoxBlurProcessRow8(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                           int32_t right, const uint32_t* reciprocals) {
  process_row(acc, out, width, 1, left, right, reciprocals);
  return 0;
}

int32_t BoxBlurProcessRow24(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                            int32_t right, const uint32_t* reciprocals) {
  process_row(acc, out, width, 3, left, right, reciprocals);
  return 0;
}

int32_t BoxBlurA(const PixelArray* src, PixelArray* dst, int32_t left, int32_t top, int32_t right,
                 int32_t bottom) {
  if (src == nullptr || dst == nullptr) return 0;
  if (left < 0 || top < 0 || right < 0 || bottom < 0) return 0;
  if (top == 0 && bottom == 0) return 0;
  if (left == 0 && right == 0) return 0;
  if (src->format != dst->format) return 0;
  if (src->width != dst->width || src->height != dst->height) return 0;
  if (src->format != 0 && src->format != 3) return 0;

  const int32_t channels = src->format == 0 ? 3 : 1;
  // The two records have one width: what the rows of both hold.
  const int32_t width = std::min(columns_inside(*src, channels), columns_inside(*dst, channels));
  const int32_t height = src->height;
  if (width == 0 || height <= 0) return 1;

  const size_t row_size = static_cast<size_t>(width) * static_cast<size_t>(channels);
  using Row = std::vector<uint8_t>;
  const auto source_row = [&](size_t y) {
    const uint8_t* row = &channel(*src, channels, 0, static_cast<int32_t>(y), 0);
    return Row(row, row + row_size);
  };

  // A row is read when it enters the window and again when it leaves. In place it leaves as it was
  // right before it was overwritten, elsewhere as it is by then: where dst overlaps src the
  // difference stays in the sums for good.
  const bool in_place = src->pixels == dst->pixels;
  std::vector<Row> entered, saved;
  std::vector<uint32_t> differences(row_size);
  for (int64_t y = 0; y < height; ++y) {
    const int64_t first_row = std::max<int64_t>(y - top, 0);
    const int64_t last_row = std::min<int64_t>(y + bottom, height - 1);
    while (entered.size() <= static_cast<size_t>(last_row))
      entered.push_back(source_row(entered.size()));
    if (first_row > 0) {
      const size_t old = static_cast<size_t>(first_row - 1);
      const Row left_as = in_place ? saved[old] : source_row(old);
      for (size_t k = 0; k < row_size; ++k)
        differences[k] += uint32_t{entered[old][k]} - uint32_t{left_as[k]};
    }
    saved.push_back(source_row(static_cast<size_t>(y)));

    std::vector<uint32_t> columns = differences;
    for (int64_t row = first_row; row <= last_row; ++row)
      for (size_t k = 0; k < row_size; ++k) columns[k] += entered[static_cast<size_t>(row)][k];

    for (int64_t x = 0; x < width; ++x) {
      const int64_t first_column = std::max<int64_t>(x - left, 0);
      const int64_t last_column = std::min<int64_t>(x + right, width - 1);
      const uint32_t reciprocal =
          reciprocal_of_area(last_column - first_column + 1, last_row - first_row + 1);
      for (int32_t c = 0; c < channels; ++c) {
        uint32_t sum = 0;
        for (int64_t column = first_column; column <= last_column; ++column)
          sum += columns[static_cast<size_t>(channels * column + c)];
        channel(*dst, channels, static_cast<int32_t>(x), static_cast<int32_t>(y), c) =
            scaled_down(sum, reciprocal);
      }
    }
  }
  return 1;
}

// ----------------------------------------------------------------- Gaussian blur and soft focus

int32_t GaussianBlurA(const PixelArray* src, PixelArray* dst, int32_t radius) {
  if (src == nullptr || dst == nullptr) return 0;
  if (src->format != dst->format) return 0;
  if (src->width != dst->width || src->height != dst->height) return 0;

  if (radius <= 1) {
    if (src->pixels == dst->pixels) return 1;
    const int32_t channels = src->format == 3 ? 1 : 3;
    const int32_t width = std::min(columns_inside(*src, channels), columns_inside(*dst, channels));
    for (int32_t y = 0; y < src->height && width > 0; ++y)
      for (int32_t x = 0; x < width; ++x)
        for (int32_t c = 0; c < channels; ++c)
          channel(*dst, channels, x, y, c) = channel(*src, channels, x, y, c);
    return 1;
  }

  const int32_t h = radius >> 1;
  const int32_t e = radius % 2 == 1 ? h : h - 1;
  reference::BoxBlurA(src, dst, h, h, e, e);
  reference::BoxBlurA(dst, dst, e, e, h, h);
  reference::BoxBlurA(dst, dst, h, h, h, h);
  return 1;
}

int32_t roxeSoftFocus(const PixelArray* src, PixelArray* dst, const PixelArray* mask,
                      int32_t radius, int32_t maskRadius) {
  if (reference::roxeVerifyPixelArray(src) != 0) return 2;
  if (reference::roxeVerifyPixelArray(dst) != 0) return 2;
  if (src->format != 0) return 4;
  if (dst->format != 0) return 4;
  if (src->width != dst->width) return 4;
  if (src->height != dst->height) return 4;

  std::vector<uint8_t> soft_mask;
  PixelArray soft = {};
  if (mask != nullptr) {
    if (reference::roxeVerifyPixelArray(mask) != 0) return 2;
    if (mask->format != 3) return 4;
    if (mask->width != src->width || mask->height != src->height) return 4;
    const uint64_t size = static_cast<uint64_t>(mask->width) * static_cast<uint64_t>(mask->height);
    if (size > 0xFFFFFFFFu) return 1;
    soft_mask.assign(size, 0);
    soft = *mask;
    soft.rowBytes = mask->width;
    soft.pixels = soft_mask.data();
    if (reference::GaussianBlurA(mask, &soft, maskRadius) != 1) return 3;
  }
  if (reference::GaussianBlurA(src, dst, radius) != 1) return 3;

  const int32_t width = std::min(columns_inside(*src, 3), columns_inside(*dst, 3));
  for (int32_t y = 0; y < src->height && width > 0; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const int32_t m = mask == nullptr ? 0 : channel(soft, 1, x, y, 0);
      for (int32_t c = 0; c < 3; ++c) {
        const int32_t b = channel(*dst, 3, x, y, c);
        const int32_t o = channel(*src, 3, x, y, c);
        channel(*dst, 3, x, y, c) = static_cast<uint8_t>(b + (((o - b) * m) >> 8));
      }
    }
  }
  return 0;
}

// ------------------------------------------------------------------- box blur, planes of floats

namespace {

// A window longer than the row has no result.
bool window_fits(uint32_t n, uint32_t before, uint32_t after) {
  return static_cast<uint64_t>(before) + after < n;
}

}  // namespace

void ProcessRow2Column(float* out, const float* in, uint32_t n, uint32_t m, uint32_t before,
                       uint32_t after) {
  if (!window_fits(n, before, after)) return;
  const int64_t a = before, b = after, length = n;
  for (int64_t y = 0; y < m; ++y) {
    const float* v = in + y * length;
    const auto store = [out, m, y](int64_t x, float sum) { out[x * int64_t{m} + y] = sum; };
    const float first = v[0];
    const float last = v[length - 1];

    float s = static_cast<float>(before + 1) * first;
    for (int64_t i = 0; i <= b - 1; ++i) s = s + v[i];
    for (int64_t x = 0; x <= a; ++x) {
      const float without = s - first;
      s = without + v[x + b];
      store(x, s);
    }
    for (int64_t x = a + 1; x <= length - b - 1; ++x) {
      const float without = s - v[x - a - 1];
      s = without + v[x + b];
      store(x, s);
    }
    if (b > 0) {
      for (int64_t x = length - b; x <= length - 1; ++x) {
        const float without = s - v[x - a - 1];
        s = without + last;
        store(x, s);
      }
    }
  }
}

void BoxBlurImp(float* data, float* temp, uint32_t width, uint32_t height, uint32_t before,
                uint32_t after, double scale) {
  if (!window_fits(width, before, after) || !window_fits(height, before, after)) return;
  reference::ProcessRow2Column(temp, data, width, height, before, after);
  reference::ProcessRow2Column(data, temp, height, width, before, after);
  const float factor = static_cast<float>(scale);
  for (size_t i = 0; i < static_cast<size_t>(width) * height; ++i) data[i] = data[i] * factor;
}

namespace {

double scale_of_square(uint32_t length) {
  const float area = static_cast<float>(length * length);
  return static_cast<double>(1.0f / area);
}

}  // namespace

void BoxBlur(float* data, float* temp, uint32_t width, uint32_t height, uint32_t length) {
  if (length == 0) return;
  const uint32_t half = length >> 1;
  reference::BoxBlurImp(data, temp, width, height, half, half, scale_of_square(length));
}

void GaussianBlur(float* dst, const float* src, float* temp, uint32_t width, uint32_t height,
                  uint32_t length) {
  if (dst != src) std::memcpy(dst, src, static_cast<size_t>(width) * height * sizeof(float));
  if (length == 0) return;
  const uint32_t half = length >> 1;
  const double k = scale_of_square(length);
  if (length % 2 == 1) {
    reference::BoxBlurImp(dst, temp, width, height, half, half, k);
    reference::BoxBlurImp(dst, temp, width, height, half, half, k);
    reference::BoxBlurImp(dst, temp, width, height, half, half, k);
  } else {
    reference::BoxBlurImp(dst, temp, width, height, half, half - 1, k);
    reference::BoxBlurImp(dst, temp, width, height, half - 1, half, k);
    reference::BoxBlurImp(dst, temp, width, height, half, half, scale_of_square(length + 1));
  }
}

}  // namespace reference
