// The pixels near a reference colour, kBytes at a time: bytes and words, 32 bits only for products
// that need them. A block of pixels goes through three stages, from hue, saturation and value to
// distances to what is done with them, and stays in the nearest cache.

constexpr int32_t kSelectionBlock = 256;  // pixels

// What the last stage needs besides distances.
enum class Keep { kNothing, kChannels, kChannelsAndHsv };

// Words are in the order of interleaving.
struct SelectionBlock {
  alignas(64) uint8_t blue[kSelectionBlock], green[kSelectionBlock], red[kSelectionBlock];
  alignas(64) uint8_t value[kSelectionBlock];
  alignas(64) uint16_t hue[kSelectionBlock], saturation[kSelectionBlock];
  alignas(64) uint16_t effective[kSelectionBlock];  // saturation
  alignas(64) uint16_t turn[kSelectionBlock];       // degrees between the hue and the reference
  alignas(64) uint8_t distance[kSelectionBlock];    // the limit outside the selection
};

// A vector of bytes, or what interleaves to it, as words.
struct WordPair {
  Words low, high;
};
static inline WordPair words_of(Bytes low_bytes, Bytes high_bytes) {
  return {(Words)interleave_low(low_bytes, high_bytes),
          (Words)interleave_high(low_bytes, high_bytes)};
}
static inline WordPair words_of(Bytes bytes) { return words_of(bytes, Bytes{}); }

static inline SignedDwords low_dwords(Words words) {
  return (SignedDwords)interleave_low(words, Words{});
}
static inline SignedDwords high_dwords(Words words) {
  return (SignedDwords)interleave_high(words, Words{});
}

constexpr int32_t kFirstWithoutFade = 34;  // from this value on kFade is 0

// Tables in bytes.
struct SelectionBytes {
  uint8_t fade[256];
  uint8_t low[256], middle[256], high[16];  // of div_table; from 16 on only two bytes
  constexpr SelectionBytes() : fade(), low(), middle(), high() {
    for (int32_t i = 0; i < 256; ++i) {
      // Entry 0 is 256, but black has no saturation to be pulled: 255 does as well.
      fade[i] = static_cast<uint8_t>(kFade[i] > 255 ? 255 : kFade[i]);
      low[i] = static_cast<uint8_t>(div_table[i]);
      middle[i] = static_cast<uint8_t>(div_table[i] >> 8);
      if (i < 16) high[i] = static_cast<uint8_t>(div_table[i] >> 16);
    }
  }
};
static constexpr SelectionBytes selection_bytes;

// What every body needs of a selection.
struct SelectionWords {
  explicit SelectionWords(const ColourSelection& selection)
      : hue(selection.reference.hue),
        value(selection.reference.value),
        saturation(effective_saturation(selection.reference, kFade)),
        limit(static_cast<int32_t>(selection.limit)),
        limit_squared(static_cast<int32_t>(selection.limit_squared)),
        limit_reciprocal(static_cast<int32_t>(selection.limit_reciprocal)) {}
  int32_t hue, value, saturation;  // of the reference, the saturation effective
  int32_t limit, limit_squared, limit_reciprocal;
  ShortTable fade = short_table(selection_bytes.fade, kFirstWithoutFade);
};

// The distances of a vector of words; cosines are those of the turns times the saturation of the
// reference.
static inline Words distances_of(const SelectionWords& of, Words value, Words saturation,
                                 Dwords low_cosines, Dwords high_cosines) {
  const Words rise = value - all_words(of.value);
  // A quarter of the squared chord. A chord below 0 becomes huge.
  const auto quarter_chord = [&](SignedDwords dwords, Words rise_and_saturation, Dwords cosines) {
    const Dwords product = (Dwords)((SignedDwords)((Dwords)dwords * cosines) >> 14);
    const Dwords squares = pair_sums(rise_and_saturation, rise_and_saturation);
    const Dwords reference = all_dwords(static_cast<uint32_t>(of.saturation * of.saturation));
    return (SignedDwords)((squares + reference - product) >> 2);
  };
  const Words quarter =  // saturates above every limit
      pack(quarter_chord(low_dwords(saturation), interleave_low(rise, saturation), low_cosines),
           quarter_chord(high_dwords(saturation), interleave_high(rise, saturation), high_cosines));
  // (quarter * reciprocal) >> 14. For limit 1 the factor becomes 0, and so is every distance inside.
  const Words distance = mul_high(quarter, all_words(4 * of.limit_reciprocal));
  return select(at_most(all_words(of.limit_squared), quarter), all_words(of.limit), distance);
}

// ---- where byte tables take long: divisions, and loads of cosines

// Whether no saturation brings a colour at this turn inside. The chord is at least the distance of
// the reference from the line of that hue; where the angle is obtuse, from the axis.
static inline bool turn_is_far(int64_t limit_squared, int64_t saturation, int64_t cosine) {
  const int64_t obtuse_or_right = cosine > 0 ? cosine : 0;
  return saturation * saturation * ((1 << 30) - obtuse_or_right * obtuse_or_right) >=
         4 * limit_squared * (1 << 30);
}

struct SelectionByLoads : SelectionWords {
  explicit SelectionByLoads(const ColourSelection& selection) : SelectionWords(selection) {
    for (int32_t i = 0; i < 361; ++i) cosine[i] = static_cast<uint32_t>(saturation * kCosine[i]);
    const auto far = [&](int32_t turn) {
      return turn_is_far(limit_squared, saturation, kCosine[turn]);
    };
    far_turns = 0;  // at most 180: at no turn the cosine is 1, and limit_squared is not 0
    while (far(180 - far_turns) && far(180 + far_turns)) ++far_turns;
  }
  uint32_t cosine[361];  // times the saturation
  int32_t far_turns;     // hues less far from the opposite of the reference are all outside

  // div_table as a rounded division, exact for 1 ... 255. Where it is 0 the factor is 0.
  struct Reciprocals {
    SignedDwords part[4];  // low and high dwords of the low words, and of the high words
    explicit Reciprocals(const WordPair& numbers) {
      const auto reciprocal = [](SignedDwords n) {  // nothing is divided by 0
        return rounded(255.0f * 4096.0f / max(to_floats(n), all_floats(1.0f)));
      };
      part[0] = reciprocal(low_dwords(numbers.low)), part[1] = reciprocal(high_dwords(numbers.low));
      part[2] = reciprocal(low_dwords(numbers.high));
      part[3] = reciprocal(high_dwords(numbers.high));
    }
    // (range * reciprocal) >> 12
    WordPair saturation(const WordPair& range) const {
      const auto scaled = [](SignedDwords a, SignedDwords b) {
        return (SignedDwords)((Dwords)(a * b) >> 12);
      };
      const auto words = [&](Words a, int32_t k) {
        return pack_signed(scaled(low_dwords(a), part[k]), scaled(high_dwords(a), part[k + 1]));
      };
      return {words(range.low, 0), words(range.high, 2)};
    }
    // (x * reciprocal) >> 18 for a signed x
    WordPair slope(const WordPair& x) const {
      const auto words = [&](Words a, int32_t k) {
        const SignedDwords low = (SignedDwords)interleave_low(Words{}, a) >> 16;
        const SignedDwords high = (SignedDwords)interleave_high(Words{}, a) >> 16;
        return pack_signed((low * part[k]) >> 18, (high * part[k + 1]) >> 18);
      };
      return {words(x.low, 0), words(x.high, 2)};
    }
  };
  Reciprocals reciprocals(Bytes, const WordPair& numbers) const { return Reciprocals(numbers); }

  // Whether a vector is outside by its hues or values alone: most of a picture is, as a rule, and
  // saves the rest: 0.03 to 0.13 ns a pixel of a mask or tint with AVX2, 0.09 to 0.17 with SSE4.1.
  // Costs what it saves when one vector in thirty is outside.
  bool all_far(const SelectionBlock& block, int32_t i) const {
    const auto from_opposite = [&](int32_t at) {
      return (Words)magnitude((SignedWords)(load<Words>(block.turn + at) - all_words(180)));
    };
    const Bytes opposite = pack(from_opposite(i), from_opposite(i + kWords));
    const Bytes of_value = load<Bytes>(block.value + i), reference = all_bytes(value);
    const Bytes rise =
        subtract_saturating(of_value, reference) | subtract_saturating(reference, of_value);
    const int32_t reach = 2 * limit > 256 ? 255 : 2 * limit - 1;
    return !any(at_most(all_bytes(far_turns), opposite) & at_most(rise, all_bytes(reach)));
  }

  Bytes distances(const SelectionBlock& block, int32_t i) const {
    if (all_far(block, i)) return all_bytes(limit);
    const auto part = [&](Words of_value, int32_t at) {
      const auto cosines = [&](const uint16_t* turn) {  // in the order of interleaving
        return entries_at([&](int32_t i) { return cosine + turn[i / 4 * 8 + i % 4]; });
      };
      return distances_of(*this, of_value, load<Words>(block.effective + at),
                          cosines(block.turn + at), cosines(block.turn + at + 4));
    };
    const WordPair values = words_of(load<Bytes>(block.value + i));
    return pack(part(values.low, i), part(values.high, i + kWords));
  }
};

// ---- the same by byte tables

struct SelectionByTables : SelectionWords {
  explicit SelectionByTables(const ColourSelection& selection) : SelectionWords(selection) {
    uint8_t bytes[384];
    for (int32_t k = 0; k < 3; ++k) {
      for (int32_t i = 0; i < 361; ++i)
        bytes[i] = static_cast<uint8_t>((saturation * kCosine[i]) >> (8 * k));
      for (int32_t i = 361; i < 384; ++i) bytes[i] = 0;
      cosine[k] = byte_table(bytes);
      cosine_above[k] = half_table(bytes + 256);
    }
  }
  ByteTable low = byte_table(selection_bytes.low), middle = byte_table(selection_bytes.middle);
  Bytes high = in_all_blocks(selection_bytes.high);
  ByteTable cosine[3];        // times the saturation: bytes of degrees up to 255
  HalfTable cosine_above[3];  // from 256 on

  struct Reciprocals {
    WordPair low, above;  // the lower 16 bits, and the rest
    // (range * reciprocal) >> 12
    WordPair saturation(const WordPair& range) const {
      const auto words = [](Words a, Words b, Words above) {
        return mul_high(a << 4, b) + (a << 4) * above;
      };
      return {words(range.low, low.low, above.low), words(range.high, low.high, above.high)};
    }
    // (x * reciprocal) >> 18 for a signed x. As a signed word the lower half of the reciprocal is
    // 65536 too small where its top bit is set.
    WordPair slope(const WordPair& x) const {
      const auto words = [](Words a, Words b, Words rest) {
        const Words high = (Words)mul_high((SignedWords)a, (SignedWords)b) +
                           (a & (Words)((SignedWords)b >> 15)) + a * rest;
        return (Words)((SignedWords)high >> 2);
      };
      return {words(x.low, low.low, above.low), words(x.high, low.high, above.high)};
    }
  };
  Reciprocals reciprocals(Bytes numbers, const WordPair&) const {
    return {words_of(look_up(low, numbers), look_up(middle, numbers)),
            words_of(shuffle_or_zero(high, numbers))};
  }

  Bytes distances(const SelectionBlock& block, int32_t i) const {
    const Words low_turn = load<Words>(block.turn + i);
    const Words high_turn = load<Words>(block.turn + i + kWords);
    const Bytes index = pack(low_turn & all_words(255), high_turn & all_words(255));
    const ByteMask above = equal(pack(low_turn >> 8, high_turn >> 8), all_bytes(1));
    const auto cosine_byte = [&](int32_t k) {
      return select(above, look_up(cosine_above[k], index), look_up(cosine[k], index));
    };
    const WordPair lower = words_of(cosine_byte(0), cosine_byte(1));
    const WordPair upper = words_of(Bytes{}, cosine_byte(2));
    const auto part = [&](Words of_value, int32_t at, Words low_words, Words high_words) {
      const Words sign_extended = (Words)((SignedWords)high_words >> 8);
      return distances_of(*this, of_value, load<Words>(block.effective + at),
                          (Dwords)interleave_low(low_words, sign_extended),
                          (Dwords)interleave_high(low_words, sign_extended));
    };
    const WordPair values = words_of(load<Bytes>(block.value + i));
    return pack(part(values.low, i, lower.low, upper.low),
                part(values.high, i + kWords, lower.high, upper.high));
  }
};

// ---- the stages

// The saturation that the metric sees. fade has 1 / 256.
static inline Words pull_saturation(Words saturation, Words value, Words fade) {
  const Words pull = (value - saturation) << 7;
  return saturation + (Words)mul_high((SignedWords)pull, (SignedWords)(fade + fade));
}

template <Keep keep, class Metric>
static inline void to_hsv(const Metric& metric, const uint8_t* src, SelectionBlock& block,
                          int32_t i) {
  const Planes p = load_planes(src);
  const Bytes value = max(p.blue, max(p.green, p.red));
  const Bytes smallest = min(p.blue, min(p.green, p.red));
  const ByteMask least_red = equal(smallest, p.red), least_green = equal(smallest, p.green);
  const auto choose = [&](Bytes by_red, Bytes by_green, Bytes by_blue) {
    return select(least_red, by_red, select(least_green, by_green, by_blue));
  };
  const Bytes plus = choose(p.green, p.blue, p.red), minus = choose(p.blue, p.red, p.green);
  const WordPair half_base = words_of(choose(all_bytes(90), all_bytes(150), all_bytes(30)));
  const Bytes times_15 = (Bytes)all_words(15 - (15 << 8));  // bytes 15, -15
  const WordPair difference_15 = {byte_pair_sums(interleave_low(plus, minus), times_15),
                                  byte_pair_sums(interleave_high(plus, minus), times_15)};

  const Bytes range = value - smallest;
  const WordPair ranges = words_of(range);
  const WordPair saturation = metric.reciprocals(value, words_of(value)).saturation(ranges);
  const WordPair slope = metric.reciprocals(range, ranges).slope(difference_15);
  const WordPair hue = {half_base.low + half_base.low - slope.low,
                        half_base.high + half_base.high - slope.high};

  WordPair effective = saturation;
  if (!all(at_most(all_bytes(kFirstWithoutFade), value))) {
    const WordPair fade = words_of(look_up(metric.fade, value)), values = words_of(value);
    effective = {pull_saturation(saturation.low, values.low, fade.low),
                 pull_saturation(saturation.high, values.high, fade.high)};
  }

  const auto keep_words = [&](uint16_t* to, const WordPair& words) {
    store(to + i, words.low);
    store(to + i + kWords, words.high);
  };
  const Words reference = all_words(metric.hue);
  store(block.value + i, value);
  keep_words(block.effective, effective);
  keep_words(block.turn, {(Words)magnitude((SignedWords)(reference - hue.low)),
                          (Words)magnitude((SignedWords)(reference - hue.high))});
  if constexpr (keep != Keep::kNothing) {
    store(block.blue + i, p.blue);
    store(block.green + i, p.green);
    store(block.red + i, p.red);
  }
  if constexpr (keep == Keep::kChannelsAndHsv) {
    keep_words(block.hue, hue);
    keep_words(block.saturation, saturation);
  }
}

// Hands each vector of pixels to finish(src, dst, block, i, distance); i is its place in the block.
template <Keep keep, class Metric, class Finish>
static inline void select_pixels(const Metric& metric, const PixelBand& band,
                                 const Finish& finish) {
  SelectionBlock block;
  for_each_part<kSelectionBlock>(band, [&](const uint8_t* src, uint8_t* dst, int32_t count) {
    for (int32_t i = 0; i < count; i += kBytes) to_hsv<keep>(metric, src + 3 * i, block, i);
    for (int32_t i = 0; i < count; i += kBytes)
      store(block.distance + i, metric.distances(block, i));
    for (int32_t i = 0; i < count; i += kBytes)
      finish(src + 3 * i, dst + 3 * i, block, i, load<Bytes>(block.distance + i));
  });
}
template <Keep keep, class Finish>
static inline void select_pixels(const ColourSelection& selection, const PixelBand& band,
                                 const Finish& finish) {
  if constexpr (kQuickTables)
    select_pixels<keep>(SelectionByTables(selection), band, finish);
  else
    select_pixels<keep>(SelectionByLoads(selection), band, finish);
}

// ---- what is done with them

static void draw_selection_wide(const ColourSelection& selection, const uint8_t* level,
                                const PixelBand& band) {
  if (is_small(band)) return draw_selection(selection, level, band);
  const ShortTable levels = short_table(level, static_cast<int32_t>(selection.limit) + 1);
  select_pixels<Keep::kNothing>(
      selection, band,
      [&](const uint8_t*, uint8_t* dst, const SelectionBlock&, int32_t, Bytes distance) {
        const Bytes grey = look_up(levels, distance);
        store_planes(dst, {grey, grey, grey});
      });
}

// channel + ((fade * (grey - channel)) >> 14)
static inline Words toward_grey(Words channel, Words grey, Words fade) {
  return channel + (Words)mul_high((SignedWords)fade, (SignedWords)((grey - channel) << 2));
}

static void accent_colour_wide(const ColourSelection& selection, const PixelBand& band) {
  if (is_small(band)) return accent_colour(selection, band);
  const Bytes limit = all_bytes(static_cast<int32_t>(selection.limit));
  const Words reciprocal = all_words(static_cast<int32_t>(selection.limit_reciprocal));
  select_pixels<Keep::kChannels>(
      selection, band,
      [&](const uint8_t*, uint8_t* dst, const SelectionBlock& block, int32_t i, Bytes distance) {
        const Bytes blue = load<Bytes>(block.blue + i), red = load<Bytes>(block.red + i);
        const Bytes green = load<Bytes>(block.green + i);
        const Bytes weights = (Bytes)all_words(28 + (76 << 8));
        const auto grey_of = [&](Bytes blue_red, Words greens) {
          return (byte_pair_sums(blue_red, weights) + greens * 151) >> 8;
        };
        const WordPair grey = {grey_of(interleave_low(blue, red), words_of(green).low),
                               grey_of(interleave_high(blue, red), words_of(green).high)};
        const Bytes greys = pack(grey.low, grey.high);
        const ByteMask outside = equal(distance, limit);
        if (all(outside)) return store_planes(dst, {greys, greys, greys});

        const WordPair distances = words_of(distance);
        const WordPair fade = {distances.low * reciprocal, distances.high * reciprocal};
        const auto accented = [&](Bytes channel) {
          const WordPair words = words_of(channel);
          return select(outside, greys,
                        pack(toward_grey(words.low, grey.low, fade.low),
                             toward_grey(words.high, grey.high, fade.high)));
        };
        store_planes(dst, {accented(blue), accented(green), accented(red)});
      });
}

// (weight * x) >> 16 for an unsigned weight and a signed x.
static inline Words weighted_words(Words weight, Words x) {
  return (Words)mul_high((SignedWords)weight, (SignedWords)x) +
         ((Words)((SignedWords)weight >> 15) & x);
}

static inline Words to_byte_range(SignedWords words) {
  return (Words)max(min(words, (SignedWords)all_words(255)), SignedWords{});
}

// The constants of a replacement.
struct WideShift {
  WideShift(const ColourShift& shift, int32_t limit)
      : hue(all_words(shift.hue)),
        saturation(all_words(shift.saturation)),
        value(all_words(shift.value)) {
    uint8_t low[256], high[256];
    for (int32_t i = 0; i < 256; ++i) {
      const int32_t weight = shift.weight[i] > 65535 ? 65535 : shift.weight[i];
      low[i] = static_cast<uint8_t>(weight);
      high[i] = static_cast<uint8_t>(weight >> 8);
    }
    low_weight = short_table(low, limit);
    high_weight = short_table(high, limit);
  }
  ShortTable low_weight, high_weight;  // bytes of the weights up to 65535; 0 outside
  Words hue, saturation, value;
};

// The candidates for the channels of shifted colours, and their sectors.
template <class V>
struct Shifted {
  V v, p, q, t, sector;
};

// full marks the pixels whose weight is 65536, which no word holds: they take the whole step.
static inline Shifted<Words> shift_words(const WideShift& shift, Words hue, Words saturation,
                                         Words value, Words weight, WordMask full) {
  hue += shift.hue;
  hue = select(greater((SignedWords)hue, (SignedWords)all_words(359)), hue - 360, hue);
  const auto stepped = [&](Words from, Words step) {
    return to_byte_range(add_saturating((SignedWords)from, (SignedWords)step));
  };
  const auto step_of = [&](Words step) { return select(full, step, weighted_words(weight, step)); };
  const WordMask grey = equal(saturation, Words{});
  saturation = stepped(saturation, select(grey, Words{}, step_of(shift.saturation)));
  value = stepped(value, step_of(shift.value));

  SignedDwords p[2], q[2], t[2], sector[2];
  for (int32_t half = 0; half < 2; ++half) {
    const auto floats = [&](Words words) {
      return to_floats(half == 0 ? low_dwords(words) : high_dwords(words));
    };
    const Floats position = floats(hue) / 60.0f;
    sector[half] = truncate(position);
    const Floats fraction = position - to_floats(sector[half]);
    const Floats top = floats(value);
    const Floats chroma = top * (floats(saturation) / 255.0f);
    const Floats part = chroma * fraction, rest = top - chroma;
    p[half] = truncate(rest);
    q[half] = truncate(top - part);
    t[half] = truncate(rest + part);
  }
  return {value, pack_signed(p[0], p[1]), pack_signed(q[0], q[1]), pack_signed(t[0], t[1]),
          pack_signed(sector[0], sector[1])};
}

// Which candidate a channel takes in sectors 0 ... 5, as bits of 0 v, 1 p, 2 q, 3 t.
struct Choice {
  uint8_t odd[16], upper[16];  // 255 or 0
  explicit constexpr Choice(const char (&letters)[7]) : odd(), upper() {
    for (int32_t i = 0; i < 6; ++i) {
      odd[i] = letters[i] == 'p' || letters[i] == 't' ? 255 : 0;
      upper[i] = letters[i] == 'q' || letters[i] == 't' ? 255 : 0;
    }
  }
};
static constexpr Choice kBlueChoice("pptvvq"), kGreenChoice("tvvqpp"), kRedChoice("vqpptv");

static inline Bytes by_sector(const Shifted<Bytes>& of, const Choice& choice) {
  const ByteMask odd = mask_of(shuffle(in_all_blocks(choice.odd), of.sector));
  const ByteMask upper = mask_of(shuffle(in_all_blocks(choice.upper), of.sector));
  return select(upper, select(odd, of.t, of.q), select(odd, of.p, of.v));
}

static inline void replace_vector(const WideShift& shift, const SelectionBlock& block, int32_t i,
                                  Bytes distance, uint8_t* dst) {
  const WordPair weight =
      words_of(look_up(shift.low_weight, distance), look_up(shift.high_weight, distance));
  const WordPair distances = words_of(distance), value = words_of(load<Bytes>(block.value + i));
  const auto shifted = [&](int32_t at, Words values, Words weights, Words of_distance) {
    return shift_words(shift, load<Words>(block.hue + at), load<Words>(block.saturation + at),
                       values, weights, equal(of_distance, Words{}));
  };
  const Shifted<Words> low = shifted(i, value.low, weight.low, distances.low);
  const Shifted<Words> high = shifted(i + kWords, value.high, weight.high, distances.high);
  const Shifted<Bytes> bytes = {pack(low.v, high.v), pack(low.p, high.p), pack(low.q, high.q),
                                pack(low.t, high.t), pack(low.sector, high.sector)};
  const ByteMask full = equal(distance, Bytes{});
  const auto mix = [&](const uint8_t* channel, const Choice& choice) {
    const Bytes target = by_sector(bytes, choice);
    const WordPair from = words_of(load<Bytes>(channel + i)), to = words_of(target);
    return select(full, target,
                  pack(from.low + weighted_words(weight.low, to.low - from.low),
                       from.high + weighted_words(weight.high, to.high - from.high)));
  };
  store_planes(dst, {mix(block.blue, kBlueChoice), mix(block.green, kGreenChoice),
                     mix(block.red, kRedChoice)});
}

static void replace_colour_wide(const ColourSelection& selection, const ColourShift& shift,
                                const PixelBand& band) {
  if (is_small(band) || !fits_words(shift)) return replace_colour(selection, shift, band);
  const WideShift wide(shift, static_cast<int32_t>(selection.limit));
  const Bytes limit = all_bytes(static_cast<int32_t>(selection.limit));
  select_pixels<Keep::kChannelsAndHsv>(selection, band,
                                       [&](const uint8_t* src, uint8_t* dst,
                                           const SelectionBlock& block, int32_t i, Bytes distance) {
                                         if (!all(equal(distance, limit)))
                                           return replace_vector(wide, block, i, distance, dst);
                                         for (int32_t k = 0; k < 3 * kBytes; k += kBytes)
                                           store(dst + k, load<Bytes>(src + k));
                                       });
}
