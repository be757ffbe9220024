// NEON of AArch64: one block.
constexpr int32_t kBytes = 16;
#include "rows/simd/types.inl"
#include "rows/simd/vector_masks.inl"

// Vectors as the intrinsics name them.
using U8 = uint8x16_t;
using U16 = uint16x8_t;
using S16 = int16x8_t;
using U32 = uint32x4_t;
using S32 = int32x4_t;
using F32 = float32x4_t;
using F64 = float64x2_t;

static Words low_differences(Bytes a, Bytes b) {
  return (Words)vsubl_u8(vget_low_u8((U8)a), vget_low_u8((U8)b));
}
static Words high_differences(Bytes a, Bytes b) { return (Words)vsubl_high_u8((U8)a, (U8)b); }
static Bytes pack(Words a, Words b) { return (Bytes)vqmovun_high_s16(vqmovun_s16((S16)a), (S16)b); }
static Words pack(SignedDwords a, SignedDwords b) {
  return (Words)vqmovun_high_s32(vqmovun_s32((S32)a), (S32)b);
}
static Words pack_signed(SignedDwords a, SignedDwords b) {
  return (Words)vqmovn_high_s32(vqmovn_s32((S32)a), (S32)b);
}
static Bytes shuffle(Bytes table, Bytes index) { return (Bytes)vqtbl1q_u8((U8)table, (U8)index); }
static Bytes shuffle_or_zero(Bytes a, Bytes index) { return shuffle(a, index); }

static Bytes add_saturating(Bytes a, Bytes b) { return (Bytes)vqaddq_u8((U8)a, (U8)b); }
static Bytes subtract_saturating(Bytes a, Bytes b) { return (Bytes)vqsubq_u8((U8)a, (U8)b); }
static SignedWords add_saturating(SignedWords a, SignedWords b) {
  return (SignedWords)vqaddq_s16((S16)a, (S16)b);
}
static Words mul_high(Words a, Words b) {
  const U32 low = vmull_u16(vget_low_u16((U16)a), vget_low_u16((U16)b));
  const U32 high = vmull_high_u16((U16)a, (U16)b);
  return (Words)vuzp2q_u16(vreinterpretq_u16_u32(low), vreinterpretq_u16_u32(high));
}
static SignedWords mul_high(SignedWords a, SignedWords b) {
  const S32 low = vmull_s16(vget_low_s16((S16)a), vget_low_s16((S16)b)),
            high = vmull_high_s16((S16)a, (S16)b);
  return (SignedWords)vuzp2q_s16(vreinterpretq_s16_s32(low), vreinterpretq_s16_s32(high));
}
static Dwords pair_sums(Words a, Words b) {
  const S32 low = vmull_s16(vget_low_s16((S16)a), vget_low_s16((S16)b)),
            high = vmull_high_s16((S16)a, (S16)b);
  return (Dwords)vpaddq_s32(low, high);
}
static bool any_above(Dwords a, Dwords b) { return vmaxvq_u32(vcgtq_u32((U32)a, (U32)b)) != 0; }
static Floats min(Floats a, Floats b) { return (Floats)vminq_f32((F32)a, (F32)b); }
static Floats max(Floats a, Floats b) { return (Floats)vmaxq_f32((F32)a, (F32)b); }
static Floats floor(Floats a) { return (Floats)vrndmq_f32((F32)a); }

static Words byte_pair_sums(Bytes a, Bytes b) {
  const auto product = [](uint8x8_t x, uint8x8_t y) {
    return vmulq_s16(vreinterpretq_s16_u16(vmovl_u8(x)), vmovl_s8(vreinterpret_s8_u8(y)));
  };
  return (Words)vpaddq_s16(product(vget_low_u8((U8)a), vget_low_u8((U8)b)),
                           product(vget_high_u8((U8)a), vget_high_u8((U8)b)));
}
static bool any(ByteMask m) { return vmaxvq_u8((U8)m) != 0; }
static Bytes select(ByteMask where, Bytes a, Bytes b) {
  return (Bytes)vbslq_u8((U8)where, (U8)a, (U8)b);
}
static Words select(WordMask where, Words a, Words b) {
  return (Words)vbslq_u16((U16)where, (U16)a, (U16)b);
}

static Floats to_floats(Doubles first, Doubles last) {
  return (Floats)vcvt_high_f32_f64(vcvt_f32_f64((F64)first), (F64)last);
}
static Doubles first_doubles(Floats v) { return (Doubles)vcvt_f64_f32(vget_low_f32((F32)v)); }
static Doubles last_doubles(Floats v) { return (Doubles)vcvt_high_f64_f32((F32)v); }
static SignedDwords truncate(Floats a) { return (SignedDwords)vcvtq_s32_f32((F32)a); }
static SignedDwords truncate_small(Floats a) { return truncate(a); }
static SignedDwords rounded(Floats a) { return (SignedDwords)vcvtnq_s32_f32((F32)a); }
static SignedDwords widen_first(SignedWords v) {
  return (SignedDwords)vmovl_s16(vget_low_s16((S16)v));
}
static SignedDwords widen_last(SignedWords v) { return (SignedDwords)vmovl_high_s16((S16)v); }

static inline Block load_2_pairs(const uint8_t* a, const uint8_t* b) {
  return (Block)vcombine_u8(vld1_u8(a), vld1_u8(b));
}
#include "rows/simd/one_block.inl"
#include "rows/simd/loaded_floats.inl"

// 256 entries in sixteen vectors, four to a look-up; an index beyond the four leaves what it finds.
struct ByteTable {
  uint8x16x4_t part[4];
};
static inline ByteTable byte_table(const uint8_t* table) {
  return {{vld1q_u8_x4(table), vld1q_u8_x4(table + 64), vld1q_u8_x4(table + 128),
           vld1q_u8_x4(table + 192)}};
}
static inline Bytes look_up(const ByteTable& t, Bytes index) {
  U8 i = (U8)index, found = vqtbl4q_u8(t.part[0], i);
  for (int k = 1; k < 4; ++k) {
    i = vsubq_u8(i, vdupq_n_u8(64));
    found = vqtbx4q_u8(found, t.part[k], i);
  }
  return (Bytes)found;
}
using ShortTable = ByteTable;
static inline ShortTable short_table(const uint8_t* table, int32_t) { return byte_table(table); }
struct HalfTable {
  uint8x16x4_t part[2];
};
static inline HalfTable half_table(const uint8_t* table) {
  return {{vld1q_u8_x4(table), vld1q_u8_x4(table + 64)}};
}
static inline Bytes look_up(const HalfTable& t, Bytes index) {
  const U8 found = vqtbl4q_u8(t.part[0], (U8)index);
  return (Bytes)vqtbx4q_u8(found, t.part[1], vsubq_u8((U8)index, vdupq_n_u8(64)));
}
constexpr bool kWideTables = true, kQuickTables = false;
// Instructions a pixel, plain and wide, by g++, and the cycles that llvm-mca expects of them on a
// Neoverse N1 and on an M1 (of the plain intensities g++ makes loads of three channels):
//   intensities 3.1 and 4.1; 1.97 and 1.95, 0.97 and 1.06
//   box_row_16 9.5 and 12.9; 4.1 and 5.6, 2.2 and 2.9
//   box_row_32 10.6 and 11.8; 5.0 and 4.8, 2.5 and 2.6
constexpr bool kPlainSimpleRows = true;

static inline Planes load_planes(const uint8_t* bgr) {
  const uint8x16x3_t v = vld3q_u8(bgr);
  return {(Bytes)v.val[0], (Bytes)v.val[1], (Bytes)v.val[2]};
}
static inline void store_planes(uint8_t* bgr, const Planes& planes) {
  const uint8x16x3_t v = {{(U8)planes.blue, (U8)planes.green, (U8)planes.red}};
  vst3q_u8(bgr, v);
}

// Corners are the pixel and its right neighbour in the upper row, then in the lower one.
static Bytes corner_order() {
  return Bytes{2, 3, 4, 255, 5, 6, 7, 255, 10, 11, 12, 255, 13, 14, 15, 255};
}
// Down, the position in 16.16, of which the weight is the second byte; across, words 256 - weight,
// weight.
static CornerWeights weights_of(Dwords x, Dwords y) {
  const Dwords weight = x >> 8 & 255;
  return {y, (weight << 16) + (256 - weight)};
}
// Dwords whose upper words are the bytes.
template <int k>
static inline Dwords mix_corners(Bytes corners, const CornerWeights& weights) {
  const U8 v = (U8)corners, down = vdupq_laneq_u8((U8)weights.down, 4 * k + 1);
  const U16 across = (U16)weights.across;
  U16 column = vmlsl_u8(vshll_n_u8(vget_low_u8(v), 8), vget_low_u8(v), vget_low_u8(down));
  column = vmlal_high_u8(column, v, down);
  return (Dwords)vmlal_high_laneq_u16(vmull_laneq_u16(vget_low_u16(column), across, 2 * k), column,
                                      across, 2 * k + 1);
}
static inline Bytes bytes_of_mixes(Dwords p0, Dwords p1, Dwords p2, Dwords p3) {
  const U16 low = vuzp2q_u16((U16)p0, (U16)p1), high = vuzp2q_u16((U16)p2, (U16)p3);
  return (Bytes)vuzp1q_u8((U8)low, (U8)high);
}
static constexpr int mix_of(int i) { return i / 3 * 4 + i % 3; }
static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  // Bytes . . blue green, and red and the neighbour's blue green red. No look-up in two vectors at
  // once: g++ copies both for each.
  const Bytes low = (Bytes)vuzp1q_u32((U32)a, (U32)b), high = (Bytes)vuzp2q_u32((U32)a, (U32)b);
  const auto byte = [](Bytes v, uint8_t k) {
    const Bytes order = {0, 128, 128, 128, 4, 128, 128, 128, 8, 128, 128, 128, 12, 128, 128, 128};
    return (Dwords)shuffle(v, order + k);
  };
  return {byte(low, 2),  (Dwords)low >> 24, byte(high, 0),
          byte(high, 1), byte(high, 2),     (Dwords)high >> 24};
}
static Floats fused(Floats a, Floats b, Floats c) {
  return (Floats)vfmaq_f32((F32)c, (F32)a, (F32)b);
}
#include "rows/simd/mixes_fused.inl"
#include "rows/simd/block_stores.inl"

#include "rows/simd/lane_columns.inl"
#include "rows/simd/vocabulary.inl"
