// The table of operations and the one exported function: the top of the library, which joins the subsystems' workers to
// the slots that an installer calls.
#include "inf/customize_field.h"
#include "deploy/copy_inf_driver_files.h"
#include "deploy/copy_size.h"
#include "deploy/driver_list.h"
#include "deploy/inf_info.h"
#include "deploy/inf_queries.h"
#include "deploy/installed_inf.h"
#include "deploy/local_copy.h"
#include "deploy/staged_copy.h"
#include "driver/add_printer_driver.h"
#include "driver/delete_printer_driver.h"
#include "driver/file_use.h"
#include "driver/hwid_folder.h"
#include "driver/monitor_file.h"
#include "frame/file_version.h"
#include "frame/os_identity.h"
#include "frame/os_route.h"
#include "frame/pikel.h"
#include "table/wrapper.h"
#include "inf_store/identity.h"
#include "inf_store/placement.h"
#include "platform/platform.h"
#include "printer/add_printer.h"
#include "printer/default_printer.h"
#include "printer/delete_printer.h"
#include "printer/effective_dev_mode.h"
#include "printer/get_printer.h"
#include "printer/port.h"
#include "printer/set_printer.h"
#include "table/uninstall.h"
#include "printui/print_ui_commands.h"
#include "printui/run_dll32.h"
#include "system/cabinet.h"
#include "system/net_resources.h"
#include "system/security.h"
#include "system/short_cut.h"

namespace pikel {
namespace {

// ---- slots 0 to 2: bring-up, tear-down and memory, without the form of the others -----------------------------------

/// Initialize calls less Shutdown calls. Unguarded: a Shutdown without Initialize leaves it at 0xFFFFFFFF, and the next
/// Initialize, which then isn't the step from 0 to 1, does no work. Installers rely on the plain count.
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

// ---- workers that choose a route or keep a text ---------------------------------------------------------------------

/// Slot 3: the Print UI route where the caller asks for it, else the direct one, for which the record alone counts.
DWORD AddPrinterDriverByRoute(LPCSTR infPath, LPCSTR modelName, DWORD driverVersion, DWORD processor,
                              const DriverAddRecord* record, INT usePrintUI) {
    if (usePrintUI == 0) {
        return DoAddPrinterDriver(nullptr, record);
    }
    return IsPrintUIUsable() ? DoAddDriverToPrintUI(infPath, modelName, driverVersion, processor)
                             : DWORD{ERROR_INVALID_PARAMETER};
}

/// Slot 4: likewise. The direct route restarts no spooler and reads no file removal flag.
DWORD DeletePrinterDriverByRouteKept(DWORD driverVersion, LPCSTR lpszDriverName, DWORD processor, DWORD profileCount,
                                     LPSTR* profileList, DWORD fileRemovalFlag, DWORD usePrintUI) {
    const KeptText driverName(lpszDriverName);
    if (usePrintUI == 0) {
        return DoDeletePrinterDriver(driverVersion, driverName.Get(), processor, profileCount, profileList,
                                     fileRemovalFlag, 0);
    }
    return IsPrintUIUsable() ? DoDeletePrinterDriverToPrintUI(driverVersion, driverName.Get(), processor, profileCount,
                                                              profileList, fileRemovalFlag, 0)
                             : DWORD{ERROR_INVALID_PARAMETER};
}

/// Slot 29: there is no other route.
DWORD InstallPrinterToPrintUI(LPCSTR infPath, LPCSTR printerName, LPCSTR modelName, LPCSTR portName, LPCSTR shareName,
                              LPCSTR spare, DWORD shareFlag) {
    return IsPrintUIUsable()
               ? DoInstallPrinterToPrintUI(infPath, printerName, modelName, portName, shareName, spare, shareFlag)
               : DWORD{ERROR_INVALID_PARAMETER};
}

DWORD UninstallPrinterKept(LPCSTR printerName, LPCSTR lpszDriverName, DWORD driverVersion, DWORD processor,
                           DWORD profileCount, LPSTR* profileList, DWORD fileRemovalFlag, INT usePrintUI) {
    const KeptText driverName(lpszDriverName);
    return UninstallPrinterByRoute(printerName, driverName.Get(), driverVersion, processor, profileCount, profileList,
                                   fileRemovalFlag, usePrintUI);
}

DWORD GetInfInfoKept(LPCSTR lpcInfPath, LPCSTR lpDriverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                     DWORD dwMinorVersion, DriverAddRecord** ppRecord) {
    KeptText infPath(lpcInfPath);
    return DoGetInfInfo(infPath.Get(), lpDriverName, dwArchitecture, dwMajorVersion, dwMinorVersion, ppRecord);
}

DWORD CopyInfDriverFilesKept(LPCSTR lpszInfPath, LPCSTR driverName, PSP_FILE_CALLBACK_A queueCallback,
                             DWORD dwArchitecture, INT dwMajorVersion, DWORD dwMinorVersion, HWND ownerWindow,
                             HWND progressWindow) {
    KeptText infPath(lpszInfPath);
    return PI_CopyInfDriverFiles(infPath.Get(), driverName, queueCallback, dwArchitecture, dwMajorVersion,
                                 dwMinorVersion, ownerWindow, progressWindow);
}

DWORD GetDriverFileVersion(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize) {
    return DoGetDriverFileVersion(lpszFilePath, lpszText, dwSize);
}

DWORD CheckDriverFileVersionKept(LPCSTR lpszFilePath, LPCSTR lpszVersionText, LPSTR lpszText, DWORD dwSize) {
    const KeptText filePath(lpszFilePath);
    return DoCheckDriverFileVersion(filePath.Get(), lpszVersionText, lpszText, dwSize);
}

DWORD GetDriverFileNameFromInfKept(LPCSTR lpszInfPath, LPCSTR driverName, DWORD dwArchitecture, DWORD dwMajorVersion,
                                   DWORD dwMinorVersion, DWORD wantDriverFile, LPSTR name, LPDWORD pdwSize) {
    const KeptText infPath(lpszInfPath);
    return DoGetDriverFileNameFromInf(infPath.Get(), driverName, dwArchitecture, dwMajorVersion, dwMinorVersion,
                                      wantDriverFile != 0, name, pdwSize);
}

/// Slot 25: the INF's own architecture first; without it the copy isn't entered.
DWORD CopyInfDriverFilesToLocalKept(LPCSTR lpszInfPath, LPCSTR driverName, LPCSTR localFolder, LPDWORD pdwTotalSize,
                                    DWORD copyNameMode, LPDWORD pdwCount, LocalFileRecord** ppRecords,
                                    DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion) {
    const KeptText infPath(lpszInfPath);
    DWORD dwInfArchitecture = 0;
    const DWORD dwStatus = DoGetInfOsVersion(infPath.Get(), &dwInfArchitecture);
    return dwStatus != 0 ? dwStatus
                         : DoCopyInfDriverFilesToLocal(infPath.Get(), driverName, localFolder, pdwTotalSize,
                                                       copyNameMode, pdwCount, ppRecords, dwInfArchitecture,
                                                       dwArchitecture, dwMajorVersion, dwMinorVersion);
}

/// Slot 31: likewise.
DWORD CopyInfDriverFilesExKept(LPCSTR lpszInfPath, LPCSTR driverName, DWORD copyNameMode, LPDWORD pdwRestartNeeded,
                               LPCSTR stagingFolder, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion) {
    const KeptText infPath(lpszInfPath);
    DWORD dwInfArchitecture = 0;
    const DWORD dwStatus = DoGetInfOsVersion(infPath.Get(), &dwInfArchitecture);
    return dwStatus != 0
               ? dwStatus
               : DoCopyInfDriverFilesEx(infPath.Get(), driverName, copyNameMode, pdwRestartNeeded, stagingFolder,
                                        dwInfArchitecture, dwArchitecture, dwMajorVersion, dwMinorVersion);
}

DWORD InfFileCopyKept(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszDir,
                      LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag) {
    KeptText dir(lpszDir);
    return PI_InfFileCopy(lpszInfFile, dwProcessor, dwMajor, dwMinor, dir.Get(), lpszProvider, lpszClass, dwFlag);
}

DWORD GetInstalledInfNameKept(LPCSTR driverName, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion,
                              LPCSTR lpszInfFolder, LPCSTR lpszProvider, LPCSTR lpszClass, LPSTR name, DWORD size) {
    KeptText infFolder(lpszInfFolder);
    return DoGetInstalledInfName(driverName, dwArchitecture, dwMajorVersion, dwMinorVersion, infFolder.Get(),
                                 lpszProvider, lpszClass, name, size);
}

// ---- slots from 3 on ------------------------------------------------------------------------------------------------

STATUS_SLOT(PI_KEL_AddPrinterDriver, PIKEL_PREFIX_DRIVER_ADD, AddPrinterDriverByRoute)
STATUS_SLOT(PI_KEL_DeletePrinterDriver, PIKEL_PREFIX_DRIVER_DELETE, DeletePrinterDriverByRouteKept)
VALUE_SLOT(PI_KEL_IsDriverFileLoaded, FALSE, IsDriverFileLoaded)
STATUS_SLOT(PI_KEL_GetDriverFileVersion, PIKEL_PREFIX_GENERAL, GetDriverFileVersion)
VALUE_SLOT(PI_KEL_CheckDriverFileVersion, FileVersionLowerOrUnreadable, CheckDriverFileVersionKept)
STATUS_SLOT(PI_KEL_CopyDriverFileToHWIDFolder, PIKEL_PREFIX_GENERAL, DoCopyDriverFileToHWIDFolder)
STATUS_SLOT(PI_KEL_CopyMonitorFile, PIKEL_PREFIX_FILE_COPY, DoCopyMointorFile)
STATUS_SLOT(PI_KEL_GetInfInfo, PIKEL_PREFIX_INF_READ, GetInfInfoKept)
STATUS_SLOT(PI_KEL_GetDriverFileNameFromInf, PIKEL_PREFIX_INF_READ, GetDriverFileNameFromInfKept)
STATUS_SLOT(PI_KEL_CopyInfDriverFiles, PIKEL_PREFIX_FILE_COPY, CopyInfDriverFilesKept)
STATUS_SLOT(PI_KEL_ExtractCabFile, PIKEL_PREFIX_GENERAL, DoExtractCabFile)
STATUS_SLOT(PI_KEL_CopyInfDriverFilesToLocal, PIKEL_PREFIX_FILE_COPY, CopyInfDriverFilesToLocalKept)
// Its start line is that of the local copy: installers' log readers know it so.
STATUS_SLOT_STARTING_AS(PI_KEL_CopyInfDriverFilesEx, "PI_KEL_CopyInfDriverFilesToLocal", PIKEL_PREFIX_FILE_COPY,
                        CopyInfDriverFilesExKept)
STATUS_SLOT(PI_KEL_ControlRegistory, PIKEL_PREFIX_GENERAL, DoControlRegistory)
STATUS_SLOT(PI_KEL_EnumDriverFiles, PIKEL_PREFIX_GENERAL, DoEnumDriverFiles)
STATUS_SLOT(PI_KEL_GetCopyDriverFilesSize, PIKEL_PREFIX_FILE_COPY, DoGetCopyDriverFilesSize)
STATUS_SLOT(PI_KEL_GetDriverListFromInf, PIKEL_PREFIX_INF_READ, PI_GetDriverListFromInf)
STATUS_SLOT(PI_KEL_InfFileCopy, PIKEL_PREFIX_FILE_COPY, InfFileCopyKept)
STATUS_SLOT(PI_KEL_GetInstalledInfName, PIKEL_PREFIX_INSTALLED_INF, GetInstalledInfNameKept)
STATUS_SLOT(PI_KEL_CreatePort, PIKEL_PREFIX_PORT, PI_CreatePort)
STATUS_SLOT(PI_KEL_EnumNetResources, PIKEL_PREFIX_NETWORK, DoEnumNetResources)
STATUS_SLOT(PI_KEL_GetPrinter, PIKEL_PREFIX_GENERAL, DoGetPrinter)
STATUS_SLOT(PI_KEL_SetPrinter, PIKEL_PREFIX_GENERAL, DoSetPrinter)
STATUS_SLOT(PI_KEL_AddPrinter, PIKEL_PREFIX_PRINTER_ADD, DoAddPrinter)
STATUS_SLOT(PI_KEL_DeletePrinter, PIKEL_PREFIX_PRINTER_DELETE, DeletePrinterByRoute)
STATUS_SLOT(PI_KEL_DeletePrinterWithoutShareReg, PIKEL_PREFIX_PRINTER_DELETE, DoDeletePrinterWithoutShareReg)
STATUS_SLOT(PI_KEL_UninstallPrinter, PIKEL_PREFIX_DRIVER_ADD, UninstallPrinterKept)
STATUS_SLOT(PI_KEL_RunPrintUI, PIKEL_PREFIX_GENERAL, DoRunPrintUI)
STATUS_SLOT(PI_KEL_GetResourceStrFromPrintUI, PIKEL_PREFIX_GENERAL, DoGetResourceStrFromPrintUI)
STATUS_SLOT(PI_KEL_InstallPrinterToPrintUI, PIKEL_PREFIX_DRIVER_ADD, InstallPrinterToPrintUI)
VALUE_SLOT(PI_KEL_IsAdministrators, FALSE, IsAdministrators)
STATUS_SLOT(PI_KEL_CreateShortCut, PIKEL_PREFIX_GENERAL, DoCreateShortCut)
VALUE_SLOT(PI_KEL_IsValidInfFile, FALSE, IsTarvoPrinterDriver)
STATUS_SLOT(PI_KEL_GetInfOsVersion, PIKEL_PREFIX_GENERAL, DoGetInfOsVersion)
STATUS_SLOT(PI_KEL_GetCustomizeInfo, PIKEL_PREFIX_GENERAL, DoGetCustomizeInfo)
STATUS_SLOT(PI_KEL_GetCATFileInfo, PIKEL_PREFIX_GENERAL, DoGetCATFileInfo)
STATUS_SLOT(PI_KEL_SetDefaultPrinter, PIKEL_PREFIX_GENERAL, DoSetDefaultPrinter)
STATUS_SLOT(PI_KEL_GetDefaultPrinter, PIKEL_PREFIX_GENERAL, DoGetDefaultPrinter)
// The yes of this one is a code like any other: a default printer gives 0x90010001.
STATUS_SLOT(PI_KEL_IsDefaultPrinter, PIKEL_PREFIX_GENERAL, DoIsDefaultPrinter)

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
