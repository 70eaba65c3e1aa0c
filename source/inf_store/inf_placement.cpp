// Placing an INF in the system's INF folder. Where it goes, and what is told of a failure, differs by system.
#include "inf_store/inf_placement.h"

#include <string>

#include "frame/log.h"
#include "frame/look_ups.h"
#include "frame/os_route.h"
#include "frame/path.h"
#include "inf_store/inf_search.h"
#include "platform/owned.h"

namespace pikel {

namespace {

/// Numbers that an oem file can have: from 0 on.
constexpr int kOemNumbers = 1000;
/// Line of a copy that worked, by either way of Windows 95.
constexpr char kCopied95[] = "InfFileCopy95() - ::CopyFile() --Success--";
/// Copy style for the system's own placing.
constexpr DWORD kCopyStyle = SP_COPY_FORCE_NEWER;

/// True when a path fits into the system's buffers for one, with its NUL.
bool Fits(const std::string& strPath) {
    return strPath.size() < MAX_PATH;
}

/// CopyFileA for a name that may be too long.
/// @return 0 or a code
DWORD CopyTo(LPCSTR lpszInfFile, const std::string& strTarget, BOOL bFailIfExists) {
    if (!Fits(strTarget)) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    return Platform().CopyFileA(lpszInfFile, strTarget.c_str(), bFailIfExists) ? DWORD{ERROR_SUCCESS}
                                                                               : Platform().GetLastError();
}

/// Copies to the lowest oem number that is free. Two installers at once are kept apart by the copy itself, which takes
/// no name that is there.
/// @return 0, or the code of the last try
DWORD CopyToFreeNumber(LPCSTR lpszInfFile, LPCSTR lpszFolder) {
    DWORD dwStatus = ERROR_SUCCESS;
    for (int nNumber = 0; nNumber < kOemNumbers; ++nNumber) {
        dwStatus = CopyTo(lpszInfFile, lpszFolder + ("oem" + std::to_string(nNumber)) + ".inf", TRUE);
        if (dwStatus == ERROR_SUCCESS) {
            break;
        }
    }
    return dwStatus;
}

/// Deletes a file, read-only or not. A failure leaves it and is no error.
void ClearAndDelete(const std::string& strFile) {
    if (Fits(strFile) && Platform().SetFileAttributesA(strFile.c_str(), FILE_ATTRIBUTE_ARCHIVE)) {
        Platform().DeleteFileA(strFile.c_str());
    }
}

/// Deletes the two files in which the 9x family keeps what it knows of its INFs, so that it reads the folder anew.
void DeleteDriverIndex(const std::string& strFolder) {
    ClearAndDelete(strFolder + "Drvdata.bin");
    ClearAndDelete(strFolder + "Drvidx.bin");
}

/// Looks for anything in a folder.
/// @return the search, empty when the folder isn't there
FindHandle FindAnything(const std::string& strPattern) {
    WIN32_FIND_DATAA data{};
    return Fits(strPattern) ? FindHandle(Platform().FindFirstFileA(strPattern.c_str(), &data)) : FindHandle();
}

/// The system's own placing, which knows the INFs of its folder itself.
DWORD CopyBySystem(LPCSTR lpszInfFile) {
    // Nothing goes to the driver directory here, but without one there is no spooler to install for.
    std::string strUnused;
    const DWORD dwStatus = GetDriverDirectory(nullptr, strUnused);
    if (dwStatus != ERROR_SUCCESS) {
        return dwStatus;
    }
    LookedUp<looked_up::SetupCopyOEMInfA> setupCopyOEMInf("setupapi.dll", "SetupCopyOEMInfA");
    if (!setupCopyOEMInf) {
        return setupCopyOEMInf.Status();
    }
    char szDestination[MAX_PATH] = {};
    DWORD dwRequired = 0;
    if (!setupCopyOEMInf.Call()(lpszInfFile, nullptr, SPOST_PATH, kCopyStyle, szDestination, sizeof szDestination,
                                &dwRequired, nullptr)) {
        return Platform().GetLastError();
    }
    WriteLog("InfFileCopy2k() - ::SetupCopyOEMInf --Success--");
    return ERROR_SUCCESS;
}

using InfFileCopyRoutine = DWORD (*)(LPCSTR, DWORD, DWORD, DWORD, LPCSTR, LPCSTR, LPCSTR, DWORD);

constexpr OsRouteTable<InfFileCopyRoutine> kInfFileCopyRoutines = {
    InfFileCopy95,  // Windows 95
    InfFileCopy98,  // Windows 98
    InfFileCopy98,  // Windows Me
    InfFileCopyNT,  // NT 4
    InfFileCopy2k,  // Windows 2000
    InfFileCopy2k,  // XP generation, x86
    InfFileCopy2k,  // XP generation, IA64
    InfFileCopy2k,  // XP generation, x64
    InfFileCopy2k,  // Vista generation, x86
    InfFileCopy2k,  // Vista generation, IA64
    InfFileCopy2k,  // Vista generation, x64
    InfFileCopy2k,  // any other
};
static_assert(IsComplete(kInfFileCopyRoutines));

/// The target folder with its closing backslash.
std::string TargetFolder(LPCSTR lpszDir) {
    return lpszDir != nullptr ? std::string(lpszDir) + "\\" : SystemInfFolder();
}

}  // namespace

DWORD IsInfNewForModels(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                        LPCSTR lpszProvider, LPCSTR lpszClass, DWORD& dwStatus) {
    StringList listWanted;
    dwStatus = GetInfModelList(lpszInfFile, dwProcessor, dwMajor, dwMinor, listWanted);
    if (dwStatus != ERROR_SUCCESS) {
        return 1;
    }
    StringList listPaths;
    SearchInfList(lpszFolder, lpszProvider, lpszClass, listPaths);
    // The walk goes on behind an INF that covers this one: one that can't be read still counts.
    DWORD dwIsNew = 1;
    for (const std::string& strPath : listPaths) {
        StringList listHeld;
        dwStatus = GetInfModelList(strPath.c_str(), dwProcessor, dwMajor, dwMinor, listHeld);
        if (dwStatus != ERROR_SUCCESS) {
            break;
        }
        if (CheckDriverNameFromINF(listWanted, listHeld) != 0) {
            dwIsNew = 0;
        }
    }
    return dwIsNew;
}

DWORD IsInfTextNew(LPCSTR lpszInfFile, LPCSTR lpszFolder, LPCSTR lpszProvider, LPCSTR lpszClass, LPDWORD pdwStatus) {
    if (lpszInfFile == nullptr || lpszFolder == nullptr || lpszProvider == nullptr || lpszClass == nullptr ||
        pdwStatus == nullptr) {
        return 0;
    }
    StringList listPaths;
    *pdwStatus = SearchInfList(lpszFolder, lpszProvider, lpszClass, listPaths);
    if (*pdwStatus == ERROR_SUCCESS) {
        for (const std::string& strPath : listPaths) {
            if (IsInfTextDifferent(lpszInfFile, strPath.c_str()) == 0) {
                return 0;
            }
        }
    }
    return 1;
}

DWORD InfFileCopyNT(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD /*dwFlag*/) {
    DWORD dwStatus = ERROR_SUCCESS;
    if (IsInfNewForModels(lpszInfFile, dwProcessor, dwMajor, dwMinor, lpszFolder, lpszProvider, lpszClass, dwStatus) ==
            0 ||
        dwStatus != ERROR_SUCCESS) {
        return dwStatus;
    }
    dwStatus = CopyToFreeNumber(lpszInfFile, lpszFolder);
    if (dwStatus == ERROR_SUCCESS) {
        WriteLog("InfFileCopyNT() - ::CopyFile() --Success--");
    }
    return dwStatus;
}

DWORD InfFileCopy2k(LPCSTR lpszInfFile, DWORD /*dwProcessor*/, DWORD /*dwMajor*/, DWORD /*dwMinor*/, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag) {
    if (dwFlag == 0) {
        return CopyBySystem(lpszInfFile);
    }
    // Unlike on NT 4 neither a failed check nor a failed copy is told.
    DWORD dwStatus = ERROR_SUCCESS;
    if (IsInfTextNew(lpszInfFile, lpszFolder, lpszProvider, lpszClass, &dwStatus) != 0 && dwStatus == ERROR_SUCCESS &&
        CopyToFreeNumber(lpszInfFile, lpszFolder) == ERROR_SUCCESS) {
        WriteLog("InfFileCopy2k() - ::CopyFile() --Success--");
    }
    return ERROR_SUCCESS;
}

DWORD InfFileCopy98(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD /*dwFlag*/) {
    const std::string strFolder = lpszFolder;
    const std::string strOther = strFolder + "Other\\";
    if (!Fits(strOther + "*")) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    FindHandle search = FindAnything(strOther + "*");
    if (search) {
        DWORD dwStatus = ERROR_SUCCESS;
        const DWORD dwIsNew = IsInfNewForModels(lpszInfFile, dwProcessor, dwMajor, dwMinor, strOther.c_str(),
                                                lpszProvider, lpszClass, dwStatus);
        search.Reset();
        if (dwIsNew == 0 || dwStatus != ERROR_SUCCESS) {
            return dwStatus;
        }
    } else if (!Platform().CreateDirectoryA(strOther.c_str(), nullptr)) {
        return Platform().GetLastError();
    }
    const std::string strName = lpszProvider + std::string(BehindLastBackslash(lpszInfFile));
    const DWORD dwStatus = CopyTo(lpszInfFile, strOther + strName, FALSE);
    if (dwStatus != ERROR_SUCCESS) {
        return dwStatus;
    }
    // An INF of this name in the folder itself would be read beside the one that was just placed.
    ClearAndDelete(strFolder + strName);
    DeleteDriverIndex(strFolder);
    WriteLog("InfFileCopy98() - ::CopyFile() --Success--");
    return ERROR_SUCCESS;
}

DWORD InfFileCopy95(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD /*dwFlag*/) {
    DWORD dwStatus = ERROR_SUCCESS;
    if (IsInfNewForModels(lpszInfFile, dwProcessor, dwMajor, dwMinor, lpszFolder, lpszProvider, lpszClass, dwStatus) ==
            0 ||
        dwStatus != ERROR_SUCCESS) {
        return dwStatus;
    }
    // From here on no failure is told.
    const std::string strFolder = lpszFolder;
    FindHandle search = FindAnything(strFolder + "Other\\*");
    if (search) {
        HANDLE hSearch = search.Get();
        search.Reset();
        const std::string strTarget = strFolder + "Other\\Tarvo" + std::string(BehindLastBackslash(lpszInfFile));
        if (CopyTo(lpszInfFile, strTarget, FALSE) == ERROR_SUCCESS) {
            // The fresh copy itself goes again: with an Other folder the system is only to read its INFs anew.
            ClearAndDelete(strTarget);
            DeleteDriverIndex(strFolder);
            WriteLog(kCopied95);
        }
        // Closed a second time; the system refuses it. The number of closes is part of this route.
        Platform().FindClose(hSearch);
    } else if (CopyToFreeNumber(lpszInfFile, lpszFolder) == ERROR_SUCCESS) {
        WriteLog(kCopied95);
    }
    return ERROR_SUCCESS;
}

DWORD PI_InfFileCopy(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszDir,
                     LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag) {
    if (lpszInfFile == nullptr || lpszProvider == nullptr || lpszClass == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("PI_InfFileCopy Start");
    const std::string strFolder = TargetFolder(lpszDir);
    DWORD dwStatus = ERROR_FILENAME_EXCED_RANGE;
    if (Fits(strFolder)) {
        dwStatus = CallRoute(kInfFileCopyRoutines, lpszInfFile, dwProcessor, dwMajor, dwMinor, strFolder.c_str(),
                             lpszProvider, lpszClass, dwFlag);
    }
    WriteLog("PI_InfFileCopy End");
    return dwStatus;
}

}  // namespace pikel
