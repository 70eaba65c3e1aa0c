// [DestinationDirs], and what its identifiers mean on the running system.
#include "inf/destination_dirs_section.h"

#include <algorithm>

#include "inf/inf_access.h"
#include "inf/section_walk.h"
#include "frame/log.h"
#include "frame/number.h"
#include "frame/look_ups.h"
#include "frame/os_identity.h"
#include "frame/os_route.h"
#include "frame/string_list.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr char kDestinationDirs[] = "DestinationDirs";
/// Bytes of the buffer that a directory is asked for with.
constexpr DWORD kDirectoryBufferSize = 4096;

/// The directory of the colour profiles. Systems without colour management lack the library.
/// @param strDirectory [out]  untouched on failure
DWORD ReadColorDirectory(std::string& strDirectory) {
    LookedUp<looked_up::GetColorDirectoryA> getColorDirectory("mscms.dll", "GetColorDirectoryA");
    if (!getColorDirectory) {
        return getColorDirectory.Status();
    }
    char szDirectory[kDirectoryBufferSize] = {};
    DWORD dwSize = sizeof szDirectory;
    if (!getColorDirectory.Call()(nullptr, szDirectory, &dwSize)) {
        return Platform().GetLastError();
    }
    szDirectory[sizeof szDirectory - 1] = '\0';
    strDirectory = szDirectory;
    return ERROR_SUCCESS;
}

using DirectoryRoutine = DWORD (*)(DWORD, LPCSTR, std::string&);

constexpr OsRouteTable<DirectoryRoutine> kDirectoryRoutines = {
    GetDirectoryFromDirID95,  // Windows 95
    GetDirectoryFromDirID9x,  // Windows 98
    GetDirectoryFromDirID9x,  // Windows Me
    GetDirectoryFromDirIDNT,  // NT 4
    GetDirectoryFromDirIDNT,  // Windows 2000
    GetDirectoryFromDirIDNT,  // XP generation, x86
    GetDirectoryFromDirIDNT,  // XP generation, IA64
    GetDirectoryFromDirIDNT,  // XP generation, x64
    GetDirectoryFromDirIDNT,  // Vista generation, x86
    GetDirectoryFromDirIDNT,  // Vista generation, IA64
    GetDirectoryFromDirIDNT,  // Vista generation, x64
    GetDirectoryFromDirIDNT,  // any other
};
static_assert(IsComplete(kDirectoryRoutines));

}  // namespace

DWORD CInfDestinationDirsSection::GetData(HINF hInf, LPCSTR lpszKey) {
    WriteLog("CInfDestinationDirsSection::GetData() Start");
    std::string strLine;
    const DWORD dwStatus = GetInfLineText(hInf, kDestinationDirs, lpszKey, strLine);
    if (dwStatus == ERROR_SUCCESS) {
        const StringList csvDirectory(strLine, ',');
        if (csvDirectory.size() > 0) {
            m_dwDirID = static_cast<DWORD>(ParseNumber(csvDirectory[0]));
        }
        if (csvDirectory.size() > 1) {
            m_strSubDir = csvDirectory[1];
        }
    }
    WriteLog("CInfDestinationDirsSection::GetData() End(%d)", dwStatus);
    return dwStatus;
}

DWORD CInfDestinationDirsSection::GetAllDestDirID(HINF hInf, std::vector<DWORD>& vecDirIDs) {
    WriteLog("CInfDestinationDirsSection::GetAllDestDirID() Start");
    vecDirIDs.clear();
    const DWORD dwStatus = WalkLines(hInf, kDestinationDirs, [&vecDirIDs](INFCONTEXT& context) {
        std::string strLine;
        const DWORD dwLineStatus = GetInfLineText(context, strLine);
        if (dwLineStatus == ERROR_SUCCESS && !strLine.empty()) {
            vecDirIDs.push_back(static_cast<DWORD>(ParseNumber(strLine)));  // the number ends at the first comma
        }
        return dwLineStatus;
    });
    std::sort(vecDirIDs.begin(), vecDirIDs.end());
    vecDirIDs.erase(std::unique(vecDirIDs.begin(), vecDirIDs.end()), vecDirIDs.end());
    WriteLog("--- DestinationDirIDs ---");
    for (DWORD dwDirID : vecDirIDs) {
        WriteLog("%d", dwDirID);
    }
    WriteLog("--- DestinationDirIDs ---");
    WriteEmptyLogLine();
    WriteLog("CInfDestinationDirsSection::GetAllDestDirID() End(%d)", dwStatus);
    return dwStatus;
}

DWORD GetDirectoryFromDirID95(DWORD dwDirID, LPCSTR /*lpszEnvironment*/, std::string& strDirectory) {
    WriteLog("GetDirectoryFromDirID95() - Start");
    strDirectory.clear();
    switch (dwDirID) {
        case DirIDWindows:
            strDirectory = GetOsIdentity().windowsDirectory;
            break;
        case DirIDSystem:
            strDirectory = GetOsIdentity().systemDirectory;
            break;
        case DirIDColor:  // the system has no colour management that could be asked
            strDirectory = GetOsIdentity().systemDirectory + "\\" + "Color";
            break;
        default:
            break;
    }
    WriteLog("GetDirectoryFromDirID95() - End(%d) -> %s", ERROR_SUCCESS, strDirectory.c_str());
    return ERROR_SUCCESS;
}

DWORD GetDirectoryFromDirID9x(DWORD dwDirID, LPCSTR /*lpszEnvironment*/, std::string& strDirectory) {
    WriteLog("GetDirectoryFromDirID9x() - Start");
    strDirectory.clear();
    DWORD dwStatus = ERROR_SUCCESS;
    switch (dwDirID) {
        case DirIDWindows:
            strDirectory = GetOsIdentity().windowsDirectory;
            break;
        case DirIDSystem:
            strDirectory = GetOsIdentity().systemDirectory;
            break;
        case DirIDColor:
            dwStatus = ReadColorDirectory(strDirectory);
            break;
        default:
            break;
    }
    WriteLog("GetDirectoryFromDirID9x() - End(%d) -> %s", dwStatus, strDirectory.c_str());
    return dwStatus;
}

DWORD GetDirectoryFromDirIDNT(DWORD dwDirID, LPCSTR lpszEnvironment, std::string& strDirectory) {
    WriteLog("GetDirectoryFromDirIDNT() - Start");
    strDirectory.clear();
    DWORD dwStatus = ERROR_SUCCESS;
    switch (dwDirID) {
        case DirIDWindows:
            strDirectory = GetOsIdentity().windowsDirectory;
            break;
        case DirIDSystem:  // a printer driver's own files: on this family they lie with the spooler
        case DirIDPrinterDriver:
            dwStatus = GetDriverDirectory(lpszEnvironment, strDirectory);
            break;
        case DirIDColor:
            // Of a 9x driver kept for clients, in the spooler's folder for version 0; not the system's own.
            dwStatus = GetDriverDirectory(lpszEnvironment, strDirectory);
            if (dwStatus == ERROR_SUCCESS) {
                strDirectory += "\\0\\";
                strDirectory += "Color";
            }
            break;
        case DirIDNtSystem:
            strDirectory = GetOsIdentity().systemDirectory;
            break;
        case DirIDNtColor:
            dwStatus = ReadColorDirectory(strDirectory);
            break;
        default:
            break;
    }
    WriteLog("GetDirectoryFromDirIDNT() - End(%d) -> %s", dwStatus, strDirectory.c_str());
    return dwStatus;
}

DWORD GetDirectoryFromDirID(DWORD dwDirID, LPCSTR lpszEnvironment, std::string& strDirectory) {
    return CallRoute(kDirectoryRoutines, dwDirID, lpszEnvironment, strDirectory);
}

}  // namespace pikel
