// Security descriptors as text.
#include "machine/security/descriptor_text.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace pikel::simulated {

namespace {

/// A name of letters and what it stands for.
struct Named {
    std::string_view letters;
    DWORD value;
};

// In the order in which texts have them.
constexpr Named kTypes[] = {
    {"AU", AccessEntry::kAudit},
    {"AL", AccessEntry::kAlarm},
    {"A", AccessEntry::kAllow},
    {"D", AccessEntry::kDeny},
};
constexpr Named kEntryFlags[] = {
    {"OI", 0x1}, {"CI", 0x2}, {"NP", 0x4}, {"IO", 0x8}, {"ID", 0x10}, {"SA", 0x40}, {"FA", 0x80},
};
/// One right each. Those of a directory's objects stand for the lowest bits of every kind of object.
constexpr Named kRights[] = {
    {"CC", 0x1},           {"DC", 0x2},          {"LC", 0x4},     {"SW", 0x8},         {"RP", 0x10},
    {"WP", 0x20},          {"DT", 0x40},         {"LO", 0x80},    {"CR", 0x100},       {"SD", DELETE},
    {"RC", 0x20000},       {"WD", 0x40000},      {"WO", 0x80000}, {"GA", GENERIC_ALL}, {"GX", GENERIC_EXECUTE},
    {"GW", GENERIC_WRITE}, {"GR", GENERIC_READ},
};
/// Several rights that are usual together. A text has one of these only when there are no other rights beside it.
constexpr Named kRightSets[] = {
    {"FA", 0x1F01FF}, {"FR", 0x120089}, {"FW", 0x120116}, {"FX", 0x1200A0},
    {"KA", 0xF003F},  {"KR", 0x20019},  {"KW", 0x20006},  {"KX", 0x20019},
};

/// The flags of a list, DACL first.
struct ListFlag {
    std::string_view letters;
    WORD ofDacl;
    WORD ofSacl;
};
constexpr ListFlag kListFlags[] = {
    {"P", SecurityDescriptor::kDaclProtected, SecurityDescriptor::kSaclProtected},
    {"AR", SecurityDescriptor::kDaclInheritRequest, SecurityDescriptor::kSaclInheritRequest},
    {"AI", SecurityDescriptor::kDaclInherited, SecurityDescriptor::kSaclInherited},
};
/// The text of a list that isn't there and so lets everybody do everything.
constexpr std::string_view kNoList = "NO_ACCESS_CONTROL";

// ---- writing --------------------------------------------------------------------------------------------------------

std::string RightsText(ACCESS_MASK rights) {
    for (const Named& set : kRightSets) {
        if (set.value == rights) {
            return std::string(set.letters);
        }
    }
    std::string text;
    ACCESS_MASK rest = rights;
    for (const Named& right : kRights) {
        if ((rest & right.value) != 0) {
            text += right.letters;
            rest &= ~right.value;
        }
    }
    if (rest == 0) {
        return text;
    }
    char number[16];
    std::snprintf(number, sizeof number, "0x%x", static_cast<unsigned>(rights));
    return number;
}

/// False for an entry that has no text.
bool AddEntryText(const Machine& machine, const AccessEntry& entry, std::string* text) {
    const std::optional<Sid> holder = entry.Holder();
    const std::optional<ACCESS_MASK> rights = entry.Rights();
    if (!holder || !rights) {
        return false;
    }
    *text += '(';
    for (const Named& type : kTypes) {
        if (type.value == entry.type) {
            *text += type.letters;
        }
    }
    *text += ';';
    for (const Named& flag : kEntryFlags) {
        if ((entry.flags & flag.value) != 0) {
            *text += flag.letters;
        }
    }
    *text += ';' + RightsText(*rights) + ";;;" + SidText(machine, *holder) + ')';
    return true;
}

bool AddListText(const Machine& machine, WORD control, const std::optional<AccessList>& list, bool isSacl,
                 std::string* text) {
    *text += isSacl ? "S:" : "D:";
    for (const ListFlag& flag : kListFlags) {
        if ((control & (isSacl ? flag.ofSacl : flag.ofDacl)) != 0) {
            *text += flag.letters;
        }
    }
    if (!list) {
        *text += kNoList;
        return true;
    }
    for (const AccessEntry& entry : list->entries) {
        if (!AddEntryText(machine, entry, text)) {
            return false;
        }
    }
    return true;
}

// ---- reading --------------------------------------------------------------------------------------------------------

/// What is left of a text, taken from its front.
class Cursor {
  public:
    explicit Cursor(std::string_view text) : m_rest(text) {}

    bool IsAtEnd() const { return m_rest.empty(); }
    bool Take(std::string_view token) {
        if (!m_rest.starts_with(token)) {
            return false;
        }
        m_rest.remove_prefix(token.size());
        return true;
    }
    /// Whether another part begins here: a letter and a colon.
    bool IsAtPart() const { return m_rest.size() > 1 && m_rest[1] == ':'; }
    /// The text up to a character, which is taken too; nothing when there is none.
    std::optional<std::string_view> TakeUpTo(char end) {
        const std::size_t length = m_rest.find(end);
        if (length == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view taken = m_rest.substr(0, length);
        m_rest.remove_prefix(length + 1);
        return taken;
    }
    /// The name of an owner or a group: all up to the next part. A name's last letter is not the part's own.
    std::string_view TakeName() {
        const std::size_t colon = m_rest.find(':');
        const std::size_t length = colon == std::string_view::npos || colon == 0 ? m_rest.size() : colon - 1;
        const std::string_view taken = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
        return taken;
    }

  private:
    std::string_view m_rest;
};

/// Adds up names that stand without a gap; nothing when there is anything else between them.
template <std::size_t Count>
bool TakeNames(std::string_view text, const Named (&names)[Count], DWORD* sum) {
    Cursor cursor(text);
    while (!cursor.IsAtEnd()) {
        const Named* taken = nullptr;
        for (const Named& name : names) {
            if (cursor.Take(name.letters)) {
                taken = &name;
                break;
            }
        }
        if (taken == nullptr) {
            return false;
        }
        *sum |= taken->value;
    }
    return true;
}

/// A number as C writes it: 12, 014, 0xC.
std::optional<DWORD> NumberOf(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    } else if (text.starts_with('0')) {
        base = 8;
    }
    DWORD number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return !text.empty() && error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// Rights as a number, or as names of sets and of single rights in any mixture.
std::optional<ACCESS_MASK> ParseRights(std::string_view text) {
    if (!text.empty() && text[0] >= '0' && text[0] <= '9') {
        return NumberOf(text);
    }
    constexpr std::size_t kSingle = std::size(kRights);
    static constexpr auto kAll = [] {
        std::array<Named, kSingle + std::size(kRightSets)> all{};
        for (std::size_t i = 0; i < all.size(); ++i) {
            all[i] = i < kSingle ? kRights[i] : kRightSets[i - kSingle];
        }
        return all;
    }();
    ACCESS_MASK rights = 0;
    for (; text.size() > 1; text.remove_prefix(2)) {
        const Named* found = nullptr;
        for (const Named& named : kAll) {
            if (named.letters == text.substr(0, 2)) {
                found = &named;
            }
        }
        if (found == nullptr) {
            return std::nullopt;
        }
        rights |= found->value;
    }
    return text.empty() ? std::optional(rights) : std::nullopt;
}

/// Reads descriptors' parts. Each function returns a code.
class Parser {
  public:
    Parser(const Machine& machine, std::string_view text) : m_machine(machine), m_cursor(text) {}

    DWORD Parse(SecurityDescriptor* descriptor) {
        while (!m_cursor.IsAtEnd()) {
            const DWORD code = ParsePart();
            if (code != ERROR_SUCCESS) {
                return code;
            }
        }
        *descriptor = std::move(m_read);
        return ERROR_SUCCESS;
    }

  private:
    DWORD ParsePart() {
        if (m_cursor.Take("O:")) {
            return ParseName(&m_read.owner);
        }
        if (m_cursor.Take("G:")) {
            return ParseName(&m_read.group);
        }
        if (m_cursor.Take("D:")) {
            return ParseList(false, SecurityDescriptor::kDaclPresent, &m_read.dacl);
        }
        if (m_cursor.Take("S:")) {
            return ParseList(true, SecurityDescriptor::kSaclPresent, &m_read.sacl);
        }
        return ERROR_INVALID_PARAMETER;
    }

    DWORD ParseName(std::optional<Sid>* name) {
        if (*name) {
            return ERROR_INVALID_PARAMETER;
        }
        *name = ParseSid(m_machine, m_cursor.TakeName());
        return *name ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_INVALID_SID};
    }

    DWORD ParseList(bool isSacl, WORD present, std::optional<AccessList>* list) {
        if ((m_read.control & present) != 0) {
            return ERROR_INVALID_PARAMETER;
        }
        m_read.control |= present;
        TakeListFlags(isSacl);
        if (m_cursor.Take(kNoList)) {
            return ERROR_SUCCESS;
        }
        list->emplace();
        std::size_t size = (*list)->Size();
        while (m_cursor.Take("(")) {
            AccessEntry entry;
            if (const DWORD code = ParseEntry(isSacl, &entry); code != ERROR_SUCCESS) {
                return code;
            }
            (*list)->entries.push_back(std::move(entry));
            constexpr std::size_t kEntryHeader = 4;
            size += kEntryHeader + (*list)->entries.back().body.size();
            if (size > AccessList::kMaxSize) {
                return ERROR_INVALID_ACL;
            }
        }
        return m_cursor.IsAtEnd() || m_cursor.IsAtPart() ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_INVALID_ACL};
    }

    void TakeListFlags(bool isSacl) {
        for (bool taken = true; taken;) {
            taken = false;
            for (const ListFlag& flag : kListFlags) {
                if (m_cursor.Take(flag.letters)) {
                    m_read.control |= isSacl ? flag.ofSacl : flag.ofDacl;
                    taken = true;
                }
            }
        }
    }

    /// One entry behind its opening bracket.
    DWORD ParseEntry(bool isSacl, AccessEntry* entry) {
        std::array<std::string_view, 6> fields;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const std::optional<std::string_view> field = m_cursor.TakeUpTo(i + 1 < fields.size() ? ';' : ')');
            if (!field) {
                return ERROR_INVALID_ACL;
            }
            fields[i] = *field;
        }
        const auto& [typeText, flagsText, rightsText, object, inheritedObject, holderText] = fields;
        const std::optional<BYTE> type = ParseType(typeText, isSacl);
        DWORD flags = 0;
        const std::optional<ACCESS_MASK> rights = ParseRights(rightsText);
        if (!type || !TakeNames(flagsText, kEntryFlags, &flags) || !rights || !object.empty() ||
            !inheritedObject.empty()) {
            return ERROR_INVALID_ACL;
        }
        const std::optional<Sid> holder = ParseSid(m_machine, holderText);
        if (!holder) {
            return ERROR_INVALID_SID;
        }
        *entry = AccessEntry::Make(*type, static_cast<BYTE>(flags), *rights, *holder);
        return ERROR_SUCCESS;
    }

    /// Audits belong into the SACL, and into it alone.
    static std::optional<BYTE> ParseType(std::string_view text, bool isSacl) {
        for (const Named& type : kTypes) {
            const bool isAudit = type.value >= AccessEntry::kAudit;
            if (type.letters == text && isAudit == isSacl) {
                return static_cast<BYTE>(type.value);
            }
        }
        return std::nullopt;
    }

    const Machine& m_machine;
    Cursor m_cursor;
    SecurityDescriptor m_read;
};

}  // namespace

DWORD WriteDescriptorText(const Machine& machine, const SecurityDescriptor& descriptor, DWORD parts,
                          std::string* text) {
    std::string written;
    if ((parts & OWNER_SECURITY_INFORMATION) != 0 && descriptor.owner) {
        written += "O:" + SidText(machine, *descriptor.owner);
    }
    if ((parts & GROUP_SECURITY_INFORMATION) != 0 && descriptor.group) {
        written += "G:" + SidText(machine, *descriptor.group);
    }
    const bool showsDacl =
        (parts & DACL_SECURITY_INFORMATION) != 0 && (descriptor.control & SecurityDescriptor::kDaclPresent) != 0;
    const bool showsSacl =
        (parts & SACL_SECURITY_INFORMATION) != 0 && (descriptor.control & SecurityDescriptor::kSaclPresent) != 0;
    if ((showsDacl && !AddListText(machine, descriptor.control, descriptor.dacl, false, &written)) ||
        (showsSacl && !AddListText(machine, descriptor.control, descriptor.sacl, true, &written))) {
        return ERROR_INVALID_ACL;
    }
    *text = std::move(written);
    return ERROR_SUCCESS;
}

DWORD ParseDescriptorText(const Machine& machine, std::string_view text, SecurityDescriptor* descriptor) {
    return Parser(machine, text).Parse(descriptor);
}

}  // namespace pikel::simulated
