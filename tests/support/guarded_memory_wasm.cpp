// Where no page can be unmapped: bytes on both sides that must not change. Reads go unnoticed.
#include <cstdlib>
#include <cstring>

#include "support/image.h"

namespace {
constexpr size_t kMargin = 64;
constexpr uint8_t kUntouched = 0xa5;
}  // namespace

GuardedMemory::GuardedMemory(size_t size) : mapped_(size + 2 * kMargin), size_(size) {
  mapping_ = std::malloc(mapped_);
  if (!mapping_) std::abort();
  std::memset(mapping_, kUntouched, mapped_);
  data_ = static_cast<uint8_t*>(mapping_) + kMargin;
  std::memset(data_, 0, size);
}

GuardedMemory::~GuardedMemory() {
  for (size_t i = 0; i < kMargin; ++i)
    if (data_[-1 - static_cast<ptrdiff_t>(i)] != kUntouched || data_[size_ + i] != kUntouched)
      std::abort();
  std::free(mapping_);
}
