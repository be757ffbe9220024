#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

#include "support/image.h"

namespace {

// Under the address sanitizer, which the emulators and other systems do not have.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/asan_interface.h>

bool is_forbidden(const uint8_t* p) { return __asan_address_is_poisoned(p) != 0; }

TEST(GuardedMemory, SanitizerKnowsItsBytesAndItsEnd) {
  for (const size_t size : {size_t{1}, size_t{40}, size_t{5000}}) {
    auto memory = std::make_unique<GuardedMemory>(size);
    const uint8_t* data = memory->data();
    for (size_t i = 0; i < size; ++i) ASSERT_FALSE(is_forbidden(data + i)) << i << " of " << size;
    // Before it, eight bytes are known together.
    EXPECT_TRUE(is_forbidden(GuardedMemory::starts_at_page ? data + size : data - 8)) << size;
    memory.reset();
    EXPECT_TRUE(is_forbidden(data + size / 2)) << size;
  }
}
#endif
#endif

}  // namespace
