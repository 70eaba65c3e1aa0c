// Where drivers lie, which DLL a language monitor is, and which of two files was written last.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel {

/// The spooler's driver directory.
/// @param lpszEnvironment     DriverArchitecture, or null for the running system's own
/// @param strDirectory [out]  without a backslash at its end; empty on failure
/// @return 0; else the spooler's code, such as 1805 for an environment that it doesn't know
DWORD GetDriverDirectory(LPCSTR lpszEnvironment, std::string& strDirectory);

/// Bare file name of a language monitor's DLL, from the registry.
/// @param lpszMonitorName  name of the monitor; null or empty looks at the key of all monitors, which names no DLL
/// @param strFile [out]    empty on failure
/// @return 0; 13 when the value isn't text; else the registry's code: 2 for a monitor or value that isn't there, 234
///         for a path that is too long
DWORD GetMonitorFile(LPCSTR lpszMonitorName, std::string& strFile);

/// Compares last write times.
/// @param lpszFile1, lpszFile2  full paths
/// @param nResult [out]  1 the first file is newer, -1 it is older, 0 both are equal, or one of them can't be opened or
///                       asked for its time
/// @return always 0: a file that can't be looked at is no failure, and not told from an equal one
DWORD FileCompare(LPCSTR lpszFile1, LPCSTR lpszFile2, INT& nResult);

}  // namespace pikel
