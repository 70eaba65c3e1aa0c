#include "driver/file_use.h"

#include "frame/pikel.h"
#include "support/calls.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kMonitors[] = "HKLM\\System\\CurrentControlSet\\Control\\Print\\Monitors\\";

/// A 9x machine with the driver "Aurora" and the dependent files of a test.
class FileUseTest : public MachineTest {
  protected:
    FileUseTest() : MachineTest("win98") {}

    void AddDriver(const std::vector<std::string>& dependents) {
        std::string files;
        for (const std::string& file : dependents) {
            if (!Machine().Files().Exists(Path(file))) {
                WriteFileOn(Machine(), Path(file), "x");
            }
            files += file + '\0';
        }
        files += '\0';
        WriteFileOn(Machine(), Path("aurora.drv"), "x");
        Machine().Registry().SetText(std::string(kMonitors) + "Aurora Monitor", "Driver", "C:\\x\\aurmon.dll");
        char name[] = "Aurora", environment[] = "Windows 4.0", driver[] = "aurora.drv", monitor[] = "Aurora Monitor";
        DRIVER_INFO_3A info{};
        info.cVersion = 0x400;
        info.pName = name;
        info.pEnvironment = environment;
        info.pDriverPath = info.pDataFile = info.pConfigFile = driver;
        info.pDependentFiles = files.data();
        info.pMonitorName = monitor;
        ASSERT_TRUE(Platform().AddPrinterDriverA(nullptr, 3, reinterpret_cast<LPBYTE>(&info)))
            << Platform().GetLastError();
        ForgetCalls(Test());
    }
    std::string Path(const std::string& file) { return Machine().System().systemDirectory + "\\" + file; }
    simulated::Files::Held Hold(const std::string& file) { return Machine().Files().HoldOpen(Path(file), 0); }
    DWORD IsLoaded() { return IsDriverFileLoaded("AURORA"); }
};

class DriverFileUse : public FileUseTest {};

TEST_F(DriverFileUse, IsToldByAnExclusiveOpen) {
    AddDriver({"a.dll", "b.drv", "c.dll"});
    EXPECT_EQ(IsLoaded(), 0u);
    {
        const auto held = Hold("b.drv");
        Test().TurnLogOn(1);
        const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
        EXPECT_EQ(table.PI_KEL_IsDriverFileLoaded("Aurora"), 1u);
        EXPECT_THAT(
            Test().TakeLog(),
            ElementsAre("PI_KEL_IsDriverFileLoaded Start", "GetMonitorFile() Start", "GetMonitorFile() End(0)",
                        "...File(C:\\WINDOWS\\SYSTEM\\a.dll) is not used",
                        "...File(C:\\WINDOWS\\SYSTEM\\b.drv) is used",
                        "...File(C:\\WINDOWS\\SYSTEM\\c.dll) is not used", "PI_KEL_IsDriverFileLoaded End:(1)", ""));
    }
    {
        const auto locked = Machine().Files().LockRange(Path("a.dll"));
        EXPECT_EQ(IsLoaded(), 1u);
    }
    EXPECT_EQ(IsLoaded(), 0u);
}

TEST_F(DriverFileUse, FilesThatSayNothingArePassedOver) {
    const std::pair<const char*, DWORD> cases[] = {
        {"a.dll", 1},      {"a.DRV", 1},      {"a.hlp", 0},      {"aucx.dll", 0},   {"AUC.dll", 0},
        {"usbmon.dll", 0}, {"USBMON.DLL", 0}, {"x9X.dll", 0},    {"xNT.dll", 0},    {"ntx.dll", 1},
        {"9x.dll", 0},     {"ntxnt.dll", 1},  {"aurmon.dll", 0}, {"AURMON.dll", 0}, {"noext", 0},
    };
    for (const auto& [file, loaded] : cases) {
        Start("win98");
        AddDriver({file});
        const auto held = Hold(file);
        EXPECT_EQ(IsLoaded(), loaded) << file;
    }
}

TEST_F(DriverFileUse, DriverItselfIsNotLookedAt) {
    AddDriver({"a.dll"});
    const auto held = Hold("aurora.drv");
    EXPECT_EQ(IsLoaded(), 0u);
}

TEST_F(DriverFileUse, MonitorsFileCountsWhereItsNameCannotBeRead) {
    AddDriver({"aurmon.dll"});
    const auto held = Hold("aurmon.dll");
    EXPECT_EQ(IsLoaded(), 0u);
    faults::FailCall("RegOpenKeyExA", 1, 5);
    EXPECT_EQ(IsLoaded(), 1u);
}

TEST_F(DriverFileUse, DriverWithoutDependentFilesIsNotAskedForItsMonitor) {
    static PlatformTable before;
    static LPSTR dependents;
    static char none[] = "";
    AddDriver({"a.dll"});
    before = Platform();
    ReplacedOperations replaced;
    replaced.table.EnumPrinterDriversA = [](LPSTR server, LPSTR environment, DWORD level, LPBYTE info, DWORD size,
                                            LPDWORD needed, LPDWORD returned) -> BOOL {
        const BOOL done = before.EnumPrinterDriversA(server, environment, level, info, size, needed, returned);
        for (DWORD i = 0; done && i < *returned; ++i) {
            reinterpret_cast<DRIVER_INFO_3A*>(info)[i].pDependentFiles = dependents;
        }
        return done;
    };
    Test().TurnLogOn();
    for (LPSTR files : {static_cast<LPSTR>(nullptr), none}) {
        dependents = files;
        EXPECT_EQ(IsLoaded(), 0u);
        EXPECT_THAT(Test().TakeLog(), IsEmpty());
    }
}

TEST_F(DriverFileUse, UnknownDriverIsNotLoaded) {
    EXPECT_EQ(IsDriverFileLoaded("Nobody"), 0u);
    EXPECT_EQ(IsDriverFileLoaded(nullptr), 0u);
    AddDriver({"a.dll"});
    EXPECT_EQ(IsDriverFileLoaded("Nobody"), 0u);
    faults::FailCall("EnumPrinterDriversA", 1, 5);
    EXPECT_EQ(IsLoaded(), 0u);
}

TEST_F(DriverFileUse, ReadOnlyFileIsMadeWritableAndStaysSo) {
    AddDriver({"a.dll"});
    Machine().Files().SetAttributes(Path("a.dll"), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(IsLoaded(), 0u);
    EXPECT_EQ(Machine().Files().Attributes(Path("a.dll")) & FILE_ATTRIBUTE_READONLY, 0u);
}

TEST_F(DriverFileUse, MissingFileIsLogged) {
    AddDriver({"a.dll"});
    Machine().Files().Delete(Path("a.dll"));
    Test().TurnLogOn(1);
    EXPECT_EQ(IsLoaded(), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("*** CreateFile(C:\\WINDOWS\\SYSTEM\\a.dll): Error(2) ***"));
}

class DriverFileUseOnEverySystem : public EverySystemTest {};

TEST_P(DriverFileUseOnEverySystem, IsAskedOnThe9xFamilyAlone) {
    ForgetCalls(Test());
    EXPECT_EQ(IsDriverFileLoaded("Aurora"), 0u);
    EXPECT_EQ(Test().TakeCallNames().empty(), !Machine().Is9x());
}
INSTANTIATE_ON_EVERY_SYSTEM(DriverFileUseOnEverySystem);

// ---- one file -------------------------------------------------------------------------------------------------------

TEST_F(FileUseTest, OneFileIsProbedWithoutTouchingIt) {
    WriteFileOn(Machine(), "C:\\a.dll", "x");
    EXPECT_EQ(CheckUseMonitorFile("C:\\a.dll"), 0u);
    Test().TurnLogOn();
    {
        const auto held = Machine().Files().HoldOpen("C:\\a.dll");
        EXPECT_EQ(CheckUseMonitorFile("C:\\a.dll"), 1u);
    }
    EXPECT_THAT(Test().TakeLog(), ElementsAre("CheckUseMonitorFile File=C:\\a.dll", "CheckUseMonitorFile End(TRUE)",
                                              "CheckUseMonitorFile End(TRUE)"));
    EXPECT_EQ(CheckUseMonitorFile("C:\\a.dll"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("CheckUseMonitorFile File=C:\\a.dll", "CheckUseMonitorFile End(TRUE)"));
    EXPECT_EQ(CheckUseMonitorFile(nullptr), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("CheckUseMonitorFile End(FALSE)"));
    Test().TurnLogOn(1);
    EXPECT_EQ(CheckUseMonitorFile("C:\\a.dll"), 0u);
    EXPECT_EQ(CheckUseMonitorFile(nullptr), 0u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    Machine().Files().SetAttributes("C:\\a.dll", FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(CheckUseMonitorFile("C:\\a.dll"), 0u);
    EXPECT_NE(Machine().Files().Attributes("C:\\a.dll") & FILE_ATTRIBUTE_READONLY, 0u);
}

// ---- newer or older -------------------------------------------------------------------------------------------------

class CompareVersion : public FileUseTest {
  protected:
    INT Compare() {
        INT result = 99;
        EXPECT_EQ(CompareFileVersion("C:\\source.dll", "C:\\target.dll", result), 0u);
        return result;
    }
    void Put(const char* path, const std::string& bytes, DWORD time) {
        WriteFileOn(Machine(), path, bytes);
        Machine().Files().SetWrittenAt(path, {0, 29000000 + time});
    }
};

TEST_F(CompareVersion, MissingFilesAreTold) {
    EXPECT_EQ(Compare(), -2) << "both: the target's counts";
    WriteFileOn(Machine(), "C:\\source.dll", "x");
    EXPECT_EQ(Compare(), -2);
    Machine().Files().Delete("C:\\source.dll");
    WriteFileOn(Machine(), "C:\\target.dll", "x");
    EXPECT_EQ(Compare(), 2);
}

TEST_F(CompareVersion, VersionsAreNumbersAndTimesSettleTheRest) {
    const struct {
        const char* source;
        const char* target;
        INT timeDifference;
        INT result;
    } cases[] = {
        {"2.0", "1.9", -1, 1},  {"1.9", "2.0", 1, -1}, {"1.0", "1.0", 0, 0},   {"1.0", "1.0", 1, 1},
        {"1.0", "1.0", -1, -1}, {"", "1.0", 1, -1},    {"1.9", "1.10", 0, -1}, {"16777216.1", "16777216.0", -1, -1}};
    for (const auto& one : cases) {
        Put("C:\\source.dll", MakePeFile(one.source), static_cast<DWORD>(10 + one.timeDifference));
        Put("C:\\target.dll", MakePeFile(one.target), 10);
        EXPECT_EQ(Compare(), one.result) << one.source << " and " << one.target;
    }
}

TEST_F(CompareVersion, FilesWithoutVersionsAreComparedByTime) {
    Put("C:\\source.dll", "x", 11);
    Put("C:\\target.dll", MakePeFile("9.0"), 10);
    EXPECT_EQ(Compare(), 1);
    const auto held = Machine().Files().HoldOpen("C:\\target.dll");
    EXPECT_EQ(Compare(), 0) << "a file that can't be opened gives no verdict";
}

TEST_F(CompareVersion, TheFileVersionCounts) {
    PeVersion version;
    version.texts = {{"FileVersion", "2.0"}, {"ProductVersion", "1.0"}};
    Put("C:\\source.dll", MakePeFile(version), 1);
    Put("C:\\target.dll", MakePeFile("1.5"), 10);
    EXPECT_EQ(Compare(), 1);
}

}  // namespace
}  // namespace pikel
