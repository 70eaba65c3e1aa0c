// Tells a connection to a shared printer from a printer of the machine.
#include "spooler/printer_connection.h"

#include "frame/os_route.h"
#include "frame/text.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

bool IsConnectionOf(const PRINTER_INFO_2A& info, LPCSTR lpszPrinterName) {
    return info.pPrinterName != nullptr && info.pPrinterName[0] == '\\' && info.pServerName != nullptr &&
           EqualNoCase(info.pPrinterName, lpszPrinterName);
}

bool IsKnownConnection(LPCSTR lpszPrinterName) {
    HeapBlock block;
    DWORD dwCount = 0;
    // A failure leaves no entry to look at, which is the answer 0.
    EnumPrinterInfo(kLocalAndConnected, nullptr, 2, block, &dwCount);
    const auto* pInfos = static_cast<const PRINTER_INFO_2A*>(block.Get());
    for (DWORD dwIndex = 0; dwIndex < dwCount; ++dwIndex) {
        if (IsConnectionOf(pInfos[dwIndex], lpszPrinterName)) {
            return true;
        }
    }
    return false;
}

DWORD IsPrinterConnectionNT(LPCSTR lpszPrinterName, DWORD dwSyntaxOnly) {
    if (lpszPrinterName == nullptr) {
        return 0;
    }
    if (dwSyntaxOnly != 0) {
        return lpszPrinterName[0] == '\\' && lpszPrinterName[1] == '\\' ? 1 : 0;
    }
    return IsKnownConnection(lpszPrinterName) ? 1 : 0;
}

using ConnectionTest = DWORD (*)(LPCSTR, DWORD);

constexpr OsRouteTable<ConnectionTest> kConnectionTests = {
    NoWork<LPCSTR, DWORD>,  // Windows 95
    NoWork<LPCSTR, DWORD>,  // Windows 98
    NoWork<LPCSTR, DWORD>,  // Windows Me
    IsPrinterConnectionNT,  // NT 4
    IsPrinterConnectionNT,  // Windows 2000
    IsPrinterConnectionNT,  // XP generation, x86
    IsPrinterConnectionNT,  // XP generation, IA64
    IsPrinterConnectionNT,  // XP generation, x64
    IsPrinterConnectionNT,  // Vista generation, x86
    IsPrinterConnectionNT,  // Vista generation, IA64
    IsPrinterConnectionNT,  // Vista generation, x64
    IsPrinterConnectionNT,  // anything else
};
static_assert(IsComplete(kConnectionTests));

}  // namespace

DWORD IsPrinterConnection(LPCSTR lpszPrinterName, DWORD dwSyntaxOnly) {
    // The answer is a yes or no: the code for a system without a row would read as a yes.
    return GetOsRoute().HasRoute() ? CallRoute(kConnectionTests, lpszPrinterName, dwSyntaxOnly) : 0;
}

}  // namespace pikel
