// Linear light by look-ups, kBytes pixels at a time; between them the arithmetic of the plain row
// in words. Names that end in 4 hold four times the linear light: of two such words the upper half
// of the product is (a * b) >> 12.

constexpr int32_t kLightBlock = 128;  // pixels between the stages; 256 take 3 % longer

struct LightBlock {
  alignas(64) uint16_t blue[kLightBlock], green[kLightBlock], red[kLightBlock];
};

// ---- the tables where byte tables take long: loads that deliver several entries in one word

// Each entry is followed and preceded by zeros, so that a load that starts some places early yields
// the entry shifted by as many places: four entries are merged without a shift.
struct LightTables {
  uint64_t zeros, linear[256];
  uint32_t more_zeros, encoded[4097];
  constexpr LightTables() : zeros(0), linear(), more_zeros(0), encoded() {
    for (int32_t i = 0; i < 256; ++i) linear[i] = uint64_t{4} * kLinearLight[i];
    for (int32_t i = 0; i <= 4096; ++i) encoded[i] = encoded_light.byte[i];
  }
};

// Entry i, so many places of its size further up.
template <class Entry>
static inline Entry entry_at(const Entry* table, int32_t i, int32_t bytes) {
  return load<Entry>(reinterpret_cast<const uint8_t*>(table + i) - bytes);
}

static constexpr LightTables light_tables;

// The tables are copied once a call: on the stack four places share one register, and the row takes
// a fifth less time.
struct LightByLoads {
  const LightTables tables = light_tables;

  void linearise(const uint8_t* src, LightBlock& block, int32_t count) const {
    const auto four = [&](const uint8_t* from, uint16_t* to) {
      const uint64_t* t = tables.linear;
      store(to, entry_at(t, from[0], 0) | entry_at(t, from[3], 2) | entry_at(t, from[6], 4) |
                    entry_at(t, from[9], 6));
    };
    for (int32_t i = 0; i < count; i += 4, src += 12) {
      four(src, block.blue + i);
      four(src + 1, block.green + i);
      four(src + 2, block.red + i);
    }
  }

  void encode(const LightBlock& block, uint8_t* dst, int32_t count) const {
    const auto four = [&](uint16_t a, uint16_t b, uint16_t c, uint16_t d) {
      const uint32_t* t = tables.encoded;
      return entry_at(t, a, 0) | entry_at(t, b, 1) | entry_at(t, c, 2) | entry_at(t, d, 3);
    };
    for (int32_t i = 0; i < count; i += 4, dst += 12) {
      const uint16_t *blue = block.blue + i, *green = block.green + i, *red = block.red + i;
      // In words of unequal lengths: equal ones some compilers collect lane by lane into vectors.
      const uint64_t last = four(green[1], red[1], blue[2], green[2]);
      store(dst, four(blue[0], green[0], red[0], blue[1]) | last << 32);
      store(dst + 8, four(red[2], blue[3], green[3], red[3]));
    }
  }
};

// ---- the tables as byte tables

// Words keep the order that interleaving gives them; packing undoes it.
struct LightBytes {
  // Of four times the linear light. Aligned, since compilers load vectors straight from here.
  alignas(64) uint8_t low[256], high[256];
  // From 128 on, entry 16 * i + k of the way back is base[i] and one more for each j with
  // step[j][i] <= k. Entry 4096 is the last base.
  uint8_t base[256], step[4][256];
  constexpr LightBytes() : low(), high(), base(), step() {
    for (int32_t i = 0; i < 256; ++i) {
      low[i] = static_cast<uint8_t>(4 * kLinearLight[i]);
      high[i] = static_cast<uint8_t>(4 * kLinearLight[i] >> 8);
      base[i] = encoded_light.byte[16 * i];
      int32_t steps = 0;
      for (auto& one : step) one[i] = 255;  // never
      for (int32_t k = 1; k < 16 && i >= 8; ++k)
        if (encoded_light.byte[16 * i + k] != encoded_light.byte[16 * i + k - 1])
          step[steps++][i] = static_cast<uint8_t>(k);
    }
  }
};

static constexpr LightBytes light_bytes;

struct LightByTables {
  const ByteTable low = byte_table(light_bytes.low), high = byte_table(light_bytes.high);
  const ByteTable base = byte_table(light_bytes.base);
  const ByteTable step[4] = {byte_table(light_bytes.step[0]), byte_table(light_bytes.step[1]),
                             byte_table(light_bytes.step[2]), byte_table(light_bytes.step[3])};
  const HalfTable first = half_table(encoded_light.byte);

  void linearise(const uint8_t* src, LightBlock& block, int32_t count) const {
    for (int32_t i = 0; i < count; i += kBytes, src += 3 * kBytes) {
      const Planes planes = load_planes(src);
      const auto keep = [&](uint16_t* channel, Bytes levels) {
        store_pair(channel + i, words_of(look_up(low, levels), look_up(high, levels)));
      };
      keep(block.blue, planes.blue);
      keep(block.green, planes.green);
      keep(block.red, planes.red);
    }
  }

  // Linear light 0 ... 4096 to bytes.
  Bytes encode(const uint16_t* light) const {
    const Pair<Words> words = load_pair(light);
    // 4096 >> 4 saturates to 255: it becomes entry 16 * 255, which is the same.
    const Bytes sixteen = pack(each([](Words of) { return of >> 4; }, words));
    const Bytes within = pack(each([](Words of) { return of & all_words(15); }, words));
    Bytes byte = look_up(base, sixteen);
    for (const ByteTable& one : step)
      byte = select(at_most(look_up(one, sixteen), within), byte + 1, byte);
    const ByteMask direct = at_most(sixteen, all_bytes(7));
    return select(direct, look_up(first, pack(words)), byte);
  }

  void encode(const LightBlock& block, uint8_t* dst, int32_t count) const {
    for (int32_t i = 0; i < count; i += kBytes, dst += 3 * kBytes)
      store_planes(dst, {encode(block.blue + i), encode(block.green + i), encode(block.red + i)});
  }
};

// ---- between the tables

static inline Words four_times(Words v) { return v << 2; }

static inline Words times_words(Words a4, Words b4) {
  return (Words)mul_high((SignedWords)a4, (SignedWords)b4);
}

// Blue may have all 16 bits.
static inline Pair<SignedDwords> luminance_of(Words red, Words green, Words blue, uint32_t scale) {
  const Words weights = (Words)all_dwords(1249 + (2528 << 16));
  const auto luminance = [&](SignedDwords red_green, SignedDwords blues) {
    return (SignedDwords)((pair_sums((Words)red_green, weights) + (Dwords)blues * 272) >> scale);
  };
  return each(luminance, dwords_of(red, green), dwords_of(blue));
}

// 4096 * a / b as a float division: exact for 4096 * a below 2^24. b = 0 counts as 1: nobody asks
// for that ratio, but a division by 0 would raise an exception.
static inline SignedDwords ratio_of(SignedDwords a, SignedDwords b) {
  const SignedDwords at_least_1 = (SignedDwords)max((Dwords)b, all_dwords(1));
  return truncate(to_floats(a) * 4096.0f / to_floats(at_least_1));
}

// (blue * gain) >> 12 for four times blue and a gain of up to 16 bits.
static inline Words strong_gain(Words blue4, Words gain) {
  const Words blue8 = blue4 + blue4, high = mul_high(blue8, gain);
  return (high + high) | ((blue8 * gain) >> 15);
}

// What the plain row does between its tables, for a vector of words.
static inline void balance_words(const int32_t* matrix, LightBlock& block, int32_t i) {
  const Words blue4 = load<Words>(block.blue + i), green4 = load<Words>(block.green + i);
  const Words red4 = load<Words>(block.red + i);
  Words red = mul_high(red4, all_words(4 * matrix[0]));
  Words green = mul_high(green4, all_words(4 * matrix[4]));
  Words blue = matrix[8] < 4 * 4096 ? mul_high(blue4, all_words(4 * matrix[8]))
                                    : strong_gain(blue4, all_words(matrix[8]));

  const Pair<SignedDwords> in = luminance_of(red4, green4, blue4, 14);
  const Pair<SignedDwords> out = luminance_of(red, green, blue, 12);
  const Words luminance_in = pack_signed(in), luminance_out = pack_signed(out);
  // Half of the ratio; saturates far above 2047.
  const Words ratio = pack(each(ratio_of, in, out));
  const WordMask too_bright =
      greater((SignedWords)luminance_out, SignedWords{}) & at_most(ratio, all_words(2047));
  const Words ratio32 = ratio << 5;
  red = select(too_bright, mul_high(red, ratio32), red);
  green = select(too_bright, mul_high(green, ratio32), green);
  blue = select(too_bright, mul_high(blue, ratio32), blue);

  const SignedWords one = (SignedWords)all_words(1);
  const WordMask red_spills = greater((SignedWords)red, one);
  const WordMask green_spills = without(greater((SignedWords)green, one), red_spills);
  const WordMask either = red_spills | green_spills;
  const WordMask blue_spills = without(at_most(all_words(2), blue), either);

  // The share of a channel c: (c * (source - 4096)) >> 12 is ((c * source) >> 12) - c.
  const Words source4 = four_times(select(red_spills, red, green));
  const auto share4 = [&](Words channel4) {
    return four_times(mul_high(channel4, source4) - (channel4 >> 2));
  };
  const Words luminance4 = four_times(luminance_in);
  const auto weight4 = [&](WordMask where, int32_t a, int32_t b) {
    return four_times(times_words(luminance4, select(where, all_words(4 * a), all_words(4 * b))));
  };
  const Words to_blue = times_words(share4(blue4), weight4(red_spills, 2252, 4476));
  const Words to_green = times_words(share4(green4), luminance_in & all_words(-4));
  const Words red_by_blue = mul_high(four_times(red4), blue) - (red4 >> 2);
  const Words to_red = times_words(select(green_spills, share4(red4), four_times(red_by_blue)),
                                   weight4(green_spills, 3530, 339));

  const auto keep = [&](uint16_t* channel, Words value) {
    store(channel + i, min(max((SignedWords)value, SignedWords{}), (SignedWords)all_words(4096)));
  };
  // No spill takes as much as 8192: blue may be cut before it.
  blue = min(blue, all_words(16384));
  keep(block.blue, blue + select(either, to_blue, Words{}));
  keep(block.green, green + select(red_spills, to_green, Words{}));
  keep(block.red, red + select(green_spills | blue_spills, to_red, Words{}));
}

template <class Light>
static inline void balance_band(const Light& light, const ColourMatrix& matrix,
                                const PixelBand& band) {
  const int32_t* const entries = matrix.entry;
  LightBlock block;
  const auto balance_part = [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    light.linearise(src, block, count);
    for (int32_t i = 0; i < count; i += kWords) balance_words(entries, block, i);
    light.encode(block, dst, count);
  };
  for_each_part<kLightBlock>(band, balance_part);
}

static void balance_white_wide(const ColourMatrix& matrix, const PixelBand& band) {
  if (is_small(band) || !fits_words(matrix)) return balance_white(matrix, band);
  if constexpr (kQuickTables)
    balance_band(LightByTables(), matrix, band);
  else
    balance_band(LightByLoads(), matrix, band);
}
