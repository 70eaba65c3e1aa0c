// Who runs the process, and the security descriptors of printers as text.
#pragma once

#include "platform/owned.h"

namespace pikel {

/// A descriptor as GetStringSD hands it out, with the block that it stands in: text of the system's conversion, or on
/// NT 4 the descriptor's own bytes. Each block is given back in the way in which it was made.
class StringSD {
  public:
    /// Null when nothing was read. The bytes of NT 4 have no NUL behind them: their length alone ends them.
    LPSTR Text() const { return static_cast<LPSTR>(m_text ? m_text.Get() : m_bytes.Get()); }
    /// As the system reported it: with the NUL for text, the size of the value for NT 4's bytes; 0 without a text.
    DWORD Length() const { return Text() == nullptr ? 0 : m_dwLength; }

    /// Releases what is held.
    void Reset();
    /// Takes over a text of the system's conversion, which LocalFree releases.
    void TakeText(LocalBlock text, DWORD dwLength);
    /// Takes over bytes in the process heap, which HeapFree releases.
    void TakeBytes(HeapBlock bytes, DWORD dwLength);

  private:
    LocalBlock m_text;
    HeapBlock m_bytes;
    DWORD m_dwLength = 0;
};

/// Tells whether the process may do administrative work: whether its token names the local Administrators group, in
/// whatever role, so that a deny-only entry counts too. Where the system has no tokens, everybody may.
/// @return 1 yes; 0 no, and also when the token can't be read
DWORD IsAdministrators();

/// Reads a printer's security descriptor: owner, group and both lists as text; on NT 4 the bytes of the printer's
/// registry value "Security".
/// @param lpszPrinterName  Required.
/// @param sd [out]         emptied first; stays empty on failure
/// @return 0; 87 for a null name; the code of the first step that failed. On NT 4 a value that can't be read gives 0
///         with an empty sd.
DWORD GetStringSD(LPCSTR lpszPrinterName, StringSD& sd);

/// Gives a printer the security descriptor that GetStringSD read on a system of the same kind.
/// @param lpszPrinterName  Required.
/// @param lpszText         descriptor text with a NUL; on NT 4 the bytes
/// @param dwLength         bytes at lpszText; counts on NT 4 alone
/// @return 0; 87 for a null name; the code of the first step that failed. On NT 4 a value that can't be written gives
///         0 all the same.
DWORD SetStringSD(LPCSTR lpszPrinterName, LPCSTR lpszText, DWORD dwLength);

}  // namespace pikel
