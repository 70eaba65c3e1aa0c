// The process-wide record of the running system.
#include "frame/os_identity.h"

#include <cstring>
#include <memory>

#include "frame/path.h"
#include "platform/platform.h"

namespace pikel {

namespace {

constexpr DWORD kLongVersionInfoSize = 156;
constexpr DWORD kShortVersionInfoSize = 148;  // all that systems before NT 4 with service pack 6 take
static_assert(sizeof(OSVERSIONINFOEXA) == kLongVersionInfoSize);
static_assert(sizeof(OSVERSIONINFOA) == kShortVersionInfoSize);

constexpr DWORD kPathSize = 2048;  // bytes, NUL included
constexpr DWORD kComputerNameSize = 260;

constexpr DWORD kProcessorIa64 = 2200;
constexpr DWORD kProcessorX64 = 8664;

HMODULE g_hAttachedModule = nullptr;
HMODULE g_hKeptModule = nullptr;
std::unique_ptr<const OsIdentity> g_pOsIdentity;

/// Asks for the version, in the long form where the system has it.
/// @return all zero when both forms are refused
OSVERSIONINFOEXA ReadVersionInfo() {
    for (DWORD dwSize : {kLongVersionInfoSize, kShortVersionInfoSize}) {
        OSVERSIONINFOEXA info = {};
        info.dwOSVersionInfoSize = dwSize;
        if (Platform().GetVersionExA(reinterpret_cast<LPOSVERSIONINFOA>(&info))) {
            return info;
        }
    }
    return {};
}

void BuildVersion(OsVersion& version) {
    const OSVERSIONINFOEXA info = ReadVersionInfo();
    version.versionInfoSize = info.dwOSVersionInfoSize;
    version.majorVersion = info.dwMajorVersion;
    version.minorVersion = info.dwMinorVersion;
    version.buildNumber = info.dwBuildNumber;
    version.platformId = info.dwPlatformId;
    std::memcpy(version.csdVersion, info.szCSDVersion, sizeof(version.csdVersion));
    version.csdVersion[sizeof(version.csdVersion) - 1] = '\0';
    version.servicePackMajor = info.wServicePackMajor;
    version.servicePackMinor = info.wServicePackMinor;
    version.suiteMask = info.wSuiteMask;
    version.productType = info.wProductType;
    version.reserved = info.wReserved;
    version.osClass = ClassifyOs(info.dwPlatformId, info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber);

    SYSTEM_INFO systemInfo = {};
    Platform().GetSystemInfo(&systemInfo);
    version.cpuClass = ClassifyProcessor(systemInfo.dwProcessorType);
}

/// Reads one path. The calls tell a buffer that is too small by a length that doesn't lie below its size.
/// @param read  calls the system with a buffer of kPathSize bytes and returns the length
template <class Read>
bool ReadPath(std::string& strPath, Read read) {
    char szPath[kPathSize] = {};
    const DWORD dwLength = read(szPath);
    if (dwLength == 0 || dwLength >= kPathSize) {
        return false;
    }
    strPath = szPath;
    return true;
}

void BuildPaths(OsIdentity& identity) {
    std::string strWindows;
    std::string strSystem;
    std::string strTemp;
    std::string strModule;
    const bool fAreRead =
        ReadPath(strWindows, [](LPSTR lpsz) { return Platform().GetWindowsDirectoryA(lpsz, kPathSize); }) &&
        ReadPath(strSystem, [](LPSTR lpsz) { return Platform().GetSystemDirectoryA(lpsz, kPathSize); }) &&
        ReadPath(strTemp, [](LPSTR lpsz) { return Platform().GetTempPathA(kPathSize, lpsz); }) &&
        ReadPath(strModule, [](LPSTR lpsz) { return Platform().GetModuleFileNameA(GetKeptModule(), lpsz, kPathSize); });
    if (!fAreRead) {
        return;
    }

    DropTrailingBackslash(strTemp);
    const PathParts moduleParts = SplitPath(strModule);
    identity.moduleDirectory = moduleParts.strDrive + moduleParts.strDirectory;
    DropTrailingBackslash(identity.moduleDirectory);
    identity.systemDrive = SplitPath(strSystem).strDrive;
    identity.windowsDirectory = std::move(strWindows);
    identity.systemDirectory = std::move(strSystem);
    identity.tempDirectory = std::move(strTemp);
    identity.moduleFilePath = std::move(strModule);
}

void BuildComputerName(OsIdentity& identity) {
    char szName[kComputerNameSize] = {};
    DWORD dwSize = kComputerNameSize;
    if (Platform().GetComputerNameA(szName, &dwSize)) {
        szName[kComputerNameSize - 1] = '\0';
        identity.computerName = szName;
    }
}

/// Class of a system of the 9x family. Only the build number tells Me from 98: its high word repeats the version.
DWORD Classify9x(DWORD dwMinorVersion, DWORD dwBuildNumber) {
    if (dwMinorVersion == 0) {
        return OsClass9xFamily | OsClassWindows95;
    }
    if (dwMinorVersion > 90) {
        return OsClass9xFamily;
    }
    const bool fIsMe = (dwBuildNumber >> 16 & 0xFF) == 0x5A && (dwBuildNumber & 0xFFFF) == 3000;
    return fIsMe ? OsClass9xFamily | OsClassWindowsMe : OsClass9xFamily | OsClassWindows98;
}

/// Class of a system of the NT family; a major version without a class of its own counts as the newest.
DWORD ClassifyNt(DWORD dwMajorVersion, DWORD dwMinorVersion) {
    switch (dwMajorVersion) {
        case 3:
            return OsClassNtFamily | OsClassNt3;
        case 4:
            return OsClassNtFamily | OsClassNt4;
        case 5:
            return dwMinorVersion == 0 ? OsClassNtFamily | OsClassWindows2000 : OsClassNtFamily | OsClassXp;
        default:
            return OsClassNtFamily | OsClassVista;
    }
}

}  // namespace

DWORD ClassifyOs(DWORD dwPlatformId, DWORD dwMajorVersion, DWORD dwMinorVersion, DWORD dwBuildNumber) {
    switch (dwPlatformId) {
        case VER_PLATFORM_WIN32s:
            return OsClassWin32s;
        case VER_PLATFORM_WIN32_WINDOWS:
            return Classify9x(dwMinorVersion, dwBuildNumber);
        case VER_PLATFORM_WIN32_NT:
            return ClassifyNt(dwMajorVersion, dwMinorVersion);
        default:
            return OsClassUnknown;
    }
}

DWORD ClassifyProcessor(DWORD dwProcessorType) {
    switch (dwProcessorType) {
        case kProcessorX64:
            return CpuClassX64;
        case kProcessorIa64:
            return CpuClassIa64;
        default:
            return CpuClassX86;
    }
}

const OsIdentity& GetOsIdentity() {
    if (g_pOsIdentity == nullptr) {
        auto pIdentity = std::make_unique<OsIdentity>();
        BuildVersion(*pIdentity);
        BuildPaths(*pIdentity);
        BuildComputerName(*pIdentity);
        g_pOsIdentity = std::move(pIdentity);
    }
    return *g_pOsIdentity;
}

void ForgetOsIdentity() {
    g_pOsIdentity.reset();
}

bool IsForeignArchitecture(DWORD dwArchitecture) {
    const OsIdentity& identity = GetOsIdentity();
    if (identity.osClass & (OsClassWindows95 | OsClassWindows98 | OsClassWindowsMe)) {
        return dwArchitecture != 1;
    }
    if (identity.osClass & OsClassNt4) {
        return dwArchitecture == 1;
    }
    if (identity.osClass & OsClassWindows2000) {
        return dwArchitecture == 1 || dwArchitecture == 2;
    }
    if (identity.osClass & (OsClassXp | OsClassVista)) {
        if (identity.cpuClass & CpuClassIa64) {
            return dwArchitecture != 4;
        }
        if (identity.cpuClass & CpuClassX64) {
            return dwArchitecture != 5;
        }
        return dwArchitecture != 3;
    }
    return false;
}

bool IsPrintUIUsable() {
    constexpr DWORD dwWithoutPrintUI = OsClassWindows95 | OsClassWindows98 | OsClassWindowsMe | OsClassNt4;
    return (GetOsIdentity().osClass & dwWithoutPrintUI) == 0;
}

void SetAttachedModule(HMODULE hModule) {
    g_hAttachedModule = hModule;
}

void KeepModule() {
    g_hKeptModule = g_hAttachedModule;
}

HMODULE GetKeptModule() {
    return g_hKeptModule;
}

}  // namespace pikel
