// The default printer: which it is, whether a printer is it, and making a printer it.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Tells the name of the default printer.
/// @param lpszBuffer [out]  written only when there is a default printer and its name fits. Required.
/// @param dwSize            bytes at lpszBuffer; must be greater than the name's length
/// @return 0, also when no default printer is known on the 9x family and from Windows 2000 on; 87 for a null buffer or
///         one that is too small; else the system's code, which on NT 4 can be 0 as well
DWORD DoGetDefaultPrinter(LPSTR lpszBuffer, DWORD dwSize);

/// Tells whether a printer is the default one.
/// @return 1 or 0; 87 for a null name
DWORD DoIsDefaultPrinter(LPCSTR lpszPrinterName);

/// Makes a printer the default one.
/// @return 0; 87 for a null name; else the code of the step that failed
DWORD DoSetDefaultPrinter(LPCSTR lpszPrinterName);

/// The test of DoIsDefaultPrinter, without its log, by the routine of the running system.
/// @return 1 or 0, and never an error: whatever goes wrong on the way answers 0, and so does a null name
DWORD IsDefaultPrinter(LPCSTR lpszPrinterName);

// The routines of the tables.
DWORD SetDefaultPrinter9x(LPCSTR lpszPrinterName);
DWORD SetDefaultPrinterNT(LPCSTR lpszPrinterName);
DWORD SetDefaultPrinter2K(LPCSTR lpszPrinterName);

}  // namespace pikel
