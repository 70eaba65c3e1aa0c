// Deletes a printer driver through the spooler, without its monitor and files.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Deletes a driver by the routine of the running system.
DWORD DeletePrinterDriverByOsRoute(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                                   DWORD dwProcessor, DWORD dwRestartSpooler);

// The routines of the table. Each deletes one driver and leaves its monitor and files.
//   lpszMonitorName   not read
//   dwRestartSpooler  non-zero: the spooler is restarted first; not read on the 9x family
//   return            0; 87 for a null name; else the code of the spooler
DWORD DeletePrinterDriver9x(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwProcessor, DWORD dwRestartSpooler);
DWORD DeletePrinterDriverNT(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwProcessor, DWORD dwRestartSpooler);
DWORD DeletePrinterDriver2k(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwProcessor, DWORD dwRestartSpooler);

}  // namespace pikel
