// The printer operations as installers call them: through the table, with their statuses and their whole log.
#include "printer/effective_dev_mode.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

const PI_KEL_Interface& Table() {
    return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
}

class PrinterSlots : public MachineTest {
  protected:
    PrinterSlots() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        AddPrinterTo(Test(), "Laser");
        MakeDefaultOn(Test(), "Laser");
        Test().TurnLogOn(1);
    }
    ~PrinterSlots() override { DoSetEffectiveDevMode(1); }
};

TEST_F(PrinterSlots, YesToTheDefaultPrinterBearsThePrefixToo) {
    EXPECT_EQ(Table().PI_KEL_IsDefaultPrinter("Laser"), 0x90010001u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_IsDefaultPrinter Start", "DoIsDefaultPrinter(Laser) Start",
                            "DoIsDefaultPrinter() End(1)", "PI_KEL_IsDefaultPrinter End:(0x90010001)", ""));
    EXPECT_EQ(Table().PI_KEL_IsDefaultPrinter("P1"), 0u);
    EXPECT_EQ(Table().PI_KEL_IsDefaultPrinter(nullptr), 0x90010057u);
}

TEST_F(PrinterSlots, DefaultPrinterIsToldAndSet) {
    char name[16] = {};
    EXPECT_EQ(Table().PI_KEL_SetDefaultPrinter("P1"), 0u);
    EXPECT_EQ(Table().PI_KEL_GetDefaultPrinter(name, sizeof name), 0u);
    EXPECT_STREQ(name, "P1");
    EXPECT_EQ(Table().PI_KEL_GetDefaultPrinter(name, 2), 0x90010057u);
    EXPECT_EQ(Table().PI_KEL_SetDefaultPrinter("Nobody"), 0x90010709u);
    EXPECT_EQ(Table().PI_KEL_SetDefaultPrinter(nullptr), 0x90010057u);
}

TEST_F(PrinterSlots, PrinterIsAdded) {
    PrinterText text("P2");
    EXPECT_EQ(Table().PI_KEL_AddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_TRUE(PrinterOn(Test(), "P2"));
    EXPECT_EQ(Table().PI_KEL_AddPrinter(&text.Record(), nullptr), 0x900E0000u | ERROR_PRINTER_ALREADY_EXISTS);
    EXPECT_EQ(Table().PI_KEL_AddPrinter(nullptr, nullptr), 0x900E0057u);
}

TEST_F(PrinterSlots, PortIsCreated) {
    constexpr char kSdk[] = "C:\\Program Files\\pikel\\portsdk.dll";
    char result[260] = {};
    EXPECT_EQ(Table().PI_KEL_CreatePort(kSdk, "IP_10.0.0.7", 0, nullptr, 0, result, sizeof result), 0u);
    EXPECT_STREQ(result, "IP_10.0.0.7");
    EXPECT_EQ(Table().PI_KEL_CreatePort(kSdk, "IP_10.0.0.7", 0, nullptr, 0, nullptr, 0), 0x900C054Fu);  // it is there
    EXPECT_EQ(Table().PI_KEL_CreatePort(nullptr, "P", 0, nullptr, 0, nullptr, 0), 0x900C0057u);
}

TEST_F(PrinterSlots, DevModeSwitchOutlivesShutdown) {
    EXPECT_EQ(Table().PI_KEL_SetEffectiveDevMode(0), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_SetEffectiveDevMode( 0 ) Start", "DoSetEffectiveDevMode( 0 ) Start",
                            "DoSetEffectiveDevMode End(0)", "PI_KEL_SetEffectiveDevMode End:(0x00000000)", ""));
    Table().PI_KEL_Initialize();
    EXPECT_EQ(EffectiveDevModeSwitch(), 0u);
    Table().PI_KEL_Shutdown();
    EXPECT_EQ(EffectiveDevModeSwitch(), 0u);
}

}  // namespace
}  // namespace pikel
