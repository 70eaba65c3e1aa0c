// The operations of the simulated machine. They work on the current machine (machine.h) and answer as Windows does.
#pragma once

#include <cstdarg>

#include "platform/types.h"

namespace pikel::simulated {

// The list's (void) parameter lists are empty parentheses, and the failure forms play no part here.
#define OPERATION(result, name, parameters, failure) result WINAPI name parameters;
#define LOOKED_UP(module, result, name, parameters, failure) result WINAPI name parameters;
#include "platform/operations/all.def"

}  // namespace pikel::simulated
