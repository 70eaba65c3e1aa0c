// The copy of a driver's files under its hardware ID.
#include "driver/hwid_folder.h"

#include "frame/pikel.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kDrivers[] = "C:\\WINDOWS\\system32\\spool\\drivers\\w32x86";

class HardwareIdFolder : public MachineTest {
  protected:
    /// Adds a version 3 driver with four files, and a dependent one where it is named.
    void AddDriver(const char* hardwareId, const char* dependent = nullptr, const char* driverName = "Aurora") {
        for (const char* file : {"aurora.dll", "auroraui.dll", "aurora.gpd", "aurora.hlp", "res.dll"}) {
            WriteFileOn(Machine(), std::string(kDrivers) + "\\" + file, file);
        }
        char driver[] = "aurora.dll", config[] = "auroraui.dll", data[] = "aurora.gpd", help[] = "aurora.hlp";
        std::string name = driverName, id = hardwareId, environment = "Windows NT x86";
        std::string dependents = std::string(dependent == nullptr ? "" : dependent) + std::string(2, '\0');
        DRIVER_INFO_6A info{};
        info.cVersion = 3;
        info.pName = name.data();
        info.pEnvironment = environment.data();
        info.pDriverPath = driver;
        info.pConfigFile = config;
        info.pDataFile = data;
        info.pHelpFile = help;
        info.pDependentFiles = dependents.data();
        info.pszHardwareID = id.data();
        ASSERT_TRUE(Platform().AddPrinterDriverA(nullptr, 6, reinterpret_cast<LPBYTE>(&info)))
            << Platform().GetLastError();
        ForgetCalls(Test());
    }
    /// Copies with the spooler's records changed on their way.
    DWORD CopyWith(void (*change)(DRIVER_INFO_6A* records, DWORD count)) {
        static PlatformTable before;
        static void (*edit)(DRIVER_INFO_6A*, DWORD);
        before = Platform();
        edit = change;
        ReplacedOperations replaced;
        replaced.table.EnumPrinterDriversA = [](LPSTR server, LPSTR environment, DWORD level, LPBYTE info, DWORD size,
                                                LPDWORD needed, LPDWORD returned) -> BOOL {
            const BOOL done = before.EnumPrinterDriversA(server, environment, level, info, size, needed, returned);
            if (done) {
                edit(reinterpret_cast<DRIVER_INFO_6A*>(info), *returned);
            }
            return done;
        };
        return DoCopyDriverFileToHWIDFolder("Aurora");
    }
    bool IsMade(const std::string& folder) { return Machine().Files().Exists(std::string(kDrivers) + "\\" + folder); }
    std::vector<std::string> FilesIn(const std::string& folder) {
        std::vector<std::string> names;
        for (const simulated::FileEntry& entry : Machine().Files().List(std::string(kDrivers) + "\\" + folder)) {
            names.push_back(entry.name);
        }
        return names;
    }
};

TEST_F(HardwareIdFolder, BearsTheNameBehindTheBusWithUnderscores) {
    AddDriver("USBPRINT\\Northlight (A-1)/B C", "RES.dll");
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("aurora"), 0u);
    EXPECT_THAT(FilesIn("Northlight__A_1__B_C"),
                ElementsAre("AURORA.DLL", "AURORA.GPD", "AURORA.HLP", "AURORAUI.DLL", "RES.DLL"));
    EXPECT_EQ(ReadFileOn(Machine(), std::string(kDrivers) + "\\Northlight__A_1__B_C\\AURORA.GPD"), "aurora.gpd");
}

TEST_F(HardwareIdFolder, ThatIsThereHasItsFilesOverwritten) {
    AddDriver("Northlight");
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    WriteFileOn(Machine(), std::string(kDrivers) + "\\3\\aurora.gpd", "changed");
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), std::string(kDrivers) + "\\Northlight\\AURORA.GPD"), "changed");
}

TEST_F(HardwareIdFolder, IsForDriversOfVersion3Alone) {
    AddDriver("Northlight");
    for (auto change : {+[](DRIVER_INFO_6A*records, DWORD) { records->cVersion = 2; },
                        +[](DRIVER_INFO_6A*records, DWORD) { records->cVersion = 0x400; }}) {
        EXPECT_EQ(CopyWith(change), 0u);
        EXPECT_FALSE(IsMade("Northlight"));
    }
    EXPECT_EQ(CopyWith([](DRIVER_INFO_6A* records, DWORD count) {
                  EXPECT_EQ(count, 1u);
                  EXPECT_EQ(records->cVersion, 3u);
              }),
              0u);
    EXPECT_TRUE(IsMade("Northlight"));
}

TEST_F(HardwareIdFolder, RecordWithoutAnIdEndsTheSearchForOne) {
    AddDriver("Northlight");
    AddDriver("Northlight", nullptr, "Borealis");
    EXPECT_EQ(CopyWith([](DRIVER_INFO_6A* records, DWORD count) {
                  ASSERT_EQ(count, 2u);
                  records[0].pName = records[1].pName = const_cast<char*>("Aurora");
                  records[0].pszHardwareID = nullptr;
              }),
              0u);
    EXPECT_FALSE(IsMade("Northlight"));
    EXPECT_EQ(CopyWith([](DRIVER_INFO_6A* records, DWORD) {
                  records[0].pName = records[1].pName = const_cast<char*>("Aurora");
                  records[0].pszHardwareID = const_cast<char*>("");
              }),
              0u);
    EXPECT_TRUE(IsMade("Northlight")) << "an empty one doesn't";
}

TEST_F(HardwareIdFolder, TakesTheFourNamedFilesWithoutDependentOnes) {
    AddDriver("Northlight");
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    EXPECT_EQ(FilesIn("Northlight").size(), 4u);
}

TEST_F(HardwareIdFolder, IsNotMadeForAnUnknownDriverOrOneWithoutAHardwareId) {
    AddDriver("");
    for (const char* name : {"Aurora", "Nobody"}) {
        EXPECT_EQ(DoCopyDriverFileToHWIDFolder(name), 0u);
    }
    faults::FailCall("EnumPrinterDriversA", 1, 5);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    EXPECT_THAT(Test().TakeCallNames(), Not(Contains("CreateDirectoryA")));
}

TEST_F(HardwareIdFolder, ThatCanNotBeMadeIsAnErrorForAFullDiskAlone) {
    AddDriver("Northlight");
    faults::FailCall("CreateDirectoryA", 1, 5);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    EXPECT_THAT(Test().TakeCallNames(), Not(Contains("CopyFileA")));
    faults::Reset();
    faults::FailCall("CreateDirectoryA", 1, ERROR_DISK_FULL);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), DWORD{ERROR_DISK_FULL});
}

TEST_F(HardwareIdFolder, IsTakenAwayAgainWhenTheDiskIsFull) {
    AddDriver("Northlight");
    faults::FailCall("CopyFileA", 3, ERROR_DISK_FULL);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), DWORD{ERROR_DISK_FULL});
    EXPECT_FALSE(IsMade("Northlight"));
    faults::Reset();
    WriteFileOn(Machine(), std::string(kDrivers) + "\\Northlight\\other.txt", "mine");
    faults::FailCall("CopyFileA", 1, ERROR_DISK_FULL);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), DWORD{ERROR_DISK_FULL});
    EXPECT_THAT(FilesIn("Northlight"), ElementsAre("other.txt")) << "what else is there stays";
}

TEST_F(HardwareIdFolder, FullDiskTakesEarlierCopiesAwayToo) {
    AddDriver("Northlight");
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    EXPECT_EQ(FilesIn("Northlight").size(), 4u);
    faults::FailCall("CopyFileA", 2, ERROR_DISK_FULL);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), DWORD{ERROR_DISK_FULL});
    EXPECT_FALSE(IsMade("Northlight"));
}

TEST_F(HardwareIdFolder, RealFullDiskLeavesNoHalfCopy) {
    AddDriver("Northlight");
    Machine().Files().SetFreeSpace(25);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), DWORD{ERROR_DISK_FULL});
    EXPECT_FALSE(IsMade("Northlight"));
}

TEST_F(HardwareIdFolder, OtherFailuresOfACopyArePassedOver) {
    AddDriver("Northlight");
    faults::FailCall("CopyFileA", 2, 32);
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    EXPECT_EQ(FilesIn("Northlight").size(), 3u);
}

TEST_F(HardwareIdFolder, SlotLogsItsFrame) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_CopyDriverFileToHWIDFolder("Aurora"), 0u);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("PI_KEL_CopyDriverFileToHWIDFolder Start", "DoCopyDriverFileToHWIDFolder(Aurora) Start",
                    "DoCopyDriverFileToHWIDFolder End(0)", "PI_KEL_CopyDriverFileToHWIDFolder End:(0x00000000)", ""));
    EXPECT_EQ(table.PI_KEL_CopyDriverFileToHWIDFolder(nullptr), 0x90010057u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_CopyDriverFileToHWIDFolder Start",
                                              "PI_KEL_CopyDriverFileToHWIDFolder End:(0x90010057)", ""));
}

class HardwareIdFolderOnEverySystem : public EverySystemTest {};

TEST_P(HardwareIdFolderOnEverySystem, IsForTheXpGenerationAlone) {
    ForgetCalls(Test());
    EXPECT_EQ(DoCopyDriverFileToHWIDFolder("Aurora"), 0u);
    const std::vector<std::string> calls = TakeCallsOf(Test(), {"EnumPrinterDriversA"});
    const std::string system = GetParam();
    if (!system.starts_with("xp")) {
        EXPECT_THAT(calls, IsEmpty());
        return;
    }
    const std::string environment = system == "xp"       ? "Windows NT x86"
                                    : system == "xp-x64" ? "Windows x64"
                                                         : "Windows IA64";
    ASSERT_FALSE(calls.empty());
    EXPECT_THAT(calls[0], ::testing::HasSubstr("\"" + environment + "\""));
}
INSTANTIATE_ON_EVERY_SYSTEM(HardwareIdFolderOnEverySystem);

}  // namespace
}  // namespace pikel
