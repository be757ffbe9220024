// The top bytes of four vectors of dwords, by packing.
// In the order of lanes dwords 4 ... 7 of a vector of two blocks belong to the second half of bytes.
static inline Bytes top_bytes(Dwords a, Dwords b, Dwords c, Dwords d, Interleaved) {
  return pack(pack((SignedDwords)(a >> 24), (SignedDwords)(b >> 24)),
              pack((SignedDwords)(c >> 24), (SignedDwords)(d >> 24)));
}
static inline Bytes top_bytes(Dwords a, Dwords b, Dwords c, Dwords d, InOrder) {
  return (Bytes)arranged((Dwords)top_bytes(a, b, c, d, Interleaved{}), [](int i) {
    return kBlocks == 1 ? i : (i & 1) << 2 | (i & 2) | (i & 4) >> 2;
  });
}
