#include "tone/tone_curves.h"

#include <cmath>

#include "frame/numbers.h"
#include "frame/runtime.h"

namespace roxe {
namespace {

// 3 * 2^8 points is the longest polyline that fits.
constexpr int32_t kDeepest = 9;

CurvePoint middle(CurvePoint a, CurvePoint b) { return {(a.x + b.x) * 0.5f, (a.y + b.y) * 0.5f}; }

float second_difference(CurvePoint a, CurvePoint b, CurvePoint c) {
  return std::fabs(a.x - 2.0f * b.x + c.x) + std::fabs(a.y - 2.0f * b.y + c.y);
}

// How often to halve: each halving brings the chord four times closer to the curve.
int32_t depth_for(const CurvePoint* p, float tolerance) {
  float bend = 0.0f;
  for (const float difference :
       {second_difference(p[3], p[2], p[1]), second_difference(p[2], p[1], p[0])})
    if (difference > bend) bend = difference;
  const float depth = XRLog(3.0f * bend / (4.0f * tolerance)) / (2.0f * XRLog(2.0));
  return clamp(truncate_to_int32(depth), 0, kDeepest);  // the logarithm of 0 counts as 0
}

// The points of the segment p, which is to be halved (de Casteljau) depth times, at least once.
CurvePoint* emit_halves(CurvePoint* out, const CurvePoint* p, int32_t depth) {
  const CurvePoint ab = middle(p[0], p[1]), bc = middle(p[1], p[2]), cd = middle(p[2], p[3]);
  const CurvePoint abc = middle(ab, bc), bcd = middle(bc, cd);
  const CurvePoint on_curve = middle(abc, bcd);
  if (depth == 1) {
    *out++ = p[0];
    *out++ = on_curve;
    *out++ = p[3];
    return out;
  }
  const CurvePoint first[4] = {p[0], ab, abc, on_curve}, second[4] = {on_curve, bcd, cd, p[3]};
  out = emit_halves(out, first, depth - 1);
  return emit_halves(out, second, depth - 1);
}

bool is_number(const CurvePoint* ctrl, int32_t count) {
  for (int32_t i = 0; i < count; ++i)
    if (std::isnan(ctrl[i].x) || std::isnan(ctrl[i].y)) return false;
  return true;
}

}  // namespace

int32_t cubic_to_polyLine(CurvePoint* out, const CurvePoint* ctrl, float tolerance) {
  const int32_t depth = depth_for(ctrl, tolerance);
  if (depth > 0) return static_cast<int32_t>(emit_halves(out, ctrl, depth) - out);
  out[0] = ctrl[0];
  out[1] = ctrl[3];
  return 2;
}

void set_look_up_table(float* table, int32_t n, const CurvePoint* ctrl, int32_t count) {
  for (int32_t i = 0; i < n; ++i) table[i] = static_cast<float>(i);
  if (!is_number(ctrl, count)) return;

  CurvePoint points[kPolylinePoints];
  XRMemSet(points, 0, sizeof points);
  const int32_t point_count = cubic_to_polyLine(points, ctrl, 0.1f);

  int32_t i = truncate_to_int32(ctrl[0].x);
  if (i < INT32_MAX && points[0].x > static_cast<float>(i)) ++i;
  if (i < 0) i = 0;
  const float end = ctrl[count - 1].x;
  for (int32_t k = 0; k + 1 < point_count;) {
    const float level = static_cast<float>(i);
    if (i >= n || !(level < end)) break;
    const CurvePoint a = points[k], b = points[k + 1];
    if (a.x <= level && level < b.x) {
      const float slope = (b.y - a.y) / (b.x - a.x);
      table[i] = fused(slope, level - a.x, a.y);
      ++i;
    } else {
      ++k;
    }
  }
}

}  // namespace roxe
