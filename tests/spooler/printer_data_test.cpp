// Writing the values that a printer keeps outside its level 2 data.
#include "spooler/printer_data.h"

#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Calls that reach the machine when a value is written.
const std::vector<std::string> kWritingCalls = {
    "RegCreateKeyExA", "RegSetValueExA",  "RegCloseKey",       "LoadLibraryA", "GetProcAddress",
    "OpenPrinterA",    "SetPrinterDataA", "SetPrinterDataExA", "ClosePrinter", "FreeLibrary"};

std::string KeyOf(std::string_view printer, std::string_view key) {
    return std::string(kPrintersOn) + '\\' + std::string(printer) + '\\' + std::string(key);
}

/// A value's bytes below a printer's key, or "-" when there is no such value.
std::string ValueOn(TestMachine& test, std::string_view printer, std::string_view key, std::string_view name) {
    const simulated::RegistryValue* value = test->Registry().Find(KeyOf(printer, key), name);
    return value == nullptr ? "-" : value->data;
}

DWORD Set(LPCSTR printer, LPCSTR key, LPCSTR name, std::string data, DWORD kind = ValueKindEvery) {
    return SetPrinterData(printer, key, name, REG_BINARY, reinterpret_cast<LPBYTE>(data.data()),
                          static_cast<DWORD>(data.size()), kind);
}

class PrinterDataOnEverySystem : public EverySystemTest {
  protected:
    PrinterDataOnEverySystem() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        Test().TakeCalls();
    }
    Family OfFamily() const { return FamilyOf(GetParam()); }
    std::vector<std::string> LogOf(DWORD code) const {
        return {RoutineOfFamily("SetPrinterData", GetParam()) + "() - Start",
                RoutineOfFamily("SetPrinterData", GetParam()) + "() - End(" + std::to_string(code) + ")"};
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(PrinterDataOnEverySystem);

TEST_P(PrinterDataOnEverySystem, NullKeyIsTheDefaultKey) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Set("P1", nullptr, "udpWidth", "abcd"), 0u);
    EXPECT_EQ(Test().TakeLog(), LogOf(0));
    EXPECT_EQ(ValueOn(Test(), "P1", "PrinterDriverData", "udpWidth"), "abcd");
    EXPECT_EQ(Machine().Registry().Find(KeyOf("P1", "PrinterDriverData"), "udpWidth")->type, DWORD{REG_BINARY});
}

TEST_P(PrinterDataOnEverySystem, KeyCountsExceptOnNt4) {
    EXPECT_EQ(Set("P1", "ICMDATA", "ProfileEnumMode", "x"), 0u);
    const bool keyIgnored = OfFamily() == Family::Nt4;
    EXPECT_EQ(ValueOn(Test(), "P1", "ICMDATA", "ProfileEnumMode"), keyIgnored ? "-" : "x");
    EXPECT_EQ(ValueOn(Test(), "P1", "PrinterDriverData", "ProfileEnumMode"), keyIgnored ? "x" : "-");
}

TEST_P(PrinterDataOnEverySystem, NestedKeyIsReachedByItsPath) {
    if (OfFamily() == Family::Nt4) {
        return;
    }
    EXPECT_EQ(Set("P1", "PrinterDriverData\\DeviceOption", "DeviceOption", "x"), 0u);
    EXPECT_EQ(ValueOn(Test(), "P1", "PrinterDriverData\\DeviceOption", "DeviceOption"), "x");
}

TEST_P(PrinterDataOnEverySystem, SecondWriteReplacesTheFirst) {
    EXPECT_EQ(Set("P1", nullptr, "CustomCode", "first"), 0u);
    EXPECT_EQ(Set("P1", nullptr, "CustomCode", "2nd"), 0u);
    EXPECT_EQ(ValueOn(Test(), "P1", "PrinterDriverData", "CustomCode"), "2nd");
}

TEST_P(PrinterDataOnEverySystem, CallsComeInTheirOrder) {
    EXPECT_EQ(Set("P1", nullptr, "udpWidth", "x"), 0u);
    const std::vector<std::string> names = Test().TakeCallNames(kWritingCalls);
    switch (OfFamily()) {
        case Family::Windows9x:
            EXPECT_THAT(names, ElementsAre("RegCreateKeyExA", "RegSetValueExA", "RegCloseKey"));
            break;
        case Family::Nt4:
            EXPECT_THAT(names, ElementsAre("OpenPrinterA", "SetPrinterDataA", "ClosePrinter"));
            break;
        case Family::Windows2000:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress", "OpenPrinterA", "SetPrinterDataExA",
                                           "ClosePrinter", "FreeLibrary"));
            break;
    }
}

TEST_P(PrinterDataOnEverySystem, KindOfTheOtherFamilyLooksLikeAMissingValue) {
    const bool is9x = OfFamily() == Family::Windows9x;
    struct Case {
        DWORD kind;
        bool taken;
    };
    for (const Case& oneCase :
         {Case{0, true}, Case{1, is9x}, Case{2, !is9x}, Case{3, false}, Case{0xFFFFFFFF, false}}) {
        Test().TurnLogOn(1);
        EXPECT_EQ(Set("P1", nullptr, "Files", "x", oneCase.kind), oneCase.taken ? 0u : ERROR_FILE_NOT_FOUND)
            << oneCase.kind;
        EXPECT_EQ(Test().TakeLog(), LogOf(oneCase.taken ? 0 : 2));
        EXPECT_EQ(Test().TakeCallNames(kWritingCalls).empty(), !oneCase.taken) << oneCase.kind;
    }
}

TEST_P(PrinterDataOnEverySystem, NullPrinterNameIsRefusedBeforeTheRoute) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Set(nullptr, nullptr, "udpWidth", "x"), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames(kWritingCalls), IsEmpty());
}

TEST_P(PrinterDataOnEverySystem, NullValueNameIsRefusedByTheRoute) {
    Test().TurnLogOn(1);
    // The null test comes before that of the kind.
    EXPECT_EQ(Set("P1", nullptr, nullptr, "x", 9), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Test().TakeLog(), LogOf(87));
    EXPECT_THAT(Test().TakeCallNames(kWritingCalls), IsEmpty());
}

TEST_P(PrinterDataOnEverySystem, NullDataIsRefusedFromWindows2000On) {
    Test().TurnLogOn(1);
    const bool refused = OfFamily() == Family::Windows2000;
    EXPECT_EQ(SetPrinterData("P1", nullptr, "Empty", REG_BINARY, nullptr, 0, ValueKindEvery),
              refused ? ERROR_INVALID_PARAMETER : 0u);
    EXPECT_EQ(Test().TakeLog(), LogOf(refused ? 87 : 0));
    EXPECT_EQ(ValueOn(Test(), "P1", "PrinterDriverData", "Empty"), refused ? "-" : "");
}

/// Each platform call of the three routes.
struct FailingStep {
    Family family;
    const char* call;
    DWORD code;
    const char* line;  ///< what is logged of it, or null
};
const FailingStep kFailingSteps[] = {
    {Family::Windows9x, "RegCreateKeyExA", ERROR_ACCESS_DENIED, "SetPrinterData9x-Open Error:5"},
    {Family::Windows9x, "RegSetValueExA", ERROR_NOT_ENOUGH_MEMORY, "SetPrinterData9x-SetValue Error:8"},
    {Family::Nt4, "OpenPrinterA", ERROR_INVALID_PRINTER_NAME, nullptr},
    {Family::Nt4, "SetPrinterDataA", RPC_S_CALL_FAILED, nullptr},
    {Family::Windows2000, "LoadLibraryA", ERROR_MOD_NOT_FOUND, nullptr},
    {Family::Windows2000, "GetProcAddress", ERROR_PROC_NOT_FOUND, nullptr},
    {Family::Windows2000, "OpenPrinterA", ERROR_ACCESS_DENIED, nullptr},
    {Family::Windows2000, "SetPrinterDataExA", RPC_S_SERVER_UNAVAILABLE, nullptr},
};

TEST_P(PrinterDataOnEverySystem, EveryFailedCallIsTheResult) {
    for (const FailingStep& step : kFailingSteps) {
        if (step.family != OfFamily()) {
            continue;
        }
        Test().TurnLogOn(1);
        faults::Reset();
        faults::FailCall(step.call, 1, step.code);
        EXPECT_EQ(Set("P1", nullptr, "udpWidth", "x"), step.code) << step.call;
        EXPECT_EQ(faults::LastFailed(), step.call);
        std::vector<std::string> log = LogOf(step.code);
        if (step.line != nullptr) {
            log.insert(log.begin() + 1, step.line);
        }
        EXPECT_EQ(Test().TakeLog(), log) << step.call;
        EXPECT_EQ(ValueOn(Test(), "P1", "PrinterDriverData", "udpWidth"), "-") << step.call;
    }
}

TEST_P(PrinterDataOnEverySystem, PrinterThatIsNotThere) {
    // The 9x route writes to the registry without asking the spooler.
    EXPECT_EQ(Set("Nobody", nullptr, "udpWidth", "x"),
              OfFamily() == Family::Windows9x ? 0u : ERROR_INVALID_PRINTER_NAME);
}

class PrinterData : public MachineTest {};

TEST_F(PrinterData, RegistryRouteCreatesTheWholePath) {
    Start("win98");
    Test().TakeCalls();
    EXPECT_EQ(Set("P1", "A\\B", "Name", "data", ValueKind9x), 0u);
    const std::vector<std::string> calls = Test().TakeCalls();
    EXPECT_THAT(calls,
                ::testing::Contains(::testing::StartsWith(
                    "RegCreateKeyExA(0x80000002, "
                    "\"SYSTEM\\\\CurrentControlSet\\\\Control\\\\Print\\\\Printers\\\\P1\\\\A\\\\B\", 0x0, null, "
                    "0x0, 0x2001f, null, &, null)")));
    EXPECT_EQ(ValueOn(Test(), "P1", "A\\B", "Name"), "data");
}

TEST_F(PrinterData, SpoolerRoutesOpenWithAllAccess) {
    static std::vector<DWORD> s_access;
    static const PlatformTable* s_below = nullptr;
    for (const char* system : {"nt4", "win2000", "xp", "vista-x64"}) {
        Start(system);
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        s_access.clear();
        s_below = &Platform();
        ReplacedOperations replaced;
        replaced.table.OpenPrinterA = [](LPSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSA defaults) -> BOOL {
            s_access.push_back(defaults == nullptr ? 0 : defaults->DesiredAccess);
            return s_below->OpenPrinterA(name, handle, defaults);
        };
        EXPECT_EQ(Set("P1", nullptr, "udpWidth", "x"), 0u) << system;
        EXPECT_THAT(s_access, ElementsAre(0xF000Cu)) << system;
    }
}

TEST_F(PrinterData, MissingEntryOfTheSpoolerLibraryIsTheResult) {
    InstallDriver(Test());
    AddPrinterTo(Test(), "P1");
    Machine().Modules().RemoveExport("winspool.drv", "SetPrinterDataExA");
    EXPECT_EQ(Set("P1", nullptr, "udpWidth", "x"), ERROR_PROC_NOT_FOUND);
    Machine().Modules().Remove("winspool.drv");
    EXPECT_EQ(Set("P1", nullptr, "udpWidth", "x"), ERROR_MOD_NOT_FOUND);
}

TEST(PrinterDataWithoutRoute, IsNotServed) {
    TestMachine test(SystemWithoutRoute());
    EXPECT_EQ(Set(nullptr, nullptr, "udpWidth", "x"), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Set("P1", nullptr, "udpWidth", "x"), ERROR_CALL_NOT_IMPLEMENTED);
}

}  // namespace
}  // namespace pikel
