// The fuzz targets of the library. Each takes any bytes and must neither crash, nor leak, nor
// contradict what roxe.h says.
#ifndef ROXE_FUZZ_TARGETS_H_
#define ROXE_FUZZ_TARGETS_H_

#include <cstddef>
#include <cstdint>

#include "fuzz/call.h"

namespace fuzz {

// One call on records as a careless host may fill them in, under every table of rows that the
// machine can run: the same bytes and result under all, and nothing written that is not dst's.
void call_once(Operation operation, const uint8_t* data, size_t size);

// Such a call of an operation that the input chooses, and the same bytes from tests/reference.
void compare_with_reference(const uint8_t* data, size_t size);

// Such a call while the n-th allocation fails: every block is released all the same, and dst is
// untouched where roxe.h says so.
void fail_allocation(const uint8_t* data, size_t size);

// A sequence of calls on pictures that lie anywhere in one block of memory and may overlap: under
// every table of rows the same bytes after each call as from tests/reference.
void play_sequence(const uint8_t* data, size_t size);

struct Target {
  const char* name;  // also of its folder in corpus/
  void (*run)(const uint8_t* data, size_t size);
};
inline constexpr int32_t kTargetCount = kOperations + 3;
extern const Target kTargets[kTargetCount];

}  // namespace fuzz

#endif  // ROXE_FUZZ_TARGETS_H_
