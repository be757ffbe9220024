// What libvips calls when it loads the module.
#include <gmodule.h>

#include "vips/operation_class.h"

extern "C" G_MODULE_EXPORT const gchar* g_module_check_init(GModule* module);

const gchar* g_module_check_init(GModule* module) {
  g_module_make_resident(module);  // types cannot be taken back
  for (const host::OperationEntry& entry : host::operations()) plugins::register_operation(entry);
  return nullptr;
}
