// The token of the machine's user.
#include "machine/security/token.h"

#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kUsers = 0x221;
constexpr DWORD kFirstUser = 1000;
constexpr DWORD kMember = SE_GROUP_MANDATORY | SE_GROUP_ENABLED_BY_DEFAULT | SE_GROUP_ENABLED;

}  // namespace

Sid UserOf(const Machine& machine) {
    return AccountSid(machine, machine.System().administrator ? kAdministratorAccount : kFirstUser);
}

std::vector<TokenGroup> GroupsOf(Machine& machine) {
    std::vector<TokenGroup> groups = {{EveryoneSid(), kMember}, {BuiltinSid(kUsers), kMember}};
    const std::string membership =
        machine.Registry().Text(kSecurityKey, "Administrators", machine.System().administrator ? "yes" : "no");
    if (membership != "no") {
        const bool isEnabled = membership != "deny-only";
        groups.push_back(
            {BuiltinSid(DOMAIN_ALIAS_RID_ADMINS), isEnabled ? kMember : DWORD{SE_GROUP_USE_FOR_DENY_ONLY}});
    }
    groups.push_back({AuthenticatedUsersSid(), kMember});
    return groups;
}

}  // namespace pikel::simulated
