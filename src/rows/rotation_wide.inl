// Rotation where pixels lie inside the source: kDwords pixels at a time. Each pixel is fetched as
// two 8-byte loads, two neighbours and the two below; pixels that lie in one row of the source are
// fetched together.

// Elements first ... last - 1 of a row.
struct RowRange {
  int64_t first, last;
};

// Narrows range to the elements i with low <= start + i * step < high.
static RowRange narrowed(RowRange range, int64_t start, int64_t step, int64_t low, int64_t high) {
  if (range.first >= range.last) return range;
  const auto is_inside = [&](int64_t i) {
    const int64_t value = start + i * step;
    return low <= value && value < high;
  };
  if (is_inside(range.first) && is_inside(range.last - 1)) return range;
  if (step == 0) return {0, 0};
  if (step < 0) return narrowed(range, -start, -step, 1 - high, 1 - low);
  const auto steps_up = [&](int64_t distance) {  // rounded up
    return distance > 0 ? (distance - 1) / step + 1 : distance / step;
  };
  return {max(range.first, steps_up(low - start)), min(range.last, steps_up(high - start))};
}

// The elements of a walk whose whole columns and rows are 1 ... size - 2.
static RowRange inside_of_source(const RotationWalk& walk, int32_t count) {
  const auto narrow = [](RowRange range, FixedCoordinate at, int64_t step, int64_t size) {
    return narrowed(range, at.whole * int64_t{65536} + at.fraction, step, 65536,
                    (size - 1) * 65536);
  };
  const RowRange columns = narrow({0, count}, walk.x, walk.step_x, walk.src_columns);
  return narrow(columns, walk.y, walk.step_y, walk.src_rows);
}

constexpr int32_t kRotationSegment = 512;  // pixels whose offsets are computed before sampling

// Whether the pixels of a vector may be side by side in one row of the source, and the distance of
// the last from the first (corners_at) tells whether they are. The walk changes its row at most
// once in a vector, and steps are so nearly whole pixels that at most one column in eight is met
// twice: a change of row, three pixels or more away, cannot make up for that.
static bool is_nearly_level(const RotationWalk& walk) {
  constexpr int32_t kOneRow = 65536 / kDwords;  // in a vector
  return walk.step_x > 60000 && walk.step_y < kOneRow && walk.step_y > -kOneRow;
}

// Pixels anywhere. Each is loaded from two bytes before it, which lie in the same row since column
// 0 is never sampled; the two bytes after its neighbour need not.
static inline Corners corners_apart(const uint8_t* src, ptrdiff_t stride, const int32_t* offsets) {
  const uint8_t* upper = src - 2;
  const uint8_t* lower = upper + stride;
  Corners corners;
  for (int k = 0; k < 4; ++k)
    corners.pixel[k] = shuffle(two_rows(upper, lower, offsets + k), corner_order());
  return corners;
}

static inline Corners corners_at(const uint8_t* src, ptrdiff_t stride, const int32_t* offsets,
                                 bool nearly_level) {
  if constexpr (kBlocks > 1)
    if (nearly_level && offsets[kDwords - 1] - offsets[0] == 3 * (kDwords - 1))
      return corners_side_by_side(src + offsets[0], stride);
  return corners_apart(src, stride, offsets);
}

// What sampling needs of each pixel of a segment.
struct SegmentPositions {
  alignas(64) int32_t offsets[kRotationSegment];  // in bytes from the first pixel
  alignas(64) uint32_t down[kRotationSegment], across[kRotationSegment];  // CornerWeights
};

// Positions are relative to the first pixel, so that they fit 32 bits. Fills whole vectors, and
// whole groups of eight: fetching ahead looks at any one of eight offsets.
static inline void fill_positions(const RotationWalk& walk, int32_t count, SegmentPositions& at) {
  const auto first = [](int32_t fraction, int32_t step) {
    return numbers() * static_cast<uint32_t>(step) + static_cast<uint32_t>(fraction);
  };
  const uint32_t step_x = static_cast<uint32_t>(kDwords * walk.step_x);
  const uint32_t step_y = static_cast<uint32_t>(kDwords * walk.step_y);
  const uint32_t stride = static_cast<uint32_t>(walk.src_stride);
  Dwords x = first(walk.x.fraction, walk.step_x), y = first(walk.y.fraction, walk.step_y);
  for (int32_t i = 0; i < ((count + 7) & -8); i += kDwords) {
    const Dwords column = (Dwords)((SignedDwords)x >> 16), row = (Dwords)((SignedDwords)y >> 16);
    store(at.offsets + i, row * stride + (column + column + column));
    const CornerWeights weights = weights_of(x, y);
    store(at.down + i, weights.down);
    store(at.across + i, weights.across);
    x += step_x;
    y += step_y;
  }
}

// What is fetched ahead, in bytes: in the source from a sampled pixel to the one that is sampled
// some rows later in the same column, for one of eight neighbours (lane); in the destination some
// rows down.
struct RotationHints {
  ptrdiff_t src, dst;
  int32_t lane;
};

// Samples count pixels, at most kRotationSegment and all inside the source.
static void rotate_segment(const RotationWalk& walk, const RotationHints& hints, uint8_t* dst,
                           int32_t count) {
  if (count < kDwords) return rotate_row(walk, dst, count);
  const uint8_t* src = walk.src + walk.y.whole * walk.src_stride + 3 * ptrdiff_t{walk.x.whole};
  const ptrdiff_t stride = walk.src_stride;
  const uint8_t* src_ahead = src + hints.src;
  const uint8_t* dst_ahead = dst + hints.dst;
  const int32_t lane = hints.lane;
  const bool nearly_level = is_nearly_level(walk);
  // All positions first: sampling at once would wait for the offsets to be stored and loaded.
  SegmentPositions at;
  fill_positions(walk, count, at);
  const auto sample = [&](int32_t i) __attribute__((always_inline)) {
    const int32_t* offsets = at.offsets + i;
    for (int32_t k = 0; k < kDwords; k += 8) {
      if (kDwords < 8 && i % 8 != 0) break;  // once for eight pixels
      prefetch(src_ahead + offsets[k + lane]);
      prefetch(dst_ahead + 3 * (i + k));
    }
    const Corners corners = corners_at(src, stride, offsets, nearly_level);
    const CornerWeights weights = {load<Dwords>(at.down + i), load<Dwords>(at.across + i)};
    return bytes_of_mixes(
        mix_corners<0>(corners.pixel[0], weights), mix_corners<1>(corners.pixel[1], weights),
        mix_corners<2>(corners.pixel[2], weights), mix_corners<3>(corners.pixel[3], weights));
  };
  int32_t i = 0;
  for (; i + 2 * kDwords <= count; i += kDwords) store_mixes_and_4_bytes(dst + 3 * i, sample(i));
  store_mixes(dst + 3 * i, sample(i));
  // The last ones, again with those before that they share.
  if (i + kDwords != count) store_mixes(dst + 3 * (count - kDwords), sample(count - kDwords));
}

// The walk from pixel i of its first row on.
static RotationWalk from_pixel(RotationWalk walk, int32_t i) {
  walk.x = advanced(walk.x, walk.step_x, i);
  walk.y = advanced(walk.y, walk.step_y, i);
  return walk;
}

// Cuts what lies inside the source into segments. Rows so long that the bytes of a segment of them
// exceed 32 bits are left to the plain row.
static void rotate_in_segments(const RotationWalk& walk, const RotationHints& hints, uint8_t* dst,
                               int32_t count) {
  constexpr ptrdiff_t kLongestRow = 1 << 21;
  const RowRange inside = inside_of_source(walk, count);
  for (int64_t i = inside.first; i < inside.last; i += kRotationSegment) {
    const int32_t part = static_cast<int32_t>(min<int64_t>(inside.last - i, kRotationSegment));
    const RotationWalk segment = from_pixel(walk, static_cast<int32_t>(i));
    if (walk.src_stride <= kLongestRow)
      rotate_segment(segment, hints, dst + 3 * i, part);
    else
      rotate_row(segment, dst + 3 * i, part);
  }
}

// Whether the walk climbs by more than slope / 4 rows a column.
static bool is_steeper(const RotationWalk& walk, int64_t slope) {
  const auto magnitude = [](int64_t v) { return v < 0 ? -v : v; };
  return 4 * magnitude(walk.step_y) > slope * magnitude(walk.step_x);
}

// Strips of columns: the steeper the walk, the more rows of the source a row of the destination
// crosses, and these are to stay in the first cache until the next row needs them. At 85 degrees
// 12 million pixels (AVX-512) take 0.95 ns each in strips of 512 and 1.18 in strips of 1024; at 45
// degrees 1.02 and 1.09, and 1.37 in strips of 128. Without fetching the source ahead they take
// 1.37 at 85 degrees and 3.3 instead of 1.3 at 7.3 degrees; without the destination 1.10 at 85
// degrees. Where nothing can be fetched ahead a line should serve more pixels: in WebAssembly 7.3
// degrees take 2.9 ns in strips of 2048 and 3.9 in strips of 1024.
constexpr int32_t kFlatStrip = kFetchesAhead ? 1024 : 2048, kSlantedStrip = 512;

static void rotate_wide(const RotationWalk& walk, uint8_t* dst, ptrdiff_t dst_stride, int32_t rows,
                        int32_t count) {
  const bool is_slanted = is_steeper(walk, 1), is_steep = is_steeper(walk, 6);
  const int32_t strip = is_slanted ? kSlantedStrip : kFlatStrip;
  const int64_t rows_ahead = is_slanted ? 24 : 16;
  const auto steps = [&](int32_t step) { return static_cast<ptrdiff_t>(rows_ahead * step >> 16); };
  RotationHints hints;
  hints.src = steps(walk.row_step_y) * walk.src_stride + steps(walk.row_step_x) * 3;
  hints.dst = 4 * dst_stride;
  for (int32_t first = 0; first < count; first += strip) {
    RotationWalk row = from_pixel(walk, first);
    const int32_t part = min(count - first, strip);
    for (ptrdiff_t y = 0; y < rows; ++y) {
      hints.lane = is_steep ? y & 7 : 0;
      rotate_in_segments(row, hints, dst + y * dst_stride + 3 * ptrdiff_t{first}, part);
      advance(row.x, walk.row_step_x);
      advance(row.y, walk.row_step_y);
    }
  }
}
