// Arithmetic with one meaning on every machine: wrapping integers, defined conversions and the
// fused multiply-add. Everything here is static, so that it can be compiled for several instruction
// sets and linked into one library.
#ifndef ROXE_FRAME_NUMBERS_H_
#define ROXE_FRAME_NUMBERS_H_

#include <cfloat>
#include <cstdint>

// g++ has a macro for each part of -ffast-math that changes values, clang for one of them: for the
// others CMakeLists.txt looks at the flags.
#if defined(__FAST_MATH__) || defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || \
    defined(__NO_SIGNED_ZEROS__) || __FINITE_MATH_ONLY__
#error "ROXE gives the same bytes everywhere: -ffast-math, -Ofast and parts of them change them"
#endif
#if FLT_EVAL_METHOD != 0
#error "ROXE gives the same bytes everywhere: x87 arithmetic changes them (-msse2 -mfpmath=sse)"
#endif

namespace roxe {

// a + b, a - b and a * b modulo 2^32.
static inline int32_t wrap_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
static inline int32_t wrap_sub(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
static inline int32_t wrap_mul(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
// 2^31 for INT32_MIN.
static inline uint32_t magnitude(int32_t a) {
  return a < 0 ? 0 - static_cast<uint32_t>(a) : static_cast<uint32_t>(a);
}

// Whether value lies halfway between two floats: 25 bits, of which the last is 1, or fewer below
// the smallest normal float; some values down there are merely suspected.
static inline bool may_be_halfway(double value, uint64_t bits) {
  const bool subnormal = value < 0x1p-126 && value > -0x1p-126 && value != 0;
  return (bits & 0x1fffffff) == 0x10000000 || subnormal;
}

// a * b + c with a single rounding, without an instruction for it. The product of two floats has 48
// bits and is exact in double precision. The sum of doubles is rounded, but that can only matter
// where it comes to lie halfway between two floats: these points are doubles themselves, so that
// rounding to doubles never carries a sum past one of them. There the error of the sum (two-sum,
// exact) tells on which side the exact value lies, and the last bit, which is 0, moves the sum to
// that side. Sums of doubles never lose bits below the smallest normal one here: floats and their
// products are multiples of 2^-298.
static inline float fused_in_doubles(float a, float b, float c) {
  const double product = static_cast<double>(a) * static_cast<double>(b);
  const double addend = static_cast<double>(c);
  double sum = product + addend;
  uint64_t bits;
  __builtin_memcpy(&bits, &sum, sizeof bits);
  if (may_be_halfway(sum, bits)) [[unlikely]] {
    const double part = sum - product;
    const double error = (product - (sum - part)) + (addend - part);
    if ((error < 0 || error > 0) && (bits & 1) == 0) {
      bits += (error > 0) == (sum > 0) ? 1u : ~uint64_t{0};  // away from zero or toward it
      __builtin_memcpy(&sum, &bits, sizeof bits);
    }
  }
  return static_cast<float>(sum);
}

// a * b + c with a single rounding, by the instruction where the target has one.
#if defined(__FMA__) || defined(__aarch64__)
static inline float fused(float a, float b, float c) { return __builtin_fmaf(a, b, c); }
#else
static inline float fused(float a, float b, float c) { return fused_in_doubles(a, b, c); }
#endif

// Truncates toward zero; values out of range saturate and NaN gives INT32_MIN. The plain cast is
// undefined there, and processors disagree.
static inline int32_t truncate_to_int32(float value) {
  if (value >= 2147483648.0f) return INT32_MAX;
  if (!(value >= -2147483648.0f)) return INT32_MIN;
  return static_cast<int32_t>(value);
}
static inline int32_t truncate_to_int32(double value) {
  if (value >= 2147483648.0) return INT32_MAX;
  if (!(value > -2147483649.0)) return INT32_MIN;
  return static_cast<int32_t>(value);
}

template <class T>
static inline T clamp(T value, T low, T high) {
  return value < low ? low : (value > high ? high : value);
}

}  // namespace roxe

#endif  // ROXE_FRAME_NUMBERS_H_
