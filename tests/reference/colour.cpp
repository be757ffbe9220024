#include "reference/colour.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "reference/frame.h"
#include "reference/geometry.h"

namespace reference {

// ------------------------------------------------------------------------------------- conversions

uint32_t div_table(uint32_t n) {
  if (n == 0) return 0;
  return (1044480 + n / 2) / n;  // no quotient of 1 ... 255 lies halfway between two integers
}

void XRDRGB2HSV(uint32_t red, uint32_t green, uint32_t blue, int32_t* hue, int32_t* saturation,
                int32_t* value) {
  const uint32_t max = std::max({red, green, blue});
  const uint32_t min = std::min({red, green, blue});
  const int32_t r = static_cast<int32_t>(red);
  const int32_t g = static_cast<int32_t>(green);
  const int32_t b = static_cast<int32_t>(blue);

  *value = static_cast<int32_t>(max);
  *saturation = static_cast<int32_t>((max - min) * div_table(max)) >> 12;

  int32_t base, d;
  if (min == red) {
    base = 180;
    d = g - b;
  } else if (min == green) {
    base = 300;
    d = b - r;
  } else {
    base = 60;
    d = r - g;
  }
  const int32_t product = 15 * d * static_cast<int32_t>(div_table(max - min));
  *hue = base - (product >> 18);
}

void XRDHSV2RGB(float hue, float saturation, float value, uint8_t* red, uint8_t* green,
                uint8_t* blue) {
  saturation = saturation / 255.0f;

  if (hue < 0.0f) {
    hue = hue + 360.0f;
  } else if (hue >= 360.0f) {
    hue = hue - 360.0f;
  }
  if (!(hue >= 0.0f && hue < 360.0f)) {
    hue = std::fmod(hue, 360.0f);
    if (hue < 0.0f) hue = hue + 360.0f;
    if (!(hue >= 0.0f && hue < 360.0f)) hue = 0.0f;
  }

  if (saturation < 0.0f) saturation = 0.0f;
  if (saturation > 1.0f) saturation = 1.0f;
  if (value < 0.0f) value = 0.0f;
  if (value > 255.0f) value = 255.0f;

  const uint8_t v = static_cast<uint8_t>(reference::truncate(value));
  if (saturation == 0.0f) {
    *red = *green = *blue = v;
    return;
  }

  const float h = hue / 60.0f;
  const int32_t i = reference::truncate(h);
  const float f = h - static_cast<float>(i);
  const float chroma = value * saturation;
  const uint8_t p = static_cast<uint8_t>(reference::truncate(value - chroma));
  const uint8_t q = static_cast<uint8_t>(reference::truncate(value - chroma * f));
  const uint8_t t = static_cast<uint8_t>(reference::truncate((value - chroma) + chroma * f));
  const uint8_t sectors[6][3] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
  *red = sectors[i][0];
  *green = sectors[i][1];
  *blue = sectors[i][2];
}

void XRDRGB2HSL(uint32_t red, uint32_t green, uint32_t blue, float* hue, float* saturation,
                float* lightness) {
  const float r = static_cast<float>(red);
  const float g = static_cast<float>(green);
  const float b = static_cast<float>(blue);
  const float max = std::max({r, g, b});
  const float min = std::min({r, g, b});

  *lightness = (max + min) * 0.5f;
  if (max == min) {
    *saturation = 0.0f;
    *hue = -1.0f;
    return;
  }
  const float delta = max - min;
  *saturation = *lightness <= 127.5f ? delta / (max + min) : delta / (510.0f - max - min);

  float h;
  if (r == max) {
    h = (g - b) / delta;
  } else if (g == max) {
    h = 2.0f + (b - r) / delta;
  } else {
    h = 4.0f + (r - g) / delta;
  }
  h = h * 60.0f;
  if (h < 0.0f) h = h + 360.0f;
  *hue = h;
}

// ----------------------------------------------------------------------------------------- metrics

void init_cylindrical_metric(uint32_t* fade_table, uint32_t fade_count, uint32_t* cos_table,
                             uint32_t cos_count, uint32_t* reciprocal_table,
                             uint32_t reciprocal_count) {
  for (uint32_t i = 0; i < fade_count; ++i) {
    const float x = static_cast<float>(i);
    const float fade = 256.0f * reference::XRExp(static_cast<double>(-0.005f * x * x));
    fade_table[i] = static_cast<uint32_t>(reference::truncate(fade));
  }
  for (uint32_t i = 0; i < cos_count; ++i) {
    const float angle = static_cast<float>(i) * 3.1415927f / 180.0f;
    const float cosine = 32768.0f * reference::XRCos(static_cast<double>(angle));
    cos_table[i] = static_cast<uint32_t>(reference::truncate(cosine));  // the bits, if negative
  }
  for (uint32_t i = 0; i < reciprocal_count; ++i) reciprocal_table[i] = i == 0 ? 0 : 16384 / i;
}

uint32_t cylindrical_metric(int32_t hue, int32_t saturation, uint32_t value, int32_t ref_hue,
                            int32_t ref_saturation, uint32_t ref_value, uint32_t limit,
                            uint32_t limit_squared, uint32_t limit_reciprocal,
                            const uint32_t* fade_table, const uint32_t* cos_table) {
  const int32_t v1 = static_cast<int32_t>(value);
  const int32_t v2 = static_cast<int32_t>(ref_value);
  const int32_t fade1 = static_cast<int32_t>(fade_table[value]);
  const int32_t fade2 = static_cast<int32_t>(fade_table[ref_value]);
  const int32_t s1 = saturation + ((fade1 * (v1 - saturation)) >> 8);
  const int32_t s2 = ref_saturation + ((fade2 * (v2 - ref_saturation)) >> 8);
  const int32_t c = static_cast<int32_t>(cos_table[std::abs(ref_hue - hue)]);
  const int32_t sum = (v1 - v2) * (v1 - v2) + s2 * s2 + s1 * s1 - ((s2 * s1 * c) >> 14);
  const uint32_t q = static_cast<uint32_t>(sum) >> 2;
  if (q < limit_squared) return (q * limit_reciprocal) >> 14;
  return limit;
}

double achromatic_pixel_metric(double, double saturation1, double value1, double, double,
                               double value2, double limit) {
  if (saturation1 >= 10.0 && value1 >= 10.0) return 1.0;
  const float d = static_cast<float>(std::fabs(value2 - value1));
  return static_cast<double>(d) <= limit ? static_cast<double>(d) / limit : 1.0;
}

double minkowski_metric(double hue1, double saturation1, double value1, double hue2,
                        double saturation2, double value2, double limit) {
  float dh = static_cast<float>(std::fabs(hue2 - hue1));
  if (dh > 180.0f) dh = 360.0f - dh;
  const float ds = static_cast<float>(std::fabs(saturation2 - saturation1));
  const float dv = static_cast<float>(std::fabs(value2 - value1));
  const float h = reference::XRPow(static_cast<double>(dh), 1.0);
  const float s = reference::XRPow(static_cast<double>(ds), 3.0);
  const float v = reference::XRPow(static_cast<double>(dv), 2.0);
  const float r = reference::XRPow(static_cast<double>(h + s + v), 0.5);
  return static_cast<double>(r) <= limit ? static_cast<double>(r) / limit : 1.0;
}

double canberra_metric(double hue1, double saturation1, double value1, double hue2,
                       double saturation2, double value2, double limit) {
  const double pairs[3][2] = {{hue1, hue2}, {saturation1, saturation2}, {value1, value2}};
  float r = 0.0f;
  for (const auto& [x, y] : pairs) {
    const double sum = std::fabs(x + y);
    if (sum > 0.001) r = r + static_cast<float>(std::fabs(x - y) / sum);
  }
  return static_cast<double>(r) <= limit ? static_cast<double>(r) / limit : 1.0;
}

double chromatic_metric(double, double, double, double, double, double, double) { return 0.0; }

// --------------------------------------------------------------------------- replacement and tint

namespace {

// The distance of a colour from a reference colour, with everything computed anew for the call.
struct Selection {
  uint32_t fade_table[256];
  uint32_t cos_table[361];
  uint32_t reciprocal_table[202];
  uint32_t n;
  int32_t ref_hue, ref_saturation, ref_value;

  Selection(uint32_t blue, uint32_t green, uint32_t red, uint32_t steps) : n(steps) {
    reference::init_cylindrical_metric(fade_table, 256, cos_table, 361, reciprocal_table, 202);
    reference::XRDRGB2HSV(std::min(red, 255u), std::min(green, 255u), std::min(blue, 255u),
                          &ref_hue, &ref_saturation, &ref_value);
  }

  uint32_t distance(int32_t hue, int32_t saturation, int32_t value) const {
    return reference::cylindrical_metric(hue, saturation, static_cast<uint32_t>(value), ref_hue,
                                         ref_saturation, static_cast<uint32_t>(ref_value), n, n * n,
                                         reciprocal_table[n], fade_table, cos_table);
  }
};

// c moved towards target by weight / 65536, rounded down, low 8 bits.
uint8_t blend(uint8_t c, uint8_t target, int32_t weight) {
  return static_cast<uint8_t>(c + ((weight * (target - c)) >> 16));
}

}  // namespace

void create_blur_table(int32_t* table, uint32_t table_size, uint32_t steps) {
  const float e = reference::XRExp(-1.0);
  const float k = 1.0f / (1.0f - e);
  const float offset = -e * k;
  const uint32_t n = std::min(table_size, steps);
  const float step = 1.0f / static_cast<float>(n);
  float x = 0.0f;
  for (uint32_t i = 0; i < n; ++i) {
    const float t = reference::XRExp(static_cast<double>(-x * x * x));
    x = x + step;
    table[i] = reference::truncate((k * t + offset) * 65536.0f);
  }
  for (uint32_t i = n; i < table_size; ++i) table[i] = 0;
}

int32_t roxeReplaceColor(const PixelArray* src, PixelArray* dst, uint32_t blue, uint32_t green,
                         uint32_t red, uint32_t tolerance, int32_t hue_shift,
                         int32_t saturation_shift, int32_t value_shift) {
  const uint32_t n = std::min(tolerance, 200u) + 1;
  int32_t blur_table[256];
  reference::create_blur_table(blur_table, 256, n);
  const Selection selection(blue, green, red, n);
  const int32_t sat_step = reference::truncate(static_cast<float>(saturation_shift) * 2.55f);
  const int32_t val_step = reference::truncate(static_cast<float>(value_shift) * 2.55f);

  const Area area = reference::common_area_24(src, dst);
  for (int32_t y = 0; y < area.height; ++y) {
    for (int32_t x = 0; x < area.width; ++x) {
      uint8_t b = reference::channel(*src, 3, x, y, 0);
      uint8_t g = reference::channel(*src, 3, x, y, 1);
      uint8_t r = reference::channel(*src, 3, x, y, 2);
      int32_t h, s, v;
      reference::XRDRGB2HSV(r, g, b, &h, &s, &v);
      const uint32_t d = selection.distance(h, s, v);
      if (d < n) {
        const int32_t w = blur_table[d];
        const int32_t h2 = reference::plus(h, hue_shift);
        const int32_t s2 = s == 0 ? 0 : reference::plus(s, reference::times(w, sat_step) >> 16);
        const int32_t v2 = reference::plus(v, reference::times(w, val_step) >> 16);
        uint8_t red2, green2, blue2;
        reference::XRDHSV2RGB(static_cast<float>(h2), static_cast<float>(s2),
                              static_cast<float>(v2), &red2, &green2, &blue2);
        r = blend(r, red2, w);
        g = blend(g, green2, w);
        b = blend(b, blue2, w);
      }
      reference::channel(*dst, 3, x, y, 0) = b;
      reference::channel(*dst, 3, x, y, 1) = g;
      reference::channel(*dst, 3, x, y, 2) = r;
    }
  }
  return 0;
}

int32_t roxeReplaceColorMask(const PixelArray* src, PixelArray* mask, uint32_t blue, uint32_t green,
                             uint32_t red, uint32_t tolerance) {
  const uint32_t n = std::min(tolerance, 200u) + 1;
  int32_t blur_table[256];
  reference::create_blur_table(blur_table, 256, n);
  const Selection selection(blue, green, red, n);

  const Area area = reference::common_area_24(src, mask);
  for (int32_t y = 0; y < area.height; ++y) {
    for (int32_t x = 0; x < area.width; ++x) {
      int32_t h, s, v;
      reference::XRDRGB2HSV(reference::channel(*src, 3, x, y, 2),
                            reference::channel(*src, 3, x, y, 1),
                            reference::channel(*src, 3, x, y, 0), &h, &s, &v);
      const uint32_t d = selection.distance(h, s, v);
      const uint8_t m = static_cast<uint8_t>((blur_table[d] * 255) >> 16);
      for (int32_t c = 0; c < 3; ++c) reference::channel(*mask, 3, x, y, c) = m;
    }
  }
  return 0;
}

int32_t roxeColorTint(const PixelArray* src, PixelArray* dst, uint32_t blue, uint32_t green,
                      uint32_t red, uint32_t tolerance) {
  const float tolerance_as_float = static_cast<float>(std::min(tolerance, 200u));
  const uint32_t n = static_cast<uint32_t>(tolerance_as_float + 1.0f);
  const Selection selection(blue, green, red, n);

  const Area area = reference::common_area_24(src, dst);
  for (int32_t y = 0; y < area.height; ++y) {
    for (int32_t x = 0; x < area.width; ++x) {
      const int32_t b = reference::channel(*src, 3, x, y, 0);
      const int32_t g = reference::channel(*src, 3, x, y, 1);
      const int32_t r = reference::channel(*src, 3, x, y, 2);
      int32_t h, s, v;
      reference::XRDRGB2HSV(static_cast<uint32_t>(r), static_cast<uint32_t>(g),
                            static_cast<uint32_t>(b), &h, &s, &v);
      const int32_t grey = (28 * b + 76 * r + 151 * g) >> 8;
      const uint32_t d = selection.distance(h, s, v);
      const int32_t before[3] = {b, g, r};
      for (int32_t c = 0; c < 3; ++c) {
        int32_t after = grey;
        if (d < n) {
          const int32_t f = static_cast<int32_t>(d * selection.reciprocal_table[n]);
          after = before[c] + ((f * (grey - before[c])) >> 14);
        }
        reference::channel(*dst, 3, x, y, c) = static_cast<uint8_t>(after);
      }
    }
  }
  return 0;
}

int32_t roxeColorTintMask(const PixelArray* src, PixelArray* mask, uint32_t blue, uint32_t green,
                          uint32_t red, uint32_t tolerance) {
  return reference::roxeReplaceColorMask(src, mask, blue, green, red, tolerance);
}

// ----------------------------------------------------------------------------------- linear light

float sRGB2LinearRGBChannel(uint32_t value) {
  const float c = static_cast<float>(value) * 0.003921569f;
  if (c <= 0.03928f) return c * 0.07739938f;
  return reference::XRPow(static_cast<double>((c + 0.055f) * 0.94786733f),
                          static_cast<double>(2.4f));
}

uint8_t LinearRGB2sRGBChannel(float linear) {
  float s;
  if (linear <= 0.00304f) {
    s = linear * 12.92f;
  } else {
    s = 1.055f * reference::XRPow(static_cast<double>(linear), static_cast<double>(0.41666666f)) -
        0.055f;
  }
  const double byte = static_cast<double>(s) * 255.0 + 0.5;
  if (!(byte >= 1.0)) return 0;
  if (byte >= 255.0) return 255;
  return static_cast<uint8_t>(byte);
}

std::vector<float> CreatesRGB2LinearRGBIndex() {
  std::vector<float> table;
  for (uint32_t i = 0; i < 256; ++i) table.push_back(reference::sRGB2LinearRGBChannel(i));
  return table;
}

std::vector<uint8_t> CreateLinearRGB2sRGBIndex() {
  std::vector<uint8_t> table;
  float x = 0.0f;
  for (int32_t i = 0; i <= 4096; ++i) {
    table.push_back(reference::LinearRGB2sRGBChannel(x));
    x = x + 0.00024414063f;
  }
  return table;
}

// ----------------------------------------------------------------------------------- white points

const Matrix3 kPrimaries = {0.64f, 0.30f, 0.15f, 0.33f, 0.60f, 0.06f, 0.03f, 0.10f, 0.79f};

namespace {

const Matrix3 kBradford = {0.8951f, 0.2664f, -0.1614f, -0.7502f, 1.7135f,
                           0.0367f, 0.0389f, -0.0685f, 1.0296f};
const Matrix3 kIdentity = {1, 0, 0, 0, 1, 0, 0, 0, 1};

using Column = std::array<float, 3>;

Column times_column(const Matrix3& m, const Column& v) {
  Column product;
  for (size_t k = 0; k < 3; ++k)
    product[k] = m[3 * k] * v[0] + m[3 * k + 1] * v[1] + m[3 * k + 2] * v[2];
  return product;
}

Column tristimulus(WhitePoint white) {
  return {white.x / white.y, 1.0f, (1.0f - white.x - white.y) / white.y};
}

Matrix3 product_of(const Matrix3& a, const Matrix3& b) {
  Matrix3 c;
  reference::xrmlMatrixMultiply(a.data(), b.data(), c.data(), 3, 3);
  return c;
}

}  // namespace

WhitePoint GetWhitePoint(int32_t temperature, int32_t tint) {
  const float t = static_cast<float>(temperature);
  if (temperature < 4000) {
    const WhitePoint end = reference::GetWhitePoint(4000, 0);
    return {1.0f, 0.64f + (end.x - 0.64f) / 4000.0f * t, 0.33f + (end.y - 0.33f) / 4000.0f * t};
  }
  if (temperature > 25000) {
    const WhitePoint start = reference::GetWhitePoint(25000, 0);
    const float beyond = t - 25000.0f;
    return {1.0f, start.x + (0.15f - start.x) / 16000.0f * beyond,
            start.y + (0.06f - start.y) / 16000.0f * beyond};
  }
  const float cube = 1e9f / (t * t * t);
  const float square = 1e6f / (t * t);
  const float inverse = 1000.0f / t;
  float x;
  if (temperature <= 7000) {
    x = cube * -4.607f + square * 2.9678f + inverse * 0.09911f + 0.244063f;
  } else {
    x = cube * -2.0064f + square * 1.9018f + inverse * 0.24748f + 0.23704f;
  }
  const float square_of_x = x * x;
  const float y = -3.0f * square_of_x + 2.87f * x - 0.275f;
  float d = static_cast<float>(tint) * 0.0006f;
  if (tint <= 0) d = d * 0.75f;
  return {1.0f, x + d, y + d * (-1.0f / (2.87f - 6.0f * x))};
}

std::array<float, 3> Getuvw(const Matrix3& primaries, WhitePoint white) {
  Matrix3 inverse;
  reference::xrmlMatrixInverse(inverse.data(), primaries.data(), 3);
  return times_column(inverse, tristimulus(white));
}

bool GetRGB2XYZMatrix(const Matrix3& primaries, int32_t temperature, int32_t tint, Matrix3* out) {
  const Column scale = reference::Getuvw(primaries, reference::GetWhitePoint(temperature, tint));
  for (size_t i = 0; i < 9; ++i) (*out)[i] = primaries[i] * scale[i % 3];
  return true;
}

bool GetColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                               int32_t tint2, Matrix3* out) {
  if (temperature1 == temperature2 && tint1 == tint2) {
    *out = kIdentity;
    return true;
  }
  Matrix3 m1, m2, inverse;
  reference::GetRGB2XYZMatrix(kPrimaries, temperature1, tint1, &m1);
  reference::GetRGB2XYZMatrix(kPrimaries, temperature2, tint2, &m2);
  if (reference::xrmlMatrixInverse(inverse.data(), m2.data(), 3) == 0) return false;
  *out = product_of(inverse, m1);
  return true;
}

bool GetBradfordXYZMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2, int32_t tint2,
                          Matrix3* out) {
  const Column w1 = tristimulus(reference::GetWhitePoint(temperature1, tint1));
  const Column w2 = tristimulus(reference::GetWhitePoint(temperature2, tint2));
  const Column rho1 = times_column(kBradford, w1);
  const Column rho2 = times_column(kBradford, w2);
  const Matrix3 d = {rho2[0] / rho1[0], 0, 0, 0, rho2[1] / rho1[1], 0, 0, 0, rho2[2] / rho1[2]};
  Matrix3 inverse;
  reference::xrmlMatrixInverse(inverse.data(), kBradford.data(), 3);
  *out = product_of(product_of(inverse, d), kBradford);
  return true;
}

bool GetSRGBColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                                   int32_t tint2, Matrix3* out) {
  if (temperature1 == temperature2 && tint1 == tint2) {
    *out = kIdentity;
    return true;
  }
  Matrix3 a, p2, inverse;
  reference::GetBradfordXYZMatrix(temperature1, tint1, temperature2, tint2, &a);
  reference::GetRGB2XYZMatrix(kPrimaries, temperature2, tint2, &p2);
  if (reference::xrmlMatrixInverse(inverse.data(), p2.data(), 3) == 0) return false;
  *out = product_of(inverse, product_of(a, p2));
  return true;
}

void ApplyColorTemperatureMatrix(const PixelArray* src, PixelArray* dst, const Matrix3& matrix) {
  const float gains[3] = {matrix[8], matrix[4], matrix[0]};
  const Area area = reference::common_area_24(src, dst);
  for (int32_t y = 0; y < area.height; ++y)
    for (int32_t x = 0; x < area.width; ++x)
      for (int32_t c = 0; c < 3; ++c) {
        const float product = static_cast<float>(reference::channel(*src, 3, x, y, c)) * gains[c];
        reference::channel(*dst, 3, x, y, c) =
            static_cast<uint8_t>(std::clamp(reference::truncate(product), 0, 255));
      }
}

void ApplySRGBColorTemperatureMatrix(const PixelArray* src, PixelArray* dst,
                                     const Matrix3& matrix) {
  const std::vector<float> forward = reference::CreatesRGB2LinearRGBIndex();
  const std::vector<uint8_t> inverse = reference::CreateLinearRGB2sRGBIndex();
  // Takes what lies outside 0 ... 1 from a channel and gives half of it to each of the others.
  const auto share = [](float* from, float* other1, float* other2) {
    float excess = 0.0f;
    if (*from > 1.0f) {
      excess = *from - 1.0f;
      *from = 1.0f;
    } else if (*from < 0.0f) {
      excess = *from;
      *from = 0.0f;
    } else {
      return;
    }
    *other1 = *other1 + excess * 0.5f;
    *other2 = *other2 + excess * 0.5f;
  };

  const Area area = reference::common_area_24(src, dst);
  for (int32_t y = 0; y < area.height; ++y)
    for (int32_t x = 0; x < area.width; ++x) {
      Column out = times_column(matrix, {forward[reference::channel(*src, 3, x, y, 2)],
                                         forward[reference::channel(*src, 3, x, y, 1)],
                                         forward[reference::channel(*src, 3, x, y, 0)]});
      share(&out[0], &out[1], &out[2]);
      share(&out[2], &out[0], &out[1]);
      for (int32_t c = 0; c < 3; ++c) {
        float value = out[static_cast<size_t>(2 - c)];
        if (value < 0.0f) value = 0.0f;
        if (value > 1.0f) value = 1.0f;
        const int32_t index = std::clamp(reference::truncate(value * 4096.0f), 0, 4096);
        reference::channel(*dst, 3, x, y, c) = inverse[static_cast<size_t>(index)];
      }
    }
}

// ---------------------------------------------------------------------------------- white balance

Matrix3 GetStdColorTemperatureMatrix(int32_t temperature, int32_t tint) {
  if (temperature == 0 && tint == 0) return kIdentity;
  const float a = static_cast<float>(std::clamp(temperature, -100, 100)) * 0.01f;
  const float b = static_cast<float>(std::clamp(tint, -100, 100)) * 0.01f;
  float red, green, blue;
  if (a > 0.0f) {
    red = 1.0f + 1.1f * a;
    green = 1.0f - 0.28f * a;
    blue = 1.0f - 0.61f * a;
  } else {
    red = 1.0f + 0.868f * a;
    green = 1.0f;
    blue = 1.0f - 10.5f * a;
  }
  float k1, k2;
  if (b > 0.0f) {
    k1 = 1.0f + 0.29f * b;
    k2 = 1.0f - 0.6f * b;
  } else {
    k1 = 1.0f + 0.65f * b;
    k2 = 1.0f - 0.83f * b;
  }
  return {red * k1, 0, 0, 0, green * k2, 0, 0, 0, blue * k1};
}

void ApplyStdColorTemperatureMatrix(const PixelArray* src, PixelArray* dst, const Matrix3& matrix) {
  const std::vector<float> forward = reference::CreatesRGB2LinearRGBIndex();
  const std::vector<uint8_t> inverse = reference::CreateLinearRGB2sRGBIndex();
  int32_t lin_int[256];
  for (size_t i = 0; i < 256; ++i) lin_int[i] = reference::truncate(forward[i] * 4096.0f);
  int32_t m[9];
  for (size_t j = 0; j < 9; ++j) m[j] = reference::truncate(matrix[j] * 4096.0f);

  // Fixed point with 4096 for 1: a product of two such numbers, and one with 1 / 4096 as its unit.
  const auto scaled = [](int32_t p, int32_t q) { return reference::times(p, q) >> 12; };
  const auto sum = [](int32_t p, int32_t q, int32_t r) {
    return reference::plus(reference::plus(p, q), r);
  };

  const Area area = reference::common_area_24(src, dst);
  for (int32_t y = 0; y < area.height; ++y)
    for (int32_t x = 0; x < area.width; ++x) {
      const int32_t R = lin_int[reference::channel(*src, 3, x, y, 2)];
      const int32_t G = lin_int[reference::channel(*src, 3, x, y, 1)];
      const int32_t B = lin_int[reference::channel(*src, 3, x, y, 0)];
      int32_t R2 = sum(scaled(m[0], R), scaled(m[1], G), scaled(m[2], B));
      int32_t G2 = sum(scaled(m[3], R), scaled(m[4], G), scaled(m[5], B));
      int32_t B2 = sum(scaled(m[6], R), scaled(m[7], G), scaled(m[8], B));

      const int32_t y_in = (1249 * R + 2528 * G + 272 * B) >> 12;
      const int32_t y_out =
          sum(reference::times(1249, R2), reference::times(2528, G2), reference::times(272, B2)) >>
          12;
      if (y_out > 0) {
        const int32_t ratio = 2 * ((y_in * 4096) / y_out);
        if (ratio <= 4095) {
          R2 = scaled(R2, ratio);
          G2 = scaled(G2, ratio);
          B2 = scaled(B2, ratio);
        }
      }

      // What a channel spills is compared with 1 unit, not with full scale, so nearly every pixel
      // takes one of these branches, and below full scale the others lose by it.
      const auto spill = [&](int32_t into, int32_t strong, int32_t weight) {
        return scaled(scaled(into, reference::minus(strong, 4096)), weight);
      };
      if (static_cast<float>(R2) > 1.0f) {
        B2 = reference::plus(B2, spill(B, R2, (y_in * 2252) >> 12));
        G2 = reference::plus(G2, spill(G, R2, y_in >> 2));
      } else if (static_cast<float>(G2) > 1.0f) {
        B2 = reference::plus(B2, spill(B, G2, (y_in * 4476) >> 12));
        R2 = reference::plus(R2, spill(R, G2, (y_in * 3530) >> 12));
      } else if (static_cast<float>(B2) > 1.0f) {
        R2 = reference::plus(R2, spill(R, B2, (y_in * 339) >> 12));
      }

      const int32_t after[3] = {B2, G2, R2};
      for (int32_t c = 0; c < 3; ++c)
        reference::channel(*dst, 3, x, y, c) =
            inverse[static_cast<size_t>(std::clamp(after[c], 0, 4096))];
    }
}

int32_t roxeColorTemperature(const PixelArray* src, PixelArray* dst, int32_t temperature,
                             int32_t tint) {
  const int32_t src_status = reference::roxeVerifyPixelArray(src);
  if (src_status != 0) return src_status;
  const int32_t dst_status = reference::roxeVerifyPixelArray(dst);
  if (dst_status != 0) return dst_status;
  reference::ApplyStdColorTemperatureMatrix(
      src, dst, reference::GetStdColorTemperatureMatrix(temperature, tint));
  return 0;
}

}  // namespace reference
