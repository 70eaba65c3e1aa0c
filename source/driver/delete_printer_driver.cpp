// Deletes a printer driver, its language monitor and its colour profiles through the spooler.
#include "driver/delete_printer_driver.h"

#include "colour/color_profile_removal.h"
#include "driver/delete_driver_file.h"
#include "spooler/driver_records.h"
#include "driver/spooler_service.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr DWORD kVersion9x = 0;
constexpr DWORD kVersionNt4 = 2;
constexpr DWORD kVersion2000 = 3;
constexpr DWORD kWaitBeforeSecondTry = 200;  // milliseconds

// Of a start and of a restart alike.
constexpr char kServiceFailure[] = "Service(%s).Start Error(%d)";

// ---- drivers --------------------------------------------------------------------------------------------------------

/// Log formats of a driver routine that goes through the spooler's service; each takes the service's name, the last one
/// nothing.
struct ServiceLines {
    LPCSTR lpszRestart;
    LPCSTR lpszStart;
    LPCSTR lpszRestarted;
};

/// Restarts the spooler so that it lets go of the driver. Failures end nothing.
void RestartSpooler(const ServiceLines& lines) {
    WriteLog(lines.lpszRestart, kSpooler);
    ServiceHandles handles;
    WithSpoolerService(handles, &Win32RestartService, kServiceFailure);
    WriteLog("%s", lines.lpszRestarted);
}

/// Deletes the driver; after a failure once more, with the spooler started where it didn't run.
/// @param fnDelete  the spooler's call; false on failure, with the code as last error
template <class Delete>
DWORD DeleteWithRetry(Delete fnDelete, const ServiceLines& lines) {
    if (fnDelete()) {
        return 0;
    }
    if (Platform().GetLastError() == RPC_S_SERVER_UNAVAILABLE) {
        WriteLog(lines.lpszStart, kSpooler);
        ServiceHandles handles;
        WithSpoolerService(handles, &Win32StartService, kServiceFailure);
    }
    Platform().Sleep(kWaitBeforeSecondTry);
    if (fnDelete()) {
        return 0;
    }
    const DWORD dwStatus = Platform().GetLastError();
    WriteLog("DeletePrinterDriver Error(%d)", dwStatus);
    return dwStatus;
}

BOOL DeleteInEnvironment(LPCSTR lpszServer, LPCSTR lpszEnvironment, LPCSTR lpszName) {
    return Platform().DeletePrinterDriverA(const_cast<LPSTR>(lpszServer), const_cast<LPSTR>(lpszEnvironment),
                                           const_cast<LPSTR>(lpszName));
}

/// Environment that the spooler of Windows 2000 and later is told; null, its own, for a version that it doesn't know.
LPCSTR EnvironmentOn2k(DWORD dwVersion, DWORD dwProcessor) {
    const bool fIsKnown = dwVersion == kVersion9x || dwVersion == kVersionNt4 || dwVersion == kVersion2000;
    return fIsKnown ? DriverArchitectureOf(dwVersion, dwProcessor) : nullptr;
}

/// What DeletePrinterDriver2k does between its log lines.
DWORD DeleteOn2k(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, DWORD dwProcessor, DWORD dwRestartSpooler) {
    static constexpr ServiceLines kLines = {"DeletePrinterDriver2k() - Service(%s).Start",
                                            "DeletePrinterDriver2k() - Service(%s).Start",
                                            "DeletePrinterDriver2k() - Service.ReStart End"};
    const LookedUp<looked_up::DeletePrinterDriverExA> remove("winspool.drv", "DeletePrinterDriverExA");
    if (!remove) {
        return remove.Status();
    }
    if (dwRestartSpooler != 0) {
        RestartSpooler(kLines);
    }
    return DeleteWithRetry(
        [&] {
            return remove.Call()(
                const_cast<LPSTR>(lpszServer), const_cast<LPSTR>(EnvironmentOn2k(dwVersion, dwProcessor)),
                const_cast<LPSTR>(lpszName), DPD_DELETE_UNUSED_FILES | DPD_DELETE_SPECIFIC_VERSION, dwVersion);
        },
        kLines);
}

using DriverRoutine = DWORD (*)(LPCSTR, DWORD, LPCSTR, LPCSTR, DWORD, DWORD);

constexpr OsRouteTable<DriverRoutine> kDeletePrinterDriver = {
    &DeletePrinterDriver9x,  // Windows 95
    &DeletePrinterDriver9x,  // Windows 98
    &DeletePrinterDriver9x,  // Windows Me
    &DeletePrinterDriverNT,  // NT 4
    &DeletePrinterDriver2k,  // Windows 2000
    &DeletePrinterDriver2k,  // XP generation, x86
    &DeletePrinterDriver2k,  // XP generation, IA64
    &DeletePrinterDriver2k,  // XP generation, x64
    &DeletePrinterDriver2k,  // Vista generation, x86
    &DeletePrinterDriver2k,  // Vista generation, IA64
    &DeletePrinterDriver2k,  // Vista generation, x64
    &DeletePrinterDriver2k,  // anything else
};
static_assert(IsComplete(kDeletePrinterDriver));

// ---- language monitors ----------------------------------------------------------------------------------------------

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

// ---- routines for drivers -------------------------------------------------------------------------------------------

DWORD DeletePrinterDriver9x(LPCSTR lpszServer, DWORD, LPCSTR lpszName, LPCSTR, DWORD, DWORD) {
    if (lpszName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DeletePrinterDriver9x() - %s Start", lpszName);
    DWORD dwStatus = 0;
    if (!DeleteInEnvironment(lpszServer, nullptr, lpszName)) {
        dwStatus = Platform().GetLastError();
        WriteLog("DeletePrinterDriver Error(%d)", dwStatus);
    }
    WriteLogDetail("DeletePrinterDriver9x() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeletePrinterDriverNT(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR, DWORD,
                            DWORD dwRestartSpooler) {
    static constexpr ServiceLines kLines = {"DeletePrinterDriverNT() - Service(%s).ReStart Start",
                                            "DeletePrinterDriverNT() - Service(%s).Start",
                                            "DeletePrinterDriverNT() - Service.ReStart End"};
    if (lpszName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DeletePrinterDriverNT() - %s Start", lpszName);
    if (dwRestartSpooler != 0) {
        RestartSpooler(kLines);
    }
    const LPCSTR lpszEnvironment = dwVersion == kVersion9x ? kEnvironment9x : nullptr;
    const DWORD dwStatus =
        DeleteWithRetry([&] { return DeleteInEnvironment(lpszServer, lpszEnvironment, lpszName); }, kLines);
    WriteLogDetail("DeletePrinterDriverNT() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeletePrinterDriver2k(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR, DWORD dwProcessor,
                            DWORD dwRestartSpooler) {
    if (lpszName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DeletePrinterDriver2k() - %s Start", lpszName);
    const DWORD dwStatus = DeleteOn2k(lpszServer, dwVersion, lpszName, dwProcessor, dwRestartSpooler);
    WriteLogDetail("DeletePrinterDriver2k() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeletePrinterDriverByRoute(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                                 DWORD dwProcessor, DWORD dwRestartSpooler) {
    return CallRoute(kDeletePrinterDriver, lpszServer, dwVersion, lpszName, lpszMonitorName, dwProcessor,
                     dwRestartSpooler);
}

// ---- routines for language monitors ---------------------------------------------------------------------------------

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
    if (dwEnabled != 0 && lpszMonitorName != nullptr && dwVersion == kVersionNt4) {
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
    if (dwEnabled != 0 && lpszMonitorName != nullptr && dwVersion == kVersion2000) {
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
    if (dwEnabled != 0 && lpszMonitorName != nullptr && dwVersion == kVersion2000) {
        WriteLog("DeleteLanguageMonitorVista() - %s ", lpszMonitorName);
        WithSpoolerService(handles, &Win32RestartService, kServiceFailure);
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

// ---- the worker -----------------------------------------------------------------------------------------------------

DWORD DoDeletePrinterDriver(DWORD dwVersion, LPCSTR lpszName, DWORD dwProcessor, DWORD dwProfileCount,
                            const LPSTR* ppszProfiles, DWORD, DWORD dwRestartSpooler) {
    if (lpszName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoDeletePrinterDriver(%s) Start", lpszName);
    CDeleteDriverFile deletion;
    DWORD dwStatus = deletion.DeletePrinterDriver(dwVersion, lpszName, dwProcessor, nullptr, dwRestartSpooler);
    if (dwStatus == 0 && dwProfileCount != 0 && ppszProfiles != nullptr) {
        dwStatus = UnInstallColorProfile(dwProfileCount, ppszProfiles);
    }
    WriteLog("DoDeletePrinterDriver End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
