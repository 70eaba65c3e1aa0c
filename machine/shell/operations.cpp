// The shell's calls: news of changes, known folders.
#include <algorithm>
#include <cstring>

#include "machine/modules/desktop.h"
#include "machine/operations.h"
#include "machine/spooler/spooler.h"

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

constexpr char kShellFolders[] = "\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

/// Folders whose paths stand in the registry. Those of all users are the user's own on the 9x family.
struct FolderRow {
    int id;
    const char* name;
    const char* nameOfAllUsers;  ///< null: the user's own
};
constexpr FolderRow kFolders[] = {
    {CSIDL_PROGRAMS, "Programs", nullptr},                   //
    {0x0b, "Start Menu", nullptr},                           // CSIDL_STARTMENU
    {0x16, "Start Menu", "Common Start Menu"},               // CSIDL_COMMON_STARTMENU
    {CSIDL_COMMON_PROGRAMS, "Programs", "Common Programs"},  //
};

/// Path of a folder; empty for one that the machine doesn't know.
std::string KnownFolder(Machine& machine, int id) {
    switch (id) {
        case 0x24:  // CSIDL_WINDOWS
            return machine.System().windowsDirectory;
        case 0x25:  // CSIDL_SYSTEM
            return machine.System().systemDirectory;
        case 0x26:  // CSIDL_PROGRAM_FILES
            return machine.Registry().Text("HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion", "ProgramFilesDir");
        default:
            break;
    }
    const auto* row = std::ranges::find(kFolders, id, &FolderRow::id);
    if (row == std::end(kFolders)) {
        return {};
    }
    const bool ofAllUsers = row->nameOfAllUsers != nullptr && !machine.Is9x();
    return machine.Registry().Text(std::string(ofAllUsers ? "HKLM" : "HKCU") + kShellFolders,
                                   ofAllUsers ? row->nameOfAllUsers : row->name);
}

HRESULT ResultOf(DWORD code) {
    return code == ERROR_SUCCESS ? S_OK : static_cast<HRESULT>(0x80070000 | code);
}

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
