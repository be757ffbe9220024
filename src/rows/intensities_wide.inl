// Intensities, and their running sums along rows.

// Before each rounding the exact sum has at most 35 bits: it is below 256 and a multiple of 2^-27,
// the last bit of 0.114f (that of 0.299f is 2^-25, and 0.587f * green has none below 2^-24).
static inline Floats intensities_of(const PixelFloats& p) {
  const Floats red_green = fused_with_byte(0.299f, p.red, 0.587f * p.green);
  return fused_with_byte(0.114f, p.blue, red_green);
}

[[maybe_unused]] static void intensities_wide(const uint8_t* src, float* dst, int32_t count) {
  int32_t i = 0;
  for (; i + kDwords <= count; i += kDwords)
    store(dst + i, intensities_of(load_pixels(src + 3 * i)));
  intensities(src + 3 * i, dst + i, count - i);
}

// The sums have eight rows in the lanes, so that each row keeps its order of additions.
constexpr int32_t kRowVectors = 8 / kDwords;  // vectors a column: 2 or 1

// The intensities of the last columns of eight rows, rows across, each column at its place modulo
// 32.
struct ColumnRing {
  alignas(32) float column[32][8];
  Floats at(int32_t x, int32_t part) const { return load<Floats>(column[x & 31] + part * kDwords); }
};

// kDwords vectors as rows of a matrix.
static inline void transpose(Floats* v) {
  Dwords t[kDwords];
  __builtin_memcpy(t, v, sizeof t);
  for (int32_t i = 0; i < kDwords; i += 4) transpose_blocks(t + i);
  for (int32_t i = 0; i < 4; ++i) {
    if constexpr (kBlocks == 1) {
      v[i] = (Floats)t[i];
    } else {
      v[i] = (Floats)arranged(t[i], t[i + 4], [](int k) { return k < 4 ? k : k + 4; });
      v[i + 4] = (Floats)arranged(t[i], t[i + 4], [](int k) { return k < 4 ? k + 4 : k + 8; });
    }
  }
}

// Columns x ... x + 7 of eight rows; those beyond the picture repeat its last one.
static inline void fill_columns(ColumnRing& ring, const uint8_t* const* row, int32_t x,
                                int32_t count) {
  const int32_t inside = count - x;
  if (inside >= 8) {
    for (int32_t at = 0; at < 8; at += kDwords)
      for (int32_t part = 0; part < 8; part += kDwords) {
        Floats v[kDwords];
        for (int32_t r = 0; r < kDwords; ++r)
          v[r] = intensities_of(load_pixels(row[part + r] + 3 * (x + at)));
        transpose(v);
        for (int32_t i = 0; i < kDwords; ++i) store(ring.column[(x + at + i) & 31] + part, v[i]);
      }
    return;
  }
  for (int32_t i = 0; i < 8; ++i) {
    const ptrdiff_t at = 3 * static_cast<ptrdiff_t>(i < inside ? x + i : count - 1);
    for (int32_t r = 0; r < 8; ++r) ring.column[(x + i) & 31][r] = intensity_of(row[r] + at);
  }
}

// Missing rows of a last band repeat the one above.
static void intensity_sums_wide(const uint8_t* src, ptrdiff_t src_step, int32_t rows, int32_t count,
                                int32_t half, float* sums, ptrdiff_t sums_step) {
  if (rows < 3 || rows > 8)
    return intensity_sums(src, src_step, rows, count, half, sums, sums_step);
  const uint8_t* row[8];
  for (int32_t r = 0; r < 8; ++r) row[r] = src + (r < rows ? r : rows - 1) * src_step;

  ColumnRing ring;
  fill_columns(ring, row, 0, count);
  Floats sum[kRowVectors];
  for (int32_t k = 0; k < kRowVectors; ++k) {
    const Floats first = ring.at(0, k);
    for (int32_t x = -half - 1; x < 0; ++x) store(ring.column[x & 31] + k * kDwords, first);
    sum[k] = static_cast<float>(half + 1) * first;
    for (int32_t x = 0; x < half; ++x) sum[k] += ring.at(x, k);
  }

  for (int32_t x = 0; x < count; x += 8) {
    fill_columns(ring, row, x + 8, count);
    Floats v[kRowVectors][8];
    for (int32_t i = 0; i < 8; ++i)
      for (int32_t k = 0; k < kRowVectors; ++k)
        v[k][i] = sum[k] = (sum[k] - ring.at(x + i - half - 1, k)) + ring.at(x + i + half, k);
    for (int32_t k = 0; k < kRowVectors; ++k)
      for (int32_t at = 0; at < 8; at += kDwords) transpose(v[k] + at);

    // Row r in columns x + at and on.
    const auto part_of = [&](int32_t r, int32_t at) { return v[r / kDwords][at + r % kDwords]; };
    float* to = sums + x;
    for (int32_t r = 0; r < rows; ++r, to += sums_step)
      for (int32_t at = 0; at < 8; at += kDwords) {
        if (x + 8 <= count) [[likely]]
          store(to + at, part_of(r, at));
        else
          store_first(to + at, part_of(r, at), count - x - at);
      }
  }
}
