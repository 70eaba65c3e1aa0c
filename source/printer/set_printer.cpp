// Writes a printer's record back.
#include "printer/set_printer.h"

#include "frame/log.h"
#include "frame/os_identity.h"
#include "printer/effective_dev_mode.h"
#include "spooler/printer_connection.h"
#include "spooler/printer_values.h"
#include "printer/share_registry.h"
#include "spooler/spooler_read.h"
#include "system/security.h"

namespace pikel {
namespace {

/// Hands a structure to the spooler.
/// @return 0 or the last error
template <class Info>
DWORD SetPrinterInfo(HANDLE hPrinter, DWORD dwLevel, Info& info) {
    return Platform().SetPrinterA(hPrinter, dwLevel, reinterpret_cast<LPBYTE>(&info), 0) ? ERROR_SUCCESS
                                                                                         : Platform().GetLastError();
}

/// The record's DEVMODE, or null while the switch isn't 1. Adding a printer tests the same switch against 0, so that
/// at other values an added printer gets its DEVMODE and a changed one doesn't.
LPDEVMODEA EffectiveDevMode(LPDEVMODEA pDevMode, LPCSTR lpszStructure) {
    if (EffectiveDevModeSwitch() == 1) {
        WriteLog("Set Parameter DevMode(%s)!!!", lpszStructure);
        return pDevMode;
    }
    WriteLog("Set Parameter Default DevMode(%s)!!!", lpszStructure);
    return nullptr;
}

// ---- level 2 and the queue ------------------------------------------------------------------------------------------

DWORD WriteLevel2(HANDLE hPrinter, const PrinterRecord& record) {
    PRINTER_INFO_2A info{};
    info.pPrinterName = record.pPrinterName;
    info.pShareName = record.pShareName;
    info.pPortName = record.pPortName;
    info.pDriverName = record.pDriverName;
    info.pComment = record.pComment;
    info.pLocation = record.pLocation;
    info.pDevMode = EffectiveDevMode(record.pDevMode, "PRINTER_INFO_2");
    info.pSepFile = record.pSepFile;
    info.pPrintProcessor = record.pPrintProcessor;
    info.pDatatype = record.pDatatype;
    info.Attributes = record.Attributes & ~static_cast<DWORD>(PRINTER_ATTRIBUTE_LOCAL);
    info.Priority = record.Priority;
    info.StartTime = record.StartTime;
    info.UntilTime = record.UntilTime;
    info.Status = record.Status;
    const DWORD dwCode = SetPrinterInfo(hPrinter, 2, info);
    if (dwCode != ERROR_SUCCESS) {
        WriteLog("SetPrinter Error:%d", dwCode);
    }
    return dwCode;
}

DWORD PauseAgain(HANDLE hPrinter) {
    if (Platform().SetPrinterA(hPrinter, 0, nullptr, PRINTER_CONTROL_PAUSE)) {
        return ERROR_SUCCESS;
    }
    const DWORD dwCode = Platform().GetLastError();
    WriteLog("ControlPrinter Error:%d", dwCode);
    return dwCode;
}

DWORD WriteQueue(HANDLE hPrinter, const PrinterRecord& record) {
    const DWORD dwCode = WriteLevel2(hPrinter, record);
    const bool bPaused = (record.Status & PRINTER_STATUS_PAUSED) != 0;
    return dwCode == ERROR_SUCCESS && bPaused ? PauseAgain(hPrinter) : dwCode;
}

// ---- 9x family: share and timeouts ----------------------------------------------------------------------------------

DWORD ApplyShare(LPCSTR lpszShareName, const PrinterShareRecord& share) {
    DWORD dwCode = AddSharePrinter9x(&share);
    if (dwCode != ERROR_SUCCESS) {
        WriteLog("AddSharePrinter9x Error:%d", dwCode);
        return dwCode;
    }
    dwCode = SetSharePrinter9x(lpszShareName, &share);
    if (dwCode != ERROR_SUCCESS) {
        WriteLog("SetSharePrinter9x Error:%d", dwCode);
    }
    return dwCode;
}

DWORD ApplyShareAndTimeouts(LPCSTR lpszPrinterName, const PrinterRecord& record) {
    const PrinterShareRecord& share = *record.ShareRecord;
    if (record.pShareName != nullptr) {
        const DWORD dwCode = ApplyShare(record.pShareName, share);
        if (dwCode != ERROR_SUCCESS) {
            return dwCode;
        }
    }
    PrinterHandle hPrinter;
    const DWORD dwCode = OpenPrinterWithAccess(lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    return SetPrinterTimeouts(hPrinter.Get(), record.pPrinterName, record.pPortName, record.Attributes,
                              share.DeviceNotSelectedTimeout, share.TransmissionRetryTimeout);
}

// ---- NT family: descriptor, publishing, DEVMODE ---------------------------------------------------------------------

/// Publishes as the record says, when the printer isn't published so. A pending state is never written back.
DWORD ApplyPublishAction(LPCSTR lpszPrinterName, DWORD dwAction) {
    PrinterHandle hPrinter;
    DWORD dwCode = OpenPrinterWithAccess(lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    HeapBlock block;
    dwCode = GetPrinterInfo(hPrinter.Get(), 7, block);
    if (dwCode != ERROR_SUCCESS || !block || static_cast<const PRINTER_INFO_7A*>(block.Get())->dwAction == dwAction) {
        return dwCode;
    }
    PRINTER_INFO_7A info{};
    info.dwAction = dwAction;
    return SetPrinterInfo(hPrinter.Get(), 7, info);
}

DWORD ApplyPrinterDevMode(LPCSTR lpszPrinterName, LPDEVMODEA pDevMode) {
    PrinterHandle hPrinter;
    const DWORD dwCode = OpenPrinterWithAccess(lpszPrinterName, hPrinter);
    PRINTER_INFO_8A info{};
    info.pDevMode = EffectiveDevMode(pDevMode, "PRINTER_INFO_8");  // logged whether the open worked or not
    return dwCode != ERROR_SUCCESS ? dwCode : SetPrinterInfo(hPrinter.Get(), 8, info);
}

DWORD ApplySecurity(LPCSTR lpszPrinterName, const PrinterSecurityRecord& security) {
    DWORD dwResult = ERROR_SUCCESS;
    auto note = [&](DWORD dwCode) { dwResult = dwCode != ERROR_SUCCESS ? dwCode : dwResult; };
    if (security.SecurityDescriptor != nullptr) {
        const DWORD dwCode =
            SetStringSD(lpszPrinterName, security.SecurityDescriptor, security.SecurityDescriptorLength);
        if (dwCode != ERROR_SUCCESS) {
            WriteLog("SetStringSD Error:%d", dwCode);
        }
        note(dwCode);
    }
    if (!HasOsClass(OsClassNt4) && security.PublishAction != 0 && security.PublishAction != DSPRINT_PENDING) {
        note(ApplyPublishAction(lpszPrinterName, security.PublishAction));
    }
    if (HasOsClass(OsClassWindows2000 | OsClassXp | OsClassVista) && security.DevMode != nullptr) {
        note(ApplyPrinterDevMode(lpszPrinterName, security.DevMode));
    }
    return dwResult;
}

// ---- the steps behind the open --------------------------------------------------------------------------------------

/// What is done with the open printer and after it. All of it reports to the log alone.
void WriteRecord(LPCSTR lpszPrinterName, PrinterHandle& hPrinter, const PrinterRecord& record) {
    DWORD dwCode = WriteQueue(hPrinter.Get(), record);
    hPrinter.Reset();
    if (dwCode == ERROR_SUCCESS) {
        dwCode = SetRegistryData(lpszPrinterName, record.RegistryEntries, record.RegistryEntryCount);
        if (dwCode != ERROR_SUCCESS) {
            WriteLog("SetRegistryData Error:%d", dwCode);
            return;  // other than a queue that couldn't be written, this ends it
        }
    }
    ApplyPrinterExtras(lpszPrinterName, &record);
}

}  // namespace

DWORD ApplyPrinterExtras(LPCSTR lpszPrinterName, const PrinterRecord* pRecord) {
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (HasOsClass(OsClass9xFamily) && pRecord->ShareRecord != nullptr) {
        return ApplyShareAndTimeouts(lpszPrinterName, *pRecord);
    }
    return pRecord->SecurityRecord == nullptr ? DWORD{ERROR_SUCCESS}
                                              : ApplySecurity(lpszPrinterName, *pRecord->SecurityRecord);
}

DWORD DoSetPrinter(LPCSTR lpszPrinterName, const PrinterRecord* pRecord) {
    if (lpszPrinterName == nullptr || pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoSetPrinter(%s) Start", lpszPrinterName);
    DWORD dwCode = ERROR_SUCCESS;
    if (!IsConnectionRecord(*pRecord)) {
        PrinterHandle hPrinter;
        dwCode = OpenPrinterWithAccess(lpszPrinterName, hPrinter);
        if (dwCode == ERROR_SUCCESS) {
            WriteRecord(lpszPrinterName, hPrinter, *pRecord);
        }
    }
    WriteLog("DoSetPrinter End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
