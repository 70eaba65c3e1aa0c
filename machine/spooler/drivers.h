// The spooler's printer drivers. A driver is a key below Control\Print\Environments\<environment>\Drivers (on the NT
// family below Version-<n> of it) with these values:
//
//   Driver, Data File, Configuration File, Help File   file names without folders
//   Dependent Files, Previous Names                    multi-strings
//   Monitor, Datatype                                  language monitor and default data type
//   Version                                            as it was given: 0, 2, 3; 0x400 on the 9x family
//   Manufacturer, OEM URL, HardwareID, Provider        Windows Me, 2000 and later
//   DriverDate, DriverVersion                          the 8 bytes of a FILETIME, and of a version number
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/info_buffer.h"
#include "machine/spooler/environments.h"

namespace pikel::simulated {

/// A driver. Its files bear names without folders, except in a driver that is to be added: there they may be full
/// paths.
struct Driver {
    std::string name;
    std::string environment;
    DWORD version = 0;
    std::string driverFile;
    std::string dataFile;
    std::string configFile;
    std::string helpFile;
    std::vector<std::string> dependentFiles;
    std::string monitorName;
    std::string defaultDatatype;
    std::vector<std::string> previousNames;
    FILETIME date{};
    DWORDLONG driverVersion = 0;
    std::string manufacturer;
    std::string oemUrl;
    std::string hardwareId;
    std::string provider;
};

/// What happens to a new driver's files, which lie in the environment's folder or where their paths say.
enum class FileTransfer {
    None,     ///< they stay: on the 9x family the folder is where they are used
    Move,     ///< NT 4
    CopyNew,  ///< Windows 2000 and later; a file that isn't newer than the one in place is kept back
    CopyAll,
    StrictUpgrade,    ///< like CopyAll; refused when a file in place isn't older
    StrictDowngrade,  ///< like CopyAll; refused when a file in place isn't newer
};

class Drivers {
  public:
    explicit Drivers(Machine& machine) : m_machine(machine), m_environments(machine) {}

    /// Drivers of an environment, by version and then by name.
    std::vector<Driver> List(const Environment& environment) const;
    /// The driver of that name with the highest version. It bears the name as asked for.
    std::optional<Driver> Find(const Environment& environment, std::string_view name) const;
    std::optional<Driver> Find(const Environment& environment, std::string_view name, DWORD version) const;

    /// Puts the files into place and registers a driver; one that is there is replaced.
    /// @param environment  the one that the driver names
    /// @return 87 for a missing name or file, or a version that the environment doesn't take; 3000 for a monitor that a
    ///         driver of the running system names and nobody registered; 2 for a missing file, and then nothing is
    ///         done; 1795 for a strict copy that is refused; else what a file operation gave
    DWORD Add(const Environment& environment, Driver driver, FileTransfer transfer);

    /// Takes a driver out of the registry; its files stay. @return false when there is none
    bool Remove(const Environment& environment, std::string_view name, DWORD version);

    /// Names of all files of a driver, without folders.
    static std::vector<std::string> FilesOf(const Driver& driver);

  private:
    struct Transfer {
        std::string source;
        std::string target;
    };

    static std::string KeyOf(const Environment& environment, std::string_view name, DWORD version);
    Driver Read(const std::string& key, const Environment& environment, std::string_view name, DWORD version) const;
    void Write(const Environment& environment, const Driver& driver);
    DWORD Check(const Environment& environment, const Driver& driver) const;
    std::vector<Transfer> PlanTransfers(const Environment& environment, const Driver& driver) const;
    DWORD CheckTransfers(const std::vector<Transfer>& transfers, FileTransfer kind) const;
    DWORD RunTransfers(const std::vector<Transfer>& transfers, FileTransfer kind);
    /// True when the source's last write lies behind the target's.
    bool IsNewer(std::string_view source, std::string_view target) const;
    void StripFolders(const Environment& environment, Driver& driver) const;

    Machine& m_machine;
    Environments m_environments;
};

}  // namespace pikel::simulated
