// AVX2 and FMA: two blocks.
constexpr int32_t kBytes = 32;
#include "rows/simd/types.inl"
#include "rows/simd/vector_masks.inl"

// Vectors as the intrinsics name them.
using I = __m256i;
using F = __m256;
using D = __m256d;

static Bytes interleave_low(Bytes a, Bytes b) { return (Bytes)_mm256_unpacklo_epi8((I)a, (I)b); }
static Bytes interleave_high(Bytes a, Bytes b) { return (Bytes)_mm256_unpackhi_epi8((I)a, (I)b); }
static Words interleave_low(Words a, Words b) { return (Words)_mm256_unpacklo_epi16((I)a, (I)b); }
static Words interleave_high(Words a, Words b) { return (Words)_mm256_unpackhi_epi16((I)a, (I)b); }
static Dwords interleave_low(Dwords a, Dwords b) {
  return (Dwords)_mm256_unpacklo_epi32((I)a, (I)b);
}
static Dwords interleave_high(Dwords a, Dwords b) {
  return (Dwords)_mm256_unpackhi_epi32((I)a, (I)b);
}
static Dwords low_qwords(Dwords a, Dwords b) { return (Dwords)_mm256_unpacklo_epi64((I)a, (I)b); }
static Dwords high_qwords(Dwords a, Dwords b) { return (Dwords)_mm256_unpackhi_epi64((I)a, (I)b); }
static Words byte_pair_sums(Bytes a, Bytes b) { return (Words)_mm256_maddubs_epi16((I)a, (I)b); }
static Bytes pack(Words a, Words b) { return (Bytes)_mm256_packus_epi16((I)a, (I)b); }
static Words pack(SignedDwords a, SignedDwords b) { return (Words)_mm256_packus_epi32((I)a, (I)b); }
static Words pack_signed(SignedDwords a, SignedDwords b) {
  return (Words)_mm256_packs_epi32((I)a, (I)b);
}
static Bytes pack_to_signed(Words a, Words b) { return (Bytes)_mm256_packs_epi16((I)a, (I)b); }
static Bytes shuffle(Bytes a, Bytes index) { return (Bytes)_mm256_shuffle_epi8((I)a, (I)index); }

static Bytes min(Bytes a, Bytes b) { return (Bytes)_mm256_min_epu8((I)a, (I)b); }
static Bytes max(Bytes a, Bytes b) { return (Bytes)_mm256_max_epu8((I)a, (I)b); }
static Bytes add_saturating(Bytes a, Bytes b) { return (Bytes)_mm256_adds_epu8((I)a, (I)b); }
static Bytes subtract_saturating(Bytes a, Bytes b) { return (Bytes)_mm256_subs_epu8((I)a, (I)b); }
static Bytes subtract_16_signed(Bytes a) { return (Bytes)_mm256_subs_epi8((I)a, (I)all_bytes(16)); }
static Words min(Words a, Words b) { return (Words)_mm256_min_epu16((I)a, (I)b); }
static Words max(Words a, Words b) { return (Words)_mm256_max_epu16((I)a, (I)b); }
static SignedWords min(SignedWords a, SignedWords b) {
  return (SignedWords)_mm256_min_epi16((I)a, (I)b);
}
static SignedWords max(SignedWords a, SignedWords b) {
  return (SignedWords)_mm256_max_epi16((I)a, (I)b);
}
static SignedWords add_saturating(SignedWords a, SignedWords b) {
  return (SignedWords)_mm256_adds_epi16((I)a, (I)b);
}
static SignedWords magnitude(SignedWords a) { return (SignedWords)_mm256_abs_epi16((I)a); }
static Words mul_high(Words a, Words b) { return (Words)_mm256_mulhi_epu16((I)a, (I)b); }
static SignedWords mul_high(SignedWords a, SignedWords b) {
  return (SignedWords)_mm256_mulhi_epi16((I)a, (I)b);
}
static Dwords pair_sums(Words a, Words b) { return (Dwords)_mm256_madd_epi16((I)a, (I)b); }
static Dwords max(Dwords a, Dwords b) { return (Dwords)_mm256_max_epu32((I)a, (I)b); }
static bool any_above(Dwords a, Dwords b) {
  return _mm256_movemask_epi8(_mm256_cmpeq_epi32((I)max(a, b), (I)b)) != -1;
}
static Floats min(Floats a, Floats b) { return (Floats)_mm256_min_ps((F)a, (F)b); }
static Floats max(Floats a, Floats b) { return (Floats)_mm256_max_ps((F)a, (F)b); }
static Floats floor(Floats a) { return (Floats)_mm256_floor_ps((F)a); }

static ByteMask equal(Bytes a, Bytes b) { return (ByteMask)_mm256_cmpeq_epi8((I)a, (I)b); }
static WordMask equal(Words a, Words b) { return (WordMask)_mm256_cmpeq_epi16((I)a, (I)b); }
static FloatMask equal(Floats a, Floats b) {
  return (FloatMask)_mm256_cmp_ps((F)a, (F)b, _CMP_EQ_OQ);
}
static ByteMask at_most(Bytes a, Bytes b) { return equal(min(a, b), a); }
static WordMask at_most(Words a, Words b) { return equal(min(a, b), a); }
static WordMask greater(SignedWords a, SignedWords b) {
  return (WordMask)_mm256_cmpgt_epi16((I)a, (I)b);
}
static FloatMask greater(Floats a, Floats b) {
  return (FloatMask)_mm256_cmp_ps((F)a, (F)b, _CMP_GT_OQ);
}
static FloatMask not_at_most(Floats a, Floats b) {
  return (FloatMask)_mm256_cmp_ps((F)a, (F)b, _CMP_NLE_UQ);
}
static bool all(ByteMask m) { return _mm256_movemask_epi8((I)m) == -1; }
static bool any(ByteMask m) { return _mm256_movemask_epi8((I)m) != 0; }
static bool any(FloatMask m) { return _mm256_movemask_ps((F)m) != 0; }
static Bytes select(ByteMask where, Bytes a, Bytes b) {
  return (Bytes)_mm256_blendv_epi8((I)b, (I)a, (I)where);
}
static Words select(WordMask where, Words a, Words b) {
  return (Words)_mm256_blendv_epi8((I)b, (I)a, (I)where);
}

static Floats to_floats(SignedDwords a) { return (Floats)_mm256_cvtepi32_ps((I)a); }
static Floats to_floats(Doubles first, Doubles last) {
  return (Floats)_mm256_set_m128(_mm256_cvtpd_ps((D)last), _mm256_cvtpd_ps((D)first));
}
static Doubles first_doubles(Floats v) {
  return (Doubles)_mm256_cvtps_pd(_mm256_castps256_ps128((F)v));
}
static Doubles last_doubles(Floats v) {
  return (Doubles)_mm256_cvtps_pd(_mm256_extractf128_ps((F)v, 1));
}
static SignedDwords truncate(Floats a) { return (SignedDwords)_mm256_cvttps_epi32((F)a); }
static SignedDwords rounded(Floats a) { return (SignedDwords)_mm256_cvtps_epi32((F)a); }
static SignedDwords widen_first(SignedWords v) {
  return (SignedDwords)_mm256_cvtepi16_epi32(_mm256_castsi256_si128((I)v));
}
static SignedDwords widen_last(SignedWords v) {
  return (SignedDwords)_mm256_cvtepi16_epi32(_mm256_extracti128_si256((I)v, 1));
}

template <int b>
static Block block(Bytes v) {
  return (Block)_mm256_extracti128_si256((I)v, b);
}
static Bytes in_all_blocks(const uint8_t* p) {
  return (Bytes)_mm256_broadcastsi128_si256((__m128i)load<Block>(p));
}
static Bytes in_order(Bytes packed) {
  return (Bytes)_mm256_permutevar8x32_epi32((I)packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}
static Bytes load_blocks(const uint8_t* p, ptrdiff_t step) {
  return (Bytes)_mm256_loadu2_m128i((const __m128i*)(p + step), (const __m128i*)p);
}
static void store_blocks(uint8_t* p, ptrdiff_t step, Bytes v) {
  _mm256_storeu2_m128i((__m128i*)(p + step), (__m128i*)p, (I)v);
}
static Words upper_words(Dwords even, Dwords odd) {
  return (Words)_mm256_blend_epi16((I)(even >> 16), (I)odd, 0xaa);
}
#include "rows/simd/x86.inl"
#include "rows/simd/byte_shuffles.inl"
#include "rows/simd/byte_table_x86.inl"
#include "rows/simd/planes.inl"
constexpr bool kWideTables = true, kQuickTables = false;

static inline Threefold threefold(Bytes pixels) {
  const Bytes first = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4,  5,
                       5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10};
  const Bytes second = {10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15,
                        0,  0,  0,  1,  1,  1,  2,  2,  2,  3,  3,  3,  4,  4,  4,  5};
  const Bytes third = {5,  5,  6,  6,  6,  7,  7,  7,  8,  8,  8,  9,  9,  9,  10, 10,
                       10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15};
  return {{shuffle((Bytes)_mm256_permute4x64_epi64((I)pixels, 0x44), first),
           shuffle(pixels, second),
           shuffle((Bytes)_mm256_permute4x64_epi64((I)pixels, 0xee), third)}};
}

static inline PixelFloats load_pixels(const uint8_t* bgr) {  // 24 bytes
  const Bytes v = load_blocks(bgr, 8);  // four pixels from byte 0, and four from byte 4
  const Bytes blue = {0, 128, 128, 128, 3, 128, 128, 128, 6,  128, 128, 128, 9,  128, 128, 128,
                      4, 128, 128, 128, 7, 128, 128, 128, 10, 128, 128, 128, 13, 128, 128, 128};
  const auto channel = [&](uint32_t c) {  // places of zeros stay from 128 on
    return to_floats((SignedDwords)shuffle(v, (Bytes)((Dwords)blue + c)));
  };
  return {channel(0), channel(1), channel(2)};
}
static inline void store_pixels(uint8_t* bgr, SignedDwords blue, SignedDwords green,
                                SignedDwords red) {
  const Bytes bytes = pack(pack_signed(blue, green), pack_signed(red, red));
  static constexpr uint8_t kOrder[16] = {0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, 0, 0, 0, 0};
  const Bytes pixels = shuffle(bytes, in_all_blocks(kOrder));
  store(bgr, block<0>(pixels));
  store_12_bytes(bgr + 12, block<1>(pixels));
}

static inline void transpose(Floats* v) {
  F pairs[8], fours[8];
  for (int i = 0; i < 8; i += 2) {
    pairs[i] = _mm256_unpacklo_ps((F)v[i], (F)v[i + 1]);
    pairs[i + 1] = _mm256_unpackhi_ps((F)v[i], (F)v[i + 1]);
  }
  for (int i = 0; i < 8; i += 4) {
    fours[i] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], 0x44);
    fours[i + 1] = _mm256_shuffle_ps(pairs[i], pairs[i + 2], 0xee);
    fours[i + 2] = _mm256_shuffle_ps(pairs[i + 1], pairs[i + 3], 0x44);
    fours[i + 3] = _mm256_shuffle_ps(pairs[i + 1], pairs[i + 3], 0xee);
  }
  for (int i = 0; i < 4; ++i) {
    v[i] = (Floats)_mm256_permute2f128_ps(fours[i], fours[i + 4], 0x20);
    v[i + 4] = (Floats)_mm256_permute2f128_ps(fours[i], fours[i + 4], 0x31);
  }
}

// Loads and blends: twice as fast as a gather.
static inline Floats entries_at(const float* table, const int32_t* index) {
  const auto entry = [&](int32_t i) { return _mm256_broadcast_ss(table + index[i]); };
  F low = _mm256_blend_ps(entry(0), entry(1), 0x02),
    high = _mm256_blend_ps(entry(4), entry(5), 0x20);
  low = _mm256_blend_ps(low, entry(2), 0x04), high = _mm256_blend_ps(high, entry(6), 0x40);
  low = _mm256_blend_ps(low, entry(3), 0x08), high = _mm256_blend_ps(high, entry(7), 0x80);
  return (Floats)_mm256_blend_ps(low, high, 0xf0);
}
static inline Dwords entries_of_words(const uint32_t* table, const uint16_t* index) {
  const auto entry = [&](int32_t i) { return (I)all_dwords(table[index[i]]); };
  I low = _mm256_blend_epi32(entry(0), entry(1), 0x02),
    high = _mm256_blend_epi32(entry(8), entry(9), 0x20);
  low = _mm256_blend_epi32(low, entry(2), 0x04), high = _mm256_blend_epi32(high, entry(10), 0x40);
  low = _mm256_blend_epi32(low, entry(3), 0x08), high = _mm256_blend_epi32(high, entry(11), 0x80);
  return (Dwords)_mm256_blend_epi32(low, high, 0xf0);
}
#include "rows/simd/loaded_floats.inl"

// Broadcasts and blends leave the shuffle units alone.
static inline Bytes load_4_pairs(const uint8_t* a, const uint8_t* b, const uint8_t* c,
                                 const uint8_t* d) {
  const auto in_all = [](const uint8_t* p) { return _mm256_set1_epi64x(load<int64_t>(p)); };
  const I low = _mm256_blend_epi32(in_all(a), in_all(b), 0x0c);
  const I high = _mm256_blend_epi32(in_all(c), in_all(d), 0xc0);
  return (Bytes)_mm256_blend_epi32(low, high, 0xf0);
}
static inline Bytes two_rows(const uint8_t* upper, const uint8_t* lower, const int32_t* offsets) {
  return load_4_pairs(upper + offsets[0], lower + offsets[0], upper + offsets[4],
                      lower + offsets[4]);
}
static inline Corners corners_side_by_side(const uint8_t* upper, ptrdiff_t stride) {
  const I above = (I)load_blocks(upper - 1, 12), below = (I)load_blocks(upper + stride - 1, 12);
  // Bytes of both rows alternately: pixel k begins at 2 + 6 k.
  const I first = _mm256_unpacklo_epi8(above, below), last = _mm256_unpackhi_epi8(above, below);
  const auto pick = [](I v, int32_t at) { return shuffle((Bytes)v, alternate_order(at)); };
  return {{pick(first, 2), pick(_mm256_alignr_epi8(last, first, 8), 0),
           pick(_mm256_alignr_epi8(last, first, 14), 0), pick(last, 4)}};
}
static inline Bytes half_of_pairs(const uint8_t* p, const int32_t* offsets, int32_t half) {
  const int32_t* o = offsets + 2 * half;
  return load_4_pairs(p + o[0], p + o[1], p + o[4], p + o[5]);
}
static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  return bytes_of_dwords((Dwords)_mm256_shuffle_ps((F)a, (F)b, 0x88),
                         (Dwords)_mm256_shuffle_ps((F)a, (F)b, 0xdd));
}
static Floats fused(Floats a, Floats b, Floats c) {
  return (Floats)_mm256_fmadd_ps((F)a, (F)b, (F)c);
}
#include "rows/simd/mixes_fused.inl"
#include "rows/simd/block_stores.inl"

static inline Bytes top_bytes(Dwords a, Dwords b, Dwords c, Dwords d, Interleaved) {
  return pack(pack((SignedDwords)(a >> 24), (SignedDwords)(b >> 24)),
              pack((SignedDwords)(c >> 24), (SignedDwords)(d >> 24)));
}
static inline Bytes top_bytes(Dwords a, Dwords b, Dwords c, Dwords d, InOrder) {
  return (Bytes)_mm256_permutevar8x32_epi32((I)top_bytes(a, b, c, d, Interleaved{}),
                                            _mm256_setr_epi32(0, 4, 2, 6, 1, 5, 3, 7));
}
#include "rows/simd/lane_columns.inl"
#include "rows/simd/vocabulary.inl"
