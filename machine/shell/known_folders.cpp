// Folders that the shell knows by number.
#include "machine/shell/known_folders.h"

#include <algorithm>
#include <iterator>

#include "machine/base/machine.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

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

}  // namespace

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

}  // namespace pikel::simulated
