#include <smmintrin.h>

#include "frame/numbers.h"
#include "rows/loop_hint.h"
#include "rows/rows.h"

namespace roxe {
namespace {
#include "rows/rows_plain.inl"
#include "rows/simd/sse4.inl"
#include "rows/rows_narrow.inl"
#include "rows/rows_wide.inl"
}  // namespace

extern constexpr RowKernels kSse4Rows = wide_rows("sse4");

}  // namespace roxe
