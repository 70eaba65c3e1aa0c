// The models that an INF offers to a system.
#pragma once

#include "frame/string_list.h"
#include "platform/types.h"

namespace pikel {

/// Reads the model names of the first models section that an INF has for a system.
/// @param infPath          full path of the INF
/// @param dwArchitecture   handed on to the choice of the section, where it has no effect
/// @param dwMajorVersion, dwMinorVersion  version of the target system; low bytes count
/// @param vecModels [out]  cleared first; sorted, each name once. After a read that stopped half-way the names so far.
/// @return 0; the last error for an INF that can't be opened, 87 for a null handle of it; else the code of the section
///         that could not be read. An INF that has no models section gives 0 and no name.
DWORD ReadModelKeys(LPCSTR infPath, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion,
                    StringList& vecModels);

/// Hands out the models that an INF offers to a system, as one block.
/// @param infPath         full path of the INF, active code page. Required.
/// @param dwArchitecture, dwMajorVersion, dwMinorVersion  as in ReadModelKeys
/// @param ppList [out]    one heap block: *pdwCount pointers, then the names. The caller frees it. Null when there is
///                        no name; filled as well when a read stopped half-way, so it is to be freed on failure too.
/// @param pdwCount [out]  number of names
/// @return 0; 87 for a null argument; 8 without memory; else the code of ReadModelKeys
DWORD PI_GetDriverListFromInf(LPCSTR infPath, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion,
                              LPSTR** ppList, LPDWORD pdwCount);

}  // namespace pikel
