// What a picture's metadata says, and what an edit makes of it.
#ifndef ROXE_HOST_METADATA_H_
#define ROXE_HOST_METADATA_H_

#include <string>

#include "picture.h"

namespace host {

// Each empty where nothing is known. As they are in the file: they may hold control characters.
struct Description {
  std::string make, model;  // of the camera
  std::string date;         // YYYY:MM:DD hh:mm:ss, when the picture was taken
  std::string profile;      // the name of the colour profile
};
Description describe_metadata(const Metadata& metadata);

// Whether the colour profile, if there is one, describes sRGB. Judged by its primaries.
bool is_srgb(const Bytes& icc);

}  // namespace host

#endif  // ROXE_HOST_METADATA_H_
