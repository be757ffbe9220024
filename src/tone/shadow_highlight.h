// The stages of roxeShadowHighlight, which runs them on a few rows at a time, and the form that
// runs them on whole planes of floats.
#ifndef ROXE_TONE_SHADOW_HIGHLIGHT_H_
#define ROXE_TONE_SHADOW_HIGHLIGHT_H_

#include <cstdint>

#include "roxe.h"

namespace roxe {

// Curves of n (256) entries; an amount of 0 gives the identity.
void lighten_shadow(float* table, int32_t n, uint32_t amount);
void darken_highlight(float* table, int32_t n, uint32_t amount);
void midtone_contrast(float* table, int32_t n, int32_t amount);

// The intensities of a picture used as 24-bit, row after row.
void get_intensity(float* plane, const PixelArray& image);

// Replaces count intensities by what is to be added to their pixels: midtone[j] - I, where j is
// combined[I] weighed by the blurred intensity. If both planes are the same one, midtone[I] - I.
// combined has 256 entries, midtone 512, of which those from 256 on are equal (255).
void update_intensity(float* intensity, const float* blurred, int32_t count, const float* combined,
                      const float* midtone);

// Adds delta, as wide as the common area of the pictures, to all three channels.
void adjust_histogram(const PixelArray& src, const PixelArray& dst, const float* delta);

// The operation on whole planes. Missing pixels or no memory for two planes: nothing is touched.
void shadow_highlight(const PixelArray& src, const PixelArray& dst, uint32_t shadow,
                      uint32_t highlight, int32_t midtone);

// The same bytes in memory of a few rows, for pictures whose rows are the same or that do not
// overlap.
void shadow_highlight_streamed(const PixelArray& src, const PixelArray& dst, uint32_t shadow,
                               uint32_t highlight, int32_t midtone);

}  // namespace roxe

#endif  // ROXE_TONE_SHADOW_HIGHLIGHT_H_
