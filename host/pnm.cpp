#include <algorithm>
#include <string>

#include "codecs.h"
#include "errors.h"

namespace host {
namespace {

bool is_space(uint8_t byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

// Walks through a portable pixmap: numbers between white space and comments, then bytes.
class Scanner {
 public:
  explicit Scanner(const Bytes& file) : file_(file) {}

  int32_t number() {
    skip_space_and_comments();
    if (position_ >= file_.size()) throw Failure("the file ends early");
    int64_t value = -1;
    while (position_ < file_.size() && file_[position_] >= '0' && file_[position_] <= '9') {
      value = std::max<int64_t>(value, 0) * 10 + (file_[position_++] - '0');
      if (value > INT32_MAX) throw Failure("its header holds a number that is too large");
    }
    if (value < 0) throw Failure("a number is missing where one is expected");
    return static_cast<int32_t>(value);
  }

  // One white space ends the header.
  void end_header() {
    if (position_ >= file_.size()) throw Failure("the file ends early");
    if (!is_space(file_[position_])) throw Failure("its header is damaged");
    ++position_;
  }

  // A binary sample of one or two bytes.
  int32_t sample(bool wide) {
    int32_t value = file_[position_++];
    if (wide) value = value << 8 | file_[position_++];
    return value;
  }

  size_t left() const { return file_.size() - position_; }
  void skip(size_t count) { position_ += count; }

 private:
  void skip_space_and_comments() {
    while (position_ < file_.size() && (is_space(file_[position_]) || file_[position_] == '#')) {
      if (file_[position_] == '#')
        while (position_ < file_.size() && file_[position_] != '\n') ++position_;
      else
        ++position_;
    }
  }

  const Bytes& file_;
  size_t position_ = 0;
};

}  // namespace

Decoded decode_pnm(const Bytes& file, Notes& notes) {
  const char kind = static_cast<char>(file[1]);  // 2, 3: numbers in text; 5, 6: bytes
  const bool grey = kind == '2' || kind == '5', text = kind == '2' || kind == '3';
  Scanner scanner(file);
  scanner.skip(2);
  const int32_t width = scanner.number(), height = scanner.number(), most = scanner.number();
  if (most < 1 || most > 65535) throw Failure("its largest value is not between 1 and 65535");
  scanner.end_header();
  Picture picture(width, height);
  picture.one_channel = grey;
  const bool wide = most > 255;
  if (wide) notes.push_back("its 16 bits a channel are rounded to 8");

  const int64_t samples = int64_t{width} * height * (grey ? 1 : 3);
  const int64_t bytes_at_least = text ? 2 * samples - 1 : samples * (wide ? 2 : 1);
  if (static_cast<int64_t>(scanner.left()) < bytes_at_least) throw Failure("the file ends early");
  const auto next = [&] {
    const int32_t value = text ? scanner.number() : scanner.sample(wide);
    if (value > most) throw Failure("a sample is above the largest value of its header");
    return static_cast<uint8_t>(most == 255 ? value : (value * 255 + most / 2) / most);
  };
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* pixel = picture.row(y);
    for (int32_t x = 0; x < width; ++x, pixel += 3) {
      pixel[2] = next();
      pixel[1] = grey ? pixel[2] : next();
      pixel[0] = grey ? pixel[2] : next();
    }
  }
  const std::string description =
      std::string(grey ? "PGM, grey, " : "PPM, colour, ") + (wide ? "16 bits" : "8 bits");
  return {std::move(picture), FileFormat::kPnm, description};
}

Bytes encode_pnm(const Picture& picture, const Metadata& metadata, const WriteSettings& settings,
                 Notes& notes) {
  if (settings.pgm && !picture.is_grey())
    throw Failure("a .pgm file holds grey only and the picture has colours; write a .ppm instead");
  if (!metadata.exif.empty() || !metadata.xmp.empty() || !metadata.icc.empty() ||
      !metadata.photoshop.empty() || !metadata.comments.empty() ||
      !metadata.other_segments.empty() || !metadata.chunks.empty())
    notes.push_back("its EXIF, XMP, IPTC, texts and colour profile have no place in this format");
  const std::string header = std::string(settings.pgm ? "P5\n" : "P6\n") +
                             std::to_string(picture.width()) + " " +
                             std::to_string(picture.height()) + "\n255\n";
  Bytes file(header.begin(), header.end());
  file.reserve(file.size() +
               static_cast<size_t>(picture.row_bytes()) * static_cast<size_t>(picture.height()));
  for (int32_t y = 0; y < picture.height(); ++y) {
    const uint8_t* pixel = picture.row(y);
    for (int32_t x = 0; x < picture.width(); ++x, pixel += 3)
      if (settings.pgm)
        file.push_back(pixel[0]);
      else
        file.insert(file.end(), {pixel[2], pixel[1], pixel[0]});
  }
  return file;
}

}  // namespace host
