#include "blur/soft_focus.h"

#include <algorithm>
#include <cstddef>

#include "blur/box_blur.h"
#include "frame/pixel_array.h"
#include "frame/runtime.h"
#include "roxe.h"
#include "rows/rows.h"

namespace roxe {
namespace {

void copy_pixels(const PixelArray& src, const PixelArray& dst) {
  const int32_t bytes = common_columns(src, dst) * (src.format == kRoxeFormatRGB24 ? 3 : 1);
  for (int32_t y = 0; y < rows_of(src); ++y) {
    const uint8_t* src_row = row_of(src, y);
    uint8_t* dst_row = row_of(dst, y);
    // Pictures may overlap, so this is no block copy.
    for (int32_t i = 0; i < bytes; ++i) dst_row[i] = src_row[i];
  }
}

// Pulls dst back towards src in proportion to a packed mask; null: leaves dst as it is.
void blend_RGB24(const PixelArray& src, const PixelArray& dst, const uint8_t* mask) {
  if (!mask) return;
  const RowKernels& rows = Rows();
  const int32_t columns = common_columns(src, dst);
  const bool pixel_by_pixel = !same_rows(src, dst) && overlap_24(src, dst);
  const int32_t step = pixel_by_pixel ? 1 : columns;
  for (int32_t y = 0; y < rows_of(src); ++y, mask += src.width)
    for (int32_t x = 0; x < columns; x += step)
      rows.blend_masked(row_of(src, y) + 3 * ptrdiff_t{x}, mask + x,
                        row_of(dst, y) + 3 * ptrdiff_t{x}, step);
}

}  // namespace

int32_t GaussianBlurA(const PixelArray* src, PixelArray* dst, int32_t radius) {
  if (!src || !dst) return 0;
  if (src->format != dst->format) return 0;
  if (src->width != dst->width || src->height != dst->height) return 0;

  if (radius <= 1) {
    if (src->pixels != dst->pixels) copy_pixels(*src, *dst);
    return 1;
  }
  // The first window of an even length reaches one pixel further before than after; the second one
  // is its mirror image, so that the two together are centred.
  const int32_t half = radius >> 1;
  const int32_t shorter = radius % 2 == 0 ? half - 1 : half;
  BoxBlurA(src, dst, half, half, shorter, shorter);
  BoxBlurA(dst, dst, shorter, shorter, half, half);
  BoxBlurA(dst, dst, half, half, half, half);
  return 1;
}

}  // namespace roxe

int32_t roxeSoftFocus(const PixelArray* src, PixelArray* dst, const PixelArray* mask,
                      int32_t radius, int32_t maskRadius) {
  // A record that fails in any way counts as missing.
  if (roxeVerifyPixelArray(src) != kRoxeOK) return kRoxeErrNull;
  if (roxeVerifyPixelArray(dst) != kRoxeOK) return kRoxeErrNull;
  if (!src || !dst) return kRoxeErrParam;
  if (src->format != kRoxeFormatRGB24 || dst->format != kRoxeFormatRGB24) return kRoxeErrParam;
  if (src->width != dst->width || src->height != dst->height) return kRoxeErrParam;

  roxe::Block<uint8_t> blurred_mask;
  if (mask) {
    if (roxeVerifyPixelArray(mask) != kRoxeOK) return kRoxeErrNull;
    if (mask->format != kRoxeFormatGray8) return kRoxeErrParam;
    if (mask->width != src->width || mask->height != src->height) return kRoxeErrParam;

    blurred_mask = roxe::make_block<uint8_t>(static_cast<uint64_t>(mask->width) *
                                             static_cast<uint64_t>(mask->height));
    if (!blurred_mask) return kRoxeErrInvalid;
    PixelArray packed = *mask;
    packed.rowBytes = mask->width;
    packed.pixels = blurred_mask.get();
    if (roxe::GaussianBlurA(mask, &packed, maskRadius) != 1) return kRoxeErrFailed;
  }

  if (roxe::GaussianBlurA(src, dst, radius) != 1) return kRoxeErrFailed;
  roxe::blend_RGB24(*src, *dst, blurred_mask.get());
  return kRoxeOK;
}
