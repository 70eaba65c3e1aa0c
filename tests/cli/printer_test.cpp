// The tool's commands about printers that are there, removal, the Print UI, the network and the shell.
#include "tool_test.h"

namespace pikel::testing_support {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

class ToolPrinter : public ToolTest {
  protected:
    /// A machine with the sample driver and the printer Office.
    std::string Installed(const std::string& system = "xp", const std::string& inf = "xp/aurora.inf") {
        const std::string machine = NewMachine(system).string();
        const Result install = Run("--machine " + machine + " install --inf " + Sample(inf) +
                                   " --model 'Aurora Laser 500' --printer Office --port LPT1:");
        EXPECT_EQ(install.exitCode, 0) << install.errors;
        return machine;
    }
};

// ---- show, set, export, import --------------------------------------------------------------------------------------

TEST_F(ToolPrinter, IsShown) {
    const std::string machine = Installed();
    const Result text = On(machine, "printer show Office");
    EXPECT_EQ(text.exitCode, 0) << text.errors;
    EXPECT_THAT(text.output, HasSubstr("driver           Aurora Laser 500\n"));
    EXPECT_THAT(text.output, HasSubstr("descriptor       O:"));
    const json printer = Json(machine, "printer show Office");
    EXPECT_EQ(printer["portName"], "LPT1:");
    EXPECT_EQ(printer["colourProfiles"].size(), 2u);
    EXPECT_TRUE(printer["share"].is_null());
    EXPECT_TRUE(printer["security"]["devMode"].is_string());
    const Result nobody = On(machine, "printer show Nobody");
    EXPECT_EQ(nobody.exitCode, 1);
    EXPECT_THAT(nobody.errors, HasSubstr("ERROR_INVALID_PRINTER_NAME"));
}

TEST_F(ToolPrinter, IsShownOnEverySystem) {
    struct Case {
        const char* system;
        const char* inf;
        bool isShare;
    };
    for (const Case& oneCase : {Case{"win95", "win98/aurora98.inf", true}, Case{"nt4", "nt4/aurora4.inf", false},
                                Case{"win2000", "xp/aurora.inf", false}, Case{"vista-x64", "xp/aurora.inf", false}}) {
        fs::remove_all(m_folder / "machine");
        const json printer = Json(Installed(oneCase.system, oneCase.inf), "printer show Office");
        EXPECT_EQ(printer["share"].is_object(), oneCase.isShare) << oneCase.system;
        EXPECT_EQ(printer["security"].is_object(), !oneCase.isShare) << oneCase.system;
        EXPECT_EQ(printer["security"].is_object() && printer["security"].contains("descriptorBytes"),
                  std::string(oneCase.system) == "nt4");
    }
}

TEST_F(ToolPrinter, IsChanged) {
    const std::string machine = Installed();
    const json printer = Json(machine, "printer set Office --comment 'On the stairs' --location 'Room 2' --priority 7");
    EXPECT_EQ(printer["comment"], "On the stairs");
    EXPECT_EQ(printer["location"], "Room 2");
    EXPECT_EQ(printer["priority"], 7);
    EXPECT_EQ(Json(machine, "printer set Office --name Study")["printerName"], "Study");
    EXPECT_EQ(On(machine, "printer show Office").exitCode, 1);
    const json shared = Json(machine, "printer set Study --share AURORA");
    EXPECT_EQ(shared["shareName"], "AURORA");
    EXPECT_NE(shared["attributes"].get<unsigned>() & 8u, 0u);
    EXPECT_EQ(On(machine, "printer set Nobody --comment x").exitCode, 1);
}

TEST_F(ToolPrinter, RecordGoesOutAsJsonAndBack) {
    const std::string machine = Installed();
    const std::string file = (m_folder / "office.json").string();
    ASSERT_EQ(On(machine, "printer set Office --comment first").exitCode, 0);
    ASSERT_EQ(On(machine, "printer export Office --to " + file).exitCode, 0);
    const json exported = json::parse(ReadHostFile(file));
    EXPECT_EQ(exported["comment"], "first");
    const Result out = On(machine, "printer export Office");
    EXPECT_EQ(json::parse(out.output), exported);
    ASSERT_EQ(On(machine, "printer set Office --comment second").exitCode, 0);
    const Result import = On(machine, "printer import " + file);
    EXPECT_EQ(import.exitCode, 0) << import.errors;
    EXPECT_EQ(Json(machine, "printer show Office"), exported);
}

TEST_F(ToolPrinter, RecordIsImportedIntoAnotherPrinter) {
    const std::string machine = Installed();
    const std::string file = (m_folder / "office.json").string();
    ASSERT_EQ(On(machine, "printer set Office --comment first").exitCode, 0);
    ASSERT_EQ(On(machine, "printer export Office --to " + file).exitCode, 0);
    ASSERT_EQ(On(machine, "printer add Study --driver 'Aurora Laser 500' --port LPT2:").exitCode, 0);
    const Result import = On(machine, "printer import " + file + " --printer Study");
    EXPECT_EQ(import.exitCode, 0) << import.errors;
    EXPECT_EQ(Json(machine, "printer show Study")["comment"], "first");
    EXPECT_EQ(Json(machine, "printer show Office")["comment"], "first");
}

TEST_F(ToolPrinter, BadRecordsAreRefusedByTheirField) {
    const std::string machine = Installed();
    const std::string file = (m_folder / "bad.json").string();
    struct Case {
        const char* text;
        const char* told;
    };
    for (const Case& bad :
         {Case{"{", "not JSON"}, Case{"[]", "must be an object"}, Case{"{\"printerName\": 7}", "\"printerName\""},
          Case{"{\"printerName\": \"Office\", \"priority\": -1}", "\"priority\""},
          Case{"{\"printerName\": \"Office\", \"priority\": 4294967296}", "\"priority\""},
          Case{"{\"printerName\": \"Office\", \"devMode\": \"abc\"}", "\"devMode\""},
          Case{"{\"printerName\": \"Office\", \"devMode\": \"ffff\"}", "\"devMode\""},
          Case{"{\"printerName\": \"Office\", \"values\": {}}", "\"values\""},
          Case{"{\"printerName\": \"Office\", \"values\": [{\"data\": \"xx\"}]}", "\"data\""},
          Case{"{\"printerName\": \"Office\", \"share\": {\"name\": \"A name that is too long\"}}", "\"name\""},
          Case{"{\"printerName\": \"Office\", \"colourProfiles\": [1]}", "\"colourProfiles\""},
          Case{"{}", "names no printer"}}) {
        WriteHostFile(file, bad.text);
        const Result result = On(machine, "printer import " + file);
        EXPECT_EQ(result.exitCode, 1) << bad.text;
        EXPECT_THAT(result.errors, HasSubstr(bad.told)) << bad.text;
    }
    EXPECT_THAT(On(machine, "printer import " + file + ".missing").errors, HasSubstr("no such file"));
}

// ---- removal --------------------------------------------------------------------------------------------------------

TEST_F(ToolPrinter, IsDeletedByEitherRoute) {
    const std::string machine = Installed();
    for (const char* options : {"", " --print-ui", " --keep-share"}) {
        if (*options != '\0') {
            ASSERT_EQ(On(machine, "printer add Office --driver 'Aurora Laser 500' --port LPT1:").exitCode, 0);
        }
        const Result result = On(machine, std::string("printer delete Office") + options);
        EXPECT_EQ(result.exitCode, 0) << options << result.errors;
        EXPECT_EQ(result.output, "deleted printer Office\n");
        EXPECT_EQ(Json(machine, "printer list").size(), 0u) << options;
    }
    EXPECT_EQ(On(machine, "printer delete Office").exitCode, 1);
}

TEST_F(ToolPrinter, IsUninstalledWithItsDriver) {
    for (const char* options : {"", " --print-ui"}) {
        fs::remove_all(m_folder / "machine");
        const std::string machine = Installed();
        ASSERT_EQ(On(machine, "printer add Second --driver 'Aurora Laser 500' --port LPT2:").exitCode, 0);
        EXPECT_TRUE(Json(machine, std::string("printer uninstall Office") + options)["driverStays"].get<bool>());
        EXPECT_FALSE(Json(machine, std::string("printer uninstall Second") + options)["driverStays"].get<bool>());
        EXPECT_EQ(Json(machine, "driver list").size(), 0u);
    }
}

TEST_F(ToolPrinter, DriverIsDeletedWhenNobodyUsesIt) {
    const std::string machine = Installed();
    const Result inUse = On(machine, "driver delete 'Aurora Laser 500'");
    EXPECT_EQ(inUse.exitCode, 1);
    EXPECT_THAT(inUse.errors, HasSubstr("ERROR_PRINTER_DRIVER_IN_USE"));
    EXPECT_THAT(inUse.errors, HasSubstr("delete the printers that use the driver first"));
    ASSERT_EQ(On(machine, "printer delete Office").exitCode, 0);
    EXPECT_EQ(On(machine, "driver delete 'Aurora Laser 500' --print-ui").exitCode, 0);
    EXPECT_EQ(Json(machine, "driver list").size(), 0u);
    EXPECT_EQ(
        On(machine, "driver add --print-ui --inf " + Sample("xp/aurora.inf") + " --model 'Aurora Laser 500'").exitCode,
        0);
    EXPECT_EQ(Json(machine, "driver list").size(), 1u);
    EXPECT_EQ(On(machine, "driver delete 'Aurora Laser 500'").exitCode, 0);
    EXPECT_EQ(Json(machine, "driver list").size(), 0u);
}

// ---- Print UI -------------------------------------------------------------------------------------------------------

TEST_F(ToolPrinter, PrintUiInstallsAndRunsCommandLines) {
    const std::string machine = NewMachine("win2000").string();
    const Result install = On(machine, "printui install --inf " + Sample("xp/aurora.inf") +
                                           " --model 'Aurora Laser 500' --printer Office --port LPT1: --share AURORA");
    EXPECT_EQ(install.exitCode, 0) << install.errors;
    EXPECT_EQ(Json(machine, "printer show Office")["shareName"], "AURORA");
    EXPECT_EQ(On(machine, "printui run '/dl /n\"Office\" /q'").exitCode, 0);
    EXPECT_EQ(Json(machine, "printer list").size(), 0u);
    const Result bad = On(machine, "printui run '/nonsense'");
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_THAT(bad.errors, HasSubstr("can't read the command line"));
}

TEST_F(ToolPrinter, PrintUiHasTexts) {
    const std::string machine = NewMachine("win2000").string();
    EXPECT_EQ(Json(machine, "printui resource 16056")["text"], "Windows 2000");
    EXPECT_EQ(On(machine, "printui resource 1").exitCode, 1);
    fs::remove_all(m_folder / "machine");
    const Result none = On(NewMachine("win98").string(), "printui resource 16056");
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_THAT(none.errors, HasSubstr("the Print UI came with Windows 2000"));
}

// ---- network and shell ----------------------------------------------------------------------------------------------

TEST_F(ToolPrinter, NetworkIsBrowsed) {
    const std::string machine = NewMachine("xp").string();
    std::string registry = ReadHostFile(fs::path(machine) / "registry.reg");
    const std::size_t end = registry.find("; end of registry");
    ASSERT_NE(end, std::string::npos);
    registry.insert(end,
                    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Simulated Network\\Servers\\PRINTSRV\\Laser]\r\n"
                    "\"Comment\"=\"Stairs\"\r\n\r\n");
    WriteHostFile(fs::path(machine) / "registry.reg", registry);
    const Result top = On(machine, "net browse");
    EXPECT_EQ(top.exitCode, 0) << top.errors;
    EXPECT_FALSE(top.output.empty());
    const Result all = On(machine, "net browse --depth 5");
    EXPECT_THAT(all.output, HasSubstr("\\\\PRINTSRV\\Laser"));
    const json below = Json(machine, "net browse --under PRINTSRV");
    ASSERT_EQ(below.size(), 1u) << below;
    EXPECT_EQ(below[0]["name"], "\\\\PRINTSRV\\Laser");
    EXPECT_EQ(below[0]["comment"], "Stairs");
    EXPECT_THAT(On(machine, "net browse --under Nowhere").errors, HasSubstr("no such node"));
}

TEST_F(ToolPrinter, ShortcutIsCreated) {
    const std::string machine = NewMachine("xp").string();
    const Result result = On(machine, "shortcut create Status --folder Aurora --target C:\\\\WINDOWS\\\\status.exe");
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output, "created shortcut Aurora\\Status.lnk\n");
    bool isThere = false;
    for (const auto& entry : fs::recursive_directory_iterator(machine)) {
        isThere = isThere || entry.path().filename() == "Status.lnk";
    }
    EXPECT_TRUE(isThere);
}

TEST_F(ToolPrinter, UserIsToldApart) {
    const fs::path machine = NewMachine("xp");
    EXPECT_EQ(On(machine.string(), "whoami").output, "an administrator\n");
    std::string ini = ReadHostFile(machine / "machine.ini");
    const std::size_t at = ini.find("administrator = yes");
    ASSERT_NE(at, std::string::npos) << ini;
    ini.replace(at, 19, "administrator = no");
    WriteHostFile(machine / "machine.ini", ini);
    EXPECT_EQ(On(machine.string(), "whoami").output, "not an administrator\n");
    EXPECT_FALSE(Json(machine.string(), "whoami")["administrator"].get<bool>());
}

}  // namespace
}  // namespace pikel::testing_support
