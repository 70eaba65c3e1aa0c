// Makes a text safe within the quotes of a Print UI command line.
#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "frame/log.h"
#include "printui/run_dll32.h"

namespace pikel {

namespace {

constexpr DWORD kBlockSize = MAX_PRINTUI_TEXT * 8;  // bytes
constexpr int kBlockLength = kBlockSize / sizeof(WCHAR);
constexpr WCHAR kBackslash = '\\';
constexpr WCHAR kAtSign = '@';
constexpr WCHAR kQuote = '"';

/// One of the two wide texts of a conversion: kBlockLength characters, zeroed.
class WideBlock {
  public:
    WideBlock() : m_block(Platform().GlobalAlloc(GMEM_ZEROINIT, kBlockSize)) {}
    explicit operator bool() const { return static_cast<bool>(m_block); }
    WCHAR* Get() { return static_cast<WCHAR*>(m_block.Get()); }

    /// What stands ahead of the NUL, or all but the last character.
    std::basic_string_view<WCHAR> Text() {
        const WCHAR* pEnd = std::find(Get(), Get() + kBlockLength - 1, WCHAR());
        return {Get(), static_cast<std::size_t>(pEnd - Get())};
    }

  private:
    GlobalBlock m_block;
};

/// Copies a text and puts a backslash ahead of characters. What doesn't fit is left out.
/// @param needsBackslash  bool(WCHAR wch, WCHAR wchBefore); 0 stands before the first character
template <class Test>
void CopyWithBackslashes(WideBlock& source, WideBlock& target, Test needsBackslash) {
    WCHAR* pOut = target.Get();
    const WCHAR* pLast = target.Get() + kBlockLength - 1;  // for the NUL
    WCHAR wchBefore = 0;
    for (const WCHAR wch : source.Text()) {
        if (needsBackslash(wch, wchBefore) && pOut < pLast) {
            *pOut++ = kBackslash;
        }
        if (pOut == pLast) {
            break;
        }
        *pOut++ = wch;
        wchBefore = wch;
    }
    *pOut = 0;
}

/// Puts the backslashes in. At-signs come first, so that a double quote behind one is seen behind it.
void Escape(WideBlock& source, WideBlock& target) {
    CopyWithBackslashes(source, target, [](WCHAR wch, WCHAR) { return wch == kAtSign; });
    if (source.Text().find(kQuote) != std::basic_string_view<WCHAR>::npos) {
        std::memcpy(source.Get(), target.Get(), kBlockSize);
        CopyWithBackslashes(source, target,
                            [](WCHAR wch, WCHAR wchBefore) { return wch == kQuote && wchBefore != kBackslash; });
    }
}

/// Outcome of a conversion. One that failed may still have the code 0.
struct Conversion {
    bool bDone = false;
    DWORD dwCode = ERROR_SUCCESS;
};

Conversion Convert(LPCSTR lpszText, WideBlock& source, WideBlock& target, LPSTR lpszOut, int nSize) {
    if (Platform().MultiByteToWideChar(Platform().GetACP(), 0, lpszText, -1, source.Get(), kBlockLength) == 0) {
        const DWORD dwCode = Platform().GetLastError();
        if (dwCode != ERROR_SUCCESS) {  // a failure without a code goes on with an empty text
            return {false, dwCode};
        }
    }
    Escape(source, target);
    if (Platform().WideCharToMultiByte(Platform().GetACP(), 0, target.Get(), -1, lpszOut, nSize, nullptr, nullptr) ==
        0) {
        return {false, Platform().GetLastError()};
    }
    return {true, ERROR_SUCCESS};
}

/// A text of full length leaves no room for its NUL, so that its last byte goes.
void CopyUnconverted(LPCSTR lpszText, LPSTR lpszOut, DWORD dwSize) {
    const std::string_view text = std::string_view(lpszText).substr(0, dwSize - 1);
    std::memcpy(lpszOut, text.data(), text.size());
    lpszOut[text.size()] = '\0';
}

DWORD ConvertOrCopy(LPCSTR lpszText, LPSTR lpszOut, DWORD dwSize) {
    WideBlock source;
    WideBlock target;
    Conversion conversion{false, ERROR_NOT_ENOUGH_MEMORY};
    if (source && target) {
        std::memset(lpszOut, 0, dwSize);
        conversion = Convert(lpszText, source, target, lpszOut, static_cast<int>(dwSize));
    }
    if (!conversion.bDone) {
        CopyUnconverted(lpszText, lpszOut, dwSize);
    }
    return conversion.dwCode;
}

}  // namespace

DWORD ConvertPrintUICommandString(LPCSTR lpszText, LPSTR lpszOut, DWORD dwSize) {
    WriteLog("ConvertPrintUICommandString Start");
    DWORD dwCode = ERROR_INVALID_PARAMETER;
    if (lpszText != nullptr && lpszOut != nullptr && dwSize != 0 && std::strlen(lpszText) <= MAX_PRINTUI_TEXT) {
        dwCode = ConvertOrCopy(lpszText, lpszOut, std::min(dwSize, MAX_PRINTUI_TEXT));
    }
    WriteLog("ConvertPrintUICommandString End(0x%08x)", dwCode);
    return dwCode;
}

}  // namespace pikel
