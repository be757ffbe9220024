#include "fuzz/scene.h"

#include <algorithm>
#include <cstring>

namespace fuzz {
namespace {

constexpr int32_t kRows = 24, kPadding = 8;

// Mostly a record that passes verification.
Shape shape_of(Input& input, int32_t largest) {
  const uint8_t kind = input.byte();
  Shape shape = {};
  shape.format = kind % 4 == 1 ? kRoxeFormatGray8 : kRoxeFormatRGB24;
  shape.width = 1 + input.below(largest);
  shape.height = 1 + input.below(kRows);
  shape.row_bytes = (shape.format == kRoxeFormatGray8 ? 1 : 3) * shape.width;
  shape.has_pixels = true;
  if (kind & 4) shape.row_bytes += input.below(kPadding + 1);
  switch (kind / 8) {  // what a careless host may get wrong; 7 ... 31: nothing
    case 0:
      shape.format = static_cast<uint32_t>(input.whole());
      break;
    case 1:
      shape.width = input.whole();
      break;
    case 2:
      shape.height = input.whole();
      break;
    case 3:
      shape.row_bytes = input.whole();
      break;
    case 4:  // rows that overlap, of a record that nobody examines
      shape.format = 7;
      shape.row_bytes = input.below(shape.row_bytes);
      break;
    case 5:
      shape.format = input.byte() % 2 == 0 ? 7u : shape.format;
      shape.has_pixels = false;
      break;
    case 6:
      shape.format = 7;
      shape.width = input.whole();
      break;
  }
  const size_t limit = static_cast<size_t>((3 * largest + kPadding) * kRows);
  const auto too_large = [&] {
    return std::max({shape.bytes(3), shape.bytes(1), shape.padded_bytes()}) > limit;
  };
  if (too_large()) shape.height = 1;
  if (too_large()) shape.row_bytes = 0;
  return shape;
}

// The picture shows the input's bytes over and over, or noise where there are none.
void paint(Memory& memory, const uint8_t* pattern, size_t size, uint32_t noise) {
  for (size_t i = 0; i < memory.size; ++i) {
    noise = noise * 1664525u + 1013904223u;
    memory.bytes[i] = size > 0 ? pattern[i % size] : static_cast<uint8_t>(noise >> 24);
  }
}

}  // namespace

Memory::Memory(const Memory& other) : Memory(other.size) {
  std::copy(other.bytes.get(), other.bytes.get() + size, bytes.get());
}

bool Memory::operator==(const Memory& other) const {
  return std::equal(bytes.get(), bytes.get() + size, other.bytes.get(),
                    other.bytes.get() + other.size);
}

int32_t Shape::columns(int32_t bytes_per_pixel) const {
  return has_pixels ? std::max(0, std::min(width, row_bytes / bytes_per_pixel)) : 0;
}

size_t Shape::bytes(int32_t bytes_per_pixel) const {
  const size_t row = static_cast<size_t>(columns(bytes_per_pixel) * bytes_per_pixel);
  if (row == 0 || height <= 0) return 0;
  return static_cast<size_t>(height - 1) * static_cast<size_t>(row_bytes) + row;
}

size_t Shape::padded_bytes() const {
  if (!has_pixels || row_bytes <= 0 || height <= 0) return 0;
  return static_cast<size_t>(height) * static_cast<size_t>(row_bytes);
}

Scene::Scene(Input& input, Operation operation, int32_t largest) {
  const uint8_t relation = input.byte();
  shapes_[kSource] = shape_of(input, largest);
  shapes_[kDestination] = shape_of(input, largest);
  shapes_[kMask] = shape_of(input, largest);
  if (relation & 1) {  // pictures of one size, as most operations expect them
    shapes_[kDestination] = shapes_[kMask] = shapes_[kSource];
    shapes_[kMask].format = kRoxeFormatGray8;
  }
  same_record_ = relation & 2;
  shared_ = same_record_ || relation & 4;
  if (same_record_) shapes_[kDestination] = shapes_[kSource];
  if (kContracts[operation].checks_null && relation >> 3 <= 2) missing_[relation >> 3] = true;

  // The region of auto gamma goes on into the padding of the last row.
  size_t needed[kPictures];
  needed[kSource] = operation == kAutoGamma ? shapes_[kSource].padded_bytes() : 0;
  needed[kSource] = std::max(needed[kSource], shapes_[kSource].bytes(3));
  needed[kDestination] = shapes_[kDestination].bytes(3);
  needed[kMask] = shapes_[kMask].bytes(1);
  if (shared_ && !same_record_) {  // a few bytes or rows apart
    const size_t apart = static_cast<size_t>(input.below(input.byte() % 2 == 0 ? 9 : 200));
    offsets_[input.byte() % 2 == 0 ? kSource : kDestination] = apart;
    needed[kSource] = std::max(needed[kSource] + offsets_[kSource],
                               needed[kDestination] + offsets_[kDestination]);
  }
  const auto side = [](int32_t value) { return std::max(1, std::min(value, 1000)); };
  const auto sides = [&](const Shape& shape) {
    return Sides{side(shape.width), side(shape.height)};
  };
  call_ = call_of(input, operation, sides(shapes_[kSource]), sides(shapes_[kDestination]));

  const uint32_t noise = static_cast<uint32_t>(input.whole());
  for (int picture = 0; picture < kPictures; ++picture) {
    memory_.emplace_back(needed[picture]);
    paint(memory_.back(), input.data(), input.size(), noise + static_cast<uint32_t>(picture));
  }
}

PixelArray Scene::record(Picture picture) {
  const Shape& shape = shapes_[picture];
  return {shape.format, shape.width, shape.height, shape.row_bytes,
          shape.has_pixels ? memory_of(picture).bytes.get() + offsets_[picture] : nullptr};
}

Result Scene::run(const Operations& operations) {
  PixelArray records[kPictures], *given[kPictures];
  for (const Picture picture : {kSource, kDestination, kMask}) {
    records[picture] = record(picture);
    given[picture] = missing_[picture] ? nullptr : &records[picture];
  }
  if (same_record_ && !missing_[kDestination]) given[kDestination] = given[kSource];
  const Result result =
      fuzz::run(operations, call_, given[kSource], given[kDestination], given[kMask]);
  for (const Picture picture : {kSource, kDestination, kMask}) {
    const PixelArray before = record(picture);
    expect(std::memcmp(&records[picture], &before, sizeof before) == 0, "no record changes");
  }
  return result;
}

bool Scene::same_bytes(const Scene& other) const { return memory_ == other.memory_; }

bool Scene::only_dst_differs(const Scene& before) const {
  Scene expected = before;
  const Shape& shape = shapes_[kDestination];
  const size_t row = static_cast<size_t>(shape.columns(3)) * 3;
  uint8_t* to = expected.memory_of(kDestination).bytes.get() + offsets_[kDestination];
  const uint8_t* from = memory_of(kDestination).bytes.get() + offsets_[kDestination];
  for (int32_t y = 0; row > 0 && y < shape.height; ++y) {
    const size_t at = static_cast<size_t>(y) * static_cast<size_t>(shape.row_bytes);
    std::memcpy(to + at, from + at, row);
  }
  return same_bytes(expected);
}

}  // namespace fuzz
