// Pairs: what interleaving makes of the low and of the high halves of a vector's blocks. Packing,
// or storing both, ends what is done with each.
template <class T>
struct Pair {
  T low, high;
};

// function(a.low, b.low, ...) and function(a.high, b.high, ...).
template <class F, class... T>
static inline auto each(const F& function, const Pair<T>&... of) {
  return Pair<decltype(function(of.low...))>{function(of.low...), function(of.high...)};
}

static inline Pair<Words> words_of(Bytes lower, Bytes upper = Bytes{}) {
  return {(Words)interleave_low(lower, upper), (Words)interleave_high(lower, upper)};
}
static inline Pair<SignedDwords> dwords_of(Words lower, Words upper = Words{}) {
  return {(SignedDwords)interleave_low(lower, upper), (SignedDwords)interleave_high(lower, upper)};
}
template <class V>
static inline auto pack(const Pair<V>& of) {
  return pack(of.low, of.high);
}
static inline Words pack_signed(const Pair<SignedDwords>& of) {
  return pack_signed(of.low, of.high);
}

// Two vectors of words, one after the other.
static inline Pair<Words> load_pair(const uint16_t* p) {
  return {load<Words>(p), load<Words>(p + kWords)};
}
static inline void store_pair(uint16_t* p, const Pair<Words>& of) {
  store(p, of.low), store(p + kWords, of.high);
}
