// What the Print UI's command lines have in common, and the part that names a driver's system and version.
#include "printui/print_ui_commands.h"

#include <cstdarg>
#include <cstdio>

#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/pikel.h"
#include "printui/command_line.h"
#include "spooler/driver_records.h"

namespace pikel {

namespace {

/// How a driver's version is named from the XP generation on.
struct NamedVersion {
    LPCSTR lpszEnvironment = nullptr;  ///< null for a version that has no name
    INT nNumber = 0;
};

NamedVersion NameVersion(DWORD dwVersion, DWORD dwProcessor) {
    switch (dwVersion) {
        case PIKEL_DRIVER_VERSION_9X:
        case kSpoolerVersion9x:
            return {kEnvironment9x, 0};
        case PIKEL_DRIVER_VERSION_NT4:
            return {kEnvironmentX86, 2};
        case PIKEL_DRIVER_VERSION_2000:
            switch (dwProcessor) {
                case PIKEL_PROCESSOR_X86:
                    return {kEnvironmentX86, 3};
                case PIKEL_PROCESSOR_IA64:
                    return {kEnvironmentIa64, 3};
                case PIKEL_PROCESSOR_X64:
                    return {kEnvironmentX64, 3};
                default:
                    return {};
            }
        default:
            return {};
    }
}

/// Text of the Print UI of Windows 2000 that names a version. The id 0 names none, and its look-up fails.
DWORD VersionTextId(DWORD dwVersion) {
    switch (dwVersion) {
        case PIKEL_DRIVER_VERSION_9X:
        case kSpoolerVersion9x:
            return 16050;
        case PIKEL_DRIVER_VERSION_NT4:
            return 16055;
        case PIKEL_DRIVER_VERSION_2000:
            return 16056;
        default:
            return 0;
    }
}

DWORD MakeVersionString2k(DWORD dwVersion, LPSTR lpszBuffer, DWORD dwSize) {
    char szVersion[kVersionPartSize] = {};
    const DWORD dwCode = DoGetResourceStrFromPrintUI(VersionTextId(dwVersion), szVersion, sizeof szVersion);
    if (lpszBuffer == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD dwFormatCode = FormatBounded(lpszBuffer, dwSize, "/h\"Intel\" /v\"%s\"", szVersion);
    return dwFormatCode != ERROR_SUCCESS ? dwFormatCode : dwCode;
}

DWORD MakeVersionStringXp(DWORD dwVersion, DWORD dwProcessor, LPSTR lpszBuffer, DWORD dwSize) {
    const NamedVersion named = NameVersion(dwVersion, dwProcessor);
    if (named.lpszEnvironment == nullptr || lpszBuffer == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    return FormatBounded(lpszBuffer, dwSize, "/K /h\"%s\" /v %d", named.lpszEnvironment, named.nNumber);
}

DWORD MakeVersionStringBySystem(DWORD dwVersion, DWORD dwProcessor, LPSTR lpszBuffer, DWORD dwSize) {
    if (!IsPrintUIUsable()) {
        return ERROR_INVALID_PARAMETER;
    }
    return HasOsClass(OsClassWindows2000) ? MakeVersionString2k(dwVersion, lpszBuffer, dwSize)
                                          : MakeVersionStringXp(dwVersion, dwProcessor, lpszBuffer, dwSize);
}

}  // namespace

DWORD FormatBounded(LPSTR lpszBuffer, DWORD dwSize, const char* lpszFormat, ...) {
    std::va_list arguments;
    va_start(arguments, lpszFormat);
    const int nLength = std::vsnprintf(lpszBuffer, dwSize, lpszFormat, arguments);
    va_end(arguments);
    return nLength < 0 || static_cast<DWORD>(nLength) >= dwSize ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
}

bool IsVistaGeneration() {
    return HasOsClass(OsClassVista);
}

DWORD MakeVersionStringForPrintUI(DWORD dwVersion, DWORD dwProcessor, LPSTR lpszBuffer, DWORD dwSize) {
    WriteLog("MakeVersionStringForPrintUI Start");
    const DWORD dwCode = MakeVersionStringBySystem(dwVersion, dwProcessor, lpszBuffer, dwSize);
    WriteLog("MakeVersionStringForPrintUI End(0x%08x)", dwCode);
    return dwCode;
}

}  // namespace pikel
