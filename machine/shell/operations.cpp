// The shell's calls: news of changes, known folders.
#include <cstring>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/desktop/desktop.h"
#include "machine/files/files.h"
#include "machine/operations.h"
#include "machine/shell/known_folders.h"
#include "machine/shell/result.h"

namespace pikel::simulated {

namespace {

// What the items of a change are; the upper bytes of the flags tell when it is told.
constexpr UINT kItemKind = 0xff;
constexpr UINT kPathText = 1;
constexpr UINT kPrinterText = 2;

std::string ItemText(UINT flags, LPCVOID item) {
    const UINT kind = flags & kItemKind;
    return kind == kPathText || kind == kPrinterText ? std::string(TextOf(static_cast<const char*>(item)))
                                                     : std::string();
}

// ---- known folders --------------------------------------------------------------------------------------------------

constexpr int kCreateFolder = 0x8000;  // CSIDL_FLAG_CREATE
constexpr int kDontVerify = 0x4000;    // CSIDL_FLAG_DONT_VERIFY
constexpr DWORD kDefaultPath = 1;      // SHGFP_TYPE_DEFAULT; users of the machine have not moved their folders

}  // namespace

HRESULT WINAPI SHGetFolderPathA(HWND, int csidl, HANDLE, DWORD dwFlags, LPSTR pszPath) {
    Machine& machine = Current();
    if (pszPath == nullptr || dwFlags > kDefaultPath) {
        return E_INVALIDARG;
    }
    *pszPath = '\0';
    const std::string path = KnownFolder(machine, csidl & ~(kCreateFolder | kDontVerify));
    if (path.empty() || path.size() >= MAX_PATH) {
        return E_INVALIDARG;
    }
    if ((csidl & kDontVerify) == 0 && !machine.Files().IsDirectory(path)) {
        const DWORD code =
            (csidl & kCreateFolder) != 0 ? machine.Files().MakeFolders(path) : DWORD{ERROR_PATH_NOT_FOUND};
        if (code != ERROR_SUCCESS) {
            return ResultOf(code);
        }
    }
    std::memcpy(pszPath, path.c_str(), path.size() + 1);
    return S_OK;
}

void WINAPI SHChangeNotify(LONG wEventId, UINT uFlags, LPCVOID dwItem1, LPCVOID dwItem2) {
    Current().Desktop().shellChanges.push_back(
        {wEventId, uFlags, ItemText(uFlags, dwItem1), ItemText(uFlags, dwItem2)});
}

}  // namespace pikel::simulated
