// The tone operations again, written one pixel at a time for the tests to compare with. As with the
// other reference versions, nothing is shared with the library and clarity is all that counts.
#ifndef ROXE_TESTS_REFERENCE_TONE_H_
#define ROXE_TESTS_REFERENCE_TONE_H_

#include <array>
#include <cstdint>
#include <vector>

#include "roxe.h"

namespace reference {

// Automatic gamma. A histogram that cannot be had is empty.
std::vector<uint32_t> GetHistogram_RGB24(const PixelArray* src, const PixelRect* rect);
double GetMaximumEntropyEstimateGamma(const uint32_t* histogram);
void ApplyGamma_RGB24(const PixelArray* src, PixelArray* dst, double gamma);
int32_t roxeAutoGamma(const PixelArray* src, PixelArray* dst, const PixelRect* rect);

// Tone curves.
struct CurvePoint {
  float x, y;
};
std::vector<CurvePoint> cubic_to_polyLine(const CurvePoint* control, float tolerance);
void set_look_up_table(float* table, int32_t n, const CurvePoint* control, int32_t count);

// Shadow and highlight.
void lighten_shadow(float* table, int32_t n, uint32_t amount);
void darken_highlight(float* table, int32_t n, uint32_t amount);
void midtone_contrast(float* table, int32_t n, int32_t amount);
std::vector<float> get_intensity(const PixelArray& image, int32_t width, int32_t height);
void update_intensity(float* intensity, const float* blurred, int32_t count, const float* combined,
                      const float* midtone);
int32_t roxeShadowHighlight(const PixelArray* src, PixelArray* dst, uint32_t shadow,
                            uint32_t highlight, int32_t midtone);

// Variations.
using Curve = std::array<uint8_t, 256>;
Curve lighter_row(int32_t row);  // 0 ... 7
Curve darker_row(int32_t row);
int32_t roxeVariations(const PixelArray* src, PixelArray* dst, int32_t red, int32_t green,
                       int32_t blue, int32_t dark, int32_t level);

}  // namespace reference

#endif  // ROXE_TESTS_REFERENCE_TONE_H_
