// The DriverVer value: date and version.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel {

/// Takes a DriverVer text ("month/day/year,a.b.c.d") apart and logs both parts.
/// @param ftDriverDate [out]  written only when the date is valid
/// @param qwDriverVer [out]   written only when there is a version
void ParseDriverVer(const std::string& strDriverVer, FILETIME& ftDriverDate, DWORDLONG& qwDriverVer);

}  // namespace pikel
