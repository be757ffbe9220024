#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/seams.h"

namespace roxe {

// simd_check.cpp, compiled once for each set.
using Fault = void (*)(const char* function, int32_t lane);
#if defined(__x86_64__)
void CheckSimd_sse4(Fault fault);
void CheckSimd_avx2(Fault fault);
void CheckSimd_avx512(Fault fault);
#elif defined(__aarch64__)
void CheckSimd_neon(Fault fault);
#elif defined(__wasm__)
void CheckSimd_wasm(Fault fault);
#endif

}  // namespace roxe

namespace {

struct Set {
  const char* name;
  void (*check)(roxe::Fault);
};
const Set kSets[] = {
#if defined(__x86_64__)
    {"sse4", roxe::CheckSimd_sse4},
    {"avx2", roxe::CheckSimd_avx2},
    {"avx512", roxe::CheckSimd_avx512},
#elif defined(__aarch64__)
    {"neon", roxe::CheckSimd_neon},
#elif defined(__wasm__)
    {"wasm", roxe::CheckSimd_wasm},
#endif
};

std::set<std::string> faults;

TEST(Simd, EveryFunctionOfEverySetIsALoopOverItsLanes) {
  int32_t checked = 0;
  for (const roxe::RowKernels* table : RunnableTables())
    for (const Set& set : kSets) {
      if (std::string(set.name) != table->name) continue;
      faults.clear();
      set.check([](const char* function, int32_t lane) {
        faults.insert(std::string(function) + " in lane " + std::to_string(lane));
      });
      for (const std::string& fault : faults) ADD_FAILURE() << set.name << ": " << fault;
      ++checked;
    }
  EXPECT_EQ(checked + 1, static_cast<int32_t>(RunnableTables().size()));  // all but the plain one
}

}  // namespace
