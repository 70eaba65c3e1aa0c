// Browses the network for shared printers: through the network providers on the 9x family, through the spooler
// elsewhere.
#include "system/net_resources.h"

#include <algorithm>
#include <array>
#include <utility>

#include "frame/log.h"
#include "frame/os_identity.h"
#include "spooler/spooler_read.h"
#include "system/resource_list.h"

namespace pikel {
namespace {

constexpr DWORD kAllEntries = 0xFFFFFFFF;
constexpr DWORD kEnumBufferSize = 0x4000;
constexpr DWORD kProviderNameSize = 260;

// ---- kinds ------------------------------------------------------------------------------------------------------

/// Values of ResourceKind.
enum : DWORD {
    KindUnknown = 0,
    KindNetwork = 1,
    KindDomain = 2,
    KindServer = 3,
    KindQueue = 4,
    KindPrinter = 5,
    KindOtherShare = 6,
};

DWORD KindOfShare(DWORD dwType) {
    switch (dwType) {
        case RESOURCETYPE_PRINT:
            return KindQueue;
        case RESOURCETYPE_DISK | RESOURCETYPE_PRINT:
            return KindOtherShare;
        default:
            return KindUnknown;
    }
}

DWORD KindOfEntry(const NETRESOURCEA& entry) {
    switch (entry.dwDisplayType) {
        case RESOURCEDISPLAYTYPE_GENERIC:
        case RESOURCEDISPLAYTYPE_NETWORK:
        case RESOURCEDISPLAYTYPE_TREE:
        case RESOURCEDISPLAYTYPE_NDSCONTAINER:
            return KindNetwork;
        case RESOURCEDISPLAYTYPE_DOMAIN:
            return KindDomain;
        case RESOURCEDISPLAYTYPE_SERVER:
            return KindServer;
        case RESOURCEDISPLAYTYPE_SHARE:
            return KindOfShare(entry.dwType);
        default:
            return KindUnknown;
    }
}

/// The first test that holds decides.
DWORD KindOfFlags(DWORD dwFlags) {
    constexpr std::array<std::pair<DWORD, DWORD>, 5> kTests = {{
        {PRINTER_ENUM_ICON1, KindNetwork},
        {PRINTER_ENUM_ICON2, KindDomain},
        {PRINTER_ENUM_ICON3, KindServer},
        {PRINTER_ENUM_ICON8, KindQueue},
        {PRINTER_ENUM_NAME, KindPrinter},
    }};
    for (const auto& [dwBit, dwKind] : kTests) {
        if ((dwFlags & dwBit) != 0) {
            return dwKind;
        }
    }
    return dwFlags == 0 ? KindQueue : KindUnknown;
}

// ---- records ----------------------------------------------------------------------------------------------------

/// Record of a node, its texts those of the source.
/// @param szShort  room for the short name, which lives there
NetResourceRecord MakeRecord(DWORD dwUsage, DWORD dwKind, LPSTR lpszRemoteName, LPSTR lpszGiven,
                             char (&szShort)[kShortNameSize]) {
    NetResourceRecord record{};
    record.Usage = dwUsage;
    record.ResourceKind = dwKind;
    record.RemoteName = lpszRemoteName;
    if (GetShortName(lpszRemoteName, lpszGiven, dwKind, szShort, kShortNameSize)) {
        record.ShortName = szShort;
    }
    return record;
}

/// Writes a text that is there.
void LogText(LPCSTR lpszFormat, LPCSTR lpszText) {
    if (lpszText != nullptr) {
        WriteLog(lpszFormat, lpszText);
    }
}

// ---- the network providers of the 9x family ---------------------------------------------------------------------

/// The provider's own code in the place of "extended error"; other codes stay.
DWORD ResolveExtendedError(DWORD dwCode) {
    if (dwCode != ERROR_EXTENDED_ERROR) {
        return dwCode;
    }
    DWORD dwError = dwCode;
    char szText[kProviderNameSize] = "";
    char szProvider[kProviderNameSize] = "";
    Platform().WNetGetLastErrorA(&dwError, szText, sizeof szText, szProvider, sizeof szProvider);
    return dwError;
}

DWORD OpenEnumeration(const NetResourceRecord* pParent, NetworkEnumeration& enumeration) {
    NETRESOURCEA resource{};
    if (pParent != nullptr) {
        resource.dwUsage = pParent->Usage;
        resource.lpRemoteName = pParent->RemoteName;
        resource.lpProvider = pParent->Provider;
    }
    HANDLE hEnum = nullptr;
    const DWORD dwCode = Platform().WNetOpenEnumA(RESOURCE_GLOBALNET, RESOURCETYPE_ANY, 0,
                                                  pParent != nullptr ? &resource : nullptr, &hEnum);
    if (dwCode == ERROR_SUCCESS) {
        enumeration.Reset(hEnum);
    }
    return dwCode;
}

/// How the read of an enumeration ended.
struct EntryBatch {
    HeapBlock buffer;
    DWORD dwCount = 0;
    DWORD dwCode = ERROR_SUCCESS;
    bool bClosed = false;  ///< the enumeration failed and is closed, with its own end of the log
};

/// Closes an enumeration that failed. @return the code, with the provider's own in the place of "extended error"
DWORD EndWithError(NetworkEnumeration& enumeration, DWORD dwCode) {
    if (dwCode == ERROR_EXTENDED_ERROR) {
        WriteLog("WNetEnumSharePrinters - ExtendedError:%d", dwCode);
        dwCode = ResolveExtendedError(dwCode);
    }
    enumeration.Reset();
    WriteLog("WNetEnumSharePrinters - Error:%d", dwCode);
    return dwCode;
}

/// Reads the first batch of entries, with a buffer that grows until it holds one. Nothing is asked for a second time:
/// what fits the buffer is all that is seen.
EntryBatch ReadEntries(NetworkEnumeration& enumeration) {
    EntryBatch batch;
    DWORD dwAllocated = kEnumBufferSize;
    batch.buffer = AllocateHeap(dwAllocated);
    if (!batch.buffer) {
        batch.dwCode = ERROR_NOT_ENOUGH_MEMORY;
        return batch;
    }
    for (;;) {
        DWORD dwCount = kAllEntries;
        DWORD dwSize = dwAllocated;
        const DWORD dwCode = Platform().WNetEnumResourceA(enumeration.Get(), &dwCount, batch.buffer.Get(), &dwSize);
        if (dwCode == ERROR_SUCCESS || dwCode == ERROR_NO_MORE_ITEMS) {
            // A count that was left as it went in stands for none, and no buffer holds more than its size allows.
            const DWORD dwMost = dwAllocated / static_cast<DWORD>(sizeof(NETRESOURCEA));
            batch.dwCount = dwCount == kAllEntries ? 0 : std::min(dwCount, dwMost);
            return batch;
        }
        batch.buffer.Reset();
        // A size that was refused already would be refused for ever.
        if (dwCode != ERROR_MORE_DATA || dwSize <= dwAllocated) {
            batch.dwCode = EndWithError(enumeration, dwCode);
            batch.bClosed = true;
            return batch;
        }
        dwAllocated = dwSize;
        batch.buffer = AllocateHeap(dwAllocated);
        if (!batch.buffer) {
            batch.dwCode = ERROR_NOT_ENOUGH_MEMORY;
            WriteLog("WNetEnumSharePrinters - Alloc Error:%d", batch.dwCode);
            return batch;
        }
    }
}

void LogEntry(const NETRESOURCEA& entry) {
    LogText("lpRemoteName:%s", entry.lpRemoteName);
    LogText("lpComment:%s", entry.lpComment);
    LogText("lpProvider:%s", entry.lpProvider);
    LogText("lpLocalName:%s", entry.lpLocalName);
    WriteLog("dwDisplayType:%d", entry.dwDisplayType);
    WriteLog("dwScope:%d", entry.dwScope);
    WriteLog("dwType:%d", entry.dwType);
    WriteLog("dwUsage:%d", entry.dwUsage);
    WriteLog("%s", "");
}

/// Builds the list of a batch; an empty one gives no block.
DWORD BuildEntryList(const EntryBatch& batch, ResourceList& list) {
    if (batch.dwCount == 0) {
        return ERROR_SUCCESS;
    }
    const auto* pEntries = static_cast<const NETRESOURCEA*>(batch.buffer.Get());
    char szShort[kShortNameSize];
    const DWORD dwCode = PackResources(
        batch.dwCount,
        [&](DWORD i) {
            const NETRESOURCEA& entry = pEntries[i];
            NetResourceRecord record =
                MakeRecord(entry.dwUsage, KindOfEntry(entry), entry.lpRemoteName, nullptr, szShort);
            record.Comment = entry.lpComment;
            record.Provider = entry.lpProvider;
            return record;
        },
        list);
    if (dwCode == ERROR_SUCCESS) {
        std::for_each(pEntries, pEntries + batch.dwCount, LogEntry);
    }
    return dwCode;
}

/// Lists the children of one node of the 9x family's networks.
/// @param pParent     null: the providers of the system
/// @param list [out]  no block for an empty list, and on failure
DWORD WNetEnumSharePrinters(const NetResourceRecord* pParent, ResourceList& list) {
    WriteLog("WNetEnumSharePrinters - Start");
    list = {};
    if (pParent != nullptr && (pParent->Usage & RESOURCEUSAGE_CONTAINER) == 0) {
        return ERROR_SUCCESS;
    }
    NetworkEnumeration enumeration;
    DWORD dwCode = ResolveExtendedError(OpenEnumeration(pParent, enumeration));
    if (!enumeration) {
        WriteLog("WNetEnumSharePrinters - End:%d", dwCode);
        return dwCode;
    }
    EntryBatch batch = ReadEntries(enumeration);
    dwCode = batch.dwCode;
    if (batch.bClosed) {
        return dwCode;
    }
    if (dwCode == ERROR_SUCCESS) {
        dwCode = BuildEntryList(batch, list);
    }
    batch.buffer.Reset();
    enumeration.Reset();
    WriteLog("WNetEnumSharePrinters - End:%d", dwCode);
    return dwCode;
}

/// Lists the top of one provider. A provider that isn't there, or that fails, has an empty list.
void EnumProviderRoot(DWORD dwNetType, ResourceList& list) {
    char szProvider[kProviderNameSize] = "";
    DWORD dwSize = sizeof szProvider;
    if (Platform().WNetGetProviderNameA(dwNetType, szProvider, &dwSize) != ERROR_SUCCESS) {
        return;
    }
    NetResourceRecord root{};
    root.Usage = RESOURCEUSAGE_CONTAINER;
    root.Provider = szProvider;
    WNetEnumSharePrinters(&root, list);
}

/// Lists the tops of the two networks of the 9x family, one behind the other.
DWORD EnumProviderRoots(ResourceList& list) {
    ResourceList lanMan;
    ResourceList netWare;
    EnumProviderRoot(WNNC_NET_LANMAN, lanMan);
    EnumProviderRoot(WNNC_NET_NETWARE, netWare);
    const DWORD dwCount = lanMan.dwCount + netWare.dwCount;
    if (dwCount == 0) {
        return ERROR_SUCCESS;
    }
    return PackResources(
        dwCount, [&](DWORD i) { return i < lanMan.dwCount ? lanMan.At(i) : netWare.At(i - lanMan.dwCount); }, list);
}

// ---- the spooler of the other systems ---------------------------------------------------------------------------

void LogPrinters(const PRINTER_INFO_1A* pPrinters, DWORD dwCount) {
    for (DWORD i = 0; i < dwCount; ++i) {
        WriteLog("Flags:%d", pPrinters[i].Flags);
        LogText("pComment:%s", pPrinters[i].pComment);
        LogText("pName:%s", pPrinters[i].pName);
        LogText("pDescription:%s", pPrinters[i].pDescription);
    }
}

DWORD EnumBySpooler(const NetResourceRecord* pParent, ResourceList& list) {
    HeapBlock block;
    DWORD dwCount = 0;
    const DWORD dwCode =
        EnumPrinterInfo(PRINTER_ENUM_NAME, pParent != nullptr ? pParent->RemoteName : nullptr, 1, block, &dwCount);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    const auto* pPrinters = static_cast<const PRINTER_INFO_1A*>(block.Get());
    LogPrinters(pPrinters, dwCount);
    char szShort[kShortNameSize];
    return PackResources(
        dwCount,
        [&](DWORD i) {
            const PRINTER_INFO_1A& printer = pPrinters[i];
            NetResourceRecord record =
                MakeRecord(printer.Flags, KindOfFlags(printer.Flags), printer.pName, printer.pDescription, szShort);
            record.Comment = printer.pComment;
            return record;
        },
        list);
}

// ---- the choice -------------------------------------------------------------------------------------------------

DWORD EnumChildren(const NetResourceRecord* pParent, ResourceList& list) {
    if (!HasOsClass(OsClass9xFamily)) {
        return EnumBySpooler(pParent, list);
    }
    return pParent != nullptr ? WNetEnumSharePrinters(pParent, list) : EnumProviderRoots(list);
}

/// Hands a list out as a block of the caller's, also an empty one.
DWORD HandOut(const ResourceList& list, NetResourceRecord** ppBlock, DWORD* pdwCount) {
    ResourceList copy;
    const DWORD dwCode = PackResources(
        list.dwCount, [&](DWORD i) { return list.At(i); }, copy);
    if (dwCode == ERROR_SUCCESS) {
        *ppBlock = static_cast<NetResourceRecord*>(copy.block.Release());
        *pdwCount = copy.dwCount;
    }
    return dwCode;
}

}  // namespace

DWORD DoEnumNetResources(const NetResourceRecord* pParent, NetResourceRecord** ppBlock, DWORD* pdwCount) {
    WriteLog("DoEnumNetResources Start");
    DWORD dwCode = ERROR_INVALID_PARAMETER;
    ResourceList list;  // goes behind the last line
    if (ppBlock != nullptr && pdwCount != nullptr) {
        *ppBlock = nullptr;
        *pdwCount = 0;
        dwCode = EnumChildren(pParent, list);
        if (dwCode == ERROR_SUCCESS) {
            dwCode = HandOut(list, ppBlock, pdwCount);
        }
    }
    WriteLog("DoEnumNetResources End:(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
