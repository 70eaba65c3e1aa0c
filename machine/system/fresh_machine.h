// What a machine of a system holds when it comes fresh from its installation: folders, a few files, the registry.
#pragma once

#include <filesystem>

#include "machine/base/system_description.h"

namespace pikel::simulated {

/// Puts drive, registry.reg and, as the last one, machine.ini into a folder that is there and empty. Throws
/// MachineError and std::filesystem::filesystem_error.
void FillFreshMachine(const std::filesystem::path& folder, const SystemDescription& system);

}  // namespace pikel::simulated
