// Writes a printer's record back.
#pragma once

#include "frame/pikel.h"

namespace pikel {

/// Writes a printer's settings, its values, and its share or its descriptor, publishing state and DEVMODE. A paused
/// printer stays paused. The record of a connection to a shared printer is left alone.
///
/// @param pRecord  as DoGetPrinter gives it; stays the caller's and isn't changed. Required.
/// @return 0; 87 for a null argument; the code with which the printer couldn't be opened. What fails after that is told
///         to the log alone.
DWORD DoSetPrinter(LPCSTR lpszPrinterName, const PrinterRecord* pRecord);

/// The last part of DoSetPrinter: what belongs to a printer beside its level 2 data and its values.
/// @return 0; 87 for a null record; else the code of the last step that failed
DWORD ApplyPrinterExtras(LPCSTR lpszPrinterName, const PrinterRecord* pRecord);

}  // namespace pikel
