// Deletes the files of drivers and language monitors by hand, on the systems whose spooler doesn't do it.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Deletes a driver's file by the routine of the running system; from Windows 2000 on nothing is done.
/// @param dwVersion        DriverVersionCode
/// @param lpszEnvironment  DriverArchitecture
/// @param lpszFile         name without a folder
/// @return 0, also for a file that stays; else the code for a driver directory that can't be had
DWORD DeleteDriverFileByOsRoute(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszFile);

/// Deletes a language monitor's DLL by the routine of the running system. A file that is held goes at the next start of
/// a system of the 9x family, and stays on the NT family.
/// @param lpszFile  name without a folder
/// @return 0; else the code for a driver directory that can't be had, or on the 9x family of the delayed deletion
DWORD DeleteMonitorFileByOsRoute(LPCSTR lpszFile);

// The routines of the tables. All take one file name without a folder and give 87 for a null one.
DWORD DeleteDriverFile9x(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszFile);
DWORD DeleteDriverFileNT(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszFile);
DWORD DeleteMonitorFile9x(LPCSTR lpszFile);
DWORD DeleteMonitorFileNT(LPCSTR lpszFile);

}  // namespace pikel
