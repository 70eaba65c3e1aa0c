// Directory ids: which a program may set, and where the system's own lie.
#include "machine/inf/directory_ids.h"
#include "support/queue_test.h"
#include "machine/operations.h"

namespace pikel {
namespace {

using simulated::SystemDirectory;
using ::testing::ElementsAre;
using testing_support::EverySystemTest;
using testing_support::QueueTest;
using testing_support::ReadFileOn;

class DirectoryIds : public QueueTest {
  protected:
    DWORD SetCode(DWORD id, const char* folder) {
        Platform().SetLastError(0);
        return Platform().SetupSetDirectoryIdA(m_inf.Get(), id, folder) ? 0 : Platform().GetLastError();
    }
    /// Where a file goes for an id.
    std::string FolderOf(DWORD id) {
        char buffer[MAX_PATH] = "";
        OpenInfAgain("[A]\r\nk=%" + std::to_string(id) + "%\r\n");
        EXPECT_TRUE(Platform().SetupGetLineTextA(nullptr, m_other.Get(), "A", "k", buffer, sizeof buffer, nullptr));
        return buffer;
    }
    void OpenInfAgain(const std::string& text) {
        testing_support::WriteFileOn(Machine(), "C:\\source\\other.inf", text);
        m_other.Reset(Platform().SetupOpenInfFileA("C:\\source\\other.inf", nullptr, INF_STYLE_WIN4, nullptr));
    }
    InfHandle m_other;
};

TEST_F(DirectoryIds, OnlyUserIdsCanBeSet) {
    OpenInf("[I]\r\n");
    for (DWORD id : {0u, 1u, 10u, 11u, 23u, 32767u, 65535u, 0xffffffffu}) {
        EXPECT_EQ(SetCode(id, "C:\\x"), DWORD{ERROR_INVALID_PARAMETER}) << id;
        if (id != 0) {
            EXPECT_EQ(SetCode(id, ""), DWORD{ERROR_INVALID_PARAMETER}) << id;
        }
    }
    for (DWORD id : {32768u, 40000u, 66000u, 66001u, 66002u, 66003u, 0xfffffffeu}) {
        EXPECT_EQ(SetCode(id, "C:\\x"), 0u) << id;
    }
}

TEST_F(DirectoryIds, BelongToOneOpenInf) {
    OpenInf("[I]\r\n");
    EXPECT_EQ(SetCode(41000, "C:\\mine"), 0u);
    EXPECT_EQ(FolderOf(41000), "%41000%");
}

TEST_F(DirectoryIds, PrintingsIdsCanBeSet) {
    OpenInf("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n[DestinationDirs]\r\nF=66000\r\n");
    EXPECT_EQ(SetCode(66000, "C:\\Windows\\other"), 0u);
    EXPECT_TRUE(Run());
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\Windows\\other\\a.txt"), "aaa");
}

TEST_F(DirectoryIds, NullAndEmptyTakeAFolderAway) {
    const std::string target = Machine().System().systemDirectory + "\\a.txt";
    for (const char* folder : {static_cast<const char*>(nullptr), ""}) {
        for (DWORD id : {0u, 40000u}) {
            OpenInf("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n[DestinationDirs]\r\nF=40000\r\n");
            EXPECT_EQ(SetCode(id, folder), 0u);
            EXPECT_TRUE(Run());
            EXPECT_EQ(ReadFileOn(Machine(), target), "aaa");
            EXPECT_EQ(Machine().Files().Delete(target), 0u);
            EXPECT_FALSE(Machine().Files().Exists("C:\\target"));
        }
    }
}

TEST_F(DirectoryIds, AFolderMayEndInABackslash) {
    OpenInf("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n[DestinationDirs]\r\nF=40000,\\sub\r\n");
    EXPECT_EQ(SetCode(40000, "C:\\target\\"), 0u);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets("C:\\target\\sub"), ElementsAre("a.txt=aaa"));
}

// ---- the system's own -----------------------------------------------------------------------------------------------

struct PlaceCase {
    const char* system;
    DWORD id;
    const char* folder;  ///< null: unknown
};

TEST(SystemDirectories, LieWhereTheFamilyHasThem) {
    static const PlaceCase cases[] = {
        {"xp", 10, "C:\\WINDOWS"},
        {"xp", 11, "C:\\WINDOWS\\system32"},
        {"xp", 12, "C:\\WINDOWS\\system32\\drivers"},
        {"xp", 17, "C:\\WINDOWS\\inf"},
        {"xp", 18, "C:\\WINDOWS\\help"},
        {"xp", 20, "C:\\WINDOWS\\fonts"},
        {"xp", 21, "C:\\WINDOWS\\system32\\viewers"},
        {"xp", 23, "C:\\WINDOWS\\system32\\spool\\drivers\\color"},
        {"xp", 24, "C:\\"},
        {"xp", 25, "C:\\WINDOWS"},
        {"xp", 30, "C:\\"},
        {"xp", 50, "C:\\WINDOWS\\system"},
        {"xp", 51, "C:\\WINDOWS\\system32\\spool"},
        {"xp", 52, "C:\\WINDOWS\\system32\\spool\\drivers"},
        {"xp", 53, "C:\\WINDOWS\\Profiles"},
        {"xp", 54, "C:\\"},
        {"xp", 55, "C:\\WINDOWS\\system32\\spool\\prtprocs"},
        {"xp", 16422, "C:\\Program Files"},
        {"xp", 66001, "C:\\WINDOWS\\system32\\spool\\prtprocs\\w32x86"},
        {"xp", 66002, "C:\\WINDOWS\\system32"},
        {"xp-x64", 66001, "C:\\WINDOWS\\system32\\spool\\prtprocs\\x64"},
        {"xp-ia64", 66001, "C:\\WINDOWS\\system32\\spool\\prtprocs\\ia64"},
        {"win98", 11, "C:\\WINDOWS\\SYSTEM"},
        {"win98", 12, "C:\\WINDOWS\\SYSTEM\\iosubsys"},
        {"win98", 23, "C:\\WINDOWS\\SYSTEM\\color"},
        {"win98", 55, "C:\\WINDOWS\\SYSTEM"},
        {"win98", 66000, nullptr},
        {"win98", 66003, nullptr},
        {"nt4", 10, "C:\\WINNT"},
        {"nt4", 12, "C:\\WINNT\\System32\\drivers"},
        {"xp", 0, nullptr},
        {"xp", 99, nullptr},
        {"xp", 40000, nullptr},
        {"xp", 66004, nullptr},
    };
    std::string current;
    std::unique_ptr<testing_support::TestMachine> machine;
    for (const PlaceCase& place : cases) {
        if (machine == nullptr || current != place.system) {
            machine.reset();
            machine = std::make_unique<testing_support::TestMachine>(place.system);
            current = place.system;
        }
        const std::optional<std::string> folder = SystemDirectory(**machine, place.id);
        ASSERT_EQ(folder.has_value(), place.folder != nullptr) << place.system << " " << place.id;
        if (folder.has_value()) {
            EXPECT_TRUE(simulated::EqualNoCase(*folder, place.folder))
                << place.system << " " << place.id << " is " << *folder;
        }
    }
}

class PrintingIds : public EverySystemTest {};

/// The spooler and colour management say where their folders are.
TEST_P(PrintingIds, AreThoseThatTheServicesTell) {
    char driver[MAX_PATH] = "";
    char colour[MAX_PATH] = "";
    DWORD needed = 0;
    DWORD size = sizeof colour;
    const bool hasDriver = !Machine().Is9x() &&
                           Platform().GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<LPBYTE>(driver),
                                                                 sizeof driver, &needed) != FALSE;
    const bool hasColour = !Machine().Is9x() && simulated::GetColorDirectoryA(nullptr, colour, &size) != FALSE;
    const auto driverFolder = SystemDirectory(Machine(), 66000);
    const auto colourFolder = SystemDirectory(Machine(), 66003);
    ASSERT_EQ(driverFolder.has_value(), hasDriver);
    ASSERT_EQ(colourFolder.has_value(), hasColour);
    EXPECT_EQ(driverFolder.value_or(""), driver);
    EXPECT_EQ(colourFolder.value_or(""), colour);
}

INSTANTIATE_ON_EVERY_SYSTEM(PrintingIds);

}  // namespace
}  // namespace pikel
