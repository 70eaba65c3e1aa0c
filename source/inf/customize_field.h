// What a customised build of a driver says of itself in the comments ahead of its INF's [Version].
#pragma once

#include "platform/types.h"

namespace pikel {

inline constexpr int kCustomizeCodeSize = 20;     ///< bytes of a code, NUL included
inline constexpr int kCustomizeCommentSize = 75;  ///< bytes of a comment, NUL included

class CInfCustomizeField {
  public:
    /// Reads the head of an INF as plain text; the Setup API hands no comments out. The flag is not reset first.
    /// @return 0, or 2 when the file can't be opened
    DWORD GetData(LPCSTR lpszInfFile);

    BYTE m_bCustomized = 0;                        ///< 1: the marker is there
    char m_szCode[kCustomizeCodeSize] = {};        ///< at most 8 characters; a shorter one with its line end
    char m_szComment[kCustomizeCommentSize] = {};  ///< without its line end, cut where it doesn't fit
};

/// Tells whether an INF is that of a customised build.
/// @param lpszInfFile                 path of the INF. Required.
/// @param pbCustomized [out]          0 or 1. Required; untouched when lpszInfFile is null.
/// @param lpszCustomizeCode [out]     kCustomizeCodeSize bytes, or null; written for a customised build alone
/// @param lpszCustomizeComment [out]  kCustomizeCommentSize bytes, or null; likewise
/// @return 0; 87 for a null required argument; 2 for a file that can't be opened
DWORD DoGetCustomizeInfo(LPCSTR lpszInfFile, LPDWORD pbCustomized, LPSTR lpszCustomizeCode, LPSTR lpszCustomizeComment);

}  // namespace pikel
