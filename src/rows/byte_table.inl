// Look-ups in tables of 256 bytes.

static void look_up(const uint8_t* table, const uint8_t* src, uint8_t* dst, int32_t count) {
  ROXE_LANES_INDEPENDENT
  for (int32_t i = 0; i < count; ++i) dst[i] = table[src[i]];
}

static void look_up_bgr(const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                        const uint8_t* src, uint8_t* dst, int32_t count) {
  ROXE_LANES_INDEPENDENT
  for (int32_t i = 0; i < count; ++i, src += 3, dst += 3) {
    dst[0] = blue[src[0]];
    dst[1] = green[src[1]];
    dst[2] = red[src[2]];
  }
}
