// Colour profiles: installing them on the system and linking them to a printer.
//
// The list stays the caller's: dwCount entries, or null for none. A profile that fails is logged and passed over, and
// the next one is tried; what was done before stays. So a code says that nothing at all was tried.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Windows 95, which has no colour library: enters profiles of printers and monitors into the registry.
/// @param ppszProfiles  file names in the colour folder of the driver directory
/// @return 0; a profile that can't be read, and a key that can't be written, are only logged
DWORD InstallColorProfile95(const LPSTR* ppszProfiles, DWORD dwCount);
/// Windows 98 and Me, Windows 2000 and later: through the colour library.
/// @param ppszProfiles  full paths, or file names as the colour library finds them
/// @return 0; else the code with which the library or its function can't be had
DWORD InstallColorProfile982k(const LPSTR* ppszProfiles, DWORD dwCount);

/// Installs profiles by the routine of the running system. NT 4 has no colour management: nothing is done there.
/// @param ppszProfiles  dwCount profiles, or null
/// @return 0, also for no profiles; else the code for a colour library that isn't there; 120 on a system without route
DWORD InstallColorProfile(const LPSTR* ppszProfiles, DWORD dwCount);

/// Windows 98 and Me, Windows 2000 and the XP generation: links profiles to a printer through the colour library.
/// @param lpszPrinterName  name of the printer, handed on as it is
/// @param ppszProfiles     file names of installed profiles
/// @return 0; else the code with which the library or its function can't be had
DWORD AddColorProfile982k(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount);
/// The same on the Vista generation, for all users.
DWORD AddColorProfileVista(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount);

/// Links profiles to a printer by the routine of the running system. Windows 95 and NT 4 have no such links: nothing is
/// done there.
/// @param lpszPrinterName  name of the printer
/// @param ppszProfiles     dwCount profiles, or null
/// @return as InstallColorProfile
DWORD AddColorProfile(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount);

}  // namespace pikel
