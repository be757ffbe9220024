// The workers of colour replacement and of its mask, which the tint shares.
#ifndef ROXE_COLOUR_REPLACE_COLOUR_H_
#define ROXE_COLOUR_REPLACE_COLOUR_H_

#include <cstdint>

#include "roxe.h"

namespace roxe {

constexpr uint32_t kLargestTolerance = 200;

// A smooth falloff from 65536 at 0 to nothing at steps, (exp(-x^3) - exp(-1)) / (1 - exp(-1)) with
// x = i / steps; 0 beyond.
void create_blur_table(int32_t* table, uint32_t table_size, uint32_t steps);

// Do the work of roxeReplaceColor and roxeReplaceColorMask.
void replace_clr(const PixelArray& src, const PixelArray& dst, uint32_t blue, uint32_t green,
                 uint32_t red, uint32_t tolerance, int32_t hue_shift, int32_t saturation_shift,
                 int32_t value_shift);
void replace_clr_mask(const PixelArray& src, const PixelArray& mask, uint32_t blue, uint32_t green,
                      uint32_t red, uint32_t tolerance);

}  // namespace roxe

#endif  // ROXE_COLOUR_REPLACE_COLOUR_H_
