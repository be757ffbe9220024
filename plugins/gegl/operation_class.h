// The operations of the tool as operations of GEGL.
#ifndef ROXE_GEGL_OPERATION_CLASS_H_
#define ROXE_GEGL_OPERATION_CLASS_H_

#include <gegl-plugin.h>

#include "operation.h"

namespace roxe_gegl {

// Registers "roxe:NAME" with its properties. A composer where the operation takes a second picture,
// by the pad aux; otherwise a filter.
void register_operation(GTypeModule* module, const host::OperationEntry& entry);

}  // namespace roxe_gegl

#endif  // ROXE_GEGL_OPERATION_CLASS_H_
