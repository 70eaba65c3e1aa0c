// Copies a driver's files to the folder of its hardware ID.
#include "driver/hwid_folder.h"

#include <algorithm>
#include <string>

#include "spooler/driver_records.h"
#include "frame/look_ups.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/path.h"
#include "frame/pikel.h"
#include "frame/string_list.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr DWORD kShortVersionInfo = 148;  // sizeof(OSVERSIONINFOA), without the service pack's fields

/// Windows XP and Server 2003, by the version numbers themselves.
bool KeepsHardwareIdFolders() {
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = kShortVersionInfo;
    return Platform().GetVersionExA(&version) && version.dwPlatformId == VER_PLATFORM_WIN32_NT &&
           version.dwMajorVersion == 5 && version.dwMinorVersion != 0;
}

LPCSTR OwnEnvironment() {
    const DWORD dwClass = GetOsIdentity().cpuClass;
    if ((dwClass & CpuClassX64) != 0) {
        return kEnvironmentX64;
    }
    if ((dwClass & CpuClassIa64) != 0) {
        return kEnvironmentIa64;
    }
    return dwClass == CpuClassX86 ? kEnvironmentX86 : nullptr;
}

/// Takes the files of all records of a version that bear the driver's name, and the first hardware ID among them.
void TakeDriver(DRIVER_INFO_6A* pDrivers, DWORD dwCount, DWORD dwVersion, LPCSTR lpszDriverName, StringList& files,
                std::string& strHardwareId) {
    for (DRIVER_INFO_6A* pDriver = pDrivers; pDriver != pDrivers + dwCount; ++pDriver) {
        if (pDriver->cVersion != dwVersion) {
            continue;
        }
        const bool fIsNamed = EqualNoCase(TextOrEmpty(pDriver->pName), lpszDriverName);
        if (fIsNamed && strHardwareId.empty()) {
            if (pDriver->pszHardwareID == nullptr) {
                return;
            }
            strHardwareId = pDriver->pszHardwareID;
        }
        TakeDriverFiles(*pDriver, fIsNamed ? &files : nullptr);
    }
}

/// Lists the files of a driver, bare and in upper case, and its hardware ID.
/// @return the code of the enumeration
DWORD GetHWIDFileList(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszDriverName, StringList& files,
                      std::string& strHardwareId) {
    HeapBlock drivers;
    DWORD dwCount = 0;
    const DWORD dwStatus = EnumDriverRecords(lpszEnvironment, 6, drivers, &dwCount);
    strHardwareId.clear();
    if (dwStatus != 0 || !drivers) {
        return dwStatus;
    }
    auto* pDrivers = static_cast<DRIVER_INFO_6A*>(drivers.Get());
    ReplaceSpoolerVersion9x(pDrivers, dwCount);
    TakeDriver(pDrivers, dwCount, dwVersion, lpszDriverName, files, strHardwareId);
    files.SortUnique();
    return dwStatus;
}

/// Name of the folder: what stands behind the bus, with "_" for characters that don't do in a name.
std::string FolderNameOf(const std::string& strHardwareId) {
    std::string strName(BehindLastBackslash(strHardwareId));
    for (char& ch : strName) {
        if (std::string_view("- /()").find(ch) != std::string_view::npos) {
            ch = '_';
        }
    }
    return strName;
}

/// Deletes every listed file of the folder, copied in this run or not, and the folder when nothing else is in it.
void RemoveCopies(const std::string& strFolder, const StringList& files) {
    for (const std::string& strFile : files) {
        Platform().DeleteFileA((strFolder + "\\" + strFile).c_str());
    }
    Platform().RemoveDirectoryA(strFolder.c_str());
}

/// Copies file by file. A full disk alone ends it.
DWORD CopyFiles(const std::string& strSource, const std::string& strFolder, const StringList& files) {
    for (const std::string& strFile : files) {
        const std::string strFrom = strSource + "\\" + strFile;
        const std::string strTo = strFolder + "\\" + strFile;
        if (strFrom.size() >= MAX_PATH || strTo.size() >= MAX_PATH) {
            continue;  // no path of Windows, so a copy that fails like any other
        }
        if (!Platform().CopyFileA(strFrom.c_str(), strTo.c_str(), FALSE) &&
            Platform().GetLastError() == ERROR_DISK_FULL) {
            RemoveCopies(strFolder, files);
            return ERROR_DISK_FULL;
        }
    }
    return 0;
}

DWORD CopyDriverFilesToHWIDFolder(LPCSTR lpszDriverName) {
    if (!KeepsHardwareIdFolders()) {
        return 0;
    }
    const LPCSTR lpszEnvironment = OwnEnvironment();
    StringList files;
    std::string strHardwareId;
    GetHWIDFileList(PIKEL_DRIVER_VERSION_2000, lpszEnvironment, lpszDriverName, files, strHardwareId);
    if (strHardwareId.empty()) {
        return 0;
    }
    std::string strDirectory;
    GetDriverDirectory(lpszEnvironment, strDirectory);
    DropTrailingBackslash(strDirectory);
    const std::string strFolder = strDirectory + "\\" + FolderNameOf(strHardwareId);
    if (!Platform().CreateDirectoryA(strFolder.c_str(), nullptr)) {
        const DWORD dwCode = Platform().GetLastError();
        if (dwCode != ERROR_ALREADY_EXISTS) {
            // A folder that can't be made is an error for want of room alone.
            return dwCode == ERROR_DISK_FULL ? dwCode : 0;
        }
    }
    return CopyFiles(strDirectory + "\\3", strFolder, files);
}

}  // namespace

DWORD DoCopyDriverFileToHWIDFolder(LPCSTR lpszDriverName) {
    if (lpszDriverName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoCopyDriverFileToHWIDFolder(%s) Start", lpszDriverName);
    const DWORD dwStatus = CopyDriverFilesToHWIDFolder(lpszDriverName);
    WriteLog("DoCopyDriverFileToHWIDFolder End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
