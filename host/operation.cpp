#include "operation.h"

namespace host {

const std::vector<OperationEntry>& operations() {
  static const std::vector<OperationEntry> all = [] {
    std::vector<OperationEntry> joined;
    for (const auto& family :
         {geometry_operations(), blur_operations(), colour_operations(), tone_operations()})
      joined.insert(joined.end(), family.begin(), family.end());
    return joined;
  }();
  return all;
}

}  // namespace host
