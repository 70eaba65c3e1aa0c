// Windows paths taken apart, and names against patterns.
#include "machine/files/path.h"

#include <algorithm>

#include "machine/base/machine.h"
#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsInvalidInName(char c) {
    return static_cast<unsigned char>(c) < 0x20 || std::string_view("<>:\"|?*").find(c) != std::string_view::npos;
}

/// Dots and blanks at a name's end don't count.
std::string_view WithoutTail(std::string_view name) {
    const std::size_t last = name.find_last_not_of(". ");
    return last == std::string_view::npos ? std::string_view() : name.substr(0, last + 1);
}

MachinePath Refused(DWORD code) {
    MachinePath path;
    path.code = code;
    return path;
}

/// Takes one name into the path. @return a code, 0 when it fits.
DWORD AddName(MachinePath& path, std::string_view name) {
    if (name == "..") {
        if (path.names.empty()) {
            return ERROR_PATH_NOT_FOUND;
        }
        path.names.pop_back();
        return ERROR_SUCCESS;
    }
    if (std::ranges::any_of(name, IsInvalidInName)) {
        return ERROR_INVALID_NAME;
    }
    name = WithoutTail(name);
    if (!name.empty()) {
        path.names.emplace_back(name);
    }
    return ERROR_SUCCESS;
}

}  // namespace

std::string MachinePath::Key(UINT codePage) const {
    std::string key(1, drive);
    for (const std::string& name : names) {
        key += '/';
        key += FromUtf8(codePage, name);
    }
    return ToUtf8(codePage, FoldCase(codePage, key));
}

MachinePath ParsePath(std::string_view path, UINT codePage, char systemDrive) {
    if (path.empty()) {
        return Refused(ERROR_PATH_NOT_FOUND);
    }
    if (path.size() >= MAX_PATH) {
        return Refused(ERROR_FILENAME_EXCED_RANGE);
    }
    // In UTF-8 no trail byte looks like a backslash.
    const std::string utf8 = ToUtf8(codePage, path);
    std::string_view rest = utf8;
    if (rest.size() >= 2 && IsSeparator(rest[0]) && IsSeparator(rest[1])) {
        return Refused(ERROR_BAD_NETPATH);
    }
    MachinePath parsed;
    parsed.drive = systemDrive;
    if (rest.size() >= 2 && IsLetter(rest[0]) && rest[1] == ':') {
        parsed.drive = static_cast<char>(rest[0] & ~0x20);
        rest.remove_prefix(2);
    }
    parsed.endsInSeparator = !rest.empty() && IsSeparator(rest.back());
    while (!rest.empty()) {
        const auto end = static_cast<std::size_t>(std::ranges::find_if(rest, IsSeparator) - rest.begin());
        if (const DWORD code = AddName(parsed, rest.substr(0, end)); code != ERROR_SUCCESS) {
            return Refused(code);
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return parsed;
}

MachinePath ParsePath(std::string_view path, const SystemDescription& system) {
    const std::string& folder = system.systemDirectory;
    const bool hasDrive = folder.size() >= 2 && IsLetter(folder[0]) && folder[1] == ':';
    return ParsePath(path, system.codePage, hasDrive ? static_cast<char>(folder[0] & ~0x20) : 'C');
}

std::string JoinPath(const Machine& machine, std::string_view folder, std::string_view rest) {
    while (!rest.empty() && rest.front() == '\\' && !folder.empty()) {
        rest.remove_prefix(1);
    }
    std::string path(folder);
    if (!folder.empty() && !rest.empty() && !FileName(folder, machine.System().codePage).empty()) {
        path += '\\';
    }
    return path.append(rest);
}

bool IsPattern(std::string_view text) {
    return text.find_first_of("*?") != std::string_view::npos;
}

NamePattern::NamePattern(std::string_view pattern, UINT codePage)
    : m_codePage(codePage),
      m_everything(pattern == "*" || pattern == "*.*"),
      m_tokens(Tokens(ToWide(codePage, FoldCase(codePage, pattern)))) {}

std::vector<NamePattern::Token> NamePattern::Tokens(std::u16string_view pattern) {
    std::vector<Token> tokens;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char16_t next = i + 1 < pattern.size() ? pattern[i + 1] : u'\0';
        switch (pattern[i]) {
            case u'?':
                tokens.push_back({Kind::One, u'\0'});
                break;
            case u'*':
                tokens.push_back({next == u'.' ? Kind::AnyToLastDot : Kind::Any, u'\0'});
                break;
            case u'.':
                if (next == u'\0') {
                    break;  // a dot at the end asks for names without an extension
                }
                tokens.push_back({next == u'?' || next == u'*' ? Kind::Dot : Kind::Literal, u'.'});
                break;
            default:
                tokens.push_back({Kind::Literal, pattern[i]});
        }
    }
    return tokens;
}

/// Marks a place of the pattern and those behind it that are reached without a character of the name.
void NamePattern::AddReachable(std::vector<bool>& places, std::size_t from, const char16_t* name,
                               const char16_t* end) const {
    for (std::size_t place = from; !places[place]; ++place) {
        places[place] = true;
        if (place == m_tokens.size()) {
            return;
        }
        const Kind kind = m_tokens[place].kind;
        const bool passes = kind == Kind::Any || kind == Kind::AnyToLastDot ||
                            (kind == Kind::One && (name == end || *name == u'.')) || (kind == Kind::Dot && name == end);
        if (!passes) {
            return;
        }
    }
}

bool NamePattern::Matches(std::string_view name) const {
    if (m_everything) {
        return true;
    }
    const std::u16string wide = ToWide(m_codePage, FoldCase(m_codePage, name));
    const char16_t* const end = wide.data() + wide.size();
    const std::size_t lastDot = wide.rfind(u'.');
    std::vector<bool> places(m_tokens.size() + 1);
    AddReachable(places, 0, wide.data(), end);
    for (std::size_t i = 0; i < wide.size(); ++i) {
        std::vector<bool> next(m_tokens.size() + 1);
        const char16_t* const behind = wide.data() + i + 1;
        for (std::size_t place = 0; place < m_tokens.size(); ++place) {
            if (!places[place]) {
                continue;
            }
            const auto [kind, character] = m_tokens[place];
            const bool stays = kind == Kind::Any || (kind == Kind::AnyToLastDot && i != lastDot);
            const bool moves = kind == Kind::One ? wide[i] != u'.' : !stays && character == wide[i];
            if (stays || moves) {
                AddReachable(next, stays ? place : place + 1, behind, end);
            }
        }
        places = std::move(next);
    }
    return places[m_tokens.size()];
}

}  // namespace pikel::simulated
