// Deletes a printer, or the connection to a shared one.
#include "printer/delete_printer.h"

#include "colour/color_profile_removal.h"
#include "frame/log.h"
#include "frame/os_route.h"
#include "spooler/printer_connection.h"
#include "printer/share_registry.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

// ---- routes -----------------------------------------------------------------------------------------------------

DWORD DeleteByHandle(HANDLE hPrinter) {
    return Platform().DeletePrinter(hPrinter) ? ERROR_SUCCESS : Platform().GetLastError();
}

void DeleteShareOf(const PRINTER_INFO_2A& info) {
    if (info.pShareName == nullptr || (info.Attributes & PRINTER_ATTRIBUTE_SHARED) == 0) {
        return;
    }
    const DWORD dwCode = DeleteSharePrinter9x(info.pShareName, info.pPrinterName);
    if (dwCode != ERROR_SUCCESS) {
        WriteLog("DeletePrinter9x() - DeleteSharePrinter9x():%d", dwCode);
    }
}

DWORD DeleteWithShare(HANDLE hPrinter, DWORD dwDeleteShare) {
    HeapBlock block;
    DWORD dwCode = GetPrinterInfo(hPrinter, 2, block);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    if (dwDeleteShare != 0 && block) {
        DeleteShareOf(*static_cast<const PRINTER_INFO_2A*>(block.Get()));
    }
    dwCode = DeleteByHandle(hPrinter);
    if (dwCode == ERROR_SUCCESS) {
        PumpMessages();
    }
    return dwCode;
}

using DeletePrinterRoutine = DWORD (*)(HANDLE, DWORD);

constexpr OsRouteTable<DeletePrinterRoutine> kDeletePrinterRoutes = {
    DeletePrinter9x,  // Windows 95
    DeletePrinter9x,  // Windows 98
    DeletePrinter9x,  // Windows Me
    DeletePrinterNT,  // NT 4
    DeletePrinterNT,  // Windows 2000
    DeletePrinterNT,  // XP generation, x86
    DeletePrinterNT,  // XP generation, IA64
    DeletePrinterNT,  // XP generation, x64
    DeletePrinterNT,  // Vista generation, x86
    DeletePrinterNT,  // Vista generation, IA64
    DeletePrinterNT,  // Vista generation, x64
    DeletePrinterNT,  // anything else
};
static_assert(IsComplete(kDeletePrinterRoutes));

// ---- deleting ---------------------------------------------------------------------------------------------------

DWORD DeleteConnection(LPCSTR lpszPrinterName) {
    if (Platform().DeletePrinterConnectionA(const_cast<LPSTR>(lpszPrinterName))) {
        return ERROR_SUCCESS;
    }
    const DWORD dwCode = Platform().GetLastError();
    WriteLog("PI_DeletePrinter() - DeletePrinterConnection Error(%d)", dwCode);
    return dwCode;
}

DWORD DeleteLocalPrinter(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles, DWORD dwDeleteShare) {
    PrinterHandle hPrinter;
    DWORD dwCode = OpenPrinterWithAccess(lpszPrinterName, hPrinter);
    if (dwCode == ERROR_SUCCESS && dwProfileCount != 0 && ppszProfiles != nullptr) {
        dwCode = DeleteColorProfile(lpszPrinterName, dwProfileCount, ppszProfiles);
    }
    return dwCode != ERROR_SUCCESS ? dwCode : CallRoute(kDeletePrinterRoutes, hPrinter.Get(), dwDeleteShare);
}

DWORD DeleteAnyPrinter(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles, DWORD dwDeleteShare) {
    return IsPrinterConnection(lpszPrinterName, 0) != 0
               ? DeleteConnection(lpszPrinterName)
               : DeleteLocalPrinter(lpszPrinterName, dwProfileCount, ppszProfiles, dwDeleteShare);
}

}  // namespace

DWORD DeletePrinter9x(HANDLE hPrinter, DWORD dwDeleteShare) {
    WriteLog("DeletePrinter9x() - Start");
    const DWORD dwCode = DeleteWithShare(hPrinter, dwDeleteShare);
    WriteLog("DeletePrinter9x() - End(%d)", dwCode);
    return dwCode;
}

DWORD DeletePrinterNT(HANDLE hPrinter, DWORD /*dwDeleteShare*/) {
    WriteLog("DeletePrinterNT() - Start");
    const DWORD dwCode = DeleteByHandle(hPrinter);
    WriteLog("DeletePrinterNT() - End(%d)", dwCode);
    return dwCode;
}

DWORD DoDeletePrinter(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoDeletePrinter(%s) Start", lpszPrinterName);
    const DWORD dwCode = DeleteAnyPrinter(lpszPrinterName, dwProfileCount, ppszProfiles, 1);
    WriteLog("DoDeletePrinter End(%d)", dwCode);
    return dwCode;
}

DWORD DoDeletePrinterWithoutShareReg(LPCSTR lpszPrinterName) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoDeletePrinterWithoutShareReg(%s) Start", lpszPrinterName);
    const DWORD dwCode = DeleteAnyPrinter(lpszPrinterName, 0, nullptr, 0);
    WriteLog("DoDeletePrinterWithoutShareReg End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
