// The tool, run as a program: the whole road on every system, its output, and what it says when something is wrong.
#include "tool_test.h"
#include "support/project.h"

namespace pikel::testing_support {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// ---- the whole road -------------------------------------------------------------------------------------------------

struct RoadCase {
    std::string system;
    std::string inf;
    std::string environment;
    std::string driverFolder;
    std::vector<std::string> driverFiles;
    bool hasProfiles;
};

class ToolRoad : public ToolTest, public ::testing::WithParamInterface<RoadCase> {};

TEST_P(ToolRoad, LeadsFromAnInfToADefaultPrinter) {
    const RoadCase& road = GetParam();
    const std::string machine = NewMachine(road.system).string();
    // A system of neither family has no port monitor to make a network port with.
    const bool makesPort = road.system != "other";
    const std::string port = makesPort ? "192.168.0.20" : "LPT1:";
    Result install = Run("--machine " + machine + " install --inf " + Sample(road.inf) +
                         " --model 'Aurora Laser 500' --printer Office --port " + port);
    ASSERT_EQ(install.exitCode, 0) << install.errors;
    EXPECT_EQ(install.output, "installed Aurora Laser 500 as printer Office on port " + port +
                                  (makesPort ? " (created)" : "") + "; it is the default printer now\n");

    Result show = Run("machine show " + machine + " --json");
    ASSERT_EQ(show.exitCode, 0) << show.errors;
    const json found = json::parse(show.output);
    ASSERT_EQ(found["drivers"].size(), 1u);
    const json& driver = found["drivers"][0];
    EXPECT_EQ(driver["name"], "Aurora Laser 500");
    EXPECT_EQ(driver["environment"], road.environment);
    EXPECT_EQ(driver["monitor"], "Aurora Language Monitor");
    std::vector<std::string> paths;
    for (const json& file : driver["files"]) {
        EXPECT_TRUE(file["present"].get<bool>()) << file;
        paths.push_back(file["path"]);
    }
    for (const std::string& file : road.driverFiles) {
        EXPECT_THAT(paths, Contains(::testing::StrCaseEq(road.driverFolder + "\\" + file)));
    }
    std::vector<std::string> monitors;
    for (const json& monitor : found["monitors"]) {
        monitors.push_back(monitor["name"]);
    }
    EXPECT_THAT(monitors, Contains("Aurora Language Monitor"));
    std::vector<std::string> ports;
    for (const json& entry : found["ports"]) {
        ports.push_back(entry["name"]);
    }
    EXPECT_THAT(ports, Contains(port));
    EXPECT_EQ(found["printers"], json::array({{{"name", "Office"}, {"driver", "Aurora Laser 500"}, {"port", port}}}));
    EXPECT_EQ(found["defaultPrinter"], "Office");
    if (road.hasProfiles) {
        EXPECT_THAT(found["colourProfiles"].dump(), AllOf(HasSubstr("NLA500A.ICC"), HasSubstr("NLDISP.ICC")));
    }
}

const std::vector<std::string> kXpFiles = {"NLAURORA.DLL", "NLAURUI.DLL", "A500.GPD", "NLAURORA.HLP", "NLRES.DLL"};
const std::vector<std::string> kNt4Files = {"NLAUR4.DLL", "NLAUR4UI.DLL", "A500.GPD", "NLAUR4.HLP"};
const std::vector<std::string> k9xFiles = {"NLAUR9X.DRV", "A500.DAT", "NLAUR9X.HLP"};
constexpr char kXpFolder[] = "C:\\WINDOWS\\system32\\spool\\drivers\\";

INSTANTIATE_TEST_SUITE_P(
    Systems, ToolRoad,
    ::testing::Values(
        RoadCase{"win95", "win98/aurora98.inf", "Windows 4.0", "C:\\WINDOWS\\SYSTEM", k9xFiles, true},
        RoadCase{"win98", "win98/aurora98.inf", "Windows 4.0", "C:\\WINDOWS\\SYSTEM", k9xFiles, true},
        RoadCase{"winme", "win98/aurora98.inf", "Windows 4.0", "C:\\WINDOWS\\SYSTEM", k9xFiles, true},
        RoadCase{"nt4", "nt4/aurora4.inf", "Windows NT x86", "C:\\WINNT\\system32\\spool\\drivers\\w32x86\\2",
                 kNt4Files, false},
        RoadCase{"win2000", "xp/aurora.inf", "Windows NT x86", "C:\\WINNT\\system32\\spool\\drivers\\w32x86\\3",
                 kXpFiles, true},
        RoadCase{"xp", "xp/aurora.inf", "Windows NT x86", std::string(kXpFolder) + "w32x86\\3", kXpFiles, true},
        RoadCase{"xp-ia64", "xp/aurora.inf", "Windows IA64", std::string(kXpFolder) + "ia64\\3", kXpFiles, true},
        RoadCase{"xp-x64", "xp/aurora.inf", "Windows x64", std::string(kXpFolder) + "x64\\3", kXpFiles, true},
        RoadCase{"vista", "xp/aurora.inf", "Windows NT x86", std::string(kXpFolder) + "w32x86\\3", kXpFiles, true},
        RoadCase{"vista-ia64", "xp/aurora.inf", "Windows IA64", std::string(kXpFolder) + "ia64\\3", kXpFiles, true},
        RoadCase{"vista-x64", "xp/aurora.inf", "Windows x64", std::string(kXpFolder) + "x64\\3", kXpFiles, true},
        RoadCase{"other", "xp/aurora.inf", "Windows NT x86", std::string(kXpFolder) + "w32x86\\3", kXpFiles, true}),
    [](const auto& info) {
        std::string name = info.param.system;
        std::erase(name, '-');
        return name;
    });

TEST_F(ToolTest, StepsOneByOneLeadToTheSameMachineAsTheWholeRoad) {
    const std::string byRoad = NewMachine("xp", "road").string();
    ASSERT_EQ(Run("--machine " + byRoad + " install --inf " + Sample("xp/aurora.inf") +
                  " --model 'Aurora Laser 700' --printer Office --port P1")
                  .exitCode,
              0);
    const std::string bySteps = "--machine " + NewMachine("xp", "steps").string() + " ";
    EXPECT_EQ(Run(bySteps + "driver add --inf " + Sample("xp/aurora.inf") + " --model 'Aurora Laser 700'").exitCode, 0);
    EXPECT_EQ(Run(bySteps + "port create P1").exitCode, 0);
    EXPECT_EQ(Run(bySteps + "printer add Office --driver 'Aurora Laser 700' --port P1").exitCode, 0);
    EXPECT_EQ(Run(bySteps + "default set Office").exitCode, 0);
    EXPECT_EQ(Run(bySteps + "default get").output, "Office\n");
    EXPECT_EQ(Run(bySteps + "driver list").output, "Aurora Laser 700  (Windows NT x86, version 3)\n");
    EXPECT_EQ(Run(bySteps + "printer list").output, "Office  (driver Aurora Laser 700, port P1)\n");
    EXPECT_EQ(Snapshot(m_folder / "road"), Snapshot(m_folder / "steps"));
}

TEST_F(ToolTest, AMachineCanBeCopiedAndMoved) {
    const fs::path machine = NewMachine();
    ASSERT_EQ(Run("--machine " + machine.string() + " port create P1").exitCode, 0);
    fs::copy(machine, m_folder / "copy", fs::copy_options::recursive);
    fs::rename(m_folder / "copy", m_folder / "moved");
    EXPECT_THAT(Run("machine show " + (m_folder / "moved").string()).output, HasSubstr("port      P1"));
}

TEST_F(ToolTest, TheExampleInstallerDoesTheSame) {
    const fs::path machine = NewMachine();
    fs::copy(Sample("xp"), machine / "C" / "package", fs::copy_options::recursive);
    setenv("PIKEL_MACHINE", machine.c_str(), 1);
    Result result = RunProgram(testing_support::BinDir() + "/installer " + testing_support::BinDir() +
                               "/libpikel.so 'C:\\package\\aurora.inf' 'Aurora Laser 500' Office P1 "
                               "'C:\\Program Files\\pikel\\portsdk.dll'");
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    EXPECT_EQ(Run("default get").output, "Office\n");
}

// ---- what it prints -------------------------------------------------------------------------------------------------

TEST_F(ToolTest, ModelsAreListedWithoutAMachine) {
    EXPECT_EQ(Run("inf models " + Sample("xp/aurora.inf")).output, "Aurora Laser 500\nAurora Laser 700\n");
    EXPECT_EQ(json::parse(Run("inf models --json " + Sample("xp/aurora.inf")).output),
              json::parse(R"(["Aurora Laser 500", "Aurora Laser 700"])"));
}

TEST_F(ToolTest, AnInfIsReadForTheSystemThatIsNamed) {
    json record =
        json::parse(Run("inf show --for xp-x64 --model 'Aurora Laser 500' --json " + Sample("xp/aurora.inf")).output);
    EXPECT_EQ(record[0]["environment"], "Windows x64");
    EXPECT_EQ(record[0]["manufacturer"], "Northlight");
    EXPECT_EQ(record[0]["hardwareId"], "USBPRINT\\NorthlightAurora_500");
    EXPECT_EQ(record[0]["colourProfiles"], json::parse(R"(["NLA500A.ICC", "NLDISP.ICC"])"));
    EXPECT_EQ(record[0]["retryTimeout"], 90000);
}

TEST_F(ToolTest, TheTraceHoldsEveryPlatformCall) {
    const std::string machine = NewMachine().string();
    const fs::path trace = m_folder / "trace.jsonl";
    ASSERT_EQ(Run("--machine " + machine + " --trace " + trace.string() + " port create P1").exitCode, 0);
    std::ifstream lines(trace);
    std::vector<std::string> calls;
    for (std::string line; std::getline(lines, line);) {
        calls.push_back(json::parse(line)["call"]);
    }
    EXPECT_THAT(calls, AllOf(Contains("LoadLibraryA"), Contains("CreatePort"), Contains("FreeLibrary")));
}

TEST_F(ToolTest, HelpAndVersionSucceedAndWrongUsageGives2) {
    EXPECT_EQ(Run("--help").exitCode, 0);
    EXPECT_THAT(Run("--help").output, AllOf(HasSubstr("install"), HasSubstr("machine"), HasSubstr("Exit codes")));
    EXPECT_THAT(Run("--version").output, HasSubstr("pikel 1."));
    for (const char* wrong : {"", "nonsense", "inf", "inf models", "install --inf x", "machine new", "--nonsense"}) {
        Result result = Run(wrong);
        EXPECT_EQ(result.exitCode, 2) << "pikel " << wrong;
        EXPECT_THAT(result.errors, Not(IsEmpty())) << "pikel " << wrong;
    }
}

// ---- bad input ------------------------------------------------------------------------------------------------------

class ToolBadInput : public ToolTest {
  protected:
    /// A machine, and a copy of the sample package that a test can damage.
    ToolBadInput() : m_machine(NewMachine()), m_package(m_folder / "package") {
        fs::copy(Sample("xp"), m_package, fs::copy_options::recursive);
    }
    Result Install(const std::string& model = "Aurora Laser 500") {
        return Run("--machine " + m_machine.string() + " install --inf " + (m_package / "aurora.inf").string() +
                   " --model '" + model + "' --printer Office --port P1");
    }
    void ExpectFailure(const Result& result, const std::string& text) {
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.errors, HasSubstr(text));
        EXPECT_THAT(result.errors, Not(HasSubstr("AddressSanitizer")));
    }
    const fs::path m_machine;
    const fs::path m_package;
};

TEST_F(ToolBadInput, InfMissing) {
    fs::remove(m_package / "aurora.inf");
    ExpectFailure(Install(), "no such file");
}

TEST_F(ToolBadInput, InfEmpty) {
    WriteHostFile(m_package / "aurora.inf", "");
    ExpectFailure(Install(), "PI_KEL_GetInfInfo failed: 0x901203ee, ERROR_FILE_INVALID (1006)");
}

TEST_F(ToolBadInput, InfBinary) {
    std::string bytes;
    for (int i = 0; i < 5000; ++i) {
        bytes += static_cast<char>((i * 7919) >> 3);
    }
    WriteHostFile(m_package / "aurora.inf", bytes);
    ExpectFailure(Install(), "PI_KEL_GetInfInfo failed: 0x");
}

TEST_F(ToolBadInput, InfCutInTheMiddleLeavesTheMachineAsItWas) {
    const std::string whole = ReadHostFile(m_package / "aurora.inf");
    const auto before = Snapshot(m_machine);
    for (std::size_t length : {100u, 300u, 700u, 1000u}) {
        WriteHostFile(m_package / "aurora.inf", whole.substr(0, length));
        Result result = Install();
        EXPECT_EQ(result.exitCode, 1) << length;
        EXPECT_THAT(result.errors, HasSubstr("PI_KEL_GetInfInfo failed")) << length;
        EXPECT_EQ(Snapshot(m_machine), before) << length;
    }
}

TEST_F(ToolBadInput, ModelUnknown) {
    ExpectFailure(Install("Aurora Laser 9000"), "PI_KEL_GetInfInfo failed: 0x9012054f, ERROR_INTERNAL_ERROR (1359)");
    EXPECT_THAT(Install("Aurora Laser 9000").errors, HasSubstr("pikel inf models FILE"));
}

TEST_F(ToolBadInput, ModelsSectionThatIsNotThere) {
    std::string inf = ReadHostFile(m_package / "aurora.inf");
    for (std::size_t at; (at = inf.find("[NL.NTx86.5.1]")) != std::string::npos;) {
        inf.replace(at, 14, "[Elsewhere]");
    }
    WriteHostFile(m_package / "aurora.inf", inf);
    ExpectFailure(Install(), "PI_KEL_GetInfInfo failed: 0x9012054f");
}

TEST_F(ToolBadInput, InfWithoutVersionIsReadAllTheSame) {
    std::string inf = ReadHostFile(m_package / "aurora.inf");
    inf.erase(inf.find("[Version]"), inf.find("[Manufacturer]") - inf.find("[Version]"));
    WriteHostFile(m_package / "aurora.inf", inf);
    EXPECT_EQ(Install().exitCode, 0);
}

TEST_F(ToolBadInput, SourceFileMissing) {
    fs::remove(m_package / "NLAURUI.DLL");
    ExpectFailure(Install(), "PI_KEL_CopyInfDriverFiles failed: 0x901b0002, ERROR_FILE_NOT_FOUND (2)");
    EXPECT_EQ(Run("--machine " + m_machine.string() + " driver list").output, "") << "no half a driver";
}

TEST_F(ToolBadInput, MachineMissing) {
    Result result = Run("--machine " + (m_folder / "nowhere").string() + " printer list");
    ExpectFailure(result, "nowhere");
    EXPECT_EQ(Run("printer list").exitCode, 1);
    EXPECT_THAT(Run("printer list").errors, HasSubstr("pikel machine new"));
}

TEST_F(ToolBadInput, MachineWithADamagedRegistryIsLeftAlone) {
    const std::string whole = ReadHostFile(m_machine / "registry.reg");
    for (std::size_t length : {std::size_t{0}, std::size_t{10}, whole.size() / 2, whole.size() - 10}) {
        WriteHostFile(m_machine / "registry.reg", whole.substr(0, length));
        const auto before = Snapshot(m_machine);
        Result result = Install();
        EXPECT_EQ(result.exitCode, 1) << length;
        EXPECT_THAT(result.errors, HasSubstr("registry.reg")) << length;
        EXPECT_EQ(Snapshot(m_machine), before) << length;
    }
}

TEST_F(ToolBadInput, MachineWithoutItsDescription) {
    fs::remove(m_machine / "machine.ini");
    ExpectFailure(Install(), "machine.ini");
}

TEST_F(ToolBadInput, NewMachineInAFolderThatIsNotEmpty) {
    ExpectFailure(Run("machine new " + m_machine.string()), m_machine.string());
}

TEST_F(ToolBadInput, UnknownSystem) {
    ExpectFailure(Run("machine new " + (m_folder / "x").string() + " --system os2"), "pikel machine systems");
    EXPECT_FALSE(fs::exists(m_folder / "x"));
}

TEST_F(ToolBadInput, NoRights) {
    std::string ini = ReadHostFile(m_machine / "machine.ini");
    const std::size_t at = ini.find("administrator = yes");
    ASSERT_NE(at, std::string::npos) << ini;
    ini.replace(at, 19, "administrator = no");
    WriteHostFile(m_machine / "machine.ini", ini);
    Result result = Install();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("ERROR_ACCESS_DENIED (5)"), HasSubstr("administrator")));
}

TEST_F(ToolBadInput, FailuresComeAsJsonToo) {
    Result result = Run("--json --machine " + m_machine.string() + " printer add X --driver Nothing --port LPT1:");
    EXPECT_EQ(result.exitCode, 1);
    const json error = json::parse(result.output)["error"];
    EXPECT_EQ(error["operation"], "PI_KEL_AddPrinter");
    EXPECT_EQ(error["code"], 1797);
    EXPECT_EQ(error["name"], "ERROR_UNKNOWN_PRINTER_DRIVER");
}

TEST_F(ToolBadInput, PortNameTooLong) {
    EXPECT_EQ(Run("--machine " + m_machine.string() + " port create 12345678901234567890").exitCode, 0);
    ExpectFailure(Run("--machine " + m_machine.string() + " port create 123456789012345678901"),
                  "PI_KEL_CreatePort failed: 0x900c0057, ERROR_INVALID_PARAMETER (87)");
}

TEST_F(ToolBadInput, PrinterNameTaken) {
    ASSERT_EQ(Install("Aurora Laser 700").exitCode, 0);
    ExpectFailure(Run("--machine " + m_machine.string() + " printer add Office --driver 'Aurora Laser 700' --port P1"),
                  "ERROR_PRINTER_ALREADY_EXISTS (1802)");
}

}  // namespace
}  // namespace pikel::testing_support
