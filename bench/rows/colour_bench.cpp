#include <cstdint>
#include <random>
#include <vector>

#include "colour/colour_distance.h"
#include "colour/colour_temperature.h"
#include "colour/linear_light.h"
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

  static const roxe::ColourSelection selection = roxe::colours_near(60, 90, 180, kLimit);
  static roxe::ColourShift shift = {40, 25, 12, {}};
  roxe::create_blur_table(shift.weight, 256, kLimit);
  static uint8_t level[256];
  for (int32_t i = 0; i < 256; ++i) level[i] = static_cast<uint8_t>((shift.weight[i] * 255) >> 16);

  bench::row("draw_selection", [](const roxe::RowKernels& rows) {
    rows.draw_selection(selection, level, src.data(), dst.data(), kCount);
  });
  bench::row("replace_colour", [](const roxe::RowKernels& rows) {
    rows.replace_colour(selection, shift, src.data(), dst.data(), kCount);
  });
  bench::row("accent_colour", [](const roxe::RowKernels& rows) {
    rows.accent_colour(selection, src.data(), dst.data(), kCount);
  });

  static const roxe::Block<uint8_t> encoded = roxe::CreateLinearRGB2sRGBIndex();
  static std::vector<int32_t> linear(256);
  const roxe::Block<float> forward = roxe::CreatesRGB2LinearRGBIndex();
  for (size_t i = 0; i < linear.size(); ++i) linear[i] = static_cast<int32_t>(forward[i] * 4096);
  float matrix[9];
  roxe::GetStdColorTemperatureMatrix(30, 0, matrix);
  static const roxe::WhiteBalance balance =
      roxe::make_white_balance(matrix, linear.data(), encoded.get());
  bench::row("balance_white", [](const roxe::RowKernels& rows) {
    rows.balance_white(balance, src.data(), dst.data(), kCount);
  });
});

}  // namespace
