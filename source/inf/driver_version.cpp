// The DriverVer value: date and version.
#include "inf/driver_version.h"

#include <array>

#include "inf/section_walk.h"
#include "frame/log.h"
#include "frame/number.h"

namespace pikel {

namespace {

/// Numbers of a date or a version.
using NumberWords = std::array<WORD, 6>;

/// Takes a text apart at a delimiter; parts without a character are passed over. Each part's number is cut to its low
/// 16 bits. Parts beyond the last word are dropped.
NumberWords ParseWords(const std::string& strText, char chDelimiter) {
    NumberWords words{};
    std::size_t position = 0;
    for (WORD& word : words) {
        position = strText.find_first_not_of(chDelimiter, position);
        if (position == std::string::npos) {
            break;
        }
        // The number ends at the delimiter by itself: that is no digit.
        word = static_cast<WORD>(ParseNumber(strText.c_str() + position));
        position = strText.find(chDelimiter, position);
    }
    return words;
}

void ParseDate(const std::string& strDate, FILETIME& ftDriverDate) {
    const NumberWords words = ParseWords(strDate, '/');
    SYSTEMTIME date{};
    date.wMonth = words[0];
    date.wDay = words[1];
    date.wYear = words[2];
    FILETIME ftDate{};
    if (Platform().SystemTimeToFileTime(&date, &ftDate)) {
        ftDriverDate = ftDate;
    }
    // Written for a date that was refused as well.
    WriteLog("--- DriverDate ---");
    WriteLog("%d/%d/%d", date.wMonth, date.wDay, date.wYear);
    WriteLog("--- DriverDate ---");
    WriteEmptyLogLine();
}

/// One half of the packed version, as the signed number that it is taken for.
LONGLONG PackHalf(WORD wHigh, WORD wLow) {
    return static_cast<INT>(static_cast<DWORD>(wHigh) << 16 | wLow);
}

void ParseVersion(const std::string& strVersion, DWORDLONG& qwDriverVer) {
    const NumberWords words = ParseWords(strVersion, '.');
    // Both halves are widened with their sign and added, so a third part of 0x8000 or more lowers the high half by one.
    // The driver is registered with that number, which the spooler then tells as its version.
    const LONGLONG llHigh = PackHalf(words[0], words[1]);
    const LONGLONG llLow = PackHalf(words[2], words[3]);
    qwDriverVer = (static_cast<DWORDLONG>(llHigh) << 32) + static_cast<DWORDLONG>(llLow);
    WriteLog("--- DriverVer ---");
    WriteLog("%d.%d.%d.%d", words[0], words[1], words[2], words[3]);
    WriteLog("--- DriverVer ---");
    WriteEmptyLogLine();
}

}  // namespace

void ParseDriverVer(const std::string& strDriverVer, FILETIME& ftDriverDate, DWORDLONG& qwDriverVer) {
    const std::size_t comma = strDriverVer.find(',');
    ParseDate(strDriverVer.substr(0, comma), ftDriverDate);
    if (comma != std::string::npos && comma + 1 < strDriverVer.size()) {
        ParseVersion(strDriverVer.substr(comma + 1), qwDriverVer);
    }
}

}  // namespace pikel
