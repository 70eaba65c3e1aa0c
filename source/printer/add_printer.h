// Adds a printer to the local spooler, or a connection to a shared one.
#pragma once

#include "frame/pikel.h"
#include "platform/owned.h"

namespace pikel {

/// Adds a printer. A name with two backslashes in front is connected to on the NT family; a connection that fails is
/// followed by a local add under the same name, unless the user cancelled it on the Vista generation.
///
/// A local printer gets its profiles, its driver's PnP identity and, on the 9x family, its timeouts. Nothing is rolled
/// back: the printer stays when one of these steps fails, and the step's code is returned.
///
/// @param pRecord   pPrinterName is required. Changed in place: on the 9x family Attributes, pDatatype (a text of the
///                  library) and Priority, on NT 4 Attributes for the machine's first printer. While the effective
///                  DEVMODE is switched off pDevMode is null during the call, and stays so after a cancelled
///                  connection.
/// @param pOptions  profiles and timeouts of a local printer, or null
/// @return 0; 87 for a null record or name; else the code of the step that failed
DWORD DoAddPrinter(PrinterRecord* pRecord, const AddPrinterOptions* pOptions);

// The routines of the table. Each adds the record to a server's spooler (null: the local one).
//   hPrinter [out]  the new printer, or empty on failure
//   return          0; 87 for a null record, or from NT 4 on a null name; else the last error of the add
DWORD AddPrinter9x(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter);
DWORD AddPrinterNT(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter);
DWORD AddPrinter2k(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter);

}  // namespace pikel
