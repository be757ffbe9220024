// Vocabulary of the AVX2 rows.

// Lane c of vector r becomes lane r of vector c.
static inline void transpose_8x8(__m256 (&v)[8]) {
  __m256 pairs[8], fours[8];
  for (int i = 0; i < 8; i += 2) {
    pairs[i] = _mm256_unpacklo_ps(v[i], v[i + 1]);
    pairs[i + 1] = _mm256_unpackhi_ps(v[i], v[i + 1]);
  }
  for (int i = 0; i < 8; i += 4) {
    fours[i] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], 0x44);
    fours[i + 1] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], 0xee);
    fours[i + 2] = _mm256_shuffle_ps(pairs[i + 1], pairs[i + 3], 0x44);
    fours[i + 3] = _mm256_shuffle_ps(pairs[i + 1], pairs[i + 3], 0xee);
  }
  for (int i = 0; i < 4; ++i) {
    v[i] = _mm256_permute2f128_ps(fours[i], fours[i + 4], 0x20);
    v[i + 4] = _mm256_permute2f128_ps(fours[i], fours[i + 4], 0x31);
  }
}
