#include "colour/colour_tint.h"

#include "colour/colour_distance.h"
#include "colour/replace_colour.h"
#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "rows/rows.h"

using namespace roxe;

int32_t roxeColorTint(const PixelArray* src, PixelArray* dst, uint32_t blue, uint32_t green,
                      uint32_t red, uint32_t tolerance) {
  if (!src || !dst) return kRoxeOK;
  in_default_environment(
      [&] { clr_accent(*src, *dst, blue, green, red, static_cast<float>(tolerance)); });
  return kRoxeOK;
}

int32_t roxeColorTintMask(const PixelArray* src, PixelArray* mask, uint32_t blue, uint32_t green,
                          uint32_t red, uint32_t tolerance) {
  if (!src || !mask) return kRoxeOK;
  in_default_environment([&] { replace_clr_mask(*src, *mask, blue, green, red, tolerance); });
  return kRoxeOK;
}

namespace roxe {

void clr_accent(const PixelArray& src, const PixelArray& dst, uint32_t blue, uint32_t green,
                uint32_t red, float tolerance) {
  float inside = 0.0f;
  if (tolerance > 0.0f) inside = clamp(tolerance, 0.0f, static_cast<float>(kLargestTolerance));
  const uint32_t steps = static_cast<uint32_t>(truncate_to_int32(inside + 1.0f));
  const ColourSelection selection = colours_near(blue, green, red, steps);

  const RowKernels& rows = Rows();
  map_24(src, dst, [&](const PixelBand& band) { rows.accent_colour(selection, band); });
}

}  // namespace roxe
