// The running system: its version, folders and name.
#include <cstring>
#include <string>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kErrorBufferOverflow = 111;
constexpr DWORD kProcessorIa64 = 2200;
constexpr DWORD kProcessorX64 = 8664;
constexpr WORD kArchitectureIntel = 0;
constexpr WORD kArchitectureIa64 = 6;
constexpr WORD kArchitectureAmd64 = 9;
constexpr DWORD kServicePackWithLongVersion = 6;

/// The longer version structure came with Windows 2000 and with service pack 6 of NT 4.
bool KnowsLongVersion(const SystemDescription& system) {
    switch (system.platform) {
        case VER_PLATFORM_WIN32s:
        case VER_PLATFORM_WIN32_WINDOWS:
            return false;
        case VER_PLATFORM_WIN32_NT:
            return system.major > 4 || system.major < 3 ||
                   (system.major == 4 && system.servicePackMajor >= kServicePackWithLongVersion);
        default:
            return true;
    }
}

/// The form of the folder calls: the length when the text fits with its NUL, else the size that is needed.
DWORD HandOutFolder(std::string_view folder, LPSTR buffer, DWORD size) {
    if (buffer == nullptr || folder.size() >= size) {
        return static_cast<DWORD>(folder.size() + 1);
    }
    std::memcpy(buffer, folder.data(), folder.size());
    buffer[folder.size()] = '\0';
    return static_cast<DWORD>(folder.size());
}

}  // namespace

BOOL WINAPI GetVersionExA(LPOSVERSIONINFOA lpVersionInformation) {
    const SystemDescription& system = Current().System();
    const DWORD size = lpVersionInformation->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOA) && (size != sizeof(OSVERSIONINFOEXA) || !KnowsLongVersion(system))) {
        return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
    }
    OSVERSIONINFOEXA version{};
    version.dwOSVersionInfoSize = size;
    version.dwMajorVersion = system.major;
    version.dwMinorVersion = system.minor;
    version.dwBuildNumber = system.build;
    version.dwPlatformId = system.platform;
    system.servicePack.copy(version.szCSDVersion, sizeof version.szCSDVersion - 1);
    version.wServicePackMajor = system.servicePackMajor;
    version.wServicePackMinor = system.servicePackMinor;
    version.wSuiteMask = system.suiteMask;
    version.wProductType = system.productType;
    static_assert(sizeof(OSVERSIONINFOA) == 148 && sizeof(OSVERSIONINFOEXA) == 156);
    std::memcpy(static_cast<void*>(lpVersionInformation), &version, size);
    return TRUE;
}

void WINAPI GetSystemInfo(LPSYSTEM_INFO lpSystemInfo) {
    const DWORD processor = Current().System().processorType;
    *lpSystemInfo = {};
    lpSystemInfo->wProcessorArchitecture = processor == kProcessorX64    ? kArchitectureAmd64
                                           : processor == kProcessorIa64 ? kArchitectureIa64
                                                                         : kArchitectureIntel;
    lpSystemInfo->dwPageSize = processor == kProcessorIa64 ? 0x2000 : 0x1000;
    lpSystemInfo->lpMinimumApplicationAddress = reinterpret_cast<LPVOID>(static_cast<uintptr_t>(0x10000));
    lpSystemInfo->lpMaximumApplicationAddress = reinterpret_cast<LPVOID>(static_cast<uintptr_t>(0x7FFEFFFF));
    lpSystemInfo->dwActiveProcessorMask = 1;
    lpSystemInfo->dwNumberOfProcessors = 1;
    lpSystemInfo->dwProcessorType = processor;
    lpSystemInfo->dwAllocationGranularity = 0x10000;
}

UINT WINAPI GetWindowsDirectoryA(LPSTR lpBuffer, UINT uSize) {
    return HandOutFolder(Current().System().windowsDirectory, lpBuffer, uSize);
}

UINT WINAPI GetSystemDirectoryA(LPSTR lpBuffer, UINT uSize) {
    return HandOutFolder(Current().System().systemDirectory, lpBuffer, uSize);
}

DWORD WINAPI GetTempPathA(DWORD nBufferLength, LPSTR lpBuffer) {
    const Machine& machine = Current();
    const std::string folder = machine.System().windowsDirectory + (machine.Is9x() ? "\\TEMP\\" : "\\Temp\\");
    return HandOutFolder(folder, lpBuffer, nBufferLength);
}

BOOL WINAPI GetComputerNameA(LPSTR lpBuffer, LPDWORD nSize) {
    const std::string& name = Current().System().computerName;
    if (*nSize <= name.size()) {
        *nSize = static_cast<DWORD>(name.size() + 1);
        return Fail(kErrorBufferOverflow, FALSE);
    }
    std::memcpy(lpBuffer, name.c_str(), name.size() + 1);
    *nSize = static_cast<DWORD>(name.size());
    return TRUE;
}

}  // namespace pikel::simulated
