// The options of an operation as arguments of libvips.
#ifndef ROXE_PLUGINS_VIPS_ARGUMENTS_H_
#define ROXE_PLUGINS_VIPS_ARGUMENTS_H_

#include <map>
#include <string>
#include <vector>

#include <vips/vips.h>

#include "option_table.h"

namespace plugins {

// What libvips stores for an argument, whatever its type is.
union Value {
  int whole;
  double decimal;
  gboolean flag;
  char* text;
  VipsImage* picture;
};

// Declares one argument an option, whose values lie in a row from an offset into the instance on:
// option i has the value i. libvips takes what it knows to be required without a name and options
// by name; so that all are given as to the tool, it is told of none, and what is required is judged
// later.
void declare_arguments(VipsObjectClass* type, const std::vector<host::Option>& options,
                       size_t offset);

// Sets values that are numbers to what holds without the option.
void set_defaults(const std::vector<host::Option>& options, Value* values);

// The arguments that are set, by the names of the options, as texts. A picture is its name.
std::map<std::string, std::string> given_arguments(VipsObject* call,
                                                   const std::vector<host::Option>& options,
                                                   const Value* values);

}  // namespace plugins

#endif  // ROXE_PLUGINS_VIPS_ARGUMENTS_H_
