// Copies all the files of one model through the Setup API file queue.
#include "deploy/copy_inf_driver_files.h"

#include <string>
#include <string_view>
#include <vector>

#include "inf/destination_dirs_section.h"
#include "inf/inf_access.h"
#include "frame/architecture.h"
#include "frame/log.h"
#include "frame/os_identity.h"
#include "platform/owned.h"

namespace pikel {

namespace {

/// A step of the copy that failed. Never leaves CopyInfDriverFiles.
struct StepFailure {
    DWORD dwCode;
};

void Check(DWORD dwCode) {
    if (dwCode != 0) {
        throw StepFailure{dwCode};
    }
}

/// For calls that leave their code in the last error.
void CheckCall(bool succeeded) {
    if (!succeeded) {
        throw StepFailure{Platform().GetLastError()};
    }
}

/// Tells the open INF where its directory identifiers lie for the chosen architecture, which need not be the running
/// one. A directory that can't be had is told as an empty path.
void SetDirectories(HINF hInf, DWORD dwArchitecture) {
    std::vector<DWORD> vecDirIDs;
    Check(CInfDestinationDirsSection::GetAllDestDirID(hInf, vecDirIDs));
    LPCSTR lpszEnvironment = DriverArchitectureOf(dwArchitecture);
    for (DWORD dwDirID : vecDirIDs) {
        std::string strDirectory;
        GetDirectoryFromDirID(dwDirID, lpszEnvironment, strDirectory);
        Platform().SetupSetDirectoryIdA(hInf, dwDirID, strDirectory.c_str());
    }
}

/// What stands before the last backslash, byte by byte; a path without one as a whole.
std::string SourceDirectoryOf(std::string_view infPath) {
    return std::string(infPath.substr(0, infPath.rfind('\\')));
}

}  // namespace

namespace InfHelper {

/// What one copy works with. It goes from the last member to the first.
struct CInfPrinter::Job {
    InfHandle inf;
    FileQueueHandle queue;
    QueueCallbackContext context;
    std::string strSource;            ///< folder of the INF
    PSP_FILE_CALLBACK_A pfnCallback;  ///< the caller's, or null
};

void CInfPrinter::CopyFiles(Job& job, HWND hwndOwner, HWND hwndProgress) {
    job.queue.Reset(Platform().SetupOpenFileQueue());
    CheckCall(static_cast<bool>(job.queue));
    job.context.Reset(Platform().SetupInitDefaultQueueCallbackEx(hwndOwner, hwndProgress, 0, 0, nullptr));
    CheckCall(static_cast<bool>(job.context));
    CheckCall(Platform().SetupInstallFilesFromInfSectionA(job.inf.Get(), nullptr, job.queue.Get(),
                                                          m_sections.m_cModels.m_strInstallSection.c_str(),
                                                          job.strSource.c_str(), SP_COPY_FORCE_NEWER));
    // The queue needs some callback: without the caller's, the system's own works on the context that it gets anyway.
    PSP_FILE_CALLBACK_A pfnCallback =
        job.pfnCallback != nullptr ? job.pfnCallback : Platform().SetupDefaultQueueCallbackA;
    CheckCall(Platform().SetupCommitFileQueueA(hwndOwner, job.queue.Get(), pfnCallback, job.context.Get()));
}

/// Places the language monitor's own file in the system directory. A failure is logged and ends nothing.
void CInfPrinter::CopyMonitorFile(const Job& job) {
    if (CInfInstallSection::GetMonitorName(job.inf.Get(), m_sections.m_cModels.m_strInstallSection.c_str(),
                                           m_sections.m_cInstall.m_strMonitorName,
                                           m_sections.m_cInstall.m_strMonitorFile) != 0) {
        return;
    }
    const std::string& strFile = m_sections.m_cInstall.m_strMonitorFile;
    std::string strTarget = GetOsIdentity().systemDirectory + "\\" + strFile;
    BOOL bInUse = FALSE;
    if (!Platform().SetupInstallFileExA(job.inf.Get(), nullptr, strFile.c_str(), job.strSource.c_str(),
                                        strTarget.c_str(), SP_COPY_NEWER, job.pfnCallback, job.context.Get(),
                                        &bInUse)) {
        // A newer file that was kept is told as a failure with code 0.
        DWORD dwCode = Platform().GetLastError();
        if (dwCode != 0) {
            WriteLog("SetupInstallFileEx Error:%d", dwCode);
        }
    }
}

void CInfPrinter::ApplyRegistry(HINF hInf) {
    CheckCall(Platform().SetupInstallFromInfSectionA(nullptr, hInf, m_sections.m_cModels.m_strInstallSection.c_str(),
                                                     SPINST_REGISTRY, nullptr, nullptr, 0, nullptr, nullptr, nullptr,
                                                     nullptr));
}

DWORD CInfPrinter::CopyInfDriverFiles(LPCSTR lpszInfPath, LPCSTR lpszDriverName, PSP_FILE_CALLBACK_A pfnCallback,
                                      DWORD dwArchitecture, INT nMajorVersion, DWORD dwMinorVersion, HWND hwndOwner,
                                      HWND hwndProgress) {
    WriteLogDetail("InfHelper::CInfPrinter::CopyInfDriverFiles() - Start");
    DWORD dwStatus = 0;
    try {
        Job job;  // gone before the last line is written
        job.pfnCallback = pfnCallback;
        Check(OpenInf(lpszInfPath, job.inf));
        job.strSource = SourceDirectoryOf(lpszInfPath);
        Check(lpszDriverName != nullptr ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_INVALID_PARAMETER});
        Check(m_sections.ReadModel(job.inf.Get(), lpszDriverName, dwArchitecture, static_cast<DWORD>(nMajorVersion),
                                   dwMinorVersion));
        SetDirectories(job.inf.Get(), dwArchitecture);
        CopyFiles(job, hwndOwner, hwndProgress);
        if (HasOsClass(OsClassNtFamily)) {
            CopyMonitorFile(job);
        }
        ApplyRegistry(job.inf.Get());
    } catch (const StepFailure& failure) {
        dwStatus = failure.dwCode;
    }
    WriteLogDetail("InfHelper::CInfPrinter::CopyInfDriverFiles() - End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace InfHelper

DWORD PI_CopyInfDriverFiles(LPCSTR infPath, LPCSTR driverName, PSP_FILE_CALLBACK_A queueCallback, DWORD dwArchitecture,
                            INT dwMajorVersion, DWORD dwMinorVersion, HWND ownerWindow, HWND progressWindow) {
    if (infPath == nullptr || driverName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("PI_CopyInfDriverFiles Start");
    InfHelper::CInfPrinter printer;
    DWORD dwStatus = printer.CopyInfDriverFiles(infPath, driverName, queueCallback, dwArchitecture, dwMajorVersion,
                                                dwMinorVersion, ownerWindow, progressWindow);
    WriteLogDetail("PI_CopyInfDriverFiles End(%d)", dwStatus);
    return dwStatus;
}

}  // namespace pikel
