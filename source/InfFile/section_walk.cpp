// What the section classes share.
#include "InfFile/section_walk.h"

#include "frame/log.h"

namespace pikel {

namespace {

bool IsBlank(char ch) {
    return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

}  // namespace

INT ParseNumber(LPCSTR lpszText) {
    while (IsBlank(*lpszText)) {
        ++lpszText;
    }
    const bool bNegative = *lpszText == '-';
    if (*lpszText == '-' || *lpszText == '+') {
        ++lpszText;
    }
    DWORD dwNumber = 0;
    for (; *lpszText >= '0' && *lpszText <= '9'; ++lpszText) {
        dwNumber = dwNumber * 10 + static_cast<DWORD>(*lpszText - '0');
    }
    return static_cast<INT>(bNegative ? 0 - dwNumber : dwNumber);
}

void WriteBanneredLog(LPCSTR lpszBanner, const std::string& strValue) {
    WriteLog("%s", lpszBanner);
    WriteLog("%s", strValue.c_str());
    WriteLog("%s", lpszBanner);
    WriteEmptyLogLine();
}

void WriteEmptyLogLine() {
    WriteLog("%s", "");
}

}  // namespace pikel
