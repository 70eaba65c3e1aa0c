// Printers in the directory, from Windows 2000 on. A published printer has the text ObjectGUID in its key, and the
// number Action tells its state. The machine's directory takes every printer at once, so that nothing is ever pending.
#pragma once

#include <string>
#include <string_view>

#include "machine/base/machine.h"

namespace pikel::simulated {

struct Publication {
    std::string objectGuid;  ///< empty for a printer that isn't published
    DWORD action = DSPRINT_UNPUBLISH;
};

/// State of a local printer; one that isn't there isn't published.
Publication PublicationOf(Machine& machine, std::string_view printer);

/// @param action  DSPRINT_PUBLISH; DSPRINT_REPUBLISH gives a new object; DSPRINT_UPDATE leaves the state as it is;
///                DSPRINT_UNPUBLISH
/// @return 87 for any other action
DWORD Publish(Machine& machine, std::string_view printer, DWORD action);

}  // namespace pikel::simulated
