#include "machine/inf/directory_ids.h"

#include <array>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/path.h"
#include "machine/operations.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

/// The driver folder of the running environment, as the spooler tells it.
std::optional<std::string> DriverFolder() {
    std::array<char, 1024> folder{};
    DWORD needed = 0;
    if (!GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<LPBYTE>(folder.data()), folder.size(),
                                    &needed)) {
        return std::nullopt;
    }
    return folder.data();
}

std::optional<std::string> ColourFolder() {
    std::array<char, 1024> folder{};
    DWORD size = folder.size();
    if (!GetColorDirectoryA(nullptr, folder.data(), &size)) {
        return std::nullopt;
    }
    return folder.data();
}

std::string ProcessorFolder(const Machine& machine) {
    switch (machine.System().processorType) {
        case 2200:
            return "ia64";
        case 8664:
            return "x64";
        default:
            return "w32x86";
    }
}

/// Folders that lie at the same place below the Windows or the system folder on every system.
struct Place {
    DWORD id;
    bool isInSystem;
    const char* folder;
};
constexpr Place kPlaces[] =
    {
        {10, false, ""},       {11, true, ""},       {17, false, "inf"},
        {18, false, "help"},   {20, false, "fonts"}, {21, true, "viewers"},
        {25, false, ""},  // shared Windows folder of a network installation
        {50, false, "system"}, {51, true, "spool"},  {52, true, "spool\\drivers"},
        {16420, false, ""},  // 0x4000 and above: the shell's folders
        {16421, true, ""},
};

/// Folders that differ by family, or that another service knows.
std::optional<std::string> OtherDirectory(Machine& machine, DWORD id) {
    const std::string& windows = machine.System().windowsDirectory;
    const std::string& system = machine.System().systemDirectory;
    switch (id) {
        case 12:
            return JoinPath(machine, system, machine.Is9x() ? "iosubsys" : "drivers");
        case 23:
            return JoinPath(machine, system, machine.Is9x() ? "color" : "spool\\drivers\\color");
        case 24:
        case 30:
        case 54:
            return windows.substr(0, 2) + "\\";
        case 53:
            return JoinPath(machine, windows, "Profiles");
        case 55:
            return machine.Is9x() ? system : JoinPath(machine, system, "spool\\prtprocs");
        case 16422:
            return machine.Registry().Text("HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion", "ProgramFilesDir",
                                           "C:\\Program Files");
        case 66000:
            return machine.Is9x() ? std::nullopt : DriverFolder();
        case 66001:
            return machine.Is9x()
                       ? std::nullopt
                       : std::optional(JoinPath(machine, system, "spool\\prtprocs\\" + ProcessorFolder(machine)));
        case 66002:
            return machine.Is9x() ? std::nullopt : std::optional(system);
        case 66003:
            return machine.Is9x() ? std::nullopt : ColourFolder();
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<std::string> SystemDirectory(Machine& machine, DWORD id) {
    for (const Place& place : kPlaces) {
        if (place.id == id) {
            const SystemDescription& system = machine.System();
            return JoinPath(machine, place.isInSystem ? system.systemDirectory : system.windowsDirectory, place.folder);
        }
    }
    return OtherDirectory(machine, id);
}

DWORD UserDirectories::Set(DWORD id, const char* folder) {
    const bool takesAway = folder == nullptr || *folder == '\0';
    if (id == 0 && takesAway) {
        m_folders.clear();
        return ERROR_SUCCESS;
    }
    if (id < kFirstUserDirectory || id == kAbsoluteDirectory || id == kAbsoluteDirectory16) {
        return ERROR_INVALID_PARAMETER;
    }
    if (takesAway) {
        m_folders.erase(id);
    } else {
        m_folders[id] = folder;
    }
    return ERROR_SUCCESS;
}

const std::string* UserDirectories::Find(DWORD id) const {
    const auto found = m_folders.find(id);
    return found == m_folders.end() ? nullptr : &found->second;
}

}  // namespace pikel::simulated
