// The token of the machine's user: who it is and its groups.
//
// Everybody is in Everyone, Authenticated Users and Users. The Administrators group is there for a user with
// administrative rights (machine.ini). A text value "Administrators" of the key
//
//   HKLM\SOFTWARE\Simulated Security
//
// says it otherwise: "yes", "no", or "deny-only", as in the token of an administrator who hasn't been asked for
// consent.
#pragma once

#include <string>
#include <vector>

#include "machine/base/machine.h"
#include "machine/security/sid.h"

namespace pikel::simulated {

inline constexpr char kSecurityKey[] = "HKLM\\SOFTWARE\\Simulated Security";

struct TokenGroup {
    Sid sid;
    DWORD attributes = 0;  ///< SE_GROUP_...
};

/// The object behind a token's handle.
struct Token {
    ACCESS_MASK access = 0;
};

/// The machine's Administrator account for a user with administrative rights, else the first of its users.
Sid UserOf(const Machine& machine);

/// The groups at this moment.
std::vector<TokenGroup> GroupsOf(Machine& machine);

}  // namespace pikel::simulated
