// Reads all that is known of a printer into one record.
#pragma once

#include "frame/pikel.h"

namespace pikel {

/// Reads a printer: its level 2 data, values, colour profiles, and on the 9x family its share and timeouts, on the NT
/// family its descriptor, publishing state and DEVMODE. Of a connection to a shared printer the level 2 data alone.
/// The bit for the default printer is set for the default printer, whatever the spooler reports.
///
/// @param ppRecord [out]  one heap block, freed with PI_KEL_FreeMemory; null on failure. Required.
/// @return 0; 87 for a null argument; 8 without memory; else the code of the read that failed
DWORD DoGetPrinter(LPCSTR lpszPrinterName, PrinterRecord** ppRecord);

}  // namespace pikel
