// What the machine's user may do.
#include "machine/security/rights.h"

#include "machine/base/machine.h"

namespace pikel::simulated {

DWORD RequireAdministrator(const Machine& machine) {
    return machine.Is9x() || machine.System().administrator ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

}  // namespace pikel::simulated
