#include "printui/print_ui_commands.h"

#include "frame/log.h"
#include "print_ui_probe.h"
#include "printui/command_line.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// ---- the version string ---------------------------------------------------------------------------------------------

struct VersionCase {
    DWORD version;
    DWORD processor;
    DWORD code2000;  ///< codes and texts on Windows 2000 and on later systems
    const char* text2000;
    DWORD codeXp;
    const char* textXp;
};
const VersionCase kVersions[] = {
    {0, 0, 0, "/h\"Intel\" /v\"Windows 95 or 98\"", 0, "/K /h\"Windows 4.0\" /v 0"},
    {0, 7, 0, "/h\"Intel\" /v\"Windows 95 or 98\"", 0, "/K /h\"Windows 4.0\" /v 0"},
    {0x400, 0, 0, "/h\"Intel\" /v\"Windows 95 or 98\"", 0, "/K /h\"Windows 4.0\" /v 0"},
    {0x400, 2, 0, "/h\"Intel\" /v\"Windows 95 or 98\"", 0, "/K /h\"Windows 4.0\" /v 0"},
    {2, 0, 0, "/h\"Intel\" /v\"Windows NT 4.0\"", 0, "/K /h\"Windows NT x86\" /v 2"},
    {2, 2, 0, "/h\"Intel\" /v\"Windows NT 4.0\"", 0, "/K /h\"Windows NT x86\" /v 2"},
    {3, 0, 0, "/h\"Intel\" /v\"Windows 2000\"", 0, "/K /h\"Windows NT x86\" /v 3"},
    {3, 1, 0, "/h\"Intel\" /v\"Windows 2000\"", 0, "/K /h\"Windows IA64\" /v 3"},
    {3, 2, 0, "/h\"Intel\" /v\"Windows 2000\"", 0, "/K /h\"Windows x64\" /v 3"},
    {3, 3, 0, "/h\"Intel\" /v\"Windows 2000\"", 87, ""},
    {1, 0, 1814, "/h\"Intel\" /v\"\"", 87, ""},
    {4, 0, 1814, "/h\"Intel\" /v\"\"", 87, ""},
};

bool HasNoPrintUI(const std::string& system) {
    return system.starts_with("win9") || system == "winme" || system == "nt4";
}

using VersionString = EverySystemTest;
INSTANTIATE_ON_EVERY_SYSTEM(VersionString);

TEST_P(VersionString, NamesEnvironmentAndVersionInTheSystemsWay) {
    const bool is2000 = GetParam() == "win2000";
    for (const VersionCase& one : kVersions) {
        SCOPED_TRACE("version " + std::to_string(one.version) + ", processor " + std::to_string(one.processor));
        char text[260] = {};
        const DWORD code = MakeVersionStringForPrintUI(one.version, one.processor, text, sizeof text);
        if (HasNoPrintUI(GetParam())) {
            EXPECT_EQ(code, 87u);
            EXPECT_STREQ(text, "");
        } else {
            EXPECT_EQ(code, is2000 ? one.code2000 : one.codeXp);
            EXPECT_STREQ(text, is2000 ? one.text2000 : one.textXp);
        }
    }
}

TEST_P(VersionString, NeedsABufferThatTakesIt) {
    if (HasNoPrintUI(GetParam())) {
        return;
    }
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, nullptr, 260), 87u);
    char text[260];
    ASSERT_EQ(MakeVersionStringForPrintUI(3, 0, text, sizeof text), 0u);
    const auto length = static_cast<DWORD>(std::string_view(text).size());
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, text, length + 1), 0u);
    text[length] = '#';
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, text, length), 8u);
    EXPECT_EQ(text[length], '#');
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, text, 0), 8u);
}

class PrintUICommands : public MachineTest {};

TEST_F(PrintUICommands, VersionStringIsLogged) {
    char text[260];
    for (const char* system : {"nt4", "xp"}) {
        Start(system);
        const DWORD code = system == std::string("nt4") ? 87 : 0;
        Test().TurnLogOn(1);
        EXPECT_EQ(MakeVersionStringForPrintUI(3, 2, text, sizeof text), code);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre("MakeVersionStringForPrintUI Start", HexLine("MakeVersionStringForPrintUI End", code)));
    }
    Start("win2000");
    Test().TurnLogOn(1);
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 2, text, sizeof text), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("MakeVersionStringForPrintUI Start", "DoGetResourceStrFromPrintUI(16056) Start",
                            "CRunDll32::GetResourceStr(16056) Start", "CRunDll32::GetResourceStr() End  res = 0",
                            "DoGetResourceStrFromPrintUI End(0)", "MakeVersionStringForPrintUI End(0x00000000)"));
    EXPECT_EQ(MakeVersionStringForPrintUI(7, 0, text, sizeof text), 1814u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("MakeVersionStringForPrintUI Start", "DoGetResourceStrFromPrintUI(0) Start",
                            "CRunDll32::GetResourceStr(0) Start", "CRunDll32::GetResourceStr() End  res = 1814",
                            "DoGetResourceStrFromPrintUI End(1814)", "MakeVersionStringForPrintUI End(0x00000716)"));
}

TEST_F(PrintUICommands, VersionOfWindows2000NeedsItsPrintUI) {
    Start("win2000");
    Machine().Modules().Remove("printui.dll");
    char text[260];
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, text, sizeof text), 126u);
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, nullptr, sizeof text), 87u);
}

// ---- formats and masks ----------------------------------------------------------------------------------------------

TEST_F(PrintUICommands, FormatRefusesWhatDoesNotFit) {
    char text[8];
    EXPECT_EQ(FormatBounded(text, sizeof text, "%s-%s", "abc", "def"), 0u);
    EXPECT_STREQ(text, "abc-def");
    EXPECT_EQ(FormatBounded(text, sizeof text, "%s-%s", "abcd", "def"), 8u);
    EXPECT_STREQ(text, "abcd-de");
}

// ---- share names ----------------------------------------------------------------------------------------------------

TEST_F(PrintUICommands, ShareNameIsSetByOneCommand) {
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DoChangeShareNameToPrintUI("Office", "OFFICE"), 0u);
    const std::string command = "/Xs /n\"Office\" ShareName \"OFFICE\"";
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{"DoChangeShareNameToPrintUI Start"},
                                                          ConversionLines(2),
                                                          RunLines(command, 0),
                                                          {"DoChangeShareNameToPrintUI End(0x00000000)"}})));
    EXPECT_THAT(probe.TakeCommands(), ElementsAre(command));
}

TEST_F(PrintUICommands, ShareCommandIsTheSameOnEverySystem) {
    for (const char* system : {"win2000", "xp-x64", "vista", "other"}) {
        Start(system);
        PrintUIProbe probe(Test());
        EXPECT_EQ(DoChangeShareNameToPrintUI("Office", "OFFICE"), 0u);
        EXPECT_THAT(probe.TakeCommands(), ElementsAre("/Xs /n\"Office\" ShareName \"OFFICE\"")) << system;
    }
}

TEST_F(PrintUICommands, BothNamesOfAShareAreEscaped) {
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoChangeShareNameToPrintUI("at@\"home\"", "a\"b@"), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/Xs /n\"at\\@\\\"home\\\"\" ShareName \"a\\\"b\\@\""));
}

TEST_F(PrintUICommands, ShareNeedsBothNames) {
    PrintUIProbe probe(Test());
    struct Case {
        const char* printer;
        const char* share;
    };
    for (const Case& one : {Case{nullptr, "S"}, Case{"", "S"}, Case{"P", nullptr}, Case{"P", ""}}) {
        Test().TurnLogOn(1);
        EXPECT_EQ(DoChangeShareNameToPrintUI(one.printer, one.share), 87u);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre("DoChangeShareNameToPrintUI Start", "DoChangeShareNameToPrintUI End(0x00000057)"));
    }
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUICommands, CodesWithAllBitsOf122CountAsAShareThatWasSet) {
    struct Case {
        DWORD left;
        DWORD result;
    };
    const Case cases[] = {{0, 0},     {5, 5},    {122, 0},         {203, 203},   {251, 0},       {1008, 1008},
                          {0x17A, 0}, {0xFF, 0}, {0x7A00, 0x7A00}, {0x78, 0x78}, {0x3F8, 0x3F8}, {0xFFFFFFFA, 0}};
    for (const Case& one : cases) {
        PrintUIProbe probe(Test());
        probe.Leave(one.left);
        EXPECT_EQ(DoChangeShareNameToPrintUI("Office", "OFFICE"), one.result) << one.left;
        EXPECT_EQ(g_entries.calls.size(), 1u);
    }
}

TEST_F(PrintUICommands, FilteredCodeIsTheOneThatIsLoggedAtTheEnd) {
    PrintUIProbe probe(Test());
    probe.Leave(251);
    Test().TurnLogOn(1);
    DoChangeShareNameToPrintUI("P", "S");
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{"DoChangeShareNameToPrintUI Start"},
                                                          ConversionLines(2),
                                                          RunLines("/Xs /n\"P\" ShareName \"S\"", 251),
                                                          {"DoChangeShareNameToPrintUI End(0x00000000)"}})));
}

TEST_F(PrintUICommands, ShareIsNotSetWhenANameDoesNotConvert) {
    PrintUIProbe probe(Test());
    faults::FailCall("MultiByteToWideChar", 1, 1113);
    Test().TurnLogOn(1);
    EXPECT_EQ(DoChangeShareNameToPrintUI("P", "S"), 1113u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{"DoChangeShareNameToPrintUI Start"},
                                                          ConversionLines(1, 1113),
                                                          {HexLine("DoChangeShareNameToPrintUI End", 1113)}})));
    faults::FailCall("MultiByteToWideChar", 2, 1113);
    EXPECT_EQ(DoChangeShareNameToPrintUI("P", "S"), 1113u);
    EXPECT_EQ(DoChangeShareNameToPrintUI("P", std::string(521, 's').c_str()), 87u);
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUICommands, NameThatIsTooLongOnceConvertedCountsAsSet) {
    // Its code is 122, which passes for success as every other 122 does; nothing is run.
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoChangeShareNameToPrintUI(std::string(300, '@').c_str(), "S"), 0u);
    EXPECT_EQ(DoChangeShareNameToPrintUI("P", std::string(300, '@').c_str()), 0u);
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

}  // namespace

}  // namespace pikel
