// Unpacks cabinets.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Unpacks a cabinet into a folder, with the subfolders that the names in it have.
/// @param lpszCabinetPath   full path of the cabinet. Required.
/// @param lpszOutputFolder  at most 260 characters. Required. A backslash is put behind it in any case.
/// @return 0; 87 for a missing argument or a folder that is too long; else the last error of the system's walk. A file
///         whose name doesn't fit into 259 bytes with the folder ends the walk.
DWORD DoExtractCabFile(LPCSTR lpszCabinetPath, LPCSTR lpszOutputFolder);

}  // namespace pikel
