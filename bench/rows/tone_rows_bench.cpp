#include <cstdint>
#include <vector>

#include "support/bench.h"

namespace {

constexpr int32_t kCount = 2000, kRows = 16;

const bench::Registration tone([] {
  static std::vector<uint8_t> src(3 * kCount * kRows), dst(3 * kCount);
  static std::vector<float> intensity(kCount), blurred(kCount), sums(kCount * kRows), shift(kCount),
      combined(256), midtone(512, 255.0f);
  static std::vector<uint32_t> counts(8 * 256);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 151 + i / 997);
  for (size_t i = 0; i < 256; ++i) {
    const float level = static_cast<float>(i);
    combined[i] = level + (255 - level) * level / 900;
    midtone[i] = level + (level - 128) * (255 - level) * level / 4e6f;
  }
  roxe::kPlainRows.intensities(src.data(), intensity.data(), kCount);
  roxe::kPlainRows.intensities(src.data() + 30, blurred.data(), kCount);

  bench::row("count_green", [](const roxe::RowKernels& rows) {
    rows.count_green(src.data(), kCount, reinterpret_cast<uint32_t(*)[256]>(counts.data()));
  });
  bench::row("intensities", [](const roxe::RowKernels& rows) {
    rows.intensities(src.data(), intensity.data(), kCount);
  });
  bench::row("intensity_sums", [](const roxe::RowKernels& rows) {
    rows.intensity_sums(src.data(), 3 * kCount, kRows, kCount, 4, sums.data(), kCount);
  });
  bench::row("slide_sums", [](const roxe::RowKernels& rows) {
    rows.slide_sums(sums.data(), intensity.data(), intensity.data(), 1.0f / 81, shift.data(),
                    kCount);
  });
  bench::row("tone_shifts", [](const roxe::RowKernels& rows) {
    rows.tone_shifts(intensity.data(), blurred.data(), combined.data(), midtone.data(),
                     shift.data(), kCount);
  });
  bench::row("midtone_shifts", [](const roxe::RowKernels& rows) {
    rows.midtone_shifts(intensity.data(), midtone.data(), shift.data(), kCount);
  });
  bench::row("shift_pixels", [](const roxe::RowKernels& rows) {
    rows.shift_pixels(src.data(), shift.data(), dst.data(), kCount);
  });
});

}  // namespace
