// The shell room: shell links, known folders, and news of changes, which the desktop keeps. It stands on desktop, files
// and registry.
//
// Shell links of the machine: COM objects that save themselves as text that a person can read.
//
//   [Shell Link]
//   Target=C:\Program Files\x\x.exe
//   Working Directory=C:\Program Files\x
//   Arguments=/a
//   Description=...
//   Icon=C:\x.ico,1
//
// The file is UTF-8 with CR LF; lines of what isn't set are left out, control characters are written as blanks.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "machine/base/machine.h"

namespace pikel::simulated {

struct LinkSettings {
    std::string target;
    std::string workingDirectory;
    std::string arguments;
    std::string description;
    std::string iconPath;
    int iconIndex = 0;
    WORD hotkey = 0;      ///< lives with the object alone, as does showCommand
    int showCommand = 1;  ///< SW_SHOWNORMAL
};

std::string LinkText(const LinkSettings& settings, UINT codePage);
/// Nothing for a text that is no link.
std::optional<LinkSettings> ParseLink(std::string_view text, UINT codePage);

/// Makes a shell link with a reference count of 1. It counts as an open COM object of the machine until it goes.
IShellLinkA* MakeShellLink(Machine& machine);

}  // namespace pikel::simulated
