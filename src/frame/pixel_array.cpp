#include "frame/pixel_array.h"

#include "frame/numbers.h"

using roxe::wrap_mul;

int32_t roxeVerifyPixelArray(const PixelArray* image) {
  if (!image) return kRoxeErrNull;
  // Any other format passes unexamined.
  if (image->format != kRoxeFormatRGB24 && image->format != kRoxeFormatGray8) return kRoxeOK;

  if (image->width <= 0) return kRoxeErrInvalid;
  if (image->height <= 0) return kRoxeErrInvalid;
  const int32_t channels = image->format == kRoxeFormatRGB24 ? 3 : 1;
  if (wrap_mul(channels, image->width) > image->rowBytes) return kRoxeErrInvalid;
  if (!image->pixels) return kRoxeErrInvalid;
  return kRoxeOK;
}

namespace roxe {

bool overlap(const PixelArray& a, int32_t bytes_a, const PixelArray& b, int32_t bytes_b) {
  const int32_t rows_a = rows_of(a), rows_b = rows_of(b);
  if (bytes_a == 0 || bytes_b == 0 || rows_a == 0 || rows_b == 0) return false;

  // Addresses are compared as integers: pointers into different blocks have no order.
  const auto address = [](const uint8_t* p) { return reinterpret_cast<uintptr_t>(p); };
  const uintptr_t end_a = address(row_of(a, rows_a - 1)) + static_cast<uintptr_t>(bytes_a);
  const uintptr_t end_b = address(row_of(b, rows_b - 1)) + static_cast<uintptr_t>(bytes_b);
  return address(a.pixels) < end_b && address(b.pixels) < end_a;
}

}  // namespace roxe
