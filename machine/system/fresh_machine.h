// What a machine of a system holds when it comes fresh from its installation: folders, a few files, the registry.
#pragma once

#include "machine/base/system_description.h"

namespace pikel::simulated {

class Disk;
class Registry;

/// Puts the drive on an empty disk and the keys into an empty registry.
void FillFreshMachine(Disk& disk, Registry& registry, const SystemDescription& system);

}  // namespace pikel::simulated
