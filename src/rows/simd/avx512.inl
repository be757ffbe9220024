// AVX-512 F, BW, VL, DQ and VBMI: four blocks. Masks are bits.
constexpr int32_t kBytes = 64;
#include "rows/simd/types.inl"

// Vectors as the intrinsics name them.
using I = __m512i;
using F = __m512;
using D = __m512d;

static Bytes interleave_low(Bytes a, Bytes b) { return (Bytes)_mm512_unpacklo_epi8((I)a, (I)b); }
static Bytes interleave_high(Bytes a, Bytes b) { return (Bytes)_mm512_unpackhi_epi8((I)a, (I)b); }
static Words interleave_low(Words a, Words b) { return (Words)_mm512_unpacklo_epi16((I)a, (I)b); }
static Words interleave_high(Words a, Words b) { return (Words)_mm512_unpackhi_epi16((I)a, (I)b); }
static Dwords interleave_low(Dwords a, Dwords b) {
  return (Dwords)_mm512_unpacklo_epi32((I)a, (I)b);
}
static Dwords interleave_high(Dwords a, Dwords b) {
  return (Dwords)_mm512_unpackhi_epi32((I)a, (I)b);
}
static Dwords low_qwords(Dwords a, Dwords b) { return (Dwords)_mm512_unpacklo_epi64((I)a, (I)b); }
static Dwords high_qwords(Dwords a, Dwords b) { return (Dwords)_mm512_unpackhi_epi64((I)a, (I)b); }
static Words byte_pair_sums(Bytes a, Bytes b) { return (Words)_mm512_maddubs_epi16((I)a, (I)b); }
static Bytes pack(Words a, Words b) { return (Bytes)_mm512_packus_epi16((I)a, (I)b); }
static Words pack(SignedDwords a, SignedDwords b) { return (Words)_mm512_packus_epi32((I)a, (I)b); }
static Words pack_signed(SignedDwords a, SignedDwords b) {
  return (Words)_mm512_packs_epi32((I)a, (I)b);
}
static Bytes pack_to_signed(Words a, Words b) { return (Bytes)_mm512_packs_epi16((I)a, (I)b); }
static Bytes shuffle(Bytes a, Bytes index) { return (Bytes)_mm512_shuffle_epi8((I)a, (I)index); }

static Bytes min(Bytes a, Bytes b) { return (Bytes)_mm512_min_epu8((I)a, (I)b); }
static Bytes max(Bytes a, Bytes b) { return (Bytes)_mm512_max_epu8((I)a, (I)b); }
static Bytes add_saturating(Bytes a, Bytes b) { return (Bytes)_mm512_adds_epu8((I)a, (I)b); }
static Bytes subtract_saturating(Bytes a, Bytes b) { return (Bytes)_mm512_subs_epu8((I)a, (I)b); }
static Words min(Words a, Words b) { return (Words)_mm512_min_epu16((I)a, (I)b); }
static Words max(Words a, Words b) { return (Words)_mm512_max_epu16((I)a, (I)b); }
static SignedWords min(SignedWords a, SignedWords b) {
  return (SignedWords)_mm512_min_epi16((I)a, (I)b);
}
static SignedWords max(SignedWords a, SignedWords b) {
  return (SignedWords)_mm512_max_epi16((I)a, (I)b);
}
static SignedWords add_saturating(SignedWords a, SignedWords b) {
  return (SignedWords)_mm512_adds_epi16((I)a, (I)b);
}
static SignedWords magnitude(SignedWords a) { return (SignedWords)_mm512_abs_epi16((I)a); }
static Words mul_high(Words a, Words b) { return (Words)_mm512_mulhi_epu16((I)a, (I)b); }
static SignedWords mul_high(SignedWords a, SignedWords b) {
  return (SignedWords)_mm512_mulhi_epi16((I)a, (I)b);
}
static Dwords pair_sums(Words a, Words b) { return (Dwords)_mm512_madd_epi16((I)a, (I)b); }
static Dwords max(Dwords a, Dwords b) { return (Dwords)_mm512_max_epu32((I)a, (I)b); }
static bool any_above(Dwords a, Dwords b) { return _mm512_cmpgt_epu32_mask((I)a, (I)b) != 0; }
static Floats min(Floats a, Floats b) { return (Floats)_mm512_min_ps((F)a, (F)b); }
static Floats max(Floats a, Floats b) { return (Floats)_mm512_max_ps((F)a, (F)b); }
static Floats floor(Floats a) {
  return (Floats)_mm512_roundscale_ps((F)a, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
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
static FloatMask not_at_most(Floats a, Floats b) {
  return _mm512_cmp_ps_mask((F)a, (F)b, _CMP_NLE_UQ);
}
static bool all(ByteMask m) { return m == ~uint64_t{0}; }
static bool any(ByteMask m) { return m != 0; }
static bool any(FloatMask m) { return m != 0; }
static ByteMask mask_of(Bytes all_ones_or_zero) { return _mm512_movepi8_mask((I)all_ones_or_zero); }
static Bytes select(ByteMask where, Bytes a, Bytes b) {
  return (Bytes)_mm512_mask_mov_epi8((I)b, where, (I)a);
}
static Words select(WordMask where, Words a, Words b) {
  return (Words)_mm512_mask_mov_epi16((I)b, where, (I)a);
}
static Bytes select_bytes(Bytes where, Bytes a, Bytes b) {
  return (Bytes)_mm512_ternarylogic_epi64((I)where, (I)a, (I)b, 0xca);
}
static Bytes increment(ByteMask where, Bytes a) {
  return (Bytes)_mm512_mask_add_epi8((I)a, where, (I)a, (I)all_bytes(1));
}
static Words only(WordMask where, Words a) { return (Words)_mm512_maskz_mov_epi16(where, (I)a); }

static Floats to_floats(SignedDwords a) { return (Floats)_mm512_cvtepi32_ps((I)a); }
static Floats to_floats(Doubles first, Doubles last) {
  return (Floats)_mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps((D)first)),
                                    _mm512_cvtpd_ps((D)last), 1);
}
static Doubles first_doubles(Floats v) {
  return (Doubles)_mm512_cvtps_pd(_mm512_castps512_ps256((F)v));
}
static Doubles last_doubles(Floats v) {
  return (Doubles)_mm512_cvtps_pd(_mm512_extractf32x8_ps((F)v, 1));
}
static SignedDwords truncate(Floats a) { return (SignedDwords)_mm512_cvttps_epi32((F)a); }
static SignedDwords rounded(Floats a) { return (SignedDwords)_mm512_cvtps_epi32((F)a); }
static SignedDwords widen_first(SignedWords v) {
  return (SignedDwords)_mm512_cvtepi16_epi32(_mm512_castsi512_si256((I)v));
}
static SignedDwords widen_last(SignedWords v) {
  return (SignedDwords)_mm512_cvtepi16_epi32(_mm512_extracti64x4_epi64((I)v, 1));
}

static Bytes in_all_blocks(const uint8_t* p) {
  return (Bytes)_mm512_broadcast_i32x4((__m128i)load<Block>(p));
}
template <int b>
static Block block(Bytes v) {
  return (Block)_mm512_extracti32x4_epi32((I)v, b);
}
static Bytes load_blocks(const uint8_t* p, ptrdiff_t step) {
  const auto two = [](const uint8_t* low, const uint8_t* high) {
    return _mm256_loadu2_m128i((const __m128i*)high, (const __m128i*)low);
  };
  return (Bytes)_mm512_inserti64x4(_mm512_castsi256_si512(two(p, p + step)),
                                   two(p + 2 * step, p + 3 * step), 1);
}
static void store_blocks(uint8_t* p, ptrdiff_t step, Bytes v) {
  store(p, block<0>(v)), store(p + step, block<1>(v));
  store(p + 2 * step, block<2>(v)), store(p + 3 * step, block<3>(v));
}
static Bytes in_order(Bytes packed) {
  return (Bytes)_mm512_permutexvar_epi32(
      _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), (I)packed);
}
static Words upper_words(Dwords even, Dwords odd) {
  return (Words)_mm512_mask_mov_epi16((I)(even >> 16), 0xaaaaaaaa, (I)odd);
}
#include "rows/simd/x86.inl"

// Orders of bytes for permutes.
struct ByteOrders {
  alignas(64) uint8_t threefold[3][64];
  alignas(64) uint8_t apart[3][64], close_up[64];     // a channel of pixels to dwords, and back
  alignas(64) uint8_t gather[3][64], scatter[3][64];  // planes: from two vectors and to a vector
  alignas(64) uint8_t gather_last[3][64], scatter_red[3][64];  // from the third one
  alignas(64) uint8_t every_fourth[64];
  alignas(64) uint8_t mixes[64];
  uint64_t is_last[3], is_red[3];
  constexpr ByteOrders()
      : threefold(),
        apart(),
        close_up(),
        gather(),
        scatter(),
        gather_last(),
        scatter_red(),
        every_fourth(),
        mixes(),
        is_last(),
        is_red() {
    for (int i = 0; i < 64; ++i) every_fourth[i] = static_cast<uint8_t>(4 * i % 128);
    for (int i = 0; i < 48; ++i) mixes[i] = static_cast<uint8_t>(i / 12 * 16 + kPixelOrder[i % 12]);
    for (int c = 0; c < 3; ++c)
      for (int i = 0; i < 64; ++i) {
        threefold[c][i] = static_cast<uint8_t>((64 * c + i) / 3);
        apart[c][i] = static_cast<uint8_t>(i % 4 == 0 ? 3 * (i / 4) + c : 48);  // a byte of zero
        if (i < 16) close_up[3 * i + c] = static_cast<uint8_t>(16 * (i / 4) + 4 * c + i % 4);

        const int from = 3 * i + c;  // byte of the pixels
        gather[c][i] = static_cast<uint8_t>(from % 128);
        gather_last[c][i] = static_cast<uint8_t>(from % 64);
        if (from >= 128) is_last[c] |= uint64_t{1} << i;
        const int pixel = (64 * c + i) / 3, channel = (64 * c + i) % 3;
        scatter[c][i] = static_cast<uint8_t>(channel == 1 ? 64 + pixel : pixel);
        scatter_red[c][i] = static_cast<uint8_t>(pixel);
        if (channel == 2) is_red[c] |= uint64_t{1} << i;
      }
  }
};
static constexpr ByteOrders byte_orders;
static I order(const uint8_t* bytes) { return _mm512_load_si512(bytes); }

static inline Threefold threefold(Bytes pixels) {
  Threefold t;
  for (int k = 0; k < 3; ++k)
    t.part[k] = (Bytes)_mm512_permutexvar_epi8(order(byte_orders.threefold[k]), (I)pixels);
  return t;
}

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
constexpr bool kWideTables = true, kQuickTables = true;

static inline Bytes load_few(const uint8_t* p, ptrdiff_t count) {
  return (Bytes)_mm512_maskz_loadu_epi8((uint64_t{1} << count) - 1, p);
}
static inline void store_few(uint8_t* p, Bytes v, ptrdiff_t count) {
  _mm512_mask_storeu_epi8(p, (uint64_t{1} << count) - 1, (I)v);
}

static inline Planes load_planes(const uint8_t* bgr) {
  const I a = (I)load<Bytes>(bgr), b = (I)load<Bytes>(bgr + 64), last = (I)load<Bytes>(bgr + 128);
  const auto channel = [&](int c) {
    const I bytes = _mm512_permutex2var_epi8(a, order(byte_orders.gather[c]), b);
    return (Bytes)_mm512_mask_permutexvar_epi8(bytes, byte_orders.is_last[c],
                                               order(byte_orders.gather_last[c]), last);
  };
  return {channel(0), channel(1), channel(2)};
}
static inline void store_planes(uint8_t* bgr, const Planes& planes) {
  for (int k = 0; k < 3; ++k) {
    const I bytes =
        _mm512_permutex2var_epi8((I)planes.blue, order(byte_orders.scatter[k]), (I)planes.green);
    store(bgr + 64 * k,
          _mm512_mask_permutexvar_epi8(bytes, byte_orders.is_red[k],
                                       order(byte_orders.scatter_red[k]), (I)planes.red));
  }
}

static inline PixelFloats load_pixels(const uint8_t* bgr) {  // 48 bytes
  const I v = _mm512_inserti32x4(_mm512_zextsi256_si512(_mm256_loadu_si256((const __m256i*)bgr)),
                                 _mm_loadu_si128((const __m128i*)(bgr + 32)), 2);
  const auto channel = [&](int c) {
    return to_floats((SignedDwords)_mm512_permutexvar_epi8(order(byte_orders.apart[c]), v));
  };
  return {channel(0), channel(1), channel(2)};
}
static inline void store_pixels(uint8_t* bgr, SignedDwords blue, SignedDwords green,
                                SignedDwords red) {
  const Bytes bytes = pack(pack_signed(blue, green), pack_signed(red, red));
  _mm512_mask_storeu_epi8(bgr, 0xffffffffffffu,
                          _mm512_permutexvar_epi8(order(byte_orders.close_up), (I)bytes));
}

static inline void transpose(Floats* v) {
  Dwords t[16];
  for (int i = 0; i < 16; i += 4) {  // 4 x 4 within blocks
    const auto at = [&](int k) { return (Dwords)v[i + k]; };
    const Dwords a = interleave_low(at(0), at(1)), b = interleave_high(at(0), at(1));
    const Dwords c = interleave_low(at(2), at(3)), d = interleave_high(at(2), at(3));
    t[i] = low_qwords(a, c), t[i + 1] = high_qwords(a, c);
    t[i + 2] = low_qwords(b, d), t[i + 3] = high_qwords(b, d);
  }
  for (int i = 0; i < 4; ++i) {  // 4 x 4 blocks
    const I a = (I)t[i], b = (I)t[i + 4], c = (I)t[i + 8], d = (I)t[i + 12];
    const I ab = _mm512_shuffle_i32x4(a, b, 0x88), ab_odd = _mm512_shuffle_i32x4(a, b, 0xdd);
    const I cd = _mm512_shuffle_i32x4(c, d, 0x88), cd_odd = _mm512_shuffle_i32x4(c, d, 0xdd);
    v[i] = (Floats)_mm512_shuffle_i32x4(ab, cd, 0x88);
    v[i + 4] = (Floats)_mm512_shuffle_i32x4(ab_odd, cd_odd, 0x88);
    v[i + 8] = (Floats)_mm512_shuffle_i32x4(ab, cd, 0xdd);
    v[i + 12] = (Floats)_mm512_shuffle_i32x4(ab_odd, cd_odd, 0xdd);
  }
}
static inline Dwords entries_of_words(const uint32_t* table, const uint16_t* index) {
  alignas(64) uint32_t found[16];
  for (int i = 0; i < 16; ++i) found[i] = table[index[i / 4 * 8 + i % 4]];
  return load<Dwords>(found);
}

// 256 floats as four tables of their bytes: a look-up of 64 bytes costs two permutes, so that 64
// floats cost eight, where permutes of floats would take 32.
struct FloatTable {
  ByteTable bytes[4];
  Floats last;
};
struct FoundFloats {
  Floats v[4];
  Floats at(int32_t k) const { return v[k / kDwords]; }  // the lanes from k on
};
struct Indices {
  Bytes level;
  FloatMask beyond[4];  // levels of 256 and more
};
static FloatTable float_table(const float* table, int32_t entries) {
  FloatTable t;
  t.last = all_floats(table[entries > 256 ? 256 : 255]);
  for (int32_t part = 0; part < 4; ++part, table += 64) {
    I from = order(byte_orders.every_fourth);
    for (ByteTable& bytes : t.bytes) {
      const I low =
          _mm512_permutex2var_epi8(_mm512_loadu_si512(table), from, _mm512_loadu_si512(table + 16));
      const I high = _mm512_permutex2var_epi8(_mm512_loadu_si512(table + 32), from,
                                              _mm512_loadu_si512(table + 48));
      bytes.part[part] = (Bytes)_mm512_mask_blend_epi32(0xff00, low, high);
      from = _mm512_add_epi8(from, _mm512_set1_epi8(1));
    }
  }
  return t;
}
// The levels stay in the order of packing, which
// the interleaving of the bytes found undoes.
template <class F>
static void keep(Indices& indices, const F& vector) {
  const SignedDwords v[4] = {vector(0), vector(16), vector(32), vector(48)};
  for (int32_t k = 0; k < 4; ++k)
    indices.beyond[k] = _mm512_cmpgt_epi32_mask((I)v[k], _mm512_set1_epi32(255));
  indices.level = pack(pack(v[0], v[1]), pack(v[2], v[3]));
}
static inline FoundFloats look_up(const FloatTable& table, const Indices& indices) {
  const Bytes a = look_up(table.bytes[0], indices.level),
              b = look_up(table.bytes[1], indices.level);
  const Bytes c = look_up(table.bytes[2], indices.level),
              d = look_up(table.bytes[3], indices.level);
  const Words ab_low = (Words)interleave_low(a, b), ab_high = (Words)interleave_high(a, b);
  const Words cd_low = (Words)interleave_low(c, d), cd_high = (Words)interleave_high(c, d);
  const Words found[4] = {interleave_low(ab_low, cd_low), interleave_high(ab_low, cd_low),
                          interleave_low(ab_high, cd_high), interleave_high(ab_high, cd_high)};
  FoundFloats r;
  for (int32_t k = 0; k < 4; ++k)
    r.v[k] = (Floats)_mm512_mask_mov_ps((F)found[k], indices.beyond[k], (F)table.last);
  return r;
}
// Four 8-byte loads. Broadcasts and blends leave the shuffle units alone.
static __m256i load_4_pairs(const uint8_t* a, const uint8_t* b, const uint8_t* c,
                            const uint8_t* d) {
  const auto in_all = [](const uint8_t* p) { return _mm256_set1_epi64x(load<int64_t>(p)); };
  const __m256i low = _mm256_blend_epi32(in_all(a), in_all(b), 0x0c),
                high = _mm256_blend_epi32(in_all(c), in_all(d), 0xc0);
  return _mm256_blend_epi32(low, high, 0xf0);
}
static inline Bytes two_rows(const uint8_t* upper, const uint8_t* lower, const int32_t* offsets) {
  const auto eight_bytes = [](const uint8_t* p) { return _mm_loadl_epi64((const __m128i*)p); };
  I pairs = _mm512_broadcastq_epi64(eight_bytes(upper + offsets[0]));
  pairs = _mm512_mask_broadcastq_epi64(pairs, 0x02, eight_bytes(lower + offsets[0]));
  pairs = _mm512_mask_broadcastq_epi64(pairs, 0x04, eight_bytes(upper + offsets[4]));
  pairs = _mm512_mask_broadcastq_epi64(pairs, 0x08, eight_bytes(lower + offsets[4]));
  pairs = _mm512_mask_broadcastq_epi64(pairs, 0x10, eight_bytes(upper + offsets[8]));
  pairs = _mm512_mask_broadcastq_epi64(pairs, 0x20, eight_bytes(lower + offsets[8]));
  pairs = _mm512_mask_broadcastq_epi64(pairs, 0x40, eight_bytes(upper + offsets[12]));
  return (Bytes)_mm512_mask_broadcastq_epi64(pairs, 0x80, eight_bytes(lower + offsets[12]));
}
static inline Corners corners_side_by_side(const uint8_t* upper, ptrdiff_t stride) {
  const uint8_t* lower = upper + stride;
  constexpr __mmask64 kPixels = (uint64_t{1} << 51) - 1;  // seventeen
  const I above = _mm512_maskz_loadu_epi8(kPixels, upper),
          below = _mm512_maskz_loadu_epi8(kPixels, lower);
  // Bytes of the lower row have the numbers 64 and up.
  const I first = _mm512_add_epi8(
      _mm512_broadcast_i32x4(_mm_setr_epi8(0, 64, 3, 67, 1, 65, 4, 68, 2, 66, 5, 69, 0, 0, 0, 0)),
      _mm512_setr_epi64(0, 0, 0x0c0c0c0c0c0c0c0c, 0x0c0c0c0c0c0c0c0c, 0x1818181818181818,
                        0x1818181818181818, 0x2424242424242424, 0x2424242424242424));
  Corners corners;
  for (int k = 0; k < 4; ++k)
    corners.pixel[k] = (Bytes)_mm512_permutex2var_epi8(
        above, _mm512_add_epi8(first, _mm512_set1_epi8(static_cast<char>(3 * k))), below);
  return corners;
}
static inline Bytes half_of_pairs(const uint8_t* p, const int32_t* offsets, int32_t h) {
  const int32_t* o = offsets + 8 * h;
  return (Bytes)_mm512_inserti64x4(
      _mm512_castsi256_si512(load_4_pairs(p + o[0], p + o[1], p + o[2], p + o[3])),
      load_4_pairs(p + o[4], p + o[5], p + o[6], p + o[7]), 1);
}
static inline PixelPairs bytes_of_pairs(Bytes a, Bytes b) {
  const auto byte = [&](int k) {
    const I starts =
        _mm512_setr_epi32(0, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120);
    return (Dwords)_mm512_maskz_permutex2var_epi8(
        0x1111111111111111, (I)a, _mm512_add_epi32(starts, _mm512_set1_epi32(k)), (I)b);
  };
  return {byte(2), byte(3), byte(4), byte(5), byte(6), byte(7)};
}
static Floats fused(Floats a, Floats b, Floats c) {
  return (Floats)_mm512_fmadd_ps((F)a, (F)b, (F)c);
}
#include "rows/simd/mixes_fused.inl"

static inline void store_mixes(uint8_t* dst, Bytes mixed) {
  _mm512_mask_storeu_epi32(dst, 0x0fff,
                           _mm512_permutexvar_epi8(order(byte_orders.mixes), (I)mixed));
}
static void store_mixes_and_4_bytes(uint8_t* dst, Bytes v) { store_mixes(dst, v); }
// Rows r and r + 4 of a tile: eight pixels each, four in blocks 0 and 1 and four in blocks 2 and 3.
struct TileRows {
  I both;
};
static inline TileRows rows_of_tile(Dwords v, Dwords) {
  alignas(64) static constexpr uint8_t kOrder[64] = {
      0,  1,  2,  4,  5,  6,  8,  9,  10, 12, 13, 14, 32, 33, 34, 36, 37, 38, 40, 41, 42, 44,
      45, 46, 0,  0,  0,  0,  0,  0,  0,  0,  16, 17, 18, 20, 21, 22, 24, 25, 26, 28, 29, 30,
      48, 49, 50, 52, 53, 54, 56, 57, 58, 60, 61, 62, 0,  0,  0,  0,  0,  0,  0,  0};
  return {_mm512_permutexvar_epi8(_mm512_load_si512(kOrder), (I)v)};
}
static void store_row(uint8_t* dst, const TileRows& rows, int32_t k) {
  _mm256_mask_storeu_epi32(
      dst, 0x3f,
      k == 0 ? _mm512_castsi512_si256(rows.both) : _mm512_extracti64x4_epi64(rows.both, 1));
}

// A column of 32 lanes: half a vector of bytes, a vector of words, two of dwords.
constexpr int32_t kLaneWords = 1;
struct LaneWords {
  Words part[1];
};
// in - out of the bytes of a column.
static LaneWords lane_differences(const uint8_t* in, const uint8_t* out) {
  const I change = _mm512_sub_epi16(_mm512_cvtepu8_epi16(_mm256_loadu_si256((const __m256i*)in)),
                                    _mm512_cvtepu8_epi16(_mm256_loadu_si256((const __m256i*)out)));
  return {{(Words)_mm512_shuffle_i64x2(change, change, 0xd8)}};
}
static DwordPair load_lanes(const uint32_t* p, int32_t, InOrder) {
  return {load<Dwords>(p), load<Dwords>(p + 16)};
}
static void store_lanes(uint32_t* p, int32_t, DwordPair v, InOrder) {
  store(p, v.first), store(p + 16, v.second);
}
static DwordPair load_lanes(const uint32_t* p, int32_t, Interleaved) {
  const I even = _mm512_setr_epi64(0, 1, 4, 5, 8, 9, 12, 13),
          odd = _mm512_setr_epi64(2, 3, 6, 7, 10, 11, 14, 15);
  const I low = _mm512_loadu_si512(p), high = _mm512_loadu_si512(p + 16);
  return {(Dwords)_mm512_permutex2var_epi64(low, even, high),
          (Dwords)_mm512_permutex2var_epi64(low, odd, high)};
}
// Whole vectors: smaller stores would delay the next load.
static void store_lanes(uint32_t* p, int32_t, DwordPair v, Interleaved) {
  const I low = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11),
          high = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
  store(p, _mm512_permutex2var_epi64((I)v.first, low, (I)v.second));
  store(p + 16, _mm512_permutex2var_epi64((I)v.first, high, (I)v.second));
}
// For each byte of a column the top byte of its dword.
struct TopBytes {
  alignas(64) uint8_t interleaved[64], in_order[64];
  constexpr TopBytes() : interleaved(), in_order() {
    for (int i = 0; i < 32; ++i) {
      const int lane = (i & 7) | (i & 8) << 1 | (i & 16) >> 1;
      interleaved[i] =
          static_cast<uint8_t>(64 * (lane / 4 % 2) + 4 * (4 * (lane / 8) + lane % 4) + 3);
      in_order[i] = static_cast<uint8_t>(4 * lane + 3);
    }
  }
};
static constexpr TopBytes top_byte_orders;
static const uint8_t* top_bytes_of(Interleaved) { return top_byte_orders.interleaved; }
static const uint8_t* top_bytes_of(InOrder) { return top_byte_orders.in_order; }
template <class F, class Order>
static void store_top_bytes(uint8_t* dst, const F& pairs, Order order) {
  const DwordPair v = pairs(0);
  const I bytes =
      _mm512_permutex2var_epi8((I)v.first, _mm512_load_si512(top_bytes_of(order)), (I)v.second);
  _mm256_storeu_si256((__m256i*)dst, _mm512_castsi512_si256(bytes));
}

#include "rows/simd/vocabulary.inl"
