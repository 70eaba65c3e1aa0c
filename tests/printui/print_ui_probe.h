// A library in the place of PRINTUI.DLL whose entry writes down how it is called and leaves the outcome that a test
// wants.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/calls.h"

namespace pikel::testing_support {

struct EntryCall {
    std::string form;  ///< "W" or "A"
    HWND window = nullptr;
    HINSTANCE module = nullptr;
    std::string commandLine;
    int show = -1;
};

/// What the entries share. A new PrintUIProbe empties it.
struct EntryRecord {
    std::vector<EntryCall> calls;
    std::vector<std::optional<DWORD>> outcomes;  ///< for each call in turn; none: the last error stays as it is
};
extern EntryRecord g_entries;

using Exports = std::map<std::string, FARPROC, std::less<>>;

/// The entries. Both make one platform call, GetACP, as their last act.
FARPROC WideEntry();
FARPROC NarrowEntry();

inline constexpr char kPrintUIOnXp[] = "C:\\WINDOWS\\system32\\printui.dll";

class PrintUIProbe {
  public:
    /// Puts the library into a machine's system folder.
    explicit PrintUIProbe(TestMachine& test, Exports exports = {{"PrintUIEntryW", WideEntry()}});

    /// The outcome of the calls to come: success, if not told.
    void Leave(std::optional<DWORD> outcome) { g_entries.outcomes.push_back(outcome); }

    /// Command lines since the last look.
    std::vector<std::string> TakeCommands();
};

/// The lines that running a command writes.
std::vector<std::string> RunLines(const std::string& command, DWORD code);
/// The lines of a successful conversion, once for each text.
std::vector<std::string> ConversionLines(int count = 1, DWORD code = 0);
/// The lines of parts, one after the other.
std::vector<std::string> Lines(const std::vector<std::vector<std::string>>& parts);
/// "Name(0x%08x)"
std::string HexLine(const std::string& text, DWORD code);

}  // namespace pikel::testing_support
