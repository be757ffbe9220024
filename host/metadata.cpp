#include "metadata.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>
#include <utility>

#include "exif.h"
#include "photoshop.h"
#include "png_chunks.h"
#include "profile.h"
#include "thumbnail.h"
#include "xmp.h"

namespace host {
namespace {

// What a JPEG segment has room for; the thumbnail in a PNG needs no more.
constexpr size_t kMostExif = 65527;

constexpr std::string_view kColourChunks[] = {"cICP", "mDCV", "cLLI"};

// Says what the numbers of the pixels mean, so that the picture looks the same without the rest.
Metadata only_colours(const Metadata& metadata) {
  Metadata kept;
  kept.icc = metadata.icc;
  kept.density = metadata.density;
  kept.srgb_intent = metadata.srgb_intent;
  kept.gamma = metadata.gamma;
  kept.chromaticities = metadata.chromaticities;
  kept.jpeg_coding = metadata.jpeg_coding;
  kept.lossless = metadata.lossless;
  for (const Metadata::Chunk& chunk : metadata.chunks)
    if (std::find(std::begin(kColourChunks), std::end(kColourChunks), chunk.name) !=
        std::end(kColourChunks))
      kept.chunks.push_back(chunk);
  return kept;
}

// Texts may be in UTF-16, where zeros stand between the letters.
bool names_a_place(const Bytes& block) {
  Bytes letters;
  std::remove_copy(block.begin(), block.end(), std::back_inserter(letters), 0);
  for (const std::string_view word : {"GPS", "Gps", "gps"})
    if (holds(letters, word)) return true;
  for (uint8_t& c : letters) c = static_cast<uint8_t>(std::tolower(c));
  return holds(letters, "latitude") || holds(letters, "longitude");
}

// Some programs write EXIF and XMP into texts, as hexadecimal numbers. budget: bytes that texts may
// still unpack to; one that cannot be read may hold anything.
bool may_hold_places(const Metadata::Chunk& chunk, size_t& budget) {
  if (names_a_place(chunk.bytes)) return true;
  if (!chunk.name.ends_with("Xt")) return false;
  if (holds(chunk.bytes, "Raw profile type")) return true;
  const auto text = unpacked_text(chunk, budget);
  if (!text) return true;
  budget -= std::min(budget, text->size());
  return names_a_place(*text);
}

void remove_gps(Metadata& metadata, Notes& notes) {
  remove_exif_gps(metadata.exif);
  if (!remove_xmp_gps(metadata.xmp)) {
    metadata.xmp.clear();
    notes.push_back("its XMP packet holds positions that cannot be taken out, and is left out");
  }
  if (std::erase_if(metadata.extended_xmp, names_a_place) > 0)
    notes.push_back("the continuation of its XMP packet holds positions and is left out");
  const auto in_segment = [](const Metadata::Segment& s) { return names_a_place(s.bytes); };
  if (std::erase_if(metadata.other_segments, in_segment) > 0)
    notes.push_back("its segments of other programs that may hold positions are left out");
  if (remove_photoshop_copies(metadata.photoshop))
    notes.push_back("the copies of EXIF and XMP beside its IPTC block are left out");
  size_t budget = size_t{64} << 20;
  const auto in_chunk = [&](const Metadata::Chunk& c) { return may_hold_places(c, budget); };
  if (std::erase_if(metadata.comments, names_a_place) + std::erase_if(metadata.chunks, in_chunk) >
      0)
    notes.push_back("its texts that may hold positions are left out");
}

// Places in the picture as it was, before its pixels moved.
void remove_places(Metadata& metadata, Notes& notes) {
  remove_exif_subject(metadata.exif);
  const auto is_of_canvas = [](const Metadata::Chunk& chunk) {
    return chunk.name == "oFFs" || chunk.name == "caNv" || chunk.name == "vpAg";
  };
  if (std::erase_if(metadata.chunks, is_of_canvas) > 0)
    notes.push_back("its place on a canvas is left out, as the picture has moved");
  // They come with names of people, which must not be lost.
  if (holds_xmp_regions(metadata.xmp) ||
      std::any_of(metadata.extended_xmp.begin(), metadata.extended_xmp.end(), holds_xmp_regions))
    notes.push_back("in its XMP packet stay regions, of faces perhaps, of the picture as it was");
}

}  // namespace

Description describe_metadata(const Metadata& metadata) {
  ExifTexts texts = exif_texts(metadata.exif);
  return {std::move(texts.make), std::move(texts.model), std::move(texts.date),
          profile_name(metadata.icc)};
}

void reset_orientation(Metadata& metadata) {
  reset_exif_orientation(metadata.exif);
  reset_xmp_orientation(metadata.xmp);
}

void swap_axes(Metadata& metadata) {
  std::swap(metadata.density.x, metadata.density.y);
  swap_exif_axes(metadata.exif);
  swap_xmp_axes(metadata.xmp);
  if (!metadata.jpeg_coding) return;
  for (JpegCoding::Component& component : metadata.jpeg_coding->components) {
    std::swap(component.horizontal_samples, component.vertical_samples);
    for (size_t y = 0; y < 8; ++y)
      for (size_t x = 0; x < y; ++x)
        std::swap(component.quantisation[8 * y + x], component.quantisation[8 * x + y]);
  }
}

Metadata metadata_of_result(const Picture& picture, const WriteSettings& settings, Notes& notes) {
  if (settings.strip) return only_colours(picture.metadata);
  Metadata metadata = picture.metadata;
  if (settings.strip_gps) remove_gps(metadata, notes);
  if (metadata.pixels_moved) remove_places(metadata, notes);
  set_exif_size(metadata.exif, picture.width(), picture.height());
  set_xmp_size(metadata.xmp, picture.width(), picture.height());
  const MakeThumbnail make = [&](size_t most_bytes) { return make_thumbnail(picture, most_bytes); };
  if (renew_exif_thumbnail(metadata.exif, kMostExif, make) == ThumbnailChange::kRemoved)
    notes.push_back("its EXIF thumbnail, of the picture as it was, is left out");
  remove_photoshop_thumbnails(metadata.photoshop);
  if (holds_another_jpeg(metadata.exif))
    notes.push_back("among its maker's notes stays a preview of the picture as it was");
  if (holds(metadata.xmp, "xmpGImg:image"))
    notes.push_back("in its XMP packet stays a thumbnail of the picture as it was");
  return metadata;
}

}  // namespace host
