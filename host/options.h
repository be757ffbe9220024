// Options whose text becomes a value at once, with sentences of our own about what is wrong.
//
// The table of options that the parser holds is the only one: help, manual page and completion are
// made from it. An option that may be left out says in its default what happens then; where the
// form of an option is a list such as fit|free, these are its values.
#ifndef ROXE_HOST_OPTIONS_H_
#define ROXE_HOST_OPTIONS_H_

#include <cstdint>
#include <functional>
#include <string>

#include <CLI/CLI.hpp>

#include "option_table.h"
#include "text.h"

namespace host {

// use receives the text and throws UsageError if it makes no sense.
inline CLI::Option* add_text(CLI::App& app, const std::string& name, const std::string& form,
                             const std::string& meaning,
                             const std::function<void(const std::string&)>& use) {
  return app.add_option_function<std::string>(name, use, meaning)->type_name(form);
}

inline CLI::Option* add_whole_number(CLI::App& app, const std::string& name, int32_t& value,
                                     int32_t low, int32_t high, const std::string& meaning) {
  const auto store = [&value, name, low, high](const std::string& text) {
    value = whole_number(text, low, high, name);
  };
  return add_text(app, name, "N", meaning, store)->default_str(std::to_string(value));
}

// The name of a file or folder, or several of them. None is empty.
template <typename Names>
CLI::Option* add_names(CLI::App& app, const std::string& name, const std::string& form,
                       Names& names, const std::string& meaning) {
  return app.add_option(name, names, meaning)
      ->type_name(form)
      ->each([name](const std::string& text) { file_name(text, name); });
}

// choices: "fit|free"
inline CLI::Option* add_choice(CLI::App& app, const std::string& name, std::string& value,
                               const std::string& choices, const std::string& meaning) {
  const auto store = [&value, name, choices](const std::string& text) {
    value = choice(text, choices, name);
  };
  return add_text(app, name, choices, meaning, store)->default_str(value);
}

// The options of an operation, whatever else the command has.
void add_options(CLI::App& app, const Options& options);

// Takes arguments in their order. Throws UsageError with a sentence about what is wrong.
void parse(CLI::App& app, std::vector<std::string> arguments);

// "repeat (default: black)": what an option does, and what happens without it.
std::string meaning_of(const CLI::Option& option);

}  // namespace host

#endif  // ROXE_HOST_OPTIONS_H_
