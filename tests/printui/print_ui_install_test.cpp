#include "frame/log.h"
#include "print_ui_probe.h"
#include "printui/print_ui_commands.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kInf[] = "C:\\drv\\aurora.inf";
constexpr char kModel[] = "Aurora Laser 500";

const std::vector<std::string> kVersionLines = {"MakeVersionStringForPrintUI Start",
                                                "MakeVersionStringForPrintUI End(0x00000000)"};

class PrintUIInstall : public MachineTest {
  protected:
    DWORD Install(DWORD shareFlag, LPCSTR share = "OFFICE", LPCSTR port = "LPT1:") {
        return DoInstallPrinterToPrintUI(kInf, "Office", kModel, port, share, nullptr, shareFlag);
    }
};

// ---- drivers --------------------------------------------------------------------------------------------------------

TEST_F(PrintUIInstall, DriverCommandEndsQuietlyBeforeVista) {
    struct Case {
        const char* system;
        const char* end;
    };
    const Case cases[] = {
        {"win2000", "/h\"Intel\" /v\"Windows 2000\" /q"}, {"xp", "/K /h\"Windows x64\" /v 3 /q"},
        {"xp-ia64", "/K /h\"Windows x64\" /v 3 /q"},      {"xp-x64", "/K /h\"Windows x64\" /v 3 /q"},
        {"vista", "/K /h\"Windows x64\" /v 3"},           {"vista-ia64", "/K /h\"Windows x64\" /v 3"},
        {"vista-x64", "/K /h\"Windows x64\" /v 3"},       {"other", "/K /h\"Windows x64\" /v 3 /q"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.system);
        Start(one.system);
        PrintUIProbe probe(Test());
        EXPECT_EQ(DoAddDriverToPrintUI(kInf, kModel, 3, 2), 0u);
        EXPECT_THAT(
            probe.TakeCommands(),
            ElementsAre("/ia /m\"Aurora Laser 500\" /f\"C:\\drv\\aurora.inf\" /l\"C:\\drv\" " + std::string(one.end)));
    }
}

TEST_F(PrintUIInstall, DriverIsLogged) {
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, kModel, 3, 0), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines({{"DoAddDriverToPrintUI Start"},
                                        kVersionLines,
                                        ConversionLines(2),
                                        RunLines("/ia /m\"Aurora Laser 500\" /f\"C:\\drv\\aurora.inf\" /l\"C:\\drv\" "
                                                 "/K /h\"Windows NT x86\" /v 3 /q",
                                                 0),
                                        {"DoAddDriverToPrintUI End(0x00000000)"}})));
}

TEST_F(PrintUIInstall, CodeOfADriverCommandIsTheResultUnfiltered) {
    for (const DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        PrintUIProbe probe(Test());
        probe.Leave(code);
        EXPECT_EQ(DoAddDriverToPrintUI(kInf, kModel, 3, 0), code);
    }
}

TEST_F(PrintUIInstall, FolderOfTheInfGoesWithoutItsBackslash) {
    struct Case {
        const char* inf;
        const char* paths;
    };
    const Case cases[] = {
        {"C:\\drv\\x\\a.inf", "/f\"C:\\drv\\x\\a.inf\" /l\"C:\\drv\\x\""},
        {"C:\\a.inf", "/f\"C:\\a.inf\" /l\"C:\\\""},  // that of a root belongs to it
        {"\\a.inf", "/f\"\\a.inf\" /l\"\\\""},
        {"a.inf", "/f\"a.inf\" /l\"\""},
        {"C:a.inf", "/f\"C:a.inf\" /l\"C:\""},
        {"\\\\server\\share\\a.inf", "/f\"\\\\server\\share\\a.inf\" /l\"\\\\server\\share\""},
        {"C:\\d@v\\\"x\"\\a.inf", "/f\"C:\\d\\@v\\\"x\\\"\\a.inf\" /l\"C:\\d\\@v\\\"x\\\"\""},
        {"", "/f\"\" /l\"\""},
    };
    for (const Case& one : cases) {
        PrintUIProbe probe(Test());
        EXPECT_EQ(DoAddDriverToPrintUI(one.inf, kModel, 3, 0), 0u);
        EXPECT_THAT(probe.TakeCommands(), ElementsAre("/ia /m\"Aurora Laser 500\" " + std::string(one.paths) +
                                                      " /K /h\"Windows NT x86\" /v 3 /q"));
    }
}

TEST_F(PrintUIInstall, ModelOfADriverGoesInAsItIs) {
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, "A\"5@\"", 3, 0), 0u);
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, "", 3, 0), 0u);
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, nullptr, 3, 0), 0u);
    const std::string rest = " /f\"C:\\drv\\aurora.inf\" /l\"C:\\drv\" /K /h\"Windows NT x86\" /v 3 /q";
    EXPECT_THAT(probe.TakeCommands(),
                ElementsAre("/ia /m\"A\"5@\"\"" + rest, "/ia /m\"\"" + rest, "/ia /m\"\"" + rest));
}

TEST_F(PrintUIInstall, DriverIsNotInstalledWithoutAVersion) {
    for (const char* system : {"win98", "nt4"}) {
        Start(system);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoAddDriverToPrintUI(kInf, kModel, 3, 0), 87u);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre("DoAddDriverToPrintUI Start", "MakeVersionStringForPrintUI Start",
                                "MakeVersionStringForPrintUI End(0x00000057)", "DoAddDriverToPrintUI End(0x00000057)"));
    }
    Start("xp");
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, kModel, 1, 0), 87u);
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUIInstall, DriverIsNotInstalledWhenAPathDoesNotConvert) {
    PrintUIProbe probe(Test());
    for (const int nth : {1, 2}) {
        faults::FailCall("MultiByteToWideChar", static_cast<std::size_t>(nth), 1113);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoAddDriverToPrintUI(kInf, kModel, 3, 0), 1113u);
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{"DoAddDriverToPrintUI Start"},
                                                              kVersionLines,
                                                              ConversionLines(nth - 1),
                                                              ConversionLines(1, 1113),
                                                              {HexLine("DoAddDriverToPrintUI End", 1113)}})));
        faults::Reset();
    }
    EXPECT_EQ(DoAddDriverToPrintUI(nullptr, kModel, 3, 0), 87u);
    EXPECT_EQ(DoAddDriverToPrintUI(std::string(300, '@').c_str(), kModel, 3, 0), 122u);
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUIInstall, LongestCommandHas2047Characters) {
    PrintUIProbe probe(Test());
    const std::string around = "/ia /m\"\" /f\"C:\\drv\\aurora.inf\" /l\"C:\\drv\" /K /h\"Windows NT x86\" /v 3 /q";
    const std::string model(2047 - around.size(), 'm');
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, model.c_str(), 3, 0), 0u);
    ASSERT_EQ(g_entries.calls.size(), 1u);
    EXPECT_EQ(g_entries.calls[0].commandLine.size(), 2047u);
    EXPECT_TRUE(g_entries.calls[0].commandLine.ends_with(" /q"));
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, (model + "m").c_str(), 3, 0), 8u);
    EXPECT_EQ(g_entries.calls.size(), 1u);
}

// ---- printers -------------------------------------------------------------------------------------------------------

constexpr char kInstall[] = "/if /b\"Office\" /f\"C:\\drv\\aurora.inf\" /r\"LPT1:\" /m\"Aurora Laser 500\"";
constexpr char kShare[] = "/Xs /n\"Office\" ShareName \"OFFICE\"";

TEST_F(PrintUIInstall, PrinterCommandEndsWithTheShareSwitch) {
    for (const char* system : {"win2000", "xp", "xp-ia64", "xp-x64", "vista", "vista-ia64", "vista-x64", "other"}) {
        SCOPED_TRACE(system);
        Start(system);
        PrintUIProbe probe(Test());
        const std::string quiet = std::string_view(system).starts_with("vista") ? "" : " /q";
        EXPECT_EQ(Install(0), 0u);
        EXPECT_THAT(probe.TakeCommands(), ElementsAre(kInstall + quiet + " /z"));
        EXPECT_EQ(Install(1), 0u);
        EXPECT_THAT(probe.TakeCommands(), ElementsAre(kInstall + quiet + " /Z", kShare));
        EXPECT_EQ(Install(2), 0u);
        EXPECT_THAT(probe.TakeCommands(), ElementsAre(kInstall + quiet + " /z", kShare));
    }
}

TEST_F(PrintUIInstall, PrinterIsLogged) {
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(Install(1), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{"DoInstallPrinterToPrintUI Start"},
                                                          ConversionLines(3),
                                                          RunLines(std::string(kInstall) + " /q /Z", 0),
                                                          {"DoChangeShareNameToPrintUI Start"},
                                                          ConversionLines(2),
                                                          RunLines(kShare, 0),
                                                          {"DoChangeShareNameToPrintUI End(0x00000000)",
                                                           "DoInstallPrinterToPrintUI End(0x00000000)"}})));
}

TEST_F(PrintUIInstall, PrinterNeedsItsTexts) {
    PrintUIProbe probe(Test());
    for (const char* missing : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(DoInstallPrinterToPrintUI(missing, "P", "M", "R", "S", nullptr, 1), 87u);
        EXPECT_EQ(DoInstallPrinterToPrintUI("I", missing, "M", "R", "S", nullptr, 1), 87u);
        EXPECT_EQ(DoInstallPrinterToPrintUI("I", "P", missing, "R", "S", nullptr, 1), 87u);
        EXPECT_EQ(DoInstallPrinterToPrintUI("I", "P", "M", missing, "S", nullptr, 1), 87u);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoInstallPrinterToPrintUI("I", "P", "M", "R", missing, nullptr, 1), 87u);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre("DoInstallPrinterToPrintUI Start", "DoInstallPrinterToPrintUI End(0x00000057)"));
        ResetLog();
        EXPECT_EQ(DoInstallPrinterToPrintUI("I", "P", "M", "R", missing, nullptr, 2), 87u);
        EXPECT_THAT(probe.TakeCommands(), IsEmpty());
        // Not shared, it needs no name for that.
        EXPECT_EQ(DoInstallPrinterToPrintUI("I", "P", "M", "R", missing, nullptr, 0), 0u);
        EXPECT_THAT(probe.TakeCommands(), ElementsAre("/if /b\"P\" /f\"I\" /r\"R\" /m\"M\" /q /z"));
    }
}

TEST_F(PrintUIInstall, SixthArgumentIsNotRead) {
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoInstallPrinterToPrintUI("I", "P", "M", "R", nullptr, reinterpret_cast<LPCSTR>(1), 0), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/if /b\"P\" /f\"I\" /r\"R\" /m\"M\" /q /z"));
}

TEST_F(PrintUIInstall, AllButTheModelOfAPrinterIsEscaped) {
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoInstallPrinterToPrintUI("C:\\d@\\\"i\".inf", "P@\"", "M@\"", "R@\"", nullptr, nullptr, 0), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/if /b\"P\\@\\\"\" /f\"C:\\d\\@\\\"i\\\".inf\" /r\"R\\@\\\"\" "
                                                  "/m\"M@\"\" /q /z"));
}

TEST_F(PrintUIInstall, FirstTextThatDoesNotConvertEndsIt) {
    PrintUIProbe probe(Test());
    for (const int nth : {1, 2, 3}) {
        faults::FailCall("MultiByteToWideChar", static_cast<std::size_t>(nth), 1113);
        Test().TurnLogOn(1);
        EXPECT_EQ(Install(1), 1113u);
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{"DoInstallPrinterToPrintUI Start"},
                                                              ConversionLines(nth - 1),
                                                              ConversionLines(1, 1113),
                                                              {HexLine("DoInstallPrinterToPrintUI End", 1113)}})));
        faults::Reset();
    }
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUIInstall, PrinterNamePortAndInfAreConvertedInThisOrder) {
    PrintUIProbe probe(Test());
    ForgetCalls(Test());
    Install(0);
    std::vector<std::string> calls = TakeCallsOf(Test(), {"MultiByteToWideChar"});
    ASSERT_EQ(calls.size(), 4u);  // the last one is the command's
    // Told by the lengths of "Office", "LPT1:" and "C:\\drv\\aurora.inf" with their NULs.
    EXPECT_THAT(calls[0], HasSubstr(" = 0x7"));
    EXPECT_THAT(calls[1], HasSubstr(" = 0x6"));
    EXPECT_THAT(calls[2], HasSubstr(" = 0x12"));
}

TEST_F(PrintUIInstall, PrinterCommandAndItsLastSwitchMustFit) {
    PrintUIProbe probe(Test());
    const std::string around = "/if /b\"P\" /f\"I\" /r\"R\" /m\"\" /q";
    const std::string model(2047 - 3 - around.size(), 'm');
    auto install = [](const std::string& name) {
        return DoInstallPrinterToPrintUI("I", "P", name.c_str(), "R", nullptr, nullptr, 0);
    };
    EXPECT_EQ(install(model), 0u);
    ASSERT_EQ(g_entries.calls.size(), 1u);
    EXPECT_EQ(g_entries.calls[0].commandLine.size(), 2047u);
    EXPECT_EQ(install(model + "m"), 8u);     // no room for the switch
    EXPECT_EQ(install(model + "mmm"), 8u);   // fits exactly without it
    EXPECT_EQ(install(model + "mmmm"), 8u);  // doesn't
    EXPECT_EQ(g_entries.calls.size(), 1u);
}

TEST_F(PrintUIInstall, FailedInstallationIsTheResultAndSharesNothing) {
    for (const DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        PrintUIProbe probe(Test());
        probe.Leave(code);
        EXPECT_EQ(Install(1), code);
        EXPECT_EQ(probe.TakeCommands().size(), 1u);
    }
}

TEST_F(PrintUIInstall, CodeOfTheShareIsTheResult) {
    PrintUIProbe probe(Test());
    probe.Leave(0);
    probe.Leave(1801);
    EXPECT_EQ(Install(2), 1801u);
    EXPECT_EQ(probe.TakeCommands().size(), 2u);
    probe.Leave(0);
    probe.Leave(251);
    EXPECT_EQ(Install(2), 0u);
}

// ---- ports of a shared printer ----------------------------------------------------------------------------------

TEST_F(PrintUIInstall, PortsAreReadAtLevel2OnlyForASharedPrinter) {
    PrintUIProbe probe(Test());
    ForgetCalls(Test());
    Install(0);
    EXPECT_THAT(Test().TakeCallNames({"EnumPortsA"}), IsEmpty());
    Install(1);
    EXPECT_THAT(TakeCallsOf(Test(), {"EnumPortsA"}),
                ElementsAre(HasSubstr("EnumPortsA(null, 0x2, null, 0x0, "), HasSubstr("EnumPortsA(null, 0x2, &, ")));
}

TEST_F(PrintUIInstall, PortIsFoundInAnyCase) {
    PrintUIProbe probe(Test());
    EXPECT_EQ(Install(2, "OFFICE", "lpt1:"), 0u);
    EXPECT_EQ(probe.TakeCommands().size(), 2u);
}

TEST_F(PrintUIInstall, UnknownPortLeavesThePrinterUnshared) {
    PrintUIProbe probe(Test());
    EXPECT_EQ(Install(1, "OFFICE", "Nowhere:"), 0u);
    EXPECT_EQ(probe.TakeCommands().size(), 1u);
}

TEST_F(PrintUIInstall, PortsThatCannotBeListedLeaveThePrinterUnshared) {
    for (const std::size_t nth : {1u, 2u}) {
        PrintUIProbe probe(Test());
        faults::FailCall("EnumPortsA", nth, 1722);
        EXPECT_EQ(Install(1), 0u);
        EXPECT_EQ(probe.TakeCommands().size(), 1u);
        faults::Reset();
    }
    PrintUIProbe probe(Test());
    faults::FailCall("HeapAlloc", 1, 8);
    EXPECT_EQ(Install(1), 0u);
    EXPECT_EQ(probe.TakeCommands().size(), 1u);
}

/// Two ports of one name. The first is redirected when g_firstType says so.
DWORD g_firstType = 0;
DWORD g_secondType = 0;
BOOL WINAPI TwoPorts(LPSTR, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD returned) {
    *needed = 2 * sizeof(PORT_INFO_2A);
    *returned = 0;
    if (size < *needed) {
        simulated::lastError = ERROR_INSUFFICIENT_BUFFER;
        return FALSE;
    }
    static char name[] = "TS001";
    auto* ports = reinterpret_cast<PORT_INFO_2A*>(buffer);
    ports[0] = {};
    ports[0].pPortName = name;
    ports[0].fPortType = g_firstType;
    ports[1] = ports[0];
    ports[1].fPortType = g_secondType;
    *returned = 2;
    return TRUE;
}

TEST_F(PrintUIInstall, RedirectedPortLeavesThePrinterUnshared) {
    struct Case {
        DWORD first;
        DWORD second;
        std::size_t commands;
    };
    for (const Case& one : {Case{0x4, 0, 1}, Case{0x7, 0, 1}, Case{0x3, 0x4, 2}, Case{0, 0, 2}}) {
        PrintUIProbe probe(Test());
        ReplacedOperations replaced;
        replaced.table.EnumPortsA = TwoPorts;
        g_firstType = one.first;
        g_secondType = one.second;
        EXPECT_EQ(Install(1, "OFFICE", "TS001"), 0u);
        EXPECT_EQ(probe.TakeCommands().size(), one.commands) << one.first;
    }
}

TEST_F(PrintUIInstall, PortsThatFitIntoNothingAreNone) {
    PrintUIProbe probe(Test());
    ReplacedOperations replaced;
    replaced.table.EnumPortsA = [](LPSTR, DWORD, LPBYTE, DWORD, LPDWORD needed, LPDWORD returned) -> BOOL {
        *needed = 0;
        *returned = 3;
        return TRUE;
    };
    EXPECT_EQ(Install(1), 0u);
    EXPECT_EQ(probe.TakeCommands().size(), 1u);
}

}  // namespace

}  // namespace pikel
