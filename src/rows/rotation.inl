// Rotation: a straight walk through a 24-bit picture in 16.16 fixed point, sampled bilinearly.

// Mixes the pixels p, p + 3 and, a row further, q, q + 3 with weights of 8 bits. The bytes are
// written one after the other; each truncates.
static inline void mix_pixel(const uint8_t* p, const uint8_t* q, uint32_t wx, uint32_t wy,
                             uint8_t* dst) {
  for (int c = 0; c < 3; ++c) {
    const uint32_t sum = (256 - wx) * (256 - wy) * p[c] + wx * (256 - wy) * p[c + 3] +
                         (256 - wx) * wy * q[c] + wx * wy * q[c + 3];
    dst[c] = static_cast<uint8_t>(sum >> 16);
  }
}

// Pixel after pixel, in order: also right where dst lies in the source.
static void rotate_row(const RotationWalk& walk, uint8_t* dst, int32_t count) {
  FixedCoordinate x = walk.x, y = walk.y;
  for (int32_t i = 0; i < count; ++i, dst += 3) {
    if (0 < x.whole && x.whole < walk.src_columns - 1 && 0 < y.whole &&
        y.whole < walk.src_rows - 1) {
      const uint8_t* p = walk.src + y.whole * walk.src_stride + 3 * static_cast<ptrdiff_t>(x.whole);
      mix_pixel(p, p + walk.src_stride, static_cast<uint32_t>(x.fraction >> 8),
                static_cast<uint32_t>(y.fraction >> 8), dst);
    }
    advance(x, walk.step_x);
    advance(y, walk.step_y);
  }
}

static void rotate(const RotationWalk& walk, uint8_t* dst, ptrdiff_t dst_stride, int32_t rows,
                   int32_t count) {
  RotationWalk row = walk;
  for (ptrdiff_t y = 0; y < rows; ++y) {
    rotate_row(row, dst + y * dst_stride, count);
    advance(row.x, walk.row_step_x);
    advance(row.y, walk.row_step_y);
  }
}
