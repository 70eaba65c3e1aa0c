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

/// Types whose data are texts: stored in the code page, written with their NUL.
inline bool IsTextType(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

}  // namespace pikel::simulated
