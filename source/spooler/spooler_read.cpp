// What all printer operations share: reading from the spooler, opening a printer, and draining the message queue.
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

DWORD Open(LPCSTR lpszPrinterName, LPPRINTER_DEFAULTSA pDefaults, PrinterHandle& hPrinter) {
    hPrinter.Reset();
    // A failed open may leave anything in its out handle, so that the guard gets it only after a success.
    HANDLE hOpened = nullptr;
    if (!Platform().OpenPrinterA(const_cast<LPSTR>(lpszPrinterName), &hOpened, pDefaults)) {
        return Platform().GetLastError();
    }
    hPrinter.Reset(hOpened);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD GetPrinterInfo(HANDLE hPrinter, DWORD dwLevel, HeapBlock& block) {
    return ReadSpoolerBlock(block, [&](LPBYTE pBuffer, DWORD cbBuffer, LPDWORD pcbNeeded) {
        return Platform().GetPrinterA(hPrinter, dwLevel, pBuffer, cbBuffer, pcbNeeded);
    });
}

DWORD EnumPrinterInfo(DWORD dwFlags, LPCSTR lpszName, DWORD dwLevel, HeapBlock& block, DWORD* pdwCount) {
    DWORD dwReturned = 0;
    const DWORD dwCode = ReadSpoolerBlock(block, [&](LPBYTE pBuffer, DWORD cbBuffer, LPDWORD pcbNeeded) {
        return Platform().EnumPrintersA(dwFlags, const_cast<LPSTR>(lpszName), dwLevel, pBuffer, cbBuffer, pcbNeeded,
                                        &dwReturned);
    });
    *pdwCount = block ? dwReturned : 0;
    return dwCode;
}

void PumpMessages() {
    MSG msg{};
    while (Platform().PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        Platform().TranslateMessage(&msg);
        Platform().DispatchMessageA(&msg);
    }
}

DWORD OpenPrinterPlainly(LPCSTR lpszPrinterName, PrinterHandle& hPrinter) {
    return Open(lpszPrinterName, nullptr, hPrinter);
}

DWORD ReadPrinterLevel(LPCSTR lpszPrinterName, DWORD dwLevel, HeapBlock& block) {
    PrinterHandle hPrinter;
    const DWORD dwCode = OpenPrinterPlainly(lpszPrinterName, hPrinter);
    return dwCode != ERROR_SUCCESS ? dwCode : GetPrinterInfo(hPrinter.Get(), dwLevel, block);
}

DWORD SetPrinterTimeouts(HANDLE hPrinter, LPSTR lpszPrinterName, LPSTR lpszPortName, DWORD dwAttributes,
                         DWORD dwNotSelected, DWORD dwRetry) {
    PRINTER_INFO_5A info{};
    info.pPrinterName = lpszPrinterName;
    info.pPortName = lpszPortName;
    info.Attributes = dwAttributes;
    info.DeviceNotSelectedTimeout = dwNotSelected;
    info.TransmissionRetryTimeout = dwRetry;
    return Platform().SetPrinterA(hPrinter, 5, reinterpret_cast<LPBYTE>(&info), 0) ? DWORD{ERROR_SUCCESS}
                                                                                   : Platform().GetLastError();
}

DWORD OpenPrinterWithAccess(LPCSTR lpszPrinterName, PrinterHandle& hPrinter) {
    PRINTER_DEFAULTSA defaults{};
    defaults.DesiredAccess = PRINTER_ALL_ACCESS;
    return Open(lpszPrinterName, &defaults, hPrinter);
}

}  // namespace pikel
