// Binds the operations to the simulated machine. An operation without an implementation there is a link error.
#include "machine/operations.h"
#include "platform/native_table.h"

namespace pikel {

constinit const PlatformTable kNativeTable = {
#define OPERATION(result, name, parameters, failure) &simulated::name,
#define LOOKED_UP(module, result, name, parameters, failure)
#include "platform/operations/all.def"
};

}  // namespace pikel
