// The spooler's environments: the kinds of systems for which it keeps drivers, and where their files lie.
//
//   9x family   "Windows 4.0" alone; its files lie in the system folder
//   NT family   folders below system32\spool\drivers, with one folder in each for every driver version: WIN40\0,
//               W32X86\2 and \3, and from the XP generation on IA64\3 and x64\3
//
// The folder's name is the value "Directory" of Control\Print\Environments\<name>.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"

namespace pikel::simulated {

struct Environment {
    std::string name;             ///< "Windows NT x86"
    std::string directory;        ///< where its files are put for the spooler; no backslash at the end
    std::vector<DWORD> versions;  ///< driver versions that it takes, in rising order
    bool hasVersionFolders = false;
};

class Environments {
  public:
    explicit Environments(Machine& machine) : m_machine(machine) {}

    /// The environments that the system knows, its own among them.
    std::vector<Environment> List() const;
    /// By name; empty is the machine's own.
    std::optional<Environment> Find(std::string_view name) const;
    Environment Own() const;
    bool IsOwn(const Environment& environment) const;

    static bool Takes(const Environment& environment, DWORD version);
    /// The version for which the running system loads drivers itself: 2 on NT 4, 3 from Windows 2000 on, 0x400 on the
    /// 9x family.
    DWORD OwnVersion() const;
    /// Where the spooler keeps the files of a driver version.
    static std::string VersionDirectory(const Environment& environment, DWORD version);
    /// Registry key above the drivers of a version; on the 9x family versions share one.
    static std::string DriversKey(const Environment& environment, DWORD version);
    /// Makes the key and the folder of a version, which a fresh machine need not have.
    DWORD Prepare(const Environment& environment, DWORD version);

  private:
    Machine& m_machine;
};

}  // namespace pikel::simulated
