#include "deploy/inf_info.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "printer_inf.h"
#include "support/calls.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNull;

using Lines = std::vector<std::string>;

constexpr char kDirectory[] = "C:\\WINDOWS\\system32\\spool\\drivers\\W32X86";
DriverAddRecord* const kUntouched = reinterpret_cast<DriverAddRecord*>(0x1234);

/// A record, given back when the object goes.
class Info {
  public:
    ~Info() {
        if (m_record != kUntouched && m_record != nullptr) {
            EXPECT_TRUE(Platform().HeapFree(Platform().GetProcessHeap(), 0, m_record));
        }
    }
    DWORD Get(LPCSTR model = "Aurora 500", DWORD architecture = 3, DWORD major = 5, DWORD minor = 1,
              LPCSTR path = kAuroraPath) {
        return DoGetInfInfo(path, model, architecture, major, minor, &m_record);
    }
    DriverAddRecord* Record() { return m_record; }
    DriverAddRecord* operator->() { return m_record; }

  private:
    DriverAddRecord* m_record = kUntouched;
};

Lines TextsOf(LPCSTR multiString) {
    return simulated::SplitMultiString(multiString);
}

class InfInfoTest : public MachineTest {
  protected:
    InfInfoTest() { Begin("xp"); }
    void Begin(const std::string& system) {
        Start(system);
        PutAuroraPackage(Machine());
        ForgetCalls(Test());
    }
};
class InfInfo : public InfInfoTest {};

TEST_F(InfInfo, TellsEverythingOfADriver) {
    Info info;
    ASSERT_EQ(info.Get(), 0u);
    const DRIVER_INFO_6A& driver = info->DriverInfo;
    const std::string directory = kDirectory;
    EXPECT_EQ(driver.cVersion, 3u);
    EXPECT_STREQ(driver.pName, "Aurora 500");
    EXPECT_STREQ(driver.pEnvironment, "Windows NT x86");
    EXPECT_EQ(driver.pDriverPath, directory + "\\NLAURORA.DLL");
    EXPECT_EQ(driver.pDataFile, directory + "\\A500.GPD");
    EXPECT_EQ(driver.pConfigFile, directory + "\\NLAURUI.DLL");
    EXPECT_EQ(driver.pHelpFile, directory + "\\NLAURORA.HLP");
    EXPECT_THAT(TextsOf(driver.pDependentFiles), ElementsAre("NLLOCAL.DLL", "NLRES_EN.DLL"));
    EXPECT_STREQ(driver.pMonitorName, "Aurora Monitor");
    EXPECT_EQ(driver.pDefaultDataType, nullptr) << "of 9x drivers alone";
    EXPECT_EQ(driver.pszzPreviousNames, nullptr);
    EXPECT_EQ(driver.dwlDriverVersion, 0x0001000200030004u);
    SYSTEMTIME time{};
    time.wYear = 2006;
    time.wMonth = 3;
    time.wDay = 15;
    FILETIME date{};
    ASSERT_TRUE(Platform().SystemTimeToFileTime(&time, &date));
    EXPECT_EQ(driver.ftDriverDate.dwLowDateTime, date.dwLowDateTime);
    EXPECT_EQ(driver.ftDriverDate.dwHighDateTime, date.dwHighDateTime);
    EXPECT_STREQ(driver.pszMfgName, "Nordlicht");
    EXPECT_STREQ(driver.pszOEMUrl, "http://nordlicht.example");
    EXPECT_STREQ(driver.pszHardwareID, "NordlichtA500");
    EXPECT_STREQ(driver.pszProvider, "Nordlicht");
    EXPECT_STREQ(info->MonitorInfo.pName, "Aurora Monitor");
    EXPECT_STREQ(info->MonitorInfo.pEnvironment, "Windows NT x86");
    EXPECT_STREQ(info->MonitorInfo.pDLLName, "NLMON.DLL");
    ASSERT_EQ(info->ColorProfileCount, 2u);
    EXPECT_STREQ(info->ColorProfileList[0], "NLA500A.ICC");
    EXPECT_STREQ(info->ColorProfileList[1], "NLDISP.ICC");
    EXPECT_EQ(info->RetryTimeout, 90000u);
    EXPECT_EQ(info->NotSelectedTimeout, 30000u);
}

TEST_F(InfInfo, LeavesOutWhatTheInfDoesNotSay) {
    Info info;
    ASSERT_EQ(info.Get("Aurora Plain"), 0u);
    const DRIVER_INFO_6A& driver = info->DriverInfo;
    // A file that isn't named leaves the directory alone.
    EXPECT_STREQ(driver.pDriverPath, kDirectory);
    EXPECT_STREQ(driver.pDataFile, kDirectory);
    EXPECT_STREQ(driver.pConfigFile, kDirectory);
    EXPECT_STREQ(driver.pHelpFile, kDirectory);
    EXPECT_EQ(driver.pMonitorName, nullptr);
    EXPECT_EQ(driver.pDefaultDataType, nullptr);
    EXPECT_EQ(driver.pszHardwareID, nullptr);
    EXPECT_EQ(info->MonitorInfo.pName, nullptr);
    EXPECT_EQ(info->MonitorInfo.pEnvironment, nullptr);
    EXPECT_EQ(info->MonitorInfo.pDLLName, nullptr);
    EXPECT_EQ(info->ColorProfileCount, 0u);
    EXPECT_EQ(info->ColorProfileList, nullptr);
    EXPECT_EQ(info->RetryTimeout, 0u);
    EXPECT_EQ(info->NotSelectedTimeout, 15000u);
}

TEST_F(InfInfo, WithoutDependentFilesHasANullList) {
    std::string text = kAuroraInf;
    const std::string_view line = "DefaultDestDir=66000";
    text.replace(text.find(line), line.size(), "DefaultDestDir=66002");
    WriteFileOn(Machine(), "C:\\Package\\other.inf", text);
    Info info;
    ASSERT_EQ(info.Get("Aurora Plain", 3, 5, 1, "C:\\Package\\other.inf"), 0u);
    EXPECT_EQ(info->DriverInfo.pDependentFiles, nullptr);
}

TEST_F(InfInfo, WithoutVersionDataHasNullTextsAndZeros) {
    std::string text = kAuroraInf;
    for (const char* line :
         {"Provider=\"Nordlicht\"\n", "DriverVer=03/15/2006,1.2.3.4\n", "%Maker%=\"http://nordlicht.example\"\n"}) {
        text.erase(text.find(line), std::strlen(line));
    }
    WriteFileOn(Machine(), "C:\\Package\\other.inf", text);
    Info info;
    ASSERT_EQ(info.Get("Aurora Plain", 3, 5, 1, "C:\\Package\\other.inf"), 0u);
    EXPECT_EQ(info->DriverInfo.pszProvider, nullptr);
    EXPECT_EQ(info->DriverInfo.pszOEMUrl, nullptr);
    EXPECT_EQ(info->DriverInfo.dwlDriverVersion, 0u);
    EXPECT_EQ(info->DriverInfo.ftDriverDate.dwLowDateTime, 0u);
    EXPECT_EQ(info->DriverInfo.ftDriverDate.dwHighDateTime, 0u);
}

TEST_F(InfInfo, MonitorNeedsBothItsNameAndItsFile) {
    for (const char* value : {"\"Aurora Monitor\"", "\",NLMON.DLL\""}) {
        SCOPED_TRACE(value);
        std::string text = kAuroraInf;
        const std::string_view whole = "\"Aurora Monitor,NLMON.DLL\"";
        text.replace(text.find(whole), whole.size(), value);
        WriteFileOn(Machine(), "C:\\Package\\other.inf", text);
        Info info;
        ASSERT_EQ(info.Get("Aurora 500", 3, 5, 1, "C:\\Package\\other.inf"), 0u);
        EXPECT_EQ(info->MonitorInfo.pName, nullptr);
        EXPECT_EQ(info->MonitorInfo.pEnvironment, nullptr);
        EXPECT_EQ(info->MonitorInfo.pDLLName, nullptr);
    }
}

TEST_F(InfInfo, GoesByTheArchitectureAndTheMajorVersion) {
    struct Case {
        DWORD architecture, major;
        const char* environment;
        DWORD version;
        const char* folder;
    };
    for (const Case& c : {Case{1, 4, "Windows 4.0", 0, "WIN40"}, Case{1, 5, "Windows 4.0", 0, "WIN40"},
                          Case{2, 4, "Windows NT x86", 2, "W32X86"}, Case{2, 5, "Windows NT x86", 3, "W32X86"},
                          Case{3, 4, "Windows NT x86", 2, "W32X86"}, Case{3, 5, "Windows NT x86", 3, "W32X86"},
                          Case{3, 6, "Windows NT x86", 3, "W32X86"}, Case{3, 0x104, "Windows NT x86", 3, "W32X86"},
                          Case{4, 4, "Windows IA64", 3, "IA64"}, Case{4, 5, "Windows IA64", 3, "IA64"},
                          Case{5, 4, "Windows x64", 3, "x64"}, Case{5, 6, "Windows x64", 3, "x64"}}) {
        SCOPED_TRACE(std::to_string(c.architecture) + ", major " + std::to_string(c.major));
        Info info;
        ASSERT_EQ(info.Get("Aurora 500", c.architecture, c.major), 0u);
        EXPECT_STREQ(info->DriverInfo.pEnvironment, c.environment);
        EXPECT_STREQ(info->MonitorInfo.pEnvironment, c.environment);
        EXPECT_EQ(info->DriverInfo.cVersion, c.version);
        EXPECT_EQ(info->DriverInfo.pDriverPath,
                  std::string("C:\\WINDOWS\\system32\\spool\\drivers\\") + c.folder + "\\NLAURORA.DLL");
        if (c.version == 0) {
            EXPECT_STREQ(info->DriverInfo.pDefaultDataType, "RAW");
        } else {
            EXPECT_EQ(info->DriverInfo.pDefaultDataType, nullptr);
        }
    }
}

TEST_F(InfInfo, OfA9xDriverOn98HasItsProfilesAmongTheDependents) {
    Begin("win98");
    Info info;
    ASSERT_EQ(info.Get("Aurora 500", 1, 4, 10), 0u);
    EXPECT_EQ(info->DriverInfo.cVersion, 0u);
    EXPECT_STREQ(info->DriverInfo.pDriverPath, "C:\\WINDOWS\\SYSTEM\\NLAUR9X.DRV");
    EXPECT_STREQ(info->DriverInfo.pConfigFile, "C:\\WINDOWS\\SYSTEM\\NLAUR9X.DRV");
    EXPECT_STREQ(info->DriverInfo.pDefaultDataType, "EMF");
    EXPECT_EQ(info->DriverInfo.dwlDriverVersion, 0x0004000100000000u);
    EXPECT_THAT(TextsOf(info->DriverInfo.pDependentFiles),
                ElementsAre("NLAUR9X.DRV", "A500.DAT", "NLAUR9X.HLP", "NLMON9X.DLL", "Color\\NLA500A.ICC"));
    ASSERT_EQ(info->ColorProfileCount, 1u);
    EXPECT_STREQ(info->ColorProfileList[0], "NLA500A.ICC");
}

TEST_F(InfInfo, OfA9xDriverWithoutADataTypeHasNone) {
    Begin("win98");
    Info info;
    ASSERT_EQ(info.Get("Aurora Plain", 1, 4, 10), 0u);
    EXPECT_EQ(info->DriverInfo.pDefaultDataType, nullptr);
}

TEST_F(InfInfo, IsOneBlockThatHoldsAllItPointsAt) {
    Info info;
    ASSERT_EQ(info.Get(), 0u);
    const char* begin = reinterpret_cast<const char*>(info.Record());
    ASSERT_TRUE(Machine().Heap().Owns(simulated::BlockKind::Heap, begin));
    EXPECT_EQ(Machine().Heap().OpenCount(), 1u);
    const char* end = begin + Machine().Heap().Size(begin);
    const DRIVER_INFO_6A& driver = info->DriverInfo;
    for (const char* text :
         {driver.pName, driver.pEnvironment, driver.pDriverPath, driver.pDataFile, driver.pConfigFile, driver.pHelpFile,
          driver.pDependentFiles, driver.pMonitorName, driver.pszMfgName, driver.pszOEMUrl, driver.pszHardwareID,
          driver.pszProvider, info->MonitorInfo.pName, info->MonitorInfo.pEnvironment, info->MonitorInfo.pDLLName,
          reinterpret_cast<LPSTR>(info->ColorProfileList), info->ColorProfileList[0], info->ColorProfileList[1]}) {
        EXPECT_GE(text, begin + sizeof(DriverAddRecord));
        EXPECT_LT(text, end);
    }
    // The list's closing NUL is in the block as well.
    EXPECT_LE(driver.pDependentFiles + sizeof "NLLOCAL.DLL\0NLRES_EN.DLL\0", end);
    EXPECT_EQ(std::memcmp(driver.pDependentFiles, "NLLOCAL.DLL\0NLRES_EN.DLL\0", 26), 0);
}

TEST_F(InfInfo, RequiresPathModelAndOutput) {
    DriverAddRecord* record = kUntouched;
    Test().TurnLogOn();
    EXPECT_EQ(DoGetInfInfo(nullptr, "Aurora 500", 3, 5, 1, &record), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(DoGetInfInfo(kAuroraPath, nullptr, 3, 5, 1, &record), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(DoGetInfInfo(kAuroraPath, "Aurora 500", 3, 5, 1, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(record, kUntouched);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(InfInfo, FailsWithTheCodeOfWhatCannotBeReadAndLeavesTheOutputAlone) {
    struct Case {
        const char* model;
        const char* path;
        DWORD code;
    };
    WriteFileOn(Machine(), "C:\\Package\\empty.inf", "[Version]\nSignature=\"$Windows NT$\"\n");
    for (const Case& c : {Case{"Aurora 500", "C:\\Package\\missing.inf", ERROR_FILE_NOT_FOUND},
                          Case{"Aurora 500", "C:\\Package\\empty.inf", ERROR_LINE_NOT_FOUND},
                          Case{"Aurora 900", kAuroraPath, ERROR_INTERNAL_ERROR},
                          Case{"Aurora Lost", kAuroraPath, ERROR_INTERNAL_ERROR}}) {
        SCOPED_TRACE(c.path);
        Info info;
        EXPECT_EQ(info.Get(c.model, 3, 5, 1, c.path), c.code) << c.model;
        EXPECT_EQ(info.Record(), kUntouched);
    }
}

TEST_F(InfInfo, FailsWithTheCodeOfTheDriverDirectory) {
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
    Info info;
    EXPECT_EQ(info.Get(), 1722u);
    EXPECT_EQ(info.Record(), kUntouched);
}

TEST_F(InfInfo, OfAnUnknownArchitectureIsRefusedAfterTheDriverPart) {
    for (DWORD architecture : {0u, 6u, 7u}) {
        Info info;
        ForgetCalls(Test());
        EXPECT_EQ(info.Get("Aurora 500", architecture), DWORD{ERROR_INVALID_PARAMETER});
        EXPECT_EQ(info.Record(), kUntouched);
        EXPECT_THAT(TakeCallsOf(Test(), {"GetPrinterDriverDirectoryA"}),
                    ElementsAre("GetPrinterDriverDirectoryA(null, \"Windows NT x86\", 0x1, &, 0x1000, &) = 0x1"));
    }
}

TEST_F(InfInfo, WithoutARouteForTheDependentFilesIsRefusedAtTheLastStep) {
    simulated::SystemDescription system = *simulated::FindSystem("nt4");
    system.major = 3;
    system.minor = 51;
    TestMachine test(system);
    PutAuroraPackage(*test);
    Info info;
    EXPECT_EQ(info.Get("Aurora 500", 3, 4, 0), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(info.Record(), IsNull());
}

TEST_F(InfInfo, WithoutMemoryForTheRecordGives8AndANullRecord) {
    // The record is the last block that is allocated.
    std::size_t before = Machine().Heap().AllocationCount();
    {
        Info info;
        ASSERT_EQ(info.Get(), 0u);
    }
    std::size_t count = Machine().Heap().AllocationCount() - before;
    Machine().Heap().FailAllocation(count - 1, false);
    Info info;
    EXPECT_EQ(info.Get(), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    EXPECT_THAT(info.Record(), IsNull());
}

TEST_F(InfInfo, ClosesTheInfBeforeItAsksTheSpooler) {
    Info info;
    ASSERT_EQ(info.Get(), 0u);
    EXPECT_THAT(Test().TakeCallNames({"SetupOpenInfFileA", "SetupCloseInfFile", "GetPrinterDriverDirectoryA"}),
                ElementsAre("SetupOpenInfFileA", "SetupCloseInfFile", "GetPrinterDriverDirectoryA"));
}

TEST_F(InfInfo, LogsBetweenItsStartAndItsEnd) {
    Test().TurnLogOn();
    {
        Info info;
        EXPECT_EQ(info.Get("Aurora 900"), DWORD{ERROR_INTERNAL_ERROR});
    }
    Lines log = Test().TakeLog();
    ASSERT_GE(log.size(), 4u);
    EXPECT_EQ(log[0], "DoGetInfInfo Start");
    EXPECT_EQ(log[1], "lpcInfPath:C:\\Package\\aurora.inf, lpDriverName:Aurora 900");
    EXPECT_EQ(log[2], "dwArchitecture:3");
    EXPECT_EQ(log.back(), "DoGetInfInfo End(1359)");
    {
        Info info;
        EXPECT_EQ(info.Get("Aurora 500", 3, 5, 1, "C:\\Package\\missing.inf"), DWORD{ERROR_FILE_NOT_FOUND});
    }
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetInfInfo Start", "lpcInfPath:C:\\Package\\missing.inf, lpDriverName:Aurora 500",
                            "dwArchitecture:3", "DoGetInfInfo End(2)"));
    Test().TurnLogOn(1);
    {
        Info info;
        EXPECT_EQ(info.Get("Aurora 500", 3, 5, 1, "C:\\Package\\missing.inf"), DWORD{ERROR_FILE_NOT_FOUND});
    }
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(InfInfo, SurvivesTheFailureOfAnyCall) {
    std::size_t before = faults::CallCount();
    {
        Info info;
        ASSERT_EQ(info.Get(), 0u);
    }
    std::size_t count = faults::CallCount() - before;
    for (bool persistent : {false, true}) {
        for (std::size_t nth = 1; nth <= count; ++nth) {
            faults::Reset();
            faults::FailNth(nth, 31, persistent);
            {
                Info info;
                DWORD status = info.Get();
                EXPECT_EQ(status == 0, info.Record() != nullptr && info.Record() != kUntouched) << nth;
                faults::Reset();
            }
            EXPECT_EQ(Machine().Handles().OpenCount(), 0u) << nth;
            EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << nth;
        }
    }
}

class InfInfoOnEverySystem : public InfInfoTest, public ::testing::WithParamInterface<std::string> {
  protected:
    InfInfoOnEverySystem() { Begin(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(InfInfoOnEverySystem);

TEST_P(InfInfoOnEverySystem, GivesTheDependentFilesOfTheRunningSystem) {
    const bool is9x = Machine().Is9x();
    Info info;
    ASSERT_EQ(info.Get("Aurora 500", is9x ? 1 : 3, is9x || GetParam() == "nt4" ? 4 : 5, 1), 0u);
    Lines files = TextsOf(info->DriverInfo.pDependentFiles);
    if (is9x) {
        EXPECT_THAT(files, ElementsAre("NLAUR9X.DRV", "A500.DAT", "NLAUR9X.HLP", "NLMON9X.DLL", "Color\\NLA500A.ICC"));
    } else if (GetParam() == "nt4") {
        EXPECT_THAT(files, ElementsAre("NLAURORA.DLL", "A500.GPD", "NLAURUI.DLL", "NLAURORA.HLP", "NLLOCAL.DLL",
                                       "NLA500A.ICC", "NLDISP.ICC", "NLRES_EN.DLL"));
    } else {
        EXPECT_THAT(files, ElementsAre("NLLOCAL.DLL", "NLRES_EN.DLL"));
    }
}

}  // namespace

}  // namespace pikel
