// Puts language monitors' DLLs into the system directory, also while the running spooler holds them.
#pragma once

#include "frame/string_list.h"
#include "platform/types.h"

namespace pikel {

/// Takes a list of monitor DLLs apart: names that each end in "/". Empty names stay.
/// @param out  appended to; text behind the last "/" is not taken
void AnalyzeParameter(LPCSTR lpszFileList, StringList& out);

/// Copies monitor DLLs into the system directory where they are missing there or older than the source's.
///
/// The 9x family replaces a file in use at the next start; the NT family stops the spooler for the copy and starts it
/// again.
///
/// @param lpszFilePath   folder of the new files. Required.
/// @param lpszFileList   their names, each with a "/" behind it. Required.
/// @param pdwRebootFlag  [out] 1 when a file waits for the next start, else 0. May be null.
/// @return 0; 87 for a missing argument, and for a list whose last name has no "/" behind it; the code with which the
///         system directory can't be had, and nothing is copied then; else, on the 9x family the code that ended the
///         walk, and on the NT family the code of the last file that was copied or compared
DWORD DoCopyMointorFile(LPCSTR lpszFilePath, LPCSTR lpszFileList, LPDWORD pdwRebootFlag);

}  // namespace pikel
