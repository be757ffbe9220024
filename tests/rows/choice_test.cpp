// The choice of a table by the processor, with processors that lack this or that.
#include <gtest/gtest.h>

#include <set>
#include <string>

#if defined(__x86_64__)

namespace {
std::set<std::string> features;
bool has_feature(const char* name) { return features.count(name) != 0; }
}  // namespace

// The library's own choice, compiled once more under another name and with another processor.
#define __builtin_cpu_supports has_feature
#define Rows rows_of_processor
#include "rows/rows.cpp"
#undef Rows
#undef __builtin_cpu_supports

namespace {

const std::set<std::string> kSse4 = {"ssse3", "sse4.1"};
const std::set<std::string> kAvx2 = {"ssse3", "sse4.1", "avx2", "fma", "bmi", "bmi2"};
const std::set<std::string> kAvx512 = {"ssse3",    "sse4.1",   "avx2",      "fma",
                                       "bmi",      "bmi2",     "avx512f",   "avx512bw",
                                       "avx512vl", "avx512dq", "avx512vbmi"};

std::string ChosenWith(const std::set<std::string>& available) {
  features = available;
  return roxe::rows_of_processor().name;
}

std::string ChosenWithout(std::set<std::string> available, const std::string& missing) {
  EXPECT_EQ(available.erase(missing), 1u) << missing;
  return ChosenWith(available);
}

TEST(ChoiceOfRows, BestThatTheProcessorHas) {
  EXPECT_EQ(ChosenWith({}), "plain");
  EXPECT_EQ(ChosenWith(kSse4), "sse4");
  EXPECT_EQ(ChosenWith(kAvx2), "avx2");
  EXPECT_EQ(ChosenWith(kAvx512), "avx512");
}

TEST(ChoiceOfRows, EveryFeatureOfATableIsNeeded) {
  for (const char* missing : {"ssse3", "sse4.1"})
    EXPECT_EQ(ChosenWithout(kSse4, missing), "plain") << missing;
  for (const char* missing : {"avx2", "fma", "bmi", "bmi2"}) {
    EXPECT_EQ(ChosenWithout(kAvx2, missing), "sse4") << missing;
    EXPECT_EQ(ChosenWithout(kAvx512, missing), "sse4") << missing;
  }
  for (const char* missing : {"avx512f", "avx512bw", "avx512vl", "avx512dq", "avx512vbmi"})
    EXPECT_EQ(ChosenWithout(kAvx512, missing), "avx2") << missing;
}

}  // namespace

#endif  // defined(__x86_64__)
