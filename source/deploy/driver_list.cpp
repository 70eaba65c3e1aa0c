// The models that an INF offers to a system.
#include "deploy/driver_list.h"

#include "frame/log.h"
#include "frame/packer.h"
#include "inf_store/inf_search.h"

namespace pikel {

namespace {

/// Bytes of a name in the block beside its characters: 8 for its pointer, 1 for its NUL. The same on every processor,
/// so that the size of a list doesn't depend on who made it; where pointers take 4 bytes the rest of the block is
/// unused.
constexpr SIZE_T kBytesBesideName = 9;

/// Packs the names into one block of the process heap.
/// @param ppList, pdwCount [out]  untouched on failure
/// @return 0, or 8 without memory
DWORD PackDriverList(const StringList& vecModels, LPSTR** ppList, LPDWORD pdwCount) {
    SIZE_T size = 0;
    for (const std::string& strModel : vecModels) {
        size += strModel.size() + kBytesBesideName;
    }
    HeapBlock block = AllocateHeap(size);
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    Packer packer(block.Get());
    LPSTR* ppNames = packer.Take<LPSTR>(vecModels.size());
    LPSTR* ppName = ppNames;
    for (const std::string& strModel : vecModels) {
        *ppName++ = packer.Text(strModel);
    }
    block.Release();  // the caller's from here on
    *ppList = ppNames;
    *pdwCount = static_cast<DWORD>(vecModels.size());
    return ERROR_SUCCESS;
}

}  // namespace

DWORD PI_GetDriverListFromInf(LPCSTR infPath, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion,
                              LPSTR** ppList, LPDWORD pdwCount) {
    if (ppList == nullptr || pdwCount == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *ppList = nullptr;
    *pdwCount = 0;
    if (infPath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("PI_GetDriverListFromInf Start");
    StringList vecModels;
    DWORD dwStatus =
        GetInfModelList(infPath, dwArchitecture, dwMajorVersion, dwMinorVersion, vecModels, NoModels::AreNone);
    // The names of a read that stopped half-way are handed out together with its code.
    if (!vecModels.empty()) {
        const DWORD dwPackStatus = PackDriverList(vecModels, ppList, pdwCount);
        if (dwPackStatus != ERROR_SUCCESS) {
            dwStatus = dwPackStatus;
        }
    }
    WriteLogDetail("PI_GetDriverListFromInf End");
    return dwStatus;
}

}  // namespace pikel
