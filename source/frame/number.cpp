// Numbers at the start of a text.
#include "frame/number.h"

#include <limits>

namespace pikel {

namespace {

/// Digits with their sign.
struct Digits {
    DWORD dwLow = 0;  ///< low 32 bits of the number
    bool bNegative = false;
    bool bTooLarge = false;  ///< for 32 bits without a sign
};

bool IsBlank(char ch) {
    return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

Digits ReadDigits(LPCSTR lpszText) {
    while (IsBlank(*lpszText)) {
        ++lpszText;
    }
    Digits digits;
    digits.bNegative = *lpszText == '-';
    if (*lpszText == '-' || *lpszText == '+') {
        ++lpszText;
    }
    for (; *lpszText >= '0' && *lpszText <= '9'; ++lpszText) {
        const DWORDLONG qwNumber = DWORDLONG{digits.dwLow} * 10 + static_cast<DWORDLONG>(*lpszText - '0');
        digits.dwLow = static_cast<DWORD>(qwNumber);
        digits.bTooLarge = digits.bTooLarge || qwNumber > std::numeric_limits<DWORD>::max();
    }
    return digits;
}

}  // namespace

INT ParseNumber(LPCSTR lpszText) {
    const Digits digits = ReadDigits(lpszText);
    return static_cast<INT>(digits.bNegative ? 0 - digits.dwLow : digits.dwLow);
}

INT ParseNumberClamped(LPCSTR lpszText) {
    constexpr DWORD kLargest = static_cast<DWORD>(std::numeric_limits<INT>::max());
    const Digits digits = ReadDigits(lpszText);
    if (digits.bTooLarge || digits.dwLow > kLargest) {
        return digits.bNegative ? std::numeric_limits<INT>::min() : std::numeric_limits<INT>::max();
    }
    return ParseNumber(lpszText);
}

}  // namespace pikel
