// The stages of roxeVariations.
#ifndef ROXE_TONE_VARIATIONS_H_
#define ROXE_TONE_VARIATIONS_H_

#include <cstdint>

#include "frame/runtime.h"
#include "roxe.h"

namespace roxe {

// Rows of 256 bytes on each of the two sides of the working block: eight of a constant table, of
// which up to four are replaced, and as many places behind them as repeated doubling may need.
constexpr int32_t kVariationRows = 12;

// Does the work of roxeVariations. Missing records or pixels and no memory: nothing is touched.
void VariationsImage(const PixelArray* src, const PixelArray* dst, int32_t red, int32_t green,
                     int32_t blue, int32_t dark, int32_t level);

// Fills one curve a channel; level is 0 ... 6. Returns the working block, or null without memory.
Block<uint8_t> create_lookup_table(int32_t blue, int32_t green, int32_t dark, int32_t red,
                                   int32_t level, uint8_t* red_curve, uint8_t* green_curve,
                                   uint8_t* blue_curve);

// Copies the constant tables into the two halves, makes row k for k = base + 1 ... base + 4 the row
// before it applied twice, and points at each row. base is 1 ... 7.
void create_tables(int32_t base, uint8_t* lighter, uint8_t* darker, uint8_t** lighter_rows,
                   uint8_t** darker_rows);

// The curve of amount steps, at most 60, lighter for positive and darker for negative amounts.
void create_perchannel_table(int64_t amount, int32_t base, uint8_t* curve,
                             const uint8_t* const* lighter_rows, const uint8_t* const* darker_rows);

}  // namespace roxe

#endif  // ROXE_TONE_VARIATIONS_H_
