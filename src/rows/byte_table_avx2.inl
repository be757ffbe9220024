// Replaces the look-ups of byte_table.inl, where the processor loads one entry after the other: 36
// MB through one table take 3.8 ms instead of 7.8, through one for each channel 4.8 instead of 7.5.

// A table of 256 bytes as sixteen shuffles. Each part holds its difference (exclusive or) to the
// part before, so that the parts up to an index add up to the right one. Each half of the table
// starts anew, because indices are told apart by their sign.
struct ShuffleTable {
  __m256i part[16];
};

static inline ShuffleTable shuffle_table(const uint8_t* table) {
  ShuffleTable shuffles;
  __m128i before = _mm_setzero_si128();
  for (int32_t j = 0; j < 16; ++j) {
    const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(table + 16 * j));
    const __m128i difference = j % 8 == 0 ? part : _mm_xor_si128(part, before);
    shuffles.part[j] = _mm256_broadcastsi128_si256(difference);
    before = part;
  }
  return shuffles;
}

static inline __m256i look_up_32(const ShuffleTable& table, __m256i index) {
  const __m256i sixteen = _mm256_set1_epi8(16);
  // A shuffle gives 0 for a negative index. Those of 128 and more have the sign of the lower half
  // once their top bit is flipped, and the others are then negative.
  __m256i low = index, high = _mm256_xor_si256(index, _mm256_set1_epi8(-128));
  __m256i from_low = _mm256_shuffle_epi8(table.part[0], low);
  __m256i from_high = _mm256_shuffle_epi8(table.part[8], high);
  for (int32_t j = 1; j < 8; ++j) {
    low = _mm256_subs_epi8(low, sixteen);
    high = _mm256_subs_epi8(high, sixteen);
    from_low = _mm256_xor_si256(from_low, _mm256_shuffle_epi8(table.part[j], low));
    from_high = _mm256_xor_si256(from_high, _mm256_shuffle_epi8(table.part[8 + j], high));
  }
  return _mm256_xor_si256(from_low, from_high);
}

static void look_up_avx2(const uint8_t* table, const PixelBand& band) {
  if (band.count < 32) return look_up(table, band);
  const ShuffleTable shuffles = shuffle_table(table);
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    const ptrdiff_t bytes = 3 * static_cast<ptrdiff_t>(count);
    ptrdiff_t i = 0;
    for (; i + 32 <= bytes; i += 32) {
      const __m256i index = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + i));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i), look_up_32(shuffles, index));
    }
    for (; i < bytes; ++i) dst[i] = table[src[i]];
  });
}

// Selects the bytes first, first + 3 and so on.
static inline __m256i every_third_byte(int32_t first) {
  alignas(32) int8_t mask[32];
  for (int32_t i = 0; i < 32; ++i) mask[i] = i % 3 == first ? -1 : 0;
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(mask));
}

static inline __m256i blend3(__m256i a, __m256i b, __m256i from_b, __m256i c, __m256i from_c) {
  return _mm256_blendv_epi8(_mm256_blendv_epi8(a, b, from_b), c, from_c);
}

// In three neighbouring vectors each channel has each byte position once. Blending therefore sorts
// the channels into three vectors, in some order of pixels that the blends back undo.
static void look_up_bgr_avx2(const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                             const PixelBand& band) {
  if (band.count < 64) return look_up_bgr(blue, green, red, band);
  const ShuffleTable blues = shuffle_table(blue), greens = shuffle_table(green),
                     reds = shuffle_table(red);
  const __m256i at0 = every_third_byte(0), at1 = every_third_byte(1), at2 = every_third_byte(2);
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    int32_t i = 0;
    for (; i + 32 <= count; i += 32) {
      const __m256i* from = reinterpret_cast<const __m256i*>(src + 3 * i);
      const __m256i a = _mm256_loadu_si256(from), b = _mm256_loadu_si256(from + 1),
                    c = _mm256_loadu_si256(from + 2);
      // Blue lies at bytes 0, 3 ... of a, at 1, 4 ... of b and at 2, 5 ... of c.
      const __m256i p = look_up_32(blues, blend3(a, b, at1, c, at2));
      const __m256i q = look_up_32(greens, blend3(a, b, at2, c, at0));
      const __m256i r = look_up_32(reds, blend3(a, b, at0, c, at1));
      __m256i* to = reinterpret_cast<__m256i*>(dst + 3 * i);
      _mm256_storeu_si256(to, blend3(p, q, at1, r, at2));
      _mm256_storeu_si256(to + 1, blend3(p, q, at2, r, at0));
      _mm256_storeu_si256(to + 2, blend3(p, q, at0, r, at1));
    }
    look_up_bgr(blue, green, red, {src + 3 * i, 0, dst + 3 * i, 0, 1, count - i});
  });
}
