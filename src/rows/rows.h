// The hot loops of all operations, in one table for each instruction set.
//
// A row is a function over pointers and counts: no image record, no status, no allocation. All
// tables give the same bytes; the comment of an entry is the contract of all its bodies. Unless an
// entry says otherwise, any two of the rows that it is given are the same row or disjoint, and
// exactly count elements are read and written. What takes a band (pixel_band.h) does all its rows
// in one call, so that what belongs to the call is prepared once.
#ifndef ROXE_ROWS_ROWS_H_
#define ROXE_ROWS_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "frame/numbers.h"
#include "frame/pixel_band.h"

namespace roxe {

// A position along one axis: whole pixels and 65536ths, the latter 0 ... 65535 as long as no step
// is longer than a pixel.
struct FixedCoordinate {
  int32_t whole, fraction;
};

// One step of a walk, with at most one carry or borrow.
static inline void advance(FixedCoordinate& at, int32_t step) {
  at.fraction = wrap_add(at.fraction, step);
  if (at.fraction > 65535) {
    at.fraction -= 65536;
    at.whole = wrap_add(at.whole, 1);
  }
  if (at.fraction < 0) {
    at.fraction += 65536;
    at.whole = wrap_sub(at.whole, 1);
  }
}

// Where count steps lead; no step is longer than a pixel and the fraction is 0 ... 65535.
static inline FixedCoordinate advanced(FixedCoordinate at, int32_t step, int32_t count) {
  const int64_t sum = at.whole * int64_t{65536} + at.fraction + int64_t{step} * count;
  return {static_cast<int32_t>(sum >> 16), static_cast<int32_t>(sum & 65535)};
}

// A walk through a 24-bit picture in parallel rows: where the first pixel is sampled, the step to
// the next one and the step to the next row.
struct RotationWalk {
  const uint8_t* src;
  ptrdiff_t src_stride;
  int32_t src_columns, src_rows;
  FixedCoordinate x, y;
  int32_t step_x, step_y;
  int32_t row_step_x, row_step_y;
};

// The numerators of the two coordinates and their common denominator, at one pixel.
struct ProjectiveSums {
  float x, y, denominator;
};

// A 24-bit picture and what is added to the sums from one destination pixel to the next.
struct ProjectiveSource {
  const uint8_t* pixels;
  ptrdiff_t stride;
  int32_t columns, rows;
  float step_x, step_y, step_denominator;
};

constexpr int32_t kProjectiveBand = 8;  // most rows of a band

// ---- a box blur along rows in lanes

// A row in lanes: its columns are cut into 32 stretches of equal length, the last of them filled up
// with zeros, which lie side by side in the 32 lanes of vectors. Running along the row is then one
// vector addition a column of a stretch. Of 96 columns:
//
//   stretch       0    |    1    |    2    |  ...  |    31
//   columns   0  1  2  | 3  4  5 | 6  7  8 |  ...  | 93 94 95
//
//   lane        0    1    2    3   ...  31
//   vector 0    0    3    6    9   ...  93       column 0 of every stretch
//   vector 1    1    4    7   10   ...  94
//   vector 2    2    5    8   11   ...  95       a plane; one for each channel
//
// Lane k is byte byte_of_lane(k) of a vector; the order spares the wide bodies a permutation.
constexpr int32_t kLanes = 32;
static constexpr int32_t byte_of_lane(int32_t k) {
  return (k & 7) | (k & 8) << 1 | (k & 16) >> 1;  // the middle two groups of eight change places
}

// A mean is the sum of a window times floor(2^23 / pixels), shifted right: rounded down twice.
constexpr int32_t kWindowShift = 23;
static inline uint32_t window_reciprocal(int64_t pixels) {
  return static_cast<uint32_t>((int64_t{1} << kWindowShift) / pixels);
}

// Sums of a column of every stretch in the order of lanes, then as many lanes of an empty picture:
// loads that begin q lanes off then see the column of the q-th stretch further on, or nothing.
constexpr int32_t kSumsStep = 2 * kLanes;

// Consecutive columns x of the stretches whose windows move alike.
struct BoxRun {
  int32_t count;
  bool same_multipliers;  // those of the first column serve all
  ptrdiff_t entering;     // index of the sums of the first column's x + right, counted in sums
  ptrdiff_t leaving;      // and of its x - left - 1
};

// One box blur of a picture, as its rows see it: the window of column x holds columns x - left ...
// x + right. Sum is int16_t for windows of up to 257 rows (sums less 32768, in empty lanes too),
// else uint32_t.
template <class Sum>
struct BoxRow {
  int32_t channels;
  int32_t columns;             // of a stretch
  int32_t head, whole_after;   // right = whole_after * columns + head
  int32_t tail, whole_before;  // left + 1 = whole_before * columns + tail
  BoxRun runs[8];              // as many as make up all columns
  Sum* sums;                   // of the rows inside the window, a plane a channel
  ptrdiff_t sums_size;         // from plane to plane
  uint32_t (*starts)[kLanes];  // a channel: the window left of each stretch
  // Twice window_reciprocal: the mean is the top byte of a product. 0 beyond the last column.
  const uint32_t (*multipliers)[kLanes];
};

struct Hsv {
  int32_t hue, saturation, value;  // 0 ... 360 degrees, 0 ... 255, 0 ... 255
};

// The colours near a reference colour, in cone_distance.inl's sense.
struct ColourSelection {
  Hsv reference;
  uint32_t limit;                            // steps of distance that are inside, 1 ... 201
  uint32_t limit_squared, limit_reciprocal;  // the latter in 1 / 16384
};

// What a replacement adds at full weight, and the weight of each distance in 1 / 65536: 65536 at
// distance 0, less at all others, 0 from the limit on.
struct ColourShift {
  int32_t hue, saturation, value;  // degrees; the others on the scale of 0 ... 255
  int32_t weight[256];
};

// A colour matrix for linear light, in 1 / 4096, row-major, for the column (red, green, blue).
struct ColourMatrix {
  int32_t entry[9];
};

// tone_shifts adds 0.0001 in double precision and rounds. For 0 and for floats from here on an
// addition in single precision gives the same; for the float before this one it does not.
constexpr float kSingleSumFrom = 0x1.2e48e8p-13f;

struct RowKernels {
  const char* name;  // "plain", "sse4", "avx2", "avx512", "neon", "wasm"

  // ---- byte tables of 256 entries (byte_table.inl)

  // Replaces each byte of the pixels by its entry. A band of one pixel is read and written byte by
  // byte, which shows where dst lies a byte or two away from src.
  void (*look_up)(const uint8_t* table, const PixelBand& band);

  // The same with one table for each byte of a pixel.
  void (*look_up_bgr)(const uint8_t* blue, const uint8_t* green, const uint8_t* red,
                      const PixelBand& band);

  // ---- geometry (rotation.inl, projective.inl)

  // Samples the walk at count pixels in each of so many rows, dst_stride apart. Pixels whose place
  // in the source does not have a whole column of 1 ... src_columns - 2 and a whole row of 1 ...
  // src_rows - 2 are left as they were. The plain body reads and writes pixel after pixel, row
  // after row, and allows dst to lie in the source, and steps of any length; the others do not.
  void (*rotate)(const RotationWalk& walk, uint8_t* dst, ptrdiff_t dst_stride, int32_t rows,
                 int32_t count);

  // Samples count pixels in each of 1 ... kProjectiveBand rows, dst_stride apart, from the sums at
  // the start of each row on. Pixels that four source pixels do not cover are left as they were.
  // The plain body reads and writes pixel after pixel, row after row, and allows dst to lie in the
  // source; the others do not.
  void (*resample_band)(const ProjectiveSource& source, const ProjectiveSums* starts, uint8_t* dst,
                        ptrdiff_t dst_stride, int32_t rows, int32_t count);

  // ---- blur (blend_masked.inl, box_lanes.inl)

  // Pulls each byte of count pixels of three bytes towards src by mask / 256, one mask byte a
  // pixel, rounding toward minus infinity. mask shares no memory with dst.
  void (*blend_masked)(const uint8_t* src, const uint8_t* mask, uint8_t* dst, int32_t count);

  // Brings a row of 32 stretches of so many columns, packed pixels of 1 or 3 channels, into lanes,
  // and back. next is a row that will soon be read or written: a hint, never followed.
  void (*to_lanes)(const uint8_t* row, uint8_t* lanes, int32_t channels, int32_t columns,
                   const uint8_t* next);
  void (*from_lanes)(const uint8_t* lanes, uint8_t* row, int32_t channels, int32_t columns,
                     const uint8_t* next);

  // Moves the window down by one row, entering below and leaving above (a row of zeros where there
  // is none; the same row in both places changes nothing), and writes the means of the new row; dst
  // may be null for none. All rows in lanes.
  void (*box_row_16)(const BoxRow<int16_t>& box, const uint8_t* entering, const uint8_t* leaving,
                     uint8_t* dst);
  void (*box_row_32)(const BoxRow<uint32_t>& box, const uint8_t* entering, const uint8_t* leaving,
                     uint8_t* dst);

  // ---- colour (colour_selection.inl, white_balance.inl). Each pixel is read before it is written.

  // Writes level[distance] to the three bytes of each pixel; level has 256 entries.
  void (*draw_selection)(const ColourSelection& selection, const uint8_t* level,
                         const PixelBand& band);

  // Shifts hue, saturation and value of the pixels inside the selection; copies the others.
  void (*replace_colour)(const ColourSelection& selection, const ColourShift& shift,
                         const PixelBand& band);

  // Moves the pixels inside the selection toward grey in proportion to their distance; makes the
  // others grey.
  void (*accent_colour)(const ColourSelection& selection, const PixelBand& band);

  // Applies the matrix in linear light, caps the brightness and spills strong channels.
  void (*balance_white)(const ColourMatrix& matrix, const PixelBand& band);

  // ---- tone

  // Counts the green bytes of count pixels, spread over eight sets of counts that are to be added
  // up. The last pixel may end with its green byte.
  void (*count_green)(const uint8_t* src, int32_t count, uint32_t (*counts)[256]);

  // dst[i] = 0.114 blue + (0.299 red + 0.587 green), the additions fused, of count pixels: the luma
  // of ITU-R BT.601.
  void (*intensities)(const uint8_t* src, float* dst, int32_t count);

  // For rows rows of count pixels: the sums of the intensities of columns x - half ... x + half,
  // the first and last column repeated; a running sum along the row, in single precision. half is 0
  // ... 4 and 2 * half < count.
  void (*intensity_sums)(const uint8_t* src, ptrdiff_t src_step, int32_t rows, int32_t count,
                         int32_t half, float* sums, ptrdiff_t sums_step);

  // sums[i] = (sums[i] - leave[i]) + enter[i]; blurred[i] = sums[i] * scale. leave and enter may be
  // the same row.
  void (*slide_sums)(float* sums, const float* leave, const float* enter, float scale,
                     float* blurred, int32_t count);

  // With own = intensity[i], near = blurred[i] (0 ... 1000 or so) and s = (own + near) + 0.0001,
  // the second addition in double precision, its sum rounded to single: shift[i] = midtone[j] -
  // own, where j = combined[own] * ((own * near + s * s) / (near * near + s * s)), truncated and
  // clamped to 0 ... 511. combined has 256 entries, midtone 512, of which those from 256 on are
  // equal.
  void (*tone_shifts)(const float* intensity, const float* blurred, const float* combined,
                      const float* midtone, float* shift, int32_t count);

  // shift[i] = midtone[intensity[i]] - intensity[i].
  void (*midtone_shifts)(const float* intensity, const float* midtone, float* shift, int32_t count);

  // Adds shift[i] to the three bytes of pixel i, truncated and clamped to 0 ... 255.
  void (*shift_pixels)(const uint8_t* src, const float* shift, uint8_t* dst, int32_t count);
};

extern const RowKernels kPlainRows;

// The best table that this processor can run. Nothing is remembered between calls.
const RowKernels& Rows();

}  // namespace roxe

#endif  // ROXE_ROWS_ROWS_H_
