// Language monitors: the DLLs that the spooler loads to talk with a printer while it prints.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Registers a driver's language monitor with the spooler, unless a monitor of that name is registered already or its
/// DLL is loaded.
///
/// @param pMonitorInfo  the monitor; handed to the spooler as it stands and not written to. A null or empty pName means
///                      that the driver has no monitor. pDLLName is a file of the system directory.
/// @return 0, also for a driver without a monitor; 87 for a null record; else the code with which the spooler refused
///         it
DWORD AddLanguageMonitor(const MONITOR_INFO_2A* pMonitorInfo);

}  // namespace pikel
