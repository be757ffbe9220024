// Look-ups in tables of 256 bytes.

// Eight bytes are read and written as one word. Byte by byte some compilers try to use vectors
// here, collect them lane by lane and take three times as long.
[[maybe_unused]] static void look_up(const uint8_t* table, const PixelBand& band) {
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    const ptrdiff_t bytes = 3 * static_cast<ptrdiff_t>(count);
    ptrdiff_t i = 0;
    for (; i + 8 <= bytes; i += 8) {
      uint64_t levels, entries = 0;
      __builtin_memcpy(&levels, src + i, 8);
      for (int32_t shift = 0; shift < 64; shift += 8)
        entries |= uint64_t{table[levels >> shift & 255]} << shift;
      __builtin_memcpy(dst + i, &entries, 8);
    }
    for (; i < bytes; ++i) dst[i] = table[src[i]];
  });
}

[[maybe_unused]] static void look_up_bgr(const uint8_t* blue, const uint8_t* green,
                                         const uint8_t* red, const PixelBand& band) {
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    for (int32_t i = 0; i < count; ++i, src += 3, dst += 3) {
      dst[0] = blue[src[0]];
      dst[1] = green[src[1]];
      dst[2] = red[src[2]];
    }
  });
}
