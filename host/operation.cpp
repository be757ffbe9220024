#include "operation.h"

#include <algorithm>
#include <array>

namespace host {
namespace {

// What people look for in an editor of photographs, and ROXE leaves to others.
std::string hint(std::string_view name) {
  constexpr std::array kMissing = {"crop", "resize", "scale", "thumbnail"};
  if (std::ranges::find(kMissing, name) == kMissing.end()) return "";
  return ": ROXE neither crops nor resizes (but straighten and rotate have --crop)";
}

}  // namespace

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

UsageError no_such_command(const std::string& name) {
  const std::string why = hint(name);
  return UsageError("there is no command '" + name + "'" +
                    (why.empty() ? " (see roxe --help)" : why));
}

UsageError no_such_operation(const std::string& name) {
  return UsageError("there is no operation '" + name + "'" + hint(name));
}

}  // namespace host
