// The masks of x86 below AVX-512, and what else SSE4.1 and AVX2 share.
static bool any(ByteMask m) { return ROXE_X86(movemask_epi8)((I)m) != 0; }
static bool any_above(Dwords a, Dwords b) { return any((ByteMask)(a > b)); }
static Bytes select(ByteMask where, Bytes a, Bytes b) {
  return (Bytes)ROXE_X86(blendv_epi8)((I)b, (I)a, (I)where);
}
static Words select(WordMask where, Words a, Words b) {
  return (Words)ROXE_X86(blendv_epi8)((I)b, (I)a, (I)where);
}
static Floats floor(Floats a) { return (Floats)ROXE_X86(floor_ps)((F)a); }

static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  // Bytes . . blue green, and red and the neighbour's blue green red.
  const Dwords low = (Dwords)ROXE_X86(shuffle_ps)((F)a, (F)b, 0x88);
  const Dwords high = (Dwords)ROXE_X86(shuffle_ps)((F)a, (F)b, 0xdd);
  return {low >> 16 & 255, low >> 24, high & 255, high >> 8 & 255, high >> 16 & 255, high >> 24};
}
