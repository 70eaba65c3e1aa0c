// Colour profiles: installing them on the system and linking them to a printer.
#pragma once

#include "platform/types.h"

namespace pikel {

DWORD InstallColorProfile95(const LPSTR* ppszProfiles, DWORD dwCount);
DWORD InstallColorProfile982k(const LPSTR* ppszProfiles, DWORD dwCount);

/// Installs profiles by the routine of the running system. A profile that fails is logged and passed over.
/// @return 0, or the code for a colour library that isn't there
DWORD InstallColorProfile(const LPSTR* ppszProfiles, DWORD dwCount);

DWORD AddColorProfile982k(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount);
DWORD AddColorProfileVista(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount);

/// Links profiles to a printer by the routine of the running system, in the same way.
DWORD AddColorProfile(LPCSTR lpszPrinterName, const LPSTR* ppszProfiles, DWORD dwCount);

}  // namespace pikel
