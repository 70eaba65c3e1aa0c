// The machine's time, which goes on when the machine waits and takes none of the host's.
#pragma once

#include <optional>

#include "platform/types.h"

namespace pikel::simulated {

class Clock {
  public:
    /// Milliseconds since the machine was opened.
    ULONGLONG Now() const { return m_now; }
    void Advance(ULONGLONG milliseconds) { m_now += milliseconds; }
    /// Local time: as it was set, else the host's, plus what went by since the machine was opened.
    SYSTEMTIME LocalTime() const;
    void SetLocalTime(const SYSTEMTIME& time);

  private:
    ULONGLONG m_now = 0;
    std::optional<SYSTEMTIME> m_start;  ///< local time when the machine was opened
};

/// @return false for a date or a time of day that doesn't exist, and before 1601
bool ToFileTime(const SYSTEMTIME& time, FILETIME* fileTime);

}  // namespace pikel::simulated
