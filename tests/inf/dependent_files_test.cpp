// The list of dependent files, on every system.
#include "inf/dependent_files.h"

#include "frame/os_identity.h"
#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace std::string_literals;

struct File {
    const char* name;
    DWORD dirId;
};

CInfInstallSection InstallSectionOf(const std::vector<File>& files) {
    CInfInstallSection install;
    install.m_strDriverFile = "driver.dll";
    install.m_strDataFile = "model.gpd";
    install.m_strConfigFile = "config.dll";
    install.m_strHelpFile = "driver.hlp";
    for (const File& file : files) {
        CopyFileEntry& entry = install.m_vecCopyFiles.emplace_back();
        entry.m_strDest = file.name;
        entry.m_strSource = "source of "s + file.name;
        entry.m_dwDirID = file.dirId;
    }
    return install;
}

/// Main files, one of them in another case, a dependent file of each directory, and a file that stands twice.
const std::vector<File> kFiles = {
    {"driver.dll", 66000}, {"model.gpd", 66000}, {"config.dll", 66000}, {"driver.hlp", 66000}, {"DRIVER.DLL", 66000},
    {"z.dll", 66000},      {"sys.dll", 11},      {"mon.dll", 66002},    {"p.icm", 23},         {"q.icm", 66003},
    {"a.dll", 66000},      {"a.dll", 66000},     {"none.dll", 0},
};

const std::string kList9x =
    "driver.dll\0model.gpd\0config.dll\0driver.hlp\0DRIVER.DLL\0z.dll\0sys.dll\0mon.dll\0Color\\p.icm\0q.icm\0"
    "a.dll\0a.dll\0none.dll\0\0"s;
const std::string kListNT =
    "driver.dll\0model.gpd\0config.dll\0driver.hlp\0DRIVER.DLL\0z.dll\0sys.dll\0mon.dll\0p.icm\0q.icm\0"
    "a.dll\0a.dll\0none.dll\0\0"s;
const std::string kList2k = "DRIVER.DLL\0z.dll\0a.dll\0a.dll\0\0"s;

LogLines MemberLog(const std::string& member, const LogLines& between = {}) {
    return Joined({{member + "() - Start"}, between, {member + "() - End(0)"}});
}

LogLines FilterLog() {
    LogLines lines = {"--- Dependents:before ---"};
    for (const File& file : kFiles) {
        lines.push_back("D:"s + file.name);
    }
    return Joined({lines, {"--- Dependents:after ---", "D:DRIVER.DLL", "D:z.dll", "D:a.dll", "D:a.dll"}});
}

class DependentFiles : public MachineTest {
  protected:
    DependentFiles() { Test().TurnLogOn(1); }

    static std::string Run(DWORD (*member)(DWORD, const CInfInstallSection&, std::string&), DWORD version,
                           const CInfInstallSection& install) {
        std::string files = "old";
        EXPECT_EQ(member(version, install, files), 0u);
        return files;
    }
};

TEST_F(DependentFiles, The9xFamilyTakesAllWithTheFolderOfProfiles) {
    for (DWORD version : {0u, 2u, 3u}) {
        EXPECT_EQ(Run(&GetDependentFiles9x, version, InstallSectionOf(kFiles)), kList9x);
        EXPECT_EQ(Test().TakeLog(), MemberLog("GetDependentFiles9x"));
    }
}

TEST_F(DependentFiles, Nt4TakesAllByTheirNames) {
    for (DWORD version : {0u, 2u, 3u}) {
        EXPECT_EQ(Run(&GetDependentFilesNT, version, InstallSectionOf(kFiles)), kListNT);
        EXPECT_EQ(Test().TakeLog(), MemberLog("GetDependentFilesNT"));
    }
}

TEST_F(DependentFiles, LaterSystemsTakeTheFilesOfTheDriverDirectoryBesideTheMainOnes) {
    for (DWORD version : {1u, 2u, 3u, 0x400u}) {
        EXPECT_EQ(Run(&GetDependentFiles2k, version, InstallSectionOf(kFiles)), kList2k);
        EXPECT_EQ(Test().TakeLog(), MemberLog("GetDependentFiles2k", FilterLog()));
    }
}

TEST_F(DependentFiles, LaterSystemsTakeAllOfA9xDriver) {
    EXPECT_EQ(Run(&GetDependentFiles2k, 0, InstallSectionOf(kFiles)), kList9x);
    EXPECT_EQ(Test().TakeLog(), MemberLog("GetDependentFiles2k"));
}

TEST_F(DependentFiles, NoFilesGiveAnEmptyText) {
    const CInfInstallSection install = InstallSectionOf({});
    EXPECT_EQ(Run(&GetDependentFiles9x, 0, install), "");
    EXPECT_EQ(Run(&GetDependentFilesNT, 2, install), "");
    EXPECT_EQ(Run(&GetDependentFiles2k, 0, install), "");
    Test().TakeLog();
    EXPECT_EQ(Run(&GetDependentFiles2k, 3, install), "");
    EXPECT_EQ(Test().TakeLog(),
              MemberLog("GetDependentFiles2k", {"--- Dependents:before ---", "--- Dependents:after ---"}));
}

TEST_F(DependentFiles, MainFilesAloneGiveAnEmptyText) {
    const CInfInstallSection install =
        InstallSectionOf({{"driver.hlp", 66000}, {"config.dll", 66000}, {"model.gpd", 66000}, {"driver.dll", 66000}});
    EXPECT_EQ(Run(&GetDependentFiles2k, 3, install), "");
}

TEST_F(DependentFiles, AMainFileWithoutANameDropsOnlyFilesWithoutAName) {
    CInfInstallSection install = InstallSectionOf({{"", 66000}, {"driver.hlp", 66000}, {"a.dll", 66000}});
    EXPECT_EQ(Run(&GetDependentFiles2k, 3, install), "\0a.dll\0\0"s);
    install.m_strHelpFile.clear();
    EXPECT_EQ(Run(&GetDependentFiles2k, 3, install), "driver.hlp\0a.dll\0\0"s);
}

TEST_F(DependentFiles, OnlyTheDriverDirectoryCounts) {
    for (DWORD dirId : {10u, 11u, 23u, 66002u, 66003u, 0u, 65999u, 66001u}) {
        EXPECT_EQ(Run(&GetDependentFiles2k, 3, InstallSectionOf({{"a.dll", dirId}})), "") << dirId;
    }
    EXPECT_EQ(Run(&GetDependentFiles2k, 3, InstallSectionOf({{"a.dll", 66000}})), "a.dll\0\0"s);
}

TEST_F(DependentFiles, LeaveTheInstallSectionAsItIs) {
    const CInfInstallSection install = InstallSectionOf(kFiles);
    Run(&GetDependentFiles2k, 3, install);
    ASSERT_EQ(install.m_vecCopyFiles.size(), kFiles.size());
    for (std::size_t i = 0; i < kFiles.size(); ++i) {
        EXPECT_EQ(install.m_vecCopyFiles[i].m_strDest, kFiles[i].name);
    }
}

class DependentFilesRoute : public EverySystemTest {};

TEST_P(DependentFilesRoute, IsChosenByTheRunningSystem) {
    const bool is9x = GetParam().starts_with("win9") || GetParam() == "winme";
    const bool isNt4 = GetParam() == "nt4";
    Test().TurnLogOn(1);
    for (DWORD version : {0u, 2u, 3u}) {
        SCOPED_TRACE(version);
        std::string files = "old";
        EXPECT_EQ(GetDependentFiles(version, InstallSectionOf(kFiles), files), 0u);
        if (is9x) {
            EXPECT_EQ(files, kList9x);
            EXPECT_EQ(Test().TakeLog(), MemberLog("GetDependentFiles9x"));
        } else if (isNt4) {
            EXPECT_EQ(files, kListNT);
            EXPECT_EQ(Test().TakeLog(), MemberLog("GetDependentFilesNT"));
        } else {
            EXPECT_EQ(files, version == 0 ? kList9x : kList2k);
            EXPECT_EQ(Test().TakeLog(), MemberLog("GetDependentFiles2k", version == 0 ? LogLines() : FilterLog()));
        }
    }
}

INSTANTIATE_ON_EVERY_SYSTEM(DependentFilesRoute);

TEST_F(DependentFiles, AreRefusedOnSystemsWithoutARoute) {
    ReplacedOperations replaced;
    replaced.table.GetVersionExA = [](LPOSVERSIONINFOA info) -> BOOL {
        info->dwMajorVersion = 3;
        info->dwMinorVersion = 51;
        info->dwPlatformId = VER_PLATFORM_WIN32_NT;
        return TRUE;
    };
    ForgetSystemRecords();
    std::string files;
    EXPECT_EQ(GetDependentFiles(3, InstallSectionOf(kFiles), files), 120u);
}

}  // namespace
}  // namespace pikel
