#include "options.h"

#include <algorithm>

#include "errors.h"

namespace host {
namespace {

// Two names around a word of the parser: "--size excludes --fit".
std::pair<std::string, std::string> around(const std::string& text, const std::string& word) {
  const size_t place = std::min(text.find(word), text.size());
  return {text.substr(0, place), text.substr(std::min(place + word.size(), text.size()))};
}

std::string with_dashes(const std::string& name) {
  return name.starts_with("-") ? name : "--" + name;
}

// What the parser complains about, in our words.
std::string reason(const CLI::App& app, const CLI::ParseError& error) {
  const std::string text = error.what();
  const std::vector<std::string> surplus = app.remaining(true);
  // An option that does not exist is the likeliest reason for one that is missing.
  const auto stranger = std::ranges::find_if(surplus, [](const std::string& argument) {
    return argument.starts_with("--") && argument.size() > 2;
  });
  switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::RequiredError:
      if (stranger != surplus.end()) return "there is no option " + *stranger;
      return text.starts_with("A subcommand") ? "a command is required" : text;
    case CLI::ExitCodes::ExtrasError:
      return (surplus.size() == 1 ? "this argument was not expected: "
                                  : "these arguments were not expected: ") +
             CLI::detail::join(surplus, " ");
    case CLI::ExitCodes::ExcludesError: {
      const auto [one, other] = around(text, " excludes ");
      return one + " and " + other + " exclude each other";
    }
    case CLI::ExitCodes::RequiresError: {
      const auto [one, other] = around(text, " requires ");
      return one + " needs " + other;
    }
    case CLI::ExitCodes::ArgumentMismatch:
      if (text.find("At Most") != text.npos)
        return around(text, ": ").first + " may stand only once";
      if (text.find(" missing") != text.npos) return around(text, ": ").first + " needs a value";
      return with_dashes(around(text, " was ").first) + " takes no value";
    default:
      return text;
  }
}

// Flags are there or not.
void refuse_values_of_flags(CLI::App& app) {
  for (CLI::Option* option : app.get_options({}))
    if (option->get_items_expected_max() == 0 && option->nonpositional())
      option->disable_flag_override();
  for (CLI::App* command : app.get_subcommands({})) refuse_values_of_flags(*command);
}

bool takes_several_names(const CLI::App& command) {
  const auto takes_several = [](const CLI::Option* option) {
    return option->get_allow_extra_args();
  };
  return std::ranges::any_of(command.get_options(), takes_several);
}

// The parser would read "[a,b]" as a and b where a command takes several names.
void keep_brackets(const CLI::App& app, std::vector<std::string>& arguments) {
  const auto is_asked = [&](const CLI::App* command) {
    return std::ranges::find(arguments, command->get_name()) != arguments.end();
  };
  if (std::ranges::none_of(app.get_subcommands(is_asked),
                           [](const CLI::App* command) { return takes_several_names(*command); }))
    return;
  for (std::string& word : arguments)
    if (word.starts_with('[') && word.ends_with(']')) word.insert(0, "./");
}

}  // namespace

void add_options(CLI::App& app, const Options& options) {
  for (const Option& option : options.all()) {
    const std::string& other = option.other_spelling;
    const std::string names = option.name + (other.empty() ? "" : "," + other);
    if (option.kind == Option::Kind::kFlag) {
      app.add_flag_callback(
          names, [use = option.use] { use(""); }, option.meaning);
      continue;
    }
    add_text(app, names, option.form, option.meaning, option.use)
        ->required(option.required)
        ->expected(option.value_optional ? 0 : 1, 1)
        ->default_str(option.otherwise);
  }
  for (const Option& option : options.all()) {
    CLI::Option* added = app.get_option(option.name);
    if (!option.needs.empty()) added->needs(app.get_option(option.needs));
    for (const std::string& other : option.excludes) added->excludes(app.get_option(other));
  }
}

void parse(CLI::App& app, std::vector<std::string> arguments) {
  refuse_values_of_flags(app);
  keep_brackets(app, arguments);
  std::ranges::reverse(arguments);  // the parser takes them from the back
  try {
    app.parse(arguments);
  } catch (const CLI::Success&) {  // help was asked for
    throw;
  } catch (const CLI::ParseError& error) {
    throw UsageError(reason(app, error));
  }
}

std::string meaning_of(const CLI::Option& option) {
  const std::string value = option.get_default_str();
  if (value.empty() || option.get_required()) return option.get_description();
  return option.get_description() + " (default: " + value + ")";
}

}  // namespace host
