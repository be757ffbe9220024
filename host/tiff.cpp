#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

#include <tiffio.h>

#include "codecs.h"
#include "errors.h"
#include "exif.h"

namespace host {
namespace {

// What libtiff sees of the file in memory, and what it says about it.
struct Source {
  const Bytes& file;
  uint64_t position = 0;
  char message[256] = "the file is damaged";
};

Source& source_of(thandle_t handle) { return *static_cast<Source*>(handle); }

tmsize_t read_bytes(thandle_t handle, void* to, tmsize_t count) {
  Source& source = source_of(handle);
  const uint64_t size = source.file.size();
  const uint64_t left = size - std::min(source.position, size);
  const auto part = static_cast<size_t>(std::min(static_cast<uint64_t>(count), left));
  if (part > 0) std::memcpy(to, source.file.data() + source.position, part);
  source.position += part;
  return static_cast<tmsize_t>(part);
}

toff_t seek(thandle_t handle, toff_t offset, int from) {
  Source& source = source_of(handle);
  const uint64_t base = from == SEEK_CUR   ? source.position
                        : from == SEEK_END ? source.file.size()
                                           : 0;
  return source.position = base + offset;
}

int keep_message(TIFF*, void* to, const char*, const char* format, va_list arguments) {
  std::vsnprintf(static_cast<Source*>(to)->message, sizeof(Source::message), format, arguments);
  return 1;
}

using Handle = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

Handle open(Source& source) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, tmsize_t{2} << 30);
  TIFFOpenOptionsSetErrorHandlerExtR(options, keep_message, &source);
  TIFFOpenOptionsSetWarningHandlerExtR(
      options, [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, nullptr);
  const auto no_bytes = [](thandle_t, void*, tmsize_t) { return tmsize_t{0}; };
  const auto size = [](thandle_t handle) { return toff_t{source_of(handle).file.size()}; };
  TIFF* tiff = TIFFClientOpenExt(
      "", "rm", &source, read_bytes, no_bytes, seek, [](thandle_t) { return 0; }, size,
      [](thandle_t, void**, toff_t*) { return 0; }, [](thandle_t, void*, toff_t) {}, options);
  TIFFOpenOptionsFree(options);
  return {tiff, TIFFClose};
}

template <typename T>
T field(TIFF* tiff, uint32_t tag, T otherwise) {
  T value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : otherwise;
}

// The raw files of cameras are built like a TIFF that holds a small picture.
bool is_raw(TIFF* tiff, const Bytes& file) {
  if (field<uint32_t>(tiff, TIFFTAG_SUBFILETYPE, 0) & FILETYPE_REDUCEDIMAGE) return true;
  const uint8_t* version = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_DNGVERSION, &version) == 1) return true;
  return file.size() > 10 && file[8] == 'C' && file[9] == 'R';
}

Bytes block(TIFF* tiff, uint32_t tag) {
  uint32_t count = 0;
  const uint8_t* bytes = nullptr;
  if (TIFFGetField(tiff, tag, &count, &bytes) != 1 || !bytes) return {};
  return Bytes(bytes, bytes + count);
}

Metadata metadata_of(TIFF* tiff, Notes& notes) {
  Metadata metadata;
  metadata.icc = block(tiff, TIFFTAG_ICCPROFILE);
  metadata.xmp = block(tiff, TIFFTAG_XMLPACKET);
  std::vector<std::pair<uint16_t, std::string>> texts;
  constexpr uint16_t kTexts[] = {TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_MAKE,   TIFFTAG_MODEL,
                                 TIFFTAG_DATETIME,         TIFFTAG_ARTIST, TIFFTAG_COPYRIGHT};
  for (const uint16_t tag : kTexts) {
    const char* text = nullptr;
    if (TIFFGetField(tiff, tag, &text) == 1 && text) texts.emplace_back(tag, text);
  }
  const auto orientation = field<uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  if (!texts.empty() || orientation != ORIENTATION_TOPLEFT)
    metadata.exif = make_exif(orientation, texts);

  const auto unit = field<uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  const auto x = field<float>(tiff, TIFFTAG_XRESOLUTION, 0);
  const auto y = field<float>(tiff, TIFFTAG_YRESOLUTION, 0);
  const float most = 1e6;
  if (x >= 1 && y >= 1 && x <= most && y <= most) {
    const bool centimetre = unit == RESUNIT_CENTIMETER;
    const float times = centimetre ? 100 : 1;
    metadata.density = {centimetre             ? Density::Unit::kMetre
                        : unit == RESUNIT_INCH ? Density::Unit::kInch
                                               : Density::Unit::kRatio,
                        static_cast<uint32_t>(x * times + 0.5f),
                        static_cast<uint32_t>(y * times + 0.5f)};
  }
  toff_t directory = 0;
  if (TIFFGetField(tiff, TIFFTAG_EXIFIFD, &directory) == 1 ||
      TIFFGetField(tiff, TIFFTAG_GPSIFD, &directory) == 1)
    notes.push_back("its EXIF beyond camera, date, author and description is left out");
  if (!block(tiff, TIFFTAG_PHOTOSHOP).empty() || !block(tiff, TIFFTAG_RICHTIFFIPTC).empty())
    notes.push_back("its IPTC block is left out");
  if (!TIFFLastDirectory(tiff)) notes.push_back("its further pages are left out");
  return metadata;
}

// The usual lossless packings make of a byte no more than 1400.
bool may_hold_its_pixels(TIFF* tiff, uint64_t file_bytes, uint64_t pixel_bytes) {
  constexpr int kBounded[] = {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_PACKBITS,
                              COMPRESSION_DEFLATE, COMPRESSION_ADOBE_DEFLATE};
  const int packing = field<uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  if (std::ranges::find(kBounded, packing) == std::end(kBounded)) return true;
  const uint32_t parts = TIFFIsTiled(tiff) ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  uint64_t packed = 0;
  for (uint32_t i = 0; i < parts && packed < pixel_bytes / 1400; ++i)
    packed += std::min<uint64_t>(TIFFGetStrileByteCount(tiff, i), file_bytes);
  return packed >= pixel_bytes / 1400;
}

struct Image {
  TIFFRGBAImage view = {};
  bool open = false;
  ~Image() {
    if (open) TIFFRGBAImageEnd(&view);
  }
};

// libtiff's pixels are premultiplied by their opacity.
void copy_row(const uint32_t* from, Colour background, uint8_t* to, int32_t width) {
  for (int32_t x = 0; x < width; ++x, to += 3) {
    const uint32_t pixel = from[x], hidden = 255 - TIFFGetA(pixel);
    const auto over = [&](uint32_t value, uint32_t behind) {
      return static_cast<uint8_t>(std::min(value + (behind * hidden + 127) / 255, 255u));
    };
    to[0] = over(TIFFGetB(pixel), background.blue);
    to[1] = over(TIFFGetG(pixel), background.green);
    to[2] = over(TIFFGetR(pixel), background.red);
  }
}

}  // namespace

std::string tiff_library() {
  const std::string text = TIFFGetVersion();  // "LIBTIFF, Version 4.5.0", then a copyright
  const size_t number = text.find_first_of("0123456789");
  return "libtiff " + text.substr(number, text.find('\n') - number);
}

Decoded decode_tiff(const Bytes& file, const ReadSettings& settings, Notes& notes) {
  Source source{file};
  const auto refusal = [&] {
    return Failure(std::string("the TIFF is damaged, incomplete or of a rare kind (") +
                   source.message + ")");
  };
  const Handle tiff = open(source);
  if (!tiff) throw refusal();
  if (is_raw(tiff.get(), file)) throw Failure("is a raw picture; develop it first");
  const auto depth = field<uint16_t>(tiff.get(), TIFFTAG_BITSPERSAMPLE, 1);
  const auto channels = field<uint16_t>(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 1);
  const auto kind = field<uint16_t>(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  const bool is_lab = kind == PHOTOMETRIC_CIELAB;  // whose white libtiff would turn yellow
  if (is_lab || kind == PHOTOMETRIC_SEPARATED)
    throw Failure(std::string(is_lab ? "a CIELab" : "a CMYK") +
                  " TIFF cannot be edited without colour management; convert it to RGB first");
  const auto width = field<uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH, 0);
  const auto height = field<uint32_t>(tiff.get(), TIFFTAG_IMAGELENGTH, 0);
  if (width > INT32_MAX || height > INT32_MAX) throw Failure("its sides are too long");

  Image image;
  if (!TIFFRGBAImageBegin(&image.view, tiff.get(), 1, source.message)) throw refusal();
  image.open = true;
  image.view.req_orientation = image.view.orientation;  // as stored
  Picture picture(static_cast<int32_t>(width), static_cast<int32_t>(height));
  if (!may_hold_its_pixels(tiff.get(), file.size(), uint64_t{width} * height * depth / 8))
    throw Failure("the TIFF is damaged, incomplete or of a rare kind (the file ends early)");
  picture.metadata = metadata_of(tiff.get(), notes);
  picture.one_channel =
      channels == 1 && (kind == PHOTOMETRIC_MINISBLACK || kind == PHOTOMETRIC_MINISWHITE);

  // Whole strips or rows of tiles: libtiff unpacks nothing twice.
  const uint32_t unit = TIFFIsTiled(tiff.get())
                            ? field<uint32_t>(tiff.get(), TIFFTAG_TILELENGTH, 1)
                            : field<uint32_t>(tiff.get(), TIFFTAG_ROWSPERSTRIP, height);
  const uint32_t rows = std::clamp(unit, 1u, height);
  const auto pixels = std::make_unique<uint32_t[]>(size_t{width} * rows);
  for (uint32_t top = 0; top < height; top += rows) {
    const uint32_t count = std::min(rows, height - top);
    image.view.row_offset = static_cast<int>(top);
    image.view.col_offset = 0;
    if (!TIFFRGBAImageGet(&image.view, pixels.get(), width, count)) throw refusal();
    for (uint32_t y = 0; y < count; ++y)
      copy_row(pixels.get() + size_t{width} * y, settings.background,
               picture.row(static_cast<int32_t>(top + y)), picture.width());
  }
  if (image.view.alpha != 0)
    notes.push_back("its transparency is replaced by the background colour");
  if (depth == 16) notes.push_back("its 16 bits a channel are rounded to 8");
  std::string description = std::string(picture.one_channel ? "TIFF, grey, " : "TIFF, colour, ") +
                            std::to_string(depth) + (depth == 1 ? " bit" : " bits");
  return {std::move(picture), FileFormat::kTiff, std::move(description)};
}

}  // namespace host
