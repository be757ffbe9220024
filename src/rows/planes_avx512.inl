// 64 pixels of three bytes as three planes of bytes, and back: two permutes a vector. Bytes come
// from two of the three vectors by one permute and from the third by another one under a mask.
struct PlanePermutes {
  uint8_t gather[3][64], gather_last[3][64];   // from vectors 0 and 1; from vector 2
  uint8_t scatter[3][64], scatter_red[3][64];  // from blue and green; from red
  uint64_t is_last[3], is_red[3];
  constexpr PlanePermutes()
      : gather(), gather_last(), scatter(), scatter_red(), is_last(), is_red() {
    for (uint32_t c = 0; c < 3; ++c)
      for (uint32_t i = 0; i < 64; ++i) {
        const uint32_t from = 3 * i + c;  // byte of the pixels
        gather[c][i] = static_cast<uint8_t>(from % 128);
        gather_last[c][i] = static_cast<uint8_t>(from % 64);
        if (from >= 128) is_last[c] |= uint64_t{1} << i;

        const uint32_t pixel = (64 * c + i) / 3, channel = (64 * c + i) % 3;
        scatter[c][i] = static_cast<uint8_t>(channel == 1 ? 64 + pixel : pixel);
        scatter_red[c][i] = static_cast<uint8_t>(pixel);
        if (channel == 2) is_red[c] |= uint64_t{1} << i;
      }
  }
};
static constexpr PlanePermutes plane_permutes;

struct Planes512 {
  __m512i channel[3];  // blue, green, red
};

static inline Planes512 load_planes_512(const uint8_t* src) {
  const __m512i a = _mm512_loadu_si512(src), b = _mm512_loadu_si512(src + 64);
  const __m512i last = _mm512_loadu_si512(src + 128);
  Planes512 planes;
  for (int32_t c = 0; c < 3; ++c) {
    const __m512i bytes =
        _mm512_permutex2var_epi8(a, _mm512_loadu_si512(plane_permutes.gather[c]), b);
    planes.channel[c] = _mm512_mask_permutexvar_epi8(
        bytes, plane_permutes.is_last[c], _mm512_loadu_si512(plane_permutes.gather_last[c]), last);
  }
  return planes;
}

static inline void store_planes_512(uint8_t* dst, const Planes512& planes) {
  for (int32_t part = 0; part < 3; ++part) {
    const __m512i bytes = _mm512_permutex2var_epi8(
        planes.channel[0], _mm512_loadu_si512(plane_permutes.scatter[part]), planes.channel[1]);
    _mm512_storeu_si512(dst + 64 * part, _mm512_mask_permutexvar_epi8(
                                             bytes, plane_permutes.is_red[part],
                                             _mm512_loadu_si512(plane_permutes.scatter_red[part]),
                                             planes.channel[2]));
  }
}
