// Comparing a row of one table with the plain one, at every length and against guard pages.
#ifndef ROXE_TESTS_SUPPORT_ROWS_H_
#define ROXE_TESTS_SUPPORT_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "support/image.h"
#include "support/seams.h"

// Twice the widest vector plus 1, in bytes: rows are compared at every count up to here.
constexpr int32_t kLongestTestRow = 129;

// Random bytes that end at a guard page.
struct RandomBytes : GuardedMemory {
  RandomBytes(std::mt19937& random, size_t size) : GuardedMemory(size) {
    for (size_t i = 0; i < size; ++i) data()[i] = static_cast<uint8_t>(random() >> 24);
  }
};

inline std::vector<uint8_t> Bytes(const GuardedMemory& memory) {
  return std::vector<uint8_t>(memory.data(), memory.data() + memory.size());
}

#endif  // ROXE_TESTS_SUPPORT_ROWS_H_
