#include "driver/language_monitor.h"

#include "frame/log.h"
#include "support/calls.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

constexpr char kMonitors[] = "HKLM\\System\\CurrentControlSet\\Control\\Print\\Monitors\\";
constexpr char kLibrary[] = "C:\\Program Files\\pikel\\pikel.dll";  // any file that a loader takes

/// Tests with the monitor "Aurora Monitor", whose DLL lies in the system folder.
class LanguageMonitorTest : public MachineTest {
  protected:
    void PutMonitorFile() {
        ASSERT_EQ(Machine().Files().Copy(kLibrary, DllPath(), false), 0u);
        ForgetCalls(Test());
    }
    std::string DllPath() { return Machine().System().systemDirectory + "\\nlmon.dll"; }
    DWORD Add() { return AddLanguageMonitor(&m_info); }
    bool IsRegistered() { return Machine().Registry().KeyExists(std::string(kMonitors) + "Aurora Monitor"); }

    char m_name[20] = "Aurora Monitor";
    char m_dll[20] = "nlmon.dll";
    MONITOR_INFO_2A m_info = {m_name, nullptr, m_dll};
};

class LanguageMonitor : public LanguageMonitorTest {};

TEST_F(LanguageMonitor, RecordIsRequired) {
    Test().TurnLogOn();
    EXPECT_EQ(AddLanguageMonitor(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(LanguageMonitor, WithoutANameIsNoneAndSucceeds) {
    char empty[1] = "";
    for (LPSTR name : {static_cast<LPSTR>(nullptr), static_cast<LPSTR>(empty)}) {
        m_info.pName = name;
        ForgetCalls(Test());
        EXPECT_EQ(Add(), 0u);
        EXPECT_THAT(Test().TakeCalls(), IsEmpty());
        Test().TurnLogOn();
        EXPECT_EQ(Add(), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre("AddLanguageMonitor() Start", "AddLanguageMonitor() End(0)"));
        ResetLog();
    }
}

TEST_F(LanguageMonitor, ThatIsRegisteredIsLeftAloneWithoutALookAtItsFile) {
    Machine().Registry().SetText(std::string(kMonitors) + "AURORA monitor", "Driver", "other.dll");
    ForgetCalls(Test());
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeCallNames(), testing::Each(AnyOf("EnumMonitorsA", "lstrcmpiA")));
    EXPECT_EQ(Machine().Registry().Text(std::string(kMonitors) + "Aurora Monitor", "Driver"), "other.dll");
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("AddLanguageMonitor() Start", "AddLanguageMonitor() End(0)"));
}

TEST_F(LanguageMonitor, EnumerationAsksForTheSizeFirst) {
    PutMonitorFile();
    Add();
    EXPECT_THAT(TakeCallsOf(Test(), {"EnumMonitorsA"}),
                ElementsAre("EnumMonitorsA(null, 0x1, null, 0x0, &, &) = 0x0 failed, last error 122",
                            MatchesRegex("EnumMonitorsA\\(null, 0x1, &, 0x[1-9a-f][0-9a-f]*, &, &\\) = 0x1")));
}

TEST_F(LanguageMonitor, FileThatNobodyHoldsIsHandedToTheSpooler) {
    PutMonitorFile();
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("AddLanguageMonitor() Start", "...Monitor(C:\\WINDOWS\\system32\\nlmon.dll) is not used",
                            "AddLanguageMonitor() End(0)"));
    EXPECT_EQ(Machine().Registry().Text(std::string(kMonitors) + "Aurora Monitor", "Driver"), "nlmon.dll");
}

TEST_F(LanguageMonitor, PlainLogTellsTheVerdictAlone) {
    PutMonitorFile();
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("...Monitor(C:\\WINDOWS\\system32\\nlmon.dll) is not used"));
}

TEST_F(LanguageMonitor, FileIsOpenedForReadingAndWritingWithoutSharing) {
    PutMonitorFile();
    Add();
    EXPECT_THAT(
        TakeCallsOf(Test(), {"GetFileAttributesA", "SetFileAttributesA", "CreateFileA", "CloseHandle", "AddMonitorA"}),
        ElementsAre(StartsWith("GetFileAttributesA("),
                    MatchesRegex("CreateFileA\\(\"C:.*nlmon.dll\", 0xc0000000, 0x0, null, 0x3, 0x80, null\\) = "
                                 "0x[0-9a-f]+"),
                    MatchesRegex("CloseHandle\\(0x[0-9a-f]+\\) = 0x1"), "AddMonitorA(null, 0x2, &) = 0x1"));
}

TEST_F(LanguageMonitor, FileThatIsHeldCountsAsThere) {
    PutMonitorFile();
    auto held = Machine().Files().HoldOpen(DllPath(), FILE_SHARE_READ);
    Test().TurnLogOn();
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("AddLanguageMonitor() Start", "...Monitor(C:\\WINDOWS\\system32\\nlmon.dll) is used",
                            "AddLanguageMonitor() End(0)"));
    EXPECT_FALSE(IsRegistered());
    EXPECT_THAT(Test().TakeCallNames({"AddMonitorA"}), IsEmpty());
}

TEST_F(LanguageMonitor, FileWithALockedRangeCountsAsThere) {
    PutMonitorFile();
    faults::FailCall("CreateFileA", 1, ERROR_LOCK_VIOLATION);
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeCallNames({"AddMonitorA"}), IsEmpty());
}

TEST_F(LanguageMonitor, FileThatCannotBeOpenedOtherwiseIsLeftToTheSpooler) {
    PutMonitorFile();
    Test().TurnLogOn(1);
    Machine().Files().Deny(DllPath());
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("*** CreateFile(C:\\WINDOWS\\system32\\nlmon.dll): Error(5) ***"));
    EXPECT_TRUE(IsRegistered());
}

TEST_F(LanguageMonitor, ReadOnlyFileIsMadeWritable) {
    PutMonitorFile();
    Machine().Files().SetAttributes(DllPath(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(Add(), 0u);
    EXPECT_EQ(Machine().Files().Attributes(DllPath()) & FILE_ATTRIBUTE_READONLY, 0u);
    EXPECT_TRUE(IsRegistered());
}

TEST_F(LanguageMonitor, FileKeepsItsOtherAttributes) {
    PutMonitorFile();
    ReplacedOperations replaced;
    replaced.table.GetFileAttributesA = [](LPCSTR) -> DWORD { return 0x27; };
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetFileAttributesA"}),
                ElementsAre(MatchesRegex("SetFileAttributesA\\(\"C:.*nlmon.dll\", 0x26\\) = 0x1")));
}

TEST_F(LanguageMonitor, MissingFileReadsAsReadOnlyAndIsLeftToTheSpooler) {
    ForgetCalls(Test());
    EXPECT_EQ(Add(), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_THAT(TakeCallsOf(Test(), {"GetFileAttributesA", "SetFileAttributesA", "CreateFileA", "AddMonitorA"}),
                ElementsAre(HasSubstr("= 0xffffffff failed"),
                            MatchesRegex("SetFileAttributesA\\(\".*\", 0xfffffffe\\) = 0x0 failed, last error 2"),
                            MatchesRegex("CreateFileA\\(.*\\) = -1 failed, last error 2"),
                            "AddMonitorA(null, 0x2, &) = 0x0 failed, last error 126"));
    Test().TurnLogOn();
    EXPECT_EQ(Add(), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_THAT(Test().TakeLog(), ElementsAre("AddLanguageMonitor() Start",
                                              "*** CreateFile(C:\\WINDOWS\\system32\\nlmon.dll): Error(2) ***",
                                              "AddMonitor Error(126)", "AddLanguageMonitor() End(126)"));
}

TEST_F(LanguageMonitor, RefusedBySpoolerGivesItsCode) {
    PutMonitorFile();
    faults::FailCall("AddMonitorA", 1, 3006);
    Test().TurnLogOn(1);
    EXPECT_EQ(Add(), 3006u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("...Monitor(C:\\WINDOWS\\system32\\nlmon.dll) is not used", "AddMonitor Error(3006)"));
    EXPECT_FALSE(IsRegistered());
}

TEST_F(LanguageMonitor, RegisteredOneIsAddedAgainWhenTheListCannotBeHad) {
    struct Case {
        const char* name;
        std::size_t nth;
        DWORD code;
    };
    PutMonitorFile();
    Machine().Registry().SetText(std::string(kMonitors) + "Aurora Monitor", "Driver", "other.dll");
    for (const Case& c : {Case{"EnumMonitorsA", 1, 1722}, Case{"EnumMonitorsA", 2, 1722}, Case{"HeapAlloc", 1, 8}}) {
        faults::Reset();
        faults::FailCall(c.name, c.nth, c.code);
        EXPECT_EQ(Add(), DWORD{ERROR_PRINT_MONITOR_ALREADY_INSTALLED}) << c.name << c.nth;
        EXPECT_THAT(Test().TakeCallNames({"AddMonitorA"}), ElementsAre("AddMonitorA"));
    }
}

TEST_F(LanguageMonitor, FirstEnumerationThatSucceedsMeansNoMonitors) {
    PutMonitorFile();
    ReplacedOperations replaced;
    replaced.table.EnumMonitorsA = [](LPSTR, DWORD, LPBYTE, DWORD, LPDWORD needed, LPDWORD count) -> BOOL {
        *needed = 0;
        *count = 5;
        return TRUE;
    };
    EXPECT_EQ(Add(), 0u);
    EXPECT_TRUE(IsRegistered());
}

TEST_F(LanguageMonitor, WithoutAFileNameIsLeftToTheSpooler) {
    m_info.pDLLName = nullptr;
    ForgetCalls(Test());
    EXPECT_NE(Add(), 0u);
    EXPECT_THAT(Test().TakeCallNames({"AddMonitorA"}), ElementsAre("AddMonitorA"));
}

TEST_F(LanguageMonitor, RecordReachesTheSpoolerAsItStands) {
    static const BYTE* seen;
    PutMonitorFile();
    ReplacedOperations replaced;
    replaced.table.AddMonitorA = [](LPSTR, DWORD, LPBYTE info) -> BOOL {
        seen = info;
        return TRUE;
    };
    EXPECT_EQ(Add(), 0u);
    EXPECT_EQ(seen, reinterpret_cast<const BYTE*>(&m_info));
    EXPECT_EQ(m_info.pName, m_name);
    EXPECT_EQ(m_info.pEnvironment, nullptr);
    EXPECT_EQ(m_info.pDLLName, m_dll);
}

class LanguageMonitorOnEverySystem : public LanguageMonitorTest, public ::testing::WithParamInterface<std::string> {
  protected:
    void SetUp() override { Start(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(LanguageMonitorOnEverySystem);

TEST_P(LanguageMonitorOnEverySystem, IsListedLookedAtAndThenAdded) {
    PutMonitorFile();
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(
        Test().TakeCallNames({"EnumMonitorsA", "GetFileAttributesA", "CreateFileA", "CloseHandle", "AddMonitorA"}),
        ElementsAre("EnumMonitorsA", "EnumMonitorsA", "GetFileAttributesA", "CreateFileA", "CloseHandle",
                    "AddMonitorA"));
    EXPECT_TRUE(IsRegistered());
    EXPECT_EQ(Add(), 0u);
    EXPECT_THAT(Test().TakeCallNames({"AddMonitorA"}), IsEmpty());
}

}  // namespace

}  // namespace pikel
