#include <utility>

#include "platform/platform.h"

namespace pikel {

namespace detail {
const PlatformTable* currentPlatform = &NativePlatform();
}

const PlatformTable& SetPlatform(const PlatformTable& table) {
    return *std::exchange(detail::currentPlatform, &table);
}

}  // namespace pikel
