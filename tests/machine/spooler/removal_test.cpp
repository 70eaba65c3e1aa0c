// What deletions leave on the machine.
#include "support/spooler_test.h"
#include "machine/colour/colour.h"
#include "machine/services/services.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DWORD kDeleteAllFiles = 4;

// ---- drivers --------------------------------------------------------------------------------------------------------

class DriverLeaves : public SpoolerTest {
  protected:
    DWORD DeleteEx(std::string name, DWORD flags, DWORD version, std::string environment = {}) {
        return CODE_OF(DeletePrinterDriverExA(nullptr, environment.empty() ? nullptr : environment.data(), name.data(),
                                              flags, version));
    }
    std::string InVersion(DWORD version, const std::string& file) {
        return DriverFolder() + "\\" + std::to_string(version) + "\\" + file;
    }
    /// The driver in version 2 and in version 3.
    void InstallBothVersions() {
        DriverText old;
        old.version = 2;
        Stage(old.Files());
        ASSERT_EQ(AddDriver(old), 0u);
        InstallDriver();
    }
};

TEST_F(DriverLeaves, ItsFilesWithoutTheFlagForThem) {
    InstallDriver();
    EXPECT_EQ(DeleteEx("Tarvo Laser", 0, 0), 0u);
    EXPECT_THAT(DriverNames(), IsEmpty());
    EXPECT_TRUE(FileIsThere(InVersion(3, "tarvo.dll")));
}

TEST_F(DriverLeaves, NothingOfAnyVersionWithoutTheFlagForOne) {
    InstallBothVersions();
    EXPECT_EQ(DeleteEx("tarvo laser", DPD_DELETE_UNUSED_FILES, 3), 0u);
    EXPECT_THAT(DriverNames(), IsEmpty());
    for (DWORD version : {2u, 3u}) {
        for (const char* file : {"tarvo.dll", "tarvo.gpd", "tarvoui.dll"}) {
            EXPECT_FALSE(FileIsThere(InVersion(version, file))) << version << " " << file;
        }
    }
}

TEST_F(DriverLeaves, TheOtherVersionWithTheFlagForOne) {
    InstallBothVersions();
    EXPECT_EQ(DeleteEx("Tarvo Laser", DPD_DELETE_SPECIFIC_VERSION, 2), 0u);
    const auto answer = EnumDrivers<DRIVER_INFO_3A>(3);
    ASSERT_EQ(answer.Records().size(), 1u);
    EXPECT_EQ(answer.Records().front().cVersion, 3u);
    EXPECT_TRUE(FileIsThere(InVersion(2, "tarvo.dll"))) << "files are another flag's";
    EXPECT_EQ(DeleteEx("Tarvo Laser", DPD_DELETE_SPECIFIC_VERSION, 0), DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
}

TEST_F(DriverLeaves, AFileThatSomebodyHolds) {
    InstallDriver();
    {
        const Files::Held held = Machine().Files().HoldOpen(InVersion(3, "tarvo.dll"));
        EXPECT_EQ(DeleteEx("Tarvo Laser", 3, 3), 0u);
    }
    EXPECT_THAT(DriverNames(), IsEmpty());
    EXPECT_TRUE(FileIsThere(InVersion(3, "tarvo.dll")));
    EXPECT_FALSE(FileIsThere(InVersion(3, "tarvo.gpd")));
}

TEST_F(DriverLeaves, DependentFilesOnlyWhenAnotherOneNamesThem) {
    DriverText own;
    own.dependentFiles = {"shared.dll", "own.dll"};
    InstallDriver(own);
    DriverText other;
    other.name = "Tarvo Ink";
    other.driverFile = "ink.dll";
    other.dataFile = "ink.gpd";
    other.configFile = "inkui.dll";
    other.dependentFiles = {"SHARED.DLL"};
    InstallDriver(other);
    EXPECT_EQ(DeleteEx("Tarvo Laser", kDeleteAllFiles, 0), DWORD{ERROR_PRINTER_DRIVER_IN_USE});
    EXPECT_TRUE(FileIsThere(InVersion(3, "own.dll")));
    EXPECT_EQ(DeleteEx("Tarvo Laser", 3, 3), 0u);
    EXPECT_TRUE(FileIsThere(InVersion(3, "shared.dll")));
    EXPECT_FALSE(FileIsThere(InVersion(3, "own.dll")));
    EXPECT_EQ(DeleteEx("Tarvo Ink", 3, 3), 0u);
    EXPECT_FALSE(FileIsThere(InVersion(3, "shared.dll")));
}

TEST_F(DriverLeaves, NothingOfAForeignEnvironmentThatPrintersOfTheNameCouldHold) {
    DriverText foreign;
    foreign.environment = "Windows x64";
    Stage(foreign.Files(), "Windows x64");
    ASSERT_EQ(AddDriver(foreign), 0u);
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    EXPECT_EQ(DeleteEx("Tarvo Laser", 3, 3, "Windows x64"), 0u) << "the printer uses the own one";
    EXPECT_FALSE(FileIsThere(DriverFolder("Windows x64") + "\\3\\tarvo.dll"));
    EXPECT_TRUE(FileIsThere(InVersion(3, "tarvo.dll")));
}

TEST_F(DriverLeaves, ForAdministratorsAndARunningSpoolerAlone) {
    InstallDriver();
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(DeleteEx("Tarvo Laser", 3, 3), DWORD{RPC_S_SERVER_UNAVAILABLE});
    Machine().Services().SetState("Spooler", SERVICE_RUNNING);
    SystemDescription description = Machine().System();
    description.administrator = false;
    Machine().SetSystem(description);
    EXPECT_EQ(DeleteEx("Tarvo Laser", 3, 3), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_THAT(DriverNames(), ElementsAre("Tarvo Laser"));
}

class DriverLeavesOnDisk : public SpoolerSystemsTest {};
INSTANTIATE_ON_EVERY_SYSTEM(DriverLeavesOnDisk);

TEST_P(DriverLeavesOnDisk, ItsKeyOnceItIsDeleted) {
    InstallDriver();
    DriverText other;
    other.name = "Tarvo Ink";
    InstallDriver(other);
    char name[] = "TARVO laser";
    EXPECT_EQ(CODE_OF(DeletePrinterDriverA(nullptr, nullptr, name)), 0u);
    Test().Reopen();
    EXPECT_THAT(DriverNames(), ElementsAre("Tarvo Ink"));
    EXPECT_EQ(Registry().Text().find("\\Tarvo Laser]"), std::string::npos);
}

TEST_P(DriverLeavesOnDisk, ItsMonitorUntilThatIsDeleted) {
    WriteFileOn(Machine(), Machine().System().systemDirectory + "\\tarvomon.dll", "monitor");
    char monitor[] = "Tarvo Monitor";
    char file[] = "tarvomon.dll";
    MONITOR_INFO_2A info{monitor, nullptr, file};
    ASSERT_TRUE(AddMonitorA(nullptr, 2, reinterpret_cast<LPBYTE>(&info)));
    DriverText driver;
    driver.monitor = monitor;
    InstallDriver(driver);
    EXPECT_EQ(CODE_OF(DeleteMonitorA(nullptr, nullptr, monitor)), DWORD{ERROR_PRINT_MONITOR_IN_USE});
    ASSERT_TRUE(DeletePrinterDriverA(nullptr, nullptr, driver.name.data()));
    EXPECT_EQ(CODE_OF(DeleteMonitorA(nullptr, nullptr, monitor)), 0u);
    Test().Reopen();
    EXPECT_FALSE(Registry().KeyExists(PrintKey("Monitors\\Tarvo Monitor")));
    EXPECT_EQ(CODE_OF(DeleteMonitorA(nullptr, nullptr, monitor)), DWORD{ERROR_UNKNOWN_PRINT_MONITOR});
}

// ---- colour profiles ------------------------------------------------------------------------------------------------

class ProfileLeaves : public SpoolerTest {
  protected:
    ProfileLeaves() {
        InstallDriver();
        EXPECT_EQ(AddPrinter(), 0u);
        std::string bytes(200, '\0');
        bytes.replace(12, 4, "prtr");
        bytes.replace(36, 4, "acsp");
        WriteFileOn(Machine(), "C:\\Setup\\one.icc", bytes);
        EXPECT_TRUE(InstallColorProfileA(nullptr, "C:\\Setup\\one.icc"));
        EXPECT_TRUE(AssociateColorProfileWithDeviceA(nullptr, "one.icc", "Office"));
    }
    std::string Path() { return ColourProfiles(Machine()).Directory() + "\\one.icc"; }
};

TEST_F(ProfileLeaves, ItsFileWhileSomebodyHoldsIt) {
    {
        const Files::Held held = Machine().Files().HoldOpen(Path());
        EXPECT_EQ(CODE_OF(UninstallColorProfileA(nullptr, Path().c_str(), TRUE)), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_TRUE(FileIsThere(Path()));
    EXPECT_FALSE(ColourProfiles(Machine()).IsInstalled("one.icc"));
}

TEST_F(ProfileLeaves, AnEmptyListOfThePrinterOnceItsLinkIsCut) {
    EXPECT_EQ(CODE_OF(DisassociateColorProfileFromDeviceA(nullptr, Path().c_str(), "office")), 0u);
    Test().Reopen();
    EXPECT_THAT(ColourProfiles(Machine()).LinkedTo("Office"), IsEmpty());
    EXPECT_TRUE(ColourProfiles(Machine()).IsInstalled("one.icc"));
    EXPECT_EQ(CODE_OF(DisassociateColorProfileFromDeviceA(nullptr, "one.icc", "Office")),
              DWORD{ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE});
}

TEST_F(ProfileLeaves, WithItsPrinter) {
    ASSERT_TRUE(DeletePrinter(Open("Office").Get()));
    EXPECT_EQ(CODE_OF(CreateICA("WINSPOOL", "Office", nullptr, nullptr)), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(AddPrinter(), 0u);
    EXPECT_THAT(ColourProfiles(Machine()).LinkedTo("Office"), IsEmpty()) << "a new printer starts without links";
}

}  // namespace
}  // namespace pikel
