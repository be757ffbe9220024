// What the tool reads in a colour profile.
#ifndef ROXE_HOST_PROFILE_H_
#define ROXE_HOST_PROFILE_H_

#include <string>

#include "picture.h"

namespace host {

// As the profile describes itself: "Display P3"; empty if it does not.
std::string profile_name(const Bytes& icc);

// Whether its three primaries are those of sRGB.
bool has_srgb_primaries(const Bytes& icc);

}  // namespace host

#endif  // ROXE_HOST_PROFILE_H_
