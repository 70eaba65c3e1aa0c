// Local printers: adding, changing, reading, opening, deleting.
#include "machine/spooler/printers.h"

#include <cstddef>
#include <cstring>

#include "support/spooler_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PrinterTest : public SpoolerTest {
  protected:
    void StartWithDriver(const std::string& system) {
        Start(system);
        InstallDriver();
    }
    DWORD Set(const PrinterHandle& printer, DWORD level, void* record, DWORD command = 0) {
        return CODE_OF(SetPrinterA(printer.Get(), level, static_cast<LPBYTE>(record), command));
    }
    /// Changes a printer through level 2, starting from what it has.
    DWORD Change(const std::string& name, const std::function<void(PRINTER_INFO_2A&)>& change) {
        const PrinterHandle printer = Open(name);
        const auto answer = GetPrinter<PRINTER_INFO_2A>(printer.Get(), 2);
        if (answer.Records().empty()) {
            return answer.Code();
        }
        PRINTER_INFO_2A info = answer.Records()[0];
        change(info);
        return Set(printer, 2, &info);
    }
    DWORD StatusOf(const std::string& name) {
        return GetPrinter<PRINTER_INFO_2A>(OpenPlainly(name).Get(), 2).Records().at(0).Status;
    }
};

class PrinterOfEverySystem : public PrinterTest, public ::testing::WithParamInterface<std::string> {
  protected:
    PrinterOfEverySystem() { StartWithDriver(GetParam()); }
};

TEST_P(PrinterOfEverySystem, IsWhatItWasMade) {
    PrinterSettings settings;
    settings.share = "office";
    settings.comment = "The one by the window";
    settings.location = "Second floor";
    settings.parameters = "p";
    settings.attributes = PRINTER_ATTRIBUTE_SHARED | PRINTER_ATTRIBUTE_QUEUED;
    settings.priority = 7;
    settings.defaultPriority = 3;
    settings.startTime = 60;
    settings.untilTime = 120;
    ASSERT_EQ(AddPrinter(settings), 0u);
    Test().Reopen();
    const PrinterHandle printer = OpenPlainly("OFFICE");
    const auto answer = GetPrinter<PRINTER_INFO_2A>(printer.Get(), 2);
    ASSERT_EQ(answer.Code(), 0u);
    const PRINTER_INFO_2A& info = answer.Records().at(0);
    const bool is9x = Machine().Is9x();
    EXPECT_EQ(info.pServerName, nullptr);
    EXPECT_STREQ(info.pPrinterName, "Office");
    EXPECT_STREQ(info.pShareName, "office");
    EXPECT_STREQ(info.pPortName, "LPT1:");
    EXPECT_STREQ(info.pDriverName, "Tarvo Laser");
    EXPECT_STREQ(info.pComment, "The one by the window");
    EXPECT_STREQ(info.pLocation, "Second floor");
    EXPECT_EQ(OptionalText(info.pSepFile), is9x ? std::nullopt : std::optional<std::string>(""));
    EXPECT_STREQ(info.pPrintProcessor, "winprint");
    EXPECT_STREQ(info.pDatatype, "RAW");
    EXPECT_STREQ(info.pParameters, "p");
    EXPECT_EQ(info.pSecurityDescriptor == nullptr, is9x);
    const DWORD own = is9x ? PRINTER_ATTRIBUTE_DEFAULT : PRINTER_ATTRIBUTE_LOCAL;
    EXPECT_EQ(info.Attributes, own | PRINTER_ATTRIBUTE_SHARED | PRINTER_ATTRIBUTE_QUEUED);
    EXPECT_EQ(info.Priority, 7u);
    EXPECT_EQ(info.DefaultPriority, 3u);
    EXPECT_EQ(info.StartTime, 60u);
    EXPECT_EQ(info.UntilTime, 120u);
    EXPECT_EQ(info.Status, 0u);
    EXPECT_EQ(info.cJobs, 0u);
}

TEST_P(PrinterOfEverySystem, GetsItsDriversDevMode) {
    ASSERT_EQ(AddPrinter(), 0u);
    const auto answer = GetPrinter<PRINTER_INFO_2A>(OpenPlainly("Office").Get(), 2);
    const DEVMODEA* mode = answer.Records().at(0).pDevMode;
    ASSERT_NE(mode, nullptr);
    const bool isOld = Machine().Is9x() || Machine().Generation() == Generation::Nt4;
    EXPECT_EQ(mode->dmSize, isOld ? 148 : 156);
    EXPECT_EQ(mode->dmDriverExtra, 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(mode->dmDeviceName), "Office");
}

TEST_P(PrinterOfEverySystem, GoesWhenItIsDeleted) {
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle other = Open("Office");
    const PrinterHandle printer = Open("Office");
    EXPECT_EQ(CODE_OF(DeletePrinter(printer.Get())), 0u);
    EXPECT_THAT(PrinterNames(), IsEmpty());
    EXPECT_EQ(OpenCode("Office"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(CODE_OF(DeletePrinter(other.Get())), DWORD{ERROR_PRINTER_DELETED});
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(GetPrinterA(other.Get(), 2, nullptr, 0, &needed)), DWORD{ERROR_PRINTER_DELETED});
    EXPECT_FALSE(Registry().KeyExists(PrintKey("Printers\\Office")));
}

TEST_P(PrinterOfEverySystem, TakesTheLevelsOfItsSystem) {
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle printer = Open("Office");
    for (DWORD level : {0u, 1u, 2u, 4u, 5u, 6u, 10u}) {
        const bool isRead = level == 1 || level == 2 || level == 5 || (level == 4 && !Machine().Is9x());
        const DWORD expected = isRead ? ERROR_INSUFFICIENT_BUFFER : ERROR_INVALID_LEVEL;
        DWORD needed = 0;
        DWORD count = 0;
        EXPECT_EQ(CODE_OF(GetPrinterA(printer.Get(), level, nullptr, 0, &needed)), expected) << level;
        EXPECT_EQ(CODE_OF(EnumPrintersA(PRINTER_ENUM_LOCAL, nullptr, level, nullptr, 0, &needed, &count)), expected)
            << level;
    }
    PrinterSettings settings{.name = "Other"};
    PRINTER_INFO_2A info = settings.Info();
    for (DWORD level : {0u, 1u, 3u, 5u}) {
        EXPECT_EQ(CODE_OF(AddPrinterA(nullptr, level, reinterpret_cast<LPBYTE>(&info))), DWORD{ERROR_INVALID_LEVEL});
    }
    EXPECT_EQ(Set(printer, 1, &info), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(Set(printer, 10, &info), DWORD{ERROR_INVALID_LEVEL});
}

INSTANTIATE_ON_EVERY_SYSTEM(PrinterOfEverySystem);

// ---- what is refused ------------------------------------------------------------------------------------------------

struct Refusal {
    const char* what;
    std::function<void(PrinterSettings&)> spoil;
    DWORD code;
};
const Refusal kRefusals[] = {
    {"null name", [](PrinterSettings& s) { s.name.reset(); }, ERROR_INVALID_PARAMETER},
    {"empty name", [](PrinterSettings& s) { s.name = ""; }, ERROR_INVALID_PARAMETER},
    {"backslash", [](PrinterSettings& s) { s.name = "a\\b"; }, ERROR_INVALID_PRINTER_NAME},
    {"comma", [](PrinterSettings& s) { s.name = "a,b"; }, ERROR_INVALID_PRINTER_NAME},
    {"exclamation mark", [](PrinterSettings& s) { s.name = "a!b"; }, ERROR_INVALID_PRINTER_NAME},
    {"server alone", [](PrinterSettings& s) { s.name = "\\\\server"; }, ERROR_INVALID_PRINTER_NAME},
    {"no printer behind the server", [](PrinterSettings& s) { s.name = "\\\\server\\"; }, ERROR_INVALID_PRINTER_NAME},
    {"no server", [](PrinterSettings& s) { s.name = "\\\\\\x"; }, ERROR_INVALID_PRINTER_NAME},
    {"null driver", [](PrinterSettings& s) { s.driver.reset(); }, ERROR_UNKNOWN_PRINTER_DRIVER},
    {"unknown driver", [](PrinterSettings& s) { s.driver = "Tarvo Ink"; }, ERROR_UNKNOWN_PRINTER_DRIVER},
    {"null port", [](PrinterSettings& s) { s.port.reset(); }, ERROR_UNKNOWN_PORT},
    {"unknown port", [](PrinterSettings& s) { s.port = "LPT9:"; }, ERROR_UNKNOWN_PORT},
    {"unknown processor", [](PrinterSettings& s) { s.processor = "tarvoprint"; }, ERROR_UNKNOWN_PRINTPROCESSOR},
    {"null processor", [](PrinterSettings& s) { s.processor.reset(); }, ERROR_UNKNOWN_PRINTPROCESSOR},
    {"unknown data type", [](PrinterSettings& s) { s.datatype = "COOKED"; }, ERROR_INVALID_DATATYPE},
    {"missing separator", [](PrinterSettings& s) { s.separator = "C:\\no.sep"; }, ERROR_INVALID_SEPARATOR_FILE},
    {"priority", [](PrinterSettings& s) { s.priority = 100; }, ERROR_INVALID_PRIORITY},
    {"default priority", [](PrinterSettings& s) { s.defaultPriority = 100; }, ERROR_INVALID_PRIORITY},
    {"start time", [](PrinterSettings& s) { s.startTime = 1440; }, ERROR_INVALID_TIME},
    {"until time", [](PrinterSettings& s) { s.untilTime = 1440; }, ERROR_INVALID_TIME},
    {"shared without a name", [](PrinterSettings& s) { s.attributes = PRINTER_ATTRIBUTE_SHARED; },
     ERROR_INVALID_SHARENAME},
};

TEST_F(PrinterTest, AddingTellsWhatIsWrong) {
    InstallDriver();
    for (const Refusal& refusal : kRefusals) {
        PrinterSettings settings;
        refusal.spoil(settings);
        EXPECT_EQ(AddPrinter(settings), refusal.code) << refusal.what;
    }
    EXPECT_EQ(CODE_OF(AddPrinterA(nullptr, 2, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(PrinterNames(), IsEmpty());
    EXPECT_EQ(DefaultPrinterName(), "");
}

TEST_F(PrinterTest, NameIsTakenInAnyCase) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    EXPECT_EQ(AddPrinter({.name = "OFFICE"}), DWORD{ERROR_PRINTER_ALREADY_EXISTS});
    EXPECT_EQ(AddPrinter({.name = "\\\\" + Machine().System().computerName + "\\office"}),
              DWORD{ERROR_PRINTER_ALREADY_EXISTS});
    EXPECT_EQ(AddPrinter({.name = "Office 2"}), 0u);
}

TEST_F(PrinterTest, NameHasALimit) {
    InstallDriver();
    EXPECT_EQ(AddPrinter({.name = std::string(220, 'n')}), 0u);
    EXPECT_EQ(AddPrinter({.name = std::string(221, 'n')}), DWORD{ERROR_INVALID_PRINTER_NAME});
    StartWithDriver("win98");
    EXPECT_EQ(AddPrinter({.name = std::string(31, 'n')}), 0u);
    EXPECT_EQ(AddPrinter({.name = std::string(32, 'n')}), DWORD{ERROR_INVALID_PRINTER_NAME});
}

TEST_F(PrinterTest, MayStandForASharedOne) {
    InstallDriver();
    ASSERT_EQ(AddPrinter({.name = "\\\\server\\Laser"}), 0u);
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_LOCAL), ElementsAre("\\\\server\\Laser"));
    EXPECT_TRUE(Registry().KeyExists(PrintKey("Printers\\,,server,Laser")));
    const auto answer = GetPrinter<PRINTER_INFO_4A>(OpenPlainly("\\\\SERVER\\laser").Get(), 4);
    EXPECT_EQ(answer.Records().at(0).pServerName, nullptr);
    EXPECT_EQ(answer.Records().at(0).Attributes, DWORD{PRINTER_ATTRIBUTE_LOCAL});
}

TEST_F(PrinterTest, WhatTheSystemAddsBySelf) {
    InstallDriver();
    PrinterSettings settings;
    settings.datatype.reset();
    settings.priority = 0;
    ASSERT_EQ(AddPrinter(settings), 0u);
    const auto answer = GetPrinter<PRINTER_INFO_2A>(OpenPlainly("Office").Get(), 2);
    EXPECT_STREQ(answer.Records().at(0).pDatatype, "RAW");
    EXPECT_EQ(answer.Records().at(0).Priority, 1u);
    StartWithDriver("win98");
    settings.processor.reset();
    ASSERT_EQ(AddPrinter(settings), 0u);
    const auto of9x = GetPrinter<PRINTER_INFO_2A>(OpenPlainly("Office").Get(), 2);
    EXPECT_STREQ(of9x.Records().at(0).pPrintProcessor, "WinPrint");
}

TEST_F(PrinterTest, DataTypesAreThoseOfTheSystem) {
    InstallDriver();
    EXPECT_EQ(AddPrinter({.datatype = "nt emf 1.008"}), 0u);
    EXPECT_EQ(AddPrinter({.name = "Other", .datatype = "EMF"}), DWORD{ERROR_INVALID_DATATYPE});
    StartWithDriver("win98");
    EXPECT_EQ(AddPrinter({.datatype = "EMF"}), 0u);
    EXPECT_EQ(AddPrinter({.name = "Other", .datatype = "TEXT"}), DWORD{ERROR_INVALID_DATATYPE});
}

TEST_F(PrinterTest, UserWithoutRightsIsRefused) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    SystemDescription description = Machine().System();
    description.administrator = false;
    Machine().SetSystem(description);
    EXPECT_EQ(AddPrinter({.name = "Other"}), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(OpenCode("Office"), 0u);
    EXPECT_EQ(OpenCode("Office", PRINTER_ACCESS_USE), 0u);
    EXPECT_EQ(OpenCode("Office", 0), 0u);
    EXPECT_EQ(OpenCode("Office", GENERIC_READ), 0u);
    EXPECT_EQ(OpenCode("Office", 0x02000000), 0u);  // as much as is allowed
    EXPECT_EQ(OpenCode("Office", PRINTER_ACCESS_ADMINISTER), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(OpenCode("Office", PRINTER_ALL_ACCESS), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(OpenCode("Office", GENERIC_ALL), DWORD{ERROR_ACCESS_DENIED});
}

// ---- handles --------------------------------------------------------------------------------------------------------

TEST_F(PrinterTest, OpensByNameInAnyForm) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    EXPECT_EQ(OpenCode("office"), 0u);
    EXPECT_EQ(OpenCode("\\\\" + Machine().System().computerName + "\\Office"), 0u);
    EXPECT_EQ(OpenCode("Offic"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(OpenCode("\\\\server\\Office"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(OpenCode(""), DWORD{ERROR_INVALID_PARAMETER});
    std::string name = "Office";
    EXPECT_EQ(CODE_OF(OpenPrinterA(name.data(), nullptr, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    HANDLE handle = reinterpret_cast<HANDLE>(0x55);
    name = "Unknown";
    EXPECT_EQ(CODE_OF(OpenPrinterA(name.data(), &handle, nullptr)), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(handle, nullptr);
}

TEST_F(PrinterTest, KeyWithACommaIsNoPrinterWithABackslash) {
    Start("win98");
    InstallDriver();
    ASSERT_EQ(AddPrinter({.name = "\\\\server\\Laser"}), 0u);
    EXPECT_EQ(OpenCode(",,server,Laser"), DWORD{ERROR_INVALID_PRINTER_NAME});
}

TEST_F(PrinterTest, ServerHasAHandleButIsNoPrinter) {
    PrinterHandle server;
    ASSERT_EQ(CODE_OF(OpenPrinterA(nullptr, server.Out(), nullptr)), 0u);
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(GetPrinterA(server.Get(), 2, nullptr, 0, &needed)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(CODE_OF(DeletePrinter(server.Get())), DWORD{ERROR_INVALID_HANDLE});
}

TEST_F(PrinterTest, HandleClosesOnce) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    const HANDLE handle = OpenPlainly("Office").Release();
    EXPECT_EQ(CODE_OF(ClosePrinter(handle)), 0u);
    EXPECT_EQ(CODE_OF(ClosePrinter(handle)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(CODE_OF(ClosePrinter(nullptr)), DWORD{ERROR_INVALID_HANDLE});
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(GetPrinterA(handle, 2, nullptr, 0, &needed)), DWORD{ERROR_INVALID_HANDLE});
    Test().AllowOpen();
}

TEST_F(PrinterTest, PlainHandleCannotWriteOnTheNtFamily) {
    for (const char* system : {"xp", "win98"}) {
        StartWithDriver(system);
        ASSERT_EQ(AddPrinter(), 0u);
        const PrinterHandle printer = OpenPlainly("Office");
        const DWORD expected = Machine().Is9x() ? DWORD(ERROR_SUCCESS) : DWORD(ERROR_ACCESS_DENIED);
        EXPECT_EQ(Set(printer, 0, nullptr, PRINTER_CONTROL_PAUSE), expected) << system;
        EXPECT_EQ(CODE_OF(DeletePrinter(printer.Get())), expected) << system;
    }
}

// ---- changes --------------------------------------------------------------------------------------------------------

TEST_F(PrinterTest, ChangesAsAsked) {
    InstallDriver();
    InstallDriver({.name = "Tarvo Ink"});
    ASSERT_EQ(AddPrinter(), 0u);
    std::string driver = "Tarvo Ink", port = "FILE:", comment = "changed", datatype = "TEXT";
    EXPECT_EQ(Change("Office",
                     [&](PRINTER_INFO_2A& info) {
                         info.pDriverName = driver.data();
                         info.pPortName = port.data();
                         info.pComment = comment.data();
                         info.pDatatype = datatype.data();
                         info.pLocation = nullptr;
                         info.pDevMode = nullptr;
                         info.Attributes |= PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST;
                         info.Status = PRINTER_STATUS_PAUSED;  // not set in this way
                     }),
              0u);
    const auto answer = GetPrinter<PRINTER_INFO_2A>(OpenPlainly("Office").Get(), 2);
    const PRINTER_INFO_2A& info = answer.Records().at(0);
    EXPECT_STREQ(info.pDriverName, "Tarvo Ink");
    EXPECT_STREQ(info.pPortName, "FILE:");
    EXPECT_STREQ(info.pComment, "changed");
    EXPECT_STREQ(info.pDatatype, "TEXT");
    EXPECT_STREQ(info.pLocation, "");
    EXPECT_NE(info.pDevMode, nullptr);
    EXPECT_EQ(info.Attributes, DWORD{PRINTER_ATTRIBUTE_LOCAL} | PRINTER_ATTRIBUTE_DO_COMPLETE_FIRST);
    EXPECT_EQ(info.Status, 0u);
}

TEST_F(PrinterTest, ChangeTellsWhatIsWrong) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    ASSERT_EQ(AddPrinter({.name = "Other"}), 0u);
    std::string bad = "unknown", taken = "OTHER", badName = "a,b";
    EXPECT_EQ(Change("Office", [&](PRINTER_INFO_2A& info) { info.pDriverName = bad.data(); }),
              DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    EXPECT_EQ(Change("Office", [&](PRINTER_INFO_2A& info) { info.pPortName = bad.data(); }), DWORD{ERROR_UNKNOWN_PORT});
    EXPECT_EQ(Change("Office", [&](PRINTER_INFO_2A& info) { info.pPrintProcessor = bad.data(); }),
              DWORD{ERROR_UNKNOWN_PRINTPROCESSOR});
    EXPECT_EQ(Change("Office", [&](PRINTER_INFO_2A& info) { info.pDatatype = bad.data(); }),
              DWORD{ERROR_INVALID_DATATYPE});
    EXPECT_EQ(Change("Office", [&](PRINTER_INFO_2A& info) { info.pPrinterName = taken.data(); }),
              DWORD{ERROR_PRINTER_ALREADY_EXISTS});
    EXPECT_EQ(Change("Office", [&](PRINTER_INFO_2A& info) { info.pPrinterName = badName.data(); }),
              DWORD{ERROR_INVALID_PRINTER_NAME});
    const PrinterHandle printer = Open("Office");
    EXPECT_EQ(Set(printer, 2, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    PrinterSettings settings;
    PRINTER_INFO_2A info = settings.Info();
    EXPECT_EQ(Set(printer, 2, &info, PRINTER_CONTROL_PAUSE), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(SetPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&info), 0)), DWORD{ERROR_INVALID_HANDLE});
}

TEST_F(PrinterTest, KeepsItsDataUnderANewName) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle printer = Open("Office");
    std::string data = "kept";
    ASSERT_EQ(SetPrinterDataExA(printer.Get(), "A\\B", "Value", REG_SZ, reinterpret_cast<LPBYTE>(data.data()), 5), 0u);
    std::string name = "Renamed";
    PrinterSettings settings;
    PRINTER_INFO_2A info = settings.Info();
    info.pPrinterName = name.data();
    ASSERT_EQ(Set(printer, 2, &info), 0u);
    EXPECT_THAT(PrinterNames(), ElementsAre("Renamed"));
    EXPECT_EQ(DefaultPrinterName(), "Renamed");
    EXPECT_EQ(Registry().Text(PrintKey("Printers\\Renamed\\A\\B"), "Value"), "kept");
    EXPECT_FALSE(Registry().KeyExists(PrintKey("Printers\\Office")));
    // The handle goes on with it.
    EXPECT_STREQ(GetPrinter<PRINTER_INFO_5A>(printer.Get(), 5).Records().at(0).pPrinterName, "Renamed");
}

TEST_F(PrinterTest, ChangesItsSpelling) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    std::string name = "OFFICE";
    ASSERT_EQ(Change("Office", [&](PRINTER_INFO_2A& info) { info.pPrinterName = name.data(); }), 0u);
    EXPECT_THAT(PrinterNames(), ElementsAre("OFFICE"));
}

TEST_F(PrinterTest, Level5SetsPortAttributesAndTimeouts) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle printer = Open("Office");
    const auto before = GetPrinter<PRINTER_INFO_5A>(printer.Get(), 5);
    EXPECT_EQ(before.Records().at(0).DeviceNotSelectedTimeout, 15000u);
    EXPECT_EQ(before.Records().at(0).TransmissionRetryTimeout, 45000u);
    std::string name = "Office", port = "LPT2:";
    PRINTER_INFO_5A info{name.data(), port.data(), PRINTER_ATTRIBUTE_DIRECT, 20000, 50000};
    ASSERT_EQ(Set(printer, 5, &info), 0u);
    const auto after = GetPrinter<PRINTER_INFO_5A>(printer.Get(), 5);
    EXPECT_STREQ(after.Records().at(0).pPortName, "LPT2:");
    EXPECT_EQ(after.Records().at(0).Attributes, DWORD{PRINTER_ATTRIBUTE_LOCAL} | PRINTER_ATTRIBUTE_DIRECT);
    EXPECT_EQ(after.Records().at(0).DeviceNotSelectedTimeout, 20000u);
    EXPECT_EQ(after.Records().at(0).TransmissionRetryTimeout, 50000u);
    // Null names leave name and port as they are.
    PRINTER_INFO_5A nameless{nullptr, nullptr, 0, 1, 2};
    ASSERT_EQ(Set(printer, 5, &nameless), 0u);
    EXPECT_STREQ(GetPrinter<PRINTER_INFO_5A>(printer.Get(), 5).Records().at(0).pPortName, "LPT2:");
}

TEST_F(PrinterTest, ObeysCommands) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(), 0u);
    const PrinterHandle printer = Open("Office");
    EXPECT_EQ(Set(printer, 0, nullptr, PRINTER_CONTROL_PAUSE), 0u);
    EXPECT_EQ(StatusOf("Office"), DWORD{PRINTER_STATUS_PAUSED});
    // A change of its settings leaves it paused.
    EXPECT_EQ(Change("Office", [](PRINTER_INFO_2A& info) { info.Status = 0; }), 0u);
    EXPECT_EQ(StatusOf("Office"), DWORD{PRINTER_STATUS_PAUSED});
    EXPECT_EQ(Set(printer, 0, nullptr, PRINTER_CONTROL_PURGE), 0u);
    EXPECT_EQ(Set(printer, 0, nullptr, PRINTER_CONTROL_RESUME), 0u);
    EXPECT_EQ(StatusOf("Office"), 0u);
    EXPECT_EQ(Set(printer, 0, reinterpret_cast<void*>(0x40), PRINTER_CONTROL_SET_STATUS), 0u);
    EXPECT_EQ(StatusOf("Office"), 0x40u);
    EXPECT_EQ(Set(printer, 0, nullptr, 0), DWORD{ERROR_INVALID_PRINTER_COMMAND});
    EXPECT_EQ(Set(printer, 0, nullptr, 9), DWORD{ERROR_INVALID_PRINTER_COMMAND});
}

TEST_F(PrinterTest, KeepsTheDevModeThatItIsGiven) {
    InstallDriver();
    struct {
        DEVMODEA mode;
        char extra[5];
    } given{};
    given.mode.dmSize = sizeof given.mode;
    given.mode.dmDriverExtra = sizeof given.extra;
    given.mode.dmCopies = 3;
    std::memcpy(given.extra, "1234", 5);
    ASSERT_EQ(AddPrinter({.devMode = &given.mode}), 0u);
    const auto answer = GetPrinter<PRINTER_INFO_2A>(OpenPlainly("Office").Get(), 2);
    const DEVMODEA* mode = answer.Records().at(0).pDevMode;
    ASSERT_NE(mode, nullptr);
    EXPECT_EQ(mode->dmCopies, 3);
    EXPECT_EQ(mode->dmDriverExtra, 5);
    EXPECT_STREQ(reinterpret_cast<const char*>(mode + 1), "1234");
}

// ---- enumeration ----------------------------------------------------------------------------------------------------

TEST_F(PrinterTest, ListsByName) {
    InstallDriver();
    for (const char* name : {"zeta", "Alpha", "mid"}) {
        ASSERT_EQ(AddPrinter({.name = name}), 0u);
    }
    EXPECT_THAT(PrinterNames(), ElementsAre("Alpha", "mid", "zeta"));
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_LOCAL), ElementsAre("Alpha", "mid", "zeta"));
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_NAME), ElementsAre("Alpha", "mid", "zeta"));
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_CONNECTIONS), IsEmpty());
    ASSERT_EQ(AddPrinter({.name = "shared", .share = "s", .attributes = PRINTER_ATTRIBUTE_SHARED}), 0u);
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_LOCAL | PRINTER_ENUM_SHARED), ElementsAre("shared"));
}

TEST_F(PrinterTest, EnumerationChecksItsArguments) {
    DWORD needed = 0;
    DWORD count = 0;
    BYTE bytes[4096];
    std::string other = "\\\\other";
    EXPECT_EQ(CODE_OF(EnumPrintersA(0, nullptr, 2, bytes, sizeof bytes, &needed, &count)), DWORD{ERROR_INVALID_FLAGS});
    EXPECT_EQ(CODE_OF(EnumPrintersA(PRINTER_ENUM_NAME, other.data(), 2, bytes, sizeof bytes, &needed, &count)),
              DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(CODE_OF(EnumPrintersA(2, nullptr, 2, bytes, sizeof bytes, nullptr, &count)),
              DWORD{RPC_X_NULL_REF_POINTER});
    EXPECT_EQ(CODE_OF(EnumPrintersA(2, nullptr, 2, bytes, sizeof bytes, &needed, nullptr)),
              DWORD{RPC_X_NULL_REF_POINTER});
    EXPECT_EQ(CODE_OF(EnumPrintersA(2, nullptr, 2, nullptr, 0, &needed, &count)), 0u);
    EXPECT_EQ(count, 0u);
}

TEST_F(PrinterTest, Level1Describes) {
    InstallDriver();
    ASSERT_EQ(AddPrinter({.comment = "by the window", .location = "hall"}), 0u);
    const auto answer = EnumPrinters<PRINTER_INFO_1A>(1);
    ASSERT_EQ(answer.Records().size(), 1u);
    EXPECT_EQ(answer.Records()[0].Flags, DWORD{PRINTER_ENUM_ICON8});
    EXPECT_STREQ(answer.Records()[0].pDescription, "Office,Tarvo Laser,hall");
    EXPECT_STREQ(answer.Records()[0].pName, "Office");
    EXPECT_STREQ(answer.Records()[0].pComment, "by the window");
}

TEST_F(PrinterTest, DefaultFlagFindsTheDefaultPrinterOnThe9xFamily) {
    StartWithDriver("win98");
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_DEFAULT), IsEmpty());
    ASSERT_EQ(AddPrinter({.name = "First"}), 0u);
    ASSERT_EQ(AddPrinter({.name = "Another"}), 0u);
    EXPECT_THAT(PrinterNames(PRINTER_ENUM_DEFAULT), ElementsAre("First"));
}

}  // namespace
}  // namespace pikel
