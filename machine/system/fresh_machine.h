// What a machine of a system holds when it comes fresh from its installation: folders, a few files, the registry.
#pragma once

#include <string_view>

#include "machine/system/machine.h"

namespace pikel::simulated {

Generation GenerationOf(const SystemDescription& system);
/// The environment of a system's own drivers.
std::string_view EnvironmentOf(const SystemDescription& system);

/// Puts the drive on an empty disk and the keys into an empty registry.
void FillFreshMachine(Disk& disk, Registry& registry, const SystemDescription& system);

}  // namespace pikel::simulated
