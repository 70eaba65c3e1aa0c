// Replaces the files of an installed driver while the system may be using them: expanded into a staging folder,
// compared with what is installed, and placed at once or at the next restart.
#pragma once

#include "platform/types.h"

namespace pikel {

/// @param lpszInfPath        full path of the INF; its folder is the source of the files. Required.
/// @param lpszDriverName     key of the model. Required.
/// @param dwCopyNameMode     see CollectCopyFileLists; other bits are refused
/// @param pdwRestartNeeded   [out] 1 when a file in use is replaced at the next restart, else 0. Required.
/// @param lpszStagingFolder  belongs to the operation: made when missing, one level only, and its files are deleted at
///                           the start and at the end. Required.
/// @param dwInfArchitecture  the dwArchitecture that the INF is written for
/// @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system, for the choice of the models section
/// @return 0; 87 for a missing argument or a bad mode; the code of the staging folder, of the INF or of a section; else
///         the code of a replacement at restart that could not be arranged. A file that can't be expanded or copied
///         into place is passed over. Files placed before a failure stay.
DWORD DoCopyInfDriverFilesEx(LPCSTR lpszInfPath, LPCSTR lpszDriverName, DWORD dwCopyNameMode, LPDWORD pdwRestartNeeded,
                             LPCSTR lpszStagingFolder, DWORD dwInfArchitecture, DWORD dwArchitecture,
                             DWORD dwMajorVersion, DWORD dwMinorVersion);

/// Deletes the files of a folder that match a pattern, read-only ones too; subfolders stay. Failures are not looked at.
void DeleteFilesInFolder(LPCSTR lpszFolder, LPCSTR lpszPattern);

}  // namespace pikel
