#include "colour/colour_distance.h"

#include <algorithm>
#include <cmath>

#include "colour/colour_space.h"
#include "frame/numbers.h"
#include "frame/runtime.h"

namespace roxe {
namespace {

#include "rows/cone_distance.inl"

uint32_t reciprocal(uint32_t limit) { return limit == 0 ? 0 : 16384 / limit; }

float canberra_term(double a, double b) {
  const double sum = std::fabs(a + b);
  return sum > 0.001 ? static_cast<float>(std::fabs(a - b) / sum) : 0.0f;
}

}  // namespace

void init_cylindrical_metric(uint32_t* fade_table, uint32_t fade_count, uint32_t* cos_table,
                             uint32_t cos_count, uint32_t* reciprocal_table,
                             uint32_t reciprocal_count) {
  for (uint32_t i = 0; i < fade_count; ++i) {
    const float x = static_cast<float>(i);
    fade_table[i] = static_cast<uint32_t>(truncate_to_int32(256.0f * XRExp(-0.005f * x * x)));
  }
  for (uint32_t i = 0; i < cos_count; ++i) {
    const float radians = static_cast<float>(i) * 3.1415927f / 180.0f;
    cos_table[i] = static_cast<uint32_t>(truncate_to_int32(32768.0f * XRCos(radians)));
  }
  for (uint32_t i = 0; i < reciprocal_count; ++i) reciprocal_table[i] = reciprocal(i);
}

uint32_t cylindrical_metric(int32_t hue, int32_t saturation, uint32_t value, int32_t ref_hue,
                            int32_t ref_saturation, uint32_t ref_value, uint32_t limit,
                            uint32_t limit_squared, uint32_t limit_reciprocal,
                            const uint32_t* fade_table, const uint32_t* cos_table) {
  return cone_distance({hue, saturation, static_cast<int32_t>(value)},
                       {ref_hue, ref_saturation, static_cast<int32_t>(ref_value)}, limit,
                       limit_squared, limit_reciprocal, fade_table,
                       reinterpret_cast<const int32_t*>(cos_table));
}

ColourSelection colours_near(uint32_t blue, uint32_t green, uint32_t red, uint32_t limit) {
  ColourSelection selection;
  Hsv& reference = selection.reference;
  XRDRGB2HSV(std::min(red, 255u), std::min(green, 255u), std::min(blue, 255u), &reference.hue,
             &reference.saturation, &reference.value);
  selection.limit = limit;
  selection.limit_squared = limit * limit;
  selection.limit_reciprocal = reciprocal(limit);
  return selection;
}

double achromatic_pixel_metric(double, double saturation1, double value1, double, double,
                               double value2, double limit) {
  if (saturation1 >= 10.0 && value1 >= 10.0) return 1.0;
  const float difference = static_cast<float>(std::fabs(value2 - value1));
  return difference <= limit ? difference / limit : 1.0;
}

double minkowski_metric(double hue1, double saturation1, double value1, double hue2,
                        double saturation2, double value2, double limit) {
  float turn = static_cast<float>(std::fabs(hue2 - hue1));
  if (turn > 180.0f) turn = 360.0f - turn;
  const float saturations = static_cast<float>(std::fabs(saturation2 - saturation1));
  const float values = static_cast<float>(std::fabs(value2 - value1));
  const float sum = XRPow(turn, 1.0) + XRPow(saturations, 3.0) + XRPow(values, 2.0);
  const float distance = XRPow(sum, 0.5);
  return distance <= limit ? distance / limit : 1.0;
}

double canberra_metric(double hue1, double saturation1, double value1, double hue2,
                       double saturation2, double value2, double limit) {
  const float distance = canberra_term(hue1, hue2) + canberra_term(saturation1, saturation2) +
                         canberra_term(value1, value2);
  return distance <= limit ? distance / limit : 1.0;
}

double chromatic_metric(double, double, double, double, double, double, double) { return 0.0; }

}  // namespace roxe
