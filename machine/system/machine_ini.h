// machine.ini: the description of a machine's system.
//
//   [system]
//   name = xp
//   major = 5
//   ...
//
// One field a line, numbers decimal or with 0x, UTF-8. Every field is required, so that a file with a spelling mistake
// is refused and not read as something else.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "machine/base/system_description.h"

namespace pikel::simulated {

/// Throws MachineError for a text with a line break in it.
std::string WriteMachineIni(const SystemDescription& system);
/// @param file  named in the MachineError that tells of a wrong line or a missing field
SystemDescription ReadMachineIni(std::string_view text, const std::filesystem::path& file);

}  // namespace pikel::simulated
