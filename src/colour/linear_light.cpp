#include "colour/linear_light.h"

#include "frame/numbers.h"

namespace roxe {

void sRGB2LinearRGBChannel(uint32_t value, float* out) {
  const float encoded = static_cast<float>(value) * 0.003921569f;
  *out =
      encoded <= 0.03928f ? encoded * 0.07739938f : XRPow((encoded + 0.055f) * 0.94786733f, 2.4f);
}

void LinearRGB2sRGBChannel(uint8_t* out, float linear) {
  const float encoded =
      linear <= 0.00304f ? linear * 12.92f : 1.055f * XRPow(linear, 0.41666666f) - 0.055f;
  const double byte = static_cast<double>(encoded) * 255.0 + 0.5;
  *out = static_cast<uint8_t>(clamp(truncate_to_int32(byte), 0, 255));
}

Block<float> CreatesRGB2LinearRGBIndex() {
  Block<float> table = make_block<float>(kLinearEntries);
  if (!table) return nullptr;
  for (uint32_t i = 0; i < kLinearEntries; ++i) sRGB2LinearRGBChannel(i, &table[i]);
  return table;
}

Block<uint8_t> CreateLinearRGB2sRGBIndex() {
  Block<uint8_t> table = make_block<uint8_t>(kEncodedEntries);
  if (!table) return nullptr;
  for (int32_t i = 0; i < kEncodedEntries; ++i)  // i / 4096 is exact
    LinearRGB2sRGBChannel(&table[static_cast<size_t>(i)], static_cast<float>(i) / 4096.0f);
  return table;
}

}  // namespace roxe
