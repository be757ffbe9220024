#include "exif.h"

#include <optional>

namespace host {
namespace {

constexpr uint16_t kOrientationTag = 0x0112;
constexpr uint16_t kShortType = 3;

// Reads a TIFF structure in its own byte order; positions past the end read as nothing.
class Tiff {
 public:
  explicit Tiff(const Bytes& bytes) : bytes_(bytes) {
    big_endian_ = bytes.size() >= 2 && bytes[0] == 'M' && bytes[1] == 'M';
    const bool little_endian = bytes.size() >= 2 && bytes[0] == 'I' && bytes[1] == 'I';
    valid_ = (big_endian_ || little_endian) && number(2, 2) == 42u;
  }

  // Where the two bytes of the orientation lie.
  std::optional<size_t> orientation_position() const {
    if (!valid_) return {};
    const auto directory = number(4, 4);
    if (!directory) return {};
    const auto entries = number(*directory, 2);
    if (!entries) return {};
    for (size_t i = 0; i < *entries; ++i) {
      const size_t entry = size_t{*directory} + 2 + 12 * i;
      if (number(entry, 2) != kOrientationTag) continue;
      if (number(entry + 2, 2) != kShortType || number(entry + 4, 4) != 1u) return {};
      if (!number(entry + 8, 2)) return {};
      return entry + 8;
    }
    return {};
  }

  std::optional<uint32_t> number(size_t position, size_t count) const {
    if (position > bytes_.size() || count > bytes_.size() - position) return {};
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i)
      value = value << 8 | bytes_[position + (big_endian_ ? i : count - 1 - i)];
    return value;
  }

  bool big_endian() const { return big_endian_; }

 private:
  const Bytes& bytes_;
  bool big_endian_ = false, valid_ = false;
};

}  // namespace

int exif_orientation(const Bytes& exif) {
  const Tiff tiff(exif);
  const auto position = tiff.orientation_position();
  if (!position) return 1;
  const uint32_t value = *tiff.number(*position, 2);
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void reset_exif_orientation(Bytes& exif) {
  const Tiff tiff(exif);
  const auto position = tiff.orientation_position();
  if (!position) return;
  exif[*position] = tiff.big_endian() ? 0 : 1;
  exif[*position + 1] = tiff.big_endian() ? 1 : 0;
}

}  // namespace host
