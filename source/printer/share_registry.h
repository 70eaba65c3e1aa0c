// A printer's share on the 9x family: kept by the network library and in a registry key of its own. The keys stand
// below HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\CurrentVersion\Network\LanMan and bear the names of the shares.
//
// Each operation looks its function up in "svrapi.dll". Null arguments and a library or function that isn't
// there end it without its end line; every other way has it.
#pragma once

#include "frame/pikel.h"

namespace pikel {

/// Reads a share.
/// @param lpszShareName  Required.
/// @param pShare [out]   Required. The first seven fields alone are filled; a remark or path that the library hands out
///                       as null leaves its field. Unchanged on failure.
/// @return 0; 87 for a null argument; the last error when the library or its function isn't there; else the library's
///         code. 0 also when there was no memory for the first block: the record is unchanged then.
DWORD GetSharePrinter9x(LPCSTR lpszShareName, PrinterShareRecord* pShare);

/// Changes a share, its passwords included. The registry stays as it is.
/// @param lpszShareName  name of the share so far. Required.
/// @param pRecord        Required. A text that fills its field to the end is cut by one character.
/// @return as GetSharePrinter9x
DWORD SetSharePrinter9x(LPCSTR lpszShareName, const PrinterShareRecord* pRecord);

/// Adds a share without passwords, enters it into the registry and tells the shell.
/// @param pRecord  Required. A text that fills its field to the end is cut by one character.
/// @return 0; 87 for null; the last error when the library or its function isn't there; the library's code, and the
///         registry is as it was then; else the code with which the share's key could not be made. Values that could
///         not be written are not told.
DWORD AddSharePrinter9x(const PrinterShareRecord* pRecord);

/// Deletes a share and its registry key, and tells the shell.
/// @param lpszShareName    Required.
/// @param lpszPrinterName  what the shell is told; may be null
/// @return 0, also when the registry key could not be deleted; 87 for a null share name; the last error when the
///         library or its function isn't there; else the library's code, and the registry is as it was then
DWORD DeleteSharePrinter9x(LPCSTR lpszShareName, LPCSTR lpszPrinterName);

}  // namespace pikel
