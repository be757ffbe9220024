// Pixels and tiles, stored block by block.
static inline Bytes pixels_of_mixes(Bytes mixes) {
  return arranged(mixes, [](int i) { return i % 16 < 12 ? i / 16 * 16 + mix_of(i % 16) : i; });
}
static inline void store_mixes_and_4_bytes(uint8_t* dst, Bytes mixes) {
  const Bytes v = pixels_of_mixes(mixes);
  if constexpr (kBlocks == 2) store(dst, block<0>(v));
  store(dst + 12 * (kBlocks - 1), block<kBlocks - 1>(v));
}
static inline void store_mixes(uint8_t* dst, Bytes mixes) {
  const Bytes v = pixels_of_mixes(mixes);
  if constexpr (kBlocks == 2) store(dst, block<0>(v));
  store_12_bytes(dst + 12 * (kBlocks - 1), block<kBlocks - 1>(v));
}
struct TileRows {
  struct {
    Block left, right;
  } row[kTileRows / 4];
};
static inline TileRows rows_of_tile(Dwords left, Dwords right) {
  const auto three_of_four = [](Dwords v) {
    return arranged((Bytes)v, [](int i) {
      return i % 16 < 12 ? i / 16 * 16 + i % 16 / 3 * 4 + i % 16 % 3 : i;
    });
  };
  const Bytes a = three_of_four(left), b = three_of_four(right);
  TileRows rows;
  rows.row[0] = {block<0>(a), block<0>(b)};
  rows.row[kTileRows / 4 - 1] = {block<kBlocks - 1>(a), block<kBlocks - 1>(b)};
  return rows;
}
static inline void store_row(uint8_t* dst, const TileRows& rows, int32_t k) {
  store(dst, rows.row[k].left);
  store_12_bytes(dst + 12, rows.row[k].right);
}
