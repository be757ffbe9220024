// The steps of the white balance.
#ifndef ROXE_COLOUR_COLOUR_TEMPERATURE_H_
#define ROXE_COLOUR_COLOUR_TEMPERATURE_H_

#include <cstdint>

#include "roxe.h"
#include "rows/rows.h"

namespace roxe {

// Nine entries, row-major, for the column (red, green, blue); only the diagonal is filled. Both
// settings are clamped to -100 ... 100. Returns 0 if matrix is null, else 1.
int32_t GetStdColorTemperatureMatrix(int32_t temperature, int32_t tint, float* matrix);

// The nine entries as a row takes them, truncated.
ColourMatrix fixed_point(const float* matrix);

// Balances the area that both pictures, used as 24-bit, hold. Any matrix will do.
void ApplyStdColorTemperatureMatrix(const PixelArray& src, const PixelArray& dst,
                                    const float* matrix);

}  // namespace roxe

#endif  // ROXE_COLOUR_COLOUR_TEMPERATURE_H_
