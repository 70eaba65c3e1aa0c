// Copies of language monitors' DLLs, by routine and by table row.
#include "driver/monitor_file.h"

#include "frame/pikel.h"
#include "machine/system/restart.h"
#include "machine/services/services.h"
#include "support/calls.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kSource[] = "C:\\new";

class MonitorFileTest : public MachineTest {
  protected:
    explicit MonitorFileTest(std::string_view system) : MachineTest(system) {}
    std::string Target(const std::string& name) { return Machine().System().systemDirectory + "\\" + name; }
    void PutSource(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), std::string(kSource) + "\\" + name, MakePeFile(version));
    }
    void PutTarget(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), Target(name), MakePeFile(version));
    }
    bool IsOf(const std::string& name, const std::string& version) {
        return Machine().Files().Read(Target(name)) == MakePeFile(version);
    }
    DWORD Copy(const char* list) { return DoCopyMointorFile(kSource, list, &m_reboot); }
    /// Puts a.dll, which the system lacks, b.dll, which it has newer, and c.dll, which it has older.
    void PutOneOfEach() {
        PutSource("a.dll", "1.0");
        PutSource("b.dll", "1.0");
        PutTarget("b.dll", "1.1");
        PutSource("c.dll", "2.0");
        PutTarget("c.dll", "1.0");
    }
    /// Lines of one routine, without its name.
    std::vector<std::string> TakeLogOf(const std::string& routine) {
        std::vector<std::string> lines;
        for (const std::string& line : Test().TakeLog()) {
            if (line.starts_with(routine + " ")) {
                lines.push_back(line.substr(routine.size() + 1));
            }
        }
        return lines;
    }

    DWORD m_reboot = 7;
};

// ---- the list -------------------------------------------------------------------------------------------------------

class MonitorFileList : public MonitorFileTest {
  protected:
    MonitorFileList() : MonitorFileTest("xp") {}
};

TEST_F(MonitorFileList, ListIsTakenApartAtSlashes) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"", {}}, {"a.dll/", {"a.dll"}}, {"a/b/", {"a", "b"}}, {"/a//", {"", "a", ""}}, {"a/b", {"a"}}};
    for (const auto& [list, items] : cases) {
        StringList out;
        AnalyzeParameter(list, out);
        EXPECT_EQ(std::vector<std::string>(out.begin(), out.end()), items) << list;
    }
    Test().TurnLogOn();
    StringList out;
    AnalyzeParameter("a.dll/b.dll/", out);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("AnalyzeParameter Start", "AnalyzeParameter Monitor is a.dll",
                            "AnalyzeParameter Monitor List is b.dll/", "AnalyzeParameter Monitor is b.dll",
                            "AnalyzeParameter Monitor List is ", "AnalyzeParameter End"));
}

TEST_F(MonitorFileList, BadArgumentsAreRefusedBeforeAnyFileIsTouched) {
    PutSource("a.dll", "2.0");
    ForgetCalls(Test());
    for (const char* list : {"a.dll", "a.dll/b.dll", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Copy(list), DWORD{ERROR_INVALID_PARAMETER});
    }
    EXPECT_EQ(DoCopyMointorFile(nullptr, "a.dll/", &m_reboot), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
    EXPECT_EQ(m_reboot, 7u);
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    Test().TurnLogOn();
    EXPECT_EQ(table.PI_KEL_CopyMonitorFile(nullptr, "a/", &m_reboot), 0x901b0057u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_CopyMonitorFile Start", "DoCopyMointorFile Start",
                                              "PI_KEL_CopyMonitorFile End:(0x901b0057)", ""));
}

TEST_F(MonitorFileList, FlagIsOptional) {
    PutSource("a.dll", "2.0");
    EXPECT_EQ(DoCopyMointorFile(kSource, "a.dll/", nullptr), 0u);
    EXPECT_TRUE(IsOf("a.dll", "2.0"));
}

// ---- every row ------------------------------------------------------------------------------------------------------

class MonitorFileOnEverySystem : public EverySystemTest {};

TEST_P(MonitorFileOnEverySystem, MissingFilesAreCopiedByTheRoutineOfTheFamily) {
    WriteFileOn(Machine(), "C:\\new\\a.dll", "a");
    WriteFileOn(Machine(), "C:\\new\\b.dll", "b");
    const std::string routine = Machine().Is9x() ? "CopyMonitorFile9x" : "CopyMonitorFileNT";
    Test().TurnLogOn();
    DWORD reboot = 1;
    EXPECT_EQ(DoCopyMointorFile("C:\\new\\", "a.dll/b.dll/", &reboot), 0u);
    EXPECT_EQ(reboot, 0u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, Contains(routine + " Start"));
    EXPECT_THAT(log, Contains(routine + " End(0)"));
    EXPECT_EQ(log.front(), "DoCopyMointorFile Start");
    EXPECT_EQ(log[1], "DoCopyMointorFile(C:\\new\\) Start");
    EXPECT_EQ(log.back(), "DoCopyMointorFile End(0)");
    EXPECT_EQ(ReadFileOn(Machine(), Machine().System().systemDirectory + "\\a.dll"), "a");
    EXPECT_EQ(ReadFileOn(Machine(), Machine().System().systemDirectory + "\\b.dll"), "b");
}

TEST_P(MonitorFileOnEverySystem, EmptyListSucceedsWithoutACopy) {
    ForgetCalls(Test());
    DWORD reboot = 1;
    EXPECT_EQ(DoCopyMointorFile("C:\\new", "", &reboot), 0u);
    EXPECT_EQ(reboot, 0u);
    EXPECT_THAT(Test().TakeCallNames(), Not(Contains("CopyFileA")));
}

TEST_P(MonitorFileOnEverySystem, SystemDirectoryThatIsNotToldOrTooLongEndsItWithoutACopy) {
    WriteFileOn(Machine(), "C:\\new\\a.dll", "a");
    ForgetCalls(Test());
    DWORD reboot = 1;
    faults::FailCall("GetSystemDirectoryA", 1, 5);
    EXPECT_EQ(DoCopyMointorFile("C:\\new", "a.dll/", &reboot), 5u);
    faults::FailCall("GetSystemDirectoryA", 1, 0);
    EXPECT_EQ(DoCopyMointorFile("C:\\new", "a.dll/", &reboot), DWORD{ERROR_INTERNAL_ERROR})
        << "a failure without a code is a failure all the same";
    ReplacedOperations replaced;
    replaced.table.GetSystemDirectoryA = [](LPSTR, UINT) -> UINT { return 260; };
    Test().TurnLogOn();
    EXPECT_EQ(DoCopyMointorFile("C:\\new", "a.dll/", &reboot), DWORD{ERROR_FILENAME_EXCED_RANGE});
    EXPECT_EQ(Test().TakeLog().back(), "DoCopyMointorFile End(206)");
    EXPECT_EQ(reboot, 0u);
    EXPECT_THAT(Test().TakeCallNames({"CopyFileA"}), IsEmpty());
}

INSTANTIATE_ON_EVERY_SYSTEM(MonitorFileOnEverySystem);

// ---- the 9x family --------------------------------------------------------------------------------------------------

class MonitorFile9x : public MonitorFileTest {
  protected:
    MonitorFile9x() : MonitorFileTest("win98") {}
};

TEST_F(MonitorFile9x, NewerFileReplacesOneThatNobodyHolds) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.9");
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("CheckUseMonitorFile File=C:\\WINDOWS\\SYSTEM\\a.dll"));
    EXPECT_TRUE(IsOf("a.dll", "2.0"));
    EXPECT_EQ(m_reboot, 0u);
}

TEST_F(MonitorFile9x, LogTellsOfEveryFileAtDetailLevel) {
    PutOneOfEach();
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/b.dll/c.dll/"), 0u);
    EXPECT_THAT(TakeLogOf("CopyMonitorFile9x"),
                ElementsAre("Start", "lpszFilePath C:\\new", "lpszFileList a.dll/b.dll/c.dll/", "Monitor is a.dll",
                            "SrcFilePath:C:\\new\\a.dll", "DstFilePath:C:\\WINDOWS\\SYSTEM\\a.dll",
                            "Monitor is Not Found", "Monitor is b.dll", "SrcFilePath:C:\\new\\b.dll",
                            "DstFilePath:C:\\WINDOWS\\SYSTEM\\b.dll", "Monitor is Found", "Next File",
                            "Monitor is c.dll", "SrcFilePath:C:\\new\\c.dll", "DstFilePath:C:\\WINDOWS\\SYSTEM\\c.dll",
                            "Monitor is Found", "Monitor is not use", "CopyFile() srcPath is C:\\new\\c.dll",
                            "CopyFile() dstPath is C:\\WINDOWS\\SYSTEM\\c.dll", "End(0)"));
    PutTarget("c.dll", "1.0");
    faults::FailCall("WritePrivateProfileStringA", 1, 5);
    const auto held = Machine().Files().HoldOpen(Target("c.dll"), FILE_SHARE_READ);
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy("c.dll/"), 5u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoCopyMointorFile(C:\\new) Start"));
}

TEST_F(MonitorFile9x, OlderOrEqualFileIsPassedOver) {
    PutSource("a.dll", "1.0");
    PutSource("b.dll", "1.0");
    PutTarget("a.dll", "1.1");
    PutTarget("b.dll", "1.0");
    Machine().Files().SetWrittenAt("C:\\new\\b.dll", {0, 30000000});
    Machine().Files().SetWrittenAt(Target("b.dll"), {0, 30000000});
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/b.dll/"), 0u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), "CopyMonitorFile9x Next File"), 2);
    EXPECT_TRUE(IsOf("a.dll", "1.1"));
}

TEST_F(MonitorFile9x, HeldFileWaitsForTheNextStart) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.0");
    Test().TurnLogOn();
    {
        const auto held = Machine().Files().HoldOpen(Target("a.dll"), FILE_SHARE_READ);
        EXPECT_EQ(Copy("a.dll/"), 0u);
    }
    EXPECT_THAT(Test().TakeLog(), Contains("CopyMonitorFile9x Monitor is use"));
    EXPECT_EQ(m_reboot, 1u);
    EXPECT_TRUE(IsOf("a.dll", "1.0"));
    simulated::Restart(Machine());
    EXPECT_TRUE(IsOf("a.dll", "2.0"));
}

TEST_F(MonitorFile9x, FailedCopyIsLeftToTheNextStart) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.0");
    faults::FailCall("CopyFileA", 1, 5);
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("CopyMonitorFile9x CopyFile() Error Code is 5"));
    EXPECT_EQ(m_reboot, 1u);
}

TEST_F(MonitorFile9x, DelayThatCanNotBeSetUpEndsTheWalk) {
    PutSource("a.dll", "2.0");
    PutSource("b.dll", "2.0");
    PutTarget("a.dll", "1.0");
    faults::FailCall("WritePrivateProfileStringA", 1, 5);
    const auto held = Machine().Files().HoldOpen(Target("a.dll"), FILE_SHARE_READ);
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/b.dll/"), 5u);
    EXPECT_THAT(Test().TakeLog(), Contains("CopyMonitorFile9x RenameFileAndRegister9x() Error Code is 5"));
    EXPECT_EQ(m_reboot, 1u);
    EXPECT_FALSE(Machine().Files().Exists(Target("b.dll")));
}

TEST_F(MonitorFile9x, MissingFileThatCanNotBeCopiedEndsTheWalk) {
    PutSource("a.dll", "2.0");
    PutSource("c.dll", "2.0");
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/b.dll/c.dll/"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(Test().TakeLog(),
                ::testing::IsSupersetOf({"CopyMonitorFile9x Monitor is Not Found",
                                         "CopyMonitorFile9x CopyFile() Error Code is 2", "CopyMonitorFile9x End(2)"}));
    EXPECT_TRUE(IsOf("a.dll", "2.0"));
    EXPECT_FALSE(Machine().Files().Exists(Target("c.dll")));
}

TEST_F(MonitorFile9x, PathsBeyond259BytesAreTooLong) {
    const std::string directory = Machine().System().systemDirectory + "\\";
    for (std::size_t length : {259u, 260u, 261u}) {
        const std::string name(length - directory.size(), 'x');
        WriteFileOn(Machine(), "C:\\n\\" + name.substr(0, 200), "x");
        const DWORD code = DoCopyMointorFile("C:\\n", (name + "/").c_str(), &m_reboot);
        EXPECT_EQ(code, length == 259 ? DWORD{ERROR_FILE_NOT_FOUND} : DWORD{206}) << length;
    }
}

// ---- the NT family --------------------------------------------------------------------------------------------------

class MonitorFileNT : public MonitorFileTest {
  protected:
    MonitorFileNT() : MonitorFileTest("win2000") {}
};

const std::vector<std::string> kServiceCalls = {"OpenServiceA", "ControlService", "StartServiceA",
                                                "CopyFileA",    "Sleep",          "SetFileAttributesA"};

TEST_F(MonitorFileNT, UpToDateFilesLeaveTheSpoolerAlone) {
    PutSource("a.dll", "1.0");
    PutTarget("a.dll", "1.1");
    ForgetCalls(Test());
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(Test().TakeCallNames(kServiceCalls), IsEmpty());
    EXPECT_EQ(m_reboot, 0u);
}

TEST_F(MonitorFileNT, SpoolerIsStoppedOnceForAllReplacements) {
    for (const char* name : {"a.dll", "b.dll"}) {
        PutSource(name, "2.0");
        PutTarget(name, "1.0");
        Machine().Files().SetAttributes(Target(name), FILE_ATTRIBUTE_READONLY);
    }
    ForgetCalls(Test());
    EXPECT_EQ(Copy("a.dll/b.dll/"), 0u);
    const std::vector<std::string> calls = Test().TakeCallNames({"ControlService", "StartServiceA", "CopyFileA"});
    // First the spooler and what depends on it stop, then both files are copied, then all start again.
    const std::vector<std::string> copies(2, "CopyFileA");
    const auto firstCopy = std::search(calls.begin(), calls.end(), copies.begin(), copies.end());
    ASSERT_NE(firstCopy, calls.end());
    EXPECT_THAT(std::vector<std::string>(calls.begin(), firstCopy), Each("ControlService"));
    EXPECT_THAT(std::vector<std::string>(firstCopy + 2, calls.end()), Each("StartServiceA"));
    EXPECT_EQ(calls.back(), "StartServiceA");
    EXPECT_TRUE(IsOf("a.dll", "2.0"));
    EXPECT_TRUE(IsOf("b.dll", "2.0"));
    EXPECT_EQ(m_reboot, 0u);
}

TEST_F(MonitorFileNT, LockedFileIsTriedAHundredTimes) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.0");
    const auto held = Machine().Files().HoldOpen(Target("a.dll"), FILE_SHARE_READ);
    ForgetCalls(Test());
    EXPECT_EQ(Copy("a.dll/"), DWORD{ERROR_SHARING_VIOLATION});
    std::vector<std::string> calls = TakeCallsOf(Test(), {"CopyFileA", "Sleep", "StartServiceA"});
    calls.erase(calls.begin(), std::find_if(calls.begin(), calls.end(),
                                            [](const std::string& call) { return call.starts_with("CopyFileA("); }));
    ASSERT_GT(calls.size(), 200u);
    for (std::size_t i = 0; i < 200; i += 2) {
        EXPECT_THAT(calls[i], StartsWith("CopyFileA("));
        EXPECT_EQ(calls[i + 1], "Sleep(0x64)");
    }
    calls.erase(calls.begin(), calls.begin() + 200);
    EXPECT_THAT(calls, Not(Contains(StartsWith("CopyFileA("))));
    EXPECT_THAT(calls, Contains(StartsWith("StartServiceA("))) << "the spooler runs again";
    EXPECT_TRUE(IsOf("a.dll", "1.0"));
    EXPECT_EQ(m_reboot, 0u);
}

TEST_F(MonitorFileNT, LogTellsOfEveryFile) {
    PutOneOfEach();
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/b.dll/c.dll/"), 0u);
    EXPECT_THAT(TakeLogOf("CopyMonitorFileNT"),
                ElementsAre("Start", "lpszFilePath C:\\new", "lpszFileList a.dll/b.dll/c.dll/", "Monitor is Not Found",
                            "CopyFile() SrcPath:C:\\new\\a.dll", "CopyFile() DstPath:C:\\WINNT\\system32\\a.dll",
                            "Monitor is Found", "Next File", "Monitor is Found",
                            "Read Only cancellation:C:\\WINNT\\system32\\c.dll", "CopyFile() SrcPath:C:\\new\\c.dll",
                            "CopyFile() DstPath:C:\\WINNT\\system32\\c.dll", "End(0)"));
}

TEST_F(MonitorFileNT, ServiceIsClosedBehindTheLastLine) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.0");
    Test().TurnLogOn();
    ForgetCalls(Test());
    EXPECT_EQ(Copy("a.dll/"), 0u);
    const std::vector<std::string> calls = Test().TakeCallNames({"WriteFile", "CloseServiceHandle"});
    ASSERT_GE(calls.size(), 4u);
    EXPECT_THAT(std::vector<std::string>(calls.end() - 4, calls.end()),
                ElementsAre("WriteFile", "CloseServiceHandle", "CloseServiceHandle", "WriteFile"))
        << "between the ends of the routine and of the operation";
}

TEST_F(MonitorFileNT, OlderFileKeepsItsArchiveAttributeAlone) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.0");
    Machine().Files().SetAttributes(Target("a.dll"), FILE_ATTRIBUTE_READONLY);
    ForgetCalls(Test());
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetFileAttributesA"}),
                ElementsAre("SetFileAttributesA(\"C:\\\\WINNT\\\\system32\\\\a.dll\", 0x20) = 0x1"));
}

TEST_F(MonitorFileNT, MissingFileIsCopiedOnceWhateverComesOfIt) {
    PutSource("a.dll", "1.0");
    ForgetCalls(Test());
    faults::FailCall("CopyFileA", 1, ERROR_SHARING_VIOLATION);
    EXPECT_EQ(Copy("a.dll/"), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_THAT(Test().TakeCallNames(kServiceCalls), ElementsAre("CopyFileA"));
    EXPECT_EQ(m_reboot, 0u);
}

TEST_F(MonitorFileNT, StopThatFailsIsTriedAgainForTheNextFileAndNothingIsStarted) {
    for (const char* name : {"a.dll", "b.dll"}) {
        PutSource(name, "2.0");
        PutTarget(name, "1.0");
    }
    ForgetCalls(Test());
    faults::FailCall("EnumDependentServicesA", 1, 5, true);
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy("a.dll/b.dll/"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoCopyMointorFile(C:\\new) Start", "Service(Spooler).Stop Error(5)",
                                              "Service(Spooler).Stop Error(5)"));
    EXPECT_THAT(Test().TakeCallNames({"CopyFileA", "OpenServiceA", "StartServiceA"}),
                ElementsAre("OpenServiceA", "CopyFileA", "OpenServiceA", "CopyFileA"));
    EXPECT_TRUE(IsOf("b.dll", "2.0"));
    EXPECT_EQ(m_reboot, 0u);
}

TEST_F(MonitorFileNT, ResultSpeaksForTheTailOfTheWalk) {
    PutSource("b.dll", "1.0");
    PutTarget("b.dll", "1.1");
    PutSource("c.dll", "1.0");
    EXPECT_EQ(Copy("a.dll/"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Copy("a.dll/c.dll/"), DWORD{ERROR_FILE_NOT_FOUND}) << "a file that is merely copied leaves it alone";
    EXPECT_TRUE(IsOf("c.dll", "1.0"));
    EXPECT_EQ(Copy("a.dll/b.dll/"), 0u) << "a file that is compared clears it";
}

TEST_F(MonitorFileNT, SpoolerThatDoesNotStopIsLoggedAlone) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.0");
    faults::FailCall("OpenSCManagerA", 1, 5);
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("Service(Spooler).Stop Error(5)"));
    EXPECT_TRUE(IsOf("a.dll", "2.0"));
}

TEST_F(MonitorFileNT, SpoolerThatDoesNotStartIsLoggedAlone) {
    PutSource("a.dll", "2.0");
    PutTarget("a.dll", "1.0");
    faults::FailCall("StartServiceA", 1, 1056);
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("Service(Spooler).Start Error(1056)"));
    faults::Reset();
    PutTarget("a.dll", "1.0");
    faults::FailCall("OpenSCManagerA", 2, 5);
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("Service(Spooler).Open Error(5)"));
}

TEST_F(MonitorFileNT, MissingSourceComparesAsNewerAndFails) {
    PutSource("b.dll", "1.0");
    PutTarget("a.dll", "1.0");
    EXPECT_EQ(Copy("a.dll/"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_TRUE(IsOf("a.dll", "1.0"));
    EXPECT_EQ(m_reboot, 0u);
}

}  // namespace
}  // namespace pikel
