// An install section: the files of one model's driver and the role of each.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel {

/// One file of a driver.
struct CopyFileEntry {
    DWORD m_dwFlags = 0;  ///< always 0: the flags of a copy line are not read
    DWORD m_dwDirID = 0;
    std::string m_strDest;
    std::string m_strSource;  ///< empty when it is the same as the destination
    std::string m_strTemp;
};

class CInfInstallSection {
  public:
    /// Reads the whole section. The status is that of the CopyFiles step alone; everything else is read all the same.
    DWORD GetData(HINF hInf, LPCSTR lpszSection);

    /// Reads one key, in the section or else in the section that its DataSection names.
    static DWORD GetData(HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey, std::string& strValue);
    /// Always 0. Milliseconds.
    static DWORD GetTimeout(HINF hInf, LPCSTR lpszSection, DWORD& dwRetry, DWORD& dwNotSelected);
    static DWORD GetMonitorName(HINF hInf, LPCSTR lpszSection, std::string& strName, std::string& strFile);
    /// The files that a key's value names.
    static DWORD GetCopyFiles(HINF hInf, LPCSTR lpszSection, LPCSTR lpszKey, std::vector<CopyFileEntry>& vecFiles);

    std::vector<CopyFileEntry> m_vecCopyFiles;
    std::string m_strDataFile;
    std::string m_strDriverFile;
    std::string m_strConfigFile;  ///< the DriverFile value when the key is absent
    std::string m_strHelpFile;
    std::string m_strMonitorName;
    std::string m_strMonitorFile;
    std::string m_strDefaultDataType;
    DWORD m_dwRetryTimeout = 0;
    DWORD m_dwNotSelectedTimeout = 0;
    DWORDLONG m_qwDriverVer = 0;
    FILETIME m_ftDriverDate{};
};

/// All lines of one copy section, appended to vecFiles only when all could be read.
DWORD GetFilesFromSection(HINF hInf, LPCSTR lpszSection, std::vector<CopyFileEntry>& vecFiles);

}  // namespace pikel
