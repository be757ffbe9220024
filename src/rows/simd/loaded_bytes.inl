// Byte tables that load one entry after the other and gather them in a vector, which spares a store
// for each: with SSE4.1 look_up takes 0.63 ns a pixel instead of 0.95 (plain); auto gamma takes 17
// ms instead of 23 in WebAssembly. Indices come from dwords: from qwords they take an instruction
// more. Of the loop g++ makes one insertion an entry, of a list half as many moves again.
struct ByteTable {
  const uint8_t* entries;
};
static ByteTable byte_table(const uint8_t* table) { return {table}; }
static inline Bytes look_up(const ByteTable& table, Bytes index) {
  const auto entry = [&](int32_t i) {
    return table.entries[((Dwords)index)[i / 4] >> i % 4 * 8 & 255];
  };
#if defined(__x86_64__)
  Bytes found = {};
  for (int32_t i = 0; i < 16; ++i) found[i] = entry(i);
  return found;
#else
  return Bytes{entry(0),  entry(1),  entry(2),  entry(3), entry(4),  entry(5),
               entry(6),  entry(7),  entry(8),  entry(9), entry(10), entry(11),
               entry(12), entry(13), entry(14), entry(15)};
#endif
}
