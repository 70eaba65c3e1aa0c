// Records the PnP identity of a printer's driver under the printer.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Copies hardware ID, maker and URL of a printer's driver into the printer's key "PnPData". Fields that are null or
/// empty are passed over; a value that can't be written is logged and goes no further.
/// @return 0 once the driver's data was read; 87 for a null name; else the code of the open or the read
DWORD AddRegistryData(LPCSTR lpszPrinterName);

/// The same by the routine of the running system: nothing before Windows 2000.
DWORD AddHardwareIdRegistryData(LPCSTR lpszPrinterName);

}  // namespace pikel
