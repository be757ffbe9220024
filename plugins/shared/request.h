// An operation of the tool as a program asks for it that holds the picture itself.
#ifndef ROXE_PLUGINS_SHARED_REQUEST_H_
#define ROXE_PLUGINS_SHARED_REQUEST_H_

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "operation.h"
#include "shared/layers.h"

namespace plugins {

class Request {
 public:
  explicit Request(const host::OperationEntry& entry);  // of host::operations()

  // What may be given: the options of the operation, and --background if pixels may stay uncovered.
  const std::vector<host::Option>& options() const { return options_; }

  // Takes options by their names, "--mask-radius", each with its text; a flag that is given has any
  // text. load is asked for the picture of an option that names one. To be called once. Throws
  // UsageError with the sentence of the command line.
  void take(const std::map<std::string, std::string>& given, const host::LoadPicture& load);

  // Of the options taken.
  const host::Operation& operation() const { return *operation_; }

  // Edits the colours; opacity moves as they do, and what is uncovered becomes as opaque as is
  // said. A mask has no opacity. May run for several pictures at a time. Throws UsageError for what
  // does not fit this picture, Failure where the work cannot be done.
  host::Outcome apply(Layers& layers, uint8_t uncovered_opacity = 255) const;

 private:
  std::unique_ptr<host::Operation> operation_;
  std::vector<host::Option> options_;  // refer to the operation and to the background
  std::unique_ptr<host::Colour> background_ = std::make_unique<host::Colour>();
};

// "--mask-radius" or "mask-radius" with another mark between its words: "mask_radius".
std::string identifier(std::string_view name, char mark);

}  // namespace plugins

#endif  // ROXE_PLUGINS_SHARED_REQUEST_H_
