// Takes a driver out of the spooler, and with it the language monitor and the files that no other driver needs.
#include "driver/delete_driver_file.h"

#include <algorithm>

#include "driver/delayed_replace.h"
#include "driver/delete_printer_driver.h"
#include "spooler/driver_records.h"
#include "spooler/look_ups.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/os_route.h"
#include "frame/path.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

// ---- what the drivers use -------------------------------------------------------------------------------------------

/// The results of one pass over the drivers' records.
struct DriverFiles {
    StringList deleteFiles;
    StringList otherFiles;
    StringList otherMonitorFiles;
    std::string strMonitorName;
    std::string strMonitorFile;
};

void TakeFile(LPSTR lpszFile, StringList& files) {
    if (!IsEmpty(lpszFile)) {
        UpperCase(lpszFile);
        files.Append(std::string(BehindLastBackslash(lpszFile)));
    }
}

void TakeFiles(const DRIVER_INFO_3A& driver, StringList& files) {
    for (LPSTR lpszFile : {driver.pConfigFile, driver.pDataFile, driver.pDriverPath, driver.pHelpFile}) {
        TakeFile(lpszFile, files);
    }
    for (LPCSTR lpszFile : MultiString(driver.pDependentFiles)) {
        TakeFile(const_cast<LPSTR>(lpszFile), files);  // texts of the block, which is ours
    }
}

/// A monitor whose DLL can't be told is passed over.
void TakeMonitor(const DRIVER_INFO_3A& driver, bool fIsTarget, DriverFiles& found) {
    if (IsEmpty(driver.pMonitorName)) {
        return;
    }
    std::string strFile;
    if (GetMonitorFile(driver.pMonitorName, strFile) != 0) {
        return;
    }
    UpperCase(strFile.data());
    if (fIsTarget) {
        found.strMonitorName = driver.pMonitorName;
        found.strMonitorFile = strFile;
    } else {
        found.otherMonitorFiles.Append(strFile);
    }
}

/// Collects what the drivers of one version use. Writes to the records' texts.
void TakeDrivers(const DRIVER_INFO_3A* pDrivers, DWORD dwCount, DWORD dwVersion, LPCSTR lpszName, DriverFiles& found) {
    for (const DRIVER_INFO_3A* pDriver = pDrivers; pDriver != pDrivers + dwCount; ++pDriver) {
        if (pDriver->cVersion != dwVersion) {
            continue;
        }
        const bool fIsTarget = EqualNoCase(TextOrEmpty(pDriver->pName), TextOrEmpty(lpszName));
        TakeFiles(*pDriver, fIsTarget ? found.deleteFiles : found.otherFiles);
        TakeMonitor(*pDriver, fIsTarget, found);
    }
    found.deleteFiles.SortUnique();
    found.otherFiles.SortUnique();
    found.otherMonitorFiles.SortUnique();
}

/// Hands a result over to a caller who wants it.
template <class Result>
void HandOver(Result& found, Result* pWanted) {
    if (pWanted != nullptr) {
        *pWanted = std::move(found);
    }
}

void LogFiles(const StringList* pDeleteFiles, const StringList* pOtherFiles, const std::string* pstrMonitorFile,
              const StringList* pOtherMonitorFiles) {
    static const StringList kNone;
    for (const std::string& strFile : pDeleteFiles != nullptr ? *pDeleteFiles : kNone) {
        WriteLogDetail("%s -> Delete", strFile.c_str());
    }
    for (const std::string& strFile : pOtherFiles != nullptr ? *pOtherFiles : kNone) {
        WriteLogDetail("%s -> Other Driver Used", strFile.c_str());
    }
    if (pstrMonitorFile != nullptr && !pstrMonitorFile->empty()) {
        WriteLogDetail("%s(Monitor) -> Delete", pstrMonitorFile->c_str());
    }
    for (const std::string& strFile : pOtherMonitorFiles != nullptr ? *pOtherMonitorFiles : kNone) {
        WriteLogDetail("%s(Monitor) -> Other Driver Used", strFile.c_str());
    }
}

// ---- deletion of files ----------------------------------------------------------------------------------------------

using DriverFileRoutine = DWORD (*)(DWORD, LPCSTR, LPCSTR);
using MonitorFileRoutine = DWORD (*)(LPCSTR);

constexpr OsRouteTable<DriverFileRoutine> kDeleteDriverFile = {
    &DeleteDriverFile9x,             // Windows 95
    &DeleteDriverFile9x,             // Windows 98
    &DeleteDriverFile9x,             // Windows Me
    &DeleteDriverFileNT,             // NT 4
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // Windows 2000: from here on the spooler deletes the files
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // XP generation, x86
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // XP generation, IA64
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // XP generation, x64
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // Vista generation, x86
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // Vista generation, IA64
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // Vista generation, x64
    &NoWork<DWORD, LPCSTR, LPCSTR>,  // anything else
};
static_assert(IsComplete(kDeleteDriverFile));

constexpr OsRouteTable<MonitorFileRoutine> kDeleteMonitorFile = {
    &DeleteMonitorFile9x,  // Windows 95
    &DeleteMonitorFile9x,  // Windows 98
    &DeleteMonitorFile9x,  // Windows Me
    &DeleteMonitorFileNT,  // NT 4
    &DeleteMonitorFileNT,  // Windows 2000
    &DeleteMonitorFileNT,  // XP generation, x86
    &DeleteMonitorFileNT,  // XP generation, IA64
    &DeleteMonitorFileNT,  // XP generation, x64
    &DeleteMonitorFileNT,  // Vista generation, x86
    &DeleteMonitorFileNT,  // Vista generation, IA64
    &DeleteMonitorFileNT,  // Vista generation, x64
    &DeleteMonitorFileNT,  // anything else
};
static_assert(IsComplete(kDeleteMonitorFile));

bool Holds(const StringList& sorted, const std::string& strFile) {
    return std::binary_search(sorted.begin(), sorted.end(), strFile);
}

/// Codes of the routine are dropped, and the log tells of a deletion also where the routine has no work.
void DeleteUnusedFiles(DWORD dwVersion, LPCSTR lpszEnvironment, const StringList& deleteFiles,
                       const StringList& otherFiles) {
    for (const std::string& strFile : deleteFiles) {
        if (Holds(otherFiles, strFile)) {
            WriteLogDetail("DeleteDriverFiles - (%s) is in use", strFile.c_str());
        } else {
            CallRoute(kDeleteDriverFile, dwVersion, lpszEnvironment, strFile.c_str());
            WriteLogDetail("DeleteDriverFiles - (%s) is deleted", strFile.c_str());
        }
    }
}

/// A driver without a monitor comes here with an empty name, which no other driver's list holds.
void DeleteUnusedMonitorFile(const StringList* pOtherMonitorFiles, const std::string* pstrMonitorFile) {
    if (pOtherMonitorFiles != nullptr && pstrMonitorFile != nullptr && !Holds(*pOtherMonitorFiles, *pstrMonitorFile)) {
        CallRoute(kDeleteMonitorFile, pstrMonitorFile->c_str());
        WriteLogDetail("DeleteMonitorFile - (%s) is deleted", pstrMonitorFile->c_str());
    } else {
        WriteLogDetail("DeleteMonitorFile - (%s) is in use",
                       pstrMonitorFile != nullptr ? pstrMonitorFile->c_str() : "");
    }
}

/// Deletes a driver file and logs the outcome.
void DeleteAndLog(const std::string& strPath) {
    if (Platform().DeleteFileA(strPath.c_str())) {
        WriteLogDetail("(%s) is deleted", strPath.c_str());
    } else {
        WriteLogDetail("(%s) is not delete(%d)", strPath.c_str(), Platform().GetLastError());
    }
}

/// Deletes a monitor's file and logs a failure, which goes no further.
void DeleteOrLog(const std::string& strPath) {
    if (!Platform().DeleteFileA(strPath.c_str())) {
        WriteLogDetail("DeleteFile(%s) - (%d)", strPath.c_str(), Platform().GetLastError());
    }
}

/// Deletes a file of the driver directory; one that is held goes at the system's next start.
DWORD DeleteNowOrAtStart(const std::string& strPath) {
    if (Platform().DeleteFileA(strPath.c_str())) {
        return 0;
    }
    const DWORD dwCode = Platform().GetLastError();
    if (dwCode == ERROR_FILE_NOT_FOUND || dwCode == ERROR_PATH_NOT_FOUND) {
        return 0;
    }
    return WriteWininit("NUL", strPath.c_str());
}

}  // namespace

// ---- CDeleteDriverFile ----------------------------------------------------------------------------------------------

DWORD CDeleteDriverFile::GetFileList(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszName, StringList* pDeleteFiles,
                                     StringList* pOtherFiles, std::string* pstrMonitorName,
                                     std::string* pstrMonitorFile, StringList* pOtherMonitorFiles) {
    WriteLogDetail("CDeleteDriverFile::GetFileList() Start");
    DriverFiles found;
    HeapBlock drivers;
    DWORD dwCount = 0;
    const DWORD dwStatus = EnumDriverRecords(lpszEnvironment, 3, drivers, &dwCount);
    if (dwCount != 0) {
        auto* pDrivers = static_cast<DRIVER_INFO_3A*>(drivers.Get());
        ReplaceSpoolerVersion9x(pDrivers, dwCount);
        TakeDrivers(pDrivers, dwCount, dwVersion, lpszName, found);
    }
    HandOver(found.deleteFiles, pDeleteFiles);
    HandOver(found.otherFiles, pOtherFiles);
    HandOver(found.strMonitorName, pstrMonitorName);
    HandOver(found.strMonitorFile, pstrMonitorFile);
    HandOver(found.otherMonitorFiles, pOtherMonitorFiles);
    LogFiles(pDeleteFiles, pOtherFiles, pstrMonitorFile, pOtherMonitorFiles);
    WriteLogDetail("CDeleteDriverFile::GetFileList() End(%d)", dwStatus);
    return dwStatus;
}

DWORD CDeleteDriverFile::DeletePrinterDriver(DWORD dwVersion, LPCSTR lpszName, DWORD dwProcessor, LPCSTR lpszServer,
                                             DWORD dwRestartSpooler) {
    WriteLogDetail("CDeleteDriverFile::DeletePrinterDriver() Start");
    const LPCSTR lpszEnvironment = EnvironmentOfDeletion(dwVersion, dwProcessor);
    StringList deleteFiles;
    StringList otherFiles;
    std::string strMonitorName;
    std::string strMonitorFile;
    StringList otherMonitorFiles;
    // The lists come first, while the spooler still knows the driver.
    DWORD dwStatus = GetFileList(dwVersion, lpszEnvironment, lpszName, &deleteFiles, &otherFiles, &strMonitorName,
                                 &strMonitorFile, &otherMonitorFiles);
    const LPCSTR lpszMonitorName = strMonitorName.empty() ? nullptr : strMonitorName.c_str();
    if (dwStatus == 0) {
        dwStatus =
            DeletePrinterDriverByRoute(lpszServer, dwVersion, lpszName, lpszMonitorName, dwProcessor, dwRestartSpooler);
    }
    if (dwStatus == 0) {
        dwStatus = DeleteLanguageMonitor(lpszServer, dwVersion, lpszName, lpszMonitorName, 1);
    }
    if (dwStatus == 0) {
        dwStatus = DeleteDriverFiles(dwVersion, lpszEnvironment, &deleteFiles, &otherFiles, &otherMonitorFiles,
                                     &strMonitorFile);
    }
    WriteLogDetail("CDeleteDriverFile::DeletePrinterDriver() End(%d)", dwStatus);
    return dwStatus;
}

DWORD CDeleteDriverFile::DeleteDriverFiles(DWORD dwVersion, LPCSTR lpszEnvironment, const StringList* pDeleteFiles,
                                           const StringList* pOtherFiles, const StringList* pOtherMonitorFiles,
                                           const std::string* pstrMonitorFile) {
    WriteLogDetail("CDeleteDriverFile::DeleteDriverFiles() Start");
    std::string strDirectory;  // asked for as a test alone: without it nothing is deleted
    const DWORD dwStatus = GetDriverDirectory(lpszEnvironment, strDirectory);
    if (dwStatus == 0) {
        if (pDeleteFiles != nullptr && pOtherFiles != nullptr) {
            DeleteUnusedFiles(dwVersion, lpszEnvironment, *pDeleteFiles, *pOtherFiles);
        }
        DeleteUnusedMonitorFile(pOtherMonitorFiles, pstrMonitorFile);
    }
    WriteLogDetail("CDeleteDriverFile::DeleteDriverFiles() End(%d)", dwStatus);
    return dwStatus;
}

LPCSTR EnvironmentOfDeletion(DWORD dwVersion, DWORD dwProcessor) {
    const LPCSTR lpszEnvironment = DriverArchitectureOf(dwVersion, dwProcessor);
    if (dwVersion == 2 || dwVersion == 3) {
        WriteLog("ProcessorType = %d", dwProcessor);
        WriteLog("Environment = %s", lpszEnvironment);
    }
    return lpszEnvironment;
}

// ---- routines of the tables -----------------------------------------------------------------------------------------

DWORD DeleteDriverFile9x(DWORD, LPCSTR lpszEnvironment, LPCSTR lpszFile) {
    if (lpszFile == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DeleteDriverFile9x() - %s Start", lpszFile);
    std::string strDirectory;
    const DWORD dwStatus = GetDriverDirectory(lpszEnvironment, strDirectory);
    if (dwStatus == 0) {
        DeleteAndLog(strDirectory + "\\" + lpszFile);
    }
    WriteLogDetail("DeleteDriverFile9x() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteDriverFileNT(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszFile) {
    if (lpszFile == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DeleteDriverFileNT - (%s) Start", lpszFile);
    std::string strDirectory;
    const DWORD dwStatus = GetDriverDirectory(lpszEnvironment, strDirectory);
    if (dwStatus == 0) {
        DeleteAndLog(strDirectory + "\\" + lpszFile);
        const std::string strVersion = std::to_string(static_cast<INT>(dwVersion));
        DeleteAndLog(strDirectory + "\\" + strVersion + "\\" + lpszFile);
    }
    WriteLogDetail("DeleteDriverFileNT() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteMonitorFile9x(LPCSTR lpszFile) {
    if (lpszFile == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DeleteMonitorFile9x() - %s Start", lpszFile);
    std::string strDirectory;
    DWORD dwStatus = GetDriverDirectory(nullptr, strDirectory);
    if (dwStatus == 0) {
        dwStatus = DeleteNowOrAtStart(strDirectory + "\\" + lpszFile);
    }
    WriteLogDetail("DeleteMonitorFile9x() End(%d)", dwStatus);
    return dwStatus;
}

DWORD DeleteMonitorFileNT(LPCSTR lpszFile) {
    if (lpszFile == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DeleteMonitorFileNT() - %s Start", lpszFile);
    DeleteOrLog(GetOsIdentity().systemDirectory + "\\" + lpszFile);
    std::string strDirectory;
    const DWORD dwStatus = GetDriverDirectory(nullptr, strDirectory);
    if (dwStatus == 0) {
        DeleteOrLog(strDirectory + "\\" + lpszFile);
    }
    WriteLogDetail("DeleteMonitorFileNT() End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
