// Plain versions of the blur family: every window summed afresh, every float sum in its order.
#ifndef ROXE_TESTS_REFERENCE_BLUR_H_
#define ROXE_TESTS_REFERENCE_BLUR_H_

#include <cstdint>
#include <vector>

#include "roxe.h"

namespace reference {

// The box blur of 8-bit images.

// The lengths of a window along one axis: smallest, and one more than the largest.
struct LengthRange {
  int32_t min, end;
};

LengthRange BoxBlurGetModLengthRange(int32_t before, int32_t after, int32_t n);

// floor(2^23 / (w * v)), row by row of v, for w = hMin ... hEnd - 1.
std::vector<uint32_t> BoxBlurCreateModDivBuffer(int32_t hMin, int32_t hEnd, int32_t vMin,
                                                int32_t vEnd);

// Adds the running sums of a row of width pixels to acc, or subtracts them.
int32_t BoxBlurSumLine8(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add);
int32_t BoxBlurSumLine24(const uint8_t* row, int32_t width, uint32_t* acc, int32_t add);

// Writes one row of means from the sums; reciprocals[w] belongs to the horizontal length w.
int32_t BoxBlurProcessRow8(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                           int32_t right, const uint32_t* reciprocals);
int32_t BoxBlurProcessRow24(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                            int32_t right, const uint32_t* reciprocals);

// By definition: clipped window, sum, times the reciprocal of its area, shifted. In place (the same
// pixels) gives the same bytes as apart. Where dst otherwise overlaps src, a row that was
// overwritten inside the window leaves it as it is by then; sums wrap at 32 bits.
int32_t BoxBlurA(const PixelArray* src, PixelArray* dst, int32_t left, int32_t top, int32_t right,
                 int32_t bottom);

int32_t GaussianBlurA(const PixelArray* src, PixelArray* dst, int32_t radius);

int32_t roxeSoftFocus(const PixelArray* src, PixelArray* dst, const PixelArray* mask,
                      int32_t radius, int32_t maskRadius);

// The box blur of packed planes of floats.
void ProcessRow2Column(float* out, const float* in, uint32_t n, uint32_t m, uint32_t before,
                       uint32_t after);
void BoxBlurImp(float* data, float* temp, uint32_t width, uint32_t height, uint32_t before,
                uint32_t after, double scale);
void BoxBlur(float* data, float* temp, uint32_t width, uint32_t height, uint32_t length);
void GaussianBlur(float* dst, const float* src, float* temp, uint32_t width, uint32_t height,
                  uint32_t length);

}  // namespace reference

#endif  // ROXE_TESTS_REFERENCE_BLUR_H_
