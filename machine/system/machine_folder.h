// The folder of a machine on the host: machine.ini and registry.reg, and beside them a folder for each drive.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "machine/base/machine_error.h"
#include "machine/base/system_description.h"
#include "machine/files/disk.h"

namespace pikel::simulated {

inline constexpr const char* kIniName = "machine.ini";
inline constexpr const char* kRegistryName = "registry.reg";

// All of these throw MachineError, with a text that names the file or folder and the reason.

/// The folder of a new machine: made here, or there and empty. What is in it goes again without Keep.
class NewFolder {
  public:
    explicit NewFolder(std::filesystem::path folder);
    ~NewFolder();
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;

    void Keep() { m_isKept = true; }

  private:
    std::filesystem::path m_folder;
    bool m_isMade = false;
    bool m_isKept = false;
};

/// The bytes of machine.ini or registry.reg.
std::string ReadMachineFile(const std::filesystem::path& folder, const char* name);
/// Replaces one of the two whole: a reader sees the old one or the new one, and after a failure the old one.
void WriteMachineFile(const std::filesystem::path& folder, const char* name, std::string_view bytes);
/// Makes sure that the folder of the system's drive is there.
void RequireDrive(const std::filesystem::path& folder, const SystemDescription& system);
/// Copies every drive.
/// @param from  path of the folder on the first disk that holds the drives; empty for a disk in memory, like `to`
void CopyDrives(Disk& source, const std::string& from, Disk& target, const std::string& to);

}  // namespace pikel::simulated
