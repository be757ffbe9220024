#include "colour/replace_colour.h"

#include <algorithm>

#include "colour/colour_distance.h"
#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "frame/runtime.h"
#include "rows/rows.h"

using namespace roxe;

int32_t roxeReplaceColor(const PixelArray* src, PixelArray* dst, uint32_t blue, uint32_t green,
                         uint32_t red, uint32_t tolerance, int32_t hueShift,
                         int32_t saturationShift, int32_t valueShift) {
  if (!src || !dst) return kRoxeOK;
  in_default_environment([&] {
    replace_clr(*src, *dst, blue, green, red, tolerance, hueShift, saturationShift, valueShift);
  });
  return kRoxeOK;
}

int32_t roxeReplaceColorMask(const PixelArray* src, PixelArray* mask, uint32_t blue, uint32_t green,
                             uint32_t red, uint32_t tolerance) {
  if (!src || !mask) return kRoxeOK;
  in_default_environment([&] { replace_clr_mask(*src, *mask, blue, green, red, tolerance); });
  return kRoxeOK;
}

namespace roxe {
namespace {

constexpr uint32_t kWeights = 256;

uint32_t steps_inside(uint32_t tolerance) { return std::min(tolerance, kLargestTolerance) + 1; }

// Into 0 ... 359 where whole turns make no difference: beyond these, the sum with a hue is rounded
// when it becomes a float.
int32_t without_turns(int32_t degrees) {
  constexpr int32_t kExact = (1 << 24) - 360;
  if (degrees < -kExact || degrees > kExact) return degrees;
  const int32_t rest = degrees % 360;
  return rest < 0 ? rest + 360 : rest;
}

// Percent of the scale of 0 ... 255.
int32_t step_of(int32_t percent) { return truncate_to_int32(static_cast<float>(percent) * 2.55f); }

}  // namespace

void create_blur_table(int32_t* table, uint32_t table_size, uint32_t steps) {
  const float e = XRExp(-1.0);
  const float scale = 1.0f / (1.0f - e);
  const float offset = -e * scale;
  const uint32_t inside = std::min(table_size, steps);
  const float step = inside > 0 ? 1.0f / static_cast<float>(inside) : 0.0f;
  float x = 0.0f;  // accumulates: i * step would give other weights
  for (uint32_t i = 0; i < inside; ++i) {
    const float falloff = XRExp(-x * x * x);
    x += step;
    table[i] = truncate_to_int32((scale * falloff + offset) * 65536.0f);
  }
  std::fill(table + inside, table + table_size, 0);
}

void replace_clr(const PixelArray& src, const PixelArray& dst, uint32_t blue, uint32_t green,
                 uint32_t red, uint32_t tolerance, int32_t hue_shift, int32_t saturation_shift,
                 int32_t value_shift) {
  const uint32_t steps = steps_inside(tolerance);
  const ColourSelection selection = colours_near(blue, green, red, steps);
  ColourShift shift;
  shift.hue = without_turns(hue_shift);
  shift.saturation = step_of(saturation_shift);
  shift.value = step_of(value_shift);
  create_blur_table(shift.weight, kWeights, steps);

  const RowKernels& rows = Rows();
  map_24(src, dst, [&](const PixelBand& band) { rows.replace_colour(selection, shift, band); });
}

void replace_clr_mask(const PixelArray& src, const PixelArray& mask, uint32_t blue, uint32_t green,
                      uint32_t red, uint32_t tolerance) {
  const uint32_t steps = steps_inside(tolerance);
  const ColourSelection selection = colours_near(blue, green, red, steps);
  int32_t weight[kWeights];
  create_blur_table(weight, kWeights, steps);
  uint8_t level[kWeights];
  for (uint32_t i = 0; i < kWeights; ++i) level[i] = static_cast<uint8_t>((weight[i] * 255) >> 16);

  const RowKernels& rows = Rows();
  map_24(src, mask, [&](const PixelBand& band) { rows.draw_selection(selection, level, band); });
}

}  // namespace roxe
