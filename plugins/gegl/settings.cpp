#include "settings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

#include "shared/request.h"
#include "text.h"

namespace roxe_gegl {
namespace {

using host::Option;

constexpr GParamFlags kFlags =
    static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_CONSTRUCT | GEGL_PARAM_PAD_INPUT);

// Options of several numbers, by their form.
struct Form {
  std::string_view form;
  std::vector<std::string> parts;
};
const std::array kForms = {
    Form{"X,Y", {"x", "y"}},
    Form{"X1,Y1,X2,Y2", {"x1", "y1", "x2", "y2"}},
    Form{"X1,Y1,...,X4,Y4", {"x1", "y1", "x2", "y2", "x3", "y3", "x4", "y4"}},
    Form{"X,Y,W,H", {"x", "y", "width", "height"}},
    Form{"WxH", {"width", "height"}},
};

// What a slider spans where the range of the option is wider than a hand can use. Larger numbers
// can be typed. The gamma gives small numbers the larger part of the slider.
struct Slider {
  std::string_view option;
  int low, high;
  double gamma;
};
constexpr std::array kSliders = {
    Slider{"--angle", -180, 180, 1},    Slider{"--radius", 1, 300, 2},
    Slider{"--mask-radius", 1, 300, 2}, Slider{"--red", -20, 20, 1},
    Slider{"--green", -20, 20, 1},      Slider{"--blue", -20, 20, 1},
    Slider{"--dark", -20, 20, 1},
};

Slider slider_of(const Option& option) {
  for (const Slider& slider : kSliders)
    if (slider.option == option.name) return slider;
  return {option.name, option.low, option.high, 1};
}

// "--mask-radius": "mask-radius"
std::string property_name(const std::string& option) { return plugins::identifier(option, '-'); }

// "mask-radius": "Mask radius"
std::string label(std::string name) {
  std::ranges::replace(name, '-', ' ');
  name[0] = g_ascii_toupper(name[0]);
  return name;
}

bool is_a_choice(const std::string& form) {
  return form.find('|') != std::string::npos &&
         std::ranges::all_of(form, [](char c) { return c == '|' || g_ascii_islower(c); });
}

std::vector<std::string> split(const std::string& form) {
  gchar** parts = g_strsplit(form.c_str(), "|", -1);
  std::vector<std::string> words(parts, parts + g_strv_length(parts));
  g_strfreev(parts);
  return words;
}

// A type of GLib for these words, kept as long as the program runs, as all its types are.
GType choice_type(const std::string& option, const std::vector<std::string>& words) {
  const std::string name = "Roxe" + label(property_name(option));
  if (const GType known = g_type_from_name(name.c_str())) return known;
  auto* values = g_new0(GEnumValue, words.size() + 1);
  for (size_t i = 0; i < words.size(); ++i)
    values[i] = {static_cast<gint>(i), g_strdup(label(words[i]).c_str()),
                 g_strdup(words[i].c_str())};
  return g_enum_register_static(name.c_str(), values);
}

void set_key(GParamSpec* spec, const char* key, const std::string& value) {
  gegl_param_spec_set_property_key(spec, key, value.c_str());
}

void set_unit(GParamSpec* spec, const Option& option) {
  if (option.form == "DEG") set_key(spec, "unit", "degree");
  if (option.form == "PCT") set_key(spec, "unit", "percent");
}

GParamSpec* whole_number_spec(const Option& option) {
  const std::string name = property_name(option.name);
  const Slider slider = slider_of(option);
  GParamSpec* spec = gegl_param_spec_int(name.c_str(), label(name).c_str(), option.meaning.c_str(),
                                         option.low, option.high, std::stoi(option.otherwise),
                                         slider.low, slider.high, slider.gamma, kFlags);
  gegl_param_spec_int_set_steps(GEGL_PARAM_SPEC_INT(spec), 1, 10);
  set_unit(spec, option);
  return spec;
}

GParamSpec* decimal_number_spec(const Option& option) {
  const std::string name = property_name(option.name);
  const Slider slider = slider_of(option);
  GParamSpec* spec = gegl_param_spec_double(
      name.c_str(), label(name).c_str(), option.meaning.c_str(), option.low, option.high,
      std::stod(option.otherwise), slider.low, slider.high, slider.gamma, kFlags);
  gegl_param_spec_double_set_steps(GEGL_PARAM_SPEC_DOUBLE(spec), 0.1, 1);
  gegl_param_spec_double_set_digits(GEGL_PARAM_SPEC_DOUBLE(spec), 2);
  set_unit(spec, option);
  return spec;
}

GParamSpec* flag_spec(const Option& option) {
  const std::string name = property_name(option.name);
  return g_param_spec_boolean(name.c_str(), label(name).c_str(), option.meaning.c_str(), FALSE,
                              kFlags);
}

// An option whose value may be left out is off by the first word.
GParamSpec* choice_spec(const Option& option, const std::vector<std::string>& words) {
  const std::string name = property_name(option.name);
  const auto found = std::ranges::find(words, option.otherwise);
  const int value = option.value_optional ? 0 : static_cast<int>(found - words.begin());
  return gegl_param_spec_enum(name.c_str(), label(name).c_str(), option.meaning.c_str(),
                              choice_type(option.name, words), value, kFlags);
}

GParamSpec* colour_spec(const Option& option) {
  const std::string name = property_name(option.name);
  return gegl_param_spec_color_from_string(name.c_str(), label(name).c_str(),
                                           option.meaning.c_str(), "black", kFlags);
}

// Numbers of pixels: places on an axis, which a host lets people point at, or lengths.
GParamSpec* part_spec(const std::string& name, const std::string& part, const Option& option) {
  const bool is_length = part == "width" || part == "height";
  constexpr int kFarthest = 1'000'000'000;
  GParamSpec* spec =
      gegl_param_spec_int(name.c_str(), label(name).c_str(), option.meaning.c_str(),
                          is_length ? 0 : -kFarthest, kFarthest, 0, 0, 10'000, 1, kFlags);
  set_key(spec, "unit", is_length ? "pixel-distance" : "pixel-coordinate");
  set_key(spec, "axis", part[0] == 'x' || part == "width" ? "x" : "y");
  return spec;
}

// No colour is the default one, opaque black.
host::Colour bytes_of(GeglColor* colour, const Babl* space, uint8_t* opacity = nullptr) {
  std::array<uint8_t, 4> rgba = {0, 0, 0, 255};
  if (colour)
    gegl_color_get_pixel(colour, babl_format_with_space("R'G'B'A u8", space), rgba.data());
  if (opacity) *opacity = rgba[3];
  return {rgba[0], rgba[1], rgba[2]};
}

}  // namespace

// ------------------------------------------------------------------------------------------ values

Values::~Values() {
  for (GValue& value : values_)
    if (G_IS_VALUE(&value)) g_value_unset(&value);
}

void Values::set(size_t property, const GValue& value) {
  GValue& own = values_[property];
  if (!G_IS_VALUE(&own)) g_value_init(&own, G_VALUE_TYPE(&value));
  g_value_copy(&value, &own);
}

void Values::get(size_t property, GValue& value) const {
  if (G_IS_VALUE(&values_[property])) g_value_copy(&values_[property], &value);
}

GeglColor* Values::colour(size_t property) const {
  return GEGL_COLOR(g_value_get_object(&values_[property]));
}

// ---------------------------------------------------------------------------------------- settings

Settings::Settings(const std::vector<Option>& options) {
  for (const Option& option : options) {
    Setting setting = setting_of(option);
    setting.first = count_;
    count_ += properties_of(setting);
    has_picture_ |= setting.kind == Kind::kPicture;
    settings_.push_back(std::move(setting));
  }
}

Settings::Setting Settings::setting_of(const Option& option) {
  switch (option.kind) {
    case Option::Kind::kWholeNumber:
      return {Kind::kWholeNumber, option, 0, {}};
    case Option::Kind::kDecimalNumber:
      return {Kind::kDecimalNumber, option, 0, {}};
    case Option::Kind::kFlag:
      return {Kind::kFlag, option, 0, {}};
    case Option::Kind::kPicture:
      return {Kind::kPicture, option, 0, {}};
    case Option::Kind::kText:
      break;
  }
  if (is_a_choice(option.form)) {
    std::vector<std::string> words = split(option.form);
    if (option.value_optional) words.insert(words.begin(), "none");
    return {Kind::kChoice, option, 0, std::move(words)};
  }
  for (const Form& form : kForms)
    if (form.form == option.form) return {Kind::kParts, option, 0, form.parts};
  g_assert(option.form == "COLOUR");
  return {Kind::kColour, option, 0, {}};
}

size_t Settings::properties_of(const Setting& setting) {
  if (setting.kind == Kind::kPicture) return 0;
  if (setting.kind == Kind::kParts) return setting.words.size() + !setting.option.required;
  return 1;
}

// When the properties of an option have an effect, in the words that hosts know: "" is always.
std::string Settings::condition_on(const std::string& option) const {
  for (const Setting& other : settings_)
    if (std::ranges::count(other.option.excludes, option)) {
      const std::string name = property_name(other.option.name);
      return other.kind == Kind::kChoice ? name + " {" + other.words[0] + "}" : "! " + name;
    }
  return "";
}

void Settings::install(GObjectClass* object_class) const {
  guint number = 0;
  const auto install = [&](GParamSpec* spec, const std::string& condition) {
    if (!condition.empty()) set_key(spec, "sensitive", condition);
    g_object_class_install_property(object_class, ++number, spec);
  };
  for (const Setting& setting : settings_) {
    const Option& option = setting.option;
    const std::string name = property_name(option.name), condition = condition_on(option.name);
    switch (setting.kind) {
      case Kind::kWholeNumber:
        install(whole_number_spec(option), condition);
        break;
      case Kind::kDecimalNumber:
        install(decimal_number_spec(option), condition);
        break;
      case Kind::kFlag:
        install(flag_spec(option), condition);
        break;
      case Kind::kChoice:
        install(choice_spec(option, setting.words), condition);
        break;
      case Kind::kColour:
        install(colour_spec(option), condition);
        break;
      case Kind::kParts:
        if (!option.required) install(flag_spec(option), condition);
        for (const std::string& part : setting.words)
          install(part_spec(name + "-" + part, part, option), option.required ? condition : name);
        break;
      case Kind::kPicture:
        break;
    }
  }
}

// ------------------------------------------------------------------------------ what has been given

bool Settings::is_given(const Setting& setting, const Values& values, bool picture_there) const {
  const Option& option = setting.option;
  const size_t first = setting.first;
  switch (setting.kind) {
    case Kind::kWholeNumber:
      return option.required || std::to_string(values.whole_number(first)) != option.otherwise;
    case Kind::kFlag:
      return values.flag(first);
    case Kind::kChoice:
      return !option.value_optional || values.choice(first) > 0;
    case Kind::kParts:
      return option.required || values.flag(first);
    case Kind::kPicture:
      return picture_there;
    case Kind::kDecimalNumber:
    case Kind::kColour:
      break;
  }
  return true;
}

std::string Settings::text_of(const Setting& setting, const Values& values,
                              const Babl* space) const {
  const size_t first = setting.first;
  switch (setting.kind) {
    case Kind::kWholeNumber:
      return std::to_string(values.whole_number(first));
    case Kind::kDecimalNumber:
      return host::shortest(values.decimal_number(first));
    case Kind::kChoice:
      return setting.words[static_cast<size_t>(values.choice(first))];
    case Kind::kColour:
      return host::to_text(bytes_of(values.colour(first), space));
    case Kind::kParts: {
      const size_t begin = first + !setting.option.required;
      std::string text = std::to_string(values.whole_number(begin));
      for (size_t i = 1; i < setting.words.size(); ++i)
        text += (setting.option.form == "WxH" ? "x" : ",") +
                std::to_string(values.whole_number(begin + i));
      return text;
    }
    case Kind::kPicture:
      return "aux";  // the pad, for sentences about it
    case Kind::kFlag:
      break;
  }
  return "";
}

std::map<std::string, std::string> Settings::given(const Values& values, bool picture_there,
                                                   const Babl* space) const {
  std::vector<const Setting*> on;
  for (const Setting& setting : settings_)
    if (is_given(setting, values, picture_there)) on.push_back(&setting);
  const auto is_on = [&](const std::string& option) {
    return std::ranges::any_of(on, [&](const Setting* s) { return s->option.name == option; });
  };
  const auto has_no_effect = [&](const Setting* setting) {
    const Option& option = setting->option;
    return (!option.needs.empty() && !is_on(option.needs)) ||
           std::ranges::any_of(on, [&](const Setting* other) {
             return std::ranges::count(other->option.excludes, option.name) > 0;
           });
  };
  std::map<std::string, std::string> given;
  for (const Setting* setting : on)
    if (!has_no_effect(setting)) given[setting->option.name] = text_of(*setting, values, space);
  return given;
}

uint8_t Settings::opacity_of(const std::string& option, const Values& values,
                             const Babl* space) const {
  uint8_t opacity = 255;
  for (const Setting& setting : settings_)
    if (setting.kind == Kind::kColour && setting.option.name == option)
      bytes_of(values.colour(setting.first), space, &opacity);
  return opacity;
}

}  // namespace roxe_gegl
