#include <cstdint>
#include <random>
#include <vector>

#include "colour/colour_distance.h"
#include "colour/colour_temperature.h"
#include "colour/replace_colour.h"
#include "support/bench.h"

namespace {

constexpr int32_t kCount = 2000;
constexpr uint32_t kLimit = 81;

const bench::Registration colour([] {
  // Colours that wander, as in a photograph.
  static std::vector<uint8_t> src(3 * kCount), dst(3 * kCount);
  std::mt19937 random(1);
  for (size_t i = 0; i < src.size(); ++i)
    src[i] = static_cast<uint8_t>((i < 3 ? 128 : src[i - 3]) + random() % 25 - 12);

  static const roxe::PixelBand band = {src.data(), 0, dst.data(), 0, 1, kCount};

  static const roxe::ColourSelection selection = roxe::colours_near(60, 90, 180, kLimit);
  static roxe::ColourShift shift = {40, 25, 12, {}};
  roxe::create_blur_table(shift.weight, 256, kLimit);
  static uint8_t level[256];
  for (int32_t i = 0; i < 256; ++i) level[i] = static_cast<uint8_t>((shift.weight[i] * 255) >> 16);

  bench::row("draw_selection", kCount,
             [](const roxe::RowKernels& rows) { rows.draw_selection(selection, level, band); });
  bench::row("replace_colour", kCount,
             [](const roxe::RowKernels& rows) { rows.replace_colour(selection, shift, band); });
  bench::row("accent_colour", kCount,
             [](const roxe::RowKernels& rows) { rows.accent_colour(selection, band); });

  float matrix[9];
  roxe::GetStdColorTemperatureMatrix(30, 0, matrix);
  static const roxe::ColourMatrix balance = roxe::fixed_point(matrix);
  bench::row("balance_white", kCount,
             [](const roxe::RowKernels& rows) { rows.balance_white(balance, band); });
});

}  // namespace
