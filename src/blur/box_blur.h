// Mean over a rectangular window clipped at the borders of the picture, for RGB24 and Gray8: the
// engine under the Gaussian blur.
#ifndef ROXE_BLUR_BOX_BLUR_H_
#define ROXE_BLUR_BOX_BLUR_H_

#include <cstdint>

#include "frame/runtime.h"
#include "roxe.h"

namespace roxe {

// The columns that the rows of two records of the same format, RGB24 or Gray8, both really hold.
int32_t common_columns(const PixelArray& a, const PixelArray& b);

// The lengths of the windows that occur along one axis: min ... end - 1.
struct LengthRange {
  int32_t min, end;
};

// The range for the windows [i - before, i + after] of i = 0 ... n - 1, clipped to 0 ... n - 1.
void BoxBlurGetModLengthRange(LengthRange* out, int32_t before, int32_t after, int32_t n);

// The reciprocals floor(2^23 / (w * v)) for horizontal lengths w and vertical lengths v, row after
// row of v; 0 for windows of more than 2^23 pixels. Null when there is no memory.
Block<uint32_t> BoxBlurCreateModDivBuffer(int32_t h_min, int32_t h_end, int32_t v_min,
                                          int32_t v_end);

// One row of the reciprocals, indexed by horizontal length.
struct DivRow {
  const uint32_t* first;  // the entry of length min
  int32_t min;
  uint32_t operator[](int64_t length) const { return first[length - min]; }
};

// Adds the running sum of each channel of a row to acc, entry by entry, or subtracts it when add is
// zero; modulo 2^32. Returns 1.
int32_t BoxBlurSumLine8(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add);
int32_t BoxBlurSumLine24(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add);

// Writes the means of one row from the running sums of its vertical window. Returns 0.
int32_t BoxBlurProcessRow8(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                           int32_t right, DivRow div_row);
int32_t BoxBlurProcessRow24(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                            int32_t right, DivRow div_row);

// Blurs src into dst, records of the same format and size. The window of pixel (x, y) holds columns
// x - left ... x + right and rows y - top ... y + bottom. In place (the same pixels) gives the same
// bytes as apart. Returns 1, or 0 without writing: for a missing record, a negative extent, a blur
// along one axis only, differing or unknown records, or when there is no memory.
int32_t BoxBlurA(const PixelArray* src, PixelArray* dst, int32_t left, int32_t top, int32_t right,
                 int32_t bottom);

}  // namespace roxe

#endif  // ROXE_BLUR_BOX_BLUR_H_
