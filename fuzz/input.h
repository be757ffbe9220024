// The bytes that a fuzzer invents, as a source of numbers.
#ifndef ROXE_FUZZ_INPUT_H_
#define ROXE_FUZZ_INPUT_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace fuzz {

inline void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

// Zeros when it is used up.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool empty() const { return size_ == 0; }
  const uint8_t* data() const { return data_; }  // what has not been used yet
  size_t size() const { return size_; }

  uint8_t byte() {
    if (empty()) return 0;
    --size_;
    return *data_++;
  }
  // 0 ... n - 1, from two bytes.
  int32_t below(int32_t n) { return (byte() | byte() << 8) % n; }
  // Any 32 bits.
  int32_t whole() {
    uint32_t bits = 0;
    for (int i = 0; i < 4; ++i) bits = bits << 8 | byte();
    return static_cast<int32_t>(bits);
  }
  // Mostly a number of the intended range, else any.
  int32_t amount(int32_t low, int32_t high) {
    return byte() % 8 == 0 ? whole() : low + below(high - low + 1);
  }
  // Mostly -4 ... 4, else any pattern of bits.
  float real() {
    if (byte() % 4 != 0) return static_cast<float>(below(2000) - 1000) / 250.0f;
    const int32_t bits = whole();
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }

 private:
  const uint8_t* data_;
  size_t size_;
};

}  // namespace fuzz

#endif  // ROXE_FUZZ_INPUT_H_
