// Port creation through a port SDK library.
#include "printer/port.h"

#include <array>
#include <cstring>

#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kSdk[] = "C:\\Sdk\\ports.dll";

/// What the SDK's entry was told, and what it is to answer.
struct Told {
    std::string monitor;
    std::string portName;
    std::string queue;
    std::string configuration;
    bool allTexts = false;  ///< no BSTR was null
    int calls = 0;
};
Told g_told;
DWORD g_answer = 0;
const char16_t* g_resultText = nullptr;  ///< null: no BSTR at all
std::size_t g_resultLength = 0;

std::string Narrow(BSTR text) {
    std::string narrow;
    for (UINT i = 0; i < Platform().SysStringLen(text); ++i) {
        narrow += static_cast<char>(text[i]);
    }
    return narrow;
}

DWORD WINAPI CreateTestPort(BSTR monitor, LPSTR portName, BSTR queue, BSTR configuration, BSTR* result) {
    g_told = {Narrow(monitor),
              portName,
              Narrow(queue),
              Narrow(configuration),
              monitor != nullptr && queue != nullptr && configuration != nullptr,
              g_told.calls + 1};
    std::strcpy(portName, "CHANGED");  // the SDK works on a copy: the caller's text stays
    EXPECT_EQ(*result, nullptr);
    if (g_resultText != nullptr) {
        *result = Platform().SysAllocStringLen(g_resultText, static_cast<UINT>(g_resultLength));
    }
    return g_answer;
}

void RegisterSdk(TestMachine& test) {
    test->Modules().Register(kSdk, {{"CreatePort", AsExport(CreateTestPort)}});
    g_told = {};
    g_answer = 0x10000;
    g_resultText = nullptr;
    g_resultLength = 0;
}

void Return(std::u16string_view text) {
    g_resultText = text.data();
    g_resultLength = text.size();
}

class PortOnEverySystem : public EverySystemTest {
  protected:
    PortOnEverySystem() { RegisterSdk(Test()); }
    std::string Monitor() const {
        if (Is9xName(GetParam())) {
            return "Tarvo LPR Port";
        }
        if (GetParam() == "other") {
            return "";  // neither family
        }
        return IsNt4Name(GetParam()) ? "LPR Port" : "Standard TCP/IP Port";
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(PortOnEverySystem);

TEST_P(PortOnEverySystem, MonitorGoesByTheSystemAlone) {
    for (DWORD protocol : {0u, 1u, 0xFFFFFFFFu}) {
        EXPECT_EQ(PI_CreatePort(kSdk, "IP_10.0.0.1", protocol, "lp", 1, nullptr, 0), 0u);
        EXPECT_EQ(g_told.monitor, Monitor()) << protocol;
        EXPECT_EQ(g_told.portName, "IP_10.0.0.1");
        EXPECT_TRUE(g_told.allTexts);
    }
}

TEST_P(PortOnEverySystem, LogsEveryStep) {
    Test().TurnLogOn(1);
    EXPECT_EQ(PI_CreatePort(kSdk, "IP_10.0.0.1", 1, "lp", 1, nullptr, 0), 0u);
    EXPECT_EQ(Test().TakeLog(),
              (std::vector<std::string>{"PI_CreatePort(IP_10.0.0.1) Start", std::string("lpSdkPath ->(") + kSdk + ")",
                                        "lpQueueName ->(lp)", "PortMonitor ->(" + Monitor() + ")",
                                        "CnfigStr ->(bytecount=true)", "PI_CreatePort End(0)"}));
}

class Port : public MachineTest {
  protected:
    Port() { RegisterSdk(Test()); }
    /// Creates a port with a result buffer of that size, filled with '#' first.
    DWORD CreateInto(DWORD size) {
        m_buffer.fill('#');
        return PI_CreatePort(kSdk, "P", 0, nullptr, 0, m_buffer.data(), size);
    }
    std::array<char, 64> m_buffer{};
};

TEST_F(Port, ConfigurationGoesByTheFlags) {
    struct Case {
        DWORD protocol;
        INT byteCount;
        const char* configuration;
    };
    for (const Case& oneCase :
         {Case{0, 0, "porttype=9100"}, Case{0, 1, "porttype=9100"}, Case{0, -1, "porttype=9100"}, Case{1, 0, ""},
          Case{2, 0, ""}, Case{1, 1, "bytecount=true"}, Case{7, -1, "bytecount=true"}}) {
        Test().TurnLogOn(1);
        EXPECT_EQ(PI_CreatePort(kSdk, "P", oneCase.protocol, nullptr, oneCase.byteCount, nullptr, 0), 0u);
        EXPECT_EQ(g_told.configuration, oneCase.configuration);
        EXPECT_TRUE(g_told.allTexts);
        EXPECT_THAT(Test().TakeLog(), ::testing::Contains(std::string("CnfigStr ->(") + oneCase.configuration + ")"));
    }
}

TEST_F(Port, NullQueueIsAnEmptyTextAndIsNotLogged) {
    Test().TurnLogOn(1);
    EXPECT_EQ(PI_CreatePort(kSdk, "P", 0, nullptr, 0, nullptr, 0), 0u);
    EXPECT_EQ(g_told.queue, "");
    EXPECT_TRUE(g_told.allTexts);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_CreatePort(P) Start", "lpSdkPath ->(C:\\Sdk\\ports.dll)",
                                              "PortMonitor ->(Standard TCP/IP Port)", "CnfigStr ->(porttype=9100)",
                                              "PI_CreatePort End(0)"));
}

TEST_F(Port, EmptyQueueIsLogged) {
    Test().TurnLogOn(1);
    EXPECT_EQ(PI_CreatePort(kSdk, "P", 0, "", 0, nullptr, 0), 0u);
    EXPECT_EQ(g_told.queue, "");
    EXPECT_TRUE(g_told.allTexts);
    EXPECT_THAT(Test().TakeLog(), ::testing::Contains("lpQueueName ->()"));
}

TEST_F(Port, NameOfTwentyCharactersIsTaken) {
    std::string name(20, 'n');
    EXPECT_EQ(PI_CreatePort(kSdk, name.c_str(), 0, nullptr, 0, nullptr, 0), 0u);
    EXPECT_EQ(g_told.portName, std::string(20, 'n'));
    EXPECT_EQ(name, std::string(20, 'n'));
}

TEST_F(Port, LongerNameIsRefused) {
    for (std::size_t length : {21u, 300u}) {
        const std::string name(length, 'n');
        Test().TakeCalls();
        Test().TurnLogOn(1);
        EXPECT_EQ(PI_CreatePort(kSdk, name.c_str(), 0, nullptr, 0, nullptr, 0), ERROR_INVALID_PARAMETER);
        EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_CreatePort(" + name + ") Start", "PI_CreatePort End(87)"));
        EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA"}), IsEmpty());
    }
    EXPECT_EQ(g_told.calls, 0);
}

TEST_F(Port, EmptyNameIsTheSdksMatter) {
    EXPECT_EQ(PI_CreatePort(kSdk, "", 0, nullptr, 0, nullptr, 0), 0u);
    EXPECT_EQ(g_told.calls, 1);
}

TEST_F(Port, NullPathOrNameIsRefusedInSilence) {
    Test().TurnLogOn(1);
    EXPECT_EQ(PI_CreatePort(nullptr, "P", 0, nullptr, 0, nullptr, 0), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(PI_CreatePort(kSdk, nullptr, 0, nullptr, 0, nullptr, 0), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_EQ(g_told.calls, 0);
}

TEST_F(Port, MissingLibraryIsTheResult) {
    Test().TurnLogOn(1);
    EXPECT_EQ(PI_CreatePort("C:\\Sdk\\none.dll", "P", 0, nullptr, 0, nullptr, 0), ERROR_MOD_NOT_FOUND);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_CreatePort(P) Start", "lpSdkPath ->(C:\\Sdk\\none.dll)", "PI_CreatePort End(126)"));
}

TEST_F(Port, MissingEntryIsTheResultAndTheLibraryIsFreed) {
    Machine().Modules().Register("C:\\Sdk\\other.dll", {});
    Test().TurnLogOn(1);
    EXPECT_EQ(PI_CreatePort("C:\\Sdk\\other.dll", "P", 0, "lp", 0, nullptr, 0), ERROR_PROC_NOT_FOUND);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_CreatePort(P) Start", "lpSdkPath ->(C:\\Sdk\\other.dll)", "PI_CreatePort End(127)"));
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(Port, EveryRefusalOfTheSdkIsOneCode) {
    for (DWORD answer : {0u, 1u, 5u, 0x20000u, 0x80000u, 0x10001u, 0xFFFFFFFFu}) {
        g_answer = answer;
        Return(u"reason");
        Test().TurnLogOn(1);
        EXPECT_EQ(CreateInto(64), 0x54Fu) << answer;
        EXPECT_EQ(m_buffer[0], '#');
        EXPECT_THAT(Test().TakeLog(), ::testing::Contains("PI_CreatePort End(1359)"));
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << "a text was not freed";
    }
}

TEST_F(Port, ResultTextIsHandedOutWhereItFits) {
    Return(u"IP_10.0.0.1");
    EXPECT_EQ(CreateInto(12), 0u);
    EXPECT_STREQ(m_buffer.data(), "IP_10.0.0.1");
    EXPECT_EQ(m_buffer[12], '#');
}

TEST_F(Port, ResultTextThatDoesNotFitIsDropped) {
    Return(u"IP_10.0.0.1");
    for (DWORD size : {11u, 1u, 0u}) {
        EXPECT_EQ(CreateInto(size), 0u);
        EXPECT_EQ(std::string_view(m_buffer.data(), m_buffer.size()), std::string(64, '#')) << size;
    }
}

TEST_F(Port, EmptyOrMissingResultTextLeavesTheBuffer) {
    Return(u"");
    EXPECT_EQ(CreateInto(64), 0u);
    EXPECT_EQ(m_buffer[0], '#');
    g_resultText = nullptr;
    EXPECT_EQ(CreateInto(64), 0u);
    EXPECT_EQ(m_buffer[0], '#');
    Return(std::u16string_view(u"\0x", 2));  // as a text it is empty
    EXPECT_EQ(CreateInto(64), 0u);
    EXPECT_EQ(m_buffer[0], '#');
}

TEST_F(Port, ResultTextEndsAtItsNul) {
    Return(std::u16string_view(u"ab\0cd", 5));
    EXPECT_EQ(CreateInto(3), 0u);
    EXPECT_STREQ(m_buffer.data(), "ab");
}

TEST_F(Port, NullBufferTakesNothing) {
    Return(u"IP_10.0.0.1");
    EXPECT_EQ(PI_CreatePort(kSdk, "P", 0, nullptr, 0, nullptr, 64), 0u);
}

TEST_F(Port, TextsAreOfTheActiveCodePage) {
    Return(u"caf\u00e9");
    EXPECT_EQ(PI_CreatePort(kSdk, "P", 1, "caf\xe9", 0, m_buffer.data(), 64), 0u);
    EXPECT_EQ(g_told.queue, "caf\xe9");
    EXPECT_STREQ(m_buffer.data(), "caf\xe9");
}

TEST_F(Port, TextsAreFreedBeforeTheLibrary) {
    Return(u"done");
    Test().TakeCalls();
    EXPECT_EQ(PI_CreatePort(kSdk, "P", 1, "lp", 1, m_buffer.data(), 64), 0u);
    std::vector<std::string> calls;
    for (const std::string& call : Test().TakeCalls()) {
        if (call.starts_with("SysFreeString") || call.starts_with("FreeLibrary")) {
            calls.push_back(call.substr(0, call.starts_with("Free") ? call.find('(') : call.size()));
        }
    }
    EXPECT_THAT(calls, ElementsAre("SysFreeString(\"Standard TCP/IP Port\")", "SysFreeString(\"lp\")",
                                   "SysFreeString(\"bytecount=true\")", "SysFreeString(\"done\")", "FreeLibrary"));
}

TEST_F(Port, NoMemoryForATextIsTheResult) {
    // Monitor, queue and configuration.
    for (std::size_t nth = 1; nth <= 3; ++nth) {
        faults::Reset();
        faults::FailCall("SysAllocStringLen", nth, 0);
        EXPECT_EQ(PI_CreatePort(kSdk, "P", 1, "lp", 1, nullptr, 0), ERROR_NOT_ENOUGH_MEMORY) << nth;
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << nth;
    }
    EXPECT_EQ(g_told.calls, 0);
}

TEST_F(Port, NoMemoryForTheResultIsTheResult) {
    Return(u"done");
    faults::FailCall("HeapAlloc", 1, 0);
    EXPECT_EQ(CreateInto(64), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(m_buffer[0], '#');
}

TEST_F(Port, ResultThatCannotBeConvertedIsDropped) {
    Return(u"done");
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("WideCharToMultiByte", nth, ERROR_NO_UNICODE_TRANSLATION);
        EXPECT_EQ(CreateInto(64), 0u);
        EXPECT_EQ(faults::LastFailed(), "WideCharToMultiByte");
        EXPECT_EQ(m_buffer[0], '#') << nth;
    }
}

TEST(PortWithoutFamily, AsksForNoMonitor) {
    simulated::SystemDescription nt3 = *simulated::FindSystem("nt4");
    nt3.major = 3;
    nt3.minor = 51;
    for (const simulated::SystemDescription& system : {SystemWithoutRoute(), nt3}) {
        TestMachine test(system);
        RegisterSdk(test);
        EXPECT_EQ(PI_CreatePort(kSdk, "P", 0, nullptr, 0, nullptr, 0), 0u);
        EXPECT_EQ(g_told.monitor, "");
        EXPECT_TRUE(g_told.allTexts);
    }
}

TEST(PortOfTheLatest9x, GoesByTheFamily) {
    simulated::SystemDescription system = *simulated::FindSystem("winme");
    system.minor = 91;  // no known version of the family
    TestMachine test(system);
    RegisterSdk(test);
    EXPECT_EQ(PI_CreatePort(kSdk, "P", 0, nullptr, 0, nullptr, 0), 0u);
    EXPECT_EQ(g_told.monitor, "Tarvo LPR Port");
}

class MachinesOwnSdk : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(MachinesOwnSdk);

TEST_P(MachinesOwnSdk, CreatesAPortThatAPrinterCanUse) {
    if (GetParam() == "other") {
        return;  // no monitor is named there
    }
    char result[260] = {};
    ASSERT_EQ(
        PI_CreatePort("C:\\Program Files\\pikel\\portsdk.dll", "IP_10.0.0.7", 0, nullptr, 0, result, sizeof result),
        0u);
    InstallDriver(Test());
    PrinterText printer("P1");
    std::string port = "IP_10.0.0.7";
    printer.Record().pPortName = port.data();
    HANDLE handle = Platform().AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&printer.Record()));
    EXPECT_NE(handle, nullptr) << Platform().GetLastError();
    Platform().ClosePrinter(handle);
}

}  // namespace
}  // namespace pikel
