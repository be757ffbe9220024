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

namespace by_hand {
#include "rows/vectors_avx2.inl"
#include "rows/byte_table_avx512.inl"
#include "rows/planes_avx2.inl"
#include "rows/colour_selection_avx2.inl"
#include "rows/planes_avx512.inl"
#include "rows/colour_selection_avx512.inl"
#include "rows/white_balance_avx2.inl"
#include "rows/white_balance_avx512.inl"
}  // namespace by_hand
}  // namespace

extern const RowKernels kAvx512Rows;
constexpr RowKernels kAvx512Rows = [] {
  RowKernels rows = wide_rows("avx512");
  rows.look_up = by_hand::look_up_avx512;
  rows.look_up_bgr = by_hand::look_up_bgr_avx512;
  rows.draw_selection = by_hand::draw_selection_avx512;
  rows.replace_colour = by_hand::replace_colour_avx512;
  rows.accent_colour = by_hand::accent_colour_avx512;
  rows.balance_white = by_hand::balance_white_avx512;
  return rows;
}();

}  // namespace roxe
