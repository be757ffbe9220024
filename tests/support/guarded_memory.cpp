#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "support/image.h"

GuardedMemory::GuardedMemory(size_t size) : size_(size) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const size_t usable = (size + page - 1) / page * page;
  mapped_ = usable + 2 * page;
  mapping_ = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping_ == MAP_FAILED) std::abort();
  uint8_t* first = static_cast<uint8_t*>(mapping_) + page;
  if (usable > 0 && mprotect(first, usable, PROT_READ | PROT_WRITE) != 0) std::abort();
  data_ = starts_at_page ? first : first + (usable - size);
}

GuardedMemory::~GuardedMemory() { munmap(mapping_, mapped_); }
