// Intensities, their sums over windows, and the shift of each pixel's tone.

static inline float intensity_of(const uint8_t* bgr) {
  const float blue = bgr[0], green = bgr[1], red = bgr[2];
  return fused(0.114f, blue, fused(0.299f, red, 0.587f * green));
}

static void intensities(const uint8_t* src, float* dst, int32_t count) {
  for (int32_t i = 0; i < count; ++i) dst[i] = intensity_of(src + 3 * i);
}

// A running sum: what leaves the window is subtracted before what enters it is added, and the
// rounding of every step stays in the sum.
static void intensity_sums_of_row(const uint8_t* src, int32_t count, int32_t half, float* sums) {
  float recent[16];  // intensities of the last columns, each at its column modulo 16
  const float first = intensity_of(src);
  const float last = intensity_of(src + 3 * (count - 1));
  float sum = static_cast<float>(half + 1) * first;
  for (int32_t x = 0; x < half; ++x) {
    recent[x] = intensity_of(src + 3 * x);
    sum += recent[x];
  }
  for (int32_t x = 0; x < count; ++x) {
    const float leaves = x <= half ? first : recent[(x - half - 1) & 15];
    float enters = last;
    if (x + half < count) enters = recent[(x + half) & 15] = intensity_of(src + 3 * (x + half));
    sum = (sum - leaves) + enters;
    sums[x] = sum;
  }
}

static void intensity_sums(const uint8_t* src, ptrdiff_t src_step, int32_t rows, int32_t count,
                           int32_t half, float* sums, ptrdiff_t sums_step) {
  for (int32_t y = 0; y < rows; ++y)
    intensity_sums_of_row(src + y * src_step, count, half, sums + y * sums_step);
}

static void slide_sums(float* sums, const float* leave, const float* enter, float scale,
                       float* blurred, int32_t count) {
  ROXE_LANES_INDEPENDENT
  for (int32_t i = 0; i < count; ++i) {
    const float sum = (sums[i] - leave[i]) + enter[i];
    sums[i] = sum;
    blurred[i] = sum * scale;
  }
}

static void tone_shifts(const float* intensity, const float* blurred, const float* combined,
                        const float* midtone, float* shift, int32_t count) {
  ROXE_LANES_INDEPENDENT
  for (int32_t i = 0; i < count; ++i) {
    const float own = intensity[i], near = blurred[i];
    const float sum = static_cast<float>(static_cast<double>(own + near) + 0.0001);
    const float ratio = (own * near + sum * sum) / (near * near + sum * sum);
    const int32_t level = truncate_to_int32(combined[truncate_to_int32(own) & 255] * ratio);
    shift[i] = midtone[clamp(level, 0, 511)] - own;
  }
}

static void midtone_shifts(const float* intensity, const float* midtone, float* shift,
                           int32_t count) {
  ROXE_LANES_INDEPENDENT
  for (int32_t i = 0; i < count; ++i) {
    const float own = intensity[i];
    shift[i] = midtone[clamp(truncate_to_int32(own), 0, 511)] - own;
  }
}

static inline uint8_t shifted(uint8_t value, float shift) {
  return static_cast<uint8_t>(clamp(truncate_to_int32(value + shift), 0, 255));
}

static void shift_pixels(const uint8_t* src, const float* shift, uint8_t* dst, int32_t count) {
  for (int32_t i = 0; i < count; ++i, src += 3, dst += 3) {
    dst[0] = shifted(src[0], shift[i]);
    dst[1] = shifted(src[1], shift[i]);
    dst[2] = shifted(src[2], shift[i]);
  }
}
