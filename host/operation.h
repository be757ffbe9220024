// One operation of the command line, alone or as a line of a recipe: its options, and what it does.
#ifndef ROXE_HOST_OPERATION_H_
#define ROXE_HOST_OPERATION_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "errors.h"
#include "picture.h"

namespace CLI {
class App;
}

namespace host {

// What an operation did to a picture.
struct Outcome {
  std::string sentence;   // "turned 2.45 degrees clockwise"
  bool changed = true;    // whether the size or any pixel is another than before
  std::string note = {};  // what the person should know about this picture and this operation
};

class Operation {
 public:
  virtual ~Operation() = default;
  // Ties the options to the members.
  virtual void add_options(CLI::App& app) = 0;
  // Turns what was typed into values, before any picture is there. Files that the options name are
  // looked for from a folder on; empty: from where the tool runs. Throws UsageError.
  virtual void check(const std::string& folder = {}) { static_cast<void>(folder); }
  // Whether apply only computes what it returns, and there is no picture to write.
  virtual bool only_reports() const { return false; }
  // Changes the picture and says what was done. Uncovered pixels take the background. May run for
  // several pictures at a time.
  virtual Outcome apply(Picture& picture, Colour background) const = 0;
};

struct OperationEntry {
  std::string_view name, description;
  std::unique_ptr<Operation> (*make)();
};

const std::vector<OperationEntry>& operations();

// What is said about a name that is none: UsageError.
UsageError no_such_command(const std::string& name);
UsageError no_such_operation(const std::string& name);

// One list a family, joined by operations().
std::vector<OperationEntry> geometry_operations();
std::vector<OperationEntry> blur_operations();
std::vector<OperationEntry> colour_operations();
std::vector<OperationEntry> tone_operations();

template <typename T>
std::unique_ptr<Operation> make_operation() {
  return std::make_unique<T>();
}

}  // namespace host

#endif  // ROXE_HOST_OPERATION_H_
