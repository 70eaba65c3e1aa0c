// Handles of the service control manager and of services, and the rights that they carry.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel::simulated {

/// What a handle of the manager or of a service stands for; the manager has no name.
struct OpenService {
    std::string name;
    DWORD access;
};

// Both take the rights asked for, generic ones included, and tell a failure by null and the last error: 5 for rights
// that the user lacks.
SC_HANDLE OpenManager(DWORD access);
SC_HANDLE OpenOneService(const std::string& name, DWORD access);

/// Null for a handle of another kind.
OpenService* FindService(SC_HANDLE handle);
/// The name of a service whose handle carries a right. Null, with the last error set, for any other handle.
const std::string* ServiceOf(SC_HANDLE handle, DWORD right);

}  // namespace pikel::simulated
