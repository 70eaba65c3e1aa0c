// Services of the machine, described by registry keys under System\CurrentControlSet\Services. Their states live with the
// process that opened the machine: a fresh machine comes up with its automatic services running.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// Time that a service takes to reach a state, on the machine's own clock. Never: it stays pending.
inline constexpr ULONGLONG kNever = ~0ULL;

class Services {
 public:
    explicit Services(Machine& machine);

    bool Exists(std::string_view name) const;
    /// Adds a service, or changes one. Dependencies are the services that it needs.
    void Define(std::string_view name, std::string_view displayName, std::string_view binaryPath,
                const std::vector<std::string>& dependencies, DWORD startType = SERVICE_AUTO_START);
    /// SERVICE_STOPPED, SERVICE_RUNNING or a pending state; pending ones settle as the clock goes on.
    DWORD State(std::string_view name);
    void SetState(std::string_view name, DWORD state);
    /// How long a stop or a start takes from now on.
    void SetTimes(std::string_view name, ULONGLONG stopMilliseconds, ULONGLONG startMilliseconds);
    /// Services that need this one, those to be stopped first in front.
    std::vector<std::string> Dependents(std::string_view name) const;
    /// True while the service's program file counts as held open: running, and for `milliseconds` after a stop.
    void HoldProgramAfterStop(std::string_view name, ULONGLONG milliseconds);

    DWORD Stop(std::string_view name);
    DWORD Start(std::string_view name);

    /// A running spooler is what the spooler's calls need on the NT family; without it they give 1722.
    bool IsSpoolerUp();

 private:
    struct Runtime {
        DWORD state = SERVICE_STOPPED;
        DWORD target = SERVICE_STOPPED;
        ULONGLONG settlesAt = 0;
        ULONGLONG stopTime = 0;
        ULONGLONG startTime = 0;
        ULONGLONG holdAfterStop = 0;
    };
    Runtime& At(std::string_view name);

    Machine& m_machine;
    std::map<std::string, Runtime, std::less<>> m_runtime;
};

}  // namespace pikel::simulated
