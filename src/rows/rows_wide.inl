// The wide rows, one text for every set, and the table of them. Rows without a wide text are plain.
#include "rows/blend_masked_wide.inl"
#include "rows/box_lanes_wide.inl"
#include "rows/projective_wide.inl"
#include "rows/rotation_wide.inl"
#include "rows/shadow_highlight_wide.inl"

static constexpr RowKernels wide_rows(const char* name) {
  RowKernels rows = plain_rows(name);

  // geometry
  rows.rotate = rotate_wide;
  rows.resample_band = resample_band_wide;

  // blur
  rows.blend_masked = blend_masked_wide;
  rows.to_lanes = to_lanes_wide;
  rows.from_lanes = from_lanes_wide;
  rows.box_row_16 = box_row_16_wide;
  rows.box_row_32 = box_row_32_wide;

  // tone
  rows.intensities = intensities_wide;
  rows.intensity_sums = intensity_sums_wide;
  rows.tone_shifts = tone_shifts_wide;
  rows.midtone_shifts = midtone_shifts_wide;
  rows.shift_pixels = shift_pixels_wide;
  return rows;
}
