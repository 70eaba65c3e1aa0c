// Copies language monitors' DLLs, a routine for each family.
#include "driver/monitor_file.h"

#include <string>
#include <string_view>

#include "driver/delayed_replace.h"
#include "driver/file_use.h"
#include "driver/spooler_service.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/path.h"
#include "frame/service.h"
#include "frame/text.h"

namespace pikel {

namespace {

constexpr int kMostAttempts = 100;           // of a copy over a file that is held
constexpr DWORD kWaitBetweenAttempts = 100;  // milliseconds

/// @param strDirectory [out]  with a backslash; empty on failure
/// @return 0 or a code: without the directory a file would land wherever the program happens to stand
DWORD ReadSystemDirectory(std::string& strDirectory) {
    char szDirectory[MAX_PATH] = {};
    const UINT nLength = Platform().GetSystemDirectoryA(szDirectory, MAX_PATH);
    if (nLength == 0) {
        const DWORD dwCode = Platform().GetLastError();
        return dwCode != 0 ? dwCode : static_cast<DWORD>(ERROR_INTERNAL_ERROR);
    }
    if (nLength >= MAX_PATH) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    strDirectory = WithBackslash(szDirectory);
    return 0;
}

/// Source and target of one file.
struct CopyPaths {
    std::string strSource;
    std::string strTarget;

    bool Fit() const { return strSource.size() < MAX_PATH && strTarget.size() < MAX_PATH; }
};

CopyPaths MakePaths(LPCSTR lpszFilePath, const std::string& strSystemDirectory, const std::string& strItem) {
    return {WithBackslash(lpszFilePath) + strItem, strSystemDirectory + strItem};
}

bool Copy(const CopyPaths& paths) {
    return Platform().CopyFileA(paths.strSource.c_str(), paths.strTarget.c_str(), FALSE) != FALSE;
}

// ---- the 9x family --------------------------------------------------------------------------------------------------

DWORD ReplaceAtNextStart9x(const CopyPaths& paths, LPDWORD pdwRebootFlag) {
    *pdwRebootFlag = 1;
    const DWORD dwStatus = RenameFileAndRegister9x(paths.strTarget.c_str(), paths.strSource.c_str());
    if (dwStatus != 0) {
        WriteLogDetail("CopyMonitorFile9x RenameFileAndRegister9x() Error Code is %d", dwStatus);
    }
    return dwStatus;
}

DWORD CopyMissing9x(const CopyPaths& paths) {
    WriteLogDetail("CopyMonitorFile9x Monitor is Not Found");
    if (Copy(paths)) {
        return 0;
    }
    const DWORD dwStatus = Platform().GetLastError();
    WriteLogDetail("CopyMonitorFile9x CopyFile() Error Code is %d", dwStatus);
    return dwStatus;
}

/// A copy that fails is left to the next start, as if the file were in use; its own code counts for nothing then.
DWORD ReplaceOlder9x(const CopyPaths& paths, LPDWORD pdwRebootFlag) {
    if (CheckUseMonitorFile(paths.strTarget.c_str()) != 0) {
        WriteLogDetail("CopyMonitorFile9x Monitor is use");
        return ReplaceAtNextStart9x(paths, pdwRebootFlag);
    }
    WriteLogDetail("CopyMonitorFile9x Monitor is not use");
    WriteLogDetail("CopyMonitorFile9x CopyFile() srcPath is %s", paths.strSource.c_str());
    WriteLogDetail("CopyMonitorFile9x CopyFile() dstPath is %s", paths.strTarget.c_str());
    if (Copy(paths)) {
        return 0;
    }
    WriteLogDetail("CopyMonitorFile9x CopyFile() Error Code is %d", Platform().GetLastError());
    return ReplaceAtNextStart9x(paths, pdwRebootFlag);
}

DWORD CopyOne9x(const CopyPaths& paths, LPDWORD pdwRebootFlag) {
    if (!paths.Fit()) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    if (!Platform().PathFileExistsA(paths.strTarget.c_str())) {
        return CopyMissing9x(paths);
    }
    WriteLogDetail("CopyMonitorFile9x Monitor is Found");
    INT nResult = 0;
    const DWORD dwStatus = CompareFileVersion(paths.strSource.c_str(), paths.strTarget.c_str(), nResult);
    if (dwStatus != 0) {
        WriteLogDetail("CopyMonitorFile9x Compared a file version and became an error.");
        return dwStatus;
    }
    if (nResult == 0 || nResult == -1) {
        WriteLogDetail("CopyMonitorFile9x Next File");
        return 0;
    }
    return ReplaceOlder9x(paths, pdwRebootFlag);
}

/// Ends with the first file that fails; the files before it stay copied.
DWORD CopyMonitorFile9x(LPCSTR lpszFilePath, LPCSTR lpszFileList, LPDWORD pdwRebootFlag) {
    *pdwRebootFlag = 0;
    WriteLogDetail("CopyMonitorFile9x Start");
    WriteLogDetail("CopyMonitorFile9x lpszFilePath %s", lpszFilePath);
    WriteLogDetail("CopyMonitorFile9x lpszFileList %s", lpszFileList);
    StringList items;
    AnalyzeParameter(lpszFileList, items);
    std::string strSystemDirectory;
    DWORD dwStatus = ReadSystemDirectory(strSystemDirectory);
    for (const std::string& strItem : items) {
        if (dwStatus != 0) {
            break;
        }
        WriteLogDetail("CopyMonitorFile9x Monitor is %s", strItem.c_str());
        const CopyPaths paths = MakePaths(lpszFilePath, strSystemDirectory, strItem);
        WriteLogDetail("CopyMonitorFile9x SrcFilePath:%s", paths.strSource.c_str());
        WriteLogDetail("CopyMonitorFile9x DstFilePath:%s", paths.strTarget.c_str());
        dwStatus = CopyOne9x(paths, pdwRebootFlag);
    }
    WriteLogDetail("CopyMonitorFile9x End(%d)", dwStatus);
    return dwStatus;
}

// ---- the NT family --------------------------------------------------------------------------------------------------

/// The spooler, stopped at the first file that needs it.
class StoppedSpooler {
  public:
    /// A failure is logged and changes nothing: the copy is tried all the same.
    void Stop() {
        if (m_fStopped) {
            return;
        }
        DWORD dwCode = OpenServiceHandles(m_handles, kSpooler, kManagerAccess, kServiceAccess);
        if (dwCode == 0) {
            dwCode = Win32StopService(m_handles);
        }
        if (dwCode != 0) {
            WriteLog("Service(%s).Stop Error(%d)", kSpooler, dwCode);
        }
        m_fStopped = dwCode == 0;
    }

    void StartAgain() {
        if (!m_fStopped) {
            return;
        }
        WithSpoolerService(m_handles, &Win32StartService, kServiceStartFailure);
    }

  private:
    ServiceHandles m_handles;
    bool m_fStopped = false;
};

void LogCopyNT(const CopyPaths& paths) {
    WriteLogDetail("CopyMonitorFileNT CopyFile() SrcPath:%s", paths.strSource.c_str());
    WriteLogDetail("CopyMonitorFileNT CopyFile() DstPath:%s", paths.strTarget.c_str());
}

/// Copies over a file that is there, again and again while that fails.
DWORD CopyWithAttemptsNT(const CopyPaths& paths) {
    WriteLogDetail("CopyMonitorFileNT Read Only cancellation:%s", paths.strTarget.c_str());
    Platform().SetFileAttributesA(paths.strTarget.c_str(), FILE_ATTRIBUTE_ARCHIVE);
    DWORD dwStatus = 0;
    for (int nAttempt = 0; nAttempt < kMostAttempts; ++nAttempt) {
        LogCopyNT(paths);
        if (Copy(paths)) {
            return 0;
        }
        dwStatus = Platform().GetLastError();
        Platform().Sleep(kWaitBetweenAttempts);
    }
    return dwStatus;
}

/// One file.
/// @param dwStatus  the walk's status: what it says of an earlier file stays where this one is merely copied, and is
///                  written over where this one is compared
/// @return false when the walk ends here
bool CopyOneNT(const CopyPaths& paths, StoppedSpooler& spooler, DWORD& dwStatus) {
    if (!paths.Fit()) {
        dwStatus = ERROR_FILENAME_EXCED_RANGE;
        return true;
    }
    if (!Platform().PathFileExistsA(paths.strTarget.c_str())) {
        WriteLogDetail("CopyMonitorFileNT Monitor is Not Found");
        LogCopyNT(paths);
        if (!Copy(paths)) {
            dwStatus = Platform().GetLastError();
        }
        return true;
    }
    WriteLogDetail("CopyMonitorFileNT Monitor is Found");
    INT nResult = 0;
    dwStatus = CompareFileVersion(paths.strSource.c_str(), paths.strTarget.c_str(), nResult);
    if (dwStatus != 0) {
        WriteLogDetail("CopyMonitorFileNT Compared a file version and became an error.");
        return false;
    }
    if (nResult == 0 || nResult == -1) {
        WriteLogDetail("CopyMonitorFileNT Next File");
        return true;
    }
    spooler.Stop();
    dwStatus = CopyWithAttemptsNT(paths);
    return true;
}

/// The result speaks for the tail of the walk alone: a file that is there clears what an earlier one left. Nothing
/// waits for a restart on this family.
DWORD CopyMonitorFileNT(LPCSTR lpszFilePath, LPCSTR lpszFileList, LPDWORD pdwRebootFlag) {
    *pdwRebootFlag = 0;
    WriteLogDetail("CopyMonitorFileNT Start");
    WriteLogDetail("CopyMonitorFileNT lpszFilePath %s", lpszFilePath);
    WriteLogDetail("CopyMonitorFileNT lpszFileList %s", lpszFileList);
    StringList items;
    AnalyzeParameter(lpszFileList, items);
    std::string strSystemDirectory;
    DWORD dwStatus = ReadSystemDirectory(strSystemDirectory);
    StoppedSpooler spooler;  // its handles are closed behind the last line
    if (dwStatus == 0) {
        for (const std::string& strItem : items) {
            if (!CopyOneNT(MakePaths(lpszFilePath, strSystemDirectory, strItem), spooler, dwStatus)) {
                break;
            }
        }
    }
    spooler.StartAgain();
    WriteLogDetail("CopyMonitorFileNT End(%d)", dwStatus);
    return dwStatus;
}

using CopyMonitorFileRoutine = DWORD (*)(LPCSTR, LPCSTR, LPDWORD);

constexpr OsRouteTable<CopyMonitorFileRoutine> kCopyMonitorFile = {
    CopyMonitorFile9x,  // Windows 95
    CopyMonitorFile9x,  // Windows 98
    CopyMonitorFile9x,  // Windows Me
    CopyMonitorFileNT,  // Windows NT 4.0
    CopyMonitorFileNT,  // Windows 2000
    CopyMonitorFileNT,  // Windows XP
    CopyMonitorFileNT,  // Windows XP, IA64
    CopyMonitorFileNT,  // Windows XP, x64
    CopyMonitorFileNT,  // Windows Vista
    CopyMonitorFileNT,  // Windows Vista, IA64
    CopyMonitorFileNT,  // Windows Vista, x64
    CopyMonitorFileNT,  // any other
};
static_assert(IsComplete(kCopyMonitorFile));

/// Every name of a list needs a "/" behind it. A name without one would have no end for the walk.
bool IsClosedList(std::string_view list) {
    return list.empty() || list.back() == '/';
}

}  // namespace

void AnalyzeParameter(LPCSTR lpszFileList, StringList& out) {
    WriteLogDetail("AnalyzeParameter Start");
    std::string_view remainder = TextOrEmpty(lpszFileList);
    for (std::size_t nEnd = remainder.find('/'); nEnd != std::string_view::npos; nEnd = remainder.find('/')) {
        std::string strItem(remainder.substr(0, nEnd));
        remainder.remove_prefix(nEnd + 1);
        WriteLogDetail("AnalyzeParameter Monitor is %s", strItem.c_str());
        WriteLogDetail("AnalyzeParameter Monitor List is %s", remainder.data());
        out.Append(std::move(strItem));
    }
    WriteLogDetail("AnalyzeParameter End");
}

DWORD DoCopyMointorFile(LPCSTR lpszFilePath, LPCSTR lpszFileList, LPDWORD pdwRebootFlag) {
    WriteLogDetail("DoCopyMointorFile Start");
    if (lpszFilePath == nullptr || lpszFileList == nullptr || !IsClosedList(lpszFileList)) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoCopyMointorFile(%s) Start", lpszFilePath);
    DWORD dwIgnored = 0;
    const DWORD dwStatus =
        CallRoute(kCopyMonitorFile, lpszFilePath, lpszFileList, pdwRebootFlag != nullptr ? pdwRebootFlag : &dwIgnored);
    WriteLogDetail("DoCopyMointorFile End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
