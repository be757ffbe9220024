#include "colour/colour_temperature.h"

#include <algorithm>

#include "colour/linear_light.h"
#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "frame/runtime.h"
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

// Returns whether every stretch of sixteen entries from 128 on rises by at most four steps of one.
bool split_into_steps(WhiteBalance& balance) {
  constexpr uint8_t kNever = 255;
  const uint8_t* encoded = balance.encoded;
  for (int32_t i = 0; i < 256; ++i) {
    balance.base[i] = encoded[16 * i];
    int32_t steps = 0;
    for (auto& step : balance.step) step[i] = kNever;
    for (int32_t k = 1; k < 16 && i >= 8; ++k) {
      const int32_t rise = encoded[16 * i + k] - encoded[16 * i + k - 1];
      if (rise == 0) continue;
      if (rise != 1 || steps == 4) return false;
      balance.step[steps++][i] = static_cast<uint8_t>(k);
    }
  }
  return encoded[4096] == encoded[4080];
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

WhiteBalance make_white_balance(const float* matrix, const int32_t* linear,
                                const uint8_t* encoded) {
  WhiteBalance balance;
  for (size_t i = 0; i < 9; ++i) balance.matrix[i] = truncate_to_int32(matrix[i] * 4096.0f);
  balance.linear = linear;
  balance.encoded = encoded;
  balance.has_steps = split_into_steps(balance);
  return balance;
}

void ApplyStdColorTemperatureMatrix(const PixelArray& src, const PixelArray& dst,
                                    const float* matrix) {
  const Block<float> forward = CreatesRGB2LinearRGBIndex();
  const Block<uint8_t> encoded = CreateLinearRGB2sRGBIndex();
  const Block<int32_t> linear = make_block<int32_t>(kLinearEntries);
  if (!forward || !encoded || !linear) return;

  for (size_t i = 0; i < kLinearEntries; ++i) linear[i] = truncate_to_int32(forward[i] * 4096.0f);
  const WhiteBalance balance = make_white_balance(matrix, linear.get(), encoded.get());

  const RowKernels& rows = Rows();
  map_rows_24(src, dst, [&](const uint8_t* src_row, uint8_t* dst_row, int32_t count) {
    rows.balance_white(balance, src_row, dst_row, count);
  });
}

}  // namespace roxe
