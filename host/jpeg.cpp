#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include <jpeglib.h>
#include <jerror.h>

#include "codecs.h"
#include "errors.h"

namespace host {
namespace {

constexpr int kApp1 = JPEG_APP0 + 1, kApp2 = JPEG_APP0 + 2, kApp13 = JPEG_APP0 + 13;
constexpr size_t kMaxSegment = 65533;
constexpr std::string_view kExifPrefix{"Exif\0\0", 6};
constexpr std::string_view kXmpPrefix{"http://ns.adobe.com/xap/1.0/\0", 29};
constexpr std::string_view kExtendedXmpPrefix{"http://ns.adobe.com/xmp/extension/\0", 35};
constexpr std::string_view kPhotoshopPrefix{"Photoshop 3.0\0", 14};
constexpr std::string_view kIccPrefix{"ICC_PROFILE\0", 12};  // then number and count, a byte each
constexpr size_t kIccHeader = kIccPrefix.size() + 2;

// libjpeg's errors come back to the setjmp of the function that called it.
struct ErrorManager {
  jpeg_error_mgr base;
  std::jmp_buf jump;
  char message[JMSG_LENGTH_MAX];
};

[[noreturn]] void stop(j_common_ptr codec) {
  auto* manager = reinterpret_cast<ErrorManager*>(codec->err);
  codec->err->format_message(codec, manager->message);
  std::longjmp(manager->jump, 1);
}

// Damaged picture data is only a warning to libjpeg, which then invents grey pixels. Here it is an
// error; the warnings let through concern harmless oddities of cameras and editors.
void judge_warning(j_common_ptr codec, int level) {
  if (level >= 0) return;
  switch (codec->err->msg_code) {
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_ADOBE_XFORM:
    case JWRN_JFIF_MAJOR:
      return;
    default:
      stop(codec);
  }
}

// Photographs have about ten scans. A small file with thousands of empty ones would take hours.
void refuse_many_scans(j_common_ptr codec) {
  constexpr int kMostScans = 500;
  if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number <= kMostScans) return;
  auto* manager = reinterpret_cast<ErrorManager*>(codec->err);
  std::snprintf(manager->message, sizeof(manager->message), "more than %d scans", kMostScans);
  std::longjmp(manager->jump, 1);
}

jpeg_error_mgr* set_up(ErrorManager& manager) {
  jpeg_error_mgr* base = jpeg_std_error(&manager.base);
  base->error_exit = stop;
  base->emit_message = judge_warning;
  return base;
}

bool starts_with(const jpeg_marker_struct& marker, std::string_view prefix) {
  return marker.data_length >= prefix.size() &&
         std::memcmp(marker.data, prefix.data(), prefix.size()) == 0;
}

Bytes payload(const jpeg_marker_struct& marker, size_t skipped) {
  return Bytes(marker.data + skipped, marker.data + marker.data_length);
}

// A profile is cut into numbered segments, which may come in any order.
void read_icc(const jpeg_marker_struct* first, Metadata& metadata, Notes& notes) {
  const jpeg_marker_struct* segments[256] = {};
  unsigned count = 0;
  bool broken = false;
  for (const auto* marker = first; marker; marker = marker->next) {
    if (marker->marker != kApp2 || !starts_with(*marker, kIccPrefix)) continue;
    if (marker->data_length < kIccHeader) {
      broken = true;
      continue;
    }
    const unsigned number = marker->data[kIccPrefix.size()];
    const unsigned total = marker->data[kIccPrefix.size() + 1];
    if (count == 0) count = total;
    if (number == 0 || number > total || total != count || segments[number]) broken = true;
    segments[number] = marker;
  }
  for (unsigned i = 1; i <= count && !broken; ++i) {
    if (!segments[i]) {
      broken = true;
      break;
    }
    const Bytes part = payload(*segments[i], kIccHeader);
    metadata.icc.insert(metadata.icc.end(), part.begin(), part.end());
  }
  if (!broken) return;
  metadata.icc.clear();
  notes.push_back("its colour profile is damaged and is left out");
}

void read_metadata(const jpeg_decompress_struct& codec, Metadata& metadata, Notes& notes) {
  for (const auto* marker = codec.marker_list; marker; marker = marker->next) {
    if (marker->marker == kApp1 && starts_with(*marker, kExifPrefix) && metadata.exif.empty())
      metadata.exif = payload(*marker, kExifPrefix.size());
    else if (marker->marker == kApp1 && starts_with(*marker, kXmpPrefix) && metadata.xmp.empty())
      metadata.xmp = payload(*marker, kXmpPrefix.size());
    else if (marker->marker == kApp1 && starts_with(*marker, kExtendedXmpPrefix))
      metadata.extended_xmp.push_back(payload(*marker, 0));
    else if (marker->marker == kApp13 && starts_with(*marker, kPhotoshopPrefix))
      metadata.photoshop.push_back(payload(*marker, 0));
    else if (marker->marker == JPEG_COM)
      metadata.comments.push_back(payload(*marker, 0));
  }
  read_icc(codec.marker_list, metadata, notes);

  if (!codec.saw_JFIF_marker) return;
  using Unit = Density::Unit;
  // Centimetres become metres.
  if (codec.density_unit == 2)
    metadata.density = {Unit::kMetre, codec.X_density * 100u, codec.Y_density * 100u};
  else
    metadata.density = {codec.density_unit == 1 ? Unit::kInch : Unit::kRatio, codec.X_density,
                        codec.Y_density};
}

struct Decompressor {
  jpeg_decompress_struct codec = {};
  ErrorManager errors;
  jpeg_progress_mgr progress = {};
  Decompressor() { codec.err = set_up(errors); }
  ~Decompressor() { jpeg_destroy_decompress(&codec); }
};

// No object with a destructor lives in the functions that call setjmp: a jump would skip it.
bool read_header(Decompressor& decompressor, const uint8_t* data, size_t size) {
  jpeg_decompress_struct& codec = decompressor.codec;
  if (setjmp(decompressor.errors.jump)) return false;
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, data, static_cast<unsigned long>(size));
  for (const int marker : {kApp1, kApp2, kApp13, int{JPEG_COM}})
    jpeg_save_markers(&codec, marker, 0xFFFF);
  jpeg_read_header(&codec, TRUE);
  return true;
}

bool read_pixels(Decompressor& decompressor, Picture& picture) {
  jpeg_decompress_struct& codec = decompressor.codec;
  if (setjmp(decompressor.errors.jump)) return false;
  decompressor.progress.progress_monitor = refuse_many_scans;
  codec.progress = &decompressor.progress;
  codec.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&codec);
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW row = picture.row(static_cast<int32_t>(codec.output_scanline));
    jpeg_read_scanlines(&codec, &row, 1);
  }
  jpeg_finish_decompress(&codec);
  return true;
}

struct Compressor {
  jpeg_compress_struct codec = {};
  ErrorManager errors;
  unsigned char* output = nullptr;
  unsigned long size = 0;
  Compressor() { codec.err = set_up(errors); }
  ~Compressor() {
    jpeg_destroy_compress(&codec);
    std::free(output);
  }
};

struct Segment {
  int marker;
  Bytes bytes;
};

Bytes with_prefix(std::string_view prefix, const uint8_t* data, size_t size) {
  Bytes bytes(prefix.begin(), prefix.end());
  bytes.insert(bytes.end(), data, data + size);
  return bytes;
}

std::vector<Segment> segments_of(const Metadata& metadata, bool grey, Notes& notes) {
  std::vector<Segment> segments;
  const auto add = [&](std::string_view prefix, const Bytes& block, const char* name) {
    if (block.empty()) return;
    if (prefix.size() + block.size() <= kMaxSegment)
      segments.push_back({kApp1, with_prefix(prefix, block.data(), block.size())});
    else
      notes.push_back(std::string("its ") + name + " is too long for a JPEG and is left out");
  };
  add(kExifPrefix, metadata.exif, "EXIF block");
  add(kXmpPrefix, metadata.xmp, "XMP packet");
  for (const Bytes& bytes : metadata.extended_xmp) segments.push_back({kApp1, bytes});

  if (profile_fits(metadata.icc, grey, notes)) {
    const size_t step = kMaxSegment - kIccHeader;
    const size_t count = (metadata.icc.size() + step - 1) / step;
    for (size_t i = 0; i < count && count <= 255; ++i) {
      const size_t part = std::min(step, metadata.icc.size() - i * step);
      const char header[2] = {static_cast<char>(i + 1), static_cast<char>(count)};
      const std::string prefix = std::string(kIccPrefix) + std::string(header, 2);
      segments.push_back({kApp2, with_prefix(prefix, metadata.icc.data() + i * step, part)});
    }
    if (count > 255) notes.push_back("its colour profile is too long for a JPEG and is left out");
  }
  if (!metadata.texts.empty())
    notes.push_back("its PNG texts have no place in a JPEG and are left out");
  for (const Bytes& bytes : metadata.photoshop) segments.push_back({kApp13, bytes});
  for (const Bytes& bytes : metadata.comments) segments.push_back({JPEG_COM, bytes});
  return segments;
}

void set_density(jpeg_compress_struct& codec, const Density& density) {
  using Unit = Density::Unit;
  const bool metres = density.unit == Unit::kMetre;
  const uint32_t x = metres ? (density.x + 50) / 100 : density.x;
  const uint32_t y = metres ? (density.y + 50) / 100 : density.y;
  if (density.unit == Unit::kNone || x < 1 || y < 1 || x > 65535 || y > 65535) return;
  codec.density_unit = metres ? 2 : density.unit == Unit::kInch ? 1 : 0;
  codec.X_density = static_cast<UINT16>(x);
  codec.Y_density = static_cast<UINT16>(y);
}

bool write(Compressor& compressor, const Picture& picture, bool grey, int quality,
           const std::vector<Segment>& segments) {
  jpeg_compress_struct& codec = compressor.codec;
  if (setjmp(compressor.errors.jump)) return false;
  jpeg_create_compress(&codec);
  jpeg_mem_dest(&codec, &compressor.output, &compressor.size);
  codec.image_width = static_cast<JDIMENSION>(picture.width());
  codec.image_height = static_cast<JDIMENSION>(picture.height());
  codec.input_components = 3;
  codec.in_color_space = JCS_EXT_BGR;
  jpeg_set_defaults(&codec);
  jpeg_set_colorspace(&codec, grey ? JCS_GRAYSCALE : JCS_YCbCr);
  jpeg_set_quality(&codec, quality, TRUE);
  codec.optimize_coding = TRUE;
  for (int i = 0; i < codec.num_components; ++i)  // 4:4:4, colours keep their full resolution
    codec.comp_info[i].h_samp_factor = codec.comp_info[i].v_samp_factor = 1;
  set_density(codec, picture.metadata.density);

  jpeg_start_compress(&codec, TRUE);
  for (const Segment& segment : segments)
    jpeg_write_marker(&codec, segment.marker, segment.bytes.data(),
                      static_cast<unsigned>(segment.bytes.size()));
  while (codec.next_scanline < codec.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(picture.row(static_cast<int32_t>(codec.next_scanline)));
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  return true;
}

}  // namespace

Decoded decode_jpeg(const Bytes& file, Notes& notes) {
  Decompressor decompressor;
  const auto refusal = [&] {
    return Failure(std::string("the JPEG is damaged, incomplete or of a rare kind (") +
                   decompressor.errors.message + ")");
  };
  if (!read_header(decompressor, file.data(), file.size())) throw refusal();
  const jpeg_decompress_struct& codec = decompressor.codec;
  if (codec.jpeg_color_space == JCS_CMYK || codec.jpeg_color_space == JCS_YCCK)
    throw Failure(
        "a CMYK JPEG cannot be edited without colour management; convert it to RGB first");

  Picture picture(static_cast<int32_t>(codec.image_width),
                  static_cast<int32_t>(codec.image_height));
  read_metadata(codec, picture.metadata, notes);
  picture.one_channel = codec.num_components == 1;
  if (!read_pixels(decompressor, picture)) throw refusal();
  std::string description = picture.one_channel ? "JPEG, grey, 8 bits" : "JPEG, colour, 8 bits";
  return {std::move(picture), FileFormat::kJpeg, std::move(description)};
}

Bytes encode_jpeg(const Picture& picture, bool grey, const WriteSettings& settings, Notes& notes) {
  if (picture.width() > JPEG_MAX_DIMENSION || picture.height() > JPEG_MAX_DIMENSION)
    throw Failure("a JPEG cannot hold " + picture.size_text() + " pixels, only 65500 a side");
  const std::vector<Segment> segments = segments_of(picture.metadata, grey, notes);
  Compressor compressor;
  if (!write(compressor, picture, grey, settings.quality, segments))
    throw Failure(std::string("the JPEG cannot be made (") + compressor.errors.message + ")");
  return Bytes(compressor.output, compressor.output + compressor.size);
}

}  // namespace host
