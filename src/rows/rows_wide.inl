// The wide rows, one text for every set, and the table of them. Rows without a wide text are plain.

// These rows work on columns of 32 bytes: 32 lanes, or eight floats. A set whose vectors are longer
// (AVX-512) names one with shorter ones (AVX2), which is then compiled here once more.
#ifdef ROXE_SHORTER_SET
namespace shorter {
#include ROXE_SHORTER_SET
#include "rows/intensities_wide.inl"
#include "rows/lane_transposes_wide.inl"
}  // namespace shorter
using shorter::from_lanes_wide;
using shorter::intensities_wide;
using shorter::intensity_sums_wide;
using shorter::to_lanes_wide;
#else
#include "rows/intensities_wide.inl"
#include "rows/lane_transposes_wide.inl"
#endif

#include "rows/pairs_wide.inl"
#include "rows/pixel_parts_wide.inl"
#include "rows/word_bounds.inl"

#include "rows/blend_masked_wide.inl"
#include "rows/box_lanes_wide.inl"
#include "rows/byte_table_wide.inl"
#include "rows/colour_selection_wide.inl"
#include "rows/projective_wide.inl"
#include "rows/rotation_wide.inl"
#include "rows/shadow_highlight_wide.inl"
#include "rows/white_balance_wide.inl"

static constexpr RowKernels wide_rows(const char* name) {
  RowKernels rows = plain_rows(name);

  rows.look_up = look_up_wide;
  if constexpr (kWideTables) rows.look_up_bgr = look_up_bgr_wide;
  if constexpr (!kPlainSimpleRows) {
    rows.box_row_16 = box_row_16_wide;
    rows.box_row_32 = box_row_32_wide;
    rows.intensities = intensities_wide;
  }

  // geometry
  rows.rotate = rotate_wide;
  rows.resample_band = resample_band_wide;

  // blur
  rows.blend_masked = blend_masked_wide;
  rows.to_lanes = to_lanes_wide;
  rows.from_lanes = from_lanes_wide;

  // colour
  rows.draw_selection = draw_selection_wide;
  rows.replace_colour = replace_colour_wide;
  rows.accent_colour = accent_colour_wide;
  rows.balance_white = balance_white_wide;

  // tone
  rows.intensity_sums = intensity_sums_wide;
  rows.tone_shifts = tone_shifts_wide;
  rows.midtone_shifts = midtone_shifts_wide;
  rows.shift_pixels = shift_pixels_wide;
  return rows;
}
