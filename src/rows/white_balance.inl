// A colour matrix in linear light, 12-bit fixed point (4096 is full scale), with a cap on
// brightening and a spill of strong channels into the others.

static inline int32_t times(int32_t a, int32_t b) { return wrap_mul(a, b) >> 12; }

// The weights sum to 4049, not 4096.
static inline int32_t luminance(int32_t red, int32_t green, int32_t blue) {
  return wrap_add(wrap_add(wrap_mul(1249, red), wrap_mul(2528, green)), wrap_mul(272, blue)) >> 12;
}

static inline int32_t matrix_row(const int32_t* row, int32_t red, int32_t green, int32_t blue) {
  return wrap_add(wrap_add(times(row[0], red), times(row[1], green)), times(row[2], blue));
}

// Linear light to bytes.
struct EncodedLight {
  alignas(64) uint8_t byte[4097];
  constexpr EncodedLight() : byte() {
    for (int32_t v = 0; v < 256; ++v)
      for (int32_t i = kFirstLight[v]; i < (v < 255 ? kFirstLight[v + 1] : 4097); ++i)
        byte[i] = static_cast<uint8_t>(v);
  }
};
static constexpr EncodedLight encoded_light;

static inline void balance_pixel(const int32_t* matrix, const uint8_t* src, uint8_t* dst) {
  const int32_t red = kLinearLight[src[2]];
  const int32_t green = kLinearLight[src[1]];
  const int32_t blue = kLinearLight[src[0]];
  int32_t new_red = matrix_row(matrix, red, green, blue);
  int32_t new_green = matrix_row(matrix + 3, red, green, blue);
  int32_t new_blue = matrix_row(matrix + 6, red, green, blue);

  // At most about twice as bright as before. luminance_in is at most 4049: nothing overflows.
  const int32_t luminance_in = luminance(red, green, blue);
  const int32_t luminance_out = luminance(new_red, new_green, new_blue);
  if (luminance_out > 0) {
    const int32_t ratio = 2 * (luminance_in * 4096 / luminance_out);
    if (ratio <= 4095) {
      new_red = times(new_red, ratio);
      new_green = times(new_green, ratio);
      new_blue = times(new_blue, ratio);
    }
  }

  // A channel spills from 2 / 4096 on, not from full scale, so that the spill is nearly always
  // negative. It is a share of what the others were before the matrix.
  if (new_red > 1) {
    const int32_t excess = wrap_sub(new_red, 4096);
    new_blue = wrap_add(new_blue, times(times(blue, excess), times(luminance_in, 2252)));
    new_green = wrap_add(new_green, times(times(green, excess), luminance_in >> 2));
  } else if (new_green > 1) {
    const int32_t excess = wrap_sub(new_green, 4096);
    new_blue = wrap_add(new_blue, times(times(blue, excess), times(luminance_in, 4476)));
    new_red = wrap_add(new_red, times(times(red, excess), times(luminance_in, 3530)));
  } else if (new_blue > 1) {
    const int32_t excess = wrap_sub(new_blue, 4096);
    new_red = wrap_add(new_red, times(times(red, excess), times(luminance_in, 339)));
  }
  dst[0] = encoded_light.byte[clamp(new_blue, 0, 4096)];
  dst[1] = encoded_light.byte[clamp(new_green, 0, 4096)];
  dst[2] = encoded_light.byte[clamp(new_red, 0, 4096)];
}

static void balance_white(const ColourMatrix& matrix, const PixelBand& band) {
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    for (int32_t i = 0; i < count; ++i, src += 3, dst += 3) balance_pixel(matrix.entry, src, dst);
  });
}
