#include <algorithm>

#include "frame/log.h"
#include "machine/services/services.h"
#include "machine/spooler/connections.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/printers.h"
#include "print_ui_probe.h"
#include "printui/print_ui_commands.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr char kPrinterStart[] = "DoDeletePrinterToPrintUI Start";
constexpr char kPrinterEnd[] = "DoDeletePrinterToPrintUI End";
constexpr char kShared[] = "\\\\server\\Laser";

char g_profile[] = "AURORA.ICC";
char g_otherProfile[] = "OTHER.ICC";
LPSTR g_profiles[] = {g_profile, g_otherProfile};

class PrintUIRemoval : public MachineTest {
  protected:
    void AddPrinter(const std::string& name) {
        Machine().Registry().SetText(simulated::Printers::KeyOf(name), "Name", name);
    }
    /// Stops what would be restarted along with the spooler.
    void StopDependents() { Machine().Services().SetState("Fax", SERVICE_STOPPED); }
    void Connect() {
        Machine().Registry().SetText(simulated::Connections::ShareKeyOf(kShared), "Driver", "Aurora");
        ASSERT_EQ(simulated::Connections(Machine()).Add(kShared), 0u);
    }
};

// ---- printers -------------------------------------------------------------------------------------------------------

TEST_F(PrintUIRemoval, LocalPrinterIsDeletedQuietlyOnEverySystem) {
    for (const char* system : {"win2000", "xp", "xp-ia64", "xp-x64", "vista", "other"}) {
        Start(system);
        AddPrinter("Office");
        PrintUIProbe probe(Test());
        EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 0u) << system;
        EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"Office\" /q")) << system;
    }
}

TEST_F(PrintUIRemoval, ConnectionIsDeletedAsOne) {
    Connect();
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoDeletePrinterToPrintUI(kShared, 0, nullptr), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dn /n\"\\\\server\\Laser\" /q"));
}

/// What the spooler tells of a printer at level 2.
LPSTR g_printerName = nullptr;
LPSTR g_serverName = nullptr;
BOOL WINAPI TellPrinter(HANDLE, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed) {
    *needed = sizeof(PRINTER_INFO_2A);
    if (size < *needed) {
        simulated::lastError = ERROR_INSUFFICIENT_BUFFER;
        return FALSE;
    }
    auto* info = reinterpret_cast<PRINTER_INFO_2A*>(buffer);
    info->pPrinterName = g_printerName;
    info->pServerName = g_serverName;
    return TRUE;
}

TEST_F(PrintUIRemoval, ConnectionHasBothABackslashInFrontAndAServer) {
    AddPrinter("Office");
    char shared[] = "\\\\server\\Laser";
    char local[] = "Office";
    char server[] = "\\\\server";
    char empty[] = "";
    struct Case {
        LPSTR printer;
        LPSTR server;
        const char* command;
    };
    const Case cases[] = {
        {shared, server, "/dn"}, {shared, nullptr, "/dl"}, {shared, empty, "/dl"},   {local, server, "/dl"},
        {local, nullptr, "/dl"}, {empty, server, "/dl"},   {nullptr, server, "/dl"}, {nullptr, nullptr, "/dl"},
    };
    for (const Case& one : cases) {
        PrintUIProbe probe(Test());
        ReplacedOperations replaced;
        replaced.table.GetPrinterA = TellPrinter;
        g_printerName = one.printer;
        g_serverName = one.server;
        EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 0u);
        EXPECT_THAT(probe.TakeCommands(), ElementsAre(one.command + std::string(" /n\"Office\" /q")));
    }
}

TEST_F(PrintUIRemoval, PrinterThatTellsNothingOfItselfCountsAsLocal) {
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = [](HANDLE, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"Office\" /q"));
}

TEST_F(PrintUIRemoval, NameOfAPrinterIsEscaped) {
    AddPrinter("at@\"home\"");
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoDeletePrinterToPrintUI("at@\"home\"", 0, nullptr), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"at\\@\\\"home\\\"\" /q"));
}

TEST_F(PrintUIRemoval, PrinterIsLogged) {
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 0u);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAreArray(Lines(
            {{kPrinterStart}, ConversionLines(), RunLines("/dl /n\"Office\" /q", 0), {HexLine(kPrinterEnd, 0)}})));
}

TEST_F(PrintUIRemoval, PrinterIsClosedBeforeTheCommand) {
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    ForgetCalls(Test());
    DoDeletePrinterToPrintUI("Office", 0, nullptr);
    EXPECT_THAT(Test().TakeCallNames(
                    {"OpenPrinterA", "GetPrinterA", "ClosePrinter", "LoadLibraryA", "FreeLibrary", "GlobalAlloc"}),
                ElementsAre("GlobalAlloc", "GlobalAlloc", "OpenPrinterA", "GetPrinterA", "GetPrinterA", "ClosePrinter",
                            "LoadLibraryA", "FreeLibrary"));
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(PrintUIRemoval, PrinterThatCannotBeReadIsNotDeleted) {
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Missing", 0, nullptr), 1801u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines({{kPrinterStart}, ConversionLines(), {HexLine(kPrinterEnd, 1801)}})));
    ResetLog();
    faults::FailCall("GetPrinterA", 1, 1905);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 1905u);
    faults::FailCall("GetPrinterA", 2, 1722);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 1722u);
    faults::FailCall("HeapAlloc", 1, 8);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 8u);
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUIRemoval, AcceptedCodesOfTheReadArePassedAsWell) {
    // The filter stands behind everything.
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    faults::FailCall("GetPrinterA", 2, 122);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 0u);
    faults::FailCall("OpenPrinterA", 1, 1008);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), 0u);
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUIRemoval, CodesWithAllBitsOfThreeMasksCountAsDeleted) {
    AddPrinter("Office");
    struct Case {
        DWORD left;
        DWORD result;
    };
    const Case cases[] = {{0, 0},           {5, 5},       {122, 0},       {203, 0},    {251, 0},     {0xFF, 0},
                          {1008, 0},        {0x3FF, 0},   {0x7F0, 0},     {0x13F0, 0}, {1801, 1801}, {0x1CB, 0},
                          {0xCB00, 0xCB00}, {0xC3, 0xC3}, {0x3E0, 0x3E0}, {126, 0},    {1905, 1905}};
    for (const Case& one : cases) {
        PrintUIProbe probe(Test());
        probe.Leave(one.left);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, nullptr), one.result) << one.left;
        EXPECT_EQ(Test().TakeLog().back(), HexLine(kPrinterEnd, one.result));
        EXPECT_EQ(g_entries.calls.size(), 1u);
    }
}

TEST_F(PrintUIRemoval, NullOrEmptyNameIsLeftToTheSpooler) {
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterToPrintUI(nullptr, 2, g_profiles), 6u);  // null opens the print server
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kPrinterStart, HexLine(kPrinterEnd, 6)));
    EXPECT_EQ(DoDeletePrinterToPrintUI("", 2, g_profiles), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kPrinterStart, HexLine(kPrinterEnd, 87)));
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
    // A spooler that answers all the same gets a command without a name.
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = TellPrinter;
    g_printerName = g_serverName = nullptr;
    EXPECT_EQ(DoDeletePrinterToPrintUI(nullptr, 0, nullptr), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"\" /q"));
}

TEST_F(PrintUIRemoval, FailedConversionOfTheNameIsNotLookedAt) {
    const std::string name(200, '@');
    AddPrinter(name);
    PrintUIProbe probe(Test());
    faults::FailCall("MultiByteToWideChar", 1, 1113);
    EXPECT_EQ(DoDeletePrinterToPrintUI(name.c_str(), 0, nullptr), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"" + name + "\" /q"));
}

// ---- colour profiles of a printer -----------------------------------------------------------------------------------

TEST_F(PrintUIRemoval, ProfilesAreUnlinkedFirstAndTheEndIsLoggedBehindThat) {
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    ReplacedOperations replaced;
    // The unlinking succeeds without a colour library to speak of.
    Machine().Modules().Register(
        "C:\\WINDOWS\\system32\\mscms.dll",
        {{"DisassociateColorProfileFromDeviceA",
          reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(+[](PCSTR, PCSTR, PCSTR) -> BOOL { return TRUE; }))}});
    Test().TurnLogOn(1);
    ForgetCalls(Test());
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 2, g_profiles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{kPrinterStart, HexLine(kPrinterEnd, 0)},
                                                          ConversionLines(),
                                                          RunLines("/dl /n\"Office\" /q", 0),
                                                          {HexLine(kPrinterEnd, 0)}})));
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"Office\" /q"));
}

TEST_F(PrintUIRemoval, FailedUnlinkingEndsNothingButLeavesTheCommandWithoutAName) {
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    Machine().Modules().Remove("mscms.dll");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 2, g_profiles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{kPrinterStart, HexLine(kPrinterEnd, 126)},
                                                          RunLines("/dl /n\"\" /q", 0),
                                                          {HexLine(kPrinterEnd, 0)}})));
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"\" /q"));
}

TEST_F(PrintUIRemoval, WithoutProfilesNothingIsUnlinked) {
    AddPrinter("Office");
    PrintUIProbe probe(Test());
    Machine().Modules().Remove("mscms.dll");
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 0, g_profiles), 0u);
    EXPECT_EQ(DoDeletePrinterToPrintUI("Office", 2, nullptr), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"Office\" /q", "/dl /n\"Office\" /q"));
}

// ---- drivers --------------------------------------------------------------------------------------------------------

constexpr char kDriverStart[] = "DoDeletePrinterDriverToPrintUI Start";
constexpr char kDriverEnd[] = "DoDeletePrinterDriverToPrintUI End";
constexpr char kDelete[] = "/dd /m\"Aurora\" /K /h\"Windows NT x86\" /v 3 /q";
const std::vector<std::string> kVersionLines = {"MakeVersionStringForPrintUI Start",
                                                "MakeVersionStringForPrintUI End(0x00000000)"};

DWORD DeleteDriver(DWORD removal = 0, DWORD restart = 0, DWORD version = 3, DWORD processor = 0) {
    return DoDeletePrinterDriverToPrintUI(version, "Aurora", processor, 0, nullptr, removal, restart);
}

TEST_F(PrintUIRemoval, DriverIsDeletedQuietlyOnEverySystem) {
    struct Case {
        const char* system;
        const char* version;
    };
    const Case cases[] = {
        {"win2000", "/h\"Intel\" /v\"Windows 2000\""}, {"xp", "/K /h\"Windows x64\" /v 3"},
        {"xp-ia64", "/K /h\"Windows x64\" /v 3"},      {"xp-x64", "/K /h\"Windows x64\" /v 3"},
        {"vista", "/K /h\"Windows x64\" /v 3"},        {"vista-x64", "/K /h\"Windows x64\" /v 3"},
        {"other", "/K /h\"Windows x64\" /v 3"},
    };
    for (const Case& one : cases) {
        Start(one.system);
        PrintUIProbe probe(Test());
        EXPECT_EQ(DeleteDriver(0, 0, 3, 2), 0u) << one.system;
        EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dd /m\"Aurora\" " + std::string(one.version) + " /q"));
    }
}

TEST_F(PrintUIRemoval, DriversEndIsLoggedTwice) {
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DeleteDriver(), 0u);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAreArray(Lines(
            {{kDriverStart}, kVersionLines, RunLines(kDelete, 0), {HexLine(kDriverEnd, 0), HexLine(kDriverEnd, 0)}})));
}

TEST_F(PrintUIRemoval, FailedDriverCommandIsTheResultAndEndsIt) {
    for (const DWORD code : {5u, 122u, 203u, 251u, 1008u, 3001u}) {
        PrintUIProbe probe(Test());
        probe.Leave(code);
        Test().TurnLogOn(2);
        EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, "Aurora", 0, 2, g_profiles, 0, 0), code);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAreArray(Lines({{kDriverStart},
                                            kVersionLines,
                                            RunLines(kDelete, code),
                                            {HexLine(kDriverEnd, code), HexLine(kDriverEnd, code)}})));
    }
}

TEST_F(PrintUIRemoval, NameOfADriverGoesInAsItIs) {
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, "A\"5@\"", 0, 0, nullptr, 0, 0), 0u);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dd /m\"A\"5@\"\" /K /h\"Windows NT x86\" /v 3 /q"));
}

TEST_F(PrintUIRemoval, DriverCommandMustFit) {
    PrintUIProbe probe(Test());
    const std::string around = "/dd /m\"\" /K /h\"Windows NT x86\" /v 3 /q";
    const std::string name(2047 - around.size(), 'n');
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, name.c_str(), 0, 0, nullptr, 0, 0), 0u);
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, (name + "n").c_str(), 0, 0, nullptr, 0, 0), 8u);
    EXPECT_EQ(probe.TakeCommands().size(), 1u);
}

TEST_F(PrintUIRemoval, DriverWithoutANameStopsTheCommandButNotTheLists) {
    PrintUIProbe probe(Test());
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        Test().TurnLogOn(1);
        EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, name, 2, 2, g_profiles, 0, 0), 87u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(kDriverStart, HexLine(kDriverEnd, 87), HexLine(kDriverEnd, 87)));
        EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, name, 2, 2, g_profiles, 1, 1), 87u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(kDriverStart, "ProcessorType = 2", "Environment = Windows x64",
                                                  "DeletePrinterDriver2k() - Service(Spooler).Start",
                                                  "DeletePrinterDriver2k() - Service.ReStart End",
                                                  HexLine(kDriverEnd, 87), HexLine(kDriverEnd, 87)));
    }
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

TEST_F(PrintUIRemoval, VersionWithoutANameStopsTheCommand) {
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DeleteDriver(0, 0, 1), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kDriverStart, "MakeVersionStringForPrintUI Start",
                                              "MakeVersionStringForPrintUI End(0x00000057)", HexLine(kDriverEnd, 87),
                                              HexLine(kDriverEnd, 87)));
    Start("nt4");
    EXPECT_EQ(DeleteDriver(), 87u);
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

// ---- the lists of a driver ------------------------------------------------------------------------------------------

TEST_F(PrintUIRemoval, EnvironmentOfTheListsGoesByVersionAndProcessor) {
    struct Case {
        DWORD version;
        DWORD processor;
        const char* environment;
        bool isLogged;
    };
    const Case cases[] = {
        {0, 0, "Windows 4.0", false}, {2, 0, "Windows NT x86", true},      {3, 0, "Windows NT x86", true},
        {3, 1, "Windows IA64", true}, {3, 2, "Windows x64", true},         {3, 9, "Windows NT x86", true},
        {2, 1, "Windows IA64", true}, {0x400, 2, "Windows NT x86", false}, {7, 2, "Windows NT x86", false},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(std::to_string(one.version) + "," + std::to_string(one.processor));
        PrintUIProbe probe(Test());
        Test().TurnLogOn(1);
        ForgetCalls(Test());
        DeleteDriver(1, 0, one.version, one.processor);
        const std::vector<std::string> log = Test().TakeLog();
        const std::vector<std::string> expected = {"ProcessorType = " + std::to_string(one.processor),
                                                   "Environment = " + std::string(one.environment)};
        if (one.isLogged) {
            EXPECT_THAT(std::vector<std::string>(log.begin() + 1, log.begin() + 3), ElementsAreArray(expected));
        } else {
            EXPECT_THAT(log, ::testing::Not(::testing::Contains(HasSubstr("Environment = "))));
        }
        const std::vector<std::string> calls = TakeCallsOf(Test(), {"EnumPrinterDriversA"});
        ASSERT_FALSE(calls.empty());
        EXPECT_THAT(calls[0], HasSubstr("(null, \"" + std::string(one.environment) + "\", 0x3, "));
    }
}

TEST_F(PrintUIRemoval, ListsAreNotReadWithoutTheFlag) {
    PrintUIProbe probe(Test());
    ForgetCalls(Test());
    EXPECT_EQ(DeleteDriver(), 0u);
    EXPECT_THAT(Test().TakeCallNames({"EnumPrinterDriversA", "DeleteMonitorA"}), IsEmpty());
}

TEST_F(PrintUIRemoval, DriversThatCannotBeListedStopTheCommand) {
    PrintUIProbe probe(Test());
    faults::FailCall("EnumPrinterDriversA", 1, 1722);
    Test().TurnLogOn(1);
    EXPECT_EQ(DeleteDriver(1), 1722u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kDriverStart, "ProcessorType = 0", "Environment = Windows NT x86",
                                              HexLine(kDriverEnd, 1722), HexLine(kDriverEnd, 1722)));
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

/// A driver "Aurora" of the machine's own environment, with a language monitor and its file.
class PrintUIDriverRemoval : public PrintUIRemoval {
  protected:
    static constexpr char kMonitorFile[] = "C:\\WINDOWS\\system32\\AURMON.DLL";

    PrintUIDriverRemoval() {
        AddDriver("Aurora", "AURMON.DLL", "Aurora Monitor");
        WriteFileOn(Machine(), kMonitorFile, "monitor");
    }
    void AddDriver(const std::string& name, const std::string& monitorFile, const std::string& monitor) {
        simulated::Registry& registry = Machine().Registry();
        const std::string key = DriverKey(name);
        registry.SetNumber(key, "Version", 3);
        registry.SetText(key, "Driver", name + ".DLL");
        registry.SetText(key, "Monitor", monitor);
        registry.SetText(simulated::Monitors::KeyOf(monitor), "Driver", monitorFile);
    }
    static std::string DriverKey(const std::string& name) {
        return "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Print\\Environments\\Windows NT x86\\Drivers\\Version-3\\" +
               name;
    }
    /// What the look-up of a monitor's file writes.
    static std::vector<std::string> FileLines() { return {"GetMonitorFile() Start", "GetMonitorFile() End(0)"}; }
    bool HasMonitor() { return simulated::Monitors(Machine()).Find("Aurora Monitor").has_value(); }
    bool HasMonitorFile() { return Machine().Files().Exists(kMonitorFile); }
};

/// The entry deletes the driver as the real one does.
void WINAPI DeleteAurora(HWND, HINSTANCE, LPWSTR, int) {
    char name[] = "Aurora";
    char environment[] = "Windows NT x86";
    simulated::Current().Registry().DeleteKey(
        std::string("HKLM\\SYSTEM\\CurrentControlSet\\Control\\Print\\Environments\\") + environment +
        "\\Drivers\\Version-3\\" + name);
    simulated::lastError = 0;
}

Exports Deleting() {
    return {{"PrintUIEntryW", reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&DeleteAurora))}};
}

TEST_F(PrintUIDriverRemoval, TakesMonitorAndMonitorFileWithTheFlag) {
    PrintUIProbe probe(Test(), Deleting());
    ForgetCalls(Test());
    EXPECT_EQ(DeleteDriver(1), 0u);
    EXPECT_THAT(Test().TakeCallNames({"EnumPrinterDriversA", "LoadLibraryA", "DeleteMonitorA", "DeleteFileA"}),
                ElementsAre("EnumPrinterDriversA", "EnumPrinterDriversA", "LoadLibraryA", "EnumPrinterDriversA",
                            "DeleteMonitorA", "DeleteFileA", "DeleteFileA"));
    EXPECT_FALSE(HasMonitor());
    EXPECT_FALSE(HasMonitorFile());
}

TEST_F(PrintUIDriverRemoval, LeavesMonitorAndMonitorFileWithoutTheFlag) {
    PrintUIProbe probe(Test(), Deleting());
    EXPECT_EQ(DeleteDriver(0), 0u);
    EXPECT_TRUE(HasMonitor());
    EXPECT_TRUE(HasMonitorFile());
}

TEST_F(PrintUIDriverRemoval, WithoutTheFlagGoesOnToAMonitorFileWithoutAName) {
    PrintUIProbe probe(Test(), Deleting());
    Test().TurnLogOn(2);
    ForgetCalls(Test());
    EXPECT_EQ(DeleteDriver(0), 0u);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAreArray(Lines({{kDriverStart},
                                kVersionLines,
                                RunLines(kDelete, 0),
                                {HexLine(kDriverEnd, 0), "DeleteLanguageMonitor2k() Start(0)",
                                 "DeleteLanguageMonitor2k() End(0)", "CDeleteDriverFile::DeleteDriverFiles() Start",
                                 "DeleteMonitorFileNT() -  Start", "DeleteFile(C:\\WINDOWS\\system32\\) - (5)",
                                 "DeleteFile(C:\\WINDOWS\\system32\\spool\\drivers\\W32X86\\) - (5)",
                                 "DeleteMonitorFileNT() End(0)", "DeleteMonitorFile - () is deleted",
                                 "CDeleteDriverFile::DeleteDriverFiles() End(0)", HexLine(kDriverEnd, 0)}})));
    EXPECT_THAT(TakeCallsOf(Test(), {"DeleteFileA"}),
                ElementsAre(StartsWith(R"(DeleteFileA("C:\\WINDOWS\\system32\\") = 0x0)"),
                            StartsWith(R"(DeleteFileA("C:\\WINDOWS\\system32\\spool\\drivers\\W32X86\\") = 0x0)")));
}

TEST_F(PrintUIDriverRemoval, LeavesAMonitorThatAnotherDriverUses) {
    AddDriver("Borealis", "AURMON.DLL", "Aurora Monitor");
    PrintUIProbe probe(Test(), Deleting());
    Test().TurnLogOn(1);
    EXPECT_EQ(DeleteDriver(1), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines({{kDriverStart, "ProcessorType = 0", "Environment = Windows NT x86"},
                                        FileLines(),
                                        FileLines(),
                                        kVersionLines,
                                        RunLines(kDelete, 0),
                                        {HexLine(kDriverEnd, 0), "DeleteLanguageMonitor2k() - Aurora Monitor ",
                                         "Aurora Monitor is used by Other Driver", HexLine(kDriverEnd, 0)}})));
    EXPECT_TRUE(HasMonitor());
    EXPECT_TRUE(HasMonitorFile());
}

TEST_F(PrintUIDriverRemoval, DetailOfWhatFollowsTheCommandIsLoggedBetweenTheTwoEnds) {
    PrintUIProbe probe(Test(), Deleting());
    Test().TurnLogOn(2);
    EXPECT_EQ(DeleteDriver(1), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines(
                    {{kDriverStart, "ProcessorType = 0", "Environment = Windows NT x86",
                      "CDeleteDriverFile::GetFileList() Start", "GetMonitorFile() Start", "GetMonitorFile() End(0)",
                      "AURMON.DLL(Monitor) -> Delete", "CDeleteDriverFile::GetFileList() End(0)"},
                     kVersionLines,
                     RunLines(kDelete, 0),
                     {HexLine(kDriverEnd, 0), "DeleteLanguageMonitor2k() Start(1)",
                      "DeleteLanguageMonitor2k() - Aurora Monitor ", "DeleteLanguageMonitor2k() End(0)",
                      "CDeleteDriverFile::DeleteDriverFiles() Start", "DeleteMonitorFileNT() - AURMON.DLL Start",
                      "DeleteFile(C:\\WINDOWS\\system32\\spool\\drivers\\W32X86\\AURMON.DLL) - (2)",
                      "DeleteMonitorFileNT() End(0)", "DeleteMonitorFile - (AURMON.DLL) is deleted",
                      "CDeleteDriverFile::DeleteDriverFiles() End(0)", HexLine(kDriverEnd, 0)}})));
}

TEST_F(PrintUIDriverRemoval, MonitorThatCannotBeDeletedKeepsItsFile) {
    PrintUIProbe probe(Test(), Deleting());
    faults::FailCall("DeleteMonitorA", 1, 3008);
    Test().TurnLogOn(1);
    EXPECT_EQ(DeleteDriver(1), 3008u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines({{kDriverStart, "ProcessorType = 0", "Environment = Windows NT x86"},
                                        FileLines(),
                                        kVersionLines,
                                        RunLines(kDelete, 0),
                                        {HexLine(kDriverEnd, 0), "DeleteLanguageMonitor2k() - Aurora Monitor ",
                                         "DeleteMonitor Error(3008)", HexLine(kDriverEnd, 3008)}})));
    EXPECT_TRUE(HasMonitorFile());
}

TEST_F(PrintUIDriverRemoval, DriverDirectoryThatCannotBeHadIsTheResult) {
    PrintUIProbe probe(Test(), Deleting());
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722, true);
    EXPECT_EQ(DeleteDriver(1), 1722u);
    EXPECT_FALSE(HasMonitor());
    EXPECT_TRUE(HasMonitorFile());
}

TEST_F(PrintUIDriverRemoval, DriverDirectoryThatCannotBeHadIsTheResultWithoutTheFlagToo) {
    PrintUIProbe probe(Test(), Deleting());
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
    EXPECT_EQ(DeleteDriver(0), 1722u);
}

// ---- colour profiles of a driver ------------------------------------------------------------------------------------

TEST_F(PrintUIDriverRemoval, ProfilesAreUninstalledBehindTheCommandAndAFailureEndsIt) {
    PrintUIProbe probe(Test(), Deleting());
    Machine().Modules().Remove("mscms.dll");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, "Aurora", 0, 2, g_profiles, 1, 0), 126u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines({{kDriverStart, "ProcessorType = 0", "Environment = Windows NT x86"},
                                        FileLines(),
                                        kVersionLines,
                                        RunLines(kDelete, 0),
                                        {HexLine(kDriverEnd, 0), HexLine(kDriverEnd, 126)}})));
    EXPECT_TRUE(HasMonitor());
}

TEST_F(PrintUIDriverRemoval, WithoutProfilesNothingIsUninstalled) {
    Machine().Modules().Remove("mscms.dll");
    PrintUIProbe probe(Test());
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, "Aurora", 0, 0, g_profiles, 0, 0), 0u);
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, "Aurora", 0, 2, nullptr, 0, 0), 0u);
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, "Aurora", 0, 2, g_profiles, 0, 0), 126u);
}

// ---- the restart ----------------------------------------------------------------------------------------------------

TEST_F(PrintUIRemoval, SpoolerIsRestartedBeforeTheCommand) {
    StopDependents();
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    ForgetCalls(Test());
    EXPECT_EQ(DeleteDriver(0, 1), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{kDriverStart},
                                                          kVersionLines,
                                                          {"DeletePrinterDriver2k() - Service(Spooler).Start",
                                                           "DeletePrinterDriver2k() - Service.ReStart End"},
                                                          RunLines(kDelete, 0),
                                                          {HexLine(kDriverEnd, 0), HexLine(kDriverEnd, 0)}})));
    EXPECT_THAT(Test().TakeCallNames({"OpenSCManagerA", "OpenServiceA", "ControlService", "StartServiceA",
                                      "CloseServiceHandle", "LoadLibraryA"}),
                ElementsAre("OpenSCManagerA", "OpenServiceA", "ControlService", "StartServiceA", "CloseServiceHandle",
                            "CloseServiceHandle", "LoadLibraryA"));
}

TEST_F(PrintUIRemoval, EndOfTheRestartIsLoggedBeforeTheServiceIsClosed) {
    StopDependents();
    PrintUIProbe probe(Test());
    Test().TurnLogOn(1);
    ForgetCalls(Test());
    EXPECT_EQ(DeleteDriver(0, 1), 0u);
    const std::vector<std::string> calls = Test().TakeCallNames({"StartServiceA", "WriteFile", "CloseServiceHandle"});
    const auto started = std::ranges::find(calls, "StartServiceA");
    ASSERT_GE(calls.end() - started, 4);
    EXPECT_THAT(std::vector<std::string>(started, started + 4),
                ElementsAre("StartServiceA", "WriteFile", "CloseServiceHandle", "CloseServiceHandle"));
}

TEST_F(PrintUIRemoval, ServiceIsOpenedWithTheUsualRights) {
    StopDependents();
    PrintUIProbe probe(Test());
    ForgetCalls(Test());
    DeleteDriver(0, 1);
    const std::vector<std::string> calls = TakeCallsOf(Test(), {"OpenSCManagerA", "OpenServiceA"});
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], HasSubstr("(null, null, 0x20000000)"));
    EXPECT_THAT(calls[1], HasSubstr("\"Spooler\", 0xf01ff)"));
}

TEST_F(PrintUIRemoval, FailedRestartDoesNotStopTheCommand) {
    StopDependents();
    struct Case {
        const char* call;
        const char* line;
    };
    for (const Case& one : {Case{"OpenServiceA", "Service(Spooler).Open Error(5)"},
                            Case{"ControlService", "Service(Spooler).Start Error(5)"}}) {
        PrintUIProbe probe(Test());
        faults::FailCall(one.call, 1, 5);
        Test().TurnLogOn(1);
        EXPECT_EQ(DeleteDriver(0, 7), 0u);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAreArray(Lines({{kDriverStart},
                                            kVersionLines,
                                            {"DeletePrinterDriver2k() - Service(Spooler).Start", one.line,
                                             "DeletePrinterDriver2k() - Service.ReStart End"},
                                            RunLines(kDelete, 0),
                                            {HexLine(kDriverEnd, 0), HexLine(kDriverEnd, 0)}})));
        EXPECT_THAT(probe.TakeCommands(), ElementsAre(kDelete));
        faults::Reset();
    }
}

TEST_F(PrintUIRemoval, SpoolerIsRestartedAlsoForACommandThatIsNotRun) {
    StopDependents();
    PrintUIProbe probe(Test());
    ForgetCalls(Test());
    EXPECT_EQ(DeleteDriver(0, 1, 7), 87u);
    EXPECT_THAT(Test().TakeCallNames({"StartServiceA"}), ElementsAre("StartServiceA"));
    EXPECT_THAT(probe.TakeCommands(), IsEmpty());
}

}  // namespace

}  // namespace pikel
