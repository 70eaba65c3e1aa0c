// Takes colour profiles away: cuts their links to a printer, and uninstalls those that no printer uses any more.
#pragma once

#include "platform/types.h"

namespace pikel {

// The routines of the tables. Other than where profiles are added, the count stands before the list.
DWORD DeleteColorProfile982k(LPCSTR lpszPrinterName, DWORD dwCount, const LPSTR* ppszProfiles);
DWORD DeleteColorProfileVista(LPCSTR lpszPrinterName, DWORD dwCount, const LPSTR* ppszProfiles);
DWORD UnInstallColorProfile982k(DWORD dwCount, const LPSTR* ppszProfiles);

/// Cuts the links between profiles and a printer by the routine of the running system.
/// @return 0; the last code of a link that couldn't be cut, after which the others were still tried; the code for a
///         colour library that isn't there
DWORD DeleteColorProfile(LPCSTR lpszPrinterName, DWORD dwCount, const LPSTR* ppszProfiles);

/// Uninstalls profiles and deletes their files by the routine of the running system. A profile that a local printer
/// still reports is passed over; the names compare byte by byte.
/// @return 0; the last code of a file that couldn't be deleted; the code for a colour library that isn't there
DWORD UnInstallColorProfile(DWORD dwCount, const LPSTR* ppszProfiles);

}  // namespace pikel
