// Mixes and products by the fused multiply-add of the set.
static inline Floats mix_bytes(Dwords a, Dwords b, Floats t) {
  const Floats first = to_floats((SignedDwords)a);
  return fused(t, to_floats((SignedDwords)b) - first, first);
}
static inline Dwords mix_to_bytes(Floats a, Floats b, Floats t) {
  return (Dwords)truncate(fused(t, b - a, a));
}
static inline Floats fused_with_byte(float weight, Floats byte, Floats c) {
  return fused(all_floats(weight), byte, c);
}
