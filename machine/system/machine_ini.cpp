// Reads and writes machine.ini.
#include "machine/system/machine_ini.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>
#include <type_traits>

#include "machine/base/machine_error.h"
#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

constexpr std::string_view kComment =
    "; A simulated Windows machine. Any system can be described here; numbers are decimal or start with 0x.\n"
    "; platform: 1 Windows 95, 98, Me; 2 the NT family. processor-type: 586 x86, 2200 IA64, 8664 x64.\n";

/// One field: its name, how it is shown, and how it is taken. `take` gives a text that says what is expected, or null.
struct Field {
    std::string_view name;
    std::string (*show)(const SystemDescription& system);
    const char* (*take)(SystemDescription& system, std::string_view value);
    std::string SystemDescription::*text = nullptr;  ///< of a field that holds text
};

std::string_view TrimBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::uint64_t> Number(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, number, base);
    if (text.empty() || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

template <auto Member>
std::string ShowNumber(const SystemDescription& system) {
    return std::to_string(system.*Member);
}
template <auto Member>
const char* TakeNumber(SystemDescription& system, std::string_view value) {
    using Type = std::remove_reference_t<decltype(system.*Member)>;
    std::optional<std::uint64_t> number = Number(value);
    if (!number || *number > std::numeric_limits<Type>::max()) {
        return sizeof(Type) == 4   ? "a number of 32 bits"
               : sizeof(Type) == 2 ? "a number of 16 bits"
                                   : "a number of 8 bits";
    }
    system.*Member = static_cast<Type>(*number);
    return nullptr;
}
template <auto Member>
constexpr Field NumberField(std::string_view name) {
    return {name, ShowNumber<Member>, TakeNumber<Member>};
}

template <auto Member>
constexpr Field FlagField(std::string_view name) {
    return {name, [](const SystemDescription& system) -> std::string { return system.*Member ? "yes" : "no"; },
            [](SystemDescription& system, std::string_view value) -> const char* {
                if (value != "yes" && value != "no") {
                    return "yes or no";
                }
                system.*Member = value == "yes";
                return nullptr;
            }};
}

/// Quotes keep blanks at a text's ends, as in the " A " of a second edition.
template <auto Member>
std::string ShowText(const SystemDescription& system) {
    const std::string& text = system.*Member;
    bool needsQuotes = !text.empty() && (TrimBlanks(text).size() != text.size() || text.front() == '"');
    return needsQuotes ? '"' + text + '"' : text;
}

template <auto Member>
constexpr Field TextField(std::string_view name) {
    return {name, ShowText<Member>,
            [](SystemDescription& system, std::string_view value) -> const char* {
                bool isQuoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
                system.*Member = isQuoted ? value.substr(1, value.size() - 2) : value;
                return nullptr;
            },
            Member};
}

template <auto Member>
constexpr Field FolderField(std::string_view name) {
    return {name, ShowText<Member>,
            [](SystemDescription& system, std::string_view value) -> const char* {
                bool isPath = value.size() > 3 && value.substr(1, 2) == ":\\" && value.back() != '\\' &&
                              ((value[0] >= 'A' && value[0] <= 'Z') || (value[0] >= 'a' && value[0] <= 'z'));
                if (!isPath) {
                    return "a folder with its drive, such as C:\\WINDOWS";
                }
                system.*Member = value;
                return nullptr;
            },
            Member};
}

/// On the 9x family the high word repeats the version, which only reads well in hexadecimal.
std::string ShowBuild(const SystemDescription& system) {
    if (system.platform != VER_PLATFORM_WIN32_WINDOWS) {
        return std::to_string(system.build);
    }
    std::array<char, 11> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", static_cast<unsigned>(system.build));
    return text.data();
}

const char* TakeCodePage(SystemDescription& system, std::string_view value) {
    std::optional<std::uint64_t> number = Number(value);
    bool isKnown = number && *number > 0 && *number <= 65535 && KnowsCodePage(static_cast<UINT>(*number));
    if (!isKnown) {
        return "the number of a code page, such as 1252 or 932";
    }
    system.codePage = static_cast<UINT>(*number);
    return nullptr;
}

constexpr std::array<Field, 17> kFields = {{
    TextField<&SystemDescription::name>("name"),
    NumberField<&SystemDescription::major>("major"),
    NumberField<&SystemDescription::minor>("minor"),
    {"build", ShowBuild, TakeNumber<&SystemDescription::build>},
    NumberField<&SystemDescription::platform>("platform"),
    TextField<&SystemDescription::servicePack>("service-pack"),
    NumberField<&SystemDescription::servicePackMajor>("service-pack-major"),
    NumberField<&SystemDescription::servicePackMinor>("service-pack-minor"),
    NumberField<&SystemDescription::suiteMask>("suite"),
    NumberField<&SystemDescription::productType>("product-type"),
    NumberField<&SystemDescription::processorType>("processor-type"),
    FolderField<&SystemDescription::windowsDirectory>("windows-directory"),
    FolderField<&SystemDescription::systemDirectory>("system-directory"),
    TextField<&SystemDescription::computerName>("computer-name"),
    {"code-page", ShowNumber<&SystemDescription::codePage>, TakeCodePage},
    FlagField<&SystemDescription::administrator>("administrator"),
    FlagField<&SystemDescription::restartPending>("restart-pending"),
}};

class Reader {
  public:
    Reader(std::string_view text, const std::filesystem::path& file) : m_rest(text), m_file(file) {}

    SystemDescription Read() {
        while (!m_rest.empty()) {
            std::size_t length = std::min(m_rest.find('\n'), m_rest.size());
            ++m_line;
            ReadLine(TrimBlanks(m_rest.substr(0, length)));
            m_rest.remove_prefix(std::min(length + 1, m_rest.size()));
        }
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            if (m_lineOf[i] == 0) {
                Refuse(m_line, kFields[i].name, "the field is missing in the section [system], which ends here");
            }
        }
        ConvertTexts();
        return m_system;
    }

  private:
    void ReadLine(std::string_view line) {
        if (line.empty() || line.front() == ';') {
            return;
        }
        if (line.front() == '[') {
            if (line != "[system]" || m_isInSection) {
                Refuse(m_line, line, "the file has one section, [system]");
            }
            m_isInSection = true;
            return;
        }
        std::size_t equals = line.find('=');
        std::string_view name = TrimBlanks(line.substr(0, equals));
        if (equals == std::string_view::npos) {
            Refuse(m_line, name, "a field needs = and a value");
        }
        if (!m_isInSection) {
            Refuse(m_line, name, "the field stands ahead of [system]");
        }
        ReadField(name, TrimBlanks(line.substr(equals + 1)));
    }

    void ReadField(std::string_view name, std::string_view value) {
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            if (kFields[i].name != name) {
                continue;
            }
            if (m_lineOf[i] != 0) {
                Refuse(m_line, name, "the field is there already, in line " + std::to_string(m_lineOf[i]));
            }
            if (const char* expected = kFields[i].take(m_system, value)) {
                Refuse(m_line, name, "\"" + std::string(value) + "\" is not " + expected);
            }
            m_lineOf[i] = m_line;
            return;
        }
        Refuse(m_line, name, "there is no such field");
    }

    /// The file is UTF-8; the code page is known only when all of it is read.
    void ConvertTexts() {
        for (std::size_t i = 0; i < kFields.size(); ++i) {
            if (kFields[i].text == nullptr) {
                continue;
            }
            std::string& text = m_system.*kFields[i].text;
            std::string converted = FromUtf8(m_system.codePage, text);
            if (ToUtf8(m_system.codePage, converted) != text) {
                Refuse(m_lineOf[i], kFields[i].name,
                       "no UTF-8, or characters that code page " + std::to_string(m_system.codePage) + " lacks");
            }
            text = converted;
        }
    }

    [[noreturn]] void Refuse(std::size_t line, std::string_view field, const std::string& problem) const {
        throw MachineError(m_file.string() + ": line " + std::to_string(line) + ": " + std::string(field) + ": " +
                           problem);
    }

    std::string_view m_rest;
    const std::filesystem::path& m_file;
    std::size_t m_line = 0;
    bool m_isInSection = false;
    std::array<std::size_t, kFields.size()> m_lineOf{};
    SystemDescription m_system;
};

}  // namespace

std::string WriteMachineIni(const SystemDescription& system) {
    std::string text(kComment);
    text += "[system]\n";
    for (const Field& field : kFields) {
        std::string value = ToUtf8(system.codePage, field.show(system));
        if (value.find_first_of(std::string_view("\n\r\0", 3)) != std::string::npos) {
            throw MachineError("machine.ini: " + std::string(field.name) + ": a line break has no place in a field");
        }
        text += field.name;
        text += " = ";
        text += value;
        text += '\n';
    }
    return text;
}

SystemDescription ReadMachineIni(std::string_view text, const std::filesystem::path& file) {
    return Reader(text, file).Read();
}

}  // namespace pikel::simulated
