// Finding the INF of an installed driver again, under the name that the system gave it.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Finds the newest INF of a provider and class that lists a driver.
/// @param driverName      model name; case plays no part. Required.
/// @param dwArchitecture, dwMajorVersion, dwMinorVersion  system whose models count
/// @param infFolder       folder with its closing backslash, or null for the system's INF folder. On the 9x family the
///                        folder "inf\Other" of the Windows folder is searched as well.
/// @param lpszProvider, lpszClass  whose INFs count
/// @param name [out]      path of the INF; an empty text when no INF lists the driver; untouched when no INF is of the
///                        provider and class, and when it doesn't fit. Required.
/// @param size            bytes of name
/// @return 87 for a null required argument; 2 without an INF of the provider and class; else the code of reading the
///         last candidate, 2 when it has no models. Only name tells whether the driver was found.
DWORD DoGetInstalledInfName(LPCSTR driverName, DWORD dwArchitecture, DWORD dwMajorVersion, DWORD dwMinorVersion,
                            LPCSTR infFolder, LPCSTR lpszProvider, LPCSTR lpszClass, LPSTR name, DWORD size);

}  // namespace pikel
