// The values that a printer keeps outside its level 2 data.
#include "spooler/printer_data.h"

#include "frame/log.h"
#include "frame/os_route.h"
#include "spooler/spooler_read.h"

namespace pikel {

std::string PrinterKeyPath9x(LPCSTR lpszPrinterName, LPCSTR lpszKey) {
    return std::string(kPrintersKey) + '\\' + lpszPrinterName + '\\' + PrinterDataKey(lpszKey);
}

namespace {

/// One value to be written.
struct PrinterValue {
    LPCSTR lpszPrinterName;
    LPCSTR lpszKey;
    LPCSTR lpszValueName;
    DWORD dwType;
    LPBYTE pData;
    DWORD cbData;
    DWORD dwKind;
};

// ---- 9x family: the registry ------------------------------------------------------------------------------------

DWORD WriteToRegistry(const PrinterValue& value, RegistryKey& key) {
    if (value.lpszPrinterName == nullptr || value.lpszValueName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Is9xKind(value.dwKind)) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::string strPath = PrinterKeyPath9x(value.lpszPrinterName, value.lpszKey);
    HKEY hKey = nullptr;
    LSTATUS lCode = Platform().RegCreateKeyExA(HKEY_LOCAL_MACHINE, strPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                               KEY_READ | KEY_WRITE, nullptr, &hKey, nullptr);
    if (lCode != ERROR_SUCCESS) {
        WriteLog("SetPrinterData9x-Open Error:%d", lCode);
        return static_cast<DWORD>(lCode);
    }
    key.Reset(hKey);
    lCode = Platform().RegSetValueExA(hKey, value.lpszValueName, 0, value.dwType, value.pData, value.cbData);
    if (lCode != ERROR_SUCCESS) {
        WriteLog("SetPrinterData9x-SetValue Error:%d", lCode);
    }
    return static_cast<DWORD>(lCode);
}

DWORD SetPrinterData9x(const PrinterValue& value) {
    WriteLog("SetPrinterData9x() - Start");
    RegistryKey key;  // open until the end line is written
    const DWORD dwCode = WriteToRegistry(value, key);
    WriteLog("SetPrinterData9x() - End(%d)", dwCode);
    return dwCode;
}

// ---- NT 4: the spooler's default key ----------------------------------------------------------------------------

DWORD WriteToDefaultKey(const PrinterValue& value, PrinterHandle& hPrinter) {
    if (value.lpszPrinterName == nullptr || value.lpszValueName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!IsNtKind(value.dwKind)) {
        return ERROR_FILE_NOT_FOUND;
    }
    const DWORD dwCode = OpenPrinterWithAccess(value.lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    return Platform().SetPrinterDataA(hPrinter.Get(), const_cast<LPSTR>(value.lpszValueName), value.dwType, value.pData,
                                      value.cbData);
}

/// Ignores the key: NT 4 has no other than the default one.
DWORD SetPrinterDataNT(const PrinterValue& value) {
    WriteLog("SetPrinterDataNT() - Start");
    PrinterHandle hPrinter;  // open until the end line is written
    const DWORD dwCode = WriteToDefaultKey(value, hPrinter);
    WriteLog("SetPrinterDataNT() - End(%d)", dwCode);
    return dwCode;
}

// ---- Windows 2000 and later: the spooler's keys -----------------------------------------------------------------

/// Closes the printer and frees the library, in this order, before it returns.
DWORD WriteToKey(const PrinterValue& value) {
    // Other than on the older systems, a value without data is refused.
    if (value.lpszPrinterName == nullptr || value.lpszValueName == nullptr || value.pData == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!IsNtKind(value.dwKind)) {
        return ERROR_FILE_NOT_FOUND;
    }
    LookedUp<looked_up::SetPrinterDataExA> setPrinterDataEx("winspool.drv", "SetPrinterDataExA");
    if (!setPrinterDataEx) {
        return setPrinterDataEx.Status();
    }
    PrinterHandle hPrinter;
    const DWORD dwCode = OpenPrinterWithAccess(value.lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    return setPrinterDataEx.Call()(hPrinter.Get(), PrinterDataKey(value.lpszKey), value.lpszValueName, value.dwType,
                                   value.pData, value.cbData);
}

DWORD SetPrinterData2k(const PrinterValue& value) {
    WriteLog("SetPrinterData2k() - Start");
    const DWORD dwCode = WriteToKey(value);
    WriteLog("SetPrinterData2k() - End(%d)", dwCode);
    return dwCode;
}

using SetPrinterDataRoutine = DWORD (*)(const PrinterValue&);

constexpr OsRouteTable<SetPrinterDataRoutine> kSetPrinterDataRoutes = {
    SetPrinterData9x,  // Windows 95
    SetPrinterData9x,  // Windows 98
    SetPrinterData9x,  // Windows Me
    SetPrinterDataNT,  // NT 4
    SetPrinterData2k,  // Windows 2000
    SetPrinterData2k,  // XP generation, x86
    SetPrinterData2k,  // XP generation, IA64
    SetPrinterData2k,  // XP generation, x64
    SetPrinterData2k,  // Vista generation, x86
    SetPrinterData2k,  // Vista generation, IA64
    SetPrinterData2k,  // Vista generation, x64
    SetPrinterData2k,  // anything else
};
static_assert(IsComplete(kSetPrinterDataRoutes));

}  // namespace

DWORD SetPrinterData(LPCSTR lpszPrinterName, LPCSTR lpszKey, LPCSTR lpszValueName, DWORD dwType, LPBYTE pData,
                     DWORD cbData, DWORD dwKind) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    return CallRoute(kSetPrinterDataRoutes,
                     PrinterValue{lpszPrinterName, lpszKey, lpszValueName, dwType, pData, cbData, dwKind});
}

}  // namespace pikel
