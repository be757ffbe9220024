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

bool overlap_24(const PixelArray& a, const PixelArray& b) {
  const int32_t columns_a = columns_24(a), columns_b = columns_24(b);
  const int32_t rows_a = rows_of(a), rows_b = rows_of(b);
  if (columns_a == 0 || columns_b == 0 || rows_a == 0 || rows_b == 0) return false;

  // Addresses are compared as integers: pointers into different blocks have no order.
  const uintptr_t begin_a = reinterpret_cast<uintptr_t>(a.pixels);
  const uintptr_t begin_b = reinterpret_cast<uintptr_t>(b.pixels);
  const uintptr_t end_a =
      reinterpret_cast<uintptr_t>(row_of(a, rows_a - 1)) + 3 * static_cast<uintptr_t>(columns_a);
  const uintptr_t end_b =
      reinterpret_cast<uintptr_t>(row_of(b, rows_b - 1)) + 3 * static_cast<uintptr_t>(columns_b);
  return begin_a < end_b && begin_b < end_a;
}

}  // namespace roxe
