#include "compare.h"

#include <algorithm>
#include <cstring>

#include "errors.h"

namespace host {
namespace {

void place(const Picture& picture, Picture& onto, int32_t left) {
  for (int32_t y = 0; y < picture.height(); ++y)
    std::memcpy(onto.row(y) + 3 * static_cast<ptrdiff_t>(left), picture.row(y),
                static_cast<size_t>(picture.row_bytes()));
}

void keep_the_meaning_of_colours(const Metadata& from, Metadata& to) {
  to.icc = from.icc;
  to.srgb_intent = from.srgb_intent;
  to.gamma = from.gamma;
  to.chromaticities = from.chromaticities;
}

}  // namespace

Picture side_by_side(const Picture& before, const Picture& after, Colour background) {
  const int64_t gap = std::max(2, (before.width() + after.width()) / 100);
  const int64_t width = before.width() + gap + after.width();
  const int32_t height = std::max(before.height(), after.height());
  if (width * height > Picture::kMaxPixels)
    throw Failure("before and after side by side, " + size_text(width, height) +
                  " pixels, are above the limit of " +
                  std::to_string(Picture::kMaxPixels / 1'000'000) + " megapixels");
  Picture both(static_cast<int32_t>(width), height, background);
  place(before, both, 0);
  place(after, both, before.width() + static_cast<int32_t>(gap));
  keep_the_meaning_of_colours(before.metadata, both.metadata);
  return both;
}

Picture copy_of(const Picture& picture) {
  Picture copy(picture.width(), picture.height());
  place(picture, copy, 0);
  copy.metadata = picture.metadata;
  copy.one_channel = picture.one_channel;
  return copy;
}

}  // namespace host
