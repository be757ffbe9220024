// Before and after in one picture.
#ifndef ROXE_HOST_COMPARE_H_
#define ROXE_HOST_COMPARE_H_

#include "picture.h"

namespace host {

// The two pictures side by side, upper edges level, on the background. Of the metadata only what
// colours mean is kept.
Picture side_by_side(const Picture& before, const Picture& after, Colour background);

Picture copy_of(const Picture& picture);

}  // namespace host

#endif  // ROXE_HOST_COMPARE_H_
