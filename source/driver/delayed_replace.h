// Files that a running process of the 9x family holds: they are replaced or deleted at the system's next start, by the
// [rename] section of "wininit.ini".
#pragma once

#include "platform/types.h"

namespace pikel {

/// The name under which a new file waits: the old one's path with another extension.
/// @param lpszNewFile [out]  at least MAX_PATH bytes; untouched on failure
/// @return false for a null argument and for a name that doesn't fit
bool ReplaceExtension(LPCSTR lpszOldFile, LPCSTR lpszExtension, LPSTR lpszNewFile);

/// Puts a new file beside the old one, with the extension ".new", and has the system replace the old one at its next
/// start. Two files that differ in their extensions alone share one waiting name; nothing guards against that.
/// @return 0; 87 for a null argument; 1359 when the waiting name can't be formed; else the code of the copy, after
///         which nothing is entered, or of WriteWininit, after which the waiting file stays
DWORD RenameFileAndRegister9x(LPCSTR lpszOldFile, LPCSTR lpszSourceFile);

/// Enters a step into the [rename] section of "wininit.ini", unless the same step is there.
/// @param lpszTarget  full path that is replaced, or "NUL" to delete the source
/// @param lpszSource  full path of the file that takes its place
/// @return 0; 87 for a null argument; 122 when the section holds no more; else the code of the profile call
DWORD WriteWininit(LPCSTR lpszTarget, LPCSTR lpszSource);

}  // namespace pikel
