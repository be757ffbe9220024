// Pixels and tiles, stored block by block.
static inline void store_mixes(uint8_t* dst, Bytes mixed) {
  const Bytes v = shuffle(mixed, in_all_blocks(kPixelOrder));
  if constexpr (kBlocks == 2) store(dst, block<0>(v));
  store_12_bytes(dst + 12 * (kBlocks - 1), block<kBlocks - 1>(v));
}
static inline void store_mixes_and_4_bytes(uint8_t* dst, Bytes mixed) {
  const Bytes v = shuffle(mixed, in_all_blocks(kPixelOrder));
  if constexpr (kBlocks == 2) store(dst, block<0>(v));
  store(dst + 12 * (kBlocks - 1), block<kBlocks - 1>(v));
}
struct TileRows {
  struct {
    Block left, right;
  } row[kTileRows / 4];
};
static inline TileRows rows_of_tile(Dwords left, Dwords right) {
  static constexpr uint8_t kThreeOfFour[16] = {0,  1,  2,  4,  5,   6,   8,   9,
                                               10, 12, 13, 14, 128, 128, 128, 128};
  const Bytes order = in_all_blocks(kThreeOfFour);
  const Bytes a = shuffle((Bytes)left, order), b = shuffle((Bytes)right, order);
  TileRows rows;
  rows.row[0] = {block<0>(a), block<0>(b)};
  rows.row[kTileRows / 4 - 1] = {block<kBlocks - 1>(a), block<kBlocks - 1>(b)};
  return rows;
}
static inline void store_row(uint8_t* dst, const TileRows& rows, int32_t k) {
  store(dst, rows.row[k].left);
  store_12_bytes(dst + 12, rows.row[k].right);
}
