// Options whose text becomes a value at once, with sentences of our own about what is wrong.
#ifndef ROXE_HOST_OPTIONS_H_
#define ROXE_HOST_OPTIONS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

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
  return add_text(app, name, "N", meaning, store);
}

inline CLI::Option* add_decimal_number(CLI::App& app, const std::string& name, double& value,
                                       int32_t low, int32_t high, const std::string& meaning) {
  const auto store = [&value, name, low, high](const std::string& text) {
    value = decimal_number(text, low, high, name);
  };
  return add_text(app, name, "NUMBER", meaning, store);
}

// What the parser complains about. It would list surplus arguments backwards.
inline std::string reason(const CLI::App& app, const CLI::ParseError& error) {
  if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError)) return error.what();
  const std::vector<std::string> surplus = app.remaining(true);
  return (surplus.size() == 1 ? "this argument was not expected: "
                              : "these arguments were not expected: ") +
         CLI::detail::join(surplus, " ");
}

}  // namespace host

#endif  // ROXE_HOST_OPTIONS_H_
