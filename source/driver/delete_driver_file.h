// Takes a driver out of the spooler, and with it the language monitor and the files that no other driver needs.
#pragma once

#include <string>

#include "frame/string_list.h"
#include "platform/types.h"

namespace pikel {

/// Finds out what the installed drivers use, deletes one of them, and then what only that one used. Holds no data: each
/// operation works on what it is given.
class CDeleteDriverFile {
  public:
    /// Tells which files a driver uses and which all others of the same version and environment use. File names come
    /// without folders, in upper case, sorted and once each, so that they compare byte by byte.
    ///
    /// @param dwVersion        DriverVersionCode; drivers of another one play no part
    /// @param lpszEnvironment  DriverArchitecture
    /// @param lpszName         the driver, in any case
    /// @param pDeleteFiles [out]         its files, or null when they aren't wanted; so with each of the others
    /// @param pOtherFiles [out]          files of the others
    /// @param pstrMonitorName [out]      its language monitor; empty for none and for one whose DLL can't be told
    /// @param pstrMonitorFile [out]      that monitor's DLL; empty for none and for one that can't be told
    /// @param pOtherMonitorFiles [out]   monitor DLLs of the others
    /// @return 0, or the code of the enumeration; then all that is wanted is empty
    DWORD GetFileList(DWORD dwVersion, LPCSTR lpszEnvironment, LPCSTR lpszName, StringList* pDeleteFiles,
                      StringList* pOtherFiles, std::string* pstrMonitorName, std::string* pstrMonitorFile,
                      StringList* pOtherMonitorFiles);

    /// Deletes the driver, its monitor and their files, in this order; the first code that isn't 0 ends it.
    /// @param dwProcessor      ProcessorCode
    /// @param lpszServer       null: the local spooler
    /// @param dwRestartSpooler non-zero: the spooler is restarted before the driver goes, so that it lets go of it
    DWORD DeletePrinterDriver(DWORD dwVersion, LPCSTR lpszName, DWORD dwProcessor, LPCSTR lpszServer,
                              DWORD dwRestartSpooler);

    /// Deletes the files that the others don't use, on the systems whose spooler doesn't do it.
    /// @param pDeleteFiles, pOtherFiles            null: no driver file is looked at
    /// @param pOtherMonitorFiles, pstrMonitorFile  null: no monitor file is
    /// @return 0, or the code for a driver directory that can't be had; then nothing is deleted
    DWORD DeleteDriverFiles(DWORD dwVersion, LPCSTR lpszEnvironment, const StringList* pDeleteFiles,
                            const StringList* pOtherFiles, const StringList* pOtherMonitorFiles,
                            const std::string* pstrMonitorFile);
};

/// DriverArchitecture of a driver that goes. For versions 2 and 3 the log tells it with the processor.
LPCSTR EnvironmentOfDeletion(DWORD dwVersion, DWORD dwProcessor);

}  // namespace pikel
