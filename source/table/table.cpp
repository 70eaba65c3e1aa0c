// The table of operations and the one exported function: the top of the library, which joins the subsystems' workers to
// the slots that an installer calls. The slots stand in the order of the table.
#include "deploy/copy_inf_driver_files.h"
#include "deploy/copy_size.h"
#include "deploy/driver_list.h"
#include "deploy/inf_info.h"
#include "deploy/inf_queries.h"
#include "deploy/installed_inf.h"
#include "deploy/local_copy.h"
#include "deploy/staged_copy.h"
#include "driver/file_use.h"
#include "driver/hwid_folder.h"
#include "driver/monitor_file.h"
#include "frame/file_version.h"
#include "frame/os_identity.h"
#include "frame/pikel.h"
#include "inf/customize_field.h"
#include "inf_store/inf_identity.h"
#include "inf_store/inf_placement.h"
#include "platform/platform.h"
#include "printer/add_printer.h"
#include "printer/default_printer.h"
#include "printer/delete_printer.h"
#include "printer/effective_dev_mode.h"
#include "printer/get_printer.h"
#include "printer/port.h"
#include "printer/set_printer.h"
#include "printui/run_dll32.h"
#include "system/cabinet.h"
#include "system/net_resources.h"
#include "system/security.h"
#include "system/short_cut.h"
#include "table/print_ui_choice.h"
#include "table/wrapper.h"

namespace pikel {
namespace {

// ---- slots 0 to 2: bring-up, tear-down and memory, without the form of the others -----------------------------------

/// Initialize calls less Shutdown calls. Unguarded: a Shutdown without Initialize leaves it at 0xFFFFFFFF, and the next
/// Initialize, which then isn't the step from 0 to 1, does no work: the log stays off, which a guard would change.
DWORD g_dwUseCount = 0;

/// Slot 0. The log line comes after the work, because the work is what turns the log on.
struct PI_KEL_Initialize_Slot {
    static DWORD Run() {
        if (++g_dwUseCount == 1) {
            KeepModule();
            RunGuarded([] {
                ReadLogConfiguration(nullptr);
                GetOsIdentity();
                return DWORD(0);
            });
        }
        WriteLog("PI_KEL_Initialize ");
        return 0;
    }
};

/// Slot 1. The log line comes before the work, which turns the log off.
struct PI_KEL_Shutdown_Slot {
    static DWORD Run() {
        WriteLog("PI_KEL_Shutdown");
        if (--g_dwUseCount == 0) {
            ResetLog();
        }
        return 0;
    }
};

/// Slot 2.
struct PI_KEL_FreeMemory_Slot {
    static BOOL Run(LPVOID block) { return Platform().HeapFree(Platform().GetProcessHeap(), 0, block); }
};

// ---- slots 3 to 42: a start line, the work, an end line and a blank line --------------------------------------------

/// The text of all four numbers, which is the worker's choice without a form.
DWORD GetDriverFileVersion(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize) {
    return DoGetDriverFileVersion(lpszFilePath, lpszText, dwSize);
}

/// Any number but 0 asks for the driver's file.
DWORD GetDriverFileNameFromInf(LPCSTR infPath, LPCSTR driverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                               DWORD dwMinorVersion, DWORD wantDriverFile, LPSTR name, LPDWORD pdwSize) {
    return DoGetDriverFileNameFromInf(infPath, driverName, dwArchitecture, dwMajorVersion, dwMinorVersion,
                                      wantDriverFile != 0, name, pdwSize);
}

/// Slot 25: the INF's own architecture first; without it the copy isn't entered.
DWORD CopyToLocalFolder(LPCSTR infPath, LPCSTR driverName, LPCSTR localFolder, LPDWORD pdwTotalSize, DWORD copyNameMode,
                        LPDWORD pdwCount, LocalFileRecord** ppRecords, DWORD dwArchitecture, DWORD dwMajorVersion,
                        DWORD dwMinorVersion) {
    DWORD dwInfArchitecture = 0;
    const DWORD dwStatus = DoGetInfOsVersion(infPath, &dwInfArchitecture);
    return dwStatus != 0 ? dwStatus
                         : DoCopyInfDriverFilesToLocal(infPath, driverName, localFolder, pdwTotalSize, copyNameMode,
                                                       pdwCount, ppRecords, dwInfArchitecture, dwArchitecture,
                                                       dwMajorVersion, dwMinorVersion);
}

/// Slot 31: likewise.
DWORD CopyByStaging(LPCSTR infPath, LPCSTR driverName, DWORD copyNameMode, LPDWORD pdwRestartNeeded,
                    LPCSTR stagingFolder, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion) {
    DWORD dwInfArchitecture = 0;
    const DWORD dwStatus = DoGetInfOsVersion(infPath, &dwInfArchitecture);
    return dwStatus != 0 ? dwStatus
                         : DoCopyInfDriverFilesEx(infPath, driverName, copyNameMode, pdwRestartNeeded, stagingFolder,
                                                  dwInfArchitecture, dwArchitecture, dwMajorVersion, dwMinorVersion);
}

STATUS_SLOT(PI_KEL_AddPrinterDriver, PIKEL_PREFIX_DRIVER_ADD, AddPrinterDriverAsAsked)
STATUS_SLOT(PI_KEL_DeletePrinterDriver, PIKEL_PREFIX_DRIVER_DELETE, WithCopyOf<1>(DeletePrinterDriverAsAsked))
VALUE_SLOT(PI_KEL_IsDriverFileLoaded, FALSE, IsDriverFileLoaded)
STATUS_SLOT(PI_KEL_GetDriverFileVersion, PIKEL_PREFIX_GENERAL, GetDriverFileVersion)
VALUE_SLOT(PI_KEL_CheckDriverFileVersion, FileVersionLowerOrUnreadable, WithCopyOf<0>(DoCheckDriverFileVersion))
STATUS_SLOT(PI_KEL_GetInfInfo, PIKEL_PREFIX_INF_READ, WithCopyOf<0>(DoGetInfInfo))
STATUS_SLOT(PI_KEL_GetDriverFileNameFromInf, PIKEL_PREFIX_INF_READ, WithCopyOf<0>(GetDriverFileNameFromInf))
STATUS_SLOT(PI_KEL_CopyInfDriverFiles, PIKEL_PREFIX_FILE_COPY, WithCopyOf<0>(PI_CopyInfDriverFiles))
STATUS_SLOT(PI_KEL_GetDriverListFromInf, PIKEL_PREFIX_INF_READ, PI_GetDriverListFromInf)
STATUS_SLOT(PI_KEL_InfFileCopy, PIKEL_PREFIX_FILE_COPY, WithCopyOf<4>(PI_InfFileCopy))
STATUS_SLOT(PI_KEL_GetInstalledInfName, PIKEL_PREFIX_INSTALLED_INF, WithCopyOf<4>(DoGetInstalledInfName))
STATUS_SLOT(PI_KEL_EnumNetResources, PIKEL_PREFIX_NETWORK, DoEnumNetResources)
STATUS_SLOT(PI_KEL_CreatePort, PIKEL_PREFIX_PORT, PI_CreatePort)
STATUS_SLOT(PI_KEL_GetPrinter, PIKEL_PREFIX_GENERAL, DoGetPrinter)
STATUS_SLOT(PI_KEL_SetPrinter, PIKEL_PREFIX_GENERAL, DoSetPrinter)
STATUS_SLOT(PI_KEL_AddPrinter, PIKEL_PREFIX_PRINTER_ADD, DoAddPrinter)
STATUS_SLOT(PI_KEL_DeletePrinter, PIKEL_PREFIX_PRINTER_DELETE, DeletePrinterAsAsked)
VALUE_SLOT(PI_KEL_IsAdministrators, FALSE, IsAdministrators)
STATUS_SLOT(PI_KEL_CreateShortCut, PIKEL_PREFIX_GENERAL, DoCreateShortCut)
STATUS_SLOT(PI_KEL_ExtractCabFile, PIKEL_PREFIX_GENERAL, DoExtractCabFile)
VALUE_SLOT(PI_KEL_IsValidInfFile, FALSE, IsTarvoPrinterDriver)
STATUS_SLOT(PI_KEL_GetInfOsVersion, PIKEL_PREFIX_GENERAL, DoGetInfOsVersion)
STATUS_SLOT(PI_KEL_CopyInfDriverFilesToLocal, PIKEL_PREFIX_FILE_COPY, WithCopyOf<0>(CopyToLocalFolder))
STATUS_SLOT(PI_KEL_RunPrintUI, PIKEL_PREFIX_GENERAL, DoRunPrintUI)
STATUS_SLOT(PI_KEL_DeletePrinterWithoutShareReg, PIKEL_PREFIX_PRINTER_DELETE, DoDeletePrinterWithoutShareReg)
STATUS_SLOT(PI_KEL_GetResourceStrFromPrintUI, PIKEL_PREFIX_GENERAL, DoGetResourceStrFromPrintUI)
STATUS_SLOT(PI_KEL_InstallPrinterToPrintUI, PIKEL_PREFIX_DRIVER_ADD, InstallPrinterByPrintUI)
STATUS_SLOT(PI_KEL_UninstallPrinter, PIKEL_PREFIX_DRIVER_ADD, WithCopyOf<1>(UninstallPrinterAsAsked))
// Its start line is that of slot 25, its end line its own: the log's text is part of the contract.
STATUS_SLOT_STARTING_AS(PI_KEL_CopyInfDriverFilesEx, "PI_KEL_CopyInfDriverFilesToLocal", PIKEL_PREFIX_FILE_COPY,
                        WithCopyOf<0>(CopyByStaging))
STATUS_SLOT(PI_KEL_CopyDriverFileToHWIDFolder, PIKEL_PREFIX_GENERAL, DoCopyDriverFileToHWIDFolder)
STATUS_SLOT(PI_KEL_ControlRegistory, PIKEL_PREFIX_GENERAL, DoControlRegistory)
STATUS_SLOT(PI_KEL_SetDefaultPrinter, PIKEL_PREFIX_GENERAL, DoSetDefaultPrinter)
STATUS_SLOT(PI_KEL_EnumDriverFiles, PIKEL_PREFIX_GENERAL, DoEnumDriverFiles)
STATUS_SLOT(PI_KEL_GetCustomizeInfo, PIKEL_PREFIX_GENERAL, DoGetCustomizeInfo)
STATUS_SLOT(PI_KEL_GetCopyDriverFilesSize, PIKEL_PREFIX_FILE_COPY, DoGetCopyDriverFilesSize)

/// Slot 38: its start line carries the argument, and it can't fail.
struct PI_KEL_SetEffectiveDevMode_Slot {
    static DWORD Run(DWORD flag) {
        WriteLog("PI_KEL_SetEffectiveDevMode( %d ) Start", static_cast<int>(flag));
        DoSetEffectiveDevMode(flag);
        WriteLog("PI_KEL_SetEffectiveDevMode End:(0x%08x)", 0u);
        WriteLog("%s", "");
        return 0;
    }
};

STATUS_SLOT(PI_KEL_CopyMonitorFile, PIKEL_PREFIX_FILE_COPY, DoCopyMointorFile)
STATUS_SLOT(PI_KEL_GetDefaultPrinter, PIKEL_PREFIX_GENERAL, DoGetDefaultPrinter)
// The yes of this one is a code like any other: a default printer gives 0x90010001.
STATUS_SLOT(PI_KEL_IsDefaultPrinter, PIKEL_PREFIX_GENERAL, DoIsDefaultPrinter)
STATUS_SLOT(PI_KEL_GetCATFileInfo, PIKEL_PREFIX_GENERAL, DoGetCATFileInfo)

// ---- the table ------------------------------------------------------------------------------------------------------

/// The order is the calling contract with installers.
constexpr PI_KEL_Interface kInterface = {
    SLOT(PI_KEL_Initialize),                    // 0
    SLOT(PI_KEL_Shutdown),                      // 1
    SLOT(PI_KEL_FreeMemory),                    // 2
    SLOT(PI_KEL_AddPrinterDriver),              // 3
    SLOT(PI_KEL_DeletePrinterDriver),           // 4
    SLOT(PI_KEL_IsDriverFileLoaded),            // 5
    SLOT(PI_KEL_GetDriverFileVersion),          // 6
    SLOT(PI_KEL_CheckDriverFileVersion),        // 7
    SLOT(PI_KEL_GetInfInfo),                    // 8
    SLOT(PI_KEL_GetDriverFileNameFromInf),      // 9
    SLOT(PI_KEL_CopyInfDriverFiles),            // 10
    SLOT(PI_KEL_GetDriverListFromInf),          // 11
    SLOT(PI_KEL_InfFileCopy),                   // 12
    SLOT(PI_KEL_GetInstalledInfName),           // 13
    SLOT(PI_KEL_EnumNetResources),              // 14
    SLOT(PI_KEL_CreatePort),                    // 15
    SLOT(PI_KEL_GetPrinter),                    // 16
    SLOT(PI_KEL_SetPrinter),                    // 17
    SLOT(PI_KEL_AddPrinter),                    // 18
    SLOT(PI_KEL_DeletePrinter),                 // 19
    SLOT(PI_KEL_IsAdministrators),              // 20
    SLOT(PI_KEL_CreateShortCut),                // 21
    SLOT(PI_KEL_ExtractCabFile),                // 22
    SLOT(PI_KEL_IsValidInfFile),                // 23
    SLOT(PI_KEL_GetInfOsVersion),               // 24
    SLOT(PI_KEL_CopyInfDriverFilesToLocal),     // 25
    SLOT(PI_KEL_RunPrintUI),                    // 26
    SLOT(PI_KEL_DeletePrinterWithoutShareReg),  // 27
    SLOT(PI_KEL_GetResourceStrFromPrintUI),     // 28
    SLOT(PI_KEL_InstallPrinterToPrintUI),       // 29
    SLOT(PI_KEL_UninstallPrinter),              // 30
    SLOT(PI_KEL_CopyInfDriverFilesEx),          // 31
    SLOT(PI_KEL_CopyDriverFileToHWIDFolder),    // 32
    SLOT(PI_KEL_ControlRegistory),              // 33
    SLOT(PI_KEL_SetDefaultPrinter),             // 34
    SLOT(PI_KEL_EnumDriverFiles),               // 35
    SLOT(PI_KEL_GetCustomizeInfo),              // 36
    SLOT(PI_KEL_GetCopyDriverFilesSize),        // 37
    SLOT(PI_KEL_SetEffectiveDevMode),           // 38
    SLOT(PI_KEL_CopyMonitorFile),               // 39
    SLOT(PI_KEL_GetDefaultPrinter),             // 40
    SLOT(PI_KEL_IsDefaultPrinter),              // 41
    SLOT(PI_KEL_GetCATFileInfo),                // 42
};
static_assert(sizeof(PI_KEL_Interface) == 43 * sizeof(void*));

}  // namespace
}  // namespace pikel

extern "C" const PI_KEL_Interface* WINAPI PI_KEL_GetInterface(DWORD version) {
    return version == PIKEL_INTERFACE_VERSION ? &pikel::kInterface : nullptr;
}
