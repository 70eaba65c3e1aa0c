// Folders that the shell knows by number. The paths stand in the registry below Explorer\Shell Folders.
#pragma once

#include <string>

namespace pikel::simulated {

class Machine;

/// Path of a folder; empty for one that the machine doesn't know.
/// @param id  CSIDL_..., without flags
std::string KnownFolder(Machine& machine, int id);

}  // namespace pikel::simulated
