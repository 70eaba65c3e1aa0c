// Whether a file is held by a running process, and which of two files is newer: what has to be known before a driver's
// file is replaced. A file counts as in use when an exclusive open of it fails with a sharing or lock violation; no
// other sign is taken.
#pragma once

#include "platform/types.h"

namespace pikel {

enum class FileUse {
    Free,    ///< it opened
    InUse,   ///< somebody holds it
    Unknown  ///< it can't be opened at all: missing, read-only, denied. Counts as not in use.
};

/// Opens a file for reading and writing without sharing, and closes it at once. From then on anybody may open it.
/// @param pdwCode [out]  why it didn't open, else 0
FileUse ProbeFileUse(LPCSTR lpszPath, DWORD* pdwCode);

/// Takes the read-only attribute away. A missing file reads as read-only, and nothing comes of it.
void ClearReadOnly(LPCSTR lpszPath);

/// Whether a file of a 9x driver is in use: one of its dependent files, but not its language monitor, "usbmon.dll", or
/// files whose names mark them as another system's. Read-only files are made writable on the way and stay so.
/// @param lpszDriverName  name of the driver, without regard to case
/// @return 1 or 0; always 0 on the NT family and for a driver that isn't there
DWORD IsDriverFileLoaded(LPCSTR lpszDriverName);

/// Whether one file is in use. Its attributes stay, so a read-only file counts as not in use.
/// @return 1 or 0, also for null
DWORD CheckUseMonitorFile(LPCSTR lpszPath);

/// Which of two files is newer: by their file versions, and by their last write times where those don't tell.
/// @param nResult [out]  2: the source is missing; -2: the target is (this wins); 1: the source is newer; -1: the
///                       target is; 0: equal, or it can't be told
/// @return always 0
DWORD CompareFileVersion(LPCSTR lpszSource, LPCSTR lpszTarget, INT& nResult);

}  // namespace pikel
