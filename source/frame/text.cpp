// Small text helpers of the active code page.
#include "frame/text.h"

#include <algorithm>

namespace pikel {

bool EqualAsciiNoCase(std::string_view left, std::string_view right) {
    const auto fold = [](char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch; };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [fold](char chLeft, char chRight) { return fold(chLeft) == fold(chRight); });
}

bool CopyIfFits(std::string_view text, LPSTR lpszBuffer, DWORD dwSize) {
    if (lpszBuffer == nullptr || text.size() >= dwSize) {
        return false;
    }
    text.copy(lpszBuffer, text.size());
    lpszBuffer[text.size()] = '\0';
    return true;
}

std::basic_string<WCHAR> ToWide(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    const int nBytes = static_cast<int>(text.size());
    const int nLength = Platform().MultiByteToWideChar(CP_ACP, 0, text.data(), nBytes, nullptr, 0);
    if (nLength <= 0) {
        return {};
    }
    std::basic_string<WCHAR> strWide(static_cast<std::size_t>(nLength), WCHAR());
    const int nWritten = Platform().MultiByteToWideChar(CP_ACP, 0, text.data(), nBytes, strWide.data(), nLength);
    strWide.resize(nWritten > 0 ? static_cast<std::size_t>(nWritten) : 0);
    return strWide;
}

BSTR ToBstr(std::string_view text) {
    const std::basic_string<WCHAR> strWide = ToWide(text);
    return Platform().SysAllocStringLen(strWide.data(), static_cast<UINT>(strWide.size()));
}

}  // namespace pikel
