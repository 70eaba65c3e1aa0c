// The records in which the spooler's calls take and tell of drivers, by level: 1 to 3 on every system, 6 from Windows
// Me and 2000 on.
#pragma once

#include <vector>

#include "machine/base/info_buffer.h"
#include "machine/spooler/drivers.h"
#include "machine/spooler/environments.h"
#include "platform/types.h"

namespace pikel::simulated {

/// Levels in which a driver can be added, and in which drivers can be read.
bool IsDriverAddLevel(const Machine& machine, DWORD level);
bool IsDriverReadLevel(const Machine& machine, DWORD level);

/// @param level  one that IsDriverAddLevel knows
/// @param bytes  record of that level, aligned or not
Driver TakeDriver(DWORD level, LPBYTE bytes);

/// Tells of an environment's drivers, with the full paths of their files.
/// @param level  one that IsDriverReadLevel knows
/// @return 0, or 122
DWORD AnswerWithDrivers(const InfoBuffer& buffer, DWORD level, const Environment& environment,
                        const std::vector<Driver>& drivers);

}  // namespace pikel::simulated
