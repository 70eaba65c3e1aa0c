// The tool's commands for INFs, files and drivers in use.
#include "support/pe_file.h"
#include "support/compressed_file.h"
#include "tool_test.h"

namespace pikel::testing_support {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class ToolFiles : public ToolTest {
  protected:
    std::string On(const fs::path& machine) { return "--machine " + machine.string() + " "; }
    json Json(const std::string& arguments) {
        const Result result = Run("--json " + arguments);
        EXPECT_EQ(result.exitCode, 0) << arguments << ": " << result.errors;
        return json::parse(result.output, nullptr, false);
    }
    /// A file of the host.
    std::string Host(const std::string& name, const std::string& bytes) {
        fs::create_directories((m_folder / name).parent_path());
        WriteHostFile(m_folder / name, bytes);
        return (m_folder / name).string();
    }
};

TEST_F(ToolFiles, InfIsShownWithTheChoiceOfItsModelsSection) {
    const json inf = Json("inf show --for xp-x64 " + Sample("xp/aurora.inf"));
    EXPECT_EQ(inf["isPrinterClass"], true);
    EXPECT_EQ(inf["architecture"], "Windows NT x86") << "its first line's last decoration decides";
    EXPECT_EQ(inf["catalog"], "aurora.cat");
    EXPECT_TRUE(inf["customisation"].is_null());
    EXPECT_THAT(inf["models"].dump(), HasSubstr("Aurora Laser 500"));
    std::vector<std::string> chosen;
    for (const json& section : inf["modelsSections"]) {
        EXPECT_NE(section["reason"], "");
        if (section["chosen"]) {
            chosen.push_back(section["section"]);
        }
    }
    EXPECT_THAT(chosen, ElementsAre("NL.NTamd64.5.2"));
}

TEST_F(ToolFiles, ChoiceAgreesWithTheModelsThatAreListed) {
    // Each section has one model, which bears the section's name.
    const char* lines[] = {"S",
                           "S,NTx86.5.1",
                           "S,NTx86.5.1,NTamd64.5.1",
                           "S,NTx86.6.0",
                           "S,NTx86",
                           "S,NTx86,NTamd64",
                           "S,NT.5.0,NTx86",
                           "S,NT.5.0,NT.5.1",
                           "S,NT.5.1,NT.5.0",
                           "S,,NT.6",
                           "S,NT.",
                           "S,.5.1",
                           "S,NT.5.1.9",
                           "S,NTx86,NT.9.0"};
    int number = 0;
    for (const std::string line : lines) {
        std::string inf =
            "[Version]\nSignature=\"$Windows NT$\"\nClass=Printer\n[Manufacturer]\n\"Maker\"=" + line + "\n";
        std::vector<std::string> sections = {"S"};
        for (std::size_t comma = line.find(','); comma != std::string::npos; comma = line.find(',', comma + 1)) {
            const std::string field = line.substr(comma + 1, line.find(',', comma + 1) - comma - 1);
            sections.push_back("S." + field);
        }
        for (const std::string& section : sections) {
            inf += "[" + section + "]\n\"" + section + "\"=X\n";
        }
        const std::string file = Host("choice" + std::to_string(number++) + ".inf", inf);
        for (const char* system : {"nt4", "win2000", "xp", "xp-x64", "vista"}) {
            const json shown = Json(std::string("inf show --for ") + system + " " + file);
            for (const json& section : shown["modelsSections"]) {
                if (section["chosen"]) {
                    EXPECT_EQ(shown["models"], json::array({section["section"]})) << line << " for " << system;
                }
            }
        }
    }
}

TEST_F(ToolFiles, FilesOfAModelAreListed) {
    const json files = Json("inf files --model 'Aurora Laser 500' " + Sample("xp/aurora.inf"));
    std::map<std::string, json> bySource;
    for (const json& file : files["files"]) {
        bySource[file["source"]] = file;
    }
    EXPECT_EQ(bySource["NLAURORA.DLL"]["kind"], "driver");
    EXPECT_EQ(bySource["A500.GPD"]["kind"], "data");
    EXPECT_EQ(bySource["NLRES_EN.DLL"]["name"], "NLRES.DLL");
    EXPECT_EQ(bySource["NLMON.DLL"]["directory"], "C:\\WINDOWS\\system32");
    EXPECT_EQ(bySource["NLAURORA.DLL"]["size"], fs::file_size(Sample("xp/NLAURORA.DLL")));
    unsigned total = 0;
    for (const json& file : files["files"]) {
        total += file["size"].get<unsigned>();
    }
    EXPECT_EQ(files["totalSize"], total);
}

TEST_F(ToolFiles, InfIsPlacedAndFound) {
    const fs::path machine = NewMachine();
    EXPECT_EQ(Run(On(machine) + "inf find --provider Northlight 'Aurora Laser 500'").exitCode, 1);
    EXPECT_EQ(Run(On(machine) + "inf place --provider Northlight " + Sample("xp/aurora.inf")).exitCode, 0);
    const json found = Json(On(machine) + "inf find --provider Northlight 'Aurora Laser 500'");
    EXPECT_THAT(found["inf"].get<std::string>(), HasSubstr("oem"));
    const Result none = Run(On(machine) + "inf find --provider Northlight 'Nobody'");
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_FALSE(none.errors.empty());
}

TEST_F(ToolFiles, VersionsAreShownAndCompared) {
    const std::string file = Host("a.dll", MakePeFile("2.10.0.3"));
    EXPECT_EQ(Run("file version " + file).output, "2.10\n");
    EXPECT_EQ(Json("file compare " + file + " 2.9")["verdict"], "higher");
    EXPECT_EQ(Json("file compare " + file + " 2.10")["verdict"], "equal");
    EXPECT_EQ(Json("file compare " + file + " 3")["verdict"], "lower");
    const Result plain = Run("file version " + Host("plain.dll", "plain"));
    EXPECT_EQ(plain.exitCode, 1);
    EXPECT_THAT(plain.errors, HasSubstr("0x90010714"));
    EXPECT_EQ(Run("file compare " + (m_folder / "plain.dll").string() + " 1.0").exitCode, 1);
    EXPECT_EQ(Run("file version " + (m_folder / "missing.dll").string()).exitCode, 1);
}

TEST_F(ToolFiles, CabinetIsExtracted) {
    const fs::path machine = NewMachine();
    const std::string cabinet = Host("a.cab", MakeCabinet({{"one.txt", "first"}, {"sub/two.txt", "second"}}));
    EXPECT_EQ(Run(On(machine) + "cab extract " + cabinet + " --to 'C:\\out'").exitCode, 0);
    EXPECT_EQ(ReadHostFile(machine / "C/out/one.txt"), "first");
    EXPECT_EQ(ReadHostFile(machine / "C/out/sub/two.txt"), "second");
}

TEST_F(ToolFiles, MonitorFilesAreCopied) {
    const fs::path machine = NewMachine("win98");
    Host("new/mon.dll", MakePeFile("2.0"));
    const Result copy = Run(On(machine) + "monitor copy mon.dll --from " + (m_folder / "new").string());
    EXPECT_EQ(copy.exitCode, 0) << copy.errors;
    EXPECT_EQ(ReadHostFile(machine / "C/WINDOWS/SYSTEM/mon.dll"), MakePeFile("2.0"));
}

TEST_F(ToolFiles, RestartPlacesWhatWaits) {
    const fs::path machine = NewMachine("win98");
    WriteHostFile(machine / "C/WINDOWS/wininit.ini", "[rename]\r\nC:\\new.txt=C:\\old.txt\r\nNUL=C:\\gone.txt\r\n");
    WriteHostFile(machine / "C/old.txt", "text");
    WriteHostFile(machine / "C/gone.txt", "text");
    const Result restart = Run("machine restart " + machine.string());
    EXPECT_EQ(restart.exitCode, 0) << restart.errors;
    EXPECT_THAT(restart.output, HasSubstr("placed C:\\old.txt as C:\\new.txt"));
    EXPECT_TRUE(fs::exists(machine / "C/new.txt"));
    EXPECT_FALSE(fs::exists(machine / "C/gone.txt"));
    EXPECT_EQ(Json("machine restart " + machine.string()), json::array());
}

TEST_F(ToolFiles, DriverFilesAreCopiedStagedAndExpanded) {
    const fs::path machine = NewMachine();
    const std::string package = " --inf " + Sample("xp/aurora.inf") + " --model 'Aurora Laser 500'";
    EXPECT_EQ(Run(On(machine) + "driver copy" + package).exitCode, 0);
    EXPECT_EQ(Json(On(machine) + "driver stage --staging 'C:\\work'" + package)["restartNeeded"], false);
    EXPECT_TRUE(fs::exists(machine / "C/work"));
    fs::create_directory(machine / "C/local");
    const json local = Json(On(machine) + "driver local --to 'C:\\local'" + package);
    EXPECT_EQ(local["files"].size(), 9u);
    EXPECT_TRUE(fs::exists(machine / "C/local/NLRES.DLL"));
    EXPECT_EQ(Run(On(machine) + "driver registry" + package).exitCode, 0);
    EXPECT_THAT(ReadHostFile(machine / "registry.reg"), HasSubstr("Northlight"));
}

TEST_F(ToolFiles, DriverInUseAndHardwareIdAreAskedFor) {
    const fs::path machine = NewMachine();
    const std::string package = " --inf " + Sample("xp/aurora.inf") + " --model 'Aurora Laser 500'";
    ASSERT_EQ(Run(On(machine) + "driver add" + package).exitCode, 0);
    EXPECT_EQ(Json(On(machine) + "driver loaded 'Aurora Laser 500'")["loaded"], false);
    EXPECT_EQ(Run(On(machine) + "driver hwid 'Aurora Laser 500'").exitCode, 0);
    bool isThere = false;
    for (const auto& entry : fs::recursive_directory_iterator(machine / "C/WINDOWS/system32/spool")) {
        isThere |= entry.path().filename() == "NorthlightAurora_500";
    }
    EXPECT_TRUE(isThere);
}

TEST_F(ToolFiles, QuestionsLeaveNothingBehind) {
    // A folder for temporary files that no other test shares.
    const fs::path temporary = m_folder / "temporary";
    fs::create_directory(temporary);
    setenv("TMPDIR", temporary.c_str(), 1);
    const Result known = Run("inf files --model 'Aurora Laser 500' " + Sample("xp/aurora.inf"));
    const Result unknown = Run("inf files --model 'Nobody' " + Sample("xp/aurora.inf"));
    unsetenv("TMPDIR");
    EXPECT_EQ(known.exitCode, 0) << known.errors;
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(fs::is_empty(temporary));
}

}  // namespace
}  // namespace pikel::testing_support
