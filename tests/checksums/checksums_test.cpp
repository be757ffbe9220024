#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "checksums/checksum_table.h"
#include "checksums/internal_rows.h"

namespace {

void ExpectCommitted(const std::string& rows, const std::string& name) {
  std::ifstream expected(ROXE_SOURCE_DIR "/tests/checksums/" + name);
  ASSERT_TRUE(expected.is_open());
  std::istringstream table(rows);
  std::string line, wanted;
  while (std::getline(table, line)) {
    ASSERT_TRUE(std::getline(expected, wanted));
    EXPECT_EQ(line, wanted);
  }
  EXPECT_FALSE(std::getline(expected, wanted));
}

TEST(Checksums, AreTheCommittedOnes) { ExpectCommitted(ChecksumTable(kLibrary), "checksums.txt"); }

TEST(Checksums, AreTheCommittedOnesBelowTheOperations) {
  ExpectCommitted(LibraryInternalRows(), "internal.txt");
}

}  // namespace
