// Where blocks come from. A unit of its own, so that the tests can link another one and make the
// n-th allocation fail without a switch in the product.
#ifndef ROXE_FRAME_PLATFORM_MEMORY_H_
#define ROXE_FRAME_PLATFORM_MEMORY_H_

#include <cstddef>

namespace roxe {

void* platform_allocate(size_t size);  // zero-filled, or null
void platform_release(void* block);    // null is harmless

}  // namespace roxe

#endif  // ROXE_FRAME_PLATFORM_MEMORY_H_
