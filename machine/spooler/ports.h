// The spooler's ports.
//
//   local ports    NT family: values of Software\Microsoft\Windows NT\CurrentVersion\Ports; 9x family: section [ports]
//                  of win.ini. Their monitor is "Local Port".
//   other ports    keys below Control\Print\Monitors\<monitor>\Ports
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"

namespace pikel::simulated {

struct Port {
    std::string name;
    std::string monitor;
    DWORD type = 0;  ///< PORT_TYPE_...
};

class Ports {
  public:
    explicit Ports(Machine& machine) : m_machine(machine) {}

    /// Local ports first, then those of each monitor, by name.
    std::vector<Port> List() const;
    std::optional<Port> Find(std::string_view name) const;
    /// True when a printer can print there: each port of a list with commas is known. On the 9x family a shared
    /// printer's name is a port as well.
    bool AreKnown(std::string_view names) const;

    /// Registry key of a port that isn't a local one.
    static std::string KeyOf(std::string_view monitor, std::string_view name);

  private:
    std::vector<std::string> LocalNames() const;
    bool IsLocal(std::string_view name) const;

    Machine& m_machine;
};

}  // namespace pikel::simulated
