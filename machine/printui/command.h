// Command lines of PRINTUI.DLL's entry: "/if /b"Office" /f"C:\drv\a.inf" /r"LPT1:" /m"Aurora" /q".
//
//   words       separated by blanks; within double quotes blanks mean nothing
//   switches    words that begin with a bare slash; letters count by their case
//   values      stand right behind the switch or in the next word
//   backslash   before a double quote or an at-sign it takes their meaning away; elsewhere it is a plain character
//   at-sign     at the start of a word or value it names a file with further arguments, which the machine doesn't read
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pikel::simulated {

/// What a command line asks for. Texts that it doesn't give are absent; an empty one is there.
struct PrintUICommand {
    enum class Work {
        AddDriver,         ///< /ia
        InstallPrinter,    ///< /if
        DeletePrinter,     ///< /dl
        DeleteConnection,  ///< /dn
        DeleteDriver,      ///< /dd
        SetProperties,     ///< /Xs
    };
    using Text = std::optional<std::u16string>;

    Work work = Work::AddDriver;
    Text model;                       ///< /m
    Text inf;                         ///< /f
    Text folder;                      ///< /l, of the driver's files
    Text printer;                     ///< /b, of a printer that is to be
    Text port;                        ///< /r
    Text name;                        ///< /n, of a printer that is there
    Text architecture;                ///< /h
    Text version;                     ///< /v
    bool isQuiet = false;             ///< /q
    bool isPlainEnvironment = false;  ///< /K: /h is an environment, /v a number
    bool usesPresentDriver = false;   ///< /u
    bool isShared = false;            ///< /Z; the last of /Z and /z counts
    /// Key and value, behind /Xs.
    std::vector<std::pair<std::u16string, std::u16string>> properties;

    bool operator==(const PrintUICommand&) const = default;
};

/// Takes a command line apart. Touches no machine.
/// @return nothing for one that isn't well formed: a quote that isn't closed, an unknown switch, none or several kinds
///         of work, a missing value, a file of arguments, words that belong to nothing
std::optional<PrintUICommand> ParsePrintUICommand(std::u16string_view text);

}  // namespace pikel::simulated
