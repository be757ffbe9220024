#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/seams.h"

namespace roxe {

// simd_check.cpp, compiled once for each set; ROXE_SIMD_SETS is ROXE_SET(name) for each.
using Fault = void (*)(const char* function, int32_t lane);
#define ROXE_SET(name) void CheckSimd_##name(Fault fault);
ROXE_SIMD_SETS
#undef ROXE_SET

}  // namespace roxe

namespace {

struct Set {
  const char* name;
  void (*check)(roxe::Fault);
};
const Set kSets[] = {
#define ROXE_SET(name) {#name, roxe::CheckSimd_##name},
    ROXE_SIMD_SETS
#undef ROXE_SET
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
