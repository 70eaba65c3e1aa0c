// The operations that run directly or through the system's Print UI, as the caller asks. The choice between the two is
// made here and nowhere else.
//
// usePrintUI non-zero asks for the Print UI. Adding and deleting a driver always follow it; deleting and uninstalling a
// printer go directly on the Vista generation whatever it says. A Print UI that the system doesn't have gives 87, and
// no work is done then.
#pragma once

#include "frame/pikel.h"
#include "platform/types.h"

namespace pikel {

/// Slot 3: adds a driver. Directly, the record alone counts, and the server is this machine.
/// @param infPath, modelName, driverVersion, processor  read for the Print UI alone
/// @param record  read for the direct way alone
DWORD AddPrinterDriverAsAsked(LPCSTR infPath, LPCSTR modelName, DWORD driverVersion, DWORD processor,
                              const DriverAddRecord* record, INT usePrintUI);

/// Slot 4: deletes a driver, without a restart of the spooler.
/// @param fileRemovalFlag  read for the Print UI alone: 0 leaves the monitor and its files
DWORD DeletePrinterDriverAsAsked(DWORD driverVersion, LPCSTR driverName, DWORD processor, DWORD profileCount,
                                 const LPSTR* profileList, DWORD fileRemovalFlag, DWORD usePrintUI);

/// Slot 19: deletes a printer.
/// @param profileList  profileCount profiles that are linked to the printer, or null
/// @return 0; 87 for a Print UI that the system doesn't have; else the code of the step that failed
DWORD DeletePrinterAsAsked(LPCSTR printerName, DWORD profileCount, const LPSTR* profileList, DWORD usePrintUI);

/// Slot 29: installs a printer with its driver. There is no way but the Print UI.
DWORD InstallPrinterByPrintUI(LPCSTR infPath, LPCSTR printerName, LPCSTR modelName, LPCSTR portName, LPCSTR shareName,
                              LPCSTR spare, DWORD shareFlag);

/// Slot 30: deletes a printer, and then its driver with all that belongs to it unless another printer uses the driver.
/// @param driverVersion    DriverVersionCode
/// @param processor        ProcessorCode
/// @param profileList      profileCount profiles of the printer and the driver, or null
/// @param fileRemovalFlag  read for the Print UI alone: 0 leaves the monitor and its files
/// @return 0; 87 for a Print UI that the system doesn't have; else the code of the step that failed. A printer that is
///         gone stays gone when the driver can't be deleted.
DWORD UninstallPrinterAsAsked(LPCSTR printerName, LPCSTR driverName, DWORD driverVersion, DWORD processor,
                              DWORD profileCount, const LPSTR* profileList, DWORD fileRemovalFlag, INT usePrintUI);

/// 1 when a printer of the machine, or a connection, names a driver. A null name, and an enumeration that fails,
/// answer 0.
DWORD IsDriverUsedByPrinter(LPCSTR lpszDriverName);

}  // namespace pikel
