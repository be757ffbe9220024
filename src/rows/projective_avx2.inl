// Replaces the plain band of projective.inl. The sums of a row must be accumulated one by one, so
// the lanes are the eight rows of a band; tiles of eight columns are sampled lane by lane and
// transposed when their pixels are finished. Six times as fast as the plain band rebuilt for AVX2.

constexpr int32_t kTile = 8;            // columns of a tile, and its rows: one lane each
constexpr int32_t kTilesAtOnce = 8;     // whose positions are computed before they are sampled
constexpr ptrdiff_t kBytesAhead = 384;  // by which each row of the destination is fetched ahead

// The sums of eight rows at one column.
struct SumLanes {
  __m256 x, y, denominator;
};

// Where the pixels of a tile lie in the source, column by column.
struct TilePositions {
  alignas(64) int32_t offsets[kTile][kTile];
  alignas(64) float x_fractions[kTile][kTile];
  alignas(64) float y_fractions[kTile][kTile];
};

// The least and the greatest source column and row of a tile, lane by lane.
struct TileExtent {
  __m256i first_column = _mm256_set1_epi32(INT32_MAX), last_column = _mm256_set1_epi32(INT32_MIN);
  __m256i first_row = first_column, last_row = last_column;

  // Whether all pixels lie at least one pixel away from the border of the source.
  bool is_inside(const ProjectiveSource& source) const {
    const __m256i one = _mm256_set1_epi32(1);
    const __m256i before =
        _mm256_or_si256(_mm256_cmpgt_epi32(one, first_column), _mm256_cmpgt_epi32(one, first_row));
    const __m256i after =
        _mm256_or_si256(_mm256_cmpgt_epi32(last_column, _mm256_set1_epi32(source.columns - 2)),
                        _mm256_cmpgt_epi32(last_row, _mm256_set1_epi32(source.rows - 2)));
    const __m256i outside = _mm256_or_si256(before, after);
    return _mm256_testz_si256(outside, outside);
  }
};

// The positions of a tile; the sums move on to the next one.
static inline TileExtent tile_positions(const ProjectiveSource& source, SumLanes& sums,
                                        TilePositions& at) {
  TileExtent extent;
  for (int k = 0; k < kTile; ++k) {
    const __m256 x = _mm256_div_ps(sums.x, sums.denominator);
    const __m256 y = _mm256_div_ps(sums.y, sums.denominator);
    // What is not a number or out of range gives INT32_MIN, which lies outside.
    const __m256i column = _mm256_cvttps_epi32(x), row = _mm256_cvttps_epi32(y);
    extent.first_column = _mm256_min_epi32(extent.first_column, column);
    extent.last_column = _mm256_max_epi32(extent.last_column, column);
    extent.first_row = _mm256_min_epi32(extent.first_row, row);
    extent.last_row = _mm256_max_epi32(extent.last_row, row);
    const __m256i three = _mm256_add_epi32(column, _mm256_add_epi32(column, column));
    const __m256i stride = _mm256_set1_epi32(static_cast<int32_t>(source.stride));
    store_256(at.offsets[k], _mm256_add_epi32(_mm256_mullo_epi32(row, stride), three));
    _mm256_store_ps(at.x_fractions[k], _mm256_sub_ps(x, _mm256_cvtepi32_ps(column)));
    _mm256_store_ps(at.y_fractions[k], _mm256_sub_ps(y, _mm256_cvtepi32_ps(row)));

    sums.x = _mm256_add_ps(sums.x, _mm256_set1_ps(source.step_x));
    sums.y = _mm256_add_ps(sums.y, _mm256_set1_ps(source.step_y));
    sums.denominator = _mm256_add_ps(sums.denominator, _mm256_set1_ps(source.step_denominator));
  }
  return extent;
}

// Three channels of eight pixels.
struct FloatPixels {
  __m256 blue, green, red;
};

// Eight pixels and their right neighbours, mixed.
static inline FloatPixels mix_with_neighbours(const uint8_t* pixels, const int32_t* offsets,
                                              __m256 x_fractions) {
  // Two bytes before the pixel are loaded too, which lie in the same row.
  const uint8_t* p = pixels - 2;
  const __m256 a = _mm256_castsi256_ps(
      load_4_pairs(p + offsets[0], p + offsets[1], p + offsets[4], p + offsets[5]));
  const __m256 b = _mm256_castsi256_ps(
      load_4_pairs(p + offsets[2], p + offsets[3], p + offsets[6], p + offsets[7]));
  // Bytes . . blue green, and red and the neighbour's blue green red.
  const __m256i low = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0x88));
  const __m256i high = _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0xdd));
  const auto byte = [](__m256i v, int shift) {
    const __m256i shifted = _mm256_srli_epi32(v, shift);
    return _mm256_cvtepi32_ps(shift == 24 ? shifted
                                          : _mm256_and_si256(shifted, _mm256_set1_epi32(255)));
  };
  const auto mixed = [&](__m256 left, __m256 right) {
    return _mm256_fmadd_ps(x_fractions, _mm256_sub_ps(right, left), left);
  };
  return {mixed(byte(low, 16), byte(high, 8)), mixed(byte(low, 24), byte(high, 16)),
          mixed(byte(high, 0), byte(high, 24))};
}

// Eight pixels of 24 bits in 32-bit lanes. All are inside the source, so that values fit a byte.
static inline __m256i sample_column(const ProjectiveSource& source, const int32_t* offsets,
                                    __m256 x_fractions, __m256 y_fractions) {
  const FloatPixels top = mix_with_neighbours(source.pixels, offsets, x_fractions);
  const FloatPixels bottom =
      mix_with_neighbours(source.pixels + source.stride, offsets, x_fractions);
  const auto mixed = [&](__m256 above, __m256 below) {
    return _mm256_cvttps_epi32(_mm256_fmadd_ps(y_fractions, _mm256_sub_ps(below, above), above));
  };
  const __m256i green = _mm256_slli_epi32(mixed(top.green, bottom.green), 8);
  const __m256i red = _mm256_slli_epi32(mixed(top.red, bottom.red), 16);
  return _mm256_or_si256(mixed(top.blue, bottom.blue), _mm256_or_si256(green, red));
}

// The next band will look about as many rows further down; each column of a tile fetches one row.
static inline void fetch_next_band(const ProjectiveSource& source, const TilePositions& at, int k) {
  _mm_prefetch(source.pixels + at.offsets[k][k] + kTile * source.stride, _MM_HINT_T0);
}

// Writes a finished tile, of which pixels holds the columns.
static inline void store_tile(__m256 (&pixels)[kTile], uint8_t* dst, ptrdiff_t dst_stride,
                              int32_t rows) {
  transpose_8x8(pixels);
  const __m256i three_of_four =
      in_both_halves(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  for (int32_t r = 0; r < rows; ++r) {
    uint8_t* row = dst + r * dst_stride;
    _mm_prefetch(row + kBytesAhead, _MM_HINT_T0);
    store_24_bytes(row, _mm256_shuffle_epi8(_mm256_castps_si256(pixels[r]), three_of_four));
  }
}

// A whole tile inside the source; rows of it are written.
[[maybe_unused]] static inline void sample_tile(const ProjectiveSource& source,
                                                const TilePositions& at, uint8_t* dst,
                                                ptrdiff_t dst_stride, int32_t rows) {
  __m256 pixels[kTile];
  for (int k = 0; k < kTile; ++k) {
    fetch_next_band(source, at, k);
    pixels[k] =
        _mm256_castsi256_ps(sample_column(source, at.offsets[k], _mm256_load_ps(at.x_fractions[k]),
                                          _mm256_load_ps(at.y_fractions[k])));
  }
  store_tile(pixels, dst, dst_stride, rows);
}

// Whether tiles may lie inside the source, and offsets in it fit 32 bits.
static bool fits_tiles(const ProjectiveSource& source) {
  return source.columns >= 3 && source.rows >= 3 && source.stride * source.rows <= INT32_MAX;
}

// The sums at the first column of a tile, row by row.
struct TileSums {
  alignas(32) float x[kTile], y[kTile], denominator[kTile];
};

// Lanes without a row repeat the last one.
static TileSums first_sums(const ProjectiveSums* starts, int32_t rows) {
  TileSums sums;
  for (int32_t r = 0; r < kTile; ++r) {
    const ProjectiveSums& start = starts[r < rows ? r : rows - 1];
    sums.x[r] = start.x;
    sums.y[r] = start.y;
    sums.denominator[r] = start.denominator;
  }
  return sums;
}

// A tile that reaches out of the source or has fewer columns.
static void resample_tile_plainly(const ProjectiveSource& source, const TileSums& sums,
                                  uint8_t* dst, ptrdiff_t dst_stride, int32_t rows,
                                  int32_t columns) {
  for (int32_t r = 0; r < rows; ++r)
    resample_row(source, {sums.x[r], sums.y[r], sums.denominator[r]}, dst + r * dst_stride,
                 columns < kTile ? columns : kTile);
}

[[maybe_unused]] static void resample_band_avx2(const ProjectiveSource& source,
                                                const ProjectiveSums* starts, uint8_t* dst,
                                                ptrdiff_t dst_stride, int32_t rows, int32_t count) {
  if (!fits_tiles(source)) {
    resample_band(source, starts, dst, dst_stride, rows, count);
    return;
  }
  TileSums tile = first_sums(starts, rows);
  SumLanes sums = {_mm256_load_ps(tile.x), _mm256_load_ps(tile.y),
                   _mm256_load_ps(tile.denominator)};
  TilePositions at[kTilesAtOnce];
  SumLanes before[kTilesAtOnce];
  TileExtent extent[kTilesAtOnce];
  for (int32_t i = 0; i < count; i += kTile) {
    const int32_t t = i / kTile % kTilesAtOnce;
    for (int32_t ahead = 0; t == 0 && ahead < kTilesAtOnce; ++ahead) {
      before[ahead] = sums;
      extent[ahead] = tile_positions(source, sums, at[ahead]);
    }
    if (i + kTile <= count && extent[t].is_inside(source)) {
      sample_tile(source, at[t], dst + 3 * i, dst_stride, rows);
      continue;
    }
    _mm256_store_ps(tile.x, before[t].x);
    _mm256_store_ps(tile.y, before[t].y);
    _mm256_store_ps(tile.denominator, before[t].denominator);
    resample_tile_plainly(source, tile, dst + 3 * i, dst_stride, rows, count - i);
  }
}
