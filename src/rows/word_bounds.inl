// What the wide rows of colour compute in words; anything beyond is left to the plain rows.

// A hue of 0 ... 360 and such a shift make less than two turns.
constexpr int32_t kHueShiftsInWords = 360;  // 0 ... 359
constexpr int32_t kLargestStepInWords = 32767;

static inline bool fits_words(const ColourShift& shift) {
  const auto is_word = [](int32_t step) {
    return step >= -kLargestStepInWords && step <= kLargestStepInWords;
  };
  return shift.hue >= 0 && shift.hue < kHueShiftsInWords && is_word(shift.saturation) &&
         is_word(shift.value);
}

// Gains of a channel without a mix of channels. Below 3, four times a channel is a signed word, and
// so is the luminance as long as blue stays below 16. The gain of red is not too small either:
// where red stays below 2 and blue spills, 16 * red is then below 65536 and red * blue below 2^13 *
// 4096.
constexpr int32_t kLeastRedGain = 4096 / 32, kGainsInWords = 3 * 4096,
                  kBlueGainsInWords = 16 * 4096;

static inline bool fits_words(const ColourMatrix& matrix) {
  for (int32_t i = 0; i < 9; ++i)
    if (i % 4 != 0 && matrix.entry[i] != 0) return false;
  const int32_t red = matrix.entry[0], green = matrix.entry[4], blue = matrix.entry[8];
  return red >= kLeastRedGain && red < kGainsInWords && green >= 0 && green < kGainsInWords &&
         blue >= 0 && blue < kBlueGainsInWords;
}
