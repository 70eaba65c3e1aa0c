// The string table of PRINTUI.DLL, which names the versions of drivers.
#pragma once

#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// Text of the library's string table; empty for an id that the machine's system lacks.
std::string_view PrintUIString(const Machine& machine, UINT id);

}  // namespace pikel::simulated
