// What the handles of the registry calls stand for.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel::simulated {

/// Path of the key that a handle of the current machine stands for, predefined ones included.
/// @param path [out]  as Registry takes it; only with code 0
/// @return 0, 6 for a handle that is no open key, 1018 for a key that was deleted
DWORD PathOfKey(HKEY handle, std::string& path);

}  // namespace pikel::simulated
