// Replaces the sampling of projective_avx2.inl: the lanes are the eight rows of two columns, pixels
// come in pairs of 8 bytes, their bytes by byte permutes. Takes two thirds of the time of eight
// lanes.

// The sums of eight rows at one column, then at the next.
struct SumLanes16 {
  __m512 x, y, denominator;
};

// Two additions, one after the other as along a row.
static inline __m512 two_columns_on(__m512 sum, float step) {
  return _mm512_add_ps(_mm512_add_ps(sum, _mm512_set1_ps(step)), _mm512_set1_ps(step));
}

// The positions of a tile, as for eight lanes; the sums move on to the next one. The result has a
// bit for each lane with a pixel that is not at least one pixel away from the border of the source.
static inline __mmask16 tile_positions_16(const ProjectiveSource& source, SumLanes16& sums,
                                          TilePositions& at) {
  const __m512i stride = _mm512_set1_epi32(static_cast<int32_t>(source.stride));
  const __m512i columns_inside = _mm512_set1_epi32(source.columns - 2);
  const __m512i rows_inside = _mm512_set1_epi32(source.rows - 2);
  const __m512i one = _mm512_set1_epi32(1);
  __mmask16 near_border = 0;
  for (int k = 0; k < kTile; k += 2) {
    const __m512 x = _mm512_div_ps(sums.x, sums.denominator);
    const __m512 y = _mm512_div_ps(sums.y, sums.denominator);
    const __m512i column = _mm512_cvttps_epi32(x), row = _mm512_cvttps_epi32(y);
    near_border = static_cast<__mmask16>(
        near_border | _mm512_cmpge_epu32_mask(_mm512_sub_epi32(column, one), columns_inside) |
        _mm512_cmpge_epu32_mask(_mm512_sub_epi32(row, one), rows_inside));
    const __m512i three = _mm512_add_epi32(column, _mm512_add_epi32(column, column));
    _mm512_store_si512(at.offsets[k], _mm512_add_epi32(_mm512_mullo_epi32(row, stride), three));
    _mm512_store_ps(at.x_fractions[k], _mm512_sub_ps(x, _mm512_cvtepi32_ps(column)));
    _mm512_store_ps(at.y_fractions[k], _mm512_sub_ps(y, _mm512_cvtepi32_ps(row)));

    sums.x = two_columns_on(sums.x, source.step_x);
    sums.y = two_columns_on(sums.y, source.step_y);
    sums.denominator = two_columns_on(sums.denominator, source.step_denominator);
  }
  return near_border;
}

// Three channels of sixteen pixels.
struct FloatPixels16 {
  __m512 blue, green, red;
};

// Eight pairs of pixels, loaded from two bytes before them.
static inline __m512i load_8_pairs(const uint8_t* pixels, const int32_t* offsets) {
  const uint8_t* p = pixels - 2;
  const __m256i low = load_4_pairs(p + offsets[0], p + offsets[1], p + offsets[2], p + offsets[3]);
  const __m256i high = load_4_pairs(p + offsets[4], p + offsets[5], p + offsets[6], p + offsets[7]);
  return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

// Sixteen pixels, of which a and b hold eight pairs each, mixed with their right neighbours.
static inline FloatPixels16 mix_16_pairs(__m512i a, __m512i b, __m512 x_fractions) {
  const __m512i pair_starts =
      _mm512_setr_epi32(0, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120);
  const auto byte = [&](int k) {
    const __m512i index = _mm512_add_epi32(pair_starts, _mm512_set1_epi32(k));
    return _mm512_cvtepi32_ps(_mm512_maskz_permutex2var_epi8(0x1111111111111111, a, index, b));
  };
  const auto mixed = [&](__m512 left, __m512 right) {
    return _mm512_fmadd_ps(x_fractions, _mm512_sub_ps(right, left), left);
  };
  return {mixed(byte(2), byte(5)), mixed(byte(3), byte(6)), mixed(byte(4), byte(7))};
}

// Sixteen pixels of 24 bits in 32-bit lanes.
static inline __m512i sample_two_columns(const ProjectiveSource& source, const int32_t* offsets,
                                         __m512 x_fractions, __m512 y_fractions) {
  const uint8_t *upper = source.pixels, *lower = upper + source.stride;
  const __m512i upper_a = load_8_pairs(upper, offsets), lower_a = load_8_pairs(lower, offsets);
  const __m512i upper_b = load_8_pairs(upper, offsets + 8);
  const __m512i lower_b = load_8_pairs(lower, offsets + 8);
  const FloatPixels16 top = mix_16_pairs(upper_a, upper_b, x_fractions);
  const FloatPixels16 bottom = mix_16_pairs(lower_a, lower_b, x_fractions);
  const auto mixed = [&](__m512 above, __m512 below) {
    return _mm512_cvttps_epi32(_mm512_fmadd_ps(y_fractions, _mm512_sub_ps(below, above), above));
  };
  const __m512i green = _mm512_slli_epi32(mixed(top.green, bottom.green), 8);
  const __m512i red = _mm512_slli_epi32(mixed(top.red, bottom.red), 16);
  return _mm512_or_si512(mixed(top.blue, bottom.blue), _mm512_or_si512(green, red));
}

// Where the bytes of two rows of a tile come from: of columns 0 ... 3 and of columns 4 ... 7. The
// first row ends in the lower half of a vector, the second in the upper one.
struct TileOrder {
  alignas(64) uint8_t first[64], last[64];
};

static constexpr TileOrder tile_order() {
  TileOrder order = {};
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 4; ++column) {
      for (int channel = 0; channel < 3; ++channel) {
        const int from = 32 * column + 4 * row + channel;
        const int to = 32 * row + 3 * column + channel;
        order.first[to] = static_cast<uint8_t>(from);
        order.last[to + 12] = static_cast<uint8_t>(from);
      }
    }
  }
  return order;
}

static inline void sample_tile_16(const ProjectiveSource& source, const TilePositions& at,
                                  uint8_t* dst, ptrdiff_t dst_stride, int32_t rows) {
  __m512i columns[kTile / 2];
  for (int k = 0; k < kTile; k += 2) {
    fetch_next_band(source, at, k);
    fetch_next_band(source, at, k + 1);
    columns[k / 2] = sample_two_columns(source, at.offsets[k], _mm512_load_ps(at.x_fractions[k]),
                                        _mm512_load_ps(at.y_fractions[k]));
  }
  static constexpr TileOrder kOrder = tile_order();
  constexpr __mmask64 kFirst = 0x00000fff00000fff, kLast = kFirst << 12;
  constexpr __mmask8 kPixels = 0x3f;  // eight of 24 bits are six words of 32
  for (int32_t r = 0; r < rows; r += 2) {
    const __m512i row_offset = _mm512_set1_epi8(static_cast<char>(4 * r));
    const __m512i first = _mm512_add_epi8(_mm512_load_si512(kOrder.first), row_offset);
    const __m512i last = _mm512_add_epi8(_mm512_load_si512(kOrder.last), row_offset);
    const __m512i two_rows =
        _mm512_or_si512(_mm512_maskz_permutex2var_epi8(kFirst, columns[0], first, columns[1]),
                        _mm512_maskz_permutex2var_epi8(kLast, columns[2], last, columns[3]));
    uint8_t* row = dst + r * dst_stride;
    _mm_prefetch(row + kBytesAhead, _MM_HINT_T0);
    _mm_prefetch(row + dst_stride + kBytesAhead, _MM_HINT_T0);
    _mm256_mask_storeu_epi32(row, kPixels, _mm512_castsi512_si256(two_rows));
    if (r + 1 < rows)
      _mm256_mask_storeu_epi32(row + dst_stride, kPixels, _mm512_extracti64x4_epi64(two_rows, 1));
  }
}

static void resample_band_avx512(const ProjectiveSource& source, const ProjectiveSums* starts,
                                 uint8_t* dst, ptrdiff_t dst_stride, int32_t rows, int32_t count) {
  if (!fits_tiles(source)) {
    resample_band(source, starts, dst, dst_stride, rows, count);
    return;
  }
  TileSums lanes = first_sums(starts, rows);
  const auto first_two_columns = [](const float* sums, float step) {
    const __m256 first = _mm256_load_ps(sums);
    return _mm512_insertf32x8(_mm512_castps256_ps512(first),
                              _mm256_add_ps(first, _mm256_set1_ps(step)), 1);
  };
  SumLanes16 sums = {first_two_columns(lanes.x, source.step_x),
                     first_two_columns(lanes.y, source.step_y),
                     first_two_columns(lanes.denominator, source.step_denominator)};
  TilePositions at[kTilesAtOnce];
  SumLanes16 before[kTilesAtOnce];
  __mmask16 near_border[kTilesAtOnce];
  for (int32_t i = 0; i < count; i += kTile) {
    const int32_t t = i / kTile % kTilesAtOnce;
    for (int32_t ahead = 0; t == 0 && ahead < kTilesAtOnce; ++ahead) {
      before[ahead] = sums;
      near_border[ahead] = tile_positions_16(source, sums, at[ahead]);
    }
    if (i + kTile <= count && near_border[t] == 0) {
      sample_tile_16(source, at[t], dst + 3 * i, dst_stride, rows);
      continue;
    }
    _mm256_store_ps(lanes.x, _mm512_castps512_ps256(before[t].x));
    _mm256_store_ps(lanes.y, _mm512_castps512_ps256(before[t].y));
    _mm256_store_ps(lanes.denominator, _mm512_castps512_ps256(before[t].denominator));
    resample_tile_plainly(source, lanes, dst + 3 * i, dst_stride, rows, count - i);
  }
}
