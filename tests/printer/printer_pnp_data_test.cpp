// The PnP identity of a printer's driver.
#include "printer/printer_pnp_data.h"

#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What stands in the printer's key, as "name=text".
std::vector<std::string> PnpDataOn(TestMachine& test, const std::string& printer = "P1") {
    std::vector<std::string> values;
    for (const simulated::RegistryValue& value :
         test->Registry().Values(std::string(kPrintersOn) + "\\" + printer + "\\PnPData")) {
        EXPECT_EQ(value.type, DWORD{REG_SZ}) << value.name;
        EXPECT_EQ(value.data.size(), std::string_view(value.data.c_str()).size() + 1) << value.name;
        values.push_back(value.name + "=" + value.data.c_str());
    }
    return values;
}

class PnpDataOnEverySystem : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(PnpDataOnEverySystem);

TEST_P(PnpDataOnEverySystem, IsRecordedFromWindows2000On) {
    InstallDriver(Test());
    AddPrinterTo(Test(), "P1");
    Test().TakeCalls();
    EXPECT_EQ(AddHardwareIdRegistryData("P1"), 0u);
    if (Is9xName(GetParam()) || IsNt4Name(GetParam())) {
        EXPECT_THAT(PnpDataOn(Test()), IsEmpty());
        EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "GetPrinterDriverA", "SetPrinterDataA"}), IsEmpty());
        return;
    }
    EXPECT_THAT(PnpDataOn(Test()),
                ::testing::UnorderedElementsAre("HardwareID=LPTENUM\\TarvoTarvo_1003D5A", "Manufacturer=Tarvo",
                                                "OEM URL=http://tarvo.example/"));
}

class PnpData : public MachineTest {
  protected:
    void AddPrinterWith(const DriverIdentity& identity) {
        InstallDriver(Test(), kDriver, identity);
        AddPrinterTo(Test(), "P1");
        Test().TakeCalls();
    }
};

TEST_F(PnpData, DriverIsReadThroughAPlainHandleThatIsClosedFirst) {
    AddPrinterWith({});
    EXPECT_EQ(AddRegistryData("P1"), 0u);
    EXPECT_THAT(Test().TakeCallNames(
                    {"OpenPrinterA", "GetPrinterDriverA", "SetPrinterDataExA", "ClosePrinter", "LoadLibraryA"}),
                ElementsAre("OpenPrinterA", "GetPrinterDriverA", "GetPrinterDriverA", "ClosePrinter",  //
                            "LoadLibraryA", "OpenPrinterA", "SetPrinterDataExA", "ClosePrinter",       //
                            "LoadLibraryA", "OpenPrinterA", "SetPrinterDataExA", "ClosePrinter",       //
                            "LoadLibraryA", "OpenPrinterA", "SetPrinterDataExA", "ClosePrinter"));
}

TEST_F(PnpData, CallsCarryWhatTheSpoolerExpects) {
    AddPrinterWith({});
    EXPECT_EQ(AddRegistryData("P1"), 0u);
    std::vector<std::string> calls;
    for (std::string& call : Test().TakeCalls()) {
        if (call.starts_with("OpenPrinterA") || call.starts_with("SetPrinterDataExA") ||
            call.starts_with("GetPrinterDriverA")) {
            // The handle differs from machine to machine.
            const std::size_t comma = call.find(',');
            calls.push_back(call.starts_with("OpenPrinterA") ? call.substr(0, call.find(" = ")) : call.substr(comma));
        }
    }
    ASSERT_EQ(calls.size(), 9u);
    EXPECT_EQ(calls[0], "OpenPrinterA(\"P1\", &, null)");
    EXPECT_THAT(calls[1], ::testing::StartsWith(", null, 0x6, null, 0x0, &) = 0x0"));
    EXPECT_THAT(calls[2], ::testing::StartsWith(", null, 0x6, &, "));
    EXPECT_EQ(calls[4], ", \"PnPData\", \"HardwareID\", 0x1, &, 0x1b) = 0x0");
    EXPECT_EQ(calls[6], ", \"PnPData\", \"Manufacturer\", 0x1, &, 0x6) = 0x0");
    EXPECT_EQ(calls[8], ", \"PnPData\", \"OEM URL\", 0x1, &, 0x16) = 0x0");
}

TEST_F(PnpData, FieldsWithoutTextArePassedOver) {
    AddPrinterWith({.hardwareId = std::nullopt, .maker = "", .url = "http://x/"});
    EXPECT_EQ(AddRegistryData("P1"), 0u);
    EXPECT_THAT(PnpDataOn(Test()), ElementsAre("OEM URL=http://x/"));
}

TEST_F(PnpData, DriverWithoutIdentityWritesNothing) {
    AddPrinterWith({.hardwareId = std::nullopt, .maker = std::nullopt, .url = std::nullopt});
    EXPECT_EQ(AddRegistryData("P1"), 0u);
    EXPECT_THAT(PnpDataOn(Test()), IsEmpty());
}

TEST_F(PnpData, FailedWritesAreLoggedAndDropped) {
    AddPrinterWith({});
    Test().TurnLogOn(1);
    faults::FailCall("SetPrinterDataExA", 1, ERROR_ACCESS_DENIED, true);
    EXPECT_EQ(AddRegistryData("P1"), 0u);
    // The URL's failure bears the maker's name.
    EXPECT_THAT(Test().TakeLog(), ElementsAre("SetPrinterData2k() - Start", "SetPrinterData2k() - End(5)",
                                              "AddRegistryData-SetPrinterData(HardwareID) Error:5",  //
                                              "SetPrinterData2k() - Start", "SetPrinterData2k() - End(5)",
                                              "AddRegistryData-SetPrinterData(Manufacturer) Error:5",  //
                                              "SetPrinterData2k() - Start", "SetPrinterData2k() - End(5)",
                                              "AddRegistryData-SetPrinterData(Manufacturer) Error:5"));
    EXPECT_THAT(PnpDataOn(Test()), IsEmpty());
}

TEST_F(PnpData, OneFailedWriteDoesNotHoldUpTheNext) {
    AddPrinterWith({});
    Test().TurnLogOn(1);
    faults::FailCall("SetPrinterDataExA", 1, RPC_S_CALL_FAILED);
    EXPECT_EQ(AddRegistryData("P1"), 0u);
    EXPECT_THAT(PnpDataOn(Test()),
                ::testing::UnorderedElementsAre("Manufacturer=Tarvo", "OEM URL=http://tarvo.example/"));
    EXPECT_THAT(Test().TakeLog(), ::testing::Contains("AddRegistryData-SetPrinterData(HardwareID) Error:1726"));
}

TEST_F(PnpData, FailedReadIsTheResult) {
    struct Case {
        const char* call;
        std::size_t nth;
        DWORD code;
    };
    AddPrinterWith({});
    for (const Case& oneCase : {Case{"OpenPrinterA", 1, ERROR_INVALID_PRINTER_NAME},
                                Case{"GetPrinterDriverA", 1, ERROR_UNKNOWN_PRINTER_DRIVER},
                                Case{"GetPrinterDriverA", 2, RPC_S_SERVER_UNAVAILABLE}}) {
        faults::Reset();
        faults::FailCall(oneCase.call, oneCase.nth, oneCase.code);
        EXPECT_EQ(AddRegistryData("P1"), oneCase.code) << oneCase.call;
        EXPECT_EQ(faults::LastFailed(), oneCase.call);
    }
    EXPECT_THAT(PnpDataOn(Test()), IsEmpty());
}

TEST_F(PnpData, NoMemoryForTheDriverIsTheResult) {
    AddPrinterWith({});
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(AddRegistryData("P1"), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(PnpData, ReadThatUnexpectedlySucceedsWritesNothing) {
    AddPrinterWith({});
    ReplacedOperations replaced;
    replaced.table.GetPrinterDriverA = [](HANDLE, LPSTR, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    EXPECT_EQ(AddRegistryData("P1"), 0u);
    EXPECT_THAT(PnpDataOn(Test()), IsEmpty());
}

TEST_F(PnpData, NullNameIsRefused) {
    EXPECT_EQ(AddRegistryData(nullptr), ERROR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace pikel
