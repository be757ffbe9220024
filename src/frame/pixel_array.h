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

// Whether two records share any memory between their first and last pixel bytes, of which each row
// holds so many.
bool overlap(const PixelArray& a, int32_t bytes_a, const PixelArray& b, int32_t bytes_b);
inline bool overlap_24(const PixelArray& a, const PixelArray& b) {
  return overlap(a, 3 * columns_24(a), b, 3 * columns_24(b));
}

// Whether every row of the one starts where the same row of the other does.
inline bool same_rows(const PixelArray& a, const PixelArray& b) {
  return a.pixels == b.pixels && a.rowBytes == b.rowBytes;
}

// Calls part(x, y, columns, rows) for the area that two records used as 24-bit both hold. Pictures
// that overlap without being the same are handed over pixel by pixel, top to bottom and left to
// right, so that later pixels see what earlier ones wrote.
template <class Part>
void walk_24(const PixelArray& src, const PixelArray& dst, const Part& part) {
  const int32_t columns = std::min(columns_24(src), columns_24(dst));
  const int32_t rows = std::min(rows_of(src), rows_of(dst));
  if (columns == 0 || rows == 0) return;  // rows of a record without pixels have no address
  if (same_rows(src, dst) || !overlap_24(src, dst)) return part(0, 0, columns, rows);
  for (int32_t y = 0; y < rows; ++y)
    for (int32_t x = 0; x < columns; ++x) part(x, y, 1, 1);
}

// The same with a band for each part: calls map(band).
template <class Map>
void map_24(const PixelArray& src, const PixelArray& dst, const Map& map) {
  walk_24(src, dst, [&](int32_t x, int32_t y, int32_t columns, int32_t rows) {
    const ptrdiff_t at = 3 * ptrdiff_t{x};
    map(PixelBand{row_of(src, y) + at, src.rowBytes, row_of(dst, y) + at, dst.rowBytes, rows,
                  columns});
  });
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
