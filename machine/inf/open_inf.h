// An INF that a program has open: its text, where it lies, and the folders that the program gave to directory ids.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "machine/inf/directory_ids.h"
#include "machine/inf/file.h"
#include "platform/types.h"

namespace pikel::simulated {

class Machine;

struct OpenInf {
    OpenInf(Machine& itsMachine, std::unique_ptr<InfFile> itsFile, std::string itsPath);

    /// The folder of an id: the program's, else the INF's own (1), else the system's.
    std::optional<std::string> Directory(DWORD id) const;

    Machine& machine;
    std::unique_ptr<InfFile> file;
    std::string path;
    std::string folder;  ///< that holds it
    UserDirectories directories;
};

/// Reads and parses a file, as SetupOpenInfFileA does. A name without a folder lies in the system's INF folder.
/// @param className    class that the INF has to be of; null: any
/// @param error [out]  why there is none: the code, and the line of a text that is no INF
/// @return null when the file can't be read
std::shared_ptr<OpenInf> ReadInf(Machine& machine, const char* name, const char* className, InfFile::Error& error);

/// Null for a handle that is no open INF.
OpenInf* FindInf(Machine& machine, HINF handle);

/// A line that a context stands on.
struct InfPosition {
    OpenInf* inf = nullptr;
    UINT section = 0;
    UINT line = 0;
};
/// Checks a context that comes from a program.
/// @return 0; 87 for null, or for a section or line that the INF lacks; 6 when its INF isn't open
DWORD FindPosition(Machine& machine, const INFCONTEXT* context, InfPosition& position);

/// Finds a line by section and key; a null key stands for the section's first line.
/// @return 0; 87 for a null section; 6 when the INF isn't open; 0xE0000102 when there is no such line
DWORD FindFirstLine(Machine& machine, HINF handle, const char* section, const char* key, InfPosition& position);

}  // namespace pikel::simulated
