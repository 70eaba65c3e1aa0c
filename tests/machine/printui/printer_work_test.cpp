// /if, /dl, /dn and /Xs: printers. And the calls of the library.
#include "machine/printui/print_ui.h"
#include "machine/services/services.h"
#include "machine/spooler/connections.h"
#include "support/print_ui_test.h"

namespace pikel::simulated {

namespace {

using namespace testing_support;
using ::testing::IsEmpty;

const std::string kInstall = "/if /b\"Office\" /f\"C:\\pkg\\aurora.inf\" /r\"LPT1:\" /m\"Aurora Laser 500\" ";

class PrintUIPrinters : public PrintUITest {
  protected:
    PrintUIPrinters() { StartWithPackages("xp"); }

    bool IsShared(const std::string& name = "Office") {
        return (PrinterOn(name)->attributes & PRINTER_ATTRIBUTE_SHARED) != 0;
    }
};

// ---- installation ---------------------------------------------------------------------------------------------------

TEST_F(PrintUIPrinters, PrinterComesWithItsDriver) {
    ASSERT_EQ(Run(kInstall + "/q /z"), 0u);
    EXPECT_TRUE(DriverOn().has_value());
    const std::optional<Printer> printer = PrinterOn();
    ASSERT_TRUE(printer.has_value());
    EXPECT_EQ(printer->portName, "LPT1:");
    EXPECT_EQ(printer->driverName, kModel);
    EXPECT_EQ(printer->printProcessor, "winprint");
    EXPECT_EQ(printer->datatype, "RAW");
    EXPECT_EQ(printer->shareName, "");
    EXPECT_FALSE(IsShared());
    Test().Reopen();
    EXPECT_TRUE(PrinterOn().has_value());
}

TEST_F(PrintUIPrinters, InstallOnEverySystemWithALibrary) {
    for (const char* system : {"win2000", "xp-ia64", "xp-x64", "vista", "vista-ia64", "vista-x64", "other"}) {
        StartWithPackages(system);
        ASSERT_EQ(Run(kInstall), 0u) << system;
        EXPECT_TRUE(PrinterOn().has_value()) << system;
    }
}

TEST_F(PrintUIPrinters, DriverThatIsThereNeedsNoInf) {
    ASSERT_EQ(Run(kInstall), 0u);
    EXPECT_EQ(Run("/if /b\"Second\" /r\"LPT1:\" /m\"Aurora Laser 500\" /u"), 0u);
    EXPECT_EQ(Run("/if /b\"Third\" /f\"C:\\missing.inf\" /r\"LPT1:\" /m\"aurora laser 500\""), 0u);
    EXPECT_EQ(Run("/if /b\"Fourth\" /r\"LPT1:\" /m\"Aurora Laser 700\""), 87u);
    EXPECT_TRUE(PrinterOn("Second").has_value());
    EXPECT_TRUE(PrinterOn("Third").has_value());
    EXPECT_FALSE(PrinterOn("Fourth").has_value());
}

TEST_F(PrintUIPrinters, DatatypeIsTheDriversOwn) {
    std::string inf = ReadFileOn(Machine(), kSample);
    inf.replace(inf.find("DefaultDataType = RAW"), 21, "DefaultDataType = TEXT");
    WriteFileOn(Machine(), kSample, inf);
    ASSERT_EQ(Run(kInstall), 0u);
    EXPECT_EQ(PrinterOn()->datatype, "TEXT");
}

TEST_F(PrintUIPrinters, RefusedPrinterInstallsNoDriver) {
    EXPECT_EQ(Run("/if /b\"Office\" /f\"C:\\pkg\\aurora.inf\" /r\"Nowhere:\" /m\"Aurora Laser 500\""), 1796u);
    EXPECT_EQ(Run("/if /f\"C:\\pkg\\aurora.inf\" /r\"LPT1:\" /m\"Aurora Laser 500\""), 87u);
    EXPECT_EQ(Run("/if /b\"Office\" /f\"C:\\pkg\\aurora.inf\" /m\"Aurora Laser 500\""), 87u);
    EXPECT_EQ(Run("/if /b\"Office\" /f\"C:\\pkg\\aurora.inf\" /r\"LPT1:\""), 87u);
    EXPECT_FALSE(DriverOn().has_value());
    EXPECT_FALSE(PrinterOn().has_value());
}

TEST_F(PrintUIPrinters, FailedDriverLeavesNoPrinter) {
    EXPECT_EQ(Run("/if /b\"Office\" /f\"C:\\pkg\\aurora.inf\" /r\"LPT1:\" /m\"Aurora 1\""), 1797u);
    EXPECT_FALSE(PrinterOn().has_value());
}

TEST_F(PrintUIPrinters, NameThatIsTakenIsRefused) {
    ASSERT_EQ(Run(kInstall), 0u);
    EXPECT_EQ(Run(kInstall), 1802u);
    EXPECT_EQ(Run("/if /b\"a,b\" /r\"LPT1:\" /m\"Aurora Laser 500\""), 1801u);
}

TEST_F(PrintUIPrinters, SharedPrinterGetsAShareNameOfItsOwn) {
    struct Case {
        const char* printer;
        const char* share;
    };
    for (const Case& one :
         {Case{"Office", "Office"}, Case{"Office of Anna", "OfficeOf"}, Case{"Office of Berta", "OfficeO2"},
          Case{"of-fice", "office2"}, Case{"(1) #", "1"}, Case{"(-)", "Printer"}}) {
        ASSERT_EQ(Run("/if /b\"" + std::string(one.printer) +
                      "\" /f\"C:\\pkg\\aurora.inf\" /r\"LPT1:\" /m\"Aurora Laser 500\" /Z"),
                  0u);
        EXPECT_STRCASEEQ(PrinterOn(one.printer)->shareName.c_str(), one.share);
        EXPECT_TRUE(IsShared(one.printer));
    }
}

// ---- removal --------------------------------------------------------------------------------------------------------

TEST_F(PrintUIPrinters, DeletedPrinterLeavesItsDriver) {
    ASSERT_EQ(Run(kInstall), 0u);
    EXPECT_EQ(Run("/dl /n\"office\" /q"), 0u);
    EXPECT_FALSE(PrinterOn().has_value());
    EXPECT_TRUE(DriverOn().has_value());
    EXPECT_EQ(Run("/dl /n\"Office\" /q"), 1801u);
    EXPECT_EQ(Run("/dl /n\"\" /q"), 1801u);
    EXPECT_EQ(Run("/dl"), 87u);
}

TEST_F(PrintUIPrinters, ConnectionIsDeletedWithoutAdministrativeRights) {
    constexpr char kShared[] = "\\\\server\\Laser";
    Machine().Registry().SetText(Connections::ShareKeyOf(kShared), "Driver", "Aurora");
    ASSERT_EQ(Connections(Machine()).Add(kShared), 0u);
    LoseRights();
    EXPECT_EQ(Run("/dl /n\"\\\\server\\Laser\" /q"), 5u);
    EXPECT_EQ(Run("/dn /n\"\\\\server\\Laser\" /q"), 0u);
    EXPECT_FALSE(Connections(Machine()).IsConnected(kShared));
    EXPECT_EQ(Run("/dn /n\"\\\\server\\Laser\" /q"), 1801u);
    EXPECT_EQ(Run("/dn"), 87u);
}

TEST_F(PrintUIPrinters, NeedRightsAndARunningSpooler) {
    ASSERT_EQ(Run(kInstall), 0u);
    LoseRights();
    for (const char* command : {"/dl /n\"Office\"", "/Xs /n\"Office\" Comment \"x\"",
                                "/if /b\"Second\" /r\"LPT1:\" /m\"Aurora Laser 500\""}) {
        EXPECT_EQ(Run(command), 5u) << command;
    }
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(Run("/dn /n\"Office\""), 1722u);
    EXPECT_TRUE(PrinterOn().has_value());
}

// ---- properties -----------------------------------------------------------------------------------------------------

TEST_F(PrintUIPrinters, ShareNameSharesAndAnEmptyOneEndsThat) {
    ASSERT_EQ(Run(kInstall), 0u);
    EXPECT_EQ(Run("/Xs /n\"Office\" ShareName \"OFF\\\"ICE\""), 0u);
    EXPECT_EQ(PrinterOn()->shareName, "OFF\"ICE");
    EXPECT_TRUE(IsShared());
    EXPECT_EQ(Run("/Xs /n\"Office\" sharename \"\""), 0u);
    EXPECT_EQ(PrinterOn()->shareName, "");
    EXPECT_FALSE(IsShared());
}

TEST_F(PrintUIPrinters, SeveralPropertiesAreSetAtOnce) {
    ASSERT_EQ(Run(kInstall), 0u);
    EXPECT_EQ(Run("/Xs /n\"Office\" Comment \"by the door\" Location \"2/17\" PortName LPT2: PrinterName \"Front\""),
              0u);
    EXPECT_FALSE(PrinterOn().has_value());
    const std::optional<Printer> printer = PrinterOn("Front");
    ASSERT_TRUE(printer.has_value());
    EXPECT_EQ(printer->comment, "by the door");
    EXPECT_EQ(printer->location, "2/17");
    EXPECT_EQ(printer->portName, "LPT2:");
}

TEST_F(PrintUIPrinters, WrongPropertiesChangeNothing) {
    ASSERT_EQ(Run(kInstall), 0u);
    EXPECT_EQ(Run("/Xs /n\"Office\" Comment \"x\" Colour \"red\""), 87u);
    EXPECT_EQ(Run("/Xs /n\"Office\" Comment \"x\" PortName \"Nowhere:\""), 1796u);
    EXPECT_EQ(Run("/Xs /n\"Office\" DriverName \"None\""), 1797u);
    EXPECT_EQ(Run("/Xs /n\"Office\""), 87u);
    EXPECT_EQ(Run("/Xs ShareName \"x\""), 87u);
    EXPECT_EQ(Run("/Xs /n\"Missing\" ShareName \"x\""), 1801u);
    EXPECT_EQ(PrinterOn()->comment, "");
    EXPECT_EQ(PrinterOn()->portName, "LPT1:");
}

// ---- calls of the library -------------------------------------------------------------------------------------------

TEST_F(PrintUIPrinters, CommandThatIsNotWellFormedLeaves87) {
    for (const char* command : {"", "/dl /n\"Office", "/dl /n\"@Office\"", "/dl /dn /n\"Office\"", "Office"}) {
        EXPECT_EQ(Run(command), 87u) << command;
    }
    lastError = 0;
    PrintUIEntryW(nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(lastError, 87u);
    lastError = 0;
    PrintUIEntryA(nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(lastError, 87u);
}

TEST_F(PrintUIPrinters, NarrowEntriesDoTheSame) {
    ASSERT_EQ(Run(kInstall), 0u);
    char first[] = "/Xs /n\"Office\" Comment \"\x80 5\"";
    lastError = 0xdead;
    PrintUIEntryA(nullptr, nullptr, first, 0);
    EXPECT_EQ(lastError, 0u);
    EXPECT_EQ(PrinterOn()->comment, "\x80 5");
    char second[] = "/dl /n\"Office\"";
    lastError = 0xdead;
    PrintUIEntry(nullptr, nullptr, second, 0);
    EXPECT_EQ(lastError, 0u);
    EXPECT_FALSE(PrinterOn().has_value());
}

TEST_F(PrintUIPrinters, TextsAreThoseOfWindows2000) {
    for (const auto& [system, isThere] : {std::pair("win2000", true), std::pair("xp", false)}) {
        Start(system);
        HMODULE module = LoadLibraryA("PRINTUI.DLL");
        char text[64] = "before";
        lastError = 0xdead;
        EXPECT_EQ(LoadStringA(module, 16055, text, sizeof text), isThere ? 14 : 0);
        EXPECT_STREQ(text, isThere ? "Windows NT 4.0" : "before");
        EXPECT_EQ(lastError, isThere ? 0xdeadu : 1814u);
        EXPECT_EQ(LoadStringA(module, 16051, text, sizeof text), 0);
        EXPECT_EQ(lastError, 1814u);
        FreeLibrary(module);
    }
}

TEST_F(PrintUIPrinters, TextIsCutToItsBuffer) {
    Start("win2000");
    HMODULE module = LoadLibraryA("PRINTUI.DLL");
    char text[] = "########";
    EXPECT_EQ(LoadStringA(module, 16056, text, 4), 3);
    EXPECT_STREQ(text, "Win");
    EXPECT_EQ(text[4], '#');
    EXPECT_EQ(LoadStringA(module, 16056, text, 1), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(LoadStringA(module, 16056, text, 0), 0);
    EXPECT_EQ(lastError, 87u);
    EXPECT_EQ(LoadStringA(module, 16056, nullptr, 4), 0);
    EXPECT_EQ(lastError, 87u);
    FreeLibrary(module);
}

TEST_F(PrintUIPrinters, OtherModulesHaveNoTexts) {
    char text[64];
    HMODULE module = LoadLibraryA("winspool.drv");
    EXPECT_EQ(LoadStringA(module, 16055, text, sizeof text), 0);
    EXPECT_EQ(lastError, 1813u);
    FreeLibrary(module);
    EXPECT_EQ(LoadStringA(reinterpret_cast<HINSTANCE>(0x99), 16055, text, sizeof text), 0);
    EXPECT_EQ(lastError, 1812u);
}

}  // namespace

}  // namespace pikel::simulated
