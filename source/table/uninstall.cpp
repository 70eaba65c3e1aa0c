// Deletes a printer, and a printer with its driver, by the direct route or through the system's Print UI.
#include "table/uninstall.h"

#include "driver/delete_printer_driver.h"
#include "frame/os_identity.h"
#include "frame/text.h"
#include "printer/delete_printer.h"
#include "spooler/spooler_read.h"
#include "printui/print_ui_commands.h"

namespace pikel {
namespace {

/// The spooler restart of an uninstall: it has the spooler let go of the driver's files.
constexpr DWORD kRestartSpooler = 1;

/// The Vista generation takes the direct route whatever the caller asks for.
bool TakesPrintUI(INT nUsePrintUI) {
    return nUsePrintUI != 0 && !HasOsClass(OsClassVista);
}

}  // namespace

DWORD IsDriverUsedByPrinter(LPCSTR lpszDriverName) {
    if (lpszDriverName == nullptr) {
        return 0;
    }
    HeapBlock block;
    DWORD dwCount = 0;
    EnumPrinterInfo(kLocalAndConnected, nullptr, 2, block, &dwCount);
    const auto* pInfos = static_cast<const PRINTER_INFO_2A*>(block.Get());
    for (DWORD dwIndex = 0; dwIndex < dwCount; ++dwIndex) {
        const LPCSTR lpszUsed = pInfos[dwIndex].pDriverName;
        if (lpszUsed != nullptr && EqualNoCase(lpszUsed, lpszDriverName)) {
            return 1;
        }
    }
    return 0;
}

DWORD DeletePrinterByRoute(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles, INT nUsePrintUI) {
    if (!TakesPrintUI(nUsePrintUI)) {
        return DoDeletePrinter(lpszPrinterName, dwProfileCount, ppszProfiles);
    }
    return IsPrintUIUsable() ? DoDeletePrinterToPrintUI(lpszPrinterName, dwProfileCount, ppszProfiles)
                             : DWORD{ERROR_INVALID_PARAMETER};
}

DWORD UninstallPrinterByRoute(LPCSTR lpszPrinterName, LPCSTR lpszDriverName, DWORD dwVersion, DWORD dwProcessor,
                              DWORD dwProfileCount, const LPSTR* ppszProfiles, DWORD dwFileRemovalFlag,
                              INT nUsePrintUI) {
    const DWORD dwCode = DeletePrinterByRoute(lpszPrinterName, dwProfileCount, ppszProfiles, nUsePrintUI);
    if (dwCode != ERROR_SUCCESS || IsDriverUsedByPrinter(lpszDriverName) != 0) {
        return dwCode;
    }
    return TakesPrintUI(nUsePrintUI)
               ? DoDeletePrinterDriverToPrintUI(dwVersion, lpszDriverName, dwProcessor, dwProfileCount, ppszProfiles,
                                                dwFileRemovalFlag, kRestartSpooler)
               : DoDeletePrinterDriver(dwVersion, lpszDriverName, dwProcessor, dwProfileCount, ppszProfiles,
                                       dwFileRemovalFlag, kRestartSpooler);
}

}  // namespace pikel
