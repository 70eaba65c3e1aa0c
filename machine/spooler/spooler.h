// The simulated print spooler. Each concern is a small class of its own over the machine: environments, drivers,
// monitors, ports, printers, their data, connections, the default printer. None keeps a state: what they know stands in
// the machine's registry and folders, where Windows has it, so that a comparison of two machines tells what was done.
// This file holds what they share. The room stands on registry, files, security, services and network.
#pragma once

#include <string>
#include <string_view>

#include "machine/base/info_buffer.h"
#include "machine/base/machine.h"
#include "platform/types.h"

namespace pikel::simulated {

/// A key below "HKLM\SYSTEM\CurrentControlSet\Control\Print".
std::string PrintKey(std::string_view below);

/// What a call to the spooler meets first.
/// @param server  computer that the caller names; null or empty: this one
/// @return 0; 1722 for another computer, and on the NT family while the spooler doesn't run
DWORD ReachSpooler(Machine& machine, const char* server);

/// What an enumeration at levels 1 and 2 checks first.
/// @return 0, or 124 for another level, or what is wrong with the buffer
DWORD CheckEnumeration(const Machine& machine, DWORD level, const InfoBuffer& buffer);

/// Does the work of one call on the current machine and writes what it changed to disk.
/// @param work  DWORD(Machine&): gives the call's code
template <class Work>
DWORD CallSpooler(const char* server, Work work) {
    Machine& machine = Current();
    DWORD code = ReachSpooler(machine, server);
    if (code == ERROR_SUCCESS) {
        code = work(machine);
    }
    machine.Commit();
    return code;
}

}  // namespace pikel::simulated
