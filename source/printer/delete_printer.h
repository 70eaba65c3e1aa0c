// Deletes a printer, or the connection to a shared one.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Deletes a printer: first the links of its colour profiles, then the printer, with its share on the 9x family. Of a
/// connection to a shared printer the connection alone; profiles aren't touched then.
/// @param ppszProfiles  dwProfileCount profiles that are linked to the printer, or null
/// @return 0; 87 for a null name; else the code of the step that failed, after which nothing more is done
DWORD DoDeletePrinter(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles);

/// The same without profiles, and the share of the 9x family stays.
DWORD DoDeletePrinterWithoutShareReg(LPCSTR lpszPrinterName);

// The routines of the table. They leave the handle open.
//   dwDeleteShare  non-zero: the share of the 9x family goes as well
DWORD DeletePrinter9x(HANDLE hPrinter, DWORD dwDeleteShare);
DWORD DeletePrinterNT(HANDLE hPrinter, DWORD dwDeleteShare);

}  // namespace pikel
