// Service control: opening, the two-call reads, the state wait, and stop, start and restart with dependents.
#include "frame/service.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "frame/log.h"
#include "machine/desktop/desktop.h"
#include "machine/services/services.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using testing_support::MachineTest;
using testing_support::ReplacedOperations;
using testing_support::TestMachine;
using testing_support::WriteFileOn;

constexpr char kProgram[] = "C:\\Services\\main.exe";

/// Number of times that a text stands in a list.
std::size_t Count(const std::vector<std::string>& texts, std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count(texts, text));
}

/// Calls as short steps: a service's name behind the open, the milliseconds behind a sleep.
std::vector<std::string> Steps(const std::vector<std::string>& calls) {
    std::vector<std::string> steps;
    for (const std::string& call : calls) {
        std::string step = call.substr(0, call.find('('));
        if (step == "OpenServiceA") {
            const std::size_t begin = call.find('"') + 1;
            step += ' ' + call.substr(begin, call.find('"', begin) - begin);
        } else if (step == "Sleep") {
            step += ' ' + std::to_string(std::stoul(call.substr(call.find('(') + 1), nullptr, 16));
        }
        steps.push_back(step);
    }
    return steps;
}

/// So many steps from the first of a name on.
std::vector<std::string> StepsFrom(const std::vector<std::string>& steps, std::string_view name, std::ptrdiff_t count) {
    const auto begin = std::ranges::find(steps, name);
    return {begin, begin + std::min(count, steps.end() - begin)};
}

/// "Main" with the dependents "A" and "B" that run, and "C" that doesn't.
class ServiceControl : public MachineTest {
  protected:
    void SetUp() override {
        WriteFileOn(Machine(), kProgram, "program");
        Services().Define("Main", "Main Service", kProgram, {});
        for (const char* name : {"A", "B", "C"}) {
            Services().Define(name, std::string(name) + " Service", "C:\\Services\\dependent.exe", {"Main"});
            Services().SetState(name, SERVICE_RUNNING);
        }
        Services().SetState("Main", SERVICE_RUNNING);
        Services().SetState("C", SERVICE_STOPPED);
        ASSERT_EQ(OpenServiceHandles(m_handles, "Main", kManagerAccess, kServiceAccess), 0u);
        Test().TakeCalls();
    }
    void TearDown() override { m_handles.Close(); }

    simulated::Services& Services() { return Machine().Services(); }
    std::vector<std::string> TakeSteps() { return Steps(Test().TakeCalls()); }
    /// The dependents in the order of the enumeration.
    std::vector<std::string> Dependents(bool activeOnly) {
        std::vector<std::string> names = Services().Dependents("Main");
        if (activeOnly) {
            std::erase(names, "C");
        }
        return names;
    }
    void StopAll() {
        for (const char* name : {"A", "B", "C", "Main"}) {
            Services().SetState(name, SERVICE_STOPPED);
        }
    }
    void RemoveDependents() {
        for (const char* name : {"A", "B", "C"}) {
            Services().Define(name, name, "C:\\Services\\dependent.exe", {});
        }
    }

    ServiceHandles m_handles;
};

void Append(std::vector<std::string>& steps, std::initializer_list<std::string> more) {
    steps.insert(steps.end(), more);
}

const std::initializer_list<std::string> kStopSteps = {"QueryServiceStatus", "ControlService", "Sleep 50",
                                                       "QueryServiceStatus"};
const std::initializer_list<std::string> kStartSteps = {"QueryServiceStatus", "StartServiceA", "Sleep 50",
                                                        "QueryServiceStatus"};

/// Steps for one dependent: open with a manager of its own, work, close both.
void AppendDependent(std::vector<std::string>& steps, const std::string& name,
                     std::initializer_list<std::string> work) {
    Append(steps, {"OpenSCManagerA", "OpenServiceA " + name});
    Append(steps, work);
    Append(steps, {"CloseServiceHandle", "CloseServiceHandle"});
}

// ---- opening --------------------------------------------------------------------------------------------------------

TEST_F(ServiceControl, OpensTheLocalManagerAndTheService) {
    ServiceHandles handles;
    EXPECT_EQ(OpenServiceHandles(handles, "Main", 0x20000000, 0xF01FF), 0u);
    EXPECT_NE(handles.Manager(), nullptr);
    EXPECT_NE(handles.Service(), nullptr);
    const std::vector<std::string> calls = Test().TakeCalls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], ::testing::StartsWith("OpenSCManagerA(null, null, 0x20000000)"));
    EXPECT_THAT(calls[1], ::testing::MatchesRegex("OpenServiceA\\(0x[0-9a-f]+, \"Main\", 0xf01ff\\).*"));
}

TEST_F(ServiceControl, ClosesTheServiceBeforeItsManager) {
    const std::string service = "CloseServiceHandle(";
    ServiceHandles handles;
    ASSERT_EQ(OpenServiceHandles(handles, "Main", kManagerAccess, kServiceAccess), 0u);
    std::vector<std::string> opened;
    for (const std::string& call : Test().TakeCalls()) {
        opened.push_back(call.substr(call.find(" = ") + 3));
    }
    handles.Close();
    EXPECT_EQ(handles.Manager(), nullptr);
    EXPECT_EQ(handles.Service(), nullptr);
    ASSERT_EQ(opened.size(), 2u);
    EXPECT_THAT(Test().TakeCalls(), ElementsAre(service + opened[1] + ") = 0x1", service + opened[0] + ") = 0x1"));
}

TEST_F(ServiceControl, ClosesWhatThePairHeldBeforeItOpensAnew) {
    EXPECT_EQ(OpenServiceHandles(m_handles, "A", kManagerAccess, kServiceAccess), 0u);
    EXPECT_THAT(TakeSteps(),
                ElementsAre("CloseServiceHandle", "CloseServiceHandle", "OpenSCManagerA", "OpenServiceA A"));
}

TEST_F(ServiceControl, NeverLeavesThePairHalfOpen) {
    EXPECT_EQ(OpenServiceHandles(m_handles, "Missing", kManagerAccess, kServiceAccess), 1060u);
    EXPECT_EQ(m_handles.Manager(), nullptr);
    EXPECT_EQ(m_handles.Service(), nullptr);
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    EXPECT_THAT(TakeSteps(), ElementsAre("CloseServiceHandle", "CloseServiceHandle", "OpenSCManagerA",
                                         "OpenServiceA Missing", "CloseServiceHandle"));
}

TEST_F(ServiceControl, GivesTheCodeOfTheManager) {
    faults::FailCall("OpenSCManagerA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(OpenServiceHandles(m_handles, "Main", kManagerAccess, kServiceAccess), 5u);
    EXPECT_EQ(m_handles.Manager(), nullptr);
    EXPECT_EQ(m_handles.Service(), nullptr);
}

TEST_F(ServiceControl, GivesTheCodeOfTheServiceAndNotOfTheClose) {
    ReplacedOperations replaced;
    replaced.table.OpenServiceA = [](SC_HANDLE, LPCSTR, DWORD) -> SC_HANDLE {
        simulated::lastError = 1058;
        return nullptr;
    };
    replaced.table.CloseServiceHandle = [](SC_HANDLE handle) -> BOOL {
        simulated::lastError = 6;
        return NativePlatform().CloseServiceHandle(handle);
    };
    EXPECT_EQ(OpenServiceHandles(m_handles, "Main", kManagerAccess, kServiceAccess), 1058u);
}

// ---- the two-call reads ---------------------------------------------------------------------------------------------

TEST_F(ServiceControl, ListsTheActiveDependents) {
    HeapBlock list;
    DWORD dwCount = 99;
    EXPECT_EQ(Win32EnumDependentServices(m_handles.Service(), SERVICE_ACTIVE, list, &dwCount), 0u);
    ASSERT_EQ(dwCount, 2u);
    const auto* services = static_cast<const ENUM_SERVICE_STATUSA*>(list.Get());
    EXPECT_EQ(services[0].lpServiceName, Dependents(true)[0]);
    EXPECT_EQ(services[1].lpServiceName, Dependents(true)[1]);
    EXPECT_THAT(TakeSteps(), ElementsAre("EnumDependentServicesA", "EnumDependentServicesA"));
}

TEST_F(ServiceControl, ListsAllDependents) {
    HeapBlock list;
    DWORD dwCount = 0;
    EXPECT_EQ(Win32EnumDependentServices(m_handles.Service(), SERVICE_STATE_ALL, list, &dwCount), 0u);
    EXPECT_EQ(dwCount, 3u);
}

TEST_F(ServiceControl, GivesNoListForNoDependents) {
    RemoveDependents();
    HeapBlock list = AllocateHeap(1);
    DWORD dwCount = 99;
    EXPECT_EQ(Win32EnumDependentServices(m_handles.Service(), SERVICE_STATE_ALL, list, &dwCount), 0u);
    EXPECT_EQ(dwCount, 0u);
    EXPECT_FALSE(list);
    EXPECT_THAT(TakeSteps(), ElementsAre("EnumDependentServicesA"));
}

TEST_F(ServiceControl, GivesTheCodeOfAFailedListing) {
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("EnumDependentServicesA", nth, ERROR_ACCESS_DENIED);
        HeapBlock list;
        DWORD dwCount = 99;
        EXPECT_EQ(Win32EnumDependentServices(m_handles.Service(), SERVICE_STATE_ALL, list, &dwCount), 5u) << nth;
        EXPECT_EQ(dwCount, 0u);
        EXPECT_FALSE(list);
    }
}

TEST_F(ServiceControl, ListsNothingWithoutMemory) {
    faults::FailCall("HeapAlloc", 1, 0);
    HeapBlock list;
    DWORD dwCount = 99;
    EXPECT_EQ(Win32EnumDependentServices(m_handles.Service(), SERVICE_STATE_ALL, list, &dwCount), 8u);
    EXPECT_EQ(dwCount, 0u);
    EXPECT_FALSE(list);
}

TEST_F(ServiceControl, ReadsAServicesProgramAndDisplayName) {
    HeapBlock config;
    EXPECT_EQ(Win32QueryServiceConfig(m_handles.Service(), config), 0u);
    ASSERT_TRUE(config);
    EXPECT_STREQ(static_cast<const QUERY_SERVICE_CONFIGA*>(config.Get())->lpBinaryPathName, kProgram);
    EXPECT_STREQ(static_cast<const QUERY_SERVICE_CONFIGA*>(config.Get())->lpDisplayName, "Main Service");
    EXPECT_THAT(TakeSteps(), ElementsAre("QueryServiceConfigA", "QueryServiceConfigA"));
}

TEST_F(ServiceControl, GivesTheCodeOfAFailedConfigurationRead) {
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("QueryServiceConfigA", nth, ERROR_ACCESS_DENIED);
        HeapBlock config;
        EXPECT_EQ(Win32QueryServiceConfig(m_handles.Service(), config), 5u) << nth;
        EXPECT_FALSE(config);
    }
    faults::Reset();
    faults::FailCall("HeapAlloc", 1, 0);
    HeapBlock config;
    EXPECT_EQ(Win32QueryServiceConfig(m_handles.Service(), config), 8u);
}

// ---- stop -----------------------------------------------------------------------------------------------------------

TEST_F(ServiceControl, StopsActiveDependentsAndThenTheService) {
    EXPECT_EQ(Win32StopService(m_handles), 0u);
    std::vector<std::string> expected = {"EnumDependentServicesA", "EnumDependentServicesA"};
    for (const std::string& name : Dependents(true)) {
        AppendDependent(expected, name, kStopSteps);
    }
    Append(expected, kStopSteps);
    EXPECT_THAT(TakeSteps(), ElementsAreArray(expected));
    for (const char* name : {"Main", "A", "B", "C"}) {
        EXPECT_EQ(Services().State(name), SERVICE_STOPPED) << name;
    }
}

TEST_F(ServiceControl, AsksForActiveDependentsOnAStopAndForAllOnAStart) {
    Win32StopService(m_handles);
    EXPECT_THAT(Test().TakeCalls()[0], ::testing::MatchesRegex("EnumDependentServicesA\\(0x[0-9a-f]+, 0x1, null.*"));
    Win32StartService(m_handles);
    EXPECT_THAT(Test().TakeCalls()[0], ::testing::MatchesRegex("EnumDependentServicesA\\(0x[0-9a-f]+, 0x3, null.*"));
    Win32RestartService(m_handles);
    EXPECT_THAT(Test().TakeCalls()[0], ::testing::MatchesRegex("EnumDependentServicesA\\(0x[0-9a-f]+, 0x1, null.*"));
}

TEST_F(ServiceControl, OpensDependentsForExecutionAndWithAllAccess) {
    Win32StopService(m_handles);
    Win32StartService(m_handles);
    std::size_t opened = 0;
    for (const std::string& call : Test().TakeCalls()) {
        if (call.starts_with("OpenSCManagerA")) {
            EXPECT_THAT(call, ::testing::StartsWith("OpenSCManagerA(null, null, 0x20000000)"));
        } else if (call.starts_with("OpenServiceA")) {
            ++opened;
            EXPECT_THAT(call, ::testing::MatchesRegex("OpenServiceA\\(0x[0-9a-f]+, \"[ABC]\", 0xf01ff\\).*"));
        }
    }
    EXPECT_EQ(opened, 5u) << "two to stop and three to start";
}

TEST_F(ServiceControl, SendsNoControlToAStoppedService) {
    StopAll();
    EXPECT_EQ(Win32StopService(m_handles), 0u);
    EXPECT_THAT(TakeSteps(), ElementsAre("EnumDependentServicesA", "QueryServiceStatus"));
}

TEST_F(ServiceControl, GoesStraightToAServiceWithoutDependents) {
    RemoveDependents();
    EXPECT_EQ(Win32StopService(m_handles), 0u);
    EXPECT_THAT(TakeSteps(), ElementsAre("EnumDependentServicesA", "QueryServiceStatus", "ControlService", "Sleep 50",
                                         "QueryServiceStatus"));
}

TEST_F(ServiceControl, WaitsOneSecondBetweenTheLooksAtAState) {
    RemoveDependents();
    Services().SetTimes("Main", 2000, 0);
    EXPECT_EQ(Win32StopService(m_handles), 0u);
    EXPECT_THAT(TakeSteps(), ElementsAre("EnumDependentServicesA", "QueryServiceStatus", "ControlService", "Sleep 50",
                                         "QueryServiceStatus", "Sleep 1000", "QueryServiceStatus", "Sleep 1000",
                                         "QueryServiceStatus"));
}

TEST_F(ServiceControl, TakesAStopInTheThirtiethRound) {
    RemoveDependents();
    Services().SetTimes("Main", 50 + 29 * 1000, 0);
    EXPECT_EQ(Win32StopService(m_handles), 0u);
}

TEST_F(ServiceControl, TimesOutAfterThirtyRounds) {
    RemoveDependents();
    Services().SetTimes("Main", simulated::kNever, 0);
    const ULONGLONG before = Machine().Clock();
    EXPECT_EQ(Win32StopService(m_handles), 1460u);
    EXPECT_EQ(Machine().Clock() - before, 30'050u);
    const std::vector<std::string> steps = TakeSteps();
    EXPECT_EQ(Count(steps, "QueryServiceStatus"), 31u);
    EXPECT_EQ(Count(steps, "Sleep 1000"), 30u);
    EXPECT_EQ(steps.back(), "Sleep 1000");
}

TEST_F(ServiceControl, GivesTheCodeOfAFailedStop) {
    RemoveDependents();
    struct {
        const char* name;
        std::size_t nth;
    } const calls[] = {
        {"EnumDependentServicesA", 1}, {"QueryServiceStatus", 1}, {"ControlService", 1}, {"QueryServiceStatus", 2}};
    for (const auto& call : calls) {
        SCOPED_TRACE(call.name);
        Services().SetState("Main", SERVICE_RUNNING);
        faults::Reset();
        faults::FailCall(call.name, call.nth, 1115);
        EXPECT_EQ(Win32StopService(m_handles), 1115u);
    }
}

TEST_F(ServiceControl, PassesOverADependentThatCanNotBeOpened) {
    Test().TurnLogOn();
    const std::vector<std::string> names = Dependents(true);
    faults::FailCall("OpenServiceA", 1, ERROR_ACCESS_DENIED);
    Services().SetState(names[0], SERVICE_STOP_PENDING);  // counts as active
    EXPECT_EQ(Win32StopService(m_handles), 1051u) << "of the service, which one dependent keeps from stopping";
    EXPECT_THAT(Test().TakeLog(), ElementsAre("Win32StopService error(" + names[0] + "):5"));
    EXPECT_EQ(Services().State(names[1]), SERVICE_STOPPED) << "the next one is taken";
}

TEST_F(ServiceControl, TellsOfADependentAtDetailLevelOnly) {
    Test().TurnLogOn(1);
    faults::FailCall("OpenSCManagerA", 1, ERROR_ACCESS_DENIED, true);
    Win32StopService(m_handles);
    StopAll();
    Win32StartService(m_handles);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(ServiceControl, DropsTheCodeOfADependentThatWillNotStop) {
    const std::vector<std::string> names = Dependents(true);
    faults::FailCall("ControlService", 1, 1061);
    faults::FailCall("ControlService", 2, 1061);
    faults::FailCall("ControlService", 3, 1052);
    EXPECT_EQ(Win32StopService(m_handles), 1052u) << "the service's own code";
    EXPECT_THAT(Test().TakeCallNames({"ControlService"}), ::testing::SizeIs(3));
    for (const std::string& name : names) {
        EXPECT_EQ(Services().State(name), SERVICE_RUNNING);
    }
}

TEST_F(ServiceControl, WaitsForADependentNoLongerThanForTheService) {
    Services().SetTimes(Dependents(true)[0], simulated::kNever, 0);
    faults::FailCall("ControlService", 3, 1051);
    EXPECT_EQ(Win32StopService(m_handles), 1051u);
    EXPECT_EQ(Count(TakeSteps(), "Sleep 1000"), 30u);
}

// ---- start ----------------------------------------------------------------------------------------------------------

TEST_F(ServiceControl, StartsTheServiceAndThenAllDependentsInReverse) {
    StopAll();
    EXPECT_EQ(Win32StartService(m_handles), 0u);
    std::vector<std::string> expected = {"EnumDependentServicesA", "EnumDependentServicesA"};
    Append(expected, kStartSteps);
    std::vector<std::string> names = Dependents(false);
    std::ranges::reverse(names);
    for (const std::string& name : names) {
        AppendDependent(expected, name, kStartSteps);
    }
    EXPECT_THAT(TakeSteps(), ElementsAreArray(expected));
    for (const char* name : {"Main", "A", "B", "C"}) {
        EXPECT_EQ(Services().State(name), SERVICE_RUNNING) << name;
    }
}

TEST_F(ServiceControl, SendsNoCommandToARunningServiceButWalksItsDependents) {
    EXPECT_EQ(Win32StartService(m_handles), 0u);
    std::vector<std::string> expected = {"EnumDependentServicesA", "EnumDependentServicesA", "QueryServiceStatus"};
    std::vector<std::string> names = Dependents(false);
    std::ranges::reverse(names);
    for (const std::string& name : names) {
        if (name == "C") {
            AppendDependent(expected, name, kStartSteps);
        } else {
            AppendDependent(expected, name, {"QueryServiceStatus"});
        }
    }
    EXPECT_THAT(TakeSteps(), ElementsAreArray(expected));
    EXPECT_EQ(Services().State("C"), SERVICE_RUNNING) << "it comes up although it was down before";
}

TEST_F(ServiceControl, StartsAServiceWithoutArguments) {
    StopAll();
    Win32StartService(m_handles);
    bool fWasStarted = false;
    for (const std::string& call : Test().TakeCalls()) {
        if (call.starts_with("StartServiceA")) {
            fWasStarted = true;
            EXPECT_THAT(call, ::testing::MatchesRegex("StartServiceA\\(0x[0-9a-f]+, 0x0, null\\).*"));
        }
    }
    EXPECT_TRUE(fWasStarted);
}

TEST_F(ServiceControl, StartsNoDependentWhenTheServiceDoesNotStart) {
    StopAll();
    Services().SetTimes("Main", 0, simulated::kNever);
    EXPECT_EQ(Win32StartService(m_handles), 1460u);
    EXPECT_EQ(Count(TakeSteps(), "StartServiceA"), 1u);
    for (const char* name : {"A", "B", "C"}) {
        EXPECT_EQ(Services().State(name), SERVICE_STOPPED) << name;
    }
}

TEST_F(ServiceControl, GivesTheCodeOfAFailedStart) {
    struct {
        const char* name;
        std::size_t nth;
    } const calls[] = {{"EnumDependentServicesA", 1},
                       {"EnumDependentServicesA", 2},
                       {"QueryServiceStatus", 1},
                       {"StartServiceA", 1},
                       {"QueryServiceStatus", 2}};
    for (const auto& call : calls) {
        SCOPED_TRACE(call.name);
        StopAll();
        faults::Reset();
        faults::FailCall(call.name, call.nth, 1115);
        EXPECT_EQ(Win32StartService(m_handles), 1115u);
    }
}

TEST_F(ServiceControl, StartsTheOtherDependentsWhenOneFails) {
    StopAll();
    Test().TurnLogOn();
    const std::vector<std::string> names = Dependents(false);
    faults::FailCall("OpenServiceA", 1, ERROR_ACCESS_DENIED);
    faults::FailCall("StartServiceA", 2, ERROR_SERVICE_DISABLED);  // of the first dependent that could be opened
    EXPECT_EQ(Win32StartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("Win32StartService error(" + names[2] + "):5"));
    EXPECT_EQ(Services().State(names[2]), SERVICE_STOPPED);
    EXPECT_EQ(Services().State(names[1]), SERVICE_STOPPED);
    EXPECT_EQ(Services().State(names[0]), SERVICE_RUNNING);
}

// ---- restart --------------------------------------------------------------------------------------------------------

class ServiceRestart : public ServiceControl {
  protected:
    void SetUp() override {
        ServiceControl::SetUp();
        Test().TurnLogOn();
        Test().TakeCalls();
    }
    /// Steps without those of the log.
    std::vector<std::string> TakeSteps() {
        std::vector<std::string> steps = ServiceControl::TakeSteps();
        std::erase_if(steps, [](const std::string& step) {
            return step == "GetLocalTime" || step == "SetFilePointer" || step == "WriteFile";
        });
        return steps;
    }
};

const char kStopped[] = "...Service Stopped(Main Service:C:\\Services\\main.exe)";
const char kStillActive[] = "...Service(Main Service:C:\\Services\\main.exe) is still active";

TEST_F(ServiceRestart, BringsBackTheActiveDependentsOnly) {
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kStopped));
    for (const char* name : {"Main", "A", "B"}) {
        EXPECT_EQ(Services().State(name), SERVICE_RUNNING) << name;
    }
    EXPECT_EQ(Services().State("C"), SERVICE_STOPPED);
}

TEST_F(ServiceRestart, StopsConfirmsAndStartsInOrder) {
    g_logSettings.debugEnabled = false;
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    std::vector<std::string> names = Dependents(true);
    std::vector<std::string> expected = {"EnumDependentServicesA", "EnumDependentServicesA"};
    for (const std::string& name : names) {
        AppendDependent(expected, name, kStopSteps);
    }
    Append(expected, kStopSteps);
    Append(expected, {"QueryServiceConfigA", "QueryServiceConfigA", "CreateFileA", "CloseHandle"});
    Append(expected, kStartSteps);
    std::ranges::reverse(names);
    for (const std::string& name : names) {
        AppendDependent(expected, name, kStartSteps);
    }
    EXPECT_THAT(TakeSteps(), ElementsAreArray(expected));
}

TEST_F(ServiceRestart, OpensTheProgramForExclusiveAccess) {
    g_logSettings.debugEnabled = false;
    Win32RestartService(m_handles);
    for (const std::string& call : Test().TakeCalls()) {
        if (call.starts_with("CreateFileA")) {
            EXPECT_THAT(call, ::testing::StartsWith(
                                  R"(CreateFileA("C:\\Services\\main.exe", 0xc0000000, 0x0, null, 0x3, 0x80, null))"));
        }
    }
}

TEST_F(ServiceRestart, WaitsWhileTheProgramIsHeld) {
    g_logSettings.logToFile = false;
    g_logSettings.logToDebugger = true;
    RemoveDependents();
    Services().HoldProgramAfterStop("Main", 250);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Machine().Desktop().debugOutput,
                ElementsAre(kStillActive, "Win32QueryServiceStop - Confirm Stop...1", kStillActive,
                            "Win32QueryServiceStop - Confirm Stop...2", kStopped));
    std::vector<std::string> steps = ServiceControl::TakeSteps();
    const auto close = std::ranges::find(steps, "CloseHandle");
    ASSERT_GT(std::distance(close, steps.end()), 1);
    EXPECT_EQ(*(close + 1), "GetLocalTime") << "the program is closed before the line is written";
    std::erase_if(steps, [](const std::string& step) {
        return step == "GetLocalTime" || step == "OutputDebugStringA" || step == "FindWindowA";
    });
    EXPECT_THAT(steps, ElementsAre("EnumDependentServicesA", "QueryServiceStatus", "ControlService", "Sleep 50",
                                   "QueryServiceStatus",                                                        //
                                   "QueryServiceConfigA", "QueryServiceConfigA", "CreateFileA", "Sleep 100",    //
                                   "QueryServiceConfigA", "QueryServiceConfigA", "CreateFileA", "Sleep 100",    //
                                   "QueryServiceConfigA", "QueryServiceConfigA", "CreateFileA", "CloseHandle",  //
                                   "QueryServiceStatus", "StartServiceA", "Sleep 50", "QueryServiceStatus"));
}

TEST_F(ServiceRestart, WaitsOnALockViolationAsWell) {
    g_logSettings.logToFile = false;
    g_logSettings.logToDebugger = true;
    faults::FailCall("CreateFileA", 1, ERROR_LOCK_VIOLATION);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Machine().Desktop().debugOutput,
                ElementsAre(kStillActive, "Win32QueryServiceStop - Confirm Stop...1", kStopped));
    EXPECT_THAT(StepsFrom(ServiceControl::TakeSteps(), "CreateFileA", 9),
                ElementsAre("CreateFileA", "GetLocalTime", "OutputDebugStringA", "FindWindowA",  //
                            "Sleep 100", "GetLocalTime", "OutputDebugStringA", "FindWindowA", "QueryServiceConfigA"));
}

TEST_F(ServiceRestart, GoesOnAfter600Rounds) {
    auto held = Machine().Files().HoldOpen(kProgram);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    const std::vector<std::string> log = Test().TakeLog();
    ASSERT_EQ(log.size(), 1200u);
    EXPECT_EQ(log[1198], kStillActive);
    EXPECT_EQ(log[1199], "Win32QueryServiceStop - Confirm Stop...600");
    EXPECT_EQ(Count(TakeSteps(), "Sleep 100"), 600u);
    EXPECT_EQ(Services().State("Main"), SERVICE_RUNNING);
}

TEST_F(ServiceRestart, EndsTheConfirmationOnAProgramThatIsACommandLine) {
    for (const char* commandLine : {"\"C:\\Services\\main.exe\"", "C:\\Services\\main.exe -k run"}) {
        SCOPED_TRACE(commandLine);
        Services().Define("Main", "Main Service", commandLine, {});
        Test().TakeCalls();
        EXPECT_EQ(Win32RestartService(m_handles), 0u);
        const std::vector<std::string> log = Test().TakeLog();
        ASSERT_EQ(log.size(), 1u);
        EXPECT_THAT(log[0], ::testing::StartsWith("*** CreateFile(Main Service:" + std::string(commandLine) + "):"));
        EXPECT_THAT(log[0], ::testing::EndsWith(" error ***"));
        EXPECT_EQ(Count(TakeSteps(), "Sleep 1000"), 1u);
        EXPECT_EQ(Services().State("Main"), SERVICE_RUNNING);
    }
}

TEST_F(ServiceRestart, EndsTheConfirmationWhenTheProgramCanNotBeOpened) {
    g_logSettings.logToFile = false;
    g_logSettings.logToDebugger = true;
    RemoveDependents();
    faults::FailCall("CreateFileA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Machine().Desktop().debugOutput,
                ElementsAre("*** CreateFile(Main Service:C:\\Services\\main.exe):5 error ***"));
    EXPECT_THAT(ServiceControl::TakeSteps(),
                ElementsAre("EnumDependentServicesA", "QueryServiceStatus", "ControlService", "Sleep 50",
                            "QueryServiceStatus", "QueryServiceConfigA", "QueryServiceConfigA", "CreateFileA",
                            "Sleep 1000", "GetLocalTime", "OutputDebugStringA", "FindWindowA",  //
                            "QueryServiceStatus", "StartServiceA", "Sleep 50", "QueryServiceStatus"));
}

TEST_F(ServiceRestart, EndsTheConfirmationWhenTheConfigurationCanNotBeRead) {
    RemoveDependents();
    faults::FailCall("QueryServiceConfigA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("*** Win32QueryServiceConfig error :5 ***"));
    const std::vector<std::string> steps = ServiceControl::TakeSteps();
    EXPECT_EQ(Count(steps, "Sleep 1000"), 1u);
    EXPECT_EQ(Count(steps, "Sleep 100"), 0u);
    EXPECT_THAT(StepsFrom(steps, "QueryServiceConfigA", 3),
                ElementsAre("QueryServiceConfigA", "Sleep 1000", "GetLocalTime"));
    EXPECT_EQ(Services().State("Main"), SERVICE_RUNNING);
}

TEST_F(ServiceRestart, TellsTheLastErrorWhenMemoryRunsOutForTheConfiguration) {
    RemoveDependents();
    faults::FailCall("HeapAlloc", 1, 0);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("*** Win32QueryServiceConfig error :122 ***"));
}

TEST_F(ServiceRestart, EndsTheConfirmationOnAConfigurationWithoutTexts) {
    RemoveDependents();
    ReplacedOperations replaced;
    replaced.table.QueryServiceConfigA = [](SC_HANDLE, LPQUERY_SERVICE_CONFIGA config, DWORD, LPDWORD needed) -> BOOL {
        *needed = sizeof(QUERY_SERVICE_CONFIGA);
        simulated::lastError = ERROR_INSUFFICIENT_BUFFER;
        return config != nullptr;
    };
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(::testing::StartsWith("*** CreateFile(:):")));
    replaced.table.QueryServiceConfigA = [](SC_HANDLE, LPQUERY_SERVICE_CONFIGA, DWORD, LPDWORD) -> BOOL {
        simulated::lastError = 4711;
        return TRUE;  // with a null buffer: there is nothing to read
    };
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("*** Win32QueryServiceConfig error :4711 ***"));
}

TEST_F(ServiceRestart, TellsOfAFailedListing) {
    faults::FailCall("EnumDependentServicesA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(Win32RestartService(m_handles), 5u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("Win32EnumDependentServices error: 5"));
    EXPECT_EQ(Services().State("Main"), SERVICE_RUNNING);
}

TEST_F(ServiceRestart, EndsWhenTheServiceDoesNotStop) {
    Services().SetTimes("Main", simulated::kNever, 0);
    EXPECT_EQ(Win32RestartService(m_handles), 1460u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_EQ(Services().State("A"), SERVICE_STOPPED) << "the dependents stay down";
    EXPECT_EQ(Services().State("B"), SERVICE_STOPPED);
}

TEST_F(ServiceRestart, LeavesDependentsDownWhenTheServiceDoesNotStart) {
    faults::FailCall("StartServiceA", 1, ERROR_SERVICE_DISABLED);
    EXPECT_EQ(Win32RestartService(m_handles), 1058u);
    EXPECT_EQ(Services().State("A"), SERVICE_STOPPED);
    EXPECT_EQ(Services().State("B"), SERVICE_STOPPED);
}

TEST_F(ServiceRestart, TellsOfDependentsThatCanNotBeOpened) {
    const std::vector<std::string> names = Dependents(true);
    faults::FailCall("OpenServiceA", 3, ERROR_ACCESS_DENIED);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kStopped, "Win32StartService error(" + names[1] + "):5"));
    EXPECT_EQ(Services().State(names[0]), SERVICE_RUNNING);
    EXPECT_EQ(Services().State(names[1]), SERVICE_STOPPED);
}

TEST_F(ServiceRestart, IsSilentAtThePlainLevel) {
    Test().TurnLogOn(1);
    auto held = Machine().Files().HoldOpen(kProgram);
    faults::FailCall("OpenServiceA", 3, ERROR_ACCESS_DENIED);
    EXPECT_EQ(Win32RestartService(m_handles), 0u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(ServiceRestart, LeavesNothingOpenWhicheverCallFails) {
    Win32RestartService(m_handles);
    Test().TakeCalls();
    faults::Reset();
    Win32RestartService(m_handles);
    const std::size_t calls = faults::CallCount();
    ASSERT_GT(calls, 20u);
    for (bool persistent : {false, true}) {
        for (std::size_t nth = 1; nth <= calls; ++nth) {
            faults::Reset();
            faults::FailNth(nth, ERROR_ACCESS_DENIED, persistent);
            Win32RestartService(m_handles);
            EXPECT_EQ(Machine().Handles().OpenCount(simulated::HandleKind::Service), 2u) << "call " << nth;
            EXPECT_EQ(Machine().Handles().OpenCount(simulated::HandleKind::File), 0u) << "call " << nth;
            EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << "call " << nth;
            faults::Reset();
            Win32StartService(m_handles);
        }
    }
}

TEST(ServiceControlOnWindows98, IsNotThere) {
    TestMachine machine("win98");
    ServiceHandles handles;
    EXPECT_EQ(OpenServiceHandles(handles, "Spooler", kManagerAccess, kServiceAccess), 120u);
    EXPECT_THAT(machine.TakeCallNames(), ElementsAre("OpenSCManagerA"));
}

}  // namespace
}  // namespace pikel
