// The colour profiles that a printer reports.
#pragma once

#include "frame/string_list.h"
#include "platform/types.h"

namespace pikel {

/// Collects the profiles that are linked to a printer, as the system tells them: full paths, in its order, with
/// repeats.
///
/// @param profiles [out]   emptied first; stays empty for a printer that gives no information context
void CollectPrinterProfiles(LPCSTR lpszPrinterName, StringList& profiles);

}  // namespace pikel
