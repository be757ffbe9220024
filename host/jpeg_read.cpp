#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "jpeg_shared.h"
// after it, as it needs <cstdio> and jpeglib.h
#include <jerror.h>

#include "cmyk.h"
#include "codecs.h"
#include "errors.h"
#include "exif.h"

namespace host {
namespace {

constexpr std::string_view kJfifPrefix{"JFIF\0", 5};
constexpr size_t kJfifBytes = 14;  // without a thumbnail
constexpr std::string_view kJfxxPrefix{"JFXX\0", 5};
constexpr std::string_view kMpfPrefix{"MPF\0", 4};
constexpr std::string_view kAdobePrefix{"Adobe", 5};

struct ReadErrors {
  JpegErrors shared;
  bool tolerant = false;  // go on after damage
  bool damaged = false;   // and this is where it was met
  JDIMENSION damaged_row = 0;
  char damage[JMSG_LENGTH_MAX] = "";
};

// Damaged picture data is only a warning to libjpeg, which then invents grey pixels. Here it is an
// error unless asked for; the warnings let through concern harmless oddities of cameras and
// editors.
void judge_warning(j_common_ptr codec, int level) {
  if (level >= 0) return;
  switch (codec->err->msg_code) {
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_ADOBE_XFORM:
    case JWRN_JFIF_MAJOR:
      return;
    default:
      break;
  }
  auto* errors = reinterpret_cast<ReadErrors*>(codec->err);
  if (!errors->tolerant) stop_jpeg(codec);
  if (errors->damaged) return;
  errors->damaged = true;
  errors->damaged_row = reinterpret_cast<j_decompress_ptr>(codec)->output_scanline;
  codec->err->format_message(codec, errors->damage);
}

// Photographs have about ten scans. A small file with hundreds of empty ones would take minutes.
void refuse_many_scans(j_common_ptr codec) {
  constexpr int64_t kMostScans = 500, kMostWork = 5'000'000'000;  // the latter in pixels
  auto* decompressor = reinterpret_cast<j_decompress_ptr>(codec);
  const int64_t pixels = int64_t{decompressor->image_width} * decompressor->image_height;
  const int64_t most = std::min(kMostScans, kMostWork / pixels);
  if (decompressor->input_scan_number <= most) return;
  auto* errors = reinterpret_cast<JpegErrors*>(codec->err);
  std::snprintf(errors->message, sizeof(errors->message), "more than %d scans",
                static_cast<int>(most));
  std::longjmp(errors->jump, 1);
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

// Sorts one segment. What cannot travel gets a note.
void read_segment(const jpeg_marker_struct& marker, Metadata& metadata, Notes& notes) {
  using Kind = Metadata::SegmentKind;
  const auto keep = [&](Kind kind) { metadata.segment_order.push_back(kind); };
  const bool app1 = marker.marker == kApp1;
  if (app1 && starts_with(marker, kExifPrefix)) {
    if (!metadata.exif.empty()) return notes.push_back("its second EXIF block is left out");
    metadata.exif = payload(marker, kExifPrefix.size());
    keep(Kind::kExif);
  } else if (app1 && starts_with(marker, kXmpPrefix)) {
    if (!metadata.xmp.empty()) return notes.push_back("its second XMP packet is left out");
    metadata.xmp = payload(marker, kXmpPrefix.size());
    keep(Kind::kXmp);
  } else if (app1 && starts_with(marker, kExtendedXmpPrefix)) {
    metadata.extended_xmp.push_back(payload(marker, 0));
    keep(Kind::kExtendedXmp);
  } else if (marker.marker == kApp2 && starts_with(marker, kIccPrefix)) {
    keep(Kind::kIcc);
  } else if (marker.marker == kApp2 && starts_with(marker, kMpfPrefix)) {
    notes.push_back("its further pictures (MPF) are left out");
  } else if (marker.marker == kApp13 && starts_with(marker, kPhotoshopPrefix)) {
    metadata.photoshop.push_back(payload(marker, 0));
    keep(Kind::kPhotoshop);
  } else if (marker.marker == JPEG_COM) {
    metadata.comments.push_back(payload(marker, 0));
    keep(Kind::kComment);
  } else if (marker.marker == JPEG_APP0 && starts_with(marker, kJfifPrefix)) {
    if (marker.data_length > kJfifBytes)
      notes.push_back("its JFIF thumbnail, of the picture as it was, is left out");
  } else if (marker.marker == JPEG_APP0 && starts_with(marker, kJfxxPrefix)) {
    notes.push_back("its JFXX thumbnail, of the picture as it was, is left out");
  } else if (marker.marker == JPEG_APP0 + 14 && starts_with(marker, kAdobePrefix)) {
    return;  // says how this file codes colours
  } else {
    metadata.other_segments.push_back({marker.marker, payload(marker, 0)});
    keep(Kind::kOther);
  }
}

void read_metadata(const jpeg_decompress_struct& codec, Metadata& metadata, Notes& notes) {
  for (const auto* marker = codec.marker_list; marker; marker = marker->next)
    read_segment(*marker, metadata, notes);
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

std::unique_ptr<CmykToSrgb> cmyk_converter(const jpeg_decompress_struct& codec) {
  Metadata metadata;
  Notes later;
  read_icc(codec.marker_list, metadata, later);
  return make_cmyk_to_srgb(metadata.icc, codec.saw_Adobe_marker);
}

// Tables and samples, for a result that is compressed the same way.
std::optional<JpegCoding> coding_of(const jpeg_decompress_struct& codec) {
  if (codec.jpeg_color_space != JCS_YCbCr && codec.jpeg_color_space != JCS_GRAYSCALE) return {};
  JpegCoding coding;
  for (int i = 0; i < codec.num_components; ++i) {
    const jpeg_component_info& component = codec.comp_info[i];
    if (!component.quant_table) return {};  // the file ended before its first scan
    JpegCoding::Component& kept = coding.components.emplace_back();
    std::copy(std::begin(component.quant_table->quantval),
              std::end(component.quant_table->quantval), kept.quantisation.begin());
    kept.horizontal_samples = component.h_samp_factor;
    kept.vertical_samples = component.v_samp_factor;
  }
  return coding;
}

struct Decompressor {
  jpeg_decompress_struct codec = {};
  ReadErrors errors;
  jpeg_progress_mgr progress = {};
  explicit Decompressor(bool tolerant) {
    codec.err = jpeg_std_error(&errors.shared.base);
    errors.shared.base.error_exit = stop_jpeg;
    errors.shared.base.emit_message = judge_warning;
    errors.tolerant = tolerant;
  }
  ~Decompressor() { jpeg_destroy_decompress(&codec); }
};

// No object with a destructor lives in the functions that call setjmp: a jump would skip it.
bool read_header(Decompressor& decompressor, const uint8_t* data, size_t size) {
  jpeg_decompress_struct& codec = decompressor.codec;
  if (setjmp(decompressor.errors.shared.jump)) return false;
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, data, static_cast<unsigned long>(size));
  jpeg_save_markers(&codec, JPEG_COM, 0xFFFF);
  for (int i = 0; i < 16; ++i) jpeg_save_markers(&codec, JPEG_APP0 + i, 0xFFFF);
  jpeg_read_header(&codec, TRUE);
  return true;
}

// Four channels go through a row of their own.
bool read_pixels(Decompressor& decompressor, Picture& picture, const CmykToSrgb* cmyk,
                 uint8_t* cmyk_row) {
  jpeg_decompress_struct& codec = decompressor.codec;
  if (setjmp(decompressor.errors.shared.jump)) return false;
  decompressor.progress.progress_monitor = refuse_many_scans;
  codec.progress = &decompressor.progress;
  codec.out_color_space = cmyk ? JCS_CMYK : JCS_EXT_BGR;
  jpeg_start_decompress(&codec);
  while (codec.output_scanline < codec.output_height) {
    uint8_t* to = picture.row(static_cast<int32_t>(codec.output_scanline));
    JSAMPROW row = cmyk ? cmyk_row : to;
    jpeg_read_scanlines(&codec, &row, 1);
    if (cmyk) cmyk->convert(cmyk_row, to, picture.width());
  }
  return true;
}

// Up to the end of the file that the format knows. Gives back the memory of markers and tables.
bool read_end(Decompressor& decompressor) {
  if (setjmp(decompressor.errors.shared.jump)) return false;
  jpeg_finish_decompress(&decompressor.codec);
  return true;
}

// Every block of 8 × 8 takes a bit at least, but in the rare arithmetic coding.
bool may_hold_its_blocks(const jpeg_decompress_struct& codec, size_t file_bytes) {
  if (codec.arith_code) return true;
  uint64_t blocks = 0;
  for (int i = 0; i < codec.num_components; ++i)
    blocks += uint64_t{codec.comp_info[i].width_in_blocks} * codec.comp_info[i].height_in_blocks;
  return uint64_t{file_bytes} * 8 >= blocks;
}

// From the row where an error ended the reading.
void fill_with_grey(Picture& picture, JDIMENSION first_row) {
  for (auto y = static_cast<int32_t>(first_row); y < picture.height(); ++y)
    std::memset(picture.row(y), 128, static_cast<size_t>(picture.row_bytes()));
}

std::string damage_note(const Decompressor& decompressor) {
  const ReadErrors& errors = decompressor.errors;
  const JDIMENSION height = decompressor.codec.output_height;
  std::string note = "it is damaged";
  if (errors.damaged_row > 0 && errors.damaged_row < height)
    note += " from about row " + std::to_string(errors.damaged_row) + " of " +
            std::to_string(height) + " on";
  return note + "; what could not be read is grey or wrong (" + errors.damage + ")";
}

// Cameras fill their files up with zeros.
bool holds_data(const uint8_t* first, size_t count) {
  return std::any_of(first, first + count, [](uint8_t byte) { return byte != 0 && byte != 0xFF; });
}

}  // namespace

Decoded decode_jpeg(const Bytes& file, const ReadSettings& settings, Notes& notes) {
  Decompressor decompressor(settings.damaged);
  ReadErrors& errors = decompressor.errors;
  const auto refusal = [&](const char* reason) {
    return Failure(std::string("the JPEG is damaged, incomplete or of a rare kind (") + reason +
                   ")");
  };
  if (!read_header(decompressor, file.data(), file.size())) throw refusal(errors.shared.message);
  const jpeg_decompress_struct& codec = decompressor.codec;
  const bool is_cmyk = codec.jpeg_color_space == JCS_CMYK || codec.jpeg_color_space == JCS_YCCK;
  const std::unique_ptr<CmykToSrgb> cmyk = is_cmyk ? cmyk_converter(codec) : nullptr;
  if (is_cmyk && !cmyk && colour_library().empty())
    throw Failure("a CMYK JPEG cannot be edited, as this roxe was built without lcms2");
  if (is_cmyk && !cmyk)
    throw Failure(
        "a CMYK JPEG cannot be edited without colour management and a profile; convert it to RGB "
        "first");
  Bytes cmyk_row(cmyk ? size_t{codec.image_width} * 4 : 0);

  Picture picture(static_cast<int32_t>(codec.image_width),
                  static_cast<int32_t>(codec.image_height));
  if (!settings.damaged && !may_hold_its_blocks(codec, file.size()))
    throw refusal("the file ends early");
  picture.one_channel = codec.num_components == 1;
  if (!read_pixels(decompressor, picture, cmyk.get(), cmyk_row.data())) {
    if (!settings.damaged || codec.output_scanline == 0) throw refusal(errors.shared.message);
    errors.damaged = true;
    errors.damaged_row = codec.output_scanline;
    std::memcpy(errors.damage, errors.shared.message, sizeof(errors.damage));
    fill_with_grey(picture, codec.output_scanline);
  }
  read_metadata(codec, picture.metadata, notes);
  picture.metadata.jpeg_coding = coding_of(codec);
  if (cmyk) {
    picture.metadata.icc.clear();
    notes.push_back("its CMYK pixels are turned into sRGB through its profile");
  }
  if (!errors.damaged && !read_end(decompressor) && !settings.damaged)
    throw refusal(errors.shared.message);
  if (errors.damaged) notes.push_back(damage_note(decompressor));
  const size_t left = codec.src->bytes_in_buffer;
  if (!errors.damaged && left <= file.size() && holds_data(file.data() + file.size() - left, left))
    notes.push_back("the " + std::to_string(left) +
                    " bytes after its end, a film or further pictures, are left out");
  std::string description = picture.one_channel ? "JPEG, grey, 8 bits" : "JPEG, colour, 8 bits";
  return {std::move(picture), FileFormat::kJpeg, std::move(description)};
}

}  // namespace host
