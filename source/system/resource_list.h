// Nodes of the network as one heap block: an array of records, and behind it their texts in a fixed order.
#pragma once

#include <utility>

#include "frame/packer.h"
#include "frame/pikel.h"

namespace pikel {

/// Room for the display part of a name. One that doesn't fit is dropped.
inline constexpr DWORD kShortNameSize = 260;

/// A block of records. No block: no records.
struct ResourceList {
    HeapBlock block;
    DWORD dwCount = 0;

    const NetResourceRecord& At(DWORD dwIndex) const {
        return static_cast<const NetResourceRecord*>(block.Get())[dwIndex];
    }
};

/// Display part of a name.
/// @param lpszName       full network name
/// @param lpszGiven      the text to show for networks and servers, or null
/// @param dwKind         ResourceKind
/// @param lpszShort [out]  dwSize bytes; an empty text for a result that doesn't fit
/// @return false, and nothing written, for a null name or buffer and a size of 0
bool GetShortName(LPCSTR lpszName, LPCSTR lpszGiven, DWORD dwKind, LPSTR lpszShort, DWORD dwSize);

/// Packs records into one block. The order of the texts of a record is fixed: comment, remote name, short name,
/// provider; a null one takes nothing.
/// @param record      NetResourceRecord(DWORD dwIndex): one source record, whose texts live until the next one is asked
///                    for. Asked for twice.
/// @param list [out]  a block also for a count of 0
/// @return 0, or 8
template <class Record>
DWORD PackResources(DWORD dwCount, Record record, ResourceList& list) {
    PackSize size;
    size.Add<NetResourceRecord>(dwCount);
    for (DWORD i = 0; i < dwCount; ++i) {
        const NetResourceRecord source = record(i);
        size.AddOptionalText(source.Comment);
        size.AddOptionalText(source.RemoteName);
        size.AddOptionalText(source.ShortName);
        size.AddOptionalText(source.Provider);
    }
    HeapBlock block = AllocateHeap(size.Size());
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    Packer packer(block.Get());
    NetResourceRecord* pTargets = packer.Take<NetResourceRecord>(dwCount);
    for (DWORD i = 0; i < dwCount; ++i) {
        const NetResourceRecord source = record(i);
        NetResourceRecord& target = pTargets[i];
        target.Usage = source.Usage;
        target.ResourceKind = source.ResourceKind;
        target.Comment = packer.OptionalText(source.Comment);
        target.RemoteName = packer.OptionalText(source.RemoteName);
        target.ShortName = packer.OptionalText(source.ShortName);
        target.Provider = packer.OptionalText(source.Provider);
    }
    list.block = std::move(block);
    list.dwCount = dwCount;
    return ERROR_SUCCESS;
}

}  // namespace pikel
