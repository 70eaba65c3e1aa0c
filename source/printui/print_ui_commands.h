// Installs and removes drivers and printers through the system's Print UI: one command line for each step.
//
// A command line's outcome is the thread's last error, which may be older than the command; two operations take certain
// codes for success. Every operation takes narrow texts, and gives 8 for a command line that doesn't fit into 2048
// bytes with its NUL.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Writes the part of a command line that names a driver's system and version.
/// @param dwVersion        DriverVersionCode
/// @param dwProcessor      ProcessorCode; plays no part on Windows 2000, whose names are texts of the Print UI itself
/// @param lpszBuffer [out] dwSize bytes
/// @return 0; 87 on systems without a Print UI, for a version that has no name, or for a null buffer; 8 for a text that
///         doesn't fit; on Windows 2000 the code of the look-up
DWORD MakeVersionStringForPrintUI(DWORD dwVersion, DWORD dwProcessor, LPSTR lpszBuffer, DWORD dwSize);

/// Shares a printer under a name.
/// @return 0; 87 for a null or empty name; else the code of the conversion or the command
DWORD DoChangeShareNameToPrintUI(LPCSTR lpszPrinterName, LPCSTR lpszShareName);

/// Installs a model's driver from an INF.
/// @param lpszInfPath    full path; the files lie in its folder. Required.
/// @param lpszModelName  as the INF writes it; goes into the command line as it is
/// @param dwVersion      DriverVersionCode
/// @param dwProcessor    ProcessorCode
/// @return 0; 87 for a version that has no name; else the code of the conversion or the command
DWORD DoAddDriverToPrintUI(LPCSTR lpszInfPath, LPCSTR lpszModelName, DWORD dwVersion, DWORD dwProcessor);

/// Installs a printer with its driver, and shares it.
/// @param lpszInfPath, lpszPrinterName, lpszModelName, lpszPortName  required, and not empty
/// @param lpszShareName  the same when the share flag is non-zero; else not read
/// @param lpszSpare      not read
/// @param dwShareFlag    0: not shared; 1: the Print UI shares it too; other: it doesn't. Non-zero: the share name is
///                       set afterwards, unless the port is a redirected one.
/// @return 0; 87 for an argument; else the code of the conversion or of a command
DWORD DoInstallPrinterToPrintUI(LPCSTR lpszInfPath, LPCSTR lpszPrinterName, LPCSTR lpszModelName, LPCSTR lpszPortName,
                                LPCSTR lpszShareName, LPCSTR lpszSpare, DWORD dwShareFlag);

/// Deletes a printer, or a connection to one of another computer, after the links of its colour profiles.
/// @param ppszProfiles  dwProfileCount profiles, or null
/// @return 0; else the code of the command or, for a printer that can't be read, of the spooler. What became of the
///         profiles is only logged.
DWORD DoDeletePrinterToPrintUI(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles);

/// Deletes a driver, then its colour profiles, its language monitor and that monitor's file.
/// @param dwVersion          DriverVersionCode
/// @param lpszDriverName     goes into the command line as it is. Required, and not empty.
/// @param dwProcessor        ProcessorCode
/// @param ppszProfiles       dwProfileCount profiles to uninstall, or null
/// @param dwFileRemovalFlag  0: monitor and monitor file stay
/// @param dwRestartFlag      non-zero: the spooler is restarted first, so that it lets go of the driver
/// @return 0; 87 for the name or the version; else the code of the step that failed. What is gone by then stays gone.
DWORD DoDeletePrinterDriverToPrintUI(DWORD dwVersion, LPCSTR lpszDriverName, DWORD dwProcessor, DWORD dwProfileCount,
                                     const LPSTR* ppszProfiles, DWORD dwFileRemovalFlag, DWORD dwRestartFlag);

}  // namespace pikel
