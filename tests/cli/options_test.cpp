// Options of the tool that change what the library is told, and what a person is told of the outcome.
#include <algorithm>

#include "support/pe_file.h"
#include "tool_test.h"

namespace pikel::testing_support {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ToolOptions : public ToolTest {
  protected:
    /// Platform calls of one command by one name, as the trace tells them.
    std::vector<std::string> CallsOf(const fs::path& machine, const std::string& arguments, const std::string& name) {
        const fs::path trace = m_folder / "trace.txt";
        fs::remove(trace);
        On(machine, "--trace " + trace.string() + " " + arguments);
        std::ifstream lines(trace);
        std::vector<std::string> calls;
        for (std::string line; std::getline(lines, line);) {
            if (const std::size_t at = line.find(name + "("); at != std::string::npos) {
                calls.push_back(line.substr(at));
            }
        }
        return calls;
    }
    /// A machine with a sample's driver and the printer Office.
    fs::path Installed(const std::string& system, const std::string& inf) {
        const fs::path machine = NewMachine(system);
        const Result install =
            On(machine, "install --inf " + inf + " --model " + kModel + " --printer Office --port LPT1:");
        EXPECT_EQ(install.exitCode, 0) << install.errors;
        return machine;
    }
    static bool HasMonitor(const json& machine, const std::string& name) {
        return std::ranges::any_of(machine["monitors"], [&](const json& monitor) { return monitor["name"] == name; });
    }
};

// ---- removals -------------------------------------------------------------------------------------------------------

TEST_F(ToolOptions, KeepFilesLeavesTheLanguageMonitorOfAPrintUiRemoval) {
    constexpr char kMonitor[] = "Aurora Language Monitor";
    for (const char* removal : {"printer uninstall Office", "driver delete 'Aurora Laser 500'"}) {
        for (const bool keeps : {false, true}) {
            SCOPED_TRACE(std::string(removal) + (keeps ? " --keep-files" : ""));
            fs::remove_all(m_folder / "machine");
            const fs::path machine = Installed("xp", Sample("xp/aurora.inf"));
            ASSERT_TRUE(HasMonitor(Json(machine, "machine show"), kMonitor));
            if (std::string(removal).starts_with("driver")) {
                ASSERT_EQ(On(machine, "printer delete Office").exitCode, 0);
            }
            const Result result = On(machine, std::string(removal) + " --print-ui" + (keeps ? " --keep-files" : ""));
            EXPECT_EQ(result.exitCode, 0) << result.errors;
            const json left = Json(machine, "machine show");
            EXPECT_EQ(left["drivers"].size(), 0u);
            EXPECT_EQ(HasMonitor(left, kMonitor), keeps);
        }
    }
}

TEST_F(ToolOptions, ProcessorOfARemovalNamesTheEnvironment) {
    struct Case {
        const char* system;
        const char* processor;
        const char* environment;
    };
    for (const Case& one : {Case{"xp", "", "Windows NT x86"}, Case{"xp", "x86", "Windows NT x86"},
                            Case{"xp", "ia64", "Windows IA64"}, Case{"xp", "x64", "Windows x64"},
                            Case{"xp-x64", "", "Windows x64"}, Case{"xp-x64", "x86", "Windows NT x86"}}) {
        SCOPED_TRACE(std::string(one.system) + " " + one.processor);
        fs::remove_all(m_folder / "machine");
        const fs::path machine = NewMachine(one.system);
        const std::string option = *one.processor == '\0' ? "" : std::string(" --processor ") + one.processor;
        const std::vector<std::string> calls =
            CallsOf(machine, "driver delete Nobody" + option, "DeletePrinterDriverExA");
        ASSERT_FALSE(calls.empty());
        EXPECT_THAT(calls[0], StartsWith("DeletePrinterDriverExA(null, \"" + std::string(one.environment) +
                                         "\", \"Nobody\", 0x3, 0x3)"));
    }
    EXPECT_EQ(On(m_folder / "machine", "driver delete Nobody --processor mips").exitCode, 2);
}

// ---- ports ----------------------------------------------------------------------------------------------------------

TEST_F(ToolOptions, PortIsARawOneUnlessLprIsNamed) {
    struct Case {
        const char* options;
        const char* arguments;
    };
    for (const Case& one :
         {Case{"P1", "CreatePort(\"Standard TCP/IP Port\", \"P1\", \"\", \"porttype=9100\", "},
          Case{"P1 --byte-count", "CreatePort(\"Standard TCP/IP Port\", \"P1\", \"\", \"porttype=9100\", "},
          Case{"P2 --lpr --queue Q", "CreatePort(\"Standard TCP/IP Port\", \"P2\", \"Q\", \"\", "},
          Case{"P3 --lpr --queue Q --byte-count",
               "CreatePort(\"Standard TCP/IP Port\", \"P3\", \"Q\", \"bytecount=true\", "}}) {
        fs::remove_all(m_folder / "machine");
        const fs::path machine = NewMachine();
        EXPECT_THAT(CallsOf(machine, std::string("port create ") + one.options, "CreatePort"),
                    ElementsAre(StartsWith(one.arguments)))
            << one.options;
    }
}

// ---- timeouts -------------------------------------------------------------------------------------------------------

TEST_F(ToolOptions, BothTimeoutsOfTheInfReachThePrinterOfA9xSystem) {
    fs::copy(Sample("win98"), m_folder / "package", fs::copy_options::recursive);
    std::string inf = ReadHostFile(m_folder / "package/aurora98.inf");
    const std::string line = "RetryTimeout = 60";
    ASSERT_NE(inf.find(line), std::string::npos);
    inf.insert(inf.find(line), "NotSelectedTimeout = 20\r\n");
    WriteHostFile(m_folder / "package/aurora98.inf", inf);
    const fs::path machine = Installed("win98", (m_folder / "package/aurora98.inf").string());
    const json share = Json(machine, "printer show Office")["share"];
    EXPECT_EQ(share["notSelectedTimeout"], 20000);
    EXPECT_EQ(share["retryTimeout"], 60000);
}

TEST_F(ToolOptions, BothTimeoutsOfARecordAreImported) {
    const fs::path machine = Installed("win98", Sample("win98/aurora98.inf"));
    json record = Json(machine, "printer export Office");
    record["share"]["notSelectedTimeout"] = 11000;
    record["share"]["retryTimeout"] = 22000;
    WriteHostFile(m_folder / "office.json", record.dump());
    const Result import = On(machine, "printer import " + (m_folder / "office.json").string());
    EXPECT_EQ(import.exitCode, 0) << import.errors;
    const json share = Json(machine, "printer show Office")["share"];
    EXPECT_EQ(share["notSelectedTimeout"], 11000);
    EXPECT_EQ(share["retryTimeout"], 22000);
}

// ---- a restart that is needed ---------------------------------------------------------------------------------------

TEST_F(ToolOptions, MonitorThatWaitsForARestartGivesExitCode3) {
    const fs::path machine = NewMachine("win98");
    const fs::path target = machine / "C/WINDOWS/SYSTEM/mon.dll";
    fs::create_directory(m_folder / "new");
    WriteHostFile(m_folder / "new/mon.dll", MakePeFile("2.0"));
    WriteHostFile(target, MakePeFile("1.0"));
    fs::permissions(target, fs::perms::owner_read);  // read-only: it can't be written over now
    const std::string copy = "monitor copy mon.dll --from " + (m_folder / "new").string();
    const Result result = On(machine, copy);
    EXPECT_EQ(result.exitCode, 3) << result.errors;
    EXPECT_THAT(result.output, HasSubstr(", after a restart"));
    EXPECT_EQ(ReadHostFile(target), MakePeFile("1.0"));
    const Result asJson = On(machine, copy + " --json");
    EXPECT_EQ(asJson.exitCode, 3);
    EXPECT_EQ(json::parse(asJson.output)["restartNeeded"], true);
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(On(machine, "machine restart").exitCode, 0);
    EXPECT_EQ(ReadHostFile(target), MakePeFile("2.0"));
    const Result upToDate = On(machine, copy);
    EXPECT_EQ(upToDate.exitCode, 0);
    EXPECT_THAT(upToDate.output, Not(HasSubstr("restart")));
}

TEST_F(ToolOptions, RestartTellsTheStepsThatFail) {
    const fs::path machine = NewMachine("win98");
    const auto write = [&] {
        WriteHostFile(machine / "C/WINDOWS/wininit.ini",
                      "[rename]\r\nC:\\new.txt=C:\\missing.txt\r\nNUL=C:\\gone.txt\r\nC:\\b.txt=C:\\a.txt\r\n");
        WriteHostFile(machine / "C/a.txt", "text");
    };
    write();
    const Result restart = On(machine, "machine restart");
    EXPECT_EQ(restart.exitCode, 0) << restart.errors;
    EXPECT_EQ(restart.output,
              "placed C:\\missing.txt as C:\\new.txt: failed, 2\ndeleted C:\\gone.txt: failed, 2\n"
              "placed C:\\a.txt as C:\\b.txt\nrestarted\n");
    EXPECT_EQ(ReadHostFile(machine / "C/b.txt"), "text");
    write();
    const json steps = Json(machine, "machine restart");
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[0], json({{"source", "C:\\missing.txt"}, {"target", "C:\\new.txt"}, {"code", 2}}));
    EXPECT_EQ(steps[1], json({{"source", "C:\\gone.txt"}, {"target", nullptr}, {"code", 2}}));
    EXPECT_EQ(steps[2]["code"], 0);
}

// ---- hints ----------------------------------------------------------------------------------------------------------

TEST_F(ToolOptions, HintsComeAsJsonToo) {
    const fs::path machine = Installed("xp", Sample("xp/aurora.inf"));
    struct Case {
        const char* arguments;
        const char* hint;
    };
    for (const Case& one :
         {Case{"driver delete 'Aurora Laser 500'", "delete the printers that use the driver first"},
          Case{"printer add X --driver 'Aurora Laser 500' --port NOWHERE:",
               "create the port first: pikel port create NAME"},
          Case{"printer show Nobody", "`pikel printer list` lists the printers"},
          Case{"port create 123456789012345678901", "a port's name has at most 20 characters"},
          Case{"printui run /nonsense", "the Print UI can't read the command line"}, Case{"printui resource 1", ""}}) {
        const Result result = On(machine, std::string(one.arguments) + " --json");
        EXPECT_EQ(result.exitCode, 1) << one.arguments;
        const json error = json::parse(result.output, nullptr, false)["error"];
        EXPECT_EQ(error["hint"], one.hint) << one.arguments;
        EXPECT_FALSE(error["text"].get<std::string>().empty()) << one.arguments;
        if (*one.hint != '\0') {
            EXPECT_THAT(result.errors, HasSubstr(std::string("pikel: ") + one.hint + "\n")) << one.arguments;
        } else {
            EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << "one line, without a hint behind it";
        }
    }
}

}  // namespace
}  // namespace pikel::testing_support
