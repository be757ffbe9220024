#include "help.h"

#include <algorithm>
#include <memory>

#include "options.h"

namespace host {
namespace {

class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    std::string text;
    if (option->get_items_expected_min() == 0 && option->get_items_expected_max() > 0)
      text = " [" + option->get_type_name() + "]";
    else if (!option->get_type_name().empty())
      text = " " + option->get_type_name();
    if (option->get_expected_max() > 1) text += " ...";
    if (option->get_required()) text += " (required)";
    return text;
  }
  std::string make_option_desc(const CLI::Option* option) const override {
    return meaning_of(*option);
  }
};

std::vector<const CLI::App*> visible_commands(const CLI::App& program) {
  return program.get_subcommands(
      [](const CLI::App* command) { return !command->get_group().empty(); });
}

}  // namespace

void set_up_help(CLI::App& program) {
  const auto formatter = std::make_shared<HelpFormatter>();
  formatter->label("Positionals", "Arguments");
  formatter->label("SUBCOMMAND", "COMMAND");
  formatter->column_width(32);
  program.formatter(formatter);
  program.set_help_flag("-h,--help", "print this help");
  for (CLI::App* command : program.get_subcommands({})) {
    command->formatter(formatter);
    command->set_help_flag("-h,--help", "print this help");
  }
}

const CLI::App* find_command(const CLI::App& program, const std::string& name) {
  const auto found =
      program.get_subcommands([&](const CLI::App* command) { return command->check_name(name); });
  return found.empty() ? nullptr : found[0];
}

// -------------------------------------------------------------------------------- the manual page

namespace {

// Text that troff takes literally.
std::string troff(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else if (c == '\'' && result.empty()) {
      result += "\\&'";
    } else if (c == '.' && result.empty()) {
      result += "\\&.";
    } else {
      result += c;
    }
  }
  return result;
}

std::string options_in_troff(const CLI::App& app) {
  std::string text;
  for (const CLI::Option* option : app.get_options({})) {
    if (option == app.get_help_ptr()) continue;
    const std::string name = option->get_name(option->get_positional(), !option->get_positional());
    text += ".TP\n\\fB" + troff(name) + "\\fR";
    if (!option->get_type_name().empty()) text += " \\fI" + troff(option->get_type_name()) + "\\fR";
    text +=
        "\n" + troff(meaning_of(*option)) + (option->get_required() ? " (required)" : "") + "\n";
  }
  return text;
}

std::string usage(const CLI::App& command) {
  std::string text = "roxe " + command.get_name();
  for (const CLI::Option* option : command.get_options({}))
    if (option->get_positional()) {
      const std::string name =
          option->get_name(true) + (option->get_expected_max() > 1 ? " ..." : "");
      text += option->get_required() ? " " + name : " [" + name + "]";
    }
  return text + " [OPTIONS]";
}

}  // namespace

std::string manual(const CLI::App& program) {
  std::string page = ".TH ROXE 1 \"\" \"" + troff(program.version()) +
                     "\" \"User Commands\"\n.SH NAME\nroxe \\- edits photographs\n.SH SYNOPSIS\n";
  for (const CLI::App* command : visible_commands(program))
    page += ".br\n" + troff(usage(*command)) + "\n";
  page += ".SH DESCRIPTION\n" + troff(program.get_description()) + "\n";
  page += ".SH OPTIONS\n" + options_in_troff(program);
  page += ".SH COMMANDS\n";
  for (const CLI::App* command : visible_commands(program))
    page += ".SS " + troff(usage(*command)) + "\n" + troff(command->get_description()) + ".\n" +
            options_in_troff(*command);
  return page + ".SH \"EXIT STATUS\"\n" + troff(program.get_footer()) + "\n";
}

// ------------------------------------------------------------------------------------- completion

std::string completions(const CLI::App& program, const std::vector<std::string>& words) {
  std::string lines;
  const auto offer = [&](const std::string& value, const std::string& meaning) {
    lines += value + "\t" + meaning + "\n";
  };
  const std::string& last = words.back();
  if (words.size() == 1 && !last.starts_with("-")) {
    for (const CLI::App* command : visible_commands(program))
      offer(command->get_name(), command->get_description());
    return lines;
  }

  const CLI::App* command = words.size() > 1 ? find_command(program, words[0]) : nullptr;
  const CLI::App& app = command ? *command : program;
  const auto offer_values = [&](const CLI::Option& option) {
    const std::string form = option.get_type_name();
    if (form.find('|') == form.npos) return;
    for (const std::string& value : CLI::detail::split(form, '|')) offer(value, "");
  };
  // After an option that takes a value comes the value.
  if (words.size() > 1)
    if (const CLI::Option* option = app.get_option_no_throw(words[words.size() - 2]);
        option && option->nonpositional() && option->get_items_expected_max() > 0) {
      offer_values(*option);
      if (option->get_items_expected_min() > 0) return lines;
    }
  if (last.starts_with("-")) {
    for (const CLI::Option* option : app.get_options({}))
      for (const std::string& name : option->get_lnames())
        if (option->nonpositional()) offer("--" + name, meaning_of(*option));
    return lines;
  }
  for (const CLI::Option* option : app.get_options({}))
    if (option->get_positional()) offer_values(*option);
  if (app.check_name("help"))
    for (const CLI::App* command : visible_commands(program))
      offer(command->get_name(), command->get_description());
  return lines;
}

}  // namespace host
