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
using testing_support::Lies;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// A folder of the host that goes with the object.
class HostFolder {
  public:
    HostFolder() {
        std::string pattern = (fs::temp_directory_path() / "pikel-files-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~HostFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    HostFolder(const HostFolder&) = delete;
    HostFolder& operator=(const HostFolder&) = delete;

    const fs::path& Path() const { return m_path; }
    void Put(const fs::path& below, std::string_view bytes) const {
        fs::create_directories((m_path / below).parent_path());
        std::ofstream(m_path / below, std::ios::binary) << bytes;
    }

  private:
    fs::path m_path;
};

/// What the machine's files are asked, wherever they lie.
class FilesTest : public testing_support::MachineTest {
  protected:
    explicit FilesTest(Lies where) : MachineTest("xp", where), m_isInAFolder(where == Lies::InAFolder) {}

    Files& TheFiles() { return Machine().Files(); }
    fs::path Root() { return Machine().Folder(); }
    /// A file, folders included, that the machine hasn't seen before where it lies in a folder: "C/d/f".
    void Put(const std::string& below, std::string_view bytes) {
        if (!m_isInAFolder) {
            ASSERT_EQ(TheFiles().Write("C:" + below.substr(1), bytes), 0u) << below;
            return;
        }
        fs::create_directories((Root() / below).parent_path());
        std::ofstream(Root() / below, std::ios::binary) << bytes;
    }
    void PutFolder(const std::string& below) {
        if (!m_isInAFolder) {
            ASSERT_EQ(TheFiles().MakeFolders("C:" + below.substr(1)), 0u) << below;
            return;
        }
        fs::create_directories(Root() / below);
    }
    /// Whether something is there in just this spelling: "C/d/f".
    bool IsThere(const std::string& below) {
        const std::size_t slash = below.rfind('/');
        const std::vector<std::string> names = Names("C:" + below.substr(1, slash - 1) + "\\");
        const bool isListed = std::ranges::find(names, below.substr(slash + 1)) != names.end();
        EXPECT_TRUE(!m_isInAFolder || fs::exists(Root() / below) == isListed) << below;
        return isListed;
    }
    std::vector<std::string> Names(std::string_view folder, std::string_view pattern = "*") {
        std::vector<std::string> names;
        for (const FileEntry& entry : TheFiles().List(folder, pattern)) {
            names.push_back(entry.name);
        }
        return names;
    }
    DWORD CodeOfOpeningToGoWithTheHandle(std::string_view path) {
        constexpr DWORD kDeleteOnClose = 0x04000000;
        std::shared_ptr<Files::OpenFile> file;
        bool existed = false;
        return TheFiles().Open(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, kDeleteOnClose, &file, &existed);
    }
    /// No file in the making may stay anywhere.
    void ExpectNothingHalfMade() {
        if (m_isInAFolder) {
            for (const auto& entry : fs::recursive_directory_iterator(Root())) {
                EXPECT_FALSE(entry.path().filename().string().starts_with(".pikel")) << entry.path();
            }
        }
    }

    bool IsInAFolder() const { return m_isInAFolder; }

  private:
    bool m_isInAFolder;
};

/// What holds on both kinds of disk.
class MachineFiles : public FilesTest, public ::testing::WithParamInterface<Lies> {
  protected:
    MachineFiles() : FilesTest(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Lie, MachineFiles, ::testing::Values(Lies::InMemory, Lies::InAFolder),
                         [](const auto& info) { return info.param == Lies::InMemory ? "InMemory" : "InAFolder"; });

/// What only a folder of the host has: a place there, and others who change it.
class MachineFilesInAFolder : public FilesTest {
  protected:
    MachineFilesInAFolder() : FilesTest(Lies::InAFolder) {}
};

// ---- paths ----------------------------------------------------------------------------------------------------------

TEST_F(MachineFilesInAFolder, PathsLieBelowTheFolderOfTheirDrive) {
    EXPECT_EQ(TheFiles().HostPath("C:\\new\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("c:/new/x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:\\new\\.\\y\\..\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:\\new\\\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:\\new.\\x.txt. ."), Root() / "C/new/x.txt");
}

TEST_F(MachineFilesInAFolder, PathsWithoutADriveStartAtTheSystemDrivesRoot) {
    EXPECT_EQ(TheFiles().HostPath("new\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("\\new\\x.txt"), Root() / "C/new/x.txt");
    EXPECT_EQ(TheFiles().HostPath("C:new\\x.txt"), Root() / "C/new/x.txt");
}

TEST_P(MachineFiles, PathsThatLeaveTheMachineHaveNoPlace) {
    for (const char* path : {"C:\\..\\machine.ini", "..\\machine.ini", "C:\\a\\..\\..\\x", "\\\\server\\share\\x",
                             "Q:\\x", "", "C:\\a<b", "C:\\a\\b:c"}) {
        EXPECT_EQ(TheFiles().HostPath(path), fs::path()) << path;
        EXPECT_FALSE(TheFiles().Exists(path)) << path;
    }
}

TEST_P(MachineFiles, ReasonsOfUnusablePathsAreTold) {
    struct Case {
        std::string path;
        DWORD code;
    };
    Put("C/folder/file", "x");
    for (const Case& c : {Case{"C:\\folder\\none", 2}, Case{"C:\\none\\file", 3}, Case{"C:\\folder\\file\\below", 3},
                          Case{"Q:\\x", 3}, Case{"", 3}, Case{"C:\\..\\x", 3}, Case{"\\\\server\\share\\x", 53},
                          Case{"C:\\a|b", 123}, Case{"C:\\a\x01", 123}, Case{"C:\\folder\\file\\", 123},
                          Case{"C:\\" + std::string(300, 'a'), 206}, Case{"C:\\folder\\", 0}, Case{"C:\\", 0}}) {
        EXPECT_EQ(TheFiles().Look(c.path, nullptr), c.code) << c.path;
    }
}

TEST_P(MachineFiles, NamesMatchWithoutRegardToCase) {
    Put("C/Program Files/Acme Driver/ReadMe.TXT", "x");
    EXPECT_EQ(TheFiles().Read("c:\\PROGRAM FILES\\acme driver\\readme.txt"), "x");
    FileEntry entry;
    EXPECT_EQ(TheFiles().Look("c:\\PROGRAM FILES\\acme driver\\readme.txt", &entry), 0u);
    EXPECT_EQ(entry.name, "ReadMe.TXT");
    // A new file keeps the spelling asked for and lies in the folder that is there.
    EXPECT_EQ(TheFiles().Write("C:\\program files\\ACME DRIVER\\New.Dat", "y"), 0u);
    EXPECT_TRUE(IsThere("C/Program Files/Acme Driver/New.Dat"));
    // Replacing keeps the stored spelling.
    EXPECT_EQ(TheFiles().Write("C:\\Program Files\\Acme Driver\\NEW.DAT", "z"), 0u);
    EXPECT_THAT(Names("C:\\Program Files\\Acme Driver"), ElementsAre("New.Dat", "ReadMe.TXT"));
}

TEST_F(MachineFilesInAFolder, AFolderThatChangesItsSpellingIsFoundAgain) {
    Put("C/Data/x", "1");
    EXPECT_EQ(TheFiles().Read("C:\\DATA\\X"), "1");
    fs::rename(Root() / "C/Data", Root() / "C/data");
    EXPECT_EQ(TheFiles().Read("C:\\DATA\\X"), "1");
    fs::remove_all(Root() / "C/data");
    EXPECT_FALSE(TheFiles().Exists("C:\\DATA\\X"));
}

TEST_P(MachineFiles, LargeFoldersAreFoundWithoutRegardToCaseWhileTheyGrow) {
    PutFolder("C/inf");
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
}

TEST_F(MachineFilesInAFolder, SomebodyElsesChangeOfALargeFolderIsSeen) {
    for (int i = 0; i < 600; ++i) {
        Put("C/inf/OEM" + std::to_string(i) + ".INF", "o");
    }
    ASSERT_FALSE(TheFiles().Exists("C:\\inf\\FOREIGN.INF"));
    Put("C/inf/Foreign.inf", "f");
    fs::last_write_time(Root() / "C/inf", fs::file_time_type::clock::now() + std::chrono::seconds(5));
    EXPECT_EQ(TheFiles().Read("C:\\inf\\FOREIGN.INF"), "f");
}

TEST_P(MachineFiles, NamesOfTheCodePageAreUtf8OnTheHost) {
    EXPECT_EQ(TheFiles().Write("C:\\Gr\xFC\xDF"
                               "e\\\xC9t\xE9.txt",
                               "x"),
              0u);
    EXPECT_EQ(fs::exists(Root() / "C/Gr\u00FC\u00DFe/\u00C9t\u00E9.txt"), IsInAFolder());
    EXPECT_EQ(TheFiles().Read("C:\\GR\xDC\xDF"
                              "E\\\xE9T\xC9.TXT"),
              "x");
    EXPECT_THAT(Names("C:\\Gr\xFC\xDF"
                      "e"),
                ElementsAre("\xC9t\xE9.txt"));
}

TEST_P(MachineFiles, ABackslashThatIsATrailByteIsNoSeparator) {
    simulated::SystemDescription system = Machine().System();
    system.codePage = 932;
    Machine().SetSystem(system);
    EXPECT_EQ(TheFiles().Write("C:\\\x95\x5C\\a.txt", "x"), 0u);
    EXPECT_EQ(fs::exists(Root() / "C/\u8868/a.txt"), IsInAFolder());
    EXPECT_TRUE(TheFiles().IsDirectory("C:\\\x95\x5C"));
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "C/\u8868/a.txt"), IsInAFolder() ? "C:\\\x95\x5C\\a.txt" : "");
    EXPECT_THAT(Names("C:\\"), ::testing::Contains("\x95\x5C"));
}

TEST_F(MachineFilesInAFolder, HostPathsTurnIntoWindowsPaths) {
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "C/Windows/x.dll"), "C:\\Windows\\x.dll");
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "C"), "C:\\");
    EXPECT_EQ(TheFiles().WindowsPath(TheFiles().HostPath("c:\\windows")), "C:\\WINDOWS");
}

TEST_F(MachineFilesInAFolder, HostPathsOffTheMachineHaveNoWindowsPath) {
    EXPECT_EQ(TheFiles().WindowsPath("/etc/passwd"), "");
    EXPECT_EQ(TheFiles().WindowsPath(Root()), "");
    EXPECT_EQ(TheFiles().WindowsPath(Root() / "machine.ini"), "");
    EXPECT_EQ(TheFiles().WindowsPath(Root().parent_path() / "C/x"), "");
}

TEST_P(MachineFiles, ADiskInTheDriveCanBeReadOnly) {
    const HostFolder disk;
    disk.Put("Driver/Setup.inf", "inf");
    TheFiles().InsertMedium(disk.Path() / "");
    EXPECT_EQ(TheFiles().HostPath("d:\\driver\\SETUP.INF"), disk.Path() / "Driver/Setup.inf");
    EXPECT_EQ(TheFiles().Read("d:\\DRIVER\\setup.inf"), "inf");
    EXPECT_EQ(TheFiles().WindowsPath(disk.Path() / "Driver/Setup.inf"), "D:\\Driver\\Setup.inf");
    EXPECT_EQ(TheFiles().WindowsPath(disk.Path()), "D:\\");
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
    EXPECT_EQ(CodeOfOpeningToGoWithTheHandle("D:\\Driver\\Setup.inf"), 19u);
    EXPECT_THAT(Names("D:\\Driver"), ElementsAre("Setup.inf"));
}

TEST_F(MachineFilesInAFolder, OtherDrivesAreFoldersBesideTheFirst) {
    Put("D/setup.inf", "x");
    EXPECT_EQ(TheFiles().Read("d:\\SETUP.INF"), "x");
    EXPECT_EQ(TheFiles().Write("E:\\x", "x"), 3u);
    EXPECT_EQ(TheFiles().MakeFolders("E:\\x\\y"), 3u);
    EXPECT_FALSE(fs::exists(Root() / "E"));
}

// ---- attributes -----------------------------------------------------------------------------------------------------

TEST_P(MachineFiles, AttributesComeFromTheKindAndTheOwnersWriteRight) {
    Put("C/d/f", "x");
    EXPECT_EQ(TheFiles().Attributes("C:\\d"), 16u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\f"), 32u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\none"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d\\f", FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\f"), 33u);
    if (IsInAFolder()) {
        struct stat status {};
        ASSERT_EQ(stat((Root() / "C/d/f").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0222, 0u);
    }
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d\\f", FILE_ATTRIBUTE_ARCHIVE), 0u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d\\f"), 32u);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d", FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_EQ(TheFiles().Attributes("C:\\d"), 16u);
    EXPECT_EQ(TheFiles().SetAttributes("C:\\d\\none", 0), 2u);
}

TEST_P(MachineFiles, ReadOnlyFilesAreNeitherWrittenNorDeletedNorReplaced) {
    Put("C/f", "old");
    Put("C/g", "new");
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

TEST_P(MachineFiles, TimesAreKeptToTheTenthOfAMicrosecond) {
    Put("C/f", "x");
    const FILETIME time = {0x12345678, 0x01BF53EB};
    EXPECT_EQ(TheFiles().SetWrittenAt("C:\\f", time), 0u);
    const std::optional<FILETIME> read = TheFiles().WrittenAt("C:\\f");
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->dwLowDateTime, time.dwLowDateTime);
    EXPECT_EQ(read->dwHighDateTime, time.dwHighDateTime);
    EXPECT_EQ(TheFiles().SetWrittenAt("C:\\none", time), 2u);
    EXPECT_FALSE(TheFiles().WrittenAt("C:\\none").has_value());
}

TEST_P(MachineFiles, TimesBefore1970AreKept) {
    Put("C/f", "x");
    const FILETIME time = {0xD53E8000, 0x0194FCAB};  // 1958
    EXPECT_EQ(TheFiles().SetWrittenAt("C:\\f", time), 0u);
    EXPECT_EQ(TheFiles().WrittenAt("C:\\f")->dwLowDateTime, time.dwLowDateTime);
    EXPECT_EQ(TheFiles().WrittenAt("C:\\f")->dwHighDateTime, time.dwHighDateTime);
}

// ---- writing --------------------------------------------------------------------------------------------------------

TEST_P(MachineFiles, WriteMakesMissingFoldersAndReplacesWhole) {
    EXPECT_EQ(TheFiles().Write("C:\\a\\b\\c.txt", "first and longer"), 0u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\b\\c.txt", "second"), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\a\\b\\c.txt"), "second");
    ExpectNothingHalfMade();
}

TEST_P(MachineFiles, WriteRefusesFoldersAndBadNames) {
    Put("C/a/f", "x");
    EXPECT_EQ(TheFiles().Write("C:\\a", "x"), 5u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\f\\g", "x"), 3u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\g\\", "x"), 123u);
    EXPECT_EQ(TheFiles().Write("C:\\a\\g?", "x"), 123u);
    EXPECT_FALSE(TheFiles().Read("C:\\a").has_value());
    EXPECT_FALSE(TheFiles().Read("C:\\a\\none").has_value());
}

TEST_F(MachineFilesInAFolder, LeftoversOfAKilledProcessAreNotSeen) {
    Put("C/a/f", "x");
    Put("C/a/.pikel-pending-1-0", "half");
    EXPECT_THAT(Names("C:\\a"), ElementsAre("f"));
}

TEST_P(MachineFiles, CopyKeepsTheTimeAndTheReadOnlyMark) {
    Put("C/f", "content");
    const FILETIME time = {0, 0x01BF53EB};
    ASSERT_EQ(TheFiles().SetWrittenAt("C:\\f", time), 0u);
    ASSERT_EQ(TheFiles().SetAttributes("C:\\f", FILE_ATTRIBUTE_READONLY), 0u);
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\g", false), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\g"), "content");
    EXPECT_EQ(TheFiles().WrittenAt("C:\\g")->dwHighDateTime, time.dwHighDateTime);
    EXPECT_EQ(TheFiles().Attributes("C:\\g"), 33u);
    ExpectNothingHalfMade();
}

TEST_P(MachineFiles, CopyRefusals) {
    Put("C/f", "f");
    Put("C/g", "g");
    PutFolder("C/d");
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

TEST_P(MachineFiles, MoveRenamesAndReplacesOnlyWhenAsked) {
    Put("C/f", "f");
    Put("C/g", "g");
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
    EXPECT_TRUE(IsThere("C/GEE"));
    EXPECT_FALSE(IsThere("C/Gee"));
}

TEST_P(MachineFiles, MoveTakesFoldersUnlessAFileInThemIsOpen) {
    Put("C/d/f", "f");
    {
        const Files::Held held = TheFiles().HoldOpen("C:\\d\\f", kShareAll);
        EXPECT_EQ(TheFiles().Move("C:\\d", "C:\\e", false), 5u);
    }
    EXPECT_EQ(TheFiles().Move("C:\\d", "C:\\e", false), 0u);
    EXPECT_EQ(TheFiles().Read("C:\\e\\f"), "f");
}

TEST_P(MachineFiles, DeleteRefusals) {
    PutFolder("C/d");
    EXPECT_EQ(TheFiles().Delete("C:\\none"), 2u);
    EXPECT_EQ(TheFiles().Delete("C:\\none\\f"), 3u);
    EXPECT_EQ(TheFiles().Delete("C:\\d"), 5u);
    EXPECT_EQ(TheFiles().Delete("C:\\x*"), 123u);
}

TEST_P(MachineFiles, FoldersAreMadeAndRemovedOneByOne) {
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
    EXPECT_FALSE(IsThere("C/a/b/c"));
}

// ---- listing --------------------------------------------------------------------------------------------------------

TEST_P(MachineFiles, ListGivesEntriesInTheOrderOfTheirNames) {
    Put("C/d/b.txt", "12345");
    Put("C/d/A.txt", "");
    Put("C/d/c.dat", "1");
    PutFolder("C/d/Sub");
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

TEST_P(MachineFiles, SharingWorksInBothDirections) {
    Put("C/f", "x");
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

TEST_P(MachineFiles, HeldFilesAreNotReplacedOrDeleted) {
    Put("C/f", "x");
    Put("C/g", "y");
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

TEST_P(MachineFiles, AFileThatIsHeldWithoutSharingIsNotCopied) {
    Put("C/f", "x");
    const Files::Held held = TheFiles().HoldOpen("C:\\f");
    EXPECT_EQ(TheFiles().Copy("C:\\f", "C:\\h", false), 32u);
}

TEST_P(MachineFiles, AHolderThatSharesEverythingSeesTheFileGoOnlyWithItsOwnClose) {
    Put("C/f", "x");
    {
        const Files::Held held = TheFiles().HoldOpen("C:\\f", kShareAll);
        EXPECT_EQ(TheFiles().Delete("C:\\f"), 0u);
        EXPECT_TRUE(TheFiles().Exists("C:\\f"));
        EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, kShareAll), 5u);
        EXPECT_EQ(TheFiles().Write("C:\\f", "y"), 5u);
    }
    EXPECT_FALSE(TheFiles().Exists("C:\\f"));
}

TEST_P(MachineFiles, AHeldFileThatIsRenamedStaysHeldUnderItsNewName) {
    Put("C/f", "x");
    const Files::Held held = TheFiles().HoldOpen("C:\\f", FILE_SHARE_READ | FILE_SHARE_DELETE);
    EXPECT_EQ(TheFiles().Move("C:\\f", "C:\\g", false), 0u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\g", GENERIC_WRITE, kShareAll), 32u);
    EXPECT_EQ(TheFiles().Write("C:\\f", "new"), 0u);
}

TEST_P(MachineFiles, HoldersMayBeMovedAndOutliveTheMachine) {
    Put("C/f", "x");
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

TEST_P(MachineFiles, ALockedRangeFailsOpensWith33) {
    Put("C/f", "x");
    {
        const Files::Held locked = TheFiles().LockRange("C:\\f");
        EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, kShareAll), 33u);
        EXPECT_EQ(TheFiles().Write("C:\\f", "y"), 33u);
    }
    EXPECT_EQ(TheFiles().CheckOpen("C:\\f", GENERIC_READ, 0), 0u);
}

TEST_P(MachineFiles, WhatAProgramHasLoadedIsReadAlone) {
    Put("C/Acme/mon.dll", "x");
    Put("C/Acme/new.dll", "y");
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

TEST_P(MachineFiles, CheckOpenTellsWhatIsMissing) {
    EXPECT_EQ(TheFiles().CheckOpen("C:\\none", GENERIC_READ, 0), 2u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\none\\none", GENERIC_READ, 0), 3u);
    EXPECT_EQ(TheFiles().CheckOpen("C:\\WINDOWS", GENERIC_READ, 0), 5u);
}

// ---- rights and room ------------------------------------------------------------------------------------------------

TEST_P(MachineFiles, DeniedPathsGive5AtAndBelow) {
    Put("C/d/f", "x");
    Put("C/d2/f", "x");
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

TEST_P(MachineFiles, WriteThatFailsGivesItsRoomBack) {
    TheFiles().SetFreeSpace(10);
    const std::string tooLong = "C:\\" + std::string(256, 'a');  // a path of Windows, but no name of any disk
    EXPECT_NE(TheFiles().Write(tooLong, "1234567890"), 0u);
    EXPECT_EQ(TheFiles().Write("C:\\f", "1234567890"), 0u);
}

TEST_P(MachineFiles, WritesBeyondTheFreeSpaceGive112AndLeaveTheOldFile) {
    Put("C/f", "12345");
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
