// Reading the values that a printer keeps outside its level 2 data.
#include "machine/operations.h"
#include "spooler/printer_data.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::vector<std::string> kReadingCalls = {
    "RegOpenKeyExA", "RegQueryValueExA", "RegCloseKey",       "LoadLibraryA", "GetProcAddress", "OpenPrinterA",
    "EnumPrintersA", "GetPrinterDataA",  "GetPrinterDataExA", "ClosePrinter", "FreeLibrary"};

/// What a read gave, as one text: the type and the bytes, or the code.
std::string Get(LPCSTR printer, LPCSTR key, LPCSTR name, DWORD kind = ValueKindEvery) {
    PrinterValueData value;
    const DWORD code = GetPrinterData(printer, key, name, kind, value);
    if (code != 0) {
        return "code " + std::to_string(code);
    }
    const std::string bytes(static_cast<const char*>(value.data.Get()), value.dwSize);
    return std::to_string(value.dwType) + ":" + bytes;
}

class PrinterDataRead : public EverySystemTest {
  protected:
    PrinterDataRead() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        Test().TakeCalls();
    }
    Family OfFamily() const { return FamilyOf(GetParam()); }
    void Put(std::string_view key, std::string_view name, DWORD type, std::string_view bytes) {
        Machine().Registry().Set(std::string(kPrintersOn) + "\\P1\\" + std::string(key), name, type, bytes);
    }
    std::vector<std::string> LogOf(DWORD code, const std::vector<std::string>& between = {}) const {
        std::vector<std::string> log = between;
        log.insert(log.begin(), RoutineOfFamily("GetPrinterData", GetParam()) + "() - Start");
        log.push_back(RoutineOfFamily("GetPrinterData", GetParam()) + "() - End(" + std::to_string(code) + ")");
        return log;
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(PrinterDataRead);

TEST_P(PrinterDataRead, GivesTypeAndBytes) {
    Put("PrinterDriverData", "udpWidth", REG_BINARY, std::string_view("a\0bc", 4));
    Test().TurnLogOn(1);
    EXPECT_EQ(Get("P1", nullptr, "udpWidth"), std::string("3:a\0bc", 6));
    EXPECT_EQ(Test().TakeLog(), LogOf(0));
}

TEST_P(PrinterDataRead, KeyCountsExceptOnNt4) {
    Put("ICMDATA", "ProfileEnumMode", REG_DWORD, std::string_view("\1\0\0\0", 4));
    EXPECT_EQ(Get("P1", "ICMDATA", "ProfileEnumMode"),
              OfFamily() == Family::Nt4 ? "code 2" : std::string("4:\1\0\0\0", 6));
}

TEST_P(PrinterDataRead, CallsComeInTheirOrder) {
    Put("PrinterDriverData", "udpWidth", REG_BINARY, "abcd");
    EXPECT_EQ(Get("P1", nullptr, "udpWidth"), "3:abcd");
    const std::vector<std::string> names = Test().TakeCallNames(kReadingCalls);
    switch (OfFamily()) {
        case Family::Windows9x:
            EXPECT_THAT(names, ElementsAre("RegOpenKeyExA", "RegQueryValueExA", "RegQueryValueExA", "RegCloseKey"));
            break;
        case Family::Nt4:
            EXPECT_THAT(names, ElementsAre("OpenPrinterA", "GetPrinterDataA", "GetPrinterDataA", "ClosePrinter"));
            break;
        case Family::Windows2000:
            EXPECT_THAT(names, ElementsAre("LoadLibraryA", "GetProcAddress", "OpenPrinterA", "GetPrinterDataExA",
                                           "GetPrinterDataExA", "ClosePrinter", "FreeLibrary"));
            break;
    }
}

TEST_P(PrinterDataRead, TextIsTakenFromTheRegistryFromWindows2000On) {
    Put("PrinterDriverData", "CustomComment", REG_SZ, std::string_view("text\0", 5));
    Test().TurnLogOn(1);
    EXPECT_EQ(Get("P1", nullptr, "CustomComment"), std::string("1:text\0", 7));
    if (OfFamily() != Family::Windows2000) {
        EXPECT_EQ(Test().TakeLog(), LogOf(0));
        return;
    }
    EXPECT_EQ(Test().TakeLog(), LogOf(0, {"GetPrinterData2kHelper() - Start", "GetPrinterData2kHelper() - End(0)"}));
    EXPECT_THAT(
        Test().TakeCallNames(kReadingCalls),
        ElementsAre("LoadLibraryA", "GetProcAddress", "OpenPrinterA", "GetPrinterDataExA", "EnumPrintersA",
                    "EnumPrintersA", "RegOpenKeyExA", "RegOpenKeyExA", "RegOpenKeyExA", "RegQueryValueExA",
                    "RegQueryValueExA", "RegCloseKey", "RegCloseKey", "RegCloseKey", "ClosePrinter", "FreeLibrary"));
}

TEST_P(PrinterDataRead, MultiStringOfASubkeyKeepsItsTerminators) {
    if (OfFamily() != Family::Windows2000) {
        return;
    }
    Put("CopyFiles\\ICM", "Files", REG_MULTI_SZ, std::string_view("a.icm\0b.icm\0\0", 13));
    EXPECT_EQ(Get("P1", "CopyFiles\\ICM", "Files", ValueKindNt), std::string("7:a.icm\0b.icm\0\0", 15));
}

TEST_P(PrinterDataRead, TextWithoutTerminatorGetsOne) {
    if (OfFamily() != Family::Windows2000) {
        return;
    }
    Put("PrinterDriverData", "CustomComment", REG_SZ, "text");
    EXPECT_EQ(Get("P1", nullptr, "CustomComment"), std::string("1:text\0", 7));
}

TEST_P(PrinterDataRead, ValueWithoutBytesIsThere) {
    Put("PrinterDriverData", "CustomCode", REG_BINARY, "");
    PrinterValueData value;
    value.dwSize = 99;
    EXPECT_EQ(GetPrinterData("P1", nullptr, "CustomCode", ValueKindEvery, value), 0u);
    EXPECT_EQ(value.dwType, DWORD{REG_BINARY});
    EXPECT_EQ(value.dwSize, 0u);
    // From Windows 2000 on there is a byte to point at.
    EXPECT_EQ(static_cast<bool>(value.data), OfFamily() == Family::Windows2000);
}

TEST_P(PrinterDataRead, MissingValueGives2) {
    Test().TurnLogOn(1);
    // Without any value of a printer the registry lacks the key itself.
    EXPECT_EQ(Get("P1", nullptr, "udpWidth"), "code 2");
    EXPECT_EQ(Test().TakeLog(), LogOf(2));
}

TEST_P(PrinterDataRead, KindOfTheOtherFamilyLooksLikeAMissingValue) {
    Put("PrinterDriverData", "Files", REG_BINARY, "x");
    const bool is9x = OfFamily() == Family::Windows9x;
    struct Case {
        DWORD kind;
        bool read;
    };
    for (const Case& oneCase : {Case{0, true}, Case{1, is9x}, Case{2, !is9x}, Case{3, false}, Case{~0u, false}}) {
        Test().TakeCalls();
        EXPECT_EQ(Get("P1", nullptr, "Files", oneCase.kind), oneCase.read ? "3:x" : "code 2") << oneCase.kind;
        EXPECT_EQ(Test().TakeCallNames(kReadingCalls).empty(), !oneCase.read) << oneCase.kind;
    }
}

TEST_P(PrinterDataRead, NullPrinterNameIsRefusedBeforeTheRoute) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Get(nullptr, nullptr, "udpWidth"), "code 87");
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_P(PrinterDataRead, PrinterThatIsNotThere) {
    EXPECT_EQ(Get("Nobody", nullptr, "udpWidth"), OfFamily() == Family::Windows9x ? "code 2" : "code 1801");
}

struct FailingStep {
    Family family;
    const char* call;
    std::size_t nth;
    DWORD code;
};
const FailingStep kFailingSteps[] = {
    {Family::Windows9x, "RegOpenKeyExA", 1, ERROR_ACCESS_DENIED},
    {Family::Windows9x, "RegQueryValueExA", 1, ERROR_ACCESS_DENIED},
    {Family::Windows9x, "HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY},
    {Family::Windows9x, "RegQueryValueExA", 2, ERROR_MORE_DATA},
    {Family::Nt4, "OpenPrinterA", 1, ERROR_ACCESS_DENIED},
    {Family::Nt4, "GetPrinterDataA", 1, RPC_S_CALL_FAILED},
    {Family::Nt4, "HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY},
    {Family::Nt4, "GetPrinterDataA", 2, ERROR_MORE_DATA},
    {Family::Windows2000, "LoadLibraryA", 1, ERROR_MOD_NOT_FOUND},
    {Family::Windows2000, "GetProcAddress", 1, ERROR_PROC_NOT_FOUND},
    {Family::Windows2000, "OpenPrinterA", 1, ERROR_ACCESS_DENIED},
    {Family::Windows2000, "GetPrinterDataExA", 1, RPC_S_CALL_FAILED},
    {Family::Windows2000, "HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY},
    {Family::Windows2000, "GetPrinterDataExA", 2, ERROR_MORE_DATA},
};

TEST_P(PrinterDataRead, EveryFailedCallIsTheResult) {
    Put("PrinterDriverData", "udpWidth", REG_BINARY, "abcd");
    for (const FailingStep& step : kFailingSteps) {
        if (step.family != OfFamily()) {
            continue;
        }
        Test().TurnLogOn(1);
        faults::Reset();
        faults::FailCall(step.call, step.nth, step.code);
        EXPECT_EQ(Get("P1", nullptr, "udpWidth"), "code " + std::to_string(step.code)) << step.call << step.nth;
        EXPECT_EQ(faults::LastFailed(), step.call);
        EXPECT_EQ(Test().TakeLog(), LogOf(step.code)) << step.call << step.nth;
    }
}

// ---- the registry read of texts ---------------------------------------------------------------------------------

class PrinterText2k : public MachineTest {
  protected:
    PrinterText2k() : MachineTest("win2000") {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        Machine().Registry().Set(std::string(kPrintersOn) + "\\P1\\PrinterDriverData", "CustomComment", REG_SZ,
                                 std::string_view("text\0", 5));
    }
};

/// Makes the nth registry call of a kind fail with 5, and the thread's last error another one.
class FailingRegistry {
  public:
    FailingRegistry(std::string_view call, int nth, DWORD lastError) {
        s_left = nth;
        s_lastError = lastError;
        if (call == "RegOpenKeyExA") {
            m_replaced.table.RegOpenKeyExA = [](HKEY key, LPCSTR name, DWORD options, REGSAM access, PHKEY opened) {
                return Fails() ? LSTATUS{ERROR_ACCESS_DENIED}
                               : s_below->RegOpenKeyExA(key, name, options, access, opened);
            };
        } else {
            m_replaced.table.RegQueryValueExA = [](HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                                   LPDWORD size) {
                return Fails() ? LSTATUS{ERROR_ACCESS_DENIED}
                               : s_below->RegQueryValueExA(key, name, reserved, type, data, size);
            };
        }
    }

  private:
    static bool Fails() {
        if (--s_left == 0) {
            simulated::lastError = s_lastError;
            return true;
        }
        return false;
    }
    static const PlatformTable* Below() { return s_below = &Platform(); }

    static inline const PlatformTable* s_below = nullptr;
    static inline int s_left = 0;
    static inline DWORD s_lastError = 0;
    const PlatformTable* m_below = Below();  ///< before the table is replaced
    ReplacedOperations m_replaced;
};

TEST_F(PrinterText2k, FailedOpenGivesTheLastErrorAndNotItsOwnCode) {
    for (int nth = 1; nth <= 3; ++nth) {
        FailingRegistry failing("RegOpenKeyExA", nth, 4711);
        EXPECT_EQ(Get("P1", nullptr, "CustomComment"), "code 4711") << nth;
    }
}

TEST_F(PrinterText2k, FailedOpenWithoutALastErrorReadsAsEmpty) {
    FailingRegistry failing("RegOpenKeyExA", 3, 0);
    EXPECT_EQ(Get("P1", nullptr, "CustomComment"), "0:");
}

TEST_F(PrinterText2k, FailedOpenThatLeavesTheLastErrorGivesAnOldOne) {
    faults::FailCall("RegOpenKeyExA", 1, ERROR_ACCESS_DENIED);
    // That of the enumeration's first step.
    EXPECT_EQ(Get("P1", nullptr, "CustomComment"), "code 122");
}

TEST_F(PrinterText2k, FailedQueryGivesTheLastError) {
    FailingRegistry failing("RegQueryValueExA", 2, 4711);
    EXPECT_EQ(Get("P1", nullptr, "CustomComment"), "code 4711");
}

TEST_F(PrinterText2k, FailedQueryForTheSizeIsNotLookedAt) {
    FailingRegistry failing("RegQueryValueExA", 1, 4711);
    // The second query meets a buffer without room.
    EXPECT_EQ(Get("P1", nullptr, "CustomComment"), "code 4711");
}

TEST_F(PrinterText2k, NoMemory) {
    // The enumeration of the connection test takes the first block.
    faults::FailCall("HeapAlloc", 2, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Get("P1", nullptr, "CustomComment"), "code 8");
}

TEST_F(PrinterText2k, TextOfAConnectionIsPresentAndEmpty) {
    ShareOnTheNetwork(Test());
    char name[] = "\\\\server\\Laser";
    ASSERT_TRUE(simulated::AddPrinterConnectionA(name));
    static const PlatformTable* s_below = nullptr;
    s_below = &Platform();
    ReplacedOperations replaced;
    // A server that answers with a text.
    static const auto s_read = [](HANDLE, LPCSTR, LPCSTR, LPDWORD type, LPBYTE, DWORD, LPDWORD needed) -> DWORD {
        *type = REG_SZ;
        *needed = 5;
        return ERROR_MORE_DATA;
    };
    replaced.table.GetProcAddress = [](HMODULE module, LPCSTR symbol) -> FARPROC {
        return std::string_view(symbol) == "GetPrinterDataExA"
                   ? AsExport(static_cast<DWORD (*)(HANDLE, LPCSTR, LPCSTR, LPDWORD, LPBYTE, DWORD, LPDWORD)>(s_read))
                   : s_below->GetProcAddress(module, symbol);
    };
    replaced.table.OpenPrinterA = [](LPSTR printer, LPHANDLE handle, LPPRINTER_DEFAULTSA) -> BOOL {
        return s_below->OpenPrinterA(printer, handle, nullptr);
    };
    Test().TurnLogOn(1);
    EXPECT_EQ(Get(name, nullptr, "CustomComment"), "0:");
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetPrinterData2k() - Start", "GetPrinterData2kHelper() - Start",
                                              "GetPrinterData2kHelper() - End(0)", "GetPrinterData2k() - End(0)"));
}

TEST(PrinterDataReadWithoutRoute, IsNotServed) {
    TestMachine test(SystemWithoutRoute());
    EXPECT_EQ(Get("P1", nullptr, "udpWidth"), "code 120");
}

}  // namespace
}  // namespace pikel
