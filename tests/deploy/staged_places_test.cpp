// Where the staged copy looks for installed files and where it places its own: drivers of other architectures, the
// language monitor of NT 4, and paths at their limits.
#include "staged_files.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

class StagedPlaces : public StagedFiles {};

// ---- drivers of other architectures ---------------------------------------------------------------------------------

TEST_F(StagedPlaces, ForeignFilesAreComparedLikeAnyOther) {
    const std::string folder = Machine().System().systemDirectory + "\\spool\\drivers\\x64\\";
    WriteFileOn(Machine(), folder + "3\\A.DLL", MakePeFile("3.0"));
    WriteFileOn(Machine(), folder + "3\\B.DLL", MakePeFile("1.0"));
    const auto locked = Hold(folder + "3\\B.DLL");
    EXPECT_EQ(Copy(2, 5), 0u);
    EXPECT_TRUE(IsOf(folder + "A.DLL", "3.0")) << "the installed one is newer";
    EXPECT_TRUE(IsOf(folder + "B.DLL", "2.0")) << "never locked";
    EXPECT_EQ(m_restart, 0u);
    EXPECT_THAT(TakeVerdicts(), Contains("[unlock] " + folder + "3\\B.DLL"));
    EXPECT_THAT(TakeCallsOf(Test(), {"CreateFileA"}), Not(Contains(HasSubstr("\\\\x64\\\\3\\\\B.DLL\", 0xc0000000"))))
        << "nor tested";
}

TEST_F(StagedPlaces, FailedCopyBackOfAForeignFileEndsTheStagingLikeAnyOther) {
    const std::string folder = Machine().System().systemDirectory + "\\spool\\drivers\\x64\\";
    WriteFileOn(Machine(), folder + "3\\A.DLL", MakePeFile("3.0"));
    faults::FailCall("CopyFileA", 2, 5);
    EXPECT_EQ(Copy(2, 5), 0u);
    EXPECT_FALSE(Machine().Files().Exists(folder + "B.DLL"));
}

TEST_F(StagedPlaces, EveryDirectoryOfAForeignDriverIsItsDriverDirectory) {
    WriteFileOn(Machine(), kStagedInf,
                "[Version]\r\nSignature=\"$Windows NT$\"\r\n[Manufacturer]\r\nN=NL\r\n[NL]\r\n\"Aurora\"=AURORA\r\n"
                "[AURORA]\r\nCopyFiles=ONE,TWO\r\n[ONE]\r\nA.DLL\r\n[TWO]\r\nB.DLL\r\n"
                "[DestinationDirs]\r\nONE=10\r\nTWO=66002\r\n");
    EXPECT_EQ(Copy(2, 5), 0u);
    const std::string folder = Machine().System().systemDirectory + "\\spool\\drivers\\x64\\";
    EXPECT_TRUE(IsOf(folder + "A.DLL", "2.0"));
    EXPECT_TRUE(IsOf(folder + "B.DLL", "2.0"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\A.DLL"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\system32\\B.DLL"));
    EXPECT_EQ(Copy(2, 3), 0u) << "the system's own goes where the INF says";
    EXPECT_TRUE(IsOf("C:\\WINDOWS\\A.DLL", "2.0"));
    EXPECT_TRUE(IsOf("C:\\WINDOWS\\system32\\B.DLL", "2.0"));
}

// ---- the language monitor -------------------------------------------------------------------------------------------

constexpr char kMonitor[] = "LanguageMonitor=\"Aurora Monitor,A.DLL\"\r\n";

TEST_F(StagedPlaces, MonitorGoesToTheSystemDirectoryOnNt4Alone) {
    for (const char* system : {"nt4", "win2000", "xp", "vista"}) {
        SCOPED_TRACE(system);
        Begin(system, kThreeFiles, kMonitor);
        const bool isNt4 = std::string(system) == "nt4";
        EXPECT_EQ(Copy(2, isNt4 ? 2 : 3), 0u);
        const std::string inSystem = Machine().System().systemDirectory + "\\A.DLL";
        EXPECT_EQ(Machine().Files().Exists(inSystem), isNt4);
        EXPECT_TRUE(Machine().Files().Exists(Drivers() + "A.DLL"));
        EXPECT_THAT(TakeVerdicts(), Contains("[unlock] " + (isNt4 ? inSystem : Installed("A.DLL"))));
    }
}

TEST_F(StagedPlaces, MonitorOfNt4IsKnownByItsExactName) {
    Begin("nt4", kThreeFiles, "LanguageMonitor=\"Aurora Monitor,a.dll\"\r\n");
    EXPECT_EQ(Copy(2, 2), 0u);
    EXPECT_FALSE(Machine().Files().Exists(Machine().System().systemDirectory + "\\A.DLL"));
    EXPECT_TRUE(Machine().Files().Exists(Drivers() + "A.DLL"));
    EXPECT_THAT(TakeVerdicts(), Contains("[unlock] " + Drivers() + "2\\A.DLL"));
}

TEST_F(StagedPlaces, MonitorOfNt4IsKnownByItsTargetName) {
    Begin("nt4", "LOCAL.DLL,A.DLL\r\n", kMonitor);
    EXPECT_EQ(Copy(2, 2), 0u);
    EXPECT_FALSE(Machine().Files().Exists(Machine().System().systemDirectory + "\\LOCAL.DLL"));
    EXPECT_FALSE(Machine().Files().Exists(Machine().System().systemDirectory + "\\A.DLL"));
}

TEST_F(StagedPlaces, MonitorOfAForeignDriverIsHeldAgainstTheSystemDirectoryAndStaysOutOfIt) {
    Begin("nt4", kThreeFiles, kMonitor);
    const std::string inSystem = Machine().System().systemDirectory + "\\A.DLL";
    const std::string folder = Machine().System().systemDirectory + "\\spool\\drivers\\WIN40";
    Machine().Files().MakeFolders(folder);
    WriteFileOn(Machine(), inSystem, MakePeFile("3.0"));
    EXPECT_EQ(Copy(2, 1), 0u);
    EXPECT_THAT(TakeVerdicts(), Contains("[unlock] " + inSystem));
    EXPECT_TRUE(IsOf(folder + "\\A.DLL", "3.0")) << "the newer one of the system directory was staged";
    EXPECT_THAT(TakeCallsOf(Test(), {"CopyFileA"}),
                Not(Contains(HasSubstr(", \"C:\\\\WINNT\\\\system32\\\\A.DLL\", "))));
}

// ---- paths at their limits ------------------------------------------------------------------------------------------

std::string g_directory;

BOOL WINAPI TellDirectory(LPSTR, LPSTR, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed) {
    *needed = static_cast<DWORD>(g_directory.size() + 1);
    if (g_directory.size() >= size) {
        Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    g_directory.copy(reinterpret_cast<char*>(buffer), g_directory.size());
    buffer[g_directory.size()] = 0;
    return TRUE;
}

TEST_F(StagedPlaces, InstalledPathIsCutTo259Bytes) {
    PutInf("A.DLL\r\n");
    constexpr std::size_t kBehind = sizeof "\\3\\A.DLL" - 1;
    for (std::size_t length : {258u, 259u, 260u, 261u, 300u}) {
        g_directory = "C:\\" + std::string(length - kBehind - 3, 'd');
        ReplacedOperations replaced;
        replaced.table.GetPrinterDriverDirectoryA = &TellDirectory;
        EXPECT_EQ(Copy(), 0u);
        const std::string whole = g_directory + "\\3\\A.DLL";
        ASSERT_EQ(whole.size(), length);
        EXPECT_THAT(TakeVerdicts(), Contains("[unlock] " + whole.substr(0, 259))) << length;
    }
}

TEST_F(StagedPlaces, FolderIsEmptiedUpToPathsOf259Bytes) {
    for (std::size_t length : {254u, 255u, 256u, 257u, 258u}) {
        // With a backslash and "*.*" behind it.
        const std::string folder = "C:\\" + std::string(length - 3, 'f');
        Test().TakeCalls();
        DeleteFilesInFolder(folder.c_str(), "*.*");
        const bool fits = length + 4 < 260;
        EXPECT_EQ(Test().TakeCallNames({"FindFirstFileA"}).size(), fits ? 1u : 0u) << length;
    }
}

std::string g_found;

TEST_F(StagedPlaces, FileIsDeletedUpToAPathOf259Bytes) {
    const std::string folder = "C:\\" + std::string(97, 'f');
    for (std::size_t length : {258u, 259u, 260u, 261u}) {
        g_found = std::string(length - folder.size() - 1, 'n');
        ReplacedOperations replaced;
        replaced.table.FindFirstFileA = [](LPCSTR, LPWIN32_FIND_DATAA data) -> HANDLE {
            *data = {};
            g_found.copy(data->cFileName, sizeof data->cFileName - 1);
            return reinterpret_cast<HANDLE>(0x77);
        };
        replaced.table.FindNextFileA = [](HANDLE, LPWIN32_FIND_DATAA) -> BOOL { return FALSE; };
        replaced.table.FindClose = [](HANDLE) -> BOOL { return TRUE; };
        static std::vector<std::string> s_deleted;
        s_deleted.clear();
        replaced.table.DeleteFileA = [](LPCSTR path) -> BOOL {
            s_deleted.emplace_back(path);
            return TRUE;
        };
        DeleteFilesInFolder(folder.c_str(), "*.*");
        if (length < 260) {
            EXPECT_THAT(s_deleted, ElementsAre(folder + "\\" + g_found)) << length;
        } else {
            EXPECT_THAT(s_deleted, SizeIs(0)) << length;
        }
    }
}

}  // namespace
}  // namespace pikel
