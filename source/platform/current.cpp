#include <utility>

#include "platform/native_table.h"
#include "platform/platform.h"

namespace pikel {

namespace detail {
// Constant initialisation: the table is there before any other static object of the process asks for it.
constinit const PlatformTable* currentPlatform = &kNativeTable;
}  // namespace detail

const PlatformTable& NativePlatform() {
    return kNativeTable;
}

const PlatformTable& SetPlatform(const PlatformTable& table) {
    return *std::exchange(detail::currentPlatform, &table);
}

}  // namespace pikel
