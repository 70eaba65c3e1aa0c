// Taking drivers and monitors away, which something else in the spooler may need: a monitor a port or a driver, a
// driver a printer, and a driver's files another driver.
#pragma once

#include <optional>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// What DeletePrinterDriverExA is told.
struct DriverDeletion {
    std::optional<DWORD> version;  ///< none: all of them
    bool deletesUnusedFiles = false;
    bool deletesAllFiles = false;  ///< refused when another driver uses one
};

/// @param environmentName  null or empty: the machine's own
/// @return 0; 5 without the rights; 1805 and 1797 for an unknown environment or driver; 3001 while a printer needs the
///         driver, or another driver a file that has to go
DWORD DeleteDriver(Machine& machine, const char* environmentName, const char* name, const DriverDeletion& deletion);

/// @return 0; 87 for an empty name; 3000 for an unknown monitor; 3008 while a driver or a port needs it
DWORD RemoveMonitor(Machine& machine, std::string_view name);

}  // namespace pikel::simulated
