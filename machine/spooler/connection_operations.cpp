// The spooler's calls about connections to shared printers.
#include "machine/base/last_error.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/spooler/connections.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

BOOL WINAPI AddPrinterConnectionA(LPSTR pName) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        return machine.Is9x() ? static_cast<DWORD>(ERROR_CALL_NOT_IMPLEMENTED)
                              : Connections(machine).Add(TextOf(pName));
    }));
}

BOOL WINAPI DeletePrinterConnectionA(LPSTR pName) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        return machine.Is9x() ? static_cast<DWORD>(ERROR_CALL_NOT_IMPLEMENTED)
                              : Connections(machine).Remove(TextOf(pName));
    }));
}

}  // namespace pikel::simulated
