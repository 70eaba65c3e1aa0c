// A printer's share on the 9x family: kept by the network library and in a registry key of its own.
#include "printer/share_registry.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "frame/log.h"
#include "platform/owned.h"
#include "spooler/spooler_read.h"

namespace pikel {
namespace {

constexpr char kNetworkLibrary[] = "svrapi.dll";
constexpr char kLanManKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Network\\LanMan";
constexpr SHORT kLevel = 50;
constexpr REGSAM kReadWrite = KEY_READ | KEY_WRITE;  // 0x2001F

/// The size that is told of a level 50 structure, also to a library for which it is smaller.
constexpr WORD kShareInfoSize = 56;
static_assert(sizeof(share_info_50) <= kShareInfoSize);

/// Room for a share's information when it is first asked for, and what is added to the size that the library reports.
constexpr WORD kShareBlockSize = 256;

std::string ShareKeyPath(LPCSTR lpszShareName) {
    return std::string(kLanManKey) + "\\" + lpszShareName;
}

// ---- texts of fixed size ----------------------------------------------------------------------------------------

/// Copies a text into a field, cut to its size.
template <std::size_t Size>
void CopyCut(char (&szTarget)[Size], LPCSTR lpszSource) {
    const std::size_t length = strnlen(lpszSource, Size - 1);
    std::memcpy(szTarget, lpszSource, length);
    szTarget[length] = '\0';
}

/// A record whose texts all end within their fields; a caller's need not.
PrinterShareRecord Terminated(const PrinterShareRecord& record) {
    PrinterShareRecord share = record;
    auto terminate = [](auto& szField) { szField[sizeof szField - 1] = '\0'; };
    terminate(share.NetName);
    terminate(share.Remark);
    terminate(share.Path);
    terminate(share.ReadWritePassword);
    terminate(share.ReadOnlyPassword);
    return share;
}

// ---- the network library's information --------------------------------------------------------------------------

/// Copies the library's information into a caller's record.
void TakeShareInfo(const share_info_50& info, PrinterShareRecord& share) {
    CopyCut(share.NetName, info.shi50_netname);
    share.ShareType = info.shi50_type;
    share.Flags = info.shi50_flags;
    if (info.shi50_remark != nullptr) {
        CopyCut(share.Remark, info.shi50_remark);
    }
    if (info.shi50_path != nullptr) {
        CopyCut(share.Path, info.shi50_path);
    }
    CopyCut(share.ReadWritePassword, info.shi50_rw_password);
    CopyCut(share.ReadOnlyPassword, info.shi50_ro_password);
}

/// Information for the network library, with as many bytes behind the structure as its size tells.
class ShareInfo {
  public:
    /// @param share           with terminated texts; must live as long as the information
    /// @param lpszEmpty       what stands for an empty remark or path
    /// @param bWithPasswords  false: both stay empty
    ShareInfo(PrinterShareRecord& share, LPSTR lpszEmpty, bool bWithPasswords) {
        share_info_50& info = m_buffer.info;
        CopyCut(info.shi50_netname, share.NetName);
        info.shi50_type = share.ShareType;
        info.shi50_flags = share.Flags;
        info.shi50_remark = Text(share.Remark, lpszEmpty);
        info.shi50_path = Text(share.Path, lpszEmpty);
        if (bWithPasswords) {
            CopyCut(info.shi50_rw_password, share.ReadWritePassword);
            CopyCut(info.shi50_ro_password, share.ReadOnlyPassword);
        }
    }
    LPCSTR Bytes() const { return reinterpret_cast<LPCSTR>(&m_buffer); }
    WORD Size() const { return m_wSize; }

  private:
    /// Counts a text that isn't empty, with its NUL.
    LPSTR Text(LPSTR lpszText, LPSTR lpszEmpty) {
        if (*lpszText == '\0') {
            return lpszEmpty;
        }
        m_wSize = static_cast<WORD>(m_wSize + std::strlen(lpszText) + 1);
        return lpszText;
    }

    struct alignas(void*) {
        share_info_50 info;
        char room[kShareInfoSize + sizeof(PrinterShareRecord::Remark) + sizeof(PrinterShareRecord::Path)];
    } m_buffer = {};
    WORD m_wSize = kShareInfoSize;
};

/// Asks for a share's information with blocks that grow as the library demands.
/// @param block  the first one, of kShareBlockSize bytes
DWORD ReadShareInfo(looked_up::NetShareGetInfo pfnGetInfo, LPCSTR lpszShareName, HeapBlock block,
                    PrinterShareRecord& share) {
    WORD wSize = kShareBlockSize;
    for (;;) {
        WORD wNeeded = 0;
        const DWORD dwCode =
            pfnGetInfo(nullptr, lpszShareName, kLevel, static_cast<LPSTR>(block.Get()), wSize, &wNeeded);
        if (dwCode == ERROR_SUCCESS) {
            TakeShareInfo(*static_cast<const share_info_50*>(block.Get()), share);
        }
        if (dwCode != NERR_BufTooSmall) {
            return dwCode;
        }
        const WORD wNext = static_cast<WORD>(wNeeded + kShareBlockSize);
        if (wNext <= wSize) {
            return dwCode;  // beyond 16 bits, or no more than was refused already: there would be no end
        }
        wSize = wNext;
        block.Reset();  // the old block goes before the new one is asked for
        block = AllocateHeap(wSize);
        if (!block) {
            return dwCode;
        }
    }
}

// ---- the registry -----------------------------------------------------------------------------------------------

LSTATUS CreateKey(LPCSTR lpszPath, RegistryKey& key) {
    HKEY hKey = nullptr;
    const LSTATUS lCode =
        Platform().RegCreateKeyExA(HKEY_LOCAL_MACHINE, lpszPath, 0, nullptr, 0, kReadWrite, nullptr, &hKey, nullptr);
    if (lCode == ERROR_SUCCESS) {
        key.Reset(hKey);
    }
    return lCode;
}

void SetNumber(HKEY hKey, LPCSTR lpszName, DWORD dwNumber) {
    Platform().RegSetValueExA(hKey, lpszName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&dwNumber), sizeof dwNumber);
}

/// Writes a text with its NUL.
void SetTerminatedText(HKEY hKey, LPCSTR lpszName, std::string_view text) {
    Platform().RegSetValueExA(hKey, lpszName, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                              static_cast<DWORD>(text.size() + 1));
}

/// The system keeps the share's passwords in these values. They stay empty: what their bytes mean is its own affair.
void SetEmpty(HKEY hKey, LPCSTR lpszName) {
    constexpr BYTE nothing = 0;
    Platform().RegSetValueExA(hKey, lpszName, 0, REG_BINARY, &nothing, 0);
}

/// Enters a share into the registry. @return 0, or the code with which its key could not be made
DWORD WriteShareKey(const PrinterShareRecord& share) {
    RegistryKey key;
    CreateKey(kLanManKey, key);  // the share's key tells whether this worked
    key.Reset();
    if (const LSTATUS lCode = CreateKey(ShareKeyPath(share.NetName).c_str(), key); lCode != ERROR_SUCCESS) {
        return static_cast<DWORD>(lCode);
    }
    SetNumber(key.Get(), "Flags", share.Flags);
    SetNumber(key.Get(), "Type", share.ShareType);
    SetTerminatedText(key.Get(), "Path", share.Path);
    SetTerminatedText(key.Get(), "Remark", share.Remark);
    SetEmpty(key.Get(), "Parm1enc");
    SetEmpty(key.Get(), "Parm2enc");
    return ERROR_SUCCESS;
}

/// Tells the shell that a printer changed, and then what became of its share.
void NotifyShell(LPCSTR lpszPrinter, LONG lShareEvent) {
    Platform().SHChangeNotify(SHCNE_UPDATEITEM, SHCNF_PRINTERA, lpszPrinter, nullptr);
    PumpMessages();
    Platform().SHChangeNotify(lShareEvent, SHCNF_PRINTERA, lpszPrinter, nullptr);
    PumpMessages();
}

}  // namespace

DWORD GetSharePrinter9x(LPCSTR lpszShareName, PrinterShareRecord* pShare) {
    WriteLog("GetSharePrinter9x() - Start");
    if (lpszShareName == nullptr || pShare == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    LookedUp<looked_up::NetShareGetInfo> getInfo(kNetworkLibrary, "NetShareGetInfo");
    if (!getInfo) {
        return getInfo.Status();
    }
    DWORD dwCode = ERROR_SUCCESS;
    // Without memory for the first block the answer is 0 with an untouched record: a printer is still read then, with
    // an empty share, where a code would end the whole read.
    if (HeapBlock block = AllocateHeap(kShareBlockSize)) {
        dwCode = ReadShareInfo(getInfo.Call(), lpszShareName, std::move(block), *pShare);
    }
    getInfo.Free();
    WriteLog("GetSharePrinter9x() - End(%d)", dwCode);
    return dwCode;
}

DWORD SetSharePrinter9x(LPCSTR lpszShareName, const PrinterShareRecord* pRecord) {
    WriteLog("SetSharePrinter9x() - Start");
    if (lpszShareName == nullptr || pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    LookedUp<looked_up::NetShareSetInfo> setInfo(kNetworkLibrary, "NetShareSetInfo");
    if (!setInfo) {
        return setInfo.Status();
    }
    char szEmpty[] = "";
    PrinterShareRecord share = Terminated(*pRecord);
    const ShareInfo info(share, szEmpty, true);
    const DWORD dwCode = setInfo.Call()(nullptr, lpszShareName, kLevel, info.Bytes(), info.Size(), 0);
    setInfo.Free();
    WriteLog("SetSharePrinter9x() - End(%d)", dwCode);
    return dwCode;
}

DWORD AddSharePrinter9x(const PrinterShareRecord* pRecord) {
    WriteLog("AddSharePrinter9x() - Start");
    if (pRecord == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    LookedUp<looked_up::NetShareAdd> add(kNetworkLibrary, "NetShareAdd");
    if (!add) {
        return add.Status();
    }
    // Unlike a change, a new share has null for an empty text and no passwords; those come by a change afterwards.
    PrinterShareRecord share = Terminated(*pRecord);
    const ShareInfo info(share, nullptr, false);
    DWORD dwCode = add.Call()(nullptr, kLevel, info.Bytes(), info.Size());
    if (dwCode == ERROR_SUCCESS) {
        dwCode = WriteShareKey(share);
        if (dwCode == ERROR_SUCCESS) {
            NotifyShell(share.Path, SHCNE_NETSHARE);
        }
    }
    add.Free();
    WriteLog("AddSharePrinter9x() - End(%d)", dwCode);
    return dwCode;
}

DWORD DeleteSharePrinter9x(LPCSTR lpszShareName, LPCSTR lpszPrinterName) {
    WriteLog("DeleteSharePrinter9x() - Start");
    if (lpszShareName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    LookedUp<looked_up::NetShareDel> del(kNetworkLibrary, "NetShareDel");
    if (!del) {
        return del.Status();
    }
    const DWORD dwCode = del.Call()(nullptr, lpszShareName, 0);
    if (dwCode == ERROR_SUCCESS) {
        const std::string strPath = ShareKeyPath(lpszShareName);
        if (const LSTATUS lCode = Platform().RegDeleteKeyA(HKEY_LOCAL_MACHINE, strPath.c_str());
            lCode != ERROR_SUCCESS) {
            WriteLog("DeleteSharePrinter9x()-DeleteSubKey(%s):%d", strPath.c_str(), static_cast<DWORD>(lCode));
        }
        NotifyShell(lpszPrinterName, SHCNE_NETUNSHARE);
        // Nothing is opened that this would close, and the system keeps its roots: the call alone is seen, in a trace.
        Platform().RegCloseKey(HKEY_LOCAL_MACHINE);
    }
    del.Free();
    WriteLog("DeleteSharePrinter9x() - End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
