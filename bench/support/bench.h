// What the benchmarks share: pictures, and registration under every table of rows.
//
// A benchmark is called "operation/table/size"; "memcpy/-/size" copies the same bytes in the same
// process and is the yardstick. Nothing is asserted here: scripts/bench reads the times.
#ifndef ROXE_BENCH_SUPPORT_BENCH_H_
#define ROXE_BENCH_SUPPORT_BENCH_H_

#include <cstdint>
#include <functional>
#include <string>

#include "roxe.h"
#include "rows/rows.h"

namespace bench {

struct Size {
  const char* name;  // "64x64", "1MP", "12MP", "24MP", "100MP"
  int32_t width, height;
};

// Packed RGB24 pictures of one size, shared by all benchmarks: src is a smooth scene with edges and
// grain, dst is scratch. mask is Gray8, a soft-edged disc.
struct Pictures {
  PixelArray src, dst, mask;
};
const Pictures& pictures(const Size& size);

// Measures run at every size under the best table, and at 12 MP under every table.
void operation(const std::string& name, std::function<void(const Pictures&)> run);

// Measures run under every table on so many pixels that stay in the cache.
void row(const std::string& name, int32_t pixels, std::function<void(const roxe::RowKernels&)> run);

// Measures run at 12 MP as the peer of an operation.
void peer(const std::string& name, std::function<void(const Pictures&)> run);

// Registers when the program starts: static const bench::Registration geometry([] { ... });
struct Registration {
  explicit Registration(void (*add)()) { add(); }
};

}  // namespace bench

#endif  // ROXE_BENCH_SUPPORT_BENCH_H_
