// Queries and copies of one model at their limits: what a failure leaves, major versions before 4, a monitor without a
// file, directories that fill their field, and files that several names share.
#include <algorithm>
#include <string>
#include <vector>

#include "deploy/copy_inf_driver_files.h"
#include "deploy/copy_size.h"
#include "deploy/inf_info.h"
#include "deploy/inf_queries.h"
#include "deploy/local_copy.h"
#include "printer_inf.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class QueryLimits : public MachineTest {
  protected:
    QueryLimits() {
        PutAuroraPackage(Machine());
        Machine().Files().MakeFolder("C:\\local");
        ForgetCalls(Test());
    }
    static void Free(void* block) { Platform().HeapFree(Platform().GetProcessHeap(), 0, block); }
};

// ---- the driver record ----------------------------------------------------------------------------------------------

TEST_F(QueryLimits, OnlyMajorVersion4MeansADriverOfNt4) {
    const std::pair<DWORD, DWORD> cases[] = {{0, 3}, {1, 3}, {2, 3}, {3, 3}, {4, 2}, {5, 3}, {0xFFFFFFFF, 3}};
    for (const DWORD architecture : {2u, 3u}) {
        for (const auto& [major, version] : cases) {
            DriverAddRecord* record = nullptr;
            ASSERT_EQ(DoGetInfInfo(kAuroraPath, "Aurora 500", architecture, major, 0, &record), 0u);
            EXPECT_EQ(record->DriverInfo.cVersion, version) << architecture << ", major " << major;
            Free(record);
        }
    }
}

// ---- the main file's name -------------------------------------------------------------------------------------------

TEST_F(QueryLimits, SizeAndNameStayAfterAFailure) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    char name[32] = "before";
    DWORD size = 17;
    const auto ask = [&](LPCSTR path, LPCSTR model) {
        return table.PI_KEL_GetDriverFileNameFromInf(path, model, 3, 5, 1, 1, name, &size);
    };
    EXPECT_EQ(ask("C:\\none.inf", "Aurora 500"), 0x90120002u);
    EXPECT_EQ(ask(kAuroraPath, "Nobody"), 0x90120000u | 1359u);
    EXPECT_NE(ask(kAuroraPath, "Aurora Lost"), 0u) << "its install section is missing";
    EXPECT_EQ(ask(kAuroraPath, nullptr), 0x90120057u);
    EXPECT_EQ(ask(nullptr, "Aurora 500"), 0x90120057u);
    EXPECT_EQ(size, 17u);
    EXPECT_STREQ(name, "before");
}

// ---- a monitor without a file ---------------------------------------------------------------------------------------

TEST_F(QueryLimits, MonitorWithoutAFileIsNamedInTheDriverAlone) {
    ChangeAuroraInf(Machine(), "\"Aurora Monitor,NLMON.DLL\"", "\"Aurora Monitor\"");
    DriverAddRecord* record = nullptr;
    ASSERT_EQ(DoGetInfInfo(kAuroraPath, "Aurora 500", 3, 5, 1, &record), 0u);
    EXPECT_STREQ(record->DriverInfo.pMonitorName, "Aurora Monitor");
    EXPECT_EQ(record->MonitorInfo.pName, nullptr);
    EXPECT_EQ(record->MonitorInfo.pEnvironment, nullptr);
    EXPECT_EQ(record->MonitorInfo.pDLLName, nullptr);
    Free(record);
}

TEST_F(QueryLimits, CopyOfAMonitorWithoutAFileIsTriedAndItsFailureLogged) {
    ChangeAuroraInf(Machine(), "\"Aurora Monitor,NLMON.DLL\"", "\"Aurora Monitor\"");
    faults::FailCall("SetupInstallFileExA", 1, 4242);
    Test().TurnLogOn(1);
    Test().TakeCalls();
    EXPECT_EQ(PI_CopyInfDriverFiles(kAuroraPath, "Aurora 500", nullptr, 3, 5, 1, nullptr, nullptr), 0u);
    const std::vector<std::string> calls = TakeCallsOf(Test(), {"SetupInstallFileExA"});
    ASSERT_EQ(calls.size(), 1u) << "that a name is there is all that is looked at";
    EXPECT_THAT(calls[0], HasSubstr(", null, \"\", \"C:\\\\Package\", \"C:\\\\WINDOWS\\\\system32\\\\\", 0x4, "));
    EXPECT_THAT(Test().TakeLog(), ::testing::Contains("SetupInstallFileEx Error:4242"));
    ChangeAuroraInf(Machine(), "LanguageMonitor=\"Aurora Monitor,NLMON.DLL\"", "");
    EXPECT_EQ(PI_CopyInfDriverFiles(kAuroraPath, "Aurora 500", nullptr, 3, 5, 1, nullptr, nullptr), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupInstallFileExA"}), IsEmpty()) << "and without one nothing is tried";
}

// ---- the registry part ----------------------------------------------------------------------------------------------

TEST_F(QueryLimits, RegistryPartIsAskedForWithTheseArguments) {
    Test().TakeCalls();
    EXPECT_EQ(DoControlRegistory(kAuroraPath, "Aurora 500", 3, 5, 1), 0u);
    const std::vector<std::string> calls = TakeCallsOf(Test(), {"SetupOpenInfFileA", "SetupInstallFromInfSectionA"});
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], StartsWith("SetupOpenInfFileA(\"C:\\\\Package\\\\aurora.inf\", null, 0x2, &) = "));
    EXPECT_THAT(calls[1], StartsWith("SetupInstallFromInfSectionA(null, "));
    EXPECT_THAT(calls[1], HasSubstr(", \"A500\", 0x4, null, null, 0x0, null, null, null, null) = 0x1"));
}

// ---- the local copy -------------------------------------------------------------------------------------------------

std::string g_directory;

BOOL WINAPI TellDirectory(LPSTR, LPSTR, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed) {
    *needed = static_cast<DWORD>(g_directory.size() + 1);
    EXPECT_GT(size, g_directory.size());
    g_directory.copy(reinterpret_cast<char*>(buffer), g_directory.size());
    buffer[g_directory.size()] = 0;
    return TRUE;
}

TEST_F(QueryLimits, DirectoryThatFillsItsFieldEndsInANulAndLeavesTheNameWhole) {
    for (std::size_t length : {258u, 259u, 260u, 261u, 600u}) {
        g_directory = "C:\\" + std::string(length - 3, 'd');
        ReplacedOperations replaced;
        replaced.table.GetPrinterDriverDirectoryA = &TellDirectory;
        LocalFileRecord* records = nullptr;
        DWORD size = 0;
        DWORD count = 0;
        ASSERT_EQ(DoCopyInfDriverFilesToLocal(kAuroraPath, "Aurora Plain", "C:\\local", &size, 2, &count, &records, 3,
                                              3, 5, 1),
                  0u);
        ASSERT_EQ(count, 1u);
        EXPECT_EQ(std::string(records[0].szDirectory, 260).find('\0'), std::min<std::size_t>(length, 259)) << length;
        EXPECT_EQ(records[0].szDirectory, g_directory.substr(0, 259));
        EXPECT_STREQ(records[0].szFileName, "NLPLAIN.DLL");
        Free(records);
    }
}

TEST_F(QueryLimits, Mode3TellsTheDestinationNameFirst) {
    LocalFileRecord* records = nullptr;
    DWORD size = 0;
    DWORD count = 0;
    ASSERT_EQ(
        DoCopyInfDriverFilesToLocal(kAuroraPath, "Aurora 500", "C:\\local", &size, 3, &count, &records, 3, 3, 5, 1),
        0u);
    std::vector<std::string> names;
    for (DWORD i = 0; i < count; ++i) {
        names.emplace_back(records[i].szFileName);
    }
    Free(records);
    EXPECT_THAT(names, ElementsAre("NLAURORA.DLL", "A500.GPD", "NLAURUI.DLL", "NLAURORA.HLP", "NLLOCAL.DLL",
                                   "NLRES_DE.DLL", "NLA500A.ICC", "NLDISP.ICC", "NLRES_EN.DLL"));
}

TEST_F(QueryLimits, OneSourceIsCopiedToEachOfItsTargets) {
    ChangeAuroraInf(Machine(), "[PLAIN.Files]\nNLPLAIN.DLL", "[PLAIN.Files]\nONE.DLL,NLPLAIN.DLL\nTWO.DLL,NLPLAIN.DLL");
    LocalFileRecord* records = nullptr;
    DWORD size = 0;
    DWORD count = 0;
    ASSERT_EQ(
        DoCopyInfDriverFilesToLocal(kAuroraPath, "Aurora Plain", "C:\\local", &size, 2, &count, &records, 3, 3, 5, 1),
        0u);
    EXPECT_EQ(count, 2u);
    Free(records);
    EXPECT_EQ(size, 22u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\local\\ONE.DLL"), "NLPLAIN.DLL");
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\local\\TWO.DLL"), "NLPLAIN.DLL");
    EXPECT_FALSE(Machine().Files().Exists("C:\\local\\NLPLAIN.DLL"));
}

// ---- the copy size --------------------------------------------------------------------------------------------------

class CopySizeLimits : public QueryLimits {
  protected:
    DWORD Ask(const std::string& models, LPCSTR path = kAuroraPath) {
        m_total = m_shared = 99;
        return DoGetCopyDriverFilesSize(path, (models + '\0').c_str(), &m_total, &m_shared, 2, 3, 5, 1);
    }
    DWORD m_total = 0;
    DWORD m_shared = 0;
};

const std::string kPlain = std::string("Aurora Plain") + '\0';

TEST_F(CopySizeLimits, TwoTargetsOfOneSourceAreTwoFilesOfItsSize) {
    ChangeAuroraInf(Machine(), "[PLAIN.Files]\nNLPLAIN.DLL", "[PLAIN.Files]\nONE.DLL,NLPLAIN.DLL\nTWO.DLL,NLPLAIN.DLL");
    EXPECT_EQ(Ask(kPlain), 0u);
    EXPECT_EQ(m_total, 22u);
    EXPECT_EQ(m_shared, 0u) << "neither is a repetition of the other";
    EXPECT_EQ(Ask(kPlain + kPlain), 0u);
    EXPECT_EQ(m_total, 22u);
    EXPECT_EQ(m_shared, 22u) << "each repeats its own target";
}

TEST_F(CopySizeLimits, RepetitionsGoByTheTargetWhateverItsSource) {
    // Two sources of one target: the second model repeats the first pair alone, and both entries bear the target.
    ChangeAuroraInf(Machine(), "[PLAIN.Files]\nNLPLAIN.DLL", "[PLAIN.Files]\nX.DLL,NLPLAIN.DLL\nX.DLL,NLMON.DLL");
    EXPECT_EQ(Ask(kPlain + kPlain), 0u);
    EXPECT_EQ(m_total, 11u + 9u);
    EXPECT_EQ(m_shared, 2 * 11u + 2 * 9u);
}

TEST_F(CopySizeLimits, OfNoModelsTheInfNeedNotBeThere) {
    EXPECT_EQ(Ask("", "C:\\none.inf"), 0u);
    EXPECT_EQ(m_total, 0u);
    EXPECT_EQ(m_shared, 0u);
    EXPECT_EQ(Ask(kPlain, "C:\\none.inf"), 2u);
    EXPECT_EQ(m_total, 99u);
}

TEST_F(CopySizeLimits, FilesStandInTheDetailLogAlone) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Ask(kPlain), 0u);
    for (const std::string& line : Test().TakeLog()) {
        EXPECT_EQ(line.find("Size\t"), std::string::npos) << line;
    }
    Test().TurnLogOn(2);
    EXPECT_EQ(Ask(kPlain), 0u);
    EXPECT_THAT(Test().TakeLog(), ::testing::Contains("\t\tFile(C:\\Package\\NLPLAIN.DLL) Size\t11\t11"));
}

}  // namespace
}  // namespace pikel
