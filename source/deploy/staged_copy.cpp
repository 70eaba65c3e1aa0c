// The staged copy of a driver's files.
#include "deploy/staged_copy.h"

#include <string>
#include <vector>

#include "inf/destination_dirs_section.h"
#include "deploy/copy_lists.h"
#include "deploy/expand_file.h"
#include "driver/file_use.h"
#include "frame/look_ups.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/path.h"
#include "frame/pikel.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr char kEveryFile[] = "*.*";
constexpr INT kSourceNewer = 1;
constexpr INT kSourceMissing = 2;
constexpr INT kTargetNewer = -1;

/// Cuts a path to what a path buffer holds.
std::string Bounded(std::string strPath) {
    if (strPath.size() >= MAX_PATH) {
        strPath.resize(MAX_PATH - 1);
    }
    return strPath;
}

/// 1 "Windows 4.0", 2 and 3 "Windows NT x86", 4 "Windows IA64", 5 "Windows x64"; 87 and an empty text for any other.
DWORD GetEnvironmentFromArchitecture(DWORD dwArchitecture, std::string& strEnvironment) {
    LPCSTR lpszEnvironment = DriverArchitectureOf(dwArchitecture);
    strEnvironment = lpszEnvironment == nullptr ? "" : lpszEnvironment;
    return lpszEnvironment == nullptr ? static_cast<DWORD>(ERROR_INVALID_PARAMETER) : 0;
}

/// One staged copy.
class StagedCopy {
  public:
    StagedCopy(LPCSTR lpszInfPath, LPCSTR lpszStagingFolder, DWORD dwInfArchitecture, LPDWORD pdwRestartNeeded)
        : m_lpszInfPath(lpszInfPath),
          m_strStaging(WithBackslash(lpszStagingFolder)),
          m_dwInfArchitecture(dwInfArchitecture),
          m_fForeign(IsForeignArchitecture(dwInfArchitecture)),
          m_pdwRestartNeeded(pdwRestartNeeded) {}

    CopyFileLists& Lists() { return m_lists; }

    /// Expands the files into the staging folder and finds out which installed ones are locked. A code ends the walk
    /// and nothing else: what was staged is placed all the same.
    void Stage();
    /// Places the staged files.
    DWORD CommitCopiedFiles();

  private:
    bool Expand(const std::string& strSource, const std::string& strStaged);
    std::string InstalledPath(std::size_t nIndex) const;
    DWORD StageOne(std::size_t nIndex);
    DWORD KeepNewer(const std::string& strStaged, const std::string& strInstalled, INT& nVerdict);
    INT TestLock(const std::string& strInstalled, INT nVerdict);
    std::string TargetDirectory(INT nDirID) const;
    DWORD Place(std::size_t nIndex);
    DWORD PlaceAtRestart(const std::string& strName, const std::string& strTarget);
    /// NT 4 wants the language monitor in the system directory.
    bool IsMonitorOfNt4(std::size_t nIndex) const {
        return HasOsClass(OsClassNt4) && m_lists.vecTargetNames[nIndex] == m_lists.strMonitorFile;
    }
    std::string InSystemDirectory(const std::string& strName) const {
        return GetOsIdentity().systemDirectory + "\\" + strName;
    }

    LPCSTR m_lpszInfPath;
    std::string m_strStaging;
    std::string m_strStagedInf;  ///< path of the INF's own copy; empty while nothing is staged
    std::string m_strSource;
    std::string m_strEnvironment;
    DWORD m_dwInfArchitecture;
    bool m_fForeign;
    LPDWORD m_pdwRestartNeeded;
    CopyFileLists m_lists;
    std::vector<INT> m_vecLockFlags;
};

// ---- staging --------------------------------------------------------------------------------------------------------

void StagedCopy::Stage() {
    DWORD dwStatus = GetEnvironmentFromArchitecture(m_dwInfArchitecture, m_strEnvironment);
    if (dwStatus != 0) {
        return;
    }
    m_strSource = FolderOfPath(m_lpszInfPath);
    // The INF goes along; the files count without it.
    m_strStagedInf = m_strStaging + FileNameOfPath(m_lpszInfPath);
    Platform().CopyFileA(m_lpszInfPath, m_strStagedInf.c_str(), FALSE);
    for (std::size_t i = 0; i < m_lists.size() && dwStatus == 0; ++i) {
        dwStatus = StageOne(i);
    }
}

/// @return false for a file that is staged already, which is free then; any other failure is passed over
bool StagedCopy::Expand(const std::string& strSource, const std::string& strStaged) {
    SourceFileInfo info;
    if (GetSourceFileInfo(strSource, info) && ExpandFile(strSource, strStaged, info)) {
        return true;
    }
    return Platform().GetLastError() != ERROR_FILE_EXISTS;
}

/// Adds the lock flag of one file.
DWORD StagedCopy::StageOne(std::size_t nIndex) {
    const std::string strStaged = m_strStaging + m_lists.NameAt(nIndex);
    if (Platform().PathFileExistsA(strStaged.c_str()) ||
        !Expand(m_strSource + m_lists.vecSourceNames[nIndex], strStaged)) {
        m_vecLockFlags.push_back(0);
        return 0;
    }
    const std::string strInstalled = InstalledPath(nIndex);
    ClearReadOnly(strStaged.c_str());
    INT nVerdict = 0;
    const DWORD dwStatus = KeepNewer(strStaged, strInstalled, nVerdict);
    m_vecLockFlags.push_back(TestLock(strInstalled, nVerdict));
    return dwStatus;
}

/// Where the file is installed, as far as the system knows. A driver's own files lie in a folder of their version.
std::string StagedCopy::InstalledPath(std::size_t nIndex) const {
    const std::string& strName = m_lists.vecTargetNames[nIndex];
    const INT nDirID = m_lists.vecDirIDs[nIndex];
    std::string strDirectory;
    if (nDirID != kNoDirID) {
        GetDirectoryFromDirID(static_cast<DWORD>(nDirID), m_strEnvironment.c_str(), strDirectory);
    }
    if (IsMonitorOfNt4(nIndex)) {
        return Bounded(InSystemDirectory(strName));
    }
    strDirectory = WithBackslash(strDirectory);
    if (nDirID == static_cast<INT>(DirIDPrinterDriver) || nDirID == static_cast<INT>(DirIDSystem)) {
        switch (m_dwInfArchitecture) {
            case PIKEL_ARCHITECTURE_WINDOWS_9X:
                if (!HasOsClass(OsClassWindows95 | OsClassWindows98 | OsClassWindowsMe)) {
                    strDirectory += "0\\";
                }
                break;
            case PIKEL_ARCHITECTURE_NT4_X86:
                strDirectory += "2\\";
                break;
            default:  // the other values don't come this far
                strDirectory += "3\\";
                break;
        }
    }
    return Bounded(strDirectory + strName);
}

/// Has the newer of the two files staged.
DWORD StagedCopy::KeepNewer(const std::string& strStaged, const std::string& strInstalled, INT& nVerdict) {
    const DWORD dwStatus = CompareFileVersion(strStaged.c_str(), strInstalled.c_str(), nVerdict);
    if (dwStatus == 0 && nVerdict == kTargetNewer &&
        !Platform().CopyFileA(strInstalled.c_str(), strStaged.c_str(), FALSE)) {
        return Platform().GetLastError();
    }
    return dwStatus;
}

/// @return 1 when the installed file is locked and is to be replaced by a newer one, else 0
INT StagedCopy::TestLock(const std::string& strInstalled, INT nVerdict) {
    DWORD dwCode = 0;
    // A file of another architecture is nothing that this system could be running.
    if (m_fForeign || ProbeFileUse(strInstalled.c_str(), &dwCode) != FileUse::InUse) {
        WriteLogDetail("[unlock] %s", strInstalled.c_str());
        return 0;
    }
    if (nVerdict == kSourceMissing || nVerdict == kSourceNewer) {
        *m_pdwRestartNeeded = 1;
        WriteLogDetail("[lock] %s", strInstalled.c_str());
        return 1;
    }
    WriteLogDetail("[(un)lock] %s", strInstalled.c_str());
    return 0;
}

// ---- placing --------------------------------------------------------------------------------------------------------

DWORD StagedCopy::CommitCopiedFiles() {
    DWORD dwStatus = 0;
    if (m_strStagedInf.empty()) {
        return dwStatus;
    }
    for (std::size_t i = 0; i < m_lists.size() && dwStatus == 0; ++i) {
        if (m_lists.vecDirIDs[i] != kNoDirID) {
            dwStatus = Place(i);
        }
    }
    return dwStatus;
}

/// A driver for another architecture goes to that architecture's driver directory, whatever its DirID says.
std::string StagedCopy::TargetDirectory(INT nDirID) const {
    std::string strDirectory;
    if (!m_fForeign) {
        GetDirectoryFromDirID(static_cast<DWORD>(nDirID), m_strEnvironment.c_str(), strDirectory);
    }
    if (strDirectory.empty()) {
        GetDriverDirectory(m_strEnvironment.c_str(), strDirectory);
    }
    return strDirectory + "\\";
}

DWORD StagedCopy::Place(std::size_t nIndex) {
    const std::string& strName = m_lists.NameAt(nIndex);
    const std::string strStaged = m_strStaging + strName;
    std::string strTarget = TargetDirectory(m_lists.vecDirIDs[nIndex]) + strName;
    if (IsMonitorOfNt4(nIndex) && !m_fForeign) {
        // It lands twice: here, and below in the system directory.
        Platform().CopyFileA(strStaged.c_str(), strTarget.c_str(), FALSE);
        strTarget = InSystemDirectory(strName);
    }
    // A walk that ended early has told nothing of the files behind its end; they count as free.
    if (nIndex < m_vecLockFlags.size() && m_vecLockFlags[nIndex] != 0) {
        return PlaceAtRestart(strName, strTarget);
    }
    Platform().CopyFileA(strStaged.c_str(), strTarget.c_str(), FALSE);
    WriteLog("::CopyFile( %s, %s, FALSE );", strStaged.c_str(), strTarget.c_str());
    return 0;
}

DWORD StagedCopy::PlaceAtRestart(const std::string& strName, const std::string& strTarget) {
    DWORD dwStatus = 0;
    BOOL bInUse = FALSE;
    if (!Platform().SetupInstallFileExA(nullptr, nullptr, strName.c_str(), m_strStaging.c_str(), strTarget.c_str(),
                                        SP_COPY_FORCE_IN_USE | SP_COPY_SOURCEPATH_ABSOLUTE, nullptr, nullptr,
                                        &bInUse)) {
        dwStatus = Platform().GetLastError();
        if (dwStatus != 0) {
            WriteLog("SetupInstallFileEx Error:%d", dwStatus);
        }
    }
    WriteLog("::SetupInstallFileEx( %s, %s, %s );", strName.c_str(), m_strStaging.c_str(), strTarget.c_str());
    return dwStatus;
}

/// Makes the staging folder, or empties it.
DWORD PrepareStagingFolder(LPCSTR lpszStagingFolder) {
    if (Platform().PathFileExistsA(lpszStagingFolder)) {
        DeleteFilesInFolder(lpszStagingFolder, kEveryFile);
        return 0;
    }
    return Platform().CreateDirectoryA(lpszStagingFolder, nullptr) ? 0 : Platform().GetLastError();
}

}  // namespace

void DeleteFilesInFolder(LPCSTR lpszFolder, LPCSTR lpszPattern) {
    const std::string strFolder = WithBackslash(lpszFolder);
    const std::string strPattern = strFolder + lpszPattern;
    if (strPattern.size() >= MAX_PATH) {
        return;
    }
    WIN32_FIND_DATAA data{};
    const FindHandle find(Platform().FindFirstFileA(strPattern.c_str(), &data));
    if (!find) {
        return;
    }
    do {
        const std::string strPath = strFolder + data.cFileName;
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && strPath.size() < MAX_PATH) {
            ClearReadOnly(strPath.c_str());
            Platform().DeleteFileA(strPath.c_str());
        }
    } while (Platform().FindNextFileA(find.Get(), &data));
}

DWORD DoCopyInfDriverFilesEx(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwCopyNameMode, LPDWORD pdwRestartNeeded,
                             LPCSTR lpszStagingFolder, DWORD dwInfArchitecture, DWORD dwArchitecture,
                             DWORD dwMajorVersion, DWORD dwMinorVersion) {
    WriteLogDetail("DoCopyInfDriverFilesEx Start");
    if (lpszInfPath == nullptr || lpszDriverName == nullptr || lpszStagingFolder == nullptr ||
        pdwRestartNeeded == nullptr || !IsCopyNameMode(dwCopyNameMode)) {
        return ERROR_INVALID_PARAMETER;
    }
    DWORD dwStatus = PrepareStagingFolder(lpszStagingFolder);
    if (dwStatus != 0) {
        return dwStatus;
    }
    *pdwRestartNeeded = 0;
    StagedCopy copy(lpszInfPath, lpszStagingFolder, dwInfArchitecture, pdwRestartNeeded);
    dwStatus = CollectCopyFileLists(lpszInfPath, lpszDriverName, dwCopyNameMode, dwArchitecture, dwMajorVersion,
                                    dwMinorVersion, copy.Lists());
    if (dwStatus == 0) {
        copy.Stage();
        // Its code alone counts: what went wrong while staging doesn't.
        dwStatus = copy.CommitCopiedFiles();
    }
    if (Platform().PathFileExistsA(lpszStagingFolder)) {
        DeleteFilesInFolder(lpszStagingFolder, kEveryFile);
    }
    WriteLogDetail("DoCopyInfDriverFilesEx End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
