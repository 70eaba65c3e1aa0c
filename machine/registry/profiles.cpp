// Profile (INI) files, and the sections of win.ini that are registry keys on the NT family.
#include "machine/registry/profiles.h"

#include <algorithm>
#include <array>
#include <utility>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

std::string_view TrimBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\v\f";
    std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool IsComment(std::string_view trimmedLine) {
    return trimmedLine.starts_with(';');
}

/// Key and value of a line; nothing for a comment and for a line without an equals sign.
std::optional<std::pair<std::string_view, std::string_view>> EntryOf(std::string_view line) {
    line = TrimBlanks(line);
    std::size_t equals = line.find('=');
    if (IsComment(line) || equals == std::string_view::npos) {
        return std::nullopt;
    }
    return std::pair(TrimBlanks(line.substr(0, equals)), TrimBlanks(line.substr(equals + 1)));
}

std::string Joined(std::string_view key, std::string_view value) {
    std::string line(key);
    line += '=';
    line += value;
    return line;
}

}  // namespace

// ---- one file -------------------------------------------------------------------------------------------------------

ProfileText::ProfileText(UINT codePage, std::string_view text) : m_codePage(codePage) {
    while (!text.empty()) {
        std::size_t length = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, length);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        m_lines.emplace_back(line);
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

std::string ProfileText::Text() const {
    std::string text;
    for (const std::string& line : m_lines) {
        text += line;
        text += "\r\n";
    }
    return text;
}

bool ProfileText::IsSame(std::string_view left, std::string_view right) const {
    return CompareNoCase(m_codePage, TrimBlanks(left), TrimBlanks(right)) == 0;
}

std::optional<std::string_view> ProfileText::HeaderName(std::string_view line) const {
    line = TrimBlanks(line);
    if (!line.starts_with('[')) {
        return std::nullopt;
    }
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == ']') {
            return TrimBlanks(line.substr(1, i - 1));
        }
        if (IsLeadByte(m_codePage, static_cast<unsigned char>(line[i]))) {
            ++i;  // a trail byte can look like a bracket
        }
    }
    return std::nullopt;
}

std::optional<ProfileText::Range> ProfileText::FindSection(std::string_view section) const {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        std::optional<std::string_view> name = HeaderName(m_lines[i]);
        if (!name || !IsSame(*name, section)) {
            continue;
        }
        std::size_t end = i + 1;
        while (end < m_lines.size() && !HeaderName(m_lines[end])) {
            ++end;
        }
        return Range{i, end};
    }
    return std::nullopt;
}

std::size_t ProfileText::FindKey(const Range& range, std::string_view key) const {
    for (std::size_t i = range.header + 1; i < range.end; ++i) {
        auto entry = EntryOf(m_lines[i]);
        if (entry && IsSame(entry->first, key)) {
            return i;
        }
    }
    return range.end;
}

std::size_t ProfileText::EndOfEntries(const Range& range) const {
    std::size_t end = range.end;
    while (end > range.header + 1 && TrimBlanks(m_lines[end - 1]).empty()) {
        --end;
    }
    return end;
}

std::vector<std::string> ProfileText::Sections() const {
    std::vector<std::string> names;
    for (const std::string& line : m_lines) {
        if (std::optional<std::string_view> name = HeaderName(line)) {
            names.emplace_back(*name);
        }
    }
    return names;
}

std::vector<std::string> ProfileText::Keys(std::string_view section) const {
    std::vector<std::string> keys;
    if (std::optional<Range> range = FindSection(section)) {
        for (std::size_t i = range->header + 1; i < range->end; ++i) {
            if (auto entry = EntryOf(m_lines[i])) {
                keys.emplace_back(entry->first);
            }
        }
    }
    return keys;
}

std::vector<std::string> ProfileText::Entries(std::string_view section) const {
    std::vector<std::string> entries;
    if (std::optional<Range> range = FindSection(section)) {
        for (std::size_t i = range->header + 1; i < range->end; ++i) {
            std::string_view line = TrimBlanks(m_lines[i]);
            if (auto entry = EntryOf(line)) {
                entries.push_back(Joined(entry->first, entry->second));
            } else if (!line.empty() && !IsComment(line)) {
                entries.emplace_back(line);
            }
        }
    }
    return entries;
}

std::optional<std::string> ProfileText::Find(std::string_view section, std::string_view key) const {
    std::optional<Range> range = FindSection(section);
    if (!range) {
        return std::nullopt;
    }
    std::size_t line = FindKey(*range, key);
    if (line == range->end) {
        return std::nullopt;
    }
    return std::string(EntryOf(m_lines[line])->second);
}

void ProfileText::Set(std::string_view section, std::string_view key, std::string_view value) {
    std::optional<Range> range = FindSection(section);
    if (!range) {
        m_lines.push_back("[" + std::string(TrimBlanks(section)) + "]");
        m_lines.push_back(Joined(TrimBlanks(key), value));
        return;
    }
    std::size_t line = FindKey(*range, key);
    if (line == range->end) {
        auto place = m_lines.begin() + static_cast<std::ptrdiff_t>(EndOfEntries(*range));
        m_lines.insert(place, Joined(TrimBlanks(key), value));
    } else {
        m_lines[line] = Joined(EntryOf(m_lines[line])->first, value);
    }
}

void ProfileText::RemoveKey(std::string_view section, std::string_view key) {
    if (std::optional<Range> range = FindSection(section)) {
        std::size_t line = FindKey(*range, key);
        if (line != range->end) {
            m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(line));
        }
    }
}

void ProfileText::RemoveSection(std::string_view section) {
    if (std::optional<Range> range = FindSection(section)) {
        m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(range->header),
                      m_lines.begin() + static_cast<std::ptrdiff_t>(range->end));
    }
}

void ProfileText::ReplaceSection(std::string_view section, const std::vector<std::string>& lines) {
    std::optional<Range> range = FindSection(section);
    if (!range) {
        m_lines.push_back("[" + std::string(TrimBlanks(section)) + "]");
        m_lines.insert(m_lines.end(), lines.begin(), lines.end());
        return;
    }
    auto first = m_lines.begin() + static_cast<std::ptrdiff_t>(range->header) + 1;
    auto last = m_lines.begin() + static_cast<std::ptrdiff_t>(EndOfEntries(*range));
    m_lines.insert(m_lines.erase(first, last), lines.begin(), lines.end());
}

// ---- the files of a machine -----------------------------------------------------------------------------------------

namespace {

/// Sections of win.ini that the NT family keeps in the registry.
struct MappedSection {
    std::string_view section;
    std::string_view key;
};
constexpr std::array<MappedSection, 4> kMappedSections = {{
    {"windows", "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows"},
    {"devices", "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Devices"},
    {"PrinterPorts", "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\PrinterPorts"},
    {"ports", "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Ports"},
}};

template <class Texts>
std::optional<Texts> Missing(DWORD* code, DWORD reason = ERROR_FILE_NOT_FOUND) {
    *code = reason;
    return std::nullopt;
}

/// Text of a registry value; a number reads as its digits.
std::string TextOf(const Registry& registry, const std::string& key, const RegistryValue& value) {
    if (value.type == REG_DWORD) {
        return std::to_string(registry.Number(key, value.name));
    }
    return registry.Text(key, value.name);
}

}  // namespace

std::string Profiles::PathOf(std::string_view file) const {
    if (file.find_first_of("\\/:") != std::string_view::npos) {
        return std::string(file);
    }
    return m_machine.System().windowsDirectory + "\\" + std::string(file);
}

std::string Profiles::KeyOf(std::string_view path, std::string_view section) const {
    if (m_machine.Is9x() || !EqualNoCase(path, m_machine.System().windowsDirectory + "\\win.ini")) {
        return {};
    }
    for (const MappedSection& mapped : kMappedSections) {
        if (EqualNoCase(TrimBlanks(section), mapped.section)) {
            return std::string(mapped.key);
        }
    }
    return {};
}

std::optional<ProfileText> Profiles::Read(const std::string& path, DWORD* code) const {
    *code = m_machine.Files().CheckOpen(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    std::optional<std::string> text;
    if (*code == ERROR_SUCCESS) {
        text = m_machine.Files().Read(path);
    }
    if (!text) {
        return Missing<ProfileText>(code, *code == ERROR_SUCCESS ? ERROR_FILE_NOT_FOUND : *code);
    }
    return ProfileText(m_machine.System().codePage, *text);
}

std::optional<ProfileText> Profiles::ReadForChange(const std::string& path, DWORD* code) const {
    std::optional<ProfileText> text = Read(path, code);
    if (!text && *code == ERROR_FILE_NOT_FOUND) {
        *code = ERROR_SUCCESS;
        return ProfileText(m_machine.System().codePage, "");
    }
    return text;
}

DWORD Profiles::Write(const std::string& path, const ProfileText& text) {
    // Writing makes missing folders, which a profile call doesn't.
    if (!m_machine.Files().IsDirectory(FolderOf(path))) {
        return ERROR_PATH_NOT_FOUND;
    }
    return m_machine.Files().Write(path, text.Text());
}

std::optional<std::vector<std::string>> Profiles::Sections(std::string_view file, DWORD* code) const {
    const std::string path = PathOf(file);
    std::optional<ProfileText> text = Read(path, code);
    if (!text) {
        return std::nullopt;
    }
    std::vector<std::string> sections = text->Sections();
    for (const MappedSection& mapped : kMappedSections) {
        bool isListed = std::any_of(sections.begin(), sections.end(),
                                    [&](const std::string& name) { return EqualNoCase(name, mapped.section); });
        if (!isListed && !KeyOf(path, mapped.section).empty()) {
            sections.emplace_back(mapped.section);
        }
    }
    return sections;
}

std::optional<std::vector<std::string>> Profiles::Keys(std::string_view file, std::string_view section,
                                                       DWORD* code) const {
    const std::string path = PathOf(file);
    const std::string key = KeyOf(path, section);
    std::vector<std::string> keys;
    if (!key.empty()) {
        for (const RegistryValue& value : m_machine.Registry().Values(key)) {
            keys.push_back(value.name);
        }
    } else if (std::optional<ProfileText> text = Read(path, code)) {
        keys = text->Keys(section);
    } else {
        return std::nullopt;
    }
    return keys.empty() ? Missing<std::vector<std::string>>(code) : keys;
}

std::optional<std::vector<std::string>> Profiles::Entries(std::string_view file, std::string_view section,
                                                          DWORD* code) const {
    const std::string path = PathOf(file);
    const std::string key = KeyOf(path, section);
    std::vector<std::string> entries;
    if (!key.empty()) {
        for (const RegistryValue& value : m_machine.Registry().Values(key)) {
            entries.push_back(Joined(value.name, TextOf(m_machine.Registry(), key, value)));
        }
    } else if (std::optional<ProfileText> text = Read(path, code)) {
        entries = text->Entries(section);
    } else {
        return std::nullopt;
    }
    return entries.empty() ? Missing<std::vector<std::string>>(code) : entries;
}

std::optional<std::string> Profiles::Find(std::string_view file, std::string_view section, std::string_view key,
                                          DWORD* code) const {
    const std::string path = PathOf(file);
    const std::string registryKey = KeyOf(path, section);
    if (!registryKey.empty()) {
        const RegistryValue* value = m_machine.Registry().Find(registryKey, TrimBlanks(key));
        return value == nullptr ? Missing<std::string>(code) : TextOf(m_machine.Registry(), registryKey, *value);
    }
    std::optional<ProfileText> text = Read(path, code);
    std::optional<std::string> value = text ? text->Find(section, key) : std::nullopt;
    return text && !value ? Missing<std::string>(code) : value;
}

DWORD Profiles::Set(std::string_view file, std::string_view section, std::string_view key, std::string_view value) {
    const std::string path = PathOf(file);
    const std::string registryKey = KeyOf(path, section);
    if (!registryKey.empty()) {
        DWORD code = m_machine.CheckAccess(registryKey, KEY_WRITE);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        m_machine.Registry().SetText(registryKey, TrimBlanks(key), value);
        return m_machine.TryCommit();
    }
    DWORD code = ERROR_SUCCESS;
    std::optional<ProfileText> text = ReadForChange(path, &code);
    if (!text) {
        return code;
    }
    text->Set(section, key, value);
    return Write(path, *text);
}

DWORD Profiles::Remove(std::string_view file, std::string_view section, std::optional<std::string_view> key) {
    const std::string path = PathOf(file);
    const std::string registryKey = KeyOf(path, section);
    if (!registryKey.empty()) {
        DWORD code = m_machine.CheckAccess(registryKey, KEY_WRITE);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        for (const RegistryValue& value : m_machine.Registry().Values(registryKey)) {
            if (!key || EqualNoCase(value.name, TrimBlanks(*key))) {
                m_machine.Registry().DeleteValue(registryKey, value.name);
            }
        }
        return m_machine.TryCommit();
    }
    DWORD code = ERROR_SUCCESS;
    std::optional<ProfileText> text = Read(path, &code);
    if (!text) {
        return code == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : code;
    }
    if (key) {
        text->RemoveKey(section, *key);
    } else {
        text->RemoveSection(section);
    }
    return Write(path, *text);
}

DWORD Profiles::ReplaceSection(std::string_view file, std::string_view section, const std::vector<std::string>& lines) {
    const std::string path = PathOf(file);
    const std::string registryKey = KeyOf(path, section);
    if (!registryKey.empty()) {
        DWORD code = Remove(file, section, std::nullopt);
        for (const std::string& line : lines) {
            auto entry = EntryOf(line);
            if (code == ERROR_SUCCESS && entry) {
                m_machine.Registry().SetText(registryKey, entry->first, entry->second);
            }
        }
        return code == ERROR_SUCCESS ? m_machine.TryCommit() : code;
    }
    DWORD code = ERROR_SUCCESS;
    std::optional<ProfileText> text = ReadForChange(path, &code);
    if (!text) {
        return code;
    }
    text->ReplaceSection(section, lines);
    return Write(path, *text);
}

// ---- values ---------------------------------------------------------------------------------------------------------

std::string_view WithoutQuotes(std::string_view value) {
    bool isQuoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.front() == value.back();
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

UINT ProfileNumber(std::string_view value, bool knowsPrefixes) {
    value = TrimBlanks(value);
    bool isNegative = value.starts_with('-');
    if (isNegative || value.starts_with('+')) {
        value.remove_prefix(1);
    }
    UINT base = 10;
    if (knowsPrefixes && value.size() > 1 && value[0] == '0') {
        char mark = static_cast<char>(value[1] | 0x20);
        base = mark == 'x' ? 16 : mark == 'o' ? 8 : mark == 'b' ? 2 : 10;
        value.remove_prefix(base == 10 ? 0 : 2);
    }
    UINT number = 0;
    for (char c : value) {
        char lower = static_cast<char>(c | 0x20);
        UINT digit = c >= '0' && c <= '9'           ? static_cast<UINT>(c - '0')
                     : lower >= 'a' && lower <= 'f' ? static_cast<UINT>(lower - 'a' + 10)
                                                    : 16;
        if (digit >= base) {
            break;
        }
        number = number * base + digit;
    }
    return isNegative ? 0U - number : number;
}

}  // namespace pikel::simulated
