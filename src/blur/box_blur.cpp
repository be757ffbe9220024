#include "blur/box_blur.h"

#include <algorithm>

#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "rows/rows.h"

namespace roxe {
namespace {

template <int32_t channels>
int32_t sum_line(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add) {
  const uint32_t sign = add != 0 ? 1 : UINT32_MAX;
  uint32_t sum[channels] = {};
  for (int32_t x = 0; x < width; ++x)
    for (int32_t c = 0; c < channels; ++c) {
      sum[c] += *row++;
      *acc++ += sign * sum[c];
    }
  return 1;
}

// The window of column x ends at the column whose running sum is added and starts behind the one
// whose running sum is subtracted. Extents may be far larger than the row, hence 64 bits.
template <int32_t channels>
int32_t process_row(const uint32_t* acc, uint8_t* out, int64_t width, int64_t left, int64_t right,
                    DivRow div_row) {
  // Rounding down twice, in the reciprocal and in the shift, makes 255 of most windows 254.
  const auto mean = [](uint32_t sum, uint32_t reciprocal) {
    return static_cast<uint8_t>((sum * reciprocal) >> kWindowShift);
  };
  const auto sum_to = [acc](int64_t x, int32_t c) { return acc[x * channels + c]; };

  const int64_t left_end = std::min(width - right, left + 1);         // clipped on the left only
  const int64_t right_begin = std::max(left + 1, width - right - 1);  // clipped on the right only
  for (int32_t c = 0; c < channels; ++c) {
    const uint32_t whole_row = sum_to(width - 1, c);
    for (int64_t x = 0; x < left_end; ++x)
      out[x * channels + c] = mean(sum_to(x + right, c), div_row[x + right + 1]);
    for (int64_t x = right_begin; x < width; ++x)
      out[x * channels + c] = mean(whole_row - sum_to(x - left - 1, c), div_row[width - x + left]);

    const bool window_covers_row = left + right + 1 > width;
    const int64_t middle_end = std::min(width, right_begin);
    for (int64_t x = std::max<int64_t>(left_end, 0); x < middle_end; ++x)
      out[x * channels + c] =
          window_covers_row
              ? mean(whole_row, div_row[width])
              : mean(sum_to(x + right, c) - sum_to(x - left - 1, c), div_row[left + right + 1]);
  }
  return 0;
}

// The workers of one pixel format.
struct RowWorkers {
  int32_t channels;
  int32_t (*sum_line)(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add);
  int32_t (*process_row)(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                         int32_t right, DivRow div_row);
};
constexpr RowWorkers kWorkers24 = {3, BoxBlurSumLine24, BoxBlurProcessRow24};
constexpr RowWorkers kWorkers8 = {1, BoxBlurSumLine8, BoxBlurProcessRow8};

const RowWorkers* row_workers(uint32_t format) {
  if (format == kRoxeFormatRGB24) return &kWorkers24;
  if (format == kRoxeFormatGray8) return &kWorkers8;
  return nullptr;
}

}  // namespace

int32_t common_columns(const PixelArray& a, const PixelArray& b) {
  return a.format == kRoxeFormatRGB24 ? std::min(columns_24(a), columns_24(b))
                                      : std::min(columns_8(a), columns_8(b));
}

void BoxBlurGetModLengthRange(LengthRange* out, int32_t before, int32_t after, int32_t n) {
  // Extents may lie near 2^31.
  const int64_t a = before, b = after, length = n;
  const int64_t low = std::min(length - b - 1, a);
  const int64_t high = std::max(a, length - b - 1);
  const int64_t longest = std::min(length, a + b + 1);
  int64_t shortest = longest;
  if (low >= 0) shortest = std::min(shortest, b + 1);
  if (high < length) shortest = std::min(shortest, a + 1);
  *out = {static_cast<int32_t>(shortest), wrap_add(static_cast<int32_t>(longest), 1)};
}

Block<uint32_t> BoxBlurCreateModDivBuffer(int32_t h_min, int32_t h_end, int32_t v_min,
                                          int32_t v_end) {
  // The end of a range wraps for a picture of 2^31 - 1 rows or columns; the counts do not.
  const uint32_t columns = static_cast<uint32_t>(wrap_sub(h_end, h_min));
  const uint32_t rows = static_cast<uint32_t>(wrap_sub(v_end, v_min));
  Block<uint32_t> reciprocals = make_block<uint32_t>(uint64_t{columns} * rows);
  if (!reciprocals) return nullptr;

  uint32_t* entry = reciprocals.get();
  for (uint32_t j = 0; j < rows; ++j)
    for (uint32_t i = 0; i < columns; ++i) {
      const int64_t pixels = (int64_t{h_min} + i) * (int64_t{v_min} + j);
      *entry++ = window_reciprocal(pixels);
    }
  return reciprocals;
}

int32_t BoxBlurSumLine8(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add) {
  return sum_line<1>(row, width, acc, add);
}

int32_t BoxBlurSumLine24(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add) {
  return sum_line<3>(row, width, acc, add);
}

int32_t BoxBlurProcessRow8(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                           int32_t right, DivRow div_row) {
  return process_row<1>(acc, out, width, left, right, div_row);
}

int32_t BoxBlurProcessRow24(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                            int32_t right, DivRow div_row) {
  return process_row<3>(acc, out, width, left, right, div_row);
}

int32_t BoxBlurA(const PixelArray* src, PixelArray* dst, int32_t left, int32_t top, int32_t right,
                 int32_t bottom) {
  if (!src || !dst) return 0;
  if (left < 0 || top < 0 || right < 0 || bottom < 0) return 0;
  if ((top == 0 && bottom == 0) || (left == 0 && right == 0)) return 0;
  if (src->format != dst->format) return 0;
  if (src->width != dst->width || src->height != dst->height) return 0;
  const RowWorkers* workers = row_workers(src->format);
  if (!workers) return 0;

  const int32_t columns = common_columns(*src, *dst);
  const int32_t height = rows_of(*src);
  if (columns == 0 || height == 0) return 1;
  const size_t row_bytes = static_cast<size_t>(columns) * static_cast<size_t>(workers->channels);

  // In place a row is saved before it is overwritten, if it is still to leave the window.
  const int64_t leaving_rows = src->pixels == dst->pixels ? int64_t{height} - top - 1 : 0;
  const int64_t ring_rows = std::min(int64_t{top} + 1, leaving_rows);
  Block<uint8_t> ring;
  if (ring_rows > 0) {
    ring = make_block<uint8_t>(static_cast<uint64_t>(ring_rows) * row_bytes);
    if (!ring) return 0;
  }
  const auto saved_row = [&](int64_t y) {
    return ring.get() + static_cast<size_t>(y % ring_rows) * row_bytes;
  };

  const Block<uint32_t> acc = make_block<uint32_t>(row_bytes);
  if (!acc) return 0;

  LengthRange horizontal, vertical;
  BoxBlurGetModLengthRange(&horizontal, left, right, columns);
  BoxBlurGetModLengthRange(&vertical, top, bottom, height);
  const Block<uint32_t> reciprocals =
      BoxBlurCreateModDivBuffer(horizontal.min, horizontal.end, vertical.min, vertical.end);
  if (!reciprocals) return 0;
  const size_t lengths = static_cast<uint32_t>(wrap_sub(horizontal.end, horizontal.min));

  int32_t entered = 0;  // rows that have entered the vertical window
  const auto enter = [&] {
    workers->sum_line(row_of(*src, entered), columns, acc.get(), 1);
    ++entered;
  };
  while (entered < std::min(bottom, height - 1)) enter();
  for (int32_t y = 0; y < height; ++y) {
    if (entered < height) enter();
    const int32_t left_behind = std::max(0, y - top);  // rows that have left the window
    if (y > top) {
      const int32_t old = y - top - 1;
      workers->sum_line(ring ? saved_row(old) : row_of(*src, old), columns, acc.get(), 0);
    }
    if (y < leaving_rows) XRMemCpy(saved_row(y), row_of(*src, y), row_bytes);
    const size_t row = static_cast<size_t>(entered - left_behind - vertical.min);
    workers->process_row(acc.get(), row_of(*dst, y), columns, left, right,
                         {reciprocals.get() + row * lengths, horizontal.min});
  }
  return 1;
}

}  // namespace roxe
