// The wide rows whose vectors have 32 bytes at most: a column of lanes, or eight floats.
#include "rows/intensities_wide.inl"
#include "rows/lane_transposes_wide.inl"
