// Removes printers and drivers through the Print UI's command lines.
#include <string>

#include "colour/color_profile_removal.h"
#include "driver/delete_driver_file.h"
#include "driver/delete_language_monitor.h"
#include "driver/spooler_service.h"
#include "frame/log.h"
#include "frame/string_list.h"
#include "frame/text.h"
#include "spooler/printer_connection.h"
#include "spooler/spooler_read.h"
#include "printui/command_line.h"
#include "printui/print_ui_commands.h"

namespace pikel {

namespace {

// ---- printers -------------------------------------------------------------------------------------------------------

/// True for a shared printer of another computer. One that told nothing of itself counts as a local one.
bool IsConnection(const HeapBlock& level2) {
    return level2 && IsConnectionRecord(*static_cast<const PRINTER_INFO_2A*>(level2.Get()));
}

DWORD RunPrinterDeletion(LPCSTR lpszConvertedName, const HeapBlock& level2) {
    char szCommand[kCommandLineSize];
    const DWORD dwCode = FormatBounded(szCommand, sizeof szCommand,
                                       IsConnection(level2) ? "/dn /n\"%s\" /q" : "/dl /n\"%s\" /q", lpszConvertedName);
    return dwCode == ERROR_SUCCESS ? DoRunPrintUI(szCommand) : dwCode;
}

bool IsAcceptedDeletion(DWORD dwCode) {
    return HasByteMask(dwCode, kEnvironmentNotFoundMask) || HasByteMask(dwCode, kInsufficientBufferMask) ||
           (dwCode & kNoTokenMask) == kNoTokenMask;
}

// ---- drivers --------------------------------------------------------------------------------------------------------

/// The language monitor of a driver that is to go. Empty for one whose files stay.
struct MonitorOfDriver {
    LPCSTR lpszEnvironment = nullptr;
    std::string strName;
    std::string strFile;
    StringList otherFiles;  ///< monitor files of the other drivers
};

DWORD FindMonitor(DWORD dwVersion, LPCSTR lpszDriverName, DWORD dwProcessor, MonitorOfDriver& monitor) {
    monitor.lpszEnvironment = EnvironmentOfDeletion(dwVersion, dwProcessor);
    return CDeleteDriverFile().GetFileList(dwVersion, monitor.lpszEnvironment, TextOrEmpty(lpszDriverName), nullptr,
                                           nullptr, &monitor.strName, &monitor.strFile, &monitor.otherFiles);
}

DWORD FormatDriverDeletion(DWORD dwVersion, LPCSTR lpszDriverName, DWORD dwProcessor, LPSTR lpszCommand) {
    char szVersion[kVersionPartSize] = {};
    const DWORD dwCode = MakeVersionStringForPrintUI(dwVersion, dwProcessor, szVersion, sizeof szVersion);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    // Quiet on every system, the Vista generation too. The name goes in as it is.
    return FormatBounded(lpszCommand, kCommandLineSize, "/dd /m\"%s\" %s /q", lpszDriverName, szVersion);
}

/// Restarts the spooler. A failure is only logged, in the words of the direct route.
void RestartSpooler() {
    WriteLog("DeletePrinterDriver2k() - Service(%s).Start", kSpooler);
    ServiceHandles handles;  // open until the last line is written
    WithSpoolerService(handles, &Win32RestartService, kServiceStartFailure);
    WriteLog("DeletePrinterDriver2k() - Service.ReStart End");
}

/// What goes behind the driver. The first code that isn't 0 ends it.
DWORD RemoveWhatBelonged(DWORD dwVersion, LPCSTR lpszDriverName, DWORD dwProfileCount, const LPSTR* ppszProfiles,
                         DWORD dwFileRemovalFlag, const MonitorOfDriver& monitor) {
    DWORD dwCode = ERROR_SUCCESS;
    if (dwProfileCount != 0 && ppszProfiles != nullptr) {
        dwCode = UnInstallColorProfile(dwProfileCount, ppszProfiles);
    }
    if (dwCode == ERROR_SUCCESS) {
        LPCSTR lpszMonitorName = monitor.strName.empty() ? nullptr : monitor.strName.c_str();
        dwCode = DeleteLanguageMonitor(nullptr, dwVersion, lpszDriverName, lpszMonitorName, dwFileRemovalFlag);
    }
    if (dwCode == ERROR_SUCCESS) {
        // Without the flag this gets empty lists. The empty name of the monitor's DLL then passes for one that nobody
        // else uses: it is deleted as a file without a name, which the system refuses unnoticed.
        dwCode = CDeleteDriverFile().DeleteDriverFiles(dwVersion, monitor.lpszEnvironment, nullptr, nullptr,
                                                       &monitor.otherFiles, &monitor.strFile);
    }
    return dwCode;
}

}  // namespace

DWORD DoDeletePrinterToPrintUI(LPCSTR lpszPrinterName, DWORD dwProfileCount, const LPSTR* ppszProfiles) {
    WriteLog("DoDeletePrinterToPrintUI Start");
    ConvertedText printerName;  // stays empty behind a failure: the command then names no printer
    if (!IsEmpty(lpszPrinterName)) {
        DWORD dwProfileCode = ERROR_SUCCESS;
        if (dwProfileCount != 0 && ppszProfiles != nullptr) {
            dwProfileCode = DeleteColorProfile(lpszPrinterName, dwProfileCount, ppszProfiles);
            WriteLog("DoDeletePrinterToPrintUI End(0x%08x)", dwProfileCode);
        }
        if (dwProfileCode == ERROR_SUCCESS) {
            printerName.Convert(lpszPrinterName);  // the result isn't looked at
        }
    }
    HeapBlock level2;
    DWORD dwCode = ReadPrinterLevel(lpszPrinterName, 2, level2);
    if (dwCode == ERROR_SUCCESS) {
        dwCode = RunPrinterDeletion(printerName.Get(), level2);
    }
    if (IsAcceptedDeletion(dwCode)) {
        dwCode = ERROR_SUCCESS;
    }
    level2.Reset();
    WriteLog("DoDeletePrinterToPrintUI End(0x%08x)", dwCode);
    return dwCode;
}

DWORD DoDeletePrinterDriverToPrintUI(DWORD dwVersion, LPCSTR lpszDriverName, DWORD dwProcessor, DWORD dwProfileCount,
                                     const LPSTR* ppszProfiles, DWORD dwFileRemovalFlag, DWORD dwRestartFlag) {
    WriteLog("DoDeletePrinterDriverToPrintUI Start");
    // A bad name stops the command, but neither the lists nor the restart.
    DWORD dwCode = IsEmpty(lpszDriverName) ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
    MonitorOfDriver monitor;
    if (dwFileRemovalFlag != 0) {
        const DWORD dwListCode = FindMonitor(dwVersion, lpszDriverName, dwProcessor, monitor);
        dwCode = dwCode != ERROR_SUCCESS ? dwCode : dwListCode;
    }
    char szCommand[kCommandLineSize] = {};
    if (dwCode == ERROR_SUCCESS) {
        dwCode = FormatDriverDeletion(dwVersion, lpszDriverName, dwProcessor, szCommand);
    }
    if (dwRestartFlag != 0) {
        RestartSpooler();
    }
    if (dwCode == ERROR_SUCCESS) {
        dwCode = DoRunPrintUI(szCommand);
    }
    // The end is logged twice, on failure as well: first with the command's code, then with that of all that follows.
    WriteLog("DoDeletePrinterDriverToPrintUI End(0x%08x)", dwCode);
    if (dwCode == ERROR_SUCCESS) {
        dwCode =
            RemoveWhatBelonged(dwVersion, lpszDriverName, dwProfileCount, ppszProfiles, dwFileRemovalFlag, monitor);
    }
    WriteLog("DoDeletePrinterDriverToPrintUI End(0x%08x)", dwCode);
    return dwCode;
}

}  // namespace pikel
