// /ia and /dd: drivers.
#include "machine/colour/colour.h"
#include "machine/system/restart.h"
#include "machine/services/services.h"
#include "machine/spooler/monitors.h"
#include "support/print_ui_test.h"

namespace pikel::simulated {

namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

const std::string kAdd = "/ia /m\"Aurora Laser 500\" /f\"C:\\pkg\\aurora.inf\" /l\"C:\\pkg\" ";

class PrintUIDrivers : public PrintUITest {
  protected:
    PrintUIDrivers() { StartWithPackages("xp"); }
};

TEST_F(PrintUIDrivers, DriverIsThereWithItsFilesAndAllThatBelongsToIt) {
    ASSERT_EQ(Run(kAdd + "/K /h\"Windows NT x86\" /v 3 /q"), 0u);
    const std::optional<Driver> driver = DriverOn();
    ASSERT_TRUE(driver.has_value());
    EXPECT_EQ(driver->driverFile, "NLAURORA.DLL");
    EXPECT_EQ(driver->dataFile, "A500.GPD");
    EXPECT_EQ(driver->configFile, "NLAURUI.DLL");
    EXPECT_EQ(driver->helpFile, "NLAURORA.HLP");
    EXPECT_THAT(driver->dependentFiles, ElementsAre("NLRES.DLL"));
    EXPECT_EQ(driver->monitorName, "Aurora Language Monitor");
    EXPECT_EQ(driver->defaultDatatype, "RAW");
    EXPECT_EQ(driver->manufacturer, "Northlight");
    EXPECT_EQ(driver->provider, "Northlight");
    EXPECT_EQ(driver->oemUrl, "http://www.northlight.example/");
    EXPECT_EQ(driver->hardwareId, "USBPRINT\\NorthlightAurora_500");
    EXPECT_EQ(driver->driverVersion, 0x0002000101F40000u);
    EXPECT_THAT(FilesIn(DriverFolder("W32X86\\3")),
                ElementsAre("A500.GPD", "NLAURORA.DLL", "NLAURORA.HLP", "NLAURUI.DLL", "NLRES.DLL"));
    EXPECT_EQ(ReadFileOn(Machine(), DriverFolder("W32X86\\3\\NLRES.DLL")),
              ReadFileOn(Machine(), "C:\\pkg\\NLRES_EN.DLL"));
    EXPECT_TRUE(Monitors(Machine()).Find("Aurora Language Monitor").has_value());
    EXPECT_TRUE(Machine().Files().Exists("C:\\WINDOWS\\system32\\NLMON.DLL"));
    EXPECT_TRUE(ColourProfiles(Machine()).IsInstalled("NLA500A.ICC"));
    EXPECT_TRUE(ColourProfiles(Machine()).IsInstalled("NLDISP.ICC"));
    EXPECT_EQ(Machine().Registry().Number("HKLM\\Software\\Northlight\\Aurora", "Trays"), 3u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\inf\\oem0.inf"), ReadFileOn(Machine(), kSample));
}

TEST_F(PrintUIDrivers, WhatWasInstalledIsOnDisk) {
    ASSERT_EQ(Run(kAdd), 0u);
    Test().Reopen();
    EXPECT_TRUE(DriverOn().has_value());
}

TEST_F(PrintUIDrivers, SecondInstallationReplacesTheFirst) {
    ASSERT_EQ(Run(kAdd), 0u);
    WriteFileOn(Machine(), "C:\\pkg\\A500.GPD", "changed");
    ASSERT_EQ(Run(kAdd), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), DriverFolder("W32X86\\3\\A500.GPD")), "changed");
    EXPECT_THAT(FilesIn("C:\\WINDOWS\\inf"), Not(Contains("oem1.inf")));
    EXPECT_FALSE(Machine().System().restartPending);
}

TEST_F(PrintUIDrivers, FileThatTheSpoolerHoldsIsReplacedAtTheNextStart) {
    ASSERT_EQ(Run(kAdd), 0u);
    WriteFileOn(Machine(), "C:\\pkg\\NLMON.DLL", "changed");
    ASSERT_EQ(Run(kAdd), 0u);
    EXPECT_NE(ReadFileOn(Machine(), "C:\\WINDOWS\\system32\\NLMON.DLL"), "changed");
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    ASSERT_EQ(Restart(Machine()).size(), 1u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\system32\\NLMON.DLL"), "changed");
}

TEST_F(PrintUIDrivers, DriverForAnotherProcessorGetsItsFilesAlone) {
    for (const auto& [environment, folder] :
         {std::pair("Windows x64", "x64\\3"), std::pair("Windows IA64", "IA64\\3")}) {
        ASSERT_EQ(Run(kAdd + "/K /h\"" + environment + "\" /v 3"), 0u);
        EXPECT_TRUE(DriverOn(environment).has_value());
        EXPECT_THAT(FilesIn(DriverFolder(folder)),
                    ElementsAre("A500.GPD", "NLAURORA.DLL", "NLAURORA.HLP", "NLAURUI.DLL", "NLRES.DLL"));
    }
    EXPECT_FALSE(DriverOn().has_value());
    EXPECT_FALSE(Monitors(Machine()).Find("Aurora Language Monitor").has_value());
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\system32\\NLMON.DLL"));
    EXPECT_FALSE(ColourProfiles(Machine()).IsInstalled("NLA500A.ICC"));
    EXPECT_FALSE(Machine().Registry().KeyExists("HKLM\\Software\\Northlight\\Aurora"));
    EXPECT_THAT(FilesIn("C:\\WINDOWS\\inf"), Not(Contains("oem0.inf")));
}

TEST_F(PrintUIDrivers, DriversOfOlderSystemsAreInstalledForThem) {
    ASSERT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\pkg4\\aurora4.inf\" /K /h\"Windows NT x86\" /v 2"), 0u);
    ASSERT_TRUE(DriverOn("Windows NT x86", 2).has_value());
    EXPECT_THAT(FilesIn(DriverFolder("W32X86\\2")),
                ElementsAre("A500.GPD", "NLAUR4.DLL", "NLAUR4.HLP", "NLAUR4UI.DLL", "NLMON4.DLL"));
    ASSERT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\pkg98\\aurora98.inf\" /K /h\"Windows 4.0\" /v 0"), 0u);
    ASSERT_TRUE(DriverOn("Windows 4.0", 0).has_value());
    EXPECT_THAT(FilesIn(DriverFolder("WIN40\\0")),
                ElementsAre("A500.DAT", "NLA500A.ICC", "NLAUR9X.DRV", "NLAUR9X.HLP", "NLDISP.ICC", "NLMON9X.DLL"));
    EXPECT_FALSE(DriverOn().has_value());
}

TEST_F(PrintUIDrivers, Windows2000NamesVersionsByItsOwnTexts) {
    StartWithPackages("win2000");
    ASSERT_EQ(Run(kAdd + "/h\"Intel\" /v\"Windows 2000\" /q"), 0u);
    EXPECT_TRUE(DriverOn().has_value());
    ASSERT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\pkg4\\aurora4.inf\" /h\"Intel\" /v\"Windows NT 4.0\" /q"), 0u);
    EXPECT_TRUE(DriverOn("Windows NT x86", 2).has_value());
    ASSERT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\pkg98\\aurora98.inf\" /h\"Intel\" /v\"Windows 95 or 98\" /q"),
              0u);
    EXPECT_TRUE(DriverOn("Windows 4.0", 0).has_value());
    EXPECT_EQ(Run(kAdd + "/h\"x86\""), 1805u);
    EXPECT_EQ(Run(kAdd + "/h\"Alpha\""), 1805u);
    EXPECT_EQ(Run(kAdd + "/h\"Intel\" /v\"Type 3 - Kernel Mode\""), 87u);
    EXPECT_EQ(Run(kAdd + "/K /h\"Windows NT x86\" /v 3"), 87u);  // came with XP
}

TEST_F(PrintUIDrivers, LaterSystemsTakeWordsWithoutTheSwitch) {
    struct Case {
        const char* words;
        const char* environment;
        DWORD version;
    };
    for (const Case& one :
         {Case{"/h\"x64\" /v\"Type 3 - Kernel Mode\"", "Windows x64", 3}, Case{"/h\"Itanium\"", "Windows IA64", 3},
          Case{"/h\"x86\"", "Windows NT x86", 3}, Case{"/v\"Type 3 - Kernel Mode\"", "Windows NT x86", 3}}) {
        ASSERT_EQ(Run(kAdd + one.words), 0u) << one.words;
        EXPECT_TRUE(DriverOn(one.environment, one.version).has_value()) << one.words;
    }
    ASSERT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\pkg4\\aurora4.inf\" /h Intel /v\"type 2 - kernel mode\""), 0u);
    EXPECT_TRUE(DriverOn("Windows NT x86", 2).has_value());
    ASSERT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\pkg98\\aurora98.inf\" /h x86 /v\"Windows 95, 98 and Me\""), 0u);
    EXPECT_TRUE(DriverOn("Windows 4.0", 0).has_value());
}

TEST_F(PrintUIDrivers, TargetThatTheSystemLacksIsRefused) {
    EXPECT_EQ(Run(kAdd + "/K /h\"Windows Alpha\" /v 3"), 1805u);
    EXPECT_EQ(Run(kAdd + "/K /h\"\" /v 3"), 1805u);
    EXPECT_EQ(Run(kAdd + "/h\"Windows x64\""), 1805u);  // a word is wanted
    EXPECT_EQ(Run(kAdd + "/K /h\"Windows x64\" /v 2"), 87u);
    EXPECT_EQ(Run(kAdd + "/K /h\"Windows NT x86\" /v 4"), 87u);
    EXPECT_EQ(Run(kAdd + "/K /h\"Windows NT x86\" /v three"), 87u);
    EXPECT_EQ(Run(kAdd + "/K /h\"Windows NT x86\" /v\"\""), 87u);
    EXPECT_EQ(Run(kAdd + "/v 3"), 87u);
    EXPECT_FALSE(DriverOn().has_value());
}

TEST_F(PrintUIDrivers, OwnEnvironmentIsTheOneMeant) {
    for (const auto& [system, environment] :
         {std::pair("xp-x64", "Windows x64"), std::pair("vista", "Windows NT x86"),
          std::pair("vista-ia64", "Windows IA64"), std::pair("other", "Windows NT x86")}) {
        StartWithPackages(system);
        ASSERT_EQ(Run(kAdd), 0u) << system;
        EXPECT_TRUE(DriverOn(environment).has_value()) << system;
        EXPECT_TRUE(Monitors(Machine()).Find("Aurora Language Monitor").has_value()) << system;
    }
}

TEST_F(PrintUIDrivers, FilesComeFromTheFolderOrTheInfsOwn) {
    ASSERT_EQ(Machine().Files().Copy(kSample, "C:\\other\\aurora.inf", false), 3u);  // no such folder yet
    WriteFileOn(Machine(), "C:\\other\\aurora.inf", ReadFileOn(Machine(), kSample));
    EXPECT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\other\\aurora.inf\""), 2u);
    EXPECT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\other\\aurora.inf\" /l\"C:\\pkg\""), 0u);
    EXPECT_TRUE(DriverOn().has_value());
}

TEST_F(PrintUIDrivers, FailedInstallationTellsItsCode) {
    EXPECT_EQ(Run("/ia /m\"Aurora 1\" /f\"C:\\pkg\\aurora.inf\""), 1797u);
    EXPECT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\pkg\\missing.inf\""), 2u);
    EXPECT_EQ(Run("/ia /m\"Aurora Laser 500\""), 87u);
    EXPECT_EQ(Run("/ia /f\"C:\\pkg\\aurora.inf\""), 87u);
    WriteFileOn(Machine(), "C:\\bad.inf", "[Version]\nSignature=\"x\"\n");
    EXPECT_EQ(Run("/ia /m\"Aurora Laser 500\" /f\"C:\\bad.inf\""), 0xE0000100u);
    WriteFileOn(Machine(), "C:\\lost.inf",
                "[Version]\nSignature=\"$Windows NT$\"\n[Manufacturer]\nM=M\n[M]\nLost=LOST\n");
    EXPECT_EQ(Run("/ia /m\"Lost\" /f\"C:\\lost.inf\""), 0xE0000102u);
    ASSERT_EQ(Machine().Files().Delete("C:\\pkg\\A500.GPD"), 0u);
    EXPECT_EQ(Run(kAdd), 2u);
    EXPECT_FALSE(DriverOn().has_value());
}

TEST_F(PrintUIDrivers, MonitorWithoutItsLibraryIsRefused) {
    std::string inf = ReadFileOn(Machine(), kSample);
    inf.replace(inf.find("NL_MONITOR,NL_PROFILES"), 10, "NL_PROFILES");
    WriteFileOn(Machine(), kSample, inf);
    EXPECT_EQ(Run(kAdd), 126u);
    EXPECT_FALSE(DriverOn().has_value());
}

TEST_F(PrintUIDrivers, ProfileThatIsNoneStaysAPlainFile) {
    WriteFileOn(Machine(), "C:\\pkg\\NLDISP.ICC", "no profile");
    EXPECT_EQ(Run(kAdd), 0u);
    EXPECT_TRUE(ColourProfiles(Machine()).IsInstalled("NLA500A.ICC"));
    EXPECT_FALSE(ColourProfiles(Machine()).IsInstalled("NLDISP.ICC"));
}

TEST_F(PrintUIDrivers, NeedRightsAndARunningSpooler) {
    ASSERT_EQ(Run(kAdd), 0u);
    LoseRights();
    EXPECT_EQ(Run(kAdd), 5u);
    EXPECT_EQ(Run("/dd /m\"Aurora Laser 500\""), 5u);
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(Run(kAdd), 1722u);
    EXPECT_TRUE(DriverOn().has_value());
}

TEST_F(PrintUIDrivers, DeletedDriverTakesItsFilesAlong) {
    ASSERT_EQ(Run(kAdd), 0u);
    ASSERT_EQ(Run("/ia /m\"Aurora Laser 700\" /f\"C:\\pkg\\aurora.inf\" /l\"C:\\pkg\""), 0u);
    EXPECT_EQ(Run("/dd /m\"Aurora Laser 500\" /K /h\"Windows NT x86\" /v 3 /q"), 0u);
    EXPECT_FALSE(DriverOn().has_value());
    EXPECT_THAT(FilesIn(DriverFolder("W32X86\\3")),
                ElementsAre("A700.GPD", "NLAURORA.DLL", "NLAURORA.HLP", "NLAURUI.DLL", "NLRES.DLL"));
    EXPECT_EQ(Run("/dd /m\"aurora laser 700\""), 0u);
    EXPECT_THAT(FilesIn(DriverFolder("W32X86\\3")), IsEmpty());
    EXPECT_EQ(Run("/dd /m\"Aurora Laser 700\""), 1797u);
    EXPECT_EQ(Run("/dd"), 87u);
    EXPECT_EQ(Run("/dd /m\"Aurora Laser 700\" /h\"Alpha\""), 1805u);
}

TEST_F(PrintUIDrivers, DriverOfAnotherVersionStays) {
    ASSERT_EQ(Run(kAdd), 0u);
    ASSERT_EQ(Run(kAdd + "/K /h\"Windows x64\" /v 3"), 0u);
    EXPECT_EQ(Run("/dd /m\"Aurora Laser 500\" /K /h\"Windows x64\" /v 3"), 0u);
    EXPECT_TRUE(DriverOn().has_value());
    EXPECT_FALSE(DriverOn("Windows x64").has_value());
    EXPECT_EQ(Run("/dd /m\"Aurora Laser 500\" /K /h\"Windows NT x86\" /v 2"), 1797u);
}

TEST_F(PrintUIDrivers, DriverInUseStays) {
    ASSERT_EQ(Run("/if /b\"Office\" /f\"C:\\pkg\\aurora.inf\" /r\"LPT1:\" /m\"Aurora Laser 500\""), 0u);
    EXPECT_EQ(Run("/dd /m\"Aurora Laser 500\""), 3001u);
    EXPECT_TRUE(DriverOn().has_value());
}

}  // namespace

}  // namespace pikel::simulated
