// The table of the binding that the program is built with.
#pragma once

#include "platform/platform.h"

namespace pikel {

extern const PlatformTable kNativeTable;

}  // namespace pikel
