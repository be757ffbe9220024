// Calls a fuzz target once with every file of the folders named on the command line.
#include "fuzz/replay.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  size_t count = 0;
  for (int i = 1; i < argc; ++i)
    count += fuzz::replay(
        argv[i], [](const uint8_t* data, size_t size) { LLVMFuzzerTestOneInput(data, size); });
  std::printf("%zu inputs replayed\n", count);
  return count > 0 ? 0 : 1;
}
