#include "option_table.h"

#include <utility>

#include "text.h"

namespace host {

Option& Options::whole_number(const std::string& name, int32_t& value, int32_t low, int32_t high,
                              const std::string& meaning) {
  Option& option = text(name, "N", meaning, [&value, name, low, high](const std::string& text) {
    value = host::whole_number(text, low, high, name);
  });
  option.kind = Option::Kind::kWholeNumber;
  option.low = low;
  option.high = high;
  option.otherwise = std::to_string(value);
  return option;
}

Option& Options::decimal_number(const std::string& name, double& value, int32_t low, int32_t high,
                                const std::string& meaning) {
  Option& option =
      text(name, "NUMBER", meaning, [&value, name, low, high](const std::string& text) {
        value = host::decimal_number(text, low, high, name);
      });
  option.kind = Option::Kind::kDecimalNumber;
  option.low = low;
  option.high = high;
  option.otherwise = shortest(value);
  return option;
}

Option& Options::text(const std::string& name, const std::string& form, const std::string& meaning,
                      std::function<void(const std::string&)> use) {
  return all_.emplace_back(Option{Option::Kind::kText, name, form, meaning, std::move(use)});
}

Option& Options::flag(const std::string& name, bool& value, const std::string& meaning) {
  Option& option = text(name, "", meaning, [&value](const std::string&) { value = true; });
  option.kind = Option::Kind::kFlag;
  return option;
}

Option& Options::picture(const std::string& name, std::string& path, const std::string& meaning) {
  Option& option = text(name, "FILE", meaning,
                        [&path, name](const std::string& text) { path = file_name(text, name); });
  option.kind = Option::Kind::kPicture;
  return option;
}

}  // namespace host
