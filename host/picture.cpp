#include "picture.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "errors.h"

namespace host {

Picture::Picture(int32_t width, int32_t height) : width_(width), height_(height) {
  if (width < 1 || height < 1) throw Failure("a picture of " + size_text() + " pixels is empty");
  if (int64_t{width} * height > kMaxPixels)
    throw Failure("a picture of " + size_text() + " pixels is above the limit of " +
                  std::to_string(kMaxPixels / 1'000'000) + " megapixels");
  pixels_ = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(row_bytes()) *
                                                      static_cast<size_t>(height));
}

Picture::Picture(int32_t width, int32_t height, Colour colour) : Picture(width, height) {
  uint8_t* first = row(0);
  for (int32_t x = 0; x < width; ++x) {
    first[3 * x] = colour.blue;
    first[3 * x + 1] = colour.green;
    first[3 * x + 2] = colour.red;
  }
  for (int32_t y = 1; y < height; ++y) std::memcpy(row(y), first, static_cast<size_t>(row_bytes()));
}

PixelArray Picture::record() const {
  return {kRoxeFormatRGB24, width_, height_, static_cast<int32_t>(row_bytes()), pixels_.get()};
}

Colour Picture::at(int32_t x, int32_t y) const {
  const uint8_t* pixel = row(y) + 3 * x;
  return {pixel[2], pixel[1], pixel[0]};
}

bool Picture::contains(int64_t x, int64_t y) const {
  return x >= 0 && x < width_ && y >= 0 && y < height_;
}

bool Picture::is_grey() const {
  for (int32_t y = 0; y < height_; ++y) {
    const uint8_t* pixel = row(y);
    for (int32_t x = 0; x < width_; ++x, pixel += 3)
      if (pixel[0] != pixel[1] || pixel[1] != pixel[2]) return false;
  }
  return true;
}

std::string Picture::size_text() const { return host::size_text(width_, height_); }

void Picture::replace_pixels(Picture&& other) {
  width_ = other.width_;
  height_ = other.height_;
  pixels_ = std::move(other.pixels_);
}

namespace {

// The source position of an upright pixel, as a start and two steps in pixels.
struct Walk {
  int64_t start, step_x, step_y;
};

Walk walk_of(int orientation, int64_t width, int64_t height) {
  const int64_t last_column = width - 1, last_row = (height - 1) * width;
  switch (orientation) {
    case 2:
      return {last_column, -1, width};
    case 3:
      return {last_row + last_column, -1, -width};
    case 4:
      return {last_row, 1, -width};
    case 5:
      return {0, width, 1};
    case 6:
      return {last_row, -width, 1};
    case 7:
      return {last_row + last_column, -width, -1};
    case 8:
      return {last_column, width, -1};
    default:
      return {0, 1, width};
  }
}

}  // namespace

void make_upright(Picture& picture, int orientation) {
  if (orientation <= 1 || orientation > 8) return;
  const bool sideways = orientation >= 5;
  const int32_t width = sideways ? picture.height() : picture.width();
  const int32_t height = sideways ? picture.width() : picture.height();
  Picture upright(width, height);
  const Walk walk = walk_of(orientation, picture.width(), picture.height());

  // Square tiles keep both the rows read and the rows written in the cache.
  constexpr int32_t kTile = 32;
  for (int32_t top = 0; top < height; top += kTile)
    for (int32_t left = 0; left < width; left += kTile)
      for (int32_t y = top; y < std::min(top + kTile, height); ++y) {
        uint8_t* to = upright.row(y) + 3 * left;
        const uint8_t* from =
            picture.row(0) + 3 * (walk.start + y * walk.step_y + left * walk.step_x);
        for (int32_t x = left; x < std::min(left + kTile, width); ++x) {
          to[0] = from[0];
          to[1] = from[1];
          to[2] = from[2];
          to += 3;
          from += 3 * walk.step_x;
        }
      }
  picture.replace_pixels(std::move(upright));
}

std::string size_text(int64_t width, int64_t height) {
  return std::to_string(width) + " × " + std::to_string(height);
}

}  // namespace host
