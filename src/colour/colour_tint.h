// The worker of the colour accent.
#ifndef ROXE_COLOUR_COLOUR_TINT_H_
#define ROXE_COLOUR_COLOUR_TINT_H_

#include <cstdint>

#include "roxe.h"

namespace roxe {

// Does the work of roxeColorTint. tolerance is clamped to 0 ... 200; when it is no number it is 0.
void clr_accent(const PixelArray& src, const PixelArray& dst, uint32_t blue, uint32_t green,
                uint32_t red, float tolerance);

}  // namespace roxe

#endif  // ROXE_COLOUR_COLOUR_TINT_H_
