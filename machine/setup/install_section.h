// Install sections of an INF: the file operations and registry entries that they ask for.
#pragma once

#include <string_view>

#include "machine/inf/open_inf.h"
#include "machine/setup/file_queue.h"
#include "platform/types.h"

namespace pikel::simulated {

/// Queues what CopyFiles, RenFiles and DelFiles of a section name, all lines of each. A list section that the INF lacks
/// counts as empty.
///
/// Targets lie in the folder that [DestinationDirs] gives to the list section, else to DefaultDestDir, else in the
/// system folder; so does what an unknown id names.
///
/// @param layout  INF with the SourceDisksNames and SourceDisksFiles sections
/// @param root    folder of the source files; null: the INF's own
/// @param style   SP_COPY_...; a line's own flags add to it
/// @return 0, or 0xE0000102 when there is no such section
DWORD QueueFiles(OpenInf& inf, OpenInf& layout, const char* section, const char* root, DWORD style, FileQueue& queue);

/// Finds out where a source file lies: below the root the folder of its disc and its own, as the layout's sections for
/// the machine's processor say, else the plain ones; the root for a file that they don't name.
SourceMedia LocateSource(OpenInf& layout, std::string_view name, const char* root, DWORD style);

/// Full path of a target file of a list section; a null section stands for DefaultDestDir.
std::string TargetPath(OpenInf& inf, const std::string* section, std::string_view name);

/// One line of a copy section.
struct CopyLine {
    std::string target;  ///< file name
    std::string source;  ///< likewise
    DWORD style = 0;     ///< what the line's flags add
    DWORD without = 0;   ///< what they take away
};
CopyLine ReadCopyLine(OpenInf& inf, UINT section, UINT line);

/// Applies DelReg, then AddReg of a section, in one commit. A section that isn't there asks for nothing.
///
/// Lines for an unknown root are passed over, and those for HKR without a relative key.
///
/// @param relativeKey  what HKR stands for; may be null
/// @return 0, 5 for a key without rights (what was done before stays), 6 for a relative key that isn't open
DWORD ApplyRegistry(OpenInf& inf, const char* section, HKEY relativeKey);

}  // namespace pikel::simulated
