// What a machine of a system holds when it comes fresh from its installation: folders, a few files, the registry.
#pragma once

#include <filesystem>
#include <string_view>

#include "machine/system/machine.h"

namespace pikel::simulated {

Generation GenerationOf(const SystemDescription& system);
/// The environment of a system's own drivers.
std::string_view EnvironmentOf(const SystemDescription& system);

/// Puts drive, registry.reg and, as the last one, machine.ini into a folder that is there and empty. Throws
/// MachineError and std::filesystem::filesystem_error.
void FillFreshMachine(const std::filesystem::path& folder, const SystemDescription& system);

}  // namespace pikel::simulated
