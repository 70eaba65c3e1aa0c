// The spooler as a service: on the NT family its calls fail while it doesn't run.
#include "support/spooler_test.h"
#include "machine/spooler/port_sdk.h"
#include "machine/services/services.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;

/// Every call that goes to the spooler, with arguments that would pass.
class SpoolerService : public SpoolerTest {
  protected:
    void SetUpPrinter() {
        InstallDriver();
        ASSERT_EQ(AddPrinter(), 0u);
        m_printer = Open("Office");
    }
    void ExpectAll(DWORD expected) {
        BYTE bytes[8192];
        DWORD needed = 0;
        DWORD count = 0;
        DWORD type = 0;
        DriverText driver;
        DRIVER_INFO_6A driverInfo = driver.Info();
        PRINTER_INFO_2A printerInfo = m_settings.Info();
        MONITOR_INFO_2A monitorInfo{m_monitor.data(), nullptr, m_library.data()};
        auto data = [](auto& info) { return reinterpret_cast<LPBYTE>(&info); };
        const HANDLE printer = m_printer.Get();
        EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, bytes, sizeof bytes, &needed)), expected);
        EXPECT_EQ(CODE_OF(AddPrinterDriverA(nullptr, 3, data(driverInfo))), expected);
        EXPECT_EQ(CODE_OF(AddPrinterDriverExA(nullptr, 6, data(driverInfo), APD_COPY_NEW_FILES)), expected);
        EXPECT_EQ(CODE_OF(EnumPrinterDriversA(nullptr, nullptr, 3, bytes, sizeof bytes, &needed, &count)), expected);
        EXPECT_EQ(CODE_OF(GetPrinterDriverA(printer, nullptr, 3, bytes, sizeof bytes, &needed)), expected);
        EXPECT_EQ(CODE_OF(EnumMonitorsA(nullptr, 1, bytes, sizeof bytes, &needed, &count)), expected);
        EXPECT_EQ(CODE_OF(AddMonitorA(nullptr, 2, data(monitorInfo))), expected);
        EXPECT_EQ(CODE_OF(DeleteMonitorA(nullptr, nullptr, m_monitor.data())), expected);
        EXPECT_EQ(CODE_OF(EnumPortsA(nullptr, 1, bytes, sizeof bytes, &needed, &count)), expected);
        EXPECT_EQ(OpenCode("Office"), expected);
        HANDLE added = nullptr;
        EXPECT_EQ(CODE_OF((added = AddPrinterA(nullptr, 2, data(printerInfo)))), expected);
        if (added != nullptr) {
            EXPECT_EQ(CODE_OF(DeletePrinter(added)), expected);
            ClosePrinter(added);
        }
        EXPECT_EQ(CODE_OF(SetPrinterA(printer, 0, nullptr, PRINTER_CONTROL_RESUME)), expected);
        EXPECT_EQ(CODE_OF(GetPrinterA(printer, 2, bytes, sizeof bytes, &needed)), expected);
        EXPECT_EQ(CODE_OF(EnumPrintersA(2, nullptr, 2, bytes, sizeof bytes, &needed, &count)), expected);
        EXPECT_EQ(CODE_OF(AddPrinterConnectionA(m_shared.data())), expected);
        EXPECT_EQ(CODE_OF(DeletePrinterConnectionA(m_shared.data())), expected);
        EXPECT_EQ(CODE_OF(SetDefaultPrinterA("Office")), expected);
        EXPECT_EQ(SetPrinterDataA(printer, m_value.data(), REG_SZ, reinterpret_cast<LPBYTE>(m_value.data()), 2),
                  expected);
        EXPECT_EQ(SetPrinterDataExA(printer, "Key", "V", REG_SZ, reinterpret_cast<LPBYTE>(m_value.data()), 2),
                  expected);
        EXPECT_EQ(GetPrinterDataA(printer, m_value.data(), &type, bytes, sizeof bytes, &needed), expected);
        EXPECT_EQ(GetPrinterDataExA(printer, "Key", "V", &type, bytes, sizeof bytes, &needed), expected);
    }

    PrinterHandle m_printer;
    PrinterSettings m_settings{.name = "Second"};
    std::string m_monitor = "Tarvo Monitor";
    std::string m_library = "tarvomon.dll";
    std::string m_shared = "\\\\server\\Laser";
    std::string m_value = "V";
};

TEST_F(SpoolerService, EveryCallNeedsIt) {
    SetUpPrinter();
    WriteFileOn(Machine(), Machine().System().systemDirectory + "\\tarvomon.dll", "monitor");
    Registry().CreateKey("HKLM\\SOFTWARE\\Simulated Network\\Servers\\server\\Laser");
    ExpectAll(0);
    const std::string before = Registry().Text();
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    ExpectAll(RPC_S_SERVER_UNAVAILABLE);
    EXPECT_EQ(Registry().Text(), before);
    Machine().Services().SetState("Spooler", SERVICE_RUNNING);
    ExpectAll(0);
}

TEST_F(SpoolerService, IsGoneFromTheMomentOfAStop) {
    SetUpPrinter();
    Machine().Services().SetTimes("Spooler", 500, 500);
    // Its dependents go first.
    for (const std::string& name : Machine().Services().Dependents("Spooler")) {
        Machine().Services().SetState(name, SERVICE_STOPPED);
    }
    ASSERT_EQ(Machine().Services().Stop("Spooler"), 0u);
    EXPECT_EQ(OpenCode("Office"), DWORD{RPC_S_SERVER_UNAVAILABLE});
    Machine().Advance(600);
    EXPECT_EQ(OpenCode("Office"), DWORD{RPC_S_SERVER_UNAVAILABLE});
    ASSERT_EQ(Machine().Services().Start("Spooler"), 0u);
    EXPECT_EQ(OpenCode("Office"), DWORD{RPC_S_SERVER_UNAVAILABLE});
    Machine().Advance(600);
    EXPECT_EQ(OpenCode("Office"), 0u);
}

TEST_F(SpoolerService, IsNotNeededForWhatTheUsersSettingsTell) {
    SetUpPrinter();
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(DefaultPrinterName(), "Office");
    EXPECT_EQ(CODE_OF(ClosePrinter(m_printer.Release())), 0u);
}

TEST_F(SpoolerService, IsPartOfThe9xFamily) {
    Start("win98");
    SetUpPrinter();
    EXPECT_EQ(OpenCode("Office"), 0u);
}

}  // namespace
}  // namespace pikel
