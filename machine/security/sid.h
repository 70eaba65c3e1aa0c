// Security identifiers: their values, their bytes as Windows lays them out, and their texts. A text is "S-1-5-32-544"
// or the two letters that descriptor texts have for well-known ones, "BA".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

class Machine;

struct Sid {
    static constexpr std::size_t kMaxSubAuthorities = 15;

    std::uint64_t authority = 0;  ///< 48 bits
    std::vector<DWORD> subAuthorities;

    bool operator==(const Sid&) const = default;
};

/// Bytes of a SID with that many sub-authorities.
constexpr std::size_t SidSize(std::size_t subAuthorities) {
    return 8 + 4 * subAuthorities;
}

std::string BytesOf(const Sid& sid);

/// The SID at the front of the bytes; those behind it don't count.
/// @return nothing for another revision, too many sub-authorities, or bytes that end before it does
std::optional<Sid> ReadSid(std::string_view bytes);

/// Bytes of the SID at a pointer, told by its first two.
/// @return nothing for null, another revision and too many sub-authorities
std::optional<std::string_view> SidBytesAt(const void* sid);

// The well-known ones that the machine itself uses.
Sid EveryoneSid();
Sid AuthenticatedUsersSid();
/// @param alias  relative number of a local group: 0x220 Administrators, 0x221 Users
Sid BuiltinSid(DWORD alias);
/// The machine's own accounts have this in front. It goes by the computer's name.
Sid MachineSid(const Machine& machine);
/// Number of the machine's own administrator (DOMAIN_USER_RID_ADMIN).
inline constexpr DWORD kAdministratorAccount = 500;
/// An account of the machine: 500 Administrator, 501 Guest, from 1000 on users.
Sid AccountSid(const Machine& machine, DWORD number);

/// "S-1-5-32-544".
std::string PlainSidText(const Sid& sid);

/// The two letters for a well-known SID or for one of the machine's own accounts, else the plain text.
std::string SidText(const Machine& machine, const Sid& sid);

/// @param text  two letters, or "S-1-" and at least two numbers; decimal, or with 0x hexadecimal
/// @return nothing for any other text, and for the letters of a domain's groups: the machine is in none
std::optional<Sid> ParseSid(const Machine& machine, std::string_view text);

}  // namespace pikel::simulated
