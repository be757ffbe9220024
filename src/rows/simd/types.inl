// The vectors of one instruction set. The set gives kBytes: 16, 32 or 64.
//
// The law: a vector is made of blocks of sixteen bytes, and interleaving, packing, spreading and
// shuffling work within each block. Packing therefore undoes interleaving at every width, and one
// text serves them all:
//
//   interleave_low  a0 a1 ... a15 | a16 ... a31   with   b0 b1 ... b15 | b16 ... b31
//              gives  a0 b0 a1 b1 ... a7 b7 | a16 b16 ... a23 b23
//
// Operators are the compiler's own: + - * & | ^ ~ << >> lane by lane, wrapping. What compilers make
// good code of from operators and from fixed orders of lanes stands here, once for all sets; the
// rest has names in vocabulary.inl, which each set spells in its intrinsics.

// A set has functions that not every table needs.
#pragma GCC diagnostic ignored "-Wunused-function"

typedef uint8_t Bytes __attribute__((vector_size(kBytes)));
typedef uint16_t Words __attribute__((vector_size(kBytes)));
typedef int16_t SignedWords __attribute__((vector_size(kBytes)));
typedef uint32_t Dwords __attribute__((vector_size(kBytes)));
typedef int32_t SignedDwords __attribute__((vector_size(kBytes)));
typedef uint64_t Qwords __attribute__((vector_size(kBytes)));
typedef float Floats __attribute__((vector_size(kBytes)));
typedef double Doubles __attribute__((vector_size(kBytes)));
typedef uint8_t Block __attribute__((vector_size(16)));

constexpr int32_t kBlocks = kBytes / 16, kWords = kBytes / 2, kDwords = kBytes / 4;

template <class V>
static inline V load(const void* p) {
  V v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
template <class V>
static inline void store(void* p, V v) {
  __builtin_memcpy(p, &v, sizeof v);
}

static inline Bytes all_bytes(int32_t x) { return Bytes{} + static_cast<uint8_t>(x); }
static inline Words all_words(int32_t x) { return Words{} + static_cast<uint16_t>(x); }
static inline Dwords all_dwords(uint32_t x) { return Dwords{} + x; }
static inline Floats all_floats(float x) { return x - Floats{}; }

// 0, 1, 2, ... in the dwords.
static inline Dwords numbers() {
  alignas(64) static constexpr uint32_t kNumbers[16] = {0, 1, 2,  3,  4,  5,  6,  7,
                                                        8, 9, 10, 11, 12, 13, 14, 15};
  return load<Dwords>(kNumbers);
}

// ---- lanes in another order

// Lanes<0, 1, ... count - 1> is LanesUpTo<count>::All.
template <int... i>
struct Lanes {};
template <int count, int... i>
struct LanesUpTo : LanesUpTo<count - 1, count - 1, i...> {};
template <int... i>
struct LanesUpTo<0, i...> {
  using All = Lanes<i...>;
};

// Lane order(i) in lane i; those of b count after those of a. order is called when compiling.
template <class V, class Order, int... i>
static inline V arranged(V a, V b, Order order, Lanes<i...>) {
  return __builtin_shufflevector(a, b, order(i)...);
}
template <class V, class Order>
static inline V arranged(V a, V b, Order order) {
  return arranged(a, b, order, typename LanesUpTo<sizeof a / sizeof a[0]>::All{});
}
template <class V, class Order>
static inline V arranged(V v, Order order) {
  return arranged(v, v, order);
}

// The lanes of the first, or of the last, half of each block of a and b by turns.
template <int half, class V>
static inline V interleave(V a, V b) {
  return arranged(a, b, [](int i) {
    constexpr int kLanesOfBlock = 16 / sizeof(V{}[0]), kOther = sizeof(V) / sizeof(V{}[0]);
    const int block = i / kLanesOfBlock, k = i % kLanesOfBlock;
    return block * kLanesOfBlock + (half * kLanesOfBlock + k) / 2 + k % 2 * kOther;
  });
}
template <class V>
static inline V interleave_low(V a, V b) {
  return interleave<0>(a, b);
}
template <class V>
static inline V interleave_high(V a, V b) {
  return interleave<1>(a, b);
}

// Dword k of each block in all four of that block.
template <int k>
static inline Dwords spread(Dwords v) {
  return arranged(v, [](int i) { return i / 4 * 4 + k; });
}

// The odd words of b, and between them the even ones of a.
static inline Words even_and_odd(Words a, Words b) {
  return arranged(a, b, [](int i) { return i % 2 == 0 ? i : i + kWords; });
}

// Four vectors of dwords, packed to words and those to bytes: the bytes in the order of the dwords.
static inline Bytes in_order(Bytes packed) {
  return (Bytes)arranged((Dwords)packed, [](int i) { return i % kBlocks * 4 + i / kBlocks; });
}

// Each byte three times: of kBytes bytes the bytes of as many pixels.
struct Threefold {
  Bytes part[3];
};
static inline Threefold threefold(Bytes pixels) {
  return {{arranged(pixels, [](int i) { return i / 3; }),
           arranged(pixels, [](int i) { return (kBytes + i) / 3; }),
           arranged(pixels, [](int i) { return (2 * kBytes + i) / 3; })}};
}

// Lane c of block b of vector r becomes lane r of block b of vector c.
static inline void transpose_blocks(Dwords* v) {
  const Qwords a = (Qwords)interleave_low(v[0], v[1]), b = (Qwords)interleave_high(v[0], v[1]);
  const Qwords c = (Qwords)interleave_low(v[2], v[3]), d = (Qwords)interleave_high(v[2], v[3]);
  v[0] = (Dwords)interleave_low(a, c), v[1] = (Dwords)interleave_high(a, c);
  v[2] = (Dwords)interleave_low(b, d), v[3] = (Dwords)interleave_high(b, d);
}

// ---- arithmetic

constexpr float kTwoTo23 = 8388608.0f;  // from here on floats are whole numbers

template <class V>
static inline V min(V a, V b) {
  return a < b ? a : b;
}
template <class V>
static inline V max(V a, V b) {
  return a > b ? a : b;
}
static inline SignedWords magnitude(SignedWords a) { return a < 0 ? -a : a; }  // not of -32768
static inline Floats to_floats(SignedDwords a) { return __builtin_convertvector(a, Floats); }

// The mask a without b. Masks are vectors of all ones and zeros, or bits.
template <class Mask>
static inline Mask without(Mask a, Mask b) {
  return static_cast<Mask>(a & ~b);
}

// ---- memory

// The vector whose block b is block(b).
template <class BlockOf>
static inline Bytes blocks_of(const BlockOf& block);

// Block j from p + j * step.
static inline Bytes load_blocks(const uint8_t* p, ptrdiff_t step) {
  return blocks_of([&](int32_t j) { return load<Block>(p + j * step); });
}

// Eight bytes at a, then eight at b.
static inline Block load_2_pairs(const uint8_t* a, const uint8_t* b);

// The two bytes before a pixel, the pixel and its right neighbour, eight bytes at upper + offset
// and eight at lower + offset, for offsets[0], offsets[4], ...: a block each.
static inline Bytes two_rows(const uint8_t* upper, const uint8_t* lower, const int32_t* offsets) {
  return blocks_of(
      [&](int32_t j) { return load_2_pairs(upper + offsets[4 * j], lower + offsets[4 * j]); });
}

#if defined(__wasm__)
constexpr bool kFetchesAhead = false;  // prefetch does nothing
#else
constexpr bool kFetchesAhead = true;
#endif
static inline void prefetch(const void* p) { __builtin_prefetch(p); }

static inline void store_12_bytes(uint8_t* dst, Block v) {
  typedef uint32_t BlockDwords __attribute__((vector_size(16)));
  __builtin_memcpy(dst, &v, 8);
  const uint32_t last = ((BlockDwords)v)[2];
  __builtin_memcpy(dst + 8, &last, 4);
}

// The four bytes at place(i) in dword i. Of a loop compilers make stores to memory and a load of
// the whole; on x86 that takes up to 7 % less time than to insert each dword (tint,
// shadow/highlight with SSE4.1), but in WebAssembly a mask takes three times as long.
template <class Place>
static inline Dwords entries_at(const Place& place) {
  const auto entry = [&](int32_t i) { return load<uint32_t>(place(i)); };
#if defined(__x86_64__)
  Dwords v = {};
  for (int32_t i = 0; i < kDwords; ++i) v[i] = entry(i);
  return v;
#else
  return Dwords{entry(0), entry(1), entry(2), entry(3)};
#endif
}

// The first count floats, all of them from kDwords on.
static inline void store_first(float* p, Floats v, int32_t count) {
  if (count >= kDwords) return store(p, v);
  for (int32_t i = 0; i < count; ++i) p[i] = v[i];
}

// The first count bytes, fewer than kBytes; zeros beyond.
static inline Bytes load_few(const uint8_t* p, ptrdiff_t count) {
  Bytes v = {};
  __builtin_memcpy(&v, p, static_cast<size_t>(count));
  return v;
}
static inline void store_few(uint8_t* p, Bytes v, ptrdiff_t count) {
  __builtin_memcpy(p, &v, static_cast<size_t>(count));
}

// ---- what the functions of a set take and give

struct Planes {  // kBytes pixels, one channel a vector
  Bytes blue, green, red;
};

struct PixelFloats {  // kDwords neighbouring pixels, one channel a vector
  Floats blue, green, red;
};

// The corners of kDwords pixels that are mixed to one each: pixel[k] holds those of pixels k, k +
// 4, ... in its blocks, in the order that suits the set.
struct Corners {
  Bytes pixel[4];
};

// Their weights, one pixel to a dword, in a form that suits the set.
struct CornerWeights {
  Dwords down, across;
};

// The bytes of kDwords pixels and of their right neighbours, one to a dword.
struct PixelPairs {
  Dwords blue, green, red, next_blue, next_green, next_red;
};

// A tile of pixels in 32 bits. Lane r of vector k is row r of column k; in sixteen lanes there are
// eight rows, of column k and of column k + 4.
constexpr int32_t kTileColumns = 8, kTileRows = kDwords < 8 ? kDwords : 8;
constexpr int32_t kTileVectors = kTileColumns * kTileRows / kDwords;

struct DwordPair {  // for a vector of words
  Dwords first, second;
};

// The order of a column's dwords: that of lanes, or as interleaving its words leaves them.
struct InOrder {};
struct Interleaved {};
