// Deletes a printer driver with its language monitor, its files and its colour profiles.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Deletes a driver with all that belongs to it alone, and then uninstalls its colour profiles.
///
/// @param dwVersion         DriverVersionCode
/// @param lpszName          the driver. Required.
/// @param dwProcessor       ProcessorCode
/// @param ppszProfiles      dwProfileCount profiles that no printer needs any more, or null
/// @param dwSpare           the file removal flag of the Print UI route; not read here
/// @param dwRestartSpooler  non-zero: the spooler is restarted before the driver goes
/// @return 0; 87 for a null name; else the code of the step that failed. What is gone by then stays gone.
DWORD DoDeletePrinterDriver(DWORD dwVersion, LPCSTR lpszName, DWORD dwProcessor, DWORD dwProfileCount,
                            const LPSTR* ppszProfiles, DWORD dwSpare, DWORD dwRestartSpooler);

}  // namespace pikel
