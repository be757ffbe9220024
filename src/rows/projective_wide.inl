// Replaces the plain band of projective.inl. The sums of a row must be accumulated one by one, so
// the lanes are the rows of a tile; tiles of eight columns are sampled vector by vector and
// transposed when their pixels are finished. Vectors of sixteen lanes hold two columns of eight
// rows, vectors of four lanes one of four rows.

constexpr int32_t kTilesAtOnce = 8;  // whose positions are computed before they are sampled

// Lane r holds the sums of row r at one column; further lanes those kTileVectors columns on.
struct SumLanes {
  Floats x, y, denominator;
};

// Where the pixels of a tile lie in the source, vector by vector.
struct TilePositions {
  alignas(64) int32_t offsets[kTileVectors][kDwords];
  alignas(64) float x_fractions[kTileVectors][kDwords];
  alignas(64) float y_fractions[kTileVectors][kDwords];
  bool is_inside;  // whether all lie at least one pixel away from the border of the source
};

// The positions of a tile; the sums move on to the next one.
static inline void tile_positions(const ProjectiveSource& source, SumLanes& sums,
                                  TilePositions& at) {
  Dwords last_column = {}, last_row = {};  // less 1, so that 0 and what is negative are large
  for (int k = 0; k < kTileVectors; ++k) {
    const Floats x = sums.x / sums.denominator, y = sums.y / sums.denominator;
    // What is not a number or out of range gives 0 or an extreme value: not inside.
    const Dwords column = (Dwords)truncate(x), row = (Dwords)truncate(y);
    last_column = max(last_column, column - 1);
    last_row = max(last_row, row - 1);
    store(at.offsets[k], row * static_cast<uint32_t>(source.stride) + (column + column + column));
    store(at.x_fractions[k], x - to_floats((SignedDwords)column));
    store(at.y_fractions[k], y - to_floats((SignedDwords)row));
    advance(sums, source);
  }
  for (int k = kTileVectors; k < kTileColumns; ++k) advance(sums, source);
  at.is_inside = !any_above(last_column, all_dwords(static_cast<uint32_t>(source.columns - 3))) &&
                 !any_above(last_row, all_dwords(static_cast<uint32_t>(source.rows - 3)));
}

// Pixels of 24 bits in 32-bit lanes. All are inside the source, so that values fit a byte.
static inline Dwords sample_lanes(const ProjectiveSource& source, const int32_t* offsets,
                                  Floats x_fractions, Floats y_fractions) {
  // From two bytes before the pixels, in the same row. Upper and lower row by turns: fewer offsets
  // are in use at a time.
  const uint8_t* upper = source.pixels - 2;
  const uint8_t* lower = upper + source.stride;
  const Bytes upper_half = half_of_pairs(upper, offsets, 0);
  const Bytes lower_half = half_of_pairs(lower, offsets, 0);
  const PixelPairs top = bytes_of_pairs(upper_half, half_of_pairs(upper, offsets, 1));
  const PixelPairs bottom = bytes_of_pairs(lower_half, half_of_pairs(lower, offsets, 1));
  const auto mixed = [&](Dwords a, Dwords next_a, Dwords b, Dwords next_b) {
    return mix_to_bytes(mix_bytes(a, next_a, x_fractions), mix_bytes(b, next_b, x_fractions),
                        y_fractions);
  };
  const Dwords blue = mixed(top.blue, top.next_blue, bottom.blue, bottom.next_blue);
  const Dwords green = mixed(top.green, top.next_green, bottom.green, bottom.next_green);
  const Dwords red = mixed(top.red, top.next_red, bottom.red, bottom.next_red);
  return blue | green << 8 | red << 16;
}

// A whole tile inside the source; rows of it are written.
static inline void sample_tile(const ProjectiveSource& source, const TilePositions& at,
                               uint8_t* dst, ptrdiff_t dst_stride, int32_t rows) {
  Dwords lanes[kTileVectors];
  for (int k = 0; k < kTileVectors; ++k) {
    const int32_t* offsets = at.offsets[k];
    // The tiles below will look about kTileRows rows further down in the source. Each column
    // fetches for one row of its tile. Without it an affine picture takes 0.07 ns a pixel more with
    // AVX2, 0.04 with AVX-512 (4 and 3 %).
    for (int c = 0; c < kTileColumns / kTileVectors; ++c)
      prefetch(source.pixels + kTileRows * source.stride +
               offsets[c * (kTileRows + kTileVectors) + k % kTileRows]);
    lanes[k] = sample_lanes(source, offsets, load<Floats>(at.x_fractions[k]),
                            load<Floats>(at.y_fractions[k]));
  }
  const TileRows tile = rows_of_tile(lanes);
  for (int32_t r = 0; r < kTileRows && r < rows; ++r) store_row(dst + r * dst_stride, tile, r);
}

// Whether tiles may lie inside the source, and offsets in it fit 32 bits.
static bool fits_tiles(const ProjectiveSource& source) {
  return source.columns >= 3 && source.rows >= 3 &&
         int64_t{source.stride} * source.rows <= INT32_MAX;
}

// Lanes without a row repeat the last one.
static SumLanes first_sums(const ProjectiveSource& source, const ProjectiveSums* starts,
                           int32_t rows) {
  SumLanes sums = {};
  for (int32_t lane = 0; lane < kDwords; ++lane) {
    ProjectiveSums first = starts[min(lane % kTileRows, rows - 1)];
    for (int32_t k = 0; k < lane / kTileRows * kTileVectors; ++k) advance(first, source);
    sums.x[lane] = first.x;
    sums.y[lane] = first.y;
    sums.denominator[lane] = first.denominator;
  }
  return sums;
}

// A tile that reaches out of the source or has fewer columns.
static void resample_tile_plainly(const ProjectiveSource& source, const SumLanes& sums,
                                  uint8_t* dst, ptrdiff_t dst_stride, int32_t rows,
                                  int32_t columns) {
  for (int32_t r = 0; r < rows; ++r)
    resample_row(source, {sums.x[r], sums.y[r], sums.denominator[r]}, dst + r * dst_stride,
                 min(columns, kTileColumns));
}

// At most kTileRows rows.
static void resample_tiles(const ProjectiveSource& source, const ProjectiveSums* starts,
                           uint8_t* dst, ptrdiff_t dst_stride, int32_t rows, int32_t count) {
  SumLanes sums = first_sums(source, starts, rows);
  TilePositions at[kTilesAtOnce];
  SumLanes before[kTilesAtOnce];
  for (int32_t i = 0; i < count; i += kTileColumns) {
    const int32_t t = i / kTileColumns % kTilesAtOnce;
    for (int32_t ahead = 0; t == 0 && ahead < kTilesAtOnce; ++ahead) {
      before[ahead] = sums;
      tile_positions(source, sums, at[ahead]);
    }
    if (i + kTileColumns <= count && at[t].is_inside)
      sample_tile(source, at[t], dst + 3 * i, dst_stride, rows);
    else
      resample_tile_plainly(source, before[t], dst + 3 * i, dst_stride, rows, count - i);
  }
}

static void resample_band_wide(const ProjectiveSource& source, const ProjectiveSums* starts,
                               uint8_t* dst, ptrdiff_t dst_stride, int32_t rows, int32_t count) {
  if (!fits_tiles(source)) return resample_band(source, starts, dst, dst_stride, rows, count);
  for (int32_t r = 0; r < rows; r += kTileRows)
    resample_tiles(source, starts + r, dst + r * dst_stride, dst_stride, min(rows - r, kTileRows),
                   count);
}
