// A value of the registry.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel::simulated {

struct RegistryValue {
    std::string name;  ///< empty: the default value
    DWORD type = 0;
    std::string data;  ///< bytes as stored; texts in the active code page with their NUL
};

}  // namespace pikel::simulated
