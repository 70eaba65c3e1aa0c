// The lines of the log and the three places that they go to.
#include "frame/log.h"

#include <new>
#include <string>
#include <vector>

#include "machine/desktop/desktop.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing_support::MachineTest;
using testing_support::ReadFileOn;
using testing_support::ReplacedOperations;
using testing_support::WriteFileOn;

constexpr char kLog[] = "C:\\pikel.log";
constexpr char kStamp[] = "[--- Date:03/09/07 , Time:08:05:06 ---]  ";
constexpr std::size_t kStampLength = sizeof(kStamp) - 1;
constexpr std::size_t kLongestMessage = 1024 - 2 - kStampLength;

class Log : public MachineTest {
  protected:
    void SetUp() override {
        SYSTEMTIME time = {};
        time.wYear = 2007;
        time.wMonth = 3;
        time.wDay = 9;
        time.wHour = 8;
        time.wMinute = 5;
        time.wSecond = 6;
        time.wMilliseconds = 789;
        Machine().SetLocalTime(time);
        g_logSettings = {
            .debugEnabled = true, .logToFile = true, .logToDebugger = false, .logLevel = 1, .logFilePath = kLog};
        Test().TakeCalls();
    }

    std::string TakeFile() {
        std::string text = Machine().Files().Read(kLog).value_or("");
        Machine().Files().Delete(kLog);
        return text;
    }
    std::vector<std::string>& Debugger() { return Machine().Desktop().debugOutput; }
    std::vector<simulated::SentMessage>& Sent() { return Machine().Desktop().sent; }
};

TEST_F(Log, StampsALineWithLocalDateAndTime) {
    WriteLog("PI_KEL_AddPrinter End:(0x%08x)", 0x900e0057u);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "PI_KEL_AddPrinter End:(0x900e0057)\r\n");
}

TEST_F(Log, WritesTwoDigitsInEachPlaceOfTheStamp) {
    SYSTEMTIME time = {};
    time.wYear = 2010;
    time.wMonth = 12;
    time.wDay = 31;
    time.wHour = 23;
    time.wMinute = 59;
    time.wSecond = 58;
    Machine().SetLocalTime(time);
    WriteLog("x");
    EXPECT_EQ(TakeFile(), "[--- Date:12/31/10 , Time:23:59:58 ---]  x\r\n");
}

TEST_F(Log, WritesOnlyTheStampForAnEmptyText) {
    WriteLog("%s", "");
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "\r\n");
    const std::string format;  // no literal, which the compiler would refuse
    WriteLog(format.c_str(), 0);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "\r\n");
}

TEST_F(Log, TakesPercentSignsInArgumentsAsText) {
    WriteLog("%s", "100%s%n");
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "100%s%n\r\n");
}

TEST_F(Log, AppendsToWhatTheFileHolds) {
    WriteFileOn(Machine(), kLog, "old\r\n");
    WriteLog("one");
    WriteLog("two");
    EXPECT_EQ(TakeFile(), std::string("old\r\n") + kStamp + "one\r\n" + kStamp + "two\r\n");
}

TEST_F(Log, OpensAndClosesTheFileForEveryLine) {
    WriteLog("x");
    std::vector<std::string> calls = Test().TakeCalls();
    ASSERT_THAT(calls, SizeIs(5));
    EXPECT_EQ(calls[0], "GetLocalTime(&)");
    EXPECT_THAT(calls[1],
                ::testing::StartsWith("CreateFileA(\"C:\\\\pikel.log\", 0xc0000000, 0x0, null, 0x4, 0x80, null)"));
    EXPECT_THAT(calls[2], ::testing::MatchesRegex("SetFilePointer\\(0x[0-9a-f]+, 0x0, &, 0x2\\) = 0x0"));
    EXPECT_THAT(calls[3], ::testing::MatchesRegex("WriteFile\\(0x[0-9a-f]+, &, 0x2c, &, null\\) = 0x1"));
    EXPECT_THAT(calls[4], ::testing::StartsWith("CloseHandle("));
}

// ---- gates ----------------------------------------------------------------------------------------------------------

int g_evaluations = 0;

int Evaluated() {
    return ++g_evaluations;
}

TEST_F(Log, EvaluatesAndCallsNothingWhileOff) {
    g_logSettings.debugEnabled = false;
    g_logSettings.logLevel = 2;
    g_evaluations = 0;
    ReplacedOperations replaced;
    replaced.table.GetLastError = []() -> DWORD { return static_cast<DWORD>(Evaluated()); };
    replaced.table.SetLastError = [](DWORD) { Evaluated(); };
    WriteLog("%d", Evaluated());
    WriteLogDetail("%d", Evaluated());
    WriteErrorLog(static_cast<DWORD>(Evaluated()), "x.cpp", 1);
    WriteErrorLogDetail(static_cast<DWORD>(Evaluated()), "x.cpp", 1);
    EXPECT_EQ(g_evaluations, 0);
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
}

TEST_F(Log, KeepsDetailLinesBackAtLevelOne) {
    g_evaluations = 0;
    WriteLogDetail("%d", Evaluated());
    WriteErrorLogDetail(2, "x.cpp", 1);
    EXPECT_EQ(g_evaluations, 0);
    EXPECT_EQ(TakeFile(), "");
}

TEST_F(Log, WritesDetailLinesAboveLevelOne) {
    g_logSettings.logLevel = 2;
    WriteLogDetail("detail %d", 7);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "detail 7\r\n");
    WriteErrorLogDetail(5, "x.cpp", 1);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "***** Error!!! Access is denied.\r\n [x.cpp:1] *****\r\n");
}

// ---- limits ---------------------------------------------------------------------------------------------------------

TEST_F(Log, CutsALineAt1024CharactersAndKeepsItsLineBreak) {
    WriteLog("%s", std::string(kLongestMessage, 'x').c_str());
    EXPECT_EQ(TakeFile(), kStamp + std::string(kLongestMessage, 'x') + "\r\n");
    WriteLog("%s", (std::string(kLongestMessage, 'x') + "y").c_str());
    const std::string cut = TakeFile();
    EXPECT_EQ(cut, kStamp + std::string(kLongestMessage, 'x') + "\r\n");
    EXPECT_EQ(cut.size(), 1024u);
}

TEST_F(Log, CutsATextAt2047Characters) {
    g_logSettings.logToDebugger = true;
    simulated::lastError = 4711;
    WriteLog("%s", (std::string(2047, 'x') + "yz").c_str());
    EXPECT_EQ(simulated::lastError, 4711u);
    EXPECT_THAT(Debugger(), ElementsAre(std::string(2047, 'x')));
    const std::string line = TakeFile();
    EXPECT_EQ(line.size(), 1024u);
    EXPECT_TRUE(line.ends_with("x\r\n"));
}

// ---- error lines ----------------------------------------------------------------------------------------------------

TEST_F(Log, TellsAnErrorWithItsPlaceInTheSource) {
    WriteErrorLog(2, ".\\source\\InfFile.cpp", 384);
    EXPECT_EQ(TakeFile(),
              std::string(kStamp) +
                  "***** Error!!! The system cannot find the file specified.\r\n [InfFile.cpp:384] *****\r\n");
}

TEST_F(Log, AsksTheSystemForTheTextOfAnError) {
    WriteErrorLog(2, "x.cpp", 1);
    EXPECT_THAT(Test().TakeCalls()[0], ::testing::StartsWith("FormatMessageA(0x1300, null, 0x2, 0x400, &, 0x0, null)"));
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << "the text is freed";
}

TEST_F(Log, FreesAnErrorsTextBehindTheLine) {
    WriteErrorLog(2, "x.cpp", 1);
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("FormatMessageA", "GetLocalTime", "CreateFileA", "SetFilePointer",
                                                    "WriteFile", "CloseHandle", "LocalFree"));
}

TEST_F(Log, WritesNothingForAnErrorWithoutAText) {
    faults::FailCall("FormatMessageA", 1, 317);
    simulated::lastError = 4711;
    WriteErrorLog(2, "x.cpp", 1);
    EXPECT_EQ(simulated::lastError, 4711u);
    WriteErrorLog(0x20001234, "x.cpp", 1);
    EXPECT_EQ(simulated::lastError, 4711u);
    EXPECT_EQ(TakeFile(), "");
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("FormatMessageA", "FormatMessageA"));
}

TEST_F(Log, TakesAMissingSourceAsAnEmptyOne) {
    WriteErrorLog(5, nullptr, 9);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "***** Error!!! Access is denied.\r\n [:9] *****\r\n");
}

TEST_F(Log, BoundsAnErrorLineWithALongSource) {
    WriteErrorLog(5, std::string(5000, 'x').c_str(), 9);
    EXPECT_EQ(TakeFile().size(), 1024u);
}

TEST_F(Log, PutsTheSourceBehindATextThatHasOne) {
    WriteLogText("text", "C:\\source\\printer.cpp", 0);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "text, [printer.cpp:0]\r\n");
    WriteLogText("text", "C:\\source\\printer.cpp", -1);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "text\r\n");
    WriteLogText("text", nullptr, 7);
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "text\r\n");
}

// ---- debugger and viewer --------------------------------------------------------------------------------------------

TEST_F(Log, GivesTheDebuggerTheMessageAlone) {
    g_logSettings.logToFile = false;
    g_logSettings.logToDebugger = true;
    WriteLog("message");
    EXPECT_THAT(Debugger(), ElementsAre("message"));
    EXPECT_THAT(Sent(), IsEmpty());
    EXPECT_EQ(TakeFile(), "");
    EXPECT_THAT(Test().TakeCalls(), ElementsAre("GetLocalTime(&)", "OutputDebugStringA(\"message\")",
                                                ::testing::StartsWith("FindWindowA(null, \"WIWatch\") = null")));
}

TEST_F(Log, GivesTheViewersWindowTheWholeLine) {
    g_logSettings.logToDebugger = true;
    const HWND viewer = Machine().Desktop().OpenWindow("WIWatch");
    WriteLog("message");
    ASSERT_THAT(Sent(), SizeIs(1));
    EXPECT_EQ(Sent()[0].window, viewer);
    EXPECT_EQ(Sent()[0].message, 12u);
    EXPECT_EQ(Sent()[0].wParam, 0u);
    EXPECT_EQ(Sent()[0].text, std::string(kStamp) + "message\r\n");
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "message\r\n");
    EXPECT_THAT(Test().TakeCallNames(),
                ElementsAre("GetLocalTime", "CreateFileA", "SetFilePointer", "WriteFile", "CloseHandle",
                            "OutputDebugStringA", "FindWindowA", "SendMessageA"));
}

TEST_F(Log, LeavesTheViewerAloneWhileTheDebuggerIsOff) {
    Machine().Desktop().OpenWindow("WIWatch");
    WriteLog("message");
    EXPECT_THAT(Sent(), IsEmpty());
    EXPECT_THAT(Debugger(), IsEmpty());
}

// ---- failures -------------------------------------------------------------------------------------------------------

TEST_F(Log, KeepsTheLastError) {
    g_logSettings.logToDebugger = true;
    simulated::lastError = 4711;
    WriteLog("x");
    EXPECT_EQ(simulated::lastError, 4711u);
    WriteErrorLog(2, "x.cpp", 1);
    EXPECT_EQ(simulated::lastError, 4711u);
}

TEST_F(Log, GoesOnToTheOtherPlacesWhenTheFileFails) {
    g_logSettings.logToDebugger = true;
    for (const char* name : {"CreateFileA", "SetFilePointer", "WriteFile"}) {
        SCOPED_TRACE(name);
        faults::Reset();
        faults::FailCall(name, 1, ERROR_DISK_FULL);
        Debugger().clear();
        simulated::lastError = 4711;
        WriteLog("x");
        EXPECT_EQ(faults::LastFailed(), name);
        EXPECT_EQ(simulated::lastError, 4711u);
        EXPECT_THAT(Debugger(), ElementsAre("x"));
        EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    }
}

TEST_F(Log, DoesNotWriteWhenItCanNotMoveToTheEnd) {
    WriteFileOn(Machine(), kLog, "old lines\r\n");
    faults::FailCall("SetFilePointer", 1, ERROR_INVALID_PARAMETER);
    WriteLog("x");
    EXPECT_EQ(TakeFile(), "old lines\r\n");
}

TEST_F(Log, WritesBehindFourGigabytes) {
    ReplacedOperations replaced;
    replaced.table.SetFilePointer = [](HANDLE, LONG, PLONG high, DWORD) -> DWORD {
        *high = 1;
        return 0xFFFFFFFF;  // a position, and no failure: the last error stays
    };
    WriteLog("x");
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "x\r\n");
}

TEST_F(Log, DropsALineWhileAnotherHoldsTheFile) {
    WriteFileOn(Machine(), kLog, "");
    {
        auto held = Machine().Files().HoldOpen(kLog, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
        WriteLog("lost");
    }
    WriteLog("kept");
    EXPECT_EQ(TakeFile(), std::string(kStamp) + "kept\r\n");
}

TEST_F(Log, IsSilentOnAnUnwritableFile) {
    Machine().Files().Deny("C:\\denied");
    g_logSettings.logFilePath = "C:\\denied\\x.log";
    simulated::lastError = 4711;
    WriteLog("x");
    g_logSettings.logFilePath = "C:\\missing\\x.log";
    WriteLog("x");
    EXPECT_EQ(simulated::lastError, 4711u);
    EXPECT_FALSE(Machine().Files().Exists("C:\\missing"));
}

TEST_F(Log, IsSilentOnAFullDisk) {
    WriteFileOn(Machine(), kLog, "");
    Machine().Files().SetFreeSpace(0);
    simulated::lastError = 4711;
    WriteLog("x");
    EXPECT_EQ(simulated::lastError, 4711u);
    Machine().Files().SetFreeSpace(std::nullopt);
    EXPECT_EQ(TakeFile(), "");
}

TEST_F(Log, TouchesNoFileWithoutAPath) {
    g_logSettings.logFilePath.clear();
    WriteLog("x");
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("GetLocalTime"));
}

TEST_F(Log, SwallowsExceptionsAndStillGivesTheLastErrorBack) {
    ReplacedOperations replaced;
    replaced.table.GetLocalTime = [](LPSYSTEMTIME) {
        simulated::lastError = 1;
        throw std::bad_alloc();
    };
    simulated::lastError = 4711;
    EXPECT_NO_THROW(WriteLog("x"));
    EXPECT_EQ(simulated::lastError, 4711u);
    EXPECT_NO_THROW(WriteErrorLog(2, "x.cpp", 1));
    EXPECT_EQ(simulated::lastError, 4711u);
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << "the error's text is freed all the same";
}

}  // namespace
}  // namespace pikel
