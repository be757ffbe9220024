#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "blur/box_blur.h"
#include "blur/gaussian_stream.h"
#include "blur/plane_blur.h"
#include "blur/soft_focus.h"
#include "checksums/digest.h"
#include "checksums/internal_rows.h"
#include "checksums/pictures.h"
#include "colour/colour_distance.h"
#include "colour/colour_space.h"
#include "colour/colour_temperature.h"
#include "colour/linear_light.h"
#include "colour/replace_colour.h"
#include "colour/white_point.h"
#include "frame/pixel_array.h"
#include "geometry/affine_transform.h"
#include "geometry/dst_points.h"
#include "geometry/quad_mapping.h"
#include "geometry/rotate.h"
#include "geometry/xrml.h"
#include "tone/auto_gamma.h"
#include "tone/shadow_highlight.h"
#include "tone/tone_curves.h"
#include "tone/variation_tables.h"

namespace {

// The library's routines; where they give their results otherwise than the references, in the form
// of these.
namespace side {

using namespace roxe;

using Matrix3 = std::array<float, 9>;
using Curve = std::array<uint8_t, 256>;

template <class T>
std::vector<T> values(const Block<T>& block, size_t count) {
  return block ? std::vector<T>(block.get(), block.get() + count) : std::vector<T>();
}

int32_t GetDstPoints(Quad* quad, int32_t cx, int32_t cy, Point3D* points, float* camera) {
  Camera used = {camera[0], camera[1], camera[2]};
  const int32_t status = roxe::GetDstPoints(quad, cx, cy, points, &used);
  camera[0] = used.centre_x;
  camera[1] = used.centre_y;
  camera[2] = used.focal_length;
  return status;
}

std::array<float, 8> GetAffineParameters(const Quad& src, const Quad& dst) {
  std::array<float, 8> p = {};
  const AffineParameters parameters = roxe::GetAffineParameters(&src, &dst);
  if (parameters) std::copy_n(parameters.get(), 8, p.data());
  return p;
}

LengthRange BoxBlurGetModLengthRange(int32_t before, int32_t after, int32_t n) {
  LengthRange range;
  roxe::BoxBlurGetModLengthRange(&range, before, after, n);
  return range;
}

std::vector<uint32_t> BoxBlurCreateModDivBuffer(int32_t h_min, int32_t h_end, int32_t v_min,
                                                int32_t v_end) {
  return values(roxe::BoxBlurCreateModDivBuffer(h_min, h_end, v_min, v_end),
                static_cast<size_t>((h_end - h_min) * (v_end - v_min)));
}

int32_t BoxBlurProcessRow8(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                           int32_t right, const uint32_t* reciprocals) {
  return roxe::BoxBlurProcessRow8(acc, out, width, left, right, {reciprocals, 0});
}
int32_t BoxBlurProcessRow24(const uint32_t* acc, uint8_t* out, int32_t width, int32_t left,
                            int32_t right, const uint32_t* reciprocals) {
  return roxe::BoxBlurProcessRow24(acc, out, width, left, right, {reciprocals, 0});
}

// Row by row, as soft focus blurs pictures and masks.
int32_t gaussian_by_rows(const PixelArray* src, PixelArray* dst, int32_t radius) {
  GaussianStream stream(*src, radius);
  if (!stream.allocate()) return 0;
  const int32_t bytes = src->format == kRoxeFormatGray8 ? src->width : 3 * src->width;
  for (int32_t y = 0; y < src->height; ++y)
    std::copy_n(stream.next_row(row_of(*dst, y)), bytes, row_of(*dst, y));
  return 1;
}

float sRGB2LinearRGBChannel(uint32_t value) {
  float linear;
  roxe::sRGB2LinearRGBChannel(value, &linear);
  return linear;
}
uint8_t LinearRGB2sRGBChannel(float linear) {
  uint8_t value;
  roxe::LinearRGB2sRGBChannel(&value, linear);
  return value;
}
std::vector<float> CreatesRGB2LinearRGBIndex() {
  return values(roxe::CreatesRGB2LinearRGBIndex(), kLinearEntries);
}
std::vector<uint8_t> CreateLinearRGB2sRGBIndex() {
  return values(roxe::CreateLinearRGB2sRGBIndex(), kEncodedEntries);
}

WhitePoint GetWhitePoint(int32_t temperature, int32_t tint) {
  WhitePoint white;
  roxe::GetWhitePoint(temperature, tint, &white);
  return white;
}
std::array<float, 3> Getuvw(const Matrix3& primaries, WhitePoint white) {
  std::array<float, 3> uvw = {};
  roxe::Getuvw(primaries.data(), white.Y, white.x, white.y, uvw.data());
  return uvw;
}
bool GetRGB2XYZMatrix(const Matrix3& primaries, int32_t temperature, int32_t tint, Matrix3* out) {
  return roxe::GetRGB2XYZMatrix(primaries.data(), temperature, tint, out->data()) != 0;
}
bool GetColorTemperatureMatrix(int32_t t1, int32_t tint1, int32_t t2, int32_t tint2, Matrix3* out) {
  return roxe::GetColorTemperatureMatrix(t1, tint1, t2, tint2, out->data()) != 0;
}
bool GetBradfordXYZMatrix(int32_t t1, int32_t tint1, int32_t t2, int32_t tint2, Matrix3* out) {
  return roxe::GetBradfordXYZMatrix(t1, tint1, t2, tint2, out->data()) != 0;
}
bool GetSRGBColorTemperatureMatrix(int32_t t1, int32_t tint1, int32_t t2, int32_t tint2,
                                   Matrix3* out) {
  return roxe::GetSRGBColorTemperatureMatrix(t1, tint1, t2, tint2, out->data()) != 0;
}
void ApplyColorTemperatureMatrix(const PixelArray* src, PixelArray* dst, const Matrix3& matrix) {
  roxe::ApplyColorTemperatureMatrix(src, dst, matrix.data());
}
void ApplySRGBColorTemperatureMatrix(const PixelArray* src, PixelArray* dst,
                                     const Matrix3& matrix) {
  roxe::ApplySRGBColorTemperatureMatrix(src, dst, matrix.data());
}
void ApplyStdColorTemperatureMatrix(const PixelArray* src, PixelArray* dst, const Matrix3& matrix) {
  roxe::ApplyStdColorTemperatureMatrix(*src, *dst, matrix.data());
}
Matrix3 GetStdColorTemperatureMatrix(int32_t temperature, int32_t tint) {
  Matrix3 matrix = {};
  roxe::GetStdColorTemperatureMatrix(temperature, tint, matrix.data());
  return matrix;
}

std::vector<uint32_t> GetHistogram_RGB24(const PixelArray* src, const PixelRect* rect) {
  return values(roxe::GetHistogram_RGB24(*src, rect), 256);
}
void ApplyGamma_RGB24(const PixelArray* src, PixelArray* dst, double gamma) {
  roxe::ApplyGamma_RGB24(*src, *dst, gamma);
}
std::vector<CurvePoint> cubic_to_polyLine(const CurvePoint* control, float tolerance) {
  std::vector<CurvePoint> points(kPolylinePoints);
  points.resize(static_cast<size_t>(roxe::cubic_to_polyLine(points.data(), control, tolerance)));
  return points;
}
std::vector<float> get_intensity(const PixelArray& image, int32_t width, int32_t height) {
  std::vector<float> plane(static_cast<size_t>(width * height));
  roxe::get_intensity(plane.data(), image);
  return plane;
}
Curve row_of_curves(const uint8_t (&row)[256]) {
  Curve curve;
  std::copy(row, row + 256, curve.begin());
  return curve;
}
Curve lighter_row(int32_t row) { return row_of_curves(LIGHTER_TABLE[row]); }
Curve darker_row(int32_t row) { return row_of_curves(DARKER_TABLE[row]); }

}  // namespace side

#include "checksums/internal_rows.inl"

}  // namespace

std::string LibraryInternalRows() { return internal_rows(); }
