// The one layer through which the library reaches the system: a flat table of function pointers with the Windows names
// and signatures, and one current table. Logic calls Platform().OpenPrinterA(...) and never the system itself.
#pragma once

#include <cstdarg>

#include "platform/failure.h"
#include "platform/types.h"

namespace pikel {

/// Table of the operations that are bound at link time.
struct PlatformTable {
#define OPERATION(result, name, parameters, failure) result(WINAPI* name) parameters;
#define LOOKED_UP(module, result, name, parameters, failure)
#include "platform/operations/all.def"
};

/// Types of the functions that are found at run time: looked_up::AddPrinterDriverExA is a pointer type.
namespace looked_up {
#define OPERATION(result, name, parameters, failure)
#define LOOKED_UP(module, result, name, parameters, failure) using name = result(WINAPI*) parameters;
#include "platform/operations/all.def"
}  // namespace looked_up

namespace detail {
extern const PlatformTable* currentPlatform;
}

/// The current table. Set from the start, and never null.
inline const PlatformTable& Platform() {
    return *detail::currentPlatform;
}

/// Makes a table current for the whole process. It must outlive its use.
/// @return the table that was current before.
const PlatformTable& SetPlatform(const PlatformTable& table);

/// The table of the binding that this program was built with: Windows, or the simulated machine.
const PlatformTable& NativePlatform();

}  // namespace pikel
