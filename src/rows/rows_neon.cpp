#include <arm_neon.h>

#include "frame/numbers.h"
#include "rows/loop_hint.h"
#include "rows/rows.h"

namespace roxe {
namespace {
constexpr int32_t kBytes = 16;
#include "rows/rows_plain.inl"
#include "rows/simd/neon.inl"
#include "rows/rows_narrow.inl"
#include "rows/rows_wide.inl"
}  // namespace

constexpr RowKernels kNeonRows = wide_rows("neon");

}  // namespace roxe
