#include "machine/inf/characters.h"

#include <string>

#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

constexpr char16_t kNoBreakSpace = 0x00A0;

}  // namespace

InfCharacters::InfCharacters(UINT codePage) {
    for (std::size_t byte = 0; byte < m_folded.size(); ++byte) {
        m_folded[byte] = static_cast<unsigned char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
    }
    for (char blank : {'\t', '\n', '\v', '\f', '\r', ' '}) {
        m_kinds[Index(blank)] = kBlank;
    }
    if (codePage == CP_UTF8) {
        return;
    }
    for (std::size_t byte = 0x80; byte < m_folded.size(); ++byte) {
        if (IsLeadByte(codePage, static_cast<unsigned char>(byte))) {
            m_kinds[byte] = kLead;
            m_hasLeads = true;
        }
    }
    for (std::size_t byte = 0x80; byte < m_folded.size(); ++byte) {
        if (m_kinds[byte] == kLead) {
            continue;
        }
        const char character = static_cast<char>(byte);
        if (ToWide(codePage, {&character, 1}) == std::u16string_view(&kNoBreakSpace, 1)) {
            m_kinds[byte] = kBlank;
        }
        const std::string folded = FoldCase(codePage, {&character, 1});
        if (folded.size() == 1) {
            m_folded[byte] = static_cast<unsigned char>(folded[0]);
        }
    }
}

bool InfCharacters::Equal(std::string_view left, std::string_view right) const {
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t place = 0; place < left.size(); ++place) {
        if (m_folded[Index(left[place])] != m_folded[Index(right[place])]) {
            return false;
        }
        if (IsLead(left[place]) && place + 1 < left.size()) {
            ++place;
            if (left[place] != right[place]) {
                return false;
            }
        }
    }
    return true;
}

std::uint32_t InfCharacters::Hash(std::string_view name) const {
    std::uint32_t hash = 2166136261u;
    auto add = [&hash](unsigned char byte) { hash = (hash ^ byte) * 16777619u; };
    for (std::size_t place = 0; place < name.size(); ++place) {
        add(m_folded[Index(name[place])]);
        if (IsLead(name[place]) && place + 1 < name.size()) {
            add(static_cast<unsigned char>(name[++place]));
        }
    }
    // The low bits choose the place in a table.
    return hash ^ (hash >> 15);
}

}  // namespace pikel::simulated
