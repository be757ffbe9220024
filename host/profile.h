// What the tool reads in a colour profile, or in what stands for one.
#ifndef ROXE_HOST_PROFILE_H_
#define ROXE_HOST_PROFILE_H_

#include <string>

#include "picture.h"

namespace host {

// As the profile describes itself: "Display P3"; empty if it does not.
std::string profile_name(const Bytes& icc);

// What says that the pixels are no numbers of sRGB: "its colour profile (Display P3)", judged by its
// primaries, or a chunk of a PNG. Empty where nothing does.
std::string what_differs_from_srgb(const Metadata& metadata);

}  // namespace host

#endif  // ROXE_HOST_PROFILE_H_
