#include "recipe.h"

#include <algorithm>
#include <string_view>

#include "errors.h"
#include "files.h"
#include "options.h"
#include "text.h"

namespace host {
namespace {

std::unique_ptr<Operation> read_line(std::string_view line) {
  std::vector<std::string> arguments = words(line);
  const auto entry = std::find_if(operations().begin(), operations().end(),
                                  [&](const auto& known) { return known.name == arguments[0]; });
  if (entry == operations().end()) throw no_such_operation(arguments[0]);

  auto operation = entry->make();
  CLI::App options;
  options.set_help_flag();
  operation->add_options(options);
  arguments.erase(arguments.begin());
  parse(options, arguments);
  operation->check();
  if (operation->only_reports()) throw UsageError("--dry-run has no place in a recipe");
  return operation;
}

}  // namespace

Recipe read_recipe(const std::string& path) {
  const Bytes file = read_file(path);
  std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  if (text.find('\0') != text.npos) throw UsageError(path + ": is not a text file");
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // some editors begin UTF-8 so
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  Recipe recipe;
  size_t start = 0;
  for (int number = 1; start < text.size(); ++number) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = text.substr(start, end - start);
    start = end + 1;
    const size_t first = line.find_first_not_of(" \t\r\v\f");
    if (first == line.npos || line[first] == '#') continue;
    try {
      recipe.push_back(read_line(line));
    } catch (const UsageError& error) {
      throw UsageError(path + ", line " + std::to_string(number) + ": " + error.what());
    }
  }
  if (recipe.empty()) throw UsageError(path + ": holds no operation");
  return recipe;
}

}  // namespace host
