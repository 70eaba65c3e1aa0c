// The token of the machine's user, and SIDs.
#include "machine/security/token.h"

#include <cstring>

#include "machine/operations.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;
using ::testing::ElementsAre;

constexpr DWORD kNoAccess = 998;
constexpr DWORD kMember = 7;

/// Code of a call that fails, 0 of one that doesn't.
template <class Call>
DWORD CodeOf(Call call) {
    lastError = 0xdead;
    return call() ? 0 : lastError;
}
#define CODE_OF(call) CodeOf([&] { return static_cast<bool>(call); })

class TokenTest : public MachineTest {
  protected:
    ~TokenTest() override {
        if (m_token != nullptr) {
            CloseHandle(m_token);
        }
    }
    HANDLE Open(DWORD access = TOKEN_QUERY) {
        if (m_token != nullptr) {
            CloseHandle(m_token);
        }
        EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), access, &m_token));
        return m_token;
    }
    std::vector<BYTE> Read(TOKEN_INFORMATION_CLASS kind) {
        const HANDLE token = Open();
        DWORD size = 0;
        EXPECT_EQ(CODE_OF(GetTokenInformation(token, kind, nullptr, 0, &size)), DWORD{ERROR_INSUFFICIENT_BUFFER});
        std::vector<BYTE> bytes(size);
        DWORD read = 0;
        EXPECT_EQ(CODE_OF(GetTokenInformation(token, kind, bytes.data(), size, &read)), 0u);
        EXPECT_EQ(read, size);
        return bytes;
    }
    std::string TextAt(PSID sid) {
        const auto bytes = SidBytesAt(sid);
        return bytes ? SidText(Machine(), *ReadSid(*bytes)) : "none";
    }
    /// "BA 7": group and attributes.
    std::vector<std::string> Groups() {
        std::vector<BYTE> bytes = Read(TokenGroups);
        const auto* groups = reinterpret_cast<const TOKEN_GROUPS*>(bytes.data());
        std::vector<std::string> texts;
        for (DWORD i = 0; i < groups->GroupCount; ++i) {
            texts.push_back(TextAt(groups->Groups[i].Sid) + " " + std::to_string(groups->Groups[i].Attributes));
        }
        return texts;
    }
    std::string User() {
        std::vector<BYTE> bytes = Read(TokenUser);
        return TextAt(reinterpret_cast<const TOKEN_USER*>(bytes.data())->User.Sid);
    }
    void SetAdministrator(bool administrator) {
        SystemDescription description = Machine().System();
        description.administrator = administrator;
        Machine().SetSystem(description);
    }

  private:
    HANDLE m_token = nullptr;
};

// ---- tokens ---------------------------------------------------------------------------------------------------------

class TokenOfEverySystem : public TokenTest, public ::testing::WithParamInterface<std::string> {
  protected:
    TokenOfEverySystem() { Start(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(TokenOfEverySystem);

TEST_P(TokenOfEverySystem, IsThereOnTheNtFamilyAlone) {
    if (!Machine().Is9x()) {
        EXPECT_THAT(Groups(), ElementsAre("WD 7", "BU 7", "BA 7", "AU 7"));
        return;
    }
    HANDLE token = nullptr;
    DWORD size = 0;
    PSID sid = nullptr;
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    EXPECT_EQ(CODE_OF(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_EQ(token, nullptr);
    EXPECT_EQ(CODE_OF(GetTokenInformation(nullptr, TokenGroups, nullptr, 0, &size)), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_EQ(CODE_OF(AllocateAndInitializeSid(&authority, 1, 1, 0, 0, 0, 0, 0, 0, 0, &sid)),
              DWORD{ERROR_CALL_NOT_IMPLEMENTED});
}

TEST_F(TokenTest, GroupsGoByTheUsersRights) {
    EXPECT_EQ(User(), "LA");
    SetAdministrator(false);
    EXPECT_THAT(Groups(), ElementsAre("WD 7", "BU 7", "AU 7"));
    EXPECT_EQ(User(), PlainSidText(AccountSid(Machine(), 1000)));
}

TEST_F(TokenTest, MembershipCanBeGivenByItself) {
    auto set = [&](std::string_view membership) {
        Machine().Registry().SetText(kSecurityKey, "Administrators", membership);
    };
    set("deny-only");
    EXPECT_THAT(Groups(), ElementsAre("WD 7", "BU 7", "BA 16", "AU 7"));
    set("no");
    EXPECT_THAT(Groups(), ElementsAre("WD 7", "BU 7", "AU 7"));
    SetAdministrator(false);
    set("yes");
    EXPECT_THAT(Groups(), ElementsAre("WD 7", "BU 7", "BA 7", "AU 7"));
    EXPECT_EQ(kMember, DWORD{SE_GROUP_MANDATORY | SE_GROUP_ENABLED_BY_DEFAULT | SE_GROUP_ENABLED});
}

TEST_F(TokenTest, OpensTheProcessAlone) {
    HANDLE token = nullptr;
    EXPECT_EQ(CODE_OF(OpenProcessToken(nullptr, TOKEN_QUERY, &token)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(CODE_OF(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, nullptr)), kNoAccess);
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(TokenTest, ReadingChecksItsArguments) {
    DWORD size = 0;
    BYTE bytes[512];
    EXPECT_EQ(CODE_OF(GetTokenInformation(nullptr, TokenGroups, bytes, sizeof bytes, &size)),
              DWORD{ERROR_INVALID_HANDLE});
    HANDLE token = Open();
    EXPECT_EQ(CODE_OF(GetTokenInformation(token, TokenGroups, bytes, sizeof bytes, nullptr)), kNoAccess);
    EXPECT_EQ(CODE_OF(GetTokenInformation(token, TokenGroups, nullptr, sizeof bytes, &size)), kNoAccess);
    EXPECT_EQ(CODE_OF(GetTokenInformation(token, static_cast<TOKEN_INFORMATION_CLASS>(99), bytes, sizeof bytes, &size)),
              DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(GetTokenInformation(Open(READ_CONTROL), TokenGroups, bytes, sizeof bytes, &size)),
              DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(TokenTest, SmallBufferIsLeftAlone) {
    DWORD size = 0;
    HANDLE token = Open();
    GetTokenInformation(token, TokenGroups, nullptr, 0, &size);
    std::vector<BYTE> bytes(size, 0xEE);
    const std::vector<BYTE> before = bytes;
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(GetTokenInformation(token, TokenGroups, bytes.data(), size - 1, &needed)),
              DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(needed, size);
    EXPECT_EQ(bytes, before);
}

TEST_F(TokenTest, ClosesOnce) {
    HANDLE token = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
    EXPECT_EQ(Machine().Handles().OpenCount(HandleKind::Token), 1u);
    EXPECT_THAT(Machine().Handles().Describe(), ElementsAre("token of the process"));
    EXPECT_EQ(CODE_OF(CloseHandle(token)), 0u);
    EXPECT_EQ(Machine().Handles().OpenCount(HandleKind::Token), 0u);
    EXPECT_EQ(CODE_OF(CloseHandle(token)), DWORD{ERROR_INVALID_HANDLE});
    Test().AllowOpen();
}

// ---- SIDs -----------------------------------------------------------------------------------------------------------

class SidTest : public MachineTest {
  protected:
    static PSID Make(BYTE count, DWORD first = 0x20, DWORD second = 0x220) {
        SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
        PSID sid = nullptr;
        EXPECT_EQ(CODE_OF(AllocateAndInitializeSid(&authority, count, first, second, 3, 4, 5, 6, 7, 8, &sid)), 0u);
        return sid;
    }
};

TEST_F(SidTest, IsLaidOutAsWindowsDoes) {
    PSID sid = Make(2);
    const BYTE expected[] = {1, 2, 0, 0, 0, 0, 0, 5, 0x20, 0, 0, 0, 0x20, 2, 0, 0};
    EXPECT_EQ(std::memcmp(sid, expected, sizeof expected), 0);
    EXPECT_EQ(Machine().Heap().Size(sid), sizeof expected);
    EXPECT_EQ(FreeSid(sid), nullptr);
    EXPECT_EQ(FreeSid(nullptr), nullptr);
}

TEST_F(SidTest, HasUpToEightSubAuthoritiesWhenAllocated) {
    PSID eight = Make(8);
    EXPECT_EQ(PlainSidText(*ReadSid(*SidBytesAt(eight))), "S-1-5-32-544-3-4-5-6-7-8");
    FreeSid(eight);
    FreeSid(Make(0));
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID sid = nullptr;
    EXPECT_EQ(CODE_OF(AllocateAndInitializeSid(&authority, 9, 1, 2, 3, 4, 5, 6, 7, 8, &sid)), DWORD{ERROR_INVALID_SID});
    EXPECT_EQ(CODE_OF(AllocateAndInitializeSid(nullptr, 1, 1, 0, 0, 0, 0, 0, 0, 0, &sid)), kNoAccess);
    EXPECT_EQ(CODE_OF(AllocateAndInitializeSid(&authority, 1, 1, 0, 0, 0, 0, 0, 0, 0, nullptr)), kNoAccess);
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(CODE_OF(AllocateAndInitializeSid(&authority, 1, 1, 0, 0, 0, 0, 0, 0, 0, &sid)),
              DWORD{ERROR_NOT_ENOUGH_MEMORY});
    Machine().Heap().StopFailing();
    EXPECT_EQ(sid, nullptr);
}

TEST_F(SidTest, EqualOnesHaveEqualBytes) {
    PSID administrators = Make(2);
    PSID same = Make(2);
    PSID users = Make(2, 0x20, 0x221);
    PSID longer = Make(3);
    BYTE broken[8] = {2, 0, 0, 0, 0, 0, 0, 5};
    BYTE tooMany[8] = {1, 16, 0, 0, 0, 0, 0, 5};
    EXPECT_TRUE(EqualSid(administrators, administrators));
    EXPECT_TRUE(EqualSid(administrators, same));
    EXPECT_FALSE(EqualSid(administrators, users));
    EXPECT_FALSE(EqualSid(administrators, longer));
    EXPECT_FALSE(EqualSid(administrators, nullptr));
    EXPECT_FALSE(EqualSid(broken, broken));
    EXPECT_FALSE(EqualSid(tooMany, tooMany));
    for (PSID sid : {administrators, same, users, longer}) {
        FreeSid(sid);
    }
}

TEST_F(SidTest, IsFreedByItsOwnCloserAlone) {
    PSID sid = Make(2);
    EXPECT_EQ(LocalFree(sid), sid);
    EXPECT_FALSE(HeapFree(GetProcessHeap(), 0, sid));
    EXPECT_EQ(Machine().Heap().Misuses().size(), 2u);
    EXPECT_EQ(FreeSid(sid), nullptr);
    EXPECT_EQ(FreeSid(sid), sid);
    Test().AllowOpen();
}

TEST_F(SidTest, BytesAreReadWithinTheirBounds) {
    const Sid sid = BuiltinSid(544);
    const std::string bytes = BytesOf(sid);
    EXPECT_EQ(ReadSid(bytes), sid);
    EXPECT_EQ(ReadSid(bytes + "more"), sid);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_EQ(ReadSid(std::string_view(bytes).substr(0, size)), std::nullopt) << size;
    }
    EXPECT_EQ(SidBytesAt(nullptr), std::nullopt);
}

TEST_F(SidTest, AccountsGoByTheComputersName) {
    SystemDescription description = Machine().System();
    const Sid here = AccountSid(Machine(), 500);
    for (char& character : description.computerName) {
        character = static_cast<char>(character >= 'A' && character <= 'Z' ? character | 0x20 : character);
    }
    Machine().SetSystem(description);
    EXPECT_EQ(AccountSid(Machine(), 500), here);
    description.computerName = "ANOTHER";
    Machine().SetSystem(description);
    EXPECT_FALSE(AccountSid(Machine(), 500) == here);
    EXPECT_THAT(PlainSidText(here), ::testing::MatchesRegex("S-1-5-21-[0-9]+-[0-9]+-[0-9]+-500"));
}

}  // namespace
}  // namespace pikel
