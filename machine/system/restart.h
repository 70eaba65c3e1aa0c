// The start of a machine, as far as files wait for it: PendingFileRenameOperations of the session manager on the NT
// family, the section [rename] of wininit.ini on the 9x family.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// One step of a start.
struct RestartStep {
    std::string source;
    std::string target;  ///< empty: the source is deleted
    DWORD code = 0;      ///< how it went
};

/// Carries out what waits, in its order, and forgets it; the 9x family shares what it starts with. A step that fails is
/// told and lost, as on Windows.
std::vector<RestartStep> Restart(Machine& machine);

}  // namespace pikel::simulated
