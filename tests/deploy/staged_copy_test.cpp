// The staged copy of a driver's files: what is staged, what is replaced and when.
#include "deploy/staged_copy.h"

#include "frame/pikel.h"
#include "machine/system/restart.h"
#include "printer_inf.h"
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
using ::testing::SizeIs;
using ::testing::StartsWith;

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
    /// Puts an installed NLPLAIN.DLL that is older than the package's and holds it open.
    simulated::Files::Held HoldOlderInstalled() {
        PutSource("NLPLAIN.DLL", "2.0");
        PutInstalled("NLPLAIN.DLL", "1.0");
        return Machine().Files().HoldOpen(Drivers() + "3\\NLPLAIN.DLL", FILE_SHARE_READ);
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
    Test().TurnLogOn();
    {
        const auto held = HoldOlderInstalled();
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

TEST_F(StagedCopy, CopyOverALockedFileThatIsAsNewFailsSilently) {
    Begin("win98");
    const std::string installed = "C:\\WINDOWS\\SYSTEM\\NLPLAIN.DRV";
    WriteFileOn(Machine(), std::string(kPackageFolder) + "\\NLPLAIN.DRV", MakePeFile("2.0") + "other");
    WriteFileOn(Machine(), installed, MakePeFile("2.0"));
    const auto held = Machine().Files().HoldOpen(installed, FILE_SHARE_READ);
    Test().TurnLogOn();
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, 1, 4, 0), 0u);
    EXPECT_EQ(m_restart, 0u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, Contains("[(un)lock] " + installed));
    EXPECT_THAT(log, Contains("::CopyFile( C:\\staging\\NLPLAIN.DRV, " + installed + ", FALSE );"));
    EXPECT_THAT(TakeCallsOf(Test(), {"CopyFileA"}).back(), HasSubstr("failed, last error 32"));
    EXPECT_TRUE(IsOf(installed, "2.0"));
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
    ChangeAuroraInf(Machine(), "Class=Printer", "Class=Printer\nCatalogFile=aurora.cat");
    WriteFileOn(Machine(), "C:\\Package\\aurora.cat", "catalog");
    ForgetCalls(Test());
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupDecompressOrCopyFileA"}), Contains(HasSubstr("aurora.cat")));
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
    Test().TurnLogOn();
    EXPECT_EQ(DoCopyInfDriverFilesEx(nullptr, "x", 2, &m_restart, kStaging, 3, 3, 5, 1), 87u);
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, nullptr, 2, &m_restart, kStaging, 3, 3, 5, 1), 87u);
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "x", 4, &m_restart, kStaging, 3, 3, 5, 1), 87u);
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "x", 2, nullptr, kStaging, 3, 3, 5, 1), 87u);
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "x", 2, &m_restart, nullptr, 3, 3, 5, 1), 87u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, SizeIs(5));
    EXPECT_THAT(log, Each("DoCopyInfDriverFilesEx Start")) << "without an end line";
    EXPECT_FALSE(Machine().Files().Exists(kStaging));
}

TEST_F(StagedCopy, ReplacementThatCanNotBeArrangedIsTheResult) {
    const auto held = HoldOlderInstalled();
    faults::FailCall("SetupInstallFileExA", 1, 4242);
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 0x901b0000u | 4242u);
    EXPECT_THAT(Test().TakeLog(), Contains("SetupInstallFileEx Error:4242"));
    EXPECT_EQ(m_restart, 1u);
}

TEST_F(StagedCopy, ReplacementThatFailsWithoutACodeIsNoFailure) {
    const auto held = HoldOlderInstalled();
    faults::FailCall("SetupInstallFileExA", 1, 0);
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 0u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, Contains(StartsWith("::SetupInstallFileEx( NLPLAIN.DLL, ")));
    EXPECT_THAT(log, Not(Contains(StartsWith("SetupInstallFileEx Error"))));
}

TEST_F(StagedCopy, PlainLogTellsOfWhatIsPlacedAndOfNothingElse) {
    const auto plainLines = [this] {
        std::vector<std::string> lines;
        for (std::string& line : Test().TakeLog()) {
            if (line.find("nstallFileEx") != std::string::npos || line.find("CopyFile(") != std::string::npos ||
                line.find("lock] ") != std::string::npos || line.starts_with("DoCopyInfDriverFilesEx")) {
                lines.push_back(std::move(line));
            }
        }
        return lines;
    };
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(plainLines(),
                ElementsAre("::CopyFile( C:\\staging\\NLPLAIN.DLL, " + Drivers() + "NLPLAIN.DLL, FALSE );"));
    const auto held = HoldOlderInstalled();
    faults::FailCall("SetupInstallFileExA", 1, 4242);
    EXPECT_EQ(Copy(), 0x901b0000u | 4242u);
    EXPECT_THAT(plainLines(),
                ElementsAre("SetupInstallFileEx Error:4242",
                            "::SetupInstallFileEx( NLPLAIN.DLL, C:\\staging\\, " + Drivers() + "NLPLAIN.DLL );"));
}

TEST_F(StagedCopy, FileThatIsStagedAlreadyIsPlacedAsItIs) {
    const auto installed = HoldOlderInstalled();
    WriteFileOn(Machine(), "C:\\staging\\NLPLAIN.DLL", "kept");
    const auto staged = Machine().Files().HoldOpen("C:\\staging\\NLPLAIN.DLL", FILE_SHARE_READ);
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 0u);
    EXPECT_EQ(m_restart, 0u);
    EXPECT_THAT(Test().TakeLog(), Not(Contains(HasSubstr("lock] "))));
    EXPECT_THAT(Test().TakeCallNames({"SetupDecompressOrCopyFileA"}), IsEmpty());
    EXPECT_EQ(ReadFileOn(Machine(), Drivers() + "NLPLAIN.DLL"), "kept");
}

TEST_F(StagedCopy, FileThatIsStagedMeanwhileIsFree) {
    const auto held = HoldOlderInstalled();
    ReplacedOperations replaced;
    replaced.table.SetupDecompressOrCopyFileA = [](PCSTR, PCSTR, PUINT) -> DWORD {
        Platform().SetLastError(ERROR_FILE_EXISTS);
        return ERROR_FILE_EXISTS;
    };
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 0u);
    EXPECT_EQ(m_restart, 0u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, Not(Contains(HasSubstr("lock] "))));
    EXPECT_THAT(log, Contains(StartsWith("::CopyFile( C:\\staging\\NLPLAIN.DLL, ")));
}

TEST_F(StagedCopy, LockedFileWithNothingStagedForItIsLeftToTheNextStart) {
    const auto held = HoldOlderInstalled();
    Machine().Files().Delete(std::string(kPackageFolder) + "\\NLPLAIN.DLL");
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 0x901b0002u) << "there is nothing that could replace it";
    EXPECT_EQ(m_restart, 1u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, Contains("[lock] " + Drivers() + "3\\NLPLAIN.DLL"));
    EXPECT_THAT(log, Contains(StartsWith("::SetupInstallFileEx( NLPLAIN.DLL, ")));
}

TEST_F(StagedCopy, StagedFileLosesItsReadOnlyMarkAlone) {
    static PlatformTable before;
    before = Platform();
    ReplacedOperations replaced;
    replaced.table.GetFileAttributesA = [](LPCSTR path) -> DWORD {
        return std::string_view(path) == "C:\\staging\\NLPLAIN.DLL"
                   ? DWORD{FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE}
                   : before.GetFileAttributesA(path);
    };
    EXPECT_EQ(Copy(), 0u);
    const std::string call = "SetFileAttributesA(\"C:\\\\staging\\\\NLPLAIN.DLL\", 0x22) = 0x1";
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupDecompressOrCopyFileA", "SetFileAttributesA", "CopyFileA"}),
                ElementsAre(StartsWith("CopyFileA("), StartsWith("SetupDecompressOrCopyFileA("), call,
                            StartsWith("CopyFileA("), call))
        << "once for the comparison, once for the deletion";
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
    Test().TurnLogOn();
    EXPECT_EQ(DoCopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, 9, 3, 5, 1), 0u);
    EXPECT_FALSE(Machine().Files().Exists(Drivers() + "NLPLAIN.DLL"));
    EXPECT_THAT(Test().TakeLog(), Not(Contains(StartsWith("::CopyFile("))));
    EXPECT_THAT(Test().TakeCallNames({"CopyFileA", "SetupDecompressOrCopyFileA", "SetupInstallFileExA"}), IsEmpty());
}

TEST_F(StagedCopy, OnlyADriversOwnDirectoriesHaveAVersionFolder) {
    ChangeAuroraInf(Machine(), "A500.Old=23", "A500.Old=11");
    Test().TurnLogOn();
    EXPECT_EQ(Copy("Aurora 500"), 0u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, Contains("[unlock] " + Drivers() + "3\\NLDISP.ICC")) << "of the system directory";
    EXPECT_THAT(log, Contains("[unlock] " + Drivers() + "3\\NLAURORA.DLL")) << "of the driver directory";
    EXPECT_THAT(log, Contains("[unlock] C:\\WINDOWS\\system32\\spool\\drivers\\color\\NLA500A.ICC"));
}

TEST_F(StagedCopy, FileOfAnUnknownDirectoryGoesToTheDriverDirectory) {
    ChangeAuroraInf(Machine(), "A500.Old=23", "A500.Old=12345");
    EXPECT_EQ(Copy("Aurora 500"), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), Drivers() + "NLDISP.ICC"), "NLDISP.ICC");
}

TEST_F(StagedCopy, NineXFilesLieWithoutAVersionFolder) {
    Begin("win98");
    Test().TurnLogOn();
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, 1, 4, 0), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("[unlock] C:\\WINDOWS\\SYSTEM\\NLPLAIN.DRV"));
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\SYSTEM\\NLPLAIN.DRV"), "NLPLAIN.DRV");
}

class StagedMonitorOfNt4 : public StagedCopyTest {
  protected:
    StagedMonitorOfNt4() {
        Begin("nt4");
        ChangeAuroraInf(Machine(), "[PLAIN]\nCopyFiles=PLAIN.Files",
                        "[PLAIN]\nCopyFiles=PLAIN.Files\nLanguageMonitor=\"M,NLPLAIN.DLL\"");
        ForgetCalls(Test());
    }
    DWORD CopyFor(DWORD architecture) {
        return DoCopyInfDriverFilesEx(kAuroraPath, "Aurora Plain", 2, &m_restart, kStaging, architecture, 3, 4, 0);
    }
};

TEST_F(StagedMonitorOfNt4, IsHeldAgainstTheOneInTheSystemDirectory) {
    const std::string installed = "C:\\WINNT\\system32\\NLPLAIN.DLL";
    PutSource("NLPLAIN.DLL", "2.0");
    WriteFileOn(Machine(), installed, MakePeFile("1.0"));
    const auto held = Machine().Files().HoldOpen(installed, FILE_SHARE_READ);
    Test().TurnLogOn();
    EXPECT_EQ(CopyFor(2), 0u);
    EXPECT_EQ(m_restart, 1u);
    EXPECT_THAT(Test().TakeLog(), Contains("[lock] " + installed));
    EXPECT_THAT(Test().TakeCallNames({"GetPrinterDriverDirectoryA"}), SizeIs(2))
        << "the directory of its identifier is looked up for the test too";
}

TEST_F(StagedMonitorOfNt4, OfAnotherArchitectureStaysOutOfTheSystemDirectory) {
    const std::string folder = "C:\\WINNT\\system32\\spool\\drivers\\WIN40";
    Machine().Files().MakeFolders(folder);
    EXPECT_EQ(CopyFor(1), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), folder + "\\NLPLAIN.DLL"), "NLPLAIN.DLL");
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINNT\\system32\\NLPLAIN.DLL"));
}

TEST_F(StagedMonitorOfNt4, LandsTwice) {
    EXPECT_EQ(CopyFor(2), 0u);
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
