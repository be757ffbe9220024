// Commands that look at a picture and write nothing.
#ifndef ROXE_HOST_INSPECT_H_
#define ROXE_HOST_INSPECT_H_

#include <string>

#include "picture_file.h"
#include "text.h"

namespace host {

// Lines of "name: value" about a file.
std::string info_text(const LoadedPicture& loaded, const std::string& path);

// The colour of a pixel of the upright picture. Throws UsageError outside it.
std::string pick_text(const Picture& picture, Point point);

}  // namespace host

#endif  // ROXE_HOST_INSPECT_H_
