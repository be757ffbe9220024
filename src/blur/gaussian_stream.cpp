#include "blur/gaussian_stream.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "blur/gaussian_windows.h"
#include "frame/pixel_array.h"

namespace roxe {
namespace {

// Sums of 16 bits hold windows of up to 257 rows of 255.
constexpr int64_t kNarrowRows = 257;

constexpr int64_t window_length(int64_t before, int64_t after, int64_t n) {
  return std::min(before + after + 1, n);
}

// Sums of 16 bits are kept less 32768.
template <class Sum>
constexpr Sum kNoSum = std::numeric_limits<Sum>::min();

}  // namespace

// Cuts parts out of one block. Without a block it only measures.
class GaussianStream::Carver {
 public:
  explicit Carver(uint8_t* memory = nullptr) : memory_(memory) {}
  template <class T>
  T* take(uint64_t count) {
    T* part = memory_ ? reinterpret_cast<T*>(memory_ + used_) : nullptr;
    used_ += count * sizeof(T);
    return part;
  }
  uint64_t used() const { return used_; }

 private:
  uint8_t* memory_;
  uint64_t used_ = 0;
};

GaussianStream::GaussianStream(const PixelArray& picture, int32_t radius)
    : picture_(picture), rows_(Rows()) {
  channels_ = picture.format == kRoxeFormatRGB24 ? 3 : 1;
  columns_ = picture.width / kLanes + (picture.width % kLanes != 0);
  row_size_ = static_cast<size_t>(channels_) * static_cast<size_t>(columns_) * kLanes;

  const auto windows = gaussian_windows(static_cast<uint32_t>(radius));
  for (size_t i = 0; i < windows.size(); ++i) {
    Pass& pass = passes_[i];
    pass.left = pass.top = windows[i].before;
    pass.right = pass.bottom = windows[i].after;
    pass.wide = window_length(pass.top, pass.bottom, picture.height) > kNarrowRows;
    // A row enters before another one leaves.
    pass.ring_rows = static_cast<int32_t>(
        std::min<int64_t>(int64_t{pass.top} + pass.bottom + 2, picture.height));
    pass.entered = pass.blurred = 0;
  }
}

bool GaussianStream::allocate() {
  Carver measure;
  carve(measure);
  memory_ = make_block<uint8_t>(measure.used() + 63);
  if (!memory_) return false;
  const size_t misaligned = reinterpret_cast<uintptr_t>(memory_.get()) % 64;
  Carver carver(memory_.get() + (64 - misaligned) % 64);
  carve(carver);
  for (Pass& pass : passes_) pass.wide ? set_up(pass, pass.box_32) : set_up(pass, pass.box_16);
  return true;
}

// The sizes are multiples of vectors, so that everything is aligned if the block is.
void GaussianStream::carve(Carver& carver) {
  const uint64_t columns = static_cast<uint64_t>(columns_), width = columns * kLanes;
  for (Pass& pass : passes_) {
    const auto take_sums = [&](auto& box) {
      using Sum = std::remove_pointer_t<decltype(box.sums)>;
      // Empty lanes before the first sums, too.
      box.sums_size = ptrdiff_t{columns_} * kSumsStep + kLanes;
      box.sums = carver.take<Sum>(static_cast<uint64_t>(channels_ * box.sums_size));
      box.starts = carver.take<uint32_t[kLanes]>(static_cast<uint64_t>(channels_));
    };
    pass.wide ? take_sums(pass.box_32) : take_sums(pass.box_16);
    pass.multipliers = carver.take<uint32_t[kLanes]>(columns);
    pass.reciprocals = carver.take<uint32_t>(width + kLanes);  // by length
  }
  for (Pass& pass : passes_)
    pass.ring = carver.take<uint8_t>(static_cast<uint64_t>(pass.ring_rows) * row_size_);
  no_row_ = carver.take<uint8_t>(row_size_);
  lanes_ = carver.take<uint8_t>(row_size_);
  line_ = carver.take<uint8_t>(row_size_);
}

template <class Sum>
void GaussianStream::set_up(Pass& pass, BoxRow<Sum>& box) const {
  box.channels = channels_;
  box.columns = columns_;
  box.multipliers = pass.multipliers;
  std::fill_n(box.sums, channels_ * box.sums_size, kNoSum<Sum>);
  box.sums += kLanes;

  // From 32 stretches on there is nothing but empty lanes.
  const int64_t before = int64_t{pass.left} + 1, after = pass.right;
  box.head = static_cast<int32_t>(after % columns_);
  box.tail = static_cast<int32_t>(before % columns_);
  box.whole_after = static_cast<int32_t>(std::min<int64_t>(after / columns_, kLanes));
  box.whole_before = static_cast<int32_t>(std::min<int64_t>(before / columns_, kLanes));

  // Where a window is clipped in some stretch, and at the first column after the picture, the
  // multipliers change from column to column.
  const auto multipliers_change = [&](int64_t x) {
    for (int64_t column = x; column < int64_t{columns_} * kLanes; column += columns_) {
      const bool clipped = column < pass.left || column >= int64_t{picture_.width} - pass.right;
      if (clipped && column <= picture_.width) return true;
    }
    return false;
  };
  BoxRun* run = nullptr;
  for (int32_t x = 0; x < columns_; ++x) {
    const bool next_stretch = x >= columns_ - box.head, previous_stretch = x < box.tail;
    const ptrdiff_t entering_column = x + box.head - (next_stretch ? columns_ : 0);
    const ptrdiff_t leaving_column = x - box.tail + (previous_stretch ? columns_ : 0);
    const BoxRun here = {
        1, !multipliers_change(x),
        entering_column * kSumsStep + std::min(box.whole_after + next_stretch, kLanes),
        leaving_column * kSumsStep - std::min(box.whole_before + previous_stretch, kLanes)};
    // Six runs at most: they break where the window enters another stretch, where it leaves one,
    // and at the ends of the clipped windows of either side.
    const bool goes_on = run && run->same_multipliers == here.same_multipliers &&
                         run->entering + run->count * kSumsStep == here.entering &&
                         run->leaving + run->count * kSumsStep == here.leaving;
    if (goes_on) {
      ++run->count;
    } else {
      run = run ? run + 1 : box.runs;
      *run = here;
    }
  }
}

uint8_t* GaussianStream::ring_row(const Pass& pass, int32_t y) const {
  return pass.ring + static_cast<size_t>(y % pass.ring_rows) * row_size_;
}

// The multipliers for windows of so many rows.
void GaussianStream::set_multipliers(const Pass& pass, int32_t rows) const {
  const int64_t width = picture_.width, longest = window_length(pass.left, pass.right, width);
  const int64_t shortest = std::min(longest, int64_t{std::min(pass.left, pass.right)} + 1);
  for (int64_t length = shortest; length <= longest; ++length) {
    const int64_t pixels = length * rows;
    pass.reciprocals[length] = 2 * window_reciprocal(pixels);
  }
  std::fill_n(&pass.multipliers[0][0], columns_ * ptrdiff_t{kLanes}, pass.reciprocals[longest]);

  const auto set = [&](int64_t begin, int64_t end, const auto& multiplier_of) {
    int64_t x = begin % columns_, k = begin / columns_;
    for (int64_t column = begin; column < end; ++column) {
      pass.multipliers[x][k] = multiplier_of(column);
      if (++x == columns_) x = 0, ++k;
    }
  };
  const auto of_clipped_window = [&](int64_t column) {
    const int64_t first = std::max<int64_t>(0, column - pass.left);
    const int64_t last = std::min(width - 1, column + pass.right);
    return pass.reciprocals[last - first + 1];
  };
  const int64_t left_end = std::min<int64_t>(pass.left, width);
  set(0, left_end, of_clipped_window);
  set(std::max(left_end, width - pass.right), width, of_clipped_window);
  set(width, int64_t{columns_} * kLanes, [](int64_t) { return 0u; });
}

void GaussianStream::move_window(Pass& pass, uint8_t* dst) {
  // Without dst the window has not yet reached the first row.
  const int32_t y = pass.blurred;
  const bool leaves = dst && y > pass.top;
  const bool enters = pass.entered < picture_.height;
  const uint8_t* entering = enters ? ring_row(pass, pass.entered) : no_row_;
  const uint8_t* leaving = leaves ? ring_row(pass, y - pass.top - 1) : no_row_;
  pass.entered += enters;
  if (dst && (y == 0 || enters != leaves))
    set_multipliers(pass, pass.entered - std::max(0, y - pass.top));
  pass.blurred += dst != nullptr;
  if (pass.wide)
    rows_.box_row_32(pass.box_32, entering, leaving, dst);
  else
    rows_.box_row_16(pass.box_16, entering, leaving, dst);
}

// Writes the next row of a pass in lanes; level 0 is the picture itself.
void GaussianStream::produce(int32_t level, uint8_t* dst) {
  if (level == 0) {
    const size_t bytes = static_cast<size_t>(channels_) * static_cast<size_t>(picture_.width);
    const int32_t y = passes_[0].entered;
    XRMemCpy(line_, row_of(picture_, y), bytes);
    XRMemSet(line_ + bytes, 0, row_size_ - bytes);
    const uint8_t* next = row_of(picture_, std::min(y + 1, picture_.height - 1));
    rows_.to_lanes(line_, dst, channels_, columns_, next);
    return;
  }
  Pass& pass = passes_[level - 1];
  const int64_t last_to_enter =
      std::min(int64_t{pass.blurred} + pass.bottom, int64_t{picture_.height} - 1);
  bool complete = false;
  while (!complete) {
    complete = pass.entered >= last_to_enter;
    if (pass.entered < picture_.height) produce(level - 1, ring_row(pass, pass.entered));
    move_window(pass, complete ? dst : nullptr);
  }
}

uint8_t* GaussianStream::next_row(const uint8_t* wanted) {
  produce(3, lanes_);
  rows_.from_lanes(lanes_, line_, channels_, columns_, wanted);
  return line_;
}

}  // namespace roxe
