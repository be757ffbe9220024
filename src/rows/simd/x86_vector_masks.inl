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

static inline Corners corners_side_by_side(const uint8_t* upper, ptrdiff_t stride) {
  const Bytes above = load_blocks(upper - 1, 12), below = load_blocks(upper + stride - 1, 12);
  // Bytes of both rows alternately: pixel k begins at 2 + 6 k.
  const Bytes first = interleave_low(above, below), last = interleave_high(above, below);
  static constexpr uint8_t kOrder[16] = {0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, 128, 128, 128, 128};
  const auto pick = [](Bytes v, int32_t at) {
    return shuffle(v, in_all_blocks(kOrder) + all_bytes(at));
  };
  return {{pick(first, 2), pick((Bytes)ROXE_X86(alignr_epi8)((I)last, (I)first, 8), 0),
           pick((Bytes)ROXE_X86(alignr_epi8)((I)last, (I)first, 14), 0), pick(last, 4)}};
}
static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  // Bytes . . blue green, and red and the neighbour's blue green red.
  const Dwords low = (Dwords)ROXE_X86(shuffle_ps)((F)a, (F)b, 0x88);
  const Dwords high = (Dwords)ROXE_X86(shuffle_ps)((F)a, (F)b, 0xdd);
  return {low >> 16 & 255, low >> 24, high & 255, high >> 8 & 255, high >> 16 & 255, high >> 24};
}
