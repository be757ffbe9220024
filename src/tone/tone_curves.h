// Tone curves: one cubic Bezier segment over the input levels, tabulated for each whole level.
#ifndef ROXE_TONE_TONE_CURVES_H_
#define ROXE_TONE_TONE_CURVES_H_

#include <cstdint>

namespace roxe {

// x is the input level, y the output level.
struct CurvePoint {
  float x, y;
};

constexpr int32_t kPolylinePoints = 1024;

// Flattens the segment of four control points into points on the curve at equal steps of its
// parameter, and returns their number, at most kPolylinePoints. A straight segment gives its two
// ends; otherwise the points come in threes, and each three starts with the point that ended the
// last.
int32_t cubic_to_polyLine(CurvePoint* out, const CurvePoint* ctrl, float tolerance);

// Fills table[0 ... n - 1]: the identity, and the curve from its first point up to, not including,
// the x of control point count - 1. x must not decrease along the curve. A curve that is not a
// number leaves the identity.
void set_look_up_table(float* table, int32_t n, const CurvePoint* ctrl, int32_t count);

}  // namespace roxe

#endif  // ROXE_TONE_TONE_CURVES_H_
