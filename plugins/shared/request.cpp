#include "shared/request.h"

#include <algorithm>

#include "text.h"

namespace plugins {
namespace {

using host::Option;
using host::UsageError;

bool excludes(const Option& one, const Option& other) {
  const auto names = [](const Option& option, const std::string& name) {
    return std::ranges::find(option.excludes, name) != option.excludes.end();
  };
  return names(one, other.name) || names(other, one.name);
}

}  // namespace

Request::Request(const host::OperationEntry& entry) : operation_(entry.make()) {
  host::Options options;
  operation_->add_options(options);
  if (operation_->moves_pixels()) {
    options
        .text("--background", "COLOUR", "colour of uncovered pixels",
              [background = background_.get()](const std::string& text) {
                *background = host::colour(text, "--background");
              })
        .otherwise = "black";
  }
  // What only prints has no place where a picture is to be given back.
  std::ranges::copy_if(options.all(), std::back_inserter(options_),
                       [](const Option& option) { return option.name != "--dry-run"; });
}

void Request::take(const std::map<std::string, std::string>& given, const host::LoadPicture& load) {
  for (const Option& option : options_)
    if (const auto found = given.find(option.name); found != given.end()) option.use(found->second);
  for (const Option& option : options_) {
    if (!given.contains(option.name)) {
      if (option.required) throw UsageError(option.name + " is required");
      continue;
    }
    if (!option.needs.empty() && !given.contains(option.needs))
      throw UsageError(option.name + " needs " + option.needs);
    for (const Option& other : options_)
      if (given.contains(other.name) && excludes(option, other))
        throw UsageError(option.name + " and " + other.name + " exclude each other");
  }
  operation_->check(load);
}

host::Outcome Request::apply(Layers& layers, uint8_t uncovered_opacity) const {
  const host::Outcome outcome = operation_->apply(layers.colours, *background_);
  if (operation_->gives_mask())
    layers.opacity = host::Picture();
  else if (layers.has_opacity() && operation_->moves_pixels())
    operation_->apply(layers.opacity, {uncovered_opacity, uncovered_opacity, uncovered_opacity});
  return outcome;
}

std::string identifier(std::string_view name, char mark) {
  std::string result(name.substr(std::min(name.find_first_not_of('-'), name.size())));
  std::ranges::replace(result, '-', mark);
  return result;
}

}  // namespace plugins
