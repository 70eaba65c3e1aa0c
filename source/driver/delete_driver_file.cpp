// Takes a driver out of the spooler, and with it the language monitor and the files that no other driver needs.
#include "driver/delete_driver_file.h"

#include <algorithm>

#include "driver/delete_driver_routines.h"
#include "driver/delete_file_routines.h"
#include "driver/delete_language_monitor.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/look_ups.h"
#include "frame/pikel.h"
#include "frame/text.h"
#include "platform/owned.h"
#include "spooler/driver_records.h"

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
        TakeDriverFiles(*pDriver, fIsTarget ? &found.deleteFiles : &found.otherFiles);
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
            DeleteDriverFileByOsRoute(dwVersion, lpszEnvironment, strFile.c_str());
            WriteLogDetail("DeleteDriverFiles - (%s) is deleted", strFile.c_str());
        }
    }
}

/// A driver without a monitor comes here with an empty name, which no other driver's list holds.
void DeleteUnusedMonitorFile(const StringList* pOtherMonitorFiles, const std::string* pstrMonitorFile) {
    if (pOtherMonitorFiles != nullptr && pstrMonitorFile != nullptr && !Holds(*pOtherMonitorFiles, *pstrMonitorFile)) {
        DeleteMonitorFileByOsRoute(pstrMonitorFile->c_str());
        WriteLogDetail("DeleteMonitorFile - (%s) is deleted", pstrMonitorFile->c_str());
    } else {
        WriteLogDetail("DeleteMonitorFile - (%s) is in use",
                       pstrMonitorFile != nullptr ? pstrMonitorFile->c_str() : "");
    }
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
        dwStatus = DeletePrinterDriverByOsRoute(lpszServer, dwVersion, lpszName, lpszMonitorName, dwProcessor,
                                                dwRestartSpooler);
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
    if (dwVersion == PIKEL_DRIVER_VERSION_NT4 || dwVersion == PIKEL_DRIVER_VERSION_2000) {
        WriteLog("ProcessorType = %d", dwProcessor);
        WriteLog("Environment = %s", lpszEnvironment);
    }
    return lpszEnvironment;
}

}  // namespace pikel
