#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "drawing.h"
#include "errors.h"
#include "operation.h"
#include "option_table.h"

namespace host {
namespace {

// The brightness of a picture, a byte a pixel; weights 77, 150 and 29 of 256 for red, green, blue.
Bytes brightness(const Picture& picture) {
  Bytes grey;
  grey.reserve(static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.height()));
  for (int32_t y = 0; y < picture.height(); ++y) {
    const uint8_t* pixel = picture.row(y);
    for (int32_t x = 0; x < picture.width(); ++x, pixel += 3)
      grey.push_back(
          static_cast<uint8_t>((29 * pixel[0] + 150 * pixel[1] + 77 * pixel[2] + 128) >> 8));
  }
  return grey;
}

// Rows become columns.
Bytes transposed(const Bytes& grey, int32_t width) {
  const size_t columns = static_cast<size_t>(width), rows = grey.size() / columns;
  Bytes turned;
  turned.reserve(grey.size());
  for (size_t x = 0; x < columns; ++x)
    for (size_t y = 0; y < rows; ++y) turned.push_back(grey[y * columns + x]);
  return turned;
}

// What the library takes for a blur of so many channels, as roxe.h states it.
size_t blur_bytes(Size size, size_t channels, int32_t radius) {
  if (radius <= 1) return 0;
  const size_t row = channels * ((static_cast<size_t>(size.width) + 31) / 32 * 32);
  size_t bytes = 447 + 576 * channels + 24 * row / channels + 15 * row;
  for (const int32_t window : {radius, radius, radius | 1}) {
    bytes += row * static_cast<size_t>(std::min(window + 1, size.height));
    if (window > 257) bytes += 64 * channels + 4 * row;
  }
  return bytes;
}

// The library does not say so where it cannot have this, and gives something else than the blur.
// Volatile, or the compiler would leave out both calls.
void require_memory(size_t bytes) {
  void* volatile block = std::malloc(bytes);
  if (!block && bytes > 0) throw std::bad_alloc();
  std::free(block);
}

class SoftFocus : public Operation {
 public:
  void add_options(Options& options) override {
    options
        .whole_number("--radius", radius_, 1, 100000,
                      "length of the window that is averaged, in pixels, and not half of it")
        .required = true;
    options
        .picture("--mask", mask_path_,
                 "a picture of the same size: white stays sharp, black is blurred")
        .otherwise = "no mask, everything is blurred";
    options
        .whole_number("--mask-radius", mask_radius_, 1, 100000,
                      "the same for the mask, whose edges become soft")
        .needs = "--mask";
  }

  void check(const LoadPicture& load) override {
    if (mask_path_.empty()) return;
    const NamedPicture mask = load(mask_path_);
    mask_name_ = mask.name;
    mask_width_ = mask.picture.width();
    mask_height_ = mask.picture.height();
    mask_ = brightness(mask.picture);
  }

  std::string mask_file() const override { return mask_name_; }

  Outcome apply(Picture& picture, Colour background) const override {
    if (!mask_.empty() && (mask_width_ != picture.width() || mask_height_ != picture.height()))
      throw Failure("the mask " + mask_name_ + " has " + size_text(mask_width_, mask_height_) +
                    " pixels but the picture has " + picture.size_text());
    // Down and across the blur is the same, but the shortest row takes the library 1 µs.
    constexpr int32_t kFewColumns = 8;
    if (picture.width() < kFewColumns && picture.width() < picture.height()) {
      constexpr int kTransposed = 5;  // of the orientations of EXIF
      make_upright(picture, kTransposed);
      const bool changed =
          blur(picture, mask_.empty() ? Bytes() : transposed(mask_, mask_width_), background);
      make_upright(picture, kTransposed);
      return outcome(changed);
    }
    return outcome(blur(picture, mask_, background));
  }

 private:
  bool blur(Picture& picture, const Bytes& grey, Colour background) const {
    const PixelArray mask = {kRoxeFormatGray8, picture.width(), picture.height(), picture.width(),
                             const_cast<uint8_t*>(grey.data())};
    // In place the mask would have no effect.
    return draw_into(
        picture, size_of(picture), background, [&](const PixelArray* from, PixelArray* to) {
          require_memory(blur_bytes(size_of(picture), 3, radius_) +
                         (grey.empty() ? 0 : blur_bytes(size_of(picture), 1, mask_radius_)));
          return roxeSoftFocus(from, to, grey.empty() ? nullptr : &mask, radius_, mask_radius_);
        });
  }

  Outcome outcome(bool changed) const {
    return {mask_.empty() ? "soft focus" : "soft focus where the mask is dark", changed};
  }

  int32_t radius_ = 1, mask_radius_ = 1;
  std::string mask_path_, mask_name_;
  Bytes mask_;
  int32_t mask_width_ = 0, mask_height_ = 0;
};

}  // namespace

std::vector<OperationEntry> blur_operations() {
  return {{"soft-focus",
           "Blur a picture, except where a mask keeps it sharp; white loses a few levels",
           make_operation<SoftFocus>}};
}

}  // namespace host
