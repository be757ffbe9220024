// The plain rows, and the table of them where every table starts.
#include "rows/each_row.inl"
#include "rows/byte_table.inl"

// geometry
#include "rows/projective.inl"
#include "rows/rotation.inl"

// blur
#include "rows/blend_masked.inl"
#include "rows/box_lanes.inl"

// colour
#include "rows/colour_tables.inl"
#include "rows/hsv.inl"
#include "rows/cone_distance.inl"
#include "rows/colour_selection.inl"
#include "rows/white_balance.inl"

// tone
#include "rows/histogram.inl"
#include "rows/shadow_highlight.inl"

static constexpr RowKernels plain_rows(const char* name) {
  return {
      .name = name,

      .look_up = look_up,
      .look_up_bgr = look_up_bgr,

      // geometry
      .rotate = rotate,
      .resample_band = resample_band,

      // blur
      .blend_masked = blend_masked,
      .to_lanes = to_lanes,
      .from_lanes = from_lanes,
      .box_row_16 = box_row_16,
      .box_row_32 = box_row_32,

      // colour
      .draw_selection = draw_selection,
      .replace_colour = replace_colour,
      .accent_colour = accent_colour,
      .balance_white = balance_white,

      // tone
      .count_green = count_green,
      .intensities = intensities,
      .intensity_sums = intensity_sums,
      .slide_sums = slide_sums,
      .tone_shifts = tone_shifts,
      .midtone_shifts = midtone_shifts,
      .shift_pixels = shift_pixels,
  };
}
