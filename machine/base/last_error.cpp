// The calling thread's last error.
#include "machine/base/last_error.h"

namespace pikel::simulated {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace pikel::simulated
