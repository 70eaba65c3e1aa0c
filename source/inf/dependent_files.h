// The list of dependent files with which a driver is registered.
#pragma once

#include <string>

#include "inf/install_section.h"

namespace pikel {

DWORD GetDependentFiles9x(DWORD dwDriverVersion, const CInfInstallSection& install, std::string& strFiles);
DWORD GetDependentFilesNT(DWORD dwDriverVersion, const CInfInstallSection& install, std::string& strFiles);
DWORD GetDependentFiles2k(DWORD dwDriverVersion, const CInfInstallSection& install, std::string& strFiles);

/// The routine of the running system.
/// @param dwDriverVersion  DriverVersionCode of the driver
/// @param strFiles [out]   multi-string, its NULs counted in the length; empty for no files
/// @return always 0
DWORD GetDependentFiles(DWORD dwDriverVersion, const CInfInstallSection& install, std::string& strFiles);

}  // namespace pikel
