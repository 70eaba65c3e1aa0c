// The spooler's local printers: keys below Control\Print\Printers. A key bears the printer's name, with commas for
// backslashes; its values are Name, Port, Printer Driver, Share Name, Description, Location, Separator File, Print
// Processor, Datatype, Parameters, Attributes, Priority, Default Priority, StartTime, UntilTime, Status, dnsTimeout,
// txTimeout, Default DevMode and Security. The printer's data lie in keys below it (spooler_printer_data.h).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/system/machine.h"

namespace pikel::simulated {

/// A printer as the spooler knows it: a local one, or a shared one of another computer.
struct Printer {
    std::string name;
    std::string serverName;  ///< "\\server" of a shared printer of another computer; empty for a local one
    std::string shareName;
    std::string portName;
    std::string driverName;
    std::string comment;
    std::string location;
    std::string separatorFile;
    std::string printProcessor;
    std::string datatype;
    std::string parameters;
    std::string devMode;   ///< bytes
    std::string security;  ///< bytes of a self-relative descriptor
    DWORD attributes = 0;
    DWORD priority = 1;
    DWORD defaultPriority = 0;
    DWORD startTime = 0;  ///< minutes after midnight, as is untilTime
    DWORD untilTime = 0;
    DWORD status = 0;
    DWORD notSelectedTimeout = 15000;  ///< milliseconds, as is retryTimeout
    DWORD retryTimeout = 45000;
};

class Printers {
  public:
    explicit Printers(Machine& machine) : m_machine(machine) {}

    std::vector<Printer> List() const;
    /// By name, which may have this computer's name in front.
    std::optional<Printer> Find(std::string_view name) const;

    /// Adds a printer. The first one becomes the default printer: on the 9x family and from Windows 2000 on by itself,
    /// on NT 4 when the attribute for it is given.
    /// @return 0, or a code of Check; 1802 for a name that is taken
    DWORD Add(Printer printer);
    /// Gives a printer other settings, and another name with them.
    /// @param name  name so far
    /// @return 0, or a code of Check; 1905 when it is gone; 1802 for a new name that is taken
    DWORD Change(std::string_view name, Printer printer);
    /// @return false when there is none
    bool Remove(std::string_view name);
    /// Sets status bits, which Change leaves alone.
    void SetStatus(std::string_view name, DWORD status);
    /// @param security  bytes of a self-relative descriptor
    void SetSecurity(std::string_view name, std::string_view security);
    /// @param devMode  bytes; empty: what the driver gives a new printer
    void SetDevMode(std::string_view name, std::string_view devMode);

    /// Registry key of a printer.
    static std::string KeyOf(std::string_view name);
    /// Longest name: 220 characters on the NT family, 31 on the 9x family.
    std::size_t LongestName() const;
    /// The DEVMODE that a driver without a mind of its own gives a new printer.
    std::string DefaultDevMode(const Printer& printer) const;

  private:
    Printer Read(const std::string& key) const;
    void Write(const std::string& key, const Printer& printer);
    DWORD Check(const Printer& printer) const;
    DWORD CheckName(std::string_view name) const;
    bool IsPrintProcessor(std::string_view name) const;
    bool TakesDatatype(std::string_view datatype) const;
    void CompleteNew(Printer& printer) const;
    std::string_view WithoutThisComputer(std::string_view name) const;

    Machine& m_machine;
};

}  // namespace pikel::simulated
