// Profile (INI) files as Windows reads and writes them. Sections and keys match without regard to case; of sections or
// keys that are there twice the first counts; a line that starts with a semicolon is a comment; blanks round keys and
// values don't count, nor does a pair of quotes round a value. A write changes its own lines and keeps all others.
//
// On the NT family some sections of win.ini are registry keys (devices, PrinterPorts, ports, windows); the calls go
// there.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

/// The text of one INI file.
class ProfileText {
  public:
    /// @param codePage  tells trail bytes and folds names
    ProfileText(UINT codePage, std::string_view text);

    std::vector<std::string> Sections() const;
    /// Keys of a section, in the order of the file.
    std::vector<std::string> Keys(std::string_view section) const;
    /// "key=value" for each entry of a section, blanks round both taken away; lines without an equals sign as they are.
    std::vector<std::string> Entries(std::string_view section) const;
    /// The value as it stands in the file, blanks apart. Nothing for a missing key.
    std::optional<std::string> Find(std::string_view section, std::string_view key) const;

    /// Changes the entry's line, or adds one behind the last entry of the section, or adds the section.
    void Set(std::string_view section, std::string_view key, std::string_view value);
    void RemoveKey(std::string_view section, std::string_view key);
    void RemoveSection(std::string_view section);
    /// Puts these lines in the place of the section's entries.
    void ReplaceSection(std::string_view section, const std::vector<std::string>& lines);

    /// The whole file; lines end in CR LF.
    std::string Text() const;

  private:
    struct Entry {
        std::string_view key;
        std::string_view value;
    };
    /// The lines of a section, its header at `header`.
    struct Range {
        std::size_t header;
        std::size_t end;
    };

    std::optional<std::string_view> HeaderName(std::string_view line) const;
    std::optional<Range> FindSection(std::string_view section) const;
    /// Line of a key within a section, or the section's end.
    std::size_t FindKey(const Range& range, std::string_view key) const;
    /// Where a new entry goes: ahead of the empty lines that part the section from the next one.
    std::size_t EndOfEntries(const Range& range) const;
    bool IsSame(std::string_view left, std::string_view right) const;

    UINT m_codePage;
    std::vector<std::string> m_lines;
};

/// The profile files of a machine. A name without a folder lies in the Windows folder.
class Profiles {
  public:
    explicit Profiles(Machine& machine) : m_machine(machine) {}

    // Each read gives nothing, with a code for the last error, when file, section or entry is missing (2) or the file
    // can't be opened.
    std::optional<std::vector<std::string>> Sections(std::string_view file, DWORD* code) const;
    std::optional<std::vector<std::string>> Keys(std::string_view file, std::string_view section, DWORD* code) const;
    std::optional<std::vector<std::string>> Entries(std::string_view file, std::string_view section, DWORD* code) const;
    std::optional<std::string> Find(std::string_view file, std::string_view section, std::string_view key,
                                    DWORD* code) const;

    // Each write gives a system code.
    DWORD Set(std::string_view file, std::string_view section, std::string_view key, std::string_view value);
    /// Without a key the whole section. What isn't there counts as removed.
    DWORD Remove(std::string_view file, std::string_view section, std::optional<std::string_view> key);
    DWORD ReplaceSection(std::string_view file, std::string_view section, const std::vector<std::string>& lines);

  private:
    std::string PathOf(std::string_view file) const;
    /// The registry key that a section is, or an empty text for a section of a file.
    std::string KeyOf(std::string_view path, std::string_view section) const;
    std::optional<ProfileText> Read(const std::string& path, DWORD* code) const;
    /// The file for a change; an empty one for a missing file.
    std::optional<ProfileText> ReadForChange(const std::string& path, DWORD* code) const;
    DWORD Write(const std::string& path, const ProfileText& text);

    Machine& m_machine;
};

/// A value without the one pair of quotes round it.
std::string_view WithoutQuotes(std::string_view value);
/// The number that a value begins with.
/// @param knowsPrefixes  0x, 0o and 0b count, as on the NT family
UINT ProfileNumber(std::string_view value, bool knowsPrefixes);

}  // namespace pikel::simulated
