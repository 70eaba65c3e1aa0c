// The operations that run directly or through the system's Print UI, as the caller asks.
#include "table/print_ui_choice.h"

#include "driver/add_printer_driver.h"
#include "driver/delete_printer_driver.h"
#include "frame/os_identity.h"
#include "frame/text.h"
#include "printer/delete_printer.h"
#include "printui/print_ui_commands.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

/// Restart flags of a driver's deletion. An uninstall has the spooler let go of the files that its printer kept in use.
constexpr DWORD kLeaveSpooler = 0;
constexpr DWORD kRestartSpooler = 1;

/// Does the work in one of the two ways.
template <class Direct, class PrintUI>
DWORD Choose(bool bPrintUI, Direct direct, PrintUI printUI) {
    if (!bPrintUI) {
        return direct();
    }
    return IsPrintUIUsable() ? printUI() : DWORD{ERROR_INVALID_PARAMETER};
}

/// For the operations that take a printer away: the Vista generation goes directly whatever the caller asks for.
bool TakesPrintUIForPrinter(DWORD dwUsePrintUI) {
    return dwUsePrintUI != 0 && !HasOsClass(OsClassVista);
}

DWORD DeleteDriver(DWORD dwVersion, LPCSTR lpszName, DWORD dwProcessor, DWORD dwProfileCount, const LPSTR* ppszProfiles,
                   DWORD dwFileRemovalFlag, DWORD dwRestartFlag, bool bPrintUI) {
    return Choose(
        bPrintUI,
        [&] {
            return DoDeletePrinterDriver(dwVersion, lpszName, dwProcessor, dwProfileCount, ppszProfiles,
                                         dwFileRemovalFlag, dwRestartFlag);
        },
        [&] {
            return DoDeletePrinterDriverToPrintUI(dwVersion, lpszName, dwProcessor, dwProfileCount, ppszProfiles,
                                                  dwFileRemovalFlag, dwRestartFlag);
        });
}

}  // namespace

DWORD AddPrinterDriverAsAsked(LPCSTR infPath, LPCSTR modelName, DWORD driverVersion, DWORD processor,
                              const DriverAddRecord* record, INT usePrintUI) {
    return Choose(
        usePrintUI != 0, [&] { return DoAddPrinterDriver(nullptr, record); },
        [&] { return DoAddDriverToPrintUI(infPath, modelName, driverVersion, processor); });
}

DWORD DeletePrinterDriverAsAsked(DWORD driverVersion, LPCSTR driverName, DWORD processor, DWORD profileCount,
                                 const LPSTR* profileList, DWORD fileRemovalFlag, DWORD usePrintUI) {
    return DeleteDriver(driverVersion, driverName, processor, profileCount, profileList, fileRemovalFlag, kLeaveSpooler,
                        usePrintUI != 0);
}

DWORD DeletePrinterAsAsked(LPCSTR printerName, DWORD profileCount, const LPSTR* profileList, DWORD usePrintUI) {
    return Choose(
        TakesPrintUIForPrinter(usePrintUI), [&] { return DoDeletePrinter(printerName, profileCount, profileList); },
        [&] { return DoDeletePrinterToPrintUI(printerName, profileCount, profileList); });
}

DWORD InstallPrinterByPrintUI(LPCSTR infPath, LPCSTR printerName, LPCSTR modelName, LPCSTR portName, LPCSTR shareName,
                              LPCSTR spare, DWORD shareFlag) {
    return Choose(
        true, [] { return DWORD{ERROR_INVALID_PARAMETER}; },
        [&] {
            return DoInstallPrinterToPrintUI(infPath, printerName, modelName, portName, shareName, spare, shareFlag);
        });
}

DWORD UninstallPrinterAsAsked(LPCSTR printerName, LPCSTR driverName, DWORD driverVersion, DWORD processor,
                              DWORD profileCount, const LPSTR* profileList, DWORD fileRemovalFlag, INT usePrintUI) {
    const DWORD dwUsePrintUI = static_cast<DWORD>(usePrintUI);
    const DWORD dwCode = DeletePrinterAsAsked(printerName, profileCount, profileList, dwUsePrintUI);
    if (dwCode != ERROR_SUCCESS || IsDriverUsedByPrinter(driverName) != 0) {
        return dwCode;
    }
    return DeleteDriver(driverVersion, driverName, processor, profileCount, profileList, fileRemovalFlag,
                        kRestartSpooler, TakesPrintUIForPrinter(dwUsePrintUI));
}

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

}  // namespace pikel
