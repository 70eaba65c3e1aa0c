// Expands all the files of one model into a folder of the local disk, to be installed from there later.
#pragma once

#include "frame/pikel.h"

namespace pikel {

/// @param lpszInfPath      full path of the INF; its folder is the source of the files
/// @param lpszDriverName   key of the model. Required.
/// @param lpszLocalFolder  the folder to fill, which exists. Required.
/// @param pdwTotalSize     [out] bytes that this call expanded; files that were there already don't count
/// @param dwCopyNameMode   see CollectCopyFileLists; other bits are refused
/// @param pdwCount         [out] filled records
/// @param ppRecords        [out] one heap block, also after a failure part way; null without memory. May be null.
/// @param dwInfArchitecture  the dwArchitecture that the INF is written for
/// @param dwArchitecture, dwMajorVersion, dwMinorVersion  the target system, for the choice of the models section
/// @return 0; 87 for a missing argument or a bad mode; the code of the INF or of a section, and all out arguments are
///         untouched then; else the last error of the file that could not be read or expanded
DWORD DoCopyInfDriverFilesToLocal(LPCSTR lpszInfPath, LPCSTR lpszDriverName, LPCSTR lpszLocalFolder,
                                  LPDWORD pdwTotalSize, DWORD dwCopyNameMode, LPDWORD pdwCount,
                                  LocalFileRecord** ppRecords, DWORD dwInfArchitecture, DWORD dwArchitecture,
                                  DWORD dwMajorVersion, DWORD dwMinorVersion);

}  // namespace pikel
