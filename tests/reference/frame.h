// Plain versions of the ground floor, for the other reference versions: the check of a record, the
// elementary functions and the arithmetic that C++ leaves undefined. They share nothing with the
// library; clarity is all that counts here.
//
// A call of one reference function by another names the namespace: the records are global types, so
// an unqualified name would find the library's function as well.
#ifndef ROXE_TESTS_REFERENCE_FRAME_H_
#define ROXE_TESTS_REFERENCE_FRAME_H_

#include <cstdint>

#include "roxe.h"

namespace reference {

int32_t roxeVerifyPixelArray(const PixelArray* image);

// Elementary functions: evaluated in double precision, rounded to single.
float XRSin(double x);
float XRCos(double x);
float XRTan(double x);
float XRASin(double x);
float XRACos(double x);  // an arc sine, like the library's
float XRATan(double x);
float XRSqrt(double x);
float XRPow(double base, double exponent);
float XRLog(double x);
float XRLog10(double x);
float XRExp(double x);

// a * b + c with one rounding.
float fused_multiply_add(float a, float b, float c);

// Truncation towards zero; out of range saturates, NaN is the lowest integer.
int32_t truncate(float value);

// 32-bit integer arithmetic that wraps.
int32_t plus(int32_t a, int32_t b);
int32_t minus(int32_t a, int32_t b);
int32_t times(int32_t a, int32_t b);
int32_t negative(int32_t a);
uint32_t magnitude(int32_t a);  // of the lowest integer: 2^31

// Columns of an image that lie inside its rows, 0 for an image without memory. Rows that are too
// short for the width count as narrower.
int32_t columns_inside(const PixelArray& image, int32_t bytes_per_pixel);

// What two records used as 24-bit both hold; nothing where one of them is missing.
struct Area {
  int32_t width, height;
};
Area common_area_24(const PixelArray* a, const PixelArray* b);

// Channel c of the pixel in column x and row y.
uint8_t& channel(const PixelArray& image, int32_t bytes_per_pixel, int32_t x, int32_t y, int32_t c);

}  // namespace reference

#endif  // ROXE_TESTS_REFERENCE_FRAME_H_
