// What the sets share whose masks are vectors of all ones and zeros.
using ByteMask = decltype(Bytes{} == all_bytes(1));
using WordMask = decltype(Words{} == all_words(1));
using FloatMask = decltype(Floats{} == all_floats(1));
template <class V>
static inline auto equal(V a, V b) {
  return a == b;
}
template <class V>
static inline auto at_most(V a, V b) {
  return a <= b;
}
template <class V>
static inline auto greater(V a, V b) {
  return a > b;
}
static ByteMask mask_of(Bytes all_ones_or_zero) { return (ByteMask)all_ones_or_zero; }
static bool any(ByteMask m);
static bool any(FloatMask m) { return any((ByteMask)m); }
static bool all(ByteMask m) { return !any(~m); }
static bool all(FloatMask m) { return !any(~m); }
