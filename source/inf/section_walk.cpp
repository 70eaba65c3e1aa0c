// What the section classes share.
#include "inf/section_walk.h"

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

void WriteBanneredLines(LPCSTR lpszBanner, LPCSTR lpszValue) {
    WriteLog("%s", lpszBanner);
    WriteLog("%s", lpszValue);
    WriteLog("%s", lpszBanner);
    WriteEmptyLogLine();
}

}  // namespace pikel
