// Numbers in INF fields.
#pragma once

#include <cstdlib>
#include <string>

#include "platform/types.h"

namespace pikel::simulated {

/// Decimal with or without a sign, or hexadecimal behind 0x; 0 for what is no number. Zeros in front mean nothing.
inline DWORD InfNumber(const std::string& text) {
    const std::size_t digits = text.find_first_not_of("+- \t");
    const bool isHexadecimal =
        digits != std::string::npos && (text.compare(digits, 2, "0x") == 0 || text.compare(digits, 2, "0X") == 0);
    return static_cast<DWORD>(std::strtoll(text.c_str(), nullptr, isHexadecimal ? 16 : 10));
}

/// A byte in hexadecimal, with or without 0x.
inline char InfByte(const std::string& text) {
    return static_cast<char>(std::strtoul(text.c_str(), nullptr, 16));
}

}  // namespace pikel::simulated
