// What the routines that go through the system's colour library share.
#pragma once

#include "platform/types.h"

namespace pikel {

inline constexpr char kColourLibrary[] = "mscms.dll";
inline constexpr DWORD kSystemWide = 0;  // WCS_PROFILE_MANAGEMENT_SCOPE_SYSTEM_WIDE

/// Names of a profile and of a printer as wide text, in the active code page. They stand in cleared buffers of which
/// the last character is never written, so that a name that is too long is cut and ends in a NUL all the same.
class WideColourNames {
  public:
    /// @param lpszProfile, lpszPrinterName  null counts as empty
    WideColourNames(LPCSTR lpszProfile, LPCSTR lpszPrinterName);

    LPCWSTR Profile() const { return m_wszProfile; }
    LPCWSTR Device() const { return m_wszDevice; }

  private:
    WCHAR m_wszProfile[520] = {};
    WCHAR m_wszDevice[1040] = {};
};

}  // namespace pikel
