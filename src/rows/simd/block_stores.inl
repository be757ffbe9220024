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
  } row[kTileRows];
};
static inline TileRows rows_of_tile(const Dwords (&tile)[kTileVectors]) {
  Dwords pixels[8];
  for (int32_t k = 0; k < 8; ++k) pixels[k] = tile[k];
  transpose_blocks(pixels);
  transpose_blocks(pixels + 4);
  const auto three_of_four = [](Dwords v) {
    return arranged((Bytes)v, [](int i) {
      return i % 16 < 12 ? i / 16 * 16 + i % 16 / 3 * 4 + i % 16 % 3 : i;
    });
  };
  TileRows rows;
  for (int32_t r = 0; r < 4; ++r) {
    const Bytes left = three_of_four(pixels[r]), right = three_of_four(pixels[r + 4]);
    rows.row[r] = {block<0>(left), block<0>(right)};
    rows.row[kTileRows - 4 + r] = {block<kBlocks - 1>(left), block<kBlocks - 1>(right)};
  }
  return rows;
}
static inline void store_row(uint8_t* dst, const TileRows& rows, int32_t r) {
  store(dst, rows.row[r].left);
  store_12_bytes(dst + 12, rows.row[r].right);
}
