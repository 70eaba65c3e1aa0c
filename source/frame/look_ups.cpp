// Where drivers lie, which DLL a language monitor is, and which of two files was written last.
#include "frame/look_ups.h"

#include "frame/log.h"
#include "frame/path.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr DWORD kDirectorySize = 4096;
constexpr char kMonitorsKey[] = "System\\CurrentControlSet\\Control\\Print\\Monitors";

/// Reads the DLL that a monitor's key names, as it stands there.
DWORD ReadMonitorDriver(HKEY hKey, std::string& strDriver) {
    char szDriver[MAX_PATH + 1] = {};  // a value that fills the buffer has no NUL of its own
    DWORD dwType = REG_NONE;
    DWORD dwSize = MAX_PATH;
    LSTATUS nStatus =
        Platform().RegQueryValueExA(hKey, "Driver", nullptr, &dwType, reinterpret_cast<LPBYTE>(szDriver), &dwSize);
    if (nStatus != ERROR_SUCCESS) {
        return static_cast<DWORD>(nStatus);
    }
    if (dwType != REG_SZ) {
        return ERROR_INVALID_DATA;
    }
    strDriver = szDriver;
    return 0;
}

FileHandle OpenForTimes(LPCSTR lpszFile) {
    return FileHandle(
        Platform().CreateFileA(lpszFile, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// 1, 0 or -1 for a first time that is later than, equal to or earlier than the second.
INT CompareTimes(const FILETIME& ftFirst, const FILETIME& ftSecond) {
    if (ftFirst.dwHighDateTime != ftSecond.dwHighDateTime) {
        return ftFirst.dwHighDateTime > ftSecond.dwHighDateTime ? 1 : -1;
    }
    if (ftFirst.dwLowDateTime != ftSecond.dwLowDateTime) {
        return ftFirst.dwLowDateTime > ftSecond.dwLowDateTime ? 1 : -1;
    }
    return 0;
}

void LogComparison(LPCSTR lpszFile1, LPCSTR lpszFile2, INT nResult) {
    if (nResult > 0) {
        WriteLog("FileCompare %s > %s ", lpszFile1, lpszFile2);
    } else if (nResult < 0) {
        WriteLog("FileCompare %s < %s ", lpszFile1, lpszFile2);
    } else {
        WriteLog("FileCompare %s = %s ", lpszFile1, lpszFile2);
    }
}

}  // namespace

DWORD GetDriverDirectory(LPCSTR lpszEnvironment, std::string& strDirectory) {
    strDirectory.clear();
    char szDirectory[kDirectorySize + 1] = {};
    DWORD dwNeeded = 0;
    if (!Platform().GetPrinterDriverDirectoryA(nullptr, const_cast<LPSTR>(lpszEnvironment), 1,
                                               reinterpret_cast<LPBYTE>(szDirectory), kDirectorySize, &dwNeeded)) {
        return Platform().GetLastError();
    }
    strDirectory = szDirectory;
    return 0;
}

DWORD GetMonitorFile(LPCSTR lpszMonitorName, std::string& strFile) {
    WriteLog("GetMonitorFile() Start");
    strFile.clear();
    std::string strKey = std::string(kMonitorsKey) + "\\" + TextOrEmpty(lpszMonitorName);
    RegistryKey key;
    DWORD dwStatus =
        static_cast<DWORD>(Platform().RegOpenKeyExA(HKEY_LOCAL_MACHINE, strKey.c_str(), 0, KEY_READ, key.Out()));
    if (dwStatus == 0) {
        std::string strDriver;
        dwStatus = ReadMonitorDriver(key.Get(), strDriver);
        strFile = BehindLastBackslash(strDriver);
    }
    WriteLog("GetMonitorFile() End(%d)", dwStatus);
    return dwStatus;
}

DWORD FileCompare(LPCSTR lpszFile1, LPCSTR lpszFile2, INT& nResult) {
    nResult = 0;
    FileHandle file1 = OpenForTimes(lpszFile1);
    FileHandle file2 = OpenForTimes(lpszFile2);
    if (!file1 || !file2) {
        return 0;
    }
    FILETIME ftWrite1{};
    FILETIME ftWrite2{};
    if (!Platform().GetFileTime(file1.Get(), nullptr, nullptr, &ftWrite1) ||
        !Platform().GetFileTime(file2.Get(), nullptr, nullptr, &ftWrite2)) {
        return 0;  // no time, no verdict
    }
    nResult = CompareTimes(ftWrite1, ftWrite2);
    LogComparison(lpszFile1, lpszFile2, nResult);
    return 0;
}

}  // namespace pikel
