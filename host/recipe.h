// A recipe: a text file of operations, one a line, written as on the command line without the
// files.
//
//     # evening light
//     straighten --line 245,1480,4020,1310
//     temperature --temperature 20
//
// A # at the start of a line, or after a space and before one, begins a comment.
#ifndef ROXE_HOST_RECIPE_H_
#define ROXE_HOST_RECIPE_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "operation.h"

namespace host {

struct Step {
  std::unique_ptr<Operation> operation;
  std::optional<Colour> background;  // of this step alone
};
using Recipe = std::vector<Step>;

// "shadow-highlight --shadow 20". Files are named from a folder on; empty: from where the tool runs.
// Throws UsageError if it makes no sense.
Step read_step(std::string_view line, const std::string& folder = {});

// Files are named from the recipe's folder on. Throws UsageError with the number of the line that
// makes no sense.
Recipe read_recipe(const std::string& path);

// Loads what an operation names, from a folder on; empty: from where the tool runs.
LoadPicture pictures_beside(const std::string& folder);

// The files of the masks that its steps have loaded. Standard input is none.
std::vector<std::string> masks_of(const Recipe& recipe);

// Does one step after the other.
Outcome apply(const Recipe& recipe, Picture& picture, Colour background);

}  // namespace host

#endif  // ROXE_HOST_RECIPE_H_
