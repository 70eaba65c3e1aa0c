// Deletes language monitors through the spooler.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Deletes a language monitor by the routine of the running system, unless another driver uses it.
/// @param dwEnabled  0: nothing is done
DWORD DeleteLanguageMonitor(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwEnabled);

/// True when no other driver of the running system's environment names the monitor. False for a null argument, and when
/// the drivers can't be listed: in doubt a monitor stays.
bool IsMonitorFreeOfOtherDrivers(LPCSTR lpszDriverName, LPCSTR lpszMonitorName);

// The routines of the table. Each does nothing for a dwEnabled of 0, and from NT 4 on for drivers of another version
// than its own.
//   lpszMonitorName   null for a driver without a monitor
//   return            0, also for a monitor that another driver uses; else the code of the spooler
DWORD DeleteLanguageMonitor9x(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled);
DWORD DeleteLanguageMonitorNT(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled);
DWORD DeleteLanguageMonitor2k(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled);
DWORD DeleteLanguageMonitorVista(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                                 DWORD dwEnabled);

}  // namespace pikel
