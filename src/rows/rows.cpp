#include "rows/rows.h"

#include "rows/tables.h"

namespace roxe {

const RowKernels& Rows() {
  const RowKernels* best = &kPlainRows;
  for (const RowTable& table : kRowTables)
    if (table.is_runnable()) best = table.rows;
  return *best;
}

}  // namespace roxe
