// Numbers at the start of a text.
#pragma once

#include <string>

#include "platform/types.h"

namespace pikel {

/// The number at the start of a text, as atoi reads it: blanks, a sign, digits; 0 where there are none. A number that
/// is too large keeps its low 32 bits, on every system.
INT ParseNumber(LPCSTR lpszText);
inline INT ParseNumber(const std::string& strText) {
    return ParseNumber(strText.c_str());
}

/// The same, but a number that is too large gives the largest or the smallest INT.
INT ParseNumberClamped(LPCSTR lpszText);

}  // namespace pikel
