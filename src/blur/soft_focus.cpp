#include "blur/soft_focus.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "blur/box_blur.h"
#include "blur/gaussian_stream.h"
#include "blur/gaussian_windows.h"
#include "frame/default_environment.h"
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

int32_t row_bytes(const PixelArray& image) {
  return common_columns(image, image) * (image.format == kRoxeFormatRGB24 ? 3 : 1);
}

// Whether blurring row by row gives what blurring the whole mask, then the whole picture, then
// blending gives. It does not where writing a row of dst changes pixels that are yet to be read.
bool streams(const PixelArray& src, const PixelArray& dst, const PixelArray* mask) {
  if (common_columns(src, dst) != src.width) return false;  // a width that wraps
  const auto written = [&](const PixelArray& image) {
    return overlap(dst, row_bytes(dst), image, row_bytes(image));
  };
  if (!same_rows(src, dst) && written(src)) return false;
  return !mask || !written(*mask);
}

// Pulls dst back towards src in proportion to a packed mask.
void blend_RGB24(const PixelArray& src, const PixelArray& dst, const uint8_t* mask) {
  const RowKernels& kernels = Rows();
  walk_24(src, dst, [&](int32_t x, int32_t y, int32_t columns, int32_t rows) {
    for (int32_t end = y + rows; y < end; ++y)
      kernels.blend_masked(row_of(src, y) + 3 * ptrdiff_t{x}, mask + ptrdiff_t{y} * src.width + x,
                           row_of(dst, y) + 3 * ptrdiff_t{x}, columns);
  });
}

// Soft focus in whole pictures: the mask, the picture, the blend.
int32_t soften_whole(const PixelArray& src, PixelArray& dst, const PixelArray* mask, int32_t radius,
                     int32_t mask_radius) {
  Block<uint8_t> blurred_mask;
  if (mask) {
    blurred_mask = make_block<uint8_t>(static_cast<uint64_t>(mask->width) *
                                       static_cast<uint64_t>(mask->height));
    if (!blurred_mask) return kRoxeErrInvalid;
    PixelArray packed = *mask;
    packed.rowBytes = mask->width;
    packed.pixels = blurred_mask.get();
    GaussianBlurA(mask, &packed, mask_radius);  // one format and size: it cannot refuse
  }
  GaussianBlurA(&src, &dst, radius);
  if (mask) blend_RGB24(src, dst, blurred_mask.get());
  return kRoxeOK;
}

// The same row by row, for pictures that stream and a radius above 1.
int32_t soften_rows(const PixelArray& src, PixelArray& dst, const PixelArray* mask, int32_t radius,
                    int32_t mask_radius) {
  GaussianStream blurred(src, radius);
  std::optional<GaussianStream> blurred_mask;
  if (mask && mask_radius > 1) {
    blurred_mask.emplace(*mask, mask_radius);
    if (!blurred_mask->allocate()) return kRoxeErrInvalid;
  }

  // Without memory for the rings the passes run one after the other.
  const bool streamed = blurred.allocate();
  if (!streamed) GaussianBlurA(&src, &dst, radius);

  const RowKernels& rows = Rows();
  for (int32_t y = 0; y < dst.height; ++y) {
    uint8_t* row =
        streamed ? blurred.next_row(row_of(dst, std::min(y + 1, dst.height - 1))) : row_of(dst, y);
    if (mask) {
      const uint8_t* weights =
          blurred_mask ? blurred_mask->next_row(row_of(src, y)) : row_of(*mask, y);
      rows.blend_masked(row_of(src, y), weights, row, dst.width);
    }
    if (streamed) XRMemCpy(row_of(dst, y), row, 3 * static_cast<size_t>(dst.width));
  }
  return kRoxeOK;
}

int32_t soften(const PixelArray& src, PixelArray& dst, const PixelArray* mask, int32_t radius,
               int32_t mask_radius) {
  if (!streams(src, dst, mask)) return soften_whole(src, dst, mask, radius, mask_radius);
  // The source blended with itself is the source.
  if (radius <= 1) return soften_whole(src, dst, nullptr, radius, mask_radius);
  // In place the source is already blurred when it is blended, so that the mask has no effect.
  if (src.pixels == dst.pixels) mask = nullptr;
  return soften_rows(src, dst, mask, radius, mask_radius);
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
  for (const auto [before, after] : gaussian_windows(static_cast<uint32_t>(radius))) {
    BoxBlurA(src, dst, before, before, after, after);
    src = dst;
  }
  return 1;
}

}  // namespace roxe

int32_t roxeSoftFocus(const PixelArray* src, PixelArray* dst, const PixelArray* mask,
                      int32_t radius, int32_t maskRadius) {
  // A record that fails in any way counts as missing.
  if (roxeVerifyPixelArray(src) != kRoxeOK) return kRoxeErrNull;
  if (roxeVerifyPixelArray(dst) != kRoxeOK) return kRoxeErrNull;
  if (src->format != kRoxeFormatRGB24 || dst->format != kRoxeFormatRGB24) return kRoxeErrParam;
  if (src->width != dst->width || src->height != dst->height) return kRoxeErrParam;

  if (mask) {
    if (roxeVerifyPixelArray(mask) != kRoxeOK) return kRoxeErrNull;
    if (mask->format != kRoxeFormatGray8) return kRoxeErrParam;
    if (mask->width != src->width || mask->height != src->height) return kRoxeErrParam;
    const int64_t mask_bytes = int64_t{mask->width} * mask->height;
    if (mask_bytes > UINT32_MAX) return kRoxeErrInvalid;
  }
  return roxe::in_default_environment(
      [&] { return roxe::soften(*src, *dst, mask, radius, maskRadius); });
}
