// The options of the tool as properties of a GEGL operation: sliders, switches, colours, places.
#ifndef ROXE_GEGL_SETTINGS_H_
#define ROXE_GEGL_SETTINGS_H_

#include <gegl-plugin.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "option_table.h"

namespace roxe_gegl {

// The properties of one object.
class Values {
 public:
  explicit Values(size_t count) : values_(count, GValue(G_VALUE_INIT)) {}
  ~Values();
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;

  void set(size_t property, const GValue& value);
  void get(size_t property, GValue& value) const;

  bool flag(size_t property) const { return g_value_get_boolean(&values_[property]); }
  int whole_number(size_t property) const { return g_value_get_int(&values_[property]); }
  double decimal_number(size_t property) const { return g_value_get_double(&values_[property]); }
  int choice(size_t property) const { return g_value_get_enum(&values_[property]); }
  GeglColor* colour(size_t property) const;  // null where the host has set none

 private:
  std::vector<GValue> values_;
};

// How the options of one operation are asked for. Numbers become sliders, flags switches, choices
// lists, colours colours. An option of several numbers becomes one property for each, "line-x1", and
// where it may be left out a switch of its own name comes before them. Pictures come by a pad.
class Settings {
 public:
  explicit Settings(const std::vector<host::Option>& options);

  size_t count() const { return count_; }
  bool has_picture() const { return has_picture_; }

  // The properties get the numbers 1 ... count().
  void install(GObjectClass* object_class) const;

  // The options that are on, each with its text; what names a picture has the name of its pad. An
  // option that another rules out, or that lacks what it needs, is not on.
  // space: the colour space of the picture, in whose numbers colours are given.
  std::map<std::string, std::string> given(const Values& values, bool picture_there,
                                           const Babl* space) const;

  // How opaque a colour is that has been chosen; opaque where there is no such option.
  uint8_t opacity_of(const std::string& option, const Values& values, const Babl* space) const;

 private:
  enum class Kind { kWholeNumber, kDecimalNumber, kFlag, kChoice, kColour, kParts, kPicture };
  struct Setting {
    Kind kind;
    host::Option option;
    size_t first;                    // its first property
    std::vector<std::string> words;  // the choices, or the names of the parts
  };

  static Setting setting_of(const host::Option& option);
  static size_t properties_of(const Setting& setting);
  bool is_given(const Setting& setting, const Values& values, bool picture_there) const;
  std::string text_of(const Setting& setting, const Values& values, const Babl* space) const;
  std::string condition_on(const std::string& option) const;

  std::vector<Setting> settings_;
  size_t count_ = 0;
  bool has_picture_ = false;
};

}  // namespace roxe_gegl

#endif  // ROXE_GEGL_SETTINGS_H_
