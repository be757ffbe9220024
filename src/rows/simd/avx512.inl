// AVX-512 F, BW, VL, DQ and VBMI: four blocks. Masks are bits. Orders that leave their blocks are
// permutes of bytes, which cost as little as shuffles within blocks.
constexpr int32_t kBytes = 64;
#define ROXE_SHORTER_SET "rows/simd/avx2.inl"
#include "rows/simd/types.inl"

#define ROXE_X86(name) _mm512_##name
// Vectors and their halves as the intrinsics name them.
using I = __m512i;
using F = __m512;
using D = __m512d;
using HalfI = __m256i;
using HalfF = __m256;
static HalfI first_half(I v) { return _mm512_castsi512_si256(v); }
static HalfI last_half(I v) { return _mm512_extracti64x4_epi64(v, 1); }
static I joined(HalfI first, HalfI last) {
  return _mm512_inserti64x4(_mm512_castsi256_si512(first), last, 1);
}

using ByteMask = __mmask64;
using WordMask = __mmask32;
using FloatMask = __mmask16;
static ByteMask equal(Bytes a, Bytes b) { return _mm512_cmpeq_epi8_mask((I)a, (I)b); }
static ByteMask at_most(Bytes a, Bytes b) { return _mm512_cmple_epu8_mask((I)a, (I)b); }
static WordMask equal(Words a, Words b) { return _mm512_cmpeq_epi16_mask((I)a, (I)b); }
static WordMask at_most(Words a, Words b) { return _mm512_cmple_epu16_mask((I)a, (I)b); }
static WordMask greater(SignedWords a, SignedWords b) {
  return _mm512_cmpgt_epi16_mask((I)a, (I)b);
}
static FloatMask equal(Floats a, Floats b) { return _mm512_cmp_ps_mask((F)a, (F)b, _CMP_EQ_OQ); }
static FloatMask greater(Floats a, Floats b) { return _mm512_cmp_ps_mask((F)a, (F)b, _CMP_GT_OQ); }
static FloatMask at_most(Floats a, Floats b) { return _mm512_cmp_ps_mask((F)a, (F)b, _CMP_LE_OQ); }
static bool any_above(Dwords a, Dwords b) { return _mm512_cmpgt_epu32_mask((I)a, (I)b) != 0; }
static bool all(ByteMask m) { return m == ~uint64_t{0}; }
static bool all(FloatMask m) { return m == 0xffff; }
static bool any(ByteMask m) { return m != 0; }
static bool any(FloatMask m) { return m != 0; }
static ByteMask mask_of(Bytes all_ones_or_zero) { return _mm512_movepi8_mask((I)all_ones_or_zero); }
static Bytes select(ByteMask where, Bytes a, Bytes b) {
  return (Bytes)_mm512_mask_mov_epi8((I)b, where, (I)a);
}
static Words select(WordMask where, Words a, Words b) {
  return (Words)_mm512_mask_mov_epi16((I)b, where, (I)a);
}
static Floats floor(Floats a) {
  return (Floats)_mm512_roundscale_ps((F)a, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
}

template <int b>
static Block block(Bytes v) {
  return (Block)_mm512_extracti32x4_epi32((I)v, b);
}
static Bytes in_all_blocks(const uint8_t* p) {
  return (Bytes)_mm512_broadcast_i32x4((__m128i)load<Block>(p));
}
template <class BlockOf>
static inline Bytes blocks_of(const BlockOf& block) {
  const auto two = [&](int32_t b) {
    return _mm256_set_m128i((__m128i)block(b + 1), (__m128i)block(b));
  };
  return (Bytes)joined(two(0), two(2));
}
static void store_blocks(uint8_t* p, ptrdiff_t step, Bytes v) {
  store(p, block<0>(v)), store(p + step, block<1>(v));
  store(p + 2 * step, block<2>(v)), store(p + 3 * step, block<3>(v));
}
#include "rows/simd/x86.inl"

// 256 entries in four vectors: two permutes of two vectors each, told apart by the top bit.
struct ByteTable {
  Bytes part[4];
};
static inline ByteTable byte_table(const uint8_t* table) {
  const auto part = [&](int32_t i) { return load<Bytes>(table + 64 * i); };
  return {{part(0), part(1), part(2), part(3)}};
}
static inline Bytes look_up(const ByteTable& t, Bytes index) {
  const I i = (I)index;
  const I low = _mm512_permutex2var_epi8((I)t.part[0], i, (I)t.part[1]);
  const I high = _mm512_permutex2var_epi8((I)t.part[2], i, (I)t.part[3]);
  return (Bytes)_mm512_mask_blend_epi8(_mm512_movepi8_mask(i), low, high);
}
using ShortTable = ByteTable;
static inline ShortTable short_table(const uint8_t* table, int32_t) { return byte_table(table); }
struct HalfTable {
  Bytes part[2];
};
static inline HalfTable half_table(const uint8_t* table) {
  return {{load<Bytes>(table), load<Bytes>(table + 64)}};
}
static inline Bytes look_up(const HalfTable& t, Bytes index) {
  return (Bytes)_mm512_permutex2var_epi8((I)t.part[0], (I)index, (I)t.part[1]);
}
constexpr bool kWideTables = true, kQuickTables = true, kPlainSimpleRows = false;
#include "rows/simd/float_bytes.inl"

static inline Planes load_planes(const uint8_t* bgr) {
  const Bytes a = load<Bytes>(bgr), b = load<Bytes>(bgr + 64), c = load<Bytes>(bgr + 128);
  const auto channel = [&](auto byte_of_pixel) {
    const Bytes ab = arranged(a, b, [=](int i) { return byte_of_pixel(i) % 128; });
    return arranged(ab, c,
                    [=](int i) { return byte_of_pixel(i) < 128 ? i : byte_of_pixel(i) - 64; });
  };
  return {channel([](int i) { return 3 * i; }), channel([](int i) { return 3 * i + 1; }),
          channel([](int i) { return 3 * i + 2; })};
}
static inline void store_planes(uint8_t* bgr, const Planes& planes) {
  const auto part = [&](auto byte) {
    const Bytes blue_green = arranged(planes.blue, planes.green, [=](int i) {
      return byte(i) % 3 == 1 ? 64 + byte(i) / 3 : byte(i) / 3;
    });
    return arranged(blue_green, planes.red,
                    [=](int i) { return byte(i) % 3 == 2 ? 64 + byte(i) / 3 : i; });
  };
  store(bgr, part([](int i) { return i; }));
  store(bgr + 64, part([](int i) { return 64 + i; }));
  store(bgr + 128, part([](int i) { return 128 + i; }));
}

static inline Corners corners_side_by_side(const uint8_t* upper, ptrdiff_t stride) {
  constexpr __mmask64 kPixels = (uint64_t{1} << 51) - 1;  // seventeen
  const Bytes above = (Bytes)_mm512_maskz_loadu_epi8(kPixels, upper);
  const Bytes below = (Bytes)_mm512_maskz_loadu_epi8(kPixels, upper + stride);
  const auto corners = [&](auto pixel) {  // upper and lower byte, of the pixel and its neighbour
    return arranged(above, below, [=](int i) {
      const int byte = i % 16 < 12 ? 3 * pixel(i / 16) + i % 4 / 2 * 3 + i % 16 / 4 : 0;
      return byte + i % 2 * 64;
    });
  };
  return {{corners([](int block) { return 4 * block; }),
           corners([](int block) { return 4 * block + 1; }),
           corners([](int block) { return 4 * block + 2; }),
           corners([](int block) { return 4 * block + 3; })}};
}
// Broadcasts and blends leave the shuffle units alone: resample_band takes 0.06 ns a pixel less
// than with pairs of loads.
static inline Bytes half_of_pairs(const uint8_t* p, const int32_t* offsets, int32_t half) {
  const auto four_pairs = [p](const int32_t* o) {
    const auto in_all = [&](int32_t i) { return _mm256_set1_epi64x(load<int64_t>(p + o[i])); };
    return _mm256_blend_epi32(_mm256_blend_epi32(in_all(0), in_all(1), 0x0c),
                              _mm256_blend_epi32(in_all(2), in_all(3), 0xc0), 0xf0);
  };
  return (Bytes)joined(four_pairs(offsets + 8 * half), four_pairs(offsets + 8 * half + 4));
}
static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  const Dwords pairs = {0, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120};
  const auto byte = [&](uint32_t k) {
    return (Dwords)_mm512_maskz_permutex2var_epi8(0x1111111111111111, (I)a, (I)(pairs + k), (I)b);
  };
  return {byte(2), byte(3), byte(4), byte(5), byte(6), byte(7)};
}
static Floats fused(Floats a, Floats b, Floats c) {
  return (Floats)_mm512_fmadd_ps((F)a, (F)b, (F)c);
}
#include "rows/simd/mixes_fused.inl"

static inline void store_mixes(uint8_t* dst, Bytes mixes) {
  const Bytes pixels =
      arranged(mixes, [](int i) { return i < 48 ? i / 12 * 16 + mix_of(i % 12) : i; });
  _mm512_mask_storeu_epi32(dst, 0x0fff, (I)pixels);
}
static void store_mixes_and_4_bytes(uint8_t* dst, Bytes v) { store_mixes(dst, v); }
// Rows r and r + 4 of a tile lie in the halves of one vector; columns c and c + 4 in one of the
// tile.
struct TileRows {
  Bytes two[4];
};
template <int r>
static inline Bytes two_rows_of_tile(const Dwords (&tile)[kTileVectors]) {
  const auto column = [](int i) { return i % 32 / 3 % 8; };
  const auto byte = [=](int i) {  // of the one of two vectors that holds the column
    return column(i) / 4 * 32 + (r + i / 32 * 4) * 4 + i % 32 % 3 + column(i) % 2 * 64;
  };
  const Bytes first = arranged((Bytes)tile[0], (Bytes)tile[1], byte);
  const Bytes last = arranged((Bytes)tile[2], (Bytes)tile[3], byte);
  return arranged(first, last, [=](int i) { return column(i) / 2 % 2 * 64 + i; });
}
static inline TileRows rows_of_tile(const Dwords (&tile)[kTileVectors]) {
  return {{two_rows_of_tile<0>(tile), two_rows_of_tile<1>(tile), two_rows_of_tile<2>(tile),
           two_rows_of_tile<3>(tile)}};
}
static void store_row(uint8_t* dst, const TileRows& rows, int32_t r) {
  const I two = (I)rows.two[r % 4];
  _mm256_mask_storeu_epi32(dst, 0x3f, r < 4 ? first_half(two) : last_half(two));
}

// A column of 32 lanes: half a vector of bytes, a vector of words, two of dwords. With AVX2's
// vectors box_row_16 takes 0.32 ns a pixel instead of 0.28 (soft focus 21 takes 14 % longer),
// box_row_32 2 % less.
constexpr int32_t kLaneWords = 1;
struct LaneWords {
  Words part[1];
};
static LaneWords lane_differences(const uint8_t* in, const uint8_t* out) {
  const auto words = [](const uint8_t* p) {
    return (Qwords)_mm512_cvtepu8_epi16(_mm256_loadu_si256((const __m256i*)p));
  };
  return {{(Words)arranged((Qwords)((Words)words(in) - (Words)words(out)), [](int i) {
    return i / 2 == 1 ? i + 2 : i / 2 == 2 ? i - 2 : i;  // the middle blocks change places
  })}};
}
static DwordPair load_lanes(const uint32_t* p, int32_t, InOrder) {
  return {load<Dwords>(p), load<Dwords>(p + 16)};
}
static void store_lanes(uint32_t* p, int32_t, DwordPair v, InOrder) {
  store(p, v.first), store(p + 16, v.second);
}
static DwordPair load_lanes(const uint32_t* p, int32_t, Interleaved) {
  const Dwords low = load<Dwords>(p), high = load<Dwords>(p + 16);
  return {arranged(low, high, [](int i) { return i / 4 * 8 + i % 4; }),
          arranged(low, high, [](int i) { return i / 4 * 8 + 4 + i % 4; })};
}
// Where a lane is in a pair of vectors of dwords.
static constexpr int dword_of(int lane, InOrder) { return lane; }
static constexpr int dword_of(int lane, Interleaved) {
  return lane / 8 * 4 + lane / 4 % 2 * 16 + lane % 4;
}
// Whole vectors: smaller stores would delay the next load.
static void store_lanes(uint32_t* p, int32_t, DwordPair v, Interleaved) {
  store(p, arranged(v.first, v.second, [](int i) { return dword_of(i, Interleaved{}); }));
  store(p + 16, arranged(v.first, v.second, [](int i) { return dword_of(16 + i, Interleaved{}); }));
}
template <class F, class Order>
static void store_top_bytes(uint8_t* dst, const F& pairs, Order) {
  const DwordPair v = pairs(0);
  const Bytes tops = arranged((Bytes)v.first, (Bytes)v.second, [](int i) {
    return i < kLanes ? 4 * dword_of(byte_of_lane(i), Order{}) + 3 : 0;
  });
  store(dst, first_half((I)tops));
}
#include "rows/simd/vocabulary.inl"
#undef ROXE_X86
