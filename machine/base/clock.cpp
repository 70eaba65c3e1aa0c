// The machine's time.
#include "machine/base/clock.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>

namespace pikel::simulated {

namespace {

using Milliseconds = std::chrono::milliseconds;

/// Nothing for a date that doesn't exist.
std::optional<std::chrono::local_time<Milliseconds>> ToTimePoint(const SYSTEMTIME& time) {
    using namespace std::chrono;
    year_month_day date{year(time.wYear), month(time.wMonth), day(time.wDay)};
    if (!date.ok() || time.wYear > 30827) {  // the last year that a FILETIME reaches
        return std::nullopt;
    }
    return std::make_optional<local_time<Milliseconds>>(local_days(date) + hours(time.wHour) + minutes(time.wMinute) +
                                                        seconds(time.wSecond) + Milliseconds(time.wMilliseconds));
}

SYSTEMTIME FromTimePoint(std::chrono::local_time<Milliseconds> point) {
    using namespace std::chrono;
    local_days today = floor<days>(point);
    year_month_day date(today);
    hh_mm_ss<Milliseconds> clock(point - today);
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(static_cast<int>(date.year()));
    time.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    time.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
    time.wDayOfWeek = static_cast<WORD>(weekday(today).c_encoding());
    time.wHour = static_cast<WORD>(clock.hours().count());
    time.wMinute = static_cast<WORD>(clock.minutes().count());
    time.wSecond = static_cast<WORD>(clock.seconds().count());
    time.wMilliseconds = static_cast<WORD>(clock.subseconds().count());
    return time;
}

SYSTEMTIME HostLocalTime() {
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    std::tm parts{};
    localtime_r(&now.tv_sec, &parts);
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(parts.tm_year + 1900);
    time.wMonth = static_cast<WORD>(parts.tm_mon + 1);
    time.wDay = static_cast<WORD>(parts.tm_mday);
    time.wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    time.wHour = static_cast<WORD>(parts.tm_hour);
    time.wMinute = static_cast<WORD>(parts.tm_min);
    time.wSecond = static_cast<WORD>(std::min(parts.tm_sec, 59));
    time.wMilliseconds = static_cast<WORD>(now.tv_nsec / 1'000'000);
    return time;
}

/// A time moved by a distance; one that doesn't exist stays as it is.
SYSTEMTIME Moved(const SYSTEMTIME& time, Milliseconds distance) {
    auto point = ToTimePoint(time);
    return !point ? time : FromTimePoint(*point + distance);
}

/// Days from 1601-01-01 to a date of the Gregorian calendar, by the count of March-based years.
std::uint64_t DaysSince1601(unsigned year, unsigned month, unsigned day) {
    const unsigned y = month <= 2 ? year - 1 : year;
    const unsigned monthFromMarch = (month + 9) % 12;
    const unsigned dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    constexpr std::uint64_t kDaysTo1601 = 584694;  // from 0000-03-01
    return std::uint64_t{365} * y + y / 4 - y / 100 + y / 400 + dayOfYear - kDaysTo1601;
}

bool IsLeapYear(unsigned year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

unsigned DaysInMonth(unsigned year, unsigned month) {
    static constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

bool IsValid(const SYSTEMTIME& time) {
    return time.wYear >= 1601 && time.wYear <= 30827 && time.wMonth >= 1 && time.wMonth <= 12 && time.wDay >= 1 &&
           time.wDay <= DaysInMonth(time.wYear, time.wMonth) && time.wHour < 24 && time.wMinute < 60 &&
           time.wSecond < 60 && time.wMilliseconds < 1000;
}

}  // namespace

SYSTEMTIME Clock::LocalTime() const {
    return Moved(m_start ? *m_start : HostLocalTime(), Milliseconds(m_now));
}

void Clock::SetLocalTime(const SYSTEMTIME& time) {
    m_start = Moved(time, -Milliseconds(m_now));
}

bool ToFileTime(const SYSTEMTIME& time, FILETIME* fileTime) {
    if (!IsValid(time)) {
        return false;
    }
    const std::uint64_t days = DaysSince1601(time.wYear, time.wMonth, time.wDay);
    const std::uint64_t seconds = ((days * 24 + time.wHour) * 60 + time.wMinute) * 60 + time.wSecond;
    const std::uint64_t ticks = (seconds * 1000 + time.wMilliseconds) * 10000;
    fileTime->dwLowDateTime = static_cast<DWORD>(ticks);
    fileTime->dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return true;
}

}  // namespace pikel::simulated
