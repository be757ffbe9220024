// The transfer function of sRGB, with 0.03928 and 0.00304 as the ends of its linear part.
// Beside the tests only the routines of white_point.h use it, which no exported operation reaches.
#ifndef ROXE_COLOUR_LINEAR_LIGHT_H_
#define ROXE_COLOUR_LINEAR_LIGHT_H_

#include <cstdint>

#include "frame/runtime.h"

namespace roxe {

constexpr int32_t kLinearEntries = 256;    // by encoded byte
constexpr int32_t kEncodedEntries = 4097;  // by linear light in 1 / 4096, both ends included

// Linear light 0 ... 1 of a byte.
void sRGB2LinearRGBChannel(uint32_t value, float* out);

// The byte of linear light, rounded and clamped.
void LinearRGB2sRGBChannel(uint8_t* out, float linear);

// The tables of both; null when there is no memory.
Block<float> CreatesRGB2LinearRGBIndex();
Block<uint8_t> CreateLinearRGB2sRGBIndex();

}  // namespace roxe

#endif  // ROXE_COLOUR_LINEAR_LIGHT_H_
