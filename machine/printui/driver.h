// The part of PRINTUI.DLL that installs and removes drivers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "machine/base/machine.h"
#include "machine/printui/command.h"
#include "machine/printui/driver_package.h"

namespace pikel::simulated {

/// A value of a command in the machine's code page; empty for one that isn't given.
std::string NarrowText(const Machine& machine, const PrintUICommand::Text& text);

/// The system for which a command's driver is, by /h and /v; the machine's own for what it leaves out.
///
/// With /K, which came with XP, /h is an environment and /v a number. Otherwise they are words: on Windows 2000 "Intel"
/// and a text of the string table, later "x86", "x64" or "Itanium" and "Type 3 - Kernel Mode" and its like.
///
/// @return 0; 1805 for an unknown /h; 87 for an unknown /v, or one that the environment doesn't take
DWORD FindTarget(Machine& machine, const PrintUICommand& command, DriverTarget* target);

/// Installs a driver from an INF: copies the model's files, registers its language monitor and the driver, installs its
/// colour profiles, applies its registry entries, and puts the INF among the system's own.
/// @param folder  of the files; empty: the INF's own
DWORD InstallDriver(Machine& machine, const DriverTarget& target, const std::string& inf, const std::string& folder,
                    const std::string& model);

/// Names of the colour profiles that a model of an INF brings along; none for an INF that can't be read.
std::vector<std::string> ProfilesOfPackage(Machine& machine, const DriverTarget& target, const std::string& inf,
                                           const std::string& model);

}  // namespace pikel::simulated
