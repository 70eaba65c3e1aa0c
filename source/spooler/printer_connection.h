// Tells a connection to a shared printer from a printer of the machine.
#pragma once

#include "frame/text.h"

namespace pikel {

/// Tells whether a name is that of a connection, by the routine of the running system. The 9x family, and a system
/// without a row, has none.
/// @param lpszPrinterName  null: 0
/// @param dwSyntaxOnly     non-zero: the name's form alone decides, two backslashes in front; 0: the spooler is asked
/// @return 1 or 0. An enumeration that fails answers 0.
DWORD IsPrinterConnection(LPCSTR lpszPrinterName, DWORD dwSyntaxOnly);

/// A record or a printer's level 2 data is that of a connection to a shared printer when its name begins with a
/// backslash and it names a server. An empty server's name is none here, other than for IsPrinterConnection.
template <class Info>
bool IsConnectionRecord(const Info& info) {
    return !IsEmpty(info.pPrinterName) && info.pPrinterName[0] == '\\' && !IsEmpty(info.pServerName);
}

}  // namespace pikel
