// The spooler's local printers: keys below Control\Print\Printers. A key bears the printer's name, with commas for
// backslashes; its values are Name, Port, Printer Driver, Share Name, Description, Location, Separator File, Print
// Processor, Datatype, Parameters, Attributes, Priority, Default Priority, StartTime, UntilTime, Status, dnsTimeout,
// txTimeout, Default DevMode and Security. The printer's data lie in keys below it (printer_data.h).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

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

/// Local printers as the registry has them, without the rules by which they change.
class PrinterStore {
  public:
    explicit PrinterStore(Machine& machine) : m_machine(machine) {}

    std::vector<Printer> List() const;
    /// By name, which may have this computer's name in front.
    std::optional<Printer> Find(std::string_view name) const;

    /// Registry key of a printer.
    static std::string KeyOf(std::string_view name);
    /// The DEVMODE that a driver without a mind of its own gives a new printer.
    std::string DefaultDevMode(const Printer& printer) const;

  protected:
    void Write(const std::string& key, const Printer& printer);
    std::string_view WithoutThisComputer(std::string_view name) const;

    Machine& m_machine;

  private:
    Printer Read(const std::string& key) const;
};

}  // namespace pikel::simulated
