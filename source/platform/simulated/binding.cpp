// Binds the operations to the simulated machine. An operation without an implementation there is a link error.
#include "platform/platform.h"
#include "platform/simulated/operations.h"

namespace pikel {

const PlatformTable& NativePlatform() {
    static constexpr PlatformTable table = {
#define OPERATION(result, name, parameters, failure) &simulated::name,
#define LOOKED_UP(module, result, name, parameters, failure)
#include "platform/operations/all.def"
    };
    return table;
}

}  // namespace pikel
