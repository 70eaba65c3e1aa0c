// The staged copy of a driver's files: what is staged, what is replaced and when.
#include "deploy/staged_copy.h"

#include "frame/pikel.h"
#include "platform/simulated/restart.h"
#include "printer_inf.h"
#include "support/calls.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kStaging[] = "C:\\staging";

class StagedCopyTest : public MachineTest {
  protected:
    StagedCopyTest() { Begin("xp"); }
    void Begin(const std::string& system) {
        Start(system);
        PutAuroraPackage(Machine());
        ForgetCalls(Test());
    }
    static const PI_KEL_Interface& Table() { return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION); }
    PiStatus Copy(const char* model = "Aurora Plain", DWORD mode = 2) {
        return Table().PI_KEL_CopyInfDriverFilesEx(kAuroraPath, model, mode, &m_restart, kStaging, 3, 5, 1);
    }
    std::string Drivers() { return "C:\\WINDOWS\\system32\\spool\\drivers\\W32X86\\"; }
    void PutSource(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), std::string(kPackageFolder) + "\\" + name, MakePeFile(version));
    }
    void PutInstalled(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), Drivers() + "3\\" + name, MakePeFile(version));
    }
    bool IsOf(const std::string& path, const std::string& version) {
        return Machine().Files().Read(path) == MakePeFile(version);
    }
    std::vector<simulated::FileEntry> Staged() { return Machine().Files().List(kStaging); }

    DWORD m_restart = 77;
};

class StagedCopy : public StagedCopyTest {};

TEST_F(StagedCopy, PlacesFreeFilesAtOnceAndEmptiesItsFolder) {
    PutSource("NLPLAIN.DLL", "2.0");
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 0u);
    EXPECT_EQ(m_restart, 0u);
    EXPECT_TRUE(IsOf(Drivers() + "NLPLAIN.DLL", "2.0"));
    EXPECT_TRUE(Machine().Files().IsDirectory(kStaging));
    EXPECT_THAT(Staged(), IsEmpty());
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_EQ(log.front(), "PI_KEL_CopyInfDriverFilesToLocal Start") << "the start line of the local copy";
    EXPECT_EQ(log[log.size() - 2], "PI_KEL_CopyInfDriverFilesEx End:(0x00000000)");
    EXPECT_THAT(log, Contains("DoCopyInfDriverFilesEx Start"));
    EXPECT_THAT(log, Contains("[unlock] " + Drivers() + "3\\NLPLAIN.DLL"));
    EXPECT_THAT(log, Contains("::CopyFile( C:\\staging\\NLPLAIN.DLL, " + Drivers() + "NLPLAIN.DLL, FALSE );"));
    EXPECT_THAT(log, Contains("DoCopyInfDriverFilesEx End(0)"));
}

TEST_F(StagedCopy, LockedOlderFileIsReplacedAtTheNextStart) {
    PutSource("NLPLAIN.DLL", "2.0");
    PutInstalled("NLPLAIN.DLL", "1.0");
    Test().TurnLogOn();
    {
        const auto held = Machine().Files().HoldOpen(Drivers() + "3\\NLPLAIN.DLL", FILE_SHARE_READ);
        EXPECT_EQ(Copy(), 0u);
    }
    EXPECT_EQ(m_restart, 1u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, Contains("[lock] " + Drivers() + "3\\NLPLAIN.DLL"));
    EXPECT_THAT(log, Contains("::SetupInstallFileEx( NLPLAIN.DLL, C:\\staging\\, " + Drivers() + "NLPLAIN.DLL );"));
    EXPECT_THAT(Staged(), IsEmpty());
    simulated::Restart(Machine());
    EXPECT_TRUE(IsOf(Drivers() + "NLPLAIN.DLL", "2.0"));
}

TEST_F(StagedCopy, LockedFileThatIsAsNewNeedsNoRestart) {
    for (const char* installed : {"2.0", "3.0"}) {
        Begin("xp");
        PutSource("NLPLAIN.DLL", "2.0");
        PutInstalled("NLPLAIN.DLL", installed);
        Machine().Files().SetWrittenAt(std::string(kPackageFolder) + "\\NLPLAIN.DLL", {0, 30000000});
        Machine().Files().SetWrittenAt(Drivers() + "3\\NLPLAIN.DLL", {0, 30000000});
        Test().TurnLogOn();
        const auto held = Machine().Files().HoldOpen(Drivers() + "3\\NLPLAIN.DLL", FILE_SHARE_READ);
        EXPECT_EQ(Copy(), 0u);
        EXPECT_EQ(m_restart, 0u);
        EXPECT_THAT(Test().TakeLog(), Contains("[(un)lock] " + Drivers() + "3\\NLPLAIN.DLL"));
    }
}

TEST_F(StagedCopy, NewerInstalledFileIsTheOneThatIsPlaced) {
    PutSource("NLPLAIN.DLL", "1.0");
    PutInstalled("NLPLAIN.DLL", "3.0");
    EXPECT_EQ(Copy(), 0u);
    EXPECT_TRUE(IsOf(Drivers() + "NLPLAIN.DLL", "3.0"));
}

TEST_F(StagedCopy, CopyBackThatFailsStopsTheStagingAlone) {
    PutSource("NLAURORA.DLL", "1.0");
    PutInstalled("NLAURORA.DLL", "3.0");
    faults::FailCall("CopyFileA", 2, 5);  // the first one is the INF's
    EXPECT_EQ(Copy("Aurora 500"), 0u) << "what was staged is placed, and that code counts";
    EXPECT_TRUE(IsOf(Drivers() + "NLAURORA.DLL", "1.0"));
    EXPECT_FALSE(Machine().Files().Exists(Drivers() + "A500.GPD"));
}

TEST_F(StagedCopy, MissingSourceFilesArePassedOver) {
    Machine().Files().Delete(std::string(kPackageFolder) + "\\NLAURORA.DLL");
    EXPECT_EQ(Copy("Aurora 500"), 0u);
    EXPECT_FALSE(Machine().Files().Exists(Drivers() + "NLAURORA.DLL"));
    EXPECT_EQ(ReadFileOn(Machine(), Drivers() + "A500.GPD"), "A500.GPD");
}

TEST_F(StagedCopy, ModeTellsHowRenamedFilesEnter) {
    const struct {
        DWORD mode;
        bool asSource;
        bool asDestination;
    } cases[] = {{0, false, false}, {1, true, false}, {2, false, true}, {3, true, true}};
    for (const auto& one : cases) {
        Begin("xp");
        EXPECT_EQ(Copy("Aurora 500", one.mode), 0u);
        EXPECT_EQ(Machine().Files().Exists(Drivers() + "NLRES_DE.DLL"), one.asSource) << one.mode;
        EXPECT_EQ(Machine().Files().Exists(Drivers() + "NLLOCAL.DLL"), one.asDestination) << one.mode;
    }
}

TEST_F(StagedCopy, CatalogIsStagedAndNeverPlaced) {
    std::string inf = kAuroraInf;
    inf.replace(inf.find("Class=Printer"), 13, "Class=Printer\nCatalogFile=aurora.cat");
    WriteFileOn(Machine(), kAuroraPath, inf);
    WriteFileOn(Machine(), "C:\\Package\\aurora.cat", "catalog");
    ForgetCalls(Test());
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupDecompressOrCopyFileA"}), Contains(::testing::HasSubstr("aurora.cat")));
    EXPECT_FALSE(Machine().Files().Exists(Drivers() + "aurora.cat"));
    EXPECT_THAT(Staged(), IsEmpty());
}

TEST_F(StagedCopy, FolderBelongsToTheOperation) {
    WriteFileOn(Machine(), "C:\\staging\\mine.txt", "x");
    WriteFileOn(Machine(), "C:\\staging\\locked.txt", "x");
    WriteFileOn(Machine(), "C:\\staging\\sub\\kept.txt", "x");
    Machine().Files().SetAttributes("C:\\staging\\locked.txt", FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Copy(), 0u);
    EXPECT_EQ(Staged().size(), 1u);
    EXPECT_TRUE(Machine().Files().Exists("C:\\staging\\sub\\kept.txt"));
}

TEST_F(StagedCopy, FolderThatCanNotBeMadeEndsItWithoutAnEndLine) {
    Test().TurnLogOn();
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, "C:\\no\\such", 3, 3, 5, 1),
              DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoCopyInfDriverFilesEx Start"));
    EXPECT_EQ(m_restart, 77u);
}

TEST_F(StagedCopy, UnreadableModelEmptiesTheFolderToo) {
    WriteFileOn(Machine(), "C:\\staging\\mine.txt", "x");
    EXPECT_EQ(Copy("Nobody"), 0x901b0000u | 1359u);
    EXPECT_THAT(Staged(), IsEmpty());
    EXPECT_EQ(m_restart, 0u);
}

TEST_F(StagedCopy, ArgumentsAreRequired) {
    EXPECT_EQ(Copy("Aurora Plain", 4), 0x901b0057u);
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kAuroraPath, "x", 2, nullptr, kStaging, 3, 5, 1), 0x901b0057u);
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kAuroraPath, nullptr, 2, &m_restart, kStaging, 3, 5, 1), 0x901b0057u);
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kAuroraPath, "x", 2, &m_restart, nullptr, 3, 5, 1), 0x901b0057u);
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(nullptr, "x", 2, &m_restart, kStaging, 3, 5, 1), 0x901b0057u);
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx("C:\\none.inf", "x", 2, &m_restart, kStaging, 3, 5, 1), 0x901b0002u);
    EXPECT_FALSE(Machine().Files().Exists(kStaging));
}

TEST_F(StagedCopy, ReplacementThatCanNotBeArrangedIsTheResult) {
    PutSource("NLPLAIN.DLL", "2.0");
    PutInstalled("NLPLAIN.DLL", "1.0");
    const auto held = Machine().Files().HoldOpen(Drivers() + "3\\NLPLAIN.DLL", FILE_SHARE_READ);
    faults::FailCall("SetupInstallFileExA", 1, 4242);
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 0x901b0000u | 4242u);
    EXPECT_THAT(Test().TakeLog(), Contains("SetupInstallFileEx Error:4242"));
    EXPECT_EQ(m_restart, 1u);
}

TEST_F(StagedCopy, ForeignDriverIsNeverLockedAndGoesToItsOwnFolder) {
    const std::string folder = "C:\\WINDOWS\\system32\\spool\\drivers\\x64\\";
    const auto held = Machine().Files().HoldOpen(folder + "3\\NLA500A.ICC", FILE_SHARE_READ);
    WriteFileOn(Machine(), folder + "3\\NLAURORA.DLL", MakePeFile("0.1"));
    PutSource("NLAURORA.DLL", "2.0");
    const auto locked = Machine().Files().HoldOpen(folder + "3\\NLAURORA.DLL", FILE_SHARE_READ);
    Test().TurnLogOn();
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "Aurora 500", 2, &m_restart, kStaging, 5, 3, 5, 1), 0u);
    EXPECT_EQ(m_restart, 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("[unlock] " + folder + "3\\NLAURORA.DLL"));
    EXPECT_TRUE(IsOf(folder + "NLAURORA.DLL", "2.0"));
    EXPECT_EQ(ReadFileOn(Machine(), folder + "NLA500A.ICC"), "NLA500A.ICC") << "whatever its directory id says";
}

TEST_F(StagedCopy, ArchitectureGivesTheVersionFolder) {
    const std::pair<DWORD, const char*> cases[] = {
        {1, "WIN40\\0\\"}, {2, "W32X86\\2\\"}, {3, "W32X86\\3\\"}, {4, "ia64\\3\\"}, {5, "x64\\3\\"}};
    for (const auto& [architecture, folder] : cases) {
        Begin("xp");
        Test().TurnLogOn();
        EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, architecture, 3, 5, 1),
                  0u);
        const std::string end = std::string(folder) + "NLPLAIN.DLL";
        bool isFound = false;
        for (const std::string& line : Test().TakeLog()) {
            isFound |= line.starts_with("[unlock] ") && line.size() > end.size() &&
                       simulated::EqualNoCase(line.substr(line.size() - end.size()), end);
        }
        EXPECT_TRUE(isFound) << architecture;
    }
}

TEST_F(StagedCopy, UnknownArchitectureStagesNothing) {
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, 9, 3, 5, 1), 0u);
    EXPECT_FALSE(Machine().Files().Exists(Drivers() + "NLPLAIN.DLL"));
}

TEST_F(StagedCopy, NineXFilesLieWithoutAVersionFolder) {
    Begin("win98");
    Test().TurnLogOn();
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, 1, 4, 0), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("[unlock] C:\\WINDOWS\\SYSTEM\\NLPLAIN.DRV"));
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\SYSTEM\\NLPLAIN.DRV"), "NLPLAIN.DRV");
}

TEST_F(StagedCopy, MonitorOfNt4LandsTwice) {
    Begin("nt4");
    std::string inf = kAuroraInf;
    inf.replace(inf.find("[PLAIN]\nCopyFiles=PLAIN.Files"), 29,
                "[PLAIN]\nCopyFiles=PLAIN.Files\nLanguageMonitor=\"M,NLPLAIN.DLL\"");
    WriteFileOn(Machine(), kAuroraPath, inf);
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, 2, 3, 4, 0), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINNT\\system32\\NLPLAIN.DLL"), "NLPLAIN.DLL");
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINNT\\system32\\spool\\drivers\\W32X86\\NLPLAIN.DLL"), "NLPLAIN.DLL");
}

TEST_F(StagedCopy, OrderOfTheCallsForOneFile) {
    PutSource("NLPLAIN.DLL", "2.0");
    ForgetCalls(Test());
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(Test().TakeCallNames({"CreateDirectoryA", "SetupGetFileCompressionInfoA", "SetupDecompressOrCopyFileA",
                                      "CopyFileA", "DeleteFileA", "FindFirstFileA"}),
                ElementsAre("CreateDirectoryA", "CopyFileA", "SetupGetFileCompressionInfoA",
                            "SetupDecompressOrCopyFileA", "CopyFileA", "FindFirstFileA", "DeleteFileA", "DeleteFileA"));
}

}  // namespace
}  // namespace pikel
