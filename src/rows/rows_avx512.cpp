#include <immintrin.h>

#include "frame/numbers.h"
#include "rows/loop_hint.h"
#include "rows/rows.h"

namespace roxe {
namespace {
#include "rows/rows_plain.inl"

namespace narrow {
#include "rows/simd/avx2.inl"
#include "rows/rows_narrow.inl"
}  // namespace narrow
using narrow::from_lanes_wide;
using narrow::intensities_wide;
using narrow::intensity_sums_wide;
using narrow::to_lanes_wide;

#include "rows/simd/avx512.inl"
#include "rows/rows_wide.inl"
}  // namespace

extern constexpr RowKernels kAvx512Rows = wide_rows("avx512");

}  // namespace roxe
