// Replaces balance_white for gains without a mix of channels: the tables by loads that deliver
// several entries in one word, the arithmetic between them for sixteen pixels in words. On a row in
// the cache 1.8 ns a pixel instead of 5.9.

constexpr int32_t kLightBlock = 256;  // pixels between the stages

// Four times the linear light: the upper half of a product of two such words is a 12-bit product.
struct LightBlock {
  alignas(32) uint16_t blue[kLightBlock], green[kLightBlock], red[kLightBlock];
};

// Each entry is followed and preceded by zeros, so that a load that starts some places early yields
// the entry shifted by as many places: four entries are merged without a shift.
struct LinearTable {
  uint64_t zero, entry[256];
};
struct EncodedTable {
  uint32_t zero, entry[4097];
};

static inline uint64_t eight_bytes(const void* p) {
  uint64_t value;
  __builtin_memcpy(&value, p, sizeof value);
  return value;
}

static inline uint64_t linear_at(const LinearTable& table, uint8_t index, int32_t place) {
  return eight_bytes(reinterpret_cast<const uint8_t*>(&table.entry[index]) - 2 * place);
}

static inline uint32_t encoded_at(const EncodedTable& table, uint16_t index, int32_t place) {
  uint32_t value;
  __builtin_memcpy(&value, reinterpret_cast<const uint8_t*>(&table.entry[index]) - place,
                   sizeof value);
  return value;
}

static inline void linearise(const LinearTable& table, const uint8_t* src, LightBlock& block,
                             int32_t count) {
  for (int32_t i = 0; i < count; i += 4, src += 12) {
    const uint64_t blue = linear_at(table, src[0], 0) | linear_at(table, src[3], 1) |
                          linear_at(table, src[6], 2) | linear_at(table, src[9], 3);
    const uint64_t green = linear_at(table, src[1], 0) | linear_at(table, src[4], 1) |
                           linear_at(table, src[7], 2) | linear_at(table, src[10], 3);
    const uint64_t red = linear_at(table, src[2], 0) | linear_at(table, src[5], 1) |
                         linear_at(table, src[8], 2) | linear_at(table, src[11], 3);
    __builtin_memcpy(block.blue + i, &blue, sizeof blue);
    __builtin_memcpy(block.green + i, &green, sizeof green);
    __builtin_memcpy(block.red + i, &red, sizeof red);
  }
}

static inline void store_four_bytes(uint8_t* dst, uint32_t value) {
  __builtin_memcpy(dst, &value, sizeof value);
}

static inline void encode(const EncodedTable& table, const LightBlock& block, uint8_t* dst,
                          int32_t count) {
  for (int32_t i = 0; i < count; i += 4, dst += 12) {
    store_four_bytes(
        dst, encoded_at(table, block.blue[i], 0) | encoded_at(table, block.green[i], 1) |
                 encoded_at(table, block.red[i], 2) | encoded_at(table, block.blue[i + 1], 3));
    store_four_bytes(dst + 4, encoded_at(table, block.green[i + 1], 0) |
                                  encoded_at(table, block.red[i + 1], 1) |
                                  encoded_at(table, block.blue[i + 2], 2) |
                                  encoded_at(table, block.green[i + 2], 3));
    store_four_bytes(dst + 8, encoded_at(table, block.red[i + 2], 0) |
                                  encoded_at(table, block.blue[i + 3], 1) |
                                  encoded_at(table, block.green[i + 3], 2) |
                                  encoded_at(table, block.red[i + 3], 3));
  }
}

// Words hold what follows from gains below 3 in red and green and below 16 in blue. The gain of red
// is not too small either: where red stays below 2 and blue spills, 16 * red is then below 65536
// and red * blue below 2^13 * 4096.
static inline bool fits_words(const ColourMatrix& balance) {
  for (int32_t i = 0; i < 9; ++i)
    if (i % 4 != 0 && balance.entry[i] != 0) return false;
  const int32_t red = balance.entry[0], green = balance.entry[4], blue = balance.entry[8];
  return red >= 128 && red < 3 * 4096 && green >= 0 && green < 3 * 4096 && blue >= 0 &&
         blue < 16 * 4096;
}

// (a * b) >> 12 of four times a and four times b, signed.
static inline __m256i times_words(__m256i a4, __m256i b4) { return _mm256_mulhi_epi16(a4, b4); }

static inline __m256i four_times(__m256i words) { return _mm256_slli_epi16(words, 2); }

static inline __m256i select(__m256i where, __m256i a, __m256i b) {
  return _mm256_blendv_epi8(b, a, where);
}

struct Dwords {
  __m256i low, high;
};

// The luminance of sixteen pixels; blue may have all 16 bits.
static inline Dwords luminance_of(__m256i red, __m256i green, __m256i blue, int32_t scale) {
  const auto part = [&](__m256i red_green, __m256i blue_dwords) __attribute__((always_inline)) {
    return _mm256_srli_epi32(
        _mm256_add_epi32(_mm256_madd_epi16(red_green, _mm256_set1_epi32(1249 + (2528 << 16))),
                         _mm256_mullo_epi32(blue_dwords, _mm256_set1_epi32(272))),
        scale);
  };
  return {part(_mm256_unpacklo_epi16(red, green), low_dwords(blue)),
          part(_mm256_unpackhi_epi16(red, green), high_dwords(blue))};
}

// 4096 * a / b as a float division: exact for 4096 * a below 2^24. For b = 0 it is what it is.
static inline __m256i ratio_of(__m256i a, __m256i b) {
  const __m256 scaled = _mm256_mul_ps(_mm256_cvtepi32_ps(a), _mm256_set1_ps(4096.0f));
  return _mm256_cvttps_epi32(_mm256_div_ps(scaled, _mm256_cvtepi32_ps(b)));
}

// (blue * gain) >> 12 for four times blue and a gain of up to 16 bits.
static inline __m256i strong_gain(__m256i blue4, __m256i gain) {
  const __m256i blue8 = _mm256_add_epi16(blue4, blue4);
  const __m256i high = _mm256_mulhi_epu16(blue8, gain), low = _mm256_mullo_epi16(blue8, gain);
  return _mm256_or_si256(_mm256_add_epi16(high, high), _mm256_srli_epi16(low, 15));
}

// What the plain row does between its tables, for sixteen pixels.
static inline void balance_words(const ColourMatrix& balance, LightBlock& block, int32_t i) {
  const __m256i zero = _mm256_setzero_si256(), one = all_words(1);
  const __m256i blue4 = load_256(block.blue + i), green4 = load_256(block.green + i);
  const __m256i red4 = load_256(block.red + i);
  __m256i red = _mm256_mulhi_epu16(red4, all_words(4 * balance.entry[0]));
  __m256i green = _mm256_mulhi_epu16(green4, all_words(4 * balance.entry[4]));
  __m256i blue = balance.entry[8] < 4 * 4096
                     ? _mm256_mulhi_epu16(blue4, all_words(4 * balance.entry[8]))
                     : strong_gain(blue4, all_words(balance.entry[8]));

  const Dwords in = luminance_of(red4, green4, blue4, 14);
  const Dwords out = luminance_of(red, green, blue, 12);
  const __m256i luminance_in = _mm256_packs_epi32(in.low, in.high);
  const __m256i luminance_out = _mm256_packs_epi32(out.low, out.high);
  // Half of the ratio; saturates far above 2047.
  const __m256i ratio = _mm256_packus_epi32(ratio_of(in.low, out.low), ratio_of(in.high, out.high));
  const __m256i too_bright =
      _mm256_and_si256(_mm256_cmpgt_epi16(luminance_out, zero),
                       _mm256_cmpeq_epi16(_mm256_min_epu16(ratio, all_words(2047)), ratio));
  const __m256i ratio32 = _mm256_slli_epi16(ratio, 5);
  red = select(too_bright, _mm256_mulhi_epu16(red, ratio32), red);
  green = select(too_bright, _mm256_mulhi_epu16(green, ratio32), green);
  blue = select(too_bright, _mm256_mulhi_epu16(blue, ratio32), blue);

  const __m256i red_spills = _mm256_cmpgt_epi16(red, one);
  const __m256i green_spills = _mm256_andnot_si256(red_spills, _mm256_cmpgt_epi16(green, one));
  const __m256i either = _mm256_or_si256(red_spills, green_spills);
  const __m256i blue_spills =
      _mm256_andnot_si256(either, _mm256_cmpeq_epi16(_mm256_max_epu16(blue, all_words(2)), blue));

  // The share of a channel c: (c * (source - 4096)) >> 12 is ((c * source) >> 12) - c.
  const __m256i source4 = four_times(select(red_spills, red, green));
  const auto share4 = [&](__m256i channel4) __attribute__((always_inline)) {
    const __m256i product = _mm256_mulhi_epu16(channel4, source4);
    return four_times(_mm256_sub_epi16(product, _mm256_srli_epi16(channel4, 2)));
  };
  const __m256i luminance4 = four_times(luminance_in);
  const auto weight4 = [&](__m256i weight) __attribute__((always_inline)) {
    return four_times(times_words(luminance4, four_times(weight)));
  };
  const __m256i to_blue =
      times_words(share4(blue4), weight4(select(red_spills, all_words(2252), all_words(4476))));
  const __m256i to_green =
      times_words(share4(green4), _mm256_and_si256(luminance_in, all_words(-4)));
  const __m256i red_by_blue =
      _mm256_sub_epi16(_mm256_mulhi_epu16(four_times(red4), blue), _mm256_srli_epi16(red4, 2));
  const __m256i to_red =
      times_words(select(green_spills, share4(red4), four_times(red_by_blue)),
                  weight4(select(green_spills, all_words(3530), all_words(339))));

  const auto keep = [&](uint16_t * channel, __m256i value) __attribute__((always_inline)) {
    store_256(channel + i, _mm256_min_epi16(_mm256_max_epi16(value, zero), all_words(4096)));
  };
  // No spill takes as much as 8192: blue may be cut before it.
  blue = _mm256_min_epu16(blue, all_words(16384));
  keep(block.blue, _mm256_add_epi16(blue, _mm256_and_si256(to_blue, either)));
  keep(block.green, _mm256_add_epi16(green, _mm256_and_si256(to_green, red_spills)));
  keep(block.red,
       _mm256_add_epi16(red, _mm256_and_si256(to_red, _mm256_or_si256(green_spills, blue_spills))));
}

struct LightTables {
  LinearTable linear;
  EncodedTable encoded;
  constexpr LightTables() : linear(), encoded() {
    for (int32_t i = 0; i < 256; ++i) linear.entry[i] = uint64_t{4} * kLinearLight[i];
    for (int32_t i = 0; i <= 4096; ++i) encoded.entry[i] = encoded_light.byte[i];
  }
};
static constexpr LightTables light_tables;

[[maybe_unused]] static void balance_white_avx2(const ColourMatrix& balance,
                                                const PixelBand& band) {
  if (!fits_words(balance)) return balance_white(balance, band);
  LightBlock block;
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    while (count >= 16) {
      const int32_t part = count < kLightBlock ? count & ~15 : kLightBlock;
      linearise(light_tables.linear, src, block, part);
      for (int32_t i = 0; i < part; i += 16) balance_words(balance, block, i);
      encode(light_tables.encoded, block, dst, part);
      src += 3 * part;
      dst += 3 * part;
      count -= part;
    }
    balance_white(balance, {src, 0, dst, 0, 1, count});
  });
}
