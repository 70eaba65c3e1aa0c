// Reads all that a driver add needs from an INF.
#pragma once

#include "frame/pikel.h"
#include "platform/types.h"

namespace pikel {

/// Builds the record of one model, ready for the add of a driver.
///
/// @param lpcInfPath      path of the INF. Required.
/// @param lpDriverName    key of the model. Required.
/// @param dwArchitecture  the driver's target system
/// @param dwMajorVersion, dwMinorVersion  version of the target system; a major version of 4 makes an x86 driver one of
///                        the NT 4 generation
/// @param ppRecord [out]  one heap block that holds all that it points at. A pointer in it is null where the INF has no
///                        text. Required; untouched by a failure before the last step, null after one of that step.
/// @return 0; 87 for a null argument or an unknown dwArchitecture; 8 without memory; else the code of the section that
///         could not be read or of the spooler, which tells the driver directory
DWORD DoGetInfInfo(LPCSTR lpcInfPath, LPCSTR lpDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                   DWORD dwMinorVersion, DriverAddRecord** ppRecord);

}  // namespace pikel
