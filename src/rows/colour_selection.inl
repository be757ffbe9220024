// What is done with the pixels near a reference colour.

static inline Hsv hsv_of_pixel(const uint8_t* bgr) { return hsv_of(bgr[2], bgr[1], bgr[0]); }

static inline uint32_t distance_from(const ColourSelection& selection, Hsv pixel) {
  return cone_distance(pixel, selection.reference, selection.limit, selection.limit_squared,
                       selection.limit_reciprocal, kFade, kCosine);
}

// weight in 1 / 65536. A step of up to 32767 is scaled exactly; larger ones wrap.
static inline int32_t weighted(int32_t weight, int32_t step) {
  return wrap_mul(weight, step) >> 16;
}

[[maybe_unused]] static void draw_selection(const ColourSelection& selection, const uint8_t* level,
                                            const PixelBand& band) {
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    for (int32_t i = 0; i < count; ++i, src += 3, dst += 3)
      dst[0] = dst[1] = dst[2] = level[distance_from(selection, hsv_of_pixel(src))];
  });
}

// The whole turn of the hue is applied at once; the mix by weight makes it fade out. The pixel is
// read before any of it is written: dst may be a byte or two further on.
static inline void replace_pixel(const ColourSelection& selection, const ColourShift& shift,
                                 const uint8_t* src, uint8_t* dst) {
  const int32_t blue = src[0], green = src[1], red = src[2];
  const Hsv pixel = hsv_of(red, green, blue);
  const uint32_t distance = distance_from(selection, pixel);
  if (distance >= selection.limit) {
    dst[0] = static_cast<uint8_t>(blue);
    dst[1] = static_cast<uint8_t>(green);
    dst[2] = static_cast<uint8_t>(red);
    return;
  }
  const int32_t weight = shift.weight[distance];
  const int32_t hue = wrap_add(pixel.hue, shift.hue);
  const int32_t saturation = pixel.saturation == 0  // greys are never coloured
                                 ? 0
                                 : wrap_add(pixel.saturation, weighted(weight, shift.saturation));
  const int32_t value = wrap_add(pixel.value, weighted(weight, shift.value));
  const Rgb target =
      rgb_of(static_cast<float>(hue), static_cast<float>(saturation), static_cast<float>(value));
  dst[0] = static_cast<uint8_t>(blue + weighted(weight, target.blue - blue));
  dst[1] = static_cast<uint8_t>(green + weighted(weight, target.green - green));
  dst[2] = static_cast<uint8_t>(red + weighted(weight, target.red - red));
}

static void replace_colour(const ColourSelection& selection, const ColourShift& shift,
                           const PixelBand& band) {
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    for (int32_t i = 0; i < count; ++i, src += 3, dst += 3)
      replace_pixel(selection, shift, src, dst);
  });
}

static inline void accent_pixel(const ColourSelection& selection, const uint8_t* src,
                                uint8_t* dst) {
  const int32_t blue = src[0], green = src[1], red = src[2];
  // The weights sum to 255, so white gives 254.
  const int32_t grey = (28 * blue + 151 * green + 76 * red) >> 8;
  const uint32_t distance = distance_from(selection, hsv_of_pixel(src));
  if (distance >= selection.limit) {
    dst[0] = dst[1] = dst[2] = static_cast<uint8_t>(grey);
    return;
  }
  const int32_t fade = static_cast<int32_t>(distance * selection.limit_reciprocal);  // 1 / 16384
  dst[0] = static_cast<uint8_t>(blue + ((fade * (grey - blue)) >> 14));
  dst[1] = static_cast<uint8_t>(green + ((fade * (grey - green)) >> 14));
  dst[2] = static_cast<uint8_t>(red + ((fade * (grey - red)) >> 14));
}

[[maybe_unused]] static void accent_colour(const ColourSelection& selection,
                                           const PixelBand& band) {
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    for (int32_t i = 0; i < count; ++i, src += 3, dst += 3) accent_pixel(selection, src, dst);
  });
}
