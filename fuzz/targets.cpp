#include "fuzz/targets.h"

namespace fuzz {
namespace {

template <Operation operation>
constexpr Target calls() {
  return {kContracts[operation].name,
          [](const uint8_t* data, size_t size) { call_once(operation, data, size); }};
}

}  // namespace

const Target kTargets[kTargetCount] = {
    calls<kRotate>(),
    calls<kStraighten>(),
    calls<kAffine>(),
    calls<kPerspective>(),
    calls<kSoftFocus>(),
    calls<kReplaceColour>(),
    calls<kReplaceColourMask>(),
    calls<kTint>(),
    calls<kTintMask>(),
    calls<kTemperature>(),
    calls<kAutoGamma>(),
    calls<kShadowHighlight>(),
    calls<kVariations>(),
    calls<kCorrectionSize>(),
    calls<kVerify>(),
    {"differential", compare_with_reference},
    {"allocations", fail_allocation},
    {"sequences", play_sequence},
};

}  // namespace fuzz
