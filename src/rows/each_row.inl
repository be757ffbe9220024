// Calls row(src, dst, count) for the rows of a band, top to bottom.
template <class Row>
static inline void for_each_row(const PixelBand& band, const Row& row) {
  for (ptrdiff_t y = 0; y < band.rows; ++y)
    row(band.src + y * band.src_step, band.dst + y * band.dst_step, band.count);
}
