// The spooler's monitors, of ports and of languages alike: keys below Control\Print\Monitors whose value "Driver" is
// the file name of a DLL in the system folder.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"

namespace pikel::simulated {

struct Monitor {
    std::string name;
    std::string library;
};

class Monitors {
  public:
    explicit Monitors(Machine& machine) : m_machine(machine) {}

    /// By name. A key without a library is no monitor.
    std::vector<Monitor> List() const;
    std::optional<Monitor> Find(std::string_view name) const;
    /// @param environment  that of the machine; empty stands for it
    /// @return 87 for an empty or impossible name or library; 1805 for another environment; 3006 for a monitor that is
    ///         there; 126 for a library that isn't in the system folder
    DWORD Add(std::string_view name, std::string_view environment, std::string_view library);
    /// Takes a monitor out of the registry, whatever needs it; RemoveMonitor asks first.
    void Remove(std::string_view name);

    /// True for the libraries that the running spooler has loaded: other programs can't write or replace them.
    bool IsLoaded(std::string_view path) const;

    /// Registry key of a monitor.
    static std::string KeyOf(std::string_view name);

  private:
    Machine& m_machine;
};

/// Makes the libraries that the running spooler has loaded files in use, on a machine that was just opened.
void HoldLoadedMonitors(Machine& machine);

}  // namespace pikel::simulated
