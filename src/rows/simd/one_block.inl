// What is the same for all sets of one block.
template <int b>
static Block block(Bytes v) {
  return (Block)v;
}
static Bytes in_all_blocks(const uint8_t* p) { return load<Bytes>(p); }
template <class BlockOf>
static inline Bytes blocks_of(const BlockOf& block) {
  return (Bytes)block(0);
}
static void store_blocks(uint8_t* p, ptrdiff_t, Bytes v) { store(p, v); }

static Bytes shuffle(Bytes table, Bytes index);
static inline PixelFloats load_pixels(const uint8_t* bgr) {  // 12 bytes
  // Not through memory: a load of all sixteen would wait for two stores.
  const Bytes v = (Bytes)Qwords{load<uint64_t>(bgr), load<uint32_t>(bgr + 8)};
  const auto channel = [&](Bytes order) { return to_floats((SignedDwords)shuffle(v, order)); };
  return {channel(Bytes{0, 128, 128, 128, 3, 128, 128, 128, 6, 128, 128, 128, 9, 128, 128, 128}),
          channel(Bytes{1, 128, 128, 128, 4, 128, 128, 128, 7, 128, 128, 128, 10, 128, 128, 128}),
          channel(Bytes{2, 128, 128, 128, 5, 128, 128, 128, 8, 128, 128, 128, 11, 128, 128, 128})};
}
static inline Bytes half_of_pairs(const uint8_t* p, const int32_t* offsets, int32_t half) {
  return (Bytes)load_2_pairs(p + offsets[2 * half], p + offsets[2 * half + 1]);
}
