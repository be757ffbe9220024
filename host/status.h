// What the library answers, in words.
#ifndef ROXE_HOST_STATUS_H_
#define ROXE_HOST_STATUS_H_

#include <string>

#include "errors.h"
#include "roxe.h"

namespace host {

// The arguments have been checked before the call, so memory is what remains to go wrong.
inline void expect_ok(int32_t status) {
  if (status == kRoxeOK) return;
  if (status == kRoxeErrInvalid) throw Failure("the operation could not get the memory it needs");
  throw Failure("the operation was refused with status " + std::to_string(status));
}

}  // namespace host

#endif  // ROXE_HOST_STATUS_H_
