// A band in parts of whole vectors, kBytes pixels each.

// Too few pixels to prepare anything for.
static inline bool is_small(const PixelBand& band) { return int64_t{band.rows} * band.count < 16; }

// Calls part(src, dst, count) for at most kMost pixels at a time. The rest of a row is filled up
// with black to a whole vector.
template <int32_t kMost, class Part>
static inline void for_each_part(const PixelBand& band, const Part& part) {
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    while (count > 0) {
      // One call of part, so that compilers inline it.
      const bool whole = count >= kBytes;
      const int32_t most = count < kMost ? count / kBytes * kBytes : kMost;
      const int32_t pixels = whole ? most : kBytes;
      uint8_t rest[3 * kBytes];
      const size_t rest_bytes = 3 * static_cast<size_t>(count);
      if (!whole) {
        __builtin_memset(rest, 0, sizeof rest);
        __builtin_memcpy(rest, src, rest_bytes);
      }
      part(whole ? src : rest, whole ? dst : rest, pixels);
      if (!whole) {
        __builtin_memcpy(dst, rest, rest_bytes);
        break;
      }
      src += 3 * static_cast<ptrdiff_t>(pixels);
      dst += 3 * static_cast<ptrdiff_t>(pixels);
      count -= pixels;
    }
  });
}
