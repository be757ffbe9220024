// WebAssembly with 128-bit vectors, nothing relaxed: one block.
constexpr int32_t kBytes = 16;
#include "rows/simd/types.inl"
#include "rows/simd/vector_masks.inl"

using V = v128_t;  // what the intrinsics take and give

static Words low_differences(Bytes a, Bytes b) {
  return (Words)wasm_u16x8_extend_low_u8x16((V)a) - (Words)wasm_u16x8_extend_low_u8x16((V)b);
}
static Words high_differences(Bytes a, Bytes b) {
  return (Words)wasm_u16x8_extend_high_u8x16((V)a) - (Words)wasm_u16x8_extend_high_u8x16((V)b);
}
static Bytes pack(Words a, Words b) { return (Bytes)wasm_u8x16_narrow_i16x8((V)a, (V)b); }
static Words pack(SignedDwords a, SignedDwords b) {
  return (Words)wasm_u16x8_narrow_i32x4((V)a, (V)b);
}
static Words pack_signed(SignedDwords a, SignedDwords b) {
  return (Words)wasm_i16x8_narrow_i32x4((V)a, (V)b);
}
static Bytes shuffle(Bytes table, Bytes index) {
  return (Bytes)wasm_i8x16_swizzle((V)table, (V)index);
}
static Bytes shuffle_or_zero(Bytes a, Bytes index) { return shuffle(a, index); }

static Bytes add_saturating(Bytes a, Bytes b) { return (Bytes)wasm_u8x16_add_sat((V)a, (V)b); }
static Bytes subtract_saturating(Bytes a, Bytes b) { return (Bytes)wasm_u8x16_sub_sat((V)a, (V)b); }
static SignedWords add_saturating(SignedWords a, SignedWords b) {
  return (SignedWords)wasm_i16x8_add_sat((V)a, (V)b);
}
static Words mul_high(Words a, Words b) {
  const V low = wasm_u32x4_extmul_low_u16x8((V)a, (V)b),
          high = wasm_u32x4_extmul_high_u16x8((V)a, (V)b);
  return (Words)wasm_i16x8_shuffle(low, high, 1, 3, 5, 7, 9, 11, 13, 15);
}
static SignedWords mul_high(SignedWords a, SignedWords b) {
  const V low = wasm_i32x4_extmul_low_i16x8((V)a, (V)b),
          high = wasm_i32x4_extmul_high_i16x8((V)a, (V)b);
  return (SignedWords)wasm_i16x8_shuffle(low, high, 1, 3, 5, 7, 9, 11, 13, 15);
}
static Dwords pair_sums(Words a, Words b) { return (Dwords)wasm_i32x4_dot_i16x8((V)a, (V)b); }
static bool any_above(Dwords a, Dwords b) { return wasm_v128_any_true(wasm_u32x4_gt((V)a, (V)b)); }
static Floats min(Floats a, Floats b) { return (Floats)wasm_f32x4_pmin((V)b, (V)a); }
static Floats max(Floats a, Floats b) { return (Floats)wasm_f32x4_pmax((V)b, (V)a); }
static Floats floor(Floats a) { return (Floats)wasm_f32x4_floor((V)a); }

static Words byte_pair_sums(Bytes a, Bytes b) {
  const V low =
      wasm_i16x8_mul(wasm_u16x8_extend_low_u8x16((V)a), wasm_i16x8_extend_low_i8x16((V)b));
  const V high =
      wasm_i16x8_mul(wasm_u16x8_extend_high_u8x16((V)a), wasm_i16x8_extend_high_i8x16((V)b));
  return (Words)wasm_i16x8_add(wasm_i16x8_shuffle(low, high, 0, 2, 4, 6, 8, 10, 12, 14),
                               wasm_i16x8_shuffle(low, high, 1, 3, 5, 7, 9, 11, 13, 15));
}
static bool any(ByteMask m) { return wasm_v128_any_true((V)m); }
static Bytes select(ByteMask where, Bytes a, Bytes b) {
  return (Bytes)wasm_v128_bitselect((V)a, (V)b, (V)where);
}
static Words select(WordMask where, Words a, Words b) {
  return (Words)wasm_v128_bitselect((V)a, (V)b, (V)where);
}

static Floats to_floats(Doubles first, Doubles last) {
  return (Floats)wasm_i64x2_shuffle(wasm_f32x4_demote_f64x2_zero((V)first),
                                    wasm_f32x4_demote_f64x2_zero((V)last), 0, 2);
}
static Doubles first_doubles(Floats v) { return (Doubles)wasm_f64x2_promote_low_f32x4((V)v); }
static Doubles last_doubles(Floats v) {
  return (Doubles)wasm_f64x2_promote_low_f32x4(wasm_i64x2_shuffle((V)v, (V)v, 1, 1));
}
static SignedDwords truncate(Floats a) { return (SignedDwords)wasm_i32x4_trunc_sat_f32x4((V)a); }
// A processor may need ten instructions to truncate as WebAssembly defines it.
static SignedDwords truncate_small(Floats v) {
  return (SignedDwords)((Dwords)(floor(v) + kTwoTo23) & 0x7fffff);
}
static SignedDwords rounded(Floats v) { return (SignedDwords)(v + 12582912.0f) - 0x4b400000; }
static SignedDwords widen_first(SignedWords v) {
  return (SignedDwords)wasm_i32x4_extend_low_i16x8((V)v);
}
static SignedDwords widen_last(SignedWords v) {
  return (SignedDwords)wasm_i32x4_extend_high_i16x8((V)v);
}

static inline Block load_2_pairs(const uint8_t* a, const uint8_t* b) {
  return (Block)wasm_v128_load64_lane(b, wasm_v128_load64_zero(a), 1);
}
#include "rows/simd/one_block.inl"
#include "rows/simd/byte_shuffles.inl"
#include "rows/simd/planes.inl"
constexpr bool kWideTables = false, kQuickTables = false, kPlainSimpleRows = false;
#include "rows/simd/loaded_floats.inl"

#include "rows/simd/loaded_bytes.inl"

// Corners are the pixel and its right neighbour by turns in the upper row, then in the lower one.
static Bytes corner_order() {
  return Bytes{2, 5, 3, 6, 4, 7, 255, 255, 10, 13, 11, 14, 12, 15, 255, 255};
}
// Down, words weight, weight; across, 256 - weight, weight.
static CornerWeights weights_of(Dwords x, Dwords y) {
  const Dwords down = y >> 8 & 255, across = x >> 8 & 255;
  return {down | down << 16, (across << 16) + (256 - across)};
}
// Dwords whose upper words are the bytes less 128.
template <int k>
static inline Dwords mix_corners(Bytes corners, const CornerWeights& weights) {
  const V centred = (V)(corners ^ all_bytes(128));
  const Words upper = (Words)wasm_i16x8_extend_low_i8x16(centred);
  const Words lower = (Words)wasm_i16x8_extend_high_i8x16(centred);
  const Words column = (upper << 8) + (lower - upper) * (Words)spread<k>(weights.down);
  return pair_sums(column, (Words)spread<k>(weights.across));
}
static inline Bytes bytes_of_mixes(Dwords p0, Dwords p1, Dwords p2, Dwords p3) {
  const Words low = even_and_odd((Words)(p0 >> 16), (Words)p1);
  const Words high = even_and_odd((Words)(p2 >> 16), (Words)p3);
  return (Bytes)wasm_i8x16_narrow_i16x8((V)low, (V)high) ^ all_bytes(128);
}
static constexpr int mix_of(int i) { return i / 6 * 8 + i / 3 % 2 + i % 3 * 2; }
static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  const Dwords low = (Dwords)wasm_i32x4_shuffle((V)a, (V)b, 0, 2, 4, 6),
               high = (Dwords)wasm_i32x4_shuffle((V)a, (V)b, 1, 3, 5, 7);
  return {low >> 16 & 255, low >> 24, high & 255, high >> 8 & 255, high >> 16 & 255, high >> 24};
}
#include "rows/simd/mixes_exact.inl"
#include "rows/simd/block_stores.inl"

#include "rows/simd/lane_columns.inl"
#include "rows/simd/vocabulary.inl"
