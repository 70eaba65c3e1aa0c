// Reading the values that a printer keeps outside its level 2 data.
#include "frame/log.h"
#include "frame/os_route.h"
#include "spooler/printer_connection.h"
#include "spooler/printer_data.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

/// Which value is asked for.
struct ValueName {
    LPCSTR lpszPrinterName;
    LPCSTR lpszKey;
    LPCSTR lpszValueName;
    DWORD dwKind;
};

/// Allocates the room for a value and has it read.
/// @param fnRead  DWORD(LPBYTE pData, DWORD& dwSize): reads into the room, returns its code and the bytes that it wrote
/// @param value   in: size asked for; out: data and size, on success alone
template <class Read>
DWORD ReadInto(PrinterValueData& value, Read fnRead) {
    HeapBlock data = AllocateHeap(value.dwSize);
    DWORD dwRead = value.dwSize;
    const DWORD dwCode = data ? fnRead(static_cast<LPBYTE>(data.Get()), dwRead) : DWORD{ERROR_NOT_ENOUGH_MEMORY};
    if (dwCode != ERROR_SUCCESS) {
        value.dwSize = 0;
        return dwCode;
    }
    value.data = std::move(data);
    // A value that shrank between the two reads; one that grew was refused.
    value.dwSize = dwRead < value.dwSize ? dwRead : value.dwSize;
    return ERROR_SUCCESS;
}

// ---- 9x family: the registry ------------------------------------------------------------------------------------

DWORD ReadFromRegistry(const ValueName& name, PrinterValueData& value, RegistryKey& key) {
    if (name.lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Is9xKind(name.dwKind)) {
        return ERROR_FILE_NOT_FOUND;
    }
    value = {};
    const std::string strPath = PrinterKeyPath9x(name.lpszPrinterName, name.lpszKey);
    HKEY hKey = nullptr;
    LSTATUS lCode = Platform().RegOpenKeyExA(HKEY_LOCAL_MACHINE, strPath.c_str(), 0, KEY_READ, &hKey);
    if (lCode != ERROR_SUCCESS) {
        return static_cast<DWORD>(lCode);
    }
    key.Reset(hKey);
    lCode = Platform().RegQueryValueExA(hKey, name.lpszValueName, nullptr, &value.dwType, nullptr, &value.dwSize);
    if (lCode != ERROR_SUCCESS || value.dwSize == 0) {
        return static_cast<DWORD>(lCode);
    }
    return ReadInto(value, [&](LPBYTE pData, DWORD& dwSize) {
        return static_cast<DWORD>(
            Platform().RegQueryValueExA(hKey, name.lpszValueName, nullptr, &value.dwType, pData, &dwSize));
    });
}

DWORD GetPrinterData9x(const ValueName& name, PrinterValueData& value) {
    WriteLog("GetPrinterData9x() - Start");
    RegistryKey key;  // open until the end line is written
    const DWORD dwCode = ReadFromRegistry(name, value, key);
    WriteLog("GetPrinterData9x() - End(%d)", dwCode);
    return dwCode;
}

// ---- NT 4: the spooler's default key ----------------------------------------------------------------------------

DWORD ReadFromDefaultKey(const ValueName& name, PrinterValueData& value, PrinterHandle& hPrinter) {
    if (name.lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!IsNtKind(name.dwKind)) {
        return ERROR_FILE_NOT_FOUND;
    }
    value = {};
    DWORD dwCode = OpenPrinterWithAccess(name.lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    const auto lpszValueName = const_cast<LPSTR>(name.lpszValueName);
    dwCode = Platform().GetPrinterDataA(hPrinter.Get(), lpszValueName, &value.dwType, nullptr, 0, &value.dwSize);
    if (dwCode != ERROR_MORE_DATA) {
        value.dwSize = 0;
        return dwCode;
    }
    return ReadInto(value, [&](LPBYTE pData, DWORD& dwSize) {
        return Platform().GetPrinterDataA(hPrinter.Get(), lpszValueName, &value.dwType, pData, dwSize, &dwSize);
    });
}

/// Ignores the key: NT 4 has no other than the default one.
DWORD GetPrinterDataNT(const ValueName& name, PrinterValueData& value) {
    WriteLog("GetPrinterDataNT() - Start");
    PrinterHandle hPrinter;  // open until the end line is written
    const DWORD dwCode = ReadFromDefaultKey(name, value, hPrinter);
    WriteLog("GetPrinterDataNT() - End(%d)", dwCode);
    return dwCode;
}

// ---- Windows 2000 and later: the spooler's keys, and the registry for texts ---------------------------------------

/// Opens a key inside another one.
/// @return false on failure. The code is then the last error and not what the call returned, although registry calls
///         need not set it: the read's result is that value, which may be 0 for a key that isn't there.
bool OpenInside(HKEY hParent, LPCSTR lpszName, RegistryKey& key) {
    HKEY hKey = nullptr;
    if (Platform().RegOpenKeyExA(hParent, lpszName, 0, KEY_READ, &hKey) != ERROR_SUCCESS) {
        return false;
    }
    key.Reset(hKey);
    return true;
}

DWORD ReadTextFromRegistry(const ValueName& name, PrinterValueData& value) {
    RegistryKey printers;  // each inside the one before; closed innermost first
    RegistryKey printer;
    RegistryKey key;
    if (!OpenInside(HKEY_LOCAL_MACHINE, kPrintersKey, printers) ||
        !OpenInside(printers.Get(), name.lpszPrinterName, printer) ||
        !OpenInside(printer.Get(), PrinterDataKey(name.lpszKey), key)) {
        return Platform().GetLastError();
    }
    DWORD dwType = 0;
    DWORD dwSize = 0;
    // Not looked at: the second query tells.
    Platform().RegQueryValueExA(key.Get(), name.lpszValueName, nullptr, &dwType, nullptr, &dwSize);
    HeapBlock data = AllocateHeap(SIZE_T{dwSize} + 1);
    if (!data) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    auto* pData = static_cast<LPBYTE>(data.Get());
    if (Platform().RegQueryValueExA(key.Get(), name.lpszValueName, nullptr, &dwType, pData, &dwSize) != ERROR_SUCCESS) {
        return Platform().GetLastError();
    }
    // The extra byte ends a text that was stored without its terminator, and then it counts.
    if (dwSize != 0 && pData[dwSize - 1] != 0) {
        ++dwSize;
    }
    value.dwType = dwType;
    value.data = std::move(data);
    value.dwSize = dwSize;
    return ERROR_SUCCESS;
}

/// Takes a text from the registry, past the spooler.
DWORD GetPrinterData2kHelper(const ValueName& name, PrinterValueData& value) {
    WriteLog("GetPrinterData2kHelper() - Start");
    DWORD dwCode = ERROR_SUCCESS;
    if (name.lpszPrinterName == nullptr) {
        dwCode = ERROR_INVALID_PARAMETER;
    } else if (IsPrinterConnection(name.lpszPrinterName, 0) == 0) {
        dwCode = ReadTextFromRegistry(name, value);
    }
    // Texts of a connection have no key here: they read as present and empty.
    WriteLog("GetPrinterData2kHelper() - End(%d)", dwCode);
    return dwCode;
}

bool IsText(DWORD dwType) {
    return dwType == REG_SZ || dwType == REG_MULTI_SZ;
}

/// Closes the printer and frees the library, in this order, before it returns.
DWORD ReadFromKey(const ValueName& name, PrinterValueData& value) {
    if (name.lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!IsNtKind(name.dwKind)) {
        return ERROR_FILE_NOT_FOUND;
    }
    LookedUp<looked_up::GetPrinterDataExA> getPrinterDataEx("winspool.drv", "GetPrinterDataExA");
    if (!getPrinterDataEx) {
        return getPrinterDataEx.Status();
    }
    value = {};
    PrinterHandle hPrinter;
    DWORD dwCode = OpenPrinterWithAccess(name.lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    auto read = [&](LPBYTE pData, DWORD dwSize, DWORD& dwNeeded) {
        return getPrinterDataEx.Call()(hPrinter.Get(), PrinterDataKey(name.lpszKey), name.lpszValueName, &value.dwType,
                                       pData, dwSize, &dwNeeded);
    };
    dwCode = read(nullptr, 0, value.dwSize);
    if (dwCode == ERROR_SUCCESS) {
        // An empty value still has data to point at.
        value.dwSize = 0;
        value.data = AllocateHeap(1);
        return value.data ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_NOT_ENOUGH_MEMORY};
    }
    if (dwCode != ERROR_MORE_DATA) {
        value.dwSize = 0;
        return dwCode;
    }
    if (IsText(value.dwType)) {
        value = {};
        return GetPrinterData2kHelper(name, value);
    }
    return ReadInto(value, [&](LPBYTE pData, DWORD& dwSize) { return read(pData, dwSize, dwSize); });
}

DWORD GetPrinterData2k(const ValueName& name, PrinterValueData& value) {
    WriteLog("GetPrinterData2k() - Start");
    const DWORD dwCode = ReadFromKey(name, value);
    WriteLog("GetPrinterData2k() - End(%d)", dwCode);
    return dwCode;
}

using GetPrinterDataRoutine = DWORD (*)(const ValueName&, PrinterValueData&);

constexpr OsRouteTable<GetPrinterDataRoutine> kGetPrinterDataRoutes = {
    GetPrinterData9x,  // Windows 95
    GetPrinterData9x,  // Windows 98
    GetPrinterData9x,  // Windows Me
    GetPrinterDataNT,  // NT 4
    GetPrinterData2k,  // Windows 2000
    GetPrinterData2k,  // XP generation, x86
    GetPrinterData2k,  // XP generation, IA64
    GetPrinterData2k,  // XP generation, x64
    GetPrinterData2k,  // Vista generation, x86
    GetPrinterData2k,  // Vista generation, IA64
    GetPrinterData2k,  // Vista generation, x64
    GetPrinterData2k,  // anything else
};
static_assert(IsComplete(kGetPrinterDataRoutes));

}  // namespace

DWORD GetPrinterData(LPCSTR lpszPrinterName, LPCSTR lpszKey, LPCSTR lpszValueName, DWORD dwKind,
                     PrinterValueData& value) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    return CallRoute(kGetPrinterDataRoutes, ValueName{lpszPrinterName, lpszKey, lpszValueName, dwKind}, value);
}

}  // namespace pikel
