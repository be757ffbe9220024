#include "frame/platform_memory.h"

#include <cstdlib>

namespace roxe {

void* platform_allocate(size_t size) { return std::calloc(1, size); }

void platform_release(void* block) { std::free(block); }

}  // namespace roxe
