// Placing an INF in the system's INF folder, unless that folder holds one that covers it.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Tells by model names whether an INF has to be copied: not when one INF of the provider and class in the folder holds
/// all its models.
/// @param lpszFolder      with its closing backslash
/// @param dwStatus [out]  0, or the code of the INF or candidate whose models could not be read
/// @return 1 or 0
DWORD IsInfNewForModels(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                        LPCSTR lpszProvider, LPCSTR lpszClass, DWORD& dwStatus);

/// The same by text: not when one INF of the provider and class in the folder has the same lines, case apart.
/// @param pdwStatus [out]  status of the search
/// @return 1 or 0; 0 also when an argument is null
DWORD IsInfTextNew(LPCSTR lpszInfFile, LPCSTR lpszFolder, LPCSTR lpszProvider, LPCSTR lpszClass, LPDWORD pdwStatus);

// The routes. All take the folder with its closing backslash; a name that doesn't fit into 259 bytes is a copy that
// fails with 206. dwFlag is read by InfFileCopy2k alone.
DWORD InfFileCopy95(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag);
DWORD InfFileCopy98(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag);
DWORD InfFileCopyNT(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag);
DWORD InfFileCopy2k(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszFolder,
                    LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag);

/// Places an INF by the route of the running system.
/// @param lpszInfFile              path of the INF. Required.
/// @param dwProcessor, dwMajor, dwMinor  system whose models count
/// @param lpszDir                  target folder without a closing backslash; null for the system's INF folder. An
///                                 empty text is not taken for null.
/// @param lpszProvider, lpszClass  whose INFs in the folder count. Required.
/// @param dwFlag                   Windows 2000 and later: 0 leaves the placing to the system, else a plain copy
/// @return 0, also where nothing had to be copied; 87 for a null required argument; 206 for a folder whose path is too
///         long; else as the route tells
DWORD PI_InfFileCopy(LPCSTR lpszInfFile, DWORD dwProcessor, DWORD dwMajor, DWORD dwMinor, LPCSTR lpszDir,
                     LPCSTR lpszProvider, LPCSTR lpszClass, DWORD dwFlag);

}  // namespace pikel
