// Arithmetic with one meaning on every machine: wrapping integers, defined conversions and the
// fused multiply-add. Everything here is static, so that it can be compiled for several instruction
// sets and linked into one library.
#ifndef ROXE_FRAME_NUMBERS_H_
#define ROXE_FRAME_NUMBERS_H_

#include <cstdint>

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

// a * b + c with a single rounding.
static inline float fused(float a, float b, float c) { return __builtin_fmaf(a, b, c); }

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
