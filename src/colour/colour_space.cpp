#include "colour/colour_space.h"

#include <algorithm>

#include "frame/numbers.h"
#include "rows/rows.h"

namespace roxe {
namespace {

#include "rows/hsv.inl"

}  // namespace

void XRDRGB2HSV(uint32_t red, uint32_t green, uint32_t blue, int32_t* hue, int32_t* saturation,
                int32_t* value) {
  const Hsv colour =
      hsv_of(static_cast<int32_t>(red), static_cast<int32_t>(green), static_cast<int32_t>(blue));
  *hue = colour.hue;
  *saturation = colour.saturation;
  *value = colour.value;
}

void XRDHSV2RGB(float hue, float saturation, float value, uint8_t* red, uint8_t* green,
                uint8_t* blue) {
  const Rgb colour = rgb_of(hue, saturation, value);
  *red = colour.red;
  *green = colour.green;
  *blue = colour.blue;
}

void XRDRGB2HSL(uint32_t red, uint32_t green, uint32_t blue, float* hue, float* saturation,
                float* lightness) {
  const float r = static_cast<float>(red);
  const float g = static_cast<float>(green);
  const float b = static_cast<float>(blue);
  const float largest = std::max({r, g, b});
  const float smallest = std::min({r, g, b});
  *lightness = (largest + smallest) * 0.5f;
  if (largest == smallest) {
    *saturation = 0.0f;
    *hue = -1.0f;
    return;
  }

  const float range = largest - smallest;
  *saturation =
      *lightness <= 127.5f ? range / (largest + smallest) : range / (510.0f - largest - smallest);
  float sixth = 4.0f + (r - g) / range;  // of a turn
  if (r == largest)
    sixth = (g - b) / range;
  else if (g == largest)
    sixth = 2.0f + (b - r) / range;
  *hue = sixth * 60.0f;
  if (*hue < 0.0f) *hue += 360.0f;
}

}  // namespace roxe
