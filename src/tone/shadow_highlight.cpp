#include "tone/shadow_highlight.h"

#include <algorithm>

#include "blur/plane_blur.h"
#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "frame/runtime.h"
#include "rows/rows.h"
#include "tone/tone_curves.h"

using namespace roxe;

int32_t roxeShadowHighlight(const PixelArray* src, PixelArray* dst, uint32_t shadow,
                            uint32_t highlight, int32_t midtone) {
  if (!src || !dst) return kRoxeOK;
  // Pictures that overlap row against row need every intensity before the first pixel is written.
  const bool in_step = same_rows(*src, *dst) || !overlap_24(*src, *dst);
  const auto operation = in_step ? shadow_highlight_streamed : shadow_highlight;
  in_default_environment([&] { operation(*src, *dst, shadow, highlight, midtone); });
  return kRoxeOK;
}

namespace roxe {
namespace {

// Pixels that go through all stages before the next ones do: their floats stay in the nearest
// cache.
constexpr int32_t kChunk = 1024;

// Rows whose sums are made together, and rows of sums that are kept: those of a band and the
// longest window before it.
constexpr int32_t kBand = 8;
constexpr int32_t kRing = 24;
constexpr int32_t kLongestBlur = 9;
static_assert(kRing % kBand == 0 && kRing >= kBand + kLongestBlur + 1);

struct ToneTables {
  float combined[256];
  float midtone[512];
};

ToneTables make_tone_tables(uint32_t shadow, uint32_t highlight, int32_t midtone) {
  ToneTables tables;
  float lightened[256], darkened[256];
  lighten_shadow(lightened, 256, shadow);
  darken_highlight(darkened, 256, highlight);
  tables.combined[0] = 0.0f;
  for (int32_t k = 1; k < 256; ++k)
    tables.combined[k] = lightened[k] + darkened[k] - static_cast<float>(k);

  std::fill_n(tables.midtone, 512, 255.0f);
  midtone_contrast(tables.midtone, 256, midtone);
  return tables;
}

// The area that both pictures hold. Empty also where two planes of it would not fit a block: such
// pictures are refused whichever way they would be processed.
struct Area {
  int32_t columns, rows;
  bool empty() const {
    const uint64_t pixels = static_cast<uint64_t>(columns) * static_cast<uint64_t>(rows);
    return pixels == 0 || pixels > UINT32_MAX / (2 * sizeof(float));
  }
  int32_t blur_length() const { return std::min({columns, rows, 10}) - 1; }
};

Area common_area(const PixelArray& src, const PixelArray& dst) {
  return {std::min(columns_24(src), columns_24(dst)), std::min(rows_of(src), rows_of(dst))};
}

// Calls stage(x, count) for each chunk of a row.
template <class Stage>
void for_each_chunk(int32_t columns, const Stage& stage) {
  for (int32_t x = 0; x < columns; x += kChunk) stage(x, std::min(kChunk, columns - x));
}

// Without a blur each pixel stands for itself.
void shift_by_own_intensity(const PixelArray& src, const PixelArray& dst, Area area,
                            const ToneTables& tables, bool midtone_only) {
  const RowKernels& rows = Rows();
  for (int32_t y = 0; y < area.rows; ++y) {
    const uint8_t* src_row = row_of(src, y);
    uint8_t* dst_row = row_of(dst, y);
    for_each_chunk(area.columns, [&](int32_t x, int32_t count) {
      float intensity[kChunk], shift[kChunk];
      rows.intensities(src_row + 3 * x, intensity, count);
      if (midtone_only)
        rows.midtone_shifts(intensity, tables.midtone, shift, count);
      else
        rows.tone_shifts(intensity, intensity, tables.combined, tables.midtone, shift, count);
      rows.shift_pixels(src_row + 3 * x, shift, dst_row + 3 * x, count);
    });
  }
}

}  // namespace

// Both curves are made to pass a given point at a third of their parameter, where the control
// points weigh 8, 12, 6 and 1 of 27. All but the second lie on the diagonal, so that the second
// alone lifts the curve off it: here by k at x = 54 - 0.15 a, with a slope of q at black.
void lighten_shadow(float* table, int32_t n, uint32_t amount) {
  CurvePoint ctrl[4] = {{0.0f, 0.0f}, {105.0f, 105.0f}, {105.0f, 105.0f}, {210.0f, 210.0f}};
  if (amount > 0) {
    const float a = static_cast<float>(amount);
    const float k = a > 10.0f ? (a - 10.0f) * 8.0f / 9.0f + 19.0f : 1.9f * a;
    const float q = 1.0f + 0.07f * a;
    const float t = k * 9.0f / ((q - 1.0f) * 4.0f);
    const float u = (27.0f * (54.0f - 0.15f * a) - 12.0f * t - 210.0f) / 6.0f;
    ctrl[1] = {t, q * t};
    ctrl[2] = {u, u};
  }
  set_look_up_table(table, n, ctrl, 4);
}

void darken_highlight(float* table, int32_t n, uint32_t amount) {
  lighten_shadow(table, n, amount);
  std::reverse(table, table + n);
  for (int32_t i = 0; i < n; ++i) table[i] = 255.0f - table[i];
}

// The same from the middle on: by m * w at x = c, with a slope of q in the middle.
void midtone_contrast(float* table, int32_t n, int32_t amount) {
  const bool flatter = amount < 1;
  const float m = static_cast<float>(amount);
  const float start = 127.5f, end = flatter ? 244.0f : 240.0f;
  const float centre = (start + end) * 0.5f;
  CurvePoint ctrl[4] = {{start, start}, {centre, centre}, {centre, centre}, {end, end}};
  if (amount != 0) {
    const float q = 1.0f + (flatter ? 0.007f : 0.025f) * m;
    const float w = flatter ? 0.25f : 0.42f;
    const float c = flatter ? 177.0f : 172.0f;
    const float v = (m * w) * 9.0f / ((q - 1.0f) * 4.0f);
    ctrl[1] = {127.5f + v, 127.5f + q * v};
    const float u = (27.0f * c - 8.0f * 127.5f - 12.0f * ctrl[1].x - end) / 6.0f;
    ctrl[2] = {u, u};
  }
  set_look_up_table(table, n, ctrl, 4);
  // The upper half turned about (127.5, 127.5). The last step reads what the one before it wrote.
  for (int32_t i = 0; i <= n / 2; ++i) table[i] = 255.0f - table[n - 1 - i];
}

void get_intensity(float* plane, const PixelArray& image) {
  const RowKernels& rows = Rows();
  const int32_t columns = columns_24(image);
  if (columns == 0) return;
  for (int32_t y = 0; y < rows_of(image); ++y, plane += columns)
    rows.intensities(row_of(image, y), plane, columns);
}

void update_intensity(float* intensity, const float* blurred, int32_t count, const float* combined,
                      const float* midtone) {
  if (intensity == blurred)
    Rows().midtone_shifts(intensity, midtone, intensity, count);
  else
    Rows().tone_shifts(intensity, blurred, combined, midtone, intensity, count);
}

void adjust_histogram(const PixelArray& src, const PixelArray& dst, const float* delta) {
  const RowKernels& rows = Rows();
  map_rows_24(src, dst, [&](const uint8_t* src_row, uint8_t* dst_row, int32_t count) {
    rows.shift_pixels(src_row, delta, dst_row, count);
    delta += count;
  });
}

void shadow_highlight(const PixelArray& src, const PixelArray& dst, uint32_t shadow,
                      uint32_t highlight, int32_t midtone) {
  const Area area = common_area(src, dst);
  if (area.empty()) return;
  const int32_t pixels = area.columns * area.rows;
  const Block<float> planes = make_block<float>(2 * static_cast<uint64_t>(pixels));
  if (!planes) return;
  float* plane_a = planes.get();
  float* plane_b = planes.get() + pixels;
  const ToneTables tables = make_tone_tables(shadow, highlight, midtone);

  PixelArray common = src;
  common.width = area.columns;
  common.height = area.rows;
  get_intensity(plane_a, common);
  if (shadow == 0 && highlight == 0) {
    update_intensity(plane_a, plane_a, pixels, tables.combined, tables.midtone);
    adjust_histogram(src, dst, plane_a);
  } else {
    BoxBlur(plane_a, plane_b, area.columns, area.rows, static_cast<uint32_t>(area.blur_length()));
    get_intensity(plane_b, common);
    update_intensity(plane_b, plane_a, pixels, tables.combined, tables.midtone);
    adjust_histogram(src, dst, plane_b);
  }
}

void shadow_highlight_streamed(const PixelArray& src, const PixelArray& dst, uint32_t shadow,
                               uint32_t highlight, int32_t midtone) {
  const Area area = common_area(src, dst);
  if (area.empty()) return;
  const int32_t length = area.blur_length();
  const bool midtone_only = shadow == 0 && highlight == 0;
  if (midtone_only || length == 0) {
    const ToneTables tables = make_tone_tables(shadow, highlight, midtone);
    shift_by_own_intensity(src, dst, area, tables, midtone_only);
    return;
  }

  const Block<float> block = make_block<float>((kRing + 1) * static_cast<uint64_t>(area.columns));
  if (!block) return;
  const ToneTables tables = make_tone_tables(shadow, highlight, midtone);

  // Sums along the rows of the last bands, and their running sums down the columns.
  const auto ring = [&](int32_t y) {
    return block.get() + static_cast<ptrdiff_t>(y % kRing) * area.columns;
  };
  float* column_sums = block.get() + static_cast<ptrdiff_t>(kRing) * area.columns;
  const RowKernels& rows = Rows();
  const int32_t half = length >> 1;
  const float scale = 1.0f / static_cast<float>(length * length);

  int32_t y = 0;  // the next row to be written: its window ends half rows below it
  for (int32_t top = 0; top < area.rows; top += kBand) {
    const int32_t bottom = std::min(top + kBand, area.rows);
    rows.intensity_sums(row_of(src, top), src.rowBytes, bottom - top, area.columns, half, ring(top),
                        area.columns);
    if (top == 0) {
      for (int32_t x = 0; x < area.columns; ++x)
        column_sums[x] = static_cast<float>(half + 1) * ring(0)[x];
      for (int32_t i = 0; i < half; ++i)
        for (int32_t x = 0; x < area.columns; ++x) column_sums[x] += ring(i)[x];
    }
    for (const int32_t ready = bottom == area.rows ? bottom : bottom - half; y < ready; ++y) {
      const uint8_t* src_row = row_of(src, y);
      uint8_t* dst_row = row_of(dst, y);
      const float* leave = ring(std::max(y - half - 1, 0));
      const float* enter = ring(std::min(y + half, area.rows - 1));
      for_each_chunk(area.columns, [&](int32_t x, int32_t count) {
        float intensity[kChunk], blurred[kChunk], shift[kChunk];
        rows.intensities(src_row + 3 * x, intensity, count);
        rows.slide_sums(column_sums + x, leave + x, enter + x, scale, blurred, count);
        rows.tone_shifts(intensity, blurred, tables.combined, tables.midtone, shift, count);
        rows.shift_pixels(src_row + 3 * x, shift, dst_row + 3 * x, count);
      });
    }
  }
}

}  // namespace roxe
