// float(double(v) + 0.0001)
static inline Floats plus_a_little(Floats v) {
  const FloatMask small = without(greater(all_floats(kSingleSumFrom), v), equal(v, Floats{}));
  if (!any(small)) [[likely]]
    return v + 0.0001f;
  return to_floats(first_doubles(v) + 0.0001, last_doubles(v) + 0.0001);
}

static inline SignedDwords level_of(Floats v) {
  return truncate_small(min(max(v, Floats{}), all_floats(511.0f)));
}

constexpr int32_t kFloatGroup = 4 * kDwords, kFloatBlock = 1024;

// Of a block: all indices of a look-up are known before the first one is needed.
struct BlockLevels {
  Indices group[kFloatBlock / kFloatGroup];
  Indices& of(int32_t i) { return group[i / kFloatGroup]; }
};

// shift[i] = the tone of the level less own[i].
static inline void shift_to_tones(const float* midtone, BlockLevels& levels, const float* own,
                                  float* shift, int32_t count) {
  const FloatTable tones = float_table(midtone, 512);
  for (int32_t i = 0; i < count; i += kFloatGroup) {
    const auto tone = look_up(tones, levels.of(i));
    for (int32_t k = 0; k < kFloatGroup; k += kDwords)
      store(shift + i + k, tone.at(k) - load<Floats>(own + i + k));
  }
}

// Calls shifts(own, near, shift, count) for blocks of whole groups, then for the last pixels in a
// group of their own.
template <class Shifts>
static inline void in_blocks(const float* own, const float* near, float* shift, int32_t count,
                             const Shifts& shifts) {
  float last[3][kFloatGroup];
  while (count > 0) {
    // One call of shifts, so that compilers inline it.
    const bool whole = count >= kFloatGroup;
    const int32_t most = count < kFloatBlock ? count / kFloatGroup * kFloatGroup : kFloatBlock;
    const size_t rest = sizeof(float) * static_cast<size_t>(count);
    if (!whole) {
      __builtin_memset(last, 0, sizeof last);
      __builtin_memcpy(last[0], own, rest);
      __builtin_memcpy(last[1], near, rest);
    }
    shifts(whole ? own : last[0], whole ? near : last[1], whole ? shift : last[2],
           whole ? most : kFloatGroup);
    if (!whole) return static_cast<void>(__builtin_memcpy(shift, last[2], rest));
    own += most, near += most, shift += most, count -= most;
  }
}

static void tone_shifts_wide(const float* intensity, const float* blurred, const float* combined,
                             const float* midtone, float* shift, int32_t count) {
  const auto shifts = [&](const float* own, const float* near, float* to, int32_t pixels) {
    BlockLevels levels;
    for (int32_t i = 0; i < pixels; i += kFloatGroup)
      keep(levels.of(i),
           [&](int32_t k) { return truncate_small(load<Floats>(own + i + k)) & 255; });
    const FloatTable targets = float_table(combined, 256);
    for (int32_t i = 0; i < pixels; i += kFloatGroup) {
      const auto target = look_up(targets, levels.of(i));
      keep(levels.of(i), [&](int32_t k) {
        const Floats a = load<Floats>(own + i + k), b = load<Floats>(near + i + k);
        const Floats sum = plus_a_little(a + b), square = sum * sum;
        return level_of(target.at(k) * ((a * b + square) / (b * b + square)));
      });
    }
    shift_to_tones(midtone, levels, own, to, pixels);
  };
  in_blocks(intensity, blurred, shift, count, shifts);
}

static void midtone_shifts_wide(const float* intensity, const float* midtone, float* shift,
                                int32_t count) {
  const auto shifts = [&](const float* own, const float*, float* to, int32_t pixels) {
    BlockLevels levels;
    for (int32_t i = 0; i < pixels; i += kFloatGroup)
      keep(levels.of(i), [&](int32_t k) { return level_of(load<Floats>(own + i + k)); });
    shift_to_tones(midtone, levels, own, to, pixels);
  };
  in_blocks(intensity, intensity, shift, count, shifts);
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
