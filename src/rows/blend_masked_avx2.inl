// Replaces blend_masked, where the compiler finds no way to spread the mask over the channels: 32
// pixels at a time by shuffles.

// Bytes 16 * group ... 16 * group + 15 of sixteen pixels take the mask byte of their pixel.
alignas(32) static const uint8_t kPixelOfByte[3][32] = {
    {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4,  5,
     5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10},
    {10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15,
     0,  0,  0,  1,  1,  1,  2,  2,  2,  3,  3,  3,  4,  4,  4,  5},
    {5,  5,  6,  6,  6,  7,  7,  7,  8,  8,  8,  9,  9,  9,  10, 10,
     10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15}};

// 32 bytes of dst pulled toward src.
static inline void blend_32(const uint8_t* src, __m256i weight, uint8_t* dst) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i difference = _mm256_set1_epi16(-255);  // bytes 1, -1
  const __m256i from = load_256(src), to = load_256(dst);
  // 256 * dst + (src - dst) * weight lies between 0 and 65535.
  const __m256i low = _mm256_add_epi16(
      _mm256_unpacklo_epi8(zero, to),
      _mm256_mullo_epi16(_mm256_maddubs_epi16(_mm256_unpacklo_epi8(from, to), difference),
                         _mm256_unpacklo_epi8(weight, zero)));
  const __m256i high = _mm256_add_epi16(
      _mm256_unpackhi_epi8(zero, to),
      _mm256_mullo_epi16(_mm256_maddubs_epi16(_mm256_unpackhi_epi8(from, to), difference),
                         _mm256_unpackhi_epi8(weight, zero)));
  store_256(dst, _mm256_packus_epi16(_mm256_srli_epi16(low, 8), _mm256_srli_epi16(high, 8)));
}

static void blend_masked_avx2(const uint8_t* src, const uint8_t* mask, uint8_t* dst,
                              int32_t count) {
  const __m256i order_0 = load_256(kPixelOfByte[0]), order_1 = load_256(kPixelOfByte[1]),
                order_2 = load_256(kPixelOfByte[2]);
  for (; count >= 32; count -= 32, src += 96, mask += 32, dst += 96) {
    const __m256i weights = load_256(mask);
    const __m256i first = _mm256_permute2x128_si256(weights, weights, 0x00);
    const __m256i second = _mm256_permute2x128_si256(weights, weights, 0x11);
    blend_32(src, _mm256_shuffle_epi8(first, order_0), dst);
    blend_32(src + 32, _mm256_shuffle_epi8(weights, order_1), dst + 32);
    blend_32(src + 64, _mm256_shuffle_epi8(second, order_2), dst + 64);
  }
  blend_masked(src, mask, dst, count);
}
