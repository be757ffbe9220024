#include "photoshop.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "jpeg_shared.h"

namespace host {
namespace {

// Kinds of resources.
constexpr uint32_t kOldThumbnail = 0x0409, kThumbnail = 0x040C;
constexpr uint32_t kExif = 0x0422, kMoreExif = 0x0423, kXmp = 0x0424;

bool remove_resources(std::vector<Bytes>& segments, std::initializer_list<uint32_t> kinds) {
  Bytes all;
  for (const Bytes& segment : segments)
    all.insert(all.end(), segment.begin() + static_cast<ptrdiff_t>(kPhotoshopPrefix.size()),
               segment.end());
  const auto number = [&](size_t at, size_t count) {
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) value = value << 8 | all[at + i];
    return value;
  };
  // A resource: "8BIM", its kind, a name after its length, the length of the content, the content.
  // Name and content take an even number of bytes.
  constexpr std::string_view kSignature = "8BIM";
  constexpr size_t kLeastBytes = 12;
  bool removed = false;
  size_t at = 0;
  while (at + kLeastBytes <= all.size() && std::equal(kSignature.begin(), kSignature.end(),
                                                      all.begin() + static_cast<ptrdiff_t>(at))) {
    const uint32_t kind = number(at + 4, 2);
    const size_t name_bytes = (size_t{all[at + 6]} + 2) / 2 * 2;
    if (at + 6 + name_bytes + 4 > all.size()) break;
    const size_t content = at + 10 + name_bytes;
    const size_t content_bytes = (size_t{number(content - 4, 4)} + 1) / 2 * 2;
    const size_t end = std::min(content + content_bytes, all.size());
    if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) {
      all.erase(all.begin() + static_cast<ptrdiff_t>(at),
                all.begin() + static_cast<ptrdiff_t>(end));
      removed = true;
    } else {
      at = end;
    }
  }
  if (!removed) return false;
  segments.clear();
  constexpr size_t kStep = kMaxSegment - kPhotoshopPrefix.size();
  for (size_t start = 0; start < all.size(); start += kStep) {
    Bytes& segment = segments.emplace_back(kPhotoshopPrefix.begin(), kPhotoshopPrefix.end());
    const size_t end = std::min(start + kStep, all.size());
    segment.insert(segment.end(), all.begin() + static_cast<ptrdiff_t>(start),
                   all.begin() + static_cast<ptrdiff_t>(end));
  }
  return true;
}

}  // namespace

void remove_photoshop_thumbnails(std::vector<Bytes>& segments) {
  remove_resources(segments, {kOldThumbnail, kThumbnail});
}

bool remove_photoshop_copies(std::vector<Bytes>& segments) {
  return remove_resources(segments, {kExif, kMoreExif, kXmp});
}

}  // namespace host
