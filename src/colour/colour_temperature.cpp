#include "colour/colour_temperature.h"

#include <algorithm>

#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "rows/rows.h"

using namespace roxe;

int32_t roxeColorTemperature(const PixelArray* src, PixelArray* dst, int32_t temperature,
                             int32_t tint) {
  if (const int32_t status = roxeVerifyPixelArray(src)) return status;
  if (const int32_t status = roxeVerifyPixelArray(dst)) return status;
  return in_default_environment([&]() -> int32_t {
    float matrix[9];
    if (!GetStdColorTemperatureMatrix(temperature, tint, matrix)) return kRoxeErrParam;

    ApplyStdColorTemperatureMatrix(*src, *dst, matrix);
    return kRoxeOK;
  });
}

namespace roxe {
namespace {

void set_diagonal(float* matrix, float red, float green, float blue) {
  std::fill(matrix, matrix + 9, 0.0f);
  matrix[0] = red;
  matrix[4] = green;
  matrix[8] = blue;
}

}  // namespace

int32_t GetStdColorTemperatureMatrix(int32_t temperature, int32_t tint, float* matrix) {
  if (!matrix) return 0;
  if (temperature == 0 && tint == 0) {
    set_diagonal(matrix, 1.0f, 1.0f, 1.0f);
    return 1;
  }
  const float a = static_cast<float>(clamp(temperature, -100, 100)) * 0.01f;
  const float b = static_cast<float>(clamp(tint, -100, 100)) * 0.01f;

  // Empirical gains. Blue grows up to 11.5 times on the cool side; the cap on brightening limits
  // it.
  float red = 1.0f + 0.868f * a, green = 1.0f, blue = 1.0f - 10.5f * a;
  if (a > 0.0f) {
    red = 1.0f + 1.1f * a;
    green = 1.0f - 0.28f * a;
    blue = 1.0f - 0.61f * a;
  }
  float magenta = 1.0f + 0.65f * b, other = 1.0f - 0.83f * b;
  if (b > 0.0f) {
    magenta = 1.0f + 0.29f * b;
    other = 1.0f - 0.6f * b;
  }
  set_diagonal(matrix, red * magenta, green * other, blue * magenta);
  return 1;
}

ColourMatrix fixed_point(const float* matrix) {
  ColourMatrix fixed;
  for (size_t i = 0; i < 9; ++i) fixed.entry[i] = truncate_to_int32(matrix[i] * 4096.0f);
  return fixed;
}

void ApplyStdColorTemperatureMatrix(const PixelArray& src, const PixelArray& dst,
                                    const float* matrix) {
  const ColourMatrix fixed = fixed_point(matrix);
  const RowKernels& rows = Rows();
  map_24(src, dst, [&](const PixelBand& band) { rows.balance_white(fixed, band); });
}

}  // namespace roxe
