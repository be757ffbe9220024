#include <wasm_simd128.h>

#include "frame/numbers.h"
#include "rows/loop_hint.h"
#include "rows/rows.h"

namespace roxe {
namespace {
#include "rows/rows_plain.inl"
#include "rows/simd/wasm.inl"
#include "rows/rows_narrow.inl"
#include "rows/rows_wide.inl"
}  // namespace

extern constexpr RowKernels kWasmRows = wide_rows("wasm");

}  // namespace roxe
