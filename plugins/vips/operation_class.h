// An operation as libvips sees one: a class of its own with an image in and an image out.
#ifndef ROXE_PLUGINS_VIPS_OPERATION_CLASS_H_
#define ROXE_PLUGINS_VIPS_OPERATION_CLASS_H_

#include "operation.h"

namespace plugins {

// "shadow-highlight" becomes the operation roxe_shadow_highlight. entry is one of
// host::operations().
void register_operation(const host::OperationEntry& entry);

}  // namespace plugins

#endif  // ROXE_PLUGINS_VIPS_OPERATION_CLASS_H_
