#include <algorithm>
#include <cstdint>

#include "support/bench.h"

namespace {

using roxe::kLanes;
using roxe::kSumsStep;

constexpr int32_t kColumns = 125;  // of a stretch: a row of 4000 pixels
constexpr int32_t kCount = kColumns * kLanes;

// A window of 21 columns. Aligned, as an operation lays it out.
template <class Sum>
struct Box {
  alignas(64) Sum sums[3 * kColumns * kSumsStep + kLanes] = {};
  alignas(64) uint32_t multipliers[kColumns][kLanes];
  alignas(64) uint32_t starts[3][kLanes] = {};
  roxe::BoxRow<Sum> row = {};

  Box() {
    std::fill_n(multipliers[0], kCount, 2 * roxe::window_reciprocal(441));
    row.channels = 3;
    row.columns = kColumns;
    row.head = 10;
    row.tail = 11;
    row.runs[0] = {11, false, 10 * kSumsStep, (kColumns - 11) * kSumsStep - 1};
    row.runs[1] = {kColumns - 21, true, 21 * kSumsStep, 0};
    row.runs[2] = {10, false, 1, (kColumns - 21) * kSumsStep};
    row.sums = sums + kLanes;
    row.sums_size = kColumns * kSumsStep;
    row.starts = starts;
    row.multipliers = multipliers;
  }
};

const bench::Registration blur_rows([] {
  alignas(64) static uint8_t src[3 * kCount + kLanes], mask[kCount], dst[3 * kCount];
  for (size_t i = 0; i < sizeof src; ++i) src[i] = static_cast<uint8_t>(i * 151);
  for (size_t i = 0; i < sizeof mask; ++i) mask[i] = static_cast<uint8_t>(i * 77);
  // A column on, so that rows come from the nearest cache and yet differ.
  static const uint8_t* const leaving = src + kLanes;
  static Box<int16_t> box_16;
  static Box<uint32_t> box_32;
  bench::row("blend_masked", kCount,
             [](const roxe::RowKernels& rows) { rows.blend_masked(src, mask, dst, kCount); });
  bench::row("to_lanes", kCount,
             [](const roxe::RowKernels& rows) { rows.to_lanes(src, dst, 3, kColumns, src); });
  bench::row("from_lanes", kCount,
             [](const roxe::RowKernels& rows) { rows.from_lanes(src, dst, 3, kColumns, dst); });
  bench::row("box_row_16", kCount,
             [](const roxe::RowKernels& rows) { rows.box_row_16(box_16.row, src, leaving, dst); });
  bench::row("box_row_32", kCount,
             [](const roxe::RowKernels& rows) { rows.box_row_32(box_32.row, src, leaving, dst); });
});

}  // namespace
