#include "support/seams.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "frame/platform_memory.h"
#include "rows/tables.h"

namespace {

const roxe::RowKernels* rows_in_use = &roxe::kPlainRows;

struct Memory {
  std::vector<std::pair<void*, size_t>> blocks;  // those alive, and their sizes
  size_t live_bytes = 0, peak_bytes = 0;
  int64_t allocations = 0, fail_at = 0;
};
Memory memory;

}  // namespace

BlockSource block_source = {[](size_t size) { return std::calloc(1, size); }, std::free};

std::vector<const roxe::RowKernels*> RunnableTables() {
  std::vector<const roxe::RowKernels*> tables;
  for (const roxe::RowTable& table : roxe::kRowTables)
    if (table.is_runnable()) tables.push_back(table.rows);
  return tables;
}

bool UseRows(const char* name) {
  for (const roxe::RowKernels* table : RunnableTables()) {
    if (std::strcmp(table->name, name) != 0) continue;
    rows_in_use = table;
    return true;
  }
  return false;
}

RowsInstead::RowsInstead(const roxe::RowKernels& rows) : before_(rows_in_use) {
  rows_in_use = &rows;
}
RowsInstead::~RowsInstead() { rows_in_use = before_; }

AllocationWatch::AllocationWatch(int64_t fail_at) {
  memory = Memory();
  memory.fail_at = fail_at;
}
AllocationWatch::~AllocationWatch() { memory.fail_at = 0; }
int64_t AllocationWatch::allocations() const { return memory.allocations; }
int64_t AllocationWatch::live_blocks() const { return static_cast<int64_t>(memory.blocks.size()); }
size_t AllocationWatch::peak_bytes() const { return memory.peak_bytes; }

namespace roxe {

const RowKernels& Rows() { return *rows_in_use; }

void* platform_allocate(size_t size) {
  if (++memory.allocations == memory.fail_at) {
    errno = ENOMEM;
    return nullptr;
  }
  void* block = block_source.allocate(size);
  if (!block) return nullptr;
  memory.blocks.emplace_back(block, size);
  memory.live_bytes += size;
  memory.peak_bytes = std::max(memory.peak_bytes, memory.live_bytes);
  return block;
}

void platform_release(void* block) {
  if (!block) return;
  const auto found = std::find_if(memory.blocks.begin(), memory.blocks.end(),
                                  [&](const auto& known) { return known.first == block; });
  if (found != memory.blocks.end()) {  // else: obtained before the present watch began
    memory.live_bytes -= found->second;
    memory.blocks.erase(found);
  }
  block_source.release(block);
}

}  // namespace roxe
