// The second copy of a driver's files that Windows XP and Server 2003 keep under the driver's hardware ID.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Copies the files of an installed version 3 driver from the folder "3" of the driver directory to a folder beside it
/// that is named after the driver's hardware ID. Does nothing on other systems than version 5 with a minor version.
///
/// @param lpszDriverName  name of the driver, without regard to case. Required.
/// @return 0, also for an unknown driver, one without a hardware ID, and files that can't be copied; 87 for null; 112
///         when the disk is full, and then the folder's files are deleted again
DWORD DoCopyDriverFileToHWIDFolder(LPCSTR lpszDriverName);

}  // namespace pikel
