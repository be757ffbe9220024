#include "png_chunks.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <zlib.h>

namespace host {
namespace {

constexpr size_t kSignatureBytes = 8, kAround = 12;  // of a chunk: length, name, checksum
constexpr size_t kMostBytes = size_t{64} << 20;      // of texts together, and of a packet unpacked
constexpr std::string_view kXmpKeyword{"XML:com.adobe.xmp\0", 18};

uint32_t number(const Bytes& file, size_t at) {
  return uint32_t{file[at]} << 24 | uint32_t{file[at + 1]} << 16 | uint32_t{file[at + 2]} << 8 |
         file[at + 3];
}

bool is_one_of(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// The fifth bit of the first letter says that a picture can be read without the chunk, that of the
// fourth that it may be copied though the pixels have changed.
bool is_critical(std::string_view name) { return (name[0] & 0x20) == 0; }
bool may_be_copied(std::string_view name) {
  return (name[3] & 0x20) != 0 || is_one_of(name, {"cICP", "mDCV", "cLLI"});
}

// Nothing where the data are damaged or unpack to more than so many bytes.
std::optional<Bytes> inflated(const uint8_t* data, size_t size, size_t most) {
  z_stream stream = {};
  if (inflateInit(&stream) != Z_OK) return {};
  Bytes to;
  stream.next_in = const_cast<Bytef*>(data);
  stream.avail_in = static_cast<uInt>(size);
  int status = Z_OK;
  while (status == Z_OK && to.size() <= most) {
    const size_t filled = to.size(), step = 65536;
    to.resize(filled + step);
    stream.next_out = to.data() + filled;
    stream.avail_out = step;
    status = inflate(&stream, Z_NO_FLUSH);
    to.resize(filled + step - stream.avail_out);
    if (stream.avail_out == step && stream.avail_in == 0) break;
  }
  inflateEnd(&stream);
  if (status != Z_STREAM_END || to.size() > most) return {};
  return to;
}

// Where the zeros end that stand behind so many words; nothing where there are not as many.
std::optional<size_t> behind_words(const Bytes& chunk, size_t at, int words) {
  for (; words > 0; --words) {
    if (at > chunk.size()) return {};
    const auto zero = std::find(chunk.begin() + static_cast<ptrdiff_t>(at), chunk.end(), 0);
    if (zero == chunk.end()) return {};
    at = static_cast<size_t>(zero - chunk.begin()) + 1;
  }
  return at;
}

// An international text: keyword, two bytes about compression, language and keyword translated,
// each word with a zero at its end, then the text.
std::optional<Bytes> international_text(const Bytes& chunk, size_t most) {
  const auto flags = behind_words(chunk, 0, 1);
  const auto text = flags ? behind_words(chunk, *flags + 2, 2) : flags;
  if (!text) return {};
  if (chunk[*flags] == 1) return inflated(chunk.data() + *text, chunk.size() - *text, most);
  return Bytes(chunk.begin() + static_cast<ptrdiff_t>(*text), chunk.end());
}

class Collector {
 public:
  Collector(Metadata& metadata, Notes& notes) : metadata_(metadata), notes_(notes) {}

  void take(std::string_view name, Bytes content, bool after_pixels) {
    if (name == "eXIf" && metadata_.exif.empty()) {
      metadata_.exif = std::move(content);
    } else if (is_xmp(name, content) && metadata_.xmp.empty()) {
      if (auto xmp = international_text(content, kMostBytes))
        metadata_.xmp = std::move(*xmp);
      else
        notes_.push_back("its XMP packet is damaged and is left out");
    } else if (is_one_of(name, {"acTL", "fcTL", "fdAT"})) {
      animated_ = true;
    } else if (!may_be_copied(name) || name == "eXIf") {
      add_to(dropped_, name);
    } else if (content.size() > kMostBytes - kept_bytes_) {
      too_long_ = true;
    } else {
      kept_bytes_ += content.size();
      metadata_.chunks.push_back({std::string(name), std::move(content), after_pixels});
    }
  }

  void damaged(std::string_view name) { add_to(damaged_, name); }

  void finish() {
    const auto note = [&](bool asked, const std::string& text) {
      if (asked) notes_.push_back(text);
    };
    note(animated_, "its animation (APNG) is left out, only the picture that stands for it stays");
    note(too_long_, "its texts take more than 64 MB and some are left out");
    note(!dropped_.empty(),
         "its chunks" + dropped_ + " do not fit a changed picture and are left out");
    note(!damaged_.empty(), "its chunks" + damaged_ + " are damaged and are left out");
  }

 private:
  static bool is_xmp(std::string_view name, const Bytes& content) {
    return name == "iTXt" && content.size() >= kXmpKeyword.size() &&
           std::equal(kXmpKeyword.begin(), kXmpKeyword.end(), content.begin());
  }
  static void add_to(std::string& list, std::string_view name) {
    if (list.find(name) == list.npos) list += " " + std::string(name);
  }

  Metadata& metadata_;
  Notes& notes_;
  size_t kept_bytes_ = 0;
  bool animated_ = false, too_long_ = false;
  std::string dropped_, damaged_;
};

}  // namespace

PngFile read_png_chunks(const Bytes& file, Metadata& metadata, Notes& notes) {
  PngFile png;
  png.pictorial.push_back({0, kSignatureBytes});
  Collector collector(metadata, notes);
  size_t at = kSignatureBytes;
  while (!png.ended && file.size() - at >= kAround) {
    const size_t length = number(file, at);
    if (length > file.size() - at - kAround) break;
    const std::string_view name(reinterpret_cast<const char*>(file.data()) + at + 4, 4);
    const size_t end = at + kAround + length;
    if (name == "IDAT") png.pixel_bytes += length;
    png.ended = name == "IEND";
    if (is_critical(name) || is_one_of(name, {"tRNS", "gAMA", "cHRM", "sRGB", "iCCP", "pHYs"})) {
      png.pictorial.push_back({at, end});
    } else {
      const auto begin = file.begin() + static_cast<ptrdiff_t>(at);
      const uLong sum = crc32(0, file.data() + at + 4, static_cast<uInt>(length + 4));
      if (sum == number(file, end - 4))
        collector.take(name, Bytes(begin + 8, begin + static_cast<ptrdiff_t>(8 + length)),
                       png.pixel_bytes > 0);
      else
        collector.damaged(name);
    }
    at = end;
  }
  if (png.ended && std::any_of(file.begin() + static_cast<ptrdiff_t>(at), file.end(),
                               [](uint8_t byte) { return byte != 0; }))
    notes.push_back("the " + std::to_string(file.size() - at) +
                    " bytes after its end are left out");
  collector.finish();
  return png;
}

std::optional<Bytes> unpacked_text(const Metadata::Chunk& chunk, size_t most) {
  const Bytes& bytes = chunk.bytes;
  if (chunk.name == "iTXt") return international_text(bytes, most);
  if (chunk.name != "zTXt") return bytes;
  const auto method = behind_words(bytes, 0, 1);
  if (!method || *method == bytes.size()) return {};
  return inflated(bytes.data() + *method + 1, bytes.size() - *method - 1, most);
}

Bytes xmp_chunk(const Bytes& xmp) {
  // not compressed, no language, no translated keyword
  const std::string head = std::string(kXmpKeyword) + std::string(4, '\0');
  Bytes chunk(head.size() + xmp.size());
  std::copy(xmp.begin(), xmp.end(), std::copy(head.begin(), head.end(), chunk.begin()));
  return chunk;
}

}  // namespace host
