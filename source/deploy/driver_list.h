// The models that an INF offers to a system.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Hands out the models that an INF offers to a system, as one block.
/// @param infPath         full path of the INF, active code page. Required.
/// @param dwArchitecture, dwMajorVersion, dwMinorVersion  as in GetInfModelList
/// @param ppList [out]    one heap block: *pdwCount pointers, then the names. The caller frees it. Null when there is
///                        no name; filled as well when a read stopped half-way, so it is to be freed on failure too.
/// @param pdwCount [out]  number of names
/// @return 0; 87 for a null argument; 8 without memory; else the code of GetInfModelList; an INF that has no models
/// section for the
///         system gives 0 and no name
DWORD PI_GetDriverListFromInf(LPCSTR infPath, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion,
                              LPSTR** ppList, LPDWORD pdwCount);

}  // namespace pikel
