// What the tool reads and changes in EXIF: a TIFF structure without a container's prefix.
//
// Changes are made in place: nothing moves, so that maker notes, which hold positions of their own,
// and tags that no one knows stay as they are.
#ifndef ROXE_HOST_EXIF_H_
#define ROXE_HOST_EXIF_H_

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "picture.h"

namespace host {

// What a JPEG writes before the structure.
constexpr std::string_view kExifPrefix{"Exif\0\0", 6};

// Removes every prefix at the start of the block. Some programs write it twice into a JPEG, or into
// another container, and readers differ in how many they skip: through a prefix that stayed, one of
// them would not find the orientation that another one applies.
void remove_exif_prefixes(Bytes& exif);

// 1 ... 8; 1 if the tag is absent or the block is malformed.
int exif_orientation(const Bytes& exif);

// Sets the tag to 1. Nothing happens if there is no such tag.
void reset_exif_orientation(Bytes& exif);

// The picture was turned onto its other side: resolutions along x and y change places.
void swap_exif_axes(Bytes& exif);

// Sets the tags that give the size of the picture, where they are.
void set_exif_size(Bytes& exif, int32_t width, int32_t height);

// Without the tags that say where in the picture its subject is.
void remove_exif_subject(Bytes& exif);

// Without its directory of positions and all that it holds.
void remove_exif_gps(Bytes& exif);

enum class ThumbnailChange { kThereWasNone, kRenewed, kRemoved };

// A JPEG of at most so many bytes and its size in pixels; empty if it cannot be that small.
struct Thumbnail {
  Bytes jpeg;
  int32_t width = 0, height = 0;
};
using MakeThumbnail = std::function<Thumbnail(size_t most_bytes)>;

// Replaces the thumbnail by a new one. The block does not grow beyond most_bytes. Where the new
// thumbnail finds no room, the old one is removed.
ThumbnailChange renew_exif_thumbnail(Bytes& exif, size_t most_bytes, const MakeThumbnail& make);

// Whether something else in the block begins like a JPEG: a preview among the maker's notes.
bool holds_another_jpeg(const Bytes& exif);

// A block of an orientation and texts by their tags.
Bytes make_exif(int orientation, const std::vector<std::pair<uint16_t, std::string>>& texts);

struct ExifTexts {
  std::string make, model, date;  // the date as YYYY:MM:DD hh:mm:ss, when the picture was taken
};
ExifTexts exif_texts(const Bytes& exif);

}  // namespace host

#endif  // ROXE_HOST_EXIF_H_
