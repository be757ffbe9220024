#include "reference/tone.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "reference/blur.h"
#include "reference/frame.h"

namespace reference {

// --------------------------------------------------------------------------------- automatic gamma

std::vector<uint32_t> GetHistogram_RGB24(const PixelArray* src, const PixelRect* rect) {
  if (src->pixels == nullptr || src->width < 1 || src->height < 1 || src->rowBytes < 1) return {};
  PixelRect region = {0, 0, reference::columns_inside(*src, 3), src->height};
  if (rect != nullptr) {
    region.left = std::max(0, rect->left);
    region.top = std::max(0, rect->top);
    region.right = std::max(0, rect->right);
    region.bottom = std::max(0, rect->bottom);
    if (region.left >= region.right || region.top >= region.bottom) return {};
  }
  std::vector<uint32_t> histogram(256, 0);
  // A region that reaches past the right edge goes on in the next row; the memory of the picture
  // ends it.
  const int64_t size = static_cast<int64_t>(src->height) * src->rowBytes;
  for (int64_t y = region.top; y < std::min(region.bottom, src->height); ++y)
    for (int64_t x = region.left; x < region.right; ++x) {
      const int64_t green = y * src->rowBytes + 3 * x + 1;
      if (green >= size) break;
      ++histogram[src->pixels[green]];
    }
  return histogram;
}

double GetMaximumEntropyEstimateGamma(const uint32_t* histogram) {
  float best = 1.0f;
  float best_score = 0.0f;
  float g = 0.65f;
  do {
    float score = 0.0f;
    for (int32_t i = 0; i < 256; ++i) {
      const float x = (static_cast<float>(i) + 1.0f) * 0.00390625f;
      const float count = static_cast<float>(static_cast<int32_t>(histogram[i]));
      const float slope = reference::XRPow(static_cast<double>(x), static_cast<double>(g - 1.0f));
      score = reference::fused_multiply_add(count * g, slope, score);
    }
    if (score > best_score) {
      best_score = score;
      best = g;
    }
    g = g + 0.01f;
  } while (g <= 1.2f);
  return static_cast<double>(best);
}

void ApplyGamma_RGB24(const PixelArray* src, PixelArray* dst, double gamma) {
  uint8_t table[256];
  for (int32_t v = 0; v < 256; ++v) {
    const float x = static_cast<float>(v) / 255.0f;
    const float power = reference::XRPow(static_cast<double>(x), gamma);
    table[v] = static_cast<uint8_t>(reference::truncate(power * 255.0f));
  }
  const Area area = reference::common_area_24(src, dst);
  for (int32_t y = 0; y < area.height; ++y)
    for (int32_t x = 0; x < area.width; ++x)
      for (int32_t c = 0; c < 3; ++c)
        reference::channel(*dst, 3, x, y, c) = table[reference::channel(*src, 3, x, y, c)];
}

int32_t roxeAutoGamma(const PixelArray* src, PixelArray* dst, const PixelRect* rect) {
  const int32_t src_status = reference::roxeVerifyPixelArray(src);
  if (src_status != 0) return src_status;
  const int32_t dst_status = reference::roxeVerifyPixelArray(dst);
  if (dst_status != 0) return dst_status;
  if (src->format != 0) return 0;
  const std::vector<uint32_t> histogram = reference::GetHistogram_RGB24(src, rect);
  if (histogram.empty()) return 1;
  const double gamma = reference::GetMaximumEntropyEstimateGamma(histogram.data());
  reference::ApplyGamma_RGB24(src, dst, gamma);
  return 0;
}

// ------------------------------------------------------------------------------------ tone curves

namespace {

CurvePoint halfway(CurvePoint p, CurvePoint q) { return {(p.x + q.x) * 0.5f, (p.y + q.y) * 0.5f}; }

// Size of the second difference p - 2 q + r.
float bend(CurvePoint p, CurvePoint q, CurvePoint r) {
  const float x = p.x - 2.0f * q.x + r.x;
  const float y = p.y - 2.0f * q.y + r.y;
  return std::fabs(x) + std::fabs(y);
}

// Halves a segment until the halves have the wanted depth; two sibling halves give three points.
void halve(CurvePoint a, CurvePoint b, CurvePoint c, CurvePoint d, uint32_t depth, uint32_t wanted,
           std::vector<CurvePoint>* out) {
  const CurvePoint ab = halfway(a, b);
  const CurvePoint bc = halfway(b, c);
  const CurvePoint cd = halfway(c, d);
  const CurvePoint abc = halfway(ab, bc);
  const CurvePoint bcd = halfway(bc, cd);
  const CurvePoint middle = halfway(abc, bcd);
  if (depth + 1 == wanted) {
    for (const CurvePoint point : {a, middle, d}) out->push_back(point);
    return;
  }
  halve(a, ab, abc, middle, depth + 1, wanted, out);
  halve(middle, bcd, cd, d, depth + 1, wanted, out);
}

}  // namespace

std::vector<CurvePoint> cubic_to_polyLine(const CurvePoint* control, float tolerance) {
  float m = 0.0f;
  for (const float size :
       {bend(control[3], control[2], control[1]), bend(control[2], control[1], control[0])})
    if (size > m) m = size;

  const float ratio = 3.0f * m / (4.0f * tolerance);
  const float twice_ln_2 = 2.0f * reference::XRLog(2.0);
  const float depth = reference::XRLog(static_cast<double>(ratio)) / twice_ln_2;
  if (!(depth >= 1.0f)) return {control[0], control[3]};
  // 9 is the greatest depth whose points, 3 * 2^8, fit into the polyline's 1024.
  const uint32_t wanted = depth >= 9.0f ? 9u : static_cast<uint32_t>(depth);
  std::vector<CurvePoint> points;
  halve(control[0], control[1], control[2], control[3], 0, wanted, &points);
  return points;
}

void set_look_up_table(float* table, int32_t n, const CurvePoint* control, int32_t count) {
  const std::vector<CurvePoint> line = reference::cubic_to_polyLine(control, 0.1f);
  for (int32_t i = 0; i < n; ++i) table[i] = static_cast<float>(i);
  for (int32_t k = 0; k < count; ++k)
    if (std::isnan(control[k].x) || std::isnan(control[k].y)) return;

  const int32_t first = reference::truncate(control[0].x);
  int64_t i = line[0].x > static_cast<float>(first) ? int64_t{first} + 1 : int64_t{first};
  i = std::max(i, int64_t{0});  // there is no level below 0
  const float end = control[count - 1].x;
  size_t k = 0;
  while (k + 1 < line.size() && i < n && static_cast<float>(i) < end) {
    const CurvePoint p = line[k];
    const CurvePoint q = line[k + 1];
    const float x = static_cast<float>(i);
    if (p.x <= x && x < q.x) {
      const float slope = (q.y - p.y) / (q.x - p.x);
      table[i] = reference::fused_multiply_add(slope, x - p.x, p.y);
      ++i;
    } else {
      ++k;
    }
  }
}

// ------------------------------------------------------------------------------ shadow and
// highlight

void lighten_shadow(float* table, int32_t n, uint32_t amount) {
  const float a = static_cast<float>(amount);
  CurvePoint control[4] = {{0.0f, 0.0f}, {105.0f, 105.0f}, {105.0f, 105.0f}, {210.0f, 210.0f}};
  if (amount != 0) {
    const float k = a > 10.0f ? (a - 10.0f) * 8.0f / 9.0f + 19.0f : 1.9f * a;
    const float q = 1.0f + 0.07f * a;
    const float t = k * 9.0f / ((q - 1.0f) * 4.0f);
    control[1] = {t, q * t};
    const float u = (27.0f * (54.0f - 0.15f * a) - 12.0f * t - 210.0f) / 6.0f;
    control[2] = {u, u};
  }
  reference::set_look_up_table(table, n, control, 4);
}

void darken_highlight(float* table, int32_t n, uint32_t amount) {
  float lighter[256];
  reference::lighten_shadow(lighter, 256, amount);
  for (int32_t i = 0; i < n; ++i) table[i] = 255.0f - lighter[255 - i];
}

void midtone_contrast(float* table, int32_t n, int32_t amount) {
  const float m = static_cast<float>(amount);
  float end, q, w, c;
  if (amount < 1) {
    end = 244.0f;
    q = 1.0f + 0.007f * m;
    w = 0.25f;
    c = 177.0f;
  } else {
    end = 240.0f;
    q = 1.0f + 0.025f * m;
    w = 0.42f;
    c = 172.0f;
  }
  CurvePoint control[4];
  control[0] = {127.5f, 127.5f};
  control[3] = {end, end};
  if (amount == 0) {
    control[1] = control[2] = halfway(control[0], control[3]);
  } else {
    const float v = m * w * 9.0f / ((q - 1.0f) * 4.0f);
    control[1] = {127.5f + v, 127.5f + q * v};
    const float u = (27.0f * c - 8.0f * 127.5f - 12.0f * control[1].x - end) / 6.0f;
    control[2] = {u, u};
  }
  reference::set_look_up_table(table, n, control, 4);
  for (int32_t i = 0; i <= n / 2; ++i) table[i] = 255.0f - table[255 - i];
}

std::vector<float> get_intensity(const PixelArray& image, int32_t width, int32_t height) {
  std::vector<float> plane;
  for (int32_t y = 0; y < height; ++y)
    for (int32_t x = 0; x < width; ++x) {
      const float b0 = static_cast<float>(reference::channel(image, 3, x, y, 0));
      const float b1 = static_cast<float>(reference::channel(image, 3, x, y, 1));
      const float b2 = static_cast<float>(reference::channel(image, 3, x, y, 2));
      plane.push_back(reference::fused_multiply_add(
          0.114f, b0, reference::fused_multiply_add(0.299f, b2, 0.587f * b1)));
    }
  return plane;
}

void update_intensity(float* intensity, const float* blurred, int32_t count, const float* combined,
                      const float* midtone) {
  for (int32_t i = 0; i < count; ++i) {
    const float own = intensity[i];
    int32_t level;
    if (blurred == intensity) {
      level = reference::truncate(own);
    } else {
      const float around = blurred[i];
      const float s = static_cast<float>(static_cast<double>(own + around) + 0.0001);
      const float r = (own * around + s * s) / (around * around + s * s);
      level = reference::truncate(combined[reference::truncate(own) & 255] * r);
    }
    intensity[i] = midtone[std::clamp(level, 0, 511)] - own;
  }
}

int32_t roxeShadowHighlight(const PixelArray* src, PixelArray* dst, uint32_t shadow,
                            uint32_t highlight, int32_t midtone) {
  const Area area = reference::common_area_24(src, dst);
  if (area.width == 0 || area.height == 0) return 0;
  if (static_cast<int64_t>(area.width) * area.height > int64_t{0xFFFFFFFF} / 8) return 0;

  float s_curve[256], h_curve[256], m_curve[512], combined[256];
  for (float& level : m_curve) level = 255.0f;
  reference::lighten_shadow(s_curve, 256, shadow);
  reference::darken_highlight(h_curve, 256, highlight);
  reference::midtone_contrast(m_curve, 256, midtone);
  combined[0] = 0.0f;
  for (int32_t k = 1; k < 256; ++k) combined[k] = s_curve[k] + h_curve[k] - static_cast<float>(k);

  // The intensity of each pixel, and then the change of it.
  std::vector<float> plane = reference::get_intensity(*src, area.width, area.height);
  const int32_t count = area.width * area.height;
  if (shadow == 0 && highlight == 0) {
    reference::update_intensity(plane.data(), plane.data(), count, combined, m_curve);
  } else {
    std::vector<float> blurred = plane;
    std::vector<float> scratch(plane.size());
    const int32_t length = std::min({area.width, 10, area.height}) - 1;
    if (length > 0)
      reference::BoxBlur(blurred.data(), scratch.data(), static_cast<uint32_t>(area.width),
                         static_cast<uint32_t>(area.height), static_cast<uint32_t>(length));
    reference::update_intensity(plane.data(), blurred.data(), count, combined, m_curve);
  }

  for (int32_t y = 0; y < area.height; ++y)
    for (int32_t x = 0; x < area.width; ++x) {
      const float change = plane[static_cast<size_t>(y * area.width + x)];
      for (int32_t c = 0; c < 3; ++c) {
        const float v = static_cast<float>(reference::channel(*src, 3, x, y, c));
        const int32_t level = reference::truncate(v + change);
        reference::channel(*dst, 3, x, y, c) = static_cast<uint8_t>(std::clamp(level, 0, 255));
      }
    }
  return 0;
}

// ------------------------------------------------------------------------------------- variations

namespace {

constexpr int32_t kListedInputs[9] = {0, 1, 16, 64, 128, 192, 240, 254, 255};

struct ListedRow {
  double exponent;
  int32_t outputs[9];
};

constexpr ListedRow kLighter[8] = {
    {1.0000, {0, 1, 16, 64, 128, 192, 240, 253, 254}},
    {0.9706, {0, 1, 17, 66, 130, 193, 240, 254, 254}},
    {0.9432, {0, 1, 18, 69, 133, 195, 240, 254, 254}},
    {0.8932, {0, 1, 21, 74, 137, 197, 241, 254, 254}},
    {0.8001, {0, 3, 27, 84, 146, 203, 242, 254, 254}},
    {0.6663, {0, 6, 40, 101, 161, 211, 244, 254, 255}},
    {0.5004, {0, 15, 63, 127, 180, 221, 247, 254, 255}},
    {0.3329, {0, 40, 101, 160, 202, 232, 249, 254, 255}},
};

constexpr ListedRow kDarker[8] = {
    {1.0200, {0, 0, 15, 62, 126, 190, 239, 253, 254}},
    {1.0425, {0, 0, 14, 60, 124, 189, 239, 253, 254}},
    {1.0635, {0, 0, 13, 58, 122, 188, 239, 253, 254}},
    {1.1369, {0, 0, 10, 52, 116, 184, 238, 253, 254}},
    {1.2502, {0, 0, 8, 45, 107, 178, 236, 253, 254}},
    {1.5162, {0, 0, 3, 31, 89, 165, 232, 253, 254}},
    {2.0016, {0, 0, 0, 16, 64, 144, 225, 252, 254}},
    {3.0329, {0, 0, 0, 3, 31, 107, 212, 251, 254}},
};

// The power curve, kept between the listed outputs on either side.
Curve curve_of(const ListedRow& row) {
  Curve curve{};
  for (size_t k = 0; k < 9; ++k)
    curve[static_cast<size_t>(kListedInputs[k])] = static_cast<uint8_t>(row.outputs[k]);
  for (size_t k = 0; k + 1 < 9; ++k)
    for (int32_t v = kListedInputs[k] + 1; v < kListedInputs[k + 1]; ++v) {
      const double power = 255.0 * std::pow(v / 255.0, row.exponent);
      const int32_t level = static_cast<int32_t>(std::floor(power + 1e-9));
      curve[static_cast<size_t>(v)] =
          static_cast<uint8_t>(std::clamp(level, row.outputs[k], row.outputs[k + 1]));
    }
  return curve;
}

Curve apply_row(const Curve& curve, const Curve& row) {
  Curve result;
  for (size_t i = 0; i < 256; ++i) result[i] = row[curve[i]];
  return result;
}

// The curve of one channel: amount steps lighter, or darker where it is negative.
Curve perchannel_curve(int64_t amount, int32_t base) {
  std::array<Curve, 12> rows{};
  for (int32_t k = 0; k < 8; ++k)
    rows[static_cast<size_t>(k)] =
        amount < 0 ? reference::darker_row(k) : reference::lighter_row(k);
  for (int32_t k = base + 1; k <= base + 4; ++k) {
    const Curve& previous = rows[static_cast<size_t>(k - 1)];
    rows[static_cast<size_t>(k)] = apply_row(previous, previous);
  }

  Curve curve;
  for (size_t i = 0; i < 256; ++i) curve[i] = static_cast<uint8_t>(i);
  const int64_t m = std::min<int64_t>(amount < 0 ? -amount : amount, 60);
  for (int32_t bit = 5; bit >= 0; --bit)  // 32 goes with row base + 4, 1 with row base - 1
    if ((m >> bit) & 1) curve = apply_row(curve, rows[static_cast<size_t>(base - 1 + bit)]);
  return curve;
}

}  // namespace

Curve lighter_row(int32_t row) { return curve_of(kLighter[row]); }
Curve darker_row(int32_t row) { return curve_of(kDarker[row]); }

int32_t roxeVariations(const PixelArray* src, PixelArray* dst, int32_t red, int32_t green,
                       int32_t blue, int32_t dark, int32_t level) {
  const int32_t base = std::clamp(level, 0, 6) + 1;
  const int64_t s = int64_t{red} + int64_t{green} + int64_t{blue} - 2 * int64_t{dark};
  const Curve curves[3] = {perchannel_curve(s - 3 * int64_t{blue}, base),
                           perchannel_curve(s - 3 * int64_t{green}, base),
                           perchannel_curve(s - 3 * int64_t{red}, base)};
  const Area area = reference::common_area_24(src, dst);
  for (int32_t y = 0; y < area.height; ++y)
    for (int32_t x = 0; x < area.width; ++x)
      for (int32_t c = 0; c < 3; ++c)
        reference::channel(*dst, 3, x, y, c) = curves[c][reference::channel(*src, 3, x, y, c)];
  return 0;
}

}  // namespace reference
