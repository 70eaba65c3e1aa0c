// What the concerns of the spooler share.
#include "machine/spooler/spooler.h"

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/services/services.h"

namespace pikel::simulated {

std::string PrintKey(std::string_view below) {
    return "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Print\\" + std::string(below);
}

DWORD ReachSpooler(Machine& machine, const char* server) {
    const bool reached = machine.Services().IsSpoolerUp() && IsThisComputer(machine, TextOf(server));
    return reached ? ERROR_SUCCESS : RPC_S_SERVER_UNAVAILABLE;
}

DWORD CheckEnumeration(const Machine& machine, DWORD level, const InfoBuffer& buffer) {
    if (buffer.returned == nullptr) {
        return machine.Is9x() ? ERROR_INVALID_PARAMETER : RPC_X_NULL_REF_POINTER;
    }
    const DWORD code = CheckInfoBuffer(buffer, !machine.Is9x());
    return code == ERROR_SUCCESS && level != 1 && level != 2 ? static_cast<DWORD>(ERROR_INVALID_LEVEL) : code;
}

}  // namespace pikel::simulated
