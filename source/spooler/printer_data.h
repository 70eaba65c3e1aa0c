// The values that a printer keeps outside its level 2 data. Each system has one way to them that works: the registry on
// the 9x family, the spooler's default key on NT 4, the spooler's keys from Windows 2000 on.
#pragma once

#include <string>

#include "platform/owned.h"

namespace pikel {

/// On which family a value is read and written. To the other family it looks like a missing value.
enum ValueKind : DWORD {
    ValueKindEvery = 0,
    ValueKind9x = 1,
    ValueKindNt = 2,
};

inline bool Is9xKind(DWORD dwKind) {
    return dwKind == ValueKindEvery || dwKind == ValueKind9x;
}
inline bool IsNtKind(DWORD dwKind) {
    return dwKind == ValueKindEvery || dwKind == ValueKindNt;
}

/// Key that stands for a null key.
inline constexpr char kPrinterDriverData[] = "PrinterDriverData";
/// Key of all printers, below HKEY_LOCAL_MACHINE.
inline constexpr char kPrintersKey[] = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers";

/// The key that a caller's key, which may be null, stands for.
inline LPCSTR PrinterDataKey(LPCSTR lpszKey) {
    return lpszKey == nullptr ? kPrinterDriverData : lpszKey;
}

/// Path of a printer's key below HKEY_LOCAL_MACHINE, as the 9x family has it.
/// @param lpszKey  null: the default key
std::string PrinterKeyPath9x(LPCSTR lpszPrinterName, LPCSTR lpszKey);

/// A value as it was read.
struct PrinterValueData {
    DWORD dwType = 0;  ///< registry type
    HeapBlock data;    ///< dwSize bytes; may be empty for a value without data
    DWORD dwSize = 0;  ///< bytes
};

/// Reads one value of a printer by the routine of the running system.
/// @param lpszKey      key below the printer, or null for the default key. NT 4 ignores it.
/// @param dwKind       ValueKind
/// @param value [out]  what was read; of no meaning on failure
/// @return 0; 87 for a null printer name; 2 for a kind of the other family or an unknown one; 8 without memory; else
///         the code of the registry or the spooler. A text of a connection to a shared printer reads as 0 and nothing.
DWORD GetPrinterData(LPCSTR lpszPrinterName, LPCSTR lpszKey, LPCSTR lpszValueName, DWORD dwKind,
                     PrinterValueData& value);

/// Writes one value of a printer by the routine of the running system.
/// @param lpszKey  key below the printer, or null for the default key. NT 4 ignores it.
/// @param dwType   registry type
/// @param pData    cbData bytes; may be null before Windows 2000
/// @param dwKind   ValueKind
/// @return 0; 87 for a null name, or null data from Windows 2000 on; 2 for a kind of the other family or an unknown
///         one; else the code of the registry or the spooler
DWORD SetPrinterData(LPCSTR lpszPrinterName, LPCSTR lpszKey, LPCSTR lpszValueName, DWORD dwType, LPBYTE pData,
                     DWORD cbData, DWORD dwKind);

}  // namespace pikel
