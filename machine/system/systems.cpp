// The systems that a machine can be made for by name.
#include "machine/system/systems.h"

#include <array>

#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

constexpr BYTE kWorkstation = 1;
constexpr BYTE kServer = 3;
constexpr WORD kSingleUserTerminal = 0x100;
constexpr WORD kServerWithTerminal = 0x110;
constexpr DWORD kPentium = 586;
constexpr DWORD kItanium = 2200;
constexpr DWORD kAmd64 = 8664;

struct FolderPair {
    const char* windows;
    const char* system;
};
constexpr FolderPair kFolders9x = {"C:\\WINDOWS", "C:\\WINDOWS\\SYSTEM"};
constexpr FolderPair kFoldersNt = {"C:\\WINNT", "C:\\WINNT\\system32"};
constexpr FolderPair kFoldersXp = {"C:\\WINDOWS", "C:\\WINDOWS\\system32"};

/// One row of the list; the fields that all systems share come from SystemDescription itself.
struct Row {
    const char* name;
    DWORD platform, major, minor, build;
    const char* servicePack;
    WORD servicePackMajor;
    WORD suiteMask;
    BYTE productType;
    DWORD processorType;
    FolderPair folders;
    const char* computerName;
};

// On the 9x family the build's high word repeats the version, and GetVersionExA tells nothing beyond the short
// structure.
constexpr Row kRows[] = {
    {"win95", 1, 4, 0, 0x040003B6, "", 0, 0, 0, kPentium, kFolders9x, "PC-WIN95"},
    {"win98", 1, 4, 10, 0x040A08AE, " A ", 0, 0, 0, kPentium, kFolders9x, "PC-WIN98"},
    {"winme", 1, 4, 90, 0x045A0BB8, " ", 0, 0, 0, kPentium, kFolders9x, "PC-WINME"},
    {"nt4", 2, 4, 0, 1381, "Service Pack 6", 6, 0, kWorkstation, kPentium, kFoldersNt, "PC-NT4"},
    {"win2000", 2, 5, 0, 2195, "Service Pack 4", 4, 0, kWorkstation, kPentium, kFoldersNt, "PC-WIN2000"},
    {"xp", 2, 5, 1, 2600, "Service Pack 3", 3, kSingleUserTerminal, kWorkstation, kPentium, kFoldersXp, "PC-XP"},
    {"xp-ia64", 2, 5, 2, 3790, "", 0, kSingleUserTerminal, kWorkstation, kItanium, kFoldersXp, "PC-XP-IA64"},
    {"xp-x64", 2, 5, 2, 3790, "Service Pack 2", 2, kSingleUserTerminal, kWorkstation, kAmd64, kFoldersXp, "PC-XP-X64"},
    {"vista", 2, 6, 0, 6002, "Service Pack 2", 2, kSingleUserTerminal, kWorkstation, kPentium, kFoldersXp, "PC-VISTA"},
    {"vista-ia64", 2, 6, 0, 6001, "Service Pack 1", 1, kServerWithTerminal, kServer, kItanium, kFoldersXp,
     "PC-VISTA-IA64"},
    {"vista-x64", 2, 6, 0, 6002, "Service Pack 2", 2, kSingleUserTerminal, kWorkstation, kAmd64, kFoldersXp,
     "PC-VISTA-X64"},
    {"other", 3, 5, 2, 1400, "", 0, 0, 0, kPentium, kFoldersXp, "PC-OTHER"},
};

using SystemList = std::array<SystemDescription, std::size(kRows)>;

SystemList DescribeAll() {
    SystemList systems;
    for (std::size_t i = 0; i < systems.size(); ++i) {
        const Row& row = kRows[i];
        SystemDescription& system = systems[i];
        system.name = row.name;
        system.platform = row.platform;
        system.major = row.major;
        system.minor = row.minor;
        system.build = row.build;
        system.servicePack = row.servicePack;
        system.servicePackMajor = row.servicePackMajor;
        system.suiteMask = row.suiteMask;
        system.productType = row.productType;
        system.processorType = row.processorType;
        system.windowsDirectory = row.folders.windows;
        system.systemDirectory = row.folders.system;
        system.computerName = row.computerName;
    }
    return systems;
}

}  // namespace

std::span<const SystemDescription> Systems() {
    static const SystemList systems = DescribeAll();
    return systems;
}

const SystemDescription* FindSystem(std::string_view name) {
    for (const SystemDescription& system : Systems()) {
        if (EqualNoCase(system.name, name)) {
            return &system;
        }
    }
    return nullptr;
}

}  // namespace pikel::simulated
