// What the machine's user may do.
#pragma once

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// @return 5 on the NT family for a user without administrative rights, else 0. The 9x family knows no rights.
DWORD RequireAdministrator(const Machine& machine);

}  // namespace pikel::simulated
