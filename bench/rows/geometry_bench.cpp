#include <cstdint>
#include <vector>

#include "support/bench.h"

namespace {

constexpr int32_t kSide = 256;   // of a source that stays in the cache
constexpr int32_t kCount = 224;  // pixels of a row

const bench::Registration rotation([] {
  static std::vector<uint8_t> src(3 * kSide * kSide), dst(3 * kCount * roxe::kProjectiveBand);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 151 + i / 997);

  // 7.3 degrees through the middle of the source.
  static const roxe::RotationWalk walk = {src.data(), 3 * kSide, kSide, kSide, {16, 0},
                                          {48, 0},    65004,     8327,  -8327, 65004};
  bench::row("rotate", kCount, [](const roxe::RowKernels& rows) {
    rows.rotate(walk, dst.data(), 3 * kCount, 1, kCount);
  });

  static const roxe::ProjectiveSource source = {src.data(), 3 * kSide, kSide, kSide,
                                                0.97f,      0.04f,     1e-4f};
  bench::row("resample_band", kCount * roxe::kProjectiveBand, [](const roxe::RowKernels& rows) {
    roxe::ProjectiveSums starts[roxe::kProjectiveBand];
    for (int32_t i = 0; i < roxe::kProjectiveBand; ++i) {
      const float y = static_cast<float>(i);
      starts[i] = {10 + 0.05f * y, 40 + 0.96f * y, 1 + 1e-4f * y};
    }
    rows.resample_band(source, starts, dst.data(), 3 * kCount, roxe::kProjectiveBand, kCount);
  });
});

}  // namespace
