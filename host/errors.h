// The two ways in which the tool gives up. Each message is one sentence for the person at the
// keyboard.
#ifndef ROXE_HOST_ERRORS_H_
#define ROXE_HOST_ERRORS_H_

#include <stdexcept>

namespace host {

// The command cannot mean anything as given: exit code 2.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The command is fine but the work could not be done: exit code 1.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace host

#endif  // ROXE_HOST_ERRORS_H_
