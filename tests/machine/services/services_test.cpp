// The service control manager.
#include "machine/services/services.h"

#include <string>
#include <vector>

#include "machine/operations.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::kNever;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::EverySystemTest;
using testing_support::MachineTest;
using testing_support::WriteFileOn;

constexpr DWORD kManagerAccess = GENERIC_EXECUTE;

class ServiceCalls : public MachineTest {
  protected:
    ~ServiceCalls() override { CloseAll(); }

    simulated::Services& Services() { return Machine().Services(); }
    SC_HANDLE Manager(DWORD access = kManagerAccess) {
        return Keep(simulated::OpenSCManagerA(nullptr, nullptr, access));
    }
    SC_HANDLE Open(const char* name, DWORD access = SERVICE_ALL_ACCESS) {
        return Keep(simulated::OpenServiceA(Manager(), name, access));
    }
    void CloseAll() {
        for (SC_HANDLE handle : m_handles) {
            EXPECT_TRUE(simulated::CloseServiceHandle(handle));
        }
        m_handles.clear();
    }
    static DWORD Query(SC_HANDLE service) {
        SERVICE_STATUS status{};
        EXPECT_TRUE(simulated::QueryServiceStatus(service, &status));
        return status.dwCurrentState;
    }
    /// The last error of a call that failed; 0 for one that didn't.
    static DWORD ErrorOf(BOOL result) { return result ? 0 : simulated::lastError; }
    static DWORD Stop(SC_HANDLE service, DWORD* state = nullptr) {
        SERVICE_STATUS status{};
        DWORD code = ErrorOf(simulated::ControlService(service, SERVICE_CONTROL_STOP, &status));
        if (state != nullptr) {
            *state = status.dwCurrentState;
        }
        return code;
    }
    static DWORD StartIt(SC_HANDLE service) { return ErrorOf(simulated::StartServiceA(service, 0, nullptr)); }
    void RemoveRights() {
        simulated::SystemDescription system = Machine().System();
        system.administrator = false;
        Machine().SetSystem(system);
    }
    void StopDependentsOfSpooler() { Services().SetState("Fax", SERVICE_STOPPED); }

  private:
    SC_HANDLE Keep(SC_HANDLE handle) {
        if (handle != nullptr) {
            m_handles.push_back(handle);
        }
        return handle;
    }
    std::vector<SC_HANDLE> m_handles;
};

// ---- states ---------------------------------------------------------------------------------------------------------

TEST_F(ServiceCalls, AStopIsPendingAtFirstAndDoneWhenItsTimeIsOver) {
    StopDependentsOfSpooler();
    Services().SetTimes("Spooler", 1000, 0);
    SC_HANDLE spooler = Open("Spooler");
    EXPECT_EQ(Query(spooler), SERVICE_RUNNING);
    DWORD state = 0;
    EXPECT_EQ(Stop(spooler, &state), 0u);
    EXPECT_EQ(state, SERVICE_STOP_PENDING);
    EXPECT_EQ(Query(spooler), SERVICE_STOP_PENDING);
    EXPECT_FALSE(Services().IsSpoolerUp());
    EXPECT_EQ(Stop(spooler), 1061u);
    EXPECT_EQ(StartIt(spooler), 1056u);
    Machine().Advance(999);
    EXPECT_EQ(Query(spooler), SERVICE_STOP_PENDING);
    Machine().Advance(1);
    EXPECT_EQ(Query(spooler), SERVICE_STOPPED);
    EXPECT_EQ(Stop(spooler), 1062u);
}

TEST_F(ServiceCalls, AStartIsPendingAtFirstToo) {
    StopDependentsOfSpooler();
    Services().SetState("Spooler", SERVICE_STOPPED);
    Services().SetTimes("Spooler", 0, 300);
    SC_HANDLE spooler = Open("Spooler");
    EXPECT_EQ(StartIt(spooler), 0u);
    EXPECT_EQ(Query(spooler), SERVICE_START_PENDING);
    EXPECT_EQ(StartIt(spooler), 1056u);
    EXPECT_EQ(Stop(spooler), 1061u);
    Machine().Advance(300);
    EXPECT_EQ(Query(spooler), SERVICE_RUNNING);
    EXPECT_TRUE(Services().IsSpoolerUp());
}

TEST_F(ServiceCalls, WithoutATimeTheNextQueryTellsTheNewState) {
    SC_HANDLE fax = Open("Fax");
    DWORD state = 0;
    EXPECT_EQ(Stop(fax, &state), 0u);
    EXPECT_EQ(state, SERVICE_STOP_PENDING);
    EXPECT_EQ(Query(fax), SERVICE_STOPPED);
}

TEST_F(ServiceCalls, AServiceThatNeverStopsStaysPending) {
    Services().SetTimes("Fax", kNever, 0);
    SC_HANDLE fax = Open("Fax");
    Machine().Advance(5);
    EXPECT_EQ(Stop(fax), 0u);
    Machine().Advance(1'000'000'000'000);
    EXPECT_EQ(Query(fax), SERVICE_STOP_PENDING);
    SERVICE_STATUS status{};
    ASSERT_TRUE(simulated::QueryServiceStatus(fax, &status));
    EXPECT_EQ(status.dwWaitHint, 0xffffffffu);
    EXPECT_EQ(status.dwControlsAccepted, 0u);
}

TEST_F(ServiceCalls, AStopIsRefusedWhileADependentIsNotStopped) {
    SC_HANDLE spooler = Open("Spooler");
    EXPECT_EQ(Stop(spooler), 1051u);
    Services().SetTimes("Fax", 100, 0);
    EXPECT_EQ(Stop(Open("Fax")), 0u);
    EXPECT_EQ(Stop(spooler), 1051u) << "the dependent's stop is pending";
    Machine().Advance(100);
    EXPECT_EQ(Stop(spooler), 0u);
}

TEST_F(ServiceCalls, AStartStartsWhatIsNeededFirst) {
    for (const char* name : {"Fax", "Spooler", "RpcSs"}) {
        Services().SetState(name, SERVICE_STOPPED);
    }
    EXPECT_EQ(StartIt(Open("Fax")), 0u);
    for (const char* name : {"Fax", "Spooler", "RpcSs"}) {
        EXPECT_EQ(Services().State(name), SERVICE_RUNNING) << name;
    }
}

TEST_F(ServiceCalls, AStartTellsWhyItCanNotBe) {
    Services().Define("off", "Off", "C:\\x.exe", {}, SERVICE_DISABLED);
    Services().Define("needsOff", "", "C:\\x.exe", {"off"}, SERVICE_DEMAND_START);
    Services().Define("needsMissing", "", "C:\\x.exe", {"missing"}, SERVICE_DEMAND_START);
    Services().Define("ring1", "", "C:\\x.exe", {"ring2"}, SERVICE_DEMAND_START);
    Services().Define("ring2", "", "C:\\x.exe", {"RING1"}, SERVICE_DEMAND_START);
    EXPECT_EQ(StartIt(Open("off")), 1058u);
    EXPECT_EQ(StartIt(Open("needsOff")), 1068u);
    EXPECT_EQ(StartIt(Open("needsMissing")), 1075u);
    EXPECT_EQ(StartIt(Open("ring1")), 1059u);
    EXPECT_EQ(Services().State("ring1"), SERVICE_STOPPED);
    EXPECT_EQ(Services().Start("missing"), 1060u);
    EXPECT_EQ(Services().Stop("missing"), 1060u);
    EXPECT_EQ(Services().State("missing"), SERVICE_STOPPED);
}

TEST_F(ServiceCalls, ANewAutomaticServiceRunsAndOthersWait) {
    Services().Define("auto", "", "C:\\x.exe", {});
    Services().Define("demand", "", "C:\\x.exe", {}, SERVICE_DEMAND_START);
    EXPECT_EQ(Services().State("AUTO"), SERVICE_RUNNING);
    EXPECT_EQ(Services().State("demand"), SERVICE_STOPPED);
    Services().SetState("auto", SERVICE_STOPPED);
    Services().Define("auto", "again", "C:\\x.exe", {});
    EXPECT_EQ(Services().State("auto"), SERVICE_STOPPED) << "a change leaves the state alone";
    Test().Reopen();
    EXPECT_EQ(Services().State("auto"), SERVICE_RUNNING) << "the machine came up again";
    EXPECT_EQ(Services().State("demand"), SERVICE_STOPPED);
}

// ---- dependents -----------------------------------------------------------------------------------------------------

TEST_F(ServiceCalls, DependentsComeInTheOrderInWhichTheyAreToBeStopped) {
    Services().Define("base", "", "C:\\x.exe", {});
    Services().Define("a", "", "C:\\x.exe", {"base"});
    Services().Define("b", "", "C:\\x.exe", {"A", "base"});
    Services().Define("c", "", "C:\\x.exe", {"Base"});
    Services().Define("d", "", "C:\\x.exe", {"b"});
    EXPECT_THAT(Services().Dependents("BASE"), ElementsAre("c", "d", "b", "a"));
    EXPECT_THAT(Services().Dependents("b"), ElementsAre("d"));
    EXPECT_THAT(Services().Dependents("d"), IsEmpty());
    Services().Define("base", "", "C:\\x.exe", {"d"});
    EXPECT_THAT(Services().Dependents("base"), ElementsAre("c", "d", "b", "a")) << "a ring ends";
}

class DependentEnumeration : public ServiceCalls {
  protected:
    /// "name:display name:state" for each dependent.
    std::vector<std::string> List(SC_HANDLE service, DWORD filter) {
        DWORD needed = 77;
        DWORD count = 77;
        if (simulated::EnumDependentServicesA(service, filter, nullptr, 0, &needed, &count)) {
            EXPECT_EQ(needed, 0u);
            EXPECT_EQ(count, 0u);
            return {};
        }
        EXPECT_EQ(simulated::lastError, 234u);
        EXPECT_EQ(count, 0u);
        std::vector<std::uint64_t> buffer((needed + 7) / 8);
        auto* services = reinterpret_cast<ENUM_SERVICE_STATUSA*>(buffer.data());
        DWORD size = needed;
        EXPECT_FALSE(simulated::EnumDependentServicesA(service, filter, services, size - 1, &needed, &count));
        EXPECT_EQ(simulated::lastError, 234u);
        EXPECT_TRUE(simulated::EnumDependentServicesA(service, filter, services, size, &needed, &count));
        std::vector<std::string> listed;
        for (DWORD i = 0; i < count; ++i) {
            listed.push_back(std::string(services[i].lpServiceName) + ":" + services[i].lpDisplayName + ":" +
                             std::to_string(services[i].ServiceStatus.dwCurrentState));
        }
        return listed;
    }
};

TEST_F(DependentEnumeration, FiltersByState) {
    SC_HANDLE spooler = Open("Spooler");
    EXPECT_THAT(List(spooler, SERVICE_STATE_ALL), ElementsAre("LPDSVC:TCP/IP Print Server:1", "Fax:Fax:4"));
    EXPECT_THAT(List(spooler, SERVICE_ACTIVE), ElementsAre("Fax:Fax:4"));
    EXPECT_THAT(List(spooler, SERVICE_INACTIVE), ElementsAre("LPDSVC:TCP/IP Print Server:1"));
    EXPECT_THAT(List(Open("Fax"), SERVICE_STATE_ALL), IsEmpty());
}

TEST_F(DependentEnumeration, RefusesBadArguments) {
    SC_HANDLE spooler = Open("Spooler");
    DWORD needed = 0;
    DWORD count = 0;
    EXPECT_EQ(ErrorOf(simulated::EnumDependentServicesA(spooler, 0, nullptr, 0, &needed, &count)), 87u);
    EXPECT_EQ(ErrorOf(simulated::EnumDependentServicesA(spooler, 4, nullptr, 0, &needed, &count)), 87u);
    EXPECT_EQ(ErrorOf(simulated::EnumDependentServicesA(spooler, 1, nullptr, 0, nullptr, &count)), 487u);
    EXPECT_EQ(ErrorOf(simulated::EnumDependentServicesA(spooler, 1, nullptr, 0, &needed, nullptr)), 487u);
    EXPECT_EQ(ErrorOf(simulated::EnumDependentServicesA(Manager(), 1, nullptr, 0, &needed, &count)), 6u);
}

// ---- configuration and handles --------------------------------------------------------------------------------------

TEST_F(ServiceCalls, TheConfigurationNamesTheProgramInFull) {
    SC_HANDLE spooler = Open("spooler");
    DWORD needed = 0;
    EXPECT_EQ(ErrorOf(simulated::QueryServiceConfigA(spooler, nullptr, 0, &needed)), 122u);
    ASSERT_GT(needed, sizeof(QUERY_SERVICE_CONFIGA));
    std::vector<std::uint64_t> buffer((needed + 7) / 8);
    auto* config = reinterpret_cast<QUERY_SERVICE_CONFIGA*>(buffer.data());
    EXPECT_EQ(ErrorOf(simulated::QueryServiceConfigA(spooler, config, needed - 1, &needed)), 122u);
    ASSERT_TRUE(simulated::QueryServiceConfigA(spooler, config, needed, &needed));
    EXPECT_STREQ(config->lpBinaryPathName, "C:\\WINDOWS\\system32\\spoolsv.exe");
    EXPECT_STREQ(config->lpDisplayName, "Print Spooler");
    EXPECT_STREQ(config->lpServiceStartName, "LocalSystem");
    EXPECT_STREQ(config->lpLoadOrderGroup, "");
    EXPECT_EQ(std::string(config->lpDependencies, 7), std::string("RpcSs\0\0", 7));
    EXPECT_EQ(config->dwStartType, static_cast<DWORD>(SERVICE_AUTO_START));
    EXPECT_EQ(config->dwServiceType, static_cast<DWORD>(SERVICE_WIN32_OWN_PROCESS));
    EXPECT_EQ(config->dwErrorControl, 1u);
    EXPECT_EQ(ErrorOf(simulated::QueryServiceConfigA(spooler, config, needed, nullptr)), 487u);
}

TEST_F(ServiceCalls, OpensTellWhatIsMissing) {
    auto managerError = [](const char* machine, const char* database) {
        EXPECT_EQ(simulated::OpenSCManagerA(machine, database, kManagerAccess), nullptr);
        return simulated::lastError;
    };
    EXPECT_EQ(managerError("elsewhere", nullptr), 1722u);
    EXPECT_EQ(managerError(nullptr, "ServicesFailed"), 1065u);
    EXPECT_EQ(managerError(nullptr, "nonsense"), 123u);
    for (const char* own : {"", "PC-XP", "\\\\pc-xp"}) {
        SC_HANDLE manager = simulated::OpenSCManagerA(own, "ServicesActive", kManagerAccess);
        EXPECT_TRUE(manager != nullptr && simulated::CloseServiceHandle(manager)) << own;
    }
    auto serviceError = [](SC_HANDLE manager, const char* name) {
        EXPECT_EQ(simulated::OpenServiceA(manager, name, SERVICE_ALL_ACCESS), nullptr);
        return simulated::lastError;
    };
    SC_HANDLE manager = Manager();
    EXPECT_EQ(serviceError(manager, "missing"), 1060u);
    EXPECT_EQ(serviceError(manager, ""), 123u);
    EXPECT_EQ(serviceError(manager, nullptr), 123u);
    EXPECT_EQ(serviceError(nullptr, "Spooler"), 6u);
    EXPECT_EQ(serviceError(Open("Spooler"), "Spooler"), 6u) << "a service is no manager";
}

TEST_F(ServiceCalls, ClosingTwiceIsRefused) {
    Test().AllowOpen();
    SC_HANDLE manager = simulated::OpenSCManagerA(nullptr, nullptr, kManagerAccess);
    EXPECT_TRUE(simulated::CloseServiceHandle(manager));
    EXPECT_EQ(ErrorOf(simulated::CloseServiceHandle(manager)), 6u);
}

TEST_F(ServiceCalls, AHandleDoesWhatItWasOpenedFor) {
    SC_HANDLE asking = Open("Fax", 0x4);
    EXPECT_EQ(Query(asking), SERVICE_RUNNING);
    EXPECT_EQ(Stop(asking), 5u);
    EXPECT_EQ(StartIt(asking), 5u);
    DWORD needed = 0;
    DWORD count = 0;
    EXPECT_EQ(ErrorOf(simulated::QueryServiceConfigA(asking, nullptr, 0, &needed)), 5u);
    EXPECT_EQ(ErrorOf(simulated::EnumDependentServicesA(asking, 1, nullptr, 0, &needed, &count)), 5u);
    SERVICE_STATUS status{};
    EXPECT_EQ(ErrorOf(simulated::QueryServiceStatus(Open("Fax", 0x20), &status)), 5u);
    EXPECT_EQ(ErrorOf(simulated::QueryServiceStatus(Manager(), &status)), 6u);
    EXPECT_EQ(ErrorOf(simulated::QueryServiceStatus(asking, nullptr)), 487u);
    EXPECT_EQ(ErrorOf(simulated::ControlService(Open("Fax"), SERVICE_CONTROL_STOP, nullptr)), 487u);
}

TEST_F(ServiceCalls, OtherControlsAreRefusedAndAnInterrogationTellsTheState) {
    SC_HANDLE fax = Open("Fax");
    SERVICE_STATUS status{};
    EXPECT_EQ(ErrorOf(simulated::ControlService(fax, 2, &status)), 1052u);
    EXPECT_TRUE(simulated::ControlService(fax, 4, &status));
    EXPECT_EQ(status.dwCurrentState, SERVICE_RUNNING);
    EXPECT_EQ(status.dwControlsAccepted, 1u);
    EXPECT_EQ(status.dwServiceType, static_cast<DWORD>(SERVICE_WIN32_OWN_PROCESS));
    Services().SetState("Fax", SERVICE_STOPPED);
    EXPECT_EQ(ErrorOf(simulated::ControlService(fax, 4, &status)), 1062u);
}

TEST_F(ServiceCalls, StartAndStopAreRightsOfTheirOwn) {
    constexpr DWORD kStart = 0x10;
    constexpr DWORD kStop = 0x20;
    EXPECT_EQ(Stop(Open("Fax", kStart)), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(StartIt(Open("Fax", kStop)), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(Stop(Open("Fax", kStop)), 0u);
}

TEST_F(ServiceCalls, ProgramOfACommandLineEndsWithItsExtension) {
    constexpr char kProgram[] = "C:\\Program Files\\acme.exe";
    WriteFileOn(Machine(), kProgram, "MZ");
    Services().Define("Acme", "Acme", std::string(kProgram) + " -run now.exe", {}, SERVICE_AUTO_START);
    EXPECT_EQ(Machine().Files().CheckOpen(kProgram, GENERIC_WRITE, 0), DWORD{ERROR_SHARING_VIOLATION});
}

TEST_F(ServiceCalls, WithoutRightsOnlyReadingIsLeft) {
    RemoveRights();
    EXPECT_EQ(Manager(kManagerAccess), nullptr) << "it holds the right to lock";
    EXPECT_EQ(simulated::lastError, 5u);
    SC_HANDLE manager = Manager(GENERIC_READ | 1);
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(simulated::OpenServiceA(manager, "Spooler", SERVICE_ALL_ACCESS), nullptr);
    EXPECT_EQ(simulated::lastError, 5u);
    SC_HANDLE spooler = simulated::OpenServiceA(manager, "Spooler", GENERIC_READ);
    ASSERT_NE(spooler, nullptr);
    EXPECT_EQ(Query(spooler), SERVICE_RUNNING);
    EXPECT_TRUE(simulated::CloseServiceHandle(spooler));
}

// ---- the program file -----------------------------------------------------------------------------------------------

class ServiceProgram : public ServiceCalls {
  protected:
    static constexpr const char* kProgram = "C:\\x\\svc.exe";
    DWORD CheckExclusive() { return Machine().Files().CheckOpen(kProgram, GENERIC_READ | GENERIC_WRITE, 0); }
};

TEST_F(ServiceProgram, IsInUseWhileTheServiceIsNotStopped) {
    WriteFileOn(Machine(), kProgram, "program");
    Services().Define("svc", "", kProgram, {});
    Services().SetTimes("svc", 100, 100);
    EXPECT_EQ(CheckExclusive(), 32u);
    EXPECT_EQ(Machine().Files().CheckOpen(kProgram, GENERIC_READ, FILE_SHARE_READ), 0u) << "others may read it";
    EXPECT_EQ(Services().Stop("svc"), 0u);
    EXPECT_EQ(CheckExclusive(), 32u);
    Machine().Advance(100);
    EXPECT_EQ(CheckExclusive(), 0u);
    EXPECT_EQ(Services().Start("svc"), 0u);
    EXPECT_EQ(CheckExclusive(), 32u);
    Machine().Advance(100);
    EXPECT_EQ(CheckExclusive(), 32u);
    Services().SetState("svc", SERVICE_STOPPED);
    EXPECT_EQ(CheckExclusive(), 0u);
}

TEST_F(ServiceProgram, CanStayInUseForATimeAfterTheStop) {
    WriteFileOn(Machine(), kProgram, "program");
    Services().Define("svc", "", std::string("\"") + kProgram + "\" -k run", {});
    Services().SetTimes("svc", 50, 0);
    Services().HoldProgramAfterStop("svc", 250);
    EXPECT_EQ(Services().Stop("svc"), 0u);
    Machine().Advance(50);
    EXPECT_EQ(Services().State("svc"), SERVICE_STOPPED);
    EXPECT_EQ(CheckExclusive(), 32u);
    Machine().Advance(249);
    EXPECT_EQ(CheckExclusive(), 32u);
    Machine().Advance(1);
    EXPECT_EQ(CheckExclusive(), 0u);
}

TEST_F(ServiceProgram, OfTheSpoolerIsInUseOnAFreshMachine) {
    const std::string program = Services().BinaryPath("Spooler");
    EXPECT_EQ(Machine().Files().CheckOpen(program, GENERIC_READ | GENERIC_WRITE, 0), 32u);
    StopDependentsOfSpooler();
    EXPECT_EQ(Services().Stop("Spooler"), 0u);
    EXPECT_EQ(Services().State("Spooler"), SERVICE_STOPPED);
    EXPECT_EQ(Machine().Files().CheckOpen(program, GENERIC_READ | GENERIC_WRITE, 0), 0u);
}

// ---- families -------------------------------------------------------------------------------------------------------

class ServicesOnEverySystem : public EverySystemTest {};

TEST_P(ServicesOnEverySystem, ExistOnTheNtFamilyAlone) {
    SC_HANDLE manager = simulated::OpenSCManagerA(nullptr, nullptr, kManagerAccess);
    if (!Machine().Is9x()) {
        ASSERT_NE(manager, nullptr);
        EXPECT_TRUE(simulated::CloseServiceHandle(manager));
        return;
    }
    EXPECT_EQ(manager, nullptr);
    EXPECT_EQ(simulated::lastError, 120u);
    SERVICE_STATUS status{};
    DWORD number = 0;
    const auto fails = [](BOOL result) { return !result && std::exchange(simulated::lastError, 0) == 120; };
    EXPECT_TRUE(fails(simulated::OpenServiceA(nullptr, "Spooler", 0) != nullptr));
    EXPECT_TRUE(fails(simulated::QueryServiceStatus(nullptr, &status)));
    EXPECT_TRUE(fails(simulated::ControlService(nullptr, SERVICE_CONTROL_STOP, &status)));
    EXPECT_TRUE(fails(simulated::StartServiceA(nullptr, 0, nullptr)));
    EXPECT_TRUE(fails(simulated::EnumDependentServicesA(nullptr, 1, nullptr, 0, &number, &number)));
    EXPECT_TRUE(fails(simulated::QueryServiceConfigA(nullptr, nullptr, 0, &number)));
    EXPECT_TRUE(fails(simulated::CloseServiceHandle(nullptr)));
}

INSTANTIATE_ON_EVERY_SYSTEM(ServicesOnEverySystem);

}  // namespace
}  // namespace pikel
