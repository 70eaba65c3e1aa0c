// Deletes a printer, and a printer with its driver, by the direct route or through the system's Print UI.
#pragma once

#include "platform/types.h"

namespace pikel {

/// 1 when a printer of the machine, or a connection, names a driver. A null name, and an enumeration that fails,
/// answer 0.
DWORD IsDriverUsedByPrinter(LPCSTR lpszDriverName);

/// Deletes a printer by one of the two routes.
/// @param ppszProfiles  dwProfileCount profiles that are linked to the printer, or null
/// @param nUsePrintUI   non-zero: through the Print UI; the Vista generation takes the direct route all the same
/// @return 0; 87 for a Print UI that the system doesn't have; else the code of the step that failed
DWORD DeletePrinterByRoute(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles, INT nUsePrintUI);

/// Deletes a printer, and then its driver with all that belongs to it unless another printer uses the driver.
/// @param dwVersion          DriverVersionCode
/// @param dwProcessor        ProcessorCode
/// @param ppszProfiles       dwProfileCount profiles of the printer and the driver, or null
/// @param dwFileRemovalFlag  read by the Print UI route: 0 leaves the monitor and its files
/// @param nUsePrintUI        as for DeletePrinterByRoute
/// @return 0; 87 for a Print UI that the system doesn't have; else the code of the step that failed. A printer that is
///         gone stays gone when the driver can't be deleted.
DWORD UninstallPrinterByRoute(LPCSTR lpszPrinterName, LPCSTR lpszDriverName, DWORD dwVersion, DWORD dwProcessor,
                              DWORD dwProfileCount, const LPSTR* ppszProfiles, DWORD dwFileRemovalFlag,
                              INT nUsePrintUI);

}  // namespace pikel
