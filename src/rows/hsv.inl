// Hue, saturation and value of a pixel in integers, and the way back in floats.

// div_table[n] = 255 * 4096 / n, rounded: to multiply by it and shift right by 12 scales by 255 /
// n. Entry 0 is 0, so that black has no saturation and grey no slope of hue.
struct DivTable {
  uint32_t entry[256];
  constexpr DivTable() : entry() {
    for (uint32_t n = 1; n < 256; ++n) entry[n] = (2 * 255 * 4096 + n) / (2 * n);
  }
  constexpr int32_t operator[](int32_t n) const { return static_cast<int32_t>(entry[n]); }
};
static constexpr DivTable div_table;

// Hue in degrees 0 ... 360 (a grey has 180), saturation and value 0 ... 255. The slope of the hue
// is 15 * 255 / 64 = 59.77 degrees, not 60, and rounds toward minus infinity: pure red has hue 360,
// pure green 121. All products stay below 2^24.
static inline Hsv hsv_of(int32_t red, int32_t green, int32_t blue) {
  const int32_t largest = red > green ? (red > blue ? red : blue) : (green > blue ? green : blue);
  const int32_t smallest = red < green ? (red < blue ? red : blue) : (green < blue ? green : blue);
  const int32_t range = largest - smallest;

  int32_t base = 60, difference = red - green;
  if (smallest == red) {
    base = 180;
    difference = green - blue;
  } else if (smallest == green) {
    base = 300;
    difference = blue - red;
  }
  return {base - ((15 * difference * div_table[range]) >> 18), (range * div_table[largest]) >> 12,
          largest};
}

struct Rgb {
  uint8_t red, green, blue;
};

static inline uint8_t low_byte(float value) {
  return static_cast<uint8_t>(truncate_to_int32(value));
}

// Into 0 <= hue < 360. One turn is added or taken away; only what is then still outside is wrapped
// in full, where a hue that is no number, or that rounds to 360, counts as 0.
static inline float wrap_hue(float hue) {
  if (hue < 0.0f)
    hue += 360.0f;
  else if (hue >= 360.0f)
    hue -= 360.0f;
  if (hue >= 0.0f && hue < 360.0f) return hue;

  hue = __builtin_fmodf(hue, 360.0f);
  if (hue < 0.0f) hue += 360.0f;
  return hue >= 0.0f && hue < 360.0f ? hue : 0.0f;
}

// Hue in degrees, saturation and value on the scale of 0 ... 255, clamped to it. Without saturation
// the hue has no effect.
static inline Rgb rgb_of(float hue, float saturation, float value) {
  hue = wrap_hue(hue);
  saturation = clamp(saturation / 255.0f, 0.0f, 1.0f);
  value = clamp(value, 0.0f, 255.0f);
  const uint8_t v = low_byte(value);
  if (saturation == 0.0f) return {v, v, v};

  const float position = hue / 60.0f;
  const int32_t sector = truncate_to_int32(position);
  const float fraction = position - static_cast<float>(sector);
  const float chroma = value * saturation;
  const float rest = value - chroma;
  const uint8_t p = low_byte(rest);
  const uint8_t q = low_byte(value - chroma * fraction);
  const uint8_t t = low_byte(rest + chroma * fraction);
  switch (sector) {
    case 0:
      return {v, t, p};
    case 1:
      return {q, v, p};
    case 2:
      return {p, v, t};
    case 3:
      return {p, q, v};
    case 4:
      return {t, p, v};
    default:
      return {v, p, q};
  }
}
