// The time, and waiting.
#include <cstdint>

#include "machine/base/clock.h"
#include "machine/base/machine.h"
#include "machine/operations.h"

namespace pikel::simulated {

void WINAPI GetLocalTime(LPSYSTEMTIME lpSystemTime) {
    *lpSystemTime = Current().LocalTime();
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime) {
    return ToFileTime(*lpSystemTime, lpFileTime) ? TRUE : Fail(ERROR_INVALID_PARAMETER, FALSE);
}

LONG WINAPI CompareFileTime(const FILETIME* lpFileTime1, const FILETIME* lpFileTime2) {
    const auto ticks = [](const FILETIME& time) {
        return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    };
    const std::uint64_t first = ticks(*lpFileTime1);
    const std::uint64_t second = ticks(*lpFileTime2);
    return (first > second ? 1 : 0) - (first < second ? 1 : 0);
}

void WINAPI Sleep(DWORD dwMilliseconds) {
    Current().Advance(dwMilliseconds);
}

}  // namespace pikel::simulated
