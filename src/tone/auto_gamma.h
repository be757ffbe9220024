// The stages of roxeAutoGamma.
#ifndef ROXE_TONE_AUTO_GAMMA_H_
#define ROXE_TONE_AUTO_GAMMA_H_

#include <cstdint>

#include "frame/runtime.h"
#include "roxe.h"

namespace roxe {

// The 256 counts of the green bytes of a region (null: the whole picture). Negative sides count as
// 0. Beyond that the region is read as given, also past the end of a row, but never past the
// height * rowBytes bytes of the picture. Null for a malformed record, an empty region or no
// memory.
Block<uint32_t> GetHistogram_RGB24(const PixelArray& src, const PixelRect* rect);

// The gamma, 0.65 ... 1.2, for which the slope of x^gamma, weighted by the histogram, is largest.
// The smallest of several equals; 1.0 for an empty histogram.
double GetMaximumEntropyEstimateGamma(const uint32_t* histogram);

// Writes the common area of src through the curve 255 (v / 255)^gamma. Returns 0 without memory.
int32_t ApplyGamma_RGB24(const PixelArray& src, const PixelArray& dst, double gamma);

}  // namespace roxe

#endif  // ROXE_TONE_AUTO_GAMMA_H_
