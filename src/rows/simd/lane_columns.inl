// Columns of 32 lanes in vectors of one and two blocks.
constexpr int32_t kLaneWords = kLanes / kWords;
struct LaneWords {
  Words part[kLaneWords];
};
static inline LaneWords lane_differences(const uint8_t* in, const uint8_t* out) {
  LaneWords d;
  for (int32_t i = 0; i < kLaneWords / 2; ++i) {
    const Bytes a = load<Bytes>(in + i * kBytes), b = load<Bytes>(out + i * kBytes);
    d.part[i] = low_differences(a, b);
    d.part[i + kLaneWords / 2] = high_differences(a, b);
  }
  return d;
}
static inline DwordPair load_lanes(const uint32_t* p, int32_t i, InOrder) {
  p += i * kWords;
  return {load<Dwords>(p), load<Dwords>(p + kDwords)};
}
static inline void store_lanes(uint32_t* p, int32_t i, DwordPair v, InOrder) {
  p += i * kWords;
  store(p, v.first), store(p + kDwords, v.second);
}
static inline DwordPair load_lanes(const uint32_t* p, int32_t i, Interleaved) {
  const uint8_t* from = (const uint8_t*)(p + i * kWords);
  return {(Dwords)load_blocks(from, 32), (Dwords)load_blocks(from + 16, 32)};
}
static inline void store_lanes(uint32_t* p, int32_t i, DwordPair v, Interleaved) {
  uint8_t* to = (uint8_t*)(p + i * kWords);
  store_blocks(to, 32, (Bytes)v.first), store_blocks(to + 16, 32, (Bytes)v.second);
}
// The top bytes of four vectors of dwords, by packing.
// In the order of lanes dwords 4 ... 7 of a vector of two blocks belong to the second half of
// bytes.
static inline Bytes top_bytes(Dwords a, Dwords b, Dwords c, Dwords d, Interleaved) {
  return pack(pack((SignedDwords)(a >> 24), (SignedDwords)(b >> 24)),
              pack((SignedDwords)(c >> 24), (SignedDwords)(d >> 24)));
}
static inline Bytes top_bytes(Dwords a, Dwords b, Dwords c, Dwords d, InOrder) {
  return (Bytes)arranged((Dwords)top_bytes(a, b, c, d, Interleaved{}), [](int i) {
    return kBlocks == 1 ? i : (i & 1) << 2 | (i & 2) | (i & 4) >> 2;
  });
}
template <class F, class Order>
static inline void store_top_bytes(uint8_t* dst, const F& pairs, Order order) {
  for (int32_t i = 0; i < kLaneWords / 2; ++i) {
    const DwordPair low = pairs(i), high = pairs(i + kLaneWords / 2);
    store(dst + i * kBytes, top_bytes(low.first, low.second, high.first, high.second, order));
  }
}
