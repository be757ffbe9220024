// The inputs of a folder, one after the other.
#ifndef ROXE_FUZZ_REPLAY_H_
#define ROXE_FUZZ_REPLAY_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace fuzz {

// Calls target(data, size) with every file of a folder; returns how many there are.
template <class Target>
size_t replay(const std::filesystem::path& folder, const Target& target) {
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    target(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    ++count;
  }
  return count;
}

}  // namespace fuzz

#endif  // ROXE_FUZZ_REPLAY_H_
