// White points of colour temperatures, and matrices that take a picture from one white to another:
// 3 x 3, row-major. Those of primaries hold their x, y and z in columns red, green and blue.
// Temperatures are in kelvin; a tint is an offset along the normal of the daylight locus, positive
// toward magenta. Functions return 1, or 0 for a null matrix, no memory or a singular matrix.
// No exported operation reaches them: that of the temperature has a matrix of its own.
#ifndef ROXE_COLOUR_WHITE_POINT_H_
#define ROXE_COLOUR_WHITE_POINT_H_

#include <cstdint>

#include "roxe.h"

namespace roxe {

struct WhitePoint {
  float Y, x, y;  // Y is 1; x and y are CIE 1931 chromaticities
};

// CIE daylight (its polynomials in 1 / T for x, and in x for y) from 4000 to 25000 K. Below, a line
// to the red primary at 0 K; above, a line to the blue primary at 41000 K; both go on past the
// primary and ignore the tint. Always 1.
int32_t GetWhitePoint(int32_t temperature, int32_t tint, WhitePoint* out);

// How much of each primary makes the white (x, y), in out[0 ... 2]; Y is not looked at.
int32_t Getuvw(const float* primaries, float Y, float x, float y, float* out);

// From linear RGB of these primaries to XYZ, under the white of the temperature.
int32_t GetRGB2XYZMatrix(const float* primaries, int32_t temperature, int32_t tint, float* out);

// From linear RGB under the first white to the same XYZ under the second; the identity if they are
// the same.
int32_t GetColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                                  int32_t tint2, float* out);

// Multiplies the bytes of a pixel, as they are, by the diagonal of a matrix for (red, green, blue).
void ApplyColorTemperatureMatrix(const PixelArray* src, const PixelArray* dst, const float* matrix);

// Bradford's chromatic adaptation of XYZ from the first white to the second.
int32_t GetBradfordXYZMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                             int32_t tint2, float* out);

// The same for linear sRGB; the identity if the whites are the same.
int32_t GetSRGBColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                                      int32_t tint2, float* out);

// Applies a matrix in linear light. Half of what red lacks or has too much goes to each of the
// others, then the same for blue. Without memory for the tables nothing is touched.
void ApplySRGBColorTemperatureMatrix(const PixelArray* src, const PixelArray* dst,
                                     const float* matrix);

}  // namespace roxe

#endif  // ROXE_COLOUR_WHITE_POINT_H_
