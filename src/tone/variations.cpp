#include "tone/variations.h"

#include <algorithm>

#include "frame/default_environment.h"
#include "frame/numbers.h"
#include "frame/pixel_array.h"
#include "rows/rows.h"
#include "tone/variation_tables.h"

using namespace roxe;

int32_t roxeVariations(const PixelArray* src, PixelArray* dst, int32_t red, int32_t green,
                       int32_t blue, int32_t dark, int32_t level) {
  in_default_environment([&] { VariationsImage(src, dst, red, green, blue, dark, level); });
  return kRoxeOK;
}

namespace roxe {

void VariationsImage(const PixelArray* src, const PixelArray* dst, int32_t red, int32_t green,
                     int32_t blue, int32_t dark, int32_t level) {
  if (!src || !dst) return;
  uint8_t red_curve[256], green_curve[256], blue_curve[256];
  const Block<uint8_t> tables = create_lookup_table(blue, green, dark, red, clamp(level, 0, 6),
                                                    red_curve, green_curve, blue_curve);
  if (!tables) return;

  const RowKernels& rows = Rows();
  map_24(*src, *dst, [&](const PixelBand& band) {
    rows.look_up_bgr(blue_curve, green_curve, red_curve, band);
  });
}

Block<uint8_t> create_lookup_table(int32_t blue, int32_t green, int32_t dark, int32_t red,
                                   int32_t level, uint8_t* red_curve, uint8_t* green_curve,
                                   uint8_t* blue_curve) {
  // A channel's own count weighs -2, each other count 1 and dark -2. In 64 bits: five counts of any
  // size fit.
  const int64_t sum = int64_t{red} + green + blue - 2 * int64_t{dark};
  const int64_t blue_amount = sum - 3 * int64_t{blue};
  const int64_t green_amount = sum - 3 * int64_t{green};
  const int64_t red_amount = sum - 3 * int64_t{red};

  Block<uint8_t> tables = make_block<uint8_t>(2 * kVariationRows * 256);
  if (!tables) return nullptr;
  uint8_t* lighter_rows[kVariationRows];
  uint8_t* darker_rows[kVariationRows];
  const int32_t base = level + 1;
  create_tables(base, tables.get(), tables.get() + kVariationRows * 256, lighter_rows, darker_rows);
  create_perchannel_table(blue_amount, base, blue_curve, lighter_rows, darker_rows);
  create_perchannel_table(green_amount, base, green_curve, lighter_rows, darker_rows);
  create_perchannel_table(red_amount, base, red_curve, lighter_rows, darker_rows);
  return tables;
}

void create_tables(int32_t base, uint8_t* lighter, uint8_t* darker, uint8_t** lighter_rows,
                   uint8_t** darker_rows) {
  XRMemCpy(lighter, LIGHTER_TABLE, sizeof LIGHTER_TABLE);
  XRMemCpy(darker, DARKER_TABLE, sizeof DARKER_TABLE);
  for (int32_t k = 0; k < kVariationRows; ++k) {
    lighter_rows[k] = lighter + 256 * k;
    darker_rows[k] = darker + 256 * k;
  }
  for (int32_t k = base + 1; k <= base + 4; ++k) {
    for (uint8_t** rows : {lighter_rows, darker_rows}) {
      const uint8_t* once = rows[k - 1];
      for (int32_t v = 0; v < 256; ++v) rows[k][v] = once[once[v]];
    }
  }
}

void create_perchannel_table(int64_t amount, int32_t base, uint8_t* curve,
                             const uint8_t* const* lighter_rows,
                             const uint8_t* const* darker_rows) {
  for (int32_t v = 0; v < 256; ++v) curve[v] = static_cast<uint8_t>(v);

  const uint8_t* const* rows = amount < 0 ? darker_rows : lighter_rows;
  const int64_t steps = std::min<int64_t>(amount < 0 ? -amount : amount, 60);
  // Bit 5 is row base + 4, each bit below it the row before. Bit 1 is therefore row base of the
  // table and not row base - 1 applied twice.
  for (int32_t bit = 5; bit >= 0; --bit) {
    if (!(steps >> bit & 1)) continue;
    const uint8_t* row = rows[base - 1 + bit];
    for (int32_t v = 0; v < 256; ++v) curve[v] = row[curve[v]];
  }
}

}  // namespace roxe
