#include "colour/white_point.h"

#include <algorithm>

#include "colour/linear_light.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "frame/runtime.h"
#include "geometry/xrml.h"

namespace roxe {
namespace {

// Columns: chromaticities (x, y, z) of the red, green and blue primaries of sRGB.
constexpr float kPrimaries[9] = {0.64f, 0.30f, 0.15f,  //
                                 0.33f, 0.60f, 0.06f,  //
                                 0.03f, 0.10f, 0.79f};
// Cone responses after Bradford.
constexpr float kBradford[9] = {0.8951f,  0.2664f,  -0.1614f,  //
                                -0.7502f, 1.7135f,  0.0367f,   //
                                0.0389f,  -0.0685f, 1.0296f};
constexpr float kIdentity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

struct Column {
  float at[3];
};

Column product(const float* matrix, const Column& column) {
  Column result;
  for (int i = 0; i < 3; ++i) {
    const float* row = matrix + 3 * i;
    result.at[i] = row[0] * column.at[0] + row[1] * column.at[1] + row[2] * column.at[2];
  }
  return result;
}

// XYZ of a white with Y = 1.
Column xyz_of(float x, float y) { return {{x / y, 1.0f, (1.0f - x - y) / y}}; }

Column xyz_of(int32_t temperature, int32_t tint) {
  WhitePoint white;
  GetWhitePoint(temperature, tint, &white);
  return xyz_of(white.x, white.y);
}

uint8_t byte_of(float value) {
  return static_cast<uint8_t>(clamp(truncate_to_int32(value), 0, 255));
}

// Half of what lies outside 0 ... 1 goes to each of the other two.
void share_overflow(float& channel, float& other1, float& other2) {
  if (!(channel < 0.0f || channel > 1.0f)) return;
  const float inside = channel < 0.0f ? 0.0f : 1.0f;
  const float half = (channel - inside) * 0.5f;
  channel = inside;
  other1 += half;
  other2 += half;
}

uint8_t encode(const uint8_t* encoded, float linear) {
  const int32_t index = truncate_to_int32(clamp(linear, 0.0f, 1.0f) * 4096.0f);
  return encoded[clamp(index, 0, kEncodedEntries - 1)];  // of no number: 0
}

}  // namespace

int32_t GetWhitePoint(int32_t temperature, int32_t tint, WhitePoint* out) {
  out->Y = 1.0f;
  const float t = static_cast<float>(temperature);
  if (temperature < 4000) {
    WhitePoint warmest;
    GetWhitePoint(4000, 0, &warmest);
    out->x = 0.64f + (warmest.x - 0.64f) / 4000.0f * t;
    out->y = 0.33f + (warmest.y - 0.33f) / 4000.0f * t;
    return 1;
  }
  if (temperature > 25000) {
    WhitePoint coolest;
    GetWhitePoint(25000, 0, &coolest);
    const float beyond = t - 25000.0f;
    out->x = coolest.x + (0.15f - coolest.x) / 16000.0f * beyond;
    out->y = coolest.y + (0.06f - coolest.y) / 16000.0f * beyond;
    return 1;
  }

  const float t2 = t * t, t3 = t * t * t;
  const float x =
      temperature <= 7000
          ? -4.607f * (1e9f / t3) + 2.9678f * (1e6f / t2) + 0.09911f * (1e3f / t) + 0.244063f
          : -2.0064f * (1e9f / t3) + 1.9018f * (1e6f / t2) + 0.24748f * (1e3f / t) + 0.23704f;
  const float y = -3.0f * (x * x) + 2.87f * x - 0.275f;
  float offset = static_cast<float>(tint) * 0.0006f;
  if (tint <= 0) offset *= 0.75f;
  out->x = x + offset;
  out->y = y + offset * (-1.0f / (2.87f - 6.0f * x));
  return 1;
}

int32_t Getuvw(const float* primaries, float, float x, float y, float* out) {
  if (!primaries || !out) return 0;
  float inverse[9];
  xrmlMatrixInverse(inverse, primaries, 3);  // what it leaves when it fails is used as it is
  const Column scale = product(inverse, xyz_of(x, y));
  std::copy(scale.at, scale.at + 3, out);
  return 1;
}

int32_t GetRGB2XYZMatrix(const float* primaries, int32_t temperature, int32_t tint, float* out) {
  if (!primaries || !out) return 0;
  WhitePoint white;
  GetWhitePoint(temperature, tint, &white);
  float scale[3];
  Getuvw(primaries, white.Y, white.x, white.y, scale);
  for (int i = 0; i < 9; ++i) out[i] = primaries[i] * scale[i % 3];
  return 1;
}

int32_t GetColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                                  int32_t tint2, float* out) {
  if (!out) return 0;
  if (temperature1 == temperature2 && tint1 == tint2) {
    XRMemCpy(out, kIdentity, sizeof kIdentity);
    return 1;
  }
  float to_xyz1[9], to_xyz2[9], from_xyz2[9];
  GetRGB2XYZMatrix(kPrimaries, temperature1, tint1, to_xyz1);
  GetRGB2XYZMatrix(kPrimaries, temperature2, tint2, to_xyz2);
  if (!xrmlMatrixInverse(from_xyz2, to_xyz2, 3)) return 0;
  return xrmlMatrixMultiply(from_xyz2, to_xyz1, out, 3, 3);
}

void ApplyColorTemperatureMatrix(const PixelArray* src, const PixelArray* dst,
                                 const float* matrix) {
  if (!src || !dst || !matrix) return;
  map_rows_24(*src, *dst, [&](const uint8_t* src_row, uint8_t* dst_row, int32_t count) {
    for (int32_t i = 0; i < count; ++i, src_row += 3, dst_row += 3) {
      dst_row[0] = byte_of(src_row[0] * matrix[8]);
      dst_row[1] = byte_of(src_row[1] * matrix[4]);
      dst_row[2] = byte_of(src_row[2] * matrix[0]);
    }
  });
}

int32_t GetBradfordXYZMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                             int32_t tint2, float* out) {
  if (!out) return 0;
  const Column cone1 = product(kBradford, xyz_of(temperature1, tint1));
  const Column cone2 = product(kBradford, xyz_of(temperature2, tint2));
  float gain[9] = {};
  for (int i = 0; i < 3; ++i) gain[4 * i] = cone2.at[i] / cone1.at[i];

  float to_xyz[9], scaled[9];
  if (!xrmlMatrixInverse(to_xyz, kBradford, 3)) return 0;
  xrmlMatrixMultiply(to_xyz, gain, scaled, 3, 3);
  return xrmlMatrixMultiply(scaled, kBradford, out, 3, 3);
}

int32_t GetSRGBColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                                      int32_t tint2, float* out) {
  if (!out) return 0;
  if (temperature1 == temperature2 && tint1 == tint2) {
    XRMemCpy(out, kIdentity, sizeof kIdentity);
    return 1;
  }
  float adaptation[9], to_xyz[9], from_xyz[9], adapted[9];
  if (!GetBradfordXYZMatrix(temperature1, tint1, temperature2, tint2, adaptation)) return 0;
  GetRGB2XYZMatrix(kPrimaries, temperature2, tint2, to_xyz);
  if (!xrmlMatrixInverse(from_xyz, to_xyz, 3)) return 0;
  // The RGB of the second white on both sides.
  xrmlMatrixMultiply(adaptation, to_xyz, adapted, 3, 3);
  return xrmlMatrixMultiply(from_xyz, adapted, out, 3, 3);
}

void ApplySRGBColorTemperatureMatrix(const PixelArray* src, const PixelArray* dst,
                                     const float* matrix) {
  if (!src || !dst || !matrix) return;
  const Block<float> linear = CreatesRGB2LinearRGBIndex();
  const Block<uint8_t> encoded = CreateLinearRGB2sRGBIndex();
  if (!linear || !encoded) return;

  map_rows_24(*src, *dst, [&](const uint8_t* src_row, uint8_t* dst_row, int32_t count) {
    for (int32_t i = 0; i < count; ++i, src_row += 3, dst_row += 3) {
      const Column rgb = {{linear[src_row[2]], linear[src_row[1]], linear[src_row[0]]}};
      Column result = product(matrix, rgb);
      float &red = result.at[0], &green = result.at[1], &blue = result.at[2];
      share_overflow(red, green, blue);
      share_overflow(blue, red, green);  // green shares nothing
      dst_row[0] = encode(encoded.get(), blue);
      dst_row[1] = encode(encoded.get(), green);
      dst_row[2] = encode(encoded.get(), red);
    }
  });
}

}  // namespace roxe
