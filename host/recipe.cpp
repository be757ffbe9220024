#include "recipe.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "errors.h"
#include "files.h"
#include "metadata.h"
#include "options.h"
#include "output_options.h"
#include "picture_file.h"
#include "text.h"

namespace host {
namespace {

// The part of a line before its comment. A # that begins a colour stands before no space.
std::string_view without_comment(std::string_view line) {
  constexpr std::string_view kSpaces = " \t\r\v\f";
  char quote = 0;
  bool after_space = true;
  const size_t first = line.find_first_not_of(kSpaces);
  if (first != line.npos && line[first] == '#') return "";
  for (size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const bool before_space = i + 1 == line.size() || kSpaces.find(line[i + 1]) != line.npos;
    if (c == '#' && !quote && after_space && before_space) return line.substr(0, i);
    if (quote == c)
      quote = 0;
    else if (!quote && (c == '"' || c == '\''))
      quote = c;
    after_space = kSpaces.find(c) != line.npos;
  }
  return line;
}

// An option of the whole command that people write into a step.
void refuse_option_of_the_output(const std::string& argument) {
  CLI::App app;
  OutputOptions options;
  options.add(app);
  if (app.get_option_no_throw(argument))
    throw UsageError(argument + " belongs on the command line, not in a step");
}

}  // namespace

Step read_step(std::string_view line, const std::string& folder) {
  std::vector<std::string> arguments = words(line);
  if (arguments.empty()) throw UsageError("a step needs an operation");
  const auto entry = std::find_if(operations().begin(), operations().end(),
                                  [&](const auto& known) { return known.name == arguments[0]; });
  if (entry == operations().end()) throw no_such_operation(arguments[0]);

  Step step{entry->make(), {}};
  CLI::App options;
  options.set_help_flag();
  Options own;
  step.operation->add_options(own);
  add_options(options, own);
  add_text(options, "--background", "COLOUR", "",
           [&step](const std::string& text) { step.background = colour(text, "--background"); });
  arguments.erase(arguments.begin());
  try {
    parse(options, arguments);
  } catch (const UsageError& error) {
    for (const std::string& argument : arguments)
      if (argument.starts_with("--") && !options.get_option_no_throw(argument))
        refuse_option_of_the_output(argument);
    throw UsageError(error.what() + std::string(" (see roxe ") + std::string(entry->name) +
                     " --help)");
  }
  step.operation->check(pictures_beside(folder));
  if (step.operation->only_reports()) throw UsageError("--dry-run has no place in a recipe");
  return step;
}

Recipe read_recipe(const std::string& path) {
  std::error_code none;
  if (std::filesystem::is_directory(path, none))
    throw Failure(path + ": is a folder, not a recipe");
  const Bytes file = read_file(path);
  std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  if (text.find('\0') != text.npos) throw UsageError(path + ": is not a text file");
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // some editors begin UTF-8 so
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  const std::string folder = std::filesystem::path(path).parent_path().string();
  Recipe recipe;
  size_t start = 0;
  for (int number = 1; start < text.size(); ++number) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = without_comment(text.substr(start, end - start));
    start = end + 1;
    if (line.find_first_not_of(" \t\r\v\f") == line.npos) continue;
    try {
      recipe.push_back(read_step(line, folder));
    } catch (const UsageError& error) {
      throw UsageError(path + ", line " + std::to_string(number) + ": " + error.what());
    }
  }
  if (recipe.empty()) throw UsageError(path + ": holds no operation");
  return recipe;
}

LoadPicture pictures_beside(const std::string& folder) {
  return [folder](const std::string& path) {
    const std::string found =
        path == kStandardStream ? path : (std::filesystem::path(folder) / path).string();
    Notes notes;  // what such a picture loses on the way is of no interest
    return NamedPicture{found, load_picture(found, {}, notes).picture};
  };
}

std::vector<std::string> masks_of(const Recipe& recipe) {
  std::vector<std::string> masks;
  for (const Step& step : recipe)
    if (const std::string mask = step.operation->mask_file();
        !mask.empty() && mask != kStandardStream)
      masks.push_back(mask);
  return masks;
}

Outcome apply(const Recipe& recipe, Picture& picture, Colour background) {
  Outcome all{"", false};
  for (const Step& step : recipe) {
    const Outcome outcome = step.operation->apply(picture, step.background.value_or(background));
    if (outcome.axes_swapped) swap_axes(picture.metadata);
    if (step.operation->moves_pixels() && outcome.changed) picture.metadata.pixels_moved = true;
    all.sentence += (all.sentence.empty() ? "" : "; ") + outcome.sentence;
    all.changed = all.changed || outcome.changed;
    if (all.note.empty()) all.note = outcome.note;
  }
  return all;
}

}  // namespace host
