// Comparing a row of one table with the plain one, at every length and against guard pages.
#ifndef ROXE_TESTS_SUPPORT_ROWS_H_
#define ROXE_TESTS_SUPPORT_ROWS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "support/image.h"
#include "support/seams.h"

// Twice the widest vector plus 1, in bytes: rows are compared at every count up to here.
constexpr int32_t kLongestTestRow = 129;

// count elements beside a guard page, all zero.
template <class T>
struct Guarded : GuardedMemory {
  explicit Guarded(size_t count) : GuardedMemory(count * sizeof(T)) {}
  explicit Guarded(const std::vector<T>& values) : Guarded(values.size()) {
    std::copy(values.begin(), values.end(), of());
  }
  T* of() const { return reinterpret_cast<T*>(data()); }
  T& operator[](size_t i) const { return of()[i]; }
};

// Random bytes beside a guard page.
struct RandomBytes : GuardedMemory {
  RandomBytes(std::mt19937& random, size_t size) : GuardedMemory(size) {
    for (size_t i = 0; i < size; ++i) data()[i] = static_cast<uint8_t>(random() >> 24);
  }
};

inline std::vector<uint8_t> Bytes(const GuardedMemory& memory) {
  return std::vector<uint8_t>(memory.data(), memory.data() + memory.size());
}

#endif  // ROXE_TESTS_SUPPORT_ROWS_H_
