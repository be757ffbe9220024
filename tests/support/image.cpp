#include "support/image.h"

#include <cstring>
#include <ostream>

Image::Image(uint32_t format, int32_t width, int32_t height, int32_t row_bytes)
    : channels_(format == kRoxeFormatGray8 ? 1 : 3),
      width_(width),
      height_(height),
      row_bytes_(row_bytes != 0 ? row_bytes : channels_ * width) {
  const size_t size = static_cast<size_t>(height - 1) * static_cast<size_t>(row_bytes_) +
                      static_cast<size_t>(channels_ * width);
  memory_ = std::make_shared<GuardedMemory>(size);
  for (size_t i = 0; i < size; ++i) bytes()[i] = static_cast<uint8_t>(i * 151 + (i >> 8) * 7 + 93);
  record = PixelArray{format, width, height, row_bytes_, bytes()};
}

Image::Image(const Image& other)
    : Image(other.record.format, other.width_, other.height_, other.row_bytes_) {
  std::memcpy(bytes(), other.bytes(), size());
}

uint8_t* Image::pixel(int32_t x, int32_t y) {
  return bytes() + static_cast<ptrdiff_t>(y) * row_bytes_ + static_cast<ptrdiff_t>(x) * channels_;
}
const uint8_t* Image::pixel(int32_t x, int32_t y) const {
  return const_cast<Image*>(this)->pixel(x, y);
}

std::vector<uint8_t> Image::pixels() const {
  std::vector<uint8_t> all;
  for (int32_t y = 0; y < height_; ++y)
    all.insert(all.end(), pixel(0, y), pixel(0, y) + channels_ * width_);
  return all;
}

void Image::fill(uint8_t value) {
  for (int32_t y = 0; y < height_; ++y)
    std::memset(pixel(0, y), value, static_cast<size_t>(channels_ * width_));
}

void Image::randomise(std::mt19937& random) {
  for (int32_t y = 0; y < height_; ++y)
    for (int32_t i = 0; i < channels_ * width_; ++i)
      pixel(0, y)[i] = static_cast<uint8_t>(random() >> 24);
}

bool Image::operator==(const Image& other) const {
  return channels_ == other.channels_ && width_ == other.width_ && height_ == other.height_ &&
         row_bytes_ == other.row_bytes_ && std::memcmp(bytes(), other.bytes(), size()) == 0;
}

Image Bgr(const std::vector<std::vector<Pixel>>& rows) {
  Image image(kRoxeFormatRGB24, static_cast<int32_t>(rows[0].size()),
              static_cast<int32_t>(rows.size()));
  for (size_t y = 0; y < rows.size(); ++y)
    std::memcpy(image.pixel(0, static_cast<int32_t>(y)), rows[y].data(), 3 * rows[y].size());
  return image;
}

Image Gray(const std::vector<std::vector<uint8_t>>& rows) {
  Image image(kRoxeFormatGray8, static_cast<int32_t>(rows[0].size()),
              static_cast<int32_t>(rows.size()));
  for (size_t y = 0; y < rows.size(); ++y)
    std::memcpy(image.pixel(0, static_cast<int32_t>(y)), rows[y].data(), rows[y].size());
  return image;
}

Image RandomImage(std::mt19937& random, uint32_t format, int32_t largest) {
  const auto below = [&](int32_t n) {
    return static_cast<int32_t>(random() % static_cast<uint32_t>(n));
  };
  const int32_t width = 1 + below(largest), height = 1 + below(largest);
  const int32_t packed = format == kRoxeFormatGray8 ? width : 3 * width;
  Image image(format, width, height, packed + (below(2) ? below(70) : 0));
  image.randomise(random);
  return image;
}

void PrintTo(const Image& image, std::ostream* out) {
  const PixelArray& r = image.record;
  *out << r.width << " x " << r.height << ", format " << r.format << ", rowBytes " << r.rowBytes;
  if (image.size() > 300) return;
  *out << ":";
  for (size_t i = 0; i < image.size(); ++i) *out << ' ' << int{image.bytes()[i]};
}
