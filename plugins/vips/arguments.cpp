#include "vips/arguments.h"

#include <climits>
#include <cmath>
#include <cstdlib>

#include "shared/request.h"
#include "text.h"

namespace plugins {
namespace {

using host::Option;

int whole_default(const Option& option) { return std::atoi(option.otherwise.c_str()); }
double decimal_default(const Option& option) {
  return g_ascii_strtod(option.otherwise.c_str(), nullptr);
}

// What the help of the tool says, in one line.
std::string description(const Option& option) {
  std::string remarks;
  const auto add = [&](const std::string& remark) {
    remarks += (remarks.empty() ? " (" : ", ") + remark;
  };
  const std::string range = std::to_string(option.low) + " to " + std::to_string(option.high);
  const bool is_number =
      option.kind == Option::Kind::kWholeNumber || option.kind == Option::Kind::kDecimalNumber;
  if (is_number && option.meaning.find(range) == std::string::npos) add(range);
  if (option.kind == Option::Kind::kText) add(option.form);
  if (option.required) add("required");
  if (option.kind == Option::Kind::kText && !option.otherwise.empty() && !option.value_optional)
    add("default: " + option.otherwise);
  return option.meaning + (remarks.empty() ? "" : remarks + ")");
}

GParamSpec* specification(const Option& option, const char* name) {
  const std::string text = description(option);
  const char* meaning = text.c_str();
  switch (option.kind) {
    // A range that GObject knows would make it drop a value outside with a warning and draw without
    // it. So it knows none, and the operation refuses with a sentence.
    case Option::Kind::kWholeNumber:
      return g_param_spec_int(name, name, meaning, INT_MIN, INT_MAX, whole_default(option),
                              G_PARAM_READWRITE);
    case Option::Kind::kDecimalNumber:
      return g_param_spec_double(name, name, meaning, -INFINITY, INFINITY, decimal_default(option),
                                 G_PARAM_READWRITE);
    case Option::Kind::kFlag:
      return g_param_spec_boolean(name, name, meaning, FALSE, G_PARAM_READWRITE);
    case Option::Kind::kPicture:
      return g_param_spec_object(name, name, meaning, VIPS_TYPE_IMAGE, G_PARAM_READWRITE);
    case Option::Kind::kText:
      break;
  }
  return g_param_spec_string(name, name, meaning, nullptr, G_PARAM_READWRITE);
}

// How sentences call an image.
std::string name_of(const VipsImage* image) {
  const std::string name = image->filename ? image->filename : "";
  // libvips calls what is no file temp-7.
  const bool is_number = name.find_first_not_of("0123456789", 5) == std::string::npos;
  return name.empty() || (name.starts_with("temp-") && is_number) ? "in memory" : name;
}

// A flag that is off, and null, which programs in C may give.
bool is_nothing(const Option& option, const Value& value) {
  switch (option.kind) {
    case Option::Kind::kFlag:
      return !value.flag;
    case Option::Kind::kPicture:
      return !value.picture;
    case Option::Kind::kText:
      return !value.text;
    default:
      return false;
  }
}

std::string text_of(const Option& option, const Value& value) {
  switch (option.kind) {
    case Option::Kind::kWholeNumber:
      return std::to_string(value.whole);
    case Option::Kind::kDecimalNumber:
      return host::shortest(value.decimal);
    case Option::Kind::kFlag:
      return "";
    case Option::Kind::kPicture:
      return name_of(value.picture);
    case Option::Kind::kText:
      break;
  }
  return value.text;
}

}  // namespace

void declare_arguments(VipsObjectClass* type, const std::vector<Option>& options, size_t offset) {
  int priority = 10;  // after the pictures
  for (const Option& option : options) {
    const auto declare = [&](const std::string& spelling, int flags) {
      GParamSpec* spec = specification(option, identifier(spelling, '_').c_str());
      g_object_class_install_property(G_OBJECT_CLASS(type),
                                      static_cast<guint>(vips_argument_get_id()), spec);
      vips_object_class_install_argument(type, spec, VipsArgumentFlags(flags), priority++,
                                         static_cast<guint>(offset));
    };
    declare(option.name, VIPS_ARGUMENT_OPTIONAL_INPUT);
    if (!option.other_spelling.empty())  // understood and not listed
      declare(option.other_spelling, VIPS_ARGUMENT_OPTIONAL_INPUT | VIPS_ARGUMENT_DEPRECATED);
    offset += sizeof(Value);
  }
}

void set_defaults(const std::vector<Option>& options, Value* values) {
  for (size_t i = 0; i < options.size(); ++i) {
    if (options[i].kind == Option::Kind::kWholeNumber) values[i].whole = whole_default(options[i]);
    if (options[i].kind == Option::Kind::kDecimalNumber)
      values[i].decimal = decimal_default(options[i]);
  }
}

std::map<std::string, std::string> given_arguments(VipsObject* call,
                                                   const std::vector<Option>& options,
                                                   const Value* values) {
  std::map<std::string, std::string> given;
  for (size_t i = 0; i < options.size(); ++i) {
    const Option& option = options[i];
    const auto is_set = [&](const std::string& spelling) {
      return !spelling.empty() &&
             vips_object_argument_isset(call, identifier(spelling, '-').c_str());
    };
    if (!is_set(option.name) && !is_set(option.other_spelling)) continue;
    if (!is_nothing(option, values[i])) given[option.name] = text_of(option, values[i]);
  }
  return given;
}

}  // namespace plugins
