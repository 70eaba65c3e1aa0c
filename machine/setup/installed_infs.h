// The INFs that the system has installed: where it looks for one, and how it takes up a new one.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "machine/inf/open_inf.h"
#include "platform/types.h"

namespace pikel::simulated {

/// The folder of the system's INFs.
std::string InfFolder(Machine& machine);

/// "{4D36E979-E325-11CE-BFC1-08002BE10318}"; all zeros for a text that isn't of that form.
GUID GuidOf(const std::string& text);
/// Class name of an INF: its own, or the one that the system has for the identifier.
std::string ClassOfInf(OpenInf& inf, const std::string& guid);

// How SetupGetInfInformationA is told which INF is meant.
inline constexpr DWORD kIsHandle = 1;
inline constexpr DWORD kIsPath = 2;
inline constexpr DWORD kReverseSearch = 4;

/// Full path of an INF; nothing when it isn't there. A name without a folder is looked for in the system's INF folder
/// and then in those of DevicePath, or the other way round.
std::optional<std::string> LocateInf(Machine& machine, std::string_view name, DWORD search);

/// Where an INF is, or goes: the path, and whether it is there.
struct InfDestination {
    std::string path;
    bool isThere = false;
};

/// The file of the INF folder that an INF is or has the same content as, else the lowest oem number that is free.
InfDestination FindInfDestination(Machine& machine, const std::string& source, const std::string& bytes);
/// Puts an INF there.
/// @param style  SP_COPY_...
/// @return 0; 80 or 2 where the flags forbid to keep or to make the file; else what the copy gave
DWORD TakeUpInf(Machine& machine, const std::string& source, const InfDestination& destination, DWORD style);

}  // namespace pikel::simulated
