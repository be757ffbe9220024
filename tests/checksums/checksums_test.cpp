#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "checksums/checksum_table.h"

namespace {

TEST(Checksums, AreTheCommittedOnes) {
  std::ifstream file(ROXE_SOURCE_DIR "/tests/checksums/checksums.txt");
  std::stringstream committed;
  committed << file.rdbuf();
  ASSERT_FALSE(committed.str().empty());

  std::istringstream expected(committed.str()), table(ChecksumTable(kLibrary));
  std::string line, wanted;
  while (std::getline(table, line)) {
    ASSERT_TRUE(std::getline(expected, wanted));
    EXPECT_EQ(line, wanted);
  }
  EXPECT_FALSE(std::getline(expected, wanted));
}

}  // namespace
