// What is the same for all sets of one block.
template <int b>
static Block block(Bytes v) {
  return (Block)v;
}
static Bytes in_all_blocks(const uint8_t* p) { return load<Bytes>(p); }
static Bytes in_order(Bytes packed) { return packed; }
static Bytes load_blocks(const uint8_t* p, ptrdiff_t) { return load<Bytes>(p); }
static void store_blocks(uint8_t* p, ptrdiff_t, Bytes v) { store(p, v); }

static inline Threefold threefold(Bytes pixels) {
  const Bytes first = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5};
  const Bytes second = {5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10};
  const Bytes third = {10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15};
  return {{shuffle(pixels, first), shuffle(pixels, second), shuffle(pixels, third)}};
}

static inline PixelFloats load_pixels(const uint8_t* bgr) {  // 12 bytes
  // Not through memory: a load of all sixteen would wait for two stores.
  typedef uint64_t Qwords __attribute__((vector_size(16)));
  const Bytes v = (Bytes)Qwords{load<uint64_t>(bgr), load<uint32_t>(bgr + 8)};
  const auto channel = [&](Bytes order) { return to_floats((SignedDwords)shuffle(v, order)); };
  return {channel(Bytes{0, 128, 128, 128, 3, 128, 128, 128, 6, 128, 128, 128, 9, 128, 128, 128}),
          channel(Bytes{1, 128, 128, 128, 4, 128, 128, 128, 7, 128, 128, 128, 10, 128, 128, 128}),
          channel(Bytes{2, 128, 128, 128, 5, 128, 128, 128, 8, 128, 128, 128, 11, 128, 128, 128})};
}
static inline void store_pixels(uint8_t* bgr, SignedDwords blue, SignedDwords green,
                                SignedDwords red) {
  const Bytes bytes = pack(pack_signed(blue, green), pack_signed(red, red));
  const Bytes order = {0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, 0, 0, 0, 0};
  store_12_bytes(bgr, (Block)shuffle(bytes, order));
}

static inline void transpose(Floats* v) {
  const auto at = [&](int i) { return (Dwords)v[i]; };
  const Dwords a = interleave_low(at(0), at(1)), b = interleave_high(at(0), at(1));
  const Dwords c = interleave_low(at(2), at(3)), d = interleave_high(at(2), at(3));
  v[0] = (Floats)low_qwords(a, c), v[1] = (Floats)high_qwords(a, c);
  v[2] = (Floats)low_qwords(b, d), v[3] = (Floats)high_qwords(b, d);
}

static inline Dwords entries_of_words(const uint32_t* table, const uint16_t* index) {
  return Dwords{table[index[0]], table[index[1]], table[index[2]], table[index[3]]};
}
static inline Floats entries_at(const float* table, const int32_t* index) {
  return Floats{table[index[0]], table[index[1]], table[index[2]], table[index[3]]};
}

static inline Bytes two_rows(const uint8_t* upper, const uint8_t* lower, const int32_t* offsets) {
  return load_2_pairs(upper + offsets[0], lower + offsets[0]);
}
static inline Bytes half_of_pairs(const uint8_t* p, const int32_t* offsets, int32_t half) {
  return load_2_pairs(p + offsets[2 * half], p + offsets[2 * half + 1]);
}
