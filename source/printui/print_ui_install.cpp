// Installs drivers and printers through the Print UI's command lines.
#include <string>

#include "frame/log.h"
#include "frame/path.h"
#include "frame/text.h"
#include "spooler/spooler_read.h"
#include "printui/command_line.h"
#include "printui/print_ui_commands.h"

namespace pikel {

namespace {

// ---- the share name -------------------------------------------------------------------------------------------------

DWORD ChangeShareName(LPCSTR lpszPrinterName, LPCSTR lpszShareName) {
    if (IsEmpty(lpszPrinterName) || IsEmpty(lpszShareName)) {
        return ERROR_INVALID_PARAMETER;
    }
    ConvertedText printerName;
    ConvertedText shareName;
    DWORD dwCode = printerName.Convert(lpszPrinterName);
    if (dwCode == ERROR_SUCCESS) {
        dwCode = shareName.Convert(lpszShareName);
    }
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    char szCommand[kCommandLineSize];
    dwCode =
        FormatBounded(szCommand, sizeof szCommand, "/Xs /n\"%s\" ShareName \"%s\"", printerName.Get(), shareName.Get());
    return dwCode == ERROR_SUCCESS ? DoRunPrintUI(szCommand) : dwCode;
}

// ---- drivers --------------------------------------------------------------------------------------------------------

/// The folder of an INF without a backslash at its end; the root of a drive keeps its own.
std::string FolderWithoutBackslash(LPCSTR lpszInfPath) {
    const PathParts parts = SplitPath(TextOrEmpty(lpszInfPath));
    std::string strFolder = parts.strDrive + parts.strDirectory;
    const bool bIsRoot = parts.strDirectory.size() == 1;
    if (!bIsRoot) {
        DropTrailingBackslash(strFolder);
    }
    return strFolder;
}

DWORD AddDriver(LPCSTR lpszInfPath, LPCSTR lpszModelName, DWORD dwVersion, DWORD dwProcessor) {
    // An empty path or model isn't refused: the Print UI has the last word on both.
    char szVersion[kVersionPartSize] = {};
    DWORD dwCode = MakeVersionStringForPrintUI(dwVersion, dwProcessor, szVersion, sizeof szVersion);
    const std::string strFolder = FolderWithoutBackslash(lpszInfPath);
    ConvertedText infPath;
    ConvertedText folder;
    if (dwCode == ERROR_SUCCESS) {
        dwCode = infPath.Convert(lpszInfPath);
    }
    if (dwCode == ERROR_SUCCESS) {
        dwCode = folder.Convert(strFolder.c_str());
    }
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    // The model name goes in as it is, a double quote in it as well.
    char szCommand[kCommandLineSize];
    dwCode = FormatBounded(
        szCommand, sizeof szCommand,
        IsVistaGeneration() ? "/ia /m\"%s\" /f\"%s\" /l\"%s\" %s" : "/ia /m\"%s\" /f\"%s\" /l\"%s\" %s /q",
        TextOrEmpty(lpszModelName), infPath.Get(), folder.Get(), szVersion);
    return dwCode == ERROR_SUCCESS ? DoRunPrintUI(szCommand) : dwCode;
}

// ---- printers -------------------------------------------------------------------------------------------------------

/// What a printer is made of.
struct PrinterRequest {
    LPCSTR lpszInfPath;
    LPCSTR lpszPrinterName;
    LPCSTR lpszModelName;
    LPCSTR lpszPortName;
    LPCSTR lpszShareName;
    DWORD dwShareFlag;

    bool IsComplete() const {
        return !IsEmpty(lpszInfPath) && !IsEmpty(lpszPrinterName) && !IsEmpty(lpszModelName) &&
               !IsEmpty(lpszPortName) && (dwShareFlag == 0 || !IsEmpty(lpszShareName));
    }
};

DWORD RunInstall(const PrinterRequest& request) {
    ConvertedText printerName;
    ConvertedText portName;
    ConvertedText infPath;
    DWORD dwCode = printerName.Convert(request.lpszPrinterName);
    if (dwCode == ERROR_SUCCESS) {
        dwCode = portName.Convert(request.lpszPortName);
    }
    if (dwCode == ERROR_SUCCESS) {
        dwCode = infPath.Convert(request.lpszInfPath);
    }
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    char szInstall[kCommandLineSize];
    dwCode = FormatBounded(
        szInstall, sizeof szInstall,
        IsVistaGeneration() ? "/if /b\"%s\" /f\"%s\" /r\"%s\" /m\"%s\"" : "/if /b\"%s\" /f\"%s\" /r\"%s\" /m\"%s\" /q",
        printerName.Get(), infPath.Get(), portName.Get(), request.lpszModelName);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    char szCommand[kCommandLineSize];
    dwCode = FormatBounded(szCommand, sizeof szCommand, request.dwShareFlag == 1 ? "%s /Z" : "%s /z", szInstall);
    return dwCode == ERROR_SUCCESS ? DoRunPrintUI(szCommand) : dwCode;
}

/// True when the system has a port that doesn't stand for one of a remote session's client. Ports that can't be listed
/// count as none.
bool IsOwnPort(LPCSTR lpszPortName) {
    HeapBlock block;
    DWORD dwReturned = 0;
    const DWORD dwCode = ReadSpoolerBlock(block, [&](LPBYTE pBuffer, DWORD cbBuffer, LPDWORD pcbNeeded) {
        return Platform().EnumPortsA(nullptr, 2, pBuffer, cbBuffer, pcbNeeded, &dwReturned);
    });
    if (dwCode != ERROR_SUCCESS || !block) {
        return false;
    }
    const auto* pPorts = static_cast<const PORT_INFO_2A*>(block.Get());
    for (DWORD i = 0; i < dwReturned; ++i) {
        if (EqualNoCase(TextOrEmpty(pPorts[i].pPortName), lpszPortName)) {
            return (pPorts[i].fPortType & PORT_TYPE_REDIRECTED) == 0;  // the first of the name decides
        }
    }
    return false;
}

DWORD InstallPrinter(const PrinterRequest& request) {
    if (!request.IsComplete()) {
        return ERROR_INVALID_PARAMETER;
    }
    const DWORD dwCode = RunInstall(request);
    if (dwCode == ERROR_SUCCESS && request.dwShareFlag != 0 && IsOwnPort(request.lpszPortName)) {
        return DoChangeShareNameToPrintUI(request.lpszPrinterName, request.lpszShareName);
    }
    return dwCode;
}

}  // namespace

DWORD DoChangeShareNameToPrintUI(LPCSTR lpszPrinterName, LPCSTR lpszShareName) {
    WriteLog("DoChangeShareNameToPrintUI Start");
    DWORD dwCode = ChangeShareName(lpszPrinterName, lpszShareName);
    if (HasByteMask(dwCode, kInsufficientBufferMask)) {
        dwCode = ERROR_SUCCESS;
    }
    WriteLog("DoChangeShareNameToPrintUI End(0x%08x)", dwCode);
    return dwCode;
}

DWORD DoAddDriverToPrintUI(LPCSTR lpszInfPath, LPCSTR lpszModelName, DWORD dwVersion, DWORD dwProcessor) {
    WriteLog("DoAddDriverToPrintUI Start");
    const DWORD dwCode = AddDriver(lpszInfPath, lpszModelName, dwVersion, dwProcessor);
    WriteLog("DoAddDriverToPrintUI End(0x%08x)", dwCode);
    return dwCode;
}

DWORD DoInstallPrinterToPrintUI(LPCSTR lpszInfPath, LPCSTR lpszPrinterName, LPCSTR lpszModelName, LPCSTR lpszPortName,
                                LPCSTR lpszShareName, LPCSTR /*lpszSpare*/, DWORD dwShareFlag) {
    WriteLog("DoInstallPrinterToPrintUI Start");
    const DWORD dwCode =
        InstallPrinter({lpszInfPath, lpszPrinterName, lpszModelName, lpszPortName, lpszShareName, dwShareFlag});
    WriteLog("DoInstallPrinterToPrintUI End(0x%08x)", dwCode);
    return dwCode;
}

}  // namespace pikel
