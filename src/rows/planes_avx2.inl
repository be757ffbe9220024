// 32 pixels of three bytes as three planes of bytes, and back: what the compiler makes of loads
// three bytes apart is slower than the arithmetic that follows.

// Bytes 0 ... 47 of the first sixteen pixels lie in the lower halves of three vectors, those of the
// next sixteen in the upper halves. A channel lies at other positions in each of them, so two
// blends collect it and one shuffle puts it in order; the way back is the same in reverse.
struct PlaneShuffles {
  uint8_t every_third[3][16];  // 255 where i % 3 is 0, 1, 2
  uint8_t gather[3][16], scatter[3][16];
  constexpr PlaneShuffles() : every_third(), gather(), scatter() {
    for (int c = 0; c < 3; ++c)
      for (int i = 0; i < 16; ++i) {
        every_third[c][i] = i % 3 == c ? 255 : 0;
        gather[c][i] = static_cast<uint8_t>((3 * i + c) % 16);
        const int part = (c + 2 * i) % 3;  // the vector in which byte i belongs to channel c
        scatter[c][i] = static_cast<uint8_t>((16 * part + i - c) / 3);
      }
  }
};
static constexpr PlaneShuffles plane_shuffles;

struct Planes {
  __m256i blue, green, red;
};

static inline __m256i both_halves(const uint8_t* bytes) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

static inline __m256i load_halves(const uint8_t* low, const uint8_t* high) {
  return _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(low))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(high)), 1);
}

static inline void store_halves(uint8_t* low, uint8_t* high, __m256i v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(low), _mm256_castsi256_si128(v));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(high), _mm256_extracti128_si256(v, 1));
}

static inline Planes load_planes(const uint8_t* src) {
  const __m256i a = load_halves(src, src + 48);
  const __m256i b = load_halves(src + 16, src + 64);
  const __m256i c = load_halves(src + 32, src + 80);
  const __m256i at0 = both_halves(plane_shuffles.every_third[0]);
  const __m256i at1 = both_halves(plane_shuffles.every_third[1]);
  const __m256i at2 = both_halves(plane_shuffles.every_third[2]);
  const __m256i blue = _mm256_blendv_epi8(_mm256_blendv_epi8(a, b, at2), c, at1);
  const __m256i green = _mm256_blendv_epi8(_mm256_blendv_epi8(a, b, at0), c, at2);
  const __m256i red = _mm256_blendv_epi8(_mm256_blendv_epi8(a, b, at1), c, at0);
  return {_mm256_shuffle_epi8(blue, both_halves(plane_shuffles.gather[0])),
          _mm256_shuffle_epi8(green, both_halves(plane_shuffles.gather[1])),
          _mm256_shuffle_epi8(red, both_halves(plane_shuffles.gather[2]))};
}

static inline void store_planes(uint8_t* dst, const Planes& planes) {
  const __m256i blue = _mm256_shuffle_epi8(planes.blue, both_halves(plane_shuffles.scatter[0]));
  const __m256i green = _mm256_shuffle_epi8(planes.green, both_halves(plane_shuffles.scatter[1]));
  const __m256i red = _mm256_shuffle_epi8(planes.red, both_halves(plane_shuffles.scatter[2]));
  const __m256i at0 = both_halves(plane_shuffles.every_third[0]);
  const __m256i at1 = both_halves(plane_shuffles.every_third[1]);
  const __m256i at2 = both_halves(plane_shuffles.every_third[2]);
  store_halves(dst, dst + 48, _mm256_blendv_epi8(_mm256_blendv_epi8(blue, green, at1), red, at2));
  store_halves(dst + 16, dst + 64,
               _mm256_blendv_epi8(_mm256_blendv_epi8(blue, green, at0), red, at1));
  store_halves(dst + 32, dst + 80,
               _mm256_blendv_epi8(_mm256_blendv_epi8(blue, green, at2), red, at0));
}
