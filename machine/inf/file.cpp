#include "machine/inf/file.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

/// Sections with fewer lines are searched one by one.
constexpr std::size_t kFewLines = 8;
constexpr char kControlZ = '\x1A';

std::u16string ReadUtf16(std::string_view bytes, bool isBigEndian) {
    std::u16string text(bytes.size() / 2, u'\0');
    for (std::size_t place = 0; place < text.size(); ++place) {
        const auto first = static_cast<unsigned char>(bytes[2 * place]);
        const auto second = static_cast<unsigned char>(bytes[2 * place + 1]);
        text[place] = static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
    }
    return text;
}

/// The file's text in the code page, up to a Ctrl-Z.
std::string Decode(std::string&& bytes, UINT codePage) {
    const std::string_view view = bytes;
    if (view.size() % 2 == 0) {
        if (view.starts_with("\xFF\xFE") || view.starts_with("\xFE\xFF")) {
            return FromWide(codePage, ReadUtf16(view.substr(2), view[0] == '\xFE'));
        }
        // No text begins with an ASCII character and a NUL, unless it is UTF-16.
        if (view.size() >= 2 && view[0] > 0 && view[1] == 0) {
            return FromWide(codePage, ReadUtf16(view, false));
        }
    }
    if (view.starts_with("\xEF\xBB\xBF")) {
        const std::string_view text = view.substr(3);
        return codePage == CP_UTF8 ? std::string(text) : FromWide(codePage, ToWide(CP_UTF8, text));
    }
    return std::move(bytes);
}

}  // namespace

// ---- opening --------------------------------------------------------------------------------------------------------

InfFile::InfFile(std::string text, UINT codePage)
    : m_text(std::move(text)), m_characters(codePage), m_hasContinuations(MayContinueLines()) {}

/// False when no line can go on behind its break: behind every backslash stands more text. True may be wrong.
bool InfFile::MayContinueLines() const {
    const char* end = m_text.data() + m_text.size();
    for (const char* at = m_text.data(); at != end; ++at) {
        const void* found = std::memchr(at, '\\', static_cast<std::size_t>(end - at));
        if (found == nullptr) {
            return false;
        }
        at = static_cast<const char*>(found);
        const char* next = at + 1;
        if (next == end || *next == '\n' || *next == ';' || *next == '\\' || m_characters.IsBlank(*next)) {
            return true;
        }
    }
    return false;
}

std::unique_ptr<InfFile> InfFile::Parse(std::string bytes, UINT codePage, Error* error) {
    Error ignored;
    Error& result = error != nullptr ? *error : ignored;
    result = {};
    if (bytes.empty()) {
        result.code = ERROR_FILE_INVALID;
        return nullptr;
    }
    std::string text = Decode(std::move(bytes), codePage);
    if (const std::size_t end = text.find(kControlZ); end != std::string::npos) {
        text.resize(end);
    }
    std::unique_ptr<InfFile> file(new InfFile(std::move(text), codePage));
    result = file->FindSections();
    if (result.code != 0) {
        return nullptr;
    }
    return file;
}

InfFile::Error InfFile::FindSections() {
    for (std::size_t at = 0; at < m_text.size();) {
        const std::size_t start = at;
        // Counted for an error alone: from 1, continuations too.
        const auto lineNumber = [&] {
            return static_cast<UINT>(
                std::count(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(start), '\n') + 1);
        };
        const std::string_view line = NextPhysicalLine(at);
        const char* end = line.data() + line.size();
        const char* first = m_characters.SkipBlanks(line.data(), end);
        if (first == end || *first == ';') {
            continue;
        }
        if (*first == '[') {
            if (!m_chunks.empty()) {
                m_chunks.back().end = start;
            }
            const Error error = ReadHeader(line.substr(static_cast<std::size_t>(first + 1 - line.data())), at);
            if (error.code != 0) {
                return {error.code, lineNumber()};
            }
        } else if (m_sections.empty()) {
            return {ERROR_EXPECTED_SECTION_NAME, lineNumber()};
        } else if (m_hasContinuations) {
            WholeLine(line, at);
        } else {
            at = NextHeader(at);
        }
    }
    if (!m_chunks.empty()) {
        m_chunks.back().end = m_text.size();
    }
    return {};
}

/// The start of the next line that begins with an opening bracket, in a text without continuations.
/// @param at  the start of a line
std::size_t InfFile::NextHeader(std::size_t at) const {
    const char* begin = m_text.data() + at;
    const char* end = m_text.data() + m_text.size();
    for (const char* from = begin; from != end; ++from) {
        const void* found = std::memchr(from, '[', static_cast<std::size_t>(end - from));
        if (found == nullptr) {
            break;
        }
        from = static_cast<const char*>(found);
        const char* lineStart = from;
        while (lineStart != begin && lineStart[-1] != '\n' && m_characters.IsBlank(lineStart[-1])) {
            --lineStart;
        }
        if (lineStart == begin || lineStart[-1] == '\n') {
            return static_cast<std::size_t>(lineStart - m_text.data());
        }
    }
    return m_text.size();
}

/// Opens the section that a header names. What stands behind the closing bracket doesn't count.
/// @param line   behind the opening bracket
/// @param begin  where the section's lines begin
InfFile::Error InfFile::ReadHeader(std::string_view line, std::size_t begin) {
    const char* end = line.data() + line.size();
    const char* at = line.data();
    if (m_characters.HasLeads()) {
        while (at != end && *at != ']') {
            at += m_characters.Length(at, end);
        }
    } else if (const void* found = std::memchr(at, ']', line.size())) {
        at = static_cast<const char*>(found);
    } else {
        at = end;
    }
    if (at == end) {
        return {ERROR_BAD_SECTION_NAME_LINE};
    }
    const std::string_view name = line.substr(0, static_cast<std::size_t>(at - line.data()));
    if (name.size() > kLongestSectionName) {
        return {ERROR_SECTION_NAME_TOO_LONG};
    }
    OpenSection(name, begin);
    return {};
}

void InfFile::OpenSection(std::string_view name, std::size_t begin) {
    const auto chunk = static_cast<std::uint32_t>(m_chunks.size());
    m_chunks.push_back({begin, begin, 0});
    const std::uint32_t hash = m_characters.Hash(name);
    if (const std::optional<UINT> known = FindSection(name, hash)) {
        Section& section = m_sections[*known];
        m_chunks[section.lastChunk].next = chunk;
        section.lastChunk = chunk;
        return;
    }
    m_sectionNames.Add(hash, static_cast<std::uint32_t>(m_sections.size()));
    Section& section = m_sections.emplace_back();
    section.name = name;
    section.firstChunk = section.lastChunk = chunk;
}

/// The text up to the next line break; moves behind the break.
std::string_view InfFile::NextPhysicalLine(std::size_t& at) const {
    const char* begin = m_text.data() + at;
    const std::size_t rest = m_text.size() - at;
    const void* found = std::memchr(begin, '\n', rest);
    std::size_t length = rest;
    at = m_text.size();
    if (found != nullptr) {
        length = static_cast<std::size_t>(static_cast<const char*>(found) - begin);
        at -= rest - length - 1;
    }
    if (length != 0 && begin[length - 1] == '\r') {
        --length;
    }
    return {begin, length};
}

/// A line with its continuations.
/// @param first     its first physical line
/// @param at        behind that; moved behind the last one
std::string_view InfFile::WholeLine(std::string_view first, std::size_t& at) const {
    std::string_view last = first;
    while (m_hasContinuations && at < m_text.size() && IsContinued(m_characters, last)) {
        last = NextPhysicalLine(at);
    }
    return {first.data(), static_cast<std::size_t>(last.data() + last.size() - first.data())};
}

// ---- sections and lines ---------------------------------------------------------------------------------------------

std::optional<UINT> InfFile::FindSection(std::string_view name) const {
    return FindSection(name, m_characters.Hash(name));
}

std::optional<UINT> InfFile::FindSection(std::string_view name, std::uint32_t hash) const {
    return m_sectionNames.Find(hash,
                               [&](std::uint32_t number) { return m_characters.Equal(m_sections[number].name, name); });
}

InfFile::Content& InfFile::ContentOf(UINT number) {
    Section& section = m_sections[number];
    if (section.content != nullptr) {
        return *section.content;
    }
    auto content = std::make_unique<Content>();
    std::uint32_t chunk = section.firstChunk;
    do {
        for (std::size_t at = m_chunks[chunk].begin; at < m_chunks[chunk].end;) {
            std::string_view line = NextPhysicalLine(at);
            const char* end = line.data() + line.size();
            const char* first = m_characters.SkipBlanks(line.data(), end);
            if (first == end || *first == ';') {
                continue;
            }
            line.remove_prefix(static_cast<std::size_t>(first - line.data()));
            content->lines.push_back(WholeLine(line, at));
        }
        chunk = m_chunks[chunk].next;
    } while (chunk != 0);
    section.content = std::move(content);
    return *section.content;
}

UINT InfFile::LineCount(UINT section) {
    return static_cast<UINT>(ContentOf(section).lines.size());
}

std::optional<UINT> InfFile::FindLine(UINT number, std::string_view key) {
    Content& content = ContentOf(number);
    const std::vector<std::string_view>& lines = content.lines;
    std::string text;
    auto isLineOf = [&](std::uint32_t line) {
        const std::optional<std::string_view> its = KeyOf(lines[line], text);
        return its.has_value() && m_characters.Equal(*its, key);
    };
    if (lines.size() <= kFewLines) {
        for (UINT line = 0; line < lines.size(); ++line) {
            if (isLineOf(line)) {
                return line;
            }
        }
        return std::nullopt;
    }
    if (content.keys == nullptr) {
        IndexKeys(content);
    }
    return content.keys->Find(m_characters.Hash(key), isLineOf);
}

void InfFile::IndexKeys(Content& content) {
    auto keys = std::make_unique<NameIndex>();
    keys->Reserve(content.lines.size());
    std::string text;
    std::string other;
    for (std::uint32_t line = 0; line < content.lines.size(); ++line) {
        const std::optional<std::string_view> key = KeyOf(content.lines[line], text);
        if (!key.has_value()) {
            continue;
        }
        const std::uint32_t hash = m_characters.Hash(*key);
        const bool isKnown = keys->Find(hash,
                                        [&](std::uint32_t earlier) {
                                            return m_characters.Equal(*KeyOf(content.lines[earlier], other), *key);
                                        })
                                 .has_value();
        if (!isKnown) {
            keys->Add(hash, line);
        }
    }
    content.keys = std::move(keys);
}

std::optional<std::string_view> InfFile::KeyOf(std::string_view line, std::string& text) {
    InfField key;
    if (!ReadKey(m_characters, line, key)) {
        return std::nullopt;
    }
    return ValueOf(key, text);
}

// ---- fields ---------------------------------------------------------------------------------------------------------

const InfLine& InfFile::TakeApart(UINT section, UINT line) {
    const Place place = {section, line};
    if (m_last != place) {
        m_last = {};
        ReadLine(m_characters, ContentOf(section).lines[line], m_parts);
        m_last = place;
    }
    return m_parts;
}

UINT InfFile::FieldCount(UINT section, UINT line) {
    return static_cast<UINT>(TakeApart(section, line).values.size());
}

std::optional<std::string_view> InfFile::Field(UINT section, UINT line, UINT index) {
    if (index == 0) {
        const Place place = {section, line};
        if (m_lastKey != place) {
            m_lastKey = {};
            m_key = KeyOf(ContentOf(section).lines[line], m_keyText);
            m_lastKey = place;
        }
        return m_key;
    }
    const InfLine& parts = TakeApart(section, line);
    if (index > parts.values.size()) {
        return std::nullopt;
    }
    return ValueOf(parts.values[index - 1], m_value);
}

std::string_view InfFile::LineText(UINT section, UINT line) {
    const InfLine& parts = TakeApart(section, line);
    m_lineText.clear();
    for (const InfField& field : parts.values) {
        if (&field != &parts.values.front()) {
            m_lineText += ',';
        }
        const std::size_t room = kLongestText - std::min(kLongestText, m_lineText.size());
        m_lineText += ValueOf(field, m_value, room);
    }
    return m_lineText;
}

std::vector<std::string> InfFile::Fields(UINT section, UINT line) {
    std::vector<std::string> fields;
    for (const InfField& field : TakeApart(section, line).values) {
        fields.emplace_back(ValueOf(field, m_value));
    }
    return fields;
}

std::optional<std::string> InfFile::Value(std::string_view section, std::string_view key) {
    const std::optional<UINT> number = FindSection(section);
    const std::optional<UINT> line = number.has_value() ? FindLine(*number, key) : std::nullopt;
    if (!line.has_value()) {
        return std::nullopt;
    }
    return std::string(*Field(*number, *line, 1));
}

std::string_view InfFile::ValueOf(const InfField& field, std::string& text, std::size_t room) {
    if (field.isPlain) {
        return field.raw;
    }
    ReadField(m_characters, field, text);
    Substitute(text, room);
    return text;
}

// ---- strings --------------------------------------------------------------------------------------------------------

/// Puts strings and folders in the place of their names between percent signs. An unknown name stays as it is, two
/// percent signs are one. What comes in is not looked at again.
void InfFile::Substitute(std::string& text, std::size_t room) {
    std::size_t percent = text.find('%');
    if (percent == std::string::npos) {
        return;
    }
    m_substituted.clear();
    std::size_t copied = 0;
    while (percent != std::string::npos) {
        const std::size_t closing = text.find('%', percent + 1);
        if (closing == std::string::npos) {
            break;
        }
        m_substituted.append(text, copied, percent - copied);
        copied = closing + 1;
        if (closing == percent + 1) {
            m_substituted += '%';
        } else {
            const std::string_view name = std::string_view(text).substr(percent + 1, closing - percent - 1);
            const std::optional<std::string_view> value = StringNamed(name);
            if (value.has_value() && value->size() <= room - std::min(room, m_substituted.size())) {
                m_substituted += *value;
            } else {
                m_substituted.append(text, percent, copied - percent);
            }
        }
        percent = text.find('%', copied);
    }
    m_substituted.append(text, copied);
    text.swap(m_substituted);
}

std::optional<std::string_view> InfFile::StringNamed(std::string_view name) {
    if (!m_hasStrings) {
        m_hasStrings = true;
        // A string that a translator left out is taken from the section for American English, the machine's language.
        ReadStrings("Strings");
        ReadStrings("Strings.0409");
    }
    const std::optional<std::uint32_t> found = m_stringNames.Find(m_characters.Hash(name), [&](std::uint32_t number) {
        return m_characters.Equal(m_strings[number].name, name);
    });
    if (found.has_value()) {
        return m_strings[*found].value;
    }
    DWORD id = 0;
    const char* end = name.data() + name.size();
    const auto [behind, problem] = std::from_chars(name.data(), end, id);
    if (problem != std::errc() || behind != end || m_directories == nullptr) {
        return std::nullopt;
    }
    std::optional<std::string> directory = m_directories(id);
    if (!directory.has_value()) {
        return std::nullopt;
    }
    m_directory = *std::move(directory);
    return m_directory;
}

/// Adds a section's strings to those that are known already. Nothing is substituted in them.
void InfFile::ReadStrings(std::string_view section) {
    const std::optional<UINT> number = FindSection(section);
    if (!number.has_value()) {
        return;
    }
    InfLine line;
    for (std::string_view text : ContentOf(*number).lines) {
        ReadLine(m_characters, text, line);
        if (!line.hasKey) {
            continue;
        }
        String string;
        ReadField(m_characters, line.key, string.name);
        ReadField(m_characters, line.values.front(), string.value);
        const std::uint32_t hash = m_characters.Hash(string.name);
        const bool isKnown =
            m_stringNames
                .Find(hash,
                      [&](std::uint32_t earlier) { return m_characters.Equal(m_strings[earlier].name, string.name); })
                .has_value();
        if (!isKnown) {
            m_stringNames.Add(hash, static_cast<std::uint32_t>(m_strings.size()));
            m_strings.push_back(std::move(string));
        }
    }
}

}  // namespace pikel::simulated
