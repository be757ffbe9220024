#include <immintrin.h>

#include "frame/numbers.h"
#include "rows/loop_hint.h"
#include "rows/rows.h"

namespace roxe {
namespace {
#include "rows/rows_plain.inl"
#include "rows/simd/avx2.inl"
#include "rows/rows_narrow.inl"
#include "rows/rows_wide.inl"
}  // namespace

extern constexpr RowKernels kAvx2Rows = wide_rows("avx2");

}  // namespace roxe
