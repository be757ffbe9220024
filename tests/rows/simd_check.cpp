// Every function of one set of vectors against a plain loop over its lanes. Compiled once for each
// set, with its flags, so nothing of the standard library is included: an inline function compiled
// here could be linked into the whole program. ROXE_SET is "rows/simd/<set>.inl", ROXE_CHECK the
// name of the function that is defined here.
#include "rows/simd/intrinsics.h"

#include "frame/numbers.h"
#include "rows/rows.h"

namespace roxe {
namespace {

#include ROXE_SET

constexpr int32_t kRounds = 300;

using Fault = void (*)(const char* function, int32_t lane);

class Check {
 public:
  explicit Check(Fault fault) : fault_(fault) {}

  void run() {
    for (int32_t round = 0; round < kRounds; ++round) {
      within_blocks();
      arithmetic();
      comparisons();
      conversions();
      tables();
      pixels();
      sampling();
      lanes();
    }
  }

 private:
  Fault fault_;
  uint32_t state_ = 12345;

  uint32_t random() {
    state_ = state_ * 1664525 + 1013904223;
    return state_ >> 8 ^ state_ << 16;
  }
  int32_t below(int32_t n) { return static_cast<int32_t>(random() % static_cast<uint32_t>(n)); }

  // Random lanes; every fourth has an extreme value.
  template <class V>
  V some() {
    uint8_t bytes[sizeof(V)];
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    for (int32_t i = 0; i < kBytes; i += 4) {
      const uint32_t extremes[] = {0, 0x80008000, 0x7fff7fff, 0xffffffff, 0x00010001, 0x80000000};
      if (below(4) == 0) __builtin_memcpy(bytes + i, &extremes[below(6)], 4);
    }
    return load<V>(bytes);
  }
  Floats some_floats(float low, float high) {
    Floats v;
    for (int32_t i = 0; i < kDwords; ++i)
      v[i] = low + (high - low) * (static_cast<float>(below(1 << 24)) / (1 << 24));
    return v;
  }

  // expected(i) is lane i.
  template <class V, class F>
  void expect(const char* function, V got, const F& expected) {
    using Lane = decltype(got[0] + 0);
    const int32_t count = static_cast<int32_t>(sizeof got / sizeof got[0]);
    for (int32_t i = 0; i < count; ++i)
      if (static_cast<Lane>(got[i]) != static_cast<Lane>(expected(i))) fault_(function, i);
  }
  template <class T, class F>
  void expect_array(const char* function, const T* got, int32_t count, const F& expected) {
    for (int32_t i = 0; i < count; ++i)
      if (got[i] != expected(i)) fault_(function, i);
  }
  void expect_true(const char* function, bool is_true) {
    if (!is_true) fault_(function, 0);
  }

  template <class V>
  void interleaving(const char* function, V low, V high, V a, V b) {
    const int32_t per_block = 16 / static_cast<int32_t>(sizeof a[0]);
    const auto at = [&](int32_t i, int32_t first) {
      const int32_t from = i / per_block * per_block + i % per_block / 2 + first;
      return i % 2 == 0 ? a[from] : b[from];
    };
    expect(function, low, [&](int32_t i) { return at(i, 0); });
    expect(function, high, [&](int32_t i) { return at(i, per_block / 2); });
  }

  // Lane i of packing a and b, before it is narrowed.
  template <class V>
  static int32_t packed_from(V a, V b, int32_t i) {
    const int32_t half = 16 / static_cast<int32_t>(sizeof a[0]);
    const int32_t at = i / (2 * half) * half + i % half;
    return static_cast<int32_t>(i % (2 * half) < half ? a[at] : b[at]);
  }

  void within_blocks() {
    const Bytes a = some<Bytes>(), b = some<Bytes>();
    interleaving("interleave bytes", interleave_low(a, b), interleave_high(a, b), a, b);
    const Words aw = (Words)a, bw = (Words)b;
    interleaving("interleave words", interleave_low(aw, bw), interleave_high(aw, bw), aw, bw);
    const Dwords ad = (Dwords)a, bd = (Dwords)b;
    interleaving("interleave dwords", interleave_low(ad, bd), interleave_high(ad, bd), ad, bd);
    const Qwords aq = (Qwords)a, bq = (Qwords)b;
    interleaving("interleave qwords", interleave_low(aq, bq), interleave_high(aq, bq), aq, bq);
    expect("even_and_odd", even_and_odd(aw, bw), [&](int32_t i) { return (i % 2 ? bw : aw)[i]; });
    const auto difference = [&](int32_t i, int32_t first) {
      const int32_t from = i / 8 * 16 + i % 8 + first;
      return static_cast<uint16_t>(a[from] - b[from]);
    };
    expect("low_differences", low_differences(a, b), [&](int32_t i) { return difference(i, 0); });
    expect("high_differences", high_differences(a, b), [&](int32_t i) { return difference(i, 8); });

    const SignedWords as = (SignedWords)a, bs = (SignedWords)b;
    expect("pack words", pack(aw, bw),
           [&](int32_t i) { return clamp(packed_from(as, bs, i), 0, 255); });
    const SignedDwords ai = (SignedDwords)a >> below(16), bi = (SignedDwords)b >> below(16);
    expect("pack dwords", pack(ai, bi),
           [&](int32_t i) { return clamp(packed_from(ai, bi, i), 0, 65535); });
    expect("pack_signed", (SignedWords)pack_signed(ai, bi),
           [&](int32_t i) { return clamp(packed_from(ai, bi, i), -32768, 32767); });

    Bytes index = a & 15;
    for (int32_t i = 0; i < kBytes; ++i)
      if (b[i] & 1) index[i] |= 128;
    expect("shuffle", shuffle(b, index),
           [&](int32_t i) { return index[i] < 16 ? b[i / 16 * 16 + index[i]] : 0; });
    expect("shuffle_or_zero", shuffle_or_zero(b, a),
           [&](int32_t i) { return a[i] < 16 ? b[i / 16 * 16 + a[i]] : 0; });
    expect("spread", spread<2>(ad), [&](int32_t i) { return ad[i / 4 * 4 + 2]; });

    uint8_t memory[4 * 64 + 16], copy[sizeof memory];
    for (uint8_t& byte : memory) byte = static_cast<uint8_t>(random());
    expect("in_all_blocks", in_all_blocks(memory + 3),
           [&](int32_t i) { return memory[3 + i % 16]; });
    const ptrdiff_t step = 16 + below(48);
    const Bytes blocks = load_blocks(memory, step);
    expect("load_blocks", blocks, [&](int32_t i) { return memory[i / 16 * step + i % 16]; });
    __builtin_memset(copy, 0, sizeof copy);
    store_blocks(copy, step, blocks);
    for (int32_t i = 0; i < kBytes; ++i)
      expect_true("store_blocks", copy[i / 16 * step + i % 16] == blocks[i]);
    const Block last = block<kBlocks - 1>(a);
    for (int32_t i = 0; i < 16; ++i) expect_true("block", last[i] == a[kBytes - 16 + i]);
  }

  void arithmetic() {
    const Bytes a = some<Bytes>(), b = some<Bytes>();
    expect("min bytes", min(a, b), [&](int32_t i) { return a[i] < b[i] ? a[i] : b[i]; });
    expect("max bytes", max(a, b), [&](int32_t i) { return a[i] > b[i] ? a[i] : b[i]; });
    expect("add_saturating bytes", add_saturating(a, b),
           [&](int32_t i) { return clamp(a[i] + b[i], 0, 255); });
    expect("subtract_saturating", subtract_saturating(a, b),
           [&](int32_t i) { return clamp(a[i] - b[i], 0, 255); });
    const Words aw = (Words)a, bw = (Words)b;
    expect("min words", min(aw, bw), [&](int32_t i) { return aw[i] < bw[i] ? aw[i] : bw[i]; });
    expect("max words", max(aw, bw), [&](int32_t i) { return aw[i] > bw[i] ? aw[i] : bw[i]; });
    expect("mul_high words", mul_high(aw, bw),
           [&](int32_t i) { return uint32_t{aw[i]} * uint32_t{bw[i]} >> 16; });
    const SignedWords as = (SignedWords)a, bs = (SignedWords)b;
    expect("min signed", min(as, bs), [&](int32_t i) { return as[i] < bs[i] ? as[i] : bs[i]; });
    expect("max signed", max(as, bs), [&](int32_t i) { return as[i] > bs[i] ? as[i] : bs[i]; });
    expect("add_saturating words", add_saturating(as, bs),
           [&](int32_t i) { return clamp(as[i] + bs[i], -32768, 32767); });
    const SignedWords negatable = max(as, (SignedWords)all_words(-32767));
    expect("magnitude", magnitude(negatable),
           [&](int32_t i) { return negatable[i] < 0 ? -negatable[i] : negatable[i]; });
    expect("mul_high signed", mul_high(as, bs), [&](int32_t i) { return as[i] * bs[i] >> 16; });
    expect("pair_sums", pair_sums(aw, bw), [&](int32_t i) {
      return static_cast<uint32_t>(as[2 * i] * bs[2 * i]) +
             static_cast<uint32_t>(as[2 * i + 1] * bs[2 * i + 1]);
    });
    const Bytes small = b & all_bytes(0x8f);  // -128 ... -113, 0 ... 15
    expect("byte_pair_sums", byte_pair_sums(a & all_bytes(127), small), [&](int32_t i) {
      const auto product = [&](int32_t k) { return (a[k] & 127) * static_cast<int8_t>(small[k]); };
      return static_cast<uint16_t>(product(2 * i) + product(2 * i + 1));
    });
    const Dwords ad = (Dwords)a, bd = (Dwords)b;
    expect("max dwords", max(ad, bd), [&](int32_t i) { return ad[i] > bd[i] ? ad[i] : bd[i]; });
    Dwords above = bd;
    expect_true("any_above", !any_above(above, bd));
    const int32_t lane = below(kDwords);
    above[lane] = ad[lane];
    expect_true("any_above", any_above(above, bd) == (ad[lane] > bd[lane]));
    const Floats x = some_floats(-700, 700), y = some_floats(-700, 700);
    expect("min floats", min(x, y), [&](int32_t i) { return x[i] < y[i] ? x[i] : y[i]; });
    expect("max floats", max(x, y), [&](int32_t i) { return x[i] > y[i] ? x[i] : y[i]; });
    expect("floor", floor(x), [&](int32_t i) { return __builtin_floorf(x[i]); });
    const Floats whole = floor(x);
    expect("floor", floor(whole), [&](int32_t i) { return whole[i]; });
  }

  void comparisons() {
    const Bytes a = some<Bytes>();
    Bytes b = some<Bytes>();
    for (int32_t i = 0; i < kBytes; i += 2)
      if (below(2)) b[i] = a[i], b[i + 1] = a[i + 1];
    const Bytes yes = all_bytes(255);
    expect("equal bytes", select(equal(a, b), yes, Bytes{}),
           [&](int32_t i) { return a[i] == b[i] ? 255 : 0; });
    expect("at_most bytes", select(at_most(a, b), yes, Bytes{}),
           [&](int32_t i) { return a[i] <= b[i] ? 255 : 0; });
    expect("select bytes", select(at_most(a, b), a, b),
           [&](int32_t i) { return a[i] <= b[i] ? a[i] : b[i]; });
    expect("without", select(without(at_most(a, b), equal(a, b)), yes, Bytes{}),
           [&](int32_t i) { return a[i] < b[i] ? 255 : 0; });
    const Words aw = (Words)a, bw = (Words)b;
    const SignedWords as = (SignedWords)a, bs = (SignedWords)b;
    expect("equal words", select(equal(aw, bw), aw, Words{}),
           [&](int32_t i) { return aw[i] == bw[i] ? aw[i] : 0; });
    expect("at_most words", select(at_most(aw, bw), aw, bw),
           [&](int32_t i) { return aw[i] <= bw[i] ? aw[i] : bw[i]; });
    expect("greater words", select(greater(as, bs), aw, Words{}),
           [&](int32_t i) { return as[i] > bs[i] ? aw[i] : 0; });
    const Bytes truth = select(at_most(a, b), yes, Bytes{});
    expect("mask_of", select(mask_of(truth), a, b),
           [&](int32_t i) { return truth[i] ? a[i] : b[i]; });
    Bytes hardly = {};
    expect_true("any bytes", !any(mask_of(hardly)));
    hardly[below(kBytes)] = 255;
    expect_true("any bytes", any(mask_of(hardly)));
    Bytes nearly = yes;
    expect_true("all", all(mask_of(nearly)));
    nearly[below(kBytes)] = 0;
    expect_true("all", !all(mask_of(nearly)));

    const float values[] = {0.0f, -0.0f, 1.0f, -3.5f, 1e30f, __builtin_inff(), __builtin_nanf("")};
    const float u = values[below(7)], v = values[below(7)];
    Floats x = {}, y = {};
    expect_true("equal floats", any(equal(x, y)));
    expect_true("greater floats", !any(greater(x, y)));
    expect_true("at_most floats", all(at_most(x, y)));
    const int32_t lane = below(kDwords);
    x[lane] = u, y[lane] = v;
    expect_true("greater floats", any(greater(x, y)) == (u > v));
    expect_true("at_most floats", all(at_most(x, y)) == (u <= v));
    Floats ones = all_floats(1);
    ones[lane] = u;
    Floats twos = all_floats(2);
    twos[lane] = v;
    expect_true("equal floats", any(equal(ones, twos)) == (u == v));
  }

  void conversions() {
    const SignedDwords a = (SignedDwords)some<Dwords>();
    expect("to_floats", to_floats(a), [&](int32_t i) { return static_cast<float>(a[i]); });
    const Floats x = some_floats(-500, 500);
    expect("truncate", truncate(x), [&](int32_t i) { return truncate_to_int32(x[i]); });
    const Floats small = some_floats(0, 8388607);
    expect("truncate_small", truncate_small(small),
           [&](int32_t i) { return truncate_to_int32(small[i]); });
    Floats halves = x;
    for (int32_t i = 0; i < kDwords; ++i)
      if (below(2)) halves[i] = static_cast<float>(below(8388608) - 4194304) * 0.5f;
    expect("rounded", rounded(halves),
           [&](int32_t i) { return truncate_to_int32(__builtin_rintf(halves[i])); });
    const Doubles first = first_doubles(x), last = last_doubles(x);
    expect("first_doubles", first, [&](int32_t i) { return static_cast<double>(x[i]); });
    expect("last_doubles", last,
           [&](int32_t i) { return static_cast<double>(x[kDwords / 2 + i]); });
    const Doubles third = first / 3.0, seventh = last / 7.0;
    expect("to_floats of doubles", to_floats(third, seventh), [&](int32_t i) {
      return static_cast<float>(i < kDwords / 2 ? third[i] : seventh[i - kDwords / 2]);
    });
    const SignedWords words = (SignedWords)some<Words>();
    expect("widen_first", widen_first(words), [&](int32_t i) { return words[i]; });
    expect("widen_last", widen_last(words), [&](int32_t i) { return words[kDwords + i]; });
    SignedDwords parts[4];
    for (SignedDwords& part : parts)
      part = (SignedDwords)((Dwords)(SignedDwords)some<Dwords>() & 255);
    expect("in_order",
           in_order(pack(pack_signed(parts[0], parts[1]), pack_signed(parts[2], parts[3]))),
           [&](int32_t i) { return parts[i / kDwords][i % kDwords]; });
    uint32_t count[kDwords];
    store(count, numbers());
    for (int32_t i = 0; i < kDwords; ++i)
      expect_true("numbers", count[i] == static_cast<uint32_t>(i));
    float memory[64] = {};
    const int32_t few = below(kDwords + 1);
    store_first(memory, x, few);
    for (int32_t i = 0; i < kDwords; ++i)
      expect_true("store_first", memory[i] == (i < few ? x[i] : 0.0f));
  }

  void tables() {
    const Bytes index = some<Bytes>();
    const Threefold three = threefold(index);
    for (int32_t k = 0; k < 3; ++k)
      expect("threefold", three.part[k], [&](int32_t i) { return index[(k * kBytes + i) / 3]; });

    uint8_t table[256];
    for (uint8_t& entry : table) entry = static_cast<uint8_t>(random());
    expect("byte_table", look_up(byte_table(table), index),
           [&](int32_t i) { return table[index[i]]; });
    const Bytes low_index = index & all_bytes(127);
    expect("half_table", look_up(half_table(table), low_index),
           [&](int32_t i) { return table[low_index[i]]; });
    const int32_t few = below(kBytes);
    expect("load_few", load_few(table, few), [&](int32_t i) { return i < few ? table[i] : 0; });
    uint8_t stored[kBytes];
    store(stored, all_bytes(77));
    store_few(stored, index, few);
    expect("store_few", load<Bytes>(stored), [&](int32_t i) { return i < few ? index[i] : 77; });
    const int32_t entries = 1 + below(256);
    for (int32_t i = entries; i < 256; ++i) table[i] = 0;
    expect("short_table", look_up(short_table(table, entries), index),
           [&](int32_t i) { return table[index[i]]; });

    float floats[512];
    for (float& entry : floats) entry = static_cast<float>(below(1 << 20)) / 1024;
    const int32_t float_entries = below(2) ? 256 : 512;
    for (int32_t i = 257; i < 512; ++i) floats[i] = floats[256];
    int32_t levels[4 * kDwords];
    for (int32_t& level : levels) level = below(float_entries);
    Indices indices;
    keep(indices, [&](int32_t k) { return load<SignedDwords>(levels + k); });
    const FloatTable float_of = float_table(floats, float_entries);
    const auto found = look_up(float_of, indices);
    for (int32_t k = 0; k < 4 * kDwords; k += kDwords)
      expect("float_table", found.at(k), [&](int32_t i) { return floats[levels[k + i]]; });

    uint32_t dwords[361];
    for (uint32_t& entry : dwords) entry = random();
    uint16_t index_of[kDwords];
    for (uint16_t& at : index_of) at = static_cast<uint16_t>(below(361));
    expect("entries_at", entries_at([&](int32_t i) { return dwords + index_of[i]; }),
           [&](int32_t i) { return dwords[index_of[i]]; });
  }

  void pixels() {
    uint8_t bgr[3 * kBytes], copy[3 * kBytes + 1];
    for (uint8_t& byte : bgr) byte = static_cast<uint8_t>(random());
    const Planes planes = load_planes(bgr);
    expect("load_planes", planes.blue, [&](int32_t i) { return bgr[3 * i]; });
    expect("load_planes", planes.green, [&](int32_t i) { return bgr[3 * i + 1]; });
    expect("load_planes", planes.red, [&](int32_t i) { return bgr[3 * i + 2]; });
    store_planes(copy, planes);
    expect_array("store_planes", copy, 3 * kBytes, [&](int32_t i) { return bgr[i]; });

    Dwords matrix[4], transposed[4];
    for (int32_t r = 0; r < 4; ++r) matrix[r] = transposed[r] = some<Dwords>();
    transpose_blocks(transposed);
    for (int32_t r = 0; r < 4; ++r)
      expect("transpose_blocks", transposed[r],
             [&](int32_t i) { return matrix[i % 4][i / 4 * 4 + r]; });
    pixel_floats<kBytes>();
  }

  // Vectors of four blocks have no such function.
  template <int32_t bytes>
  void pixel_floats() {
    if constexpr (bytes <= 32) {
      uint8_t bgr[3 * bytes];
      for (uint8_t& byte : bgr) byte = static_cast<uint8_t>(random());
      const PixelFloats p = load_pixels(bgr);
      expect("load_pixels", p.blue, [&](int32_t i) { return static_cast<float>(bgr[3 * i]); });
      expect("load_pixels", p.green, [&](int32_t i) { return static_cast<float>(bgr[3 * i + 1]); });
      expect("load_pixels", p.red, [&](int32_t i) { return static_cast<float>(bgr[3 * i + 2]); });
    }
  }

  void sampling() {
    // Two rows of 96 bytes, 160 apart; pixels lie anywhere in them from byte 2 on.
    uint8_t memory[300];
    for (uint8_t& byte : memory) byte = static_cast<uint8_t>(random());
    const ptrdiff_t stride = 160;
    int32_t offsets[kDwords + 8];
    for (int32_t& offset : offsets) offset = below(80);
    const Dwords x = some<Dwords>(), y = some<Dwords>();
    const CornerWeights weights = weights_of(x, y);
    const auto mixed = [&](const uint8_t* p, int32_t pixel, int32_t c) {
      const uint32_t wx = x[pixel] >> 8 & 255, wy = y[pixel] >> 8 & 255;
      const uint8_t* q = p + stride;
      return static_cast<uint8_t>(((256 - wx) * (256 - wy) * p[c] + wx * (256 - wy) * p[c + 3] +
                                   (256 - wx) * wy * q[c] + wx * wy * q[c + 3]) >>
                                  16);
    };
    const auto mixes_of = [&](const Corners& corners) {
      return bytes_of_mixes(
          mix_corners<0>(corners.pixel[0], weights), mix_corners<1>(corners.pixel[1], weights),
          mix_corners<2>(corners.pixel[2], weights), mix_corners<3>(corners.pixel[3], weights));
    };
    Corners apart;
    for (int32_t k = 0; k < 4; ++k)
      apart.pixel[k] = shuffle(two_rows(memory, memory + stride, offsets + k), corner_order());
    uint8_t dst[3 * kDwords + 5];
    dst[3 * kDwords] = dst[3 * kDwords + 4] = 77;
    store_mixes(dst, mixes_of(apart));
    const auto expected = [&](int32_t i) {
      return mixed(memory + 2 + offsets[i / 3], i / 3, i % 3);
    };
    expect_array("mix_corners", dst, 3 * kDwords, expected);
    expect_true("store_mixes", dst[3 * kDwords] == 77);
    __builtin_memset(dst, 0, 3 * kDwords);
    store_mixes_and_4_bytes(dst, mixes_of(apart));
    expect_array("store_mixes_and_4_bytes", dst, 3 * kDwords, expected);
    expect_true("store_mixes_and_4_bytes", dst[3 * kDwords + 4] == 77);
    if constexpr (kBlocks > 1) {
      const int32_t start = 1 + below(20);
      store_mixes(dst, mixes_of(corners_side_by_side(memory + start, stride)));
      expect_array("corners_side_by_side", dst, 3 * kDwords,
                   [&](int32_t i) { return mixed(memory + start + i / 3 * 3, i / 3, i % 3); });
    }

    const PixelPairs pairs =
        bytes_of_pairs(half_of_pairs(memory, offsets, 0), half_of_pairs(memory, offsets, 1));
    const Dwords bytes[6] = {pairs.blue,      pairs.green,      pairs.red,
                             pairs.next_blue, pairs.next_green, pairs.next_red};
    for (int32_t c = 0; c < 6; ++c)
      expect("bytes_of_pairs", bytes[c], [&](int32_t i) { return memory[offsets[i] + 2 + c]; });

    // A fraction of a position of at least 1 is a multiple of 2^-23, most often a coarser one.
    Floats tx, ty;
    for (int32_t i = 0; i < kDwords; ++i) {
      tx[i] = static_cast<float>(below(1 << 23) & -1 << below(23)) / (1 << 23);
      ty[i] = static_cast<float>(below(1 << 23) & -1 << below(23)) / (1 << 23);
    }
    const auto mixed_float = [&](int32_t i, Dwords a, Dwords b) {
      return roxe::fused(tx[i], static_cast<float>(b[i]) - static_cast<float>(a[i]),
                         static_cast<float>(a[i]));
    };
    const Floats top = mix_bytes(bytes[0], bytes[1], tx),
                 bottom = mix_bytes(bytes[2], bytes[3], tx);
    for (int32_t i = 0; i < kDwords; ++i) {
      const float exact = mixed_float(i, bytes[0], bytes[1]);
      if (top[i] != exact && top[i] != exact * 8388608.0f) fault_("mix_bytes", i);
    }
    expect("mix_to_bytes", mix_to_bytes(top, bottom, ty), [&](int32_t i) {
      const float a = mixed_float(i, bytes[0], bytes[1]), b = mixed_float(i, bytes[2], bytes[3]);
      return truncate_to_int32(roxe::fused(ty[i], b - a, a));
    });
    const float weight = below(2) ? 0.299f : 0.114f;
    Floats byte, rest;
    for (int32_t i = 0; i < kDwords; ++i) {
      byte[i] = static_cast<float>(below(256));
      rest[i] = 0.587f * static_cast<float>(below(256));
    }
    expect("fused_with_byte", fused_with_byte(weight, byte, rest),
           [&](int32_t i) { return roxe::fused(weight, byte[i], rest[i]); });

    Dwords tile[kTileVectors];
    for (Dwords& v : tile) v = some<Dwords>();
    const TileRows rows = rows_of_tile(tile);
    for (int32_t r = 0; r < kTileRows; ++r) {
      uint8_t row[25];
      row[24] = 77;
      store_row(row, rows, r);
      expect_array("store_row", row, 24, [&](int32_t i) {
        const int32_t column = i / 3, half = column / kTileVectors;
        const uint32_t pixel = tile[column % kTileVectors][half * kTileRows + r];
        return static_cast<uint8_t>(pixel >> 8 * (i % 3));
      });
      expect_true("store_row", row[24] == 77);
    }
  }

  // Lane k of a pair of dwords in one of the two orders.
  static int32_t lane_of(int32_t pair, bool second, int32_t i, InOrder) {
    return pair * kWords + (second ? kDwords : 0) + i;
  }
  static int32_t lane_of(int32_t pair, bool second, int32_t i, Interleaved) {
    return pair * kWords + i / 4 * 8 + (second ? 4 : 0) + i % 4;
  }

  template <class Order>
  void lane_dwords(const char* load, const char* store, const char* top, Order order) {
    uint32_t memory[kLanes], copy[kLanes];
    for (uint32_t& lane : memory) lane = random();
    DwordPair pairs[kLaneWords];
    for (int32_t pair = 0; pair < kLaneWords; ++pair) {
      pairs[pair] = load_lanes(memory, pair, order);
      // Blocks of two-block vectors lie 32 bytes apart, so that a pair covers a vector of words.
      expect(load, pairs[pair].first,
             [&](int32_t i) { return memory[lane_of(pair, false, i, order)]; });
      expect(load, pairs[pair].second,
             [&](int32_t i) { return memory[lane_of(pair, true, i, order)]; });
      store_lanes(copy, pair, pairs[pair], order);
    }
    expect_array(store, copy, kLanes, [&](int32_t i) { return memory[i]; });
    uint8_t bytes[kLanes];
    store_top_bytes(
        bytes, [&](int32_t pair) { return pairs[pair]; }, order);
    for (int32_t k = 0; k < kLanes; ++k)
      expect_true(top, bytes[byte_of_lane(k)] == memory[k] >> 24);
  }

  void lanes() {
    uint8_t in[kLanes], out[kLanes];
    for (uint8_t& byte : in) byte = static_cast<uint8_t>(random());
    for (uint8_t& byte : out) byte = static_cast<uint8_t>(random());
    const LaneWords difference = lane_differences(in, out);
    for (int32_t k = 0; k < kLanes; ++k)
      expect_true("lane_differences",
                  static_cast<int16_t>(difference.part[k / kWords][k % kWords]) ==
                      in[byte_of_lane(k)] - out[byte_of_lane(k)]);
    lane_dwords("load_lanes in order", "store_lanes in order", "store_top_bytes in order",
                InOrder{});
    lane_dwords("load_lanes interleaved", "store_lanes interleaved", "store_top_bytes interleaved",
                Interleaved{});
  }
};

}  // namespace

void ROXE_CHECK(Fault fault);
void ROXE_CHECK(Fault fault) { Check(fault).run(); }

}  // namespace roxe
