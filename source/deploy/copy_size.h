// How much room the files of several models take.
#pragma once

#include "platform/types.h"

namespace pikel {

/// @param lpszInfPath     full path of the INF; the files are looked for in its folder. Required.
/// @param lpszModelNames  names, each NUL terminated, with one more NUL at the end. Required.
/// @param pdwTotalSize    [out] expanded bytes of all distinct files. Required.
/// @param pdwSharedSize   [out] expanded bytes of files that further models repeat. Required.
/// @param dwCopyNameMode  see CollectCopyFileLists; other bits are refused
/// @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system
/// @return 0; 87 for a missing argument or a bad mode; else the code of the last model, and the sums are untouched
///         then. The code of an earlier model doesn't count. A file that isn't there counts as a
///         repeated one of the size of the last file found.
DWORD DoGetCopyDriverFilesSize(LPCSTR lpszInfPath, LPCSTR lpszModelNames, LPDWORD pdwTotalSize, LPDWORD pdwSharedSize,
                               DWORD dwCopyNameMode, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion);

}  // namespace pikel
