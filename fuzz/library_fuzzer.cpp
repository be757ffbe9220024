// libFuzzer's entry to one target of the library, whose name is ROXE_FUZZ_TARGET.
#include <cstring>

#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (const fuzz::Target& target : fuzz::kTargets)
    if (std::strcmp(target.name, ROXE_FUZZ_TARGET) == 0) target.run(data, size);
  return 0;
}
