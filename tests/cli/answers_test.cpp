// What the tool answers, and what a removal, a share or a system by name comes down to on the machine.
#include "support/pe_file.h"
#include "tool_test.h"

namespace pikel::testing_support {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class ToolAnswers : public ToolTest {
  protected:
    /// A machine with a sample's driver and the printer Office.
    fs::path Installed(const std::string& system = "xp", const std::string& inf = "xp/aurora.inf") {
        const fs::path machine = NewMachine(system);
        const Result install =
            On(machine, "install --inf " + Sample(inf) + " --model " + kModel + " --printer Office --port LPT1:");
        EXPECT_EQ(install.exitCode, 0) << install.errors;
        return machine;
    }
    std::string Host(const std::string& name, const std::string& bytes) {
        fs::create_directories((m_folder / name).parent_path());
        WriteHostFile(m_folder / name, bytes);
        return (m_folder / name).string();
    }
    /// The value of an option whose text would be cut by the shell.
    static std::string Quoted(const std::string& text) { return "'" + text + "'"; }
    /// Puts a key into a machine's registry.
    static void AddKey(const fs::path& machine, const std::string& key) {
        std::string registry = ReadHostFile(machine / "registry.reg");
        const std::size_t end = registry.find("; end of registry");
        ASSERT_NE(end, std::string::npos);
        WriteHostFile(machine / "registry.reg", registry.insert(end, "[" + key + "]\r\n\r\n"));
    }
    static std::string RegistryOf(const fs::path& machine) { return ReadHostFile(machine / "registry.reg"); }
};

// ---- drivers --------------------------------------------------------------------------------------------------------

TEST_F(ToolAnswers, DriverListHoldsTheDependentFiles) {
    const json drivers = Json(Installed(), "driver list");
    ASSERT_EQ(drivers.size(), 1u);
    EXPECT_THAT(drivers[0]["dependentFiles"].dump(), HasSubstr("NLRES.DLL"));
    EXPECT_THAT(drivers[0]["dependentFiles"].dump(), Not(HasSubstr("NLAURORA.DLL")));
}

TEST_F(ToolAnswers, ProfilesThatARemovalNamesGoWithTheDriver) {
    const fs::path machine = Installed();
    ASSERT_EQ(On(machine, "printer delete Office").exitCode, 0);
    EXPECT_EQ(Json(machine, "machine show")["colourProfiles"].size(), 2u);
    EXPECT_EQ(On(machine, std::string("driver delete ") + kModel + " --profile NLA500A.ICC").exitCode, 0);
    const json left = Json(machine, "machine show")["colourProfiles"];
    ASSERT_EQ(left.size(), 1u);
    EXPECT_THAT(left[0].get<std::string>(), HasSubstr("NLDISP.ICC"));
}

TEST_F(ToolAnswers, StagedFileInUseGivesExitCode3) {
    const fs::path machine = NewMachine();
    fs::copy(Sample("xp"), m_folder / "package", fs::copy_options::recursive);
    const std::string package = " --inf " + (m_folder / "package/aurora.inf").string() + " --model " + kModel;
    WriteHostFile(m_folder / "package/NLMON.DLL", MakePeFile("1.0"));
    ASSERT_EQ(On(machine, "driver add" + package).exitCode, 0);
    WriteHostFile(m_folder / "package/NLMON.DLL", MakePeFile("2.0"));
    const Result stage = On(machine, "--json driver stage --staging 'C:\\work'" + package);
    EXPECT_EQ(stage.exitCode, 3) << stage.errors;
    EXPECT_EQ(json::parse(stage.output)["restartNeeded"], true);
}

TEST_F(ToolAnswers, DriverFileThatIsMissingIsTold) {
    const fs::path machine = Installed();
    for (const auto& entry : fs::recursive_directory_iterator(machine / "C/WINDOWS/system32/spool")) {
        if (entry.path().parent_path().filename() == "3" && entry.path().filename() == "NLAURUI.DLL") {
            EXPECT_TRUE(fs::remove(entry.path()));
            break;
        }
    }
    std::vector<std::string> missing;
    const json found = Json(machine, "machine show");
    for (const json& file : found["drivers"][0]["files"]) {
        if (!file["present"].get<bool>()) {
            missing.push_back(file["path"]);
        }
    }
    EXPECT_THAT(missing, ElementsAre(EndsWith("\\NLAURUI.DLL")));
    EXPECT_THAT(On(machine, "machine show").output, HasSubstr("NLAURUI.DLL  (missing)"));
}

// ---- printers -------------------------------------------------------------------------------------------------------

TEST_F(ToolAnswers, PrinterIsAddedWithItsTexts) {
    const fs::path machine = Installed();
    ASSERT_EQ(On(machine, std::string("printer add Study --driver ") + kModel +
                              " --port LPT2: --comment Stairs --location 'Room 2'")
                  .exitCode,
              0);
    const json printer = Json(machine, "printer show Study");
    EXPECT_EQ(printer["comment"], "Stairs");
    EXPECT_EQ(printer["location"], "Room 2");
    EXPECT_EQ(printer["datatype"], "RAW");
}

TEST_F(ToolAnswers, ConnectionsAreListedAmongThePrinters) {
    const fs::path machine = NewMachine();
    AddKey(machine, "HKEY_LOCAL_MACHINE\\SOFTWARE\\Simulated Network\\Servers\\PRINTSRV\\Laser");
    ASSERT_EQ(On(machine, R"(printer add '\\PRINTSRV\Laser')").exitCode, 0);
    const json printers = Json(machine, "printer list");
    ASSERT_EQ(printers.size(), 1u);
    EXPECT_EQ(printers[0]["name"], "\\\\PRINTSRV\\Laser");
}

TEST_F(ToolAnswers, KeepShareLeavesTheShareOf9x) {
    constexpr char kShareKey[] = "\\Network\\LanMan\\AURORA]";
    for (const bool keeps : {false, true}) {
        fs::remove_all(m_folder / "machine");
        const fs::path machine = Installed("win98", "win98/aurora98.inf");
        ASSERT_EQ(On(machine, "printer set Office --share AURORA").exitCode, 0);
        ASSERT_THAT(RegistryOf(machine), HasSubstr(kShareKey));
        ASSERT_EQ(On(machine, std::string("printer delete Office") + (keeps ? " --keep-share" : "")).exitCode, 0);
        EXPECT_EQ(RegistryOf(machine).find(kShareKey) != std::string::npos, keeps);
    }
}

TEST_F(ToolAnswers, EmptyShareNameEndsTheSharing) {
    constexpr unsigned kShared = 8;
    const fs::path machine = Installed();
    EXPECT_NE(Json(machine, "printer set Office --share AURORA")["attributes"].get<unsigned>() & kShared, 0u);
    EXPECT_EQ(Json(machine, "printer set Office --share ''")["attributes"].get<unsigned>() & kShared, 0u);
}

TEST_F(ToolAnswers, DefaultDevModeIsLeftToTheDriver) {
    const fs::path machine = Installed();
    const fs::path folder = machine / "C/Program Files/pikel";
    fs::create_directories(folder);
    WriteHostFile(folder / "UtilDbg.ini", "[DEBUG]\r\nDEFAULT=ALL\r\n[ALL]\r\nDEBUG=ON\r\nLOG=ON\r\n");
    constexpr char kGiven[] = "Set Parameter DevMode(PRINTER_INFO_2)!!!";
    constexpr char kByDefault[] = "Set Parameter Default DevMode(PRINTER_INFO_2)!!!";
    ASSERT_EQ(On(machine, "printer set Office --comment first").exitCode, 0);
    EXPECT_THAT(ReadHostFile(folder / "UtilDbg.txt"), AllOf(HasSubstr(kGiven), Not(HasSubstr(kByDefault))));
    ASSERT_EQ(On(machine, "printer set Office --comment second --default-devmode").exitCode, 0);
    EXPECT_THAT(ReadHostFile(folder / "UtilDbg.txt"), HasSubstr(kByDefault));
}

TEST_F(ToolAnswers, UninstallFindsTheDriverWhateverTheNamesCase) {
    const json gone = Json(Installed(), "printer uninstall OFFICE");
    EXPECT_EQ(gone["driver"], "Aurora Laser 500");
    EXPECT_FALSE(gone["driverStays"].get<bool>());
}

TEST_F(ToolAnswers, HexadecimalDigitsOfARecordMayBeCapitals) {
    const fs::path machine = Installed();
    json record = Json(machine, "printer export Office");
    std::string mode = record["devMode"];
    ASSERT_THAT(mode, Not(IsEmpty()));
    for (char& digit : mode) {
        digit = static_cast<char>(std::toupper(digit));
    }
    record["devMode"] = mode;
    const Result import = On(machine, "printer import " + Host("capitals.json", record.dump()));
    EXPECT_EQ(import.exitCode, 0) << import.errors;
}

TEST_F(ToolAnswers, TextThatFillsAFieldOfARecordIsRefused) {
    const fs::path machine = Installed("win98", "win98/aurora98.inf");
    json record = Json(machine, "printer export Office");
    record["share"]["name"] = "ABCDEFGHIJKLM";  // 13 bytes: no room for the NUL
    const Result import = On(machine, "printer import " + Host("full.json", record.dump()));
    EXPECT_EQ(import.exitCode, 1);
    EXPECT_THAT(import.errors, HasSubstr("at most 12 characters"));
}

TEST_F(ToolAnswers, BothPasswordsOfAShareAreImported) {
    const fs::path machine = Installed("win98", "win98/aurora98.inf");
    json record = Json(machine, "printer export Office");
    record["shareName"] = "AURORA";
    record["share"]["name"] = "AURORA";
    record["share"]["path"] = "Office";
    record["share"]["type"] = 1;
    record["share"]["readWritePassword"] = "write";
    record["share"]["readOnlyPassword"] = "read";
    const Result import = On(machine, "printer import " + Host("share.json", record.dump()));
    ASSERT_EQ(import.exitCode, 0) << import.errors;
    EXPECT_NE(RegistryOf(machine).find("\"Read Write Password\"=\"write\""), std::string::npos);
    EXPECT_NE(RegistryOf(machine).find("\"Read Only Password\"=\"read\""), std::string::npos);
}

// ---- ports ----------------------------------------------------------------------------------------------------------

TEST_F(ToolAnswers, PortThatIsThereIsTakenWhateverItsCase) {
    const fs::path machine = NewMachine();
    const json installed = Json(
        machine, "install --inf " + Sample("xp/aurora.inf") + " --model " + kModel + " --printer Office --port lpt1:");
    EXPECT_EQ(installed["portCreated"], false);
}

TEST_F(ToolAnswers, PortSdkOfTheHostMustBeThere) {
    const Result result = On(NewMachine(), "port create P1 --sdk " + (m_folder / "sdk.dll").string());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("no such file"));
}

// ---- files and INFs -------------------------------------------------------------------------------------------------

TEST_F(ToolAnswers, MonitorCopyTakesEveryName) {
    const fs::path machine = NewMachine("win98");
    Host("new/one.dll", MakePeFile("2.0"));
    Host("new/two.dll", MakePeFile("3.0"));
    ASSERT_EQ(On(machine, "monitor copy one.dll two.dll --from " + (m_folder / "new").string()).exitCode, 0);
    EXPECT_EQ(ReadHostFile(machine / "C/WINDOWS/SYSTEM/one.dll"), MakePeFile("2.0"));
    EXPECT_EQ(ReadHostFile(machine / "C/WINDOWS/SYSTEM/two.dll"), MakePeFile("3.0"));
}

TEST_F(ToolAnswers, InfOfAnotherClassIsNoneOfPrinters) {
    const std::string inf = Host(
        "net.inf", "[Version]\nSignature=\"$Windows NT$\"\nClass=Net\n[Manufacturer]\n\"M\"=S\n[S]\n\"Model\"=X\n");
    EXPECT_EQ(json::parse(Run("inf show --json " + inf).output, nullptr, false)["isPrinterClass"], false);
}

TEST_F(ToolAnswers, InfIsPlacedByTheSystemUnlessAPlainCopyIsWanted) {
    for (const bool isPlain : {false, true}) {
        fs::remove_all(m_folder / "machine");
        const fs::path machine = NewMachine();
        const fs::path trace = m_folder / (isPlain ? "plain" : "system");
        ASSERT_EQ(On(machine, "--trace " + trace.string() + " inf place --provider Northlight " +
                                  (isPlain ? "--copy " : "") + Sample("xp/aurora.inf"))
                      .exitCode,
                  0);
        EXPECT_EQ(ReadHostFile(trace).find("SetupCopyOEMInfA(") == std::string::npos, isPlain);
    }
}

TEST_F(ToolAnswers, InfIsPlacedInTheFolderThatIsNamed) {
    const fs::path machine = NewMachine();
    fs::create_directory(machine / "C/infs");
    ASSERT_EQ(
        On(machine, "inf place --copy --dir 'C:\\infs' --provider Northlight " + Sample("xp/aurora.inf")).exitCode, 0);
    EXPECT_TRUE(fs::exists(machine / "C/infs/oem0.inf"));
}

TEST_F(ToolAnswers, NamedSystemCountsMoreThanTheMachine) {
    const fs::path machine = NewMachine("xp");
    const json record =
        Json(machine, std::string("inf show --for xp-x64 --model ") + kModel + " " + Sample("xp/aurora.inf"));
    EXPECT_EQ(record[0]["environment"], "Windows x64");
}

// ---- machines -------------------------------------------------------------------------------------------------------

TEST_F(ToolAnswers, NamedMachineCountsMoreThanTheVariable) {
    const fs::path other = NewMachine("nt4", "other");
    const fs::path machine = NewMachine("xp", "named");
    setenv("PIKEL_MACHINE", other.c_str(), 1);
    EXPECT_EQ(Json(machine, "machine show")["system"]["name"], "xp");
    EXPECT_EQ(json::parse(Run("machine show --json").output)["system"]["name"], "nt4");
    EXPECT_THAT(On(machine, "port create P1").exitCode, 0);
    EXPECT_THAT(RegistryOf(machine), HasSubstr("\\Ports\\P1]"));
    EXPECT_THAT(RegistryOf(other), Not(HasSubstr("\\Ports\\P1]")));
}

TEST_F(ToolAnswers, VersionOf9xLeavesOutWhatItsBuildNumberRepeats) {
    EXPECT_EQ(Json(NewMachine("win98"), "machine show")["system"]["version"], "4.10.2222");
}

// ---- network, shell -------------------------------------------------------------------------------------------------

TEST_F(ToolAnswers, NetworkIsShownAsDeepAsWanted) {
    const fs::path machine = NewMachine();
    AddKey(machine, "HKEY_LOCAL_MACHINE\\SOFTWARE\\Simulated Network\\Servers\\PRINTSRV\\Laser");
    for (const json& node : Json(machine, "net browse")) {
        EXPECT_FALSE(node.contains("children")) << node;
    }
    bool hasChildren = false;
    for (const json& node : Json(machine, "net browse --depth 2")) {
        hasChildren |= node.contains("children");
        for (const json& child : node.value("children", json::array())) {
            EXPECT_FALSE(child.contains("children")) << child;
        }
    }
    EXPECT_TRUE(hasChildren);
}

TEST_F(ToolAnswers, ShortcutsNameThatEndsInItsExtensionStays) {
    EXPECT_EQ(On(NewMachine(), R"(shortcut create STATUS.LNK --folder Aurora --target 'C:\status.exe')").output,
              "created shortcut Aurora\\STATUS.LNK\n");
}

// ---- failures -------------------------------------------------------------------------------------------------------

TEST_F(ToolAnswers, CodesOfTheSetupApiKeepTheirHighBits) {
    const Result result = Run("--json inf models " + Host("text.inf", "text ahead of any section\n[Version]\n"));
    EXPECT_EQ(result.exitCode, 1);
    const std::string output = result.output.substr(result.output.find("{"));
    const json error = json::parse(output, nullptr, false)["error"];
    EXPECT_EQ(error["code"], 0xE0000000u);
    EXPECT_EQ(error["name"], "ERROR_EXPECTED_SECTION_NAME");
    EXPECT_EQ(error["hint"], "the file has text before its first section; is it an INF?");
}

TEST_F(ToolAnswers, TextOfAFailureHasNoLineEnd) {
    const Result result = On(NewMachine(), "--json printer show Nobody");
    EXPECT_EQ(json::parse(result.output)["error"]["text"], "The printer name is invalid.");
    EXPECT_THAT(result.errors, AllOf(Not(HasSubstr("\r")), Not(HasSubstr("\n\n"))));
}

TEST_F(ToolAnswers, HintIsThatOfTheOperation) {
    // Codes that another operation has a hint of its own for.
    const Result missing = Run("file version " + Host("plain.dll", "plain"));
    EXPECT_THAT(missing.errors, Not(HasSubstr("pikel inf models")));
    const Result noModel = On(NewMachine(), "printui run ''");
    EXPECT_THAT(noModel.errors, Not(HasSubstr("at most 20 characters")));
}

}  // namespace
}  // namespace pikel::testing_support
