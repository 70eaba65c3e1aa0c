// Adds a printer to the local spooler, or a connection to a shared one.
#include "printer/add_printer.h"

#include <cstddef>

#include "colour/color_profile_install.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/os_route.h"
#include "printer/effective_dev_mode.h"
#include "spooler/printer_connection.h"
#include "printer/printer_pnp_data.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

// The record itself is given to the spooler at level 2.
static_assert(offsetof(PrinterRecord, pServerName) == offsetof(PRINTER_INFO_2A, pServerName));
static_assert(offsetof(PrinterRecord, pSecurityDescriptor) == offsetof(PRINTER_INFO_2A, pSecurityDescriptor));
static_assert(offsetof(PrinterRecord, AveragePPM) == offsetof(PRINTER_INFO_2A, AveragePPM));

bool HasName(const PrinterRecord* pRecord) {
    return pRecord != nullptr && pRecord->pPrinterName != nullptr;
}

DWORD AddAtLevel2(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter) {
    hPrinter.Reset(Platform().AddPrinterA(lpszServer, 2, reinterpret_cast<LPBYTE>(pRecord)));
    return hPrinter ? ERROR_SUCCESS : Platform().GetLastError();
}

// ---- routes -----------------------------------------------------------------------------------------------------

DWORD AddWith9xSettings(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter) {
    static char szRaw[] = "RAW";
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    // All three stay in the caller's record.
    pRecord->Attributes |= PRINTER_ATTRIBUTE_ENABLE_BIDI;
    pRecord->pDatatype = szRaw;
    pRecord->Priority = 1;
    const DWORD dwCode = AddAtLevel2(pRecord, lpszServer, hPrinter);
    if (dwCode == ERROR_SUCCESS) {
        PumpMessages();
    }
    return dwCode;
}

DWORD AddAsDefaultWhenFirst(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter) {
    if (!HasName(pRecord)) {
        return ERROR_INVALID_PARAMETER;
    }
    HeapBlock block;
    DWORD dwCount = 0;
    // A failure leaves a count of 0, and so makes the printer the default as well.
    EnumPrinterInfo(kLocalAndConnected, nullptr, 2, block, &dwCount);
    if (dwCount == 0) {
        pRecord->Attributes |= PRINTER_ATTRIBUTE_DEFAULT;  // stays in the caller's record
    }
    return AddAtLevel2(pRecord, lpszServer, hPrinter);
}

/// Has a new printer print complete documents first. The printer counts as added whether this works or not.
/// @param hAdded  the handle that adding gave: it has the rights to write, which a plain open need not have
void SetDoCompleteFirst(LPCSTR lpszPrinterName, HANDLE hAdded) {
    PrinterHandle hPrinter;
    HeapBlock block;
    if (OpenPrinterPlainly(lpszPrinterName, hPrinter) != ERROR_SUCCESS ||
        GetPrinterInfo(hPrinter.Get(), 2, block) != ERROR_SUCCESS || !block) {
        return;
    }
    static_cast<PRINTER_INFO_2A*>(block.Get())->Attributes |= PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST;
    Platform().SetPrinterA(hAdded, 2, static_cast<LPBYTE>(block.Get()), 0);
}

DWORD AddAndCompleteFirst(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter) {
    if (!HasName(pRecord)) {
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD dwCode = AddAtLevel2(pRecord, lpszServer, hPrinter);
    if (hPrinter) {
        SetDoCompleteFirst(pRecord->pPrinterName, hPrinter.Get());
    }
    return dwCode;
}

using AddPrinterRoutine = DWORD (*)(PrinterRecord*, LPSTR, PrinterHandle&);

constexpr OsRouteTable<AddPrinterRoutine> kAddPrinterRoutes = {
    AddPrinter9x,  // Windows 95
    AddPrinter9x,  // Windows 98
    AddPrinter9x,  // Windows Me
    AddPrinterNT,  // NT 4
    AddPrinter2k,  // Windows 2000
    AddPrinter2k,  // XP generation, x86
    AddPrinter2k,  // XP generation, IA64
    AddPrinter2k,  // XP generation, x64
    AddPrinter2k,  // Vista generation, x86
    AddPrinter2k,  // Vista generation, IA64
    AddPrinter2k,  // Vista generation, x64
    AddPrinter2k,  // anything else
};
static_assert(IsComplete(kAddPrinterRoutes));

// ---- the caller's DEVMODE ---------------------------------------------------------------------------------------

/// Takes the DEVMODE out of a record while the effective DEVMODE is switched off, and puts it back.
class DevModeOmission {
  public:
    explicit DevModeOmission(PrinterRecord& record) : m_record(record), m_pDevMode(record.pDevMode) {
        if (EffectiveDevModeSwitch() == 0) {
            WriteLog("Set Parameter Default DevMode(PRINTER_INFO_2)!!!");
            m_record.pDevMode = nullptr;
            m_bOmitted = true;
        } else {
            WriteLog("Set Parameter DevMode(PRINTER_INFO_2)!!!");
        }
    }
    ~DevModeOmission() {
        if (m_bOmitted) {
            m_record.pDevMode = m_pDevMode;  // an exception is on its way: the caller's record stays whole
        }
    }
    DevModeOmission(const DevModeOmission&) = delete;
    DevModeOmission& operator=(const DevModeOmission&) = delete;

    void Recover() {
        if (m_bOmitted) {
            WriteLog("Recovery PRINTER_INFO_2 DevMode Address.");
            m_record.pDevMode = m_pDevMode;
            m_bOmitted = false;
        }
    }
    void LeaveNull() { m_bOmitted = false; }

  private:
    PrinterRecord& m_record;
    LPDEVMODEA m_pDevMode;
    bool m_bOmitted = false;
};

// ---- adding -----------------------------------------------------------------------------------------------------

/// How an attempt to connect to a shared printer ended.
struct ConnectionAttempt {
    bool bFailed = false;
    bool bCancelled = false;  ///< by the user of a Vista generation system, which ends the whole operation
    DWORD dwCode = ERROR_SUCCESS;
};

ConnectionAttempt ConnectTo(LPSTR lpszPrinterName) {
    ConnectionAttempt attempt;
    if (Platform().AddPrinterConnectionA(lpszPrinterName)) {
        return attempt;
    }
    attempt.bFailed = true;
    attempt.dwCode = Platform().GetLastError();
    WriteLog("PI_AddPrinter() - AddPrinterConnection(%d) -> next AddPrinter", attempt.dwCode);
    attempt.bCancelled = HasOsClass(OsClassVista) && attempt.dwCode == ERROR_CANCELLED;
    return attempt;
}

/// Sets the two timeouts of a new printer. The 9x family has them nowhere else.
DWORD SetTimeouts(const PrinterRecord& record, const AddPrinterOptions& options) {
    PrinterHandle hPrinter;
    const DWORD dwCode = OpenPrinterPlainly(record.pPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    return SetPrinterTimeouts(hPrinter.Get(), record.pPrinterName, record.pPortName, record.Attributes,
                              options.DeviceNotSelectedTimeout, options.TransmissionRetryTimeout);
}

/// Adds a local printer and all that belongs to it. The first step that fails ends it; nothing is rolled back.
DWORD AddLocalPrinter(PrinterRecord* pRecord, const AddPrinterOptions* pOptions) {
    PrinterHandle hPrinter;
    DWORD dwCode = CallRoute(kAddPrinterRoutes, pRecord, nullptr, hPrinter);
    hPrinter.Reset();  // the steps below open the printer anew where they need it
    if (dwCode == ERROR_SUCCESS && pOptions != nullptr) {
        dwCode = AddColorProfile(pRecord->pPrinterName, pOptions->ColorProfiles, pOptions->ColorProfileCount);
    }
    if (dwCode == ERROR_SUCCESS) {
        dwCode = AddHardwareIdRegistryData(pRecord->pPrinterName);
    }
    if (dwCode == ERROR_SUCCESS && pOptions != nullptr && HasOsClass(OsClass9xFamily)) {
        dwCode = SetTimeouts(*pRecord, *pOptions);
    }
    return dwCode;
}

}  // namespace

DWORD AddPrinter9x(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter) {
    WriteLog("AddPrinter9x() - Start");
    const DWORD dwCode = AddWith9xSettings(pRecord, lpszServer, hPrinter);
    WriteLog("AddPrinter9x() - End(%d)", dwCode);
    return dwCode;
}

DWORD AddPrinterNT(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter) {
    WriteLog("AddPrinterNT() - Start");
    const DWORD dwCode = AddAsDefaultWhenFirst(pRecord, lpszServer, hPrinter);
    WriteLog("AddPrinterNT() - End(%d)", dwCode);
    return dwCode;
}

DWORD AddPrinter2k(PrinterRecord* pRecord, LPSTR lpszServer, PrinterHandle& hPrinter) {
    WriteLog("AddPrinter2k() - Start");
    const DWORD dwCode = AddAndCompleteFirst(pRecord, lpszServer, hPrinter);
    WriteLog("AddPrinter2k() - End(%d)", dwCode);
    return dwCode;
}

DWORD DoAddPrinter(PrinterRecord* pRecord, const AddPrinterOptions* pOptions) {
    if (!HasName(pRecord)) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoAddPrinter(%s) Start", pRecord->pPrinterName);
    DevModeOmission devMode(*pRecord);
    const bool bConnection = IsPrinterConnection(pRecord->pPrinterName, 1) != 0;
    ConnectionAttempt attempt;
    if (bConnection) {
        attempt = ConnectTo(pRecord->pPrinterName);
    }
    DWORD dwCode = attempt.dwCode;
    if (!bConnection || (attempt.bFailed && !attempt.bCancelled)) {
        dwCode = AddLocalPrinter(pRecord, pOptions);
    }
    if (attempt.bCancelled) {
        devMode.LeaveNull();  // the caller finds a null pDevMode after a cancellation, and no line of a recovery
    } else {
        devMode.Recover();
    }
    WriteLog("DoAddPrinter End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
