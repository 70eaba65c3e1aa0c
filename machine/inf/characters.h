// What an INF's bytes mean in a code page: blanks, lead bytes of double-byte characters, letters that differ in case
// alone.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

class InfCharacters {
  public:
    explicit InfCharacters(UINT codePage);

    bool IsBlank(char character) const { return (m_kinds[Index(character)] & kBlank) != 0; }
    /// First of two bytes of one character: the second one may look like a backslash or a bracket.
    bool IsLead(char character) const { return (m_kinds[Index(character)] & kLead) != 0; }
    /// True when the code page has double-byte characters.
    bool HasLeads() const { return m_hasLeads; }

    /// Bytes of the character at a place in front of end.
    std::size_t Length(const char* at, const char* end) const { return IsLead(*at) && at + 1 < end ? 2 : 1; }

    const char* SkipBlanks(const char* at, const char* end) const {
        while (at != end && IsBlank(*at)) {
            ++at;
        }
        return at;
    }

    /// Names of sections, keys and strings match without regard to case.
    bool Equal(std::string_view left, std::string_view right) const;
    std::uint32_t Hash(std::string_view name) const;

  private:
    enum Kind : std::uint8_t { kBlank = 1, kLead = 2 };

    static std::size_t Index(char character) { return static_cast<unsigned char>(character); }

    std::array<std::uint8_t, 256> m_kinds{};
    std::array<unsigned char, 256> m_folded{};
    bool m_hasLeads = false;
};

}  // namespace pikel::simulated
