// A recipe: a text file of operations, one a line, written as on the command line without the
// files.
//
//     # evening light
//     straighten --line 245,1480,4020,1310
//     temperature --temperature 20
//
// Empty lines and lines that start with # are skipped.
#ifndef ROXE_HOST_RECIPE_H_
#define ROXE_HOST_RECIPE_H_

#include <memory>
#include <string>
#include <vector>

#include "operation.h"

namespace host {

using Recipe = std::vector<std::unique_ptr<Operation>>;

// Throws UsageError with the number of the line that makes no sense.
Recipe read_recipe(const std::string& path);

}  // namespace host

#endif  // ROXE_HOST_RECIPE_H_
