// The box blur along rows in lanes: a column is 32 bytes at every width of vectors.

// Rows come from outer caches or memory. Without fetching them ahead soft focus takes, at lengths
// of 21 and 256, 0.06 and 0.17 ns a pixel more with AVX2, 0.11 and 0.19 with AVX-512 (5 and 7 %).
constexpr int32_t kAhead = 2048;

static inline void add_to(int16_t* sums, const LaneWords& change) {
  for (int32_t i = 0; i < kLaneWords; ++i)
    store(sums + i * kWords, load<Words>(sums + i * kWords) + change.part[i]);
}
static inline void add_to(uint32_t* sums, const LaneWords& change) {
  for (int32_t i = 0; i < kLaneWords; ++i) {
    uint32_t* to = sums + i * kWords;
    const SignedWords by = (SignedWords)change.part[i];
    store(to, load<Dwords>(to) + (Dwords)widen_first(by));
    store(to + kDwords, load<Dwords>(to + kDwords) + (Dwords)widen_last(by));
  }
}

// Moves the column sums of count columns down by a row and adds the changes to total.
template <class Sum>
static void move_sums_wide(const uint8_t* entering, const uint8_t* leaving, Sum* sums,
                           int32_t count, uint32_t* total) {
  while (count > 0) {
    const int32_t block = min(count, 128);  // 128 changes of 255 fit 16 bits
    LaneWords changes = {};
    for (int32_t x = 0; x < block; ++x) {
      prefetch(leaving + kAhead);
      const LaneWords change = lane_differences(entering, leaving);
      add_to(sums, change);
      for (int32_t i = 0; i < kLaneWords; ++i) changes.part[i] += change.part[i];
      entering += kLanes;
      leaving += kLanes;
      sums += kSumsStep;
    }
    add_to(total, changes);
    count -= block;
  }
}

// What pair i of the windows gains; with sums of 16 bits lanes lie as interleaving leaves them.
static inline DwordPair gain(const int16_t* entering, const int16_t* leaving, int32_t i) {
  const Words difference = (Words)all_dwords(0xffff0001u);  // words 1, -1
  const Words in = load<Words>(entering + i * kWords), out = load<Words>(leaving + i * kWords);
  return {pair_sums(interleave_low(in, out), difference),
          pair_sums(interleave_high(in, out), difference)};
}
static inline DwordPair gain(const uint32_t* entering, const uint32_t* leaving, int32_t i) {
  const DwordPair in = load_lanes(entering, i, InOrder{}), out = load_lanes(leaving, i, InOrder{});
  return {in.first - out.first, in.second - out.second};
}

// Moves the windows along a run and writes their means, rounded down: the top bytes of products.
static_assert(kWindowShift + 1 == 24);
template <class Sum, class Order>
static void window_means_wide(const BoxRun& run, const Sum* sums, uint32_t* window,
                              const uint32_t (*multipliers)[kLanes], uint8_t* dst) {
  const Sum *entering = sums + run.entering, *leaving = sums + run.leaving;
  DwordPair windows[kLaneWords], constant[kLaneWords];
  for (int32_t i = 0; i < kLaneWords; ++i) {
    windows[i] = load_lanes(window, i, Order{});
    constant[i] = load_lanes(*multipliers, i, Order{});
  }
  const auto next_column = [&](const auto& multiplier_of) {
    prefetch(dst + kAhead);
    const auto products = [&](int32_t i) -> DwordPair {
      const DwordPair more = gain(entering, leaving, i), multiplier = multiplier_of(i);
      windows[i].first += more.first;
      windows[i].second += more.second;
      return {windows[i].first * multiplier.first, windows[i].second * multiplier.second};
    };
    store_top_bytes(dst, products, Order{});
    entering += kSumsStep;
    leaving += kSumsStep;
    dst += kLanes;
  };
  const int32_t count = run.count;  // dst could be the run's own memory, for all the compiler knows
  if (run.same_multipliers)
    for (int32_t x = 0; x < count; ++x) next_column([&](int32_t i) { return constant[i]; });
  else
    for (int32_t x = 0; x < count; ++x)
      next_column([&](int32_t i) { return load_lanes(multipliers[x], i, Order{}); });
  for (int32_t i = 0; i < kLaneWords; ++i) store_lanes(window, i, windows[i], Order{});
}

constexpr auto box_row_16_wide =
    box_row<int16_t, move_sums_wide<int16_t>, window_means_wide<int16_t, Interleaved>>;
constexpr auto box_row_32_wide =
    box_row<uint32_t, move_sums_wide<uint32_t>, window_means_wide<uint32_t, InOrder>>;
