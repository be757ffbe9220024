// Calls every target of the library once with every file of CORPUS/TARGET: replay_library CORPUS.
#include "fuzz/replay.h"
#include "fuzz/targets.h"

int main(int, char** argv) {
  for (const fuzz::Target& target : fuzz::kTargets) {
    const size_t count = fuzz::replay(std::filesystem::path(argv[1]) / target.name, target.run);
    std::printf("%s: %zu inputs replayed\n", target.name, count);
    if (count == 0) return 1;
  }
  return 0;
}
