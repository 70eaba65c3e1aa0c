// Windows codes that disks give and the platform's types don't name.
#pragma once

#include "platform/types.h"

namespace pikel::simulated {

inline constexpr DWORD kErrorTooManyOpenFiles = 4;
inline constexpr DWORD kErrorNotSameDevice = 17;
inline constexpr DWORD kErrorGeneralFailure = 31;
inline constexpr DWORD kErrorIoDevice = 1117;

}  // namespace pikel::simulated
