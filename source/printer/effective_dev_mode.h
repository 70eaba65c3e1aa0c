// The switch that decides whether the DEVMODE of a caller's record is applied.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Value of the switch: 1 from the start, for the whole process. Its readers differ at values other than 0 and 1:
/// adding a printer takes them as on (it tests against 0), setting one as off (it tests against 1).
DWORD EffectiveDevModeSwitch();

/// Sets the switch. It takes effect at the next add or set of a printer. No value is refused.
/// @return 0
DWORD DoSetEffectiveDevMode(DWORD dwValue);

}  // namespace pikel
