// What the tool reads in a colour profile.
#ifndef ROXE_HOST_PROFILE_H_
#define ROXE_HOST_PROFILE_H_

#include <string>

#include "picture.h"

namespace host {

// As the profile describes itself: "Display P3"; empty if it does not.
std::string profile_name(const Bytes& icc);

// Whether the profile, if there is one, describes sRGB. Judged by its three primaries.
bool is_srgb(const Bytes& icc);

}  // namespace host

#endif  // ROXE_HOST_PROFILE_H_
