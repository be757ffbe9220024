// What programs of checksums need of the C++ run-time library where there is none for the C library.
// The static library itself needs nothing of it.
#include <cstdlib>
#include <string>

template class std::allocator<char>;

void* operator new(std::size_t size) {
  void* block = std::malloc(size);
  return block ? block : (std::abort(), nullptr);
}
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace std {

void __throw_bad_alloc() { std::abort(); }
void __throw_bad_array_new_length() { std::abort(); }
void __throw_bad_function_call() { std::abort(); }
void __throw_length_error(const char*) { std::abort(); }
void __throw_logic_error(const char*) { std::abort(); }
void __throw_out_of_range_fmt(const char*, ...) { std::abort(); }

}  // namespace std
