// What the sets share whose masks are vectors of all ones and zeros.
using ByteMask = Bytes;
using WordMask = SignedWords;
using FloatMask = SignedDwords;
static ByteMask mask_of(Bytes all_ones_or_zero) { return all_ones_or_zero; }
static Bytes select(ByteMask where, Bytes a, Bytes b);
static Bytes select_bytes(Bytes where, Bytes a, Bytes b) { return select(where, a, b); }
static Bytes increment(ByteMask where, Bytes a) { return a - where; }
static Words only(WordMask where, Words a) { return a & (Words)where; }

static inline Bytes load_few(const uint8_t* p, ptrdiff_t count) {
  Bytes v = {};
  __builtin_memcpy(&v, p, static_cast<size_t>(count));
  return v;
}
static inline void store_few(uint8_t* p, Bytes v, ptrdiff_t count) {
  __builtin_memcpy(p, &v, static_cast<size_t>(count));
}
