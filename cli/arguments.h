// The tool's command line as data: commands, their options, and what runs. What reads arguments, tells help and refuses
// wrong usage is bound to these tables in one place; manual pages and completions can walk the same tables.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/types.h"

namespace pikel::cli {

/// Where an option's value goes. The type says what the option takes: a bool is a flag without a value, a list may be
/// given several times, an optional tells an option that isn't given from an empty one. What it points to lives as
/// long as the table.
using OptionValue = std::variant<bool*, std::string*, std::optional<std::string>*, std::vector<std::string>*, DWORD*,
                                 std::optional<DWORD>*>;

enum class OptionKind { Flag, Text, Number, Texts };

enum class Need { Optional, Required };

/// The numbers that an option takes, both ends among them.
struct NumberRange {
    DWORD lowest = 0;
    DWORD highest = 0;
};

/// An option, or an argument that is known by its place.
struct Option {
    std::string_view name;  ///< "--inf"; "FILE" for an argument that is known by its place
    OptionValue value;
    std::string_view help;
    Need need = Need::Optional;
    std::vector<std::string> choices = {};  ///< the texts that it takes; none: any
    std::optional<NumberRange> range = {};  ///< the numbers that it takes; none: any
    bool clears = false;                    ///< a flag that sets its bool to false
    bool showsDefault = false;              ///< the value that it has by default stands in its help
    std::string_view word = {};             ///< what its help calls the value; empty: by kind, TEXT or UINT
    std::string_view group = {};            ///< heading in the help; empty: the common one

    OptionKind Kind() const;
    /// Known by its place instead of a name.
    bool IsPositional() const { return !name.starts_with('-'); }
    /// What its help calls the value; empty for a flag.
    std::string_view ValueWord() const;
};

/// A noun with its verbs, or a command that runs.
struct Command {
    std::string_view name;
    std::string_view description;
    std::vector<Option> options = {};
    std::function<void()> run = nullptr;  ///< null for a noun, which needs one of its verbs behind it
    std::vector<Command> verbs = {};      ///< of a noun

    bool IsNoun() const { return !verbs.empty(); }
};

/// The whole command line.
struct CommandLine {
    std::string_view program;
    std::string_view description;
    std::string_view version;          ///< what --version prints
    std::string_view footer;           ///< stands below every help
    std::vector<Option> options = {};  ///< hold for every command, in front of it or behind it
    std::vector<Command> commands = {};
};

/// Reads the arguments into the options' values and runs the command that they name. Help and version go to standard
/// output, wrong usage to standard error. What the command throws comes through.
/// @return 0: the command has run, or help or version is shown; 2: wrong usage, and nothing has run
int RunCommandLine(const CommandLine& commandLine, int argc, const char* const* argv);

}  // namespace pikel::cli
