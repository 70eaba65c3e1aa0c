// Adds a printer driver to the spooler, with its language monitor and colour profiles.
#pragma once

#include "frame/pikel.h"
#include "platform/types.h"

namespace pikel {

// One routine for each kind of system. Each takes a server, null for this machine, and the record; it returns 0, 87 for
// a null record, or the code of the monitor or of the driver. The record is the caller's and is never written to.

/// Windows 95 and 98: level 3, no second attempt.
DWORD AddPrinterDriver98(LPSTR lpszServer, const DriverAddRecord* pRecord);
/// Windows Me: level 6, no second attempt.
DWORD AddPrinterDriverME(LPSTR lpszServer, const DriverAddRecord* pRecord);
/// NT 4: level 3. The monitor is registered for drivers of version 2 alone.
DWORD AddPrinterDriverNT(LPSTR lpszServer, const DriverAddRecord* pRecord);
/// Windows 2000 and later on x86: the spooler copies the files at level 6, and the staged ones go away. The monitor is
/// registered for version 3 drivers of the routine's own processor alone.
DWORD AddPrinterDriver2k(LPSTR lpszServer, const DriverAddRecord* pRecord);
/// The same on IA64.
DWORD AddPrinterDriverIA64(LPSTR lpszServer, const DriverAddRecord* pRecord);
/// The same on x64.
DWORD AddPrinterDriverx64(LPSTR lpszServer, const DriverAddRecord* pRecord);

/// Adds a driver by the routine of the running system, and then installs its colour profiles. A profile that fails
/// doesn't fail the add. Nothing is undone on failure: a monitor that was registered stays.
///
/// @param lpszServer  null: this machine
/// @param pRecord     the driver; its files are in place. Required, and so is DriverInfo.pName.
/// @return 0; 87 for a null record or name; else the code of the monitor or of the driver; 120 on a system without
///         route
DWORD DoAddPrinterDriver(LPSTR lpszServer, const DriverAddRecord* pRecord);

}  // namespace pikel
