// The DEVMODEs that the user has chosen for printers, from Windows 2000 on: values of HKCU\Printers\DevModePerUser with
// the printers' names. They stay when a printer goes, as the user's other settings do.
#pragma once

#include <string>
#include <string_view>

#include "machine/base/machine.h"

namespace pikel::simulated {

/// Bytes of a DEVMODE; empty when the user has chosen none.
std::string UserDevMode(Machine& machine, std::string_view printer);

/// @param devMode  bytes; empty: the user goes by the printer's own from now on
void SetUserDevMode(Machine& machine, std::string_view printer, std::string_view devMode);

}  // namespace pikel::simulated
