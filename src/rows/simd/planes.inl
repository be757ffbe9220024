// Pixels as planes, and back. The bytes of sixteen pixels lie in block j of three vectors. A
// channel lies at other positions in each of them, so two choices collect it and one shuffle puts
// it in order; the way back is the same in reverse.

// Byte i of a, of b or of c where i - first is 0, 1 or 2 modulo 3 in its block.
template <int first>
static inline Bytes by_thirds(Bytes a, Bytes b, Bytes c) {
  const Bytes ab =
      arranged(a, b, [](int i) { return (i % 16 + 3 - first) % 3 == 1 ? i + kBytes : i; });
  return arranged(ab, c, [](int i) { return (i % 16 + 3 - first) % 3 == 2 ? i + kBytes : i; });
}
template <int channel>
static inline Bytes gathered_thirds(Bytes v) {
  return arranged(v, [](int i) { return i / 16 * 16 + (3 * i + channel) % 16; });
}
template <int channel>
static inline Bytes scattered_thirds(Bytes v) {
  return arranged(v, [](int i) {
    const int part = (channel + 2 * (i % 16)) % 3;  // the vector in which byte i is of the channel
    return i / 16 * 16 + (16 * part + i % 16 - channel) / 3;
  });
}
static inline Planes load_planes(const uint8_t* bgr) {
  const Bytes a = load_blocks(bgr, 48), b = load_blocks(bgr + 16, 48);
  const Bytes c = load_blocks(bgr + 32, 48);
  return {gathered_thirds<0>(by_thirds<0>(a, c, b)), gathered_thirds<1>(by_thirds<1>(a, c, b)),
          gathered_thirds<2>(by_thirds<2>(a, c, b))};
}
static inline void store_planes(uint8_t* bgr, const Planes& planes) {
  const Bytes blue = scattered_thirds<0>(planes.blue), green = scattered_thirds<1>(planes.green);
  const Bytes red = scattered_thirds<2>(planes.red);
  store_blocks(bgr, 48, by_thirds<0>(blue, green, red));
  store_blocks(bgr + 16, 48, by_thirds<0>(green, red, blue));
  store_blocks(bgr + 32, 48, by_thirds<0>(red, blue, green));
}
