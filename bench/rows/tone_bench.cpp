#include <cstdint>
#include <vector>

#include "support/bench.h"

namespace {

constexpr int32_t kCount = 1024, kRows = 8;

const bench::Registration tone_rows([] {
  static std::vector<uint8_t> src(3 * kCount * kRows), dst(3 * kCount);
  static std::vector<float> intensity(kCount), blurred(kCount), shift(kCount);
  static std::vector<float> combined(256), midtone(512, 255.0f), sums(kCount * kRows);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 151 + (i >> 8));
  for (size_t i = 0; i < kCount; ++i) {
    intensity[i] = static_cast<float>(i % 256) * 0.99f;
    blurred[i] = static_cast<float>(i * 7 % 256) * 0.99f;
    shift[i] = static_cast<float>(i % 200) * 0.37f - 30.0f;
  }
  for (size_t i = 0; i < 256; ++i) combined[i] = midtone[i] = static_cast<float>(i);

  bench::row("count_green", kCount, [](const roxe::RowKernels& rows) {
    static uint32_t counts[8][256];
    rows.count_green(src.data(), kCount, counts);
  });
  bench::row("intensities", kCount, [](const roxe::RowKernels& rows) {
    static std::vector<float> plane(kCount);
    rows.intensities(src.data(), plane.data(), kCount);
  });
  bench::row("intensity_sums", kCount * kRows, [](const roxe::RowKernels& rows) {
    rows.intensity_sums(src.data(), 3 * kCount, kRows, kCount, 4, sums.data(), kCount);
  });
  bench::row("slide_sums", kCount, [](const roxe::RowKernels& rows) {
    static std::vector<float> columns(kCount), means(kCount);
    rows.slide_sums(columns.data(), intensity.data(), blurred.data(), 1.0f / 81, means.data(),
                    kCount);
  });
  bench::row("tone_shifts", kCount, [](const roxe::RowKernels& rows) {
    static std::vector<float> shifts(kCount);
    rows.tone_shifts(intensity.data(), blurred.data(), combined.data(), midtone.data(),
                     shifts.data(), kCount);
  });
  bench::row("midtone_shifts", kCount, [](const roxe::RowKernels& rows) {
    static std::vector<float> shifts(kCount);
    rows.midtone_shifts(intensity.data(), midtone.data(), shifts.data(), kCount);
  });
  bench::row("shift_pixels", kCount, [](const roxe::RowKernels& rows) {
    rows.shift_pixels(src.data(), shift.data(), dst.data(), kCount);
  });
});

}  // namespace
