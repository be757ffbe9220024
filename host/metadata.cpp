#include "metadata.h"

#include "exif.h"
#include "profile.h"

namespace host {

Description describe_metadata(const Metadata& metadata) {
  ExifTexts texts = exif_texts(metadata.exif);
  return {std::move(texts.make), std::move(texts.model), std::move(texts.date),
          profile_name(metadata.icc)};
}

bool is_srgb(const Bytes& icc) { return icc.empty() || has_srgb_primaries(icc); }

}  // namespace host
