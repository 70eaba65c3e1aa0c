// How "UtilDbg.ini" turns the log on.
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "frame/log.h"
#include "frame/os_identity.h"
#include "machine/desktop/desktop.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::MachineTest;
using testing_support::ReplacedOperations;
using testing_support::WriteFileOn;

constexpr char kIni[] = "C:\\Program Files\\pikel\\UtilDbg.ini";
constexpr char kDefaultLog[] = "C:\\Program Files\\pikel\\UtilDbg.txt";

class LogConfiguration : public MachineTest {
  protected:
    void SetUp() override {
        SetAttachedModule(simulated::LibraryModule());
        KeepModule();
    }
    void TearDown() override {
        SetAttachedModule(nullptr);
        KeepModule();
    }

    void Configure(const std::string& ini) {
        ResetLog();
        WriteFileOn(Machine(), kIni, ini);
        ReadLogConfiguration(nullptr);
    }
    /// The usual map to one section.
    void ConfigureSection(const std::string& lines) { Configure("[DEBUG]\r\nDEFAULT=S\r\n[S]\r\n" + lines); }

    static void ExpectOff() {
        EXPECT_FALSE(g_logSettings.debugEnabled);
        EXPECT_FALSE(g_logSettings.logToFile);
        EXPECT_FALSE(g_logSettings.logToDebugger);
        EXPECT_EQ(g_logSettings.logLevel, 1);
        EXPECT_EQ(g_logSettings.logFilePath, "");
    }
};

TEST_F(LogConfiguration, StaysOffWithoutAFile) {
    ReadLogConfiguration(nullptr);
    ExpectOff();
    WriteLog("nothing");
    EXPECT_FALSE(Machine().Files().Exists(kDefaultLog));
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("GetModuleFileNameA", "FindFirstFileA"));
}

TEST_F(LogConfiguration, IsReadInAFixedOrderIntoBoundedBuffers) {
    WriteFileOn(
        Machine(), kIni,
        "[DEBUG]\r\npikel.dll=S\r\n[S]\r\nDEBUG=ON\r\nLOG=ON\r\nLOGFILE=C:\\x.txt\r\nOUTPUTDBGSTR=ON\r\nLEVEL=2");
    Test().TakeCalls();
    ReadLogConfiguration(nullptr);
    std::vector<std::string> calls;
    for (const std::string& call : Test().TakeCalls()) {
        calls.push_back(call.substr(0, call.find(", \"C:\\\\Program")).substr(0, call.find(" = ")));
    }
    EXPECT_THAT(calls, ElementsAre(::testing::MatchesRegex("GetModuleFileNameA\\(.*, &, 0x14e\\)"),
                                   R"(FindFirstFileA("C:\\Program Files\\pikel\\UtilDbg.ini", &))",
                                   ::testing::StartsWith("FindClose("),
                                   R"(GetPrivateProfileStringA("DEBUG", "pikel.dll", "", &, 0x40)",
                                   R"(GetPrivateProfileStringA("S", "DEBUG", "", &, 0x40)",
                                   R"(GetPrivateProfileStringA("S", "LOG", "", &, 0x40)",
                                   R"(GetPrivateProfileStringA("S", "LOGFILE", "", &, 0x45)",
                                   R"(GetPrivateProfileStringA("S", "OUTPUTDBGSTR", "", &, 0x40)",
                                   R"(GetPrivateProfileIntA("S", "LEVEL", 0x1)"));
    EXPECT_TRUE(g_logSettings.debugEnabled);
    EXPECT_TRUE(g_logSettings.logToFile);
    EXPECT_TRUE(g_logSettings.logToDebugger);
    EXPECT_EQ(g_logSettings.logLevel, 2);
    EXPECT_EQ(g_logSettings.logFilePath, "C:\\x.txt");
}

TEST_F(LogConfiguration, UsesTheDefaultSectionForAModuleWithoutAKey) {
    Configure("[DEBUG]\r\nother.dll=Other\r\nDEFAULT=All\r\n[All]\r\nDEBUG=ON\r\n[Other]\r\nDEBUG=OFF\r\n");
    EXPECT_TRUE(g_logSettings.debugEnabled);
}

TEST_F(LogConfiguration, PrefersTheModulesOwnSection) {
    Configure("[DEBUG]\r\nDEFAULT=All\r\npikel.dll=Mine\r\n[All]\r\nDEBUG=ON\r\n[Mine]\r\nDEBUG=ON\r\nLEVEL=5\r\n");
    EXPECT_EQ(g_logSettings.logLevel, 5);
    Configure("[DEBUG]\r\nDEFAULT=All\r\npikel.dll=Mine\r\n[All]\r\nDEBUG=ON\r\n");
    ExpectOff();
}

TEST_F(LogConfiguration, StaysOffWhenNoSectionIsNamed) {
    Configure("[DEBUG]\r\nother.dll=S\r\n[S]\r\nDEBUG=ON\r\n");
    ExpectOff();
    Configure("[S]\r\nDEBUG=ON\r\n");
    ExpectOff();
    Configure("");
    ExpectOff();
}

TEST_F(LogConfiguration, TakesOnInAnyCaseAndNothingElse) {
    for (const char* on : {"ON", "on", "On", "oN", " ON "}) {
        ConfigureSection("DEBUG=" + std::string(on) + "\r\n");
        EXPECT_TRUE(g_logSettings.debugEnabled) << on;
    }
    for (const char* off : {"", "1", "TRUE", "YES", "OFF", "O", "ONN", "0N"}) {
        ConfigureSection("DEBUG=" + std::string(off) + "\r\nLOG=ON\r\nOUTPUTDBGSTR=ON\r\nLEVEL=9\r\n");
        SCOPED_TRACE(off);
        ExpectOff();
    }
}

TEST_F(LogConfiguration, WritesBesideTheModuleWithoutALogFile) {
    ConfigureSection("DEBUG=ON\r\nLOG=ON\r\n");
    EXPECT_EQ(g_logSettings.logFilePath, kDefaultLog);
    WriteLog("hello");
    EXPECT_THAT(testing_support::ReadFileOn(Machine(), kDefaultLog), ::testing::EndsWith("]  hello\r\n"));
}

TEST_F(LogConfiguration, TakesALogFileOf68CharactersAndCutsALongerOne) {
    const std::string longest = "C:\\" + std::string(65, 'x');
    ASSERT_EQ(longest.size(), 68u);
    ConfigureSection("DEBUG=ON\r\nLOG=ON\r\nLOGFILE=" + longest + "\r\n");
    EXPECT_EQ(g_logSettings.logFilePath, longest);
    ConfigureSection("DEBUG=ON\r\nLOG=ON\r\nLOGFILE=" + longest + "yz\r\n");
    EXPECT_EQ(g_logSettings.logFilePath, longest);
}

TEST_F(LogConfiguration, IgnoresALogFileWhileTheFileIsOff) {
    ConfigureSection("DEBUG=ON\r\nLOG=OFF\r\nLOGFILE=C:\\x.txt\r\n");
    EXPECT_TRUE(g_logSettings.debugEnabled);
    EXPECT_FALSE(g_logSettings.logToFile);
    EXPECT_EQ(g_logSettings.logFilePath, "");
}

TEST_F(LogConfiguration, TurnsTheDebuggerOnWithoutTheFile) {
    ConfigureSection("DEBUG=ON\r\nOUTPUTDBGSTR=ON\r\n");
    EXPECT_TRUE(g_logSettings.logToDebugger);
    EXPECT_FALSE(g_logSettings.logToFile);
    WriteLog("hello");
    EXPECT_THAT(Machine().Desktop().debugOutput, ElementsAre("hello"));
    EXPECT_FALSE(Machine().Files().Exists(kDefaultLog));
}

TEST_F(LogConfiguration, TakesALevelOnlyAboveOne) {
    for (auto [text, level] : std::vector<std::pair<const char*, int>>{
             {"1", 1}, {"0", 1}, {"-1", 1}, {"-2147483648", 1}, {"many", 1}, {"", 1}, {"2", 2}, {"17", 17}}) {
        ConfigureSection("DEBUG=ON\r\nLEVEL=" + std::string(text) + "\r\n");
        EXPECT_EQ(g_logSettings.logLevel, level) << text;
    }
    ConfigureSection("DEBUG=ON\r\n");
    EXPECT_EQ(g_logSettings.logLevel, 1);
}

TEST_F(LogConfiguration, CutsASectionNameAt63Characters) {
    const std::string name(63, 'S');
    Configure("[DEBUG]\r\nDEFAULT=" + name + "TUV\r\n[" + name + "]\r\nDEBUG=ON\r\n");
    EXPECT_TRUE(g_logSettings.debugEnabled);
}

TEST_F(LogConfiguration, SurvivesValuesOfAnyLength) {
    const std::string longText(5000, 'N');
    Configure("[DEBUG]\r\npikel.dll=" + longText + "\r\n");
    ExpectOff();
    ConfigureSection("DEBUG=O" + longText + "\r\n");
    ExpectOff();
}

TEST_F(LogConfiguration, IsReadAnewAfterAReset) {
    ConfigureSection("DEBUG=ON\r\nLOG=ON\r\nOUTPUTDBGSTR=ON\r\nLEVEL=3\r\n");
    ResetLog();
    ExpectOff();
    ConfigureSection("DEBUG=ON\r\n");
    EXPECT_TRUE(g_logSettings.debugEnabled);
    EXPECT_FALSE(g_logSettings.logToFile);
    EXPECT_EQ(g_logSettings.logLevel, 1);
}

TEST_F(LogConfiguration, TakesAnExplicitPathAndNoFolderOfTheModule) {
    WriteFileOn(Machine(), "C:\\elsewhere\\my.ini", "[DEBUG]\r\npikel.dll=S\r\n[S]\r\nDEBUG=ON\r\nLOG=ON\r\n");
    ReadLogConfiguration("C:\\elsewhere\\my.ini");
    EXPECT_TRUE(g_logSettings.debugEnabled);
    EXPECT_EQ(g_logSettings.logFilePath, "UtilDbg.txt");
}

TEST_F(LogConfiguration, TakesTheDefaultOfAnExplicitPathWhenTheModuleHasNoName) {
    WriteFileOn(Machine(), "C:\\my.ini", "[DEBUG]\r\nDEFAULT=S\r\n[S]\r\nDEBUG=ON\r\n");
    faults::FailCall("GetModuleFileNameA", 1, ERROR_INVALID_HANDLE);
    ReadLogConfiguration("C:\\my.ini");
    EXPECT_TRUE(g_logSettings.debugEnabled);
}

TEST_F(LogConfiguration, StaysOffWhenTheModuleHasNoName) {
    WriteFileOn(Machine(), kIni, "[DEBUG]\r\nDEFAULT=S\r\n[S]\r\nDEBUG=ON\r\n");
    faults::FailCall("GetModuleFileNameA", 1, ERROR_INVALID_HANDLE);
    ReadLogConfiguration(nullptr);
    ExpectOff();
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("GetModuleFileNameA"));
}

TEST_F(LogConfiguration, StaysOffWhenTheModulesPathDoesNotFit) {
    ReplacedOperations replaced;
    replaced.table.GetModuleFileNameA = [](HMODULE, LPSTR buffer, DWORD size) -> DWORD {
        std::memset(buffer, 'x', size);
        return size;
    };
    ReadLogConfiguration(nullptr);
    ExpectOff();
    EXPECT_THAT(Test().TakeCallNames(), IsEmpty());
}

TEST_F(LogConfiguration, KeepsTheLastError) {
    simulated::lastError = 4711;
    ReadLogConfiguration(nullptr);
    EXPECT_EQ(simulated::lastError, 4711u);
}

TEST_F(LogConfiguration, SwallowsExceptions) {
    ReplacedOperations replaced;
    replaced.table.FindFirstFileA = [](LPCSTR, LPWIN32_FIND_DATAA) -> HANDLE { throw std::bad_alloc(); };
    simulated::lastError = 4711;
    EXPECT_NO_THROW(ReadLogConfiguration(nullptr));
    EXPECT_EQ(simulated::lastError, 4711u);
    ExpectOff();
}

}  // namespace
}  // namespace pikel
