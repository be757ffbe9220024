// a + t * (b - a) with one rounding, for sets without a fused multiply-add. No correction is ever
// needed, because t is the fraction of a position of at least 1 (column and row 0 are sampled
// plainly): t = x - floor(x) for a float x >= 1 is exact and a multiple of 2^-23 below 1.
//
// Between bytes: t * (b - a) is a multiple of 2^-23 and smaller than 255, and so is the sum; times
// 2^23 it is an integer below 2^31. The conversion to float is the only rounding. The result stays
// multiplied by 2^23: floats do not mind.
static inline Floats mix_bytes(Dwords a, Dwords b, Floats t) {
  const Dwords fixed = (Dwords)truncate(t * kTwoTo23);
  return to_floats((SignedDwords)((a << 23) + (b - a) * fixed));
}

// Between floats a and b of 0 ... 255 from above: both are multiples of 2^-23, since rounding a
// multiple of 2^-23 never makes it finer; so is d, the rounded b - a. In doubles, t * d (23 and 24
// bits) is exact, a multiple of 2^-46. So is the sum s = a + t * d:
// - below 128, a multiple of 2^-46 has at most 53 bits;
// - from 128 on, d is a multiple of 2^-17, t * d of 2^-40, and s has at most 48 bits: if |d| >= 64,
//   because floats from 64 on are multiples of 2^-17; if |d| < 64, because s lies between a and
//   a + d, so that a and b are at least 64 and multiples of 2^-17 themselves.
// The conversion back to float is the only rounding. Were t finer than 2^-23 (positions below 1),
// the sum could need more than 53 bits and would have to be rounded to odd.
static inline Dwords mix_to_bytes(Floats a, Floats b, Floats t) {
  const Floats d = b - a;
  const Floats sum = to_floats(first_doubles(a) + first_doubles(t) * first_doubles(d),
                               last_doubles(a) + last_doubles(t) * last_doubles(d));
  return (Dwords)truncate(sum) >> 23;  // 2^23 times the result, which is below 256
}

// In doubles product and sum are exact, where the sum has at most 53 bits.
static inline Floats fused_with_byte(float weight, Floats byte, Floats c) {
  const double w = static_cast<double>(weight);
  return to_floats(first_doubles(byte) * w + first_doubles(c),
                   last_doubles(byte) * w + last_doubles(c));
}
