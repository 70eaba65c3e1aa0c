// What Windows 95's registry entries need of an ICC profile file.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Bytes of the profile's signatures: four that nobody uses, the device's manufacturer, the device's model.
inline constexpr DWORD kProfileIdentSize = 12;
/// Size of a description text's buffer.
inline constexpr DWORD kProfileTextSize = 256;
/// Size of the device class's buffer: four characters and a NUL.
inline constexpr DWORD kProfileKindSize = 5;

/// Reads the device class, the signatures and the two description texts out of the first 1024 bytes of a profile.
///
/// @param lpszPath                    full path of the profile
/// @param pbIdent [out]               kProfileIdentSize bytes in file order; untouched when the file can't be read
/// @param lpszManufacturerText [out]  kProfileTextSize bytes; empty when there is no description
/// @param lpszModelText [out]         kProfileTextSize bytes; empty when there is no second description
/// @param lpszKind [out]              kProfileKindSize bytes, such as "mntr"; untouched when the file can't be read
/// @return 1 when both description texts were found, else 0; class and signatures may be there all the same
DWORD WIToolReadProfileData(LPCSTR lpszPath, LPBYTE pbIdent, LPSTR lpszManufacturerText, LPSTR lpszModelText,
                            LPSTR lpszKind);

}  // namespace pikel
