// The distance of colours in a cone of value and saturation, with the hue as its angle.

// Dark colours have their saturation pulled toward their value, so that near black all hues are
// alike. In signed arithmetic: the value may be below the saturation.
static inline int32_t effective_saturation(Hsv colour, const uint32_t* fade) {
  const int32_t pull = static_cast<int32_t>(fade[colour.value]);
  return colour.saturation + ((pull * (colour.value - colour.saturation)) >> 8);
}

// A quarter of the squared chord between two colours (law of cosines), divided by limit: 0 ...
// limit - 1; limit where the chord is twice as long as limit or longer. The largest product is
// 255 * 255 * 32768, below 2^31.
static inline uint32_t cone_distance(Hsv pixel, Hsv reference, uint32_t limit,
                                     uint32_t limit_squared, uint32_t limit_reciprocal,
                                     const uint32_t* fade, const int32_t* cosine) {
  const int32_t s1 = effective_saturation(pixel, fade);
  const int32_t s2 = effective_saturation(reference, fade);
  const int32_t turn = reference.hue - pixel.hue;
  const int32_t cosine_of_turn = cosine[turn < 0 ? -turn : turn];
  const int32_t rise = pixel.value - reference.value;
  const int32_t chord = rise * rise + s2 * s2 + s1 * s1 - ((s2 * s1 * cosine_of_turn) >> 14);

  // A chord that rounding made negative becomes huge here, and so lies outside.
  const uint32_t quarter = static_cast<uint32_t>(chord) >> 2;
  return quarter < limit_squared ? (quarter * limit_reciprocal) >> 14 : limit;
}
