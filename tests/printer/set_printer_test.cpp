// Writing a printer's record back.
#include "printer/set_printer.h"

#include <cstring>
#include <iterator>

#include "machine/operations.h"
#include "machine/network/shares.h"
#include "printer/effective_dev_mode.h"
#include "printer/get_printer.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What the spooler was given to write, level by level, and as whom the printer was opened.
struct Written {
    DWORD level = 0;
    DWORD command = 0;
    std::string printer;
    DWORD attributes = 0;
    DWORD status = 0;
    LPDEVMODEA devMode = nullptr;
    DWORD number = 0;  ///< dwAction at level 7, the first timeout at level 5
    bool hasText = false;
};

class WatchedWrites {
  public:
    WatchedWrites() {
        s_below = m_replaced.table;
        s_written.clear();
        s_failing = {};
        m_replaced.table.SetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD command) -> BOOL {
            s_written.push_back(Read(level, data, command));
            for (const auto& [failing, code] : s_failing) {
                if (failing == level) {
                    return simulated::Fail(code, FALSE);
                }
            }
            return s_below.SetPrinterA(handle, level, data, command);
        };
    }
    static void Fail(DWORD level, DWORD code) { s_failing = {{level, code}}; }
    const std::vector<Written>& Writes() const { return s_written; }
    std::vector<DWORD> Levels() const {
        std::vector<DWORD> levels;
        for (const Written& written : s_written) {
            levels.push_back(written.level);
        }
        return levels;
    }
    PlatformTable& Table() { return m_replaced.table; }

  private:
    static Written Read(DWORD level, LPBYTE data, DWORD command) {
        Written written;
        written.level = level;
        written.command = command;
        if (level == 2) {
            const auto& info = *reinterpret_cast<const PRINTER_INFO_2A*>(data);
            written.printer = info.pPrinterName != nullptr ? info.pPrinterName : "";
            written.attributes = info.Attributes;
            written.status = info.Status;
            written.devMode = info.pDevMode;
            EXPECT_EQ(info.pServerName, nullptr);
            EXPECT_EQ(info.pParameters, nullptr);
            EXPECT_EQ(info.pSecurityDescriptor, nullptr);
            EXPECT_EQ(info.DefaultPriority, 0u);
            EXPECT_EQ(info.cJobs, 0u);
            EXPECT_EQ(info.AveragePPM, 0u);
        } else if (level == 5) {
            const auto& info = *reinterpret_cast<const PRINTER_INFO_5A*>(data);
            written.printer = info.pPrinterName != nullptr ? info.pPrinterName : "";
            written.attributes = info.Attributes;
            written.number = info.DeviceNotSelectedTimeout;
        } else if (level == 7) {
            const auto& info = *reinterpret_cast<const PRINTER_INFO_7A*>(data);
            written.number = info.dwAction;
            written.hasText = info.pszObjectGUID != nullptr;
        } else if (level == 8) {
            written.devMode = reinterpret_cast<const PRINTER_INFO_8A*>(data)->pDevMode;
        }
        return written;
    }
    static inline PlatformTable s_below;
    static inline std::vector<Written> s_written;
    static inline std::vector<std::pair<DWORD, DWORD>> s_failing;
    ReplacedOperations m_replaced;
};

/// Puts the switch back to its start value.
struct DevModeSwitch {
    explicit DevModeSwitch(DWORD value) { DoSetEffectiveDevMode(value); }
    ~DevModeSwitch() { DoSetEffectiveDevMode(1); }
};

constexpr char kLevel2On[] = "Set Parameter DevMode(PRINTER_INFO_2)!!!";
constexpr char kLevel2Off[] = "Set Parameter Default DevMode(PRINTER_INFO_2)!!!";

class SetPrinterOnEverySystem : public EverySystemTest {
  protected:
    SetPrinterOnEverySystem() : m_text("P1") {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        m_mode.dmSize = sizeof m_mode;
        Test().TakeCalls();
    }
    bool Is9x() const { return Is9xName(GetParam()); }
    bool IsNt4() const { return IsNt4Name(GetParam()); }
    PrinterRecord& Record() { return m_text.Record(); }
    std::string ValueOn(std::string_view name) {
        const std::string key = std::string(kPrintersOn) + "\\P1\\PrinterDriverData";
        const simulated::RegistryValue* value = Machine().Registry().Find(key, name);
        return value == nullptr ? "-" : value->data;
    }

    PrinterText m_text;
    DEVMODEA m_mode{};
};
INSTANTIATE_ON_EVERY_SYSTEM(SetPrinterOnEverySystem);

TEST_P(SetPrinterOnEverySystem, SettingsAreWritten) {
    char comment[] = "on the second floor";
    char location[] = "room 2";
    char share[] = "LASER";
    char separator[] = "C:\\separator.txt";
    std::string dataType = Is9x() ? "EMF" : "TEXT";
    constexpr DWORD kOffline = 0x80;
    WriteFileOn(Machine(), separator, "page");
    Record().pComment = comment;
    Record().pLocation = location;
    Record().pShareName = share;
    Record().pSepFile = separator;
    Record().pDatatype = dataType.data();
    Record().Priority = 7;
    Record().StartTime = 60;
    Record().UntilTime = 120;
    Record().Status = kOffline;
    Record().Attributes = PRINTER_ATTRIBUTE_LOCAL | PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST;
    WatchedWrites watched;
    Test().TurnLogOn(1);
    EXPECT_EQ(DoSetPrinter("p1", &Record()), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetPrinter(p1) Start", kLevel2On, "DoSetPrinter End(0)"));
    ASSERT_THAT(watched.Levels(), ElementsAre(2));
    // The local bit is the spooler's own and is never written.
    EXPECT_EQ(watched.Writes()[0].attributes, DWORD{PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST});
    EXPECT_EQ(watched.Writes()[0].status, kOffline);
    const std::string key = std::string(kPrintersOn) + "\\P1";
    EXPECT_EQ(Machine().Registry().Text(key, "Description"), comment);
    EXPECT_EQ(Machine().Registry().Text(key, "Location"), location);
    EXPECT_EQ(Machine().Registry().Text(key, "Share Name"), share);
    EXPECT_EQ(Machine().Registry().Text(key, "Separator File"), separator);
    EXPECT_EQ(Machine().Registry().Text(key, "Datatype"), dataType);
    EXPECT_EQ(Machine().Registry().Number(key, "StartTime"), 60u);
    EXPECT_EQ(Machine().Registry().Number(key, "UntilTime"), 120u);
    EXPECT_EQ(PrinterOn(Test(), "P1")->priority, 7u);
    EXPECT_EQ(Record().Attributes, DWORD{PRINTER_ATTRIBUTE_LOCAL | PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST});
}

TEST_P(SetPrinterOnEverySystem, PrinterIsTheOneOfTheArgument) {
    PrinterText other("P2");
    EXPECT_EQ(DoSetPrinter("P1", &other.Record()), 0u);
    EXPECT_TRUE(PrinterOn(Test(), "P2"));
    EXPECT_FALSE(PrinterOn(Test(), "P1"));
}

TEST_P(SetPrinterOnEverySystem, CodeOfTheOpenIsTheOnlyOne) {
    for (DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        faults::Reset();
        faults::FailCall("OpenPrinterA", 1, code);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoSetPrinter("P1", &Record()), code);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre("DoSetPrinter(P1) Start", "DoSetPrinter End(" + std::to_string(code) + ")"));
    }
    EXPECT_EQ(DoSetPrinter("Nobody", &Record()), ERROR_INVALID_PRINTER_NAME);
}

TEST_P(SetPrinterOnEverySystem, RefusedSettingsAreLoggedOnly) {
    std::string data = "x";
    PrinterRegistryEntry entry{
        nullptr, const_cast<LPSTR>("udpWidth"), reinterpret_cast<LPBYTE>(data.data()), REG_BINARY, 1, 0};
    Record().RegistryEntryCount = 1;
    Record().RegistryEntries = &entry;
    for (DWORD code : {5u, 122u, 203u, 251u, 1008u}) {
        WatchedWrites watched;
        WatchedWrites::Fail(2, code);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetPrinter(P1) Start", kLevel2On,
                                                  "SetPrinter Error:" + std::to_string(code), "DoSetPrinter End(0)"));
        EXPECT_EQ(ValueOn("udpWidth"), "-") << "values are written behind good settings only";
    }
}

TEST_P(SetPrinterOnEverySystem, ValuesAreWrittenBehindTheClosedPrinter) {
    std::string data = "abcd";
    PrinterRegistryEntry entry{
        nullptr, const_cast<LPSTR>("udpWidth"), reinterpret_cast<LPBYTE>(data.data()), REG_BINARY, 4, 0};
    Record().RegistryEntryCount = 1;
    Record().RegistryEntries = &entry;
    EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
    EXPECT_EQ(ValueOn("udpWidth"), "abcd");
    std::vector<std::string> calls = {"OpenPrinterA", "SetPrinterA", "ClosePrinter"};
    if (Is9x()) {
        calls.push_back("RegSetValueExA");
    } else {
        calls.insert(calls.end(), {"OpenPrinterA", IsNt4() ? "SetPrinterDataA" : "SetPrinterDataExA", "ClosePrinter"});
    }
    EXPECT_EQ(Test().TakeCallNames({"OpenPrinterA", "SetPrinterA", "ClosePrinter", "RegSetValueExA", "SetPrinterDataA",
                                    "SetPrinterDataExA"}),
              calls);
}

TEST_P(SetPrinterOnEverySystem, FailedValueIsLoggedAndEndsTheWork) {
    PrinterSecurityRecord security{};
    PrinterShareRecord share{};
    std::string data = "x";
    PrinterRegistryEntry entry{
        nullptr, const_cast<LPSTR>("udpWidth"), reinterpret_cast<LPBYTE>(data.data()), REG_BINARY, 1, 9};
    security.DevMode = &m_mode;
    Record().RegistryEntryCount = 1;
    Record().RegistryEntries = &entry;
    Record().SecurityRecord = &security;
    Record().ShareRecord = &share;
    WatchedWrites watched;
    Test().TurnLogOn(1);
    EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
    const std::vector<std::string> log = Test().TakeLog();
    ASSERT_EQ(log.size(), 6u);
    EXPECT_EQ(log[4], "SetRegistryData Error:2");
    EXPECT_EQ(log[5], "DoSetPrinter End(0)");
    EXPECT_THAT(watched.Levels(), ElementsAre(2));
}

TEST_P(SetPrinterOnEverySystem, PausedPrinterStaysPaused) {
    Record().Status = PRINTER_STATUS_PAUSED;
    WatchedWrites watched;
    EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
    ASSERT_THAT(watched.Levels(), ElementsAre(2, 0));
    EXPECT_EQ(watched.Writes()[1].command, DWORD{PRINTER_CONTROL_PAUSE});
    EXPECT_EQ(Machine().Registry().Number(std::string(kPrintersOn) + "\\P1", "Status"), DWORD{PRINTER_STATUS_PAUSED});
}

TEST_P(SetPrinterOnEverySystem, FailedPauseIsLoggedOnly) {
    Record().Status = PRINTER_STATUS_PAUSED;
    WatchedWrites watched;
    WatchedWrites::Fail(0, 5);
    Test().TurnLogOn(1);
    EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoSetPrinter(P1) Start", kLevel2On, "ControlPrinter Error:5", "DoSetPrinter End(0)"));
}

TEST_P(SetPrinterOnEverySystem, DevModeIsWrittenAtTheSwitchesValue1Alone) {
    Record().pDevMode = &m_mode;
    for (DWORD value : {0u, 1u, 2u, 0xFFFFFFFFu}) {
        DevModeSwitch devMode(value);
        WatchedWrites watched;
        Test().TurnLogOn(1);
        EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
        ASSERT_FALSE(watched.Writes().empty());
        EXPECT_EQ(watched.Writes()[0].devMode, value == 1 ? &m_mode : nullptr) << value;
        EXPECT_THAT(Test().TakeLog(), Contains(value == 1 ? kLevel2On : kLevel2Off));
        EXPECT_EQ(Record().pDevMode, &m_mode);
    }
}

TEST_P(SetPrinterOnEverySystem, ConnectionIsLeftAlone) {
    PrinterText connection("\\\\server\\Laser");
    char server[] = "\\\\server";
    connection.Record().pServerName = server;
    Test().TurnLogOn(1);
    // The test is on the record: the printer named need not even be there.
    EXPECT_EQ(DoSetPrinter("Nobody", &connection.Record()), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetPrinter(Nobody) Start", "DoSetPrinter End(0)"));
    EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "SetPrinterA"}), IsEmpty());
    char empty[] = "";
    connection.Record().pServerName = empty;
    EXPECT_EQ(DoSetPrinter("Nobody", &connection.Record()), ERROR_INVALID_PRINTER_NAME);
}

TEST_P(SetPrinterOnEverySystem, NullArgumentsAreRefused) {
    Test().TurnLogOn(1);
    EXPECT_EQ(DoSetPrinter(nullptr, &Record()), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoSetPrinter("P1", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ApplyPrinterExtras("P1", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_P(SetPrinterOnEverySystem, RecordThatWasReadWritesBackUnchanged) {
    Machine().Registry().Set(std::string(kPrintersOn) + "\\P1\\PrinterDriverData", "udpWidth", REG_BINARY, "abcd");
    PrinterRecord* record = nullptr;
    ASSERT_EQ(DoGetPrinter("P1", &record), 0u);
    const auto registry = [&] {
        Machine().Commit();
        return Machine().Registry().Text();
    };
    const std::string before = registry();
    EXPECT_EQ(DoSetPrinter("P1", record), 0u);
    EXPECT_EQ(registry(), before);
    simulated::HeapFree(simulated::GetProcessHeap(), 0, record);
}

// ---- what belongs to a printer besides ------------------------------------------------------------------------------

TEST_P(SetPrinterOnEverySystem, WithoutARecordOfItsFamilyNothingIsDone) {
    PrinterShareRecord share{};
    PrinterSecurityRecord security{};
    Test().TakeCalls();
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    if (!Is9x()) {
        Record().ShareRecord = &share;  // of the other family
        EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    }
    Record().ShareRecord = nullptr;
    Record().SecurityRecord = &security;  // with nothing in it
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "SetPrinterA", "LoadLibraryA"}), IsEmpty());
}

TEST_P(SetPrinterOnEverySystem, TimeoutsAreWrittenOnThe9xFamily) {
    PrinterShareRecord share{};
    share.DeviceNotSelectedTimeout = 1000;
    share.TransmissionRetryTimeout = 2000;
    Record().ShareRecord = &share;
    Record().Attributes = PRINTER_ATTRIBUTE_LOCAL | PRINTER_ATTRIBUTE_QUEUED;
    WatchedWrites watched;
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    if (!Is9x()) {
        EXPECT_THAT(watched.Levels(), IsEmpty());
        return;
    }
    ASSERT_THAT(watched.Levels(), ElementsAre(5));
    EXPECT_EQ(watched.Writes()[0].printer, "P1");
    // Other than at level 2 the record's bits go out as they are.
    EXPECT_EQ(watched.Writes()[0].attributes, Record().Attributes);
    EXPECT_EQ(PrinterOn(Test(), "P1")->notSelectedTimeout, 1000u);
    EXPECT_EQ(PrinterOn(Test(), "P1")->retryTimeout, 2000u);
    WatchedWrites::Fail(5, 1008);
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 1008u);
}

class SetPrinter : public MachineTest {
  protected:
    void StartWith(std::string_view system) {
        Start(system);
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        m_text = std::make_unique<PrinterText>("P1");
        m_mode.dmSize = sizeof m_mode;
        m_security = {};
        m_share = {};
        Test().TakeCalls();
    }
    PrinterRecord& Record() { return m_text->Record(); }

    std::unique_ptr<PrinterText> m_text;
    PrinterSecurityRecord m_security{};
    PrinterShareRecord m_share{};
    DEVMODEA m_mode{};
};

TEST_F(SetPrinter, ShareIsAddedAndThenSet) {
    StartWith("win98");
    char shareName[] = "LASER";
    std::strcpy(m_share.NetName, "LASER");
    std::strcpy(m_share.Path, "P1");
    std::strcpy(m_share.ReadWritePassword, "secret");
    m_share.ShareType = 1;
    Record().pShareName = shareName;
    Record().ShareRecord = &m_share;
    Test().TurnLogOn(1);
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("AddSharePrinter9x() - Start", "AddSharePrinter9x() - End(0)",
                                              "SetSharePrinter9x() - Start", "SetSharePrinter9x() - End(0)"));
    EXPECT_THAT(Test().TakeCallNames({"NetShareAdd", "NetShareSetInfo", "SetPrinterA"}),
                ElementsAre("NetShareAdd", "NetShareSetInfo", "SetPrinterA"));
}

TEST_F(SetPrinter, PasswordsComeByTheChangeUnderThePrintersShareName) {
    StartWith("win98");
    simulated::Shares shares(Machine());
    ASSERT_EQ(shares.Add({"LASER", 1, 0, "", "P1", "", ""}), 0u);
    char shareName[] = "LASER";
    std::strcpy(m_share.NetName, "OTHER");
    std::strcpy(m_share.Path, "P1");
    std::strcpy(m_share.ReadWritePassword, "secret");
    m_share.ShareType = 1;
    Record().pShareName = shareName;
    Record().ShareRecord = &m_share;
    EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
    // The share that was added bears the share record's name, and that record's passwords are not in it.
    ASSERT_TRUE(shares.Find("OTHER"));
    EXPECT_EQ(shares.Find("OTHER")->readWritePassword, "");
    EXPECT_EQ(shares.Find("LASER")->readWritePassword, "secret");
}

TEST_F(SetPrinter, FailedShareEndsTheRest) {
    StartWith("win98");
    char shareName[] = "LASER";
    std::strcpy(m_share.NetName, "LASER");
    std::strcpy(m_share.Path, "P1");
    m_share.ShareType = 1;
    Record().pShareName = shareName;
    Record().ShareRecord = &m_share;
    WatchedWrites watched;
    Test().TurnLogOn(1);
    faults::FailCall("NetShareAdd", 1, 2118);
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 2118u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("AddSharePrinter9x() - Start", "AddSharePrinter9x() - End(2118)",
                                              "AddSharePrinter9x Error:2118"));
    faults::Reset();
    faults::FailCall("NetShareSetInfo", 1, 2310);
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 2310u);
    EXPECT_THAT(Test().TakeLog(), Contains("SetSharePrinter9x Error:2310"));
    EXPECT_THAT(watched.Levels(), IsEmpty());
}

TEST_F(SetPrinter, DescriptorIsWrittenAndItsFailureGoesNoFurther) {
    StartWith("xp");
    std::string text = "O:BAG:SYD:(A;;0xf000c;;;BA)";
    m_security.SecurityDescriptor = text.data();
    m_security.SecurityDescriptorLength = static_cast<DWORD>(text.size() + 1);
    m_security.DevMode = &m_mode;
    Record().SecurityRecord = &m_security;
    WatchedWrites watched;
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    EXPECT_THAT(watched.Levels(), ElementsAre(3, 8));
    WatchedWrites::Fail(3, 1008);
    Test().TurnLogOn(1);
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 1008u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("SetStringSD() - Start", "SetStringSD() - End(1008)",
                                              "SetStringSD Error:1008", "Set Parameter DevMode(PRINTER_INFO_8)!!!"));
    EXPECT_THAT(watched.Levels(), ElementsAre(3, 8, 3, 8));
}

TEST_F(SetPrinter, RefusedSettingsDoNotKeepTheRestBack) {
    StartWith("xp");
    m_security.DevMode = &m_mode;
    Record().SecurityRecord = &m_security;
    for (DWORD level : {2u, 0u}) {
        Record().Status = level == 0 ? DWORD{PRINTER_STATUS_PAUSED} : 0;
        WatchedWrites watched;
        WatchedWrites::Fail(level, ERROR_ACCESS_DENIED);
        EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
        EXPECT_EQ(watched.Levels(), level == 2 ? std::vector<DWORD>({2, 8}) : std::vector<DWORD>({2, 0, 8}));
    }
}

TEST_F(SetPrinter, PublishingIsWrittenWhenItDiffers) {
    StartWith("xp");
    Record().SecurityRecord = &m_security;
    struct Case {
        DWORD now;
        DWORD wanted;
        bool written;
    };
    static DWORD s_now = 0;
    for (const Case& oneCase :
         {Case{DSPRINT_UNPUBLISH, DSPRINT_PUBLISH, true}, Case{DSPRINT_PUBLISH, DSPRINT_PUBLISH, false},
          Case{DSPRINT_PUBLISH, 0, false}, Case{DSPRINT_PUBLISH, DSPRINT_PENDING, false},
          Case{DSPRINT_PUBLISH, DSPRINT_PENDING | DSPRINT_PUBLISH, true}}) {
        s_now = oneCase.now;
        m_security.PublishAction = oneCase.wanted;
        WatchedWrites watched;
        watched.Table().GetPrinterA = [](HANDLE, DWORD level, LPBYTE data, DWORD size, LPDWORD needed) -> BOOL {
            EXPECT_EQ(level, 7u);
            *needed = sizeof(PRINTER_INFO_7A);
            if (size < *needed) {
                return simulated::Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
            }
            PRINTER_INFO_7A info{nullptr, s_now};
            std::memcpy(data, &info, sizeof info);
            return TRUE;
        };
        WatchedWrites::Fail(7, 0);
        ApplyPrinterExtras("P1", &Record());
        EXPECT_EQ(watched.Writes().size(), oneCase.written ? 1u : 0u) << oneCase.wanted;
        if (oneCase.written) {
            EXPECT_EQ(watched.Writes()[0].number, oneCase.wanted);
            EXPECT_FALSE(watched.Writes()[0].hasText);
        }
    }
}

TEST_F(SetPrinter, PublishingThatWasWrittenIsReadBack) {
    StartWith("xp");
    Record().SecurityRecord = &m_security;
    for (DWORD action : {DWORD{DSPRINT_PUBLISH}, DWORD{DSPRINT_UNPUBLISH}}) {
        m_security.PublishAction = action;
        EXPECT_EQ(DoSetPrinter("P1", &Record()), 0u);
        PrinterRecord* read = nullptr;
        ASSERT_EQ(DoGetPrinter("P1", &read), 0u);
        // A printer that isn't published has no object, and without one no action is told.
        EXPECT_EQ(read->SecurityRecord->PublishAction, action == DSPRINT_PUBLISH ? action : 0u);
        simulated::HeapFree(simulated::GetProcessHeap(), 0, read);
    }
}

TEST_F(SetPrinter, EachFailedStepOfTheRestIsItsResult) {
    StartWith("xp");
    m_security.PublishAction = DSPRINT_PUBLISH;
    m_security.DevMode = &m_mode;
    Record().SecurityRecord = &m_security;
    // Opened for the publishing and for the DEVMODE.
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("OpenPrinterA", nth, ERROR_ACCESS_DENIED);
        EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), ERROR_ACCESS_DENIED) << nth;
    }
    faults::Reset();
    WatchedWrites watched;
    WatchedWrites::Fail(8, 1008);
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 1008u);
}

TEST_F(SetPrinter, PrintersOwnDevModeGoesByTheSwitchToo) {
    StartWith("vista");
    m_security.DevMode = &m_mode;
    Record().SecurityRecord = &m_security;
    for (DWORD value : {0u, 1u, 2u}) {
        DevModeSwitch devMode(value);
        WatchedWrites watched;
        Test().TurnLogOn(1);
        EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
        ASSERT_EQ(watched.Writes().size(), 1u);
        EXPECT_EQ(watched.Writes()[0].devMode, value == 1 ? &m_mode : nullptr);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(value == 1 ? "Set Parameter DevMode(PRINTER_INFO_8)!!!"
                                                             : "Set Parameter Default DevMode(PRINTER_INFO_8)!!!"));
    }
}

TEST_F(SetPrinter, LineOfTheDevModeStandsBehindAFailedOpenToo) {
    StartWith("xp");
    m_security.DevMode = &m_mode;
    Record().SecurityRecord = &m_security;
    Test().TurnLogOn(1);
    faults::FailCall("OpenPrinterA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), ERROR_ACCESS_DENIED);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("Set Parameter DevMode(PRINTER_INFO_8)!!!"));
}

TEST_F(SetPrinter, Nt4HasTheDescriptorAlone) {
    StartWith("nt4");
    std::string bytes("\1\0\4\x80", 4);
    m_security.SecurityDescriptor = bytes.data();
    m_security.SecurityDescriptorLength = 4;
    m_security.PublishAction = DSPRINT_PUBLISH;
    m_security.DevMode = &m_mode;
    Record().SecurityRecord = &m_security;
    WatchedWrites watched;
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    EXPECT_THAT(watched.Levels(), IsEmpty());
    EXPECT_EQ(Machine().Registry().Find(std::string(kPrintersOn) + "\\P1", "Security")->data, bytes);
}

TEST_F(SetPrinter, SystemOfNoKnownClassHasNoDevModeOfItsOwn) {
    StartWith("other");
    m_security.DevMode = &m_mode;
    Record().SecurityRecord = &m_security;
    WatchedWrites watched;
    EXPECT_EQ(ApplyPrinterExtras("P1", &Record()), 0u);
    EXPECT_THAT(watched.Levels(), IsEmpty());
}

}  // namespace
}  // namespace pikel
