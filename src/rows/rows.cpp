#include "rows/rows.h"

#include "rows/processor.h"

namespace roxe {

const RowKernels& Rows() {
#if defined(__x86_64__)
  if (processor_has_avx512()) return kAvx512Rows;
  if (processor_has_avx2()) return kAvx2Rows;
#elif defined(__aarch64__)
  return kNeonRows;
#endif
  return kPlainRows;
}

}  // namespace roxe
