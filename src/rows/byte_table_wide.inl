// Look-ups in tables of 256 bytes, a vector at a time.

// Vectors are loaded from aligned addresses: across the ends of cache lines they cost half as much
// again. Stores do not mind.
static void look_up_wide(const uint8_t* table, const PixelBand& band) {
  if (is_small(band)) return look_up(table, band);
  const ByteTable entries = byte_table(table);
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    ptrdiff_t bytes = 3 * static_cast<ptrdiff_t>(count);
    const auto look_up_few = [&](ptrdiff_t few) {
      if (few == 0) return;
      store_few(dst, look_up(entries, load_few(src, few)), few);
      src += few, dst += few, bytes -= few;
    };
    const ptrdiff_t head = static_cast<ptrdiff_t>(-reinterpret_cast<uintptr_t>(src) % kBytes);
    look_up_few(head < bytes ? head : bytes);
    for (; bytes >= kBytes; bytes -= kBytes, src += kBytes, dst += kBytes)
      store(dst, look_up(entries, load<Bytes>(src)));
    look_up_few(bytes);
  });
}

// Byte i of a, of b or of c where i is 0, 1 or 2 modulo 3.
static inline Bytes every_third_of(Bytes a, Bytes b, Bytes c) {
  const Bytes ab = arranged(a, b, [](int i) { return i % 3 == 1 ? i + kBytes : i; });
  return arranged(ab, c, [](int i) { return i % 3 == 2 ? i + kBytes : i; });
}

// Of three neighbouring vectors exactly one has a given channel at a given byte. Choices therefore
// sort the channels into three vectors, in some order of pixels that the same choices undo. They
// need the vectors by their first channel, blue, red, green; the second in memory begins with green
// (kOneMore) or with red.
static void look_up_bgr_wide(const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                             const PixelBand& band) {
  if (is_small(band)) return look_up_bgr(blue, green, red, band);
  const ByteTable blues = byte_table(blue), greens = byte_table(green), reds = byte_table(red);
  constexpr bool kOneMore = kBytes % 3 == 1;  // where the next vector begins: else with red
  const auto look_up_pixels = [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    for (; count > 0; count -= kBytes, src += 3 * kBytes, dst += 3 * kBytes) {
      const Bytes a = load<Bytes>(src);
      const Bytes b = load<Bytes>(src + (kOneMore ? 2 : 1) * kBytes);
      const Bytes c = load<Bytes>(src + (kOneMore ? 1 : 2) * kBytes);
      // Blue lies at bytes 0, 3 ... of a, at 1, 4 ... of b, at 2, 5 ... of c.
      const Bytes p = look_up(blues, every_third_of(a, b, c));
      const Bytes q = look_up(greens, every_third_of(c, a, b));
      const Bytes r = look_up(reds, every_third_of(b, c, a));
      store(dst, every_third_of(p, q, r));
      store(dst + (kOneMore ? 2 : 1) * kBytes, every_third_of(r, p, q));
      store(dst + (kOneMore ? 1 : 2) * kBytes, every_third_of(q, r, p));
    }
  };
  for_each_part<kBytes << 16>(band, look_up_pixels);
}
