// Code pages and text comparison.
#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr UINT kThreadCodePage = 3;          // CP_THREAD_ACP
constexpr DWORD kErrorOnInvalid = 0x8;       // MB_ERR_INVALID_CHARS
constexpr DWORD kErrorOnInvalidWide = 0x80;  // WC_ERR_INVALID_CHARS

/// The page that a number of a call stands for; 0 for one that isn't known.
UINT ResolveCodePage(UINT codePage) {
    if (codePage == CP_ACP || codePage == kThreadCodePage) {
        return Current().System().codePage;
    }
    return KnowsCodePage(codePage) ? codePage : 0;
}

/// Hands a converted text out: asked for the size alone, or copied. Of a text that doesn't fit the front part is copied
/// all the same, as Windows does it.
template <class Character>
int HandOut(const std::basic_string<Character>& text, Character* buffer, int size) {
    const int length = static_cast<int>(text.size());
    if (size == 0) {
        return length;
    }
    std::memcpy(buffer, text.data(), static_cast<std::size_t>(std::min(length, size)) * sizeof(Character));
    return length > size ? Fail(ERROR_INSUFFICIENT_BUFFER, 0) : length;
}

/// WideCharToMultiByte with a default character of the caller's own, which replaces '?' for what the page lacks.
std::string FromWideWithDefault(UINT codePage, std::u16string_view text, const char* defaultText, bool* replaced) {
    if (defaultText == nullptr) {
        return FromWide(codePage, text, replaced);
    }
    std::string bytes;
    *replaced = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPair = text[i] >= 0xD800 && text[i] < 0xDC00 && i + 1 < text.size();
        bool missing = false;
        const std::string converted = FromWide(codePage, text.substr(i, isPair ? 2 : 1), &missing);
        bytes += missing ? std::string_view(defaultText) : std::string_view(converted);
        *replaced |= missing;
        i += isPair ? 1 : 0;
    }
    return bytes;
}

}  // namespace

UINT WINAPI GetACP() {
    return Current().System().codePage;
}

BOOL WINAPI IsDBCSLeadByte(BYTE TestChar) {
    return IsLeadByte(Current().System().codePage, TestChar) ? TRUE : FALSE;
}

int WINAPI MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte,
                               LPWSTR lpWideCharStr, int cchWideChar) {
    const UINT page = ResolveCodePage(CodePage);
    if (page == 0 || lpMultiByteStr == nullptr || cbMultiByte == 0 || cbMultiByte < -1 || cchWideChar < 0 ||
        (cchWideChar != 0 && lpWideCharStr == nullptr)) {
        return Fail(ERROR_INVALID_PARAMETER, 0);
    }
    const std::size_t size =
        cbMultiByte == -1 ? std::strlen(lpMultiByteStr) + 1 : static_cast<std::size_t>(cbMultiByte);
    bool replaced = false;
    const std::u16string text = ToWide(page, std::string_view(lpMultiByteStr, size), &replaced);
    if (replaced && (dwFlags & kErrorOnInvalid) != 0) {
        return Fail(ERROR_NO_UNICODE_TRANSLATION, 0);
    }
    return HandOut(text, lpWideCharStr, cchWideChar);
}

int WINAPI WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar,
                               LPSTR lpMultiByteStr, int cbMultiByte, LPCSTR lpDefaultChar, LPBOOL lpUsedDefaultChar) {
    const UINT page = ResolveCodePage(CodePage);
    if (page == 0 || lpWideCharStr == nullptr || cchWideChar == 0 || cchWideChar < -1 || cbMultiByte < 0 ||
        (cbMultiByte != 0 && lpMultiByteStr == nullptr)) {
        return Fail(ERROR_INVALID_PARAMETER, 0);
    }
    const std::size_t size =
        cchWideChar == -1 ? std::char_traits<WCHAR>::length(lpWideCharStr) + 1 : static_cast<std::size_t>(cchWideChar);
    bool replaced = false;
    const std::string text =
        FromWideWithDefault(page, std::u16string_view(lpWideCharStr, size), lpDefaultChar, &replaced);
    if (replaced && page == CP_UTF8 && (dwFlags & kErrorOnInvalidWide) != 0) {
        return Fail(ERROR_NO_UNICODE_TRANSLATION, 0);
    }
    const int result = HandOut(text, lpMultiByteStr, cbMultiByte);
    if (lpUsedDefaultChar != nullptr && (result != 0 || text.empty())) {
        *lpUsedDefaultChar = replaced && page != CP_UTF8 ? TRUE : FALSE;
    }
    return result;
}

int WINAPI lstrcmpiA(LPCSTR lpString1, LPCSTR lpString2) {
    if (lpString1 == nullptr || lpString2 == nullptr) {
        return (lpString1 != nullptr ? 1 : 0) - (lpString2 != nullptr ? 1 : 0);
    }
    const int order = CompareNoCase(Current().System().codePage, lpString1, lpString2);
    return (order > 0 ? 1 : 0) - (order < 0 ? 1 : 0);
}

}  // namespace pikel::simulated
