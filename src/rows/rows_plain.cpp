#include "frame/numbers.h"
#include "rows/loop_hint.h"
#include "rows/rows.h"

namespace roxe {
namespace {
#include "rows/rows_plain.inl"
}  // namespace

constexpr RowKernels kPlainRows = plain_rows("plain");

}  // namespace roxe
