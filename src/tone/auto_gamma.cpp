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

namespace {

// Counts the green bytes of neighbouring pixels, each so many times.
void count_neighbours(const uint8_t* src, int32_t count, uint32_t times, uint32_t* histogram) {
  constexpr int32_t kShort = 1024;  // where adding up the sets would take longer than counting
  if (count < kShort) {
    for (int32_t i = 0; i < count; ++i) histogram[src[3 * i + 1]] += times;
    return;
  }
  uint32_t counts[8][256] = {};
  Rows().count_green(src, count, counts);
  for (const auto& set : counts)
    for (size_t v = 0; v < 256; ++v) histogram[v] += times * set[v];
}

void count_rows(const PixelArray& src, const PixelRect& region, uint32_t* histogram) {
  const RowKernels& rows = Rows();
  uint32_t counts[8][256] = {};
  for (int32_t y = region.top; y < region.bottom; ++y) {
    // Pixels from the start of this row whose green byte is still one of the picture's.
    const int64_t bytes = static_cast<int64_t>(src.height - y) * src.rowBytes;
    const int64_t right = std::min<int64_t>(region.right, (bytes + 1) / 3);
    if (region.left >= right) continue;
    rows.count_green(row_of(src, y) + 3 * static_cast<ptrdiff_t>(region.left),
                     static_cast<int32_t>(right - region.left), counts);
  }
  for (const auto& set : counts)
    for (size_t v = 0; v < 256; ++v) histogram[v] += set[v];
}

// How many rows on the pixels lie at the same bytes as those of a row: rows need not hold whole
// pixels.
int32_t rows_in_step(const PixelArray& src) { return src.rowBytes % 3 == 0 ? 1 : 3; }

// Whether rows of the region go on so far that they share pixels with later ones.
bool rows_share(const PixelArray& src, const PixelRect& region) {
  return int64_t{region.right} - region.left > int64_t{src.rowBytes} * rows_in_step(src) / 3;
}

// The same for rows that share pixels, reading each byte once: neighbours count as often as
// there are rows that hold them.
void count_shared_rows(const PixelArray& src, const PixelRect& region, uint32_t* histogram) {
  const int32_t in_step = rows_in_step(src);
  const int64_t step = int64_t{src.rowBytes} * in_step / 3;  // in pixels
  const int32_t first_rows = std::min(in_step, region.bottom - region.top);
  for (int32_t y = region.top; y < region.top + first_rows; ++y) {
    // Row y, and every in_step-th row after it, in pixels from the start of row y on.
    const int64_t rows = (int64_t{region.bottom} - y + in_step - 1) / in_step;
    const int64_t end = (static_cast<int64_t>(src.height - y) * src.rowBytes + 1) / 3;
    int64_t entered = 0, ended = 0;
    for (int64_t at = region.left; at < end && ended < rows;) {
      if (entered < rows && at == region.left + entered * step) ++entered;
      if (at == region.right + ended * step) ++ended;
      int64_t next = std::min(end, region.right + ended * step);
      if (entered < rows) next = std::min(next, region.left + entered * step);
      count_neighbours(row_of(src, y) + 3 * static_cast<ptrdiff_t>(at),
                       static_cast<int32_t>(next - at), static_cast<uint32_t>(entered - ended),
                       histogram);
      at = next;
    }
  }
}

}  // namespace

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
  region.bottom = std::min(region.bottom, src.height);
  const auto count = rows_share(src, region) ? count_shared_rows : count_rows;
  count(src, region, histogram.get());
  return histogram;
}

double GetMaximumEntropyEstimateGamma(const uint32_t* histogram) {
  float level[256], pixels[256];  // of the levels that there are
  int32_t levels = 0;
  for (int32_t i = 0; i < 256; ++i) {
    if (histogram[i] == 0) continue;  // adds exactly nothing, and the power is what takes time
    level[levels] = (static_cast<float>(i) + 1.0f) * 0.00390625f;
    pixels[levels++] = static_cast<float>(static_cast<int32_t>(histogram[i]));
  }
  float best = 1.0f;
  float best_score = 0.0f;
  // The steps accumulate their rounding, so the 36th candidate is not exactly 1.
  for (float gamma = 0.65f; gamma <= 1.2f; gamma += 0.01f) {
    float score = 0.0f;
    for (int32_t i = 0; i < levels; ++i)
      score = fused(pixels[i] * gamma, XRPow(level[i], gamma - 1.0f), score);
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
