// What an INF says of one model's files, and the registry part of its install section.
#pragma once

#include "frame/pikel.h"

namespace pikel {

/// Tells the name of a driver's main file.
/// @param fWantDriverFile  true: the DriverFile name; false: the name under which the source medium holds it, empty
///                         when the copy sections don't name the file
/// @param pdwSize [in, out]  bytes at lpszName; receives the bytes needed, NUL included
/// @param lpszName [out]   written when it holds the name; may be null
/// @return 0, also for a buffer that is too small; 87 for a missing argument; else the code of the open or of a section
DWORD DoGetDriverFileNameFromInf(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                                 DWORD dwMinorVersion, bool fWantDriverFile, LPSTR lpszName, LPDWORD pdwSize);

/// Lists a model's files by kind: 1 the driver's main file, 3 its data file, 6 any other.
/// @param ppRecords [out]  one heap block of *pdwCount records and their names, or null
/// @return 0; 87 for a missing argument; 8 without memory and for a model without files; else the code of the open or
///         of a section
DWORD DoEnumDriverFiles(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                        DWORD dwMinorVersion, DriverFileRecord** ppRecords, LPDWORD pdwCount);

/// Applies the registry part of a model's install section.
/// @return 0, also for an INF that can't be opened; 87 for a missing argument; else the code of a section or of the
///         system
DWORD DoControlRegistory(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                         DWORD dwMinorVersion);

}  // namespace pikel
