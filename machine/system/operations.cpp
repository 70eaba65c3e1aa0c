// The running system: its version, folders, names, time and the last error.
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "machine/system/machine.h"
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

/// Days from 1601-01-01 to a date of the Gregorian calendar, by the count of March-based years.
std::uint64_t DaysSince1601(unsigned year, unsigned month, unsigned day) {
    const unsigned y = month <= 2 ? year - 1 : year;
    const unsigned monthFromMarch = (month + 9) % 12;
    const unsigned dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    constexpr std::uint64_t kDaysTo1601 = 584694;  // from 0000-03-01
    return std::uint64_t{365} * y + y / 4 - y / 100 + y / 400 + dayOfYear - kDaysTo1601;
}

bool IsLeapYear(unsigned year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

unsigned DaysInMonth(unsigned year, unsigned month) {
    static constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

bool IsValid(const SYSTEMTIME& time) {
    return time.wYear >= 1601 && time.wYear <= 30827 && time.wMonth >= 1 && time.wMonth <= 12 && time.wDay >= 1 &&
           time.wDay <= DaysInMonth(time.wYear, time.wMonth) && time.wHour < 24 && time.wMinute < 60 &&
           time.wSecond < 60 && time.wMilliseconds < 1000;
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

void WINAPI GetLocalTime(LPSYSTEMTIME lpSystemTime) {
    *lpSystemTime = Current().LocalTime();
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime) {
    if (!IsValid(*lpSystemTime)) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    const std::uint64_t days = DaysSince1601(lpSystemTime->wYear, lpSystemTime->wMonth, lpSystemTime->wDay);
    const std::uint64_t seconds =
        ((days * 24 + lpSystemTime->wHour) * 60 + lpSystemTime->wMinute) * 60 + lpSystemTime->wSecond;
    const std::uint64_t ticks = (seconds * 1000 + lpSystemTime->wMilliseconds) * 10000;
    lpFileTime->dwLowDateTime = static_cast<DWORD>(ticks);
    lpFileTime->dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return TRUE;
}

LONG WINAPI CompareFileTime(const FILETIME* lpFileTime1, const FILETIME* lpFileTime2) {
    const auto ticks = [](const FILETIME& time) {
        return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    };
    const std::uint64_t first = ticks(*lpFileTime1);
    const std::uint64_t second = ticks(*lpFileTime2);
    return (first > second ? 1 : 0) - (first < second ? 1 : 0);
}

void WINAPI Sleep(DWORD dwMilliseconds) {
    Current().Advance(dwMilliseconds);
}

DWORD WINAPI GetLastError() {
    return lastError;
}

void WINAPI SetLastError(DWORD dwErrCode) {
    lastError = dwErrCode;
}

}  // namespace pikel::simulated
