// Connections to shared printers of other computers, NT family. A user's connections are keys below
// HKCU\Printers\Connections, named ",,server,printer", with the value Server.
//
// The network is part of the machine: a shared printer that can be reached is a key
//
//   HKLM\SOFTWARE\Simulated Network\Servers\<server>\<printer>
//
// with the texts Driver, Port, Comment and Location, all of them optional. A number ConnectCode makes connections to it
// fail with that code: 1223 when the user is asked and refuses, 5 without the rights.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/spooler/printer_store.h"

namespace pikel::simulated {

/// Connections as the registry has them, and the shared printers that can be reached.
class ConnectionStore {
  public:
    explicit ConnectionStore(Machine& machine) : m_machine(machine) {}

    /// The user's connections.
    std::vector<Printer> List() const;
    /// A shared printer by its name, "\\server\printer": one that the user is connected to or that can be reached.
    std::optional<Printer> Find(std::string_view name) const;
    bool IsConnected(std::string_view name) const;

    /// Registry key of a shared printer that can be reached; empty for a name of another form.
    static std::string ShareKeyOf(std::string_view name);

  protected:
    static std::string KeyOf(std::string_view name);
    Printer Describe(std::string_view name) const;

    Machine& m_machine;
};

}  // namespace pikel::simulated
