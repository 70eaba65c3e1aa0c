// Adds a printer driver to the spooler: the routines of the systems and the steps that they share.
#include "driver/add_printer_driver.h"

#include <string>
#include <vector>

#include "colour/color_profile_install.h"
#include "spooler/driver_records.h"
#include "driver/language_monitor.h"
#include "frame/look_ups.h"
#include "driver/spooler_service.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr DWORD kWaitAfterRestart = 100;  // milliseconds

// ---- steps shared by the routines -----------------------------------------------------------------------------------

/// Registers the language monitor; after a failure once more, with a restarted spooler.
/// @param lpszRoutine  name of the routine in the log
DWORD AddMonitorWithRestart(const MONITOR_INFO_2A& monitorInfo, LPCSTR lpszRoutine) {
    if (AddLanguageMonitor(&monitorInfo) == 0) {
        return 0;
    }
    WriteLog("%s - Service(%s).ReStart", lpszRoutine, kSpooler);
    {
        ServiceHandles handles;
        WithSpoolerService(handles, &Win32RestartService, "Service(%s).ReStart Error(%d)");
    }
    Platform().Sleep(kWaitAfterRestart);
    return AddLanguageMonitor(&monitorInfo);
}

/// Adds the driver; after a failure once more.
/// @param fnAdd        the spooler's call; false on failure, with the code as last error
/// @param lpszRoutine  name of the routine in the log
/// @param lpszFailure  log format of the second failure, for the code
template <class Add>
DWORD AddWithRetry(Add fnAdd, LPCSTR lpszRoutine, LPCSTR lpszFailure) {
    if (fnAdd()) {
        return 0;
    }
    DWORD dwStatus = 0;
    DWORD dwCode = Platform().GetLastError();
    // The second comparison looks at the routine's status, which is 0 here, and not at the code just read, so that it
    // never holds: after a failed call (1726) there is the wait and the second attempt, but no start of the service and
    // no line of it in the log.
    if (dwCode == RPC_S_SERVER_UNAVAILABLE || dwStatus == RPC_S_CALL_FAILED) {
        WriteLog("%s - Service(%s).Start", lpszRoutine, kSpooler);
        ServiceHandles handles;
        WithSpoolerService(handles, &Win32StartService, kServiceStartFailure);
    }
    Platform().Sleep(kWaitBeforeSecondTry);
    if (!fnAdd()) {
        dwStatus = Platform().GetLastError();
        WriteLog(lpszFailure, dwStatus);
    }
    return dwStatus;
}

/// Full paths of the staged files, in the order of their removal. A file named twice is in the list twice.
std::vector<std::string> ListStagedFiles(const DRIVER_INFO_6A& driverInfo) {
    std::vector<std::string> vecFiles;
    for (LPCSTR lpszFile :
         {driverInfo.pConfigFile, driverInfo.pDataFile, driverInfo.pDriverPath, driverInfo.pHelpFile}) {
        if (!IsEmpty(lpszFile)) {
            vecFiles.emplace_back(lpszFile);
        }
    }
    if (!IsEmpty(driverInfo.pDependentFiles)) {
        // Without the directory the entries are rooted at a bare backslash, where nothing is deleted as a rule.
        std::string strDirectory;
        GetDriverDirectory(driverInfo.pEnvironment, strDirectory);
        for (LPCSTR lpszFile : MultiString(driverInfo.pDependentFiles)) {
            vecFiles.push_back(strDirectory + "\\" + lpszFile);
        }
    }
    return vecFiles;
}

/// Deletes the files that the spooler has copied to their last place. A file that stays is logged and changes nothing.
void RemoveStagedFiles(const DRIVER_INFO_6A& driverInfo) {
    for (const std::string& strFile : ListStagedFiles(driverInfo)) {
        if (Platform().DeleteFileA(strFile.c_str())) {
            WriteLogDetail("DeleteFile -> %s", strFile.c_str());
        } else {
            WriteLogDetail("%s is not deleted", strFile.c_str());
        }
    }
}

/// The level 3 form of a record's driver; its texts stay the record's.
DRIVER_INFO_3A ToLevel3(const DRIVER_INFO_6A& driverInfo, DWORD dwVersion) {
    DRIVER_INFO_3A info{};
    info.cVersion = dwVersion;
    info.pName = driverInfo.pName;
    info.pEnvironment = driverInfo.pEnvironment;
    info.pDriverPath = driverInfo.pDriverPath;
    info.pDataFile = driverInfo.pDataFile;
    info.pConfigFile = driverInfo.pConfigFile;
    info.pHelpFile = driverInfo.pHelpFile;
    info.pDependentFiles = driverInfo.pDependentFiles;
    info.pMonitorName = driverInfo.pMonitorName;
    info.pDefaultDataType = driverInfo.pDefaultDataType;
    return info;
}

template <class Info>
BOOL AddDriverAtLevel(LPSTR lpszServer, DWORD dwLevel, Info& info) {
    return Platform().AddPrinterDriverA(lpszServer, dwLevel, reinterpret_cast<LPBYTE>(&info));
}

// ---- what the routines do between their log lines -------------------------------------------------------------------

/// The 9x family: the monitor whatever the version, then one attempt at the driver.
template <class Info>
DWORD AddOn9x(LPSTR lpszServer, const DriverAddRecord& record, DWORD dwLevel, Info info) {
    DWORD dwStatus = AddLanguageMonitor(&record.MonitorInfo);
    if (dwStatus != 0) {
        return dwStatus;
    }
    return AddDriverAtLevel(lpszServer, dwLevel, info) ? 0 : Platform().GetLastError();
}

DWORD AddOnNt4(LPSTR lpszServer, const DriverAddRecord& record, LPCSTR lpszRoutine) {
    if (record.DriverInfo.cVersion == PIKEL_DRIVER_VERSION_NT4) {
        DWORD dwStatus = AddMonitorWithRestart(record.MonitorInfo, lpszRoutine);
        if (dwStatus != 0) {
            return dwStatus;
        }
    }
    DRIVER_INFO_3A info = ToLevel3(record.DriverInfo, record.DriverInfo.cVersion);
    return AddWithRetry([&] { return AddDriverAtLevel(lpszServer, 3, info); }, lpszRoutine,
                        "AddPrinterDriver Error(%d)");
}

/// Has the spooler copy and add the driver. The library stays loaded for both attempts.
DWORD AddByCopying(LPSTR lpszServer, const DriverAddRecord& record, LPCSTR lpszRoutine) {
    LookedUp<looked_up::AddPrinterDriverExA> add("winspool.drv", "AddPrinterDriverExA");
    if (!add) {
        return add.Status();
    }
    // The record begins with the DRIVER_INFO_6 and serves as one; the spooler only reads it.
    auto* pbInfo = reinterpret_cast<LPBYTE>(const_cast<DriverAddRecord*>(&record));
    return AddWithRetry([&] { return add.Call()(lpszServer, 6, pbInfo, APD_COPY_NEW_FILES); }, lpszRoutine,
                        "AddPrinterDriverEx Error(%d)");
}

/// Windows 2000 and later.
/// @param lpszOwn  the DriverArchitecture whose drivers get their monitor registered
DWORD AddOn2k(LPSTR lpszServer, const DriverAddRecord& record, LPCSTR lpszOwn, LPCSTR lpszRoutine) {
    if (record.DriverInfo.cVersion == PIKEL_DRIVER_VERSION_2000 &&
        EqualNoCase(TextOrEmpty(record.DriverInfo.pEnvironment), lpszOwn)) {
        DWORD dwStatus = AddMonitorWithRestart(record.MonitorInfo, lpszRoutine);
        if (dwStatus != 0) {
            return dwStatus;
        }
    }
    DWORD dwStatus = AddByCopying(lpszServer, record, lpszRoutine);
    if (dwStatus == 0) {
        RemoveStagedFiles(record.DriverInfo);
    }
    return dwStatus;
}

using AddRoutine = DWORD (*)(LPSTR, const DriverAddRecord*);

constexpr OsRouteTable<AddRoutine> kAddPrinterDriver = {
    &AddPrinterDriver98,    // Windows 95
    &AddPrinterDriver98,    // Windows 98
    &AddPrinterDriverME,    // Windows Me
    &AddPrinterDriverNT,    // NT 4
    &AddPrinterDriver2k,    // Windows 2000
    &AddPrinterDriver2k,    // XP generation, x86
    &AddPrinterDriverIA64,  // XP generation, IA64
    &AddPrinterDriverx64,   // XP generation, x64
    &AddPrinterDriver2k,    // Vista generation, x86
    &AddPrinterDriverIA64,  // Vista generation, IA64
    &AddPrinterDriverx64,   // Vista generation, x64
    &AddPrinterDriver2k,    // anything else
};
static_assert(IsComplete(kAddPrinterDriver));

}  // namespace

// ---- the routines ---------------------------------------------------------------------------------------------------

DWORD AddPrinterDriver98(LPSTR lpszServer, const DriverAddRecord* pRecord) {
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("AddPrinterDriver98() Start");
    DWORD dwStatus = AddOn9x(lpszServer, *pRecord, 3, ToLevel3(pRecord->DriverInfo, kSpoolerVersion9x));
    WriteLogDetail("AddPrinterDriver98() End(%d)", dwStatus);
    return dwStatus;
}

DWORD AddPrinterDriverME(LPSTR lpszServer, const DriverAddRecord* pRecord) {
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("AddPrinterDriverME() Start");
    DRIVER_INFO_6A info = pRecord->DriverInfo;
    info.cVersion = kSpoolerVersion9x;
    DWORD dwStatus = AddOn9x(lpszServer, *pRecord, 6, info);
    WriteLogDetail("AddPrinterDriverME() End(%d)", dwStatus);
    return dwStatus;
}

DWORD AddPrinterDriverNT(LPSTR lpszServer, const DriverAddRecord* pRecord) {
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("AddPrinterDriverNT() Start");
    DWORD dwStatus = AddOnNt4(lpszServer, *pRecord, "AddPrinterDriverNT()");
    WriteLogDetail("AddPrinterDriverNT() End(%d)", dwStatus);
    return dwStatus;
}

DWORD AddPrinterDriver2k(LPSTR lpszServer, const DriverAddRecord* pRecord) {
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("AddPrinterDriver2k() Start");
    DWORD dwStatus = AddOn2k(lpszServer, *pRecord, kEnvironmentX86, "AddPrinterDriver2k()");
    WriteLogDetail("AddPrinterDriver2k() End(%d)", dwStatus);
    return dwStatus;
}

DWORD AddPrinterDriverIA64(LPSTR lpszServer, const DriverAddRecord* pRecord) {
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("AddPrinterDriverIA64() Start");
    DWORD dwStatus = AddOn2k(lpszServer, *pRecord, kEnvironmentIa64, "AddPrinterDriverIA64()");
    WriteLogDetail("AddPrinterDriverIA64() End(%d)", dwStatus);
    return dwStatus;
}

DWORD AddPrinterDriverx64(LPSTR lpszServer, const DriverAddRecord* pRecord) {
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("AddPrinterDriverx64() Start");
    DWORD dwStatus = AddOn2k(lpszServer, *pRecord, kEnvironmentX64, "AddPrinterDriverx64()");
    WriteLogDetail("AddPrinterDriverx64() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DoAddPrinterDriver(LPSTR lpszServer, const DriverAddRecord* pRecord) {
    if (pRecord == nullptr || pRecord->DriverInfo.pName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoAddPrinterDriver(%s) Start", pRecord->DriverInfo.pName);
    DWORD dwStatus = CallRoute(kAddPrinterDriver, lpszServer, pRecord);
    if (dwStatus == 0) {
        InstallColorProfile(pRecord->ColorProfileList, pRecord->ColorProfileCount);  // never fails the add
    }
    WriteLog("DoAddPrinterDriver End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
