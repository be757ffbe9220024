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

// Without a sign.
static inline Words differences(Words a, int32_t b) {
  return (Words)magnitude((SignedWords)(a - all_words(b)));
}

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
                                 const Pair<SignedDwords>& cosines) {
  const Words rise = value - all_words(of.value);
  // A quarter of the squared chord. A chord below 0 becomes huge.
  const auto quarter_chord = [&](SignedDwords dwords, SignedDwords rises, SignedDwords cosine) {
    const Dwords product = (Dwords)((dwords * cosine) >> 14);
    const Dwords squares = pair_sums((Words)rises, (Words)rises);  // of saturations as well
    const Dwords reference = all_dwords(static_cast<uint32_t>(of.saturation * of.saturation));
    return (SignedDwords)((squares + reference - product) >> 2);
  };
  const Words quarter =  // saturates above every limit
      pack(each(quarter_chord, dwords_of(saturation), dwords_of(rise, saturation), cosines));
  // (quarter * reciprocal) >> 14. For limit 1 the factor becomes 0, and so is every distance
  // inside.
  const Words distance = mul_high(quarter, all_words(4 * of.limit_reciprocal));
  return select(at_most(all_words(of.limit_squared), quarter), all_words(of.limit), distance);
}

// ---- where byte tables take long: divisions, and loads of cosines

// Whether every colour at this turn is outside, whatever its saturation. The chord is at least the
// distance of the reference from the line of that hue, saturation * sine; where the angle is
// obtuse, from the axis. What is inside has a chord below 2 * limit. cosine in 1 / 32768.
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
    opposite_reach = 0;  // at most 180: at turn 0 the cosine is 1, and limit_squared is not 0
    while (far(180 - opposite_reach) && far(180 + opposite_reach)) ++opposite_reach;
  }
  uint32_t cosine[361];    // times the saturation
  int32_t opposite_reach;  // hues less far from the opposite of the reference are all outside

  // div_table as a rounded division, exact for 1 ... 255. Where it is 0 the factor is 0.
  struct Reciprocals {
    Pair<Pair<SignedDwords>> of;
    // (range * reciprocal) >> 12
    Pair<Words> saturation(const Pair<Words>& range) const {
      const auto product = [](SignedDwords a, SignedDwords b) {
        return (SignedDwords)((Dwords)(a * b) >> 12);
      };
      const auto scaled = [=](Words words, const Pair<SignedDwords>& by) {
        return pack_signed(each(product, dwords_of(words), by));
      };
      return each(scaled, range, of);
    }
    // (x * reciprocal) >> 18 for a signed x
    Pair<Words> slope(const Pair<Words>& x) const {
      const auto product = [](SignedDwords a, SignedDwords b) { return ((a >> 16) * b) >> 18; };
      const auto scaled = [=](Words words, const Pair<SignedDwords>& by) {
        return pack_signed(each(product, dwords_of(Words{}, words), by));
      };
      return each(scaled, x, of);
    }
  };
  Reciprocals reciprocals(Bytes, const Pair<Words>& numbers) const {
    const auto reciprocal = [](SignedDwords n) {  // nothing is divided by 0
      return rounded(255.0f * 4096.0f / max(to_floats(n), all_floats(1.0f)));
    };
    return {each([=](Words words) { return each(reciprocal, dwords_of(words)); }, numbers)};
  }

  // Whether a vector is outside by its hues or values alone, which spares the rest: as a rule most
  // of a picture is. Saves 0.03 to 0.13 ns a pixel of a mask or tint with AVX2, 0.09 to 0.17 with
  // SSE4.1; costs as much as it saves where one vector in thirty is outside.
  bool all_far(const SelectionBlock& block, int32_t i) const {
    const auto from_opposite = [](Words turn) { return differences(turn, 180); };
    const Bytes opposite = pack(each(from_opposite, load_pair(block.turn + i)));
    const Bytes of_value = load<Bytes>(block.value + i), reference = all_bytes(value);
    const Bytes rise =
        subtract_saturating(of_value, reference) | subtract_saturating(reference, of_value);
    const int32_t reach = 2 * limit > 256 ? 255 : 2 * limit - 1;
    return !any(at_most(all_bytes(opposite_reach), opposite) & at_most(rise, all_bytes(reach)));
  }

  Bytes distances(const SelectionBlock& block, int32_t i) const {
    if (all_far(block, i)) return all_bytes(limit);
    const auto cosines = [&](const uint16_t* turn) {  // in the order of interleaving
      return (SignedDwords)entries_at([&](int32_t i) { return cosine + turn[i / 4 * 8 + i % 4]; });
    };
    const auto part = [&](Words of_value, Words of_effective, const uint16_t* turn) {
      return distances_of(*this, of_value, of_effective, {cosines(turn), cosines(turn + 4)});
    };
    const Pair<const uint16_t*> turns = {block.turn + i, block.turn + i + kWords};
    return pack(
        each(part, words_of(load<Bytes>(block.value + i)), load_pair(block.effective + i), turns));
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
    Pair<Words> low, above;  // the lower 16 bits, and the rest
    // (range * reciprocal) >> 12
    Pair<Words> saturation(const Pair<Words>& range) const {
      const auto scaled = [](Words a, Words b, Words rest) {
        return mul_high(a << 4, b) + (a << 4) * rest;
      };
      return each(scaled, range, low, above);
    }
    // (x * reciprocal) >> 18 for a signed x. As a signed word the lower half of the reciprocal is
    // 65536 too small where its top bit is set.
    Pair<Words> slope(const Pair<Words>& x) const {
      const auto scaled = [](Words a, Words b, Words rest) {
        const Words high = (Words)mul_high((SignedWords)a, (SignedWords)b) +
                           (a & (Words)((SignedWords)b >> 15)) + a * rest;
        return (Words)((SignedWords)high >> 2);
      };
      return each(scaled, x, low, above);
    }
  };
  Reciprocals reciprocals(Bytes numbers, const Pair<Words>&) const {
    return {words_of(look_up(low, numbers), look_up(middle, numbers)),
            words_of(shuffle_or_zero(high, numbers))};
  }

  Bytes distances(const SelectionBlock& block, int32_t i) const {
    const Pair<Words> turn = load_pair(block.turn + i);
    const Bytes index = pack(each([](Words words) { return words & all_words(255); }, turn));
    const Bytes upper = pack(each([](Words words) { return words >> 8; }, turn));
    const ByteMask above = equal(upper, all_bytes(1));
    const auto cosine_byte = [&](int32_t k) {
      return select(above, look_up(cosine_above[k], index), look_up(cosine[k], index));
    };
    const auto part = [&](Words of_value, Words of_effective, Words lower, Words top) {
      const Words sign_extended = (Words)((SignedWords)top >> 8);
      return distances_of(*this, of_value, of_effective, dwords_of(lower, sign_extended));
    };
    return pack(each(part, words_of(load<Bytes>(block.value + i)), load_pair(block.effective + i),
                     words_of(cosine_byte(0), cosine_byte(1)), words_of(Bytes{}, cosine_byte(2))));
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
  const Bytes half_base = choose(all_bytes(90), all_bytes(150), all_bytes(30));
  const auto difference_15 = [](Words plus_and_minus) {
    return byte_pair_sums((Bytes)plus_and_minus, (Bytes)all_words(15 - (15 << 8)));
  };

  const Bytes range = value - smallest;
  const Pair<Words> values = words_of(value), ranges = words_of(range);
  const Pair<Words> saturation = metric.reciprocals(value, values).saturation(ranges);
  const Pair<Words> slope =
      metric.reciprocals(range, ranges).slope(each(difference_15, words_of(plus, minus)));
  const Pair<Words> hue =
      each([](Words half, Words less) { return half + half - less; }, words_of(half_base), slope);

  Pair<Words> effective = saturation;
  if (!all(at_most(all_bytes(kFirstWithoutFade), value)))
    effective = each(pull_saturation, saturation, values, words_of(look_up(metric.fade, value)));

  store(block.value + i, value);
  store_pair(block.effective + i, effective);
  store_pair(block.turn + i, each([&](Words of) { return differences(of, metric.hue); }, hue));
  if constexpr (keep != Keep::kNothing) {
    store(block.blue + i, p.blue);
    store(block.green + i, p.green);
    store(block.red + i, p.red);
  }
  if constexpr (keep == Keep::kChannelsAndHsv) {
    store_pair(block.hue + i, hue);
    store_pair(block.saturation + i, saturation);
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
        const auto grey_of = [&](Words blue_red, Words greens) {
          return (byte_pair_sums((Bytes)blue_red, weights) + greens * 151) >> 8;
        };
        const Pair<Words> grey = each(grey_of, words_of(blue, red), words_of(green));
        const Bytes greys = pack(grey);
        const ByteMask outside = equal(distance, limit);
        if (all(outside)) return store_planes(dst, {greys, greys, greys});

        const Pair<Words> fade =
            each([&](Words words) { return words * reciprocal; }, words_of(distance));
        const auto accented = [&](Bytes channel) {
          return select(outside, greys, pack(each(toward_grey, words_of(channel), grey, fade)));
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
template <class V>
static inline auto packed(const Pair<Shifted<V>>& of) {
  const auto& [low, high] = of;
  return Shifted<decltype(pack(low.v, high.v))>{pack(low.v, high.v), pack(low.p, high.p),
                                                pack(low.q, high.q), pack(low.t, high.t),
                                                pack(low.sector, high.sector)};
}

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

  const auto candidates = [](SignedDwords h, SignedDwords s, SignedDwords v) {
    const Floats position = to_floats(h) / 60.0f, top = to_floats(v);
    const SignedDwords sector = truncate(position);
    const Floats fraction = position - to_floats(sector);
    const Floats chroma = top * (to_floats(s) / 255.0f);
    const Floats part = chroma * fraction, rest = top - chroma;
    return Shifted<SignedDwords>{v, truncate(rest), truncate(top - part), truncate(rest + part),
                                 sector};
  };
  return packed(each(candidates, dwords_of(hue), dwords_of(saturation), dwords_of(value)));
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
  const Pair<Words> weights =
      words_of(look_up(shift.low_weight, distance), look_up(shift.high_weight, distance));
  const auto shifted = [&](Words hue, Words saturation, Words value, Words weight,
                           Words distances) {
    return shift_words(shift, hue, saturation, value, weight, equal(distances, Words{}));
  };
  const Shifted<Bytes> bytes =
      packed(each(shifted, load_pair(block.hue + i), load_pair(block.saturation + i),
                  words_of(load<Bytes>(block.value + i)), weights, words_of(distance)));
  const auto pulled_by_weight = [](Words from, Words to, Words weight) {
    return from + weighted_words(weight, to - from);
  };
  const ByteMask full = equal(distance, Bytes{});
  const auto mix = [&](const uint8_t* channel, const Choice& choice) {
    const Bytes from = load<Bytes>(channel + i), target = by_sector(bytes, choice);
    return select(full, target,
                  pack(each(pulled_by_weight, words_of(from), words_of(target), weights)));
  };
  store_planes(dst, {mix(block.blue, kBlueChoice), mix(block.green, kGreenChoice),
                     mix(block.red, kRedChoice)});
}

static void replace_colour_wide(const ColourSelection& selection, const ColourShift& shift,
                                const PixelBand& band) {
  if (is_small(band) || !fits_words(shift)) return replace_colour(selection, shift, band);
  const WideShift wide(shift, static_cast<int32_t>(selection.limit));
  const Bytes limit = all_bytes(static_cast<int32_t>(selection.limit));
  const auto finish = [&](const uint8_t* src, uint8_t* dst, const SelectionBlock& block, int32_t i,
                          Bytes distance) {
    if (!all(equal(distance, limit))) return replace_vector(wide, block, i, distance, dst);
    for (int32_t k = 0; k < 3 * kBytes; k += kBytes) store(dst + k, load<Bytes>(src + k));
  };
  select_pixels<Keep::kChannelsAndHsv>(selection, band, finish);
}
