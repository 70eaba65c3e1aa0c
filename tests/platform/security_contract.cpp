// The contract of tokens, SIDs and descriptor texts, NT family.
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/contract.h"

namespace pikel {
namespace {

using contract::WineException;

constexpr WineException kWine[] = {
    {"a holder that is no SID gives 1337", "gives 1336, as for the rest of the list"},
    {"an unknown kind of entry gives 1336", "gives 1705"},
    {"audits have no place in the DACL", "takes them"},
    {"a null text gives 87", "fails without a code"},
    {"a part comes once", "takes the last one"},
    {"a list that lets everybody in has a text", "makes an empty list of it"},
};

bool Holds(std::string_view statement, bool holds) {
    const auto result = contract::Contract(kWine, statement, holds);
    EXPECT_TRUE(result);
    return result;
}

PSID MakeSid(DWORD alias) {
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID sid = nullptr;
    EXPECT_EQ(CODE_OF(Platform().AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, alias, 0, 0, 0, 0,
                                                          0, 0, &sid)),
              0u);
    return sid;
}

class SecurityContract : public contract::Test {
  protected:
    /// What becomes of a descriptor's text on its way there and back, or "code N".
    static std::string RoundTrip(const char* text, DWORD parts = 15) {
        LookedUp<looked_up::ConvertStringSecurityDescriptorToSecurityDescriptorA> read(
            "advapi32.dll", "ConvertStringSecurityDescriptorToSecurityDescriptorA");
        LookedUp<looked_up::ConvertSecurityDescriptorToStringSecurityDescriptorA> write(
            "advapi32.dll", "ConvertSecurityDescriptorToStringSecurityDescriptorA");
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        DWORD code = CODE_OF(read.Call()(text, SDDL_REVISION_1, &descriptor, nullptr));
        const LocalBlock ownedDescriptor(code == 0 ? descriptor : nullptr);
        LPSTR back = nullptr;
        ULONG length = 0;
        if (code == 0) {
            code = CODE_OF(write.Call()(descriptor, SDDL_REVISION_1, parts, &back, &length));
        }
        if (code != 0) {
            return "code " + std::to_string(code);
        }
        const LocalBlock ownedText(back);
        EXPECT_EQ(length, std::strlen(back) + 1) << text;
        return back;
    }
};

TEST_P(SecurityContract, SidsCompareByTheirValues) {
    PSID administrators = MakeSid(DOMAIN_ALIAS_RID_ADMINS);
    PSID same = MakeSid(DOMAIN_ALIAS_RID_ADMINS);
    PSID users = MakeSid(0x221);
    EXPECT_TRUE(Platform().EqualSid(administrators, same));
    EXPECT_FALSE(Platform().EqualSid(administrators, users));
    const BYTE expected[] = {1, 2, 0, 0, 0, 0, 0, 5, 0x20, 0, 0, 0, 0x20, 2, 0, 0};
    EXPECT_EQ(std::memcmp(administrators, expected, sizeof expected), 0);
    for (PSID sid : {administrators, same, users}) {
        EXPECT_EQ(Platform().FreeSid(sid), nullptr);
    }
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID sid = nullptr;
    EXPECT_EQ(CODE_OF(Platform().AllocateAndInitializeSid(&authority, 9, 1, 2, 3, 4, 5, 6, 7, 8, &sid)),
              DWORD{ERROR_INVALID_SID});
}

TEST_P(SecurityContract, TokenHoldsTheAdministratorsGroup) {
    HANDLE token = nullptr;
    ASSERT_EQ(CODE_OF(Platform().OpenProcessToken(Platform().GetCurrentProcess(), TOKEN_QUERY, &token)), 0u);
    DWORD size = 0;
    EXPECT_EQ(CODE_OF(Platform().GetTokenInformation(token, TokenGroups, nullptr, 0, &size)),
              DWORD{ERROR_INSUFFICIENT_BUFFER});
    std::vector<BYTE> bytes(size);
    DWORD read = 0;
    ASSERT_EQ(CODE_OF(Platform().GetTokenInformation(token, TokenGroups, bytes.data(), size, &read)), 0u);
    EXPECT_LE(read, size);
    const auto& groups = *reinterpret_cast<const TOKEN_GROUPS*>(bytes.data());
    PSID administrators = MakeSid(DOMAIN_ALIAS_RID_ADMINS);
    int found = 0;
    for (DWORD i = 0; i < groups.GroupCount; ++i) {
        found += Platform().EqualSid(administrators, groups.Groups[i].Sid) ? 1 : 0;
    }
    EXPECT_EQ(found, 1);
    Platform().FreeSid(administrators);
    EXPECT_EQ(CODE_OF(Platform().CloseHandle(token)), 0u);
    EXPECT_EQ(CODE_OF(Platform().GetTokenInformation(nullptr, TokenGroups, nullptr, 0, &size)),
              DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(CODE_OF(Platform().OpenProcessToken(nullptr, TOKEN_QUERY, &token)), DWORD{ERROR_INVALID_HANDLE});
}

TEST_P(SecurityContract, DescriptorTextsComeBackInTheirCanonicalForm) {
    struct Text {
        const char* given;
        const char* back = nullptr;
    };
    static constexpr Text kTexts[] = {
        {""},
        {"O:BA"},
        {"O:BAG:SY"},
        {"G:SYO:BA", "O:BAG:SY"},
        {"D:"},
        {"D:P"},
        {"O:BAG:SYD:(A;;GA;;;SY)(A;;0x20000;;;WD)", "O:BAG:SYD:(A;;GA;;;SY)(A;;RC;;;WD)"},
        {"D:(A;;LCSWSDRCWDWO;;;BA)(A;OIIO;RPWPSDRCWDWO;;;BA)(A;;SWRC;;;WD)(A;CIIO;RC;;;CO)"},
        {"D:(A;;0xf000c;;;BA)", "D:(A;;LCSWSDRCWDWO;;;BA)"},
        {"D:(A;OICIIO;GRGWGX;;;WD)", "D:(A;OICIIO;GXGWGR;;;WD)"},
        {"D:(A;;FRSD;;;WD)", "D:(A;;0x130089;;;WD)"},
        {"D:(A;;FA;;;WD)(A;;KR;;;WD)"},
        {"D:(A;;0x80000001;;;WD)", "D:(A;;CCGR;;;WD)"},
        {"D:(A;;;;;WD)"},
        {"S:(AU;SAFA;WDWO;;;WD)"},
        {"O:S-1-5-32-544", "O:BA"},
        {"O:S-1-5-21-1-2-3-4"},
    };
    for (const Text& text : kTexts) {
        EXPECT_EQ(RoundTrip(text.given), text.back != nullptr ? text.back : text.given) << text.given;
    }
    Holds("a list that lets everybody in has a text", RoundTrip("D:NO_ACCESS_CONTROL") == "D:NO_ACCESS_CONTROL");
    EXPECT_EQ(RoundTrip("O:BAG:SYD:(A;;GA;;;WD)", 5), "O:BAD:(A;;GA;;;WD)");
    EXPECT_EQ(RoundTrip("O:BAG:SYD:(A;;GA;;;WD)", 2), "G:SY");
}

TEST_P(SecurityContract, WrongTextsAreRefused) {
    EXPECT_EQ(RoundTrip("X:BA"), "code 87");
    EXPECT_EQ(RoundTrip("O:XX"), "code 1337");
    EXPECT_EQ(RoundTrip("D:(A;;GA;;;WD"), "code 1336");
    EXPECT_EQ(RoundTrip("D:(A;;XX;;;WD)"), "code 1336");
    EXPECT_EQ(RoundTrip("D:(A;XX;GA;;;WD)"), "code 1336");
    Holds("an unknown kind of entry gives 1336", RoundTrip("D:(X;;GA;;;WD)") == "code 1336");
    Holds("a holder that is no SID gives 1337", RoundTrip("D:(A;;GA;;;XX)") == "code 1337");
    Holds("audits have no place in the DACL", RoundTrip("D:(AU;;GA;;;WD)") == "code 1336");
    Holds("a part comes once", RoundTrip("O:BAO:BA") == "code 87");
}

TEST_P(SecurityContract, OneRevisionIsKnown) {
    LookedUp<looked_up::ConvertStringSecurityDescriptorToSecurityDescriptorA> read(
        "advapi32.dll", "ConvertStringSecurityDescriptorToSecurityDescriptorA");
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_EQ(CODE_OF(read.Call()("O:BA", 2, &descriptor, nullptr)), DWORD{ERROR_UNKNOWN_REVISION});
    const DWORD code = CODE_OF(read.Call()(nullptr, 1, &descriptor, nullptr));
    EXPECT_NE(code, 0u);
    Holds("a null text gives 87", code == ERROR_INVALID_PARAMETER);
}

INSTANTIATE_CONTRACT(SecurityContract, "win2000", "xp", "xp-x64", "vista", "vista-x64");

}  // namespace
}  // namespace pikel
