// Replaces the rows of colour_selection.inl: 32 pixels at a time in bytes and words, 32 bits only
// for products that need them. On a row in the cache a mask takes 0.64 ns a pixel instead of 4.1,
// an accent 0.62 instead of 5.2, a replacement 0.95 instead of 7.3.

constexpr int32_t kSelectionBlock = 256;  // pixels between the two stages

// What the second stage needs besides value, effective saturation and turn.
enum class Keep { kNothing, kChannels, kChannelsAndHsv };

// What the first stage leaves for the second: the block stays in the nearest cache.
struct SelectionBlock {
  alignas(32) uint8_t blue[kSelectionBlock], green[kSelectionBlock], red[kSelectionBlock];
  alignas(32) uint8_t value[kSelectionBlock];
  alignas(32) uint16_t hue[kSelectionBlock], saturation[kSelectionBlock];
  alignas(32) uint16_t effective[kSelectionBlock];  // saturation
  alignas(32) uint16_t turn[kSelectionBlock];       // degrees between the hue and the reference
  alignas(32) uint8_t distance[kSelectionBlock];    // the limit outside the selection
};

static inline __m256i all_bytes(int32_t x) { return _mm256_set1_epi8(static_cast<char>(x)); }
static inline __m256i all_words(int32_t x) { return _mm256_set1_epi16(static_cast<short>(x)); }
static inline __m256i low_words(__m256i bytes) {
  return _mm256_unpacklo_epi8(bytes, _mm256_setzero_si256());
}
static inline __m256i high_words(__m256i bytes) {
  return _mm256_unpackhi_epi8(bytes, _mm256_setzero_si256());
}
static inline __m256i low_dwords(__m256i words) {
  return _mm256_unpacklo_epi16(words, _mm256_setzero_si256());
}
static inline __m256i high_dwords(__m256i words) {
  return _mm256_unpackhi_epi16(words, _mm256_setzero_si256());
}

// A byte table that ends after so many chunks of 16 entries; 0 beyond.
template <int32_t kMost>
struct ShortTable {
  __m256i chunk[kMost];
  int32_t chunks;
};

template <int32_t kMost>
static inline void prepare(ShortTable<kMost>& table, const uint8_t* bytes, int32_t entries) {
  table.chunks = (entries + 15) / 16;
  for (int32_t i = 0; i < table.chunks; ++i) table.chunk[i] = both_halves(bytes + 16 * i);
}

// A shuffle gives 0 for an index with the top bit set: 0x70 is added, with saturation, to the
// distance from the start of each chunk.
template <int32_t kMost>
static inline __m256i look_up_short(const ShortTable<kMost>& table, __m256i index) {
  __m256i result = _mm256_setzero_si256();
  for (int32_t i = 0; i < table.chunks; ++i) {
    const __m256i within =
        _mm256_adds_epu8(_mm256_sub_epi8(index, all_bytes(16 * i)), all_bytes(0x70));
    result = _mm256_or_si256(result, _mm256_shuffle_epi8(table.chunk[i], within));
  }
  return result;
}

constexpr int32_t kFirstWithoutFade = 34;  // from this value on the table is 0

// The constants of a row.
struct WideSelection {
  ShortTable<3> fade;
  alignas(32) int32_t cosine[361];  // times the effective saturation of the reference
  int32_t reference_saturation;     // effective
  int32_t hue, value;               // of the reference
  int32_t limit, limit_squared, limit_reciprocal;
  int32_t far_turn;  // hues at most so far from the opposite of the reference are all outside
};

// Whether no saturation brings a colour at this turn inside. The chord is at least the distance of
// the reference from the line of that hue; where the angle is obtuse, from the axis.
static inline bool turn_is_far(int64_t limit_squared, int64_t saturation, int64_t cosine) {
  const int64_t obtuse_or_right = cosine > 0 ? cosine : 0;
  return saturation * saturation * ((1 << 30) - obtuse_or_right * obtuse_or_right) >=
         4 * limit_squared * (1 << 30);
}

static inline void prepare(WideSelection& wide, const ColourSelection& selection) {
  uint8_t fade[48];
  // Entry 0 is 256, but black has no saturation to be pulled: 255 does as well.
  for (int32_t i = 0; i < 48; ++i) fade[i] = static_cast<uint8_t>(kFade[i] > 255 ? 255 : kFade[i]);
  prepare(wide.fade, fade, 48);
  wide.reference_saturation = effective_saturation(selection.reference, kFade);
  for (int32_t i = 0; i < 361; ++i) wide.cosine[i] = wide.reference_saturation * kCosine[i];
  wide.hue = selection.reference.hue;
  wide.value = selection.reference.value;
  wide.limit = static_cast<int32_t>(selection.limit);
  wide.limit_squared = static_cast<int32_t>(selection.limit_squared);
  wide.limit_reciprocal = static_cast<int32_t>(selection.limit_reciprocal);
  const auto far = [&](int32_t turn) {
    return turn_is_far(wide.limit_squared, wide.reference_saturation, kCosine[turn]);
  };
  wide.far_turn = -1;
  while (wide.far_turn < 180 && far(179 - wide.far_turn) && far(181 + wide.far_turn))
    ++wide.far_turn;
}

// div_table of eight numbers, as a rounded division: exact for 1 ... 255. For 0 it is what it is;
// the factor that it is multiplied by is 0 then. An estimated reciprocal with a Newton step is
// slower.
static inline __m256i wide_div_table(__m256i n) {
  return _mm256_cvtps_epi32(_mm256_div_ps(_mm256_set1_ps(255 * 4096), _mm256_cvtepi32_ps(n)));
}

static inline __m256i wide_saturation(__m256i range, __m256i largest) {
  return _mm256_srli_epi32(_mm256_mullo_epi32(range, wide_div_table(largest)), 12);
}

static inline __m256i hue_slope(__m256i difference_15, __m256i range) {
  return _mm256_srai_epi32(_mm256_mullo_epi32(difference_15, wide_div_table(range)), 18);
}

// The saturation that the metric sees, of sixteen pixels in words. fade has 1 / 256.
static inline __m256i pull_saturation(__m256i saturation, __m256i value, __m256i fade) {
  const __m256i scaled = _mm256_slli_epi16(_mm256_sub_epi16(value, saturation), 7);
  return _mm256_add_epi16(saturation, _mm256_mulhi_epi16(scaled, _mm256_add_epi16(fade, fade)));
}

struct HueSaturation {
  __m256i hue, saturation;
};

// Sixteen pixels in words. half_base is half of the base angle; plus_minus holds in turn the bytes
// whose difference makes the hue.
static inline HueSaturation hue_and_saturation(__m256i range, __m256i value, __m256i plus_minus,
                                               __m256i half_base) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i difference_15 = _mm256_maddubs_epi16(plus_minus, all_words(15 - (15 << 8)));
  const __m256i low_range = low_dwords(range), high_range = high_dwords(range);
  const __m256i saturation = _mm256_packs_epi32(wide_saturation(low_range, low_dwords(value)),
                                                wide_saturation(high_range, high_dwords(value)));
  const __m256i slope = _mm256_packs_epi32(
      hue_slope(_mm256_srai_epi32(_mm256_unpacklo_epi16(zero, difference_15), 16), low_range),
      hue_slope(_mm256_srai_epi32(_mm256_unpackhi_epi16(zero, difference_15), 16), high_range));
  return {_mm256_sub_epi16(_mm256_add_epi16(half_base, half_base), slope), saturation};
}

// The first stage. Words keep the order that unpacking bytes within the halves gives them.
template <Keep keep>
static inline void to_hsv(const WideSelection& wide, const uint8_t* src, SelectionBlock& block,
                          int32_t count) {
  for (int32_t i = 0; i < count; i += 32, src += 96) {
    const Planes p = load_planes(src);
    const __m256i value = _mm256_max_epu8(p.blue, _mm256_max_epu8(p.green, p.red));
    const __m256i smallest = _mm256_min_epu8(p.blue, _mm256_min_epu8(p.green, p.red));
    const __m256i range = _mm256_sub_epi8(value, smallest);
    const __m256i least_red = _mm256_cmpeq_epi8(smallest, p.red);
    const __m256i least_green = _mm256_cmpeq_epi8(smallest, p.green);
    const __m256i plus =
        _mm256_blendv_epi8(_mm256_blendv_epi8(p.red, p.blue, least_green), p.green, least_red);
    const __m256i minus =
        _mm256_blendv_epi8(_mm256_blendv_epi8(p.green, p.red, least_green), p.blue, least_red);
    const __m256i half_base = _mm256_blendv_epi8(
        _mm256_blendv_epi8(all_bytes(30), all_bytes(150), least_green), all_bytes(90), least_red);
    const HueSaturation low =
        hue_and_saturation(low_words(range), low_words(value), _mm256_unpacklo_epi8(plus, minus),
                           low_words(half_base));
    const HueSaturation high =
        hue_and_saturation(high_words(range), high_words(value), _mm256_unpackhi_epi8(plus, minus),
                           high_words(half_base));

    __m256i low_effective = low.saturation, high_effective = high.saturation;
    const __m256i bright = all_bytes(kFirstWithoutFade);
    const __m256i unfaded = _mm256_cmpeq_epi8(_mm256_max_epu8(value, bright), value);
    if (_mm256_movemask_epi8(unfaded) != -1) {
      const __m256i fade = look_up_short(wide.fade, value);
      low_effective = pull_saturation(low.saturation, low_words(value), low_words(fade));
      high_effective = pull_saturation(high.saturation, high_words(value), high_words(fade));
    }

    store_256(block.value + i, value);
    store_256(block.effective + i, low_effective);
    store_256(block.effective + i + 16, high_effective);
    const __m256i reference = all_words(wide.hue);
    store_256(block.turn + i, _mm256_abs_epi16(_mm256_sub_epi16(reference, low.hue)));
    store_256(block.turn + i + 16, _mm256_abs_epi16(_mm256_sub_epi16(reference, high.hue)));
    if constexpr (keep != Keep::kNothing) {
      store_256(block.blue + i, p.blue);
      store_256(block.green + i, p.green);
      store_256(block.red + i, p.red);
    }
    if constexpr (keep == Keep::kChannelsAndHsv) {
      store_256(block.hue + i, low.hue);
      store_256(block.hue + i + 16, high.hue);
      store_256(block.saturation + i, low.saturation);
      store_256(block.saturation + i + 16, high.saturation);
    }
  }
}

// Eight entries of a 32-bit table, low[0 ... 3] and high[0 ... 3]: broadcast loads and blends are
// twice as fast as the hardware gather.
static inline __m256i look_up_dwords(const int32_t* table, const uint16_t* low,
                                     const uint16_t* high) {
  __m256i a = _mm256_set1_epi32(table[low[0]]), b = _mm256_set1_epi32(table[high[0]]);
  a = _mm256_blend_epi32(a, _mm256_set1_epi32(table[low[1]]), 1 << 1);
  b = _mm256_blend_epi32(b, _mm256_set1_epi32(table[high[1]]), 1 << 5);
  a = _mm256_blend_epi32(a, _mm256_set1_epi32(table[low[2]]), 1 << 2);
  b = _mm256_blend_epi32(b, _mm256_set1_epi32(table[high[2]]), 1 << 6);
  a = _mm256_blend_epi32(a, _mm256_set1_epi32(table[low[3]]), 1 << 3);
  b = _mm256_blend_epi32(b, _mm256_set1_epi32(table[high[3]]), 1 << 7);
  return _mm256_blend_epi32(a, b, 0xf0);
}

// A quarter of the squared chord, of eight pixels. A chord below 0 becomes huge.
static inline __m256i quarter_chord(__m256i saturation, __m256i rise_and_saturation, __m256i cosine,
                                    __m256i reference_squared) {
  const __m256i product = _mm256_srai_epi32(_mm256_mullo_epi32(saturation, cosine), 14);
  const __m256i squares = _mm256_madd_epi16(rise_and_saturation, rise_and_saturation);
  return _mm256_srli_epi32(_mm256_sub_epi32(_mm256_add_epi32(squares, reference_squared), product),
                           2);
}

// Whether 32 pixels are outside by their hues or values alone: most of a picture is, as a rule, and
// saves the rest of the second stage. Costs what it saves when one vector in thirty is outside.
static inline bool all_far(const WideSelection& wide, const SelectionBlock& block, int32_t i) {
  const auto opposite = [&](int32_t at) __attribute__((always_inline)) {
    const __m256i turn = _mm256_sub_epi16(load_256(block.turn + at), all_words(180));
    return _mm256_cmpgt_epi16(all_words(wide.far_turn + 1), _mm256_abs_epi16(turn));
  };
  const __m256i value = load_256(block.value + i), reference = all_bytes(wide.value);
  const __m256i rise =
      _mm256_or_si256(_mm256_subs_epu8(value, reference), _mm256_subs_epu8(reference, value));
  const __m256i near_in_value = _mm256_cmpeq_epi8(
      _mm256_subs_epu8(rise, all_bytes(2 * wide.limit > 256 ? 255 : 2 * wide.limit - 1)),
      _mm256_setzero_si256());
  const __m256i far_in_hue = _mm256_packs_epi16(opposite(i), opposite(i + 16));
  return _mm256_testc_si256(far_in_hue, near_in_value);
}

// The distance of sixteen pixels in words.
static inline __m256i distance_words(const WideSelection& wide, const SelectionBlock& block,
                                     int32_t i, __m256i value) {
  const __m256i saturation = load_256(block.effective + i);
  const __m256i rise = _mm256_sub_epi16(value, all_words(wide.value));
  const __m256i reference_squared =
      _mm256_set1_epi32(wide.reference_saturation * wide.reference_saturation);
  const uint16_t* turn = block.turn + i;
  const __m256i low = quarter_chord(low_dwords(saturation), _mm256_unpacklo_epi16(rise, saturation),
                                    look_up_dwords(wide.cosine, turn, turn + 8), reference_squared);
  const __m256i high =
      quarter_chord(high_dwords(saturation), _mm256_unpackhi_epi16(rise, saturation),
                    look_up_dwords(wide.cosine, turn + 4, turn + 12), reference_squared);
  const __m256i quarter = _mm256_packus_epi32(low, high);  // saturates above every limit
  const __m256i outside =
      _mm256_cmpeq_epi16(_mm256_max_epu16(quarter, all_words(wide.limit_squared)), quarter);
  // (quarter * reciprocal) >> 14. For limit 1 the factor becomes 0, and so is every distance
  // inside.
  const __m256i distance = _mm256_mulhi_epu16(quarter, all_words(4 * wide.limit_reciprocal));
  return _mm256_blendv_epi8(distance, all_words(wide.limit), outside);
}

// The second stage.
static inline void find_distances(const WideSelection& wide, SelectionBlock& block, int32_t count) {
  for (int32_t i = 0; i < count; i += 32) {
    __m256i distance = all_bytes(wide.limit);
    if (!all_far(wide, block, i)) {
      const __m256i value = load_256(block.value + i);
      distance = _mm256_packus_epi16(distance_words(wide, block, i, low_words(value)),
                                     distance_words(wide, block, i + 16, high_words(value)));
    }
    store_256(block.distance + i, distance);
  }
}

// From pixels to distances; the other sets of instructions have a body of their own for it.
struct MeasureAvx2 {
  static constexpr int32_t kPixels = 32;  // at a time
  WideSelection wide;

  template <Keep keep>
  void measure(const uint8_t* src, SelectionBlock& block, int32_t count) const {
    to_hsv<keep>(wide, src, block, count);
    find_distances(wide, block, count);
  }
};

static inline void prepare(MeasureAvx2& metric, const ColourSelection& selection) {
  prepare(metric.wide, selection);
}

// Walks a row in blocks: measures each and hands it to finish(src, dst, block, count). The rest of
// the row is filled up with black to a whole vector.
template <Keep keep, class Measure, class Finish>
static inline void walk_blocks(const Measure& metric, const PixelBand& band, const Finish& finish) {
  constexpr int32_t kPixels = Measure::kPixels;
  SelectionBlock block;
  for_each_row(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    while (count >= kPixels) {
      const int32_t part = count < kSelectionBlock ? count / kPixels * kPixels : kSelectionBlock;
      metric.template measure<keep>(src, block, part);
      finish(src, dst, block, part);
      src += 3 * part;
      dst += 3 * part;
      count -= part;
    }
    if (count > 0) {
      const size_t bytes = 3 * static_cast<size_t>(count);
      uint8_t pixels[3 * kPixels] = {};
      __builtin_memcpy(pixels, src, bytes);
      metric.template measure<keep>(pixels, block, kPixels);
      finish(pixels, pixels, block, kPixels);
      __builtin_memcpy(dst, pixels, bytes);
    }
  });
}

constexpr int32_t kFewPixels = 16;  // too few to prepare anything for

// Blue, green and red weighted to grey, of sixteen pixels in words.
static inline __m256i grey_words(__m256i blue_red, __m256i green) {
  const __m256i blue_and_red = _mm256_maddubs_epi16(blue_red, all_words(28 + (76 << 8)));
  const __m256i weighted_green = _mm256_mullo_epi16(green, all_words(151));
  return _mm256_srli_epi16(_mm256_add_epi16(blue_and_red, weighted_green), 8);
}

// channel + ((fade * (grey - channel)) >> 14)
static inline __m256i toward_grey(__m256i channel, __m256i grey, __m256i fade) {
  return _mm256_add_epi16(
      channel, _mm256_mulhi_epi16(fade, _mm256_slli_epi16(_mm256_sub_epi16(grey, channel), 2)));
}

template <class Measure>
static inline void accent_colour_wide(const ColourSelection& selection, const PixelBand& band) {
  if (band.count < kFewPixels) return accent_colour(selection, band);
  Measure metric;
  prepare(metric, selection);
  const __m256i limit = all_bytes(static_cast<int32_t>(selection.limit));
  const __m256i reciprocal = all_words(static_cast<int32_t>(selection.limit_reciprocal));
  walk_blocks<Keep::kChannels>(
      metric, band, [&](const uint8_t*, uint8_t* to, const SelectionBlock& block, int32_t part) {
        for (int32_t i = 0; i < part; i += 32) {
          const __m256i blue = load_256(block.blue + i), green = load_256(block.green + i);
          const __m256i red = load_256(block.red + i);
          const __m256i low_grey = grey_words(_mm256_unpacklo_epi8(blue, red), low_words(green));
          const __m256i high_grey = grey_words(_mm256_unpackhi_epi8(blue, red), high_words(green));
          const __m256i grey = _mm256_packus_epi16(low_grey, high_grey);

          const __m256i distance = load_256(block.distance + i);
          const __m256i outside = _mm256_cmpeq_epi8(distance, limit);
          if (_mm256_movemask_epi8(outside) == -1) {
            store_planes(to + 3 * i, {grey, grey, grey});
            continue;
          }
          const __m256i low_fade = _mm256_mullo_epi16(low_words(distance), reciprocal);
          const __m256i high_fade = _mm256_mullo_epi16(high_words(distance), reciprocal);
          const auto accent = [&](__m256i channel) __attribute__((always_inline)) {
            const __m256i mixed =
                _mm256_packus_epi16(toward_grey(low_words(channel), low_grey, low_fade),
                                    toward_grey(high_words(channel), high_grey, high_fade));
            return _mm256_blendv_epi8(mixed, grey, outside);
          };
          store_planes(to + 3 * i, {accent(blue), accent(green), accent(red)});
        }
      });
}

// (weight * x) >> 16 for an unsigned weight and a signed x.
static inline __m256i weighted_words(__m256i weight, __m256i x) {
  return _mm256_add_epi16(_mm256_mulhi_epi16(weight, x),
                          _mm256_and_si256(_mm256_srai_epi16(weight, 15), x));
}

static inline __m256i to_byte_range(__m256i words) {
  return _mm256_max_epi16(_mm256_min_epi16(words, all_words(255)), _mm256_setzero_si256());
}

// The constants of a replacement.
struct WideShift {
  ShortTable<16> low_weight, high_weight;  // bytes of the weights up to 65535; 0 outside
  __m256i hue, saturation, value;          // words
};

static inline void prepare(WideShift& wide, const ColourShift& shift, int32_t limit) {
  uint8_t low[256], high[256];
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t weight = shift.weight[i] > 65535 ? 65535 : shift.weight[i];
    low[i] = static_cast<uint8_t>(weight);
    high[i] = static_cast<uint8_t>(weight >> 8);
  }
  prepare(wide.low_weight, low, limit);
  prepare(wide.high_weight, high, limit);
  wide.hue = all_words(shift.hue);
  wide.saturation = all_words(shift.saturation);
  wide.value = all_words(shift.value);
}

// The candidates for the channels of a shifted colour, and its sector: sixteen pixels in words.
struct Shifted {
  __m256i v, p, q, t, sector;
};

// full marks the pixels whose weight is 65536, which no word holds: they take the whole step.
static inline Shifted shift_words(const WideShift& shift, __m256i hue, __m256i saturation,
                                  __m256i value, __m256i weight, __m256i full) {
  hue = _mm256_add_epi16(hue, shift.hue);
  hue = _mm256_sub_epi16(hue,
                         _mm256_and_si256(_mm256_cmpgt_epi16(hue, all_words(359)), all_words(360)));
  const __m256i more_saturation =
      _mm256_blendv_epi8(weighted_words(weight, shift.saturation), shift.saturation, full);
  const __m256i more_value =
      _mm256_blendv_epi8(weighted_words(weight, shift.value), shift.value, full);
  const __m256i grey = _mm256_cmpeq_epi16(saturation, _mm256_setzero_si256());
  saturation =
      to_byte_range(_mm256_adds_epi16(saturation, _mm256_andnot_si256(grey, more_saturation)));
  value = to_byte_range(_mm256_adds_epi16(value, more_value));

  __m256i p[2], q[2], t[2], sector[2];
  for (int32_t half = 0; half < 2; ++half) {
    const auto floats = [&](__m256i words) __attribute__((always_inline)) {
      return _mm256_cvtepi32_ps(half == 0 ? low_dwords(words) : high_dwords(words));
    };
    const __m256 position = _mm256_div_ps(floats(hue), _mm256_set1_ps(60.0f));
    sector[half] = _mm256_cvttps_epi32(position);
    const __m256 fraction = _mm256_sub_ps(position, _mm256_cvtepi32_ps(sector[half]));
    const __m256 top = floats(value);
    const __m256 chroma =
        _mm256_mul_ps(top, _mm256_div_ps(floats(saturation), _mm256_set1_ps(255.0f)));
    const __m256 part = _mm256_mul_ps(chroma, fraction);
    const __m256 rest = _mm256_sub_ps(top, chroma);
    p[half] = _mm256_cvttps_epi32(rest);
    q[half] = _mm256_cvttps_epi32(_mm256_sub_ps(top, part));
    t[half] = _mm256_cvttps_epi32(_mm256_add_ps(rest, part));
  }
  return {value, _mm256_packs_epi32(p[0], p[1]), _mm256_packs_epi32(q[0], q[1]),
          _mm256_packs_epi32(t[0], t[1]), _mm256_packs_epi32(sector[0], sector[1])};
}

// Chooses among the candidates by what a channel takes in sectors 0 ... 5: 0 v, 1 p, 2 q, 3 t.
static inline __m256i by_sector(const Shifted& bytes, __m128i choices) {
  const __m256i choice = _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(choices), bytes.sector);
  const __m256i bit0 = _mm256_slli_epi16(choice, 7), bit1 = _mm256_slli_epi16(choice, 6);
  return _mm256_blendv_epi8(_mm256_blendv_epi8(bytes.v, bytes.p, bit0),
                            _mm256_blendv_epi8(bytes.q, bytes.t, bit0), bit1);
}

static inline Planes channels_of(const Shifted& low, const Shifted& high) {
  const Shifted bytes = {_mm256_packus_epi16(low.v, high.v), _mm256_packus_epi16(low.p, high.p),
                         _mm256_packus_epi16(low.q, high.q), _mm256_packus_epi16(low.t, high.t),
                         _mm256_packus_epi16(low.sector, high.sector)};
  return {by_sector(bytes, _mm_setr_epi8(1, 1, 3, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)),
          by_sector(bytes, _mm_setr_epi8(3, 0, 0, 2, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)),
          by_sector(bytes, _mm_setr_epi8(0, 2, 1, 1, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0))};
}

static inline void copy_32_pixels(const uint8_t* src, uint8_t* dst) {
  for (int32_t i = 0; i < 96; i += 32) store_256(dst + i, load_256(src + i));
}

// Shifts that do not fit the words of the wide body, or turn by more than once, are left to the
// plain row.
static inline bool fits_words(const ColourShift& shift) {
  return shift.hue >= 0 && shift.hue < 360 &&                        //
         shift.saturation >= -32767 && shift.saturation <= 32767 &&  //
         shift.value >= -32767 && shift.value <= 32767;
}

// 32 pixels of a block that are not all outside.
static inline void replace_32(const WideShift& shift, const SelectionBlock& block, int32_t i,
                              __m256i distance, uint8_t* dst) {
  const __m256i value = load_256(block.value + i);
  const __m256i low_byte = look_up_short(shift.low_weight, distance);
  const __m256i high_byte = look_up_short(shift.high_weight, distance);
  const __m256i full = _mm256_cmpeq_epi8(distance, _mm256_setzero_si256());
  const __m256i low_weight = _mm256_unpacklo_epi8(low_byte, high_byte);
  const __m256i high_weight = _mm256_unpackhi_epi8(low_byte, high_byte);
  const Planes target = channels_of(
      shift_words(shift, load_256(block.hue + i), load_256(block.saturation + i), low_words(value),
                  low_weight, _mm256_unpacklo_epi8(full, full)),
      shift_words(shift, load_256(block.hue + i + 16), load_256(block.saturation + i + 16),
                  high_words(value), high_weight, _mm256_unpackhi_epi8(full, full)));
  const auto mix = [&](const uint8_t* channel, __m256i to) __attribute__((always_inline)) {
    const __m256i from = load_256(channel + i);
    const __m256i low_from = low_words(from), high_from = high_words(from);
    const __m256i low_step = weighted_words(low_weight, _mm256_sub_epi16(low_words(to), low_from));
    const __m256i high_step =
        weighted_words(high_weight, _mm256_sub_epi16(high_words(to), high_from));
    return _mm256_blendv_epi8(_mm256_packus_epi16(_mm256_add_epi16(low_from, low_step),
                                                  _mm256_add_epi16(high_from, high_step)),
                              to, full);
  };
  store_planes(dst, {mix(block.blue, target.blue), mix(block.green, target.green),
                     mix(block.red, target.red)});
}

template <class Measure>
static inline void replace_colour_wide(const ColourSelection& selection, const ColourShift& shift,
                                       const PixelBand& band) {
  if (band.count < kFewPixels || !fits_words(shift)) return replace_colour(selection, shift, band);
  Measure metric;
  prepare(metric, selection);
  WideShift wide_shift;
  prepare(wide_shift, shift, static_cast<int32_t>(selection.limit));
  const __m256i limit = all_bytes(static_cast<int32_t>(selection.limit));
  walk_blocks<Keep::kChannelsAndHsv>(
      metric, band,
      [&](const uint8_t* from, uint8_t* to, const SelectionBlock& block, int32_t part) {
        for (int32_t i = 0; i < part; i += 32) {
          const __m256i distance = load_256(block.distance + i);
          if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(distance, limit)) == -1)
            copy_32_pixels(from + 3 * i, to + 3 * i);
          else
            replace_32(wide_shift, block, i, distance, to + 3 * i);
        }
      });
}

[[maybe_unused]] static void draw_selection_avx2(const ColourSelection& selection,
                                                 const uint8_t* level, const PixelBand& band) {
  if (band.count < kFewPixels) return draw_selection(selection, level, band);
  MeasureAvx2 metric;
  prepare(metric, selection);
  ShortTable<16> levels;
  prepare(levels, level, static_cast<int32_t>(selection.limit) + 1);
  walk_blocks<Keep::kNothing>(
      metric, band, [&](const uint8_t*, uint8_t* to, const SelectionBlock& block, int32_t part) {
        for (int32_t i = 0; i < part; i += 32) {
          const __m256i grey = look_up_short(levels, load_256(block.distance + i));
          store_planes(to + 3 * i, {grey, grey, grey});
        }
      });
}

[[maybe_unused]] static void accent_colour_avx2(const ColourSelection& selection,
                                                const PixelBand& band) {
  accent_colour_wide<MeasureAvx2>(selection, band);
}

[[maybe_unused]] static void replace_colour_avx2(const ColourSelection& selection,
                                                 const ColourShift& shift, const PixelBand& band) {
  replace_colour_wide<MeasureAvx2>(selection, shift, band);
}
