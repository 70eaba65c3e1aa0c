// Descriptor texts of the machine, both ways, through the operations that convert them.
#include <cstring>

#include "machine/operations.h"
#include "machine/security/descriptor.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;

constexpr DWORD kAllParts = 15;

class DescriptorConversion : public MachineTest {
  protected:
    /// The descriptor of a text as bytes, or nothing with the code in Code().
    std::optional<std::string> Read(const char* text) {
        PSECURITY_DESCRIPTOR pointer = nullptr;
        ULONG size = 0;
        lastError = 0xdead;
        if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(text, SDDL_REVISION_1, &pointer, &size)) {
            m_code = lastError;
            return std::nullopt;
        }
        EXPECT_EQ(lastError, 0xdeadu);
        m_code = 0;
        std::string bytes(static_cast<const char*>(pointer), size);
        EXPECT_EQ(Machine().Heap().Size(pointer), size);
        EXPECT_EQ(LocalFree(pointer), nullptr);
        return bytes;
    }
    std::optional<std::string> Write(std::string bytes, DWORD parts = kAllParts) {
        LPSTR text = nullptr;
        ULONG length = 0;
        lastError = 0xdead;
        if (!ConvertSecurityDescriptorToStringSecurityDescriptorA(bytes.data(), SDDL_REVISION_1, parts, &text,
                                                                  &length)) {
            m_code = lastError;
            EXPECT_EQ(text, nullptr);
            return std::nullopt;
        }
        m_code = 0;
        EXPECT_EQ(length, std::strlen(text) + 1);
        std::string copy(text);
        EXPECT_EQ(LocalFree(text), nullptr);
        return copy;
    }
    /// What becomes of a text on its way there and back; "code N" when it is refused.
    std::string RoundTrip(const char* text) {
        const std::optional<std::string> bytes = Read(text);
        const std::optional<std::string> back = bytes ? Write(*bytes) : std::nullopt;
        return back ? *back : "code " + std::to_string(m_code);
    }
    DWORD Code() const { return m_code; }

  private:
    DWORD m_code = 0;
};

// ---- there and back -------------------------------------------------------------------------------------------------

struct Text {
    const char* given;
    const char* back = nullptr;  ///< null: as given
};

const Text kTexts[] = {
    {""},
    {"O:BA"},
    {"G:SY"},
    {"O:BAG:SY"},
    {"G:SYO:BA", "O:BAG:SY"},
    {"S:D:G:WDO:CO", "O:COG:WDD:S:"},
    {"D:"},
    {"D:NO_ACCESS_CONTROL"},
    {"D:PNO_ACCESS_CONTROL"},
    {"O:BAG:SYD:(A;;GA;;;SY)(A;;RC;;;WD)"},
    {"O:BAG:SYD:(A;;GA;;;SY)(A;;0x20000;;;WD)", "O:BAG:SYD:(A;;GA;;;SY)(A;;RC;;;WD)"},
    // List flags.
    {"D:P(A;;GA;;;WD)"},
    {"D:AR"},
    {"D:AI"},
    {"D:AIARP", "D:PARAI"},
    {"D:PAI(A;;GA;;;WD)S:ARAI(AU;SA;GA;;;WD)"},
    // Types.
    {"D:(D;;GA;;;BG)(A;;GA;;;BA)"},
    {"S:(AU;SAFA;GA;;;WD)(AL;FA;GA;;;WD)"},
    // Entry flags.
    {"D:(A;OICINPIOID;GA;;;WD)"},
    {"D:(A;IDIONPCIOI;GA;;;WD)", "D:(A;OICINPIOID;GA;;;WD)"},
    {"S:(AU;FASA;GA;;;WD)", "S:(AU;SAFA;GA;;;WD)"},
    // Rights.
    {"D:(A;;;;;WD)"},
    {"D:(A;;0;;;WD)", "D:(A;;;;;WD)"},
    {"D:(A;;GR;;;WD)(A;;GW;;;WD)(A;;GX;;;WD)(A;;GA;;;WD)"},
    {"D:(A;;GRGWGX;;;WD)", "D:(A;;GXGWGR;;;WD)"},
    {"D:(A;;FA;;;WD)(A;;FR;;;WD)(A;;FW;;;WD)(A;;FX;;;WD)(A;;KA;;;WD)(A;;KR;;;WD)(A;;KW;;;WD)"},
    {"D:(A;;KX;;;WD)", "D:(A;;KR;;;WD)"},
    {"D:(A;;FRSD;;;WD)", "D:(A;;0x130089;;;WD)"},
    {"D:(A;;LCSWSDRCWDWO;;;BA)"},
    {"D:(A;;0xf000c;;;BA)", "D:(A;;LCSWSDRCWDWO;;;BA)"},
    {"D:(A;;983052;;;BA)", "D:(A;;LCSWSDRCWDWO;;;BA)"},
    {"D:(A;;03600014;;;BA)", "D:(A;;LCSWSDRCWDWO;;;BA)"},
    {"D:(A;;WOWDRCSDCRLODTWPRPSWLCDCCC;;;WD)", "D:(A;;CCDCLCSWRPWPDTLOCRSDRCWDWO;;;WD)"},
    {"D:(A;;0x100000;;;WD)"},
    {"D:(A;;0xFFFFFFFF;;;WD)", "D:(A;;0xffffffff;;;WD)"},
    {"D:(A;;0x80000001;;;WD)", "D:(A;;CCGR;;;WD)"},
    // SIDs.
    {"O:S-1-5-32-544", "O:BA"},
    {"O:S-1-0x5-0x20-0x220", "O:BA"},
    {"O:S-1-5-21-1-2-3-4"},
    {"O:S-1-5-21-4294967295-0-0-500"},
    {"O:S-1-0x100000000-1", "O:S-1-0x000100000000-1"},
    {"O:S-1-0xFFFFFFFFFFFF-1"},
    {"O:S-1-4294967295-1"},
    {"O:S-1-1-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15"},
    {"O:LAG:LG"},
    {"D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;BU)(A;;GA;;;BG)(A;;GA;;;PU)(A;;GA;;;PO)(A;;GA;;;BO)(A;;GA;;;SO)(A;;GA;;;AO)"},
    {"D:(A;;GA;;;WD)(A;;GA;;;CO)(A;;GA;;;CG)(A;;GA;;;AU)(A;;GA;;;AN)(A;;GA;;;IU)(A;;GA;;;NU)(A;;GA;;;SU)(A;;GA;;;PS)"},
    {"D:(A;;GA;;;LS)(A;;GA;;;NS)(A;;GA;;;ED)(A;;GA;;;RC)(A;;GA;;;RE)(A;;GA;;;RU)(A;;GA;;;RD)(A;;GA;;;NO)(A;;GA;;;OW)"},
};

TEST_F(DescriptorConversion, TextsComeBackInTheirCanonicalForm) {
    for (const Text& text : kTexts) {
        const std::string expected = text.back != nullptr ? text.back : text.given;
        EXPECT_EQ(RoundTrip(text.given), expected) << text.given;
        EXPECT_EQ(RoundTrip(expected.c_str()), expected) << text.given;
    }
}

TEST_F(DescriptorConversion, WrongTextsTellWhatIsWrong) {
    struct Wrong {
        const char* text;
        DWORD code;
    };
    static constexpr Wrong kWrong[] = {
        {"X:BA", ERROR_INVALID_PARAMETER},
        {"O", ERROR_INVALID_PARAMETER},
        {"BA", ERROR_INVALID_PARAMETER},
        {" O:BA", ERROR_INVALID_PARAMETER},
        {"O:BAO:BA", ERROR_INVALID_PARAMETER},
        {"G:BAG:BA", ERROR_INVALID_PARAMETER},
        {"D:D:", ERROR_INVALID_PARAMETER},
        {"S:S:", ERROR_INVALID_PARAMETER},
        {"D:X:", ERROR_INVALID_PARAMETER},
        {"O:", ERROR_INVALID_SID},
        {"O:G:SY", ERROR_INVALID_SID},
        {"O:XX", ERROR_INVALID_SID},
        {"O:ba", ERROR_INVALID_SID},
        {"O:DA", ERROR_INVALID_SID},
        {"O:BAD", ERROR_INVALID_SID},
        {"O:S-1", ERROR_INVALID_SID},
        {"O:S-1-", ERROR_INVALID_SID},
        {"O:S-1-5", ERROR_INVALID_SID},
        {"O:S-1-5-", ERROR_INVALID_SID},
        {"O:S-2-5-32", ERROR_INVALID_SID},
        {"O:S-1-5-32-", ERROR_INVALID_SID},
        {"O:S-1-5--32", ERROR_INVALID_SID},
        {"O:S-1-5-x", ERROR_INVALID_SID},
        {"O:S-1-5-0x", ERROR_INVALID_SID},
        {"O:S-1-5-4294967296", ERROR_INVALID_SID},
        {"O:S-1-0x1000000000000-1", ERROR_INVALID_SID},
        {"O:S-1-1-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15-16", ERROR_INVALID_SID},
        {"D:(A;;GA;;;XX)", ERROR_INVALID_SID},
        {"D:(A;;GA;;;)", ERROR_INVALID_SID},
        {"D:(A;;GA;;;WD", ERROR_INVALID_ACL},
        {"D:(A;;GA;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;GA;;;WD))", ERROR_INVALID_ACL},
        {"D:(A;;GA;;;WD)x", ERROR_INVALID_ACL},
        {"D:()", ERROR_INVALID_ACL},
        {"D:(", ERROR_INVALID_ACL},
        {"D:x", ERROR_INVALID_ACL},
        {"D:(X;;GA;;;WD)", ERROR_INVALID_ACL},
        {"D:(;;GA;;;WD)", ERROR_INVALID_ACL},
        {"D:(OA;;GA;;;WD)", ERROR_INVALID_ACL},
        {"D:(AU;;GA;;;WD)", ERROR_INVALID_ACL},
        {"S:(A;;GA;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;XX;GA;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;O;GA;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;G;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;GAG;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;XX;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;0x;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;0x100000000;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;12x;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;09;;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;GA;00000000-0000-0000-0000-000000000000;;WD)", ERROR_INVALID_ACL},
        {"D:(A;;GA;;x;WD)", ERROR_INVALID_ACL},
    };
    for (const Wrong& wrong : kWrong) {
        EXPECT_EQ(Read(wrong.text), std::nullopt) << wrong.text;
        EXPECT_EQ(Code(), wrong.code) << wrong.text;
    }
}

TEST_F(DescriptorConversion, ListsHaveALimit) {
    // An entry for Everyone takes 20 bytes, the list's header 8.
    const std::string entry = "(A;;GA;;;WD)";
    std::string text = "D:";
    for (int i = 0; i < (0xFFFC - 8) / 20; ++i) {
        text += entry;
    }
    EXPECT_EQ(RoundTrip(text.c_str()), text);
    text += entry;
    EXPECT_EQ(Read(text.c_str()), std::nullopt);
    EXPECT_EQ(Code(), DWORD{ERROR_INVALID_ACL});
}

TEST_F(DescriptorConversion, ArgumentsAreChecked) {
    PSECURITY_DESCRIPTOR pointer = nullptr;
    EXPECT_FALSE(ConvertStringSecurityDescriptorToSecurityDescriptorA(nullptr, 1, &pointer, nullptr));
    EXPECT_EQ(lastError, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(ConvertStringSecurityDescriptorToSecurityDescriptorA("O:BA", 1, nullptr, nullptr));
    EXPECT_EQ(lastError, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(ConvertStringSecurityDescriptorToSecurityDescriptorA("O:BA", 2, &pointer, nullptr));
    EXPECT_EQ(lastError, DWORD{ERROR_UNKNOWN_REVISION});
    EXPECT_EQ(pointer, nullptr);
    std::string bytes = *Read("O:BA");
    LPSTR text = nullptr;
    EXPECT_FALSE(ConvertSecurityDescriptorToStringSecurityDescriptorA(nullptr, 1, 15, &text, nullptr));
    EXPECT_EQ(lastError, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(ConvertSecurityDescriptorToStringSecurityDescriptorA(bytes.data(), 1, 15, nullptr, nullptr));
    EXPECT_EQ(lastError, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(ConvertSecurityDescriptorToStringSecurityDescriptorA(bytes.data(), 0, 15, &text, nullptr));
    EXPECT_EQ(lastError, DWORD{ERROR_UNKNOWN_REVISION});
    // Sizes need not be taken.
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA("O:BA", 1, &pointer, nullptr));
    ASSERT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorA(pointer, 1, 15, &text, nullptr));
    EXPECT_STREQ(text, "O:BA");
    LocalFree(text);
    LocalFree(pointer);
}

TEST_F(DescriptorConversion, WithoutMemoryGives8) {
    std::string bytes = *Read("O:BA");
    Machine().Heap().FailAllocation(0, true);
    EXPECT_EQ(Read("O:BA"), std::nullopt);
    EXPECT_EQ(Code(), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    EXPECT_EQ(Write(bytes), std::nullopt);
    EXPECT_EQ(Code(), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    Machine().Heap().StopFailing();
}

TEST_F(DescriptorConversion, OnlyThePartsAskedForAreShown) {
    const std::string bytes = *Read("O:BAG:SYD:(A;;GA;;;WD)S:(AU;SA;GA;;;WD)");
    EXPECT_EQ(Write(bytes, 1), "O:BA");
    EXPECT_EQ(Write(bytes, 2), "G:SY");
    EXPECT_EQ(Write(bytes, 4), "D:(A;;GA;;;WD)");
    EXPECT_EQ(Write(bytes, 8), "S:(AU;SA;GA;;;WD)");
    EXPECT_EQ(Write(bytes, 5), "O:BAD:(A;;GA;;;WD)");
    EXPECT_EQ(Write(bytes, 0), "");
}

// ---- bytes ----------------------------------------------------------------------------------------------------------

TEST_F(DescriptorConversion, BytesAreThoseOfWindows) {
    const std::string expected(
        "\x01\x00\x04\x80"  // revision, control: self-relative, with a DACL
        "\x30\x00\x00\x00"  // owner
        "\x40\x00\x00\x00"  // group
        "\x00\x00\x00\x00"  // SACL
        "\x14\x00\x00\x00"  // DACL
        "\x02\x00\x1c\x00"  // list: revision, size
        "\x01\x00\x00\x00"  // one entry
        "\x00\x03\x14\x00"  // allowed, for containers and objects, size
        "\x00\x00\x00\x10"  // GENERIC_ALL
        "\x01\x01\x00\x00\x00\x00\x00\x01\x00\x00\x00\x00"
        "\x01\x02\x00\x00\x00\x00\x00\x05\x20\x00\x00\x00\x20\x02\x00\x00"
        "\x01\x01\x00\x00\x00\x00\x00\x05\x12\x00\x00\x00",
        20 + 28 + 16 + 12);
    EXPECT_EQ(*Read("O:BAG:SYD:(A;OICI;GA;;;WD)"), expected);
}

TEST_F(DescriptorConversion, EveryDamageIsRefusedOrBounded) {
    // Whatever a byte becomes, nothing outside the block is read: the sanitizer watches the block's end.
    const std::string good = *Read("O:BAG:SYD:P(A;OICI;GA;;;WD)(D;;0x123;;;BG)S:(AU;SA;GA;;;WD)");
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (const int value : {0x00, 0x01, 0x02, 0x04, 0x0F, 0x10, 0x7F, 0x80, 0xFE, 0xFF}) {
            auto* block = static_cast<char*>(Machine().Heap().Allocate(BlockKind::Local, good.size()));
            std::memcpy(block, good.data(), good.size());
            block[at] = static_cast<char>(value);
            LPSTR text = nullptr;
            if (ConvertSecurityDescriptorToStringSecurityDescriptorA(block, 1, kAllParts, &text, nullptr)) {
                LocalFree(text);
            } else {
                EXPECT_TRUE(lastError == ERROR_INVALID_SECURITY_DESCR || lastError == ERROR_INVALID_ACL) << lastError;
            }
            LocalFree(block);
        }
    }
}

TEST_F(DescriptorConversion, CutDescriptorsAreRefused) {
    const std::string good = *Read("O:BAG:SYD:(A;;GA;;;WD)S:(AU;SA;GA;;;WD)");
    for (std::size_t size = 0; size < good.size(); ++size) {
        SecurityDescriptor descriptor;
        EXPECT_EQ(ReadDescriptor(std::string_view(good).substr(0, size), &descriptor),
                  DWORD{ERROR_INVALID_SECURITY_DESCR})
            << size;
        auto* block = Machine().Heap().Allocate(BlockKind::Local, std::max<std::size_t>(size, 1));
        std::memcpy(block, good.data(), size);
        std::string_view bytes;
        EXPECT_EQ(DescriptorBytesAt(Machine(), block, &bytes), DWORD{ERROR_INVALID_SECURITY_DESCR}) << size;
        LocalFree(block);
    }
}

TEST_F(DescriptorConversion, DescriptorWithPointersInsideIsRefused) {
    std::string bytes = *Read("O:BA");
    bytes[3] = 0;
    EXPECT_EQ(Write(bytes + std::string(64, '\0')), std::nullopt);
    EXPECT_EQ(Code(), DWORD{ERROR_INVALID_SECURITY_DESCR});
}

TEST_F(DescriptorConversion, EntryOfAnUnknownKindIsKeptButHasNoText) {
    std::string bytes = *Read("D:(A;;GA;;;WD)");
    bytes[28] = 5;  // an entry for objects
    SecurityDescriptor descriptor;
    ASSERT_EQ(ReadDescriptor(bytes, &descriptor), 0u);
    EXPECT_EQ(BytesOf(descriptor), bytes);
    EXPECT_EQ(Write(bytes), std::nullopt);
    EXPECT_EQ(Code(), DWORD{ERROR_INVALID_ACL});
}

TEST_F(DescriptorConversion, AbsentListWithAnOffsetIsNotLookedAt) {
    std::string bytes = *Read("O:BAD:(A;;GA;;;WD)");
    bytes[2] = 0;
    EXPECT_EQ(Write(bytes), "O:BA");
}

}  // namespace
}  // namespace pikel
