// Binds the operations to Windows. An operation that the system's headers don't declare is a compile error here.
#include "platform/native_table.h"

namespace pikel {

constinit const PlatformTable kNativeTable = {
#define OPERATION(result, name, parameters, failure) &::name,
#define LOOKED_UP(module, result, name, parameters, failure)
#include "platform/operations/all.def"
};

}  // namespace pikel
