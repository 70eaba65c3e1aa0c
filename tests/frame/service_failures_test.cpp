// A command that a service refuses: the work ends there, and nothing else is waited for, asked, opened or started.
#include "frame/service.h"

#include <string>
#include <vector>

#include "machine/services/services.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kProgram[] = "C:\\Services\\main.exe";

/// "Main" with the one dependent "A".
class RefusedCommand : public MachineTest {
  protected:
    void SetUp() override {
        WriteFileOn(Machine(), kProgram, "program");
        Services().Define("Main", "Main Service", kProgram, {});
        Services().Define("A", "A Service", "C:\\Services\\dependent.exe", {"Main"});
        ASSERT_EQ(OpenServiceHandles(m_handles, "Main", kManagerAccess, kServiceAccess), 0u);
    }
    void TearDown() override { m_handles.Close(); }
    void Begin(DWORD main, DWORD dependent) {
        Services().SetState("Main", main);
        Services().SetState("A", dependent);
        faults::Reset();
        Test().TakeCalls();
    }
    simulated::Services& Services() { return Machine().Services(); }

    ServiceHandles m_handles;
};

TEST_F(RefusedCommand, StopEndsTheStopAndBringsNoDependentBack) {
    Begin(SERVICE_RUNNING, SERVICE_RUNNING);
    faults::FailCall("ControlService", 2, 1052);  // the first is the dependent's
    EXPECT_EQ(Win32StopService(m_handles), 1052u);
    EXPECT_THAT(Test().TakeCallNames(),
                ElementsAre("EnumDependentServicesA", "EnumDependentServicesA",                                      //
                            "OpenSCManagerA", "OpenServiceA", "QueryServiceStatus", "ControlService", "Sleep",       //
                            "QueryServiceStatus", "CloseServiceHandle", "CloseServiceHandle", "QueryServiceStatus",  //
                            "ControlService"));
    EXPECT_EQ(Services().State("Main"), SERVICE_RUNNING);
    EXPECT_EQ(Services().State("A"), SERVICE_STOPPED);
}

TEST_F(RefusedCommand, StartEndsTheStartBeforeAnyDependent) {
    Begin(SERVICE_STOPPED, SERVICE_STOPPED);
    faults::FailCall("StartServiceA", 1, 1058);
    EXPECT_EQ(Win32StartService(m_handles), 1058u);
    EXPECT_THAT(Test().TakeCallNames(),
                ElementsAre("EnumDependentServicesA", "EnumDependentServicesA", "QueryServiceStatus", "StartServiceA"));
    EXPECT_EQ(Services().State("Main"), SERVICE_STOPPED);
    EXPECT_EQ(Services().State("A"), SERVICE_STOPPED);
}

TEST_F(RefusedCommand, StopEndsTheRestartWithoutALookAtTheProgramAndWithoutAStart) {
    Begin(SERVICE_RUNNING, SERVICE_RUNNING);
    faults::FailCall("ControlService", 2, 1052);
    EXPECT_EQ(Win32RestartService(m_handles), 1052u);
    EXPECT_THAT(Test().TakeCallNames({"QueryServiceConfigA", "CreateFileA", "StartServiceA"}), IsEmpty());
    EXPECT_EQ(Services().State("Main"), SERVICE_RUNNING);
    EXPECT_EQ(Services().State("A"), SERVICE_STOPPED) << "its dependent stays down";
}

TEST_F(RefusedCommand, StartEndsTheRestartAtOnce) {
    Begin(SERVICE_RUNNING, SERVICE_RUNNING);
    faults::FailCall("StartServiceA", 1, 1058);
    EXPECT_EQ(Win32RestartService(m_handles), 1058u);
    EXPECT_THAT(Test().TakeCallNames({"StartServiceA", "OpenServiceA"}), ElementsAre("OpenServiceA", "StartServiceA"))
        << "the dependent was opened for its stop alone";
    EXPECT_EQ(Services().State("Main"), SERVICE_STOPPED);
    EXPECT_EQ(Services().State("A"), SERVICE_STOPPED);
}

TEST_F(RefusedCommand, ConfigurationThatCanNotBeReadIsToldInTheDetailLogAlone) {
    for (const int level : {1, 2}) {
        Begin(SERVICE_RUNNING, SERVICE_RUNNING);
        Test().TurnLogOn(level);
        faults::FailCall("QueryServiceConfigA", 1, 5);
        EXPECT_EQ(Win32RestartService(m_handles), 0u) << "it only delays the restart";
        const std::vector<std::string> log = Test().TakeLog();
        if (level == 1) {
            EXPECT_THAT(log, IsEmpty());
        } else {
            EXPECT_THAT(log, ElementsAre("*** Win32QueryServiceConfig error :5 ***"));
        }
    }
}

}  // namespace
}  // namespace pikel
