// Registry entries of colour profiles on Windows 95, which has no library call for them.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Enters a monitor profile. Does nothing for a file of another class, or one that can't be read. Failures are logged
/// at detail level; keys made before a failure stay.
/// @param lpszPath  full path, written as it stands: the same file under another path is another profile
void WIToolRegistMntrProfileKey(LPCSTR lpszPath);

/// Enters a printer profile, in the same way. The key of the profile's quality is left open.
void WIToolRegistPrtrProfileKey(LPCSTR lpszPath);

/// 1 when one of the key's values of nine characters that begin with Profile names the path, without regard to case;
/// else 0.
DWORD IsProfileRegistered(HKEY hKey, LPCSTR lpszPath);

}  // namespace pikel
