// Pixels as planes, and back. The bytes of sixteen pixels lie in block j of three vectors. A channel
// lies at other positions in each of them, so two choices collect it and one shuffle puts it in
// order; the way back is the same in reverse.
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

// Byte i of a, of b or of c where i - first is 0, 1 or 2 modulo 3.
template <int first>
static inline Bytes by_thirds(Bytes a, Bytes b, Bytes c) {
  const auto where = [](int i) {
    return mask_of(in_all_blocks(plane_shuffles.every_third[(i + first) % 3]));
  };
  return select(where(2), c, select(where(1), b, a));
}
static inline Planes load_planes(const uint8_t* bgr) {
  const Bytes a = load_blocks(bgr, 48), b = load_blocks(bgr + 16, 48);
  const Bytes c = load_blocks(bgr + 32, 48);
  const auto gather = [](Bytes v, int channel) {
    return shuffle(v, in_all_blocks(plane_shuffles.gather[channel]));
  };
  return {gather(by_thirds<0>(a, c, b), 0), gather(by_thirds<1>(a, c, b), 1),
          gather(by_thirds<2>(a, c, b), 2)};
}
static inline void store_planes(uint8_t* bgr, const Planes& planes) {
  const auto scatter = [](Bytes v, int channel) {
    return shuffle(v, in_all_blocks(plane_shuffles.scatter[channel]));
  };
  const Bytes blue = scatter(planes.blue, 0), green = scatter(planes.green, 1);
  const Bytes red = scatter(planes.red, 2);
  store_blocks(bgr, 48, by_thirds<0>(blue, green, red));
  store_blocks(bgr + 16, 48, by_thirds<0>(green, red, blue));
  store_blocks(bgr + 32, 48, by_thirds<0>(red, blue, green));
}
