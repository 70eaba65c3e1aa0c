// Printer drivers: adding them by each system's rules, and listing them.
#include "machine/spooler/drivers.h"

#include "support/spooler_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DWORD kCopyNew = APD_COPY_NEW_FILES;

/// A driver with every field.
DriverText FullDriver() {
    DriverText driver;
    driver.helpFile = "tarvo.hlp";
    driver.dependentFiles = {"tarvores.dll", "tarvo2.gpd"};
    driver.datatype = "RAW";
    driver.previousNames = {"Tarvo Old", "Tarvo Older"};
    driver.date = {0x11223344, 0x01c1f000};
    driver.driverVersion = 0x0005000100020003;
    driver.manufacturer = "Tarvo";
    driver.url = "http://tarvo.example";
    driver.hardwareId = "LPTENUM\\TarvoLaser";
    driver.provider = "Tarvo Inc.";
    return driver;
}

// ---- the way of each system -----------------------------------------------------------------------------------------

class DriverAdd : public SpoolerSystemsTest {
  protected:
    std::string VersionFolder() {
        return Machine().Is9x() ? DriverFolder() : DriverFolder() + "\\" + std::to_string(OwnVersion());
    }
    std::string Key() {
        std::string key = PrintKey("Environments\\") + std::string(Machine().Environment()) + "\\Drivers\\";
        return Machine().Is9x() ? key : key + "Version-" + std::to_string(OwnVersion()) + "\\";
    }
    DriverText Own(DriverText driver) {
        driver.version = OwnVersion();
        return driver;
    }
};

TEST_P(DriverAdd, PutsTheFilesWhereTheSystemWantsThem) {
    const DriverText driver = Own(FullDriver());
    Stage(driver.Files());
    EXPECT_EQ(AddDriver(driver), 0u);
    const bool moves = Machine().Generation() == Generation::Nt4;
    for (const std::string& file : driver.Files()) {
        EXPECT_TRUE(FileIsThere(VersionFolder() + "\\" + file)) << file;
        EXPECT_EQ(FileIsThere(DriverFolder() + "\\" + file), !moves) << file;
        EXPECT_EQ(ReadFileOn(Machine(), VersionFolder() + "\\" + file), "bytes of " + file);
    }
}

TEST_P(DriverAdd, RegistersWhatWasGiven) {
    const DriverText driver = Own(FullDriver());
    Stage(driver.Files());
    ASSERT_EQ(AddDriver(driver), 0u);
    const std::string key = Key() + "Tarvo Laser";
    EXPECT_EQ(Registry().Text(key, "Driver"), "tarvo.dll");
    EXPECT_EQ(Registry().Text(key, "Data File"), "tarvo.gpd");
    EXPECT_EQ(Registry().Text(key, "Configuration File"), "tarvoui.dll");
    EXPECT_EQ(Registry().Text(key, "Help File"), "tarvo.hlp");
    EXPECT_THAT(Registry().Texts(key, "Dependent Files"), ElementsAre("tarvores.dll", "tarvo2.gpd"));
    EXPECT_EQ(Registry().Text(key, "Datatype"), "RAW");
    EXPECT_EQ(Registry().Number(key, "Version"), OwnVersion());
}

TEST_P(DriverAdd, IsListedWithFullPaths) {
    InstallDriver(FullDriver());
    const auto answer = EnumDrivers<DRIVER_INFO_3A>(3);
    ASSERT_EQ(answer.Code(), 0u);
    ASSERT_EQ(answer.Records().size(), 1u);
    const DRIVER_INFO_3A& info = answer.Records()[0];
    const std::string folder = VersionFolder() + "\\";
    EXPECT_EQ(info.cVersion, OwnVersion());
    EXPECT_STREQ(info.pName, "Tarvo Laser");
    EXPECT_EQ(info.pEnvironment, Machine().Environment());
    EXPECT_EQ(info.pDriverPath, folder + "tarvo.dll");
    EXPECT_EQ(info.pDataFile, folder + "tarvo.gpd");
    EXPECT_EQ(info.pConfigFile, folder + "tarvoui.dll");
    EXPECT_EQ(info.pHelpFile, folder + "tarvo.hlp");
    // The 9x family tells dependent files as they were named.
    const std::string dependentFolder = Machine().Is9x() ? std::string() : folder;
    EXPECT_THAT(MultiText(info.pDependentFiles),
                ElementsAre(dependentFolder + "tarvores.dll", dependentFolder + "tarvo2.gpd"));
    EXPECT_EQ(info.pMonitorName, nullptr);
    EXPECT_STREQ(info.pDefaultDataType, "RAW");
}

TEST_P(DriverAdd, TakesTheLevelsOfItsSystem) {
    const bool hasLevel6 = Machine().Generation() == Generation::WindowsMe ||
                           (!Machine().Is9x() && Machine().Generation() >= Generation::Windows2000);
    const DriverText driver = Own({});
    for (DWORD level = 0; level <= 8; ++level) {
        Stage(driver.Files());
        const bool isTaken = level == 2 || level == 3 || (level == 6 && hasLevel6);
        EXPECT_EQ(AddDriver(driver, level), isTaken ? 0u : ERROR_INVALID_LEVEL) << level;
        DWORD needed = 0;
        DWORD count = 0;
        const DWORD code = CODE_OF(EnumPrinterDriversA(nullptr, nullptr, level, nullptr, 0, &needed, &count));
        const bool isRead = level == 1 || isTaken;
        if (isRead && level <= 2) {
            EXPECT_EQ(code, DriverNames().empty() ? 0u : ERROR_INSUFFICIENT_BUFFER) << level;
        } else {
            EXPECT_EQ(code, isRead ? ERROR_INSUFFICIENT_BUFFER : ERROR_INVALID_LEVEL) << level;
        }
    }
}

TEST_P(DriverAdd, MissingFileLeavesNothingBehind) {
    const DriverText driver = Own(FullDriver());
    for (const std::string& missing : driver.Files()) {
        Stage(driver.Files());
        ASSERT_EQ(Machine().Files().Delete(DriverFolder() + "\\" + missing), 0u);
        EXPECT_EQ(AddDriver(driver), DWORD{ERROR_FILE_NOT_FOUND}) << missing;
        EXPECT_THAT(DriverNames(), IsEmpty()) << missing;
        if (!Machine().Is9x()) {
            EXPECT_FALSE(FileIsThere(VersionFolder() + "\\tarvo.dll")) << missing;
        }
    }
}

TEST_P(DriverAdd, SecondTimeReplacesTheFirst) {
    InstallDriver();
    DriverText driver = Own({});
    driver.name = "TARVO laser";
    driver.datatype = "RAW";
    Stage(driver.Files());
    EXPECT_EQ(AddDriver(driver), 0u);
    EXPECT_THAT(DriverNames(), ElementsAre("Tarvo Laser"));
    EXPECT_STREQ(EnumDrivers<DRIVER_INFO_3A>(3).Records()[0].pDefaultDataType, "RAW");
}

TEST_P(DriverAdd, StaysWithTheMachine) {
    InstallDriver(FullDriver());
    Test().Reopen();
    EXPECT_THAT(DriverNames(), ElementsAre("Tarvo Laser"));
}

INSTANTIATE_ON_EVERY_SYSTEM(DriverAdd);

// ---- Windows 2000 and later -----------------------------------------------------------------------------------------

class DriverAddEx : public SpoolerTest {
  protected:
    std::string Folder() { return DriverFolder() + "\\3\\"; }
    void WriteAt(const std::string& path, const std::string& bytes, DWORD hour) {
        WriteFileOn(Machine(), path, bytes);
        ASSERT_EQ(Machine().Files().SetWrittenAt(path, {0, 0x01c00000 + hour}), 0u);
    }
};

TEST_F(DriverAddEx, CarriesAllFieldsOfLevel6) {
    Stage(FullDriver().Files());
    ASSERT_EQ(AddDriver(FullDriver(), 6, kCopyNew), 0u);
    const auto answer = EnumDrivers<DRIVER_INFO_6A>(6);
    ASSERT_EQ(answer.Records().size(), 1u);
    const DRIVER_INFO_6A& info = answer.Records()[0];
    EXPECT_THAT(MultiText(info.pszzPreviousNames), ElementsAre("Tarvo Old", "Tarvo Older"));
    EXPECT_EQ(info.ftDriverDate.dwLowDateTime, 0x11223344u);
    EXPECT_EQ(info.ftDriverDate.dwHighDateTime, 0x01c1f000u);
    EXPECT_EQ(info.dwlDriverVersion, 0x0005000100020003u);
    EXPECT_STREQ(info.pszMfgName, "Tarvo");
    EXPECT_STREQ(info.pszOEMUrl, "http://tarvo.example");
    EXPECT_STREQ(info.pszHardwareID, "LPTENUM\\TarvoLaser");
    EXPECT_STREQ(info.pszProvider, "Tarvo Inc.");
}

TEST_F(DriverAddEx, FieldsThatWereNotGivenAreNull) {
    InstallDriver();
    const auto answer = EnumDrivers<DRIVER_INFO_6A>(6);
    ASSERT_EQ(answer.Records().size(), 1u);
    const DRIVER_INFO_6A& info = answer.Records()[0];
    for (LPCSTR text :
         {info.pHelpFile, info.pDependentFiles, info.pMonitorName, info.pDefaultDataType, info.pszzPreviousNames,
          info.pszMfgName, info.pszOEMUrl, info.pszHardwareID, info.pszProvider}) {
        EXPECT_EQ(text, nullptr);
    }
    EXPECT_EQ(info.dwlDriverVersion, 0u);
}

TEST_F(DriverAddEx, TakesFullPathsFromAnywhere) {
    WriteFileOn(Machine(), "C:\\Setup\\tarvo.dll", "from the setup");
    WriteFileOn(Machine(), "C:\\Setup\\tarvores.dll", "from the setup");
    DriverText driver;
    driver.driverFile = "C:\\Setup\\tarvo.dll";
    driver.dataFile = DriverFolder() + "\\tarvo.gpd";
    driver.dependentFiles = {"C:\\Setup\\tarvores.dll"};
    Stage({"tarvo.gpd", "tarvoui.dll"});
    ASSERT_EQ(AddDriver(driver, 6, kCopyNew), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvo.dll"), "from the setup");
    EXPECT_TRUE(FileIsThere("C:\\Setup\\tarvo.dll"));
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvores.dll"), "from the setup");
    EXPECT_EQ(EnumDrivers<DRIVER_INFO_2A>(2).Records()[0].pDriverPath, Folder() + "tarvo.dll");
}

TEST_F(DriverAddEx, FileGivenTwiceIsCopiedOnce) {
    DriverText driver;
    driver.configFile = "TARVO.DLL";
    driver.dependentFiles = {"tarvo.gpd"};
    Stage({"tarvo.dll", "tarvo.gpd"});
    EXPECT_EQ(AddDriver(driver, 6, kCopyNew), 0u);
    EXPECT_EQ(Machine().Files().List(DriverFolder() + "\\3").size(), 2u);
}

TEST_F(DriverAddEx, KeepsNewerFilesInPlace) {
    Stage(DriverText().Files());
    WriteAt(Folder() + "tarvo.dll", "in place, newer", 9);
    WriteAt(DriverFolder() + "\\tarvo.dll", "older", 5);
    WriteAt(Folder() + "tarvo.gpd", "in place, older", 5);
    WriteAt(DriverFolder() + "\\tarvo.gpd", "newer", 9);
    WriteAt(Folder() + "tarvoui.dll", "in place, as old", 5);
    WriteAt(DriverFolder() + "\\tarvoui.dll", "as old", 5);
    ASSERT_EQ(AddDriver({}, 6, kCopyNew), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvo.dll"), "in place, newer");
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvo.gpd"), "newer");
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvoui.dll"), "in place, as old");
    ASSERT_EQ(AddDriver({}, 6, APD_COPY_ALL_FILES), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvo.dll"), "older");
}

TEST_F(DriverAddEx, CopyKeepsTheTimeOfTheLastWrite) {
    Stage(DriverText().Files());
    WriteAt(DriverFolder() + "\\tarvo.dll", "driver", 5);
    ASSERT_EQ(AddDriver({}, 6, kCopyNew), 0u);
    EXPECT_EQ(Machine().Files().WrittenAt(Folder() + "tarvo.dll")->dwHighDateTime, 0x01c00005u);
}

TEST_F(DriverAddEx, StrictCopiesAreRefusedAsAWhole) {
    Stage(DriverText().Files());
    ASSERT_EQ(AddDriver({}, 6, kCopyNew), 0u);
    WriteAt(Folder() + "tarvo.dll", "in place", 5);
    WriteAt(DriverFolder() + "\\tarvo.dll", "staged", 4);
    EXPECT_EQ(AddDriver({}, 6, APD_STRICT_UPGRADE), DWORD{ERROR_PRINTER_DRIVER_ALREADY_INSTALLED});
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvo.dll"), "in place");
    // The other two files are as old as those in place.
    EXPECT_EQ(AddDriver({}, 6, APD_STRICT_DOWNGRADE), DWORD{ERROR_PRINTER_DRIVER_ALREADY_INSTALLED});
    for (const char* file : {"tarvo.dll", "tarvo.gpd", "tarvoui.dll"}) {
        WriteAt(Folder() + file, "in place", 5);
        WriteAt(DriverFolder() + "\\" + file, "staged", 6);
    }
    EXPECT_EQ(AddDriver({}, 6, APD_STRICT_DOWNGRADE), DWORD{ERROR_PRINTER_DRIVER_ALREADY_INSTALLED});
    EXPECT_EQ(AddDriver({}, 6, APD_STRICT_UPGRADE), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), Folder() + "tarvo.dll"), "staged");
}

TEST_F(DriverAddEx, TakesOneWayOfCopying) {
    Stage(DriverText().Files());
    for (DWORD flags : {0u, 3u, 6u, 12u, 0x10u, 0x20u, 0x28u}) {
        EXPECT_EQ(AddDriver({}, 6, flags), DWORD{ERROR_INVALID_PARAMETER}) << flags;
    }
    EXPECT_EQ(AddDriver({}, 6, kCopyNew | APD_COPY_FROM_DIRECTORY), 0u);
}

TEST_F(DriverAddEx, FailedCopyRegistersNothing) {
    Stage(DriverText().Files());
    WriteFileOn(Machine(), Folder() + "tarvoui.dll", "in use");
    ASSERT_EQ(Machine().Files().SetWrittenAt(Folder() + "tarvoui.dll", {0, 1}), 0u);
    {
        const Files::Held held = Machine().Files().HoldOpen(Folder() + "tarvoui.dll");
        EXPECT_EQ(AddDriver({}, 6, kCopyNew), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_THAT(DriverNames(), IsEmpty());
    Machine().Files().SetFreeSpace(3);
    EXPECT_EQ(AddDriver({}, 6, kCopyNew), DWORD{ERROR_DISK_FULL});
    EXPECT_THAT(DriverNames(), IsEmpty());
}

// ---- what is refused ------------------------------------------------------------------------------------------------

TEST_F(DriverAddEx, NeedsItsNames) {
    Stage(DriverText().Files());
    const std::function<void(DriverText&)> spoils[] = {
        [](DriverText& driver) { driver.name = ""; },
        [](DriverText& driver) { driver.name = "with\\backslash"; },
        [](DriverText& driver) { driver.name = std::string(256, 'x'); },
        [](DriverText& driver) { driver.driverFile.reset(); },
        [](DriverText& driver) { driver.driverFile = ""; },
        [](DriverText& driver) { driver.dataFile.reset(); },
        [](DriverText& driver) { driver.configFile.reset(); },
        [](DriverText& driver) { driver.configFile = ""; },
    };
    for (const auto& spoil : spoils) {
        DriverText driver;
        spoil(driver);
        EXPECT_EQ(AddDriver(driver, 6, kCopyNew), DWORD{ERROR_INVALID_PARAMETER});
    }
    EXPECT_EQ(CODE_OF(AddPrinterDriverExA(nullptr, 6, nullptr, kCopyNew)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(AddPrinterDriverA(nullptr, 6, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(DriverNames(), IsEmpty());
}

TEST_F(DriverAddEx, WindowsOf9xNeedsNoConfigurationFile) {
    Start("win98");
    DriverText driver;
    driver.version = 0x400;
    driver.configFile.reset();
    driver.dataFile.reset();
    Stage({"tarvo.dll"});
    EXPECT_EQ(AddDriver(driver), 0u);
    EXPECT_EQ(EnumDrivers<DRIVER_INFO_3A>(3).Records()[0].pConfigFile, nullptr);
}

TEST_F(DriverAddEx, UserWithoutRightsIsRefusedOnTheNtFamily) {
    for (const char* system : {"xp", "win98"}) {
        Start(system);
        DriverText driver;
        driver.version = OwnVersion();
        Stage(driver.Files());
        SystemDescription description = Machine().System();
        description.administrator = false;
        Machine().SetSystem(description);
        EXPECT_EQ(AddDriver(driver), Machine().Is9x() ? 0u : ERROR_ACCESS_DENIED) << system;
    }
}

/// Which versions an environment takes.
struct VersionRow {
    const char* system;
    const char* environment;
    std::vector<DWORD> versions;
};
const VersionRow kVersions[] = {
    {"win98", "Windows 4.0", {0, 0x400}},  {"nt4", "Windows 4.0", {0}},
    {"nt4", "Windows NT x86", {2}},        {"win2000", "Windows 4.0", {0}},
    {"win2000", "Windows NT x86", {2, 3}}, {"xp", "Windows NT x86", {2, 3}},
    {"xp", "Windows IA64", {3}},           {"xp", "Windows x64", {3}},
    {"vista-x64", "Windows x64", {3}},     {"vista-x64", "Windows NT x86", {2, 3}},
};

TEST_F(DriverAddEx, VersionMustFitTheEnvironment) {
    for (const VersionRow& row : kVersions) {
        Start(row.system);
        for (DWORD version : {0u, 1u, 2u, 3u, 4u, 0x400u}) {
            DriverText driver;
            driver.environment = row.environment;
            driver.version = version;
            Stage(driver.Files(), row.environment);
            const bool isTaken = std::ranges::find(row.versions, version) != row.versions.end();
            EXPECT_EQ(AddDriver(driver), isTaken ? 0u : ERROR_INVALID_PARAMETER)
                << row.system << ", " << row.environment << ", " << version;
        }
        EXPECT_EQ(DriverNames(row.environment).size(), Machine().Is9x() ? 1u : row.versions.size());
    }
}

TEST_F(DriverAddEx, UnknownEnvironmentIsRefused) {
    DriverText driver;
    driver.environment = "Windows 5.0";
    EXPECT_EQ(AddDriver(driver, 6, kCopyNew), DWORD{ERROR_INVALID_ENVIRONMENT});
    DWORD needed = 0;
    DWORD count = 0;
    EXPECT_EQ(CODE_OF(EnumPrinterDriversA(nullptr, driver.environment->data(), 3, nullptr, 0, &needed, &count)),
              DWORD{ERROR_INVALID_ENVIRONMENT});
}

TEST_F(DriverAddEx, MonitorMustBeThereForADriverThatTheSystemLoads) {
    DriverText driver;
    driver.monitor = "No Such Monitor";
    Stage(driver.Files());
    EXPECT_EQ(AddDriver(driver, 6, kCopyNew), DWORD{ERROR_UNKNOWN_PRINT_MONITOR});
    // Other versions and other systems' drivers keep the name.
    driver.version = 2;
    EXPECT_EQ(AddDriver(driver, 6, kCopyNew), 0u);
    driver.version = 0;
    driver.environment = "Windows 4.0";
    Stage(driver.Files(), "Windows 4.0");
    EXPECT_EQ(AddDriver(driver, 6, kCopyNew), 0u);
    EXPECT_STREQ(EnumDrivers<DRIVER_INFO_3A>(3, "Windows 4.0").Records()[0].pMonitorName, "No Such Monitor");
    driver.version = 3;
    driver.environment = "Windows NT x86";
    driver.monitor = "pjl language MONITOR";
    EXPECT_EQ(AddDriver(driver, 6, kCopyNew), 0u);
}

TEST_F(DriverAddEx, ListsByVersionAndName) {
    for (const char* name : {"Zeta", "alpha", "Mid"}) {
        for (DWORD version : {3u, 2u}) {
            DriverText driver;
            driver.name = name;
            driver.version = version;
            Stage(driver.Files());
            ASSERT_EQ(AddDriver(driver, 3, kCopyNew), 0u);
        }
    }
    EXPECT_THAT(DriverNames(), ElementsAre("alpha", "Mid", "Zeta", "alpha", "Mid", "Zeta"));
    EXPECT_EQ(EnumDrivers<DRIVER_INFO_3A>(3).Records()[0].cVersion, 2u);
    EXPECT_EQ(EnumDrivers<DRIVER_INFO_3A>(3).Records()[5].cVersion, 3u);
    EXPECT_THAT(DriverNames("Windows x64"), IsEmpty());
}

// ---- a printer's driver ---------------------------------------------------------------------------------------------

class DriverOfAPrinter : public SpoolerTest {};

TEST_F(DriverOfAPrinter, IsTheOneOfTheRunningSystem) {
    InstallDriver(FullDriver());
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle printer = OpenPlainly("Office");
    const Answer<DRIVER_INFO_6A> answer([&](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        *count = 1;
        return GetPrinterDriverA(printer.Get(), nullptr, 6, bytes, size, needed);
    });
    ASSERT_EQ(answer.Records().size(), 1u);
    EXPECT_EQ(answer.Records()[0].pDriverPath, DriverFolder() + "\\3\\tarvo.dll");
    DWORD needed = 0;
    std::string other = "Windows x64";
    EXPECT_EQ(CODE_OF(GetPrinterDriverA(printer.Get(), other.data(), 3, nullptr, 0, &needed)),
              DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    other = "Windows 5.0";
    EXPECT_EQ(CODE_OF(GetPrinterDriverA(printer.Get(), other.data(), 3, nullptr, 0, &needed)),
              DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(CODE_OF(GetPrinterDriverA(printer.Get(), nullptr, 4, nullptr, 0, &needed)), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(GetPrinterDriverA(nullptr, nullptr, 3, nullptr, 0, &needed)), DWORD{ERROR_INVALID_HANDLE});
}

TEST_F(DriverOfAPrinter, IsTheHighestVersion) {
    DriverText old;
    old.version = 2;
    Stage(old.Files());
    ASSERT_EQ(AddDriver(old), 0u);
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle printer = OpenPlainly("Office");
    BYTE bytes[1024];
    DWORD needed = 0;
    ASSERT_TRUE(GetPrinterDriverA(printer.Get(), nullptr, 2, bytes, sizeof bytes, &needed));
    DRIVER_INFO_2A info;
    memcpy(&info, bytes, sizeof info);
    EXPECT_EQ(info.cVersion, 3u);
}

// ---- deletion -------------------------------------------------------------------------------------------------------

class DriverDelete : public SpoolerTest {
  protected:
    DWORD Delete(std::string name, std::string environment = {}) {
        return CODE_OF(DeletePrinterDriverA(nullptr, environment.empty() ? nullptr : environment.data(), name.data()));
    }
    DWORD DeleteEx(std::string name, DWORD flags, DWORD version) {
        return CODE_OF(DeletePrinterDriverExA(nullptr, nullptr, name.data(), flags, version));
    }
};

TEST_F(DriverDelete, TakesAllVersionsAndLeavesTheFiles) {
    DriverText old;
    old.version = 2;
    Stage(old.Files());
    ASSERT_EQ(AddDriver(old), 0u);
    InstallDriver();
    EXPECT_EQ(Delete("TARVO LASER"), 0u);
    EXPECT_THAT(DriverNames(), IsEmpty());
    EXPECT_TRUE(FileIsThere(DriverFolder() + "\\3\\tarvo.dll"));
    EXPECT_EQ(Delete("Tarvo Laser"), DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    EXPECT_EQ(Delete(""), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Delete("Tarvo Laser", "Windows 5.0"), DWORD{ERROR_INVALID_ENVIRONMENT});
}

TEST_F(DriverDelete, IsRefusedWhileAPrinterUsesIt) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    EXPECT_EQ(Delete("Tarvo Laser"), DWORD{ERROR_PRINTER_DRIVER_IN_USE});
    EXPECT_EQ(DeleteEx("Tarvo Laser", 3, 3), DWORD{ERROR_PRINTER_DRIVER_IN_USE});
    ASSERT_TRUE(DeletePrinter(Open("Office").Get()));
    EXPECT_EQ(Delete("Tarvo Laser"), 0u);
}

TEST_F(DriverDelete, TakesOneVersionAndItsUnusedFiles) {
    DriverText old;
    old.version = 2;
    Stage(old.Files());
    ASSERT_EQ(AddDriver(old), 0u);
    DriverText other;
    other.name = "Tarvo Ink";
    other.driverFile = "TARVO.DLL";
    other.dataFile = "ink.gpd";
    other.configFile = "inkui.dll";
    InstallDriver();
    InstallDriver(other);
    ASSERT_EQ(AddPrinter(), 0u);
    // The other version serves the printer from now on.
    EXPECT_EQ(DeleteEx("Tarvo Laser", DPD_DELETE_UNUSED_FILES | DPD_DELETE_SPECIFIC_VERSION, 3), 0u);
    EXPECT_THAT(DriverNames(), ElementsAre("Tarvo Laser", "Tarvo Ink"));
    EXPECT_TRUE(FileIsThere(DriverFolder() + "\\3\\tarvo.dll"));  // the other driver's as well
    EXPECT_FALSE(FileIsThere(DriverFolder() + "\\3\\tarvo.gpd"));
    EXPECT_TRUE(FileIsThere(DriverFolder() + "\\2\\tarvo.gpd"));
    EXPECT_EQ(DeleteEx("Tarvo Laser", DPD_DELETE_SPECIFIC_VERSION, 3), DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    EXPECT_EQ(DeleteEx("Tarvo Laser", 8, 3), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(DriverDelete, OfAllFilesIsRefusedWhenOneIsShared) {
    DriverText other;
    other.name = "Tarvo Ink";
    InstallDriver();
    InstallDriver(other);
    EXPECT_EQ(DeleteEx("Tarvo Laser", 4, 0), DWORD{ERROR_PRINTER_DRIVER_IN_USE});
    ASSERT_EQ(Delete("Tarvo Ink"), 0u);
    EXPECT_EQ(DeleteEx("Tarvo Laser", 4, 0), 0u);
    EXPECT_FALSE(FileIsThere(DriverFolder() + "\\3\\tarvo.dll"));
}

}  // namespace
}  // namespace pikel
