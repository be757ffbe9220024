// Look-ups in tables of floats that load one entry after the other; indices wait in memory.
struct FloatTable {
  const float* entries;
};
struct Indices {
  alignas(kBytes) int32_t at[4 * kDwords];
};
static FloatTable float_table(const float* table, int32_t) { return {table}; }
template <class F>
static inline void keep(Indices& indices, const F& vector) {
  for (int32_t k = 0; k < 4 * kDwords; k += kDwords) store(indices.at + k, vector(k));
}
struct FoundFloats {
  const float* entries;
  const int32_t* indices;
  Floats at(int32_t k) const {
    return (Floats)entries_at([&](int32_t i) { return entries + indices[k + i]; });
  }
};
static inline FoundFloats look_up(const FloatTable& table, const Indices& indices) {
  return {table.entries, indices.at};
}
