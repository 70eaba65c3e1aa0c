// Placeholders while the machine is being built; goes away with the last operation.
#include "platform/simulated/operations.h"

#pragma GCC diagnostic ignored "-Wunused-parameter"

namespace pikel::simulated {
#define OPERATION(result, name, parameters, failure)      \
    __attribute__((weak)) result WINAPI name parameters { \
        return result();                                  \
    }
#define LOOKED_UP(module, result, name, parameters, failure) OPERATION(result, name, parameters, failure)
#include "platform/operations/all.def"
}  // namespace pikel::simulated
