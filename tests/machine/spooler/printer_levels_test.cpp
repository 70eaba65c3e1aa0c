// The levels of printers beyond their settings: descriptor, state in the directory, DEVMODEs of printer and user.
#include <cstring>

#include "support/spooler_test.h"
#include "machine/security/descriptor.h"
#include "machine/security/descriptor_text.h"
#include "machine/spooler/printer_security.h"
#include "machine/spooler/publishing.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;

constexpr ACCESS_MASK kWriteDac = 0x40000;
constexpr ACCESS_MASK kWriteOwner = 0x80000;

class LevelTest : public SpoolerTest {
  protected:
    LevelTest() { StartWithPrinter("xp"); }
    void StartWithPrinter(const std::string& system) {
        Start(system);
        InstallDriver();
        ASSERT_EQ(AddPrinter(), 0u);
    }
    template <class Info>
    static DWORD Set(const PrinterHandle& printer, DWORD level, Info info, DWORD command = 0) {
        return CODE_OF(SetPrinterA(printer.Get(), level, reinterpret_cast<LPBYTE>(&info), command));
    }
    void TakeRightsAway() {
        SystemDescription description = Machine().System();
        description.administrator = false;
        Machine().SetSystem(description);
    }

    // ---- descriptors ----

    std::string BytesFor(std::string_view text) {
        SecurityDescriptor descriptor;
        EXPECT_EQ(ParseDescriptorText(Machine(), text, &descriptor), 0u) << text;
        return BytesOf(descriptor);
    }
    /// The text of what a level 3 record points at.
    std::string TextAt(const void* pointer) {
        std::string_view bytes;
        SecurityDescriptor descriptor;
        std::string text;
        EXPECT_EQ(DescriptorBytesAt(Machine(), pointer, &bytes), 0u);
        EXPECT_EQ(ReadDescriptor(bytes, &descriptor), 0u);
        EXPECT_EQ(WriteDescriptorText(Machine(), descriptor, 15, &text), 0u);
        return text;
    }
    std::string SecurityOf(const std::string& name) {
        const auto answer = GetPrinter<PRINTER_INFO_3>(OpenPlainly(name).Get(), 3);
        EXPECT_EQ(answer.Code(), 0u);
        return answer.Records().empty() ? "" : TextAt(answer.Records()[0].pSecurityDescriptor);
    }
    DWORD SetSecurity(const PrinterHandle& printer, std::string_view text) {
        std::string bytes = BytesFor(text);
        return Set(printer, 3, PRINTER_INFO_3{bytes.data()});
    }

    // ---- the directory ----

    struct State {
        std::string guid;
        DWORD action = 0;
    };
    State StateOf(const std::string& name) {
        const auto answer = GetPrinter<PRINTER_INFO_7A>(OpenPlainly(name).Get(), 7);
        EXPECT_EQ(answer.Code(), 0u);
        const PRINTER_INFO_7A info = answer.Records().at(0);
        return {OptionalText(info.pszObjectGUID).value_or(""), info.dwAction};
    }
    static DWORD SetAction(const PrinterHandle& printer, DWORD action) {
        return Set(printer, 7, PRINTER_INFO_7A{nullptr, action});
    }

    // ---- DEVMODEs ----

    /// Copies of the DEVMODE at a level; 0: there is none.
    int CopiesAt(const std::string& name, DWORD level) {
        const auto answer = GetPrinter<PRINTER_INFO_8A>(OpenPlainly(name).Get(), level);
        EXPECT_EQ(answer.Code(), 0u) << level;
        const DEVMODEA* mode = answer.Records().at(0).pDevMode;
        return mode == nullptr ? 0 : mode->dmCopies;
    }
    static DEVMODEA ModeWithCopies(short copies) {
        DEVMODEA mode{};
        mode.dmSize = sizeof mode;
        mode.dmCopies = copies;
        return mode;
    }
};

// ---- which system has which -----------------------------------------------------------------------------------------

class LevelsOfEverySystem : public LevelTest, public ::testing::WithParamInterface<std::string> {
  protected:
    LevelsOfEverySystem() { StartWithPrinter(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(LevelsOfEverySystem);

TEST_P(LevelsOfEverySystem, AreThoseOfItsGeneration) {
    const bool is9x = Machine().Is9x();
    const bool isFrom2000 = !is9x && Machine().Generation() >= Generation::Windows2000;
    const PrinterHandle printer = Open("Office");
    std::string descriptor = BytesFor("D:(A;;GA;;;BA)");
    DEVMODEA mode = ModeWithCopies(2);
    for (const DWORD level : {3u, 7u, 8u, 9u}) {
        const bool isThere = level == 3 ? !is9x : isFrom2000;
        DWORD needed = 0;
        EXPECT_EQ(CODE_OF(GetPrinterA(printer.Get(), level, nullptr, 0, &needed)),
                  isThere ? ERROR_INSUFFICIENT_BUFFER : ERROR_INVALID_LEVEL)
            << level;
        union {
            PRINTER_INFO_3 level3;
            PRINTER_INFO_7A level7;
            PRINTER_INFO_8A level8;
        } info{};
        if (level == 3) {
            info.level3.pSecurityDescriptor = descriptor.data();
        } else if (level == 7) {
            info.level7.dwAction = DSPRINT_PUBLISH;
        } else {
            info.level8.pDevMode = &mode;
        }
        EXPECT_EQ(Set(printer, level, info), isThere ? 0u : DWORD{ERROR_INVALID_LEVEL}) << level;
        DWORD count = 0;
        EXPECT_EQ(CODE_OF(EnumPrintersA(PRINTER_ENUM_LOCAL, nullptr, level, nullptr, 0, &needed, &count)),
                  DWORD{ERROR_INVALID_LEVEL})
            << level;
    }
}

TEST_P(LevelsOfEverySystem, DescriptorIsTheNtFamilys) {
    const auto* value = Registry().Find(PrintKey("Printers\\Office"), "Security");
    EXPECT_EQ(value == nullptr, Machine().Is9x());
    if (value != nullptr) {
        EXPECT_EQ(value->data, DefaultPrinterSecurity(Machine()));
        EXPECT_EQ(value->type, DWORD{REG_BINARY});
    }
}

// ---- level 3 --------------------------------------------------------------------------------------------------------

TEST_F(LevelTest, NewPrinterHasTheDescriptorOfItsSystem) {
    EXPECT_EQ(SecurityOf("Office"),
              "O:BAG:SYD:(A;;LCSWSDRCWDWO;;;BA)(A;OIIO;RPWPSDRCWDWO;;;BA)(A;;LCSWSDRCWDWO;;;PU)"
              "(A;OIIO;RPWPSDRCWDWO;;;PU)(A;;SWRC;;;WD)(A;CIIO;RC;;;CO)(A;OIIO;RPWPSDRCWDWO;;;CO)");
    StartWithPrinter("vista");
    EXPECT_EQ(SecurityOf("Office"),
              "O:BAG:SYD:(A;;LCSWSDRCWDWO;;;BA)(A;OIIO;RPWPSDRCWDWO;;;BA)(A;;SWRC;;;WD)(A;CIIO;RC;;;CO)"
              "(A;OIIO;RPWPSDRCWDWO;;;CO)");
}

TEST_F(LevelTest, DescriptorIsReplacedPartByPart) {
    PrinterHandle printer = Open("Office");
    ASSERT_EQ(SetSecurity(printer, "O:SYG:BAD:(A;;GA;;;SY)"), 0u);
    EXPECT_EQ(SecurityOf("Office"), "O:SYG:BAD:(A;;GA;;;SY)");
    ASSERT_EQ(SetSecurity(printer, "O:LA"), 0u);
    EXPECT_EQ(SecurityOf("Office"), "O:LAG:BAD:(A;;GA;;;SY)");
    ASSERT_EQ(SetSecurity(printer, "G:WD"), 0u);
    ASSERT_EQ(SetSecurity(printer, "D:PAI(D;;GA;;;BG)"), 0u);
    ASSERT_EQ(SetSecurity(printer, "S:AR(AU;SA;GW;;;WD)"), 0u);
    EXPECT_EQ(SecurityOf("Office"), "O:LAG:WDD:PAI(D;;GA;;;BG)S:AR(AU;SA;GW;;;WD)");
    ASSERT_EQ(SetSecurity(printer, "D:"), 0u);
    EXPECT_EQ(SecurityOf("Office"), "O:LAG:WDD:S:AR(AU;SA;GW;;;WD)");
    ASSERT_EQ(SetSecurity(printer, "D:NO_ACCESS_CONTROL"), 0u);
    printer.Reset();
    Test().Reopen();
    EXPECT_EQ(SecurityOf("Office"), "O:LAG:WDD:NO_ACCESS_CONTROLS:AR(AU;SA;GW;;;WD)");
}

TEST_F(LevelTest, DescriptorNeedsTheRightsToWriteIt) {
    struct Case {
        const char* text;
        ACCESS_MASK rights;
        DWORD code;
    };
    for (const Case& one :
         {Case{"D:", kWriteDac, 0}, Case{"S:", kWriteDac, 0}, Case{"D:", kWriteOwner, 5}, Case{"O:BA", kWriteOwner, 0},
          Case{"G:BA", kWriteOwner, 0}, Case{"O:BA", kWriteDac, 5}, Case{"O:BAD:", kWriteDac | kWriteOwner, 0},
          Case{"O:BAD:", kWriteDac, 5}, Case{"D:", PRINTER_ACCESS_ADMINISTER, 5}, Case{"D:", PRINTER_ALL_ACCESS, 0}}) {
        EXPECT_EQ(SetSecurity(Open("Office", one.rights), one.text), one.code) << one.text << " " << one.rights;
    }
}

TEST_F(LevelTest, DescriptorNeedsTheRightToReadIt) {
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(GetPrinterA(Open("Office", PRINTER_ACCESS_USE).Get(), 3, nullptr, 0, &needed)),
              DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(CODE_OF(GetPrinterA(Open("Office", READ_CONTROL).Get(), 3, nullptr, 0, &needed)),
              DWORD{ERROR_INSUFFICIENT_BUFFER});
}

TEST_F(LevelTest, WhatIsNoDescriptorIsRefused) {
    const PrinterHandle printer = Open("Office");
    const std::string before = SecurityOf("Office");
    EXPECT_EQ(Set(printer, 3, PRINTER_INFO_3{nullptr}), DWORD{ERROR_INVALID_SECURITY_DESCR});
    const std::string bytes = BytesFor("O:BAG:SYD:(A;;GA;;;SY)");
    // Every place where a byte says how far something reaches.
    for (const std::size_t at : {0u, 3u, 4u, 8u, 16u, 20u, 22u, 30u}) {
        std::string broken = bytes + std::string(70000, '\0');
        broken[at] = static_cast<char>(broken[at] ^ 0xC3);
        EXPECT_EQ(Set(printer, 3, PRINTER_INFO_3{broken.data()}), DWORD{ERROR_INVALID_SECURITY_DESCR}) << at;
    }
    EXPECT_EQ(CODE_OF(SetPrinterA(printer.Get(), 3, nullptr, 0)), DWORD{ERROR_INVALID_PARAMETER});
    std::string good = bytes;
    EXPECT_EQ(Set(printer, 3, PRINTER_INFO_3{good.data()}, PRINTER_CONTROL_PAUSE), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(SecurityOf("Office"), before);
}

TEST_F(LevelTest, DescriptorThatWasDamagedInTheRegistryIsReplacedWhole) {
    Registry().SetBytes(PrintKey("Printers\\Office"), "Security", "damaged");
    const PrinterHandle printer = Open("Office");
    ASSERT_EQ(SetSecurity(printer, "D:(A;;GA;;;SY)"), 0u);
    EXPECT_EQ(SecurityOf("Office"), "D:(A;;GA;;;SY)");
}

TEST_F(LevelTest, Level2HasTheDescriptorToo) {
    const PrinterHandle printer = Open("Office");
    const auto answer = GetPrinter<PRINTER_INFO_2A>(printer.Get(), 2);
    PRINTER_INFO_2A info = answer.Records().at(0);
    EXPECT_EQ(TextAt(info.pSecurityDescriptor), SecurityOf("Office"));
    const std::string before = SecurityOf("Office");
    ASSERT_EQ(Set(printer, 2, info), 0u);
    EXPECT_EQ(SecurityOf("Office"), before);
    info.pSecurityDescriptor = nullptr;
    ASSERT_EQ(Set(printer, 2, info), 0u);
    EXPECT_EQ(SecurityOf("Office"), before);
    std::string other = BytesFor("D:(A;;GA;;;BU)");
    info.pSecurityDescriptor = other.data();
    EXPECT_EQ(Set(Open("Office", PRINTER_ACCESS_ADMINISTER), 2, info), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(SecurityOf("Office"), before);
    ASSERT_EQ(Set(printer, 2, info), 0u);
    EXPECT_EQ(SecurityOf("Office"), "O:BAG:SYD:(A;;GA;;;BU)");
}

TEST_F(LevelTest, PrinterCanBeAddedWithADescriptor) {
    std::string bytes = BytesFor("D:(A;;GA;;;BU)");
    PrinterSettings settings{.name = "Other"};
    PRINTER_INFO_2A info = settings.Info();
    info.pSecurityDescriptor = bytes.data();
    PrinterHandle printer(AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&info)));
    ASSERT_TRUE(static_cast<bool>(printer));
    EXPECT_EQ(SecurityOf("Other"), "O:BAG:SYD:(A;;GA;;;BU)");
    bytes[0] = 9;
    settings.name = "Third";
    info = settings.Info();
    info.pSecurityDescriptor = bytes.data();
    EXPECT_EQ(CODE_OF(AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&info))), DWORD{ERROR_INVALID_SECURITY_DESCR});
}

TEST_F(LevelTest, DescriptorGoesAlongUnderANewName) {
    const PrinterHandle printer = Open("Office");
    ASSERT_EQ(SetSecurity(printer, "D:(A;;GA;;;SY)"), 0u);
    ASSERT_EQ(SetAction(printer, DSPRINT_PUBLISH), 0u);
    const State state = StateOf("Office");
    std::string name = "Renamed", port = "LPT1:";
    ASSERT_EQ(Set(printer, 5, PRINTER_INFO_5A{name.data(), port.data(), 0, 1, 1}), 0u);
    EXPECT_EQ(SecurityOf("Renamed"), "O:BAG:SYD:(A;;GA;;;SY)");
    EXPECT_EQ(StateOf("Renamed").guid, state.guid);
}

// ---- level 7 --------------------------------------------------------------------------------------------------------

TEST_F(LevelTest, PrinterIsPublishedAndTakenOut) {
    EXPECT_EQ(StateOf("Office").guid, "");
    EXPECT_EQ(StateOf("Office").action, DWORD{DSPRINT_UNPUBLISH});
    PrinterHandle printer = Open("Office");
    ASSERT_EQ(SetAction(printer, DSPRINT_PUBLISH), 0u);
    printer.Reset();
    Test().Reopen();
    const State published = StateOf("Office");
    EXPECT_THAT(published.guid, ::testing::MatchesRegex("\\{[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\}"));
    EXPECT_EQ(published.action, DWORD{DSPRINT_PUBLISH});
}

TEST_F(LevelTest, ActionsKeepOrRenewTheObject) {
    const PrinterHandle printer = Open("Office");
    ASSERT_EQ(SetAction(printer, DSPRINT_UPDATE), 0u);
    EXPECT_EQ(StateOf("Office").action, DWORD{DSPRINT_UNPUBLISH});
    ASSERT_EQ(SetAction(printer, DSPRINT_PUBLISH), 0u);
    const std::string first = StateOf("Office").guid;
    for (const DWORD action : {DSPRINT_PUBLISH, DSPRINT_UPDATE}) {
        ASSERT_EQ(SetAction(printer, action), 0u);
        EXPECT_EQ(StateOf("Office").guid, first);
        EXPECT_EQ(StateOf("Office").action, DWORD{DSPRINT_PUBLISH});
    }
    ASSERT_EQ(SetAction(printer, DSPRINT_REPUBLISH), 0u);
    EXPECT_NE(StateOf("Office").guid, first);
    EXPECT_NE(StateOf("Office").guid, "");
    EXPECT_EQ(StateOf("Office").action, DWORD{DSPRINT_PUBLISH});
    ASSERT_EQ(SetAction(printer, DSPRINT_UNPUBLISH), 0u);
    EXPECT_EQ(StateOf("Office").guid, "");
    EXPECT_EQ(StateOf("Office").action, DWORD{DSPRINT_UNPUBLISH});
    EXPECT_EQ(Registry().Find(PrintKey("Printers\\Office"), "ObjectGUID"), nullptr);
}

TEST_F(LevelTest, UnknownActionsAndNamedObjectsAreRefused) {
    const PrinterHandle printer = Open("Office");
    for (const DWORD action :
         {DWORD{0}, DWORD{3}, DWORD{16}, DWORD{DSPRINT_PENDING}, DSPRINT_PENDING | DSPRINT_PUBLISH}) {
        EXPECT_EQ(SetAction(printer, action), DWORD{ERROR_INVALID_PARAMETER}) << action;
    }
    std::string guid = "{}";
    EXPECT_EQ(Set(printer, 7, PRINTER_INFO_7A{guid.data(), DSPRINT_PUBLISH}), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(SetAction(Open("Office", PRINTER_ACCESS_USE), DSPRINT_PUBLISH), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(StateOf("Office").guid, "");
}

// ---- levels 8 and 9 -------------------------------------------------------------------------------------------------

TEST_F(LevelTest, Level8IsThePrintersOwnDevMode) {
    PrinterHandle printer = Open("Office");
    EXPECT_EQ(CopiesAt("Office", 8), 1);
    DEVMODEA mode = ModeWithCopies(5);
    ASSERT_EQ(Set(printer, 8, PRINTER_INFO_8A{&mode}), 0u);
    printer.Reset();
    Test().Reopen();
    EXPECT_EQ(CopiesAt("Office", 8), 5);
    EXPECT_EQ(GetPrinter<PRINTER_INFO_2A>(OpenPlainly("Office").Get(), 2).Records().at(0).pDevMode->dmCopies, 5);
}

TEST_F(LevelTest, NullDevModeIsTheDriversOwnAgain) {
    const PrinterHandle printer = Open("Office");
    const std::string key = PrintKey("Printers\\Office");
    const std::string fresh = Registry().Find(key, "Default DevMode")->data;
    DEVMODEA mode = ModeWithCopies(5);
    ASSERT_EQ(Set(printer, 8, PRINTER_INFO_8A{&mode}), 0u);
    ASSERT_EQ(Set(printer, 8, PRINTER_INFO_8A{nullptr}), 0u);
    EXPECT_EQ(Registry().Find(key, "Default DevMode")->data, fresh);
}

TEST_F(LevelTest, Level9IsTheUsersAlone) {
    EXPECT_EQ(CopiesAt("Office", 9), 0);
    PrinterHandle printer = Open("Office");
    DEVMODEA mode = ModeWithCopies(7);
    ASSERT_EQ(Set(printer, 9, PRINTER_INFO_8A{&mode}), 0u);
    printer.Reset();
    Test().Reopen();
    EXPECT_EQ(CopiesAt("Office", 9), 7);
    EXPECT_EQ(CopiesAt("Office", 8), 1);
    ASSERT_EQ(Set(Open("Office"), 9, PRINTER_INFO_8A{nullptr}), 0u);
    EXPECT_EQ(CopiesAt("Office", 9), 0);
}

TEST_F(LevelTest, EveryUserHasADevMode) {
    TakeRightsAway();
    const PrinterHandle printer = OpenPlainly("Office");
    DEVMODEA mode = ModeWithCopies(7);
    EXPECT_EQ(Set(printer, 9, PRINTER_INFO_8A{&mode}), 0u);
    EXPECT_EQ(Set(printer, 8, PRINTER_INFO_8A{&mode}), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(CopiesAt("Office", 9), 7);
    EXPECT_EQ(CopiesAt("Office", 8), 1);
}

TEST_F(LevelTest, DevModeWithoutItsFixedPartIsRefused) {
    const PrinterHandle printer = Open("Office");
    DEVMODEA mode = ModeWithCopies(7);
    mode.dmSize = 43;
    for (const DWORD level : {8u, 9u}) {
        EXPECT_EQ(Set(printer, level, PRINTER_INFO_8A{&mode}), DWORD{ERROR_INVALID_PARAMETER}) << level;
    }
    EXPECT_EQ(CopiesAt("Office", 8), 1);
    EXPECT_EQ(CopiesAt("Office", 9), 0);
}

TEST_F(LevelTest, DriversBytesComeAlong) {
    struct {
        DEVMODEA mode;
        char extra[6];
    } given{ModeWithCopies(3), "12345"};
    given.mode.dmDriverExtra = sizeof given.extra;
    ASSERT_EQ(Set(Open("Office"), 8, PRINTER_INFO_8A{&given.mode}), 0u);
    const auto answer = GetPrinter<PRINTER_INFO_8A>(OpenPlainly("Office").Get(), 8);
    EXPECT_STREQ(reinterpret_cast<const char*>(answer.Records().at(0).pDevMode + 1), "12345");
}

// ---- printers of other computers ------------------------------------------------------------------------------------

TEST_F(LevelTest, SharedPrintersTellWhatCanBeRead) {
    Registry().SetText("HKLM\\SOFTWARE\\Simulated Network\\Servers\\server\\Laser", "Driver", "Tarvo Laser");
    const std::string shared = "\\\\server\\Laser";
    EXPECT_EQ(SecurityOf(shared), SecurityOf("Office"));
    EXPECT_EQ(StateOf(shared).action, DWORD{DSPRINT_UNPUBLISH});
    EXPECT_EQ(CopiesAt(shared, 8), 1);
    DEVMODEA mode = ModeWithCopies(7);
    EXPECT_EQ(Set(OpenPlainly(shared), 9, PRINTER_INFO_8A{&mode}), 0u);
    EXPECT_EQ(CopiesAt(shared, 9), 7);
    EXPECT_EQ(Set(OpenPlainly(shared), 8, PRINTER_INFO_8A{&mode}), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(SetAction(OpenPlainly(shared), DSPRINT_PUBLISH), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(SetSecurity(OpenPlainly(shared), "D:"), DWORD{ERROR_ACCESS_DENIED});
}

}  // namespace
}  // namespace pikel
