#include <cstdint>
#include <vector>

#include "support/bench.h"

namespace {

constexpr int32_t kCount = 4096;

const bench::Registration byte_tables([] {
  static std::vector<uint8_t> table(3 * 256), src(3 * kCount), dst(3 * kCount);
  for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<uint8_t>(255 - i / 3);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 151);
  bench::row("look_up", kCount, [](const roxe::RowKernels& rows) {
    rows.look_up(table.data(), {src.data(), 0, dst.data(), 0, 1, kCount});
  });
  bench::row("look_up_bgr", kCount, [](const roxe::RowKernels& rows) {
    rows.look_up_bgr(table.data(), table.data() + 256, table.data() + 512,
                     {src.data(), 0, dst.data(), 0, 1, kCount});
  });
});

}  // namespace
