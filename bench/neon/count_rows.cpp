// Runs one of the rows of bench/rows under one table: count_rows ROW TABLE prints its pixels and
// calls it twice, each time between two markers that an emulator's log shows.
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "rows/tables.h"
#include "support/bench.h"

extern "C" __attribute__((noinline)) void row_begins() { __asm__ volatile("" ::: "memory"); }
extern "C" __attribute__((noinline)) void row_ends() { __asm__ volatile("" ::: "memory"); }

namespace {

struct Row {
  std::string name;
  int32_t pixels;
  std::function<void(const roxe::RowKernels&)> run;
};
std::vector<Row>& rows() {
  static std::vector<Row> all;
  return all;
}

}  // namespace

void bench::row(const std::string& name, int32_t pixels,
                std::function<void(const roxe::RowKernels&)> run) {
  rows().push_back({name, pixels, std::move(run)});
}

int main(int argc, char** argv) {
  if (argc == 1) {
    for (const Row& row : rows()) std::puts(row.name.c_str());
    return 0;
  }
  for (const Row& row : rows())
    for (const roxe::RowTable& table : roxe::kRowTables) {
      if (argc != 3 || row.name != argv[1] || std::strcmp(table.rows->name, argv[2]) != 0) continue;
      std::printf("%d\n", row.pixels);
      for (int call = 0; call < 2; ++call) {
        row_begins();
        row.run(*table.rows);
        row_ends();
      }
      return 0;
    }
  return 1;
}
