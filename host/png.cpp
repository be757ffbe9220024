#include <algorithm>
#include <csetjmp>
#include <cstring>

#include <png.h>

#include "codecs.h"
#include "errors.h"
#include "png_chunks.h"

namespace host {
namespace {

// libpng's errors come back to the setjmp of the function that called it.
struct Progress {
  const uint8_t* data = nullptr;          // read from here ...
  const PngFile::Range* range = nullptr;  // the part of it that is read now
  const PngFile::Range* last = nullptr;
  size_t position = 0;
  Bytes* output = nullptr;  // ... or written to there
  char message[128] = "";
  bool profile_is_damaged = false;
};

[[noreturn]] void stop(png_structp png, png_const_charp message) {
  auto* progress = static_cast<Progress*>(png_get_error_ptr(png));
  std::snprintf(progress->message, sizeof(progress->message), "%s", message);
  png_longjmp(png, 1);
}

void ignore(png_structp, png_const_charp) {}

// libpng leaves a colour profile that it cannot use out with no more than a warning.
void watch_profile(png_structp png, png_const_charp message) {
  auto* progress = static_cast<Progress*>(png_get_error_ptr(png));
  if (std::strncmp(message, "iCCP:", 5) == 0) progress->profile_is_damaged = true;
}

void read_bytes(png_structp png, png_bytep to, size_t count) {
  auto* progress = static_cast<Progress*>(png_get_io_ptr(png));
  while (count > 0) {
    while (progress->position == progress->range->end) {
      if (progress->range == progress->last) png_error(png, "the file ends early");
      progress->position = (++progress->range)->begin;
    }
    const size_t part = std::min(count, progress->range->end - progress->position);
    std::memcpy(to, progress->data + progress->position, part);
    progress->position += part;
    to += part;
    count -= part;
  }
}

void write_bytes(png_structp png, png_bytep from, size_t count) {
  auto* progress = static_cast<Progress*>(png_get_io_ptr(png));
  bool stored = true;
  try {
    progress->output->insert(progress->output->end(), from, from + count);
  } catch (const std::bad_alloc&) {
    stored = false;
  }
  if (!stored) png_error(png, "out of memory");
}

void flush(png_structp) {}

struct Reader {
  Progress progress;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &progress, stop, watch_profile);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  Reader() {
    if (!info) throw std::bad_alloc();
  }
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
};

struct Writer {
  Progress progress;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &progress, stop, ignore);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  Writer() {
    if (!info) throw std::bad_alloc();
  }
  ~Writer() { png_destroy_write_struct(&png, &info); }
};

// No object with a destructor lives in the functions that call setjmp: a jump would skip it.
bool read_header(Reader& reader) {
  png_structp png = reader.png;
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_read_fn(png, &reader.progress, read_bytes);
  png_set_user_limits(png, 0x7FFFFFFF,
                      0x7FFFFFFF);  // the picture's own limit is the one that holds
  png_set_option(png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
  png_read_info(png, reader.info);
  return true;
}

bool read_pixels(Reader& reader, Colour background, Picture& picture) {
  png_structp png = reader.png;
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_expand(png);    // palette, fewer than 8 bits, transparent colour
  png_set_scale_16(png);  // rounded, not cut
  png_set_gray_to_rgb(png);
  png_color_16 behind = {};
  behind.red = background.red;
  behind.green = background.green;
  behind.blue = background.blue;
  behind.gray = background.green;
  png_set_background(png, &behind, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
  png_set_bgr(png);
  const int passes = png_set_interlace_handling(png);
  png_read_update_info(png, reader.info);
  for (int pass = 0; pass < passes; ++pass)
    for (int32_t y = 0; y < picture.height(); ++y) png_read_row(png, picture.row(y), nullptr);
  png_read_end(png, nullptr);
  return true;
}

void read_colour_meaning(png_structp png, png_infop info, Metadata& metadata) {
  int intent = 0;
  if (png_get_sRGB(png, info, &intent)) metadata.srgb_intent = intent;
  png_fixed_point gamma = 0;
  if (png_get_gAMA_fixed(png, info, &gamma)) metadata.gamma = gamma;
  std::array<int32_t, 8> c = {};
  if (png_get_cHRM_fixed(png, info, &c[0], &c[1], &c[2], &c[3], &c[4], &c[5], &c[6], &c[7]))
    metadata.chromaticities = c;
}

void read_metadata(Reader& reader, Metadata& metadata) {
  png_structp png = reader.png;
  png_charp name = nullptr;
  png_bytep profile = nullptr;
  png_uint_32 size = 0;
  int compression = 0;
  if (png_get_iCCP(png, reader.info, &name, &compression, &profile, &size))
    metadata.icc.assign(profile, profile + size);
  else
    read_colour_meaning(png, reader.info, metadata);
  png_uint_32 x = 0, y = 0;
  int unit = 0;
  if (png_get_pHYs(png, reader.info, &x, &y, &unit))
    metadata.density = {
        unit == PNG_RESOLUTION_METER ? Density::Unit::kMetre : Density::Unit::kRatio, x, y};
}

void write_colour_meaning(png_structp png, png_infop info, const Metadata& metadata) {
  if (metadata.srgb_intent) png_set_sRGB(png, info, *metadata.srgb_intent);
  if (metadata.gamma) png_set_gAMA_fixed(png, info, *metadata.gamma);
  if (!metadata.chromaticities) return;
  const std::array<int32_t, 8>& c = *metadata.chromaticities;
  png_set_cHRM_fixed(png, info, c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7]);
}

std::string describe(png_byte colour_type, int depth) {
  const char* kind = colour_type == PNG_COLOR_TYPE_PALETTE ? "palette"
                     : colour_type & PNG_COLOR_MASK_COLOR  ? "colour"
                                                           : "grey";
  const char* alpha = colour_type & PNG_COLOR_MASK_ALPHA ? " with transparency" : "";
  return std::string("PNG, ") + kind + alpha + ", " + std::to_string(depth) +
         (depth == 1 ? " bit" : " bits");
}

void set_density(png_structp png, png_infop info, const Density& density) {
  switch (density.unit) {
    case Density::Unit::kNone:
      return;
    case Density::Unit::kMetre:
      png_set_pHYs(png, info, density.x, density.y, PNG_RESOLUTION_METER);
      return;
    case Density::Unit::kInch: {
      const auto a_metre = [](uint32_t an_inch) {
        return static_cast<png_uint_32>((uint64_t{an_inch} * 10000 + 127) / 254);
      };
      png_set_pHYs(png, info, a_metre(density.x), a_metre(density.y), PNG_RESOLUTION_METER);
      return;
    }
    case Density::Unit::kRatio:
      png_set_pHYs(png, info, density.x, density.y, PNG_RESOLUTION_UNKNOWN);
  }
}

using Chunk = Metadata::Chunk;

// All that libpng does not write by itself, EXIF and XMP first.
std::vector<Chunk> chunks_of(const Metadata& metadata) {
  std::vector<Chunk> chunks;
  if (!metadata.exif.empty()) chunks.push_back({"eXIf", metadata.exif, false});
  if (!metadata.xmp.empty()) chunks.push_back({"iTXt", xmp_chunk(metadata.xmp), false});
  chunks.insert(chunks.end(), metadata.chunks.begin(), metadata.chunks.end());
  return chunks;
}

void write_chunks(png_structp png, const std::vector<Chunk>& chunks, bool after_pixels) {
  for (const Chunk& chunk : chunks)
    if (chunk.after_pixels == after_pixels)
      png_write_chunk(png, reinterpret_cast<png_const_bytep>(chunk.name.c_str()),
                      chunk.bytes.data(), chunk.bytes.size());
}

bool write(Writer& writer, const Picture& picture, const Metadata& metadata, bool grey,
           bool with_profile, const std::vector<Chunk>& chunks, uint8_t* grey_row) {
  png_structp png = writer.png;
  png_infop info = writer.info;
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_write_fn(png, &writer.progress, write_bytes, flush);
  png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);
  png_set_option(png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
  // Photographs compress about as well at level 4 as at 6, in half the time.
  png_set_compression_level(png, 4);
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width()),
               static_cast<png_uint_32>(picture.height()), 8,
               grey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_benign_errors(png, 1);  // a block that libpng finds odd is left out, the picture is not
  if (with_profile)
    png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, metadata.icc.data(),
                 static_cast<png_uint_32>(metadata.icc.size()));
  else
    write_colour_meaning(png, info, metadata);
  set_density(png, info, metadata.density);
  png_write_info(png, info);
  write_chunks(png, chunks, false);
  if (!grey) png_set_bgr(png);
  for (int32_t y = 0; y < picture.height(); ++y) {
    if (!grey) {
      png_write_row(png, picture.row(y));
      continue;
    }
    for (int32_t x = 0; x < picture.width(); ++x) grey_row[x] = picture.row(y)[3 * x];
    png_write_row(png, grey_row);
  }
  write_chunks(png, chunks, true);
  png_write_end(png, nullptr);
  return true;
}

// Deflate makes of a byte no more than 1032.
bool may_hold_its_pixels(const Reader& reader, uint64_t pixel_bytes) {
  const uint64_t row_bytes = png_get_rowbytes(reader.png, reader.info);
  const uint64_t height = png_get_image_height(reader.png, reader.info);
  return row_bytes * height / 1032 <= pixel_bytes;
}

}  // namespace

Decoded decode_png(const Bytes& file, const ReadSettings& settings, Notes& notes) {
  Metadata metadata;
  const PngFile chunks = read_png_chunks(file, metadata, notes);
  Reader reader;
  reader.progress.data = file.data();
  reader.progress.range = chunks.pictorial.data();
  reader.progress.last = &chunks.pictorial.back();
  const auto refusal = [&](const char* reason) {
    return Failure(std::string("the PNG is damaged, incomplete or of a rare kind (") + reason +
                   ")");
  };
  if (!read_header(reader)) throw refusal(reader.progress.message);
  const png_byte colour_type = png_get_color_type(reader.png, reader.info);
  const int depth = png_get_bit_depth(reader.png, reader.info);
  const bool transparent = (colour_type & PNG_COLOR_MASK_ALPHA) != 0 ||
                           png_get_valid(reader.png, reader.info, PNG_INFO_tRNS) != 0;
  const auto side = [](png_uint_32 length) {  // PNG allows no more than 2^31 - 1
    return static_cast<int32_t>(length);
  };
  Picture picture(side(png_get_image_width(reader.png, reader.info)),
                  side(png_get_image_height(reader.png, reader.info)));
  picture.one_channel = colour_type == PNG_COLOR_TYPE_GRAY && !transparent;
  if (transparent) notes.push_back("its transparency is replaced by the background colour");
  if (depth == 16) notes.push_back("its 16 bits a channel are rounded to 8");

  if (!chunks.ended || !may_hold_its_pixels(reader, chunks.pixel_bytes))
    throw refusal("the file ends early");
  if (!read_pixels(reader, settings.background, picture)) throw refusal(reader.progress.message);
  picture.metadata = std::move(metadata);
  read_metadata(reader, picture.metadata);
  if (reader.progress.profile_is_damaged && picture.metadata.icc.empty())
    notes.push_back("its colour profile is damaged and is left out");
  return {std::move(picture), FileFormat::kPng, describe(colour_type, depth)};
}

Bytes encode_png(const Picture& picture, const Metadata& metadata, bool grey, Notes& notes) {
  const bool with_profile = profile_fits(metadata.icc, grey, notes);
  note_jpeg_blocks(metadata, "a PNG", notes);
  const std::vector<Chunk> chunks = chunks_of(metadata);
  Bytes output, grey_row(static_cast<size_t>(grey ? picture.width() : 0));
  Writer writer;
  writer.progress.output = &output;
  if (!write(writer, picture, metadata, grey, with_profile, chunks, grey_row.data()))
    throw Failure(std::string("the PNG cannot be made (") + writer.progress.message + ")");
  if (with_profile && !png_get_valid(writer.png, writer.info, PNG_INFO_iCCP))
    notes.push_back("its colour profile is malformed and is left out");
  return output;
}

}  // namespace host
