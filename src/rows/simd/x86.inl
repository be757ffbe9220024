// What the x86 sets share: the intrinsics of different widths differ in their prefix.
static Words byte_pair_sums(Bytes a, Bytes b) { return (Words)ROXE_X86(maddubs_epi16)((I)a, (I)b); }
static Bytes pack(Words a, Words b) { return (Bytes)ROXE_X86(packus_epi16)((I)a, (I)b); }
static Words pack(SignedDwords a, SignedDwords b) {
  return (Words)ROXE_X86(packus_epi32)((I)a, (I)b);
}
static Words pack_signed(SignedDwords a, SignedDwords b) {
  return (Words)ROXE_X86(packs_epi32)((I)a, (I)b);
}
static Bytes shuffle(Bytes a, Bytes index) { return (Bytes)ROXE_X86(shuffle_epi8)((I)a, (I)index); }
static Bytes shuffle_or_zero(Bytes table, Bytes index) {
  return shuffle(table, (Bytes)ROXE_X86(adds_epu8)((I)index, (I)all_bytes(0x70)));
}
static Words low_differences(Bytes a, Bytes b) {
  return byte_pair_sums(interleave_low(a, b), (Bytes)all_words(-255));  // bytes 1, -1
}
static Words high_differences(Bytes a, Bytes b) {
  return byte_pair_sums(interleave_high(a, b), (Bytes)all_words(-255));
}
static Bytes add_saturating(Bytes a, Bytes b) { return (Bytes)ROXE_X86(adds_epu8)((I)a, (I)b); }
static Bytes subtract_saturating(Bytes a, Bytes b) {
  return (Bytes)ROXE_X86(subs_epu8)((I)a, (I)b);
}
static SignedWords add_saturating(SignedWords a, SignedWords b) {
  return (SignedWords)ROXE_X86(adds_epi16)((I)a, (I)b);
}
static Words mul_high(Words a, Words b) { return (Words)ROXE_X86(mulhi_epu16)((I)a, (I)b); }
static SignedWords mul_high(SignedWords a, SignedWords b) {
  return (SignedWords)ROXE_X86(mulhi_epi16)((I)a, (I)b);
}
static Dwords pair_sums(Words a, Words b) { return (Dwords)ROXE_X86(madd_epi16)((I)a, (I)b); }

static Floats min(Floats a, Floats b) { return (Floats)ROXE_X86(min_ps)((F)a, (F)b); }
static Floats max(Floats a, Floats b) { return (Floats)ROXE_X86(max_ps)((F)a, (F)b); }
static SignedDwords truncate(Floats a) { return (SignedDwords)ROXE_X86(cvttps_epi32)((F)a); }
static SignedDwords truncate_small(Floats a) { return truncate(a); }
static SignedDwords rounded(Floats a) { return (SignedDwords)ROXE_X86(cvtps_epi32)((F)a); }
static Doubles first_doubles(Floats v) {
  return (Doubles)ROXE_X86(cvtps_pd)((HalfF)first_half((I)v));
}
static Doubles last_doubles(Floats v) {
  return (Doubles)ROXE_X86(cvtps_pd)((HalfF)last_half((I)v));
}
static Floats to_floats(Doubles first, Doubles last) {
  return (Floats)joined((HalfI)ROXE_X86(cvtpd_ps)((D)first), (HalfI)ROXE_X86(cvtpd_ps)((D)last));
}
static SignedDwords widen_first(SignedWords v) {
  return (SignedDwords)ROXE_X86(cvtepi16_epi32)(first_half((I)v));
}
static SignedDwords widen_last(SignedWords v) {
  return (SignedDwords)ROXE_X86(cvtepi16_epi32)(last_half((I)v));
}

static inline Block load_2_pairs(const uint8_t* a, const uint8_t* b) {
  // _mm_load_sd of g++ reads a double, which has to be aligned; _mm_loadh_pd takes any address.
  return (Block)_mm_loadh_pd(_mm_set_sd(load<double>(a)), (const double*)b);
}

// Corners are mixed with multiply-adds of bytes and words.
// Upper and lower byte alternately, of the pixel and its right neighbour; from two bytes before.
static inline Bytes corner_order() {
  static constexpr uint8_t kOrder[16] = {2, 10, 5, 13, 3,   11,  6,   14,
                                         4, 12, 7, 15, 128, 128, 128, 128};
  return in_all_blocks(kOrder);
}

// Down, bytes 255 - weight, weight, twice; across, words 256 - weight, weight. The weight is the
// second byte of a position in 16.16.
static inline CornerWeights weights_of(Dwords x, Dwords y) {
  static constexpr uint8_t kWordsOf[16] = {1, 128, 1, 128, 5,  128, 5,  128,
                                           9, 128, 9, 128, 13, 128, 13, 128};
  const Dwords down = (Dwords)arranged((Bytes)y, [](int i) { return i / 4 * 4 + 1; });
  const Dwords across = (Dwords)shuffle((Bytes)x, in_all_blocks(kWordsOf));
  return {down ^ 0x00ff00ff, (Dwords)((Words)(across ^ 0xffff) + (Words)all_dwords(257))};
}

// Mixes pixel k of each block: dwords whose upper words are the bytes less 128.
template <int k>
static inline Dwords mix_corners(Bytes corners, const CornerWeights& weights) {
  // Bytes become signed for the multiply-add; 255 + 1 times the upper one, since 256 is no byte.
  const Bytes centred = corners ^ all_bytes(128);
  const Words column = byte_pair_sums((Bytes)spread<k>(weights.down), centred) +
                       byte_pair_sums((Bytes)all_words(1), centred);
  return pair_sums(column, (Words)spread<k>(weights.across));
}

// The upper words of the dwords of two vectors by turns, and so the bytes of four pixels in each
// block, channel by channel.
static inline Bytes bytes_of_mixes(Dwords p0, Dwords p1, Dwords p2, Dwords p3) {
  const Words low = even_and_odd((Words)(p0 >> 16), (Words)p1);
  const Words high = even_and_odd((Words)(p2 >> 16), (Words)p3);
  return (Bytes)ROXE_X86(packs_epi16)((I)low, (I)high) ^ all_bytes(128);
}
static constexpr int mix_of(int i) { return i / 6 * 8 + i / 3 % 2 + i % 3 * 2; }
