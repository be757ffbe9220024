#include <arm_neon.h>

#include "frame/numbers.h"
#include "rows/loop_hint.h"
#include "rows/rows.h"

namespace roxe {
namespace {
#include "rows/rows_plain.inl"
#include "rows/simd/neon.inl"
#include "rows/rows_narrow.inl"
#include "rows/rows_wide.inl"
}  // namespace

extern const RowKernels kNeonRows;
constexpr RowKernels kNeonRows = wide_rows("neon");

}  // namespace roxe
