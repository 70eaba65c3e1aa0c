// What all printer operations share: reading from the spooler, opening a printer, and draining the message queue.
#pragma once

#include <utility>

#include "platform/owned.h"

namespace pikel {

/// Flags with which printers are enumerated here: those of the machine and the connections of the user.
inline constexpr DWORD kLocalAndConnected = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;

/// Reads a spooler block of a size that isn't known. The first call goes without a buffer; only the answer 122 leads to
/// a second one, with a block of the size told. Nothing is tried a third time.
/// @param block [out]  null on any failure, and also when the first call unexpectedly succeeds
/// @param ask          BOOL(LPBYTE pBuffer, DWORD cbBuffer, LPDWORD pcbNeeded), fails with a last error
/// @return 0; 8 without memory; else the last error of the call that failed, as it stands. 0 alone says nothing about
///         the block: callers test it before they look inside.
template <class Ask>
DWORD ReadSpoolerBlock(HeapBlock& block, Ask ask) {
    block.Reset();
    DWORD cbNeeded = 0;
    if (ask(nullptr, 0, &cbNeeded)) {
        return ERROR_SUCCESS;
    }
    const DWORD dwCode = Platform().GetLastError();
    if (dwCode != ERROR_INSUFFICIENT_BUFFER) {
        return dwCode;
    }
    HeapBlock read = AllocateHeap(cbNeeded);
    if (!read) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    if (!ask(static_cast<LPBYTE>(read.Get()), cbNeeded, &cbNeeded)) {
        return Platform().GetLastError();
    }
    block = std::move(read);
    return ERROR_SUCCESS;
}

/// Reads what the spooler knows of an open printer.
/// @param dwLevel      2, 3, 5, 7 or 8
/// @param block [out]  a PRINTER_INFO of that level with its texts, or null; see ReadSpoolerBlock
/// @return see ReadSpoolerBlock
DWORD GetPrinterInfo(HANDLE hPrinter, DWORD dwLevel, HeapBlock& block);

/// Reads a list of printers.
/// @param dwFlags         PRINTER_ENUM flags; kLocalAndConnected as a rule
/// @param lpszName        null as a rule
/// @param block [out]     an array of PRINTER_INFO of that level, or null; see ReadSpoolerBlock
/// @param pdwCount [out]  entries at block, 0 when it is null. Required.
/// @return see ReadSpoolerBlock. A machine without printers gives 0 and no block.
DWORD EnumPrinterInfo(DWORD dwFlags, LPCSTR lpszName, DWORD dwLevel, HeapBlock& block, DWORD* pdwCount);

/// Takes and dispatches messages until the calling thread's queue is empty.
void PumpMessages();

/// Opens a printer with the rights that the spooler gives by default.
/// @param hPrinter [out]  emptied first; stays empty on failure
/// @return 0 or the last error
DWORD OpenPrinterPlainly(LPCSTR lpszPrinterName, PrinterHandle& hPrinter);

/// The same with PRINTER_ALL_ACCESS (0xF000C), which writing needs.
DWORD OpenPrinterWithAccess(LPCSTR lpszPrinterName, PrinterHandle& hPrinter);

/// Opens a printer with the default rights, reads one level and closes it.
/// @param block [out]  as for GetPrinterInfo; untouched when the printer can't be opened
/// @return the last error of the open, or see ReadSpoolerBlock
DWORD ReadPrinterLevel(LPCSTR lpszPrinterName, DWORD dwLevel, HeapBlock& block);

/// Sets the two timeouts of a printer, which the 9x family has at level 5 alone.
/// @param lpszPrinterName, lpszPortName, dwAttributes  the printer's own, which level 5 writes as well
/// @param dwNotSelected, dwRetry                       milliseconds
/// @return 0 or the last error
DWORD SetPrinterTimeouts(HANDLE hPrinter, LPSTR lpszPrinterName, LPSTR lpszPortName, DWORD dwAttributes,
                         DWORD dwNotSelected, DWORD dwRetry);

}  // namespace pikel
