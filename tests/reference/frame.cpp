#include "reference/frame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

namespace reference {
namespace {

int32_t low_32_bits(int64_t value) {
  const uint32_t bits = static_cast<uint32_t>(static_cast<uint64_t>(value) & 0xFFFFFFFFu);
  int32_t result;
  std::memcpy(&result, &bits, sizeof result);
  return result;
}

}  // namespace

int32_t roxeVerifyPixelArray(const PixelArray* image) {
  if (image == nullptr) return 2;
  if (image->format == 0) {
    if (image->width <= 0) return 1;
    if (image->height <= 0) return 1;
    if (times(3, image->width) > image->rowBytes) return 1;
  } else if (image->format == 3) {
    if (image->width <= 0) return 1;
    if (image->height <= 0) return 1;
    if (image->width > image->rowBytes) return 1;
  } else {
    return 0;
  }
  if (image->pixels == nullptr) return 1;
  return 0;
}

float XRSin(double x) { return static_cast<float>(std::sin(x)); }
float XRCos(double x) { return static_cast<float>(std::cos(x)); }
float XRTan(double x) { return static_cast<float>(std::tan(x)); }
float XRASin(double x) { return static_cast<float>(std::asin(x)); }
float XRACos(double x) { return static_cast<float>(std::asin(x)); }
float XRATan(double x) { return static_cast<float>(std::atan(x)); }
float XRSqrt(double x) { return static_cast<float>(std::sqrt(x)); }
float XRPow(double base, double exponent) { return static_cast<float>(std::pow(base, exponent)); }
float XRLog(double x) { return static_cast<float>(std::log(x)); }
float XRLog10(double x) { return static_cast<float>(std::log10(x)); }
float XRExp(double x) { return static_cast<float>(std::exp(x)); }

#if defined(__wasm__)
// libc's function rounds twice here, first to double. The product is exact in double; where the sum
// then lies halfway between two floats, the error of that sum says which one is nearer.
float fused_multiply_add(float a, float b, float c) {
  const double product = static_cast<double>(a) * b, sum = product + c;
  const double added = sum - product;
  const double error = (product - (sum - added)) + (c - added);
  const float nearest = static_cast<float>(sum);
  const double rest = sum - nearest;
  if (!(error * rest > 0)) return nearest;
  const float other = std::nextafterf(nearest, rest > 0 ? HUGE_VALF : -HUGE_VALF);
  return std::fabs(rest) == std::fabs(other - sum) ? other : nearest;
}
#else
float fused_multiply_add(float a, float b, float c) { return std::fma(a, b, c); }
#endif

int32_t truncate(float value) {
  if (std::isnan(value)) return std::numeric_limits<int32_t>::min();
  const double wide = static_cast<double>(value);
  if (wide >= 2147483647.0) return std::numeric_limits<int32_t>::max();
  if (wide <= -2147483648.0) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(wide);
}

int32_t plus(int32_t a, int32_t b) { return low_32_bits(static_cast<int64_t>(a) + b); }
int32_t minus(int32_t a, int32_t b) { return low_32_bits(static_cast<int64_t>(a) - b); }
int32_t times(int32_t a, int32_t b) { return low_32_bits(static_cast<int64_t>(a) * b); }
int32_t negative(int32_t a) { return minus(0, a); }
uint32_t magnitude(int32_t a) { return static_cast<uint32_t>(a < 0 ? negative(a) : a); }

int32_t columns_inside(const PixelArray& image, int32_t bytes_per_pixel) {
  if (image.pixels == nullptr || image.width <= 0 || image.rowBytes <= 0) return 0;
  const int32_t fitting = image.rowBytes / bytes_per_pixel;
  return image.width < fitting ? image.width : fitting;
}

Area common_area_24(const PixelArray* a, const PixelArray* b) {
  if (a == nullptr || b == nullptr) return {0, 0};
  const int32_t width = std::min(columns_inside(*a, 3), columns_inside(*b, 3));
  return {width, std::max(0, std::min(a->height, b->height))};
}

uint8_t& channel(const PixelArray& image, int32_t bytes_per_pixel, int32_t x, int32_t y,
                 int32_t c) {
  const ptrdiff_t row = static_cast<ptrdiff_t>(image.rowBytes) * y;
  const ptrdiff_t column = static_cast<ptrdiff_t>(bytes_per_pixel) * x;
  return image.pixels[row + column + c];
}

}  // namespace reference
