#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

#include "support/image.h"

// The address sanitizer knows nothing of mappings: of those that are kept it is told what belongs to a
// buffer, to the byte, and when it ends.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/asan_interface.h>
#endif
#endif
#ifdef ASAN_POISON_MEMORY_REGION
static void forbid(void* p, size_t size) { ASAN_POISON_MEMORY_REGION(p, size); }
static void allow(void* p, size_t size) { ASAN_UNPOISON_MEMORY_REGION(p, size); }
#else
static void forbid(void*, size_t) {}
static void allow(void*, size_t) {}
#endif

// Small mappings are kept, by their length, for the next buffer: to map takes longer than most tests
// do with it.
constexpr size_t kLongestKept = 1 << 18;
struct KeptMappings {
  std::mutex mutex;
  std::map<size_t, std::vector<void*>> of_length;
};
// Lives before and after every buffer.
static KeptMappings& kept_mappings() {
  static KeptMappings& all = *new KeptMappings;
  return all;
}

static void* kept_mapping(size_t length) {
  KeptMappings& kept = kept_mappings();
  const std::lock_guard lock(kept.mutex);
  std::vector<void*>& mappings = kept.of_length[length];
  if (mappings.empty()) return nullptr;
  void* mapping = mappings.back();
  mappings.pop_back();
  return mapping;
}

GuardedMemory::GuardedMemory(size_t size) : size_(size) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const size_t usable = (size + page - 1) / page * page;
  mapped_ = usable + 2 * page;
  mapping_ = kept_mapping(mapped_);
  const bool is_new = mapping_ == nullptr;
  if (is_new) mapping_ = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping_ == MAP_FAILED) std::abort();
  uint8_t* first = static_cast<uint8_t*>(mapping_) + page;
  if (is_new && usable > 0 && mprotect(first, usable, PROT_READ | PROT_WRITE) != 0) std::abort();
  if (!is_new) {
    allow(first, usable);
    std::memset(first, 0, usable);
  }
  data_ = starts_at_page ? first : first + (usable - size);
  if (mapped_ > kLongestKept) return;
  forbid(first, static_cast<size_t>(data_ - first));
  forbid(data_ + size, usable - size - static_cast<size_t>(data_ - first));
}

GuardedMemory::~GuardedMemory() {
  if (mapped_ > kLongestKept) {
    munmap(mapping_, mapped_);
    return;
  }
  forbid(mapping_, mapped_);
  KeptMappings& kept = kept_mappings();
  const std::lock_guard lock(kept.mutex);
  kept.of_length[mapped_].push_back(mapping_);
}
