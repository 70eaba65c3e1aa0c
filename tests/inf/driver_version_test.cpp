// The DriverVer value.
#include "inf/driver_version.h"

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;

constexpr DWORDLONG kUntouchedVersion = 0x1111222233334444;
constexpr DWORDLONG kUntouchedDate = 0x5555666677778888;

struct DriverVerCase {
    const char* text;
    DWORDLONG date;  ///< FILETIME as one number
    DWORDLONG version;
    const char* loggedDate;
    const char* loggedVersion;  ///< null: the version isn't logged
};

void PrintTo(const DriverVerCase& c, std::ostream* out) {
    *out << '"' << c.text << '"';
}

class DriverVer : public InfTest, public ::testing::WithParamInterface<DriverVerCase> {};

TEST_P(DriverVer, IsTakenApart) {
    const DriverVerCase& c = GetParam();
    Test().TurnLogOn(1);
    FILETIME date = {static_cast<DWORD>(kUntouchedDate), static_cast<DWORD>(kUntouchedDate >> 32)};
    DWORDLONG version = kUntouchedVersion;
    ParseDriverVer(c.text, date, version);
    EXPECT_EQ(static_cast<DWORDLONG>(date.dwHighDateTime) << 32 | date.dwLowDateTime, c.date);
    EXPECT_EQ(version, c.version) << std::hex << version;
    LogLines expected = Bannered("--- DriverDate ---", {c.loggedDate});
    if (c.loggedVersion != nullptr) {
        expected = Joined({expected, Bannered("--- DriverVer ---", {c.loggedVersion})});
    }
    EXPECT_EQ(Log(), expected);
}

constexpr DWORDLONG kJuly2001 = 0x01c101c0c5628000;

const DriverVerCase kCases[] = {
    {"07/01/2001,5.1.2600.0", kJuly2001, 0x000500010A280000, "7/1/2001", "5.1.2600.0"},
    {"7/1/2001,1.2.3.4", kJuly2001, 0x0001000200030004, "7/1/2001", "1.2.3.4"},
    // No version: no comma, or nothing behind it.
    {"7/1/2001", kJuly2001, kUntouchedVersion, "7/1/2001", nullptr},
    {"7/1/2001,", kJuly2001, kUntouchedVersion, "7/1/2001", nullptr},
    // No date: it is logged all the same.
    {"", kUntouchedDate, kUntouchedVersion, "0/0/0", nullptr},
    {",1.2.3.4", kUntouchedDate, 0x0001000200030004, "0/0/0", "1.2.3.4"},
    // Dates that don't exist; the version is read all the same.
    {"13/1/2001,1.2.3.4", kUntouchedDate, 0x0001000200030004, "13/1/2001", "1.2.3.4"},
    {"7/0/2001,1.2.3.4", kUntouchedDate, 0x0001000200030004, "7/0/2001", "1.2.3.4"},
    {"7/1/01,1.2.3.4", kUntouchedDate, 0x0001000200030004, "7/1/1", "1.2.3.4"},
    {"2/29/2001,1.0.0.0", kUntouchedDate, 0x0001000000000000, "2/29/2001", "1.0.0.0"},
    // Missing and surplus parts.
    {"7/1/2001,6.1.7600", kJuly2001, 0x000600011DB00000, "7/1/2001", "6.1.7600.0"},
    {"7/1/2001,6", kJuly2001, 0x0006000000000000, "7/1/2001", "6.0.0.0"},
    {"7/1/2001,1.2.3.4.5.6.7.8.9.10", kJuly2001, 0x0001000200030004, "7/1/2001", "1.2.3.4"},
    {"7/1/2001/4/5/6/7/8/9/10,1.2.3.4", kJuly2001, 0x0001000200030004, "7/1/2001", "1.2.3.4"},
    // Parts without a character are passed over; parts that are no number count 0.
    {"/7//1/2001/,.1..2.3.4.", kJuly2001, 0x0001000200030004, "7/1/2001", "1.2.3.4"},
    {"7/1/2001,...", kJuly2001, 0, "7/1/2001", "0.0.0.0"},
    {"7/1/2001,a.b.3c.-4", kJuly2001, 0x000000000003FFFC, "7/1/2001", "0.0.3.65532"},
    // Only the first comma splits.
    {"7/1/2001,1.2,9.3.4", kJuly2001, 0x0001000200030004, "7/1/2001", "1.2.3.4"},
    // Numbers keep their low 16 bits.
    {"65543/65537/67537,65537.65538.65539.65540", kJuly2001, 0x0001000200030004, "7/1/2001", "1.2.3.4"},
    // A third part from 0x8000 on makes the low half negative, which lowers the high half by one.
    {"7/1/2001,1.2.32767.4", kJuly2001, 0x000100027FFF0004, "7/1/2001", "1.2.32767.4"},
    {"7/1/2001,1.2.32768.4", kJuly2001, 0x0001000180000004, "7/1/2001", "1.2.32768.4"},
    {"7/1/2001,1.0.65535.65535", kJuly2001, 0x0000FFFFFFFFFFFF, "7/1/2001", "1.0.65535.65535"},
    {"7/1/2001,0.0.32768.0", kJuly2001, 0xFFFFFFFF80000000, "7/1/2001", "0.0.32768.0"},
    // The other parts don't carry.
    {"7/1/2001,32768.0.0.0", kJuly2001, 0x8000000000000000, "7/1/2001", "32768.0.0.0"},
    {"7/1/2001,1.32768.0.0", kJuly2001, 0x0001800000000000, "7/1/2001", "1.32768.0.0"},
    {"7/1/2001,1.2.3.32768", kJuly2001, 0x0001000200038000, "7/1/2001", "1.2.3.32768"},
};

INSTANTIATE_TEST_SUITE_P(Texts, DriverVer, ::testing::ValuesIn(kCases));

class DriverVerDate : public InfTest {};

TEST_F(DriverVerDate, IsAskedForWithDayMonthAndYearAlone) {
    static SYSTEMTIME s_date;
    ReplacedOperations replaced;
    replaced.table.SystemTimeToFileTime = [](const SYSTEMTIME* date, LPFILETIME fileTime) -> BOOL {
        s_date = *date;
        *fileTime = {1, 2};
        return TRUE;
    };
    FILETIME date{};
    DWORDLONG version = 0;
    ParseDriverVer("7/1/2001/9/9/9,1.0", date, version);
    EXPECT_EQ(s_date.wYear, 2001);
    EXPECT_EQ(s_date.wMonth, 7);
    EXPECT_EQ(s_date.wDay, 1);
    EXPECT_EQ(s_date.wDayOfWeek + s_date.wHour + s_date.wMinute + s_date.wSecond + s_date.wMilliseconds, 0);
    EXPECT_EQ(date.dwLowDateTime, 1u);
    EXPECT_EQ(date.dwHighDateTime, 2u);
}

TEST_F(DriverVerDate, ARefusedDateLeavesTheTimeAloneWhateverTheSystemWrote) {
    ReplacedOperations replaced;
    replaced.table.SystemTimeToFileTime = [](const SYSTEMTIME*, LPFILETIME fileTime) -> BOOL {
        *fileTime = {1, 2};
        return FALSE;
    };
    FILETIME date{};
    DWORDLONG version = 0;
    ParseDriverVer("7/1/2001", date, version);
    EXPECT_EQ(date.dwLowDateTime, 0u);
    EXPECT_EQ(date.dwHighDateTime, 0u);
}

}  // namespace
}  // namespace pikel
