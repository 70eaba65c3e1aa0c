#include "machine/inf/line.h"

#include <algorithm>
#include <cstring>

namespace pikel::simulated {

namespace {

/// Behind a run of backslashes and blanks.
const char* SkipBackslashes(const InfCharacters& characters, const char* at, const char* end) {
    while (at != end && *at != '\n' && (*at == '\\' || characters.IsBlank(*at))) {
        ++at;
    }
    return at;
}

/// Behind the line break, or the end.
const char* NextLine(const char* at, const char* end) {
    const void* found = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
    return found == nullptr ? end : static_cast<const char*>(found) + 1;
}

/// Behind the closing quote. A quote that isn't closed ends with the line.
/// @param at  behind the opening quote
const char* SkipQuoted(const char* at, const char* end) {
    while (at != end && *at != '\n') {
        if (*at != '"') {
            ++at;
        } else if (at + 1 != end && at[1] == '"') {
            at += 2;
        } else {
            return at + 1;
        }
    }
    return at;
}

/// Goes over a line's text field by field.
class FieldReader {
  public:
    FieldReader(const InfCharacters& characters, std::string_view text)
        : m_characters(characters), m_at(text.data()), m_end(text.data() + text.size()) {}

    /// Reads one field and stands on what ends it then.
    InfField Next(bool endsAtEquals) {
        m_begin = nullptr;
        m_kept = m_at;
        m_isPlain = true;
        while (m_at != m_end && *m_at != ',' && !(endsAtEquals && *m_at == '=')) {
            if (!Step()) {
                m_at = m_end;
            }
        }
        if (m_begin == nullptr) {
            return {};
        }
        return {{m_begin, static_cast<std::size_t>(m_kept - m_begin)}, m_isPlain};
    }

    bool IsAtEnd() const { return m_at == m_end; }
    bool IsAt(char separator) const { return m_at != m_end && *m_at == separator; }
    void SkipSeparator() { ++m_at; }

  private:
    /// Goes on by one character, quoted text or continuation. False at a comment.
    bool Step() {
        if (*m_at == ';') {
            return false;
        }
        if (*m_at == '\\') {
            return StepOverBackslashes();
        }
        if (m_characters.IsBlank(*m_at)) {
            ++m_at;
            return true;
        }
        Begin();
        if (*m_at == '"') {
            m_isPlain = false;
            m_at = SkipQuoted(m_at + 1, m_end);
        } else {
            m_isPlain = m_isPlain && *m_at != '%' && *m_at != '\0';
            m_at += m_characters.Length(m_at, m_end);
        }
        m_kept = m_at;
        return true;
    }

    bool StepOverBackslashes() {
        const char* behind = SkipBackslashes(m_characters, m_at, m_end);
        if (behind == m_end || *behind == '\n' || *behind == ';') {
            m_at = NextLine(behind, m_end);
            m_isPlain = false;
            return true;
        }
        // Backslashes in a text, and the blanks that follow them belong to it.
        Begin();
        m_at = m_kept = behind;
        return true;
    }

    void Begin() {
        if (m_begin == nullptr) {
            m_begin = m_at;
            // What was continued lies in front of the field.
            m_isPlain = true;
        }
    }

    const InfCharacters& m_characters;
    const char* m_at;
    const char* m_end;
    const char* m_begin = nullptr;
    const char* m_kept = nullptr;
    bool m_isPlain = true;
};

char Shown(char character) {
    return character == '\0' ? ' ' : character;
}

/// Adds what stands up to the closing quote; a doubled quote is one.
/// @return behind the closing quote
const char* ReadQuoted(const char* at, const char* end, std::string& text) {
    for (; at != end; ++at) {
        if (*at == '"') {
            ++at;
            if (at == end || *at != '"') {
                return at;
            }
        }
        text += Shown(*at);
    }
    return at;
}

}  // namespace

bool IsContinued(const InfCharacters& characters, std::string_view line) {
    // Nearly every line ends in something else than a backslash, and in no comment.
    if (line.empty() || (line.back() != '\\' && !characters.IsBlank(line.back()) &&
                         std::memchr(line.data(), ';', line.size()) == nullptr)) {
        return false;
    }
    const char* at = line.data();
    const char* end = at + line.size();
    while (at != end) {
        if (*at == ';') {
            return false;
        }
        if (*at == '\\') {
            at = SkipBackslashes(characters, at, end);
            if (at == end || *at == ';') {
                return true;
            }
        } else if (*at == '"') {
            at = SkipQuoted(at + 1, end);
        } else {
            at += characters.Length(at, end);
        }
    }
    return false;
}

void ReadLine(const InfCharacters& characters, std::string_view text, InfLine& line) {
    line.values.clear();
    FieldReader reader(characters, text);
    line.key = reader.Next(true);
    line.hasKey = !reader.IsAt(',');
    if (!reader.IsAt('=')) {
        line.values.push_back(line.key);
    }
    while (!reader.IsAtEnd()) {
        reader.SkipSeparator();
        line.values.push_back(reader.Next(false));
    }
}

bool ReadKey(const InfCharacters& characters, std::string_view text, InfField& key) {
    FieldReader reader(characters, text);
    key = reader.Next(true);
    return !reader.IsAt(',');
}

void ReadField(const InfCharacters& characters, const InfField& field, std::string& text) {
    text.clear();
    const char* at = field.raw.data();
    const char* end = at + field.raw.size();
    std::size_t kept = 0;  // length without the blanks that a continuation would drop
    while (at != end) {
        if (*at == '"') {
            at = ReadQuoted(at + 1, end, text);
            kept = text.size();
        } else if (*at == '\\') {
            const char* behind = SkipBackslashes(characters, at, end);
            if (behind != end && (*behind == '\n' || *behind == ';')) {
                text.resize(kept);
                at = characters.SkipBlanks(NextLine(behind, end), end);
            } else {
                text.append(at, behind);
                at = behind;
                kept = text.size();
            }
        } else {
            const bool isBlank = characters.IsBlank(*at);
            const std::size_t length = characters.Length(at, end);
            text += Shown(*at);
            text.append(at + 1, length - 1);
            at += length;
            kept = isBlank ? kept : text.size();
        }
    }
}

}  // namespace pikel::simulated
