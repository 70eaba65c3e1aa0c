// The texts that Print UI commands are made of, in buffers of fixed size.
#pragma once

#include "printui/run_dll32.h"

namespace pikel {

inline constexpr DWORD kCommandLineSize = 2048;  ///< bytes, NUL included
inline constexpr DWORD kVersionPartSize = 260;   ///< likewise, of the part that names system and version

/// Fills a buffer, printf style.
/// @return 0; 8 for a text that doesn't fit with its NUL, whose front part is in the buffer then
[[gnu::format(printf, 3, 4)]] DWORD FormatBounded(LPSTR lpszBuffer, DWORD dwSize, const char* lpszFormat, ...);

/// A name or path as it goes into a command line. Empty until it is converted.
class ConvertedText {
  public:
    /// @return the code of ConvertPrintUICommandString; on failure the text is the unconverted one
    DWORD Convert(LPCSTR lpszText) { return ConvertPrintUICommandString(lpszText, m_szText, sizeof m_szText); }
    LPCSTR Get() const { return m_szText; }

  private:
    char m_szText[MAX_PRINTUI_TEXT] = {};
};

/// True on the Vista generation, whose Print UI installs without a quiet switch.
bool IsVistaGeneration();

// Codes that a command which went well leaves behind, and that two operations take for success: 122
// (ERROR_INSUFFICIENT_BUFFER), 203 (ERROR_ENVVAR_NOT_FOUND) and 1008 (ERROR_NO_TOKEN). They are bit masks, not
// comparisons: every code with all bits of a mask passes, 0xFB as well as 0xCB. A comparison would report such a
// command as failed.
inline constexpr DWORD kByteMask = 0xFF;
inline constexpr DWORD kInsufficientBufferMask = 0x7A;
inline constexpr DWORD kEnvironmentNotFoundMask = 0xCB;
inline constexpr DWORD kNoTokenMask = 0x3F0;

/// True when a code's low byte has all bits of one of the first two masks.
constexpr bool HasByteMask(DWORD dwCode, DWORD dwMask) {
    return (dwCode & kByteMask & dwMask) == dwMask;
}

}  // namespace pikel
