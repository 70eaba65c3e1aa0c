// Registers language monitors with the spooler.
#include "driver/language_monitor.h"

#include <string>

#include "driver/file_use.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/text.h"
#include "platform/owned.h"
#include "spooler/spooler_read.h"

namespace pikel {

namespace {

/// Lists the registered monitors.
/// @param list [out]      *pdwCount records of MONITOR_INFO_1A with their texts, or empty for none
/// @return 0; 8 without memory; else the spooler's code
DWORD ListMonitors(HeapBlock& list, DWORD* pdwCount) {
    DWORD dwReturned = 0;
    const DWORD dwStatus = ReadSpoolerBlock(list, [&](LPBYTE pBuffer, DWORD cbBuffer, LPDWORD pcbNeeded) {
        return Platform().EnumMonitorsA(nullptr, 1, pBuffer, cbBuffer, pcbNeeded, &dwReturned);
    });
    *pdwCount = list ? dwReturned : 0;
    return dwStatus;
}

/// A list that can't be had counts as one without the monitor: the spooler itself decides then.
bool IsMonitorRegistered(LPCSTR lpszName) {
    HeapBlock list;
    DWORD dwCount = 0;
    if (ListMonitors(list, &dwCount) != 0) {
        return false;
    }
    const auto* pMonitors = static_cast<const MONITOR_INFO_1A*>(list.Get());
    for (DWORD i = 0; i < dwCount; ++i) {
        if (EqualNoCase(TextOrEmpty(pMonitors[i].pName), lpszName)) {
            return true;
        }
    }
    return false;
}

/// True when somebody, as a rule the spooler, holds the DLL. Logs the verdict.
bool IsMonitorLoaded(LPCSTR lpszPath) {
    // A missing file reads as read-only; clearing the bit then fails unnoticed.
    ClearReadOnly(lpszPath);
    DWORD dwCode = 0;
    switch (ProbeFileUse(lpszPath, &dwCode)) {
        case FileUse::Free:
            WriteLog("...Monitor(%s) is not used", lpszPath);
            return false;
        case FileUse::InUse:
            WriteLog("...Monitor(%s) is used", lpszPath);
            return true;
        case FileUse::Unknown:
            break;
    }
    WriteLog("*** CreateFile(%s): Error(%d) ***", lpszPath, dwCode);
    return false;
}

DWORD RegisterMonitor(const MONITOR_INFO_2A& monitorInfo) {
    if (IsMonitorRegistered(monitorInfo.pName)) {
        return 0;
    }
    std::string strPath = GetOsIdentity().systemDirectory + "\\" + TextOrEmpty(monitorInfo.pDLLName);
    if (IsMonitorLoaded(strPath.c_str())) {
        return 0;  // a loaded DLL counts as a monitor that is there
    }
    // The spooler only reads the record.
    auto* pbInfo = reinterpret_cast<LPBYTE>(const_cast<MONITOR_INFO_2A*>(&monitorInfo));
    if (!Platform().AddMonitorA(nullptr, 2, pbInfo)) {
        DWORD dwStatus = Platform().GetLastError();
        WriteLog("AddMonitor Error(%d)", dwStatus);
        return dwStatus;
    }
    return 0;
}

}  // namespace

DWORD AddLanguageMonitor(const MONITOR_INFO_2A* pMonitorInfo) {
    if (pMonitorInfo == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("AddLanguageMonitor() Start");
    DWORD dwStatus = IsEmpty(pMonitorInfo->pName) ? 0 : RegisterMonitor(*pMonitorInfo);
    WriteLogDetail("AddLanguageMonitor() End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
