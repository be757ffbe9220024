// Exact before each rounding in 35 bits: weights are multiples of 2^-27, what is added to is at most
// 255 and a multiple of 2^-25.
static inline Floats intensities_of(const PixelFloats& p) {
  const Floats red_green = fused_with_byte(0.299f, p.red, 0.587f * p.green);
  return fused_with_byte(0.114f, p.blue, red_green);
}

[[maybe_unused]] static void intensities_wide(const uint8_t* src, float* dst, int32_t count) {
  int32_t i = 0;
  for (; i + kDwords <= count; i += kDwords)
    store(dst + i, intensities_of(load_pixels(src + 3 * i)));
  intensities(src + 3 * i, dst + i, count - i);
}
