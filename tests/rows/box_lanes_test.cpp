#include <gtest/gtest.h>

#include <algorithm>

#include "support/rows.h"

namespace {

using roxe::BoxRow;
using roxe::byte_of_lane;
using roxe::kLanes;
using roxe::kSumsStep;

TEST(Lanes, StretchesLieSideBySide) {
  EXPECT_EQ(byte_of_lane(7), 7);
  EXPECT_EQ(byte_of_lane(8), 16);
  EXPECT_EQ(byte_of_lane(16), 8);
  EXPECT_EQ(byte_of_lane(31), 31);

  uint8_t row[3 * 2 * kLanes], lanes[3 * 2 * kLanes], back[3 * 2 * kLanes];
  for (int32_t i = 0; i < 3 * 2 * kLanes; ++i) row[i] = static_cast<uint8_t>(i);
  roxe::Rows().to_lanes(row, lanes, 3, 2, row);
  EXPECT_EQ(lanes[0], 0);       // blue of column 0, the first of stretch 0
  EXPECT_EQ(lanes[1], 6);       // blue of column 2, the first of stretch 1
  EXPECT_EQ(lanes[8], 96);      // of stretch 16
  EXPECT_EQ(lanes[32 + 1], 9);  // blue of the second column of stretch 1
  EXPECT_EQ(lanes[64 + 0], 1);  // green
  EXPECT_EQ(lanes[160 + 31], 191);
  roxe::Rows().from_lanes(lanes, back, 3, 2, row);
  EXPECT_TRUE(std::equal(row, row + sizeof row, back));
}

TEST(Lanes, AreTheSameOnEveryTable) {
  std::mt19937 random(3);
  for (const roxe::RowKernels* rows : RunnableTables())
    for (const int32_t channels : {1, 3})
      for (int32_t columns = 0; columns <= 70; ++columns) {
        const RandomBytes row(random, static_cast<size_t>(channels * columns * kLanes));
        const GuardedMemory expected(row.size()), lanes(row.size()), back(row.size());
        roxe::kPlainRows.to_lanes(row.data(), expected.data(), channels, columns, row.data());
        rows->to_lanes(row.data(), lanes.data(), channels, columns, row.data());
        EXPECT_EQ(Bytes(lanes), Bytes(expected)) << rows->name << ' ' << channels << ' ' << columns;
        rows->from_lanes(lanes.data(), back.data(), channels, columns, row.data());
        EXPECT_EQ(Bytes(back), Bytes(row)) << rows->name << ' ' << channels << ' ' << columns;
      }
}

// A row of 32 columns, one in each lane, with windows of one column to either side.
template <class Sum>
void BlurARamp(void (*box_row)(const BoxRow<Sum>&, const uint8_t*, const uint8_t*, uint8_t*),
               Sum nothing) {
  Sum sums[kLanes + kSumsStep];
  std::fill_n(sums, kLanes + kSumsStep, nothing);
  uint32_t starts[1][kLanes] = {}, multipliers[1][kLanes];
  std::fill_n(multipliers[0], kLanes, 5592404u);  // two thirds of 2^23
  multipliers[0][0] = multipliers[0][31] = 8388608;
  // The window left of column k ends one column to the right of k - 1 and starts two before k.
  BoxRow<Sum> box = {1, 1, 0, 1, 0, 2, {}, sums + kLanes, 0, starts, multipliers};
  box.runs[0] = {1, false, 1, -2};

  uint8_t ramp[kLanes], none[kLanes] = {}, dst[kLanes];
  for (int32_t k = 0; k < kLanes; ++k) ramp[byte_of_lane(k)] = static_cast<uint8_t>(3 * k);
  box_row(box, ramp, none, nullptr);
  EXPECT_EQ(starts[0][0], 0u);   // the window of the column before the first: columns -2 ... 0
  EXPECT_EQ(starts[0][5], 36u);  // of column 4: 9 + 12 + 15
  box_row(box, none, none, dst);
  EXPECT_EQ(dst[0], 1);  // (0 + 3) / 2
  EXPECT_EQ(dst[1], 2);  // 9 times a truncated third
  EXPECT_EQ(dst[byte_of_lane(20)], 59);
  EXPECT_EQ(dst[31], 91);  // (90 + 93) / 2
  box_row(box, none, ramp, dst);
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + kLanes), std::vector<uint8_t>(kLanes, 0));
}

template <class Sum>
void CompareBoxRows(void (*box_row)(const BoxRow<Sum>&, const uint8_t*, const uint8_t*, uint8_t*),
                    void (*plain)(const BoxRow<Sum>&, const uint8_t*, const uint8_t*, uint8_t*),
                    std::mt19937& random, int32_t columns) {
  const auto below = [&](int32_t n) {
    return static_cast<int32_t>(random() % static_cast<uint32_t>(n));
  };
  BoxRow<Sum> box = {};
  box.channels = below(2) != 0 ? 3 : 1;
  box.columns = columns;
  box.head = below(columns);
  box.tail = below(columns);
  box.whole_after = below(4) != 0 ? below(3) : below(kLanes + 1);
  box.whole_before = below(4) != 0 ? below(3) : below(kLanes + 1);
  int32_t x = 0;
  for (int32_t i = 0; x < columns; ++i) {
    const int32_t count = i == 7 ? columns - x : 1 + below(columns - x);
    const ptrdiff_t last = ptrdiff_t{columns - count} * kSumsStep;
    const auto place = [&] {
      return static_cast<ptrdiff_t>(random() % static_cast<size_t>(last + 2 * kLanes + 1)) - kLanes;
    };
    box.runs[i] = {count, below(2) != 0, std::min(place(), last + kLanes), 0};
    box.runs[i].leaving = std::min(place(), last + kLanes);
    x += count;
  }

  // Means of at most 255, as every picture gives.
  const size_t plane = static_cast<size_t>(columns) * kSumsStep + kLanes;
  const size_t planes = static_cast<size_t>(box.channels);
  const Guarded<Sum> sums(plane * planes), expected_sums(plane * planes);
  for (size_t i = 0; i < plane * planes; ++i)
    sums[i] = expected_sums[i] = static_cast<Sum>(below(600));
  const Guarded<uint32_t[kLanes]> multipliers(static_cast<size_t>(columns));
  for (size_t i = 0; i < static_cast<size_t>(columns); ++i)
    for (uint32_t& multiplier : multipliers[i]) multiplier = random() % 200;
  const Guarded<uint32_t[kLanes]> starts(planes), expected_starts(planes);
  for (size_t i = 0; i < planes * kLanes; ++i)
    starts[i / kLanes][i % kLanes] = expected_starts[i / kLanes][i % kLanes] =
        (1u << 23) + random() % (1u << 23);

  box.sums_size = static_cast<ptrdiff_t>(plane);
  box.multipliers = multipliers.of();
  const size_t bytes = static_cast<size_t>(box.channels * columns * kLanes);
  const RandomBytes entering(random, bytes), leaving(random, bytes);
  const GuardedMemory dst(bytes), expected(bytes);
  for (const bool writes : {false, true}) {
    box.sums = expected_sums.of() + kLanes;
    box.starts = expected_starts.of();
    plain(box, entering.data(), leaving.data(), writes ? expected.data() : nullptr);
    box.sums = sums.of() + kLanes;
    box.starts = starts.of();
    box_row(box, entering.data(), leaving.data(), writes ? dst.data() : nullptr);
    ASSERT_EQ(Bytes(dst), Bytes(expected));
    ASSERT_EQ(Bytes(sums), Bytes(expected_sums));
    ASSERT_EQ(Bytes(starts), Bytes(expected_starts));
  }
}

TEST(BoxRow, DividesTheSumOfTheWindow) {
  BlurARamp<int16_t>(roxe::Rows().box_row_16, INT16_MIN);
  BlurARamp<uint32_t>(roxe::Rows().box_row_32, 0);
}

TEST(BoxRow, IsTheSameOnEveryTable) {
  std::mt19937 random(5);
  for (const roxe::RowKernels* rows : RunnableTables()) {
    SCOPED_TRACE(rows->name);
    for (int32_t i = 0; i < 300; ++i) {
      const int32_t columns = 1 + i % 75 + (i % 50 == 49 ? 300 : 0);
      CompareBoxRows<int16_t>(rows->box_row_16, roxe::kPlainRows.box_row_16, random, columns);
      CompareBoxRows<uint32_t>(rows->box_row_32, roxe::kPlainRows.box_row_32, random, columns);
    }
  }
}

}  // namespace
