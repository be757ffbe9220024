// The Gaussian approximation row by row: the three boxes are chained through rings of the rows that
// their windows still need, so that memory grows with the radius and not with the height.
#ifndef ROXE_BLUR_GAUSSIAN_STREAM_H_
#define ROXE_BLUR_GAUSSIAN_STREAM_H_

#include <cstddef>
#include <cstdint>

#include "frame/runtime.h"
#include "roxe.h"
#include "rows/rows.h"

namespace roxe {

class GaussianStream {
 public:
  // For a verified RGB24 or Gray8 picture whose rows hold all of its columns, and a radius above 1.
  GaussianStream(const PixelArray& picture, int32_t radius);

  // Makes the rings; false when there is no memory. Nothing is read.
  bool allocate();

  // Blurs the next row, from top to bottom. The pixels stay until the next call. Row y of the
  // picture is not read again once row y is blurred, so the result may overwrite it. wanted is a
  // row that will soon be read or written: a hint, never followed.
  uint8_t* next_row(const uint8_t* wanted);

 private:
  struct Pass {
    int32_t left, top, right, bottom;
    bool wide;  // sums of 32 bits
    BoxRow<int16_t> box_16;
    BoxRow<uint32_t> box_32;
    uint32_t (*multipliers)[kLanes];
    uint32_t* reciprocals;
    uint8_t* ring;
    int32_t ring_rows;
    int32_t entered, blurred;  // rows that entered the window, and rows that were written
  };
  class Carver;

  void carve(Carver& carver);
  template <class Sum>
  void set_up(Pass& pass, BoxRow<Sum>& box) const;
  uint8_t* ring_row(const Pass& pass, int32_t y) const;
  void set_multipliers(const Pass& pass, int32_t rows) const;
  void move_window(Pass& pass, uint8_t* dst);
  void produce(int32_t level, uint8_t* dst);

  const PixelArray& picture_;
  const RowKernels& rows_;
  int32_t channels_, columns_;  // columns of a stretch
  size_t row_size_;             // of a row in lanes
  Pass passes_[3];
  Block<uint8_t> memory_;
  uint8_t *no_row_, *lanes_, *line_;
};

}  // namespace roxe

#endif  // ROXE_BLUR_GAUSSIAN_STREAM_H_
