// The default printer: which it is, whether a printer is it, and making a printer it.
#include "printer/default_printer.h"

#include <array>
#include <cstring>

#include "machine/desktop/desktop.h"
#include "machine/operations.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kDevices[] = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Devices";

/// A caller's buffer, filled with '#' and closed by a NUL behind the size that the call is told of.
class Buffer {
  public:
    Buffer() { m_bytes.fill('#'); }
    DWORD Get(DWORD size) {
        m_bytes.fill('#');
        m_bytes[size] = '\0';
        return DoGetDefaultPrinter(m_bytes.data(), size);
    }
    std::string Text() const { return m_bytes.data(); }
    bool IsUntouched() const { return m_bytes[0] == '#' || m_bytes[0] == '\0'; }

  private:
    std::array<char, 600> m_bytes{};
};

class DefaultPrinterOnEverySystem : public EverySystemTest {
  protected:
    bool Is9x() const { return Is9xName(GetParam()); }
    bool IsNt4() const { return IsNt4Name(GetParam()); }
    bool Is2000() const { return !Is9x() && !IsNt4(); }
    void AddTwoPrinters() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        AddPrinterTo(Test(), "Laser");
    }
    /// Takes the default away that the system itself may have chosen.
    void ForgetDefault() {
        if (IsNt4()) {
            simulated::WriteProfileStringA("windows", "device", nullptr);
        }
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(DefaultPrinterOnEverySystem);

TEST_P(DefaultPrinterOnEverySystem, IsToldByName) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    Buffer buffer;
    EXPECT_EQ(buffer.Get(500), 0u);
    EXPECT_EQ(buffer.Text(), "Laser");
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 1u);
    EXPECT_EQ(DoIsDefaultPrinter("P1"), 0u);
}

TEST_P(DefaultPrinterOnEverySystem, SizeMustBeGreaterThanTheName) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    Buffer buffer;
    EXPECT_EQ(buffer.Get(6), 0u);
    EXPECT_EQ(buffer.Text(), "Laser");
    for (DWORD size : {5u, 4u, 1u, 0u}) {
        EXPECT_EQ(buffer.Get(size), ERROR_INVALID_PARAMETER) << size;
        EXPECT_TRUE(buffer.IsUntouched()) << size;
    }
}

TEST_P(DefaultPrinterOnEverySystem, MachineWithoutPrintersHasNone) {
    ForgetDefault();
    simulated::lastError = 0;
    Buffer buffer;
    // On NT 4 the code is what the profile left behind, which may be 0 as well.
    const DWORD code = buffer.Get(500);
    EXPECT_EQ(code, IsNt4() ? simulated::lastError : 0u);
    EXPECT_TRUE(buffer.IsUntouched());
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
}

TEST_P(DefaultPrinterOnEverySystem, NamesCompareWithoutRegardToCase) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    EXPECT_EQ(DoIsDefaultPrinter("LASER"), 1u);
    EXPECT_EQ(DoIsDefaultPrinter("lase"), 0u);
    EXPECT_EQ(DoIsDefaultPrinter(""), 0u);
}

TEST_P(DefaultPrinterOnEverySystem, NullArgumentsAreRefusedInSilence) {
    Test().TurnLogOn(1);
    EXPECT_EQ(DoGetDefaultPrinter(nullptr, 100), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoIsDefaultPrinter(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoSetDefaultPrinter(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_EQ(IsDefaultPrinter(nullptr), 0u);
}

TEST_P(DefaultPrinterOnEverySystem, GettingIsLoggedWithTheName) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    Test().TurnLogOn(1);
    Buffer buffer;
    EXPECT_EQ(buffer.Get(500), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetDefaultPrinter() Start", "DoGetDefaultPrinter(Laser) End(0)"));
}

TEST_P(DefaultPrinterOnEverySystem, LogShowsNoMoreOfTheBufferThanItsSize) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    Test().TurnLogOn(1);
    // A block of its own, so that a byte read behind it would be seen.
    auto buffer = std::make_unique<char[]>(3);
    std::memcpy(buffer.get(), "abc", 3);
    EXPECT_EQ(DoGetDefaultPrinter(buffer.get(), 3), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoGetDefaultPrinter(buffer.get(), 0), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetDefaultPrinter() Start", "DoGetDefaultPrinter(abc) End(87)",
                                              "DoGetDefaultPrinter() Start", "DoGetDefaultPrinter() End(87)"));
}

TEST_P(DefaultPrinterOnEverySystem, AskingIsLoggedWithTheAnswer) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    Test().TurnLogOn(1);
    DoIsDefaultPrinter("Laser");
    DoIsDefaultPrinter("P1");
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoIsDefaultPrinter(Laser) Start", "DoIsDefaultPrinter() End(1)",
                                              "DoIsDefaultPrinter(P1) Start", "DoIsDefaultPrinter() End(0)"));
}

TEST_P(DefaultPrinterOnEverySystem, AskingTakesTheCallsOfItsSystem) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    const std::vector<std::string> calls = {"OpenPrinterA",      "GetPrinterA",        "ClosePrinter",
                                            "GetProfileStringA", "LoadLibraryA",       "GetProcAddress",
                                            "EnumPrintersA",     "GetDefaultPrinterA", "FreeLibrary"};
    Test().TakeCalls();
    DoIsDefaultPrinter("Laser");
    const std::vector<std::string> asking = Test().TakeCallNames(calls);
    Buffer buffer;
    buffer.Get(500);
    const std::vector<std::string> getting = Test().TakeCallNames(calls);
    if (Is9x()) {
        EXPECT_THAT(asking, ElementsAre("OpenPrinterA", "GetPrinterA", "GetPrinterA", "ClosePrinter"));
        EXPECT_THAT(getting, ElementsAre("EnumPrintersA", "EnumPrintersA"));
    } else if (IsNt4()) {
        EXPECT_THAT(asking, ElementsAre("GetProfileStringA"));
        EXPECT_EQ(getting, asking);
    } else {
        EXPECT_THAT(asking, ElementsAre("LoadLibraryA", "GetProcAddress", "GetDefaultPrinterA", "FreeLibrary"));
        EXPECT_EQ(getting, asking);
    }
}

TEST_P(DefaultPrinterOnEverySystem, CanBeSet) {
    AddTwoPrinters();
    if (IsNt4()) {
        Machine().Registry().SetText(kDevices, "P1", "winspool,Ne01:");
        Machine().Registry().SetText(kDevices, "Laser", "winspool,Ne02:");
    }
    for (const char* name : {"P1", "Laser", "P1"}) {
        EXPECT_EQ(DoSetDefaultPrinter(name), 0u) << name;
        Buffer buffer;
        EXPECT_EQ(buffer.Get(500), 0u);
        EXPECT_EQ(buffer.Text(), name);
    }
    EXPECT_EQ(DoIsDefaultPrinter("P1"), 1u);
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
}

std::string SetRoutineOf(std::string_view system) {
    return Is9xName(system) ? "SetDefaultPrinter9x" : IsNt4Name(system) ? "SetDefaultPrinterNT" : "SetDefaultPrinter2K";
}

TEST_P(DefaultPrinterOnEverySystem, SettingIsLogged) {
    AddTwoPrinters();
    Machine().Registry().SetText(kDevices, "Laser", "winspool,Ne02:");
    Test().TurnLogOn(1);
    const std::string routine = SetRoutineOf(GetParam());
    EXPECT_EQ(DoSetDefaultPrinter("Laser"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetDefaultPrinter(Laser) Start", routine + "() - Start",
                                              routine + "() - End(0)", "DoSetDefaultPrinter End(0)"));
}

TEST_P(DefaultPrinterOnEverySystem, UnknownPrinterIsRefused) {
    AddTwoPrinters();
    MakeDefaultOn(Test(), "Laser");
    Test().TurnLogOn(1);
    const std::string routine = SetRoutineOf(GetParam());
    EXPECT_EQ(DoSetDefaultPrinter("Nobody"), ERROR_INVALID_PRINTER_NAME);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetDefaultPrinter(Nobody) Start", routine + "() - Start",
                                              routine + "() - End(1801)", "DoSetDefaultPrinter End(1801)"));
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 1u);
}

TEST_P(DefaultPrinterOnEverySystem, RoutinesRefuseANullName) {
    Test().TurnLogOn(1);
    EXPECT_EQ(SetDefaultPrinter9x(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetDefaultPrinterNT(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetDefaultPrinter2K(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("SetDefaultPrinter9x() - Start", "SetDefaultPrinter9x() - End(87)",
                                              "SetDefaultPrinterNT() - Start", "SetDefaultPrinterNT() - End(87)",
                                              "SetDefaultPrinter2K() - Start", "SetDefaultPrinter2K() - End(87)"));
}

// ---- 9x family --------------------------------------------------------------------------------------------------

class DefaultPrinter9x : public MachineTest {
  protected:
    DefaultPrinter9x() {
        Start("win98");
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        AddPrinterTo(Test(), "Laser");
        MakeDefaultOn(Test(), "Laser");
        Test().TakeCalls();
    }
};

TEST_F(DefaultPrinter9x, IsNotWrittenAgain) {
    EXPECT_EQ(DoSetDefaultPrinter("Laser"), 0u);
    EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "GetPrinterA", "SetPrinterA", "ClosePrinter"}),
                ElementsAre("OpenPrinterA", "GetPrinterA", "GetPrinterA", "ClosePrinter"));
}

TEST_F(DefaultPrinter9x, IsWrittenAtLevel5WithItsOtherAttributes) {
    static PRINTER_INFO_5A s_before;
    static std::string s_written;
    static const PlatformTable* s_below = &Platform();
    s_below = &Platform();
    const PrinterFacts before = *PrinterOn(Test(), "P1");
    ReplacedOperations replaced;
    replaced.table.SetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD command) -> BOOL {
        EXPECT_EQ(level, 5u);
        EXPECT_EQ(command, 0u);
        s_before = *reinterpret_cast<PRINTER_INFO_5A*>(data);
        s_written = s_before.pPrinterName;
        return s_below->SetPrinterA(handle, level, data, command);
    };
    EXPECT_EQ(DoSetDefaultPrinter("p1"), 0u);
    EXPECT_EQ(s_written, "P1");
    EXPECT_EQ(s_before.Attributes, before.attributes | PRINTER_ATTRIBUTE_DEFAULT);
    EXPECT_EQ(s_before.DeviceNotSelectedTimeout, before.notSelectedTimeout);
    EXPECT_EQ(DoIsDefaultPrinter("P1"), 1u);
}

TEST_F(DefaultPrinter9x, IsTheFirstEntryWithTheFlag) {
    static PRINTER_INFO_5A s_infos[3];
    static char s_names[3][8] = {"One", "Two", "Three"};
    for (int i = 0; i < 3; ++i) {
        s_infos[i] = {s_names[i], nullptr, i == 0 ? DWORD{PRINTER_ATTRIBUTE_LOCAL} : DWORD{PRINTER_ATTRIBUTE_DEFAULT},
                      0, 0};
    }
    ReplacedOperations replaced;
    replaced.table.EnumPrintersA = [](DWORD flags, LPSTR name, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed,
                                      LPDWORD count) -> BOOL {
        EXPECT_EQ(flags, 6u);
        EXPECT_EQ(name, nullptr);
        EXPECT_EQ(level, 5u);
        *needed = sizeof s_infos;
        *count = 0;
        if (size < sizeof s_infos) {
            Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return FALSE;
        }
        std::memcpy(buffer, s_infos, sizeof s_infos);
        *count = 3;
        return TRUE;
    };
    Buffer buffer;
    EXPECT_EQ(buffer.Get(4), 0u);
    EXPECT_EQ(buffer.Text(), "Two");
    s_infos[1].pPrinterName = nullptr;  // no name is an empty one
    EXPECT_EQ(buffer.Get(4), 0u);
    EXPECT_EQ(buffer.Text(), "");
    s_infos[1].Attributes = s_infos[2].Attributes = 0;
    EXPECT_EQ(buffer.Get(4), 0u);
    EXPECT_TRUE(buffer.IsUntouched());
}

TEST_F(DefaultPrinter9x, FlagDecidesAndNotTheName) {
    static PRINTER_INFO_5A s_info;
    s_info = {};
    s_info.Attributes = PRINTER_ATTRIBUTE_DEFAULT;
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = [](HANDLE, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) -> BOOL {
        EXPECT_EQ(level, 5u);
        *needed = sizeof s_info;
        if (size < sizeof s_info) {
            Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return FALSE;
        }
        std::memcpy(buffer, &s_info, sizeof s_info);
        return TRUE;
    };
    EXPECT_EQ(DoIsDefaultPrinter("P1"), 1u);
    s_info.Attributes = ~DWORD{PRINTER_ATTRIBUTE_DEFAULT};
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
}

struct FailingCall {
    const char* call;
    std::size_t nth;
    DWORD code;
};

TEST_F(DefaultPrinter9x, FailedEnumerationIsTheResultOfGetting) {
    for (const FailingCall& failing : {FailingCall{"EnumPrintersA", 1, ERROR_ACCESS_DENIED},
                                       FailingCall{"EnumPrintersA", 2, ERROR_INSUFFICIENT_BUFFER}}) {
        faults::Reset();
        faults::FailCall(failing.call, failing.nth, failing.code);
        Buffer buffer;
        EXPECT_EQ(buffer.Get(100), failing.code);
        EXPECT_TRUE(buffer.IsUntouched());
    }
    Machine().Heap().FailAllocation(0, false);
    Buffer buffer;
    EXPECT_EQ(buffer.Get(100), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(DefaultPrinter9x, AskingIsNeverAnError) {
    for (const FailingCall& failing :
         {FailingCall{"OpenPrinterA", 1, ERROR_INVALID_PRINTER_NAME},
          FailingCall{"GetPrinterA", 1, ERROR_ACCESS_DENIED}, FailingCall{"GetPrinterA", 2, ERROR_ACCESS_DENIED}}) {
        faults::Reset();
        faults::FailCall(failing.call, failing.nth, failing.code);
        EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
        EXPECT_EQ(faults::LastFailed(), failing.call);
    }
    faults::Reset();
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
}

TEST_F(DefaultPrinter9x, FailedStepIsTheResultOfSetting) {
    for (const FailingCall& failing :
         {FailingCall{"OpenPrinterA", 1, ERROR_ACCESS_DENIED}, FailingCall{"GetPrinterA", 1, ERROR_INVALID_LEVEL},
          FailingCall{"GetPrinterA", 2, ERROR_INVALID_HANDLE}, FailingCall{"SetPrinterA", 1, ERROR_ACCESS_DENIED}}) {
        faults::Reset();
        faults::FailCall(failing.call, failing.nth, failing.code);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoSetDefaultPrinter("P1"), failing.code) << failing.call;
        EXPECT_EQ(faults::LastFailed(), failing.call);
        EXPECT_THAT(Test().TakeLog(), Contains("SetDefaultPrinter9x() - End(" + std::to_string(failing.code) + ")"));
        EXPECT_EQ(DoIsDefaultPrinter("Laser"), 1u);
    }
}

TEST_F(DefaultPrinter9x, ReadWithoutDataIsNoSuccessOfSetting) {
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = [](HANDLE, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_INVALID_DATA);
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
}

// ---- NT 4 -------------------------------------------------------------------------------------------------------

class DefaultPrinterNT : public MachineTest {
  protected:
    DefaultPrinterNT() {
        Start("nt4");
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        Machine().Registry().SetText(kDevices, "P1", "winspool,Ne01:");
        SetProfile("Laser,winspool,LPT1:");
        Test().TakeCalls();
    }
    static void SetProfile(const char* device) { simulated::WriteProfileStringA("windows", "device", device); }
    static std::string Profile() {
        char device[1200] = {};
        simulated::GetProfileStringA("windows", "device", "", device, sizeof device);
        return device;
    }
};

TEST_F(DefaultPrinterNT, IsTheTextInFrontOfTheFirstComma) {
    struct Case {
        const char* device;
        const char* name;
    };
    for (const Case& oneCase :
         {Case{"abc,winspool,LPT1:", "abc"}, Case{"abc", "abc"}, Case{"a b,c,d", "a b"}, Case{",winspool", ""}}) {
        SetProfile(oneCase.device);
        Buffer buffer;
        EXPECT_EQ(buffer.Get(100), 0u) << oneCase.device;
        EXPECT_EQ(buffer.Text(), oneCase.name);
        EXPECT_EQ(DoIsDefaultPrinter(oneCase.name), 1u) << oneCase.device;
    }
    SetProfile("abc,winspool");
    EXPECT_EQ(DoIsDefaultPrinter("ABC"), 1u);
    EXPECT_EQ(DoIsDefaultPrinter("abc,winspool"), 0u);
}

TEST_F(DefaultPrinterNT, ProfileIsReadIntoABufferOf520Bytes) {
    const std::string name(600, 'n');
    SetProfile(name.c_str());
    Buffer buffer;
    EXPECT_EQ(buffer.Get(599), 0u);
    EXPECT_EQ(buffer.Text(), std::string(519, 'n'));
    EXPECT_THAT(Test().TakeCalls(), Contains("GetProfileStringA(\"windows\", \"device\", \"\", &, 0x208) = 0x207"));
}

TEST_F(DefaultPrinterNT, ProfileThatFillsTheBufferWithoutANulIsBounded) {
    ReplacedOperations replaced;
    replaced.table.GetProfileStringA = [](LPCSTR, LPCSTR, LPCSTR, LPSTR text, DWORD size) -> DWORD {
        std::memset(text, 'n', size);
        return size;
    };
    Buffer buffer;
    EXPECT_EQ(buffer.Get(599), 0u);
    EXPECT_EQ(buffer.Text(), std::string(520, 'n'));
}

TEST_F(DefaultPrinterNT, NoProfileTextGivesTheLastErrorWhichCanBeZero) {
    static DWORD s_code;
    ReplacedOperations replaced;
    replaced.table.GetProfileStringA = [](LPCSTR, LPCSTR, LPCSTR, LPSTR, DWORD) -> DWORD {
        Platform().SetLastError(s_code);
        return 0;
    };
    for (DWORD code : {0u, 2u, 1010u}) {
        s_code = code;
        Test().TurnLogOn(1);
        Buffer buffer;
        EXPECT_EQ(buffer.Get(3), code);
        EXPECT_TRUE(buffer.IsUntouched());
        EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetDefaultPrinter() Start",
                                                  "DoGetDefaultPrinter(###) End(" + std::to_string(code) + ")"));
        EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
    }
}

TEST_F(DefaultPrinterNT, SettingWritesTheCallersSpellingAndTheDevice) {
    EXPECT_EQ(DoSetDefaultPrinter("p1"), 0u);
    EXPECT_EQ(Profile(), "p1,winspool,Ne01:");
}

TEST_F(DefaultPrinterNT, SettingTakesItsCallsInOrder) {
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
    EXPECT_THAT(Test().TakeCallNames({"OpenPrinterA", "GetPrinterA", "ClosePrinter", "RegOpenKeyExA",
                                      "RegQueryValueExA", "WriteProfileStringA", "SendMessageTimeoutA", "RegCloseKey"}),
                ElementsAre("OpenPrinterA", "GetPrinterA", "GetPrinterA", "ClosePrinter", "RegOpenKeyExA",
                            "RegQueryValueExA", "WriteProfileStringA", "SendMessageTimeoutA", "RegCloseKey"));
}

TEST_F(DefaultPrinterNT, SettingCallsCarryWhatIsExpected) {
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
    const std::vector<std::string> calls = Test().TakeCalls();
    EXPECT_THAT(calls, Contains(::testing::StartsWith("RegOpenKeyExA(0x80000001, \"Software\\\\Microsoft\\\\Windows "
                                                      "NT\\\\CurrentVersion\\\\Devices\", 0x0, 0x20019, &)")));
    EXPECT_THAT(calls, Contains(::testing::ContainsRegex("RegQueryValueExA\\(0x[0-9a-f]+, \"P1\", null, &, &, &\\)")));
    EXPECT_THAT(calls, Contains("WriteProfileStringA(\"windows\", \"device\", \"P1,winspool,Ne01:\") = 0x1"));
    EXPECT_THAT(calls,
                Contains(::testing::StartsWith("SendMessageTimeoutA(0xffff, 0x1a, 0x0, 0x0, 0x0, 0x3e8, null)")));
}

TEST_F(DefaultPrinterNT, DeviceValueIsAskedForUnderTheSpoolersSpellingOfTheName) {
    EXPECT_EQ(DoSetDefaultPrinter("p1"), 0u);
    const std::vector<std::string> calls = Test().TakeCalls();
    EXPECT_THAT(calls, Contains(::testing::ContainsRegex("RegQueryValueExA\\(0x[0-9a-f]+, \"P1\", null, &, &, &\\)")));
    EXPECT_THAT(calls, Contains("WriteProfileStringA(\"windows\", \"device\", \"p1,winspool,Ne01:\") = 0x1"));
}

TEST_F(DefaultPrinterNT, SettingTellsEveryWindow) {
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
    ASSERT_EQ(Machine().Desktop().sent.size(), 1u);
    const simulated::SentMessage& message = Machine().Desktop().sent[0];
    EXPECT_EQ(message.window, HWND_BROADCAST);
    EXPECT_EQ(message.message, 0x1Au);
    EXPECT_EQ(message.wParam, 0u);
    EXPECT_EQ(message.lParam, 0);
    EXPECT_EQ(message.timeout, 1000u);
}

TEST_F(DefaultPrinterNT, WindowThatDoesNotAnswerIsNoFailure) {
    faults::FailCall("SendMessageTimeoutA", 1, ERROR_TIMEOUT);
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
    EXPECT_EQ(Profile(), "P1,winspool,Ne01:");
}

TEST_F(DefaultPrinterNT, PrinterWithoutADeviceValueLeavesTheProfileAlone) {
    Machine().Registry().DeleteValue(kDevices, "P1");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_FILE_NOT_FOUND);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoSetDefaultPrinter(P1) Start", "SetDefaultPrinterNT() - Start",
                                              "SetDefaultPrinterNT() - End(2)", "DoSetDefaultPrinter End(2)"));
    EXPECT_EQ(Profile(), "Laser,winspool,LPT1:");
    EXPECT_THAT(Machine().Desktop().sent, IsEmpty());
}

TEST_F(DefaultPrinterNT, DeviceValueMustBeText) {
    for (DWORD type : {DWORD{REG_NONE}, DWORD{REG_EXPAND_SZ}, DWORD{REG_BINARY}, DWORD{REG_MULTI_SZ}}) {
        Machine().Registry().Set(kDevices, "P1", type, std::string_view("winspool,Ne01:\0", 15));
        EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_INVALID_DATA) << type;
    }
    EXPECT_EQ(Profile(), "Laser,winspool,LPT1:");
}

TEST_F(DefaultPrinterNT, DeviceValueMayFillItsBufferWithoutANul) {
    Machine().Registry().Set(kDevices, "P1", REG_SZ, std::string(260, 'd'));
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
    EXPECT_EQ(Profile(), "P1," + std::string(260, 'd'));
    Machine().Registry().Set(kDevices, "P1", REG_SZ, std::string(261, 'd'));
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_MORE_DATA);
}

TEST_F(DefaultPrinterNT, DeviceValueMayBeEmpty) {
    Machine().Registry().Set(kDevices, "P1", REG_SZ, "");
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
    EXPECT_EQ(Profile(), "P1,");
}

TEST_F(DefaultPrinterNT, FailedStepIsTheResultOfSetting) {
    for (const FailingCall& failing :
         {FailingCall{"OpenPrinterA", 1, ERROR_ACCESS_DENIED}, FailingCall{"GetPrinterA", 1, ERROR_INVALID_LEVEL},
          FailingCall{"GetPrinterA", 2, ERROR_INVALID_HANDLE}, FailingCall{"RegOpenKeyExA", 1, ERROR_FILE_NOT_FOUND},
          FailingCall{"RegQueryValueExA", 1, ERROR_KEY_DELETED},
          FailingCall{"WriteProfileStringA", 1, ERROR_ACCESS_DENIED}}) {
        faults::Reset();
        faults::FailCall(failing.call, failing.nth, failing.code);
        Test().TurnLogOn(1);
        EXPECT_EQ(DoSetDefaultPrinter("P1"), failing.code) << failing.call;
        EXPECT_EQ(faults::LastFailed(), failing.call);
        EXPECT_THAT(Test().TakeLog(), Contains("SetDefaultPrinterNT() - End(" + std::to_string(failing.code) + ")"));
        EXPECT_EQ(Profile(), "Laser,winspool,LPT1:") << failing.call;
        EXPECT_THAT(Machine().Desktop().sent, IsEmpty()) << failing.call;
        EXPECT_EQ(Machine().Handles().OpenCount(), 0u) << failing.call;
    }
    faults::Reset();
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(DefaultPrinterNT, ReadWithoutDataOrNameIsNoSuccessOfSetting) {
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = [](HANDLE, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_INVALID_DATA);
    replaced.table.GetPrinterA = [](HANDLE, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed) -> BOOL {
        *needed = sizeof(PRINTER_INFO_2A);
        if (size < *needed) {
            Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return FALSE;
        }
        std::memset(buffer, 0, size);
        return TRUE;
    };
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_INVALID_DATA);
    EXPECT_EQ(Profile(), "Laser,winspool,LPT1:");
}

// ---- Windows 2000 and later -------------------------------------------------------------------------------------

class DefaultPrinter2K : public MachineTest {
  protected:
    DefaultPrinter2K() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        AddPrinterTo(Test(), "Laser");
        MakeDefaultOn(Test(), "Laser");
        Test().TakeCalls();
    }
};

TEST_F(DefaultPrinter2K, SpoolerIsAskedWithABufferOf520Bytes) {
    static DWORD s_size;
    static bool s_zeroed;
    static constexpr auto kFill = [](LPSTR buffer, LPDWORD size) -> BOOL {
        s_size = *size;
        s_zeroed = std::string_view(buffer, *size) == std::string(*size, '\0');
        std::memset(buffer, 'n', *size);
        return TRUE;
    };
    ReplacedOperations replaced;
    replaced.table.GetProcAddress = [](HMODULE, LPCSTR) -> FARPROC { return AsExport(+kFill); };
    Buffer buffer;
    EXPECT_EQ(buffer.Get(599), 0u);
    EXPECT_EQ(s_size, 520u);
    EXPECT_TRUE(s_zeroed);
    EXPECT_EQ(buffer.Text(), std::string(520, 'n'));  // filled without a NUL: bounded
}

TEST_F(DefaultPrinter2K, SpoolersFailureIsNoneOfGetting) {
    for (DWORD code : {ERROR_FILE_NOT_FOUND, ERROR_INSUFFICIENT_BUFFER, RPC_S_SERVER_UNAVAILABLE}) {
        faults::Reset();
        faults::FailCall("GetDefaultPrinterA", 1, code);
        Test().TurnLogOn(1);
        Buffer buffer;
        EXPECT_EQ(buffer.Get(3), 0u);
        EXPECT_TRUE(buffer.IsUntouched());
        EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetDefaultPrinter() Start", "DoGetDefaultPrinter(###) End(0)"));
    }
}

TEST_F(DefaultPrinter2K, MissingLibraryOrEntryIsTheResult) {
    for (const FailingCall& failing : {FailingCall{"LoadLibraryA", 1, ERROR_MOD_NOT_FOUND},
                                       FailingCall{"GetProcAddress", 1, ERROR_PROC_NOT_FOUND}}) {
        faults::Reset();
        faults::FailCall(failing.call, failing.nth, failing.code, true);
        Test().TurnLogOn(1);
        Buffer buffer;
        EXPECT_EQ(buffer.Get(3), failing.code);
        EXPECT_TRUE(buffer.IsUntouched());
        EXPECT_EQ(DoSetDefaultPrinter("P1"), failing.code);
        const std::string code = std::to_string(failing.code);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre("DoGetDefaultPrinter() Start", "DoGetDefaultPrinter(###) End(" + code + ")",
                                "DoSetDefaultPrinter(P1) Start", "SetDefaultPrinter2K() - Start",
                                "SetDefaultPrinter2K() - End(" + code + ")", "DoSetDefaultPrinter End(" + code + ")"));
        EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
        EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    }
}

TEST_F(DefaultPrinter2K, SystemWithoutTheEntries) {
    Machine().Modules().RemoveExport("winspool.drv", "GetDefaultPrinterA");
    Machine().Modules().RemoveExport("winspool.drv", "SetDefaultPrinterA");
    Buffer buffer;
    EXPECT_EQ(buffer.Get(100), ERROR_PROC_NOT_FOUND);
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_PROC_NOT_FOUND);
}

TEST_F(DefaultPrinter2K, AskingIsNeverAnError) {
    faults::FailCall("GetDefaultPrinterA", 1, RPC_S_SERVER_UNAVAILABLE);
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 0u);
    EXPECT_EQ(faults::LastFailed(), "GetDefaultPrinterA");
}

TEST_F(DefaultPrinter2K, SpoolersFailureIsTheResultOfSetting) {
    faults::FailCall("SetDefaultPrinterA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(DoIsDefaultPrinter("Laser"), 1u);
}

TEST_F(DefaultPrinter2K, SettingTakesItsCallsInOrder) {
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
    EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", "SetDefaultPrinterA", "FreeLibrary"}),
                ElementsAre("LoadLibraryA", "GetProcAddress", "SetDefaultPrinterA", "FreeLibrary"));
}

TEST(DefaultPrinterWithoutRoute, IsNotServed) {
    TestMachine test(SystemWithoutRoute());
    Buffer buffer;
    EXPECT_EQ(buffer.Get(100), ERROR_CALL_NOT_IMPLEMENTED);
    EXPECT_EQ(DoSetDefaultPrinter("P1"), ERROR_CALL_NOT_IMPLEMENTED);
    EXPECT_EQ(DoIsDefaultPrinter("P1"), 0u);
}

}  // namespace
}  // namespace pikel
