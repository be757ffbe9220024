// The colour operations again, written one pixel at a time for the tests to compare with.
//
// Nothing here is shared with the library, and nothing here is meant to be fast: each function does
// the steps of its definition in their order, so that it can be checked by reading.
#ifndef ROXE_TESTS_REFERENCE_COLOUR_H_
#define ROXE_TESTS_REFERENCE_COLOUR_H_

#include <array>
#include <cstdint>
#include <vector>

#include "roxe.h"

namespace reference {

// Conversions between RGB and the cylindrical spaces.

uint32_t div_table(uint32_t n);  // 255 * 4096 / n to the nearest integer; 0 for 0

void XRDRGB2HSV(uint32_t red, uint32_t green, uint32_t blue, int32_t* hue, int32_t* saturation,
                int32_t* value);
void XRDHSV2RGB(float hue, float saturation, float value, uint8_t* red, uint8_t* green,
                uint8_t* blue);
void XRDRGB2HSL(uint32_t red, uint32_t green, uint32_t blue, float* hue, float* saturation,
                float* lightness);

// Distances between two colours.

void init_cylindrical_metric(uint32_t* fade_table, uint32_t fade_count, uint32_t* cos_table,
                             uint32_t cos_count, uint32_t* reciprocal_table,
                             uint32_t reciprocal_count);
uint32_t cylindrical_metric(int32_t hue, int32_t saturation, uint32_t value, int32_t ref_hue,
                            int32_t ref_saturation, uint32_t ref_value, uint32_t limit,
                            uint32_t limit_squared, uint32_t limit_reciprocal,
                            const uint32_t* fade_table, const uint32_t* cos_table);
double achromatic_pixel_metric(double hue1, double saturation1, double value1, double hue2,
                               double saturation2, double value2, double limit);
double minkowski_metric(double hue1, double saturation1, double value1, double hue2,
                        double saturation2, double value2, double limit);
double canberra_metric(double hue1, double saturation1, double value1, double hue2,
                       double saturation2, double value2, double limit);
double chromatic_metric(double hue1, double saturation1, double value1, double hue2,
                        double saturation2, double value2, double limit);

// Replacing a colour, and keeping one.

void create_blur_table(int32_t* table, uint32_t table_size, uint32_t steps);

int32_t roxeReplaceColor(const PixelArray* src, PixelArray* dst, uint32_t blue, uint32_t green,
                         uint32_t red, uint32_t tolerance, int32_t hue_shift,
                         int32_t saturation_shift, int32_t value_shift);
int32_t roxeReplaceColorMask(const PixelArray* src, PixelArray* mask, uint32_t blue, uint32_t green,
                             uint32_t red, uint32_t tolerance);
int32_t roxeColorTint(const PixelArray* src, PixelArray* dst, uint32_t blue, uint32_t green,
                      uint32_t red, uint32_t tolerance);
int32_t roxeColorTintMask(const PixelArray* src, PixelArray* mask, uint32_t blue, uint32_t green,
                          uint32_t red, uint32_t tolerance);

// The sRGB transfer function, to linear light and back.

float sRGB2LinearRGBChannel(uint32_t value);
uint8_t LinearRGB2sRGBChannel(float linear);
std::vector<float> CreatesRGB2LinearRGBIndex();    // 256 entries
std::vector<uint8_t> CreateLinearRGB2sRGBIndex();  // 4097 entries

// White points and the matrices between them.

struct WhitePoint {
  float Y, x, y;
};
using Matrix3 = std::array<float, 9>;  // row-major

WhitePoint GetWhitePoint(int32_t temperature, int32_t tint);
std::array<float, 3> Getuvw(const Matrix3& primaries, WhitePoint white);
bool GetRGB2XYZMatrix(const Matrix3& primaries, int32_t temperature, int32_t tint, Matrix3* out);
bool GetColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                               int32_t tint2, Matrix3* out);
bool GetBradfordXYZMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2, int32_t tint2,
                          Matrix3* out);
bool GetSRGBColorTemperatureMatrix(int32_t temperature1, int32_t tint1, int32_t temperature2,
                                   int32_t tint2, Matrix3* out);
void ApplyColorTemperatureMatrix(const PixelArray* src, PixelArray* dst, const Matrix3& matrix);
void ApplySRGBColorTemperatureMatrix(const PixelArray* src, PixelArray* dst, const Matrix3& matrix);
extern const Matrix3 kPrimaries;  // chromaticities of the sRGB primaries, a column each

// White balance.

Matrix3 GetStdColorTemperatureMatrix(int32_t temperature, int32_t tint);
void ApplyStdColorTemperatureMatrix(const PixelArray* src, PixelArray* dst, const Matrix3& matrix);
int32_t roxeColorTemperature(const PixelArray* src, PixelArray* dst, int32_t temperature,
                             int32_t tint);

}  // namespace reference

#endif  // ROXE_TESTS_REFERENCE_COLOUR_H_
