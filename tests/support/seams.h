// What the tests link in place of the product's own choices: the table of rows in use, and memory
// that can be counted and made to fail.
#ifndef ROXE_TESTS_SUPPORT_SEAMS_H_
#define ROXE_TESTS_SUPPORT_SEAMS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "rows/rows.h"

// The tables that this machine can run, the plain one first.
std::vector<const roxe::RowKernels*> RunnableTables();

// Chooses the table that Rows() gives; returns false if the machine cannot run one of that name.
bool UseRows(const char* name);

// Rows() gives another table while one is alive.
class RowsInstead {
 public:
  explicit RowsInstead(const roxe::RowKernels& rows);
  ~RowsInstead();
  RowsInstead(const RowsInstead&) = delete;
  RowsInstead& operator=(const RowsInstead&) = delete;

 private:
  const roxe::RowKernels* before_;
};

// Where the library's blocks come from, zero-filled or null: the C library, unless it is changed.
struct BlockSource {
  void* (*allocate)(size_t size);
  void (*release)(void* block);
};
extern BlockSource block_source;

// Counts blocks, and makes one allocation fail: fail_at = 1 is the next one. While one is alive.
class AllocationWatch {
 public:
  explicit AllocationWatch(int64_t fail_at = 0);
  ~AllocationWatch();
  int64_t allocations() const;  // tried since the watch began
  int64_t live_blocks() const;  // not yet released
  size_t peak_bytes() const;    // largest sum of the sizes of live blocks
};

#endif  // ROXE_TESTS_SUPPORT_SEAMS_H_
