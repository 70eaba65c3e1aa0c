// Windows paths taken apart, and names against patterns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;
struct SystemDescription;

/// A path on a drive of the machine, without "." and "..". Names are UTF-8, as the host stores them.
struct MachinePath {
    DWORD code = 0;     ///< why the path can't name a file: 3, 53 (a server's), 123 or 206; the rest is empty then
    char drive = '\0';  ///< upper case
    std::vector<std::string> names;
    bool endsInSeparator = false;

    bool IsRoot() const { return names.empty(); }
    /// "c/windows/win.ini" in folded case: the same for every spelling of one path.
    std::string Key(UINT codePage) const;
};

/// @param systemDrive  drive of a path that names none
MachinePath ParsePath(std::string_view path, UINT codePage, char systemDrive);
/// The same with a machine's own code page and system drive.
MachinePath ParsePath(std::string_view path, const SystemDescription& system);

/// A folder and what lies in it, with one backslash between; either may be empty.
std::string JoinPath(const Machine& machine, std::string_view folder, std::string_view rest);

/// True when the text holds one of the characters that make a pattern.
bool IsPattern(std::string_view text);

/// A pattern of FindFirstFileA, ready to be held against many names. The rules are the documented ones of the file
/// systems: "*.*" is every name, a question mark matches nothing at a dot or at the end, "name.*" matches "name" as
/// well.
class NamePattern {
  public:
    NamePattern(std::string_view pattern, UINT codePage);
    /// @param name  in the code page
    bool Matches(std::string_view name) const;

  private:
    enum class Kind { Literal, Any, AnyToLastDot, One, Dot };
    struct Token {
        Kind kind;
        char16_t character;
    };
    static std::vector<Token> Tokens(std::u16string_view pattern);
    void AddReachable(std::vector<bool>& places, std::size_t from, const char16_t* name, const char16_t* end) const;

    UINT m_codePage;
    bool m_everything;
    std::vector<Token> m_tokens;
};

}  // namespace pikel::simulated
