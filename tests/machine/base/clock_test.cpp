#include <cstdint>

#include "support/machine_test.h"

namespace pikel {
namespace {

using ClockOperations = testing_support::MachineTest;

TEST_F(ClockOperations, SleepMovesTheClockAndTakesNoTime) {
    SYSTEMTIME start{};
    start.wYear = 2004;
    start.wMonth = 12;
    start.wDay = 31;
    start.wHour = 23;
    start.wMinute = 59;
    start.wSecond = 59;
    start.wMilliseconds = 500;
    Machine().SetLocalTime(start);
    Platform().Sleep(600);
    SYSTEMTIME now;
    Platform().GetLocalTime(&now);
    EXPECT_EQ(now.wYear, 2005);
    EXPECT_EQ(now.wMonth, 1);
    EXPECT_EQ(now.wDay, 1);
    EXPECT_EQ(now.wHour, 0);
    EXPECT_EQ(now.wMilliseconds, 100);
    Platform().Sleep(0xFFFFFFFF);
    EXPECT_EQ(Machine().Clock(), 600ULL + 0xFFFFFFFFULL);
}

struct TimeCase {
    SYSTEMTIME time;
    std::uint64_t ticks;  // 0: refused
};

TEST_F(ClockOperations, SystemTimesBecomeFileTimes) {
    for (const TimeCase& c : {
             TimeCase{{1601, 1, 0, 1, 0, 0, 0, 0}, 0x0}, TimeCase{{1601, 1, 1, 1, 0, 0, 0, 1}, 10000},
             TimeCase{{1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000u},
             TimeCase{{2000, 2, 0, 29, 12, 34, 56, 789}, 125963012967890000u},
             TimeCase{{2038, 1, 9, 19, 3, 14, 7, 0}, 137919572470000000u},  // the day of the week plays no part
         }) {
        FILETIME time{0xEEEEEEEE, 0xEEEEEEEE};
        EXPECT_TRUE(Platform().SystemTimeToFileTime(&c.time, &time)) << c.time.wYear;
        EXPECT_EQ((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime, c.ticks)
            << c.time.wYear;
    }
}

TEST_F(ClockOperations, DatesThatDontExistAreRefused) {
    for (const SYSTEMTIME& time : {
             SYSTEMTIME{1600, 12, 0, 31, 0, 0, 0, 0},
             SYSTEMTIME{30828, 1, 0, 1, 0, 0, 0, 0},
             SYSTEMTIME{2000, 0, 0, 1, 0, 0, 0, 0},
             SYSTEMTIME{2000, 13, 0, 1, 0, 0, 0, 0},
             SYSTEMTIME{2000, 1, 0, 0, 0, 0, 0, 0},
             SYSTEMTIME{2000, 1, 0, 32, 0, 0, 0, 0},
             SYSTEMTIME{2000, 4, 0, 31, 0, 0, 0, 0},
             SYSTEMTIME{2001, 2, 0, 29, 0, 0, 0, 0},
             SYSTEMTIME{1900, 2, 0, 29, 0, 0, 0, 0},
             SYSTEMTIME{2000, 1, 0, 1, 24, 0, 0, 0},
             SYSTEMTIME{2000, 1, 0, 1, 0, 60, 0, 0},
             SYSTEMTIME{2000, 1, 0, 1, 0, 0, 60, 0},
             SYSTEMTIME{2000, 1, 0, 1, 0, 0, 0, 1000},
         }) {
        FILETIME result{1, 2};
        Platform().SetLastError(0);
        EXPECT_FALSE(Platform().SystemTimeToFileTime(&time, &result)) << time.wYear << "-" << time.wMonth;
        EXPECT_EQ(Platform().GetLastError(), 87u);
        EXPECT_EQ(result.dwLowDateTime, 1u);
    }
    const SYSTEMTIME last{30827, 12, 0, 31, 23, 59, 59, 999};
    FILETIME result{};
    EXPECT_TRUE(Platform().SystemTimeToFileTime(&last, &result));
}

TEST_F(ClockOperations, FileTimesCompareAsNumbers) {
    const FILETIME early{5, 1};
    const FILETIME late{4, 2};
    EXPECT_EQ(Platform().CompareFileTime(&early, &late), -1);
    EXPECT_EQ(Platform().CompareFileTime(&late, &early), 1);
    EXPECT_EQ(Platform().CompareFileTime(&late, &late), 0);
}

}  // namespace
}  // namespace pikel
