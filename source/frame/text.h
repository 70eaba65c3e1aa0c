// Small text helpers of the active code page.
#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"

namespace pikel {

/// Null or empty.
inline bool IsEmpty(LPCSTR lpszText) {
    return lpszText == nullptr || *lpszText == '\0';
}

/// The text, or an empty one for null.
inline LPCSTR TextOrEmpty(LPCSTR lpszText) {
    return lpszText == nullptr ? "" : lpszText;
}

/// Equal without regard to case, by the system's locale rules.
inline bool EqualNoCase(LPCSTR lpszLeft, LPCSTR lpszRight) {
    return Platform().lstrcmpiA(lpszLeft, lpszRight) == 0;
}

/// Equal but for the case of ASCII letters, on every system and in every locale.
bool EqualAsciiNoCase(std::string_view left, std::string_view right);

/// Walks a multi-string: texts that each end in a NUL, up to an empty one. Null walks nothing.
///
///     for (LPCSTR lpszName : MultiString(pDependentFiles)) ...
class MultiString {
  public:
    explicit MultiString(LPCSTR lpszTexts) : m_lpszTexts(lpszTexts) {}

    class Iterator {
      public:
        explicit Iterator(LPCSTR lpszText) : m_lpszText(lpszText) {}
        LPCSTR operator*() const { return m_lpszText; }
        Iterator& operator++() {
            m_lpszText += std::string_view(m_lpszText).size() + 1;
            return *this;
        }
        bool operator!=(std::nullptr_t) const { return !IsEmpty(m_lpszText); }

      private:
        LPCSTR m_lpszText;
    };
    Iterator begin() const { return Iterator(m_lpszTexts); }
    std::nullptr_t end() const { return nullptr; }

  private:
    LPCSTR m_lpszTexts;
};

/// Copies a text with its NUL when it fits into size bytes. A null buffer takes nothing.
/// @return true when it was copied; the buffer is untouched otherwise.
bool CopyIfFits(std::string_view text, LPSTR lpszBuffer, DWORD dwSize);

/// Wide text of a narrow one in the active code page.
std::basic_string<WCHAR> ToWide(std::string_view text);

/// A length-prefixed wide text of a narrow one; an empty text gives an empty BSTR, never null. Null: no memory.
BSTR ToBstr(std::string_view text);

}  // namespace pikel
