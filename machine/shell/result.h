// Results of COM calls for the system's codes.
#pragma once

#include "platform/types.h"

namespace pikel::simulated {

/// S_OK for code 0; else the code as HRESULT_FROM_WIN32 makes it.
inline HRESULT ResultOf(DWORD code) {
    return code == ERROR_SUCCESS ? S_OK : static_cast<HRESULT>(0x80070000 | code);
}

}  // namespace pikel::simulated
