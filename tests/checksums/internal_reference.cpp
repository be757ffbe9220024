#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "checksums/digest.h"
#include "checksums/internal_rows.h"
#include "checksums/pictures.h"
#include "reference/blur.h"
#include "reference/colour.h"
#include "reference/frame.h"
#include "reference/geometry.h"
#include "reference/tone.h"

namespace {

// The references, under the names of what the library has in several forms.
namespace side {

using namespace reference;

void ProcessRow2ColumnUnrollingLoop(float* out, const float* in, uint32_t n, uint32_t m,
                                    uint32_t before, uint32_t after) {
  reference::ProcessRow2Column(out, in, n, m, before, after);
}

int32_t gaussian_by_rows(const PixelArray* src, PixelArray* dst, int32_t radius) {
  return reference::GaussianBlurA(src, dst, radius);
}

void shadow_highlight(const PixelArray& src, PixelArray& dst, uint32_t shadow, uint32_t highlight,
                      int32_t midtone) {
  reference::roxeShadowHighlight(&src, &dst, shadow, highlight, midtone);
}
void shadow_highlight_streamed(const PixelArray& src, PixelArray& dst, uint32_t shadow,
                               uint32_t highlight, int32_t midtone) {
  reference::roxeShadowHighlight(&src, &dst, shadow, highlight, midtone);
}

}  // namespace side

#include "checksums/internal_rows.inl"

}  // namespace

std::string ReferenceInternalRows() { return internal_rows(); }
