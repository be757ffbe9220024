// What the x86 sets share.
static SignedDwords truncate_small(Floats a) { return truncate(a); }
static Words low_differences(Bytes a, Bytes b) {
  return byte_pair_sums(interleave_low(a, b), (Bytes)all_words(-255));  // bytes 1, -1
}
static Words high_differences(Bytes a, Bytes b) {
  return byte_pair_sums(interleave_high(a, b), (Bytes)all_words(-255));
}
static Bytes shuffle_or_zero(Bytes table, Bytes index) {
  return shuffle(table, add_saturating(index, all_bytes(0x70)));
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
  static constexpr uint8_t kBytesOf[16] = {1, 1, 1, 1, 5, 5, 5, 5, 9, 9, 9, 9, 13, 13, 13, 13};
  static constexpr uint8_t kWordsOf[16] = {1, 128, 1, 128, 5,  128, 5,  128,
                                           9, 128, 9, 128, 13, 128, 13, 128};
  const Dwords down = (Dwords)shuffle((Bytes)y, in_all_blocks(kBytesOf));
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
// block, channel by channel; kPixelOrder is the order of pixels.
static inline Bytes bytes_of_mixes(Dwords p0, Dwords p1, Dwords p2, Dwords p3) {
  return pack_to_signed(upper_words(p0, p1), upper_words(p2, p3)) ^ all_bytes(128);
}
alignas(16) static constexpr uint8_t kPixelOrder[16] = {0,  2, 4,  1,  3,   5,   8,   10,
                                                        12, 9, 11, 13, 128, 128, 128, 128};

// Of bytes of an upper and a lower row by turns, from byte at on: a pixel's and its neighbour's.
static inline Bytes alternate_order(int32_t at) {
  static constexpr uint8_t kOrder[16] = {0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, 128, 128, 128, 128};
  return in_all_blocks(kOrder) + all_bytes(at);
}

// Of bytes . . blue green, and red and the neighbour's blue green red.
static inline PixelPairs bytes_of_dwords(Dwords low, Dwords high) {
  return {low >> 16 & 255, low >> 24, high & 255, high >> 8 & 255, high >> 16 & 255, high >> 24};
}
