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

extern constexpr RowKernels kNeonRows = [] {
  RowKernels rows = wide_rows("neon");
  // g++ makes loads of three channels of the plain row: 1.6 instructions a pixel instead of 3.5.
  // With clang the plain row has 5.6.
  rows.blend_masked = blend_masked;
  // 3.1 instructions a pixel instead of 4.1, for the same reason.
  rows.intensities = intensities;
  // 9.6 instructions a pixel instead of 12.3, which llvm-mca expects to take 4.1 cycles instead of 5.7
  // on a Neoverse N1, 2.2 instead of 2.4 on an M1; and with sums of 32 bits 10.6 instead of 12.0, 4.8
  // cycles instead of 5.1 and 2.4 instead of 2.6.
  rows.box_row_16 = box_row_16;
  rows.box_row_32 = box_row_32;
  return rows;
}();

}  // namespace roxe
