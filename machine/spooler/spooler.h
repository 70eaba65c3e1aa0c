// The simulated print spooler. Each concern is a small class of its own over the machine: environments, drivers,
// monitors, ports, printers, their data, connections, the default printer. None keeps a state: what they know stands in
// the machine's registry and folders, where Windows has it, so that a comparison of two machines tells what was done.
// This file holds what they share.
#pragma once

#include <string>
#include <string_view>

#include "machine/system/machine.h"
#include "platform/types.h"

namespace pikel::simulated {

/// A key below "HKLM\SYSTEM\CurrentControlSet\Control\Print".
std::string PrintKey(std::string_view below);

/// Null counts as empty.
inline std::string_view TextOf(const char* text) {
    return text == nullptr ? std::string_view() : text;
}

/// Names of the print system match without regard to case.
bool IsSameName(const Machine& machine, std::string_view left, std::string_view right);

/// True for null, the empty name, and the machine's own with or without two backslashes in front.
bool IsThisComputer(const Machine& machine, std::string_view server);

/// What a call to the spooler meets first.
/// @param server  computer that the caller names; null or empty: this one
/// @return 0; 1722 for another computer, and on the NT family while the spooler doesn't run
DWORD ReachSpooler(Machine& machine, const char* server);

/// @return 5 on the NT family for a user without administrative rights, else 0. The 9x family knows no rights.
DWORD RequireAdministrator(const Machine& machine);

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
