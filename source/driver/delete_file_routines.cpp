// Deletes the files of drivers and language monitors by hand, a routine for each family.
#include "driver/delete_file_routines.h"

#include <string>

#include "driver/delayed_replace.h"
#include "frame/log.h"
#include "frame/look_ups.h"
#include "frame/os_identity.h"
#include "frame/os_route.h"
#include "platform/platform.h"

namespace pikel {

namespace {

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

DWORD DeleteDriverFileByOsRoute(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszFile) {
    return CallRoute(kDeleteDriverFile, dwVersion, lpszEnvironment, lpszFile);
}

DWORD DeleteMonitorFileByOsRoute(LPCSTR lpszFile) {
    return CallRoute(kDeleteMonitorFile, lpszFile);
}

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
