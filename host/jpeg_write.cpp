#include <algorithm>
#include <csetjmp>
#include <cstdlib>
#include <cstring>

#include "codecs.h"
#include "errors.h"
#include "exif.h"
#include "jpeg_shared.h"

namespace host {
namespace {

constexpr int kDefaultQuality = 95;

struct Compressor {
  jpeg_compress_struct codec = {};
  JpegErrors errors;
  unsigned char* output = nullptr;
  unsigned long size = 0;
  Compressor() {
    codec.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = stop_jpeg;
    errors.base.emit_message = [](j_common_ptr, int) {};
  }
  ~Compressor() {
    jpeg_destroy_compress(&codec);
    std::free(output);
  }
};

using Kind = Metadata::SegmentKind;
using Segment = Metadata::Segment;

Bytes with_prefix(std::string_view prefix, const uint8_t* data, size_t size) {
  Bytes bytes(prefix.begin(), prefix.end());
  bytes.insert(bytes.end(), data, data + size);
  return bytes;
}

void add_block(std::vector<Segment>& segments, std::string_view prefix, const Bytes& block,
               const char* name, Notes& notes) {
  if (block.empty()) return;
  if (prefix.size() + block.size() <= kMaxSegment)
    segments.push_back({kApp1, with_prefix(prefix, block.data(), block.size())});
  else
    notes.push_back(std::string("its ") + name + " is too long for a JPEG and is left out");
}

void add_profile(std::vector<Segment>& segments, const Bytes& icc, Notes& notes) {
  const size_t step = kMaxSegment - kIccHeader;
  const size_t count = (icc.size() + step - 1) / step;
  if (count > 255)
    return notes.push_back("its colour profile is too long for a JPEG and is left out");
  for (size_t i = 0; i < count; ++i) {
    const size_t part = std::min(step, icc.size() - i * step);
    const char header[2] = {static_cast<char>(i + 1), static_cast<char>(count)};
    const std::string prefix = std::string(kIccPrefix) + std::string(header, 2);
    segments.push_back({kApp2, with_prefix(prefix, icc.data() + i * step, part)});
  }
}

// As in the file that was read, then what it did not have, in the usual order.
std::vector<Kind> order_of(const Metadata& metadata) {
  std::vector<Kind> order = metadata.segment_order;
  for (const Kind kind : {Kind::kExif, Kind::kXmp, Kind::kIcc})
    if (std::find(order.begin(), order.end(), kind) == order.end()) order.push_back(kind);
  return order;
}

std::vector<Segment> segments_of(const Metadata& metadata, bool grey, Notes& notes) {
  std::vector<Segment> segments;
  bool profile_done = !profile_fits(metadata.icc, grey, notes);
  size_t extended = 0, photoshop = 0, comments = 0, others = 0;
  for (const Kind kind : order_of(metadata)) switch (kind) {
      case Kind::kExif:
        add_block(segments, kExifPrefix, metadata.exif, "EXIF block", notes);
        break;
      case Kind::kXmp:
        add_block(segments, kXmpPrefix, metadata.xmp, "XMP packet", notes);
        break;
      case Kind::kIcc:  // one mark for each part of the profile as it was
        if (!profile_done) add_profile(segments, metadata.icc, notes);
        profile_done = true;
        break;
      case Kind::kExtendedXmp:
        if (extended < metadata.extended_xmp.size())
          segments.push_back({kApp1, metadata.extended_xmp[extended++]});
        break;
      case Kind::kPhotoshop:
        if (photoshop < metadata.photoshop.size())
          segments.push_back({kApp13, metadata.photoshop[photoshop++]});
        break;
      case Kind::kComment:
        if (comments < metadata.comments.size())
          segments.push_back({JPEG_COM, metadata.comments[comments++]});
        break;
      case Kind::kOther:
        if (others < metadata.other_segments.size())
          segments.push_back(metadata.other_segments[others++]);
    }
  note_png_chunks(metadata, "a JPEG", notes);
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

// The coding of the input, if it can be that of the output.
const JpegCoding* kept_coding(const Metadata& metadata, bool grey) {
  const auto& coding = metadata.jpeg_coding;
  return coding && (grey || coding->components.size() == 3) ? &*coding : nullptr;
}

// What libjpeg writes: whole ratios, and at most ten blocks together.
bool can_be_sampled(const JpegCoding& coding) {
  int most_horizontal = 1, most_vertical = 1, blocks = 0;
  for (const auto& component : coding.components) {
    most_horizontal = std::max(most_horizontal, component.horizontal_samples);
    most_vertical = std::max(most_vertical, component.vertical_samples);
    blocks += component.horizontal_samples * component.vertical_samples;
  }
  for (const auto& component : coding.components)
    if (most_horizontal % component.horizontal_samples != 0 ||
        most_vertical % component.vertical_samples != 0)
      return false;
  return blocks <= C_MAX_BLOCKS_IN_MCU;
}

void keep_tables(jpeg_compress_struct& codec, const JpegCoding& coding) {
  for (int i = 0; i < codec.num_components; ++i) {
    JQUANT_TBL*& table = codec.quant_tbl_ptrs[i];
    if (!table) table = jpeg_alloc_quant_table(reinterpret_cast<j_common_ptr>(&codec));
    for (size_t k = 0; k < 64; ++k)  // a step of 0 would be divided by
      table->quantval[k] =
          std::max<UINT16>(coding.components[static_cast<size_t>(i)].quantisation[k], 1);
    table->sent_table = FALSE;
    codec.comp_info[i].quant_tbl_no = i;
    // The tables of Cb and Cr are mostly one.
    if (i == 2 && std::memcmp(table->quantval, codec.quant_tbl_ptrs[1]->quantval,
                              sizeof(table->quantval)) == 0)
      codec.comp_info[i].quant_tbl_no = 1;
  }
}

void set_sampling(jpeg_compress_struct& codec, const JpegCoding* coding, Subsampling subsampling) {
  for (int i = 0; i < codec.num_components; ++i) {
    jpeg_component_info& component = codec.comp_info[i];
    component.h_samp_factor = component.v_samp_factor = 1;
    if (codec.num_components == 1) continue;
    if (subsampling == Subsampling::kDefault && coding) {
      component.h_samp_factor = coding->components[static_cast<size_t>(i)].horizontal_samples;
      component.v_samp_factor = coding->components[static_cast<size_t>(i)].vertical_samples;
    } else if (i == 0) {
      component.h_samp_factor =
          subsampling == Subsampling::k422 || subsampling == Subsampling::k420 ? 2 : 1;
      component.v_samp_factor = subsampling == Subsampling::k420 ? 2 : 1;
    }
  }
}

bool write(Compressor& compressor, const Picture& picture, const Metadata& metadata, bool grey,
           const WriteSettings& settings, const std::vector<Segment>& segments) {
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
  const JpegCoding* coding = settings.quality ? nullptr : kept_coding(metadata, grey);
  if (coding)
    keep_tables(codec, *coding);
  else
    jpeg_set_quality(&codec, settings.quality.value_or(kDefaultQuality), TRUE);
  set_sampling(codec, coding && can_be_sampled(*coding) ? coding : nullptr, settings.subsampling);
  codec.optimize_coding = TRUE;
  if (settings.progressive) jpeg_simple_progression(&codec);
  set_density(codec, metadata.density);

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

Bytes encode_jpeg(const Picture& picture, const Metadata& metadata, bool grey,
                  const WriteSettings& settings, Notes& notes) {
  if (picture.width() > JPEG_MAX_DIMENSION || picture.height() > JPEG_MAX_DIMENSION)
    throw Failure("a JPEG cannot hold " + picture.size_text() + " pixels, only 65500 a side");
  const std::vector<Segment> segments = segments_of(metadata, grey, notes);
  Compressor compressor;
  if (!write(compressor, picture, metadata, grey, settings, segments))
    throw Failure(std::string("the JPEG cannot be made (") + compressor.errors.message + ")");
  return Bytes(compressor.output, compressor.output + compressor.size);
}

}  // namespace host
