// Blending back toward the source.

static void blend_masked(const uint8_t* src, const uint8_t* mask, uint8_t* dst, int32_t count) {
  ROXE_LANES_INDEPENDENT
  for (int32_t i = 0; i < count; ++i, src += 3, dst += 3) {
    const int32_t weight = mask[i];
    dst[0] = static_cast<uint8_t>(dst[0] + (((src[0] - dst[0]) * weight) >> 8));
    dst[1] = static_cast<uint8_t>(dst[1] + (((src[1] - dst[1]) * weight) >> 8));
    dst[2] = static_cast<uint8_t>(dst[2] + (((src[2] - dst[2]) * weight) >> 8));
  }
}
