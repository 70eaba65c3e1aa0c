// Directory identifiers: the numbers by which INFs name folders, in [DestinationDirs] and as %10%.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

inline constexpr DWORD kAbsoluteDirectory = 0xffffffff;  ///< DIRID_ABSOLUTE: the sub-folder is the whole path
inline constexpr DWORD kAbsoluteDirectory16 = 0xffff;    ///< its older spelling
inline constexpr DWORD kFirstUserDirectory = 0x8000;     ///< DIRID_USER: a program may set ids from here on

/// The folder that a machine's system has for an id: without a backslash at its end, but for the root of a drive.
/// Nothing for an id that it doesn't know. Printing's own ids, 66000 to 66003, are those of the running environment.
std::optional<std::string> SystemDirectory(Machine& machine, DWORD id);

/// Folders that a program gave to ids of one open INF.
class UserDirectories {
  public:
    /// Gives an id a folder. An id below 0x8000 belongs to the system and gives 87, and so do those for absolute paths.
    /// Ids of printing (66000 and above) can be set like any other: that is how a driver for another processor gets to
    /// its own folder. A null or an empty folder takes the id's folder away, so that a look-up that failed leaves the
    /// id with the system's folder; with id 0 it takes all of them away.
    /// @return a system code
    DWORD Set(DWORD id, const char* folder);

    /// Null for an id that nobody set.
    const std::string* Find(DWORD id) const;

  private:
    std::map<DWORD, std::string> m_folders;
};

}  // namespace pikel::simulated
