// Reads all that is known of a printer into one record.
#include "printer/get_printer.h"

#include "colour/printer_profiles.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "printer/default_printer.h"
#include "spooler/printer_connection.h"
#include "spooler/printer_record.h"
#include "printer/share_registry.h"
#include "spooler/spooler_read.h"
#include "system/security.h"

namespace pikel {
namespace {

/// What belongs to a printer beside its level 2 data and its values; alive for one call.
struct PrinterExtraInfo {
    bool Is9x = false;
    PrinterShareRecord Share{};  ///< the first seven fields
    HeapBlock Level5;
    StringSD Descriptor;
    DWORD PublishAction = 0;
    HeapBlock Level8;
};

DWORD CollectShareAndTimeouts(PrinterExtraInfo& extra, LPCSTR lpszPrinterName, LPCSTR lpszShareName) {
    const DWORD dwCode = ReadPrinterLevel(lpszPrinterName, 5, extra.Level5);
    if (dwCode == ERROR_SUCCESS && lpszShareName != nullptr) {
        // A printer that isn't shared has no share to be read.
        GetSharePrinter9x(lpszShareName, &extra.Share);
    }
    return dwCode;
}

/// Reads how a printer is published in the directory. A failure is none: the state stays 0.
void ReadPublishAction(LPCSTR lpszPrinterName, DWORD& dwAction) {
    PrinterHandle hPrinter;
    HeapBlock block;
    if (OpenPrinterWithAccess(lpszPrinterName, hPrinter) != ERROR_SUCCESS ||
        GetPrinterInfo(hPrinter.Get(), 7, block) != ERROR_SUCCESS || !block) {
        return;
    }
    const auto& info = *static_cast<const PRINTER_INFO_7A*>(block.Get());
    if (info.pszObjectGUID != nullptr) {
        dwAction = info.dwAction;
    }
}

DWORD CollectSecurity(PrinterExtraInfo& extra, LPCSTR lpszPrinterName) {
    const DWORD dwCode = GetStringSD(lpszPrinterName, extra.Descriptor);
    if (dwCode == ERROR_SUCCESS && !HasOsClass(OsClassNt4)) {
        ReadPublishAction(lpszPrinterName, extra.PublishAction);
    }
    if (HasOsClass(OsClassWindows2000 | OsClassXp | OsClassVista)) {
        ReadPrinterLevel(lpszPrinterName, 8, extra.Level8);
    }
    return dwCode;
}

DWORD CollectPrinterExtras(PrinterExtraInfo& extra, LPCSTR lpszPrinterName, LPCSTR lpszShareName) {
    extra.Is9x = HasOsClass(OsClass9xFamily);
    return extra.Is9x ? CollectShareAndTimeouts(extra, lpszPrinterName, lpszShareName)
                      : CollectSecurity(extra, lpszPrinterName);
}

PrinterSecurityRecord SecurityOf(const PrinterExtraInfo& extra) {
    PrinterSecurityRecord security{};
    security.SecurityDescriptor = extra.Descriptor.Text();
    security.SecurityDescriptorLength = extra.Descriptor.Text() != nullptr ? extra.Descriptor.Length() : 0;
    security.PublishAction = extra.PublishAction;
    if (extra.Level8) {
        security.DevMode = static_cast<const PRINTER_INFO_8A*>(extra.Level8.Get())->pDevMode;
    }
    return security;
}

/// A printer of the machine, with all that belongs to it.
DWORD ReadWhole(LPCSTR lpszPrinterName, const PRINTER_INFO_2A& info, PrinterRecord** ppRecord) {
    RegistryDataBlock values;
    DWORD dwCode = ReadPrinterValues(values, lpszPrinterName);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    PrinterExtraInfo extra;
    dwCode = CollectPrinterExtras(extra, lpszPrinterName, info.pShareName);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    StringList profiles;
    CollectPrinterProfiles(lpszPrinterName, profiles);

    PrinterRecordSource source;
    source.pLevel2 = &info;
    source.pValues = &values;
    source.pProfiles = &profiles;
    const PrinterSecurityRecord security = SecurityOf(extra);
    if (extra.Is9x) {
        source.pShare = &extra.Share;
        source.pLevel5 = static_cast<const PRINTER_INFO_5A*>(extra.Level5.Get());
    } else {
        source.pSecurity = &security;
    }
    return PackPrinterRecord(ppRecord, source);
}

DWORD ReadRecord(LPCSTR lpszPrinterName, PrinterRecord** ppRecord) {
    HeapBlock level2;
    const DWORD dwCode = ReadPrinterLevel(lpszPrinterName, 2, level2);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    auto* pInfo = static_cast<PRINTER_INFO_2A*>(level2.Get());
    if (pInfo == nullptr) {
        return PackPrinterRecord(ppRecord, {});
    }
    if (IsDefaultPrinter(lpszPrinterName) == 1) {
        pInfo->Attributes |= PRINTER_ATTRIBUTE_DEFAULT;
        WriteLog("PI_GetPrinter() %s is default printer", lpszPrinterName);
    }
    if (IsConnectionRecord(*pInfo)) {
        PrinterRecordSource source;
        source.pLevel2 = pInfo;
        return PackPrinterRecord(ppRecord, source);
    }
    return ReadWhole(lpszPrinterName, *pInfo, ppRecord);
}

}  // namespace

DWORD DoGetPrinter(LPCSTR lpszPrinterName, PrinterRecord** ppRecord) {
    if (lpszPrinterName == nullptr || ppRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *ppRecord = nullptr;
    WriteLog("DoGetPrinter(%s) Start", lpszPrinterName);
    const DWORD dwCode = ReadRecord(lpszPrinterName, ppRecord);
    WriteLog("DoGetPrinter End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
