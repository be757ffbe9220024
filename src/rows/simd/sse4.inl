// SSSE3 and SSE4.1: one block.
constexpr int32_t kBytes = 16;
#include "rows/simd/types.inl"
#include "rows/simd/vector_masks.inl"

// Vectors as the intrinsics name them.
using I = __m128i;
using F = __m128;
using D = __m128d;

static Bytes interleave_low(Bytes a, Bytes b) { return (Bytes)_mm_unpacklo_epi8((I)a, (I)b); }
static Bytes interleave_high(Bytes a, Bytes b) { return (Bytes)_mm_unpackhi_epi8((I)a, (I)b); }
static Words interleave_low(Words a, Words b) { return (Words)_mm_unpacklo_epi16((I)a, (I)b); }
static Words interleave_high(Words a, Words b) { return (Words)_mm_unpackhi_epi16((I)a, (I)b); }
static Dwords interleave_low(Dwords a, Dwords b) { return (Dwords)_mm_unpacklo_epi32((I)a, (I)b); }
static Dwords interleave_high(Dwords a, Dwords b) { return (Dwords)_mm_unpackhi_epi32((I)a, (I)b); }
static Dwords low_qwords(Dwords a, Dwords b) { return (Dwords)_mm_unpacklo_epi64((I)a, (I)b); }
static Dwords high_qwords(Dwords a, Dwords b) { return (Dwords)_mm_unpackhi_epi64((I)a, (I)b); }
static Words byte_pair_sums(Bytes a, Bytes b) { return (Words)_mm_maddubs_epi16((I)a, (I)b); }
static Bytes pack(Words a, Words b) { return (Bytes)_mm_packus_epi16((I)a, (I)b); }
static Words pack(SignedDwords a, SignedDwords b) { return (Words)_mm_packus_epi32((I)a, (I)b); }
static Words pack_signed(SignedDwords a, SignedDwords b) {
  return (Words)_mm_packs_epi32((I)a, (I)b);
}
static Bytes pack_to_signed(Words a, Words b) { return (Bytes)_mm_packs_epi16((I)a, (I)b); }
static Bytes shuffle(Bytes a, Bytes index) { return (Bytes)_mm_shuffle_epi8((I)a, (I)index); }

static Bytes min(Bytes a, Bytes b) { return (Bytes)_mm_min_epu8((I)a, (I)b); }
static Bytes max(Bytes a, Bytes b) { return (Bytes)_mm_max_epu8((I)a, (I)b); }
static Bytes add_saturating(Bytes a, Bytes b) { return (Bytes)_mm_adds_epu8((I)a, (I)b); }
static Bytes subtract_saturating(Bytes a, Bytes b) { return (Bytes)_mm_subs_epu8((I)a, (I)b); }
static Bytes subtract_16_signed(Bytes a) { return (Bytes)_mm_subs_epi8((I)a, (I)all_bytes(16)); }
static Words min(Words a, Words b) { return (Words)_mm_min_epu16((I)a, (I)b); }
static Words max(Words a, Words b) { return (Words)_mm_max_epu16((I)a, (I)b); }
static SignedWords min(SignedWords a, SignedWords b) {
  return (SignedWords)_mm_min_epi16((I)a, (I)b);
}
static SignedWords max(SignedWords a, SignedWords b) {
  return (SignedWords)_mm_max_epi16((I)a, (I)b);
}
static SignedWords add_saturating(SignedWords a, SignedWords b) {
  return (SignedWords)_mm_adds_epi16((I)a, (I)b);
}
static SignedWords magnitude(SignedWords a) { return (SignedWords)_mm_abs_epi16((I)a); }
static Words mul_high(Words a, Words b) { return (Words)_mm_mulhi_epu16((I)a, (I)b); }
static SignedWords mul_high(SignedWords a, SignedWords b) {
  return (SignedWords)_mm_mulhi_epi16((I)a, (I)b);
}
static Dwords pair_sums(Words a, Words b) { return (Dwords)_mm_madd_epi16((I)a, (I)b); }
static Dwords max(Dwords a, Dwords b) { return (Dwords)_mm_max_epu32((I)a, (I)b); }
static bool any_above(Dwords a, Dwords b) {
  return _mm_movemask_epi8(_mm_cmpeq_epi32((I)max(a, b), (I)b)) != 0xffff;
}
static Floats min(Floats a, Floats b) { return (Floats)_mm_min_ps((F)a, (F)b); }
static Floats max(Floats a, Floats b) { return (Floats)_mm_max_ps((F)a, (F)b); }
static Floats floor(Floats a) { return (Floats)_mm_floor_ps((F)a); }

static ByteMask equal(Bytes a, Bytes b) { return (ByteMask)_mm_cmpeq_epi8((I)a, (I)b); }
static WordMask equal(Words a, Words b) { return (WordMask)_mm_cmpeq_epi16((I)a, (I)b); }
static FloatMask equal(Floats a, Floats b) { return (FloatMask)_mm_cmpeq_ps((F)a, (F)b); }
static ByteMask at_most(Bytes a, Bytes b) { return equal(min(a, b), a); }
static WordMask at_most(Words a, Words b) { return equal(min(a, b), a); }
static WordMask greater(SignedWords a, SignedWords b) {
  return (WordMask)_mm_cmpgt_epi16((I)a, (I)b);
}
static FloatMask greater(Floats a, Floats b) { return (FloatMask)_mm_cmpgt_ps((F)a, (F)b); }
static FloatMask not_at_most(Floats a, Floats b) { return (FloatMask)_mm_cmpnle_ps((F)a, (F)b); }
static bool all(ByteMask m) { return _mm_movemask_epi8((I)m) == 0xffff; }
static bool any(ByteMask m) { return _mm_movemask_epi8((I)m) != 0; }
static bool any(FloatMask m) { return _mm_movemask_ps((F)m) != 0; }
static Bytes select(ByteMask where, Bytes a, Bytes b) {
  return (Bytes)_mm_blendv_epi8((I)b, (I)a, (I)where);
}
static Words select(WordMask where, Words a, Words b) {
  return (Words)_mm_blendv_epi8((I)b, (I)a, (I)where);
}

static Floats to_floats(SignedDwords a) { return (Floats)_mm_cvtepi32_ps((I)a); }
static Floats to_floats(Doubles first, Doubles last) {
  return (Floats)_mm_movelh_ps(_mm_cvtpd_ps((D)first), _mm_cvtpd_ps((D)last));
}
static Doubles first_doubles(Floats v) { return (Doubles)_mm_cvtps_pd((F)v); }
static Doubles last_doubles(Floats v) { return (Doubles)_mm_cvtps_pd(_mm_movehl_ps((F)v, (F)v)); }
static SignedDwords truncate(Floats a) { return (SignedDwords)_mm_cvttps_epi32((F)a); }
static SignedDwords rounded(Floats a) { return (SignedDwords)_mm_cvtps_epi32((F)a); }
static SignedDwords widen_first(SignedWords v) { return (SignedDwords)_mm_cvtepi16_epi32((I)v); }
static SignedDwords widen_last(SignedWords v) {
  return (SignedDwords)_mm_srai_epi32(_mm_unpackhi_epi16((I)v, (I)v), 16);
}

static Bytes load_2_pairs(const uint8_t* a, const uint8_t* b) {
  return (Bytes)_mm_castpd_si128(_mm_loadh_pd(_mm_load_sd((const double*)a), (const double*)b));
}
#include "rows/simd/one_block.inl"
static Words upper_words(Dwords even, Dwords odd) {
  return (Words)_mm_blend_epi16((I)(even >> 16), (I)odd, 0xaa);
}
#include "rows/simd/x86.inl"
#include "rows/simd/byte_shuffles.inl"
#include "rows/simd/byte_table_x86.inl"
#include "rows/simd/planes.inl"
constexpr bool kWideTables = false, kQuickTables = false;
#include "rows/simd/loaded_floats.inl"

static inline Corners corners_side_by_side(const uint8_t* upper, ptrdiff_t stride) {
  const I above = (I)load<Bytes>(upper - 1), below = (I)load<Bytes>(upper + stride - 1);
  // Bytes of both rows alternately: pixel k begins at 2 + 6 k.
  const I first = _mm_unpacklo_epi8(above, below), last = _mm_unpackhi_epi8(above, below);
  const auto pick = [](I v, int32_t at) { return shuffle((Bytes)v, alternate_order(at)); };
  return {{pick(first, 2), pick(_mm_alignr_epi8(last, first, 8), 0),
           pick(_mm_alignr_epi8(last, first, 14), 0), pick(last, 4)}};
}
static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  return bytes_of_dwords((Dwords)_mm_shuffle_ps((F)a, (F)b, 0x88),
                         (Dwords)_mm_shuffle_ps((F)a, (F)b, 0xdd));
}
#include "rows/simd/mixes_exact.inl"
#include "rows/simd/block_stores.inl"
template <class Order>
static inline Bytes top_bytes(Dwords a, Dwords b, Dwords c, Dwords d, Order) {
  return pack(pack((SignedDwords)(a >> 24), (SignedDwords)(b >> 24)),
              pack((SignedDwords)(c >> 24), (SignedDwords)(d >> 24)));
}
#include "rows/simd/lane_columns.inl"
#include "rows/simd/vocabulary.inl"
