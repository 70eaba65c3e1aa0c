// Deleting a printer with its driver: whether the driver is still in use, and which step's code comes back.
#include "table/print_ui_choice.h"

#include "machine/operations.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class UninstallTest : public MachineTest {
  protected:
    void StartWith(std::string_view system) {
        Start(system);
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        m_version = Is9xName(system) ? 0 : IsNt4Name(system) ? 2 : 3;
        Test().TakeCalls();
    }
    DWORD Uninstall(LPCSTR driver = kDriver, INT printUi = 0) {
        return UninstallPrinterAsAsked("P1", driver, m_version, 0, 0, nullptr, 1, printUi);
    }
    bool IsDriverThere() {
        DWORD needed = 0;
        DWORD count = 0;
        simulated::EnumPrinterDriversA(nullptr, nullptr, 3, nullptr, 0, &needed, &count);
        return needed != 0;
    }

    DWORD m_version = 3;
};

TEST_F(UninstallTest, DriverCountsAsUsedWhileAPrinterNamesItInAnyCase) {
    StartWith("xp");
    EXPECT_EQ(IsDriverUsedByPrinter("TARVO 100"), 1u);
    EXPECT_EQ(IsDriverUsedByPrinter("Tarvo 1000"), 0u);
    EXPECT_EQ(IsDriverUsedByPrinter(nullptr), 0u);
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("EnumPrintersA", nth, ERROR_ACCESS_DENIED);
        EXPECT_EQ(IsDriverUsedByPrinter(kDriver), 0u);
    }
    faults::Reset();
    faults::FailCall("HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(IsDriverUsedByPrinter(kDriver), 0u);
}

TEST_F(UninstallTest, ConnectionOfAnotherComputerCountsToo) {
    StartWith("xp");
    ShareOnTheNetwork(Test());
    Machine().Registry().SetText("HKLM\\SOFTWARE\\Simulated Network\\Servers\\server\\Laser", "Driver", "Shared 1");
    std::string name = kShared;
    ASSERT_TRUE(simulated::AddPrinterConnectionA(name.data()));
    EXPECT_EQ(IsDriverUsedByPrinter("shared 1"), 1u);
}

TEST_F(UninstallTest, NullDriverIsRefusedBehindThePrinter) {
    for (const char* system : {"win98", "nt4", "win2000", "xp", "vista"}) {
        StartWith(system);
        EXPECT_EQ(Uninstall(nullptr), ERROR_INVALID_PARAMETER) << system;
        EXPECT_THAT(PrintersOn(Test()), IsEmpty()) << system;
        EXPECT_TRUE(IsDriverThere()) << system;
    }
}

TEST_F(UninstallTest, NullDriverIsRefusedByThePrintUiRouteToo) {
    StartWith("xp");
    EXPECT_EQ(Uninstall(nullptr, 1), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(PrintersOn(Test()), IsEmpty());
    EXPECT_TRUE(IsDriverThere());
}

TEST_F(UninstallTest, FailedPrinterEndsTheWork) {
    // The codes with which a step of the Print UI route would count as done come back as they are.
    for (DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        StartWith("xp");
        faults::FailCall("DeletePrinter", 1, code);
        EXPECT_EQ(Uninstall(), code);
        EXPECT_THAT(PrintersOn(Test()), ElementsAre("P1"));
        EXPECT_TRUE(IsDriverThere());
    }
}

TEST_F(UninstallTest, FailedPrinterOfThePrintUiRouteEndsTheWork) {
    StartWith("xp");
    faults::FailCall("LoadLibraryA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(Uninstall(kDriver, 1), ERROR_ACCESS_DENIED);
    EXPECT_THAT(PrintersOn(Test()), ElementsAre("P1"));
    EXPECT_TRUE(IsDriverThere());
    EXPECT_THAT(Test().TakeCallNames({"PrintUIEntryW", "EnumPrintersA", "EnumPrinterDriversA", "StartServiceA"}),
                IsEmpty());
}

TEST_F(UninstallTest, FailedDriverOfThePrintUiRouteIsTheResultAndNothingFollows) {
    // No code counts as done here: only the printer's step lets some pass.
    for (DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        StartWith("xp");
        faults::FailCall("LoadLibraryA", 2, code);
        EXPECT_EQ(Uninstall(kDriver, 1), code);
        EXPECT_THAT(PrintersOn(Test()), IsEmpty());
        EXPECT_TRUE(IsDriverThere());
        EXPECT_THAT(Test().TakeCallNames({"PrintUIEntryW", "DeleteMonitorA", "DeleteFileA"}),
                    ElementsAre("PrintUIEntryW"));
    }
}

TEST_F(UninstallTest, FailedDriverIsTheResultAndThePrinterStaysGone) {
    for (DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        StartWith("xp");
        faults::FailCall("DeletePrinterDriverExA", 1, code, true);
        EXPECT_EQ(Uninstall(), code);
        EXPECT_THAT(PrintersOn(Test()), IsEmpty());
        EXPECT_TRUE(IsDriverThere());
    }
}

TEST_F(UninstallTest, SpoolerIsRestartedOnTheNtFamily) {
    for (const char* system : {"win98", "nt4", "win2000", "vista"}) {
        StartWith(system);
        EXPECT_EQ(Uninstall(), 0u) << system;
        EXPECT_EQ(Test().TakeCallNames({"StartServiceA"}).empty(), Is9xName(system)) << system;
        EXPECT_FALSE(IsDriverThere()) << system;
    }
}

TEST_F(UninstallTest, PrinterAloneTakesTheRouteOfItsFlag) {
    struct Case {
        const char* system;
        INT printUi;
        bool takesPrintUi;
    };
    for (const Case& oneCase : {Case{"win2000", 0, false}, Case{"win2000", 1, true}, Case{"xp", -1, true},
                                Case{"vista", 1, false}, Case{"other", 1, true}}) {
        StartWith(oneCase.system);
        EXPECT_EQ(DeletePrinterAsAsked("P1", 0, nullptr, oneCase.printUi), 0u) << oneCase.system;
        EXPECT_THAT(PrintersOn(Test()), IsEmpty()) << oneCase.system;
        EXPECT_EQ(Test().TakeCallNames({"PrintUIEntryW"}).size(), oneCase.takesPrintUi ? 1u : 0u) << oneCase.system;
    }
}

TEST_F(UninstallTest, PrintUiThatIsNotThereIsRefusedBeforeAnyWork) {
    for (const char* system : {"win95", "win98", "winme", "nt4"}) {
        StartWith(system);
        EXPECT_EQ(Uninstall(kDriver, 1), ERROR_INVALID_PARAMETER) << system;
        EXPECT_EQ(DeletePrinterAsAsked("P1", 0, nullptr, 1), ERROR_INVALID_PARAMETER) << system;
        EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "EnumPrintersA"}), IsEmpty()) << system;
        EXPECT_THAT(PrintersOn(Test()), ElementsAre("P1")) << system;
    }
}

}  // namespace
}  // namespace pikel
