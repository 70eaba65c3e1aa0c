// What an INF file is: whose it is, which systems it is for, and whether it names a catalog.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Tells whether a file is an INF of a provider and class. ASCII letters match without regard to case.
/// @param lpszProvider, lpszClass  null: any. With both null it is enough that the file can be opened.
/// @return 1 or 0; 0 for a file that can't be opened
DWORD IsTarvoPrinterDriver(LPCSTR lpszInfFile, LPCSTR lpszProvider, LPCSTR lpszClass);

/// Tells the dwArchitecture value that an INF is written for.
/// @param pdwInfOs [out]  0 for a signature that isn't known, else 1 to 5. 0 on failure, but 3 when only the
///                        Manufacturer section could not be read.
/// @return 0; 87 for a null argument; else the code of the open or of the Manufacturer section
DWORD DoGetInfOsVersion(LPCSTR lpszInfFile, LPDWORD pdwInfOs);

/// Tells whether an INF names a catalog.
/// @param pbExistCAT [out]   0 or 1; 0 for a file that can't be opened
/// @param lpszCATFile [out]  the name, or null; large enough for any value that the INF may hold. Untouched without a
///                           catalog.
/// @return 0, also for a file that can't be opened; 87 for a null lpszInfFile or pbExistCAT
DWORD DoGetCATFileInfo(LPCSTR lpszInfFile, LPDWORD pbExistCAT, LPSTR lpszCATFile);

}  // namespace pikel
