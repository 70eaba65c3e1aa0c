// The default printer, the list of devices, and connections.
#include "machine/spooler/default_printer.h"

#include "support/spooler_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr char kUser[] = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\";
constexpr char kServers[] = "HKLM\\SOFTWARE\\Simulated Network\\Servers\\";

class DefaultPrinterTest : public SpoolerTest {
  protected:
    void StartWithDriver(const std::string& system) {
        Start(system);
        InstallDriver();
    }
    std::string Device() { return Registry().Text(std::string(kUser) + "Windows", "Device"); }
    std::string DeviceOf(const std::string& printer) {
        return Registry().Text(std::string(kUser) + "Devices", printer);
    }
    std::string PrinterPortOf(const std::string& printer) {
        return Registry().Text(std::string(kUser) + "PrinterPorts", printer);
    }
    std::string WinIni(const char* section, const char* key) {
        char text[300] = "";
        GetProfileStringA(section, key, "", text, sizeof text);
        return text;
    }
    DWORD AttributesOf(const std::string& name) {
        return GetPrinter<PRINTER_INFO_5A>(OpenPlainly(name).Get(), 5).Records().at(0).Attributes;
    }
    void MakeNetworkPort(const std::string& name) {
        Registry().CreateKey(PrintKey("Monitors\\Standard TCP/IP Port\\Ports\\" + name));
    }
    void Delete(const std::string& name) { EXPECT_TRUE(DeletePrinter(Open(name).Get())); }
};

// ---- Windows 2000 and later -----------------------------------------------------------------------------------------

TEST_F(DefaultPrinterTest, FirstPrinterBecomesTheDefault) {
    for (const char* system : {"win2000", "xp", "xp-x64", "vista", "other"}) {
        StartWithDriver(system);
        EXPECT_EQ(DefaultPrinterName(), "") << system;
        ASSERT_EQ(AddPrinter({.name = "First"}), 0u);
        ASSERT_EQ(AddPrinter({.name = "Another"}), 0u);
        EXPECT_EQ(DefaultPrinterName(), "First") << system;
        EXPECT_EQ(Device(), "First,winspool,LPT1:") << system;
        EXPECT_EQ(AttributesOf("First"), DWORD{PRINTER_ATTRIBUTE_LOCAL}) << system;
    }
}

TEST_F(DefaultPrinterTest, ReadingFillsTheBuffer) {
    char text[16] = "untouched";
    DWORD size = sizeof text;
    EXPECT_EQ(CODE_OF(GetDefaultPrinterA(text, &size)), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(size, sizeof text);
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    size = 0;
    EXPECT_EQ(CODE_OF(GetDefaultPrinterA(nullptr, &size)), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(size, 7u);
    size = 6;
    EXPECT_EQ(CODE_OF(GetDefaultPrinterA(text, &size)), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(CODE_OF(GetDefaultPrinterA(text, &size)), 0u);
    EXPECT_STREQ(text, "Office");
    EXPECT_EQ(size, 7u);
    EXPECT_EQ(CODE_OF(GetDefaultPrinterA(text, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(DefaultPrinterTest, CanBeChosen) {
    InstallDriver();
    ASSERT_EQ(AddPrinter({.name = "First"}), 0u);
    ASSERT_EQ(AddPrinter({.name = "Another", .port = "FILE:"}), 0u);
    EXPECT_EQ(CODE_OF(SetDefaultPrinterA("ANOTHER")), 0u);
    EXPECT_EQ(DefaultPrinterName(), "Another");
    EXPECT_EQ(Device(), "Another,winspool,FILE:");
    EXPECT_EQ(CODE_OF(SetDefaultPrinterA("Unknown")), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(DefaultPrinterName(), "Another");
    Test().Reopen();
    EXPECT_EQ(DefaultPrinterName(), "Another");
}

TEST_F(DefaultPrinterTest, WithoutANameTheSystemChooses) {
    EXPECT_EQ(CODE_OF(SetDefaultPrinterA(nullptr)), DWORD{ERROR_INVALID_PRINTER_NAME});
    InstallDriver();
    ASSERT_EQ(AddPrinter({.name = "B"}), 0u);
    ASSERT_EQ(AddPrinter({.name = "A"}), 0u);
    EXPECT_EQ(CODE_OF(SetDefaultPrinterA("")), 0u);
    EXPECT_EQ(DefaultPrinterName(), "B");
    Registry().DeleteValue(std::string(kUser) + "Windows", "Device");
    EXPECT_EQ(CODE_OF(SetDefaultPrinterA(nullptr)), 0u);
    EXPECT_EQ(DefaultPrinterName(), "A");
}

TEST_F(DefaultPrinterTest, PassesOnWhenItIsDeleted) {
    InstallDriver();
    for (const char* name : {"B", "A", "C"}) {
        ASSERT_EQ(AddPrinter({.name = name}), 0u);
    }
    Delete("C");
    EXPECT_EQ(DefaultPrinterName(), "B");
    Delete("B");
    EXPECT_EQ(DefaultPrinterName(), "A");
    Delete("A");
    EXPECT_EQ(DefaultPrinterName(), "");
    EXPECT_EQ(Device(), "");
}

TEST_F(DefaultPrinterTest, EveryPrinterIsADevice) {
    InstallDriver();
    MakeNetworkPort("192.168.0.7");
    MakeNetworkPort("192.168.0.8");
    ASSERT_EQ(AddPrinter({.name = "Local"}), 0u);
    ASSERT_EQ(AddPrinter({.name = "Net1", .port = "192.168.0.7"}), 0u);
    ASSERT_EQ(AddPrinter({.name = "Net2", .port = "192.168.0.8"}), 0u);
    EXPECT_EQ(DeviceOf("Local"), "winspool,LPT1:");
    EXPECT_EQ(PrinterPortOf("Local"), "winspool,LPT1:,15,45");
    EXPECT_EQ(DeviceOf("Net1"), "winspool,Ne00:");
    EXPECT_EQ(DeviceOf("Net2"), "winspool,Ne01:");
    EXPECT_EQ(PrinterPortOf("Net2"), "winspool,Ne01:,15,45");
    ASSERT_EQ(CODE_OF(SetDefaultPrinterA("Net2")), 0u);
    EXPECT_EQ(Device(), "Net2,winspool,Ne01:");
    EXPECT_EQ(DeviceOf("Net2"), "winspool,Ne01:");
    Delete("Net1");
    EXPECT_EQ(DeviceOf("Net1"), "");
    EXPECT_EQ(PrinterPortOf("Net1"), "");
    ASSERT_EQ(AddPrinter({.name = "Net3", .port = "192.168.0.7"}), 0u);
    EXPECT_EQ(DeviceOf("Net3"), "winspool,Ne00:");
}

TEST_F(DefaultPrinterTest, DeviceFollowsAnotherPort) {
    InstallDriver();
    MakeNetworkPort("192.168.0.7");
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle printer = Open("Office");
    std::string port = "192.168.0.7";
    PRINTER_INFO_5A info{nullptr, port.data(), 0, 1, 2};
    ASSERT_TRUE(SetPrinterA(printer.Get(), 5, reinterpret_cast<LPBYTE>(&info), 0));
    EXPECT_EQ(DeviceOf("Office"), "winspool,Ne00:");
    EXPECT_EQ(Device(), "Office,winspool,Ne00:");
}

// ---- NT 4 and the 9x family -----------------------------------------------------------------------------------------

TEST_F(DefaultPrinterTest, IsAskedForOnNt4) {
    StartWithDriver("nt4");
    ASSERT_EQ(AddPrinter({.name = "Plain"}), 0u);
    EXPECT_EQ(Device(), "");
    EXPECT_EQ(DeviceOf("Plain"), "winspool,LPT1:");
    ASSERT_EQ(AddPrinter({.name = "Asking", .attributes = PRINTER_ATTRIBUTE_DEFAULT}), 0u);
    EXPECT_EQ(Device(), "Asking,winspool,LPT1:");
    EXPECT_EQ(WinIni("windows", "device"), "Asking,winspool,LPT1:");
    EXPECT_EQ(AttributesOf("Asking"), DWORD{PRINTER_ATTRIBUTE_LOCAL});
    Delete("Asking");
    EXPECT_EQ(Device(), "");
}

TEST_F(DefaultPrinterTest, IsAnAttributeOnThe9xFamily) {
    for (const char* system : {"win95", "win98", "winme"}) {
        StartWithDriver(system);
        ASSERT_EQ(AddPrinter({.name = "First"}), 0u);
        ASSERT_EQ(AddPrinter({.name = "Another", .port = "FILE:"}), 0u);
        EXPECT_EQ(AttributesOf("First"), DWORD{PRINTER_ATTRIBUTE_DEFAULT}) << system;
        EXPECT_EQ(AttributesOf("Another"), 0u) << system;
        EXPECT_EQ(WinIni("windows", "device"), "First,tarvo,LPT1:") << system;
        EXPECT_EQ(WinIni("devices", "Another"), "tarvo,FILE:") << system;
        EXPECT_EQ(WinIni("PrinterPorts", "Another"), "tarvo,FILE:,15,45") << system;

        // The attribute makes a printer the default; leaving it out doesn't take it away.
        const PrinterHandle printer = OpenPlainly("Another");
        PRINTER_INFO_5A info{nullptr, nullptr, PRINTER_ATTRIBUTE_DEFAULT, 1, 2};
        ASSERT_TRUE(SetPrinterA(printer.Get(), 5, reinterpret_cast<LPBYTE>(&info), 0)) << lastError;
        EXPECT_EQ(AttributesOf("First"), 0u) << system;
        EXPECT_EQ(AttributesOf("Another"), DWORD{PRINTER_ATTRIBUTE_DEFAULT}) << system;
        EXPECT_EQ(WinIni("windows", "device"), "Another,tarvo,FILE:") << system;
        info.Attributes = PRINTER_ATTRIBUTE_DIRECT;
        ASSERT_TRUE(SetPrinterA(printer.Get(), 5, reinterpret_cast<LPBYTE>(&info), 0)) << lastError;
        EXPECT_EQ(AttributesOf("Another"), DWORD{PRINTER_ATTRIBUTE_DEFAULT} | PRINTER_ATTRIBUTE_DIRECT) << system;

        std::string name = "Renamed";
        PRINTER_INFO_5A renamed{name.data(), nullptr, 0, 1, 2};
        ASSERT_TRUE(SetPrinterA(printer.Get(), 5, reinterpret_cast<LPBYTE>(&renamed), 0)) << lastError;
        EXPECT_EQ(WinIni("windows", "device"), "Renamed,tarvo,FILE:") << system;
        EXPECT_EQ(WinIni("devices", "Another"), "") << system;

        Delete("Renamed");
        EXPECT_EQ(AttributesOf("First"), DWORD{PRINTER_ATTRIBUTE_DEFAULT}) << system;
        EXPECT_EQ(WinIni("windows", "device"), "First,tarvo,LPT1:") << system;
        EXPECT_EQ(WinIni("devices", "Renamed"), "") << system;
        Delete("First");
        EXPECT_EQ(WinIni("windows", "device"), "") << system;
    }
}

// ---- connections ----------------------------------------------------------------------------------------------------

class ConnectionTest : public DefaultPrinterTest {
  protected:
    DWORD Connect(std::string name) { return CODE_OF(AddPrinterConnectionA(name.data())); }
    DWORD Disconnect(std::string name) { return CODE_OF(DeletePrinterConnectionA(name.data())); }
    /// Puts a shared printer into the network.
    void Share(const std::string& server, const std::string& printer) {
        const std::string key = kServers + server + "\\" + printer;
        Registry().SetText(key, "Driver", "Tarvo Laser");
        Registry().SetText(key, "Comment", "Shared");
    }
};

TEST_F(ConnectionTest, IsAPrinterOfTheUser) {
    Share("server", "Laser");
    EXPECT_EQ(Connect("\\\\server\\Laser"), 0u);
    EXPECT_EQ(Registry().Text("HKCU\\Printers\\Connections\\,,server,Laser", "Server"), "\\\\server");
    Test().Reopen();
    EXPECT_THAT(PrinterNames(), ElementsAre("\\\\server\\Laser"));
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_CONNECTIONS), ElementsAre("\\\\server\\Laser"));
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_LOCAL), IsEmpty());
    const auto answer = EnumPrinters<PRINTER_INFO_2A>(2);
    const PRINTER_INFO_2A& info = answer.Records().at(0);
    EXPECT_STREQ(info.pPrinterName, "\\\\server\\Laser");
    EXPECT_STREQ(info.pServerName, "\\\\server");
    EXPECT_STREQ(info.pShareName, "Laser");
    EXPECT_STREQ(info.pDriverName, "Tarvo Laser");
    EXPECT_STREQ(info.pComment, "Shared");
    EXPECT_EQ(info.Attributes, DWORD{PRINTER_ATTRIBUTE_NETWORK} | PRINTER_ATTRIBUTE_SHARED);
}

TEST_F(ConnectionTest, BecomesTheDefaultWhenItIsTheFirstPrinter) {
    Share("server", "Laser");
    ASSERT_EQ(Connect("\\\\server\\Laser"), 0u);
    EXPECT_EQ(DefaultPrinterName(), "\\\\server\\Laser");
    EXPECT_EQ(DeviceOf("\\\\server\\Laser"), "winspool,Ne00:");
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    ASSERT_EQ(CODE_OF(SetDefaultPrinterA("Office")), 0u);
    EXPECT_EQ(CODE_OF(SetDefaultPrinterA("\\\\SERVER\\laser")), 0u);
    EXPECT_EQ(Disconnect("\\\\server\\LASER"), 0u);
    EXPECT_EQ(DefaultPrinterName(), "Office");
    EXPECT_EQ(Disconnect("\\\\server\\Laser"), DWORD{ERROR_INVALID_PRINTER_NAME});
}

TEST_F(ConnectionTest, TellsWhatIsWrong) {
    Share("server", "Laser");
    EXPECT_EQ(Connect("\\\\server\\Ink"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Connect("\\\\other\\Laser"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Connect("\\\\server"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Connect("\\\\server\\"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Connect("Laser"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Connect("\\\\server\\Laser\\x"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Connect(""), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(AddPrinterConnectionA(nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(DeletePrinterConnectionA(nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(PrinterNames(), IsEmpty());
}

TEST_F(ConnectionTest, UserMayCancel) {
    Share("server", "Laser");
    Registry().SetNumber(std::string(kServers) + "server\\Laser", "ConnectCode", ERROR_CANCELLED);
    EXPECT_EQ(Connect("\\\\server\\Laser"), DWORD{ERROR_CANCELLED});
    EXPECT_THAT(PrinterNames(), IsEmpty());
}

TEST_F(ConnectionTest, SecondTimeChangesNothing) {
    Share("server", "Laser");
    ASSERT_EQ(Connect("\\\\server\\Laser"), 0u);
    const std::string before = Registry().Text();
    EXPECT_EQ(Connect("\\\\SERVER\\Laser"), 0u);
    EXPECT_EQ(Registry().Text(), before);
}

TEST_F(ConnectionTest, NeedsNoAdministrator) {
    Share("server", "Laser");
    SystemDescription description = Machine().System();
    description.administrator = false;
    Machine().SetSystem(description);
    EXPECT_EQ(Connect("\\\\server\\Laser"), 0u);
}

TEST_F(ConnectionTest, OpensForPrintingAlone) {
    Share("server", "Laser");
    EXPECT_EQ(OpenCode("\\\\server\\Laser"), 0u);  // it can be reached, connected or not
    EXPECT_EQ(OpenCode("\\\\server\\Laser", PRINTER_ALL_ACCESS), DWORD{ERROR_ACCESS_DENIED});
    ASSERT_EQ(Connect("\\\\server\\Laser"), 0u);
    const PrinterHandle printer = OpenPlainly("\\\\server\\Laser");
    EXPECT_STREQ(GetPrinter<PRINTER_INFO_4A>(printer.Get(), 4).Records().at(0).pServerName, "\\\\server");
    DWORD needed = 0;
    EXPECT_EQ(GetPrinterDataA(printer.Get(), std::string("V").data(), nullptr, nullptr, 0, &needed),
              DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(ConnectionTest, IsUnknownToThe9xFamily) {
    Start("win98");
    Share("server", "Laser");
    EXPECT_EQ(Connect("\\\\server\\Laser"), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_EQ(OpenCode("\\\\server\\Laser"), DWORD{ERROR_INVALID_PRINTER_NAME});
}

}  // namespace
}  // namespace pikel
