// Where drivers lie, which DLL a language monitor is, and which of two files was written last.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel {

/// The spooler's driver directory.
/// @param lpszEnvironment  DriverArchitecture, or null for the running system's own
DWORD GetDriverDirectory(LPCSTR lpszEnvironment, std::string& strDirectory);

/// Bare file name of a language monitor's DLL, from the registry. 13 when the value isn't text.
DWORD GetMonitorFile(LPCSTR lpszMonitorName, std::string& strFile);

/// Compares last write times. Always 0.
/// @param nResult [out]  1 the first file is newer, -1 it is older, 0 equal or one of them can't be opened
DWORD FileCompare(LPCSTR lpszFile1, LPCSTR lpszFile2, INT& nResult);

}  // namespace pikel
