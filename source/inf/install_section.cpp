// An install section: the files of one model's driver and the role of each.
#include "inf/install_section.h"

#include <utility>

#include "inf/destination_dirs_section.h"
#include "inf/driver_version.h"
#include "inf/inf_access.h"
#include "inf/section_walk.h"
#include "frame/log.h"
#include "frame/number.h"
#include "frame/string_list.h"

namespace pikel {

namespace {

constexpr char kDefaultDestDir[] = "DefaultDestDir";
constexpr DWORD kMillisecondsPerSecond = 1000;
constexpr DWORD kDefaultRetrySeconds = 45;
constexpr DWORD kDefaultNotSelectedSeconds = 15;

/// A file that stands in a CopyFiles value itself, behind an "@".
DWORD AppendNamedFile(HINF hInf, const std::string& strElement, std::vector<CopyFileEntry>& vecFiles) {
    CInfDestinationDirsSection destination;
    const DWORD dwStatus = destination.GetData(hInf, kDefaultDestDir);
    if (dwStatus != ERROR_SUCCESS) {
        WriteErrorLog(dwStatus, kInfFileSource, 1243);
        return dwStatus;
    }
    CopyFileEntry entry;
    entry.m_dwDirID = destination.m_dwDirID;
    entry.m_strDest = strElement.substr(1);
    vecFiles.push_back(std::move(entry));
    return ERROR_SUCCESS;
}

/// Milliseconds of a timeout's value, which counts seconds.
DWORD TimeoutOf(const std::string& strSeconds, DWORD dwDefaultSeconds) {
    const DWORD dwSeconds = static_cast<DWORD>(ParseNumber(strSeconds));
    return (dwSeconds == 0 ? dwDefaultSeconds : dwSeconds) * kMillisecondsPerSecond;
}

}  // namespace

DWORD GetFilesFromSection(HINF hInf, LPCSTR lpszSection, std::vector<CopyFileEntry>& vecFiles) {
    INFCONTEXT firstLine{};
    if (!Platform().SetupFindFirstLineA(hInf, lpszSection, nullptr, &firstLine)) {
        return Platform().GetLastError();
    }
    CInfDestinationDirsSection destination;
    DWORD dwStatus = destination.GetData(hInf, lpszSection);
    if (dwStatus != ERROR_SUCCESS) {
        dwStatus = destination.GetData(hInf, kDefaultDestDir);
    }
    if (dwStatus != ERROR_SUCCESS) {
        WriteErrorLog(dwStatus, kInfFileSource, 1297);
        return dwStatus;
    }
    const std::size_t countBefore = vecFiles.size();
    dwStatus = WalkLinesFrom(firstLine, [&](INFCONTEXT& context) {
        std::string strLine;
        const DWORD dwLineStatus = GetInfLineText(context, strLine);
        if (dwLineStatus != ERROR_SUCCESS) {
            return dwLineStatus;
        }
        const StringList csvFile(strLine, ',');
        CopyFileEntry& entry = vecFiles.emplace_back();
        entry.m_dwDirID = destination.m_dwDirID;
        std::string* const aFields[] = {&entry.m_strDest, &entry.m_strSource, &entry.m_strTemp};
        for (std::size_t i = 0; i < std::size(aFields) && i < csvFile.size(); ++i) {
            *aFields[i] = csvFile[i];
        }
        return dwLineStatus;
    });
    if (dwStatus != ERROR_SUCCESS) {
        vecFiles.resize(countBefore);
    }
    return dwStatus;
}

DWORD CInfInstallSection::GetData(HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey, std::string& strValue) {
    WriteLog("CInfInstallSection::GetData() Start");
    DWORD dwStatus = GetInfLineText(hInf, lpszSection, lpszKey, strValue);
    if (dwStatus != ERROR_SUCCESS) {
        std::string strDataSection;
        dwStatus = GetInfLineText(hInf, lpszSection, "DataSection", strDataSection);
        if (dwStatus == ERROR_SUCCESS) {
            // A DataSection without a name leads nowhere: the key isn't there.
            dwStatus = strDataSection.empty() ? static_cast<DWORD>(ERROR_INTERNAL_ERROR)
                                              : GetInfLineText(hInf, strDataSection.c_str(), lpszKey, strValue);
        }
    }
    WriteLog("CInfInstallSection::GetData() End(%d)", dwStatus);
    return dwStatus;
}

DWORD CInfInstallSection::GetCopyFiles(HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey,
                                       std::vector<CopyFileEntry>& vecFiles) {
    WriteLog("CInfInstallSection::GetCopyFiles() Start");
    vecFiles.clear();
    std::string strValue;
    DWORD dwStatus = GetInfLineText(hInf, lpszSection, lpszKey, strValue);
    if (dwStatus == ERROR_SUCCESS) {
        for (const std::string& strElement : StringList(strValue, ',')) {
            if (strElement.empty()) {
                continue;  // names neither a file nor a section
            }
            if (strElement.front() == '@') {
                dwStatus = AppendNamedFile(hInf, strElement, vecFiles);
            } else {
                // A section that can't be read is no error of the value: it adds nothing, and its status is dropped.
                GetFilesFromSection(hInf, strElement.c_str(), vecFiles);
            }
        }
    }
    WriteLog("CInfInstallSection::GetCopyFiles() End(%d)", dwStatus);
    return dwStatus;
}

DWORD CInfInstallSection::GetMonitorName(HINF hInf, LPCSTR lpszSection, std::string& strName, std::string& strFile) {
    WriteLog("CInfInstallSection::GetMonitorName() Start");
    strName.clear();
    strFile.clear();
    std::string strValue;
    const DWORD dwStatus = GetData(hInf, lpszSection, "LanguageMonitor", strValue);
    if (dwStatus == ERROR_SUCCESS) {
        const StringList csvMonitor(strValue, ',');
        if (csvMonitor.size() > 0) {
            strName = csvMonitor[0];
        }
        if (csvMonitor.size() > 1) {
            strFile = csvMonitor[1];
        }
    }
    WriteLog("--- LanguageMonitor File ---");
    WriteLog("Name:%s, DLL:%s", strName.c_str(), strFile.c_str());
    WriteLog("--- LanguageMonitor File ---");
    WriteEmptyLogLine();
    WriteLog("CInfInstallSection::GetMonitorName() End(%d)", dwStatus);
    return dwStatus;
}

DWORD CInfInstallSection::GetTimeout(HINF hInf, LPCSTR lpszSection, DWORD& dwRetry, DWORD& dwNotSelected) {
    WriteLog("CInfInstallSection::GetTimeout() Start");
    dwRetry = 0;
    dwNotSelected = 0;
    std::string strValue;
    if (GetData(hInf, lpszSection, "RetryTimeout", strValue) == ERROR_SUCCESS) {
        dwRetry = TimeoutOf(strValue, kDefaultRetrySeconds);
    } else {
        // An absent key leaves the retry timeout at 0, unlike a value of 0; the default goes to the other timeout,
        // whose own step below always replaces it, so that the retry timeout of the section reads as 0.
        dwNotSelected = kDefaultRetrySeconds * kMillisecondsPerSecond;
        WriteLog("RetryTimeout key is not exist");
    }
    WriteBanneredLog("--- RetryTimeout ---", std::to_string(static_cast<INT>(dwRetry)).c_str());
    if (GetData(hInf, lpszSection, "NotSelectedTimeout", strValue) == ERROR_SUCCESS) {
        dwNotSelected = TimeoutOf(strValue, kDefaultNotSelectedSeconds);
    } else {
        dwNotSelected = kDefaultNotSelectedSeconds * kMillisecondsPerSecond;
        WriteLog("NotSelectedTimeout key is not exist");
    }
    WriteBanneredLog("--- NotSelectedTimeout ---", std::to_string(static_cast<INT>(dwNotSelected)).c_str());
    WriteLog("CInfInstallSection::GetTimeout() End(%d)", ERROR_SUCCESS);
    return ERROR_SUCCESS;
}

DWORD CInfInstallSection::GetData(HINF hInf, LPCSTR lpszSection) {
    WriteLog("CInfInstallSection::GetData() Start");
    *this = CInfInstallSection();
    const DWORD dwStatus = GetCopyFiles(hInf, lpszSection, "CopyFiles", m_vecCopyFiles);
    if (dwStatus != ERROR_SUCCESS) {
        WriteErrorLog(dwStatus, kInfFileSource, 898);
    }
    WriteLog("--- Copy Files ---");
    for (const CopyFileEntry& entry : m_vecCopyFiles) {
        WriteLog("Dest:%s, Src:%s", entry.m_strDest.c_str(), entry.m_strSource.c_str());
    }
    WriteLog("--- Copy Files ---");
    WriteEmptyLogLine();

    // Every key is read whatever the former ones gave.
    GetData(hInf, lpszSection, "DataFile", m_strDataFile);
    WriteBanneredLog("--- Data File ---", m_strDataFile.c_str());
    GetData(hInf, lpszSection, "DriverFile", m_strDriverFile);
    WriteBanneredLog("--- Driver File ---", m_strDriverFile.c_str());
    if (GetData(hInf, lpszSection, "ConfigFile", m_strConfigFile) != ERROR_SUCCESS) {
        m_strConfigFile = m_strDriverFile;
    }
    WriteBanneredLog("--- Config File ---", m_strConfigFile.c_str());
    GetData(hInf, lpszSection, "HelpFile", m_strHelpFile);
    WriteBanneredLog("--- Help File ---", m_strHelpFile.c_str());
    GetMonitorName(hInf, lpszSection, m_strMonitorName, m_strMonitorFile);
    GetData(hInf, lpszSection, "DefaultDataType", m_strDefaultDataType);
    WriteBanneredLog("--- DefaultDataType ---", m_strDefaultDataType.c_str());
    GetTimeout(hInf, lpszSection, m_dwRetryTimeout, m_dwNotSelectedTimeout);

    std::string strDriverVer;
    if (GetInfLineText(hInf, "Version", "DriverVer", strDriverVer) == ERROR_SUCCESS) {
        ParseDriverVer(strDriverVer, m_ftDriverDate, m_qwDriverVer);
    }
    WriteLog("CInfInstallSection::GetData() End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
