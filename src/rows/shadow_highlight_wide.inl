// float(double(v) + 0.0001)
static inline Floats plus_a_little(Floats v) {
  const FloatMask small = without(greater(all_floats(kLittleInSingle), v), equal(v, Floats{}));
  if (!any(small)) [[likely]]
    return v + 0.0001f;
  return to_floats(first_doubles(v) + 0.0001, last_doubles(v) + 0.0001);
}

static inline SignedDwords level_of(Floats v) {
  return truncate_small(min(max(v, Floats{}), all_floats(511.0f)));
}

constexpr int32_t kFloatGroup = 4 * kDwords, kFloatBlock = 1024;

// In stages over a block: all indices of a look-up are known before the first one is needed. count
// is a multiple of kFloatGroup.
static inline void tone_shifts_of(const float* intensity, const float* blurred,
                                  const float* combined, const float* midtone, float* shift,
                                  int32_t count) {
  Indices levels[kFloatBlock / kFloatGroup];
  for (int32_t done = 0; done < count; done += kFloatBlock) {
    const int32_t rest = count - done, block = rest < kFloatBlock ? rest : kFloatBlock;
    const float *own = intensity + done, *near = blurred + done;
    Indices* group = levels;
    for (int32_t i = 0; i < block; i += kFloatGroup)
      keep(*group++, [&](int32_t k) { return truncate_small(load<Floats>(own + i + k)) & 255; });

    const FloatTable targets = float_table(combined, 256);
    group = levels;
    for (int32_t i = 0; i < block; i += kFloatGroup, ++group) {
      const auto target = look_up(targets, *group);
      keep(*group, [&](int32_t k) {
        const Floats a = load<Floats>(own + i + k), b = load<Floats>(near + i + k);
        const Floats sum = plus_a_little(a + b), square = sum * sum;
        return level_of(target.at(k) * ((a * b + square) / (b * b + square)));
      });
    }

    const FloatTable tones = float_table(midtone, 512);
    group = levels;
    for (int32_t i = 0; i < block; i += kFloatGroup) {
      const auto tone = look_up(tones, *group++);
      for (int32_t k = 0; k < kFloatGroup; k += kDwords)
        store(shift + done + i + k, tone.at(k) - load<Floats>(own + i + k));
    }
  }
}

// The last pixels, in a group of their own.
struct Rest {
  float v[kFloatGroup] = {};
  Rest(const float* from, int32_t count) {
    for (int32_t i = 0; i < count; ++i) v[i] = from[i];
  }
};

static void tone_shifts_wide(const float* intensity, const float* blurred, const float* combined,
                             const float* midtone, float* shift, int32_t count) {
  const int32_t rest = count % kFloatGroup, done = count - rest;
  tone_shifts_of(intensity, blurred, combined, midtone, shift, done);
  if (rest == 0) return;
  const Rest own(intensity + done, rest), near(blurred + done, rest);
  float last[kFloatGroup];
  tone_shifts_of(own.v, near.v, combined, midtone, last, kFloatGroup);
  for (int32_t i = 0; i < rest; ++i) shift[done + i] = last[i];
}

static inline void midtone_shifts_of(const float* intensity, const float* midtone, float* shift,
                                     int32_t count) {
  const FloatTable tones = float_table(midtone, 512);
  Indices levels[kFloatBlock / kFloatGroup];
  for (int32_t done = 0; done < count; done += kFloatBlock) {
    const int32_t rest = count - done, block = rest < kFloatBlock ? rest : kFloatBlock;
    const float* own = intensity + done;
    Indices* group = levels;
    for (int32_t i = 0; i < block; i += kFloatGroup)
      keep(*group++, [&](int32_t k) { return level_of(load<Floats>(own + i + k)); });
    group = levels;
    for (int32_t i = 0; i < block; i += kFloatGroup) {
      const auto tone = look_up(tones, *group++);
      for (int32_t k = 0; k < kFloatGroup; k += kDwords)
        store(shift + done + i + k, tone.at(k) - load<Floats>(own + i + k));
    }
  }
}

static void midtone_shifts_wide(const float* intensity, const float* midtone, float* shift,
                                int32_t count) {
  const int32_t rest = count % kFloatGroup, done = count - rest;
  midtone_shifts_of(intensity, midtone, shift, done);
  if (rest == 0) return;
  const Rest own(intensity + done, rest);
  float last[kFloatGroup];
  midtone_shifts_of(own.v, midtone, last, kFloatGroup);
  for (int32_t i = 0; i < rest; ++i) shift[done + i] = last[i];
}

// value + shift, truncated and clamped, is value + floor(shift) clamped: below 0 the clamp hides
// the difference. Only where the fraction of the shift is so close to 1 that the sum might be
// rounded up to the next whole number, the plain row forms the sums.
static void shift_pixels_wide(const uint8_t* src, const float* shift, uint8_t* dst, int32_t count) {
  int32_t i = 0;
  for (; i + kBytes <= count; i += kBytes, src += 3 * kBytes, dst += 3 * kBytes) {
    FloatMask exact = at_most(Floats{}, Floats{});  // all
    const auto whole = [&](int32_t k) {
      const Floats by = load<Floats>(shift + i + k), below = floor(by);
      exact &= at_most(by - below, all_floats(1.0f - 1.0f / 32768));  // a unit below 512
      return rounded(min(max(below, all_floats(-512.0f)), all_floats(512.0f)));
    };
    const Words first = pack_signed(whole(0), whole(kDwords));
    const Words second = pack_signed(whole(2 * kDwords), whole(3 * kDwords));
    if (!all(exact)) [[unlikely]] {
      shift_pixels(src, shift + i, dst, kBytes);
      continue;
    }
    // What is added and what is taken away; one of the two is 0.
    const Threefold more = threefold(in_order(pack(first, second)));
    const Threefold less = threefold(in_order(pack(-first, -second)));
    for (int32_t k = 0; k < 3; ++k) {
      const Bytes sum = add_saturating(load<Bytes>(src + k * kBytes), more.part[k]);
      store(dst + k * kBytes, subtract_saturating(sum, less.part[k]));
    }
  }
  shift_pixels(src, shift + i, dst, count - i);
}
