// Deletes language monitors through the spooler, a routine for each generation.
#include "driver/delete_language_monitor.h"

#include "driver/spooler_service.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/pikel.h"
#include "frame/text.h"
#include "platform/owned.h"
#include "spooler/driver_records.h"

namespace pikel {

namespace {

/// Deletes a monitor, unless another driver uses it.
DWORD DeleteFreeMonitor(LPCSTR lpszServer, LPCSTR lpszName, LPCSTR lpszMonitorName) {
    if (!IsMonitorFreeOfOtherDrivers(lpszName, lpszMonitorName)) {
        WriteLog("%s is used by Other Driver", lpszMonitorName);
        return 0;
    }
    if (Platform().DeleteMonitorA(const_cast<LPSTR>(lpszServer), nullptr, const_cast<LPSTR>(lpszMonitorName))) {
        return 0;
    }
    const DWORD dwStatus = Platform().GetLastError();
    WriteLog("DeleteMonitor Error(%d)", dwStatus);
    return dwStatus;
}

using MonitorRoutine = DWORD (*)(LPCSTR, DWORD, LPCSTR, LPCSTR, DWORD);

constexpr OsRouteTable<MonitorRoutine> kDeleteLanguageMonitor = {
    &DeleteLanguageMonitor9x,     // Windows 95
    &DeleteLanguageMonitor9x,     // Windows 98
    &DeleteLanguageMonitor9x,     // Windows Me
    &DeleteLanguageMonitorNT,     // NT 4
    &DeleteLanguageMonitor2k,     // Windows 2000
    &DeleteLanguageMonitor2k,     // XP generation, x86
    &DeleteLanguageMonitor2k,     // XP generation, IA64
    &DeleteLanguageMonitor2k,     // XP generation, x64
    &DeleteLanguageMonitorVista,  // Vista generation, x86
    &DeleteLanguageMonitorVista,  // Vista generation, IA64
    &DeleteLanguageMonitorVista,  // Vista generation, x64
    &DeleteLanguageMonitorVista,  // anything else
};
static_assert(IsComplete(kDeleteLanguageMonitor));

}  // namespace

DWORD DeleteLanguageMonitor9x(LPCSTR lpszServer, DWORD, LPCSTR lpszName, LPCSTR lpszMonitorName, DWORD dwEnabled) {
    WriteLogDetail("DeleteLanguageMonitor9x() Start(%d)", dwEnabled);
    DWORD dwStatus = 0;
    if (dwEnabled != 0 && lpszMonitorName != nullptr) {
        WriteLog("DeleteLanguageMonitor9x() - %s", lpszMonitorName);
        dwStatus = DeleteFreeMonitor(lpszServer, lpszName, lpszMonitorName);
    }
    WriteLogDetail("DeleteLanguageMonitor9x() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteLanguageMonitorNT(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled) {
    WriteLogDetail("DeleteLanguageMonitorNT() Start(%d)", dwEnabled);
    DWORD dwStatus = 0;
    if (dwEnabled != 0 && lpszMonitorName != nullptr && dwVersion == PIKEL_DRIVER_VERSION_NT4) {
        WriteLog("DeleteLanguageMonitorNT() - %s ", lpszMonitorName);
        dwStatus = DeleteFreeMonitor(lpszServer, lpszName, lpszMonitorName);
    }
    WriteLogDetail("DeleteLanguageMonitorNT() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteLanguageMonitor2k(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                              DWORD dwEnabled) {
    WriteLogDetail("DeleteLanguageMonitor2k() Start(%d)", dwEnabled);
    DWORD dwStatus = 0;
    if (dwEnabled != 0 && lpszMonitorName != nullptr && dwVersion == PIKEL_DRIVER_VERSION_2000) {
        WriteLog("DeleteLanguageMonitor2k() - %s ", lpszMonitorName);
        dwStatus = DeleteFreeMonitor(lpszServer, lpszName, lpszMonitorName);
    }
    WriteLogDetail("DeleteLanguageMonitor2k() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteLanguageMonitorVista(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                                 DWORD dwEnabled) {
    WriteLogDetail("DeleteLanguageMonitorVista() Start(%d)", dwEnabled);
    DWORD dwStatus = 0;
    ServiceHandles handles;  // open until the monitor is gone
    if (dwEnabled != 0 && lpszMonitorName != nullptr && dwVersion == PIKEL_DRIVER_VERSION_2000) {
        WriteLog("DeleteLanguageMonitorVista() - %s ", lpszMonitorName);
        WithSpoolerService(handles, &Win32RestartService, kServiceStartFailure);
        dwStatus = DeleteFreeMonitor(lpszServer, lpszName, lpszMonitorName);
    }
    WriteLogDetail("DeleteLanguageMonitorVista() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteLanguageMonitor(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                            DWORD dwEnabled) {
    return CallRoute(kDeleteLanguageMonitor, lpszServer, dwVersion, lpszName, lpszMonitorName, dwEnabled);
}

bool IsMonitorFreeOfOtherDrivers(LPCSTR lpszDriverName, LPCSTR lpszMonitorName) {
    if (lpszDriverName == nullptr || lpszMonitorName == nullptr) {
        return false;
    }
    HeapBlock drivers;
    DWORD dwCount = 0;
    if (EnumDriverRecords(nullptr, 3, drivers, &dwCount) != 0) {
        return false;
    }
    const auto* pDrivers = static_cast<const DRIVER_INFO_3A*>(drivers.Get());
    for (DWORD i = 0; i < dwCount; ++i) {  // whatever their version
        if (!EqualNoCase(TextOrEmpty(pDrivers[i].pName), lpszDriverName) && pDrivers[i].pMonitorName != nullptr &&
            EqualNoCase(pDrivers[i].pMonitorName, lpszMonitorName)) {
            return false;
        }
    }
    return true;
}

}  // namespace pikel
