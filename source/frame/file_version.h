// Versions of driver files, as an installer shows and compares them: two numbers, "%d.%02d", from the first two dotted
// parts of a file's version text. The rest of the text is dropped.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Answers of DoCheckDriverFileVersion, which cross the table unchanged.
enum FileVersionVerdict : DWORD {
    FileVersionEqual = 1,
    FileVersionHigher = 2,
    FileVersionLowerOrUnreadable = 3,
};

/// Bytes of a buffer that holds any version text.
inline constexpr DWORD kVersionTextSize = 260;

/// Reads a file's product version as a version text. A file whose version resource names no language gives the text of
/// version 0.
///
/// @param lpszFilePath  full path, active code page. Required.
/// @param lpszText      [out] the text with its NUL; untouched on failure and when it doesn't fit. May be null.
/// @param dwSize        bytes at lpszText
/// @return 0, also for a text that didn't fit; 87 for a null path; 8 without memory; 1359 for a resource without
///         translations; 122 for a version text of 260 bytes or more; else the code of the version call that failed
DWORD DoGetDriverFileVersion(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize);

/// The same with a choice of the text that is read.
/// @param dwWhich  0: "FileVersion", any other value: "ProductVersion"
DWORD DoGetDriverFileVersion(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize, DWORD dwWhich);

/// Compares a file's product version with a version text, number by number: 1.10 is higher than 1.9.
///
/// @param lpszFilePath     full path. Required.
/// @param lpszVersionText  what it is compared with. Required.
/// @param lpszText         [out] the file's version text when it could be read and fits. May be null.
/// @param dwSize           bytes at lpszText
/// @return a FileVersionVerdict about the file, or 87 for a missing argument
DWORD DoCheckDriverFileVersion(LPCSTR lpszFilePath, LPCSTR lpszVersionText, LPSTR lpszText, DWORD dwSize);

}  // namespace pikel
