#include <cstdint>
#include <vector>

#include "support/bench.h"

namespace {

using roxe::kLanes;
using roxe::kSumsStep;

constexpr int32_t kColumns = 125;  // of a stretch: a row of 4000 pixels
constexpr int32_t kCount = kColumns * kLanes;

// A window of 21 columns.
template <class Sum>
struct Box {
  std::vector<Sum> sums;
  std::vector<uint32_t> multipliers;
  uint32_t starts[3][kLanes] = {};
  roxe::BoxRow<Sum> row = {};

  Box()
      : sums(3 * kColumns * kSumsStep + kLanes),
        multipliers(kCount, 2 * roxe::window_reciprocal(441)) {
    row.channels = 3;
    row.columns = kColumns;
    row.head = 10;
    row.tail = 11;
    row.runs[0] = {11, false, 10 * kSumsStep, (kColumns - 11) * kSumsStep - 1};
    row.runs[1] = {kColumns - 21, true, 21 * kSumsStep, 0};
    row.runs[2] = {10, false, 1, (kColumns - 21) * kSumsStep};
    row.sums = sums.data() + kLanes;
    row.sums_size = kColumns * kSumsStep;
    row.starts = starts;
    row.multipliers = reinterpret_cast<const uint32_t(*)[kLanes]>(multipliers.data());
  }
};

const bench::Registration blur_rows([] {
  static std::vector<uint8_t> src(3 * kCount), mask(kCount), dst(3 * kCount);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 151);
  for (size_t i = 0; i < mask.size(); ++i) mask[i] = static_cast<uint8_t>(i * 77);
  static std::vector<uint8_t> leaving = src;
  static Box<int16_t> box_16;
  static Box<uint32_t> box_32;
  bench::row("blend_masked", kCount, [](const roxe::RowKernels& rows) {
    rows.blend_masked(src.data(), mask.data(), dst.data(), kCount);
  });
  bench::row("to_lanes", kCount, [](const roxe::RowKernels& rows) {
    rows.to_lanes(src.data(), dst.data(), 3, kColumns, src.data());
  });
  bench::row("from_lanes", kCount, [](const roxe::RowKernels& rows) {
    rows.from_lanes(src.data(), dst.data(), 3, kColumns, dst.data());
  });
  bench::row("box_row_16", kCount, [](const roxe::RowKernels& rows) {
    rows.box_row_16(box_16.row, src.data(), leaving.data(), dst.data());
  });
  bench::row("box_row_32", kCount, [](const roxe::RowKernels& rows) {
    rows.box_row_32(box_32.row, src.data(), leaving.data(), dst.data());
  });
});

}  // namespace
