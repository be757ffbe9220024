// A table of 256 bytes as sixteen shuffles. Each part holds its difference (exclusive or) to the
// part before, so that the parts up to an index add up to the right one. Each half of the table
// starts anew, because indices are told apart by their sign.
struct ByteTable {
  Bytes part[16];
};
static inline ByteTable byte_table(const uint8_t* table) {
  ByteTable t;
  Bytes before = {};
  for (int32_t i = 0; i < 16; ++i) {
    const Bytes part = in_all_blocks(table + 16 * i);
    t.part[i] = i % 8 == 0 ? part : part ^ before;
    before = part;
  }
  return t;
}
static inline Bytes look_up(const ByteTable& table, Bytes index) {
  // A shuffle gives 0 for a negative index. Those of 128 and more have the sign of the lower half
  // once their top bit is flipped, and the others are then negative.
  Bytes low = index, high = index ^ all_bytes(128);
  const auto next_part = [](Bytes i) { return (Bytes)ROXE_X86(subs_epi8)((I)i, (I)all_bytes(16)); };
  Bytes from_low = shuffle(table.part[0], low), from_high = shuffle(table.part[8], high);
  for (int32_t i = 1; i < 8; ++i) {
    low = next_part(low);
    high = next_part(high);
    from_low ^= shuffle(table.part[i], low);
    from_high ^= shuffle(table.part[8 + i], high);
  }
  return from_low ^ from_high;
}
