// A checksum over numbers and bytes: FNV-1a of 64 bits.
#ifndef ROXE_TESTS_CHECKSUMS_DIGEST_H_
#define ROXE_TESTS_CHECKSUMS_DIGEST_H_

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

class Digest {
 public:
  void add(const std::vector<uint8_t>& bytes) {
    for (const uint8_t byte : bytes) add_byte(byte);
  }
  // The lowest byte first on every processor.
  void add(int64_t number) {
    for (int32_t shift = 0; shift < 64; shift += 8) add_byte(static_cast<uint8_t>(number >> shift));
  }
  void add(std::initializer_list<int32_t> numbers) {
    for (const int32_t number : numbers) add(int64_t{number});
  }
  // By its bits. Processors disagree about the sign and the rest of what is no number.
  void add(double number) {
    int64_t bits = -1;
    if (!std::isnan(number)) std::memcpy(&bits, &number, sizeof bits);
    add(bits);
  }
  void add(const float* numbers, int32_t count) {
    for (int32_t i = 0; i < count; ++i) add(double{numbers[i]});
  }

  uint64_t value() const { return value_; }

 private:
  void add_byte(uint8_t byte) { value_ = (value_ ^ byte) * 1099511628211u; }

  uint64_t value_ = 14695981039346656037u;
};

inline uint64_t fnv1a(const std::vector<uint8_t>& bytes) {
  Digest digest;
  digest.add(bytes);
  return digest.value();
}

// "name, on, status, checksum"
inline std::string ChecksumLine(const std::string& name, const std::string& on, int32_t status,
                                const Digest& digest) {
  char line[200];
  std::snprintf(line, sizeof line, "%s, %s, %d, %016llx\n", name.c_str(), on.c_str(), status,
                static_cast<unsigned long long>(digest.value()));
  return line;
}

// A space before each number.
template <class... Number>
std::string Joined(const Number&... numbers) {
  std::string joined;
  ((joined += ' ', joined += std::to_string(numbers)), ...);
  return joined;
}

#endif  // ROXE_TESTS_CHECKSUMS_DIGEST_H_
