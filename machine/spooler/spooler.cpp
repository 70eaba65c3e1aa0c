// What the concerns of the spooler share.
#include "machine/spooler/spooler.h"

#include "machine/services/services.h"

namespace pikel::simulated {

std::string PrintKey(std::string_view below) {
    return "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Print\\" + std::string(below);
}

bool IsSameName(const Machine& machine, std::string_view left, std::string_view right) {
    return CompareNoCase(machine.System().codePage, left, right) == 0;
}

bool IsThisComputer(const Machine& machine, std::string_view server) {
    if (server.starts_with("\\\\")) {
        server.remove_prefix(2);
    }
    return server.empty() || IsSameName(machine, server, machine.System().computerName);
}

DWORD ReachSpooler(Machine& machine, const char* server) {
    const bool reached = machine.Services().IsSpoolerUp() && IsThisComputer(machine, TextOf(server));
    return reached ? ERROR_SUCCESS : RPC_S_SERVER_UNAVAILABLE;
}

DWORD RequireAdministrator(const Machine& machine) {
    return machine.Is9x() || machine.System().administrator ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

}  // namespace pikel::simulated
