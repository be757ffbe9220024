// Any bytes as a picture file: decode, turn upright, encode in every format, decode again.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "errors.h"
#include "metadata.h"
#include "picture_file.h"
#include "profile.h"

namespace {

using host::Bytes;

std::optional<host::LoadedPicture> decode(const Bytes& file, bool damaged) {
  host::ReadSettings settings;
  settings.damaged = damaged;
  host::Notes notes;
  try {
    return host::decode_upright(file, settings, notes);
  } catch (const host::Failure&) {
    return {};
  }
}

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

// What was written must be read again, as the same pixels where nothing is lost.
void encode(const host::Picture& picture, host::FileFormat format,
            const host::WriteSettings& settings, bool exact) {
  host::Notes notes;
  Bytes file;
  try {
    file = host::encode_picture(picture, format, settings, notes);
  } catch (const host::Failure&) {
    return;  // a JPEG of more than 65500 pixels a side, a WebP of more than 16383
  }
  const auto again = decode(file, false);
  expect(again.has_value(), "the tool reads what it has written");
  expect(again->orientation == 1, "the result is upright");
  const host::Picture& other = again->picture;
  expect(other.width() == picture.width() && other.height() == picture.height(), "same size");
  for (int32_t y = 0; exact && y < picture.height(); ++y)
    expect(std::equal(picture.row(y), picture.row(y) + picture.row_bytes(), other.row(y)),
           "same pixels");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Bytes file(data, data + size);
  auto loaded = decode(file, false);
  if (!loaded) loaded = decode(file, true);
  if (!loaded) return 0;
  host::describe_metadata(loaded->picture.metadata);
  host::what_differs_from_srgb(loaded->picture.metadata);

  using host::FileFormat;
  host::WriteSettings settings;
  encode(loaded->picture, FileFormat::kJpeg, settings, false);
  encode(loaded->picture, FileFormat::kPng, settings, true);
  if (!host::webp_library().empty())
    encode(loaded->picture, FileFormat::kWebp, settings, loaded->picture.metadata.lossless);
  settings.strip_gps = true;
  settings.progressive = size % 2 == 1;
  settings.subsampling = size % 3 == 0 ? host::Subsampling::k420 : host::Subsampling::kDefault;
  encode(loaded->picture, FileFormat::kJpeg, settings, false);
  settings.strip = true;
  encode(loaded->picture, FileFormat::kPnm, settings, true);
  return 0;
}
