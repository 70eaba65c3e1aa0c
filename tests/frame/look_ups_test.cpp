#include "frame/look_ups.h"

#include <map>

#include "support/calls.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

constexpr char kMonitors[] = "HKLM\\System\\CurrentControlSet\\Control\\Print\\Monitors\\";

// ---- GetDriverDirectory ---------------------------------------------------------------------------------------------

class DriverDirectory : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(DriverDirectory);

TEST_P(DriverDirectory, OfNoEnvironmentIsThatOfTheRunningSystem) {
    const std::map<std::string, std::string> expected = {
        {"win95", "C:\\WINDOWS\\SYSTEM"},
        {"win98", "C:\\WINDOWS\\SYSTEM"},
        {"winme", "C:\\WINDOWS\\SYSTEM"},
        {"nt4", "C:\\WINNT\\system32\\spool\\drivers\\W32X86"},
        {"win2000", "C:\\WINNT\\system32\\spool\\drivers\\W32X86"},
        {"xp", "C:\\WINDOWS\\system32\\spool\\drivers\\W32X86"},
        {"xp-ia64", "C:\\WINDOWS\\system32\\spool\\drivers\\IA64"},
        {"xp-x64", "C:\\WINDOWS\\system32\\spool\\drivers\\x64"},
        {"vista", "C:\\WINDOWS\\system32\\spool\\drivers\\W32X86"},
        {"vista-ia64", "C:\\WINDOWS\\system32\\spool\\drivers\\IA64"},
        {"vista-x64", "C:\\WINDOWS\\system32\\spool\\drivers\\x64"},
        {"other", "C:\\WINDOWS\\system32\\spool\\drivers\\W32X86"},
    };
    std::string strDirectory = "left over";
    EXPECT_EQ(GetDriverDirectory(nullptr, strDirectory), 0u);
    EXPECT_EQ(strDirectory, expected.at(GetParam()));
}

class DriverDirectoryOnXp : public MachineTest {};

TEST_F(DriverDirectoryOnXp, IsAskedForAtLevel1WithABufferOf4096Bytes) {
    ForgetCalls(Test());
    std::string strDirectory;
    EXPECT_EQ(GetDriverDirectory("Windows x64", strDirectory), 0u);
    EXPECT_EQ(strDirectory, "C:\\WINDOWS\\system32\\spool\\drivers\\x64");
    EXPECT_THAT(Test().TakeCalls(),
                ElementsAre("GetPrinterDriverDirectoryA(null, \"Windows x64\", 0x1, &, 0x1000, &) = 0x1"));
}

TEST_F(DriverDirectoryOnXp, IsEmptyForAnUnknownEnvironment) {
    std::string strDirectory = "left over";
    EXPECT_EQ(GetDriverDirectory("Windows PDP-11", strDirectory), DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(strDirectory, "");
}

TEST_F(DriverDirectoryOnXp, FailsWithTheSpoolersCode) {
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
    std::string strDirectory = "left over";
    EXPECT_EQ(GetDriverDirectory(nullptr, strDirectory), 1722u);
    EXPECT_EQ(strDirectory, "");
}

TEST_F(DriverDirectoryOnXp, MayFillTheWholeBuffer) {
    ReplacedOperations replaced;
    replaced.table.GetPrinterDriverDirectoryA = [](LPSTR, LPSTR, DWORD, LPBYTE buffer, DWORD size, LPDWORD) -> BOOL {
        std::fill_n(buffer, size, BYTE{'x'});
        return TRUE;
    };
    std::string strDirectory;
    EXPECT_EQ(GetDriverDirectory(nullptr, strDirectory), 0u);
    EXPECT_EQ(strDirectory, std::string(4096, 'x'));
}

// ---- GetMonitorFile -------------------------------------------------------------------------------------------------

class MonitorFile : public MachineTest {
  protected:
    DWORD Look(LPCSTR name = "Aurora Monitor") { return GetMonitorFile(name, m_file); }

    std::string m_key = std::string(kMonitors) + "Aurora Monitor";
    std::string m_file = "left over";
};

TEST_F(MonitorFile, IsABareNameAsItStands) {
    Machine().Registry().SetText(m_key, "Driver", "nlmon.dll");
    EXPECT_EQ(Look(), 0u);
    EXPECT_EQ(m_file, "nlmon.dll");
}

TEST_F(MonitorFile, LosesEverythingUpToItsLastBackslash) {
    Machine().Registry().SetText(m_key, "Driver", "C:\\Monitors\\Aurora\\nlmon.dll");
    EXPECT_EQ(Look(), 0u);
    EXPECT_EQ(m_file, "nlmon.dll");
}

TEST_F(MonitorFile, IsEmptyBehindAClosingBackslash) {
    Machine().Registry().SetText(m_key, "Driver", "C:\\Monitors\\");
    EXPECT_EQ(Look(), 0u);
    EXPECT_EQ(m_file, "");
}

TEST_F(MonitorFile, OfAnEmptyValueIsEmpty) {
    Machine().Registry().SetText(m_key, "Driver", "");
    EXPECT_EQ(Look(), 0u);
    EXPECT_EQ(m_file, "");
}

TEST_F(MonitorFile, OfAnUnknownMonitorGivesTheCodeOfTheOpen) {
    EXPECT_EQ(Look("No such monitor"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(m_file, "");
}

TEST_F(MonitorFile, OfAKeyWithoutTheValueGivesTheCodeOfTheRead) {
    Machine().Registry().CreateKey(m_key);
    EXPECT_EQ(Look(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(m_file, "");
}

TEST_F(MonitorFile, MustBeText) {
    struct Case {
        DWORD type;
        std::string data;
    };
    for (const Case& c : {Case{REG_EXPAND_SZ, std::string("%SystemRoot%\\nlmon.dll", 23)},
                          Case{REG_DWORD, std::string(4, '\1')}, Case{REG_BINARY, "nlmon.dll"}}) {
        Machine().Registry().Set(m_key, "Driver", c.type, c.data);
        EXPECT_EQ(Look(), DWORD{ERROR_INVALID_DATA}) << c.type;
        EXPECT_EQ(m_file, "");
    }
}

TEST_F(MonitorFile, MayFillTheBufferWithoutANul) {
    Machine().Registry().Set(m_key, "Driver", REG_SZ, std::string(260, 'm'));
    EXPECT_EQ(Look(), 0u);
    EXPECT_EQ(m_file, std::string(260, 'm'));
}

TEST_F(MonitorFile, BeyondTheBufferGivesTheCodeOfTheRead) {
    Machine().Registry().Set(m_key, "Driver", REG_SZ, std::string(261, 'm'));
    EXPECT_EQ(Look(), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(m_file, "");
}

TEST_F(MonitorFile, OfNoNameIsLookedForInTheKeyOfAllMonitors) {
    EXPECT_EQ(Look(nullptr), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(m_file, "");
}

TEST_F(MonitorFile, IsReadWithReadAccessAndTheKeyIsClosed) {
    Machine().Registry().SetText(m_key, "Driver", "nlmon.dll");
    ForgetCalls(Test());
    Look();
    EXPECT_THAT(
        Test().TakeCalls(),
        ElementsAre(MatchesRegex("RegOpenKeyExA\\(0x80000002, \"System\\\\+CurrentControlSet\\\\+Control\\\\+Print"
                                 "\\\\+Monitors\\\\+Aurora Monitor\", 0x0, 0x20019, &\\) = 0x0"),
                    MatchesRegex("RegQueryValueExA\\(0x[0-9a-f]+, \"Driver\", null, &, &, &\\) = 0x0"),
                    MatchesRegex("RegCloseKey\\(0x[0-9a-f]+\\) = 0x0")));
}

TEST_F(MonitorFile, LogsItsStartAndItsEnd) {
    Machine().Registry().SetText(m_key, "Driver", "nlmon.dll");
    Test().TurnLogOn(1);
    Look();
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetMonitorFile() Start", "GetMonitorFile() End(0)"));
    Look("No such monitor");
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetMonitorFile() Start", "GetMonitorFile() End(2)"));
}

// ---- FileCompare ----------------------------------------------------------------------------------------------------

class FileComparison : public MachineTest {
  protected:
    void SetUp() override {
        WriteFileOn(Machine(), m_file1, "one");
        WriteFileOn(Machine(), m_file2, "two");
    }
    void SetTimes(FILETIME first, FILETIME second) {
        Machine().Files().SetWrittenAt(m_file1, first);
        Machine().Files().SetWrittenAt(m_file2, second);
    }
    INT Compare() {
        INT nResult = 99;
        EXPECT_EQ(FileCompare(m_file1, m_file2, nResult), 0u);
        return nResult;
    }

    const char* m_file1 = "C:\\one.dll";
    const char* m_file2 = "C:\\two.dll";
};

TEST_F(FileComparison, GoesByTheHighWordAndThenByTheLowWord) {
    struct Case {
        FILETIME first, second;
        INT result;
        const char* line;
    };
    // Low words are multiples of 10: the host's clock may count in microseconds.
    const Case cases[] = {
        {{0, 30000000}, {0, 29000000}, 1, "FileCompare C:\\one.dll > C:\\two.dll "},
        {{0, 29000000}, {0, 30000000}, -1, "FileCompare C:\\one.dll < C:\\two.dll "},
        {{20000000, 30000000}, {10000000, 30000000}, 1, "FileCompare C:\\one.dll > C:\\two.dll "},
        {{10000000, 30000000}, {20000000, 30000000}, -1, "FileCompare C:\\one.dll < C:\\two.dll "},
        {{10000000, 30000000}, {20000000, 29000000}, 1, "FileCompare C:\\one.dll > C:\\two.dll "},
        {{10000000, 30000000}, {10000000, 30000000}, 0, "FileCompare C:\\one.dll = C:\\two.dll "},
    };
    Test().TurnLogOn(1);
    for (const Case& c : cases) {
        SetTimes(c.first, c.second);
        EXPECT_EQ(Compare(), c.result);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(c.line));
    }
}

TEST_F(FileComparison, HasNoVerdictWhenAFileCannotBeOpened) {
    Test().TurnLogOn(1);
    {
        auto held = Machine().Files().HoldOpen(m_file1);
        EXPECT_EQ(Compare(), 0);
    }
    {
        auto held = Machine().Files().HoldOpen(m_file2, FILE_SHARE_READ);
        EXPECT_EQ(Compare(), 0) << "the open shares with nobody";
    }
    Machine().Files().Delete(m_file2);
    EXPECT_EQ(Compare(), 0);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(FileComparison, HasNoVerdictWhenATimeCannotBeRead) {
    for (std::size_t nth : {1, 2}) {
        faults::Reset();
        faults::FailCall("GetFileTime", nth, ERROR_INVALID_HANDLE);
        EXPECT_EQ(Compare(), 0);
    }
}

TEST_F(FileComparison, OpensBothForReadingAndClosesBoth) {
    ForgetCalls(Test());
    Compare();
    EXPECT_THAT(Test().TakeCalls(),
                ElementsAre(MatchesRegex("CreateFileA\\(.*one.dll\", 0x80000000, 0x0, null, 0x3, 0x80, null\\) = 0x.*"),
                            MatchesRegex("CreateFileA\\(.*two.dll\", 0x80000000, 0x0, null, 0x3, 0x80, null\\) = 0x.*"),
                            MatchesRegex("GetFileTime\\(0x[0-9a-f]+, null, null, &\\) = 0x1"),
                            MatchesRegex("GetFileTime\\(0x[0-9a-f]+, null, null, &\\) = 0x1"),
                            MatchesRegex("CloseHandle\\(0x[0-9a-f]+\\) = 0x1"),
                            MatchesRegex("CloseHandle\\(0x[0-9a-f]+\\) = 0x1")));
}

TEST_F(FileComparison, ClosesTheOneFileThatOpened) {
    Machine().Files().Delete(m_file1);
    ForgetCalls(Test());
    Compare();
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("CreateFileA", "CreateFileA", "CloseHandle"));
}

}  // namespace

}  // namespace pikel
