#ifndef ROXE_GEOMETRY_AFFINE_TRANSFORM_H_
#define ROXE_GEOMETRY_AFFINE_TRANSFORM_H_

#include <cstdint>

#include "roxe.h"

namespace roxe {

// Draws the rectangle of dst (its part inside the picture) through the eight coefficients of a
// projective mapping; offset_x and offset_y are added to destination coordinates before mapping.
// Both records are used as 24-bit. Returns 1, or 0 when the rectangle has nothing inside dst.
int32_t ApplyParameters(const PixelArray& src, PixelArray& dst, const float* parameters,
                        int32_t offset_x, int32_t offset_y, int32_t left, int32_t top,
                        int32_t right, int32_t bottom);

}  // namespace roxe

#endif  // ROXE_GEOMETRY_AFFINE_TRANSFORM_H_
