// Records the PnP identity of a printer's driver under the printer.
#include "printer/printer_pnp_data.h"

#include "frame/log.h"
#include "frame/os_route.h"
#include "frame/text.h"
#include "spooler/printer_data.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

DWORD ReadDriverInfo6(LPCSTR lpszPrinterName, HeapBlock& block) {
    PrinterHandle hPrinter;
    const DWORD dwCode = OpenPrinterPlainly(lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    return ReadSpoolerBlock(block, [&](LPBYTE pBuffer, DWORD cbBuffer, LPDWORD pcbNeeded) {
        return Platform().GetPrinterDriverA(hPrinter.Get(), nullptr, 6, pBuffer, cbBuffer, pcbNeeded);
    });
}

void RecordText(LPCSTR lpszPrinterName, LPCSTR lpszValueName, LPSTR lpszText, LPCSTR lpszLoggedName) {
    if (IsEmpty(lpszText)) {
        return;
    }
    const auto cbText = static_cast<DWORD>(std::string_view(lpszText).size() + 1);
    const DWORD dwCode = SetPrinterData(lpszPrinterName, "PnPData", lpszValueName, REG_SZ,
                                        reinterpret_cast<LPBYTE>(lpszText), cbText, ValueKindEvery);
    if (dwCode != ERROR_SUCCESS) {
        WriteLog("AddRegistryData-SetPrinterData(%s) Error:%d", lpszLoggedName, dwCode);
    }
}

using PnpDataRoutine = DWORD (*)(LPCSTR);

constexpr OsRouteTable<PnpDataRoutine> kHardwareIdRegistryDataRoutes = {
    NoWork<LPCSTR>,   // Windows 95
    NoWork<LPCSTR>,   // Windows 98
    NoWork<LPCSTR>,   // Windows Me
    NoWork<LPCSTR>,   // NT 4
    AddRegistryData,  // Windows 2000
    AddRegistryData,  // XP generation, x86
    AddRegistryData,  // XP generation, IA64
    AddRegistryData,  // XP generation, x64
    AddRegistryData,  // Vista generation, x86
    AddRegistryData,  // Vista generation, IA64
    AddRegistryData,  // Vista generation, x64
    AddRegistryData,  // anything else
};
static_assert(IsComplete(kHardwareIdRegistryDataRoutes));

}  // namespace

DWORD AddRegistryData(LPCSTR lpszPrinterName) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    HeapBlock block;
    const DWORD dwCode = ReadDriverInfo6(lpszPrinterName, block);
    if (dwCode != ERROR_SUCCESS || !block) {
        return dwCode;
    }
    const auto& info = *static_cast<const DRIVER_INFO_6A*>(block.Get());
    RecordText(lpszPrinterName, "HardwareID", info.pszHardwareID, "HardwareID");
    RecordText(lpszPrinterName, "Manufacturer", info.pszMfgName, "Manufacturer");
    // A failure of the URL is logged under the maker's name: the log then has that name twice, and no "OEM URL".
    RecordText(lpszPrinterName, "OEM URL", info.pszOEMUrl, "Manufacturer");
    return ERROR_SUCCESS;
}

DWORD AddHardwareIdRegistryData(LPCSTR lpszPrinterName) {
    return CallRoute(kHardwareIdRegistryDataRoutes, lpszPrinterName);
}

}  // namespace pikel
