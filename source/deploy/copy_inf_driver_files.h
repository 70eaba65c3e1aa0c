// Copies all the files of one model to where its INF says, through the Setup API file queue.
#pragma once

#include "deploy/model_sections.h"
#include "platform/types.h"

namespace pikel {

namespace InfHelper {

/// One model of a printer INF, for the length of one operation.
class CInfPrinter {
  public:
    /// Queues and copies the model's files, places its language monitor's file on the NT family, and applies the
    /// registry part of its install section. Files that were copied before a failure stay.
    ///
    /// @param lpszInfPath     full path of the INF; its folder is the source of the files
    /// @param lpszDriverName  key of the model
    /// @param pfnCallback     gets the queue's notifications, with the default callback's context; null: the default
    /// @param dwArchitecture  the driver's target system; a value without a DriverArchitecture isn't refused, and the
    ///                        directories are those of the running system then
    /// @param nMajorVersion, dwMinorVersion  version of the target system; low bytes count
    /// @param hwndOwner       owner of the system's dialogs, or null
    /// @param hwndProgress    window that takes the progress messages, or null
    /// @return 0; 87 for a null name; else the code of the first step that failed; the monitor's file is no such step
    DWORD CopyInfDriverFiles(LPCSTR lpszInfPath, LPCSTR lpszDriverName, PSP_FILE_CALLBACK_A pfnCallback,
                             DWORD dwArchitecture, INT nMajorVersion, DWORD dwMinorVersion, HWND hwndOwner,
                             HWND hwndProgress);

  private:
    struct Job;

    void CopyFiles(Job& job, HWND hwndOwner, HWND hwndProgress);
    void CopyMonitorFile(const Job& job);
    void ApplyRegistry(HINF hInf);

    ModelSections m_sections;  ///< its version section is never read here
};

}  // namespace InfHelper

/// Worker of the copy operation: CInfPrinter::CopyInfDriverFiles on a fresh object.
/// @return 87 for a null path or name, else what the copy gives
DWORD PI_CopyInfDriverFiles(LPCSTR infPath, LPCSTR driverName, PSP_FILE_CALLBACK_A queueCallback, DWORD dwArchitecture,
                            INT dwMajorVersion, DWORD dwMinorVersion, HWND ownerWindow, HWND progressWindow);

}  // namespace pikel
