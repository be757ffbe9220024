// Short tables as shuffles of sixteen entries each: an index finds its entry in one of the parts
// and 0 in the others.
struct ShortTable {
  Bytes part[16];
  int32_t parts;
};
static inline ShortTable short_table(const uint8_t* table, int32_t entries) {
  ShortTable t;
  t.parts = (entries + 15) / 16;
  for (int32_t i = 0; i < t.parts; ++i) t.part[i] = in_all_blocks(table + 16 * i);
  return t;
}
static inline Bytes look_up(const ShortTable& table, Bytes index) {
  Bytes result = {};
  for (int32_t i = 0; i < table.parts; ++i, index -= all_bytes(16))
    result |= shuffle_or_zero(table.part[i], index);
  return result;
}
using HalfTable = ShortTable;
static inline HalfTable half_table(const uint8_t* table) { return short_table(table, 128); }
