// Security identifiers.
#include "machine/security/sid.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "machine/base/machine.h"

namespace pikel::simulated {

namespace {

constexpr BYTE kSidRevision = 1;  // SID_REVISION
constexpr std::uint64_t kWorldAuthority = 1;
constexpr std::uint64_t kCreatorAuthority = 3;
constexpr std::uint64_t kNtAuthority = 5;
constexpr std::uint64_t kLargestAuthority = 0xFFFF'FFFF'FFFF;
constexpr DWORD kNonUnique = 21;  // accounts of a machine or a domain
constexpr DWORD kGuestAccount = 501;

/// One well-known SID: at most two sub-authorities, of which the alias is 0 where there is one.
struct WellKnown {
    std::string_view letters;
    std::uint64_t authority;
    DWORD first;
    DWORD alias = 0;
};
constexpr WellKnown kWellKnown[] = {
    {"WD", kWorldAuthority, 0},
    {"CO", kCreatorAuthority, 0},
    {"CG", kCreatorAuthority, 1},
    {"OW", kCreatorAuthority, 4},
    {"NU", kNtAuthority, 2},
    {"IU", kNtAuthority, 4},
    {"SU", kNtAuthority, 6},
    {"AN", kNtAuthority, 7},
    {"ED", kNtAuthority, 9},
    {"PS", kNtAuthority, 10},
    {"AU", kNtAuthority, 11},
    {"RC", kNtAuthority, 12},
    {"SY", kNtAuthority, 18},
    {"LS", kNtAuthority, 19},
    {"NS", kNtAuthority, 20},
    {"BA", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 544},
    {"BU", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 545},
    {"BG", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 546},
    {"PU", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 547},
    {"AO", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 548},
    {"SO", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 549},
    {"PO", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 550},
    {"BO", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 551},
    {"RE", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 552},
    {"RU", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 554},
    {"RD", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 555},
    {"NO", kNtAuthority, SECURITY_BUILTIN_DOMAIN_RID, 556},
};

Sid SidOf(const WellKnown& known) {
    Sid sid{known.authority, {known.first}};
    if (known.alias != 0) {
        sid.subAuthorities.push_back(known.alias);
    }
    return sid;
}

/// A number with its base in front, as C writes it: 12, 0xC; nothing for more than 64 bits.
std::optional<std::uint64_t> Number(std::string_view text) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(isHex ? 2 : 0);
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, isHex ? 16 : 10);
    return !text.empty() && error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<Sid> ParsePlainSid(std::string_view text) {
    constexpr std::string_view kStart = "S-1-";
    if (!text.starts_with(kStart)) {
        return std::nullopt;
    }
    text.remove_prefix(kStart.size());
    Sid sid;
    for (bool isAuthority = true;; isAuthority = false) {
        const std::size_t length = std::min(text.find('-'), text.size());
        const std::optional<std::uint64_t> number = Number(text.substr(0, length));
        if (!number || *number > (isAuthority ? kLargestAuthority : 0xFFFF'FFFF)) {
            return std::nullopt;
        }
        if (isAuthority) {
            sid.authority = *number;
        } else {
            sid.subAuthorities.push_back(static_cast<DWORD>(*number));
        }
        if (length == text.size()) {
            break;
        }
        text.remove_prefix(length + 1);
    }
    const bool fits = !sid.subAuthorities.empty() && sid.subAuthorities.size() <= Sid::kMaxSubAuthorities;
    return fits ? std::optional(std::move(sid)) : std::nullopt;
}

/// FNV-1a over the name's characters without their case, and a number that makes a second and third one of it.
DWORD HashOf(std::string_view name, DWORD seed) {
    DWORD hash = 2166136261u ^ seed;
    for (const char character : name) {
        hash =
            (hash ^ static_cast<BYTE>(character >= 'a' && character <= 'z' ? character - 0x20 : character)) * 16777619u;
    }
    return hash;
}

}  // namespace

// ---- bytes ----------------------------------------------------------------------------------------------------------

std::string BytesOf(const Sid& sid) {
    std::string bytes;
    bytes.reserve(SidSize(sid.subAuthorities.size()));
    bytes += static_cast<char>(kSidRevision);
    bytes += static_cast<char>(sid.subAuthorities.size());
    for (int shift = 40; shift >= 0; shift -= 8) {  // the authority alone has its high byte first
        bytes += static_cast<char>(sid.authority >> shift & 0xFF);
    }
    for (const DWORD subAuthority : sid.subAuthorities) {
        bytes.append(reinterpret_cast<const char*>(&subAuthority), sizeof subAuthority);
    }
    return bytes;
}

std::optional<Sid> ReadSid(std::string_view bytes) {
    if (bytes.size() < SidSize(0) || static_cast<BYTE>(bytes[0]) != kSidRevision) {
        return std::nullopt;
    }
    const std::size_t count = static_cast<BYTE>(bytes[1]);
    if (count > Sid::kMaxSubAuthorities || bytes.size() < SidSize(count)) {
        return std::nullopt;
    }
    Sid sid;
    for (const char byte : bytes.substr(2, 6)) {
        sid.authority = sid.authority << 8 | static_cast<BYTE>(byte);
    }
    sid.subAuthorities.resize(count);
    if (count != 0) {
        std::memcpy(sid.subAuthorities.data(), bytes.data() + SidSize(0), 4 * count);
    }
    return sid;
}

std::optional<std::string_view> SidBytesAt(const void* sid) {
    const auto* bytes = static_cast<const BYTE*>(sid);
    if (bytes == nullptr || bytes[0] != kSidRevision || bytes[1] > Sid::kMaxSubAuthorities) {
        return std::nullopt;
    }
    return std::string_view(reinterpret_cast<const char*>(bytes), SidSize(bytes[1]));
}

// ---- well-known ones ------------------------------------------------------------------------------------------------

Sid EveryoneSid() {
    return {kWorldAuthority, {0}};
}

Sid AuthenticatedUsersSid() {
    return {kNtAuthority, {11}};
}

Sid BuiltinSid(DWORD alias) {
    return {kNtAuthority, {SECURITY_BUILTIN_DOMAIN_RID, alias}};
}

Sid MachineSid(const Machine& machine) {
    const std::string& name = machine.System().computerName;
    return {kNtAuthority, {kNonUnique, HashOf(name, 1), HashOf(name, 2), HashOf(name, 3)}};
}

Sid AccountSid(const Machine& machine, DWORD number) {
    Sid sid = MachineSid(machine);
    sid.subAuthorities.push_back(number);
    return sid;
}

// ---- texts ----------------------------------------------------------------------------------------------------------

std::string PlainSidText(const Sid& sid) {
    std::string text = "S-1-";
    if (sid.authority > 0xFFFF'FFFF) {
        char number[24];
        std::snprintf(number, sizeof number, "0x%012llX", static_cast<unsigned long long>(sid.authority));
        text += number;
    } else {
        text += std::to_string(sid.authority);
    }
    for (const DWORD subAuthority : sid.subAuthorities) {
        text += '-' + std::to_string(subAuthority);
    }
    return text;
}

std::string SidText(const Machine& machine, const Sid& sid) {
    const auto* known = std::ranges::find_if(kWellKnown, [&](const WellKnown& one) { return SidOf(one) == sid; });
    if (known != std::end(kWellKnown)) {
        return std::string(known->letters);
    }
    if (sid == AccountSid(machine, kAdministratorAccount)) {
        return "LA";
    }
    return sid == AccountSid(machine, kGuestAccount) ? "LG" : PlainSidText(sid);
}

std::optional<Sid> ParseSid(const Machine& machine, std::string_view text) {
    const auto* known = std::ranges::find(kWellKnown, text, &WellKnown::letters);
    if (known != std::end(kWellKnown)) {
        return SidOf(*known);
    }
    if (text == "LA") {
        return AccountSid(machine, kAdministratorAccount);
    }
    return text == "LG" ? AccountSid(machine, kGuestAccount) : ParsePlainSid(text);
}

}  // namespace pikel::simulated
