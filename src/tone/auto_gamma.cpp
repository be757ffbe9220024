#include "tone/auto_gamma.h"

#include <algorithm>

#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "rows/rows.h"

using namespace roxe;

int32_t roxeAutoGamma(const PixelArray* src, PixelArray* dst, const PixelRect* rect) {
  if (const int32_t status = roxeVerifyPixelArray(src)) return status;
  if (const int32_t status = roxeVerifyPixelArray(dst)) return status;
  if (src->format != kRoxeFormatRGB24) return kRoxeOK;

  return in_default_environment([&]() -> int32_t {
    Block<uint32_t> histogram = GetHistogram_RGB24(*src, rect);
    if (!histogram) return kRoxeErrInvalid;
    const double gamma = GetMaximumEntropyEstimateGamma(histogram.get());
    histogram.reset();

    return ApplyGamma_RGB24(*src, *dst, gamma) ? kRoxeOK : kRoxeErrInvalid;
  });
}

namespace roxe {

Block<uint32_t> GetHistogram_RGB24(const PixelArray& src, const PixelRect* rect) {
  if (!src.pixels || src.width < 1 || src.height < 1 || src.rowBytes < 1) return nullptr;

  PixelRect region = {0, 0, columns_24(src), src.height};
  if (rect) {
    region = {std::max(0, rect->left), std::max(0, rect->top), std::max(0, rect->right),
              std::max(0, rect->bottom)};
    if (region.left >= region.right || region.top >= region.bottom) return nullptr;
  }

  Block<uint32_t> histogram = make_block<uint32_t>(256);
  if (!histogram) return nullptr;

  const RowKernels& rows = Rows();
  uint32_t counts[8][256] = {};
  for (int32_t y = region.top; y < std::min(region.bottom, src.height); ++y) {
    // Pixels from the start of this row whose green byte is still one of the picture's.
    const int64_t bytes = static_cast<int64_t>(src.height - y) * src.rowBytes;
    const int64_t right = std::min<int64_t>(region.right, (bytes + 1) / 3);
    if (region.left >= right) continue;
    rows.count_green(row_of(src, y) + 3 * static_cast<ptrdiff_t>(region.left),
                     static_cast<int32_t>(right - region.left), counts);
  }
  for (const auto& set : counts)
    for (size_t v = 0; v < 256; ++v) histogram[v] += set[v];
  return histogram;
}

double GetMaximumEntropyEstimateGamma(const uint32_t* histogram) {
  float best = 1.0f;
  float best_score = 0.0f;
  // The steps accumulate their rounding, so the 36th candidate is not exactly 1.
  for (float gamma = 0.65f; gamma <= 1.2f; gamma += 0.01f) {
    float score = 0.0f;
    for (int32_t i = 0; i < 256; ++i) {
      if (histogram[i] == 0) continue;  // adds exactly nothing, and the power is what takes time
      const float x = (static_cast<float>(i) + 1.0f) * 0.00390625f;
      const float weight = static_cast<float>(static_cast<int32_t>(histogram[i])) * gamma;
      score = fused(weight, XRPow(x, gamma - 1.0f), score);
    }
    if (score > best_score) {
      best_score = score;
      best = gamma;
    }
  }
  return best;
}

int32_t ApplyGamma_RGB24(const PixelArray& src, const PixelArray& dst, double gamma) {
  const Block<uint8_t> table = make_block<uint8_t>(256);
  if (!table) return 0;
  for (int32_t v = 0; v < 256; ++v) {
    const float power = XRPow(static_cast<float>(v) / 255.0f, gamma);
    table[static_cast<size_t>(v)] = static_cast<uint8_t>(truncate_to_int32(power * 255.0f));
  }

  const RowKernels& rows = Rows();
  map_24(src, dst, [&](const PixelBand& band) { rows.look_up(table.get(), band); });
  return 1;
}

}  // namespace roxe
