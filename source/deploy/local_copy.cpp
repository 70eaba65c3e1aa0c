// The copy of a model's files to a local folder.
#include "deploy/local_copy.h"

#include <string>

#include "inf/destination_dirs_section.h"
#include "deploy/copy_lists.h"
#include "deploy/expand_file.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/path.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

/// What one copy hands out.
struct LocalCopy {
    HeapBlock records;  ///< room for a record of each file, or empty without memory
    DWORD dwCount = 0;
    DWORD dwTotalSize = 0;

    void AddRecord(const std::string& strDirectory, const std::string& strName) {
        if (records) {
            LocalFileRecord& record = static_cast<LocalFileRecord*>(records.Get())[dwCount];
            strDirectory.copy(record.szDirectory, sizeof record.szDirectory - 1);
            strName.copy(record.szFileName, sizeof record.szFileName - 1);
            ++dwCount;
        }
    }
};

/// Where a file belongs; empty for the catalog and where the system knows no directory.
std::string DirectoryOf(INT nDirID, LPCSTR lpszEnvironment) {
    std::string strDirectory;
    if (nDirID != kNoDirID) {
        GetDirectoryFromDirID(static_cast<DWORD>(nDirID), lpszEnvironment, strDirectory);
    }
    return strDirectory;
}

/// Expands one file unless it is there.
/// @return false on failure; the last error tells why
bool CopyOne(const std::string& strSource, const std::string& strTarget, DWORD& dwTotalSize) {
    if (Platform().PathFileExistsA(strTarget.c_str())) {
        return true;
    }
    SourceFileInfo info;
    if (!GetSourceFileInfo(strSource, info) || !ExpandFile(strSource, strTarget, info)) {
        return false;
    }
    dwTotalSize += info.dwTargetSize;
    return true;
}

DWORD CopyAll(const CopyFileLists& lists, LPCSTR lpszInfPath, const std::string& strLocalFolder,
              DWORD dwInfArchitecture, LocalCopy& copy) {
    const std::string strSourceFolder = FolderOfPath(lpszInfPath);
    // The INF goes along; the files count without it.
    Platform().CopyFileA(lpszInfPath, (strLocalFolder + FileNameOfPath(lpszInfPath)).c_str(), FALSE);
    LPCSTR lpszEnvironment = DriverArchitectureOf(dwInfArchitecture);
    copy.records = AllocateHeap(sizeof(LocalFileRecord) * lists.size());
    DWORD dwStatus = 0;
    for (std::size_t i = 0; i < lists.size() && dwStatus == 0; ++i) {
        const std::string strDirectory = DirectoryOf(lists.vecDirIDs[i], lpszEnvironment);
        if (CopyOne(strSourceFolder + lists.vecSourceNames[i], strLocalFolder + lists.NameAt(i), copy.dwTotalSize)) {
            copy.AddRecord(strDirectory, lists.vecTargetNames[i]);
        } else {
            dwStatus = Platform().GetLastError();
        }
    }
    return dwStatus;
}

}  // namespace

DWORD DoCopyInfDriverFilesToLocal(LPCSTR lpszInfPath, LPCSTR lpszDriverName, LPCSTR lpszLocalFolder,
                                  LPDWORD pdwTotalSize, DWORD dwCopyNameMode, LPDWORD pdwCount,
                                  LocalFileRecord** ppRecords, DWORD dwInfArchitecture, DWORD dwArchitecture,
                                  DWORD dwMajorVersion, DWORD dwMinorVersion) {
    WriteLogDetail("DoCopyInfDriverFilesToLocal Start");
    if (lpszDriverName == nullptr || lpszLocalFolder == nullptr || pdwTotalSize == nullptr || pdwCount == nullptr ||
        !IsCopyNameMode(dwCopyNameMode)) {
        return ERROR_INVALID_PARAMETER;
    }
    CopyFileLists lists;
    DWORD dwStatus = CollectCopyFileLists(lpszInfPath, lpszDriverName, dwCopyNameMode, dwArchitecture, dwMajorVersion,
                                          dwMinorVersion, lists);
    if (dwStatus == 0) {
        LocalCopy copy;
        dwStatus = CopyAll(lists, lpszInfPath, WithBackslash(lpszLocalFolder), dwInfArchitecture, copy);
        // After a failure part way too: the caller gets what was done so far.
        *pdwTotalSize = copy.dwTotalSize;
        *pdwCount = copy.dwCount;
        if (ppRecords != nullptr) {
            *ppRecords = static_cast<LocalFileRecord*>(copy.records.Release());
        }
    }
    WriteLogDetail("DoCopyInfDriverFilesToLocal End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
