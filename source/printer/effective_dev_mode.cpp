// The switch that decides whether the DEVMODE of a caller's record is applied.
#include "printer/effective_dev_mode.h"

#include "frame/log.h"

namespace pikel {
namespace {

DWORD g_dwEffectiveDevModeSwitch = 1;

}  // namespace

DWORD EffectiveDevModeSwitch() {
    return g_dwEffectiveDevModeSwitch;
}

DWORD DoSetEffectiveDevMode(DWORD dwValue) {
    WriteLog("DoSetEffectiveDevMode( %d ) Start", dwValue);
    g_dwEffectiveDevModeSwitch = dwValue;
    const DWORD dwCode = ERROR_SUCCESS;
    WriteLog("DoSetEffectiveDevMode End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
