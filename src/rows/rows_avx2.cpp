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

namespace by_hand {
#include "rows/vectors_avx2.inl"
#include "rows/byte_table_avx2.inl"
#include "rows/planes_avx2.inl"
#include "rows/colour_selection_avx2.inl"
#include "rows/white_balance_avx2.inl"
}  // namespace by_hand
}  // namespace

extern const RowKernels kAvx2Rows;
constexpr RowKernels kAvx2Rows = [] {
  RowKernels rows = wide_rows("avx2");
  rows.look_up = by_hand::look_up_avx2;
  rows.look_up_bgr = by_hand::look_up_bgr_avx2;
  rows.draw_selection = by_hand::draw_selection_avx2;
  rows.replace_colour = by_hand::replace_colour_avx2;
  rows.accent_colour = by_hand::accent_colour_avx2;
  rows.balance_white = by_hand::balance_white_avx2;
  return rows;
}();

}  // namespace roxe
