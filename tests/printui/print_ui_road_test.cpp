// The whole road over the machine's own PRINTUI.DLL: what the operations ask for is there afterwards, and gone again.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "machine/spooler/drivers.h"
#include "support/project.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/printers.h"
#include "print_ui_probe.h"
#include "printui/print_ui_commands.h"

namespace pikel {

namespace {

using namespace testing_support;

constexpr char kInf[] = "C:\\my @ drv\\aurora.inf";
constexpr char kModel[] = "Aurora Laser 500";

class PrintUIRoad : public MachineTest, public ::testing::WithParamInterface<std::string> {
  protected:
    PrintUIRoad() : MachineTest(GetParam()) {
        for (const auto& entry : std::filesystem::directory_iterator(testing_support::SourceDir() + "/samples/xp")) {
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
            WriteFileOn(Machine(), "C:\\my @ drv\\" + entry.path().filename().string(), bytes);
        }
    }

    std::optional<simulated::Driver> DriverOn(const std::string& environment = {}) {
        const auto found = simulated::Environments(Machine()).Find(environment);
        return found ? simulated::Drivers(Machine()).Find(*found, kModel, 3) : std::nullopt;
    }
    std::optional<simulated::Printer> PrinterOn(const std::string& name) {
        return simulated::Printers(Machine()).Find(name);
    }
    bool HasMonitor() { return simulated::Monitors(Machine()).Find("Aurora Language Monitor").has_value(); }
    bool HasMonitorFile() { return Machine().Files().Exists(Machine().System().systemDirectory + "\\NLMON.DLL"); }
    /// ProcessorCode of the machine.
    DWORD Processor() const { return GetParam().ends_with("ia64") ? 1 : GetParam().ends_with("x64") ? 2 : 0; }
};

INSTANTIATE_TEST_SUITE_P(Systems, PrintUIRoad,
                         ::testing::Values("win2000", "xp", "xp-ia64", "xp-x64", "vista", "vista-ia64", "vista-x64",
                                           "other"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::erase(name, '-');
                             return name;
                         });

TEST_P(PrintUIRoad, PrinterIsInstalledSharedAndRemovedWithItsDriver) {
    const std::string name = "Anna's \"best\" @ home";
    ASSERT_EQ(DoInstallPrinterToPrintUI(kInf, name.c_str(), kModel, "LPT1:", "a@\"b\"", nullptr, 1), 0u);
    ASSERT_TRUE(PrinterOn(name).has_value());
    EXPECT_EQ(PrinterOn(name)->shareName, "a@\"b\"");
    EXPECT_TRUE((PrinterOn(name)->attributes & PRINTER_ATTRIBUTE_SHARED) != 0);
    EXPECT_TRUE(DriverOn().has_value());
    EXPECT_TRUE(HasMonitor());

    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, kModel, Processor(), 0, nullptr, 1, 0), 3001u);
    EXPECT_EQ(DoDeletePrinterToPrintUI(name.c_str(), 0, nullptr), 0u);
    EXPECT_FALSE(PrinterOn(name).has_value());
    EXPECT_EQ(DoDeletePrinterToPrintUI(name.c_str(), 0, nullptr), 1801u);

    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, kModel, Processor(), 0, nullptr, 1, 1), 0u);
    EXPECT_FALSE(DriverOn().has_value());
    EXPECT_FALSE(HasMonitor());
    EXPECT_FALSE(HasMonitorFile());
}

TEST_P(PrintUIRoad, UnsharedPrinterStaysSo) {
    ASSERT_EQ(DoInstallPrinterToPrintUI(kInf, "Office", kModel, "LPT1:", nullptr, nullptr, 0), 0u);
    EXPECT_EQ(PrinterOn("Office")->shareName, "");
    EXPECT_EQ(DoChangeShareNameToPrintUI("Office", "OFFICE"), 0u);
    EXPECT_EQ(PrinterOn("Office")->shareName, "OFFICE");
    EXPECT_EQ(DoInstallPrinterToPrintUI(kInf, "Second", kModel, "Nowhere:", nullptr, nullptr, 0), 1796u);
}

TEST_P(PrintUIRoad, DriverIsAddedForItsProcessor) {
    ASSERT_EQ(DoAddDriverToPrintUI(kInf, kModel, 3, Processor()), 0u);
    EXPECT_TRUE(DriverOn().has_value());
    if (GetParam() != "win2000") {
        ASSERT_EQ(DoAddDriverToPrintUI(kInf, kModel, 3, 2), 0u);
        EXPECT_TRUE(DriverOn("Windows x64").has_value());
    }
    EXPECT_EQ(DoAddDriverToPrintUI(kInf, "Aurora 1", 3, Processor()), 1797u);
    EXPECT_EQ(DoDeletePrinterDriverToPrintUI(3, kModel, Processor(), 0, nullptr, 0, 0), 0u);
    EXPECT_FALSE(DriverOn().has_value());
    EXPECT_TRUE(HasMonitor());
}

}  // namespace

}  // namespace pikel
