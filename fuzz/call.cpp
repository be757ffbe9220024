#include "fuzz/call.h"

#include <cstring>

namespace fuzz {
namespace {

// Mostly a quadrilateral whose corners lie near those of the picture, else any points.
Quad quad_of(Input& input, Sides picture) {
  if (input.byte() % 4 != 0) {
    const auto x = [&] { return input.below(picture.width / 3 + 1); };
    const auto y = [&] { return input.below(picture.height / 3 + 1); };
    const int32_t right = picture.width, bottom = picture.height;
    return {x(), y(), right - x(), y(), right - x(), bottom - y(), x(), bottom - y()};
  }
  const auto x = [&] { return input.amount(-3, picture.width + 3); };
  const auto y = [&] { return input.amount(-3, picture.height + 3); };
  return {x(), y(), x(), y(), x(), y(), x(), y()};
}

constexpr uint32_t results(std::initializer_list<int32_t> values) {
  uint32_t bits = 0;
  for (const int32_t value : values) bits |= 1u << value;
  return bits;
}

}  // namespace

const Contract kContracts[kOperations] = {
    // name, results, untouched on error, without memory, checks null
    {"roxeRotateImage", results({0, 1, 2}), true, false, true},
    {"roxeuAutoStraightenImage", results({0, 1, 2}), true, false, false},
    {"roxeAffineTransform", results({0, 1, 2, 3, 4}), true, true, true},
    {"roxePerspectiveDistortionCorrection", results({0, 2, 4}), false, true, true},
    {"roxeSoftFocus", results({0, 1, 2, 4}), true, false, true},
    {"roxeReplaceColor", results({0}), false, false, true},
    {"roxeReplaceColorMask", results({0}), false, false, true},
    {"roxeColorTint", results({0}), false, false, true},
    {"roxeColorTintMask", results({0}), false, false, true},
    {"roxeColorTemperature", results({0, 1, 2, 4}), true, false, true},
    {"roxeAutoGamma", results({0, 1, 2}), true, true, true},
    {"roxeShadowHighlight", results({0}), false, true, true},
    {"roxeVariations", results({0}), false, true, true},
    {"roxeGetPerspectiveDistortionCorrectionSize", results({0, 1}), false, false, true},
    {"roxeVerifyPixelArray", results({0, 1, 2}), false, false, true},
};

bool Result::operator==(const Result& other) const {
  return status == other.status && width == other.width && height == other.height &&
         std::memcmp(&quad, &other.quad, sizeof quad) == 0;
}

Call call_of(Input& input, Operation operation, Sides src, Sides dst) {
  Call call = {};
  call.operation = operation;
  for (int32_t& number : call.numbers) number = input.amount(-100, 300);
  call.angle = input.real();
  const uint8_t flags = input.byte();
  call.has_mask = flags & 1, call.has_region = flags & 2, call.has_target = flags & 4;
  call.quad = quad_of(input, src);
  call.target = quad_of(input, dst);
  call.rect = {input.amount(-9, 30), input.amount(-9, 30), input.amount(-9, 60),
               input.amount(-9, 60)};
  return call;
}

Result run(const Operations& op, Call call, PixelArray* src, PixelArray* dst, PixelArray* mask) {
  const int32_t* n = call.numbers;
  const auto u = [n](int i) { return static_cast<uint32_t>(n[i]); };
  Result result = {0, -1, -1, {}};
  int32_t& status = result.status;
  switch (call.operation) {
    case kRotate:
      status = op.rotate(src, n[0], n[1], call.angle, dst, n[2], n[3]);
      break;
    case kStraighten:
      status = op.straighten(src, n[0], n[1], n[2], n[3], dst);
      break;
    case kAffine:
      status = op.affine(src, dst, &call.quad, call.has_target ? &call.target : nullptr, call.rect);
      break;
    case kPerspective:
      status = op.perspective(src, dst, &call.quad, n[0], n[1], call.rect);
      break;
    case kSoftFocus:
      status = op.soft_focus(src, dst, call.has_mask ? mask : nullptr, n[0], n[1]);
      break;
    case kReplaceColour:
      status = op.replace_colour(src, dst, u(0), u(1), u(2), u(3), n[4], n[5] % 12850,
                                 n[6] % 12850);  // far beyond a percentage, yet without overflow
      break;
    case kReplaceColourMask:
      status = op.replace_colour_mask(src, dst, u(0), u(1), u(2), u(3));
      break;
    case kTint:
      status = op.tint(src, dst, u(0), u(1), u(2), u(3));
      break;
    case kTintMask:
      status = op.tint_mask(src, dst, u(0), u(1), u(2), u(3));
      break;
    case kTemperature:
      status = op.temperature(src, dst, n[0], n[1]);
      break;
    case kAutoGamma:
      status = op.auto_gamma(src, dst, call.has_region ? &call.rect : nullptr);
      break;
    case kShadowHighlight:
      status = op.shadow_highlight(src, dst, u(0), u(1), n[2]);
      break;
    case kVariations:
      status = op.variations(src, dst, n[0], n[1], n[2], n[3], n[4]);
      break;
    case kCorrectionSize:
      status =
          op.correction_size(&call.quad, n[0], n[1], n[2], call.has_mask ? nullptr : &result.width,
                             call.has_region ? nullptr : &result.height);
      break;
    case kVerify:
      status = op.verify(src);
      break;
    case kOperations:
      break;
  }
  result.quad = call.quad;
  return result;
}

}  // namespace fuzz
