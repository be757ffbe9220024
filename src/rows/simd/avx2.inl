// AVX2 and FMA: two blocks.
constexpr int32_t kBytes = 32;
#include "rows/simd/types.inl"
#include "rows/simd/vector_masks.inl"

#define ROXE_X86(name) _mm256_##name
// Vectors and their halves as the intrinsics name them.
using I = __m256i;
using F = __m256;
using D = __m256d;
using HalfI = __m128i;
using HalfF = __m128;
static HalfI first_half(I v) { return _mm256_castsi256_si128(v); }
static HalfI last_half(I v) { return _mm256_extracti128_si256(v, 1); }
static I joined(HalfI first, HalfI last) { return _mm256_set_m128i(last, first); }

template <int b>
static Block block(Bytes v) {
  return (Block)_mm256_extracti128_si256((I)v, b);
}
static Bytes in_all_blocks(const uint8_t* p) {
  return (Bytes)_mm256_broadcastsi128_si256((__m128i)load<Block>(p));
}
template <class BlockOf>
static inline Bytes blocks_of(const BlockOf& block) {
  return (Bytes)joined((HalfI)block(0), (HalfI)block(1));
}
static void store_blocks(uint8_t* p, ptrdiff_t step, Bytes v) {
  _mm256_storeu2_m128i((__m128i*)(p + step), (__m128i*)p, (I)v);
}
#include "rows/simd/x86.inl"
#include "rows/simd/x86_vector_masks.inl"
#include "rows/simd/byte_shuffles.inl"

// A table of 256 bytes as sixteen shuffles, which look at the lower four bits of an index that is
// not negative. An index of 0 ... 127 therefore finds something in its own part and in all before
// it. Each part holds its difference (exclusive or) to the part before, so that what is found adds
// up to the entry. Each half of the table starts anew, because indices are told apart by their
// sign.
struct ByteTable {
  Bytes part[16];
};
static inline ByteTable byte_table(const uint8_t* table) {
  ByteTable t;
  Bytes before = {};
  for (int32_t i = 0; i < 16; ++i) {
    const Bytes part = in_all_blocks(table + 16 * i);
    t.part[i] = i % 8 == 0 ? part : part ^ before;
    before = part;
  }
  return t;
}
static inline Bytes look_up(const ByteTable& table, Bytes index) {
  // A shuffle gives 0 for a negative index. Those of 128 and more have the sign of the lower half
  // once their top bit is flipped, and the others are then negative.
  Bytes low = index, high = index ^ all_bytes(128);
  const auto next_part = [](Bytes i) { return (Bytes)_mm256_subs_epi8((I)i, (I)all_bytes(16)); };
  Bytes from_low = shuffle(table.part[0], low), from_high = shuffle(table.part[8], high);
  for (int32_t i = 1; i < 8; ++i) {
    low = next_part(low);
    high = next_part(high);
    from_low ^= shuffle(table.part[i], low);
    from_high ^= shuffle(table.part[8 + i], high);
  }
  return from_low ^ from_high;
}
constexpr bool kWideTables = true, kQuickTables = false, kPlainSimpleRows = false;
#include "rows/simd/planes.inl"

static inline PixelFloats load_pixels(const uint8_t* bgr) {  // 24 bytes
  const Bytes v = load_blocks(bgr, 8);  // four pixels from byte 0, and four from byte 4
  const Bytes blue = {0, 128, 128, 128, 3, 128, 128, 128, 6,  128, 128, 128, 9,  128, 128, 128,
                      4, 128, 128, 128, 7, 128, 128, 128, 10, 128, 128, 128, 13, 128, 128, 128};
  const auto channel = [&](uint32_t c) {  // places of zeros stay from 128 on
    return to_floats((SignedDwords)shuffle(v, (Bytes)((Dwords)blue + c)));
  };
  return {channel(0), channel(1), channel(2)};
}

#include "rows/simd/loaded_floats.inl"

static inline Corners corners_side_by_side(const uint8_t* upper, ptrdiff_t stride) {
  const Bytes above = load_blocks(upper - 1, 12), below = load_blocks(upper + stride - 1, 12);
  // Bytes of both rows alternately: pixel k begins at 2 + 6 k.
  const Bytes first = interleave_low(above, below), last = interleave_high(above, below);
  static constexpr uint8_t kOrder[16] = {0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, 128, 128, 128, 128};
  const auto pick = [](Bytes v, int32_t at) {
    return shuffle(v, in_all_blocks(kOrder) + all_bytes(at));
  };
  return {{pick(first, 2), pick((Bytes)_mm256_alignr_epi8((I)last, (I)first, 8), 0),
           pick((Bytes)_mm256_alignr_epi8((I)last, (I)first, 14), 0), pick(last, 4)}};
}
// Broadcasts and blends leave the shuffle units alone: resample_band takes 0.03 ns a pixel less
// than with pairs of loads.
static inline Bytes load_4_pairs(const uint8_t* a, const uint8_t* b, const uint8_t* c,
                                 const uint8_t* d) {
  const auto in_all = [](const uint8_t* p) { return _mm256_set1_epi64x(load<int64_t>(p)); };
  const I low = _mm256_blend_epi32(in_all(a), in_all(b), 0x0c);
  const I high = _mm256_blend_epi32(in_all(c), in_all(d), 0xc0);
  return (Bytes)_mm256_blend_epi32(low, high, 0xf0);
}
static inline Bytes half_of_pairs(const uint8_t* p, const int32_t* offsets, int32_t half) {
  const int32_t* o = offsets + 2 * half;
  return load_4_pairs(p + o[0], p + o[1], p + o[4], p + o[5]);
}
static Floats fused(Floats a, Floats b, Floats c) {
  return (Floats)_mm256_fmadd_ps((F)a, (F)b, (F)c);
}
#include "rows/simd/mixes_fused.inl"
#include "rows/simd/block_stores.inl"
#include "rows/simd/lane_columns.inl"
#include "rows/simd/vocabulary.inl"
#undef ROXE_X86
