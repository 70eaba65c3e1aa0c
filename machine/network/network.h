// The network room: what the machine sees of other computers, and what it shares with them itself. It stands on the
// registry; the spooler browses through it.
//
// The network that the machine sees: providers, below them domains or workgroups, servers, and what these share. It is
// part of the machine:
//
//   HKLM\SOFTWARE\Simulated Network\Providers\<name>           NetType  0x20000 LAN Manager (the default), 0x30000
//                                                                       NetWare
//                                                              Error    code of the provider's own with which each look
//                                                                       at it fails; Error Text goes with it
//   HKLM\SOFTWARE\Simulated Network\Servers\<server>           Domain, Comment, Provider
//   HKLM\SOFTWARE\Simulated Network\Servers\<server>\<share>   Comment, Type  1 folder, 2 printer (the default), 3 both
//
// All values are optional. A server belongs to the first LAN Manager provider when it names none; without a domain it
// is in WORKGROUP there, and at the top of a network of another type. A machine without the key Providers has the one
// that its family brings along. Of a shared printer more is told in the
// spooler's connection_store.h.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"

namespace pikel::simulated {

struct NetworkProvider {
    std::string name;
    std::string printProvider;  ///< its name in the spooler
    DWORD netType = 0;
    DWORD error = 0;
    std::string errorText;
};

struct NetworkServer {
    std::string name;    ///< without backslashes
    std::string domain;  ///< empty: at the top of its provider's network
    std::string comment;
};

struct NetworkShare {
    std::string name;
    DWORD type = RESOURCETYPE_PRINT;
    std::string comment;
};

class Network {
  public:
    explicit Network(Machine& machine) : m_machine(machine) {}

    /// In the order of their names.
    std::vector<NetworkProvider> Providers() const;
    std::optional<NetworkProvider> FindProvider(std::string_view name) const;

    /// Names of a provider's domains, each once, in their order.
    std::vector<std::string> Domains(const NetworkProvider& provider) const;
    /// A provider's servers in a domain; those without one for an empty domain.
    std::vector<NetworkServer> Servers(const NetworkProvider& provider, std::string_view domain) const;
    /// @param server  without backslashes
    bool HasServer(std::string_view server) const;
    std::vector<NetworkShare> Shares(std::string_view server) const;

  private:
    std::vector<NetworkServer> ServersOf(const NetworkProvider& provider) const;

    Machine& m_machine;
};

}  // namespace pikel::simulated
