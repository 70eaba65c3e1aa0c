#include "driver/add_printer_driver.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "frame/log.h"
#include "machine/services/services.h"
#include "support/calls.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kMonitors[] = "HKLM\\System\\CurrentControlSet\\Control\\Print\\Monitors\\";
constexpr char kLibrary[] = "C:\\Program Files\\pikel\\pikel.dll";  // any file that a loader takes

using Routine = DWORD (*)(LPSTR, const DriverAddRecord*);
using Lines = std::vector<std::string>;

Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// A driver record with texts of its own. Its files are staged in C:\Stage, the dependent ones in the driver directory.
class Record {
  public:
    Record(DWORD version, std::string environment) : m_environment(std::move(environment)) {
        DRIVER_INFO_6A& info = record.DriverInfo;
        info.cVersion = version;
        info.pName = m_name;
        info.pEnvironment = m_environment.data();
        info.pDriverPath = m_driver;
        info.pDataFile = m_data;
        info.pConfigFile = m_config;
        info.pHelpFile = m_help;
        info.pDependentFiles = m_dependents;
        info.pDefaultDataType = m_dataType;
        info.pszzPreviousNames = m_previous;
        info.ftDriverDate = {1, 2};
        info.dwlDriverVersion = 0x0001000200030004;
        info.pszMfgName = m_maker;
        info.pszOEMUrl = m_url;
        info.pszHardwareID = m_hardware;
        info.pszProvider = m_maker;
    }

    /// Gives the driver the monitor "Aurora Monitor", nlmon.dll.
    void NameMonitor() {
        record.DriverInfo.pMonitorName = m_monitor;
        record.MonitorInfo = {m_monitor, m_environment.data(), m_monitorFile};
    }
    void NameProfiles() {
        record.ColorProfileCount = 2;
        record.ColorProfileList = m_profiles;
    }

    DriverAddRecord record{};

  private:
    std::string m_environment;
    char m_name[12] = "Aurora 500";
    char m_driver[24] = "C:\\Stage\\NLAURORA.DLL";
    char m_data[24] = "C:\\Stage\\A500.GPD";
    char m_config[24] = "C:\\Stage\\NLAURUI.DLL";
    char m_help[24] = "C:\\Stage\\NLAURORA.HLP";
    char m_dependents[32] = "NLRES_EN.DLL\0NLRES_DE.DLL\0";
    char m_monitor[16] = "Aurora Monitor";
    char m_monitorFile[16] = "nlmon.dll";
    char m_dataType[4] = "RAW";
    char m_previous[12] = "Aurora 400\0";
    char m_maker[12] = "Nordlicht";
    char m_url[32] = "http://nordlicht.example";
    char m_hardware[16] = "NordlichtA500";
    char m_profile1[16] = "NLA500A.ICC";
    char m_profile2[16] = "NLDISP.ICC";
    LPSTR m_profiles[2] = {m_profile1, m_profile2};
};

/// What a system makes of the addition of a driver of its own.
struct SystemCase {
    const char* system;
    const char* routine;      ///< name in the log
    DWORD version;            ///< of the system's own drivers
    const char* environment;  ///< of the system's own drivers
};
constexpr SystemCase kSystems[] = {
    {"win95", "AddPrinterDriver98()", 0, "Windows 4.0"},
    {"win98", "AddPrinterDriver98()", 0, "Windows 4.0"},
    {"winme", "AddPrinterDriverME()", 0, "Windows 4.0"},
    {"nt4", "AddPrinterDriverNT()", 2, "Windows NT x86"},
    {"win2000", "AddPrinterDriver2k()", 3, "Windows NT x86"},
    {"xp", "AddPrinterDriver2k()", 3, "Windows NT x86"},
    {"xp-ia64", "AddPrinterDriverIA64()", 3, "Windows IA64"},
    {"xp-x64", "AddPrinterDriverx64()", 3, "Windows x64"},
    {"vista", "AddPrinterDriver2k()", 3, "Windows NT x86"},
    {"vista-ia64", "AddPrinterDriverIA64()", 3, "Windows IA64"},
    {"vista-x64", "AddPrinterDriverx64()", 3, "Windows x64"},
    {"other", "AddPrinterDriver2k()", 3, "Windows NT x86"},
};

const SystemCase& CaseOf(const std::string& system) {
    return *std::ranges::find_if(kSystems, [&](const SystemCase& c) { return c.system == system; });
}

/// Tests of the addition of a system's own driver.
class AddDriverTest : public MachineTest {
  protected:
    AddDriverTest() { Begin("xp"); }

    /// Makes a machine with the files of the driver and its monitor in place.
    void Begin(const std::string& system) {
        Start(system);
        m_case = CaseOf(system);
        m_record = std::make_unique<Record>(m_case.version, m_case.environment);
        for (const char* file : {"NLAURORA.DLL", "A500.GPD", "NLAURUI.DLL", "NLAURORA.HLP"}) {
            WriteFileOn(Machine(), std::string("C:\\Stage\\") + file, file);
            if (Is9x()) {
                WriteFileOn(Machine(), DriverDirectory() + "\\" + file, file);  // where that spooler looks for them
            }
        }
        for (const char* file : {"NLRES_EN.DLL", "NLRES_DE.DLL"}) {
            WriteFileOn(Machine(), DriverDirectory() + "\\" + file, file);
        }
        EXPECT_EQ(Machine().Files().Copy(kLibrary, MonitorPath(), false), 0u);
        ForgetCalls(Test());
    }

    bool Is9x() const { return m_case.version == 0; }
    bool Is2k() const { return m_case.version == 3; }
    std::string MonitorPath() { return Machine().System().systemDirectory + "\\nlmon.dll"; }
    std::string DriverDirectory() {
        const std::string& folder = Machine().System().systemDirectory;
        if (Is9x()) {
            return folder;
        }
        std::string environment = m_case.environment;
        return folder + "\\spool\\drivers\\" +
               (environment == "Windows IA64"  ? "IA64"
                : environment == "Windows x64" ? "x64"
                                               : "W32X86");
    }
    const char* SpoolerCall() const { return Is2k() ? "AddPrinterDriverExA" : "AddPrinterDriverA"; }

    DriverAddRecord& Driver() { return m_record->record; }
    DWORD Add() { return DoAddPrinterDriver(nullptr, &Driver()); }
    bool IsMonitorRegistered() { return Machine().Registry().KeyExists(std::string(kMonitors) + "Aurora Monitor"); }
    /// Names of the environments and versions in which the driver is registered.
    bool IsDriverRegistered() { return Machine().Registry().Text().find("\\Aurora 500]") != std::string::npos; }

    // ---- log lines of the steps ----

    Lines StartLines() const {
        return {"DoAddPrinterDriver(Aurora 500) Start", m_case.routine + std::string(" Start")};
    }
    Lines EndLines(DWORD code) const {
        std::string end = "End(" + std::to_string(code) + ")";
        return {m_case.routine + (" " + end), "DoAddPrinterDriver " + end};
    }
    Lines MonitorLines() {
        return {"AddLanguageMonitor() Start", "...Monitor(" + MonitorPath() + ") is not used",
                "AddLanguageMonitor() End(0)"};
    }
    static Lines NoMonitorLines() { return {"AddLanguageMonitor() Start", "AddLanguageMonitor() End(0)"}; }
    Lines FailedMonitorLines(DWORD code) {
        std::string number = std::to_string(code);
        return {"AddLanguageMonitor() Start", "...Monitor(" + MonitorPath() + ") is not used",
                "AddMonitor Error(" + number + ")", "AddLanguageMonitor() End(" + number + ")"};
    }
    Lines RestartLines() { return {m_case.routine + std::string(" - Service(Spooler).ReStart")}; }

    SystemCase m_case{};
    std::unique_ptr<Record> m_record;
};

class AddDriver : public AddDriverTest {};

class AddDriverOnEverySystem : public AddDriverTest, public ::testing::WithParamInterface<std::string> {
  protected:
    AddDriverOnEverySystem() { Begin(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(AddDriverOnEverySystem);

/// Systems whose routine tries again: the NT family.
class AddDriverOnNt : public AddDriverTest, public ::testing::WithParamInterface<std::string> {
  protected:
    AddDriverOnNt() { Begin(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(Systems, AddDriverOnNt,
                         ::testing::Values("nt4", "win2000", "xp", "xp-ia64", "xp-x64", "vista", "vista-ia64",
                                           "vista-x64"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::erase(name, '-');
                             return name;
                         });

// ---- arguments ------------------------------------------------------------------------------------------------------

TEST_F(AddDriver, RecordAndItsNameAreRequired) {
    Driver().DriverInfo.pName = nullptr;
    Test().TurnLogOn();
    EXPECT_EQ(DoAddPrinterDriver(nullptr, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Add(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(AddDriver, EveryRoutineRequiresTheRecord) {
    Test().TurnLogOn();
    for (Routine routine : {&AddPrinterDriver98, &AddPrinterDriverME, &AddPrinterDriverNT, &AddPrinterDriver2k,
                            &AddPrinterDriverIA64, &AddPrinterDriverx64}) {
        EXPECT_EQ(routine(nullptr, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    }
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST(AddDriverWithoutRoute, GivesCode120AndInstallsNoProfile) {
    simulated::SystemDescription system = *simulated::FindSystem("nt4");
    system.major = 3;
    system.minor = 51;
    TestMachine test(system);
    Record record(2, "Windows NT x86");
    record.NameProfiles();
    test.TurnLogOn();
    EXPECT_EQ(DoAddPrinterDriver(nullptr, &record.record), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_THAT(test.TakeLog(), ElementsAre("DoAddPrinterDriver(Aurora 500) Start", "DoAddPrinterDriver End(120)"));
}

// ---- the whole road -------------------------------------------------------------------------------------------------

TEST_P(AddDriverOnEverySystem, RegistersMonitorAndDriverInThatOrder) {
    m_record->NameMonitor();
    EXPECT_EQ(Add(), 0u);
    Lines expected = {"EnumMonitorsA", "EnumMonitorsA", "GetFileAttributesA",
                      "CreateFileA",   "CloseHandle",   "AddMonitorA"};
    if (Is2k()) {
        expected =
            expected +
            Lines{"LoadLibraryA", "GetProcAddress", "AddPrinterDriverExA", "FreeLibrary", "GetPrinterDriverDirectoryA",
                  "DeleteFileA",  "DeleteFileA",    "DeleteFileA",         "DeleteFileA", "DeleteFileA",
                  "DeleteFileA"};
    } else {
        expected.push_back("AddPrinterDriverA");
    }
    if (GetParam() == "win95") {
        expected.push_back("GetPrinterDriverDirectoryA");  // of the profiles, of which there are none
    }
    EXPECT_THAT(
        Test().TakeCallNames({"EnumMonitorsA", "GetFileAttributesA", "SetFileAttributesA", "CreateFileA", "CloseHandle",
                              "AddMonitorA", "LoadLibraryA", "GetProcAddress", "AddPrinterDriverA",
                              "AddPrinterDriverExA", "FreeLibrary", "Sleep", "OpenSCManagerA",
                              "GetPrinterDriverDirectoryA", "DeleteFileA", "InstallColorProfileA"}),
        ElementsAreArray(expected));
    EXPECT_TRUE(IsMonitorRegistered());
    EXPECT_TRUE(IsDriverRegistered());
}

TEST_P(AddDriverOnEverySystem, LogsEveryStep) {
    m_record->NameMonitor();
    Driver().DriverInfo.pDependentFiles = nullptr;
    Machine().Files().Delete("C:\\Stage\\NLAURORA.HLP");
    Driver().DriverInfo.pHelpFile = nullptr;
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    Lines expected = StartLines() + MonitorLines();
    if (Is2k()) {
        expected = expected + Lines{"DeleteFile -> C:\\Stage\\NLAURUI.DLL", "DeleteFile -> C:\\Stage\\A500.GPD",
                                    "DeleteFile -> C:\\Stage\\NLAURORA.DLL"};
    }
    expected.push_back(m_case.routine + std::string(" End(0)"));
    if (GetParam() == "win95") {
        expected = expected + Lines{"InstallColorProfile95() - Start", "InstallColorProfile95() - End"};
    } else if (GetParam() != "nt4") {
        expected = expected + Lines{"InstallColorProfile982k() - Start", "InstallColorProfile982k() - End(0)"};
    }
    expected.push_back("DoAddPrinterDriver End(0)");
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(expected));
}

TEST_P(AddDriverOnEverySystem, PlainLogHasTheWorkersLinesAlone) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoAddPrinterDriver(Aurora 500) Start", "DoAddPrinterDriver End(0)"));
}

TEST_P(AddDriverOnEverySystem, WithoutMonitorGoesStraightToTheDriver) {
    char empty[1] = "";
    for (LPSTR name : {static_cast<LPSTR>(nullptr), static_cast<LPSTR>(empty)}) {
        Driver().MonitorInfo.pName = name;
        ForgetCalls(Test());
        EXPECT_EQ(Add(), 0u);
        EXPECT_THAT(Test().TakeCallNames({"EnumMonitorsA", "AddMonitorA"}), IsEmpty());
        Begin(GetParam());
    }
}

TEST_P(AddDriverOnEverySystem, LeavesTheRecordAsItWas) {
    m_record->NameMonitor();
    m_record->NameProfiles();
    std::array<char, sizeof(DriverAddRecord)> before;
    std::memcpy(before.data(), &Driver(), before.size());
    EXPECT_EQ(Add(), 0u);
    EXPECT_EQ(std::memcmp(before.data(), &Driver(), before.size()), 0);
}

TEST_P(AddDriverOnEverySystem, FailsWithTheCodeOfTheDriverAndKeepsWhatItDid) {
    m_record->NameMonitor();
    m_record->NameProfiles();
    faults::FailCall(SpoolerCall(), 1, 1797, true);
    EXPECT_EQ(Add(), 1797u);
    EXPECT_TRUE(IsMonitorRegistered());
    EXPECT_FALSE(IsDriverRegistered());
    EXPECT_THAT(Test().TakeCallNames({"DeleteFileA", "InstallColorProfileA", "GetPrinterDriverDirectoryA"}), IsEmpty());
    EXPECT_TRUE(Machine().Files().Exists("C:\\Stage\\NLAURORA.DLL"));
}

TEST_P(AddDriverOnEverySystem, MonitorThatFailsEndsTheAdd) {
    m_record->NameMonitor();
    faults::FailCall("AddMonitorA", 1, 126, true);
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 126u);
    Lines log = Test().TakeLog();
    // What the service control does in between has lines of its own.
    EXPECT_THAT(log, Contains("AddMonitor Error(126)").Times(Is9x() ? 1 : 2));
    EXPECT_EQ(log[log.size() - 2], m_case.routine + std::string(" End(126)"));
    EXPECT_EQ(log.back(), "DoAddPrinterDriver End(126)");
    EXPECT_THAT(Test().TakeCallNames({SpoolerCall(), "DeleteFileA"}), Not(Contains(SpoolerCall())));
    EXPECT_FALSE(IsDriverRegistered());
    EXPECT_TRUE(Machine().Files().Exists("C:\\Stage\\NLAURORA.DLL"));
}

TEST_P(AddDriverOnEverySystem, HandsTheServerToTheSpooler) {
    static std::string server;
    server.clear();
    static PlatformTable before;
    before = Platform();
    ReplacedOperations replaced;
    replaced.table.AddPrinterDriverA = [](LPSTR name, DWORD, LPBYTE) -> BOOL {
        server = name;
        return TRUE;
    };
    replaced.table.GetProcAddress = [](HMODULE module, LPCSTR symbol) -> FARPROC {
        if (std::string(symbol) != "AddPrinterDriverExA") {
            return before.GetProcAddress(module, symbol);
        }
        looked_up::AddPrinterDriverExA add = [](LPSTR name, DWORD, PBYTE, DWORD) -> BOOL {
            server = name;
            return TRUE;
        };
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(add));
    };
    char name[] = "\\\\NORDSERVER";
    EXPECT_EQ(DoAddPrinterDriver(name, &Driver()), 0u);
    EXPECT_EQ(server, "\\\\NORDSERVER");
}

// ---- what the spooler gets ------------------------------------------------------------------------------------------

/// What the last replaced spooler call was given.
struct SpoolerArguments {
    DWORD level = 0;
    DWORD flags = 0;
    const void* info = nullptr;
    DRIVER_INFO_6A copy{};
};
SpoolerArguments g_given;

/// Spooler calls that take everything and remember it.
class TakingSpooler : public ReplacedOperations {
  public:
    TakingSpooler() {
        g_given = {};
        table.AddPrinterDriverA = [](LPSTR, DWORD level, LPBYTE info) -> BOOL {
            g_given.level = level;
            g_given.info = info;
            std::memcpy(&g_given.copy, info, level == 3 ? sizeof(DRIVER_INFO_3A) : sizeof(DRIVER_INFO_6A));
            return TRUE;
        };
        table.GetProcAddress = [](HMODULE, LPCSTR symbol) -> FARPROC {
            EXPECT_STREQ(symbol, "AddPrinterDriverExA");
            looked_up::AddPrinterDriverExA add = [](LPSTR, DWORD level, PBYTE info, DWORD flags) -> BOOL {
                g_given = {level, flags, info, *reinterpret_cast<DRIVER_INFO_6A*>(info)};
                return TRUE;
            };
            return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(add));
        };
    }
};

void ExpectLevel3Fields(const DRIVER_INFO_6A& given, const DRIVER_INFO_6A& record) {
    EXPECT_EQ(given.pName, record.pName);
    EXPECT_EQ(given.pEnvironment, record.pEnvironment);
    EXPECT_EQ(given.pDriverPath, record.pDriverPath);
    EXPECT_EQ(given.pDataFile, record.pDataFile);
    EXPECT_EQ(given.pConfigFile, record.pConfigFile);
    EXPECT_EQ(given.pHelpFile, record.pHelpFile);
    EXPECT_EQ(given.pDependentFiles, record.pDependentFiles);
    EXPECT_EQ(given.pMonitorName, record.pMonitorName);
    EXPECT_EQ(given.pDefaultDataType, record.pDefaultDataType);
}

TEST_F(AddDriver, On98GoesAtLevel3WithTheSpoolersVersion) {
    TakingSpooler spooler;
    EXPECT_EQ(AddPrinterDriver98(nullptr, &Driver()), 0u);
    EXPECT_EQ(g_given.level, 3u);
    EXPECT_NE(g_given.info, &Driver());
    EXPECT_EQ(g_given.copy.cVersion, 0x400u);
    ExpectLevel3Fields(g_given.copy, Driver().DriverInfo);
}

TEST_F(AddDriver, OnMeGoesAtLevel6WithTheSpoolersVersion) {
    TakingSpooler spooler;
    EXPECT_EQ(AddPrinterDriverME(nullptr, &Driver()), 0u);
    EXPECT_EQ(g_given.level, 6u);
    EXPECT_NE(g_given.info, &Driver());
    EXPECT_EQ(g_given.copy.cVersion, 0x400u);
    DRIVER_INFO_6A copy = Driver().DriverInfo;
    copy.cVersion = 0x400;
    EXPECT_EQ(std::memcmp(&g_given.copy, &copy, sizeof copy), 0);
}

TEST_F(AddDriver, OnNt4GoesAtLevel3WithTheVersionOfTheRecord) {
    TakingSpooler spooler;
    for (DWORD version : {0u, 2u, 3u}) {
        Driver().DriverInfo.cVersion = version;
        EXPECT_EQ(AddPrinterDriverNT(nullptr, &Driver()), 0u);
        EXPECT_EQ(g_given.level, 3u);
        EXPECT_EQ(g_given.copy.cVersion, version);
        ExpectLevel3Fields(g_given.copy, Driver().DriverInfo);
    }
}

TEST_F(AddDriver, From2000OnHandsTheRecordItselfAtLevel6WithNewFilesCopied) {
    TakingSpooler spooler;
    for (Routine routine : {&AddPrinterDriver2k, &AddPrinterDriverIA64, &AddPrinterDriverx64}) {
        g_given = {};
        EXPECT_EQ(routine(nullptr, &Driver()), 0u);
        EXPECT_EQ(g_given.level, 6u);
        EXPECT_EQ(g_given.flags, 8u);
        EXPECT_EQ(g_given.info, &Driver());
    }
}

// ---- when the monitor is registered ---------------------------------------------------------------------------------

TEST_F(AddDriver, MonitorIsRegisteredForTheRoutinesOwnDriversAlone) {
    struct Case {
        const char* name;
        Routine routine;
        DWORD version;
        const char* environment;  // null: none
        bool registered;
    };
    const Case cases[] = {
        {"98", &AddPrinterDriver98, 0, "Windows 4.0", true},
        {"98", &AddPrinterDriver98, 3, "Windows NT x86", true},
        {"ME", &AddPrinterDriverME, 0, "Windows 4.0", true},
        {"ME", &AddPrinterDriverME, 2, "Windows x64", true},
        {"NT", &AddPrinterDriverNT, 0, "Windows 4.0", false},
        {"NT", &AddPrinterDriverNT, 2, "Windows NT x86", true},
        {"NT", &AddPrinterDriverNT, 2, "Windows 4.0", true},
        {"NT", &AddPrinterDriverNT, 3, "Windows NT x86", false},
        {"2k", &AddPrinterDriver2k, 3, "Windows NT x86", true},
        {"2k", &AddPrinterDriver2k, 3, "WINDOWS nt X86", true},
        {"2k", &AddPrinterDriver2k, 2, "Windows NT x86", false},
        {"2k", &AddPrinterDriver2k, 0, "Windows NT x86", false},
        {"2k", &AddPrinterDriver2k, 3, "Windows 4.0", false},
        {"2k", &AddPrinterDriver2k, 3, "Windows IA64", false},
        {"2k", &AddPrinterDriver2k, 3, "Windows x64", false},
        {"2k", &AddPrinterDriver2k, 3, nullptr, false},
        {"IA64", &AddPrinterDriverIA64, 3, "Windows IA64", true},
        {"IA64", &AddPrinterDriverIA64, 3, "Windows NT x86", false},
        {"IA64", &AddPrinterDriverIA64, 3, "Windows x64", false},
        {"IA64", &AddPrinterDriverIA64, 2, "Windows IA64", false},
        {"x64", &AddPrinterDriverx64, 3, "Windows x64", true},
        {"x64", &AddPrinterDriverx64, 3, "Windows NT x86", false},
        {"x64", &AddPrinterDriverx64, 3, "Windows IA64", false},
        {"x64", &AddPrinterDriverx64, 2, "Windows x64", false},
    };
    TakingSpooler spooler;
    spooler.table.AddMonitorA = [](LPSTR, DWORD, LPBYTE) -> BOOL { return TRUE; };
    for (const Case& c : cases) {
        Record record(c.version, c.environment == nullptr ? "" : c.environment);
        record.NameMonitor();
        if (c.environment == nullptr) {
            record.record.DriverInfo.pEnvironment = nullptr;
        }
        ForgetCalls(Test());
        EXPECT_EQ(c.routine(nullptr, &record.record), 0u);
        EXPECT_EQ(!Test().TakeCallNames({"EnumMonitorsA"}).empty(), c.registered)
            << c.name << " " << c.version << " " << (c.environment == nullptr ? "none" : c.environment);
    }
}

TEST_F(AddDriver, For9xOnXpLeavesTheMonitorAlone) {
    m_record = std::make_unique<Record>(3, "Windows 4.0");
    m_record->NameMonitor();
    TakingSpooler spooler;
    EXPECT_EQ(Add(), 0u);
    EXPECT_FALSE(IsMonitorRegistered());
}

// ---- the monitor step -----------------------------------------------------------------------------------------------

TEST_P(AddDriverOnNt, MonitorThatFailsOnceIsAddedAfterARestartOfTheSpooler) {
    m_record->NameMonitor();
    faults::FailCall("AddMonitorA", 1, 1722);
    EXPECT_EQ(Add(), 0u);
    Lines calls = Test().TakeCallNames({"AddMonitorA", "OpenSCManagerA", "OpenServiceA", "ControlService",
                                        "StartServiceA", "CloseServiceHandle", "Sleep", SpoolerCall()});
    EXPECT_EQ(calls.front(), "AddMonitorA");
    EXPECT_EQ(calls[1], "OpenSCManagerA");
    EXPECT_THAT(calls, Contains("ControlService").Times(testing::Ge(1)));
    EXPECT_THAT(calls, Contains("StartServiceA").Times(testing::Ge(1)));
    // The handles are closed before the wait, and the second attempt comes after it.
    ASSERT_GE(calls.size(), 5u);
    EXPECT_THAT(Lines(calls.end() - 5, calls.end()),
                ElementsAre("CloseServiceHandle", "CloseServiceHandle", "Sleep", "AddMonitorA", SpoolerCall()));
    EXPECT_TRUE(IsMonitorRegistered());
    EXPECT_EQ(Machine().Services().State("Spooler"), SERVICE_RUNNING);
}

TEST_P(AddDriverOnNt, RestartOpensTheSpoolerWithFixedRightsAndWaits100Milliseconds) {
    m_record->NameMonitor();
    faults::FailCall("AddMonitorA", 1, 1722);
    EXPECT_EQ(Add(), 0u);
    Lines calls = TakeCallsOf(Test(), {"OpenSCManagerA", "OpenServiceA", "Sleep"});
    EXPECT_THAT(calls.front(), StartsWith("OpenSCManagerA(null, null, 0x20000000) = 0x"));
    EXPECT_THAT(calls[1], AllOf(StartsWith("OpenServiceA("), HasSubstr(", \"Spooler\", 0xf01ff) = 0x")));
    EXPECT_EQ(calls.back(), "Sleep(0x64)");
}

TEST_P(AddDriverOnNt, MonitorThatStaysDownIsTriedTwiceAndItsSecondCodeCounts) {
    m_record->NameMonitor();
    faults::FailCall("AddMonitorA", 1, 1722);
    faults::FailCall("AddMonitorA", 2, 126);
    EXPECT_EQ(Add(), 126u);
    EXPECT_THAT(Test().TakeCallNames({"AddMonitorA", SpoolerCall()}), ElementsAre("AddMonitorA", "AddMonitorA"));
    EXPECT_FALSE(IsDriverRegistered());
}

TEST_P(AddDriverOnNt, RestartIsLogged) {
    m_record->NameMonitor();
    faults::FailCall("AddMonitorA", 1, 1722);
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoAddPrinterDriver(Aurora 500) Start", "...Monitor(" + MonitorPath() + ") is not used",
                            "AddMonitor Error(1722)", m_case.routine + std::string(" - Service(Spooler).ReStart"),
                            "...Monitor(" + MonitorPath() + ") is not used", "DoAddPrinterDriver End(0)"));
}

TEST_P(AddDriverOnNt, SpoolerThatCannotBeOpenedForTheRestartIsLoggedAndTheAddGoesOn) {
    m_record->NameMonitor();
    faults::FailCall("AddMonitorA", 1, 1722);
    faults::FailCall("OpenSCManagerA", 1, 5);
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    Lines log = Test().TakeLog();
    Lines expected = StartLines() + FailedMonitorLines(1722) + RestartLines() +
                     Lines{"Service(Spooler).Open Error(5)"} + MonitorLines();
    log.resize(expected.size());
    EXPECT_THAT(log, ElementsAreArray(expected));
    EXPECT_THAT(TakeCallsOf(Test(), {"Sleep"}), ElementsAre("Sleep(0x64)"));
}

TEST_P(AddDriverOnNt, SpoolerThatCannotBeRestartedIsLoggedAndTheAddGoesOn) {
    m_record->NameMonitor();
    faults::FailCall("AddMonitorA", 1, 1722);
    faults::FailCall("QueryServiceStatus", 1, 6, true);
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("Service(Spooler).ReStart Error(6)"));
    EXPECT_TRUE(IsDriverRegistered());
}

TEST_P(AddDriverOnNt, StoppedSpoolerIsBroughtUpForTheMonitor) {
    m_record->NameMonitor();
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(Add(), 0u);
    EXPECT_TRUE(IsMonitorRegistered());
    EXPECT_TRUE(IsDriverRegistered());
}

TEST(AddDriverOn9x, MonitorThatFailsIsNotTriedAgain) {
    for (const char* system : {"win95", "win98", "winme"}) {
        SCOPED_TRACE(system);
        TestMachine test(system);
        Record record(0, "Windows 4.0");
        record.NameMonitor();
        ForgetCalls(test);
        faults::FailCall("AddMonitorA", 1, 1722);
        EXPECT_EQ(DoAddPrinterDriver(nullptr, &record.record), 1722u);
        EXPECT_THAT(test.TakeCallNames({"AddMonitorA", "OpenSCManagerA", "Sleep", "AddPrinterDriverA"}),
                    ElementsAre("AddMonitorA"));
    }
}

// ---- the retry step -------------------------------------------------------------------------------------------------

TEST_P(AddDriverOnNt, SpoolerThatIsUnavailableIsStartedBeforeTheSecondAttempt) {
    faults::FailCall(SpoolerCall(), 1, 1722);
    EXPECT_EQ(Add(), 0u);
    Lines calls = Test().TakeCallNames({"LoadLibraryA", "FreeLibrary", SpoolerCall(), "OpenSCManagerA", "OpenServiceA",
                                        "ControlService", "CloseServiceHandle", "Sleep"});
    if (Is2k()) {
        EXPECT_EQ(calls.front(), "LoadLibraryA");
        EXPECT_THAT(calls, Contains("LoadLibraryA").Times(1)) << "it stays loaded for both attempts";
    }
    auto first = std::ranges::find(calls, std::string(SpoolerCall()));
    ASSERT_NE(first, calls.end());
    EXPECT_EQ(*(first + 1), "OpenSCManagerA");
    auto second = std::find(first + 1, calls.end(), std::string(SpoolerCall()));
    ASSERT_NE(second, calls.end());
    EXPECT_EQ(*(second - 1), "Sleep");
    EXPECT_EQ(*(second - 2), "CloseServiceHandle");
    EXPECT_THAT(calls, Not(Contains("ControlService"))) << "a start stops nothing";
    EXPECT_TRUE(IsDriverRegistered());
    if (Is2k()) {
        EXPECT_FALSE(Machine().Files().Exists("C:\\Stage\\NLAURORA.DLL")) << "staged files go after a success";
    }
}

TEST_P(AddDriverOnNt, StartIsLogged) {
    faults::FailCall(SpoolerCall(), 1, 1722);
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoAddPrinterDriver(Aurora 500) Start",
                            m_case.routine + std::string(" - Service(Spooler).Start"), "DoAddPrinterDriver End(0)"));
}

TEST_P(AddDriverOnNt, StoppedSpoolerIsBroughtUpForTheDriver) {
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(Add(), 0u);
    EXPECT_EQ(Machine().Services().State("Spooler"), SERVICE_RUNNING);
    EXPECT_TRUE(IsDriverRegistered());
}

TEST_P(AddDriverOnNt, EveryOtherCodeGetsTheWaitAndTheSecondAttemptButNoStart) {
    for (DWORD code : {1726u, 5u, 1797u, 0u}) {
        SCOPED_TRACE(code);
        Begin(GetParam());
        faults::FailCall(SpoolerCall(), 1, code);
        EXPECT_EQ(Add(), 0u);
        Lines calls = TakeCallsOf(Test(), {SpoolerCall(), "OpenSCManagerA", "Sleep"});
        ASSERT_EQ(calls.size(), 3u);
        EXPECT_THAT(calls[0], HasSubstr("failed, last error " + std::to_string(code)));
        EXPECT_EQ(calls[1], "Sleep(0xc8)");
        EXPECT_THAT(calls[2], HasSubstr(" = 0x1"));
    }
}

TEST_P(AddDriverOnNt, CodeOfTheSecondAttemptCounts) {
    faults::FailCall(SpoolerCall(), 1, 1726);
    faults::FailCall(SpoolerCall(), 2, 1797);
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 1797u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(StartLines() + NoMonitorLines() +
                                 Lines{Is2k() ? "AddPrinterDriverEx Error(1797)" : "AddPrinterDriver Error(1797)"} +
                                 EndLines(1797)));
}

TEST_P(AddDriverOnNt, ThereIsNoThirdAttempt) {
    faults::FailCall(SpoolerCall(), 1, 1722, true);
    EXPECT_EQ(Add(), 1722u);
    EXPECT_THAT(Test().TakeCallNames({SpoolerCall()}), ElementsAre(SpoolerCall(), SpoolerCall()));
}

TEST_P(AddDriverOnNt, SpoolerThatCannotBeOpenedForTheStartIsLoggedAndTheAddGoesOn) {
    faults::FailCall(SpoolerCall(), 1, 1722);
    faults::FailCall("OpenServiceA", 1, 1060);
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoAddPrinterDriver(Aurora 500) Start",
                                              m_case.routine + std::string(" - Service(Spooler).Start"),
                                              "Service(Spooler).Open Error(1060)", "DoAddPrinterDriver End(0)"));
}

TEST_P(AddDriverOnNt, SpoolerThatCannotBeStartedIsLoggedAndTheAddGoesOn) {
    faults::FailCall(SpoolerCall(), 1, 1722);
    faults::FailCall("EnumDependentServicesA", 1, 5);
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoAddPrinterDriver(Aurora 500) Start",
                                              m_case.routine + std::string(" - Service(Spooler).Start"),
                                              "Service(Spooler).Start Error(5)", "DoAddPrinterDriver End(0)"));
}

TEST(AddDriverOn9x, DriverThatFailsIsNotTriedAgain) {
    for (const char* system : {"win95", "win98", "winme"}) {
        SCOPED_TRACE(system);
        TestMachine test(system);
        Record record(0, "Windows 4.0");
        ForgetCalls(test);
        faults::FailCall("AddPrinterDriverA", 1, 1722);
        EXPECT_EQ(DoAddPrinterDriver(nullptr, &record.record), 1722u);
        EXPECT_THAT(test.TakeCallNames({"AddPrinterDriverA", "OpenSCManagerA", "Sleep", "DeleteFileA"}),
                    ElementsAre("AddPrinterDriverA"));
    }
}

// ---- the library ----------------------------------------------------------------------------------------------------

TEST_F(AddDriver, NeedsTheSpoolersLibrary) {
    Machine().Modules().Remove("winspool.drv");
    Test().TurnLogOn();
    EXPECT_EQ(Add(), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(StartLines() + NoMonitorLines() + EndLines(126)));
    EXPECT_THAT(Test().TakeCallNames({"FreeLibrary", "AddPrinterDriverExA"}), IsEmpty());
    EXPECT_TRUE(Machine().Files().Exists("C:\\Stage\\NLAURORA.DLL"));
}

TEST_F(AddDriver, NeedsTheExportAndFreesTheLibraryWithoutIt) {
    Machine().Modules().RemoveExport("winspool.drv", "AddPrinterDriverExA");
    ForgetCalls(Test());
    EXPECT_EQ(Add(), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", "FreeLibrary", "Sleep", "DeleteFileA"}),
                ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
}

// ---- staged files ---------------------------------------------------------------------------------------------------

class StagedFiles : public AddDriverTest {
  protected:
    /// Log lines of the removal alone.
    Lines TakeRemovalLines() {
        Lines lines;
        for (std::string& line : Test().TakeLog()) {
            if (line.starts_with("DeleteFile -> ") || line.ends_with(" is not deleted")) {
                lines.push_back(std::move(line));
            }
        }
        return lines;
    }

    TakingSpooler m_spooler;
};

TEST_F(StagedFiles, GoInTheOrderConfigDataDriverHelpAndThenTheDependents) {
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    const std::string directory = "C:\\WINDOWS\\system32\\spool\\drivers\\W32X86\\";
    EXPECT_THAT(
        TakeRemovalLines(),
        ElementsAre("DeleteFile -> C:\\Stage\\NLAURUI.DLL", "DeleteFile -> C:\\Stage\\A500.GPD",
                    "DeleteFile -> C:\\Stage\\NLAURORA.DLL", "DeleteFile -> C:\\Stage\\NLAURORA.HLP",
                    "DeleteFile -> " + directory + "NLRES_EN.DLL", "DeleteFile -> " + directory + "NLRES_DE.DLL"));
    for (const char* file : {"NLAURORA.DLL", "A500.GPD", "NLAURUI.DLL", "NLAURORA.HLP"}) {
        EXPECT_FALSE(Machine().Files().Exists(std::string("C:\\Stage\\") + file));
    }
    EXPECT_FALSE(Machine().Files().Exists(directory + "NLRES_EN.DLL"));
    EXPECT_FALSE(Machine().Files().Exists(directory + "NLRES_DE.DLL"));
}

TEST_F(StagedFiles, NamedTwiceAreDeletedOnceAndReportedOnce) {
    char help[] = "C:\\Stage\\NLAURUI.DLL";
    Driver().DriverInfo.pHelpFile = help;
    Driver().DriverInfo.pDependentFiles = nullptr;
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(TakeRemovalLines(),
                ElementsAre("DeleteFile -> C:\\Stage\\NLAURUI.DLL", "DeleteFile -> C:\\Stage\\A500.GPD",
                            "DeleteFile -> C:\\Stage\\NLAURORA.DLL", "C:\\Stage\\NLAURUI.DLL is not deleted"));
}

TEST_F(StagedFiles, ThatCannotBeDeletedAreLoggedAndChangeNothing) {
    auto held = Machine().Files().HoldOpen("C:\\Stage\\A500.GPD");
    Driver().DriverInfo.pDependentFiles = nullptr;
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(TakeRemovalLines(),
                ElementsAre("DeleteFile -> C:\\Stage\\NLAURUI.DLL", "C:\\Stage\\A500.GPD is not deleted",
                            "DeleteFile -> C:\\Stage\\NLAURORA.DLL", "DeleteFile -> C:\\Stage\\NLAURORA.HLP"));
    EXPECT_TRUE(Machine().Files().Exists("C:\\Stage\\A500.GPD"));
}

TEST_F(StagedFiles, WithoutANameAreSkippedWithoutALine) {
    char empty[] = "";
    Driver().DriverInfo.pHelpFile = nullptr;
    Driver().DriverInfo.pDataFile = empty;
    char noNames[2] = "";
    Driver().DriverInfo.pDependentFiles = noNames;
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(TakeRemovalLines(),
                ElementsAre("DeleteFile -> C:\\Stage\\NLAURUI.DLL", "DeleteFile -> C:\\Stage\\NLAURORA.DLL"));
    EXPECT_THAT(Test().TakeCallNames({"GetPrinterDriverDirectoryA"}), IsEmpty());
}

TEST_F(StagedFiles, OfADirectoryThatCannotBeToldAreLookedForBehindABareBackslash) {
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
    EXPECT_EQ(Add(), 0u);
    Lines calls = TakeCallsOf(Test(), {"GetPrinterDriverDirectoryA", "DeleteFileA"});
    ASSERT_EQ(calls.size(), 7u);
    EXPECT_THAT(calls[0], StartsWith("GetPrinterDriverDirectoryA(null, \"Windows NT x86\", 0x1, &, 0x1000, &) = 0x0"));
    EXPECT_THAT(calls[5], StartsWith("DeleteFileA(\"\\\\NLRES_EN.DLL\") = 0x0"));
    EXPECT_THAT(calls[6], StartsWith("DeleteFileA(\"\\\\NLRES_DE.DLL\") = 0x0"));
}

TEST_F(StagedFiles, OfAnotherProcessorGoFromItsOwnDriverDirectory) {
    const std::string own = DriverDirectory();
    for (const auto& [environment, folder] :
         {std::pair("Windows IA64", "IA64"), std::pair("Windows x64", "x64"), std::pair("Windows 4.0", "WIN40")}) {
        m_record = std::make_unique<Record>(3, environment);
        const std::string directory = "C:\\WINDOWS\\system32\\spool\\drivers\\" + std::string(folder);
        for (const std::string& place : {own, directory}) {
            WriteFileOn(Machine(), place + "\\NLRES_EN.DLL", "en");
            WriteFileOn(Machine(), place + "\\NLRES_DE.DLL", "de");
        }
        EXPECT_EQ(Add(), 0u);
        for (const char* file : {"\\NLRES_EN.DLL", "\\NLRES_DE.DLL"}) {
            EXPECT_FALSE(Machine().Files().Exists(directory + file)) << environment;
            EXPECT_TRUE(Machine().Files().Exists(own + file)) << environment;
        }
    }
}

TEST_F(StagedFiles, RemovalIsLoggedAtDetailLevelAlone) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(TakeRemovalLines(), IsEmpty());
}

TEST_F(StagedFiles, StayOnTheOtherRoutes) {
    for (Routine routine : {&AddPrinterDriver98, &AddPrinterDriverME, &AddPrinterDriverNT}) {
        EXPECT_EQ(routine(nullptr, &Driver()), 0u);
    }
    EXPECT_THAT(Test().TakeCallNames({"DeleteFileA"}), IsEmpty());
}

// ---- colour profiles ------------------------------------------------------------------------------------------------

TEST_P(AddDriverOnEverySystem, ProfilesAreInstalledLastAndNeverFailTheAdd) {
    m_record->NameProfiles();
    faults::FailCall("InstallColorProfileA", 1, 2, true);
    EXPECT_EQ(Add(), 0u);
    Lines calls = Test().TakeCallNames({SpoolerCall(), "DeleteFileA", "InstallColorProfileA", "OpenFile"});
    if (GetParam() == "nt4") {
        EXPECT_THAT(calls, ElementsAre("AddPrinterDriverA")) << "profiles are left alone there";
    } else if (GetParam() == "win95") {
        EXPECT_THAT(calls, ElementsAre("AddPrinterDriverA", "OpenFile", "OpenFile", "OpenFile", "OpenFile"));
    } else {
        ASSERT_GE(calls.size(), 2u);
        EXPECT_THAT(Lines(calls.end() - 2, calls.end()), Each("InstallColorProfileA"));
        EXPECT_EQ(calls.front(), SpoolerCall());
    }
}

TEST_F(AddDriver, ProfileListThatIsNullOrEmptyChangesNothing) {
    m_record->NameProfiles();
    LPSTR* profiles = Driver().ColorProfileList;
    TakingSpooler spooler;
    Driver().ColorProfileList = nullptr;
    EXPECT_EQ(Add(), 0u);
    Driver().ColorProfileList = profiles;
    Driver().ColorProfileCount = 0;
    EXPECT_EQ(Add(), 0u);
}

TEST_F(AddDriver, LibraryOfProfilesThatIsMissingDoesNotFailTheAdd) {
    m_record->NameProfiles();
    Machine().Modules().Remove("mscms.dll");
    EXPECT_EQ(Add(), 0u);
}

}  // namespace

}  // namespace pikel
