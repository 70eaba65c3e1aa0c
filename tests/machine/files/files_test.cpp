#include "machine/files/files.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "support/machine_test.h"

namespace pikel {
namespace {

namespace fs = std::filesystem;
using simulated::FileEntry;
using simulated::Files;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class MachineFiles : public testing_support::MachineTest {
  protected:
    Files& TheFiles() { return Machine().Files(); }
    fs::path Root() { return Machine().Folder(); }
    void PutOnHost(const fs::path& below, std::string_view bytes) {
        fs::create_directories((Root() / below).parent_path());
        std::ofstream(Root() / below, std::ios::binary) << bytes;
    }
    std::vector<std::string> Names(std::string_view folder, std::string_view pattern = "*") {
        std::vector<std::string> names;
        for (const FileEntry& entry : TheFiles().List(folder, pattern)) {
            names.push_back(entry.name);
        }
        return names;
    }
    /// No file in the making may stay anywhere.
    void ExpectNothingHalfMade() {
        for (const auto& entry : fs::recursive_directory_iterator(Root())) {
            EXPECT_FALSE(entry.path().filename().string().starts_with(".pikel")) << entry.path();
        }
    }
};

// ---- paths ----------------------------------------------------------------------------------------------------------

TEST_F(MachineFiles, PathsLieBelowTheFolderOfTheirDrive) {
    EXPECT_EQ(TheFiles().HostPath("C:\\new\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("c:/new/x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:\\new\\.\\y\\..\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:\\new\\\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:\\new.\\x.txt. ."), Root() / "C/new/x.txt");
}

TEST_F(MachineFiles, PathsWithoutADriveStartAtTheSystemDrivesRoot) {
    EXPECT_EQ(TheFiles().HostPath("new\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("\\new\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:new\\x.txt"), Root() / "C/new/x.txt");
}

TEST_F(MachineFiles, PathsThatLeaveTheMachineHaveNoPlace) {
    for (const char* path : {"C:\\..\\machine.ini", "..\\machine.ini", "C:\\a\\..\\..\\x", "\\\\server\\share\\x",
                             "Q:\\x", "", "C:\\a<b", "C:\\a\\b:c"}) {
        EXPECT_EQ(TheFiles().HostPath(path), fs::path()) << path;
        EXPECT_FALSE(TheFiles().Exists(path)) << path;
    }
}

TEST_F(MachineFiles, ReasonsOfUnusablePathsAreTold) {
    struct Case {
        std::string path;
        DWORD code;
    };
    PutOnHost("C/folder/file", "x");
    for (const Case& c : {Case{"C:\\folder\\none", 2}, Case{"C:\\none\\file", 3}, Case{"C:\\folder\\file\\below", 3},
                          Case{"Q:\\x", 3}, Case{"", 3}, Case{"C:\\..\\x", 3}, Case{"\\\\server\\share\\x", 53},
                          Case{"C:\\a|b", 123}, Case{"C:\\a\x01", 123}, Case{"C:\\folder\\file\\", 123},
                          Case{"C:\\" + std::string(300, 'a'), 206}, Case{"C:\\folder\\", 0}, Case{"C:\\", 0}}) {
        EXPECT_EQ(TheFiles().Look(c.path, nullptr), c.code) << c.path;
    }
}

TEST_F(MachineFiles, NamesMatchWithoutRegardToCase) {
    PutOnHost("C/Program Files/Acme Driver/ReadMe.TXT", "x");
    EXPECT_EQ(TheFiles().Read("c:\\PROGRAM FILES\\acme driver\\readme.txt"), "x");
    FileEntry entry;
    EXPECT_EQ(TheFiles().Look("c:\\PROGRAM FILES\\acme driver\\readme.txt", &entry), 0u);
    EXPECT_EQ(entry.name, "ReadMe.TXT");
    // A new file keeps the spelling asked for and lies in the folder that is there.
    EXPECT_EQ(TheFiles().Write("C:\\program files\\ACME DRIVER\\New.Dat", "y"), 0u);
    EXPECT_TRUE(fs::exists(Root() / "C/Program Files/Acme Driver/New.Dat"));
    // Replacing keeps the stored spelling.
    EXPECT_EQ(TheFiles().Write("C:\\Program Files\\Acme Driver\\NEW.DAT", "z"), 0u);
    EXPECT_THAT(Names("C:\\Program Files\\Acme Driver"), ElementsAre("New.Dat", "ReadMe.TXT"));
}

TEST_F(MachineFiles, AFolderThatChangesItsSpellingIsFoundAgain) {
    PutOnHost("C/Data/x", "1");
    EXPECT_EQ(TheFiles().Read("C:\\DATA\\X"), "1");
    fs::rename(Root() / "C/Data", Root() / "C/data");
    EXPECT_EQ(TheFiles().Read("C:\\DATA\\X"), "1");
    fs::remove_all(Root() / "C/data");
    EXPECT_FALSE(TheFiles().Exists("C:\\DATA\\X"));
}

TEST_F(MachineFiles, LargeFoldersAreFoundWithoutRegardToCaseWhileTheyGrow) {
    fs::create_directories(Root() / "C/inf");
    for (int i = 0; i < 600; ++i) {
        const std::string number = std::to_string(i);
        ASSERT_FALSE(TheFiles().Exists("C:\\INF\\oem" + number + ".inf"));
        ASSERT_EQ(TheFiles().Write("C:\\inf\\OEM" + number + ".INF", number), 0u);
        ASSERT_EQ(TheFiles().Read("C:\\INF\\oem" + number + ".inf"), number);
    }
    ASSERT_EQ(TheFiles().Delete("C:\\inf\\oem17.inf"), 0u);
    EXPECT_FALSE(TheFiles().Exists("C:\\inf\\OEM17.inf"));
    ASSERT_EQ(TheFiles().Move("C:\\inf\\oem18.inf", "C:\\inf\\Other.inf", false), 0u);
    EXPECT_TRUE(TheFiles().Exists("C:\\inf\\OTHER.INF"));
    EXPECT_FALSE(TheFiles().Exists("C:\\inf\\oEm18.inf"));
    // Somebody else's change is seen as well.
    PutOnHost("C/inf/Foreign.inf", "f");
    fs::last_write_time(Root() / "C/inf", fs::file_time_type::clock::now() + std::chrono::seconds(5));
    EXPECT_EQ(TheFiles().Read("C:\\inf\\FOREIGN.INF"), "f");
}

TEST_F(MachineFiles, NamesOfTheCodePageAreUtf8OnTheHost) {
    EXPECT_EQ(TheFiles().Write("C:\\Gr\xFC\xDF"
                               "e\\\xC9t\xE9.txt",
                               "x"),
              0u);
    EXPECT_TRUE(fs::exists(Root() / "C/Gr\u00FC\u00DFe/\u00C9t\u00E9.txt"));
    EXPECT_EQ(TheFiles().Read("C:\\GR\xDC\xDF"
                              "E\\\xE9T\xC9.TXT"),
              "x");
    EXPECT_THAT(Names("C:\\Gr\xFC\xDF"
                      "e"),
                ElementsAre("\xC9t\xE9.txt"));
}

TEST_F(MachineFiles, ABackslashThatIsATrailByteIsNoSeparator) {
    simulated::SystemDescription system = Machine().System();
    system.codePage = 932;
    Machine().SetSystem(system);
    EXPECT_EQ(TheFiles().Write("C:\\\x95\x5C\\a.txt", "x"), 0u);
    EXPECT_TRUE(fs::exists(Root() / "C/\u8868/a.txt"));
    EXPECT_TRUE(TheFiles().IsDirectory("C:\\\x95\x5C"));
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "C/\u8868/a.txt"), "C:\\\x95\x5C\\a.txt");
}

TEST_F(MachineFiles, HostPathsTurnIntoWindowsPaths) {
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "C/Windows/x.dll"), "C:\\Windows\\x.dll");
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "C"), "C:\\");
    EXPECT_EQ(TheFiles().WindowsPath(TheFiles().HostPath("c:\\windows")), "C:\\WINDOWS");
}

TEST_F(MachineFiles, HostPathsOffTheMachineHaveNoWindowsPath) {
    EXPECT_EQ(TheFiles().WindowsPath("/etc/passwd"), "");
    EXPECT_EQ(TheFiles().WindowsPath(Root()), "");
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "machine.ini"), "");
    EXPECT_EQ(TheFiles().WindowsPath(Root().parent_path() / "C/x"), "");
}

TEST_F(MachineFiles, ADiskInTheDriveCanBeReadOnly) {
    PutOnHost("disk/Driver/Setup.inf", "inf");
    TheFiles().InsertMedium(Root() / "disk/");
    EXPECT_EQ(TheFiles().Read("d:\\DRIVER\\setup.inf"), "inf");
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "disk/Driver/Setup.inf"), "D:\\Driver\\Setup.inf");
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "disk"), "D:\\");
    EXPECT_EQ(TheFiles().Copy("D:\\Driver\\Setup.inf", "C:\\x.inf", false), 0u);
    EXPECT_EQ(TheFiles().CheckOpen("D:\\Driver\\Setup.inf", GENERIC_READ, 0), 0u);
    EXPECT_EQ(TheFiles().CheckOpen("D:\\Driver\\Setup.inf", GENERIC_WRITE, 0), 19u);
    EXPECT_EQ(TheFiles().Write("D:\\Driver\\Setup.inf", "x"), 19u);
    EXPECT_EQ(TheFiles().Write("D:\\Driver\\new", "x"), 19u);
    EXPECT_EQ(TheFiles().Write("D:\\none\\new", "x"), 19u);
    EXPECT_EQ(TheFiles().Copy("C:\\x.inf", "D:\\x.inf", false), 19u);
    EXPECT_EQ(TheFiles().Delete("D:\\Driver\\Setup.inf"), 19u);
    EXPECT_EQ(TheFiles().Move("D:\\Driver\\Setup.inf", "C:\\y.inf", false), 19u);
    EXPECT_EQ(TheFiles().Move("C:\\x.inf", "D:\\y.inf", false), 19u);
    EXPECT_EQ(TheFiles().MakeFolder("D:\\new"), 19u);
    EXPECT_EQ(TheFiles().RemoveFolder("D:\\Driver"), 19u);
    EXPECT_EQ(TheFiles().SetAttributes("D:\\Driver\\Setup.inf", 0), 19u);
    EXPECT_EQ(TheFiles().SetWrittenAt("D:\\Driver\\Setup.inf", {}), 19u);
    EXPECT_THAT(Names("D:\\Driver"), ElementsAre("Setup.inf"));
}

TEST_F(MachineFiles, OtherDrivesAreFoldersBesideTheFirst) {
    PutOnHost("D/setup.inf", "x");
    EXPECT_EQ(TheFiles().Read("d:\\SETUP.INF"), "x");
    EXPECT_EQ(TheFiles().Write("E:\\x", "x"), 3u);
    EXPECT_EQ(TheFiles().MakeFolders("E:\\x\\y"), 3u);
    EXPECT_FALSE(fs::exists(Root() / "E"));
}

// ---- attributes -----------------------------------------------------------------------------------------------------

TEST_F(MachineFiles, AttributesComeFromTheKindAndTheOwnersWriteRight) {
    PutOnHost("C/d/f", "x");
    EXPECT_EQ(TheFiles().Attributes("C:\\d"), 16u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\f"), 32u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\none"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d\\f", FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\f"), 33u);
    struct stat status {};
    ASSERT_EQ(stat((Root() / "C/d/f").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0222, 0u);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d\\f", FILE_ATTRIBUTE_ARCHIVE), 0u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\f"), 32u);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d", FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d"), 16u);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d\\none", 0), 2u);
}

TEST_F(MachineFiles, ReadOnlyFilesAreNeitherWrittenNorDeletedNorReplaced) {
    PutOnHost("C/f", "old");
    PutOnHost("C/g", "new");
    ASSERT_EQ(TheFiles().SetAttributes("C:\\f", FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_EQ(TheFiles().Write("C:\\f", "x"), 5u);
    EXPECT_EQ(TheFiles().Delete("C:\\f"), 5u);
    EXPECT_EQ(TheFiles().Copy("C:\\g", "C:\\f", false), 5u);
    EXPECT_EQ(TheFiles().Move("C:\\g", "C:\\f", true), 5u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_WRITE, 0), 5u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, 0), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\f"), "old");
    // The name of a read-only file may change.
    EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\h", false), 0u);
}

TEST_F(MachineFiles, TimesAreKeptToTheTenthOfAMicrosecond) {
    PutOnHost("C/f", "x");
    const FILETIME time = {0x12345678, 0x01BF53EB};
    EXPECT_EQ(TheFiles().SetWrittenAt("C:\\f", time), 0u);
    const std::optional<FILETIME> read = TheFiles().WrittenAt("C:\\f");
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->dwLowDateTime, time.dwLowDateTime);
    EXPECT_EQ(read->dwHighDateTime, time.dwHighDateTime);
    EXPECT_EQ(TheFiles().SetWrittenAt("C:\\none", time), 2u);
    EXPECT_FALSE(TheFiles().WrittenAt("C:\\none").has_value());
}

TEST_F(MachineFiles, TimesBefore1970AreKept) {
    PutOnHost("C/f", "x");
    const FILETIME time = {0xD53E8000, 0x0194FCAB};  // 1958
    EXPECT_EQ(TheFiles().SetWrittenAt("C:\\f", time), 0u);
    EXPECT_EQ(TheFiles().WrittenAt("C:\\f")->dwLowDateTime, time.dwLowDateTime);
    EXPECT_EQ(TheFiles().WrittenAt("C:\\f")->dwHighDateTime, time.dwHighDateTime);
}

// ---- writing --------------------------------------------------------------------------------------------------------

TEST_F(MachineFiles, WriteMakesMissingFoldersAndReplacesWhole) {
    EXPECT_EQ(TheFiles().Write("C:\\a\\b\\c.txt", "first and longer"), 0u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\b\\c.txt", "second"), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\a\\b\\c.txt"), "second");
    ExpectNothingHalfMade();
}

TEST_F(MachineFiles, WriteRefusesFoldersAndBadNames) {
    PutOnHost("C/a/f", "x");
    EXPECT_EQ(TheFiles().Write("C:\\a", "x"), 5u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\f\\g", "x"), 3u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\g\\", "x"), 123u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\g?", "x"), 123u);
    EXPECT_FALSE(TheFiles().Read("C:\\a").has_value());
    EXPECT_FALSE(TheFiles().Read("C:\\a\\none").has_value());
}

TEST_F(MachineFiles, LeftoversOfAKilledProcessAreNotSeen) {
    PutOnHost("C/a/f", "x");
    PutOnHost("C/a/.pikel-pending-1-0", "half");
    EXPECT_THAT(Names("C:\\a"), ElementsAre("f"));
}

TEST_F(MachineFiles, CopyKeepsTheTimeAndTheReadOnlyMark) {
    PutOnHost("C/f", "content");
    const FILETIME time = {0, 0x01BF53EB};
    ASSERT_EQ(TheFiles().SetWrittenAt("C:\\f", time), 0u);
    ASSERT_EQ(TheFiles().SetAttributes("C:\\f", FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\g", false), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\g"), "content");
    EXPECT_EQ(TheFiles().WrittenAt("C:\\g")->dwHighDateTime, time.dwHighDateTime);
    EXPECT_EQ(TheFiles().Attributes("C:\\g"), 33u);
    ExpectNothingHalfMade();
}

TEST_F(MachineFiles, CopyRefusals) {
    PutOnHost("C/f", "f");
    PutOnHost("C/g", "g");
    fs::create_directories(Root() / "C/d");
    EXPECT_EQ(TheFiles().Copy("C:\\none", "C:\\x", false), 2u);
    EXPECT_EQ(TheFiles().Copy("C:\\none\\f", "C:\\x", false), 3u);
    EXPECT_EQ(TheFiles().Copy("C:\\d", "C:\\x", false), 5u);
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\d", false), 5u);
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\none\\x", false), 3u);
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\g", true), 80u);
    EXPECT_EQ(TheFiles().Copy("C:\\f", "c:\\F", false), 32u);
    EXPECT_EQ(TheFiles().Read("C:\\g"), "g");
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\g", false), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\g"), "f");
}

TEST_F(MachineFiles, MoveRenamesAndReplacesOnlyWhenAsked) {
    PutOnHost("C/f", "f");
    PutOnHost("C/g", "g");
    EXPECT_EQ(TheFiles().Move("C:\\none", "C:\\x", false), 2u);
    EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\none\\x", false), 3u);
    EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\g", false), 183u);
    EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\WINDOWS", true), 5u);
    EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\G", true), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\g"), "f");
    EXPECT_FALSE(TheFiles().Exists("C:\\f"));
    // The name's case alone may change.
    EXPECT_EQ(TheFiles().Move("C:\\g", "C:\\Gee", false), 0u);
    EXPECT_EQ(TheFiles().Move("C:\\gee", "C:\\GEE", false), 0u);
    EXPECT_TRUE(fs::exists(Root() / "C/GEE"));
    EXPECT_FALSE(fs::exists(Root() / "C/Gee"));
}

TEST_F(MachineFiles, MoveTakesFoldersUnlessAFileInThemIsOpen) {
    PutOnHost("C/d/f", "f");
    {
        const Files::Held held = TheFiles().HoldOpen("C:\\d\\f", kShareAll);
        EXPECT_EQ(TheFiles().Move("C:\\d", "C:\\e", false), 5u);
    }
    EXPECT_EQ(TheFiles().Move("C:\\d", "C:\\e", false), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\e\\f"), "f");
}

TEST_F(MachineFiles, DeleteRefusals) {
    fs::create_directories(Root() / "C/d");
    EXPECT_EQ(TheFiles().Delete("C:\\none"), 2u);
    EXPECT_EQ(TheFiles().Delete("C:\\none\\f"), 3u);
    EXPECT_EQ(TheFiles().Delete("C:\\d"), 5u);
    EXPECT_EQ(TheFiles().Delete("C:\\x*"), 123u);
}

TEST_F(MachineFiles, FoldersAreMadeAndRemovedOneByOne) {
    EXPECT_EQ(TheFiles().MakeFolder("C:\\a\\b"), 3u);
    EXPECT_EQ(TheFiles().MakeFolder("C:\\a\\"), 0u);
    EXPECT_EQ(TheFiles().MakeFolder("C:\\A"), 183u);
    EXPECT_EQ(TheFiles().MakeFolder("C:\\"), 5u);
    EXPECT_EQ(TheFiles().MakeFolders("C:\\a\\b\\c"), 0u);
    EXPECT_EQ(TheFiles().MakeFolders("C:\\a\\b\\c"), 0u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\f", "x"), 0u);
    EXPECT_EQ(TheFiles().MakeFolder("C:\\a\\f"), 183u);
    EXPECT_EQ(TheFiles().MakeFolders("C:\\a\\f\\g"), 3u);
    EXPECT_EQ(TheFiles().MakeFolders("C:\\a\\f"), 183u);
    EXPECT_EQ(TheFiles().RemoveFolder("C:\\a"), 145u);
    EXPECT_EQ(TheFiles().RemoveFolder("C:\\a\\f"), 267u);
    EXPECT_EQ(TheFiles().RemoveFolder("C:\\a\\none"), 2u);
    EXPECT_EQ(TheFiles().RemoveFolder("C:\\none\\none"), 3u);
    EXPECT_EQ(TheFiles().RemoveFolder("C:\\a\\b\\c"), 0u);
    EXPECT_FALSE(fs::exists(Root() / "C/a/b/c"));
}

// ---- listing --------------------------------------------------------------------------------------------------------

TEST_F(MachineFiles, ListGivesEntriesInTheOrderOfTheirNames) {
    PutOnHost("C/d/b.txt", "12345");
    PutOnHost("C/d/A.txt", "");
    PutOnHost("C/d/c.dat", "1");
    fs::create_directories(Root() / "C/d/Sub");
    const std::vector<FileEntry> entries = TheFiles().List("C:\\d");
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_THAT(Names("C:\\d"), ElementsAre("A.txt", "b.txt", "c.dat", "Sub"));
    EXPECT_EQ(entries[1].size, 5u);
    EXPECT_EQ(entries[1].attributes, 32u);
    EXPECT_EQ(entries[3].attributes, 16u);
    EXPECT_EQ(entries[3].size, 0u);
    EXPECT_THAT(Names("C:\\d", "*.TXT"), ElementsAre("A.txt", "b.txt"));
    EXPECT_THAT(Names("C:\\none"), IsEmpty());
    EXPECT_THAT(Names("C:\\d\\b.txt"), IsEmpty());
}

// ---- sharing --------------------------------------------------------------------------------------------------------

TEST_F(MachineFiles, SharingWorksInBothDirections) {
    PutOnHost("C/f", "x");
    struct Case {
        DWORD heldShare;
        DWORD access;
        DWORD share;
        DWORD code;
    };
    // A holder reads.
    for (const Case& c : {
             Case{0, GENERIC_READ, kShareAll, 32},
             Case{FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, 0},
             Case{FILE_SHARE_READ, GENERIC_READ, 0, 32},
             Case{FILE_SHARE_READ, GENERIC_WRITE, kShareAll, 32},
             Case{FILE_SHARE_READ | FILE_SHARE_WRITE, GENERIC_WRITE, FILE_SHARE_READ, 0},
             Case{FILE_SHARE_READ | FILE_SHARE_WRITE, GENERIC_WRITE, FILE_SHARE_WRITE, 32},
             Case{FILE_SHARE_READ | FILE_SHARE_WRITE, DELETE, kShareAll, 32},
             Case{kShareAll, DELETE, kShareAll, 0},
             Case{kShareAll, GENERIC_ALL, kShareAll, 0},
             Case{FILE_SHARE_READ, GENERIC_ALL, kShareAll, 32},
             Case{0, 0, 0, 0},
         }) {
        const Files::Held held = TheFiles().HoldOpen("C:\\F", c.heldShare);
        EXPECT_EQ(TheFiles().CheckOpen("c:\\f", c.access, c.share), c.code)
            << c.heldShare << " " << c.access << " " << c.share;
    }
    EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_ALL, 0), 0u);
}

TEST_F(MachineFiles, HeldFilesAreNotReplacedOrDeleted) {
    PutOnHost("C/f", "x");
    PutOnHost("C/g", "y");
    {
        const Files::Held held = TheFiles().HoldOpen("C:\\f", FILE_SHARE_READ);
        EXPECT_EQ(TheFiles().Write("C:\\f", "z"), 32u);
        EXPECT_EQ(TheFiles().Copy("C:\\g", "C:\\f", false), 32u);
        EXPECT_EQ(TheFiles().Delete("C:\\f"), 32u);
        EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\h", false), 32u);
        EXPECT_EQ(TheFiles().Move("C:\\g", "C:\\f", true), 5u);
        EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\h", false), 0u);
    }
    EXPECT_EQ(TheFiles().Delete("C:\\f"), 0u);
}

TEST_F(MachineFiles, AFileThatIsHeldWithoutSharingIsNotCopied) {
    PutOnHost("C/f", "x");
    const Files::Held held = TheFiles().HoldOpen("C:\\f");
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\h", false), 32u);
}

TEST_F(MachineFiles, AHolderThatSharesEverythingSeesTheFileGoOnlyWithItsOwnClose) {
    PutOnHost("C/f", "x");
    {
        const Files::Held held = TheFiles().HoldOpen("C:\\f", kShareAll);
        EXPECT_EQ(TheFiles().Delete("C:\\f"), 0u);
        EXPECT_TRUE(TheFiles().Exists("C:\\f"));
        EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, kShareAll), 5u);
        EXPECT_EQ(TheFiles().Write("C:\\f", "y"), 5u);
    }
    EXPECT_FALSE(TheFiles().Exists("C:\\f"));
}

TEST_F(MachineFiles, AHeldFileThatIsRenamedStaysHeldUnderItsNewName) {
    PutOnHost("C/f", "x");
    const Files::Held held = TheFiles().HoldOpen("C:\\f", FILE_SHARE_READ | FILE_SHARE_DELETE);
    EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\g", false), 0u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\g", GENERIC_WRITE, kShareAll), 32u);
    EXPECT_EQ(TheFiles().Write("C:\\f", "new"), 0u);
}

TEST_F(MachineFiles, HoldersMayBeMovedAndOutliveTheMachine) {
    PutOnHost("C/f", "x");
    std::optional<Files::Held> kept;
    {
        Files::Held held = TheFiles().HoldOpen("C:\\f");
        kept.emplace(std::move(held));
    }
    EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, kShareAll), 32u);
    Test().Reopen();
    EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, kShareAll), 0u);
    kept.reset();
}

TEST_F(MachineFiles, ALockedRangeFailsOpensWith33) {
    PutOnHost("C/f", "x");
    {
        const Files::Held locked = TheFiles().LockRange("C:\\f");
        EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, kShareAll), 33u);
        EXPECT_EQ(TheFiles().Write("C:\\f", "y"), 33u);
    }
    EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, 0), 0u);
}

TEST_F(MachineFiles, WhatAProgramHasLoadedIsReadAlone) {
    PutOnHost("C/Acme/mon.dll", "x");
    PutOnHost("C/Acme/new.dll", "y");
    bool isLoaded = true;
    TheFiles().SetLoadedTest([&](std::string_view path) { return isLoaded && path == "C:\\Acme\\mon.dll"; });
    EXPECT_EQ(TheFiles().CheckOpen("c:\\acme\\MON.DLL", GENERIC_READ, FILE_SHARE_READ), 0u);
    EXPECT_EQ(TheFiles().CheckOpen("c:\\acme\\MON.DLL", 0, 0), 0u);
    EXPECT_EQ(TheFiles().CheckOpen("c:\\acme\\MON.DLL", GENERIC_READ, 0), 32u);
    EXPECT_EQ(TheFiles().CheckOpen("c:\\acme\\MON.DLL", GENERIC_WRITE, kShareAll), 32u);
    EXPECT_EQ(TheFiles().Copy("C:\\Acme\\new.dll", "C:\\Acme\\mon.dll", false), 32u);
    EXPECT_EQ(TheFiles().Move("C:\\Acme\\new.dll", "C:\\Acme\\mon.dll", true), 5u);
    EXPECT_EQ(TheFiles().Delete("C:\\Acme\\mon.dll"), 32u);
    EXPECT_EQ(TheFiles().Copy("C:\\Acme\\mon.dll", "C:\\Acme\\copy.dll", false), 0u);
    isLoaded = false;
    EXPECT_EQ(TheFiles().Delete("C:\\Acme\\mon.dll"), 0u);
}

TEST_F(MachineFiles, CheckOpenTellsWhatIsMissing) {
    EXPECT_EQ(TheFiles().CheckOpen("C:\\none", GENERIC_READ, 0), 2u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\none\\none", GENERIC_READ, 0), 3u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\WINDOWS", GENERIC_READ, 0), 5u);
}

// ---- rights and room ------------------------------------------------------------------------------------------------

TEST_F(MachineFiles, DeniedPathsGive5AtAndBelow) {
    PutOnHost("C/d/f", "x");
    PutOnHost("C/d2/f", "x");
    TheFiles().Deny("c:\\D");
    EXPECT_EQ(TheFiles().CheckOpen("C:\\d\\f", GENERIC_READ, kShareAll), 5u);
    EXPECT_EQ(TheFiles().Write("C:\\d\\f", "y"), 5u);
    EXPECT_EQ(TheFiles().Write("C:\\d\\new", "y"), 5u);
    EXPECT_EQ(TheFiles().Copy("C:\\d2\\f", "C:\\d\\new", false), 5u);
    EXPECT_EQ(TheFiles().Copy("C:\\d\\f", "C:\\d2\\new", false), 5u);
    EXPECT_EQ(TheFiles().Delete("C:\\d\\f"), 5u);
    EXPECT_EQ(TheFiles().Move("C:\\d\\f", "C:\\x", false), 5u);
    EXPECT_EQ(TheFiles().Move("C:\\d2\\f", "C:\\d\\x", false), 5u);
    EXPECT_EQ(TheFiles().MakeFolder("C:\\d\\e"), 5u);
    EXPECT_EQ(TheFiles().RemoveFolder("C:\\d"), 5u);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d\\f", FILE_ATTRIBUTE_READONLY), 5u);
    EXPECT_EQ(TheFiles().SetWrittenAt("C:\\d\\f", {}), 5u);
    // What is there can be seen, and a name that only starts like it is another.
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\f"), 32u);
    EXPECT_EQ(TheFiles().Write("C:\\d2\\f", "y"), 0u);
}

TEST_F(MachineFiles, WritesBeyondTheFreeSpaceGive112AndLeaveTheOldFile) {
    PutOnHost("C/f", "12345");
    TheFiles().SetFreeSpace(10);
    EXPECT_EQ(TheFiles().Write("C:\\f", std::string(16, 'x')), 112u);
    EXPECT_EQ(TheFiles().Read("C:\\f"), "12345");
    EXPECT_EQ(TheFiles().Write("C:\\f", std::string(15, 'x')), 0u);
    EXPECT_EQ(TheFiles().Write("C:\\g", "1"), 112u);
    EXPECT_FALSE(TheFiles().Exists("C:\\g"));
    // Deleted and shortened files give their room back.
    EXPECT_EQ(TheFiles().Write("C:\\f", std::string(10, 'x')), 0u);
    EXPECT_EQ(TheFiles().Write("C:\\g", "12345"), 0u);
    EXPECT_EQ(TheFiles().Copy("C:\\g", "C:\\h", false), 112u);
    EXPECT_FALSE(TheFiles().Exists("C:\\h"));
    EXPECT_EQ(TheFiles().Delete("C:\\f"), 0u);
    EXPECT_EQ(TheFiles().Copy("C:\\g", "C:\\h", false), 0u);
    EXPECT_EQ(TheFiles().Copy("C:\\g", "C:\\i", false), 0u);
    EXPECT_EQ(TheFiles().Copy("C:\\g", "C:\\j", false), 112u);
    // A file that takes the place of another one frees that one's room.
    EXPECT_EQ(TheFiles().Move("C:\\h", "C:\\i", true), 0u);
    EXPECT_EQ(TheFiles().Copy("C:\\g", "C:\\j", false), 0u);
    ExpectNothingHalfMade();
    TheFiles().SetFreeSpace(std::nullopt);
    EXPECT_EQ(TheFiles().Write("C:\\k", std::string(1000, 'x')), 0u);
}

}  // namespace
}  // namespace pikel
