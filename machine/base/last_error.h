// The calling thread's last error, and the two forms in which operations tell of a failure.
#pragma once

#include "platform/types.h"

namespace pikel::simulated {

extern thread_local DWORD lastError;

/// Sets the last error and gives the value that the failing call returns.
template <class Result>
Result Fail(DWORD code, Result result) {
    lastError = code;
    return result;
}

/// FALSE with a last error; TRUE for code 0, which leaves the last error as it is.
inline BOOL Outcome(DWORD code) {
    return code == 0 ? TRUE : Fail(code, FALSE);
}

}  // namespace pikel::simulated
