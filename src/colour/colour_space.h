// Conversions between red, green, blue and the cylindrical colour spaces.
// No exported operation reaches XRDHSV2RGB and XRDRGB2HSL: the rows have their own way back.
#ifndef ROXE_COLOUR_COLOUR_SPACE_H_
#define ROXE_COLOUR_COLOUR_SPACE_H_

#include <cstdint>

namespace roxe {

// In integers, without a division. Components 0 ... 255; hue 0 ... 360 degrees (pure red has 360, a
// grey 180), saturation and value 0 ... 255.
void XRDRGB2HSV(uint32_t red, uint32_t green, uint32_t blue, int32_t* hue, int32_t* saturation,
                int32_t* value);

// In floats. Any hue in degrees is wrapped; saturation and value are clamped to 0 ... 255.
void XRDHSV2RGB(float hue, float saturation, float value, uint8_t* red, uint8_t* green,
                uint8_t* blue);

// In floats. Components 0 ... 255; hue from 0 to below 360 degrees, -1 for a grey; saturation 0 ...
// 1; lightness 0 ... 255.
void XRDRGB2HSL(uint32_t red, uint32_t green, uint32_t blue, float* hue, float* saturation,
                float* lightness);

}  // namespace roxe

#endif  // ROXE_COLOUR_COLOUR_SPACE_H_
