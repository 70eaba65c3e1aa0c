// The default printer: which it is, whether a printer is it, and making a printer it.
#include "printer/default_printer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/text.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

constexpr DWORD kNameBufferSize = 520;
constexpr DWORD kDeviceValueSize = 260;
constexpr UINT kBroadcastTimeout = 1000;  // milliseconds
constexpr char kDevicesKey[] = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Devices";

/// A name as the system's calls fill it in; one byte more than they are told of, so that it ends in any case.
using NameBuffer = char[kNameBufferSize + 1];

DWORD CopyName(std::string_view name, LPSTR lpszBuffer, DWORD dwSize) {
    return CopyIfFits(name, lpszBuffer, dwSize) ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

// ---- which it is ------------------------------------------------------------------------------------------------

DWORD GetDefaultPrinter9x(LPSTR lpszBuffer, DWORD dwSize) {
    if (lpszBuffer == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    HeapBlock block;
    DWORD dwCount = 0;
    const DWORD dwCode = EnumPrinterInfo(kLocalAndConnected, nullptr, 5, block, &dwCount);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    const auto* pInfos = static_cast<const PRINTER_INFO_5A*>(block.Get());
    for (DWORD dwIndex = 0; dwIndex < dwCount; ++dwIndex) {
        const PRINTER_INFO_5A& info = pInfos[dwIndex];
        if ((info.Attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0) {
            return CopyName(TextOrEmpty(info.pPrinterName), lpszBuffer, dwSize);
        }
    }
    return ERROR_SUCCESS;
}

/// Name in front of the first comma of the profile's "device" entry.
/// @return false when there is no text; the code is the last error, which can be 0
bool ReadProfileName(NameBuffer& szName) {
    std::memset(szName, 0, sizeof(szName));
    if (Platform().GetProfileStringA("windows", "device", "", szName, kNameBufferSize) == 0) {
        return false;
    }
    szName[std::string_view(szName).substr(0, std::string_view(szName).find(',')).size()] = '\0';
    return true;
}

DWORD GetDefaultPrinterNT(LPSTR lpszBuffer, DWORD dwSize) {
    NameBuffer szName;
    if (!ReadProfileName(szName)) {
        return Platform().GetLastError();
    }
    return CopyName(szName, lpszBuffer, dwSize);
}

/// Asks the spooler library, which is loaded for this one call.
/// @param bFound [out]  whether szName holds a name; false with a result of 0 when the system knows no default printer
/// @return 0, or the code of a library or an entry that isn't there
DWORD ReadSpoolerName(NameBuffer& szName, bool& bFound) {
    std::memset(szName, 0, sizeof(szName));
    bFound = false;
    LookedUp<looked_up::GetDefaultPrinterA> getDefaultPrinter("winspool.drv", "GetDefaultPrinterA");
    if (!getDefaultPrinter) {
        return getDefaultPrinter.Status();
    }
    DWORD dwSize = kNameBufferSize;
    bFound = getDefaultPrinter.Call()(szName, &dwSize) != FALSE;
    return ERROR_SUCCESS;
}

DWORD GetDefaultPrinter2k(LPSTR lpszBuffer, DWORD dwSize) {
    NameBuffer szName;
    bool bFound = false;
    const DWORD dwCode = ReadSpoolerName(szName, bFound);
    return bFound ? CopyName(szName, lpszBuffer, dwSize) : dwCode;
}

using GetDefaultPrinterRoutine = DWORD (*)(LPSTR, DWORD);

constexpr OsRouteTable<GetDefaultPrinterRoutine> kGetDefaultPrinterRoutes = {
    GetDefaultPrinter9x,  // Windows 95
    GetDefaultPrinter9x,  // Windows 98
    GetDefaultPrinter9x,  // Windows Me
    GetDefaultPrinterNT,  // NT 4
    GetDefaultPrinter2k,  // Windows 2000
    GetDefaultPrinter2k,  // XP generation, x86
    GetDefaultPrinter2k,  // XP generation, IA64
    GetDefaultPrinter2k,  // XP generation, x64
    GetDefaultPrinter2k,  // Vista generation, x86
    GetDefaultPrinter2k,  // Vista generation, IA64
    GetDefaultPrinter2k,  // Vista generation, x64
    GetDefaultPrinter2k,  // anything else
};
static_assert(IsComplete(kGetDefaultPrinterRoutes));

/// Length of the text in the caller's buffer, as a printf precision: up to a NUL, and never more than its size. The
/// buffer may never have been written.
int BoundedLength(LPCSTR lpszBuffer, DWORD dwSize) {
    const DWORD dwMost = std::min<DWORD>(dwSize, std::numeric_limits<int>::max());
    const void* pNul = std::memchr(lpszBuffer, '\0', dwMost);
    return pNul == nullptr ? static_cast<int>(dwMost) : static_cast<int>(static_cast<LPCSTR>(pNul) - lpszBuffer);
}

// ---- whether a printer is it ------------------------------------------------------------------------------------

/// Goes by the spooler's flag: the name is not compared.
DWORD IsDefaultPrinter9x(LPCSTR lpszPrinterName) {
    PrinterHandle hPrinter;
    if (lpszPrinterName == nullptr || OpenPrinterPlainly(lpszPrinterName, hPrinter) != ERROR_SUCCESS) {
        return 0;
    }
    HeapBlock block;
    if (GetPrinterInfo(hPrinter.Get(), 5, block) != ERROR_SUCCESS || !block) {
        return 0;
    }
    const auto& info = *static_cast<const PRINTER_INFO_5A*>(block.Get());
    return (info.Attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0 ? 1 : 0;
}

DWORD IsDefaultPrinterNT(LPCSTR lpszPrinterName) {
    NameBuffer szName;
    return lpszPrinterName != nullptr && ReadProfileName(szName) && EqualNoCase(szName, lpszPrinterName) ? 1 : 0;
}

DWORD IsDefaultPrinter2k(LPCSTR lpszPrinterName) {
    NameBuffer szName;
    bool bFound = false;
    if (lpszPrinterName == nullptr || ReadSpoolerName(szName, bFound) != ERROR_SUCCESS || !bFound) {
        return 0;
    }
    return EqualNoCase(szName, lpszPrinterName) ? 1 : 0;
}

using IsDefaultPrinterRoutine = DWORD (*)(LPCSTR);

constexpr OsRouteTable<IsDefaultPrinterRoutine> kIsDefaultPrinterRoutes = {
    IsDefaultPrinter9x,  // Windows 95
    IsDefaultPrinter9x,  // Windows 98
    IsDefaultPrinter9x,  // Windows Me
    IsDefaultPrinterNT,  // NT 4
    IsDefaultPrinter2k,  // Windows 2000
    IsDefaultPrinter2k,  // XP generation, x86
    IsDefaultPrinter2k,  // XP generation, IA64
    IsDefaultPrinter2k,  // XP generation, x64
    IsDefaultPrinter2k,  // Vista generation, x86
    IsDefaultPrinter2k,  // Vista generation, IA64
    IsDefaultPrinter2k,  // Vista generation, x64
    IsDefaultPrinter2k,  // anything else
};
static_assert(IsComplete(kIsDefaultPrinterRoutes));

// ---- making a printer it ----------------------------------------------------------------------------------------

DWORD SetDefaultFlag(LPCSTR lpszPrinterName, PrinterHandle& hPrinter) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    DWORD dwCode = OpenPrinterPlainly(lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    HeapBlock block;
    dwCode = GetPrinterInfo(hPrinter.Get(), 5, block);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    if (!block) {
        return ERROR_INVALID_DATA;  // nothing was read, so nothing can be set: no success to report
    }
    auto& info = *static_cast<PRINTER_INFO_5A*>(block.Get());
    if ((info.Attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0) {
        return ERROR_SUCCESS;
    }
    info.Attributes |= PRINTER_ATTRIBUTE_DEFAULT;
    return Platform().SetPrinterA(hPrinter.Get(), 5, static_cast<LPBYTE>(block.Get()), 0) ? ERROR_SUCCESS
                                                                                          : Platform().GetLastError();
}

/// The printer's level 2 data, with a name in it.
DWORD ReadLevel2WithName(LPCSTR lpszPrinterName, HeapBlock& block) {
    const DWORD dwCode = ReadPrinterLevel(lpszPrinterName, 2, block);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    const auto* pInfo = static_cast<const PRINTER_INFO_2A*>(block.Get());
    return pInfo == nullptr || pInfo->pPrinterName == nullptr ? ERROR_INVALID_DATA : ERROR_SUCCESS;
}

/// Driver and port of a printer as the user's "Devices" key tells them: "winspool,Ne00:".
/// @param key [out]  the key, left open for the caller
DWORD ReadDeviceValue(LPCSTR lpszValueName, RegistryKey& key, std::string& strValue) {
    HKEY hKey = nullptr;
    LSTATUS lCode = Platform().RegOpenKeyExA(HKEY_CURRENT_USER, kDevicesKey, 0, KEY_READ, &hKey);
    if (lCode != ERROR_SUCCESS) {
        return static_cast<DWORD>(lCode);
    }
    key.Reset(hKey);
    char szValue[kDeviceValueSize + 1] = {};  // ends in a NUL also when the value fills what the query is told of
    DWORD dwType = REG_NONE;
    DWORD cbValue = kDeviceValueSize;
    lCode =
        Platform().RegQueryValueExA(hKey, lpszValueName, nullptr, &dwType, reinterpret_cast<LPBYTE>(szValue), &cbValue);
    if (lCode != ERROR_SUCCESS) {
        return static_cast<DWORD>(lCode);
    }
    if (dwType != REG_SZ) {
        return ERROR_INVALID_DATA;
    }
    strValue = szValue;
    return ERROR_SUCCESS;
}

/// Writes the profile's "device" entry and tells every window. Whether the windows answer is not looked at.
DWORD WriteProfileDevice(const std::string& strDevice) {
    if (!Platform().WriteProfileStringA("windows", "device", strDevice.c_str())) {
        return Platform().GetLastError();
    }
    Platform().SendMessageTimeoutA(HWND_BROADCAST, WM_SETTINGCHANGE, 0, 0, 0, kBroadcastTimeout, nullptr);
    return ERROR_SUCCESS;
}

DWORD SetProfileDevice(LPCSTR lpszPrinterName, HeapBlock& level2, RegistryKey& key) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    DWORD dwCode = ReadLevel2WithName(lpszPrinterName, level2);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    // The value bears the spooler's spelling of the name, the profile gets the caller's.
    std::string strValue;
    dwCode = ReadDeviceValue(static_cast<const PRINTER_INFO_2A*>(level2.Get())->pPrinterName, key, strValue);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    return WriteProfileDevice(std::string(lpszPrinterName) + ',' + strValue);
}

/// Frees the library before it returns.
DWORD SetThroughSpooler(LPCSTR lpszPrinterName) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    LookedUp<looked_up::SetDefaultPrinterA> setDefaultPrinter("winspool.drv", "SetDefaultPrinterA");
    if (!setDefaultPrinter) {
        return setDefaultPrinter.Status();
    }
    return setDefaultPrinter.Call()(lpszPrinterName) ? ERROR_SUCCESS : Platform().GetLastError();
}

using SetDefaultPrinterRoutine = DWORD (*)(LPCSTR);

constexpr OsRouteTable<SetDefaultPrinterRoutine> kSetDefaultPrinterRoutes = {
    SetDefaultPrinter9x,  // Windows 95
    SetDefaultPrinter9x,  // Windows 98
    SetDefaultPrinter9x,  // Windows Me
    SetDefaultPrinterNT,  // NT 4
    SetDefaultPrinter2K,  // Windows 2000
    SetDefaultPrinter2K,  // XP generation, x86
    SetDefaultPrinter2K,  // XP generation, IA64
    SetDefaultPrinter2K,  // XP generation, x64
    SetDefaultPrinter2K,  // Vista generation, x86
    SetDefaultPrinter2K,  // Vista generation, IA64
    SetDefaultPrinter2K,  // Vista generation, x64
    SetDefaultPrinter2K,  // anything else
};
static_assert(IsComplete(kSetDefaultPrinterRoutes));

}  // namespace

DWORD DoGetDefaultPrinter(LPSTR lpszBuffer, DWORD dwSize) {
    if (lpszBuffer == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoGetDefaultPrinter() Start");
    const DWORD dwCode = CallRoute(kGetDefaultPrinterRoutes, lpszBuffer, dwSize);
    WriteLog("DoGetDefaultPrinter(%.*s) End(%d)", BoundedLength(lpszBuffer, dwSize), lpszBuffer, dwCode);
    return dwCode;
}

DWORD IsDefaultPrinter(LPCSTR lpszPrinterName) {
    // The answer is a yes or no: the code for a system without a row is none of it.
    return GetOsRoute().HasRoute() ? CallRoute(kIsDefaultPrinterRoutes, lpszPrinterName) : 0;
}

DWORD DoIsDefaultPrinter(LPCSTR lpszPrinterName) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoIsDefaultPrinter(%s) Start", lpszPrinterName);
    const DWORD dwAnswer = IsDefaultPrinter(lpszPrinterName);
    WriteLog("DoIsDefaultPrinter() End(%d)", dwAnswer);
    return dwAnswer;
}

DWORD SetDefaultPrinter9x(LPCSTR lpszPrinterName) {
    WriteLog("SetDefaultPrinter9x() - Start");
    PrinterHandle hPrinter;  // open until the end line is written
    const DWORD dwCode = SetDefaultFlag(lpszPrinterName, hPrinter);
    WriteLog("SetDefaultPrinter9x() - End(%d)", dwCode);
    return dwCode;
}

DWORD SetDefaultPrinterNT(LPCSTR lpszPrinterName) {
    WriteLog("SetDefaultPrinterNT() - Start");
    HeapBlock level2;
    RegistryKey key;  // open until the end line is written
    const DWORD dwCode = SetProfileDevice(lpszPrinterName, level2, key);
    WriteLog("SetDefaultPrinterNT() - End(%d)", dwCode);
    return dwCode;
}

DWORD SetDefaultPrinter2K(LPCSTR lpszPrinterName) {
    WriteLog("SetDefaultPrinter2K() - Start");
    const DWORD dwCode = SetThroughSpooler(lpszPrinterName);
    WriteLog("SetDefaultPrinter2K() - End(%d)", dwCode);
    return dwCode;
}

DWORD DoSetDefaultPrinter(LPCSTR lpszPrinterName) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoSetDefaultPrinter(%s) Start", lpszPrinterName);
    const DWORD dwCode = CallRoute(kSetDefaultPrinterRoutes, lpszPrinterName);
    WriteLog("DoSetDefaultPrinter End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
