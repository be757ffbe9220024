// Whole vectors of 32 bytes, at any address.

static inline __m256i load_256(const void* p) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
static inline void store_256(void* p, __m256i v) {
  _mm256_storeu_si256(static_cast<__m256i*>(p), v);
}
