// The Gaussian approximation by three box blurs.
#ifndef ROXE_BLUR_SOFT_FOCUS_H_
#define ROXE_BLUR_SOFT_FOCUS_H_

#include <cstdint>

#include "roxe.h"

namespace roxe {

// Blurs src into dst, which may be the same, with a window of radius pixels (a diameter, despite
// its name); a radius of 1 or less copies the pixels. Returns 0 if a record is missing or their
// formats or sizes differ, otherwise 1, even when a pass could not be made: dst then holds what the
// others left.
int32_t GaussianBlurA(const PixelArray* src, PixelArray* dst, int32_t radius);

}  // namespace roxe

#endif  // ROXE_BLUR_SOFT_FOCUS_H_
