#include <immintrin.h>

#include "frame/numbers.h"
#include "rows/lanes.h"
#include "rows/rows.h"

namespace roxe {
namespace {

#include "rows/vectors_avx2.inl"
#include "rows/transpose_avx2.inl"
#include "rows/each_row.inl"
#include "rows/byte_table.inl"
#include "rows/byte_table_avx2.inl"

// geometry
#include "rows/projective.inl"
#include "rows/rotation.inl"
#include "rows/rotation_avx2.inl"
#include "rows/projective_avx2.inl"

// blur
#include "rows/blend_masked.inl"
#include "rows/box_lanes.inl"
#include "rows/box_lanes_avx2.inl"
#include "rows/blend_masked_avx2.inl"

// colour
#include "rows/colour_tables.inl"
#include "rows/hsv.inl"
#include "rows/cone_distance.inl"
#include "rows/colour_selection.inl"
#include "rows/planes_avx2.inl"
#include "rows/colour_selection_avx2.inl"
#include "rows/white_balance.inl"
#include "rows/white_balance_avx2.inl"

// tone
#include "rows/histogram.inl"
#include "rows/shadow_highlight.inl"
#include "rows/shadow_highlight_avx2.inl"

}  // namespace

constexpr RowKernels kAvx2Rows = {
    .name = "avx2",

    .look_up = look_up_avx2,
    .look_up_bgr = look_up_bgr_avx2,

    // geometry
    .rotate = rotate_avx2,
    .resample_band = resample_band_avx2,

    // blur
    .blend_masked = blend_masked_avx2,
    .to_lanes = to_lanes_avx2,
    .from_lanes = from_lanes_avx2,
    .box_row_16 = box_row_16_avx2,
    .box_row_32 = box_row_32_avx2,

    // colour
    .draw_selection = draw_selection_avx2,
    .replace_colour = replace_colour_avx2,
    .accent_colour = accent_colour_avx2,
    .balance_white = balance_white_avx2,

    // tone
    .count_green = count_green,
    .intensities = intensities_avx2,
    .intensity_sums = intensity_sums_avx2,
    .slide_sums = slide_sums,
    .tone_shifts = tone_shifts_avx2,
    .midtone_shifts = midtone_shifts_avx2,
    .shift_pixels = shift_pixels_avx2,
};

}  // namespace roxe
