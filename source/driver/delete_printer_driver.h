// Deletes a printer driver, its language monitor and its colour profiles through the spooler.
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

// The routines of the tables.
//   lpszMonitorName   null for a driver without a monitor; not read by the driver routines
//   return            0; 87 for a null name; else the code of the spooler
DWORD DeletePrinterDriver9x(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwProcessor, DWORD dwRestartSpooler);
DWORD DeletePrinterDriverNT(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwProcessor, DWORD dwRestartSpooler);
DWORD DeletePrinterDriver2k(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwProcessor, DWORD dwRestartSpooler);
DWORD DeleteLanguageMonitor9x(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled);
DWORD DeleteLanguageMonitorNT(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled);
DWORD DeleteLanguageMonitor2k(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled);
DWORD DeleteLanguageMonitorVista(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                                 DWORD dwEnabled);

/// Deletes a driver by the routine of the running system.
DWORD DeletePrinterDriverByRoute(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                                 DWORD dwProcessor, DWORD dwRestartSpooler);
/// Deletes a language monitor by the routine of the running system, unless another driver uses it.
/// @param dwEnabled  0: nothing is done
DWORD DeleteLanguageMonitor(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwEnabled);

/// True when no other driver of the running system's environment names the monitor. False for a null argument, and when
/// the drivers can't be listed: in doubt a monitor stays.
bool IsMonitorFreeOfOtherDrivers(LPCSTR lpszDriverName, LPCSTR lpszMonitorName);

}  // namespace pikel
