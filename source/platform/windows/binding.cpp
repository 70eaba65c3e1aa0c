// Binds the operations to Windows. An operation that the system's headers don't declare is a compile error here.
#include "platform/platform.h"

namespace pikel {

const PlatformTable& NativePlatform() {
    static constexpr PlatformTable table = {
#define OPERATION(result, name, parameters, failure) &::name,
#define LOOKED_UP(module, result, name, parameters, failure)
#include "platform/operations/all.def"
    };
    return table;
}

}  // namespace pikel
