// The vectors of one instruction set. The set gives kBytes: 16, 32 or 64.
//
// The law: a vector is made of blocks of sixteen bytes, and interleaving, packing, spreading and
// shuffling work within each block. Packing therefore undoes interleaving at every width, and one
// text serves them all:
//
//   interleave_low  a0 a1 ... a15 | a16 ... a31   with   b0 b1 ... b15 | b16 ... b31
//              gives  a0 b0 a1 b1 ... a7 b7 | a16 b16 ... a23 b23
//
// Operators are the compiler's own: + - * & | ^ ~ << >> lane by lane, wrapping. Comparisons, choices
// and conversions have names (vocabulary.inl), because compilers make poor code of their operators.

// A set has functions that not every table needs.
#pragma GCC diagnostic ignored "-Wunused-function"

typedef uint8_t Bytes __attribute__((vector_size(kBytes)));
typedef uint16_t Words __attribute__((vector_size(kBytes)));
typedef int16_t SignedWords __attribute__((vector_size(kBytes)));
typedef uint32_t Dwords __attribute__((vector_size(kBytes)));
typedef int32_t SignedDwords __attribute__((vector_size(kBytes)));
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

// Dword k of each block in all four of that block.
template <int k, class V>
static inline V spread(V v) {
  if constexpr (sizeof(V) == 16)
    return __builtin_shufflevector(v, v, k, k, k, k);
  else if constexpr (sizeof(V) == 32)
    return __builtin_shufflevector(v, v, k, k, k, k, k + 4, k + 4, k + 4, k + 4);
  else
    return __builtin_shufflevector(v, v, k, k, k, k, k + 4, k + 4, k + 4, k + 4, k + 8, k + 8,
                                   k + 8, k + 8, k + 12, k + 12, k + 12, k + 12);
}

// The mask a without b, and a or b. Masks are vectors of all ones and zeros, or bits.
template <class Mask>
static inline Mask without(Mask a, Mask b) {
  return static_cast<Mask>(a & ~b);
}
template <class Mask>
static inline Mask either(Mask a, Mask b) {
  return static_cast<Mask>(a | b);
}

static inline void prefetch(const void* p) { __builtin_prefetch(p); }

static inline void store_12_bytes(uint8_t* dst, Block v) {
  typedef uint32_t BlockDwords __attribute__((vector_size(16)));
  __builtin_memcpy(dst, &v, 8);
  const uint32_t last = ((BlockDwords)v)[2];
  __builtin_memcpy(dst + 8, &last, 4);
}

// The first count of the floats, all of them from kDwords on.
static inline void store_first(float* p, Floats v, int32_t count) {
  if (count >= kDwords) return store(p, v);
  for (int32_t i = 0; i < count; ++i) p[i] = v[i];
}

// ---- what the functions of a set take and give

struct Threefold {
  Bytes part[3];
};

struct Planes {  // kBytes pixels, one channel a vector
  Bytes blue, green, red;
};

struct PixelFloats {  // kDwords neighbouring pixels, one channel a vector
  Floats blue, green, red;
};

// The corners of kDwords pixels that are mixed to one each: pixel[k] holds those of pixels k, k + 4,
// ... in its blocks, in the order that suits the set.
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

// A tile is kTileRows rows of eight pixels.
constexpr int32_t kTileRows = kDwords < 8 ? kDwords : 8;

struct DwordPair {  // for a vector of words
  Dwords first, second;
};

// The order of a column's dwords: that of lanes, or as interleaving its words leaves them.
struct InOrder {};
struct Interleaved {};
