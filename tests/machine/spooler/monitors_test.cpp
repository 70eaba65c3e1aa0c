// Monitors and ports.
#include "machine/spooler/monitors.h"

#include "support/spooler_test.h"
#include "machine/services/services.h"
#include "machine/spooler/ports.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Not;

class MonitorTest : public SpoolerTest {
  protected:
    std::string InSystem(const std::string& name) { return Machine().System().systemDirectory + "\\" + name; }
    DWORD Add(std::optional<std::string> name, std::optional<std::string> library,
              std::optional<std::string> environment = {}, DWORD level = 2) {
        MONITOR_INFO_2A info{};
        info.pName = name ? name->data() : nullptr;
        info.pEnvironment = environment ? environment->data() : nullptr;
        info.pDLLName = library ? library->data() : nullptr;
        return CODE_OF(AddMonitorA(nullptr, level, reinterpret_cast<LPBYTE>(&info)));
    }
    DWORD Delete(std::string name, std::string environment = {}) {
        return CODE_OF(DeleteMonitorA(nullptr, environment.empty() ? nullptr : environment.data(), name.data()));
    }
    std::vector<std::string> Names() {
        const Answer<MONITOR_INFO_1A> answer([](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
            return EnumMonitorsA(nullptr, 1, bytes, size, needed, count);
        });
        EXPECT_EQ(answer.Code(), 0u);
        std::vector<std::string> names;
        for (const MONITOR_INFO_1A& info : answer.Records()) {
            names.emplace_back(info.pName);
        }
        return names;
    }
    std::vector<std::string> PortNames() {
        const Answer<PORT_INFO_1A> answer([](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
            return EnumPortsA(nullptr, 1, bytes, size, needed, count);
        });
        EXPECT_EQ(answer.Code(), 0u);
        std::vector<std::string> names;
        for (const PORT_INFO_1A& info : answer.Records()) {
            names.emplace_back(info.pName);
        }
        return names;
    }
    /// The code of an open as a program makes it that wants to replace the file.
    DWORD OpenAlone(const std::string& path, DWORD access = GENERIC_READ | GENERIC_WRITE, DWORD share = 0) {
        return Machine().Files().CheckOpen(path, access, share);
    }
};

class MonitorOfEverySystem : public MonitorTest, public ::testing::WithParamInterface<std::string> {
  protected:
    MonitorOfEverySystem() { Start(GetParam()); }
};

TEST_P(MonitorOfEverySystem, IsThereOnceItWasAdded) {
    EXPECT_THAT(Names(), Contains("Local Port"));
    WriteFileOn(Machine(), InSystem("tarvomon.dll"), "monitor");
    EXPECT_EQ(Add("Tarvo Monitor", "tarvomon.dll", std::string(Machine().Environment())), 0u);
    EXPECT_EQ(Registry().Text(PrintKey("Monitors\\Tarvo Monitor"), "Driver"), "tarvomon.dll");
    const Answer<MONITOR_INFO_2A> answer([](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        return EnumMonitorsA(nullptr, 2, bytes, size, needed, count);
    });
    const auto& records = answer.Records();
    const auto found = std::ranges::find_if(
        records, [](const MONITOR_INFO_2A& info) { return std::string(info.pName) == "Tarvo Monitor"; });
    ASSERT_NE(found, records.end());
    EXPECT_EQ(found->pEnvironment, Machine().Environment());
    EXPECT_STREQ(found->pDLLName, "tarvomon.dll");
    Test().Reopen();
    EXPECT_THAT(Names(), Contains("Tarvo Monitor"));
}

TEST_P(MonitorOfEverySystem, BelongsToItsSystemsEnvironment) {
    WriteFileOn(Machine(), InSystem("tarvomon.dll"), "monitor");
    const std::string other = Machine().Is9x() ? "Windows NT x86" : "Windows 4.0";
    EXPECT_EQ(Add("Tarvo Monitor", "tarvomon.dll", other), DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(Add("Tarvo Monitor", "tarvomon.dll"), 0u);
}

INSTANTIATE_ON_EVERY_SYSTEM(MonitorOfEverySystem);

TEST_F(MonitorTest, AddingTellsWhatIsWrong) {
    WriteFileOn(Machine(), InSystem("tarvomon.dll"), "monitor");
    EXPECT_EQ(Add("Tarvo Monitor", "nosuch.dll"), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_EQ(Add({}, "tarvomon.dll"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Add("", "tarvomon.dll"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Add("Tarvo\\Monitor", "tarvomon.dll"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Add("Tarvo Monitor", {}), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Add("Tarvo Monitor", ""), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Add("Tarvo Monitor", "tarvomon.dll", {}, 1), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(Add("Tarvo Monitor", "tarvomon.dll", {}, 3), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(AddMonitorA(nullptr, 2, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Names(), Not(Contains("Tarvo Monitor")));

    EXPECT_EQ(Add("Tarvo Monitor", "tarvomon.dll"), 0u);
    EXPECT_EQ(Add("TARVO monitor", "tarvomon.dll"), DWORD{ERROR_PRINT_MONITOR_ALREADY_INSTALLED});
    EXPECT_EQ(Add("Tarvo Monitor", "nosuch.dll"), DWORD{ERROR_PRINT_MONITOR_ALREADY_INSTALLED});
    EXPECT_EQ(Add("Tarvo Monitor 2", "tarvomon.dll"), 0u);
}

TEST_F(MonitorTest, UserWithoutRightsIsRefused) {
    WriteFileOn(Machine(), InSystem("tarvomon.dll"), "monitor");
    SystemDescription description = Machine().System();
    description.administrator = false;
    Machine().SetSystem(description);
    EXPECT_EQ(Add("Tarvo Monitor", "tarvomon.dll"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(Delete("PJL Language Monitor"), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(MonitorTest, EnumerationChecksItsArguments) {
    DWORD needed = 0;
    DWORD count = 0;
    BYTE bytes[4096];
    EXPECT_EQ(CODE_OF(EnumMonitorsA(nullptr, 0, bytes, sizeof bytes, &needed, &count)), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(EnumMonitorsA(nullptr, 3, bytes, sizeof bytes, &needed, &count)), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(EnumMonitorsA(nullptr, 1, bytes, sizeof bytes, nullptr, &count)), DWORD{RPC_X_NULL_REF_POINTER});
    EXPECT_EQ(CODE_OF(EnumMonitorsA(nullptr, 1, bytes, sizeof bytes, &needed, nullptr)), DWORD{RPC_X_NULL_REF_POINTER});
    count = 7;
    EXPECT_EQ(CODE_OF(EnumMonitorsA(nullptr, 1, bytes, 4, &needed, &count)), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(count, 0u);
    // A machine without monitors has nothing to give, which is no failure.
    Registry().DeleteKey(PrintKey("Monitors"));
    EXPECT_EQ(CODE_OF(EnumMonitorsA(nullptr, 1, nullptr, 0, &needed, &count)), 0u);
    EXPECT_EQ(needed, 0u);
}

TEST_F(MonitorTest, GoesWhenNobodyNeedsIt) {
    WriteFileOn(Machine(), InSystem("tarvomon.dll"), "monitor");
    ASSERT_EQ(Add("Tarvo Monitor", "tarvomon.dll"), 0u);
    DriverText driver;
    driver.monitor = "tarvo monitor";
    InstallDriver(driver);
    EXPECT_EQ(Delete("Tarvo Monitor"), DWORD{ERROR_PRINT_MONITOR_IN_USE});
    ASSERT_TRUE(DeletePrinterDriverA(nullptr, nullptr, driver.name.data()));
    EXPECT_EQ(Delete("Tarvo Monitor", "Windows 4.0"), DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(Delete("TARVO MONITOR", "Windows NT x86"), 0u);
    EXPECT_EQ(Delete("Tarvo Monitor"), DWORD{ERROR_UNKNOWN_PRINT_MONITOR});
    EXPECT_EQ(Delete(""), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Delete("Local Port"), DWORD{ERROR_PRINT_MONITOR_IN_USE});  // the machine has local ports
    EXPECT_TRUE(FileIsThere(InSystem("tarvomon.dll")));
}

TEST_F(MonitorTest, LibraryIsInUseWhileTheSpoolerRuns) {
    const std::string path = InSystem("TARVOMON.dll");
    WriteFileOn(Machine(), path, "monitor");
    EXPECT_EQ(OpenAlone(path), 0u);
    ASSERT_EQ(Add("Tarvo Monitor", "tarvomon.dll"), 0u);
    EXPECT_EQ(OpenAlone(path), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(OpenAlone(path, GENERIC_READ), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(OpenAlone(path, GENERIC_WRITE, FILE_SHARE_READ), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(OpenAlone(path, GENERIC_READ, FILE_SHARE_READ), 0u);
    EXPECT_EQ(Machine().Files().Delete(path), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(Machine().Files().Write(path, "new"), DWORD{ERROR_SHARING_VIOLATION});
    WriteFileOn(Machine(), "C:\\Setup\\tarvomon.dll", "new");
    EXPECT_EQ(OpenAlone("C:\\Setup\\tarvomon.dll"), 0u);  // another file of that name
    EXPECT_EQ(Machine().Files().Copy("C:\\Setup\\tarvomon.dll", path, false), DWORD{ERROR_SHARING_VIOLATION});

    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(OpenAlone(path), 0u);
    EXPECT_EQ(Machine().Files().Copy("C:\\Setup\\tarvomon.dll", path, false), 0u);
    Machine().Services().SetState("Spooler", SERVICE_RUNNING);
    EXPECT_EQ(OpenAlone(path), DWORD{ERROR_SHARING_VIOLATION});
    ASSERT_EQ(Delete("Tarvo Monitor"), 0u);
    EXPECT_EQ(OpenAlone(path), 0u);
}

TEST_F(MonitorTest, LibraryIsAlwaysInUseOnThe9xFamily) {
    Start("win98");
    WriteFileOn(Machine(), InSystem("TARVOMON.DLL"), "monitor");
    ASSERT_EQ(Add("Tarvo Monitor", "TARVOMON.DLL"), 0u);
    EXPECT_EQ(OpenAlone(InSystem("tarvomon.dll")), DWORD{ERROR_SHARING_VIOLATION});
}

// ---- ports ----------------------------------------------------------------------------------------------------------

class PortOfEverySystem : public MonitorOfEverySystem {};

TEST_P(PortOfEverySystem, LocalOnesAreThereFromTheStart) {
    EXPECT_THAT(PortNames(), IsSupersetOf({"LPT1:", "LPT2:", "COM1:", "FILE:"}));
    const std::optional<Port> port = Ports(Machine()).Find("lpt1:");
    ASSERT_TRUE(port);
    EXPECT_EQ(port->monitor, "Local Port");
    EXPECT_EQ(port->type, DWORD{PORT_TYPE_WRITE});
}

TEST_P(PortOfEverySystem, OthersLieBelowTheirMonitors) {
    Registry().CreateKey(PrintKey("Monitors\\Tarvo Port\\Ports\\Tarvo1"));
    EXPECT_THAT(PortNames(), Contains("Tarvo1"));
    const Answer<PORT_INFO_2A> answer([](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        return EnumPortsA(nullptr, 2, bytes, size, needed, count);
    });
    ASSERT_FALSE(answer.Records().empty());
    const PORT_INFO_2A& info = answer.Records().back();
    EXPECT_STREQ(info.pPortName, "Tarvo1");
    EXPECT_STREQ(info.pMonitorName, "Tarvo Port");
    EXPECT_STREQ(info.pDescription, "Tarvo Port");
    EXPECT_EQ(info.fPortType, DWORD{PORT_TYPE_WRITE} | PORT_TYPE_NET_ATTACHED);
}

INSTANTIATE_ON_EVERY_SYSTEM(PortOfEverySystem);

TEST_F(MonitorTest, PortsCountAsKnownOneByOne) {
    const Ports ports(Machine());
    EXPECT_TRUE(ports.AreKnown("LPT1:"));
    EXPECT_TRUE(ports.AreKnown("LPT1:,lpt2:, FILE:"));
    EXPECT_FALSE(ports.AreKnown("LPT1:,LPT9:"));
    EXPECT_FALSE(ports.AreKnown("LPT1:,"));
    EXPECT_FALSE(ports.AreKnown(""));
    EXPECT_FALSE(ports.AreKnown("\\\\server\\printer"));
    Start("win98");
    EXPECT_TRUE(Ports(Machine()).AreKnown("\\\\server\\printer"));
}

TEST_F(MonitorTest, LocalPortsOfThe9xFamilyStandInWinIni) {
    Start("win98");
    std::string text = "[ports]\r\n";
    for (int i = 0; i < 1000; ++i) {
        text += "PORT" + std::to_string(i) + ":=\r\n";
    }
    WriteFileOn(Machine(), Machine().System().windowsDirectory + "\\win.ini", text);
    lastError = 77;
    EXPECT_EQ(Ports(Machine()).List().size(), 1000u);
    EXPECT_TRUE(Ports(Machine()).AreKnown("port999:"));
    EXPECT_EQ(lastError, 77u);
}

TEST_F(MonitorTest, PortEnumerationChecksItsArguments) {
    DWORD needed = 0;
    DWORD count = 0;
    BYTE bytes[4096];
    EXPECT_EQ(CODE_OF(EnumPortsA(nullptr, 0, bytes, sizeof bytes, &needed, &count)), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(EnumPortsA(nullptr, 3, bytes, sizeof bytes, &needed, &count)), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(EnumPortsA(nullptr, 1, bytes, sizeof bytes, nullptr, &count)), DWORD{RPC_X_NULL_REF_POINTER});
    EXPECT_EQ(CODE_OF(EnumPortsA(nullptr, 1, bytes, 4, &needed, &count)), DWORD{ERROR_INSUFFICIENT_BUFFER});
}

}  // namespace
}  // namespace pikel
