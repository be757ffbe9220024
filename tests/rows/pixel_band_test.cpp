// Rows that take a band: several rows in one call, their steps of either sign, and what lies between
// them untouched.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "colour/colour_distance.h"
#include "colour/colour_temperature.h"
#include "colour/replace_colour.h"
#include "support/rows.h"

namespace {

using roxe::PixelBand;
using roxe::RowKernels;

struct BandRow {
  std::string name;
  std::function<void(const RowKernels&, const PixelBand&)> run;
};

std::vector<BandRow> BandRows() {
  static const roxe::ColourSelection selection = roxe::colours_near(60, 90, 180, 120);
  static roxe::ColourShift shift = {40, 25, 12, {}};
  roxe::create_blur_table(shift.weight, 256, 120);
  static uint8_t tables[3][256];
  for (size_t i = 0; i < 256; ++i)
    for (size_t c = 0; c < 3; ++c) tables[c][i] = static_cast<uint8_t>(i * (3 + 2 * c) + c);
  float gains[9];
  roxe::GetStdColorTemperatureMatrix(30, -20, gains);
  static const roxe::ColourMatrix matrix = roxe::fixed_point(gains);
  return {
      {"look_up", [](const RowKernels& rows, const PixelBand& b) { rows.look_up(tables[0], b); }},
      {"look_up_bgr",
       [](const RowKernels& rows, const PixelBand& b) {
         rows.look_up_bgr(tables[0], tables[1], tables[2], b);
       }},
      {"draw_selection", [](const RowKernels& rows,
                            const PixelBand& b) { rows.draw_selection(selection, tables[0], b); }},
      {"replace_colour", [](const RowKernels& rows,
                            const PixelBand& b) { rows.replace_colour(selection, shift, b); }},
      {"accent_colour",
       [](const RowKernels& rows, const PixelBand& b) { rows.accent_colour(selection, b); }},
      {"balance_white",
       [](const RowKernels& rows, const PixelBand& b) { rows.balance_white(matrix, b); }},
  };
}

// The expected picture: the plain row, one pixel a call.
void PixelByPixel(const BandRow& row, const PixelBand& band) {
  for (ptrdiff_t y = 0; y < band.rows; ++y)
    for (ptrdiff_t x = 0; x < 3 * static_cast<ptrdiff_t>(band.count); x += 3)
      row.run(roxe::kPlainRows,
              {band.src + y * band.src_step + x, 0, band.dst + y * band.dst_step + x, 0, 1, 1});
}

TEST(PixelBands, EveryRowAndNothingElseIsWritten) {
  constexpr ptrdiff_t kRows = 4, kSrcStep = 3 * 140 + 5, kDstStep = 3 * 140 + 11;
  std::mt19937 random(7);
  for (const BandRow& row : BandRows()) {
    for (const int32_t count : {1, 5, 16, 31, 47, 64, 65, 100, 129, 140}) {
      const RandomBytes src(random, kRows * kSrcStep);
      const std::vector<uint8_t> untouched(kRows * kDstStep, 77);
      std::vector<uint8_t> expected = untouched;
      PixelByPixel(row, {src.data(), kSrcStep, expected.data(), kDstStep, kRows, count});
      std::vector<uint8_t> flipped = untouched;  // the source from the bottom up
      PixelByPixel(row, {src.data() + (kRows - 1) * kSrcStep, -kSrcStep, flipped.data(), kDstStep,
                         kRows, count});
      for (const RowKernels* rows : RunnableTables()) {
        std::vector<uint8_t> dst = untouched;
        row.run(*rows, {src.data(), kSrcStep, dst.data(), kDstStep, kRows, count});
        EXPECT_EQ(dst, expected) << row.name << ' ' << rows->name << ' ' << count;

        dst = untouched;
        row.run(*rows, {src.data() + (kRows - 1) * kSrcStep, -kSrcStep, dst.data(), kDstStep, kRows,
                        count});
        EXPECT_EQ(dst, flipped) << row.name << ' ' << rows->name << ' ' << count;

        // In place: what lies between the rows stays as well.
        std::vector<uint8_t> image(src.data(), src.data() + src.size()), alone = image;
        PixelByPixel(row, {alone.data(), kSrcStep, alone.data(), kSrcStep, kRows, count});
        row.run(*rows, {image.data(), kSrcStep, image.data(), kSrcStep, kRows, count});
        EXPECT_EQ(image, alone) << row.name << ' ' << rows->name << ' ' << count;
      }
    }
  }
}

TEST(PixelBands, WithoutRowsOrPixelsNothingIsTouched) {
  uint8_t bytes[6] = {1, 2, 3, 4, 5, 6};
  for (const BandRow& row : BandRows()) {
    for (const RowKernels* rows : RunnableTables()) {
      row.run(*rows, {nullptr, 0, nullptr, 0, 0, 200});
      row.run(*rows, {bytes, 3, bytes, 3, 2, 0});
    }
  }
  EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + 6), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6}));
}

}  // namespace
