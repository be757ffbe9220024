// Box blurs of planes: width * height floats, row after row without gaps. Edges are repeated.
//
// A pass slides its window along each row and writes the sums as a column of the output, so that
// two passes blur both ways and restore the orientation. Sums are running sums in single precision,
// and their rounding accumulates along the row; it is never recomputed.
//
// A window longer than the row (before + after >= n) writes nothing.
//
// Of these an exported operation reaches BoxBlur with what it calls; GaussianBlur and the single
// ProcessRow2Column none does.
#ifndef ROXE_BLUR_PLANE_BLUR_H_
#define ROXE_BLUR_PLANE_BLUR_H_

#include <cstdint>

namespace roxe {

// in is n wide and m high; out is m wide and n high and receives at (y, x) the sum of columns
// x - before ... x + after of row y. The planes are disjoint.
void ProcessRow2Column(float* out, const float* in, int32_t n, int32_t m, uint32_t before,
                       uint32_t after);

// The same, eight rows at a time: eight independent sums are in flight.
void ProcessRow2ColumnUnrollingLoop(float* out, const float* in, int32_t n, int32_t m,
                                    uint32_t before, uint32_t after);

// Sums both ways and multiplies by scale. temp holds another plane.
void BoxBlurImp(float* data, float* temp, int32_t width, int32_t height, uint32_t before,
                uint32_t after, double scale);

// The mean of length * length values for an odd length. For an even one the window is one longer
// than the divisor assumes, and the result brighter by ((length + 1) / length)^2.
void BoxBlur(float* data, float* temp, int32_t width, int32_t height, uint32_t length);

// Three box blurs of src into dst, which may be the same plane. temp holds another plane.
void GaussianBlur(float* dst, const float* src, float* temp, int32_t width, int32_t height,
                  uint32_t length);

}  // namespace roxe

#endif  // ROXE_BLUR_PLANE_BLUR_H_
