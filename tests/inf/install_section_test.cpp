// An install section: one key, the copied files, the monitor, the timeouts and the whole.
#include "inf/install_section.h"

#include <algorithm>
#include <iterator>

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kHead[] = "[Version]\nSignature = \"$Windows NT$\"\n";

const LogLines kDirRead = {"CInfDestinationDirsSection::GetData() Start",
                           "CInfDestinationDirsSection::GetData() End(0)"};
const LogLines kDirAbsent = {"CInfDestinationDirsSection::GetData() Start",
                             "CInfDestinationDirsSection::GetData() End(1359)"};
const LogLines kKeyRead = {"CInfInstallSection::GetData() Start", "CInfInstallSection::GetData() End(0)"};
const LogLines kKeyAbsent = {"CInfInstallSection::GetData() Start", "CInfInstallSection::GetData() End(1359)"};

/// Files as "destination|source|temporary|identifier"; the flags are always 0.
LogLines Files(const std::vector<CopyFileEntry>& files) {
    LogLines texts;
    for (const CopyFileEntry& file : files) {
        EXPECT_EQ(file.m_dwFlags, 0u);
        texts.push_back(file.m_strDest + "|" + file.m_strSource + "|" + file.m_strTemp + "|" +
                        std::to_string(file.m_dwDirID));
    }
    return texts;
}

class InstallSection : public InfTest {
  protected:
    HINF OpenWithHead(const std::string& text) { return Open(kHead + text); }
};

// ---- one key --------------------------------------------------------------------------------------------------------

constexpr char kKeys[] = R"(
[Install]
Own = a,b
Empty =
DataSection = Data
[Data]
Shared = c
Own = not this
DataSection = Further
[Further]
Far = away
[Unled]
DataSection =
[Astray]
DataSection = Nowhere
)";

TEST_F(InstallSection, AKeyIsFoundInTheSectionOrInItsDataSection) {
    struct Case {
        const char* section;
        const char* key;
        DWORD status;
        const char* value;
    };
    const Case cases[] = {
        {"Install", "Own", 0, "a,b"},  {"Install", "Empty", 0, ""},    {"Install", "Shared", 0, "c"},
        {"Install", "Far", 1359, ""},  // the step to a data section is made once
        {"Data", "Shared", 0, "c"},    {"Data", "Far", 0, "away"},     {"Further", "Shared", 1359, ""},
        {"Unled", "Shared", 1359, ""}, {"Astray", "Shared", 1359, ""}, {"Nowhere", "Shared", 1359, ""},
    };
    HINF inf = OpenWithHead(kKeys);
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.section) + " " + c.key);
        Test().TurnLogOn(1);
        std::string value = "old";
        EXPECT_EQ(CInfInstallSection::GetData(inf, c.section, c.key, value), c.status);
        EXPECT_EQ(value, c.value);
        EXPECT_EQ(Log(), c.status == 0 ? kKeyRead : kKeyAbsent);
    }
}

TEST_F(InstallSection, AKeyThatCannotBeReadIsLookedForInTheDataSectionToo) {
    HINF inf = OpenWithHead("[Install]\nKey = own\nDataSection = Data\n[Data]\nKey = data\n");
    faults::FailCall("SetupGetLineTextA", 2, 1234);
    std::string value;
    EXPECT_EQ(CInfInstallSection::GetData(inf, "Install", "Key", value), 0u);
    EXPECT_EQ(value, "data");
}

TEST_F(InstallSection, TheCodeOfTheDataSectionIsTheResultOfAKey) {
    HINF inf = OpenWithHead("[Install]\nDataSection = Data\n[Data]\nKey = data\n");
    std::string value = "old";
    // One call for the key, two for the name of the data section, two for the key in there.
    faults::FailCall("SetupGetLineTextA", 3, 1234);
    EXPECT_EQ(CInfInstallSection::GetData(inf, "Install", "Key", value), 1234u);
    EXPECT_EQ(value, "");
    faults::Reset();
    faults::FailCall("SetupGetLineTextA", 5, 1235);
    EXPECT_EQ(CInfInstallSection::GetData(inf, "Install", "Key", value), 1235u);
    EXPECT_EQ(value, "");
    faults::Reset();
    faults::FailCall("HeapAlloc", 2, 0);
    EXPECT_EQ(CInfInstallSection::GetData(inf, "Install", "Key", value), 8u);
}

// ---- copy sections --------------------------------------------------------------------------------------------------

constexpr char kCopySections[] = R"(
[One]
b.dll
a.dll,aa.dl_
c.dll,,cc.tmp,16
d.dll,dd.dl_,dd.tmp,0x2,more
[Two]
p.icm
[Three]
e.dll
[DestinationDirs]
DefaultDestDir = 66000
Two = 23,Sub
)";

TEST_F(InstallSection, ACopySectionGivesAllItsLines) {
    HINF inf = OpenWithHead(kCopySections);
    Test().TurnLogOn(1);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(GetFilesFromSection(inf, "One", files), 0u);
    EXPECT_THAT(Files(files), ElementsAre("b.dll|||66000", "a.dll|aa.dl_||66000", "c.dll||cc.tmp|66000",
                                          "d.dll|dd.dl_|dd.tmp|66000"));
    EXPECT_EQ(Log(), Joined({kDirAbsent, kDirRead}));
    EXPECT_EQ(GetFilesFromSection(inf, "Two", files), 0u);
    EXPECT_EQ(files.size(), 5u) << "appended";
    EXPECT_EQ(files.back().m_strDest, "p.icm");
    EXPECT_EQ(files.back().m_dwDirID, 23u) << "without its subdirectory";
    EXPECT_EQ(Log(), kDirRead);
}

TEST_F(InstallSection, ACopySectionThatIsNotThereGivesTheLastErrorBeforeAnythingElse) {
    HINF inf = OpenWithHead(kCopySections);
    Test().TurnLogOn(1);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(GetFilesFromSection(inf, "Absent", files), 0xE0000102u);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_EQ(Log(), LogLines());
    EXPECT_THAT(Test().TakeCallNames({"SetupFindFirstLineA", "SetupGetLineTextA"}), ElementsAre("SetupFindFirstLineA"));
}

TEST_F(InstallSection, ACopySectionWithoutADirectoryIsAnError) {
    HINF inf = OpenWithHead("[One]\na.dll\n[DestinationDirs]\nTwo = 23\n");
    Test().TurnLogOn(1);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(GetFilesFromSection(inf, "One", files), 1359u);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_EQ(Log(), Joined({kDirAbsent, kDirAbsent, {InfErrorLine(1359, 1297)}}));
}

TEST_F(InstallSection, ACopySectionWithoutADirectoryNumberGivesIdentifierZero) {
    HINF inf = OpenWithHead("[One]\na.dll\n[DestinationDirs]\nDefaultDestDir = here\n");
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(GetFilesFromSection(inf, "One", files), 0u);
    EXPECT_THAT(Files(files), ElementsAre("a.dll|||0"));
}

TEST_F(InstallSection, ACopySectionThatEndsHalfWayAddsNothing) {
    struct Case {
        const char* operation;
        std::size_t nth;
        DWORD code;
        DWORD status;
    };
    // The directory of section Two takes two calls and one block; each line two calls and one block.
    const Case cases[] = {
        {"SetupGetLineTextA", 5, 5, 1359},
        {"SetupGetLineTextA", 6, 1234, 1234},
        {"HeapAlloc", 3, 0, 8},
    };
    HINF inf = OpenWithHead("[Two]\na.dll\nb.dll\n[DestinationDirs]\nTwo = 23\n");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.status);
        faults::Reset();
        faults::FailCall(c.operation, c.nth, c.code);
        std::vector<CopyFileEntry> files(1);
        EXPECT_EQ(GetFilesFromSection(inf, "Two", files), c.status);
        EXPECT_EQ(files.size(), 1u);
    }
}

// ---- CopyFiles ------------------------------------------------------------------------------------------------------

TEST_F(InstallSection, CopyFilesKeepsTheOrderOfTheValueAndOfTheLines) {
    HINF inf = OpenWithHead(std::string("[Install]\nCopyFiles = Three,@x.gpd,One,Two\n") + kCopySections);
    Test().TurnLogOn(1);
    std::vector<CopyFileEntry> files(1);
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 0u);
    EXPECT_THAT(Files(files), ElementsAre("e.dll|||66000", "x.gpd|||66000", "b.dll|||66000", "a.dll|aa.dl_||66000",
                                          "c.dll||cc.tmp|66000", "d.dll|dd.dl_|dd.tmp|66000", "p.icm|||23"));
    EXPECT_EQ(Log(), Joined({{"CInfInstallSection::GetCopyFiles() Start"},
                             kDirAbsent,
                             kDirRead,  // Three
                             kDirRead,  // @x.gpd
                             kDirAbsent,
                             kDirRead,  // One
                             kDirRead,  // Two
                             {"CInfInstallSection::GetCopyFiles() End(0)"}}));
}

TEST_F(InstallSection, CopyFilesListsAFileAsOftenAsItStands) {
    HINF inf = OpenWithHead(std::string("[Install]\nCopyFiles = Two,Two,@p.icm,@p.icm\n") + kCopySections);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 0u);
    EXPECT_THAT(Files(files), ElementsAre("p.icm|||23", "p.icm|||23", "p.icm|||66000", "p.icm|||66000"));
}

TEST_F(InstallSection, CopyFilesReadsAnyKeyButNotTheDataSection) {
    HINF inf = OpenWithHead(std::string("[Install]\nOther = Two\nDataSection = Data\n[Data]\nCopyFiles = Two\n") +
                            kCopySections);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "Other", files), 0u);
    EXPECT_EQ(files.size(), 1u);
    Test().TurnLogOn(1);
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 1359u);
    EXPECT_THAT(files, IsEmpty()) << "cleared";
    EXPECT_THAT(
        Log(), ElementsAre("CInfInstallSection::GetCopyFiles() Start", "CInfInstallSection::GetCopyFiles() End(1359)"));
}

TEST_F(InstallSection, CopyFilesIsNoErrorForASectionThatIsNotThere) {
    HINF inf = OpenWithHead(std::string("[Install]\nCopyFiles = Absent,Two\n") + kCopySections);
    Test().TurnLogOn(1);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 0u);
    EXPECT_THAT(Files(files), ElementsAre("p.icm|||23"));
    EXPECT_EQ(Log(), Joined({{"CInfInstallSection::GetCopyFiles() Start"},
                             kDirRead,
                             {"CInfInstallSection::GetCopyFiles() End(0)"}}));
}

TEST_F(InstallSection, CopyFilesDropsTheCodeOfASectionWithoutADirectory) {
    HINF inf =
        OpenWithHead("[Install]\nCopyFiles = One,Two\n[One]\na.dll\n[Two]\nb.dll\n[DestinationDirs]\nTwo = 10\n");
    Test().TurnLogOn(1);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 0u);
    EXPECT_THAT(Files(files), ElementsAre("b.dll|||10"));
    EXPECT_EQ(Log(), Joined({{"CInfInstallSection::GetCopyFiles() Start"},
                             kDirAbsent,
                             kDirAbsent,
                             {InfErrorLine(1359, 1297)},
                             kDirRead,
                             {"CInfInstallSection::GetCopyFiles() End(0)"}}));
}

TEST_F(InstallSection, ANamedFileWithoutADefaultDirectoryIsAnError) {
    HINF inf = OpenWithHead("[Install]\nCopyFiles = @x.gpd,Two,@y.gpd\n[Two]\nb.dll\n[DestinationDirs]\nTwo = 10\n");
    Test().TurnLogOn(1);
    std::vector<CopyFileEntry> files;
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 1359u);
    EXPECT_THAT(Files(files), ElementsAre("b.dll|||10")) << "a section's success doesn't mend the code";
    EXPECT_EQ(Log(), Joined({{"CInfInstallSection::GetCopyFiles() Start"},
                             kDirAbsent,
                             {InfErrorLine(1359, 1243)},
                             kDirRead,
                             kDirAbsent,
                             {InfErrorLine(1359, 1243)},
                             {"CInfInstallSection::GetCopyFiles() End(1359)"}}));
}

TEST_F(InstallSection, TheCodeOfTheLastNamedFileStands) {
    HINF inf = OpenWithHead("[Install]\nCopyFiles = @x.gpd,@y.gpd,Absent\n[DestinationDirs]\nDefaultDestDir = 11\n");
    std::vector<CopyFileEntry> files;
    // The value takes two calls; then two for the directory of each named file.
    faults::FailCall("SetupGetLineTextA", 4, 1234);
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 0u);
    EXPECT_THAT(Files(files), ElementsAre("y.gpd|||11"));
    faults::Reset();
    faults::FailCall("SetupGetLineTextA", 6, 1234);
    EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 1234u);
    EXPECT_THAT(Files(files), ElementsAre("x.gpd|||11"));
}

TEST_F(InstallSection, EmptyElementsOfCopyFilesArePassedOver) {
    struct Case {
        const char* value;
        LogLines files;
    };
    const Case cases[] = {
        {"", {}},
        {",", {}},
        {",Two,,@x.gpd,", {"p.icm|||23", "x.gpd|||66000"}},
        {"@", {"|||66000"}},
        {"\"\",Two", {"p.icm|||23"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value);
        HINF inf = OpenWithHead("[Install]\nCopyFiles = " + std::string(c.value) + "\n" + kCopySections);
        std::vector<CopyFileEntry> files;
        EXPECT_EQ(CInfInstallSection::GetCopyFiles(inf, "Install", "CopyFiles", files), 0u);
        EXPECT_EQ(Files(files), c.files);
    }
}

// ---- monitor and timeouts -------------------------------------------------------------------------------------------

TEST_F(InstallSection, TheLanguageMonitorIsNameAndFile) {
    struct Case {
        const char* text;
        DWORD status;
        const char* name;
        const char* file;
    };
    const Case cases[] = {
        {"[Install]\nLanguageMonitor = \"My Monitor\",MON.DLL\n", 0, "My Monitor", "MON.DLL"},
        {"[Install]\nLanguageMonitor = \"My Monitor\"\n", 0, "My Monitor", ""},
        {"[Install]\nLanguageMonitor = \"My Monitor\",MON.DLL,more\n", 0, "My Monitor", "MON.DLL"},
        {"[Install]\nLanguageMonitor =\n", 0, "", ""},
        {"[Install]\nLanguageMonitor = ,MON.DLL\n", 0, "", "MON.DLL"},
        {"[Install]\nDataSection = D\n[D]\nLanguageMonitor = M,MON.DLL\n", 0, "M", "MON.DLL"},
        {"[Install]\nOther = 1\n", 1359, "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        HINF inf = OpenWithHead(c.text);
        Test().TurnLogOn(1);
        std::string name = "old";
        std::string file = "old";
        EXPECT_EQ(CInfInstallSection::GetMonitorName(inf, "Install", name, file), c.status);
        EXPECT_EQ(name, c.name);
        EXPECT_EQ(file, c.file);
        EXPECT_EQ(Log(),
                  Joined({{"CInfInstallSection::GetMonitorName() Start"},
                          c.status == 0 ? kKeyRead : kKeyAbsent,
                          Bannered("--- LanguageMonitor File ---", {"Name:" + std::string(c.name) + ", DLL:" + c.file}),
                          {"CInfInstallSection::GetMonitorName() End(" + std::to_string(c.status) + ")"}}));
    }
}

struct TimeoutCase {
    const char* retry;  ///< null: absent
    const char* notSelected;
    DWORD retryTimeout;
    DWORD notSelectedTimeout;
};

const TimeoutCase kTimeouts[] = {
    {nullptr, nullptr, 0, 15000},
    {nullptr, "30", 0, 30000},
    {"0", nullptr, 45000, 15000},
    {"soon", nullptr, 45000, 15000},
    {"90", "0", 90000, 15000},
    {"90", "later", 90000, 15000},
    {"", "", 45000, 15000},
    {"90", "30", 90000, 30000},
    {"1", "1", 1000, 1000},
    {"60 seconds", "5,6", 60000, 5000},
    {"-1", "-2", static_cast<DWORD>(-1000), static_cast<DWORD>(-2000)},
    // More milliseconds than 32 bits hold.
    {"4294968", "4294968", 704, 704},
};

LogLines TimeoutLog(const TimeoutCase& c) {
    return Joined({{"CInfInstallSection::GetTimeout() Start"},
                   c.retry == nullptr ? Joined({kKeyAbsent, {"RetryTimeout key is not exist"}}) : kKeyRead,
                   Bannered("--- RetryTimeout ---", {std::to_string(static_cast<INT>(c.retryTimeout))}),
                   c.notSelected == nullptr ? Joined({kKeyAbsent, {"NotSelectedTimeout key is not exist"}}) : kKeyRead,
                   Bannered("--- NotSelectedTimeout ---", {std::to_string(static_cast<INT>(c.notSelectedTimeout))}),
                   {"CInfInstallSection::GetTimeout() End(0)"}});
}

TEST_F(InstallSection, AnAbsentRetryTimeoutIsZeroUnlikeOneOfZero) {
    for (const TimeoutCase& c : kTimeouts) {
        std::string text = "[Install]\nOther = 1\n";
        if (c.retry != nullptr) {
            text += std::string("RetryTimeout = \"") + c.retry + "\"\n";
        }
        if (c.notSelected != nullptr) {
            text += std::string("NotSelectedTimeout = \"") + c.notSelected + "\"\n";
        }
        SCOPED_TRACE(text);
        HINF inf = OpenWithHead(text);
        Test().TurnLogOn(1);
        DWORD retry = 7;
        DWORD notSelected = 7;
        EXPECT_EQ(CInfInstallSection::GetTimeout(inf, "Install", retry, notSelected), 0u);
        EXPECT_EQ(retry, c.retryTimeout);
        EXPECT_EQ(notSelected, c.notSelectedTimeout);
        EXPECT_EQ(Log(), TimeoutLog(c));
    }
}

TEST_F(InstallSection, TimeoutsComeFromTheDataSectionToo) {
    HINF inf = OpenWithHead("[Install]\nDataSection = D\n[D]\nRetryTimeout = 90\nNotSelectedTimeout = 30\n");
    DWORD retry = 0;
    DWORD notSelected = 0;
    EXPECT_EQ(CInfInstallSection::GetTimeout(inf, "Install", retry, notSelected), 0u);
    EXPECT_EQ(retry, 90000u);
    EXPECT_EQ(notSelected, 30000u);
}

// ---- the whole ------------------------------------------------------------------------------------------------------

constexpr char kWholeInstall[] = R"(
DriverVer = 07/01/2001,5.1.2600.0
[Install]
CopyFiles = @x.gpd,Two
DataFile = x.gpd
DataSection = Data
DriverVer = 1/1/1999,9.9.9.9
[Data]
DriverFile = driver.dll
ConfigFile = config.dll
HelpFile = driver.hlp
DefaultDataType = RAW
LanguageMonitor = "My Monitor",MON.DLL
RetryTimeout = 90
NotSelectedTimeout = 30
[Two]
p.icm,p.ic_
[DestinationDirs]
DefaultDestDir = 66000
Two = 23
)";

void ExpectWhole(const CInfInstallSection& install) {
    EXPECT_THAT(Files(install.m_vecCopyFiles), ElementsAre("x.gpd|||66000", "p.icm|p.ic_||23"));
    EXPECT_EQ(install.m_strDataFile, "x.gpd");
    EXPECT_EQ(install.m_strDriverFile, "driver.dll");
    EXPECT_EQ(install.m_strConfigFile, "config.dll");
    EXPECT_EQ(install.m_strHelpFile, "driver.hlp");
    EXPECT_EQ(install.m_strMonitorName, "My Monitor");
    EXPECT_EQ(install.m_strMonitorFile, "MON.DLL");
    EXPECT_EQ(install.m_strDefaultDataType, "RAW");
    EXPECT_EQ(install.m_dwRetryTimeout, 90000u);
    EXPECT_EQ(install.m_dwNotSelectedTimeout, 30000u);
    EXPECT_EQ(install.m_qwDriverVer, 0x000500010A280000u) << "of [Version], not of the section itself";
    EXPECT_EQ(install.m_ftDriverDate.dwHighDateTime, 0x01c101c0u);
    EXPECT_EQ(install.m_ftDriverDate.dwLowDateTime, 0xc5628000u);
}

TEST_F(InstallSection, IsEmptyWhenMade) {
    const CInfInstallSection install;
    EXPECT_THAT(install.m_vecCopyFiles, IsEmpty());
    EXPECT_EQ(install.m_strDataFile + install.m_strDriverFile + install.m_strConfigFile + install.m_strHelpFile +
                  install.m_strMonitorName + install.m_strMonitorFile + install.m_strDefaultDataType,
              "");
    EXPECT_EQ(install.m_dwRetryTimeout, 0u);
    EXPECT_EQ(install.m_dwNotSelectedTimeout, 0u);
    EXPECT_EQ(install.m_qwDriverVer, 0u);
    EXPECT_EQ(install.m_ftDriverDate.dwHighDateTime, 0u);
    EXPECT_EQ(install.m_ftDriverDate.dwLowDateTime, 0u);
}

TEST_F(InstallSection, ReadsEverythingAndLogsIt) {
    HINF inf = OpenWithHead(kWholeInstall);
    Test().TurnLogOn(1);
    CInfInstallSection install;
    EXPECT_EQ(install.GetData(inf, "Install"), 0u);
    ExpectWhole(install);
    EXPECT_EQ(Log(), Joined({{"CInfInstallSection::GetData() Start"},
                             {"CInfInstallSection::GetCopyFiles() Start"},
                             kDirRead,
                             kDirRead,
                             {"CInfInstallSection::GetCopyFiles() End(0)"},
                             Bannered("--- Copy Files ---", {"Dest:x.gpd, Src:", "Dest:p.icm, Src:p.ic_"}),
                             kKeyRead,
                             Bannered("--- Data File ---", {"x.gpd"}),
                             kKeyRead,
                             Bannered("--- Driver File ---", {"driver.dll"}),
                             kKeyRead,
                             Bannered("--- Config File ---", {"config.dll"}),
                             kKeyRead,
                             Bannered("--- Help File ---", {"driver.hlp"}),
                             {"CInfInstallSection::GetMonitorName() Start"},
                             kKeyRead,
                             Bannered("--- LanguageMonitor File ---", {"Name:My Monitor, DLL:MON.DLL"}),
                             {"CInfInstallSection::GetMonitorName() End(0)"},
                             kKeyRead,
                             Bannered("--- DefaultDataType ---", {"RAW"}),
                             TimeoutLog({"90", "30", 90000, 30000}),
                             Bannered("--- DriverDate ---", {"7/1/2001"}),
                             Bannered("--- DriverVer ---", {"5.1.2600.0"}),
                             {"CInfInstallSection::GetData() End(0)"}}));
}

TEST_F(InstallSection, WithoutAnythingStillReadsEveryKey) {
    HINF inf = OpenWithHead("[Install]\nOther = 1\n");
    Test().TurnLogOn(1);
    CInfInstallSection install;
    EXPECT_EQ(install.GetData(inf, "Install"), 1359u);
    EXPECT_THAT(install.m_vecCopyFiles, IsEmpty());
    EXPECT_EQ(install.m_strConfigFile, "");
    EXPECT_EQ(install.m_dwRetryTimeout, 0u);
    EXPECT_EQ(install.m_dwNotSelectedTimeout, 15000u);
    EXPECT_EQ(Log(), Joined({{"CInfInstallSection::GetData() Start"},
                             {"CInfInstallSection::GetCopyFiles() Start"},
                             {"CInfInstallSection::GetCopyFiles() End(1359)"},
                             {InfErrorLine(1359, 898)},
                             Bannered("--- Copy Files ---", {}),
                             kKeyAbsent,
                             Bannered("--- Data File ---", {""}),
                             kKeyAbsent,
                             Bannered("--- Driver File ---", {""}),
                             kKeyAbsent,
                             Bannered("--- Config File ---", {""}),
                             kKeyAbsent,
                             Bannered("--- Help File ---", {""}),
                             {"CInfInstallSection::GetMonitorName() Start"},
                             kKeyAbsent,
                             Bannered("--- LanguageMonitor File ---", {"Name:, DLL:"}),
                             {"CInfInstallSection::GetMonitorName() End(1359)"},
                             kKeyAbsent,
                             Bannered("--- DefaultDataType ---", {""}),
                             TimeoutLog({nullptr, nullptr, 0, 15000}),
                             {"CInfInstallSection::GetData() End(1359)"}}));
}

TEST_F(InstallSection, OnlyCopyFilesDecidesTheStatus) {
    HINF inf = OpenWithHead("[Install]\nCopyFiles = Absent\n");
    CInfInstallSection install;
    EXPECT_EQ(install.GetData(inf, "Install"), 0u);
    EXPECT_THAT(install.m_vecCopyFiles, IsEmpty());
    inf = OpenWithHead(std::string(kWholeInstall).replace(std::string(kWholeInstall).find("CopyFiles"), 9, "Copyless"));
    EXPECT_EQ(install.GetData(inf, "Install"), 1359u);
    EXPECT_EQ(install.m_strDriverFile, "driver.dll") << "everything else is read all the same";
    EXPECT_EQ(install.m_strMonitorFile, "MON.DLL");
    EXPECT_EQ(install.m_dwRetryTimeout, 90000u);
    EXPECT_EQ(install.m_qwDriverVer, 0x000500010A280000u);
}

TEST_F(InstallSection, TheConfigFileIsTheDriverFileWhenItsKeyIsAbsent) {
    struct Case {
        const char* text;
        const char* configFile;
    };
    const Case cases[] = {
        {"[Install]\nDriverFile = driver.dll\n", "driver.dll"},
        {"[Install]\nDriverFile = driver.dll\nConfigFile = config.dll\n", "config.dll"},
        {"[Install]\nDriverFile = driver.dll\nConfigFile =\n", ""},  // a key without a value is there
        {"[Install]\nOther = 1\n", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Test().TurnLogOn(1);
        CInfInstallSection install;
        install.GetData(OpenWithHead(c.text), "Install");
        EXPECT_EQ(install.m_strConfigFile, c.configFile);
        const LogLines log = Log();
        const auto banner = std::ranges::find(log, "--- Config File ---");
        ASSERT_NE(banner, log.end());
        EXPECT_EQ(*std::next(banner), c.configFile);
    }
}

TEST_F(InstallSection, NothingSurvivesFromAnEarlierRead) {
    CInfInstallSection install;
    ASSERT_EQ(install.GetData(OpenWithHead(kWholeInstall), "Install"), 0u);
    EXPECT_EQ(install.GetData(OpenWithHead("[Install]\nOther = 1\n"), "Install"), 1359u);
    EXPECT_THAT(install.m_vecCopyFiles, IsEmpty());
    EXPECT_EQ(install.m_strDataFile + install.m_strDriverFile + install.m_strConfigFile + install.m_strHelpFile +
                  install.m_strMonitorName + install.m_strMonitorFile + install.m_strDefaultDataType,
              "");
    EXPECT_EQ(install.m_dwRetryTimeout, 0u);
    EXPECT_EQ(install.m_qwDriverVer, 0u);
    EXPECT_EQ(install.m_ftDriverDate.dwHighDateTime, 0u);
    ASSERT_EQ(install.GetData(OpenWithHead(kWholeInstall), "Install"), 0u);
    ExpectWhole(install);
}

TEST_F(InstallSection, AnyReadThatFailsLeavesTheRestReadable) {
    // Count the reads once, then let each fail in turn; nothing stays open and the monitor's absence is not the
    // driver's.
    HINF inf = OpenWithHead(kWholeInstall);
    CInfInstallSection install;
    faults::Reset();
    ASSERT_EQ(install.GetData(inf, "Install"), 0u);
    const std::size_t calls = faults::CallCount();
    ASSERT_GT(calls, 20u);
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        faults::Reset();
        faults::FailNth(nth, 1234);
        const DWORD status = install.GetData(inf, "Install");
        EXPECT_THAT(status, ::testing::AnyOf(0u, 8u, 1234u, 1359u)) << "call " << nth << ' ' << faults::LastFailed();
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    }
    faults::Reset();
    faults::FailNth(1, 1234, true);
    EXPECT_EQ(install.GetData(inf, "Install"), 1359u);
}

}  // namespace
}  // namespace pikel
