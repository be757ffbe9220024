// What GEGL looks for in a module.
#include <gegl-plugin.h>

#include "operation.h"
#include "operation_class.h"

extern "C" {

G_MODULE_EXPORT const GeglModuleInfo* gegl_module_query(GTypeModule*) {
  static const GeglModuleInfo info = {GEGL_MODULE_ABI_VERSION};
  return &info;
}

G_MODULE_EXPORT gboolean gegl_module_register(GTypeModule* module) {
  for (const host::OperationEntry& entry : host::operations())
    roxe_gegl::register_operation(module, entry);
  return TRUE;
}

}  // extern "C"
