// Projective resampling: bilinear, in single precision. Quotients are real divisions and every mix
// is one fused multiply-add.

// a + t * (b - a); the difference of bytes is exact.
static inline float mix_bytes(uint8_t a, uint8_t b, float t) {
  return fused(t, static_cast<float>(b - a), static_cast<float>(a));
}

// From one pixel to the next, or in every lane of vectors.
template <class Sums>
static inline void advance(Sums& at, const ProjectiveSource& source) {
  at.x += source.step_x;
  at.y += source.step_y;
  at.denominator += source.step_denominator;
}

// One row, pixel after pixel, from the given sums on.
static void resample_row(const ProjectiveSource& source, ProjectiveSums at, uint8_t* dst,
                         int32_t count) {
  for (int32_t i = 0; i < count; ++i, dst += 3) {
    const float x = at.x / at.denominator, y = at.y / at.denominator;
    const int32_t ix = truncate_to_int32(x), iy = truncate_to_int32(y);
    if (0 <= ix && ix < source.columns - 1 && 0 <= iy && iy < source.rows - 1) {
      // Between -1 and 0 the index is 0 and the fraction negative: the mix extrapolates, and its
      // low 8 bits are kept.
      const float fx = x - static_cast<float>(ix), fy = y - static_cast<float>(iy);
      const uint8_t* p = source.pixels + iy * source.stride + 3 * static_cast<ptrdiff_t>(ix);
      const uint8_t* q = p + source.stride;
      for (int c = 0; c < 3; ++c) {
        const float top = mix_bytes(p[c], p[c + 3], fx);
        const float bottom = mix_bytes(q[c], q[c + 3], fx);
        dst[c] = static_cast<uint8_t>(truncate_to_int32(fused(fy, bottom - top, top)));
      }
    }
    advance(at, source);
  }
}

static void resample_band(const ProjectiveSource& source, const ProjectiveSums* starts,
                          uint8_t* dst, ptrdiff_t dst_stride, int32_t rows, int32_t count) {
  for (int32_t r = 0; r < rows; ++r) resample_row(source, starts[r], dst + r * dst_stride, count);
}
