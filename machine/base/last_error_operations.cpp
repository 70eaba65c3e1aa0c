// The calling thread's last error.
#include "machine/base/last_error.h"
#include "machine/operations.h"

namespace pikel::simulated {

DWORD WINAPI GetLastError() {
    return lastError;
}

void WINAPI SetLastError(DWORD dwErrCode) {
    lastError = dwErrCode;
}

}  // namespace pikel::simulated
