// Tells a connection to a shared printer from a printer of the machine.
#pragma once

#include "platform/types.h"

namespace pikel {

/// Tells whether a name is that of a connection, by the routine of the running system. The 9x family, and a system
/// without a row, has none.
/// @param lpszPrinterName  null: 0
/// @param dwSyntaxOnly     non-zero: the name's form alone decides, two backslashes in front; 0: the spooler is asked
/// @return 1 or 0. An enumeration that fails answers 0.
DWORD IsPrinterConnection(LPCSTR lpszPrinterName, DWORD dwSyntaxOnly);

}  // namespace pikel
