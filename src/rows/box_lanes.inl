// Rows in lanes, and the box blur that runs along them.

static void to_lanes(const uint8_t* row, uint8_t* lanes, int32_t channels, int32_t columns,
                     const uint8_t*) {
  for (int32_t c = 0; c < channels; ++c)
    for (ptrdiff_t x = 0; x < columns; ++x, lanes += kLanes)
      for (int32_t k = 0; k < kLanes; ++k)
        lanes[byte_of_lane(k)] = row[(k * ptrdiff_t{columns} + x) * channels + c];
}

static void from_lanes(const uint8_t* lanes, uint8_t* row, int32_t channels, int32_t columns,
                       const uint8_t*) {
  for (int32_t c = 0; c < channels; ++c)
    for (ptrdiff_t x = 0; x < columns; ++x, lanes += kLanes)
      for (int32_t k = 0; k < kLanes; ++k)
        row[(k * ptrdiff_t{columns} + x) * channels + c] = lanes[byte_of_lane(k)];
}

// 32 bytes from the order of lanes to that of a vector or back: it is the same exchange.
static inline void swap_order(const uint8_t* src, uint8_t* dst) {
  for (int32_t eight = 0; eight < kLanes; eight += 8)
    for (int32_t k = 0; k < 8; ++k) dst[byte_of_lane(eight) + k] = src[eight + k];
}

// Moves the column sums of count columns down by a row and adds the changes to total.
template <class Sum>
static void move_sums(const uint8_t* entering, const uint8_t* leaving, Sum* sums, int32_t count,
                      uint32_t* total) {
  uint32_t changes[kLanes] = {};
  for (int32_t x = 0; x < count; ++x) {
    uint8_t in[kLanes], out[kLanes];
    swap_order(entering, in);
    swap_order(leaving, out);
    ROXE_LANES_INDEPENDENT
    for (int32_t k = 0; k < kLanes; ++k) {
      const int32_t change = in[k] - out[k];
      sums[k] = static_cast<Sum>(sums[k] + static_cast<Sum>(change));
      changes[k] += static_cast<uint32_t>(change);
    }
    entering += kLanes;
    leaving += kLanes;
    sums += kSumsStep;
  }
  for (int32_t k = 0; k < kLanes; ++k) total[k] += changes[k];
}

// Moves the windows along a run and writes their means, rounded down.
template <class Sum>
static void window_means(const BoxRun& run, const Sum* sums, uint32_t* window,
                         const uint32_t (*multipliers)[kLanes], uint8_t* dst) {
  const Sum *entering = sums + run.entering, *leaving = sums + run.leaving;
  uint32_t sum[kLanes];
  for (int32_t k = 0; k < kLanes; ++k) sum[k] = window[k];
  for (int32_t x = 0; x < run.count; ++x) {
    const uint32_t* multiplier = multipliers[run.same_multipliers ? 0 : x];
    uint8_t mean[kLanes];
    ROXE_LANES_INDEPENDENT
    for (int32_t k = 0; k < kLanes; ++k) {
      sum[k] += static_cast<uint32_t>(entering[k]) - static_cast<uint32_t>(leaving[k]);
      mean[k] = static_cast<uint8_t>((sum[k] * multiplier[k]) >> (kWindowShift + 1));
    }
    swap_order(mean, dst);
    entering += kSumsStep;
    leaving += kSumsStep;
    dst += kLanes;
  }
  for (int32_t k = 0; k < kLanes; ++k) window[k] = sum[k];
}

// What changed in each stretch, and in the columns of it where windows end and begin.
struct StretchChanges {
  uint32_t whole[kLanes], head[kLanes], tail[kLanes];
};

// Moves the windows left of the stretches down by a row. Such a window holds the last columns of a
// stretch, whole stretches, and the first columns of another one.
static void move_starts(uint32_t* starts, const StretchChanges& change, int32_t whole_before,
                        int32_t whole_after) {
  if (whole_before == 0 && whole_after == 0) {
    for (int32_t k = 0; k < kLanes; ++k) starts[k] += change.head[k];
    for (int32_t k = 1; k < kLanes; ++k) starts[k] += change.tail[k - 1];
    return;
  }
  // What changed before the end of a window in each stretch, and before the begin of one in the
  // stretch before; stretches beyond the row change nothing.
  uint32_t ends[2 * kLanes], begins[2 * kLanes + 1] = {};
  uint32_t sum = 0;
  for (int32_t k = 0; k < kLanes; ++k) {
    ends[k] = sum + change.head[k];
    sum += change.whole[k];
    begins[kLanes + 1 + k] = sum - change.tail[k];
  }
  for (int32_t k = 0; k < kLanes; ++k) ends[kLanes + k] = sum;
  for (int32_t k = 0; k < kLanes; ++k)
    starts[k] += ends[k + whole_after] - begins[kLanes + k - whole_before];
}

// Moves the sums of a channel, and the windows left of its stretches, down by a row.
template <class Sum, void (*move_sums)(const uint8_t*, const uint8_t*, Sum*, int32_t, uint32_t*)>
static inline void move_channel(const BoxRow<Sum>& box, int32_t c, const uint8_t* entering,
                                const uint8_t* leaving) {
  const int32_t tail_begin = box.columns - box.tail;
  const bool overlapping = box.head > tail_begin;  // the first and the last columns of a stretch
  const int32_t cuts[4] = {0, overlapping ? tail_begin : box.head,
                           overlapping ? box.head : tail_begin, box.columns};
  uint32_t totals[3][kLanes] = {};
  for (int32_t i = 0; i < 3; ++i) {
    const ptrdiff_t x = cuts[i];
    move_sums(entering + x * kLanes, leaving + x * kLanes,
              box.sums + c * box.sums_size + x * kSumsStep, cuts[i + 1] - cuts[i], totals[i]);
  }
  StretchChanges change;
  for (int32_t k = 0; k < kLanes; ++k) {
    const uint32_t middle = overlapping ? totals[1][k] : 0;
    change.head[k] = totals[0][k] + middle;
    change.tail[k] = middle + totals[2][k];
    change.whole[k] = totals[0][k] + totals[1][k] + totals[2][k];
  }
  move_starts(box.starts[c], change, box.whole_before, box.whole_after);
}

template <class Sum, void (*move_sums)(const uint8_t*, const uint8_t*, Sum*, int32_t, uint32_t*),
          void (*window_means)(const BoxRun&, const Sum*, uint32_t*, const uint32_t (*)[kLanes],
                               uint8_t*)>
static void box_row(const BoxRow<Sum>& box, const uint8_t* entering, const uint8_t* leaving,
                    uint8_t* dst) {
  const ptrdiff_t plane = ptrdiff_t{box.columns} * kLanes;
  for (int32_t c = 0; c < box.channels; ++c) {
    // Windows that hold all rows move neither in nor out of any.
    if (entering != leaving)
      move_channel<Sum, move_sums>(box, c, entering + c * plane, leaving + c * plane);
    if (!dst) continue;

    const Sum* sums = box.sums + c * box.sums_size;
    uint32_t window[kLanes];
    for (int32_t k = 0; k < kLanes; ++k) window[k] = box.starts[c][k];
    int32_t x = 0;
    for (const BoxRun* run = box.runs; x < box.columns; x += run->count, ++run)
      window_means(*run, sums, window, box.multipliers + x,
                   dst + c * plane + ptrdiff_t{x} * kLanes);
  }
}

[[maybe_unused]] constexpr auto box_row_16 = box_row<int16_t, move_sums, window_means>;
[[maybe_unused]] constexpr auto box_row_32 = box_row<uint32_t, move_sums, window_means>;
