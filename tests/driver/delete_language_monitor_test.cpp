// The per-system routines that delete language monitors.
#include <string>
#include <vector>

#include "driver/delete_language_monitor.h"
#include "machine/services/services.h"
#include "support/calls.h"
#include "support/spooler_setup.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

struct MonitorRoutine {
    std::string name;
    DWORD (*remove)(LPCSTR server, DWORD version, LPCSTR driver, LPCSTR monitor, DWORD enabled);
    DWORD version;      ///< the one that it acts for
    bool anyVersion;    ///< or for every one
    const char* blank;  ///< behind the monitor's name in the log
    bool restarts;
};
const MonitorRoutine kRoutines[] = {
    {"DeleteLanguageMonitor9x()", &DeleteLanguageMonitor9x, 0, true, "", false},
    {"DeleteLanguageMonitorNT()", &DeleteLanguageMonitorNT, 2, false, " ", false},
    {"DeleteLanguageMonitor2k()", &DeleteLanguageMonitor2k, 3, false, " ", false},
    {"DeleteLanguageMonitorVista()", &DeleteLanguageMonitorVista, 3, false, " ", true},
};

/// The machine's system plays no part in a routine that is called by itself.
class LanguageMonitorRemoval : public MachineTest {
  protected:
    void Begin(const MonitorRoutine& routine) {
        SCOPED_TRACE(routine.name);
        Start("xp");
        PutMonitor(Machine(), "Aurora Monitor", "aurmon.dll");
        ForgetCalls(Test());
    }
    bool IsRegistered() { return IsMonitorRegistered(Machine(), "Aurora Monitor"); }
    static Lines StartAnd(const MonitorRoutine& routine, Lines between, DWORD code) {
        between.insert(between.begin(),
                       {routine.name + " Start(1)", routine.name + " - Aurora Monitor" + routine.blank});
        between.push_back(routine.name + " End(" + std::to_string(code) + ")");
        return between;
    }
    /// Without what a restart tells at detail level.
    Lines TakeLog() {
        Lines lines = Test().TakeLog();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("..."); });
        return lines;
    }
};

TEST_F(LanguageMonitorRemoval, DeletesAMonitorThatNobodyElseUses) {
    for (const MonitorRoutine& routine : kRoutines) {
        Begin(routine);
        Test().TurnLogOn();
        EXPECT_EQ(routine.remove(nullptr, routine.version, "Aurora 500", "Aurora Monitor", 1), 0u);
        EXPECT_THAT(TakeLog(), ElementsAreArray(StartAnd(routine, {}, 0)));
        EXPECT_FALSE(IsRegistered());
        const Lines calls = TakeCallsOf(Test(), {"EnumPrinterDriversA", "DeleteMonitorA"});
        ASSERT_EQ(calls.size(), 2u);
        EXPECT_THAT(calls[0], StartsWith("EnumPrinterDriversA(null, null, 0x3, null, 0x0, "));
        EXPECT_THAT(calls[1], StartsWith("DeleteMonitorA(null, null, \"Aurora Monitor\")"));
    }
}

TEST_F(LanguageMonitorRemoval, LogsTheMonitorAtThePlainLevelAlone) {
    for (const MonitorRoutine& routine : kRoutines) {
        Begin(routine);
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.remove(nullptr, routine.version, "Aurora 500", "Aurora Monitor", 1), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.name + " - Aurora Monitor" + routine.blank));
    }
}

TEST_F(LanguageMonitorRemoval, IsLeftUndoneWithoutAMonitorOrWhenItIsNotWanted) {
    for (const MonitorRoutine& routine : kRoutines) {
        Begin(routine);
        Test().TurnLogOn();
        EXPECT_EQ(routine.remove(nullptr, routine.version, "Aurora 500", "Aurora Monitor", 0), 0u);
        EXPECT_EQ(routine.remove(nullptr, routine.version, "Aurora 500", nullptr, 7), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.name + " Start(0)", routine.name + " End(0)",
                                                  routine.name + " Start(7)", routine.name + " End(0)"));
        EXPECT_THAT(Test().TakeCallNames({"OpenSCManagerA", "EnumPrinterDriversA", "DeleteMonitorA"}), IsEmpty());
        EXPECT_TRUE(IsRegistered());
    }
}

TEST_F(LanguageMonitorRemoval, KeepsTheMonitorOfAnotherGenerationsDriver) {
    for (const MonitorRoutine& routine : kRoutines) {
        for (DWORD version : {0u, 1u, 2u, 3u, 4u}) {
            Begin(routine);
            EXPECT_EQ(routine.remove(nullptr, version, "Aurora 500", "Aurora Monitor", 1), 0u);
            EXPECT_EQ(IsRegistered(), !routine.anyVersion && version != routine.version)
                << routine.name << " " << version;
        }
    }
}

TEST_F(LanguageMonitorRemoval, KeepsAMonitorThatAnotherDriverNames) {
    for (const MonitorRoutine& routine : kRoutines) {
        Begin(routine);
        PutDriver(Machine(), {.name = "Borealis 9", .monitor = "AURORA monitor"});
        Test().TurnLogOn();
        EXPECT_EQ(routine.remove(nullptr, routine.version, "Aurora 500", "Aurora Monitor", 1), 0u);
        EXPECT_THAT(TakeLog(), ElementsAreArray(StartAnd(routine, {"Aurora Monitor is used by Other Driver"}, 0)));
        EXPECT_THAT(Test().TakeCallNames({"DeleteMonitorA"}), IsEmpty());
        Test().TurnLogOn(1);
        routine.remove(nullptr, routine.version, "Aurora 500", "Aurora Monitor", 1);
        EXPECT_THAT(Test().TakeLog(), Contains("Aurora Monitor is used by Other Driver"));
    }
}

TEST_F(LanguageMonitorRemoval, GivesTheSpoolersCode) {
    for (const MonitorRoutine& routine : kRoutines) {
        Begin(routine);
        Test().TurnLogOn();
        EXPECT_EQ(routine.remove(nullptr, routine.version, "Aurora 500", "No Monitor", 1),
                  DWORD{ERROR_UNKNOWN_PRINT_MONITOR});
        EXPECT_THAT(TakeLog(), ElementsAre(routine.name + " Start(1)", routine.name + " - No Monitor" + routine.blank,
                                           "DeleteMonitor Error(3000)", routine.name + " End(3000)"));
        EXPECT_EQ(routine.remove("\\\\far", routine.version, "Aurora 500", "Aurora Monitor", 1),
                  DWORD{RPC_S_SERVER_UNAVAILABLE});
    }
}

TEST_F(LanguageMonitorRemoval, OfVistaRestartsTheSpoolerFirstAndHoldsItsHandles) {
    for (const MonitorRoutine& routine : kRoutines) {
        Begin(routine);
        EXPECT_EQ(routine.remove(nullptr, routine.version, "Aurora 500", "Aurora Monitor", 1), 0u);
        const Lines calls = TakeCallsOf(Test(), {"OpenSCManagerA", "OpenServiceA", "StartServiceA",
                                                 "EnumPrinterDriversA", "DeleteMonitorA", "CloseServiceHandle"});
        if (!routine.restarts) {
            EXPECT_EQ(calls.size(), 2u);
            continue;
        }
        EXPECT_THAT(calls[0], StartsWith("OpenSCManagerA(null, null, 0x20000000)"));
        EXPECT_THAT(calls[1], HasSubstr("\"Spooler\", 0xf01ff)"));
        EXPECT_THAT(calls[calls.size() - 4], StartsWith("EnumPrinterDriversA("));
        EXPECT_THAT(calls[calls.size() - 3], StartsWith("DeleteMonitorA("));
        EXPECT_THAT(calls[calls.size() - 2], StartsWith("CloseServiceHandle("));
        EXPECT_THAT(calls[calls.size() - 1], StartsWith("CloseServiceHandle("));
        EXPECT_THAT(calls, Contains(StartsWith("StartServiceA(")));
    }
}

TEST_F(LanguageMonitorRemoval, OfVistaGoesOnWithoutTheRestart) {
    const MonitorRoutine& routine = kRoutines[3];
    struct Case {
        const char* call;
        const char* line;
    };
    for (const Case& one : {Case{"OpenServiceA", "Service(Spooler).Open Error(5)"},
                            Case{"EnumDependentServicesA", "Service(Spooler).Start Error(5)"}}) {
        Begin(routine);
        faults::FailCall(one.call, 1, 5, true);
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.remove(nullptr, 3, "Aurora 500", "Aurora Monitor", 1), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteLanguageMonitorVista() - Aurora Monitor ", one.line));
        EXPECT_FALSE(IsRegistered());
    }
}

// ---- IsMonitorFreeOfOtherDrivers ------------------------------------------------------------------------------------

class MonitorUse : public MachineTest {
  protected:
    MonitorUse() {
        PutMonitor(Machine(), "Aurora Monitor", "aurmon.dll");
        PutDriver(Machine(), {.monitor = "Aurora Monitor"});
        PutDriver(Machine(), {.name = "Plain"});
    }
};

TEST_F(MonitorUse, ByTheDriverItselfDoesNotCount) {
    EXPECT_TRUE(IsMonitorFreeOfOtherDrivers("AURORA 500", "aurora monitor"));
    EXPECT_FALSE(IsMonitorFreeOfOtherDrivers("Plain", "AURORA MONITOR"));
    EXPECT_TRUE(IsMonitorFreeOfOtherDrivers("Plain", "Another Monitor"));
}

TEST_F(MonitorUse, CountsDriversOfEveryVersion) {
    PutDriver(Machine(), {.name = "Old", .environment = "Windows NT x86", .version = 2, .monitor = "Aurora Monitor"});
    EXPECT_FALSE(IsMonitorFreeOfOtherDrivers("Aurora 500", "Aurora Monitor"));
}

TEST_F(MonitorUse, ByADriverOfAnotherEnvironmentDoesNotCount) {
    PutDriver(Machine(), {.name = "x64", .environment = "Windows x64", .version = 3, .monitor = "Aurora Monitor"});
    EXPECT_TRUE(IsMonitorFreeOfOtherDrivers("Aurora 500", "Aurora Monitor"));
}

TEST_F(MonitorUse, IsAssumedInDoubt) {
    EXPECT_FALSE(IsMonitorFreeOfOtherDrivers(nullptr, "Aurora Monitor"));
    EXPECT_FALSE(IsMonitorFreeOfOtherDrivers("Aurora 500", nullptr));
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("EnumPrinterDriversA", nth, 1722);
        EXPECT_FALSE(IsMonitorFreeOfOtherDrivers("Aurora 500", "Aurora Monitor"));
    }
    faults::Reset();
    faults::FailCall("HeapAlloc", 1, 8);
    EXPECT_FALSE(IsMonitorFreeOfOtherDrivers("Aurora 500", "Aurora Monitor"));
}

TEST_F(MonitorUse, OnAMachineWithoutDriversIsNone) {
    Start("xp");
    EXPECT_TRUE(IsMonitorFreeOfOtherDrivers("Aurora 500", "Aurora Monitor"));
}

}  // namespace

}  // namespace pikel
