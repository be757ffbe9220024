// The options of an operation as every front door asks for them: the command line, a line of a
// recipe, a host of plug-ins. Names, forms, ranges, defaults and meanings stand here and nowhere else.
#ifndef ROXE_HOST_OPTION_TABLE_H_
#define ROXE_HOST_OPTION_TABLE_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace host {

struct Option {
  // A picture is named by a path, or handed over by a host that holds it.
  enum class Kind { kWholeNumber, kDecimalNumber, kText, kFlag, kPicture };

  Kind kind;
  std::string name;  // "--mask-radius"
  std::string form;  // how a value is written: "N", "X,Y", "fit|free"; flags have none
  std::string meaning;
  // Turns what was given into a value, a flag whatever it is given. Throws UsageError if it makes no
  // sense. Refers to the operation that made the option.
  std::function<void(const std::string&)> use;

  int32_t low = 0, high = 0;        // the range of a number
  std::string otherwise = {};       // what holds without the option; of a number its value
  std::string other_spelling = {};  // "--color"
  std::vector<std::string> excludes = {};
  std::string needs = {};  // the option without which this one means nothing
  bool required = false;
  bool value_optional = false;  // where no value follows, it is the one in otherwise
};

class Options {
 public:
  // Each sets a value that holds its default already, and gives the new entry for what is special.
  Option& whole_number(const std::string& name, int32_t& value, int32_t low, int32_t high,
                       const std::string& meaning);
  Option& decimal_number(const std::string& name, double& value, int32_t low, int32_t high,
                         const std::string& meaning);
  Option& text(const std::string& name, const std::string& form, const std::string& meaning,
               std::function<void(const std::string&)> use);
  Option& flag(const std::string& name, bool& value, const std::string& meaning);
  Option& picture(const std::string& name, std::string& path, const std::string& meaning);

  // In the order in which they are listed and judged.
  const std::deque<Option>& all() const { return all_; }

 private:
  std::deque<Option> all_;  // entries stay where they are
};

}  // namespace host

#endif  // ROXE_HOST_OPTION_TABLE_H_
