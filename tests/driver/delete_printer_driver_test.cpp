// The removal of drivers and language monitors through the spooler.
#include "driver/delete_printer_driver.h"

#include <algorithm>
#include <string>
#include <vector>

#include "driver/delete_driver_file.h"
#include "driver/delete_driver_routines.h"
#include "driver/delete_file_routines.h"
#include "driver/delete_language_monitor.h"
#include "support/calls.h"
#include "support/spooler_setup.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// Which routines a system's removal takes.
struct SystemCase {
    const char* system;
    const char* driverRoutine;
    const char* monitorRoutine;
};
constexpr SystemCase kSystems[] = {
    {"win95", "DeletePrinterDriver9x()", "DeleteLanguageMonitor9x()"},
    {"win98", "DeletePrinterDriver9x()", "DeleteLanguageMonitor9x()"},
    {"winme", "DeletePrinterDriver9x()", "DeleteLanguageMonitor9x()"},
    {"nt4", "DeletePrinterDriverNT()", "DeleteLanguageMonitorNT()"},
    {"win2000", "DeletePrinterDriver2k()", "DeleteLanguageMonitor2k()"},
    {"xp", "DeletePrinterDriver2k()", "DeleteLanguageMonitor2k()"},
    {"xp-ia64", "DeletePrinterDriver2k()", "DeleteLanguageMonitor2k()"},
    {"xp-x64", "DeletePrinterDriver2k()", "DeleteLanguageMonitor2k()"},
    {"vista", "DeletePrinterDriver2k()", "DeleteLanguageMonitorVista()"},
    {"vista-ia64", "DeletePrinterDriver2k()", "DeleteLanguageMonitorVista()"},
    {"vista-x64", "DeletePrinterDriver2k()", "DeleteLanguageMonitorVista()"},
    {"other", "DeletePrinterDriver2k()", "DeleteLanguageMonitorVista()"},
};

/// A machine with the driver "Aurora 500" and its monitor, and a second driver that shares a file with it.
class DriverRemovalTest : public MachineTest {
  protected:
    void Begin(const std::string& system) {
        Start(system);
        m_case = *std::ranges::find_if(kSystems, [&](const SystemCase& c) { return c.system == system; });
        PutMonitor(Machine(), "Aurora Monitor", "aurmon.dll");
        PutDriver(Machine(), {.dependents = {"shared.dll"}, .monitor = "Aurora Monitor"});
        PutDriver(Machine(), {.name = "Borealis 9",
                              .driver = "boreal.dll",
                              .config = "borealui.dll",
                              .data = "boreal.gpd",
                              .dependents = {"SHARED.dll"}});
        ForgetCalls(Test());
    }
    bool Is9x() { return Machine().Is9x(); }
    bool IsNt4() const { return m_case.system == std::string("nt4"); }
    bool IsVista() const { return m_case.monitorRoutine == std::string("DeleteLanguageMonitorVista()"); }
    bool DeletesFilesItself() { return Is9x() || IsNt4(); }

    std::string InSystem(const std::string& file) { return Machine().System().systemDirectory + "\\" + file; }
    /// Where the running system keeps the files of its drivers.
    std::string InPlace(const std::string& file) {
        return DriverFolderOf() + (Is9x() ? "" : "\\" + std::to_string(OwnDriverVersion(Machine()))) + "\\" + file;
    }
    bool IsThere(const std::string& path) { return Machine().Files().Exists(path); }

    DWORD Remove(const std::string& name = "Aurora 500", DWORD restart = 0) {
        return DoDeletePrinterDriver(OwnVersionCode(Machine()), name.c_str(), OwnProcessorCode(Machine()), 0, nullptr,
                                     0, restart);
    }
    const char* SpoolerCall() { return DeletesFilesItself() ? "DeletePrinterDriverA" : "DeletePrinterDriverExA"; }

    static inline const Lines kSteps = {"EnumPrinterDriversA",   "RegOpenKeyExA",
                                        "DeletePrinterDriverA",  "DeletePrinterDriverExA",
                                        "DeleteMonitorA",        "GetPrinterDriverDirectoryA",
                                        "DeleteFileA",           "LoadLibraryA",
                                        "FreeLibrary",           "StartServiceA",
                                        "ControlService",        "EnumPrintersA",
                                        "UninstallColorProfileA"};
    // ---- log lines of the steps ----

    Lines EnvironmentLines() {
        if (Is9x()) {
            return {};
        }
        return {"ProcessorType = " + std::to_string(OwnProcessorCode(Machine())),
                "Environment = " + std::string(Machine().Environment())};
    }
    Lines ListLines() {
        return {"CDeleteDriverFile::GetFileList() Start",
                "GetMonitorFile() Start",
                "GetMonitorFile() End(0)",
                "AURORA.DLL -> Delete",
                "AURORA.GPD -> Delete",
                "AURORAUI.DLL -> Delete",
                "SHARED.DLL -> Delete",
                "BOREAL.DLL -> Other Driver Used",
                "BOREAL.GPD -> Other Driver Used",
                "BOREALUI.DLL -> Other Driver Used",
                "SHARED.DLL -> Other Driver Used",
                "AURMON.DLL(Monitor) -> Delete",
                "CDeleteDriverFile::GetFileList() End(0)"};
    }
    std::string MonitorLine() { return std::string(m_case.monitorRoutine) + " - Aurora Monitor" + (Is9x() ? "" : " "); }
    Lines FileLines(const std::string& file) {
        Lines lines;
        if (Is9x()) {
            lines = {"DeleteDriverFile9x() - " + file + " Start", "(" + InSystem(file) + ") is deleted",
                     "DeleteDriverFile9x() End(0)"};
        } else if (IsNt4()) {
            lines = {"DeleteDriverFileNT - (" + file + ") Start",
                     "(" + DriverFolderOf() + "\\" + file + ") is not delete(2)", "(" + InPlace(file) + ") is deleted",
                     "DeleteDriverFileNT() End(0)"};
        }
        return lines + Lines{"DeleteDriverFiles - (" + file + ") is deleted"};
    }
    Lines MonitorFileLines() {
        Lines lines = {"DeleteMonitorFile9x() - AURMON.DLL Start", "DeleteMonitorFile9x() End(0)"};
        if (!Is9x()) {
            lines = {"DeleteMonitorFileNT() - AURMON.DLL Start",
                     "DeleteFile(" + DriverFolderOf() + "\\AURMON.DLL) - (2)", "DeleteMonitorFileNT() End(0)"};
        }
        return lines + Lines{"DeleteMonitorFile - (AURMON.DLL) is deleted"};
    }

    SystemCase m_case{};
};

class DriverRemoval : public DriverRemovalTest {
  protected:
    DriverRemoval() { Begin("xp"); }
};

class DriverRemovalOnEverySystem : public DriverRemovalTest, public ::testing::WithParamInterface<std::string> {
  protected:
    DriverRemovalOnEverySystem() { Begin(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(DriverRemovalOnEverySystem);

// ---- the whole road -------------------------------------------------------------------------------------------------

TEST_P(DriverRemovalOnEverySystem, LeavesNothingOfTheDriverButWhatOthersUse) {
    EXPECT_EQ(Remove(), 0u);
    EXPECT_FALSE(IsDriverRegistered(Machine(), "Aurora 500"));
    EXPECT_TRUE(IsDriverRegistered(Machine(), "Borealis 9"));
    EXPECT_FALSE(IsMonitorRegistered(Machine(), "Aurora Monitor"));
    EXPECT_FALSE(IsThere(InSystem("aurmon.dll")));
    for (const char* file : {"aurora.dll", "auroraui.dll", "aurora.gpd"}) {
        EXPECT_FALSE(IsThere(InPlace(file))) << file;
    }
    for (const char* file : {"shared.dll", "boreal.dll", "borealui.dll", "boreal.gpd"}) {
        EXPECT_TRUE(IsThere(InPlace(file))) << file;
    }
}

TEST_P(DriverRemovalOnEverySystem, TakesDriverMonitorAndFilesInThatOrder) {
    EXPECT_EQ(Remove(), 0u);
    Lines expected = {"EnumPrinterDriversA", "EnumPrinterDriversA", "RegOpenKeyExA"};
    expected = expected + (DeletesFilesItself() ? Lines{"DeletePrinterDriverA"}
                                                : Lines{"LoadLibraryA", "DeletePrinterDriverExA", "FreeLibrary"});
    if (IsVista()) {
        // The spooler and the service that depends on it.
        expected = expected + Lines{"ControlService", "ControlService", "StartServiceA", "StartServiceA"};
    }
    expected =
        expected + Lines{"EnumPrinterDriversA", "EnumPrinterDriversA", "DeleteMonitorA", "GetPrinterDriverDirectoryA"};
    for (int file = 0; file < 3; ++file) {
        if (Is9x()) {
            expected = expected + Lines{"GetPrinterDriverDirectoryA", "DeleteFileA"};
        } else if (IsNt4()) {
            expected = expected + Lines{"GetPrinterDriverDirectoryA", "DeleteFileA", "DeleteFileA"};
        }
    }
    expected = expected + (Is9x() ? Lines{"GetPrinterDriverDirectoryA", "DeleteFileA"}
                                  : Lines{"DeleteFileA", "GetPrinterDriverDirectoryA", "DeleteFileA"});
    EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAreArray(expected));
}

TEST_P(DriverRemovalOnEverySystem, LogsEveryStep) {
    Test().TurnLogOn();
    EXPECT_EQ(Remove(), 0u);
    const std::string driver = m_case.driverRoutine;
    const std::string monitor = m_case.monitorRoutine;
    const Lines lines = Test().TakeLog();
    Lines expected =
        Lines{"DoDeletePrinterDriver(Aurora 500) Start", "CDeleteDriverFile::DeletePrinterDriver() Start"} +
        EnvironmentLines() + ListLines() +
        Lines{driver + " - Aurora 500 Start", driver + " End(0)", monitor + " Start(1)", MonitorLine()};
    if (IsVista()) {
        // The restart tells at detail level that the spooler's program is free.
        const auto stopped = std::ranges::find_if(
            lines, [](const std::string& line) { return line.starts_with("...Service Stopped("); });
        ASSERT_NE(stopped, lines.end());
        expected.push_back(*stopped);
    }
    expected = expected + Lines{monitor + " End(0)", "CDeleteDriverFile::DeleteDriverFiles() Start"} +
               FileLines("AURORA.DLL") + FileLines("AURORA.GPD") + FileLines("AURORAUI.DLL") +
               Lines{"DeleteDriverFiles - (SHARED.DLL) is in use"} + MonitorFileLines() +
               Lines{"CDeleteDriverFile::DeleteDriverFiles() End(0)", "CDeleteDriverFile::DeletePrinterDriver() End(0)",
                     "DoDeletePrinterDriver End(0)"};
    EXPECT_THAT(lines, ElementsAreArray(expected));
}

TEST_P(DriverRemovalOnEverySystem, PlainLogHasTheLinesOfThatLevel) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Remove(), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines{"DoDeletePrinterDriver(Aurora 500) Start"} + EnvironmentLines() +
                                 Lines{"GetMonitorFile() Start", "GetMonitorFile() End(0)", MonitorLine(),
                                       "DoDeletePrinterDriver End(0)"}));
}

TEST_P(DriverRemovalOnEverySystem, KeepsTheMonitorThatAnotherDriverUses) {
    PutDriver(Machine(), {.name = "Corona", .data = "corona.gpd", .monitor = "AURORA MONITOR"});
    ForgetCalls(Test());
    Test().TurnLogOn();
    EXPECT_EQ(Remove(), 0u);
    EXPECT_THAT(Test().TakeLog(), AllOf(Contains("Aurora Monitor is used by Other Driver"),
                                        Contains("DeleteMonitorFile - (AURMON.DLL) is in use")));
    EXPECT_TRUE(IsMonitorRegistered(Machine(), "Aurora Monitor"));
    EXPECT_TRUE(IsThere(InSystem("aurmon.dll")));
    EXPECT_THAT(Test().TakeCallNames({"DeleteMonitorA"}), IsEmpty());
}

TEST_P(DriverRemovalOnEverySystem, OfADriverWithoutAMonitorReachesTheMonitorFileWithAnEmptyName) {
    Test().TurnLogOn();
    EXPECT_EQ(Remove("Borealis 9"), 0u);
    const Lines lines = Test().TakeLog();
    const std::string monitor = m_case.monitorRoutine;
    EXPECT_THAT(lines,
                AllOf(Contains(monitor + " Start(1)"), Contains(monitor + " End(0)"),
                      Contains("DeleteMonitorFile - () is deleted"), Not(Contains(StartsWith(monitor + " - ")))));
    if (!Is9x()) {
        EXPECT_THAT(lines, AllOf(Contains("DeleteFile(" + InSystem("") + ") - (5)"),
                                 Contains("DeleteFile(" + DriverFolderOf() + "\\) - (5)")));
    }
    EXPECT_TRUE(IsMonitorRegistered(Machine(), "Aurora Monitor"));
    EXPECT_FALSE(IsDriverRegistered(Machine(), "Borealis 9"));
    EXPECT_THAT(Test().TakeCallNames({"DeleteMonitorA"}), IsEmpty());
}

TEST_P(DriverRemovalOnEverySystem, AsksTheSpoolerAlsoForADriverThatItDoesNotKnow) {
    Test().TurnLogOn();
    EXPECT_EQ(Remove("Nobody"), DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    EXPECT_THAT(Test().TakeLog(), AllOf(Contains("DeletePrinterDriver Error(1797)"),
                                        Contains(std::string(m_case.driverRoutine) + " End(1797)")));
    EXPECT_EQ(TakeCallsOf(Test(), {SpoolerCall()}).size(), Is9x() ? 1u : 2u);
    EXPECT_TRUE(IsThere(InPlace("aurora.dll")));
}

TEST_P(DriverRemovalOnEverySystem, OfADriverInUseLeavesEverything) {
    PutPrinter("Office", "Aurora 500");
    ForgetCalls(Test());
    EXPECT_EQ(Remove(), DWORD{ERROR_PRINTER_DRIVER_IN_USE});
    EXPECT_THAT(Test().TakeCallNames({"DeleteMonitorA", "DeleteFileA"}), IsEmpty());
    EXPECT_TRUE(IsDriverRegistered(Machine(), "Aurora 500"));
    EXPECT_TRUE(IsMonitorRegistered(Machine(), "Aurora Monitor"));
    EXPECT_TRUE(IsThere(InPlace("aurora.dll")));
}

// ---- failures of a step ---------------------------------------------------------------------------------------------

TEST_F(DriverRemoval, RequiresAName) {
    Test().TurnLogOn();
    EXPECT_EQ(DoDeletePrinterDriver(3, nullptr, 0, 0, nullptr, 0, 1), DWORD{ERROR_INVALID_PARAMETER});
    for (auto routine : {&DeletePrinterDriver9x, &DeletePrinterDriverNT, &DeletePrinterDriver2k}) {
        EXPECT_EQ(routine(nullptr, 3, nullptr, nullptr, 0, 1), DWORD{ERROR_INVALID_PARAMETER});
    }
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames({"OpenSCManagerA", "LoadLibraryA"}), IsEmpty());
    // An empty name is a name that the spooler refuses.
    EXPECT_EQ(Remove(""), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CDeleteDriverFile().DeletePrinterDriver(3, nullptr, 0, nullptr, 0), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_P(DriverRemovalOnEverySystem, TouchesNothingWhenTheDriversCanNotBeListed) {
    faults::FailCall("EnumPrinterDriversA", 1, 5);
    Test().TurnLogOn();
    EXPECT_EQ(Remove(), 5u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(
                    Lines{"DoDeletePrinterDriver(Aurora 500) Start", "CDeleteDriverFile::DeletePrinterDriver() Start"} +
                    EnvironmentLines() +
                    Lines{"CDeleteDriverFile::GetFileList() Start", "CDeleteDriverFile::GetFileList() End(5)",
                          "CDeleteDriverFile::DeletePrinterDriver() End(5)", "DoDeletePrinterDriver End(5)"}));
    EXPECT_TRUE(IsDriverRegistered(Machine(), "Aurora 500"));
    EXPECT_THAT(Test().TakeCallNames({SpoolerCall(), "DeleteMonitorA", "DeleteFileA"}), IsEmpty());
}

TEST_P(DriverRemovalOnEverySystem, KeepsMonitorAndFilesWhenTheDriverStays) {
    faults::FailCall(SpoolerCall(), 1, 5, true);
    EXPECT_EQ(Remove(), 5u);
    EXPECT_TRUE(IsMonitorRegistered(Machine(), "Aurora Monitor"));
    EXPECT_TRUE(IsThere(InPlace("aurora.dll")));
    EXPECT_THAT(Test().TakeCallNames({"DeleteMonitorA", "DeleteFileA"}), IsEmpty());
}

TEST_P(DriverRemovalOnEverySystem, KeepsFilesAndProfilesWhenTheMonitorStays) {
    faults::FailCall("DeleteMonitorA", 1, 3008);
    char profile[] = "C:\\loose.icc";
    WriteFileOn(Machine(), profile, "profile");
    LPSTR profiles[] = {profile};
    Test().TurnLogOn();
    EXPECT_EQ(
        DoDeletePrinterDriver(OwnVersionCode(Machine()), "Aurora 500", OwnProcessorCode(Machine()), 1, profiles, 0, 0),
        3008u);
    EXPECT_THAT(Test().TakeLog(), AllOf(Contains("DeleteMonitor Error(3008)"),
                                        Contains(std::string(m_case.monitorRoutine) + " End(3008)"),
                                        Contains("CDeleteDriverFile::DeletePrinterDriver() End(3008)"),
                                        Contains("DoDeletePrinterDriver End(3008)")));
    EXPECT_FALSE(IsDriverRegistered(Machine(), "Aurora 500"));
    EXPECT_THAT(Test().TakeCallNames({"DeleteFileA", "UninstallColorProfileA"}), IsEmpty());
    EXPECT_TRUE(IsThere(profile));
    EXPECT_TRUE(IsThere(InSystem("aurmon.dll")));
}

TEST_P(DriverRemovalOnEverySystem, KeepsFilesWhenTheDriverDirectoryCanNotBeHad) {
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
    EXPECT_EQ(Remove(), 1722u);
    EXPECT_FALSE(IsDriverRegistered(Machine(), "Aurora 500"));
    EXPECT_FALSE(IsMonitorRegistered(Machine(), "Aurora Monitor"));
    EXPECT_TRUE(IsThere(InSystem("aurmon.dll")));
    EXPECT_THAT(Test().TakeCallNames({"DeleteFileA"}), IsEmpty());
}

TEST_P(DriverRemovalOnEverySystem, SucceedsWithAFileThatSomebodyHolds) {
    const simulated::Files::Held held = Machine().Files().HoldOpen(InPlace("aurora.dll"));
    EXPECT_EQ(Remove(), 0u);
    EXPECT_TRUE(IsThere(InPlace("aurora.dll")));
    EXPECT_FALSE(IsThere(InPlace("aurora.gpd")));
    EXPECT_FALSE(IsDriverRegistered(Machine(), "Aurora 500"));
}

TEST_F(DriverRemoval, WithoutRouteGivesCode120) {
    simulated::SystemDescription system = *simulated::FindSystem("nt4");
    system.major = 3;
    system.minor = 51;
    TestMachine test(system);
    test.TurnLogOn();
    EXPECT_EQ(DoDeletePrinterDriver(1, "Aurora 500", 0, 0, nullptr, 0, 1), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_THAT(test.TakeLog(),
                ElementsAre("DoDeletePrinterDriver(Aurora 500) Start", "CDeleteDriverFile::DeletePrinterDriver() Start",
                            "CDeleteDriverFile::GetFileList() Start", "CDeleteDriverFile::GetFileList() End(0)",
                            "CDeleteDriverFile::DeletePrinterDriver() End(120)", "DoDeletePrinterDriver End(120)"));
    EXPECT_EQ(DeleteLanguageMonitor(nullptr, 3, "Aurora 500", "Aurora Monitor", 1), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
}

// ---- colour profiles ------------------------------------------------------------------------------------------------

TEST_P(DriverRemovalOnEverySystem, UninstallsProfilesLastWhereTheSystemHasThem) {
    char profile[] = "C:\\loose.icc";
    WriteFileOn(Machine(), profile, "profile");
    LPSTR profiles[] = {profile};
    const bool hasRoutine = GetParam() != "win95" && GetParam() != "nt4";
    EXPECT_EQ(
        DoDeletePrinterDriver(OwnVersionCode(Machine()), "Aurora 500", OwnProcessorCode(Machine()), 1, profiles, 7, 0),
        0u);
    EXPECT_EQ(IsThere(profile), !hasRoutine);
    const Lines calls = Test().TakeCallNames({"DeleteMonitorA", "UninstallColorProfileA"});
    EXPECT_THAT(calls, ElementsAreArray(hasRoutine ? Lines{"DeleteMonitorA", "UninstallColorProfileA"}
                                                   : Lines{"DeleteMonitorA"}));
}

TEST_F(DriverRemoval, GivesTheCodeOfTheProfiles) {
    char profile[] = "C:\\missing.icc";
    LPSTR profiles[] = {profile};
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterDriver(3, "Aurora 500", 0, 1, profiles, 0, 0), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Test().TakeLog().back(), "DoDeletePrinterDriver End(2)");
    EXPECT_FALSE(IsDriverRegistered(Machine(), "Aurora 500"));
}

TEST_F(DriverRemoval, LeavesProfilesAloneWithoutAListOrAfterAFailure) {
    char profile[] = "C:\\loose.icc";
    WriteFileOn(Machine(), profile, "profile");
    LPSTR profiles[] = {profile};
    EXPECT_EQ(DoDeletePrinterDriver(3, "Nobody", 0, 1, profiles, 0, 0), DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    EXPECT_EQ(DoDeletePrinterDriver(3, "Aurora 500", 0, 0, profiles, 0, 0), 0u);
    EXPECT_EQ(DoDeletePrinterDriver(3, "Borealis 9", 0, 1, nullptr, 0, 0), 0u);
    EXPECT_TRUE(IsThere(profile));
    EXPECT_THAT(Test().TakeCallNames({"EnumPrintersA", "UninstallColorProfileA"}), IsEmpty());
}

}  // namespace

}  // namespace pikel
