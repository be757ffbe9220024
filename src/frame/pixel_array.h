// What an operation may touch of a host's picture, and the walk over two pictures that the
// pixel-by-pixel operations share.
#ifndef ROXE_FRAME_PIXEL_ARRAY_H_
#define ROXE_FRAME_PIXEL_ARRAY_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/pixel_band.h"
#include "roxe.h"

namespace roxe {

// First byte of row y. The only place where y is multiplied by rowBytes.
inline uint8_t* row_of(const PixelArray& image, int32_t y) {
  return image.pixels + static_cast<ptrdiff_t>(y) * image.rowBytes;
}

// Columns of a record used as 24-bit that its rows really hold: at most rowBytes / 3, none without
// pixels. Also right for a width that wraps when it is multiplied by 3.
inline int32_t columns_24(const PixelArray& image) {
  if (!image.pixels) return 0;
  return std::max(0, std::min(image.width, image.rowBytes / 3));
}

// The same for a record used as 8-bit.
inline int32_t columns_8(const PixelArray& image) {
  if (!image.pixels) return 0;
  return std::max(0, std::min(image.width, image.rowBytes));
}

inline int32_t rows_of(const PixelArray& image) { return std::max(0, image.height); }

// Whether two records used as 24-bit share any memory between their first and last pixel bytes.
bool overlap_24(const PixelArray& a, const PixelArray& b);

// Whether every row of the one starts where the same row of the other does.
inline bool same_rows(const PixelArray& a, const PixelArray& b) {
  return a.pixels == b.pixels && a.rowBytes == b.rowBytes;
}

// Calls map(band) for the area that two records used as 24-bit both hold. Pictures that overlap
// without being the same are handed over pixel by pixel, each a band of its own, top to bottom and
// left to right, so that later pixels see what earlier ones wrote.
template <class Map>
void map_24(const PixelArray& src, const PixelArray& dst, const Map& map) {
  const int32_t columns = std::min(columns_24(src), columns_24(dst));
  const int32_t rows = std::min(rows_of(src), rows_of(dst));
  if (columns == 0 || rows == 0) return;  // rows of a record without pixels have no address
  if (same_rows(src, dst) || !overlap_24(src, dst)) {
    map(PixelBand{src.pixels, src.rowBytes, dst.pixels, dst.rowBytes, rows, columns});
    return;
  }
  for (int32_t y = 0; y < rows; ++y) {
    for (ptrdiff_t x = 0; x < 3 * static_cast<ptrdiff_t>(columns); x += 3)
      map(PixelBand{row_of(src, y) + x, 0, row_of(dst, y) + x, 0, 1, 1});
  }
}

// The same row by row: calls row(src_row, dst_row, count).
template <class Row>
void map_rows_24(const PixelArray& src, const PixelArray& dst, const Row& row) {
  map_24(src, dst, [&](const PixelBand& band) {
    for (ptrdiff_t y = 0; y < band.rows; ++y)
      row(band.src + y * band.src_step, band.dst + y * band.dst_step, band.count);
  });
}

}  // namespace roxe

#endif  // ROXE_FRAME_PIXEL_ARRAY_H_
