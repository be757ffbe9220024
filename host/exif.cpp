#include "exif.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace host {
namespace {

// Tags, each in the directory where it belongs.
constexpr uint16_t kImageWidth = 0x0100, kImageLength = 0x0101, kCompression = 0x0103;
constexpr uint16_t kMake = 0x010F, kModel = 0x0110, kOrientation = 0x0112, kDateTime = 0x0132;
constexpr uint16_t kStripOffsets = 0x0111, kStripByteCounts = 0x0117;
constexpr uint16_t kXResolution = 0x011A, kYResolution = 0x011B, kResolutionUnit = 0x0128;
constexpr uint16_t kJpegOffset = 0x0201, kJpegLength = 0x0202;
constexpr uint16_t kExifDirectory = 0x8769, kGpsDirectory = 0x8825;
constexpr uint16_t kDateTimeOriginal = 0x9003;
constexpr uint16_t kSubjectArea = 0x9214, kSubjectLocation = 0xA214;
constexpr uint16_t kPixelXDimension = 0xA002, kPixelYDimension = 0xA003;
constexpr uint16_t kInteroperabilityDirectory = 0xA005;
constexpr uint16_t kFocalPlaneXResolution = 0xA20E, kFocalPlaneYResolution = 0xA20F;

constexpr uint16_t kAscii = 2, kShort = 3, kLong = 4;
constexpr uint32_t kJpegCompression = 6;
constexpr size_t kEntryBytes = 12;

// Bytes of one value by type; 0 for a type that does not exist.
size_t bytes_of_type(uint32_t type) {
  constexpr uint8_t kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
  return type < std::size(kBytes) ? kBytes[type] : 0;
}

bool is_integer(uint16_t type) {
  return type == 1 || type == kShort || type == kLong || type == 6 || type == 8 || type == 9 ||
         type == 13;
}

struct Field {
  size_t entry;  // position of its twelve bytes
  uint16_t tag, type;
  uint32_t count;
  size_t value;  // position of the first value; all of them lie inside the block
};

using Range = std::pair<size_t, size_t>;  // first byte and the one after the last

bool overlap(const Range& a, const Range& b) { return a.first < b.second && b.first < a.second; }

// Reads a TIFF structure in its own byte order; positions past the end read as nothing.
class Tiff {
 public:
  explicit Tiff(const Bytes& bytes) : bytes_(bytes) {
    big_endian_ = bytes.size() >= 2 && bytes[0] == 'M' && bytes[1] == 'M';
    const bool little_endian = bytes.size() >= 2 && bytes[0] == 'I' && bytes[1] == 'I';
    valid_ = (big_endian_ || little_endian) && number(2, 2) == 42u;
  }

  // Where the first directory begins; nothing if this is no TIFF structure.
  std::optional<size_t> first_directory() const {
    if (!valid_) return {};
    return directory(number(4, 4).value_or(0));
  }

  // Where the position of the directory after this one is written.
  std::optional<size_t> link_after(size_t directory) const {
    const auto entries = number(directory, 2);
    if (!entries) return {};
    const size_t link = directory + 2 + kEntryBytes * *entries;
    if (!number(link, 4)) return {};
    return link;
  }

  std::optional<size_t> directory_at_link(std::optional<size_t> link) const {
    return link ? directory(*number(*link, 4)) : std::nullopt;
  }

  // A directory that a tag of another one leads to.
  std::optional<size_t> directory_of(std::optional<size_t> parent, uint16_t tag) const {
    const auto field = find(parent, tag);
    return field && is_integer(field->type) ? directory(value_of(*field)) : std::nullopt;
  }

  // Entries that end or whose values lie outside the block or have no known type are left out.
  std::vector<Field> fields(std::optional<size_t> directory) const {
    std::vector<Field> found;
    const auto entries = directory ? number(*directory, 2) : std::nullopt;
    for (size_t i = 0; i < entries.value_or(0); ++i) {
      const size_t entry = *directory + 2 + kEntryBytes * i;
      const auto tag = number(entry, 2), type = number(entry + 2, 2), count = number(entry + 4, 4);
      const auto last = number(entry + 8, 4);
      if (!last || *count == 0 || bytes_of_type(*type) == 0) continue;
      const uint64_t bytes = uint64_t{*count} * bytes_of_type(*type);
      const size_t offset = bytes > 4 ? *last : entry + 8;
      if (offset > bytes_.size() || bytes > bytes_.size() - offset) continue;
      found.push_back(
          {entry, static_cast<uint16_t>(*tag), static_cast<uint16_t>(*type), *count, offset});
    }
    return found;
  }

  std::optional<Field> find(std::optional<size_t> directory, uint16_t tag) const {
    for (const Field& field : fields(directory))
      if (field.tag == tag) return field;
    return {};
  }

  // The index-th value of an integer field.
  uint32_t value_of(const Field& field, size_t index = 0) const {
    const size_t bytes = bytes_of_type(field.type);
    return *number(field.value + index * bytes, bytes);
  }

  // Without the zero at its end and white space around.
  std::string text_of(std::optional<size_t> directory, uint16_t tag) const {
    const auto field = find(directory, tag);
    if (!field || field->type != kAscii) return "";
    const auto* first = reinterpret_cast<const char*>(bytes_.data()) + field->value;
    std::string_view text(first, field->count);
    text = text.substr(0, text.find('\0'));
    const size_t begin = text.find_first_not_of(' ');
    if (begin == text.npos) return "";
    return std::string(text.substr(begin, text.find_last_not_of(' ') - begin + 1));
  }

  // The table and the values of a directory.
  void add_ranges(std::optional<size_t> directory, std::vector<Range>& ranges) const {
    if (!directory) return;
    ranges.push_back({*directory, *directory + 6 + kEntryBytes * *number(*directory, 2)});
    for (const Field& field : fields(directory))
      ranges.push_back({field.value, field.value + field.count * bytes_of_type(field.type)});
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
  std::optional<size_t> directory(uint32_t position) const {
    if (position == 0 || !number(position, 2)) return {};
    return position;
  }

  const Bytes& bytes_;
  bool big_endian_ = false, valid_ = false;
};

void put(Bytes& exif, size_t position, size_t count, uint32_t value) {
  const bool big_endian = exif[0] == 'M';
  for (size_t i = 0; i < count; ++i, value >>= 8)
    exif[position + (big_endian ? count - 1 - i : i)] = static_cast<uint8_t>(value);
}

// One value inside the entry itself.
void put_long(Bytes& exif, size_t entry, uint16_t tag, uint32_t value) {
  put(exif, entry, 2, tag);
  put(exif, entry + 2, 2, kLong);
  put(exif, entry + 4, 4, 1);
  put(exif, entry + 8, 4, value);
}

void put_length(Bytes& exif, std::optional<size_t> directory, uint16_t tag, int32_t pixels) {
  const auto field = Tiff(exif).find(directory, tag);
  if (!field || (field->type != kShort && field->type != kLong) || field->count != 1) return;
  if (field->type == kShort && pixels <= 65535)
    put(exif, field->value, 2, static_cast<uint32_t>(pixels));
  else
    put_long(exif, field->entry, tag, static_cast<uint32_t>(pixels));
}

void put_orientation(Bytes& exif, std::optional<size_t> directory) {
  for (const Field& field : Tiff(exif).fields(directory))
    if (field.tag == kOrientation && is_integer(field.type))
      put(exif, field.value, bytes_of_type(field.type), 1);
}

// Two fields of one rational number each.
void swap_values(Bytes& exif, std::optional<size_t> directory, uint16_t tag_x, uint16_t tag_y) {
  const Tiff tiff(exif);
  const auto x = tiff.find(directory, tag_x), y = tiff.find(directory, tag_y);
  if (!x || !y || x->type != y->type || x->count != y->count) return;
  const auto first_of_x = exif.begin() + static_cast<ptrdiff_t>(x->value);
  const auto bytes = static_cast<ptrdiff_t>(x->count * bytes_of_type(x->type));
  if (std::equal(first_of_x, first_of_x + bytes, exif.begin() + static_cast<ptrdiff_t>(y->value)))
    return;
  std::swap_ranges(exif.begin() + static_cast<ptrdiff_t>(x->entry + 8),
                   exif.begin() + static_cast<ptrdiff_t>(x->entry + 12),
                   exif.begin() + static_cast<ptrdiff_t>(y->entry + 8));
}

void blank(Bytes& exif, const Range& range) {
  std::fill(exif.begin() + static_cast<ptrdiff_t>(range.first),
            exif.begin() + static_cast<ptrdiff_t>(range.second), uint8_t{0});
}

// Blanks a range unless one that must stay lies there too, as only a malformed block has it.
bool blank_unless_shared(Bytes& exif, const Range& range, const std::vector<Range>& kept) {
  const auto shared = [&](const Range& other) { return overlap(range, other); };
  if (std::any_of(kept.begin(), kept.end(), shared)) return false;
  blank(exif, range);
  return true;
}

// Takes an entry out of its directory: those behind it and the link that follows them move up.
void remove_entry(Bytes& exif, size_t directory, const Field& field) {
  const size_t entries = *Tiff(exif).number(directory, 2);
  const size_t end = std::min(directory + 6 + kEntryBytes * entries, exif.size());
  std::move(exif.begin() + static_cast<ptrdiff_t>(field.entry + kEntryBytes),
            exif.begin() + static_cast<ptrdiff_t>(end),
            exif.begin() + static_cast<ptrdiff_t>(field.entry));
  blank(exif, {end - kEntryBytes, end});
  put(exif, directory, 2, static_cast<uint32_t>(entries - 1));
}

// The header and the directories without the one of a thumbnail and that of positions.
std::vector<Range> main_ranges(const Tiff& tiff) {
  std::vector<Range> ranges = {{0, 8}};
  const auto first = tiff.first_directory();
  const auto camera = tiff.directory_of(first, kExifDirectory);
  tiff.add_ranges(first, ranges);
  tiff.add_ranges(camera, ranges);
  tiff.add_ranges(tiff.directory_of(camera, kInteroperabilityDirectory), ranges);
  return ranges;
}

// Where the picture of a directory lies: a JPEG or strips of pixels.
std::vector<Range> picture_ranges(const Tiff& tiff, size_t directory, size_t size) {
  std::vector<Range> ranges;
  for (const auto& [offsets, lengths] :
       {std::pair{kJpegOffset, kJpegLength}, std::pair{kStripOffsets, kStripByteCounts}}) {
    const auto offset = tiff.find(directory, offsets), length = tiff.find(directory, lengths);
    if (!offset || !length || !is_integer(offset->type) || !is_integer(length->type)) continue;
    for (size_t i = 0; i < std::min(offset->count, length->count); ++i) {
      const size_t begin = std::min<size_t>(tiff.value_of(*offset, i), size);
      const size_t end = std::min<size_t>(begin + tiff.value_of(*length, i), size);
      if (begin < end) ranges.push_back({begin, end});
    }
  }
  return ranges;
}

// The first range with those that follow it without a gap.
Range joined_front(const std::vector<Range>& ranges) {
  Range joined = ranges.front();
  for (const Range& range : ranges)
    if (range.first == joined.second) joined.second = range.second;
  return joined;
}

// A directory of strips becomes one of a JPEG: of the old entries only the resolution stays. It must
// have had kEntriesOfJpeg entries.
constexpr size_t kEntriesOfJpeg = 6;
void describe_as_jpeg(Bytes& exif, size_t directory, const Thumbnail& thumbnail, size_t offset) {
  std::vector<std::array<uint8_t, kEntryBytes>> entries;
  const auto add = [&](uint16_t tag, uint32_t value) {
    Bytes entry(kEntryBytes);
    entry.insert(entry.begin(), {exif[0], exif[1]});  // put() looks for the byte order there
    put_long(entry, 2, tag, value);
    std::copy(entry.begin() + 2, entry.end(), entries.emplace_back().begin());
  };
  const Tiff tiff(exif);
  add(kCompression, kJpegCompression);
  for (const uint16_t tag : {kXResolution, kYResolution, kResolutionUnit})
    if (const auto field = tiff.find(directory, tag))
      std::copy_n(exif.begin() + static_cast<ptrdiff_t>(field->entry), kEntryBytes,
                  entries.emplace_back().begin());
  add(kJpegOffset, static_cast<uint32_t>(offset));
  add(kJpegLength, static_cast<uint32_t>(thumbnail.jpeg.size()));
  const size_t old_entries = *tiff.number(directory, 2);
  blank(exif, {directory, directory + 6 + kEntryBytes * old_entries});
  put(exif, directory, 2, static_cast<uint32_t>(entries.size()));
  auto to = exif.begin() + static_cast<ptrdiff_t>(directory + 2);
  for (const auto& entry : entries) to = std::copy(entry.begin(), entry.end(), to);
}

}  // namespace

void remove_exif_prefixes(Bytes& exif) {
  const std::string_view block(reinterpret_cast<const char*>(exif.data()), exif.size());
  size_t begin = 0;
  while (block.substr(begin).starts_with(kExifPrefix)) begin += kExifPrefix.size();
  exif.erase(exif.begin(), exif.begin() + static_cast<ptrdiff_t>(begin));
}

int exif_orientation(const Bytes& exif) {
  const Tiff tiff(exif);
  const auto field = tiff.find(tiff.first_directory(), kOrientation);
  if (!field || !is_integer(field->type)) return 1;
  const uint32_t value = tiff.value_of(*field);
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void reset_exif_orientation(Bytes& exif) { put_orientation(exif, Tiff(exif).first_directory()); }

void swap_exif_axes(Bytes& exif) {
  const Tiff tiff(exif);
  const auto first = tiff.first_directory();
  swap_values(exif, first, kXResolution, kYResolution);
  swap_values(exif, tiff.directory_of(first, kExifDirectory), kFocalPlaneXResolution,
              kFocalPlaneYResolution);
}

void set_exif_size(Bytes& exif, int32_t width, int32_t height) {
  const Tiff tiff(exif);
  const auto first = tiff.first_directory();
  const auto camera = tiff.directory_of(first, kExifDirectory);
  put_length(exif, first, kImageWidth, width);
  put_length(exif, first, kImageLength, height);
  put_length(exif, camera, kPixelXDimension, width);
  put_length(exif, camera, kPixelYDimension, height);
}

void remove_exif_subject(Bytes& exif) {
  const Tiff tiff(exif);
  const auto camera = tiff.directory_of(tiff.first_directory(), kExifDirectory);
  for (const uint16_t tag : {kSubjectArea, kSubjectLocation})
    if (const auto field = tiff.find(camera, tag)) remove_entry(exif, *camera, *field);
}

void remove_exif_gps(Bytes& exif) {
  const Tiff tiff(exif);
  const auto first = tiff.first_directory();
  const auto pointer = tiff.find(first, kGpsDirectory);
  if (!pointer) return;
  if (const auto positions = tiff.directory_of(first, kGpsDirectory)) {
    std::vector<Range> kept = main_ranges(tiff), gone;
    tiff.add_ranges(tiff.directory_at_link(tiff.link_after(*first)), kept);
    tiff.add_ranges(positions, gone);
    for (Range range : gone) {
      range.second = std::min(range.second, exif.size());
      blank_unless_shared(exif, range, kept);
    }
  }
  remove_entry(exif, *first, *pointer);
}

ThumbnailChange renew_exif_thumbnail(Bytes& exif, size_t most_bytes, const MakeThumbnail& make) {
  const Tiff tiff(exif);
  const auto first = tiff.first_directory();
  const auto link = first ? tiff.link_after(*first) : std::nullopt;
  const auto directory = tiff.directory_at_link(link);
  if (!directory) return ThumbnailChange::kThereWasNone;

  const std::vector<Range> kept = [&] {
    std::vector<Range> ranges = main_ranges(tiff);
    tiff.add_ranges(tiff.directory_of(first, kGpsDirectory), ranges);
    ranges.push_back({*directory, *directory + 6 + kEntryBytes * *tiff.number(*directory, 2)});
    return ranges;
  }();
  const std::vector<Range> old = picture_ranges(tiff, *directory, exif.size());
  const auto next = tiff.link_after(*directory);
  const auto jpeg_offset = tiff.find(directory, kJpegOffset);
  const auto jpeg_length = tiff.find(directory, kJpegLength);
  const bool was_jpeg = jpeg_offset && jpeg_length;
  bool has_room =
      next && !old.empty() && (was_jpeg || *tiff.number(*directory, 2) >= kEntriesOfJpeg);
  for (const Range& range : old) has_room &= blank_unless_shared(exif, range, kept);
  // A directory behind that of the thumbnail holds a further picture of the old state.
  if (next) {
    if (const auto further = tiff.directory_at_link(next))
      for (const Range& range : picture_ranges(tiff, *further, exif.size()))
        blank_unless_shared(exif, range, kept);
    put(exif, *next, 4, 0);
  }

  Thumbnail thumbnail;
  const Range room = old.empty() ? Range{0, 0} : joined_front(old);
  const size_t offset = room.first;
  const bool at_the_end = room.second == exif.size();
  if (has_room)
    thumbnail = make(at_the_end ? std::max(most_bytes, offset) - offset : room.second - offset);
  if (thumbnail.jpeg.empty()) {
    put(exif, *link, 4, 0);
    return ThumbnailChange::kRemoved;
  }
  if (at_the_end) exif.resize(offset + thumbnail.jpeg.size());
  std::copy(thumbnail.jpeg.begin(), thumbnail.jpeg.end(),
            exif.begin() + static_cast<ptrdiff_t>(offset));
  if (was_jpeg) {
    put_long(exif, jpeg_offset->entry, kJpegOffset, static_cast<uint32_t>(offset));
    put_long(exif, jpeg_length->entry, kJpegLength, static_cast<uint32_t>(thumbnail.jpeg.size()));
    put_length(exif, directory, kImageWidth, thumbnail.width);
    put_length(exif, directory, kImageLength, thumbnail.height);
    put_orientation(exif, directory);
  } else {
    describe_as_jpeg(exif, *directory, thumbnail, offset);
  }
  return ThumbnailChange::kRenewed;
}

bool holds_another_jpeg(const Bytes& exif) {
  const Tiff tiff(exif);
  const auto first = tiff.first_directory();
  const auto link = first ? tiff.link_after(*first) : std::nullopt;
  const auto directory = tiff.directory_at_link(link);
  std::vector<Range> known;
  if (directory) known = picture_ranges(tiff, *directory, exif.size());
  constexpr uint8_t kStart[] = {0xFF, 0xD8, 0xFF};
  for (auto at = exif.begin();; ++at) {
    at = std::search(at, exif.end(), std::begin(kStart), std::end(kStart));
    if (at == exif.end()) return false;
    const auto position = static_cast<size_t>(at - exif.begin());
    const Range here{position, position + 1};
    if (std::none_of(known.begin(), known.end(),
                     [&](const Range& range) { return overlap(here, range); }))
      return true;
  }
}

Bytes make_exif(int orientation, const std::vector<std::pair<uint16_t, std::string>>& texts) {
  std::vector<std::pair<uint16_t, std::string>> entries = texts;
  entries.emplace_back(kOrientation, "");
  std::sort(entries.begin(), entries.end());
  constexpr size_t kDirectory = 8;
  Bytes exif(kDirectory + 6 + kEntryBytes * entries.size());
  exif[0] = exif[1] = 'I';
  put(exif, 2, 2, 42);
  put(exif, 4, 4, kDirectory);
  put(exif, kDirectory, 2, static_cast<uint32_t>(entries.size()));
  size_t entry = kDirectory + 2;
  for (const auto& [tag, text] : entries) {
    put(exif, entry, 2, tag);
    if (tag == kOrientation) {
      put(exif, entry + 2, 2, kShort);
      put(exif, entry + 4, 4, 1);
      put(exif, entry + 8, 2, static_cast<uint32_t>(orientation));
    } else {
      const size_t count = text.size() + 1;
      put(exif, entry + 2, 2, kAscii);
      put(exif, entry + 4, 4, static_cast<uint32_t>(count));
      size_t place = entry + 8;
      if (count > 4) {
        place = exif.size();
        put(exif, entry + 8, 4, static_cast<uint32_t>(place));
        exif.resize(place + (count + 1) / 2 * 2);
      }
      std::copy(text.begin(), text.end(), exif.begin() + static_cast<ptrdiff_t>(place));
    }
    entry += kEntryBytes;
  }
  return exif;
}

ExifTexts exif_texts(const Bytes& exif) {
  const Tiff tiff(exif);
  const auto first = tiff.first_directory();
  ExifTexts texts;
  texts.make = tiff.text_of(first, kMake);
  texts.model = tiff.text_of(first, kModel);
  texts.date = tiff.text_of(tiff.directory_of(first, kExifDirectory), kDateTimeOriginal);
  if (texts.date.empty()) texts.date = tiff.text_of(first, kDateTime);
  return texts;
}

}  // namespace host
