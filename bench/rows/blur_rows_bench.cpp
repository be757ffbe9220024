#include <cstdint>
#include <vector>

#include "support/bench.h"

namespace {

constexpr int32_t kColumns = 63, kChannels = 3;  // 2016 pixels
constexpr int32_t kBytes = kChannels * kColumns * roxe::kLanes;

// A window of 21 x 21 away from the sides of the picture.
template <class Sum>
roxe::BoxRow<Sum> box(std::vector<Sum>& sums, std::vector<uint32_t>& starts,
                      std::vector<uint32_t>& multipliers) {
  constexpr int32_t kPlane = kColumns * roxe::kSumsStep + roxe::kLanes;
  sums.assign(kChannels * kPlane, Sum{});
  starts.assign(kChannels * roxe::kLanes, 0);
  multipliers.assign(kColumns * roxe::kLanes, 8388608 / 441);
  roxe::BoxRow<Sum> made = {};
  made.channels = kChannels;
  made.columns = kColumns;
  made.head = 10;
  made.tail = 11;
  const ptrdiff_t step = roxe::kSumsStep, last = kColumns;
  made.runs[0] = {11, true, 10 * step, (last - 11) * step - 1};
  made.runs[1] = {kColumns - 21, true, 21 * step, 0};
  made.runs[2] = {10, true, 1, (last - 21) * step};
  made.sums = sums.data() + roxe::kLanes;
  made.sums_size = kPlane;
  made.starts = reinterpret_cast<uint32_t(*)[roxe::kLanes]>(starts.data());
  made.multipliers = reinterpret_cast<uint32_t(*)[roxe::kLanes]>(multipliers.data());
  return made;
}

const bench::Registration blur([] {
  static std::vector<uint8_t> row(kBytes), other(kBytes), lanes(kBytes);
  for (size_t i = 0; i < row.size(); ++i) row[i] = static_cast<uint8_t>(i * 151 + i / 61);
  bench::row("to_lanes", [](const roxe::RowKernels& rows) {
    rows.to_lanes(row.data(), lanes.data(), kChannels, kColumns, row.data());
  });
  bench::row("from_lanes", [](const roxe::RowKernels& rows) {
    rows.from_lanes(lanes.data(), other.data(), kChannels, kColumns, other.data());
  });

  static std::vector<int16_t> narrow;
  static std::vector<uint32_t> wide, starts_16, starts_32, multipliers_16, multipliers_32;
  static const roxe::BoxRow<int16_t> box_16 = box(narrow, starts_16, multipliers_16);
  static const roxe::BoxRow<uint32_t> box_32 = box(wide, starts_32, multipliers_32);
  bench::row("box_row_16", [](const roxe::RowKernels& rows) {
    rows.box_row_16(box_16, row.data(), row.data(), lanes.data());
  });
  bench::row("box_row_32", [](const roxe::RowKernels& rows) {
    rows.box_row_32(box_32, row.data(), row.data(), lanes.data());
  });
  bench::row("blend_masked", [](const roxe::RowKernels& rows) {
    rows.blend_masked(row.data(), lanes.data(), other.data(), kBytes / 3);
  });
});

}  // namespace
