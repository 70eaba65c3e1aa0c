// Deletes a printer driver through the spooler, a routine for each family.
#include "driver/delete_driver_routines.h"

#include "driver/spooler_service.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/pikel.h"
#include "platform/owned.h"

namespace pikel {

namespace {

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
    WithSpoolerService(handles, &Win32RestartService, kServiceStartFailure);
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
        WithSpoolerService(handles, &Win32StartService, kServiceStartFailure);
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
    const bool fIsKnown = dwVersion == PIKEL_DRIVER_VERSION_9X || dwVersion == PIKEL_DRIVER_VERSION_NT4 ||
                          dwVersion == PIKEL_DRIVER_VERSION_2000;
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

}  // namespace

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
    const LPCSTR lpszEnvironment = dwVersion == PIKEL_DRIVER_VERSION_9X ? kEnvironment9x : nullptr;
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

DWORD DeletePrinterDriverByOsRoute(LPCSTR lpszServer, DWORD dwVersion, LPCSTR lpszName, LPCSTR lpszMonitorName,
                                   DWORD dwProcessor, DWORD dwRestartSpooler) {
    return CallRoute(kDeletePrinterDriver, lpszServer, dwVersion, lpszName, lpszMonitorName, dwProcessor,
                     dwRestartSpooler);
}

}  // namespace pikel
