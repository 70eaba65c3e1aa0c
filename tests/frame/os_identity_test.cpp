// The record of the running system: classification, the reading of its parts, and what happens when one can't be read.
#include "frame/os_identity.h"

#include <cstring>
#include <string>
#include <vector>

#include "frame/os_route.h"
#include "frame/pikel.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::EverySystemTest;
using testing_support::MachineTest;
using testing_support::ReplacedOperations;
using testing_support::TestMachine;

struct ClassCase {
    const char* system;
    DWORD platform, major, minor, build;
    DWORD osClass;
};

TEST(OsClassification, CoversEveryFamilyAndVersion) {
    static const ClassCase cases[] = {
        {"Windows 95", 1, 4, 0, 0x040003B6, 0x09},
        {"Windows 98", 1, 4, 10, 0x040A07CE, 0x11},
        {"lowest minor version of 98", 1, 4, 1, 0, 0x11},
        {"Windows Me", 1, 4, 90, 0x045A0BB8, 0x21},
        {"4.90 with another build", 1, 4, 90, 0x045A0BB9, 0x11},
        {"4.90 with another third byte", 1, 4, 90, 0x045B0BB8, 0x11},
        {"4.90 with a plain build number", 1, 4, 90, 3000, 0x11},
        {"Me's build number on 4.10", 1, 4, 10, 0x045A0BB8, 0x21},
        {"Me's build number under another high byte", 1, 4, 90, 0xFF5A0BB8, 0x21},
        {"Me's build number on 4.0", 1, 4, 0, 0x045A0BB8, 0x09},
        {"9x with minor version 91", 1, 4, 91, 0x045A0BB8, 0x01},
        {"9x with the highest minor version", 1, 4, 0xFFFFFFFF, 0, 0x01},
        {"Win32s", 0, 3, 10, 0, 0x04},
        {"NT 3.51", 2, 3, 51, 1057, 0x42},
        {"NT 4", 2, 4, 0, 1381, 0x82},
        {"NT 4.1", 2, 4, 1, 0, 0x82},
        {"Windows 2000", 2, 5, 0, 2195, 0x102},
        {"XP", 2, 5, 1, 2600, 0x202},
        {"Server 2003", 2, 5, 2, 3790, 0x202},
        {"NT 5.3", 2, 5, 3, 0, 0x202},
        {"Vista", 2, 6, 0, 6000, 0x402},
        {"NT 6.3", 2, 6, 3, 9600, 0x402},
        {"NT 7", 2, 7, 0, 0, 0x402},
        {"NT 10", 2, 10, 0, 19045, 0x402},
        {"NT 2", 2, 2, 0, 0, 0x402},
        {"NT 1", 2, 1, 0, 0, 0x402},
        {"NT 0", 2, 0, 0, 0, 0x402},
        {"another platform", 3, 4, 0, 0, 0x80000000},
        {"the highest platform", 0xFFFFFFFF, 6, 0, 0, 0x80000000},
    };
    for (const ClassCase& c : cases) {
        EXPECT_EQ(ClassifyOs(c.platform, c.major, c.minor, c.build), c.osClass) << c.system;
    }
}

TEST(ProcessorClassification, TakesAllButTwoAsX86) {
    EXPECT_EQ(ClassifyProcessor(8664), 0x20000000u);
    EXPECT_EQ(ClassifyProcessor(2200), 0x10000000u);
    for (DWORD dwType : {0u, 9u, 386u, 486u, 586u, 8665u, 0xFFFFFFFFu}) {
        EXPECT_EQ(ClassifyProcessor(dwType), 0u) << dwType;
    }
}

void ExpectNoPaths(const OsIdentity& identity) {
    EXPECT_EQ(identity.windowsDirectory, "");
    EXPECT_EQ(identity.systemDirectory, "");
    EXPECT_EQ(identity.systemDrive, "");
    EXPECT_EQ(identity.tempDirectory, "");
    EXPECT_EQ(identity.moduleFilePath, "");
    EXPECT_EQ(identity.moduleDirectory, "");
}

class OsIdentityOnEverySystem : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(OsIdentityOnEverySystem);

TEST_P(OsIdentityOnEverySystem, HoldsWhatTheSystemTells) {
    const simulated::SystemDescription& system = Machine().System();
    const OsIdentity& identity = GetOsIdentity();
    EXPECT_EQ(identity.majorVersion, system.major);
    EXPECT_EQ(identity.minorVersion, system.minor);
    EXPECT_EQ(identity.buildNumber, system.build);
    EXPECT_EQ(identity.platformId, system.platform);
    EXPECT_EQ(identity.csdVersion, system.servicePack);
    EXPECT_EQ(identity.windowsDirectory, system.windowsDirectory);
    EXPECT_EQ(identity.systemDirectory, system.systemDirectory);
    EXPECT_EQ(identity.systemDrive, "C:");
    EXPECT_FALSE(identity.tempDirectory.empty());
    EXPECT_NE(identity.tempDirectory.back(), '\\');
    EXPECT_TRUE(Machine().Files().IsDirectory(identity.tempDirectory)) << identity.tempDirectory;
    EXPECT_EQ(identity.computerName, system.computerName);
    if (identity.versionInfoSize == 156) {
        EXPECT_EQ(identity.servicePackMajor, system.servicePackMajor);
        EXPECT_EQ(identity.servicePackMinor, system.servicePackMinor);
        EXPECT_EQ(identity.suiteMask, system.suiteMask);
        EXPECT_EQ(identity.productType, system.productType);
    } else {
        EXPECT_EQ(identity.versionInfoSize, 148u);
    }
}

class OsIdentityBuilding : public MachineTest {
  protected:
    void TearDown() override {
        SetAttachedModule(nullptr);
        KeepModule();
    }
};

TEST_F(OsIdentityBuilding, AsksTheSystemInAFixedOrder) {
    GetOsIdentity();
    std::vector<std::string> calls;
    for (const std::string& call : Test().TakeCalls()) {
        calls.push_back(call.substr(0, call.find(" = ")));
    }
    EXPECT_THAT(calls, ElementsAre("GetVersionExA(&)", "GetSystemInfo(&)", "GetWindowsDirectoryA(&, 0x800)",
                                   "GetSystemDirectoryA(&, 0x800)", "GetTempPathA(0x800, &)",
                                   "GetModuleFileNameA(null, &, 0x800)", "GetComputerNameA(&, &)"));
}

TEST_F(OsIdentityBuilding, HappensOnceUntilTheRecordsAreForgotten) {
    const OsIdentity* first = &GetOsIdentity();
    Test().TakeCalls();
    EXPECT_EQ(&GetOsIdentity(), first);
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
    ForgetSystemRecords();
    GetOsIdentity();
    EXPECT_EQ(Test().TakeCallNames({"GetVersionExA"}).size(), 1u);
}

TEST_F(OsIdentityBuilding, ReadsTheModulePathOfTheKeptModule) {
    SetAttachedModule(simulated::LibraryModule());
    EXPECT_EQ(GetKeptModule(), nullptr) << "attached, but not kept before the first bring-up";
    KeepModule();
    EXPECT_EQ(GetKeptModule(), simulated::LibraryModule());
    EXPECT_EQ(GetOsIdentity().moduleFilePath, "C:\\Program Files\\pikel\\pikel.dll");
    EXPECT_EQ(GetOsIdentity().moduleDirectory, "C:\\Program Files\\pikel");
}

TEST_F(OsIdentityBuilding, IsDoneByTheFirstInitializeBehindTheLogConfigurationAndNotAgain) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    const std::vector<std::string> first = {"FindFirstFileA", "GetVersionExA", "GetComputerNameA"};
    SetAttachedModule(simulated::LibraryModule());
    table.PI_KEL_Initialize();
    EXPECT_EQ(Test().TakeCallNames(first), first);
    EXPECT_EQ(GetOsIdentity().moduleFilePath, "C:\\Program Files\\pikel\\pikel.dll");
    table.PI_KEL_Shutdown();
    table.PI_KEL_Initialize();
    EXPECT_THAT(Test().TakeCallNames(first), ElementsAre("FindFirstFileA"));
    table.PI_KEL_Shutdown();
}

TEST_F(OsIdentityBuilding, ReadsTheModulePathOfTheHostWithoutAKeptModule) {
    const OsIdentity& identity = GetOsIdentity();
    char szHost[MAX_PATH] = {};
    Platform().GetModuleFileNameA(nullptr, szHost, sizeof(szHost));
    EXPECT_EQ(identity.moduleFilePath, szHost);
    EXPECT_NE(identity.moduleFilePath, Machine().ModulePath());
}

// ---- version --------------------------------------------------------------------------------------------------------

std::vector<DWORD> g_sizes;

TEST_F(OsIdentityBuilding, TriesTheLongFormOfTheVersionAndThenTheShortOne) {
    g_sizes.clear();
    ReplacedOperations replaced;
    replaced.table.GetVersionExA = [](LPOSVERSIONINFOA info) -> BOOL {
        g_sizes.push_back(info->dwOSVersionInfoSize);
        info->dwMajorVersion = 4;  // also of the failing call: none of it may stay
        info->szCSDVersion[0] = 'x';
        if (info->dwOSVersionInfoSize != 148) {
            return FALSE;
        }
        info->dwMinorVersion = 10;
        info->dwBuildNumber = 0x040A07CE;
        info->dwPlatformId = 1;
        std::strcpy(info->szCSDVersion, " A ");
        return TRUE;
    };
    const OsIdentity& identity = GetOsIdentity();
    EXPECT_THAT(g_sizes, ElementsAre(156u, 148u));
    EXPECT_EQ(identity.versionInfoSize, 148u);
    EXPECT_EQ(identity.osClass, 0x11u);
    EXPECT_STREQ(identity.csdVersion, " A ");
    EXPECT_EQ(identity.servicePackMajor, 0u);
    EXPECT_EQ(identity.productType, 0u);
}

TEST_F(OsIdentityBuilding, TakesTheExtraFieldsOfTheLongForm) {
    ReplacedOperations replaced;
    replaced.table.GetVersionExA = [](LPOSVERSIONINFOA info) -> BOOL {
        OSVERSIONINFOEXA version = {156, 5, 2, 3790, 2, "Service Pack 2", 2, 1, 0x110, 3, 0x1E};
        std::memcpy(info, &version, sizeof(version));
        return TRUE;
    };
    const OsIdentity& identity = GetOsIdentity();
    EXPECT_EQ(identity.versionInfoSize, 156u);
    EXPECT_EQ(identity.servicePackMajor, 2u);
    EXPECT_EQ(identity.servicePackMinor, 1u);
    EXPECT_EQ(identity.suiteMask, 0x110u);
    EXPECT_EQ(identity.productType, 3u);
    EXPECT_EQ(identity.reserved, 0x1Eu);
    EXPECT_STREQ(identity.csdVersion, "Service Pack 2");
}

TEST_F(OsIdentityBuilding, CountsAsWin32sWhenTheVersionCanNotBeRead) {
    faults::FailCall("GetVersionExA", 1, ERROR_INSUFFICIENT_BUFFER, true);
    const OsIdentity& identity = GetOsIdentity();
    EXPECT_EQ(Test().TakeCallNames({"GetVersionExA"}).size(), 2u);
    EXPECT_EQ(identity.osClass, 0x4u);
    EXPECT_EQ(identity.versionInfoSize, 0u);
    EXPECT_EQ(identity.majorVersion, 0u);
    EXPECT_EQ(GetOsRoute().Index(), 99u);
    EXPECT_EQ(identity.windowsDirectory, Machine().System().windowsDirectory) << "the paths are read all the same";
}

TEST_F(OsIdentityBuilding, EndsTheServicePackTextThatFillsItsField) {
    ReplacedOperations replaced;
    replaced.table.GetVersionExA = [](LPOSVERSIONINFOA info) -> BOOL {
        std::memset(info->szCSDVersion, 'x', sizeof(info->szCSDVersion));
        return TRUE;
    };
    EXPECT_EQ(std::string(GetOsIdentity().csdVersion), std::string(127, 'x'));
}

// ---- paths ----------------------------------------------------------------------------------------------------------

TEST_F(OsIdentityBuilding, LeavesAllPathsEmptyWhenOneFails) {
    for (const char* name : {"GetWindowsDirectoryA", "GetSystemDirectoryA", "GetTempPathA", "GetModuleFileNameA"}) {
        SCOPED_TRACE(name);
        ForgetSystemRecords();
        faults::Reset();
        faults::FailCall(name, 1, ERROR_ACCESS_DENIED);
        const OsIdentity& identity = GetOsIdentity();
        EXPECT_EQ(faults::LastFailed(), name);
        ExpectNoPaths(identity);
        EXPECT_EQ(identity.osClass, 0x202u);
        EXPECT_EQ(identity.computerName, Machine().System().computerName);
    }
}

DWORD g_pathLength = 0;

/// A path of g_pathLength characters, as the system writes it: nothing, and the size needed, when it doesn't fit.
UINT WINAPI LongPath(LPSTR buffer, UINT size) {
    if (g_pathLength >= size) {
        return g_pathLength + 1;
    }
    std::memset(buffer, 'x', g_pathLength);
    buffer[g_pathLength] = '\0';
    return g_pathLength;
}

TEST_F(OsIdentityBuilding, TakesPathsOf2047CharactersAndFailsOnLongerOnes) {
    ReplacedOperations replaced;
    replaced.table.GetWindowsDirectoryA = &LongPath;
    g_pathLength = 2047;
    EXPECT_EQ(GetOsIdentity().windowsDirectory, std::string(2047, 'x'));
    ForgetSystemRecords();
    g_pathLength = 2048;
    ExpectNoPaths(GetOsIdentity());
}

TEST_F(OsIdentityBuilding, TakesAModulePathThatFillsTheBufferAsAFailure) {
    ReplacedOperations replaced;
    replaced.table.GetModuleFileNameA = [](HMODULE, LPSTR buffer, DWORD size) -> DWORD {
        std::memset(buffer, 'x', size);  // cut, and without a NUL, as old systems do it
        return size;
    };
    ExpectNoPaths(GetOsIdentity());
}

TEST_F(OsIdentityBuilding, LeavesTheComputerNameEmptyWhenItFails) {
    faults::FailCall("GetComputerNameA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(GetOsIdentity().computerName, "");
    EXPECT_EQ(GetOsIdentity().windowsDirectory, Machine().System().windowsDirectory);
}

DWORD g_nameSize = 0;

TEST_F(OsIdentityBuilding, OffersTheComputerName260Bytes) {
    ReplacedOperations replaced;
    replaced.table.GetComputerNameA = [](LPSTR buffer, LPDWORD size) -> BOOL {
        g_nameSize = *size;
        std::memset(buffer, 'N', *size);
        return TRUE;
    };
    EXPECT_EQ(GetOsIdentity().computerName, std::string(259, 'N'));
    EXPECT_EQ(g_nameSize, 260u);
}

const char* g_tempPath = "";
const char* g_modulePath = "";

DWORD WINAPI TempPath(DWORD, LPSTR buffer) {
    std::strcpy(buffer, g_tempPath);
    return static_cast<DWORD>(std::strlen(buffer));
}

DWORD WINAPI ModulePath(HMODULE, LPSTR buffer, DWORD) {
    std::strcpy(buffer, g_modulePath);
    return static_cast<DWORD>(std::strlen(buffer));
}

struct FolderCase {
    const char* temp;
    const char* tempDirectory;
    const char* module;
    const char* moduleDirectory;
};

void ExpectFolders(const std::vector<FolderCase>& cases) {
    ReplacedOperations replaced;
    replaced.table.GetTempPathA = &TempPath;
    replaced.table.GetModuleFileNameA = &ModulePath;
    for (const FolderCase& c : cases) {
        ForgetSystemRecords();
        g_tempPath = c.temp;
        g_modulePath = c.module;
        EXPECT_EQ(GetOsIdentity().tempDirectory, c.tempDirectory);
        EXPECT_EQ(GetOsIdentity().moduleFilePath, c.module);
        EXPECT_EQ(GetOsIdentity().moduleDirectory, c.moduleDirectory);
    }
}

TEST_F(OsIdentityBuilding, DropsTheTrailingBackslashOfFolders) {
    ExpectFolders({
        {"C:\\Temp\\", "C:\\Temp", "D:\\a.b\\setup.exe", "D:\\a.b"},
        {"C:\\Temp", "C:\\Temp", "D:\\setup.exe", "D:"},
        {"C:\\Temp\\\\", "C:\\Temp\\", "setup.exe", ""},
    });
}

TEST(OsIdentityInJapanese, KeepsATrailByteThatLooksLikeABackslash) {
    simulated::SystemDescription system = *simulated::FindSystem("xp");
    system.codePage = 932;
    TestMachine machine(system);
    ExpectFolders({
        {"C:\\\x83\x5C", "C:\\\x83\x5C", "D:\\\x83\x5C\\setup.exe", "D:\\\x83\x5C"},
        {"C:\\\x83\x5C\\", "C:\\\x83\x5C", "D:\\\x83\x5Csetup.exe", "D:"},
    });
}

// ---- questions on the record ----------------------------------------------------------------------------------------

OSVERSIONINFOEXA g_version;

/// Makes the library see a system of these version fields until it goes.
class MadeUpSystem {
  public:
    MadeUpSystem(DWORD platform, DWORD major, DWORD minor, DWORD processor) {
        g_version = {156, major, minor, 0, platform, "", 0, 0, 0, 0, 0};
        s_processor = processor;
        m_replaced.table.GetVersionExA = [](LPOSVERSIONINFOA info) -> BOOL {
            std::memcpy(info, &g_version, sizeof(g_version));
            return TRUE;
        };
        m_replaced.table.GetSystemInfo = [](LPSYSTEM_INFO info) { info->dwProcessorType = s_processor; };
        ForgetSystemRecords();
    }
    ~MadeUpSystem() { ForgetSystemRecords(); }

  private:
    static inline DWORD s_processor = 0;
    ReplacedOperations m_replaced;
};

using OtherSystems = MachineTest;

TEST_F(OtherSystems, TakeEveryArchitecture) {
    struct {
        const char* name;
        DWORD platform, major, minor;
    } const systems[] = {
        {"9x family only", 1, 4, 91}, {"Win32s", 0, 3, 1}, {"NT 3.51", 2, 3, 51}, {"unknown", 7, 1, 1}};
    for (const auto& system : systems) {
        const MadeUpSystem madeUp(system.platform, system.major, system.minor, 586);
        for (DWORD dwArchitecture = 0; dwArchitecture <= 6; ++dwArchitecture) {
            EXPECT_FALSE(IsForeignArchitecture(dwArchitecture)) << system.name << ", " << dwArchitecture;
        }
        EXPECT_TRUE(IsPrintUIUsable()) << system.name;
    }
}

TEST_F(OtherSystems, HaveNoProcessorRuleBeforeXp) {
    const MadeUpSystem windows2000(2, 5, 0, 8664);
    EXPECT_TRUE(IsForeignArchitecture(2));
    EXPECT_FALSE(IsForeignArchitecture(3));
    EXPECT_FALSE(IsForeignArchitecture(4));
    EXPECT_FALSE(IsForeignArchitecture(5));
}

}  // namespace
}  // namespace pikel
