// One operation of the command line, alone or as a line of a recipe: its options, and what it does.
#ifndef ROXE_HOST_OPERATION_H_
#define ROXE_HOST_OPERATION_H_

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "errors.h"
#include "option_table.h"
#include "picture.h"
#include "text.h"

namespace host {

// What an operation did to a picture.
struct Outcome {
  std::string sentence;       // "turned 2.45 degrees clockwise"
  bool changed = true;        // whether the size or any pixel is another than before
  std::string note = {};      // what the person should know about this picture and this operation
  bool axes_swapped = false;  // whether rows became columns: what is known of either changes places
};

// A picture that an option names, as sentences call it.
struct NamedPicture {
  std::string name;
  Picture picture;
};
using LoadPicture = std::function<NamedPicture(const std::string& path)>;

class Operation {
 public:
  virtual ~Operation() = default;
  // Ties the options to the members.
  virtual void add_options(Options& options) = 0;
  // Judges the options together and loads what they name, before any picture is there. Throws
  // UsageError, and whatever load throws.
  virtual void check(const LoadPicture& load) { static_cast<void>(load); }
  // The file of the mask that check has loaded; empty: there is none.
  virtual std::string mask_file() const { return ""; }
  // Whether apply only computes what it returns, and there is no picture to write.
  virtual bool only_reports() const { return false; }
  // Whether each pixel of the result depends on the same pixel of the source and nothing else, so
  // that a picture may be edited in parts.
  virtual bool by_pixels() const { return false; }
  // Whether pixels move, so that what belongs to them, such as opacity, must move as they do. Only
  // then pixels may stay uncovered.
  virtual bool moves_pixels() const { return false; }
  // Where the result lies on a plane where the picture begins at (0, 0), known without its pixels.
  // Throws what apply throws where the options do not fit the picture.
  virtual Area result_area(Size picture) const { return {{}, picture}; }
  // Whether the result is a grey mask that says where, instead of the picture.
  virtual bool gives_mask() const { return false; }
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
