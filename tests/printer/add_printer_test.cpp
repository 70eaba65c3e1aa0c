// Adding a printer or a connection.
#include "printer/add_printer.h"

#include <new>

#include "machine/desktop/desktop.h"
#include "machine/operations.h"
#include "printer/effective_dev_mode.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// What the spooler was given to write. The calls go on to the machine, through the fault shim.
struct Written {
    std::string operation;
    DWORD level = 0;
    HANDLE handle = nullptr;
    std::string printer;
    std::string port;
    std::string dataType;
    DWORD attributes = 0;
    DWORD priority = 0;
    LPDEVMODEA devMode = nullptr;
    DWORD notSelectedTimeout = 0;
    DWORD retryTimeout = 0;
};

class WatchedSpooler {
  public:
    WatchedSpooler() {
        s_below = &m_below;
        s_written.clear();
        s_opened.clear();
        m_replaced.table.AddPrinterA = [](LPSTR server, DWORD level, LPBYTE data) -> HANDLE {
            EXPECT_EQ(server, nullptr);
            EXPECT_EQ(level, 2u);
            const HANDLE handle = s_below->AddPrinterA(server, level, data);
            s_written.push_back(Level2("AddPrinterA", handle, data));
            return handle;
        };
        m_replaced.table.SetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD command) -> BOOL {
            EXPECT_EQ(command, 0u);
            s_written.push_back(level == 2 ? Level2("SetPrinterA", handle, data) : Level5(handle, data));
            return s_below->SetPrinterA(handle, level, data, command);
        };
        m_replaced.table.OpenPrinterA = [](LPSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSA defaults) -> BOOL {
            s_opened.push_back(std::string(name) + (defaults == nullptr ? "" : " with access"));
            return s_below->OpenPrinterA(name, handle, defaults);
        };
    }
    const std::vector<Written>& Writes() const { return s_written; }
    const std::vector<std::string>& Opened() const { return s_opened; }

  private:
    static std::string TextOf(LPCSTR text) { return text == nullptr ? "" : text; }
    static Written Level2(const char* operation, HANDLE handle, LPBYTE data) {
        const auto& info = *reinterpret_cast<const PRINTER_INFO_2A*>(data);
        Written written;
        written.operation = operation;
        written.level = 2;
        written.handle = handle;
        written.printer = TextOf(info.pPrinterName);
        written.port = TextOf(info.pPortName);
        written.dataType = TextOf(info.pDatatype);
        written.attributes = info.Attributes;
        written.priority = info.Priority;
        written.devMode = info.pDevMode;
        return written;
    }
    static Written Level5(HANDLE handle, LPBYTE data) {
        const auto& info = *reinterpret_cast<const PRINTER_INFO_5A*>(data);
        Written written;
        written.operation = "SetPrinterA";
        written.level = 5;
        written.handle = handle;
        written.printer = TextOf(info.pPrinterName);
        written.port = TextOf(info.pPortName);
        written.attributes = info.Attributes;
        written.notSelectedTimeout = info.DeviceNotSelectedTimeout;
        written.retryTimeout = info.TransmissionRetryTimeout;
        return written;
    }

    static inline const PlatformTable* s_below = nullptr;
    static inline std::vector<Written> s_written;
    static inline std::vector<std::string> s_opened;
    const PlatformTable m_below = Platform();
    ReplacedOperations m_replaced;
};

/// Options with profiles of their own.
class Options {
  public:
    explicit Options(std::vector<std::string> profiles = {}) : m_profiles(std::move(profiles)) {
        for (std::string& profile : m_profiles) {
            m_pointers.push_back(profile.data());
        }
        m_options.DeviceNotSelectedTimeout = 15000;
        m_options.TransmissionRetryTimeout = 45000;
        m_options.ColorProfileCount = static_cast<DWORD>(m_pointers.size());
        m_options.ColorProfiles = m_pointers.empty() ? nullptr : m_pointers.data();
    }
    const AddPrinterOptions* Get() const { return &m_options; }

  private:
    std::vector<std::string> m_profiles;
    std::vector<LPSTR> m_pointers;
    AddPrinterOptions m_options{};
};

/// Puts the switch back to its start value.
struct DevModeSwitch {
    explicit DevModeSwitch(DWORD value) { DoSetEffectiveDevMode(value); }
    ~DevModeSwitch() { DoSetEffectiveDevMode(1); }
};

std::string AddRoutineOf(std::string_view system) {
    return Is9xName(system) ? "AddPrinter9x" : IsNt4Name(system) ? "AddPrinterNT" : "AddPrinter2k";
}

class AddPrinterOnEverySystem : public EverySystemTest {
  protected:
    AddPrinterOnEverySystem() { InstallDriver(Test()); }
    bool Is9x() const { return Is9xName(GetParam()); }
    bool IsNt4() const { return IsNt4Name(GetParam()); }
    bool Is2000() const { return !Is9x() && !IsNt4(); }
    bool IsVista() const { return GetParam().starts_with("vista"); }
};
INSTANTIATE_ON_EVERY_SYSTEM(AddPrinterOnEverySystem);

TEST_P(AddPrinterOnEverySystem, PrinterIsThereWithTheSettingsOfItsSystem) {
    PrinterText text("P1");
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    const std::optional<PrinterFacts> printer = PrinterOn(Test(), "P1");
    ASSERT_TRUE(printer);
    EXPECT_EQ(printer->name, "P1");
    EXPECT_EQ(printer->driver, kDriver);
    EXPECT_EQ(printer->port, kLocalPort);
    EXPECT_EQ(printer->dataType, "RAW");
    if (Is9x()) {
        EXPECT_TRUE(printer->attributes & PRINTER_ATTRIBUTE_ENABLE_BIDI);
        EXPECT_EQ(printer->priority, 1u);
    }
    if (Is2000()) {
        EXPECT_TRUE(printer->attributes & PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST);
    }
    EXPECT_THAT(PrintersOn(Test()), ElementsAre("P1"));
}

TEST_P(AddPrinterOnEverySystem, SurvivesARestart) {
    PrinterText text("P1");
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    Test().Reopen();
    EXPECT_TRUE(PrinterOn(Test(), "P1"));
}

TEST_P(AddPrinterOnEverySystem, RecordIsChangedInPlaceByItsRoutine) {
    char dataType[] = "EMF";
    PrinterText text("P1");
    text.Record().pDatatype = dataType;
    text.Record().Attributes = PRINTER_ATTRIBUTE_QUEUED;
    text.Record().Priority = 50;
    // What the spooler thinks of the data type is not the matter here.
    DoAddPrinter(&text.Record(), nullptr);
    const PrinterRecord& record = text.Record();
    if (Is9x()) {
        EXPECT_EQ(record.Attributes, DWORD{PRINTER_ATTRIBUTE_QUEUED} | PRINTER_ATTRIBUTE_ENABLE_BIDI);
        EXPECT_STREQ(record.pDatatype, "RAW");
        EXPECT_EQ(record.Priority, 1u);
    } else {
        EXPECT_EQ(record.Attributes, IsNt4() ? DWORD{PRINTER_ATTRIBUTE_QUEUED} | PRINTER_ATTRIBUTE_DEFAULT
                                             : DWORD{PRINTER_ATTRIBUTE_QUEUED});
        EXPECT_EQ(record.pDatatype, dataType);
        EXPECT_EQ(record.Priority, 50u);
    }
}

TEST_P(AddPrinterOnEverySystem, LogsItsSteps) {
    PrinterText text("P1");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    const std::string routine = AddRoutineOf(GetParam());
    std::vector<std::string> expected = {"DoAddPrinter(P1) Start", "Set Parameter DevMode(PRINTER_INFO_2)!!!",
                                         routine + "() - Start", routine + "() - End(0)"};
    for (int value = 0; Is2000() && value < 3; ++value) {
        expected.push_back("SetPrinterData2k() - Start");
        expected.push_back("SetPrinterData2k() - End(0)");
    }
    expected.push_back("DoAddPrinter End(0)");
    EXPECT_EQ(Test().TakeLog(), expected);
}

TEST_P(AddPrinterOnEverySystem, CallsComeInTheirOrder) {
    PrinterText text("P1");
    Options options;
    Test().TakeCalls();
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), 0u);
    std::vector<std::string> names =
        Test().TakeCallNames({"EnumPrintersA", "AddPrinterA", "PeekMessageA", "OpenPrinterA", "GetPrinterA",
                              "SetPrinterA", "ClosePrinter", "GetPrinterDriverA", "SetPrinterDataExA"});
    if (Is9x()) {
        EXPECT_THAT(names, ElementsAre("AddPrinterA", "PeekMessageA", "ClosePrinter",  //
                                       "OpenPrinterA", "SetPrinterA", "ClosePrinter"));
    } else if (IsNt4()) {
        EXPECT_THAT(names, ElementsAre("EnumPrintersA", "AddPrinterA", "ClosePrinter"));
    } else {
        EXPECT_THAT(names, ElementsAre("AddPrinterA", "OpenPrinterA", "GetPrinterA", "GetPrinterA", "SetPrinterA",
                                       "ClosePrinter", "ClosePrinter",                                            //
                                       "OpenPrinterA", "GetPrinterDriverA", "GetPrinterDriverA", "ClosePrinter",  //
                                       "OpenPrinterA", "SetPrinterDataExA", "ClosePrinter",                       //
                                       "OpenPrinterA", "SetPrinterDataExA", "ClosePrinter",                       //
                                       "OpenPrinterA", "SetPrinterDataExA", "ClosePrinter"));
    }
}

TEST_P(AddPrinterOnEverySystem, PnpIdentityIsRecordedFromWindows2000On) {
    PrinterText text("P1");
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_EQ(Machine().Registry().Text(std::string(kPrintersOn) + "\\P1\\PnPData", "Manufacturer", "-"),
              Is2000() ? "Tarvo" : "-");
}

TEST_P(AddPrinterOnEverySystem, TimeoutsAreSetOnThe9xFamilyAlone) {
    PrinterText text("P1");
    Options options;
    WatchedSpooler spooler;
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), 0u);
    if (!Is9x()) {
        for (const Written& written : spooler.Writes()) {
            EXPECT_EQ(written.level, 2u);
        }
        return;
    }
    ASSERT_EQ(spooler.Writes().size(), 2u);
    const Written& timeouts = spooler.Writes()[1];
    EXPECT_EQ(timeouts.level, 5u);
    EXPECT_EQ(timeouts.printer, "P1");
    EXPECT_EQ(timeouts.port, kLocalPort);
    EXPECT_EQ(timeouts.attributes, text.Record().Attributes);
    EXPECT_EQ(timeouts.notSelectedTimeout, 15000u);
    EXPECT_EQ(timeouts.retryTimeout, 45000u);
    EXPECT_THAT(spooler.Opened(), ElementsAre("P1"));  // plainly
    const std::optional<PrinterFacts> printer = PrinterOn(Test(), "P1");
    ASSERT_TRUE(printer);
    EXPECT_EQ(printer->notSelectedTimeout, 15000u);
    EXPECT_EQ(printer->retryTimeout, 45000u);
}

TEST_P(AddPrinterOnEverySystem, WithoutOptionsNoTimeoutsAreSet) {
    PrinterText text("P1");
    WatchedSpooler spooler;
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    for (const Written& written : spooler.Writes()) {
        EXPECT_EQ(written.level, 2u);
    }
}

TEST_P(AddPrinterOnEverySystem, NameWithTwoBackslashesIsConnectedToOnTheNtFamily) {
    PrinterText text(kShared);
    Test().TakeCalls();
    faults::FailCall("AddPrinterConnectionA", 1, ERROR_ACCESS_DENIED);
    Test().TurnLogOn(1);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u) << "the local add's code";
    EXPECT_THAT(PrintersOn(Test()), ElementsAre(kShared));
    const std::vector<std::string> calls = Test().TakeCallNames({"AddPrinterConnectionA", "AddPrinterA"});
    const std::vector<std::string> log = Test().TakeLog();
    if (Is9x()) {
        EXPECT_THAT(calls, ElementsAre("AddPrinterA"));
    } else {
        EXPECT_THAT(calls, ElementsAre("AddPrinterConnectionA", "AddPrinterA"));
        EXPECT_THAT(log, Contains("PI_AddPrinter() - AddPrinterConnection(5) -> next AddPrinter"));
    }
}

TEST_P(AddPrinterOnEverySystem, SharedPrinterIsConnectedTo) {
    if (Is9x()) {
        return;
    }
    ShareOnTheNetwork(Test());
    PrinterText text(kShared);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_THAT(PrintersOn(Test()), ElementsAre(kShared));
    EXPECT_FALSE(Machine().Registry().KeyExists(std::string(kPrintersOn) + "\\,,server,Laser"));
    EXPECT_TRUE(Machine().Registry().KeyExists("HKCU\\Printers\\Connections\\,,server,Laser"));
}

TEST_P(AddPrinterOnEverySystem, ConnectionThatSucceedsEndsTheWork) {
    if (Is9x()) {
        return;
    }
    ReplacedOperations replaced;
    replaced.table.AddPrinterConnectionA = [](LPSTR name) -> BOOL {
        EXPECT_STREQ(name, kShared);
        return TRUE;
    };
    PrinterText text(kShared);
    DEVMODEA devMode{};
    text.Record().pDevMode = &devMode;
    Options options({"tarvo.icm"});
    Test().TurnLogOn(1);
    Test().TakeCalls();
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(std::string("DoAddPrinter(") + kShared + ") Start",
                                              "Set Parameter DevMode(PRINTER_INFO_2)!!!", "DoAddPrinter End(0)"));
    EXPECT_THAT(Test().TakeCallNames({"AddPrinterA", "OpenPrinterA", "LoadLibraryA", "EnumPrintersA"}), IsEmpty());
    EXPECT_EQ(text.Record().pDevMode, &devMode);
}

TEST_P(AddPrinterOnEverySystem, CancelledConnectionEndsTheWorkOnVistaAlone) {
    if (Is9x()) {
        return;
    }
    PrinterText text(kShared);
    DEVMODEA devMode{};
    text.Record().pDevMode = &devMode;
    Test().TurnLogOn(1);
    Test().TakeCalls();
    faults::FailCall("AddPrinterConnectionA", 1, ERROR_CANCELLED);
    const DWORD code = DoAddPrinter(&text.Record(), nullptr);
    const bool added = !Test().TakeCallNames({"AddPrinterA"}).empty();
    EXPECT_EQ(added, !IsVista());
    EXPECT_EQ(code, IsVista() ? DWORD{ERROR_CANCELLED} : 0u);
    EXPECT_EQ(PrinterOn(Test(), kShared).has_value(), !IsVista());
    EXPECT_EQ(text.Record().pDevMode, &devMode);  // the switch is on: it was never taken out
    if (IsVista()) {
        EXPECT_THAT(
            Test().TakeLog(),
            ElementsAre(std::string("DoAddPrinter(") + kShared + ") Start", "Set Parameter DevMode(PRINTER_INFO_2)!!!",
                        "PI_AddPrinter() - AddPrinterConnection(1223) -> next AddPrinter", "DoAddPrinter End(1223)"));
    }
}

TEST_P(AddPrinterOnEverySystem, DevModeIsTakenOutWhileTheSwitchIsOff) {
    DevModeSwitch off(0);
    PrinterText text("P1");
    DEVMODEA devMode{};
    devMode.dmSize = sizeof devMode;
    text.Record().pDevMode = &devMode;
    Test().TurnLogOn(1);
    {
        WatchedSpooler spooler;
        EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
        ASSERT_FALSE(spooler.Writes().empty());
        EXPECT_EQ(spooler.Writes()[0].operation, "AddPrinterA");
        EXPECT_EQ(spooler.Writes()[0].devMode, nullptr);
    }
    EXPECT_EQ(text.Record().pDevMode, &devMode);
    const std::vector<std::string> log = Test().TakeLog();
    ASSERT_GE(log.size(), 4u);
    EXPECT_EQ(log[0], "DoAddPrinter(P1) Start");
    EXPECT_EQ(log[1], "Set Parameter Default DevMode(PRINTER_INFO_2)!!!");
    EXPECT_EQ(log[log.size() - 2], "Recovery PRINTER_INFO_2 DevMode Address.");
    EXPECT_EQ(log.back(), "DoAddPrinter End(0)");
}

TEST_P(AddPrinterOnEverySystem, DevModeComesBackAfterAFailure) {
    DevModeSwitch off(0);
    PrinterText text("P1");
    DEVMODEA devMode{};
    text.Record().pDevMode = &devMode;
    faults::FailCall("AddPrinterA", 1, ERROR_UNKNOWN_PORT);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), ERROR_UNKNOWN_PORT);
    EXPECT_EQ(text.Record().pDevMode, &devMode);
}

TEST_P(AddPrinterOnEverySystem, CancelledConnectionLeavesTheDevModeOut) {
    if (Is9x()) {
        return;
    }
    DevModeSwitch off(0);
    PrinterText text(kShared);
    DEVMODEA devMode{};
    text.Record().pDevMode = &devMode;
    Test().TurnLogOn(1);
    faults::FailCall("AddPrinterConnectionA", 1, ERROR_CANCELLED);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), IsVista() ? DWORD{ERROR_CANCELLED} : 0u);
    if (IsVista()) {
        EXPECT_EQ(text.Record().pDevMode, nullptr);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(std::string("DoAddPrinter(") + kShared + ") Start",
                                                  "Set Parameter Default DevMode(PRINTER_INFO_2)!!!",
                                                  "PI_AddPrinter() - AddPrinterConnection(1223) -> next AddPrinter",
                                                  "DoAddPrinter End(1223)"));
    } else {
        EXPECT_EQ(text.Record().pDevMode, &devMode);
        EXPECT_THAT(Test().TakeLog(), Contains("Recovery PRINTER_INFO_2 DevMode Address."));
    }
}

TEST_P(AddPrinterOnEverySystem, DevModeComesBackAfterAConnection) {
    if (Is9x()) {
        return;
    }
    DevModeSwitch off(0);
    ReplacedOperations replaced;
    replaced.table.AddPrinterConnectionA = [](LPSTR) -> BOOL { return TRUE; };
    PrinterText text(kShared);
    DEVMODEA devMode{};
    text.Record().pDevMode = &devMode;
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_EQ(text.Record().pDevMode, &devMode);
}

TEST_P(AddPrinterOnEverySystem, DevModeComesBackBeforeAnException) {
    DevModeSwitch off(0);
    PrinterText text("P1");
    DEVMODEA devMode{};
    text.Record().pDevMode = &devMode;
    ReplacedOperations replaced;
    replaced.table.AddPrinterA = [](LPSTR, DWORD, LPBYTE) -> HANDLE { throw std::bad_alloc(); };
    EXPECT_THROW(DoAddPrinter(&text.Record(), nullptr), std::bad_alloc);
    EXPECT_EQ(text.Record().pDevMode, &devMode);
}

TEST_P(AddPrinterOnEverySystem, EveryOtherValueOfTheSwitchKeepsTheDevMode) {
    DWORD number = 0;
    for (DWORD value : {1u, 2u, 0xFFFFFFFFu}) {
        DevModeSwitch on(value);
        PrinterText text("P" + std::to_string(++number));
        DEVMODEA devMode{};
        devMode.dmSize = sizeof devMode;
        text.Record().pDevMode = &devMode;
        WatchedSpooler spooler;
        EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
        ASSERT_FALSE(spooler.Writes().empty());
        EXPECT_EQ(spooler.Writes()[0].devMode, &devMode) << value;
        EXPECT_EQ(text.Record().pDevMode, &devMode) << value;
    }
}

TEST_P(AddPrinterOnEverySystem, FailedAddIsTheResultAndNothingFollows) {
    PrinterText text("P1");
    Options options({"tarvo.icm"});
    Test().TurnLogOn(1);
    Test().TakeCalls();
    faults::FailCall("AddPrinterA", 1, ERROR_UNKNOWN_PRINTER_DRIVER);
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), ERROR_UNKNOWN_PRINTER_DRIVER);
    const std::string routine = AddRoutineOf(GetParam());
    EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "SetPrinterA", "ClosePrinter", "LoadLibraryA", "PeekMessageA"}),
                IsEmpty());
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoAddPrinter(P1) Start", "Set Parameter DevMode(PRINTER_INFO_2)!!!",
                            routine + "() - Start", routine + "() - End(1797)", "DoAddPrinter End(1797)"));
    EXPECT_THAT(PrintersOn(Test()), IsEmpty());
}

TEST_P(AddPrinterOnEverySystem, SecondPrinterOfTheNameIsRefused) {
    PrinterText first("P1");
    EXPECT_EQ(DoAddPrinter(&first.Record(), nullptr), 0u);
    PrinterText second("p1");
    EXPECT_EQ(DoAddPrinter(&second.Record(), nullptr), ERROR_PRINTER_ALREADY_EXISTS);
    EXPECT_THAT(PrintersOn(Test()), ElementsAre("P1"));
}

TEST_P(AddPrinterOnEverySystem, ProfilesAreLinkedWhereTheSystemHasAColourLibrary) {
    PrinterText text("P1");
    Options options({"tarvo.icm", "second.icm"});
    Test().TakeCalls();
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), 0u);
    const std::vector<std::string> names =
        Test().TakeCallNames({"AssociateColorProfileWithDeviceA", "WcsAssociateColorProfileWithDevice"});
    if (GetParam() == "win95" || IsNt4()) {
        EXPECT_THAT(names, IsEmpty());
    } else if (IsVista() || GetParam() == "other") {
        EXPECT_THAT(names, ElementsAre("WcsAssociateColorProfileWithDevice", "WcsAssociateColorProfileWithDevice"));
    } else {
        EXPECT_THAT(names, ElementsAre("AssociateColorProfileWithDeviceA", "AssociateColorProfileWithDeviceA"));
    }
}

TEST_P(AddPrinterOnEverySystem, NullArgumentsAreRefusedInSilence) {
    Test().TurnLogOn(1);
    EXPECT_EQ(DoAddPrinter(nullptr, nullptr), ERROR_INVALID_PARAMETER);
    PrinterRecord nameless{};
    EXPECT_EQ(DoAddPrinter(&nameless, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

// ---- routines ---------------------------------------------------------------------------------------------------

class AddPrinterRoutines : public MachineTest {};

TEST_F(AddPrinterRoutines, RefuseWhatTheyCannotUse) {
    Test().TurnLogOn(1);
    PrinterHandle printer;
    PrinterRecord nameless{};
    EXPECT_EQ(AddPrinter9x(nullptr, nullptr, printer), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(AddPrinterNT(nullptr, nullptr, printer), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(AddPrinterNT(&nameless, nullptr, printer), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(AddPrinter2k(nullptr, nullptr, printer), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(AddPrinter2k(&nameless, nullptr, printer), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(nameless.Attributes, 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("AddPrinter9x() - Start", "AddPrinter9x() - End(87)",                              //
                            "AddPrinterNT() - Start", "AddPrinterNT() - End(87)", "AddPrinterNT() - Start",    //
                            "AddPrinterNT() - End(87)", "AddPrinter2k() - Start", "AddPrinter2k() - End(87)",  //
                            "AddPrinter2k() - Start", "AddPrinter2k() - End(87)"));
}

TEST_F(AddPrinterRoutines, PassTheServerOn) {
    static std::vector<std::string> s_servers;
    s_servers.clear();
    ReplacedOperations replaced;
    replaced.table.AddPrinterA = [](LPSTR server, DWORD, LPBYTE) -> HANDLE {
        s_servers.push_back(server);
        Platform().SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    };
    PrinterText text("P1");
    char server[] = "\\\\server";
    PrinterHandle printer;
    for (auto routine : {AddPrinter9x, AddPrinterNT, AddPrinter2k}) {
        EXPECT_EQ(routine(&text.Record(), server, printer), ERROR_ACCESS_DENIED);
        EXPECT_FALSE(printer);
    }
    EXPECT_THAT(s_servers, ElementsAre("\\\\server", "\\\\server", "\\\\server"));
}

class AddPrinter9xTest : public MachineTest {
  protected:
    AddPrinter9xTest() {
        Start("winme");
        InstallDriver(Test());
        Machine().Desktop().queue.push_back(QueuedMessage(0x400));
        Machine().Desktop().queue.push_back(QueuedMessage(0x401));
    }
};

TEST_F(AddPrinter9xTest, DrainsTheMessageQueue) {
    PrinterText text("P1");
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_THAT(Machine().Desktop().queue, IsEmpty());
    EXPECT_EQ(Machine().Desktop().dispatched.size(), 2u);
}

TEST_F(AddPrinter9xTest, LeavesTheQueueAloneAfterAFailure) {
    PrinterText text("P1");
    faults::FailCall("AddPrinterA", 1, ERROR_UNKNOWN_PORT);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), ERROR_UNKNOWN_PORT);
    EXPECT_EQ(Machine().Desktop().queue.size(), 2u);
}

TEST_F(AddPrinter9xTest, FailureWithoutACodeCountsAsNone) {
    PrinterText text("P1");
    PrinterHandle printer;
    simulated::lastError = 0;
    faults::FailCall("AddPrinterA", 1, 0);
    EXPECT_EQ(AddPrinter9x(&text.Record(), nullptr, printer), 0u);
    EXPECT_FALSE(printer);
    EXPECT_THAT(Machine().Desktop().queue, IsEmpty());
}

TEST_F(AddPrinter9xTest, FailedTimeoutsAreTheResultAndThePrinterStays) {
    struct Case {
        const char* call;
        DWORD code;
    };
    DWORD number = 0;
    for (const Case& oneCase : {Case{"OpenPrinterA", ERROR_ACCESS_DENIED}, Case{"SetPrinterA", ERROR_INVALID_LEVEL}}) {
        const std::string name = "P" + std::to_string(++number);
        PrinterText text(name);
        Options options;
        faults::Reset();
        faults::FailCall(oneCase.call, 1, oneCase.code);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), oneCase.code);
        EXPECT_EQ(faults::LastFailed(), oneCase.call);
        EXPECT_THAT(Test().TakeLog(), Contains("DoAddPrinter End(" + std::to_string(oneCase.code) + ")"));
        EXPECT_TRUE(PrinterOn(Test(), name));
    }
}

class AddPrinterNTTest : public MachineTest {
  protected:
    AddPrinterNTTest() {
        Start("nt4");
        InstallDriver(Test());
    }
};

TEST_F(AddPrinterNTTest, FirstPrinterOfTheMachineBecomesTheDefault) {
    PrinterText first("P1");
    EXPECT_EQ(DoAddPrinter(&first.Record(), nullptr), 0u);
    EXPECT_TRUE(first.Record().Attributes & PRINTER_ATTRIBUTE_DEFAULT);
    PrinterText second("P2");
    EXPECT_EQ(DoAddPrinter(&second.Record(), nullptr), 0u);
    EXPECT_FALSE(second.Record().Attributes & PRINTER_ATTRIBUTE_DEFAULT);
}

TEST_F(AddPrinterNTTest, FailedEnumerationCountsAsNoPrinters) {
    AddPrinterTo(Test(), "P1");
    DWORD number = 1;
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("EnumPrintersA", nth, RPC_S_CALL_FAILED);
        PrinterText text("P" + std::to_string(++number));
        WatchedSpooler spooler;
        EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
        EXPECT_TRUE(text.Record().Attributes & PRINTER_ATTRIBUTE_DEFAULT) << nth;
        EXPECT_TRUE(spooler.Writes()[0].attributes & PRINTER_ATTRIBUTE_DEFAULT) << nth;
    }
    faults::Reset();
    Machine().Heap().FailAllocation(0, false);
    PrinterText text("P9");
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_TRUE(text.Record().Attributes & PRINTER_ATTRIBUTE_DEFAULT);
}

TEST_F(AddPrinterNTTest, AsksForLocalPrintersAndConnections) {
    Test().TakeCalls();
    PrinterText text("P1");
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_THAT(Test().TakeCalls(), Contains(::testing::StartsWith("EnumPrintersA(0x6, null, 0x2, null, 0x0, &, &)")));
}

class AddPrinter2kTest : public MachineTest {
  protected:
    AddPrinter2kTest() { InstallDriver(Test()); }
};

TEST_F(AddPrinter2kTest, WritesThroughTheHandleThatAddingGave) {
    PrinterText text("P1");
    text.Record().Attributes = PRINTER_ATTRIBUTE_QUEUED;
    WatchedSpooler spooler;
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    ASSERT_EQ(spooler.Writes().size(), 2u);
    const Written& added = spooler.Writes()[0];
    const Written& set = spooler.Writes()[1];
    EXPECT_EQ(set.operation, "SetPrinterA");
    EXPECT_EQ(set.level, 2u);
    EXPECT_NE(added.handle, nullptr);
    EXPECT_EQ(set.handle, added.handle);
    EXPECT_EQ(set.printer, "P1");
    EXPECT_TRUE(set.attributes & PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST);
    EXPECT_TRUE(set.attributes & PRINTER_ATTRIBUTE_QUEUED);
    EXPECT_FALSE(added.attributes & PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST);
    EXPECT_EQ(text.Record().Attributes, DWORD{PRINTER_ATTRIBUTE_QUEUED});
    EXPECT_EQ(spooler.Opened()[0], "P1");  // plainly
}

TEST_F(AddPrinter2kTest, SecondStepMayFail) {
    struct Case {
        const char* call;
        std::size_t nth;
    };
    DWORD number = 0;
    for (const Case& oneCase :
         {Case{"OpenPrinterA", 1}, Case{"GetPrinterA", 1}, Case{"GetPrinterA", 2}, Case{"SetPrinterA", 1}}) {
        const std::string name = "P" + std::to_string(++number);
        PrinterText text(name);
        faults::Reset();
        faults::FailCall(oneCase.call, oneCase.nth, ERROR_ACCESS_DENIED);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u) << oneCase.call;
        EXPECT_EQ(faults::LastFailed(), oneCase.call);
        EXPECT_THAT(Test().TakeLog(), Contains("AddPrinter2k() - End(0)"));
        const std::optional<PrinterFacts> printer = PrinterOn(Test(), name);
        ASSERT_TRUE(printer);
        EXPECT_FALSE(printer->attributes & PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST) << oneCase.call;
        EXPECT_EQ(Machine().Handles().OpenCount(), 0u) << oneCase.call;
    }
    faults::Reset();
    Machine().Heap().FailAllocation(0, false);
    PrinterText text("P9");
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
}

TEST_F(AddPrinter2kTest, FailedPnpIdentityIsTheResultAndThePrinterStays) {
    PrinterText text("P1");
    faults::FailCall("GetPrinterDriverA", 1, RPC_S_SERVER_UNAVAILABLE);
    Test().TurnLogOn(1);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), RPC_S_SERVER_UNAVAILABLE);
    EXPECT_THAT(Test().TakeLog(), Contains("DoAddPrinter End(1722)"));
    EXPECT_TRUE(PrinterOn(Test(), "P1"));
}

TEST_F(AddPrinter2kTest, FailedProfilesAreTheResultAndThePrinterStays) {
    PrinterText text("P1");
    Options options({"tarvo.icm"});
    Machine().Modules().Remove("mscms.dll");
    Test().TakeCalls();
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), ERROR_MOD_NOT_FOUND);
    EXPECT_TRUE(PrinterOn(Test(), "P1"));
    // The steps behind the failed one are left out.
    EXPECT_THAT(Test().TakeCallNames({"GetPrinterDriverA"}), IsEmpty());
}

TEST_F(AddPrinter2kTest, ProfileThatCannotBeLinkedIsNoFailure) {
    PrinterText text("P1");
    Options options({"tarvo.icm"});
    faults::FailCall("AssociateColorProfileWithDeviceA", 1, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), 0u);
    EXPECT_EQ(faults::LastFailed(), "AssociateColorProfileWithDeviceA");
}

TEST_F(AddPrinter2kTest, ConnectionThatFailsIsAddedLocallyUnderItsName) {
    PrinterText text(kShared);
    faults::FailCall("AddPrinterConnectionA", 1, ERROR_INVALID_PRINTER_NAME);
    WatchedSpooler spooler;
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    ASSERT_FALSE(spooler.Writes().empty());
    EXPECT_EQ(spooler.Writes()[0].operation, "AddPrinterA");
    EXPECT_EQ(spooler.Writes()[0].printer, kShared);
    EXPECT_TRUE(PrinterOn(Test(), kShared));
}

TEST_F(AddPrinter2kTest, ConnectionThatFailsWithoutACodeIsAddedLocallyToo) {
    PrinterText text(kShared);
    simulated::lastError = 0;
    faults::FailCall("AddPrinterConnectionA", 1, 0);
    EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), 0u);
    EXPECT_TRUE(PrinterOn(Test(), kShared));
}

TEST(AddPrinterWithoutRoute, IsNotServed) {
    TestMachine test(SystemWithoutRoute());
    for (const char* name : {"P1", kShared}) {
        PrinterText text(name);
        EXPECT_EQ(DoAddPrinter(&text.Record(), nullptr), ERROR_CALL_NOT_IMPLEMENTED);
    }
}

TEST(AddPrinterOfTheLatest9x, GoesByTheFamilyForItsTimeouts) {
    // A version of the family without a row of its own takes the routes of the last row.
    simulated::SystemDescription system = *simulated::FindSystem("winme");
    system.minor = 91;
    TestMachine test(system);
    ReplacedOperations replaced;
    static DWORD s_level;
    s_level = 0;
    const HANDLE kHandle = reinterpret_cast<HANDLE>(static_cast<uintptr_t>(0x44));
    static HANDLE s_handle = kHandle;
    replaced.table.AddPrinterA = [](LPSTR, DWORD, LPBYTE) -> HANDLE { return s_handle; };
    replaced.table.OpenPrinterA = [](LPSTR, LPHANDLE handle, LPPRINTER_DEFAULTSA) -> BOOL {
        *handle = s_handle;
        return TRUE;
    };
    replaced.table.ClosePrinter = [](HANDLE) -> BOOL { return TRUE; };
    replaced.table.GetPrinterA = [](HANDLE, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    replaced.table.GetPrinterDriverA = [](HANDLE, LPSTR, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    replaced.table.SetPrinterA = [](HANDLE, DWORD level, LPBYTE, DWORD) -> BOOL {
        s_level = level;
        return TRUE;
    };
    PrinterText text("P1");
    Options options;
    EXPECT_EQ(DoAddPrinter(&text.Record(), options.Get()), 0u);
    EXPECT_EQ(s_level, 5u);
}

}  // namespace
}  // namespace pikel
