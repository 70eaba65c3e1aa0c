// The services room: the service control manager. It stands on the registry, and on the files where it holds programs.
//
// Services of the machine, described by registry keys under System\CurrentControlSet\Services. Their states live with
// the process that opened the machine: a fresh machine comes up with its automatic services running.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "machine/files/files.h"
#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// Time that a service takes to reach a state, on the machine's own clock. Never: it stays pending.
inline constexpr ULONGLONG kNever = ~0ULL;

class Services {
  public:
    explicit Services(Machine& machine);

    bool Exists(std::string_view name) const;
    /// Adds a service, or changes one. Dependencies are the services that it needs. A new automatic one is running, as
    /// if it had come up with the machine; a new one of another start type is stopped.
    void Define(std::string_view name, std::string_view displayName, std::string_view binaryPath,
                const std::vector<std::string>& dependencies, DWORD startType = SERVICE_AUTO_START);
    /// SERVICE_STOPPED, SERVICE_RUNNING or a pending state; pending ones settle as the clock goes on. An unknown
    /// service is stopped.
    DWORD State(std::string_view name);
    void SetState(std::string_view name, DWORD state);
    /// How long a stop or a start takes from now on.
    void SetTimes(std::string_view name, ULONGLONG stopMilliseconds, ULONGLONG startMilliseconds);
    /// Services that need this one, themselves or through others, those to be stopped first in front.
    std::vector<std::string> Dependents(std::string_view name) const;
    /// While a service is not stopped, its program file is held open: others may read it, and an open without sharing
    /// or for writing gives 32. This adds a time after each stop for which that stays so.
    void HoldProgramAfterStop(std::string_view name, ULONGLONG milliseconds);

    /// 0, or 1060 unknown, 1062 not running, 1051 a dependent is not stopped, 1061 pending. Returns with the stop
    /// pending.
    DWORD Stop(std::string_view name);
    /// 0, or 1060 unknown, 1058 disabled, 1056 not stopped, 1075 a service that it needs is missing, 1068 one that it
    /// needs can't be started, 1059 it needs itself. Starts the services that it needs first, and returns with the
    /// start pending.
    DWORD Start(std::string_view name);

    /// A running spooler is what the spooler's calls need on the NT family; without it they give 1722.
    bool IsSpoolerUp();

    /// What a query tells. The pending state stays in it until the next query or step of the clock.
    SERVICE_STATUS Status(std::string_view name);
    /// Command line of the service's program, with %SystemRoot% replaced.
    std::string BinaryPath(std::string_view name) const;

    // The machine calls these: when it was opened, and after each step of its clock.
    void StartAutomaticOnes();
    void Settle();

  private:
    struct Runtime {
        DWORD state = SERVICE_STOPPED;
        DWORD target = SERVICE_STOPPED;
        ULONGLONG settlesAt = 0;
        ULONGLONG stopTime = 0;
        ULONGLONG startTime = 0;
        ULONGLONG holdAfterStop = 0;
        ULONGLONG heldUntil = 0;
        std::unique_ptr<Files::Held> program;
    };
    using Graph = std::map<std::string, std::vector<std::string>, std::less<>>;

    Runtime& At(std::string_view name);
    void Settle(std::string_view name, Runtime& service);
    void UpdateHold(std::string_view name, Runtime& service);
    DWORD StartWithNeeded(const std::string& name, std::vector<std::string>& starting);
    /// For each service, in lower case, the names of those that need it.
    Graph DependentsByService() const;

    Machine& m_machine;
    std::map<std::string, Runtime, std::less<>> m_runtime;
};

}  // namespace pikel::simulated
