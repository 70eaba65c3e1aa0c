// [DestinationDirs], and what its identifiers mean on the running system.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel {

/// Directory identifiers that the library knows; which directory each stands for depends on the system.
enum DirID : DWORD {
    DirIDWindows = 10,
    DirIDSystem = 11,
    DirIDColor = 23,
    DirIDPrinterDriver = 66000,  ///< from here on of the NT family alone
    DirIDNtSystem = 66002,       ///< the system directory, for which 11 doesn't stand on that family
    DirIDNtColor = 66003,        ///< the system's colour directory, for which 23 doesn't stand there
};

class CInfDestinationDirsSection {
  public:
    /// Reads one line. The fields are not reset first; 1359 when the key isn't there.
    DWORD GetData(HINF hInf, LPCSTR lpszKey);

    /// All identifiers, sorted, each once.
    static DWORD GetAllDestDirID(HINF hInf, std::vector<DWORD>& vecDirIDs);

    DWORD m_dwDirID = 0;
    std::string m_strSubDir;  ///< plays no part in resolving the directory
};

DWORD GetDirectoryFromDirID95(DWORD dwDirID, LPCSTR lpszEnvironment, std::string& strDirectory);
DWORD GetDirectoryFromDirID9x(DWORD dwDirID, LPCSTR lpszEnvironment, std::string& strDirectory);
DWORD GetDirectoryFromDirIDNT(DWORD dwDirID, LPCSTR lpszEnvironment, std::string& strDirectory);

/// The directory of an identifier on the running system.
/// @param lpszEnvironment     DriverArchitecture, or null for the system's own; read on the NT family alone
/// @param strDirectory [out]  empty, with status 0, for an identifier that the system doesn't know
DWORD GetDirectoryFromDirID(DWORD dwDirID, LPCSTR lpszEnvironment, std::string& strDirectory);

}  // namespace pikel
