// The per-system routines that delete drivers and language monitors.
#include <string>
#include <vector>

#include "driver/delete_driver_file.h"
#include "driver/delete_driver_routines.h"
#include "driver/delete_file_routines.h"
#include "driver/delete_printer_driver.h"
#include "machine/services/services.h"
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

/// A routine of the NT family with the texts that are its own.
struct NtRoutine {
    const char* system;
    std::string name;
    const char* call;
    std::string restartLine;
    DWORD version;
    DWORD (*remove)(DWORD restart);
};
const NtRoutine kNtRoutines[] = {
    {"nt4", "DeletePrinterDriverNT()", "DeletePrinterDriverA",
     "DeletePrinterDriverNT() - Service(Spooler).ReStart Start", 2,
     [](DWORD restart) { return DeletePrinterDriverNT(nullptr, 2, "Aurora 500", nullptr, 0, restart); }},
    {"xp", "DeletePrinterDriver2k()", "DeletePrinterDriverExA", "DeletePrinterDriver2k() - Service(Spooler).Start", 3,
     [](DWORD restart) { return DeletePrinterDriver2k(nullptr, 3, "Aurora 500", nullptr, 0, restart); }},
};

class DriverRoutine : public MachineTest {
  protected:
    void Begin(const NtRoutine& routine) { Begin(routine.system); }
    void Begin(const char* system) {
        Start(system);
        PutDriver(Machine(), {});
        ForgetCalls(Test());
    }
    bool IsRegistered() { return IsDriverRegistered(Machine(), "Aurora 500"); }
    ULONGLONG Slept(const NtRoutine& routine, DWORD restart = 0) {
        const ULONGLONG before = Machine().Clock();
        routine.remove(restart);
        return Machine().Clock() - before;
    }
    static inline const Lines kSteps = {
        "OpenSCManagerA", "OpenServiceA", "ControlService",       "StartServiceA",          "CloseServiceHandle",
        "Sleep",          "LoadLibraryA", "DeletePrinterDriverA", "DeletePrinterDriverExA", "FreeLibrary"};
};

// ---- the 9x family --------------------------------------------------------------------------------------------------

TEST_F(DriverRoutine, Of9xTriesOnceWithoutTheServiceAndWithoutAnEnvironment) {
    Begin("win98");
    Test().TurnLogOn();
    EXPECT_EQ(DeletePrinterDriver9x(nullptr, 3, "Aurora 500", "Monitor", 2, 1), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DeletePrinterDriver9x() - Aurora 500 Start", "DeletePrinterDriver9x() End(0)"));
    EXPECT_FALSE(IsRegistered());
    const Lines calls = TakeCallsOf(Test(), kSteps);
    EXPECT_THAT(calls, ElementsAre(StartsWith("DeletePrinterDriverA(null, null, \"Aurora 500\")")));
    Test().TurnLogOn();
    EXPECT_EQ(DeletePrinterDriver9x(nullptr, 0, "Aurora 500", nullptr, 0, 1), 1797u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeletePrinterDriver9x() - Aurora 500 Start",
                                              "DeletePrinterDriver Error(1797)", "DeletePrinterDriver9x() End(1797)"));
    EXPECT_EQ(Test().TakeCallNames(kSteps).size(), 1u);
    Test().TurnLogOn(1);
    DeletePrinterDriver9x(nullptr, 0, "Aurora 500", nullptr, 0, 1);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeletePrinterDriver Error(1797)"));
}

TEST_F(DriverRoutine, PassesTheServerOn) {
    Begin("xp");
    EXPECT_EQ(DeletePrinterDriver9x("\\\\far", 0, "Aurora 500", nullptr, 0, 0), 1722u);
    EXPECT_EQ(DeletePrinterDriverNT("\\\\far", 0, "Aurora 500", nullptr, 0, 0), 1722u);
    EXPECT_EQ(DeletePrinterDriver2k("\\\\far", 3, "Aurora 500", nullptr, 0, 0), 1722u);
    for (const std::string& call : TakeCallsOf(Test(), {"DeletePrinterDriverA", "DeletePrinterDriverExA"})) {
        EXPECT_THAT(call, HasSubstr("(\"\\\\\\\\far\", "));
    }
}

// ---- environments ---------------------------------------------------------------------------------------------------

TEST_F(DriverRoutine, OfNtNamesTheEnvironmentOf9xDriversAlone) {
    Begin("nt4");
    for (DWORD version : {0u, 1u, 2u, 3u}) {
        DeletePrinterDriverNT(nullptr, version, "Nobody", nullptr, 2, 0);
        EXPECT_THAT(TakeCallsOf(Test(), {"DeletePrinterDriverA"}).front(),
                    StartsWith(version == 0 ? "DeletePrinterDriverA(null, \"Windows 4.0\", \"Nobody\")"
                                            : "DeletePrinterDriverA(null, null, \"Nobody\")"));
    }
}

TEST_F(DriverRoutine, Of2kNamesTheEnvironmentByVersionAndProcessor) {
    struct Case {
        DWORD version;
        DWORD processor;
        const char* environment;
    };
    const Case cases[] = {{0, 0, "\"Windows 4.0\""},
                          {0, 2, "\"Windows 4.0\""},
                          {2, 0, "\"Windows NT x86\""},
                          {2, 1, "\"Windows IA64\""},
                          {3, 0, "\"Windows NT x86\""},
                          {3, 1, "\"Windows IA64\""},
                          {3, 2, "\"Windows x64\""},
                          {3, 3, "\"Windows NT x86\""},
                          {1, 1, "null"},
                          {4, 2, "null"},
                          {0x400, 0, "null"}};
    for (const Case& one : cases) {
        Begin("xp");
        DeletePrinterDriver2k(nullptr, one.version, "Nobody", nullptr, one.processor, 0);
        char version[16];
        std::snprintf(version, sizeof version, "0x%x", one.version);
        EXPECT_THAT(TakeCallsOf(Test(), {"DeletePrinterDriverExA"}).front(),
                    StartsWith(std::string("DeletePrinterDriverExA(null, ") + one.environment + ", \"Nobody\", 0x3, " +
                               version + ")"));
    }
}

TEST_F(DriverRoutine, Version1IsX86ForTheListsAndTheSpoolersOwnForTheDeletion) {
    Begin("xp");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoDeletePrinterDriver(1, "Aurora 500", 2, 0, nullptr, 0, 0), 1797u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoDeletePrinterDriver(Aurora 500) Start",
                                              "DeletePrinterDriver Error(1797)", "DoDeletePrinterDriver End(1797)"));
    const Lines calls = TakeCallsOf(Test(), {"EnumPrinterDriversA", "DeletePrinterDriverExA"});
    EXPECT_THAT(calls.front(), StartsWith("EnumPrinterDriversA(null, \"Windows NT x86\", 0x3,"));
    EXPECT_THAT(calls.back(), StartsWith("DeletePrinterDriverExA(null, null, \"Aurora 500\", 0x3, 0x1)"));
}

TEST_F(DriverRoutine, EnvironmentOfADeletionIsToldForVersions2And3) {
    struct Case {
        DWORD version;
        DWORD processor;
        const char* environment;
        bool isLogged;
    };
    const Case cases[] = {{0, 2, "Windows 4.0", false},   {1, 2, "Windows NT x86", false},
                          {2, 0, "Windows NT x86", true}, {2, 1, "Windows IA64", true},
                          {3, 2, "Windows x64", true},    {3, 9, "Windows NT x86", true},
                          {4, 1, "Windows NT x86", false}};
    for (const Case& one : cases) {
        Test().TurnLogOn(1);
        EXPECT_STREQ(EnvironmentOfDeletion(one.version, one.processor), one.environment);
        Lines expected;
        if (one.isLogged) {
            expected = {"ProcessorType = " + std::to_string(one.processor),
                        std::string("Environment = ") + one.environment};
        }
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(expected));
    }
}

TEST_F(DriverRoutine, Takes9xDriversOfAnNtMachine) {
    for (const char* system : {"nt4", "xp"}) {
        SCOPED_TRACE(system);
        Start(system);
        PutDriver(Machine(), {.environment = "Windows 4.0", .version = 0, .data = "old.gpd"});
        PutDriver(Machine(), {});
        const std::string folder = DriverFolderOf("Windows 4.0");
        EXPECT_TRUE(Machine().Files().Exists(folder + "\\0\\old.gpd"));
        EXPECT_EQ(DoDeletePrinterDriver(0, "Aurora 500", 0, 0, nullptr, 0, 0), 0u);
        EXPECT_FALSE(Machine().Files().Exists(folder + "\\0\\old.gpd"));
        EXPECT_FALSE(Machine().Registry().KeyExists(
            simulated::PrintKey("Environments\\Windows 4.0\\Drivers\\Version-0\\Aurora 500")));
        EXPECT_TRUE(IsRegistered()) << "the system's own driver stays";
    }
}

// ---- restart, start and second attempt ------------------------------------------------------------------------------

TEST_F(DriverRoutine, OfNtLogsStartAndEndAtDetailLevel) {
    for (const NtRoutine& routine : kNtRoutines) {
        Begin(routine);
        Test().TurnLogOn();
        EXPECT_EQ(routine.remove(0), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.name + " - Aurora 500 Start", routine.name + " End(0)"));
        EXPECT_THAT(Test().TakeCallNames({"OpenSCManagerA", "Sleep"}), IsEmpty());
        EXPECT_FALSE(IsRegistered());
    }
}

TEST_F(DriverRoutine, RestartsTheSpoolerFirstWhenAsked) {
    for (const NtRoutine& routine : kNtRoutines) {
        Begin(routine);
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.remove(1), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.restartLine, routine.name + " - Service.ReStart End"));
        const Lines calls = Test().TakeCallNames({"ControlService", "StartServiceA", routine.call});
        ASSERT_GE(calls.size(), 3u);
        EXPECT_EQ(calls.front(), "ControlService");
        EXPECT_EQ(calls.back(), routine.call);
        EXPECT_THAT(calls, Contains("StartServiceA"));
        EXPECT_EQ(Machine().Services().State("Spooler"), DWORD{SERVICE_RUNNING});
    }
}

TEST_F(DriverRoutine, OpensTheServiceWithTheUsualRights) {
    for (const NtRoutine& routine : kNtRoutines) {
        Begin(routine);
        routine.remove(1);
        const Lines calls = TakeCallsOf(Test(), {"OpenSCManagerA", "OpenServiceA"});
        EXPECT_THAT(calls[0], StartsWith("OpenSCManagerA(null, null, 0x20000000)"));
        EXPECT_THAT(calls[1], AllOf(StartsWith("OpenServiceA("), HasSubstr("\"Spooler\", 0xf01ff)")));
    }
}

TEST_F(DriverRoutine, GoesOnWhenTheRestartFails) {
    for (const NtRoutine& routine : kNtRoutines) {
        Begin(routine);
        faults::FailCall("OpenServiceA", 1, 1060);
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.remove(1), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.restartLine, "Service(Spooler).Open Error(1060)",
                                                  routine.name + " - Service.ReStart End"));
        EXPECT_FALSE(IsRegistered());
        Begin(routine);
        faults::FailCall("EnumDependentServicesA", 1, 5, true);
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.remove(1), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.restartLine, "Service(Spooler).Start Error(5)",
                                                  routine.name + " - Service.ReStart End"));
        EXPECT_FALSE(IsRegistered());
    }
}

TEST_F(DriverRoutine, StartsASpoolerThatDoesNotRunAndTriesAgain) {
    for (const NtRoutine& routine : kNtRoutines) {
        Begin(routine);
        Machine().Services().SetState("Spooler", SERVICE_STOPPED);
        Test().TurnLogOn();
        EXPECT_EQ(routine.remove(0), 0u);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre(routine.name + " - Aurora 500 Start", routine.name + " - Service(Spooler).Start",
                                routine.name + " End(0)"));
        EXPECT_FALSE(IsRegistered());
        const Lines calls = Test().TakeCallNames({"StartServiceA", "Sleep", routine.call, "FreeLibrary"});
        EXPECT_EQ(calls.front(), routine.call);
        EXPECT_EQ(calls[1], "StartServiceA");
    }
}

TEST_F(DriverRoutine, ClosesTheServiceBeforeItWaits) {
    for (const NtRoutine& routine : kNtRoutines) {
        Begin(routine);
        faults::FailCall(routine.call, 1, 1722);
        EXPECT_EQ(routine.remove(0), 0u);
        Lines calls = TakeCallsOf(Test(), {"CloseServiceHandle", "Sleep", routine.call});
        ASSERT_GE(calls.size(), 5u);
        EXPECT_THAT(calls[calls.size() - 1], StartsWith(routine.call));
        EXPECT_EQ(calls[calls.size() - 2], "Sleep(0xc8)");
        EXPECT_THAT(calls[calls.size() - 3], StartsWith("CloseServiceHandle("));
        EXPECT_THAT(calls[calls.size() - 4], StartsWith("CloseServiceHandle("));
    }
}

TEST_F(DriverRoutine, TriesAgainAfterAnyFailureAndStartsNothingForOthers) {
    for (const NtRoutine& routine : kNtRoutines) {
        for (DWORD code : {5u, 1726u, 3001u}) {
            Begin(routine);
            faults::FailCall(routine.call, 1, code);
            Test().TurnLogOn(1);
            EXPECT_EQ(routine.remove(0), 0u);
            EXPECT_THAT(Test().TakeLog(), IsEmpty());
            EXPECT_THAT(Test().TakeCallNames({"OpenSCManagerA", "Sleep", routine.call}),
                        ElementsAre(routine.call, "Sleep", routine.call));
        }
        Begin(routine);
        faults::FailCall(routine.call, 1, 5);
        EXPECT_EQ(Slept(routine), 200u);
    }
}

TEST_F(DriverRoutine, GivesTheCodeOfTheSecondFailure) {
    for (const NtRoutine& routine : kNtRoutines) {
        Begin(routine);
        faults::FailCall(routine.call, 1, 5);
        faults::FailCall(routine.call, 2, 3001);
        Test().TurnLogOn();
        EXPECT_EQ(routine.remove(0), 3001u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.name + " - Aurora 500 Start",
                                                  "DeletePrinterDriver Error(3001)", routine.name + " End(3001)"));
        EXPECT_TRUE(IsRegistered());
        EXPECT_EQ(TakeCallsOf(Test(), {routine.call}).size(), 2u);
    }
}

TEST_F(DriverRoutine, LogsAStartThatFailsAndTriesAgainAllTheSame) {
    for (const NtRoutine& routine : kNtRoutines) {
        struct Case {
            const char* call;
            const char* line;
        };
        for (const Case& one : {Case{"OpenSCManagerA", "Service(Spooler).Open Error(5)"},
                                Case{"EnumDependentServicesA", "Service(Spooler).Start Error(5)"}}) {
            Begin(routine);
            faults::FailCall(routine.call, 1, 1722);
            faults::FailCall(one.call, 1, 5, true);
            Test().TurnLogOn(1);
            EXPECT_EQ(routine.remove(0), 0u);
            EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.name + " - Service(Spooler).Start", one.line));
        }
    }
}

TEST_F(DriverRoutine, Of2kNeedsTheFunctionBeforeAnythingElse) {
    Begin("xp");
    Machine().Modules().RemoveExport("winspool.drv", "DeletePrinterDriverExA");
    Test().TurnLogOn();
    EXPECT_EQ(DeletePrinterDriver2k(nullptr, 3, "Aurora 500", nullptr, 0, 1), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DeletePrinterDriver2k() - Aurora 500 Start", "DeletePrinterDriver2k() End(127)"));
    EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAre("LoadLibraryA", "FreeLibrary"));
    Machine().Modules().Remove("winspool.drv");
    EXPECT_EQ(DeletePrinterDriver2k(nullptr, 3, "Aurora 500", nullptr, 0, 1), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAre("LoadLibraryA"));
    EXPECT_TRUE(IsRegistered());
}

TEST_F(DriverRoutine, Of2kFreesTheLibraryAtTheEnd) {
    Begin("xp");
    faults::FailCall("DeletePrinterDriverExA", 1, 5, true);
    EXPECT_EQ(DeletePrinterDriver2k(nullptr, 3, "Aurora 500", nullptr, 0, 0), 5u);
    EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAre("LoadLibraryA", "DeletePrinterDriverExA", "Sleep",
                                                          "DeletePrinterDriverExA", "FreeLibrary"));
}

}  // namespace

}  // namespace pikel
