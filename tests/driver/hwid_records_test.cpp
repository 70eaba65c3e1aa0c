// Which of a spooler's records give the copy under a hardware ID its name and its files.
#include <string>
#include <vector>

#include "driver/hwid_folder.h"
#include "support/calls.h"
#include "support/changed_drivers.h"
#include "support/spooler_setup.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr char kDrivers[] = "C:\\WINDOWS\\system32\\spool\\drivers\\w32x86";

char* Text(const char* text) {
    return const_cast<char*>(text);
}

class HardwareIdRecords : public MachineTest {
  protected:
    HardwareIdRecords() {
        PutDriver(Machine(), {.name = "A", .driver = "a.dll", .config = "a.dll", .data = "a.dll"});
        PutDriver(Machine(), {.name = "B", .driver = "b.dll", .config = "b.dll", .data = "b.dll"});
        PutDriver(Machine(), {.name = "C", .driver = "c.dll", .config = "c.dll", .data = "c.dll"});
        ForgetCalls(Test());
    }
    /// Copies with all three records under the name that is asked for and with these hardware IDs.
    DWORD CopyWith(const std::vector<const char*>& ids) {
        ChangedDrivers<DRIVER_INFO_6A> changed([&](DRIVER_INFO_6A* records, DWORD count) {
            ASSERT_EQ(count, ids.size());
            for (DWORD i = 0; i < count; ++i) {
                EXPECT_EQ(std::string(records[i].pName), std::string(1, static_cast<char>('A' + i)));
                records[i].pName = Text("Aurora");
                records[i].pszHardwareID = Text(ids[i]);
            }
        });
        return DoCopyDriverFileToHWIDFolder("Aurora");
    }
    std::vector<std::string> FilesIn(const std::string& folder) {
        std::vector<std::string> names;
        for (const simulated::FileEntry& entry : Machine().Files().List(std::string(kDrivers) + "\\" + folder)) {
            names.push_back(entry.name);
        }
        return names;
    }
    bool IsMade(const std::string& folder) { return Machine().Files().Exists(std::string(kDrivers) + "\\" + folder); }
};

TEST_F(HardwareIdRecords, NameIsWhatStandsBehindTheLastBackslash) {
    EXPECT_EQ(CopyWith({"LPTENUM\\USBPRINT\\Aurora-5", "", ""}), 0u);
    EXPECT_THAT(FilesIn("Aurora_5"), ElementsAre("A.DLL", "B.DLL", "C.DLL"));
    EXPECT_FALSE(IsMade("USBPRINT"));
}

TEST_F(HardwareIdRecords, RecordWithoutAnIdBehindOneThatHasItGivesItsFilesToo) {
    EXPECT_EQ(CopyWith({"North", nullptr, nullptr}), 0u);
    EXPECT_THAT(FilesIn("North"), ElementsAre("A.DLL", "B.DLL", "C.DLL"));
}

TEST_F(HardwareIdRecords, FirstIdIsKeptAndFilesOfAllRecordsGoUnderIt) {
    EXPECT_EQ(CopyWith({"", "North", "South"}), 0u);
    EXPECT_THAT(FilesIn("North"), ElementsAre("A.DLL", "B.DLL", "C.DLL"));
    EXPECT_FALSE(IsMade("South"));
}

TEST_F(HardwareIdRecords, RecordWithoutAnIdInFrontOfAllEndsTheWalkWithoutAFolder) {
    EXPECT_EQ(CopyWith({"", nullptr, "South"}), 0u);
    EXPECT_FALSE(IsMade("South"));
    EXPECT_THAT(Test().TakeCallNames({"CreateDirectoryA", "CopyFileA"}), IsEmpty());
}

TEST_F(HardwareIdRecords, SystemIsAskedWithTheShortVersionStructure) {
    static std::vector<DWORD> sizes;
    static PlatformTable below;
    sizes.clear();
    below = Platform();
    ReplacedOperations replaced;
    replaced.table.GetVersionExA = [](LPOSVERSIONINFOA version) -> BOOL {
        sizes.push_back(version->dwOSVersionInfoSize);
        return below.GetVersionExA(version);
    };
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("A"), 0u);
    EXPECT_THAT(sizes, ElementsAre(148u));
}

TEST_F(HardwareIdRecords, SystemThatDoesNotTellItsVersionKeepsNoFolders) {
    faults::FailCall("GetVersionExA", 1, 5);
    EXPECT_EQ(CopyWith({"North", "", ""}), 0u);
    EXPECT_FALSE(IsMade("North"));
    EXPECT_THAT(Test().TakeCallNames({"EnumPrinterDriversA"}), IsEmpty());
}

}  // namespace
}  // namespace pikel
